// Merge preserve and merge patch, concatenation in every pairing of shapes,
// null stripping, and every out-of-memory exit of them.  Documents are read
// with sorted keys wherever the merge needs sorted member lists.
#include <gtest/gtest.h>

#include <set>

#include "data_rows.h"
#include "vx_env.h"

namespace {
using ::operator<<;

// Rows of tests/data/tree_ops/merge_*.tsv: id, a, b, the result text.
class MergeCase : public ::testing::TestWithParam<DataRow> {
protected:
    std::string merge(int32_t patch) {
        const DataRow &r = GetParam();
        json_node *a = env.tree(r.f[1], true), *b = env.tree(r.f[2], true);
        char *text = nullptr;
        uint32_t len = 0;
        EXPECT_EQ(json_merge_mysql(a, b, patch, env.ctx.get(), &text, &len), 0);
        return text ? env.take(text, len) : std::string("<none>");
    }
    VxEnv env{dialect(JLPCA_COMPAT_MYSQL)};
};
class Preserve : public MergeCase {};
class Patch : public MergeCase {};
TEST_P(Preserve, Text) { EXPECT_EQ(merge(0), GetParam().f[3]); }
TEST_P(Patch, Text) { EXPECT_EQ(merge(1), GetParam().f[3]); }
INSTANTIATE_TEST_SUITE_P(Shapes, Preserve, rows_of("tree_ops/merge_preserve.tsv"),
                         data_row_namer());
INSTANTIATE_TEST_SUITE_P(Shapes, Patch, rows_of("tree_ops/merge_patch.tsv"), data_row_namer());

TEST(TreeOpsFiles, EveryFileHasItsRows) {
    expect_row_counts({{"tree_ops/merge_preserve.tsv", 18},
                       {"tree_ops/merge_patch.tsv", 16},
                       {"tree_ops/concat.tsv", 23},
                       {"tree_ops/strip_nulls.tsv", 10},
                       {"tree_ops/equality.tsv", 45},
                       {"tree_ops/containment.tsv", 45}});
}

// The merge walks both member lists in sorted order; read without sorted
// keys, same-named members are not paired.
TEST(MergeOrder, MergeWalksMembersInSortedOrderOnly) {
    VxEnv env{dialect(JLPCA_COMPAT_MYSQL)};
    json_node *out = nullptr;
    json_node *a = env.tree("{\"b\":1,\"a\":2}");
    ASSERT_EQ(json_merge_preserve_mysql(a, env.tree("{\"a\":3}"), env.ctx.get(), &out), 0);
    EXPECT_EQ(env.text_of(out), "{\"a\":3,\"b\":1,\"a\":2}");
    json_node *c = env.tree("{\"b\":1,\"a\":2}", true);
    ASSERT_EQ(json_merge_preserve_mysql(c, env.tree("{\"a\":3}", true), env.ctx.get(), &out), 0);
    EXPECT_EQ(env.text_of(out), "{\"a\":[2,3],\"b\":1}");
}

TEST(MergeOrder, MembersMoveFromSecondObject) {
    VxEnv env{dialect(JLPCA_COMPAT_MYSQL)};
    json_node *a = env.tree("{\"a\":1,\"c\":2}", true);
    json_node *b = env.tree("{\"b\":3,\"c\":4,\"dd\":5}", true);
    json_node *out = nullptr;
    ASSERT_EQ(json_object_merge_mysql(a, b, env.ctx.get(), 0, &out), 0);
    EXPECT_EQ(out, a);
    EXPECT_EQ(member_names(a), (std::vector<std::string>{"a", "b", "c", "dd"}));
    // b keeps only the member whose name a already had.
    EXPECT_EQ(member_names(b), (std::vector<std::string>{"c"}));
}

TEST(MergeOrder, PreserveArrayIsPointerArrayOfSharedElements) {
    VxEnv env{dialect(JLPCA_COMPAT_MYSQL)};
    json_node *a = env.tree("[1,2]"), *b = env.tree("{\"x\":3}");
    json_node *out = nullptr;
    ASSERT_EQ(json_merge_preserve_mysql(a, b, env.ctx.get(), &out), 0);
    ASSERT_EQ(out->type, uint32_t(JSON_ARRAY));
    EXPECT_EQ(out->count, 3u);
    EXPECT_EQ(out->capacity, 3u);
    EXPECT_EQ(out->lst_count, 0u);
    EXPECT_EQ(out->lst_first, nullptr);
    EXPECT_EQ(out->items[0], a->items[0]);
    EXPECT_EQ(out->items[2], b);
    EXPECT_EQ(out->items[0]->parent, a); // parents are left as they were
}

// Concatenation.
// Rows of tests/data/tree_ops/concat.tsv: id, a, b, key policy, code, text.
class Concat : public ::testing::TestWithParam<DataRow> {};
TEST_P(Concat, Text) {
    const DataRow &r = GetParam();
    const int64_t policy = r.num(3); // 0 none, 1 dup_key_replace, 2 unique_keys, 3 sorted_keys
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree(r.f[1], policy == 3), *b = env.tree(r.f[2], policy == 3);
    env.ctx->dup_key_replace = policy == 1;
    env.ctx->unique_keys = policy == 2;
    char *text = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(jsonb_concat(a, b, env.ctx.get(), &text, &len), r.num(4));
    if (r.num(4) == 0) {
        EXPECT_EQ(env.take(text, len), r.f[5]);
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, Concat, rows_of("tree_ops/concat.tsv"), data_row_namer());

TEST(ConcatReports, RefusedMemberNamesTheAddSite) {
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree("{\"a\":1}"), *b = env.tree("{\"a\":2}");
    env.ctx->unique_keys = 1;
    elog_trail_clear();
    char *text = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(jsonb_concat_to_object(a, b, env.ctx.get(), &text, &len), VXJSON_ERR_INVALID_JSON);
    EXPECT_EQ(trail(), (Trail{{VXJSON_ERR_INVALID_JSON, 1842}}));
}

// Null stripping.
// Rows of tests/data/tree_ops/strip_nulls.tsv: id, document, its text after.
class StripNulls : public ::testing::TestWithParam<DataRow> {};
TEST_P(StripNulls, Text) {
    const DataRow &r = GetParam();
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *doc = env.tree(r.f[1]);
    if (doc->type == JSON_OBJECT) {
        ASSERT_EQ(jsonb_strip_nulls_object(doc), 0);
        member_names(doc); // checks count and both ends of the list
    } else {
        ASSERT_EQ(jsonb_strip_nulls_array(doc), 0);
    }
    EXPECT_EQ(env.text_of(doc), r.f[2]);
}

INSTANTIATE_TEST_SUITE_P(Docs, StripNulls, rows_of("tree_ops/strip_nulls.tsv"), data_row_namer());

// Inputs long enough that the result text must grow, with nested merges
// that each need a new array.
const char *const kDocA =
    "{\"a\":[1,2,3],\"b\":{\"c\":\"a string long enough to make the text grow\",\"d\":[4,5]},"
    "\"e\":1,\"f\":{\"g\":2}}";
const char *const kDocB =
    "{\"a\":4,\"b\":{\"c\":\"another string, also long enough to matter\",\"d\":6,\"h\":null},"
    "\"e\":[7],\"i\":8}";

struct OomRow {
    const char *id, *a, *b;
    int32_t op;                    // 0 merge preserve, 1 merge patch, 2 concatenation
    std::set<int32_t> outer_lines; // where the outermost -503 may be reported
};

// The row's operation on fresh trees with the heap (which 0) or the
// allocator (which 1) failing after `limit` calls of its own: its code,
// its text in *out, and in calls[] what it asked of each.
int32_t run_op(const OomRow &r, int which, uint64_t limit, std::string *out, uint64_t calls[2]) {
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree(r.a, r.op < 2), *b = env.tree(r.b, r.op < 2);
    const uint64_t heap0 = mem_heap_alloc_count(env.heap), alloc0 = env.alloc_state.calls;
    if (which == 0) mem_heap_set_call_limit(env.heap, limit);
    else vx_allocator_set_call_limit(&env.alloc_state, limit);
    elog_trail_clear();
    char *text = nullptr;
    uint32_t len = 0;
    const int32_t rc = r.op < 2 ? json_merge_mysql(a, b, r.op, env.ctx.get(), &text, &len)
                                : jsonb_concat(a, b, env.ctx.get(), &text, &len);
    calls[0] = mem_heap_alloc_count(env.heap) - heap0;
    calls[1] = env.alloc_state.calls - alloc0;
    if (rc == 0) *out = env.take(text, len);
    return rc;
}

// Every n up to what a successful run makes: the result is either a
// reported -503 or the same text as without limits.
class OutOfMemory : public ::testing::TestWithParam<OomRow> {};
TEST_P(OutOfMemory, EveryFailingCallIsReported) {
    const OomRow &r = GetParam();
    std::string expect, got;
    uint64_t calls[2], ignored[2];
    ASSERT_EQ(run_op(r, 0, UINT64_MAX, &expect, calls), 0);
    ASSERT_GT(calls[1], 0u) << "every result text comes from the allocator";
    for (int which = 0; which < 2; which++) {
        int failures = 0;
        for (uint64_t n = 0; n <= calls[which]; n++) {
            SCOPED_TRACE(std::string(which == 0 ? "heap" : "allocator") + " call limit " +
                         std::to_string(n));
            const int32_t rc = run_op(r, which, n, &got, ignored);
            if (rc == 0) {
                EXPECT_EQ(got, expect);
                continue;
            }
            failures++;
            ASSERT_EQ(rc, VXJSON_ERR_NOMEM);
            const Trail reports = trail();
            ASSERT_FALSE(reports.empty());
            EXPECT_EQ(reports.back().first, VXJSON_ERR_NOMEM);
            EXPECT_TRUE(r.outer_lines.count(reports.back().second)) << reports.back().second;
        }
        EXPECT_TRUE(calls[which] == 0 || failures > 0) << "a limit below the calls made must fail";
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Operations, OutOfMemory, rows<OomRow>({
    {"MergePreserve", kDocA, kDocB, 0, {3539, 3547}},
    {"MergePatch", kDocA, kDocB, 1, {3539, 3547}},
    {"ConcatObjects", kDocA, kDocB, 2, {1842, 1856}},
    {"ConcatArrays", "[{\"x\":\"a long enough string\"},2,3]", kDocB, 2, {1794, 1804}},
    {"ConcatScalars", "\"a string\"", "[1,2,3,4,5,6,7,8,9]", 2, {1794, 1804}},
}), by_id);
// clang-format on

} // namespace
