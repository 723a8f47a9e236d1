// Heap, allocator, growable string, error trail, configuration and number
// helpers of the stand-alone platform layer.
#include <gtest/gtest.h>

#include <thread>

#include "vx_env.h"
#include "vx_number.h"

namespace {
using ::operator<<;

void *heap_alloc(vx_heap *h, size_t n) { return mem_heap_alloc_low(nullptr, h, n, 0, "t", 1); }

// A counting allocator for the allocator and growable-string tests.
class Allocator : public ::testing::Test {
protected:
    void SetUp() override { vx_allocator_init(&a, &st); }
    vx_alloc_state st{};
    vx_allocator a{};
};
using Vxstr = Allocator;

TEST(Heap, AllocationsAreAlignedDistinctAndSurviveGrowth) {
    vx_heap *h = mem_heap_create(64);
    std::vector<std::pair<unsigned char *, size_t>> blocks;
    for (size_t n : {1, 7, 8, 9, 63, 64, 65, 1000, 5000, 1, 100000, 3}) {
        auto *p = static_cast<unsigned char *>(heap_alloc(h, n));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 8, 0u) << n;
        std::memset(p, int(blocks.size()), n);
        blocks.emplace_back(p, n);
    }
    // Every block still holds its own fill: no overlap after new blocks.
    for (size_t i = 0; i < blocks.size(); i++)
        for (size_t k = 0; k < blocks[i].second; k++)
            ASSERT_EQ(blocks[i].first[k], static_cast<unsigned char>(i)) << i;
    EXPECT_EQ(mem_heap_alloc_count(h), blocks.size());
    mem_heap_reset(h);
    EXPECT_EQ(mem_heap_alloc_count(h), 0u);
    EXPECT_NE(heap_alloc(h, 10), nullptr);
    mem_heap_free(h);
}

// A released heap's blocks serve the next heap made on the thread, whole
// (a cached block larger than asked is carved to its end), but a small heap
// never takes a block far larger than it asked for.
TEST(Heap, ReleasedBlocksServeTheNextHeap) {
    vx_heap *h = mem_heap_create(16384);
    char *first = static_cast<char *>(heap_alloc(h, 16));
    mem_heap_free(h);

    h = mem_heap_create(9000);
    char *again = static_cast<char *>(heap_alloc(h, 16));
    EXPECT_EQ(again, first);
    // 9000 asked, 16384 there: the rest of the block is still this heap's.
    char *late = static_cast<char *>(heap_alloc(h, 15000));
    EXPECT_EQ(late, first + 16);
    EXPECT_EQ(mem_heap_alloc_count(h), 2u);
    mem_heap_free(h);

    vx_heap *big = mem_heap_create(1 << 20);
    char *big_block = static_cast<char *>(heap_alloc(big, 8));
    mem_heap_free(big);
    vx_heap *small = mem_heap_create(64);
    EXPECT_NE(heap_alloc(small, 8), big_block);
    mem_heap_free(small);
}

TEST(Heap, CallLimitFailsEveryLaterCall) {
    vx_heap *h = mem_heap_create(0);
    ASSERT_NE(heap_alloc(h, 8), nullptr);
    mem_heap_set_call_limit(h, 2);
    EXPECT_NE(heap_alloc(h, 8), nullptr);
    EXPECT_NE(heap_alloc(h, 8), nullptr);
    EXPECT_EQ(heap_alloc(h, 8), nullptr);
    EXPECT_EQ(mem_heap_strdup(nullptr, h, "x"), nullptr);
    mem_heap_set_call_limit(h, UINT64_MAX);
    char *s = mem_heap_strdup(nullptr, h, "abc");
    ASSERT_NE(s, nullptr);
    EXPECT_STREQ(s, "abc");
    mem_heap_free(h);
}

TEST(Heap, ByteLimitFailsOversizedRequests) {
    vx_heap *h = mem_heap_create(0);
    mem_heap_set_byte_limit(h, 64);
    EXPECT_NE(heap_alloc(h, 40), nullptr);
    EXPECT_EQ(heap_alloc(h, 40), nullptr);
    EXPECT_NE(heap_alloc(h, 24), nullptr);
    EXPECT_EQ(heap_alloc(h, 1), nullptr);
    mem_heap_free(h);
}

TEST_F(Allocator, CountsBlocksFailsOnLimitAndReleasesOnlyItsOwn) {
    void *p = vx_alloc(nullptr, &a, 10, "t", 1), *q = vx_alloc(nullptr, &a, 20, "t", 2);
    ASSERT_TRUE(p && q);
    EXPECT_EQ(st.outstanding, 2u);
    EXPECT_EQ(st.bytes_out, 30u);
    vx_allocator no_handle = a;
    no_handle.handle = nullptr;
    vx_free(nullptr, &no_handle, p); // no handle: nothing is freed
    vx_free(nullptr, &a, q);
    EXPECT_EQ(st.outstanding, 1u);
    EXPECT_EQ(st.bytes_out, 10u);
    vx_heap *h = mem_heap_create(0);
    heap_alloc(h, 40); // so that the foreign block has bytes before it
    vx_free(nullptr, &a, heap_alloc(h, 16)); // not ours: left alone
    vx_allocator_set_call_limit(&st, 0);
    EXPECT_EQ(vx_alloc(nullptr, &a, 1, "t", 3), nullptr);
    vx_allocator_release_all(&st);
    EXPECT_EQ(st.outstanding, 0u);
    EXPECT_EQ(st.bytes_out, 0u);
    mem_heap_free(h);
}

TEST_F(Allocator, HeapBackedCarvesFromTheHeapAndFreesNothing) {
    vx_heap *h = mem_heap_create(0);
    vx_allocator_init_heap(&a, h);
    void *p = vx_alloc(nullptr, &a, 32, "t", 1);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(mem_heap_alloc_count(h), 1u);
    vx_free(nullptr, &a, p); // no free operation: nothing happens
    mem_heap_set_call_limit(h, 0);
    EXPECT_EQ(vx_alloc(nullptr, &a, 8, "t", 2), nullptr);
    mem_heap_free(h);
}

TEST_F(Vxstr, AppendsGrowAndKeepTheTerminator) {
    vxstr *s = vxstr_create(nullptr, &a, 0);
    ASSERT_NE(s, nullptr);
    std::string expect;
    for (int i = 0; i < 300; i++) {
        ASSERT_EQ(vxstr_append(nullptr, &a, s, "ab"), 0);
        ASSERT_EQ(vxstr_append_with_length(nullptr, &a, s, "c\0d", 3), 0);
        ASSERT_EQ(vxstr_append_n_const_char(nullptr, &a, s, ' ', 2), 0);
        expect += std::string("abc\0d  ", 7);
    }
    EXPECT_EQ(std::string(vxstr_getstr(s), s->len), expect);
    EXPECT_EQ(vxstr_getstr(s)[s->len], '\0');
    vxstr_init(s);
    EXPECT_STREQ(vxstr_getstr(s), "");
    // Released alone, the record leaves its text to the caller.
    ASSERT_EQ(vxstr_append(nullptr, &a, s, "kept"), 0);
    char *text = vxstr_getstr(s);
    vxstr_free_record(nullptr, &a, s);
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(st.outstanding, 1u);
    vx_free(nullptr, &a, text);
}

TEST_F(Vxstr, FailuresAreStickyAndClean) {
    for (uint64_t limit : {0u, 1u}) {
        vx_allocator_set_call_limit(&st, limit);
        EXPECT_EQ(vxstr_create(nullptr, &a, 0), nullptr) << limit;
        EXPECT_EQ(st.outstanding, 0u) << limit;
    }
    vx_allocator_set_call_limit(&st, UINT64_MAX);
    vxstr *s = vxstr_create(nullptr, &a, 4);
    ASSERT_NE(s, nullptr);
    vx_allocator_set_call_limit(&st, 0);
    EXPECT_EQ(vxstr_append(nullptr, &a, s, "ab"), 0); // fits, no growth
    EXPECT_EQ(vxstr_append(nullptr, &a, s, "cdef"), VXSTR_NOMEM);
    vx_allocator_set_call_limit(&st, UINT64_MAX);
    EXPECT_EQ(vxstr_append(nullptr, &a, s, "x"), VXSTR_NOMEM);
    EXPECT_STREQ(vxstr_getstr(s), "ab");
    vxstr_free(nullptr, &a, s);
    EXPECT_EQ(st.outstanding, 0u);
}

TEST(Elog, TrailKeepsReportsInOrderPerThread) {
    elog_trail_clear();
    EXPECT_EQ(elog_try_report_vxerr(-503, "json/json", 86), -503);
    EXPECT_EQ(elog_try_report_vxerr(-3105, "json/jlpca", 774), -3105);
    EXPECT_EQ(trail(), (Trail{{-503, 86}, {-3105, 774}}));
    EXPECT_TRUE(trail_has(-503, "json/json", 86));
    vx_elog_entry e;
    EXPECT_EQ(elog_trail_get(2, &e), -1);
    uint32_t other = 99;
    std::thread([&] { other = elog_trail_count(); }).join();
    EXPECT_EQ(other, 0u);
    for (int i = 0; i < VX_ELOG_TRAIL_MAX + 10; i++) elog_try_report_vxerr(-1, "x", i);
    EXPECT_EQ(elog_trail_count(), uint32_t(VX_ELOG_TRAIL_MAX + 12));
    EXPECT_EQ(elog_trail_get(VX_ELOG_TRAIL_MAX, &e), -1);
    elog_trail_clear();
    EXPECT_EQ(elog_trail_count(), 0u);
}

// Without an override the character set comes from VXJSON_CHARSET (0 to 2),
// else UTF-8; an unknown setting is 0.
TEST(Ini, CharsetDefaultAndUnknownValues) {
    ini_set_value(0, VX_INI_CHARSET, 0);
    ini_reset_value(0, VX_INI_CHARSET);
    const char *env = std::getenv("VXJSON_CHARSET");
    const bool set = env && std::strlen(env) == 1 && env[0] >= '0' && env[0] <= '2';
    EXPECT_EQ(ini_get_value(0, VX_INI_CHARSET), set ? env[0] - '0' : 1);
    EXPECT_EQ(ini_get_value(0, 1), 0);
}

struct Int64Row {
    const char *id, *text;
    int32_t rc;
    int64_t value = 12345; // a failure leaves the output alone
};

class Str2Int64 : public ::testing::TestWithParam<Int64Row> {};
TEST_P(Str2Int64, Reads) {
    const Int64Row &r = GetParam();
    int64_t v = 12345;
    EXPECT_EQ(str2int64(r.text, uint32_t(std::strlen(r.text)), &v), r.rc);
    EXPECT_EQ(v, r.value);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Edges, Str2Int64, rows<Int64Row>({
    {"zero", "0", 0, 0},
    {"minus_zero", "-0", 0, 0},
    {"plus", "+17", 0, 17},
    {"max", "9223372036854775807", 0, INT64_MAX},
    {"min", "-9223372036854775808", 0, INT64_MIN},
    {"above_max", "9223372036854775808", -2},
    {"below_min", "-9223372036854775809", -2},
    {"empty", "", -1},
    {"minus_alone", "-", -1},
    {"plus_alone", "+", -1},
    {"fraction", "1.5", -1},
    {"trailing_letter", "12a", -1},
    {"leading_blank", " 1", -1},
    {"two_signs", "+-1", -1},
}), by_id);
// clang-format on

TEST(Number, DoubleOverflowIsInfinity) {
    EXPECT_EQ(ntype_is_double_overflow(1e308 * 10) + ntype_is_double_overflow(-1e308 * 10), 2);
    EXPECT_EQ(ntype_is_double_overflow(1.7976931348623157e308), 0);
}

} // namespace
