// Out-of-memory at every allocation: fail the Nth heap call and, apart,
// the Nth allocator call, over small documents (every N) and the bench-data
// documents (a few hundred N across the range).  Each run must end with the
// expected code, never crash, and give back every temporary block.
#include <gtest/gtest.h>

#include "vx_env.h"

namespace {

// Read lax so that the lax forms take their own paths too: an escaped
// long string grows the literal into the heap, -007 needs a heap copy of
// its normalised text.
const std::vector<std::string> kSmallDocs = {
    R"({"a":1})",
    R"([1,"two",3.5,true,null,{"k":[]}])",
    R"({"s":"esc\n\"q\"\u00e9","n":[[1],[2,[3]]],"o":{"p":{"q":"r"}}})",
    R"(["a","b","c","d","e","f","g","h"])",
    R"({"a":[1,-007,"s\n",'q',true,null,{}],b:{"c":[[]]},"long":"\t)" + std::string(40000, 'x') +
        R"("})",
};

struct Calls {
    uint64_t heap_read, alloc_read, alloc_write;
};

Calls count_calls(const std::string &doc) {
    VxEnv env(lax());
    json_node *root = nullptr;
    EXPECT_EQ(env.read(doc, &root), 0);
    Calls c{mem_heap_alloc_count(env.heap), env.alloc_state.calls, 0};
    std::string out;
    EXPECT_EQ(env.write(root, &out), 0);
    c.alloc_write = env.alloc_state.calls - c.alloc_read;
    return c;
}

// Heap exhausted after n calls: the reader reports an invalid text (every
// reader failure is -3105) unless n covers every call.
void read_with_heap_limit(const std::string &doc, uint64_t n, uint64_t needed) {
    VxEnv env(lax());
    mem_heap_set_call_limit(env.heap, n);
    json_node *root = nullptr;
    int32_t rc = env.read(doc, &root);
    EXPECT_EQ(rc, n >= needed ? 0 : VXJSON_ERR_INVALID_JSON) << "heap limit " << n;
}

// Allocator exhausted after n calls while reading: the element arrays stay
// unconverted and the reader still succeeds; the failure shows in the
// error trail.  This is the reader's deliberate behaviour.
void read_with_alloc_limit(const std::string &doc, uint64_t n, uint64_t needed) {
    VxEnv env(lax());
    vx_allocator_set_call_limit(&env.alloc_state, n);
    elog_trail_clear();
    json_node *root = nullptr;
    EXPECT_EQ(env.read(doc, &root), 0) << "allocator limit " << n;
    EXPECT_EQ(trail_has(VXJSON_ERR_NOMEM, "json/json", 86), n < needed) << "allocator limit " << n;
}

// Allocator exhausted after n calls while writing: -503 unless n covers
// every call, and all temporary texts are released.
void write_with_alloc_limit(const std::string &doc, uint64_t n, uint64_t needed) {
    VxEnv env(lax());
    json_node *root = nullptr;
    ASSERT_EQ(env.read(doc, &root), 0);
    uint64_t arrays = env.alloc_state.outstanding;
    vx_allocator_set_call_limit(&env.alloc_state, n);
    elog_trail_clear();
    std::string out;
    int32_t rc = env.write(root, &out);
    EXPECT_EQ(rc, n >= needed ? 0 : VXJSON_ERR_NOMEM) << "allocator limit " << n;
    EXPECT_EQ(env.alloc_state.outstanding, arrays) << "allocator limit " << n;
}

TEST(FaultInjection, SmallDocumentsAtEveryAllocation) {
    for (const std::string &doc : kSmallDocs) {
        SCOPED_TRACE(doc);
        Calls c = count_calls(doc);
        ASSERT_GT(c.heap_read, 0u);
        for (uint64_t n = 0; n <= c.heap_read; n++) read_with_heap_limit(doc, n, c.heap_read);
        for (uint64_t n = 0; n <= c.alloc_read; n++) read_with_alloc_limit(doc, n, c.alloc_read);
        for (uint64_t n = 0; n <= c.alloc_write; n++) write_with_alloc_limit(doc, n, c.alloc_write);
    }
}

// The reader takes its nodes in chunks and asks again for just what a
// value needs when a chunk is refused: under any byte limit it reads the
// same tree or refuses the text, and it reads whenever the limit covers
// what an unlimited read used.
TEST(FaultInjection, SmallDocumentsUnderEveryByteLimit) {
    for (const std::string &doc : kSmallDocs) {
        SCOPED_TRACE(doc.substr(0, 40));
        VxEnv probe(lax());
        json_node *expected = nullptr;
        ASSERT_EQ(probe.read(doc, &expected), 0);
        const uint64_t used = mem_heap_bytes_used(probe.heap);
        const uint64_t step = used / 400 + 1;
        for (uint64_t limit = 0; limit <= used + step; limit += step) {
            VxEnv env(lax());
            mem_heap_set_byte_limit(env.heap, limit);
            json_node *root = nullptr;
            const int32_t rc = env.read(doc, &root);
            if (limit >= used) {
                EXPECT_EQ(rc, 0) << "byte limit " << limit;
            }
            EXPECT_EQ(rc == 0 ? dump(root) : std::to_string(rc),
                      rc == 0 ? dump(expected) : std::to_string(VXJSON_ERR_INVALID_JSON))
                << "byte limit " << limit;
        }
    }
}

// A heap with room for exactly the records of {"a":1} (two nodes and a
// member with its one-byte name) reads it, though the reader would rather
// take a larger chunk.
TEST(FaultInjection, HeapWithRoomForExactlyTheRecords) {
    VxEnv env(lax());
    mem_heap_set_byte_limit(env.heap, 2 * sizeof(json_node) + sizeof(json_keyval) + 8);
    json_node *root = nullptr;
    ASSERT_EQ(env.read(R"({"a":1})", &root), 0);
    EXPECT_EQ(dump(root), R"({"a":1})");
}

class BenchDataFaults : public ::testing::TestWithParam<const char *> {};
TEST_P(BenchDataFaults, SpreadOverTheRange) {
    std::string doc = read_bench_data(GetParam());
    if (doc.empty()) return;
    Calls c = count_calls(doc);
    constexpr uint64_t kSteps = 120;
    for (uint64_t i = 0; i <= kSteps; i++) {
        read_with_heap_limit(doc, c.heap_read * i / kSteps, c.heap_read);
        write_with_alloc_limit(doc, c.alloc_write * i / kSteps, c.alloc_write);
    }
    for (uint64_t i = 0; i <= 20; i++)
        read_with_alloc_limit(doc, c.alloc_read * i / 20, c.alloc_read);
}

INSTANTIATE_TEST_SUITE_P(Files, BenchDataFaults,
                         ::testing::Values("canada.json", "citm_catalog.json", "twitter.json"),
                         [](const auto &info) {
                             std::string n = info.param;
                             return n.substr(0, n.find('.'));
                         });

} // namespace
