// Changes by path: removal, set / insert / replace, jsonb_set through
// text-array paths, array append and insert.  Each row of
// tests/data/change/*.tsv is run on a fresh read of its inputs; after the
// change the tree's links must still be whole, and after a failure the tree
// must still write (the text it writes is the row's expectation).  Each row
// again with the heap, and apart the allocator, exhausted at each of its
// calls: its own code or -503, the links whole, every temporary given back.
#include <gtest/gtest.h>

#include "change_run.h"
#include "data_rows.h"

namespace {
using ::operator<<;

class Change : public ::testing::TestWithParam<DataRow> {};
TEST_P(Change, CodeAndText) {
    const DataRow &r = GetParam();
    const ChangeOutcome o = run_change({r.f[1], r.f[2], r.f[3], r.f[4]});
    EXPECT_EQ(o.code, r.num(5));
    EXPECT_EQ(o.text, r.f[6]);
    EXPECT_EQ(o.problem, "");
}

// The change with the heap (heap true) or the allocator failing after n
// calls of its own: the calls it made, *rc its code.
uint64_t run_limited(const ChangeInput &in, bool heap, uint64_t n, int32_t *rc) {
    VxEnv env(dialect(change_is_pg(in.op) ? JLPCA_COMPAT_PG : JLPCA_COMPAT_MYSQL));
    ChangeSetup s(env, in);
    EXPECT_EQ(s.code, 0);
    const uint64_t arrays = env.alloc_state.outstanding;
    const uint64_t before = heap ? mem_heap_alloc_count(env.heap) : env.alloc_state.calls;
    if (heap) mem_heap_set_call_limit(env.heap, n);
    else vx_allocator_set_call_limit(&env.alloc_state, n);
    std::string text;
    *rc = s.run(env, in.op, &text);
    const uint64_t calls = (heap ? mem_heap_alloc_count(env.heap) : env.alloc_state.calls) - before;
    EXPECT_EQ(env.alloc_state.outstanding, arrays) << "limit " << n;
    mem_heap_set_call_limit(env.heap, UINT64_MAX);
    vx_allocator_set_call_limit(&env.alloc_state, UINT64_MAX);
    EXPECT_EQ(tree_problem(s.doc), "") << "limit " << n;
    std::string after;
    EXPECT_EQ(env.write(s.doc, &after), 0) << "limit " << n;
    return calls;
}

class ChangeFaults : public ::testing::TestWithParam<DataRow> {};
TEST_P(ChangeFaults, AtEveryAllocation) {
    const DataRow &r = GetParam();
    const ChangeInput in{r.f[1], r.f[2], r.f[3], r.f[4]};
    const int32_t code = int32_t(r.num(5));
    for (bool heap : {true, false}) {
        int32_t rc = 0;
        const uint64_t needed = run_limited(in, heap, UINT64_MAX, &rc);
        for (uint64_t n = 0; n <= needed; n++) {
            run_limited(in, heap, n, &rc);
            if (n == needed) EXPECT_EQ(rc, code) << "limit " << n;
            else EXPECT_TRUE(rc == code || rc == VXJSON_ERR_NOMEM) << "limit " << n << ": " << rc;
        }
    }
}

#define CHANGE_FILES(Suite)                                                                        \
    INSTANTIATE_TEST_SUITE_P(Remove, Suite, rows_of("change/remove.tsv"), data_row_namer());      \
    INSTANTIATE_TEST_SUITE_P(Set, Suite, rows_of("change/set.tsv"), data_row_namer());            \
    INSTANTIATE_TEST_SUITE_P(PgSet, Suite, rows_of("change/pg_set.tsv"), data_row_namer());       \
    INSTANTIATE_TEST_SUITE_P(ArrayAdd, Suite, rows_of("change/array_add.tsv"), data_row_namer())
CHANGE_FILES(Change);
CHANGE_FILES(ChangeFaults);

TEST(ChangeFiles, EveryFileHasItsRows) {
    expect_row_counts({{"change/remove.tsv", 27},
                       {"change/set.tsv", 39},
                       {"change/pg_set.tsv", 20},
                       {"change/array_add.tsv", 28}});
}

// The value node goes into the tree itself, not a copy of it.
TEST(ChangeValues, PutInWithoutCopy) {
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    ChangeSetup s(env, {"set", R"({"a":1})", "$.b", "[2]"});
    ASSERT_EQ(s.code, 0);
    std::string text;
    ASSERT_EQ(s.run(env, "set", &text), 0);
    EXPECT_EQ(s.doc->last_member->value, s.value);
    EXPECT_EQ(s.value->parent, s.doc);
}

// An array-insert that finds nothing drops the path's last step for good.
TEST(ChangeArrayInsert, PastTheEndShortensThePath) {
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    ChangeSetup s(env, {"arrayinsert", "[1]", R"(["$[7]"])", "[2]"});
    ASSERT_EQ(s.code, 0);
    ASSERT_EQ(s.paths[0].filter_count, 2u);
    std::string text;
    ASSERT_EQ(s.run(env, "arrayinsert", &text), 0);
    EXPECT_EQ(text, "[1,2]");
    EXPECT_EQ(s.paths[0].filter_count, 1u);
    EXPECT_EQ(s.paths[0].first_filter, s.paths[0].last_filter);
    EXPECT_EQ(s.paths[0].last_filter->next, nullptr);
}

// With the single-value option the values argument is the value, and only
// the first path counts.
TEST(ChangeArrayAdd, SingleValueTakesFirstPathOnly) {
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    ChangeSetup s(env, {"append", R"({"a":[],"b":[]})", R"(["$.a","$.b"])", R"({"x":1})"});
    ASSERT_EQ(s.code, 0);
    char *out = nullptr;
    uint32_t len = 0;
    ASSERT_EQ(json_array_add_element_mysql_path_array(s.doc, s.count, s.paths, s.value,
                                                      env.ctx.get(), JSON_ARRAY_ADD_SINGLE, &out,
                                                      &len),
              0);
    EXPECT_EQ(env.take(out, len), R"({"a":[{"x":1}],"b":[]})");
}

// A scalar wrapped by an append takes the scalar's place, and both now
// hang from the new array.
TEST(ChangeArrayAdd, WrapLinksParents) {
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    ChangeSetup s(env, {"append", R"({"a":1})", R"(["$.a"])", "[2]"});
    ASSERT_EQ(s.code, 0);
    json_node *old = s.doc->first_member->value;
    std::string text;
    ASSERT_EQ(s.run(env, "append", &text), 0);
    json_node *pair = s.doc->first_member->value;
    ASSERT_EQ(pair->type, uint32_t(JSON_ARRAY));
    EXPECT_EQ(pair->parent, s.doc);
    EXPECT_EQ(pair->is_virtual, 0u);
    EXPECT_EQ(old->parent, pair);
    EXPECT_EQ(pair->items[1]->parent, pair);
}

// The pair a set makes of a scalar is a document array, its elements
// hang from it, and it takes the scalar's parent.
TEST(ChangeSet, WrapIsDocumentArray) {
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    ChangeSetup s(env, {"set", R"({"a":1})", "$.a[5]", "2"});
    ASSERT_EQ(s.code, 0);
    std::string text;
    ASSERT_EQ(s.run(env, "set", &text), 0);
    json_node *pair = s.doc->first_member->value;
    EXPECT_EQ(pair->is_virtual, 0u);
    EXPECT_EQ(pair->parent, s.doc);
    EXPECT_EQ(pair->items[0]->parent, pair);
    EXPECT_EQ(s.value->parent, pair);
}

// A replaced element is the new value, whose parent is left as it was;
// an appended one gets the array as its parent.
TEST(ChangeSet, ElementReplaceLeavesParentAppendSetsIt) {
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    ChangeSetup replaced(env, {"set", "[1]", "$[0]", "2"});
    std::string text;
    ASSERT_EQ(replaced.run(env, "set", &text), 0);
    EXPECT_EQ(replaced.doc->items[0], replaced.value);
    EXPECT_EQ(replaced.value->parent, nullptr);
    ChangeSetup appended(env, {"set", "[1]", "$[1]", "2"});
    ASSERT_EQ(appended.run(env, "set", &text), 0);
    EXPECT_EQ(appended.value->parent, appended.doc);
}

// Out of memory while adding a member or an element: reported at the
// site of the addition and at the walk's, the document unchanged.
TEST(ChangeSet, OutOfMemoryReportsItsSites) {
    const std::pair<ChangeInput, int32_t> cases[] = {{{"set", R"({"a":1})", "$.b", "2"}, 2286},
                                                     {{"set", R"([[1]])", "$[0][1]", "2"}, 2370}};
    for (const auto &[in, line] : cases) {
        VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
        ChangeSetup s(env, in);
        ASSERT_EQ(s.code, 0);
        const std::string before = env.text_of(s.doc);
        elog_trail_clear();
        mem_heap_set_call_limit(env.heap, 0);
        std::string text;
        EXPECT_EQ(s.run(env, in.op, &text), VXJSON_ERR_NOMEM) << in.path;
        mem_heap_set_call_limit(env.heap, UINT64_MAX);
        EXPECT_TRUE(trail_has(VXJSON_ERR_NOMEM, "json/jpath", line)) << in.path;
        EXPECT_TRUE(trail_has(VXJSON_ERR_NOMEM, "json/jpath", 2525)) << in.path;
        EXPECT_EQ(env.text_of(s.doc), before);
    }
}

// json_set_parent: (container, step) -> code, the container's text after.
struct SetParentRow {
    const char *id, *container, *path;
    int32_t code;
    const char *text;
};
class SetParent : public ::testing::TestWithParam<SetParentRow> {};
TEST_P(SetParent, PutsNodeInPlace) {
    const SetParentRow &r = GetParam();
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    json_node *c = env.tree(r.container);
    json_node *node = env.tree("true");
    uint32_t n = 0;
    jpath *p = nullptr;
    ASSERT_EQ(jpath_array_flex(env.ctx.get(), r.path, uint32_t(std::strlen(r.path)), 1, &n, &p), 0);
    EXPECT_EQ(json_set_parent(c, node, p->last_filter), r.code);
    EXPECT_EQ(env.text_of(c), r.text);
    EXPECT_EQ(node->parent, r.code == 0 ? c : nullptr);
}
// clang-format off
INSTANTIATE_TEST_SUITE_P(Places, SetParent, rows<SetParentRow>({
    {"element", "[1,2]", "$[1]", 0, "[1,true]"},
    {"first_of_duplicates", R"({"a":1,"a":2})", "$.a", 0, R"({"a":true,"a":2})"},
    {"missing_member_changes_nothing", R"({"a":1})", "$.b", 0, R"({"a":1})"},
    {"field_step_on_array", "[1]", "$.a", -3113, "[1]"},
    {"subscript_on_object", R"({"a":1})", "$[0]", -3113, R"({"a":1})"},
    {"position_out_of_range", "[1]", "$[3]", -3113, "[1]"},
    {"scalar_container", "1", "$[0]", -3113, "1"},
}), by_id);
// clang-format on

// Reports leave a trail with the fixed sites of the changes.
TEST(ChangeReports, FailuresReportTheirSites) {
    elog_trail_clear();
    EXPECT_EQ(run_change({"set", R"({"a":1})", "$.*", "2"}).code, -3113);
    EXPECT_TRUE(trail_has(-3113, "json/jpath", 2525));
    elog_trail_clear();
    EXPECT_EQ(run_change({"append", R"({"a":[1]})", R"(["$.*"])", "[2]"}).code, -3113);
    EXPECT_TRUE(trail_has(-3113, "json/jpath", 3606));
    EXPECT_TRUE(trail_has(-3113, "json/jpath", 3730));
}

// The jsonb_set_is_multi answer per step kind.
TEST(ChangeSteps, MultiValuedSteps) {
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    const std::pair<const char *, int32_t> cases[] = {{"$.a", 0}, {"$[1]", 0},      {"$[*]", 1},
                                                      {"$.*", 1}, {"$[1 to 2]", 1}, {"$", 0}};
    for (const auto &[text, multi] : cases) {
        uint32_t n = 0;
        jpath *p = nullptr;
        ASSERT_EQ(jpath_array_flex(env.ctx.get(), text, uint32_t(std::strlen(text)), 1, &n, &p), 0)
            << text;
        EXPECT_EQ(jsonb_set_is_multi(p->last_filter), multi) << text;
    }
}

} // namespace
