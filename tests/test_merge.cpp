// Merge preserve and merge patch, concatenation in every pairing of shapes,
// null stripping, and every out-of-memory exit of them.  Documents are read
// with sorted keys wherever the merge needs sorted member lists.
#include <gtest/gtest.h>

#include <set>

#include "vx_env.h"

namespace {
using ::operator<<;

// Merge.
struct MergeRow {
    const char *id;
    const char *a, *b;
    const char *expect;  // compact text of the result
};

class MergeCase : public ::testing::TestWithParam<MergeRow> {
protected:
    std::string merge(int32_t patch) {
        const MergeRow &r = GetParam();
        json_node *a = env.tree(r.a, true), *b = env.tree(r.b, true);
        char *text = nullptr;
        uint32_t len = 0;
        EXPECT_EQ(json_merge_mysql(a, b, patch, env.ctx.get(), &text, &len), 0);
        return text ? env.take(text, len) : std::string("<none>");
    }
    VxEnv env{dialect(JLPCA_COMPAT_MYSQL)};
};

class Preserve : public MergeCase {};
class Patch : public MergeCase {};

TEST_P(Preserve, Text) { EXPECT_EQ(merge(0), GetParam().expect); }
TEST_P(Patch, Text) { EXPECT_EQ(merge(1), GetParam().expect); }

INSTANTIATE_TEST_SUITE_P(Shapes, Preserve, rows<MergeRow>({
    {"SameMember", "{\"a\":1}", "{\"a\":2}", "{\"a\":[1,2]}"},
    {"ArrayMemberWithScalar", "{\"a\":[1]}", "{\"a\":2}", "{\"a\":[1,2]}"},
    {"ScalarMemberWithArray", "{\"a\":1}", "{\"a\":[2,3]}", "{\"a\":[1,2,3]}"},
    {"ArrayWithScalar", "[1,2]", "3", "[1,2,3]"},
    {"ScalarWithArray", "1", "[2,3]", "[1,2,3]"},
    {"ObjectWithArray", "{\"a\":1}", "[2]", "[{\"a\":1},2]"},
    {"ArrayWithObject", "[1]", "{\"a\":2}", "[1,{\"a\":2}]"},
    {"ScalarWithObject", "1", "{\"a\":2}", "[1,{\"a\":2}]"},
    {"EqualScalars", "1", "1", "[1,1]"},
    {"EqualArrays", "[1]", "[1]", "[1,1]"},
    {"EmptyArrays", "[]", "[]", "[]"},
    {"EmptyArrayAndScalar", "[]", "null", "[null]"},
    {"EmptyObjects", "{}", "{}", "{}"},
    {"NestedArraysStayNested", "{\"a\":[1,[2]]}", "{\"a\":[[3]]}", "{\"a\":[1,[2],[3]]}"},
    {"NestedObjects", "{\"a\":{\"b\":1}}", "{\"a\":{\"b\":2,\"c\":3}}", "{\"a\":{\"b\":[1,2],\"c\":3}}"},
    {"NullsAreKept", "{\"a\":{\"x\":1,\"y\":null}}", "{\"a\":{\"x\":2,\"z\":null},\"b\":null}", "{\"a\":{\"x\":[1,2],\"y\":null,\"z\":null},\"b\":null}"},
    // Sorted order: shorter names first, then bytewise.
    {"InterleavedNames", "{\"b\":1,\"aa\":2}", "{\"a\":3,\"ccc\":4,\"bb\":5}", "{\"a\":3,\"b\":1,\"aa\":2,\"bb\":5,\"ccc\":4}"},
    // Containers write their strings with the standard escapes whatever
    // the caller asked for, so the backslash before n is doubled here.
    {"NestedStringsUseStandardEscapes", "{\"a\":\"x\\\"y\\\\n\"}", "{\"a\":1}", "{\"a\":[\"x\\\"y\\\\n\",1]}"},
}), by_id);

INSTANTIATE_TEST_SUITE_P(Shapes, Patch, rows<MergeRow>({
    {"NullRemovesAndNewAdds", "{\"a\":1,\"b\":2}", "{\"b\":null,\"c\":3}", "{\"a\":1,\"c\":3}"},
    {"ObjectReplacesScalar", "{\"a\":1,\"b\":2}", "{\"a\":{\"x\":1}}", "{\"a\":{\"x\":1},\"b\":2}"},
    {"PatchOntoScalarKeepsItsNulls", "1", "{\"a\":null}", "{\"a\":null}"},
    {"ScalarPatchReplaces", "{\"a\":1}", "2", "2"},
    // A string result is written with MySQL escapes: a backslash before
    // n stands as the escape \n instead of being doubled.
    {"StringResultUsesMySqlEscapes", "{\"a\":1}", "\"x\\\"y\\\\n\"", "\"x\\\"y\\n\""},
    {"ArrayPatchReplaces", "{\"a\":1}", "[1,null]", "[1,null]"},
    {"ObjectPatchOntoArray", "[1,2]", "{\"a\":1}", "{\"a\":1}"},
    {"ArraysAreNotMerged", "{\"a\":[1,2]}", "{\"a\":[3]}", "{\"a\":[3]}"},
    {"NullForMissingMember", "{\"a\":1}", "{\"b\":null}", "{\"a\":1}"},
    {"NullSortingFirst", "{\"b\":1}", "{\"a\":null}", "{\"b\":1}"},
    {"NullPastTheEnd", "{\"a\":1}", "{\"zz\":null,\"b\":2}", "{\"a\":1,\"b\":2}"},
    {"RemoveEveryMember", "{\"a\":1,\"b\":2}", "{\"b\":null,\"a\":null}", "{}"},
    {"EmptyObjects", "{}", "{}", "{}"},
    {"PatchKeepsTargetNulls", "{\"a\":null,\"b\":1}", "{\"b\":2}", "{\"a\":null,\"b\":2}"},
    {"PatchKeepsNullsInsideMovedObjects", "{\"a\":{\"x\":1,\"y\":2}}", "{\"a\":{\"x\":null,\"z\":{\"q\":null}},\"c\":{\"d\":null}}", "{\"a\":{\"y\":2,\"z\":{\"q\":null}},\"c\":{\"d\":null}}"},
    {"DeepNullRemoves", "{\"a\":{\"b\":{\"c\":1,\"d\":2}}}", "{\"a\":{\"b\":{\"c\":null}}}", "{\"a\":{\"b\":{\"d\":2}}}"},
}), by_id);

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
    EXPECT_EQ(out->items[0]->parent, a);  // parents are left as they were
}

// Concatenation.
struct ConcatRow {
    const char *id;
    const char *a, *b;
    int32_t policy;  // 0 none, 1 dup_key_replace, 2 unique_keys, 3 sorted_keys
    int32_t rc;
    const char *expect;
};

class Concat : public ::testing::TestWithParam<ConcatRow> {};
TEST_P(Concat, Text) {
    const ConcatRow &r = GetParam();
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree(r.a, r.policy == 3), *b = env.tree(r.b, r.policy == 3);
    env.ctx->dup_key_replace = r.policy == 1;
    env.ctx->unique_keys = r.policy == 2;
    char *text = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(jsonb_concat(a, b, env.ctx.get(), &text, &len), r.rc);
    if (r.rc == 0) {
        EXPECT_EQ(env.take(text, len), r.expect);
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, Concat, rows<ConcatRow>({
    {"ObjectObject", "{\"a\":1}", "{\"b\":[2]}", 0, 0, "{\"a\":1,\"b\":[2]}"},
    {"ObjectObjectReplace", "{\"a\":1,\"b\":2}", "{\"a\":3}", 1, 0, "{\"a\":3,\"b\":2}"},
    {"ConcatKeepsDuplicateMembersWithoutPolicy", "{\"a\":1}", "{\"a\":2}", 0, 0, "{\"a\":1,\"a\":2}"},
    {"ObjectObjectUniqueKeys", "{\"a\":1}", "{\"a\":2}", 2, VXJSON_ERR_INVALID_JSON, ""},
    {"ObjectObjectSorted", "{\"bb\":1}", "{\"c\":2,\"a\":3}", 3, 0, "{\"a\":3,\"c\":2,\"bb\":1}"},
    {"EmptyObjects", "{}", "{}", 0, 0, "{}"},
    {"ObjectArray", "{\"a\":1}", "[2]", 0, 0, "[{\"a\":1},2]"},
    {"ObjectScalar", "{\"a\":1}", "1", 0, VXJSON_ERR_CONCAT_SCALAR, ""},
    {"ObjectNull", "{}", "null", 0, VXJSON_ERR_CONCAT_SCALAR, ""},
    {"ScalarObject", "1", "{\"a\":1}", 0, VXJSON_ERR_CONCAT_SCALAR, ""},
    {"StringObject", "\"x\"", "{}", 0, VXJSON_ERR_CONCAT_SCALAR, ""},
    {"ArrayArray", "[1]", "[2,3]", 0, 0, "[1,2,3]"},
    {"ArrayObject", "[1]", "{\"a\":1}", 0, 0, "[1,{\"a\":1}]"},
    {"ArrayScalar", "[1]", "2", 0, 0, "[1,2]"},
    {"ConcatOfEmptyArrayKeepsLeadingComma", "[]", "[1]", 0, 0, "[,1]"},
    {"ConcatWithEmptyArrayKeepsTrailingComma", "[1]", "[]", 0, 0, "[1,]"},
    {"EmptyArraysGiveLoneComma", "[]", "[]", 0, 0, "[,]"},
    {"NestedArrays", "[[1]]", "[[2]]", 0, 0, "[[1],[2]]"},
    {"ScalarScalar", "1", "2", 0, 0, "[1,2]"},
    {"ScalarArray", "1", "[2,3]", 0, 0, "[1,2,3]"},
    {"StringNull", "\"a\"", "null", 0, 0, "[\"a\",null]"},
    {"StringsEscapedAsJson", "[\"a\\\"b\"]", "\"c\\nd\\\\n\"", 0, 0, "[\"a\\\"b\",\"c\\nd\\\\n\"]"},
    {"DecimalsAsWritten", "1.50E+3", "[2.0]", 0, 0, "[1.50E+3,2.0]"},
}), by_id);

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
struct StripRow { const char *id; const char *doc; const char *expect; };

class StripNulls : public ::testing::TestWithParam<StripRow> {};
TEST_P(StripNulls, Text) {
    const StripRow &r = GetParam();
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *doc = env.tree(r.doc);
    if (doc->type == JSON_OBJECT) {
        ASSERT_EQ(jsonb_strip_nulls_object(doc), 0);
        member_names(doc);  // checks count and both ends of the list
    } else {
        ASSERT_EQ(jsonb_strip_nulls_array(doc), 0);
    }
    EXPECT_EQ(env.text_of(doc), r.expect);
}

INSTANTIATE_TEST_SUITE_P(Docs, StripNulls, rows<StripRow>({
    {"MembersAndNested", "{\"a\":null,\"b\":[null,{\"c\":null}]}", "{\"b\":[null,{}]}"},
    {"Deep", "{\"a\":{\"b\":{\"c\":{\"d\":null,\"e\":1}}}}", "{\"a\":{\"b\":{\"c\":{\"e\":1}}}}"},
    {"ArrayNullsStay", "[null,{\"a\":null},[{\"b\":null,\"c\":[null]}]]", "[null,{},[{\"c\":[null]}]]"},
    {"EmptyObject", "{}", "{}"},
    {"OnlyNull", "{\"a\":null}", "{}"},
    {"AllNull", "{\"a\":null,\"b\":null,\"c\":null}", "{}"},
    {"LastNull", "{\"a\":1,\"b\":null}", "{\"a\":1}"},
    {"FirstNull", "{\"a\":null,\"b\":1}", "{\"b\":1}"},
    {"MiddleNull", "{\"a\":1,\"b\":null,\"c\":2}", "{\"a\":1,\"c\":2}"},
    {"NullStringKept", "{\"a\":\"null\",\"b\":false}", "{\"a\":\"null\",\"b\":false}"},
}), by_id);

// Inputs long enough that the result text must grow, with nested merges
// that each need a new array.
const char *const kDocA = "{\"a\":[1,2,3],\"b\":{\"c\":\"a string long enough to make the text grow\",\"d\":[4,5]},"
                          "\"e\":1,\"f\":{\"g\":2}}";
const char *const kDocB = "{\"a\":4,\"b\":{\"c\":\"another string, also long enough to matter\",\"d\":6,\"h\":null},"
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
            SCOPED_TRACE(std::string(which == 0 ? "heap" : "allocator") + " call limit " + std::to_string(n));
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

INSTANTIATE_TEST_SUITE_P(Operations, OutOfMemory, rows<OomRow>({
    {"MergePreserve", kDocA, kDocB, 0, {3539, 3547}},
    {"MergePatch", kDocA, kDocB, 1, {3539, 3547}},
    {"ConcatObjects", kDocA, kDocB, 2, {1842, 1856}},
    {"ConcatArrays", "[{\"x\":\"a long enough string\"},2,3]", kDocB, 2, {1794, 1804}},
    {"ConcatScalars", "\"a string\"", "[1,2,3,4,5,6,7,8,9]", 2, {1794, 1804}},
}), by_id);

} // namespace
