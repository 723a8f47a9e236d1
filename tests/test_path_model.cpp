// The compiled path model: option words, path initialisation, and the
// step and subscript adders with their ordering rules, run as sequences of
// adds against the resulting entries, first_index, max_index and multi.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "path_steps.h"

namespace {
using ::operator<<;

// ---- option word ----

struct FlagRow {
    const char *id;
    uint32_t flag;
    uint32_t ret_type, format, wrapper, on_error, on_empty;
};

class PathFlag : public ::testing::TestWithParam<FlagRow> {};

std::vector<uint32_t> fields(const jpath &p) {
    return {p.ret_type, p.format, p.wrapper, p.on_error, p.on_empty};
}

// Decoded field by field; the fields encode to a word that decodes to them.
TEST_P(PathFlag, DecodesFieldByField) {
    const FlagRow &r = GetParam();
    jpath p{}, q{};
    jpath_decode_flag(&p, r.flag);
    EXPECT_EQ(fields(p), (std::vector{r.ret_type, r.format, r.wrapper, r.on_error, r.on_empty}));
    jpath_decode_flag(&q, jpath_encode_flag(p.ret_type, p.format, p.wrapper, p.on_error, p.on_empty));
    EXPECT_EQ(fields(q), fields(p));
}

// Bits: ret 0-2, format 3-4, wrapper 5-6, on_error 7-9, on_empty 10-11.
// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathFlag, rows<FlagRow>({
    {"f01_char_plain", 3, 3, 0, 0, 0, 0},
    {"f02_all_fields", 1 | 2 << 3 | 3 << 5 | 4 << 7 | 2 << 10, 1, 2, 3, 4, 2},
    {"f03_ret0_invalid", 0 | 1 << 5, 0, 0, 1, 0, 0},
    {"f04_ret5_invalid", 5 | 3 << 3, 0, 3, 0, 0, 0},
    {"f05_ret7_invalid", 7 | 2 << 7, 0, 0, 0, 2, 0},
    {"f06_on_error5_invalid", 3 | 5 << 7 | 1 << 10, 0, 0, 0, 5, 1},
    {"f07_on_error7_invalid", 4 | 7 << 7, 0, 0, 0, 7, 0},
    {"f08_ret4_valid", 4 | 1 << 3, 4, 1, 0, 0, 0},
    {"f09_high_bits_ignored", 2 | 0xFFFFF000u, 2, 0, 0, 0, 0},
}), by_id);
// clang-format on

// Fields are not masked: a format of 4 lands in the wrapper field.
TEST(PathFlagEncode, SpillsUnmasked) {
    EXPECT_EQ(jpath_encode_flag(0, 4, 0, 0, 0), 1u << 5);
    EXPECT_EQ(jpath_encode_flag(8, 0, 0, 0, 0), 1u << 3);
}

// ---- initialisation ----

struct InitRow {
    const char *id;
    uint32_t flag, datatype;
    uint32_t ret_type, ret_len, ret_scale, wrapper;
};

class PathInit : public ::testing::TestWithParam<InitRow> {};

TEST_P(PathInit, DecodesFlagThenDatatype) {
    const InitRow &r = GetParam();
    jpath p;
    std::memset(&p, 0xAB, sizeof p); // stale contents must be cleared
    jpath_init(&p, r.flag, r.datatype, 0x1122334455667788ull, 7);
    EXPECT_EQ(p.ret_type, r.ret_type);
    EXPECT_EQ(p.ret_len, r.ret_len);
    EXPECT_EQ(p.ret_scale, r.ret_scale);
    EXPECT_EQ(p.wrapper, r.wrapper);
    EXPECT_EQ(p.user_data, 0x1122334455667788ull);
    EXPECT_EQ(p.dialect, 7u);
    EXPECT_EQ(p.fun_kind, uint32_t(JPATH_FUN_KIND_DEFAULT));
    EXPECT_EQ(p.filter_count, 0u);
    EXPECT_EQ(p.first_filter, nullptr);
    EXPECT_EQ(p.last_filter, nullptr);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathInit, rows<InitRow>({
    {"i01_number_precision_scale", 1, 0x0A02, 1, 10, 2, 1},
    {"i02_char_length", 3, 100, 3, 100, 0, 1},
    {"i03_wrapper_3_kept", 3 | 3 << 5, 5, 3, 5, 0, 3},
    {"i04_number_high_bits_dropped", 1 | 2 << 5, 0x12345, 1, 0x23, 0x45, 2},
    {"i05_invalid_type_keeps_whole", 6, 0x0A02, 0, 0x0A02, 0, 1},
}), by_id);
// clang-format on

// A character result of the longest length, error on error, no steps.
TEST(PathInitSimple, CharacterResultErrorOnError) {
    jpath p;
    std::memset(&p, 0xCD, sizeof p);
    EXPECT_EQ(jpath_init_simple(&p, JPATH_DIALECT_MYSQL_ARRAY), 0);
    EXPECT_EQ(fields(p), (std::vector<uint32_t>{3, 0, 1, 2, 0}));
    EXPECT_EQ((std::vector<uint32_t>{p.ret_len, p.dialect, p.fun_kind}),
              (std::vector<uint32_t>{32767, 2, 0}));
    EXPECT_EQ(p.first_filter, nullptr);
}

// ---- steps ----

// steps_text checks every step's links as it goes.
TEST(PathSteps, AppendInOrderWithPrivateKeys) {
    VxEnv env;
    jpath p;
    jpath_init_simple(&p, 0);
    std::string key = "abc";
    ASSERT_EQ(jpath_add_filter(env.ctx.get(), &p, nullptr, 0, JPATH_STEP_ROOT), 0);
    ASSERT_EQ(jpath_add_filter(env.ctx.get(), &p, key.data(), 2, JPATH_STEP_MEMBER), 0);
    ASSERT_EQ(jpath_add_filter_low(nullptr, env.heap, &p, "", 0, JPATH_STEP_SUBSCRIPTS), 0);
    key[0] = 'X'; // the step keeps its own copy
    EXPECT_EQ(steps_text(&p), "$ .ab []");
    EXPECT_EQ(env.ctx->cur_filter, p.first_filter->next) << "only jpath_add_filter moves it";
    for (const jpath_filter *f = p.first_filter; f; f = f->next)
        EXPECT_EQ((std::vector<int32_t>{f->first_index, f->max_index}), (std::vector{-1, -1}));
}

// Each allocation the adders make fails in turn: -503, the path as it was
// (no half-linked step), the failure reported once by jpath_add_filter.
TEST(PathSteps, OutOfMemoryLeavesPathUnchanged) {
    for (uint64_t calls : {0, 1}) {
        VxEnv env;
        jpath p;
        jpath_init_simple(&p, 0);
        ASSERT_EQ(jpath_add_filter(env.ctx.get(), &p, "a", 1, JPATH_STEP_MEMBER), 0);
        mem_heap_set_call_limit(env.heap, calls);
        elog_trail_clear();
        EXPECT_EQ(jpath_add_filter(env.ctx.get(), &p, "b", 1, JPATH_STEP_MEMBER), -503) << calls;
        EXPECT_EQ(elog_trail_count(), 1u);
        EXPECT_EQ(p.filter_count, 1u);
        EXPECT_EQ(p.first_filter, p.last_filter);
        EXPECT_EQ(p.last_filter->next, nullptr);
        EXPECT_EQ(env.ctx->cur_filter, p.first_filter);
    }
}

// ---- subscripts and ranges ----

// One add: 'i' subscript a, 'r' range a..b, 'p' PostgreSQL subscript a.
struct Add {
    char op;
    int32_t a, b;
};

struct IndexRow {
    const char *id;
    std::vector<Add> adds;
    int32_t code;        // of the last add; the earlier ones succeed
    std::string entries; // "start[-end],..." as steps_text writes them
    int32_t first_index, max_index;
    uint32_t multi;
};

int32_t apply(void *heap, jpath_filter *f, const Add &a) {
    switch (a.op) {
    case 'i': return jpath_add_index(nullptr, heap, f, a.a);
    case 'r': return jpath_add_range(nullptr, heap, f, a.a, a.b);
    default: return jpath_add_index_pg(nullptr, heap, f, a.a);
    }
}

class PathIndex : public ::testing::TestWithParam<IndexRow> {};

TEST_P(PathIndex, EntriesAndMarks) {
    const IndexRow &r = GetParam();
    VxEnv env;
    jpath p;
    jpath_init_simple(&p, 0);
    ASSERT_EQ(jpath_add_filter_low(nullptr, env.heap, &p, "", 0, JPATH_STEP_SUBSCRIPTS), 0);
    jpath_filter *f = p.last_filter;
    for (size_t i = 0; i < r.adds.size(); i++) {
        const int32_t rc = apply(env.heap, f, r.adds[i]);
        EXPECT_EQ(rc, i + 1 == r.adds.size() ? r.code : 0) << "add " << i;
    }
    EXPECT_EQ(entries_text(f), r.entries);
    EXPECT_EQ(f->first_index, r.first_index);
    EXPECT_EQ(f->max_index, r.max_index);
    EXPECT_EQ(f->multi, r.multi);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathIndex, rows<IndexRow>({
    {"x01_single", {{'i', 2, 0}}, 0, "2", 2, 2, 0},
    {"x02_ascending", {{'i', 1, 0}, {'i', 4, 0}}, 0, "1,4", 1, 4, 1},
    {"x03_repeat_absorbed", {{'i', 3, 0}, {'i', 3, 0}}, 0, "3", 3, 3, 1},
    {"x04_zero_twice", {{'i', 0, 0}, {'i', 0, 0}}, 0, "0", 0, 0, 1},
    {"x05_descending", {{'i', 5, 0}, {'i', 2, 0}}, -3102, "5", 5, 5, 1},
    {"x06_two_then_one", {{'i', 2, 0}, {'i', 1, 0}}, -3102, "2", 2, 2, 1},
    {"x07_index_then_range", {{'i', 1, 0}, {'r', 3, 5}}, 0, "1,3-5", 1, 5, 1},
    {"x08_range_alone_not_multi", {{'r', 1, 3}}, 0, "1-3", 1, 3, 0},
    {"x09_ranges_touching_trimmed", {{'r', 2, 4}, {'r', 4, 6}}, 0, "2-4,5-6", 2, 6, 1},
    {"x10_range_reversed", {{'r', 4, 2}}, -3102, "", 4, -1, 0},
    {"x11_range_overlap", {{'r', 2, 5}, {'r', 3, 7}}, -3102, "2-5", 2, 5, 1},
    {"x12_range_below", {{'i', 6, 0}, {'r', 1, 2}}, -3102, "6", 6, 6, 1},
    // A first range of one position goes through the subscript adder,
    // which counts it as a second item: multi 1.
    {"x13_range_zero_zero", {{'r', 0, 0}}, 0, "0", 0, 0, 1},
    {"x14_range_point_repeat", {{'i', 3, 0}, {'r', 3, 3}}, 0, "3", 3, 3, 1},
    {"x15_range_point_after", {{'i', 1, 0}, {'r', 3, 3}}, 0, "1,3", 1, 3, 1},
    {"x16_trim_to_single", {{'i', 4, 0}, {'r', 4, 5}}, 0, "4,5", 4, 5, 1},
    {"x17_range_then_index_inside", {{'r', 2, 6}, {'i', 4, 0}}, -3102, "2-6", 2, 6, 1},
    {"x18_range_then_index_end", {{'r', 2, 6}, {'i', 6, 0}}, 0, "2-6", 2, 6, 1},
    {"x20_int_max", {{'i', 2147483646, 0}, {'r', 2147483646, 2147483647}}, 0,
        "2147483646,2147483647", 2147483646, 2147483647, 1},
    {"x21_pg_any_order", {{'p', 5, 0}, {'p', -1, 0}, {'p', 5, 0}}, 0, "5,-1,5", 5, 5, 0},
    {"x22_pg_latest_marks", {{'p', 3, 0}, {'p', -2, 0}}, 0, "3,-2", -2, -2, 0},
}), by_id);
// clang-format on

// Entry allocation failure: -503 rather than a crash, the step as it was.
TEST(PathIndexMemory, FailedEntryIsNoMemory) {
    VxEnv env;
    jpath p;
    jpath_init_simple(&p, 0);
    ASSERT_EQ(jpath_add_filter_low(nullptr, env.heap, &p, "", 0, JPATH_STEP_SUBSCRIPTS), 0);
    jpath_filter *f = p.last_filter;
    ASSERT_EQ(jpath_add_index(nullptr, env.heap, f, 1), 0);
    mem_heap_set_call_limit(env.heap, 0);
    EXPECT_EQ(jpath_add_index(nullptr, env.heap, f, 2), -503);
    EXPECT_EQ(jpath_add_range(nullptr, env.heap, f, 3, 4), -503);
    EXPECT_EQ(jpath_add_index_pg(nullptr, env.heap, f, 7), -503);
    EXPECT_EQ(entries_text(f), "1");
    EXPECT_EQ(f->max_index, 1);
    EXPECT_EQ(f->first_index, 1);
}

} // namespace
