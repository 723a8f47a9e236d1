// Path evaluation: one table of (document, path, dialects) -> (code,
// matches), grouped by step kind, run through json_query in the standard
// and PostgreSQL-compatible modes and through jpath_filter_mysql with and
// without several matches allowed, and mysql rows again through
// JSON_CONTAINS_PATH.  Matches are written as their compact
// text joined by " | "; "" is no match.  Every match must be a node of the
// document itself, and several matches a virtual array of at least two.
#include <gtest/gtest.h>

#include "path_text.h"
#include "report_sites.h"
#include "vx_env.h"

namespace {
using ::operator<<;

// Dialects a row runs in: the standard and pg modes of json_query, and
// jpath_filter_mysql with several matches allowed (MY) or refused (MY1).
enum : unsigned { STD = 1, PG = 2, MY = 4, MY1 = 8, COMPAT = PG | MY, ALL = STD | PG | MY };

constexpr int32_t NO_MATCH = VXJSON_ERR_PATH_NO_MATCH;
constexpr int32_t BAD_PATH = VXJSON_ERR_PATH;
constexpr int32_t MULTI = VXJSON_ERR_MULTI_STEP;

// What a row gives in some dialects; a row has one or two of these.
struct Expect {
    unsigned dialects;
    int32_t rc;
    const char *matches;
};

struct QueryRow {
    const char *id, *doc, *path;
    std::vector<Expect> expect;
};

struct QueryCase {
    QueryRow row;
    Expect expect;
    unsigned dialect;
    std::string id;
};

const char *dialect_name(unsigned d) {
    return d == STD ? "std" : d == PG ? "pg" : d == MY ? "my" : "my1";
}
int32_t compat_of(unsigned d) { return d == STD ? 0 : d == PG ? 1 : 2; }

// Is n the root or below it (by the parent links the reader leaves)?
bool in_document(const json_node *n, const json_node *root) {
    for (; n; n = n->parent)
        if (n == root) return true;
    return false;
}

struct Outcome {
    int32_t rc;
    std::string matches;
};

// The matches as text, checking that they are the document's own nodes.
std::string matches_text(VxEnv &env, const json_node *root, const json_node *out) {
    if (!out) return "";
    if (out->type == JSON_ARRAY && out->is_virtual) {
        EXPECT_GE(out->count, 2u) << "a virtual array holds two matches or more";
        std::string text;
        for (uint32_t i = 0; i < out->count; i++) {
            EXPECT_TRUE(in_document(out->items[i], root)) << "match " << i << " is a copy";
            text += (i ? " | " : "") + env.text_of(out->items[i]);
        }
        return text;
    }
    EXPECT_TRUE(in_document(out, root)) << "the match is a copy";
    return env.text_of(out);
}

Outcome evaluate(VxEnv &env, json_node *root, const std::string &path_text, unsigned d) {
    jpath path{};
    if (int32_t rc = compile_path(env.ctx.get(), path_text, &path)) return {rc, ""};
    json_node *out = nullptr;
    const int32_t rc = d == STD || d == PG
                           ? json_query(env.ctx.get(), root, &path, &out)
                           : jpath_filter_mysql(root, &path, env.ctx.get(), d == MY, &out);
    if (rc != 0) {
        EXPECT_EQ(out, nullptr) << "no result beside a failure";
    }
    return {rc, rc == 0 ? matches_text(env, root, out) : ""};
}

class Query : public ::testing::TestWithParam<QueryCase> {};
TEST_P(Query, Matches) {
    const QueryCase &c = GetParam();
    VxEnv env(dialect(compat_of(c.dialect)));
    env.ctx->scalar_top = 1;
    json_node *root = env.tree(c.row.doc);
    const Outcome got = evaluate(env, root, c.row.path, c.dialect);
    EXPECT_EQ(got.rc, c.expect.rc);
    EXPECT_EQ(got.matches, c.expect.matches);
    // JSON_CONTAINS_PATH finds a value wherever mysql evaluation matches one.
    jpath path{};
    if (c.dialect == MY && compile_path(env.ctx.get(), c.row.path, &path) == 0) {
        int32_t found = -1;
        EXPECT_EQ(jpath_json_contains_path(root, &path, env.ctx.get(), &found), c.expect.rc);
        EXPECT_EQ(found, c.expect.rc == 0 && *c.expect.matches);
    }
}

auto expand(std::initializer_list<QueryRow> rows) {
    std::vector<QueryCase> out;
    for (const QueryRow &r : rows)
        for (const Expect &e : r.expect)
            for (unsigned d : {STD, PG, MY, MY1})
                if (e.dialects & d)
                    out.push_back({r, e, d, std::string(r.id) + "_" + dialect_name(d)});
    return ::testing::ValuesIn(out);
}
void PrintTo(const QueryCase &c, std::ostream *os) { *os << c.id; }
const auto by_case_id = [](const auto &info) { return info.param.id; };

const char *const STATUSES =
    R"({"statuses":[{"user":{"id":1,"screen_name":"a"}},{"user":{"id":2,"screen_name":"b"}}]})";

// clang-format off
INSTANTIATE_TEST_SUITE_P(Root, Query, expand({
    {"object", R"({"a":1})", "$", {{ALL|MY1, 0, R"({"a":1})"}}},
    {"scalar", "5", "$", {{ALL|MY1, 0, "5"}}},
    {"empty_array", "[]", "$", {{ALL|MY1, 0, "[]"}}},
}), by_case_id);

INSTANTIATE_TEST_SUITE_P(Field, Query, expand({
    {"simple", R"({"a":1,"b":2})", "$.b", {{ALL|MY1, 0, "2"}}},
    {"nested", R"({"a":{"b":{"c":true}}})", "$.a.b.c", {{ALL, 0, "true"}}},
    {"null_value_is_a_value", R"({"a":null})", "$.a", {{ALL, 0, "null"}}},
    {"missing", R"({"a":1})", "$.b", {{STD|PG, NO_MATCH, ""}, {MY|MY1, 0, ""}}},
    {"on_scalar", "5", "$.a", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
    {"case_matters", R"({"A":1})", "$.a", {{STD|PG, NO_MATCH, ""}}},
    {"quoted_with_blank", R"({"a b":1})", R"($."a b")", {{ALL, 0, "1"}}},
    {"empty_name", R"({"":1,"a":2})", R"($."")", {{ALL, 0, "1"}}},
    // Repeated names: the first wins a last step in the standard mode, the
    // last in the pg mode and in mysql.
    {"duplicate_last_step", R"({"a":1,"a":2})", "$.a", {{STD, 0, "1"}, {COMPAT, 0, "2"}}},
    // Before a further step the duplicates are gathered up to the first
    // object value (json_query) or the last one is taken (mysql).
    {"duplicate_gather_stops_at_object", R"({"a":{"b":1},"a":{"b":2}})", "$.a.b",
        {{STD|PG, 0, "1"}, {MY, 0, "2"}}},
    {"duplicate_gather_passes_arrays", R"({"a":[{"b":1}],"a":{"b":2},"a":{"b":3}})", "$.a.b",
        {{STD|PG, 0, "1 | 2"}, {MY, 0, "3"}}},
    // Before a single subscript an array value stops the gathering too.
    {"duplicate_before_subscript", R"({"a":[1,2],"a":[3,4]})", "$.a[0]",
        {{STD|PG, 0, "1"}, {MY, 0, "3"}}},
    {"duplicate_before_lone_range", R"({"a":[1,2],"a":[3,4]})", "$.a[0 to 1]", {{STD, 0, "1 | 2"}}},
    {"duplicate_before_subscript_list", R"({"a":[1,2],"a":[3,4]})", "$.a[0,1]",
        {{STD, 0, "1 | 2 | 3 | 4"}}},
    // On an array: every object element, all its duplicates; only the
    // first nested array is looked into, and a second one ends the walk.
    {"on_array", R"([{"a":1},{"a":2}])", "$.a", {{STD|PG, 0, "1 | 2"}, {MY, 0, ""}}},
    {"on_array_duplicates", R"([{"a":1,"a":2},{"b":3}])", "$.a", {{STD|PG, 0, "1 | 2"}}},
    {"on_array_skips_scalars", R"([1,"a",{"a":5},null])", "$.a", {{STD|PG, 0, "5"}}},
    {"on_array_second_nested_array_stops", R"([[{"a":1}],[{"a":2}],{"a":3}])", "$.a",
        {{STD|PG, 0, "1"}}},
    {"on_array_nested_objects_only", R"([[1,[{"a":9}],{"a":2}],{"a":3}])", "$.a",
        {{STD|PG, 0, "2 | 3"}}},
    {"on_empty_array", "[]", "$.a", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
    {"after_all_elements", R"([{"a":1}])", "$[*].a", {{ALL, 0, "1"}}},
    {"after_all_elements_last_duplicate", R"([{"a":1,"a":2},{"a":3}])", "$[*].a",
        {{MY, 0, "2 | 3"}}},
}), by_case_id);

INSTANTIATE_TEST_SUITE_P(Wildcard, Query, expand({
    {"object", R"({"a":1,"b":[2],"c":{"d":3}})", "$.*", {{ALL, 0, R"(1 | [2] | {"d":3})"}}},
    {"one_member_not_wrapped", R"({"a":1})", "$.*", {{ALL, 0, "1"}}},
    {"empty_object", "{}", "$.*", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
    {"scalar", "5", "$.*", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
    {"refused_before_looking", "5", "$.*", {{MY1, MULTI, ""}}},
    // On an array: the members of object elements and of the objects
    // inside every array element; mysql takes no document array.
    {"array", R"([{"a":1},[{"b":2},3],4,{"c":5}])", "$.*", {{STD|PG, 0, "1 | 2 | 5"}, {MY, 0, ""}}},
    {"array_every_nested_array", R"([[{"a":1}],[{"b":2}]])", "$.*", {{STD|PG, 0, "1 | 2"}}},
    // Before every-element step, members are taken up to the first object.
    {"before_all_elements_stops_at_object", R"({"a":1,"b":{"x":0},"c":[3]})", "$.*[*]",
        {{STD|PG, 0, R"(1 | {"x":0})"}, {MY, 0, "3"}}},
    {"then_field", R"({"a":{"x":1},"b":{"x":2}})", "$.*.x", {{ALL, 0, "1 | 2"}}},
    {"twice", R"({"a":{"x":1},"b":[{"y":2}]})", "$.*.*", {{STD|PG, 0, "1 | 2"}, {MY, 0, "1"}}},
}), by_case_id);

INSTANTIATE_TEST_SUITE_P(AllElements, Query, expand({
    {"document_array", "[1,2,3]", "$[*]", {{ALL, 0, "1 | 2 | 3"}}},
    {"one_element_not_wrapped", "[7]", "$[*]", {{ALL, 0, "7"}}},
    {"empty", "[]", "$[*]", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
    {"refused_before_looking", "[1]", "$[*]", {{MY1, MULTI, ""}}},
    // A non-array stands for a one-element array in json_query.
    {"scalar", "5", "$[*]", {{STD|PG, 0, "5"}, {MY, 0, ""}}},
    {"object_last", R"({"a":1})", "$[*]", {{STD|PG, 0, R"({"a":1})"}}},
    {"object_then_field", R"({"a":1})", "$[*].a", {{STD|PG, 0, "1"}, {MY, 0, ""}}},
    {"scalar_then_field", "5", "$[*].a", {{STD|PG, NO_MATCH, ""}}},
    {"scalar_then_subscript", R"({"a":1})", "$[*][0]", {{STD|PG, NO_MATCH, ""}}},
    {"nested", "[[1,2],[3]]", "$[*][*]", {{ALL, 0, "1 | 2 | 3"}}},
    // Over a virtual array: an array item right after an object item is
    // kept whole; mysql expands document arrays and skips the rest.
    {"after_object_array_kept_whole", R"([{"a":1},[2,3],[4]])", "$[*][*]",
        {{STD|PG, 0, R"({"a":1} | [2,3] | [4])"}, {MY, 0, "2 | 3 | 4"}}},
    {"array_before_object_expanded", R"([[2,3],{"a":1},[4]])", "$[*][*]",
        {{STD|PG, 0, R"(2 | 3 | {"a":1} | [4])"}}},
    {"item_failing_next_step_left_out", R"([1,{"a":2}])", "$[*][*].a",
        {{STD|PG, 0, "2"}, {MY, 0, ""}}},
    {"nested_empty_arrays", "[[],[]]", "$[*][*]", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
}), by_case_id);

INSTANTIATE_TEST_SUITE_P(Subscript, Query, expand({
    {"single", "[1,2,3]", "$[1]", {{ALL|MY1, 0, "2"}}},
    {"past_the_end", "[1,2,3]", "$[5]", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
    {"range_cut_at_the_end", "[1,2,3]", "$[1 to 9]", {{STD|MY, 0, "2 | 3"}}},
    {"range_pg_takes_its_start", "[1,2,3]", "$[1 to 9]", {{PG, 0, "2"}}},
    {"range_refused", "[1,2,3]", "$[1 to 2]", {{MY1, MULTI, ""}}},
    {"range_of_one", "[1,2,3]", "$[2 to 2]", {{ALL, 0, "3"}}},
    // The model adds a range of one position as a second subscript after
    // the range's own start, which marks the step as several.
    {"range_of_one_counts_as_several", "[1,2,3]", "$[2 to 2]", {{MY1, MULTI, ""}}},
    {"list", "[1,2,3,4,5]", "$[0, 2 to 3]", {{STD, 0, "1 | 3 | 4"}}},
    {"list_pg_takes_the_first", "[1,2,3,4,5]", "$[0, 2 to 3]", {{PG, 0, "1"}}},
    {"list_refused_in_mysql", "[1,2,3,4,5]", "$[0, 2 to 3]", {{MY, BAD_PATH, ""}}},
    {"list_stops_past_the_end", "[1,2,3]", "$[0, 3 to 5]", {{STD, 0, "1"}}},
    {"repeat_absorbed", "[1,2]", "$[0,0]", {{STD|PG, 0, "1"}}},
    {"descending_refused", "[1,2,3]", "$[2,1]", {{STD|PG, BAD_PATH, ""}}},
    // A non-array is a one-element array: position 0 is the value itself.
    {"zero_on_scalar", "5", "$[0]", {{ALL|MY1, 0, "5"}}},
    {"one_on_scalar", "5", "$[1]", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
    {"zero_on_object_then_field", R"({"a":5})", "$[0].a", {{ALL, 0, "5"}}},
    {"zero_on_scalar_then_field", "5", "$[0].a", {{STD|PG, NO_MATCH, ""}, {MY, 0, ""}}},
    {"zero_on_object_then_subscript", R"({"a":5})", "$[0][0]",
        {{STD|PG, NO_MATCH, ""}, {MY, 0, R"({"a":5})"}}},
    // Over a virtual array.
    {"virtual", "[[1,2],[3,4]]", "$[*][1]", {{ALL, 0, "2 | 4"}}},
    {"virtual_scalar_items", "[1,2,[3,4]]", "$[*][0]", {{ALL, 0, "1 | 2 | 3"}}},
    {"virtual_stops_after_object", R"([{"a":1},[5,6],7])", "$[*][0]",
        {{STD|PG, 0, R"({"a":1})"}, {MY, 0, R"({"a":1} | 5 | 7)"}}},
    {"virtual_object_then_field", R"([{"a":1},{"a":2}])", "$[*][0].a",
        {{STD|PG, 0, "1"}, {MY, 0, "1 | 2"}}},
    // Items other than arrays are skipped under a position other than 0,
    // objects too, and the walk goes on past them.
    {"virtual_nonzero_skips_non_arrays", R"([1,[5,6],{"a":1},[7,8]])", "$[*][1]",
        {{ALL, 0, "6 | 8"}}},
}), by_case_id);

INSTANTIATE_TEST_SUITE_P(Mixed, Query, expand({
    {"first_status_user_id", STATUSES, "$.statuses[0].user.id", {{ALL|MY1, 0, "1"}}},
    {"every_screen_name", STATUSES, "$.statuses[*].user.screen_name", {{ALL, 0, R"("a" | "b")"}}},
    {"missing_then_wildcard", R"({"a":1})", "$.b.*", {{MY1, 0, ""}}},
    {"every_member_of_every_element", R"({"a":[{"x":1,"y":2},{"z":3}]})", "$.a[*].*",
        {{ALL, 0, "1 | 2 | 3"}}},
    {"subscripts_after_field", R"({"a":[[1,2],[3,4]]})", "$.a[1][0]", {{ALL, 0, "3"}}},
}), by_case_id);
// clang-format on

// ---- Behaviours outside the table ----

struct Doc {
    VxEnv env;
    json_node *root;
    jpath path{};
    json_node *out = nullptr;
    Doc(const std::string &doc, const std::string &path_text, int32_t compat = 0)
        : env(dialect(compat)), root(env.tree(doc)) {
        env.ctx->scalar_top = 1;
        EXPECT_EQ(compile_path(env.ctx.get(), path_text, &path), 0) << path_text;
        elog_trail_clear();
    }
    jlpca_ctx *ctx() { return env.ctx.get(); }
    int32_t query() { return json_query(ctx(), root, &path, &out); }
    int32_t mysql(int32_t several = 1) {
        return jpath_filter_mysql(root, &path, ctx(), several, &out);
    }
};

TEST(QueryResult, SeveralMatchesAreThreadedInListOrder) {
    // The reader linked 1 -> 2 -> 3; evaluation relinks the matches 1 -> 3.
    Doc d("[1,2,3]", "$[0, 2]");
    json_node *one = d.root->items[0], *three = d.root->items[2];
    ASSERT_EQ(d.query(), 0);
    ASSERT_TRUE(d.out->is_virtual);
    ASSERT_EQ(d.out->count, 2u);
    EXPECT_EQ(d.out->items[0], one);
    EXPECT_EQ(d.out->items[1], three);
    EXPECT_EQ(one->prev_sibling, nullptr);
    EXPECT_EQ(one->next_sibling, three);
    EXPECT_EQ(three->prev_sibling, one);
    EXPECT_EQ(three->next_sibling, nullptr);
}

TEST(QueryResult, NoStepsGiveTheRootAndNoRootGivesNoMatch) {
    Doc d("[1]", "$");
    jpath empty{};
    json_node *out = nullptr;
    EXPECT_EQ(json_query(d.ctx(), d.root, &empty, &out), 0);
    EXPECT_EQ(out, d.root);
    EXPECT_EQ(json_query(d.ctx(), nullptr, &empty, &out), NO_MATCH);
    EXPECT_EQ(json_query(d.ctx(), nullptr, &d.path, &out), NO_MATCH);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(jpath_filter_mysql(nullptr, &d.path, d.ctx(), 1, &out), 0);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(jpath_filter_mysql(d.root, &empty, d.ctx(), 0, &out), 0);
    EXPECT_EQ(out, d.root);
}

TEST(QueryResult, AStepFailureIsReportedOnce) {
    Doc d("5", "$.a");
    EXPECT_EQ(d.query(), NO_MATCH);
    EXPECT_EQ(trail(), (Trail{{NO_MATCH, vxjson::site::QUERY_STEP}}));
    EXPECT_TRUE(trail_has(NO_MATCH, "json/jpath", vxjson::site::QUERY_STEP));
}

// A virtual array inside the document (the set functions leave one when
// they wrap a value) met by an every-element step over a virtual array is
// a bad path; under a subscript json_query takes it by its subscripts and
// mysql refuses it.
TEST(QueryVirtual, VirtualInsideVirtual) {
    for (int32_t compat : {0, 2}) {
        Doc d("[[1,2],[3]]", "$[*][*]", compat);
        d.root->items[0]->is_virtual = 1;
        EXPECT_EQ(compat ? d.mysql() : d.query(), BAD_PATH) << compat;
        EXPECT_EQ(d.out, nullptr);
        int32_t found = -1; // JSON_CONTAINS_PATH fails alike, and finds nothing
        EXPECT_EQ(jpath_json_contains_path(d.root, &d.path, d.ctx(), &found), BAD_PATH);
        EXPECT_EQ(found, 0);
    }
    Doc d("[[1,2],[3]]", "$[*][0]", 2);
    d.root->items[0]->is_virtual = 1;
    EXPECT_EQ(d.mysql(), BAD_PATH);
    EXPECT_TRUE(trail_has(BAD_PATH, "json/jpath", vxjson::site::QUERY_MYSQL_SUBSCRIPT));
    d.ctx()->compat = 0;
    ASSERT_EQ(d.query(), 0);
    EXPECT_EQ(d.env.text_of(d.out->items[0]), "1");
    EXPECT_EQ(d.env.text_of(d.out->items[1]), "3");
}

TEST(QueryVirtual, ArraySpareGivesTheItemVectorRoom) {
    Doc d("[1,2,3]", "$[*]");
    d.ctx()->array_spare = 4;
    ASSERT_EQ(d.query(), 0);
    EXPECT_EQ(d.out->count, 3u);
    EXPECT_EQ(d.out->capacity, 7u);
}

TEST(QueryMemory, NoMemoryForTheVirtualArray) {
    Doc h("[1,2,3]", "$[*]");
    mem_heap_set_call_limit(h.env.heap, 0);
    EXPECT_EQ(h.query(), VXJSON_ERR_NOMEM);
    EXPECT_EQ(trail(), (Trail{{VXJSON_ERR_NOMEM, vxjson::site::QUERY_STEP}}));
    Doc d("[1,2,3]", "$[*]", 2);
    vx_allocator_set_call_limit(&d.env.alloc_state, 0);
    EXPECT_EQ(d.mysql(), VXJSON_ERR_NOMEM);
    EXPECT_EQ(trail(), (Trail{{VXJSON_ERR_NOMEM, vxjson::site::QUERY_VIRTUAL_ITEMS}}));
    d.ctx()->compat = 0;
    EXPECT_EQ(d.query(), VXJSON_ERR_NOMEM);
    // One match needs no memory at all.
    ASSERT_EQ(compile_path(d.ctx(), "$[1]", &d.path), 0);
    EXPECT_EQ(d.query(), 0);
}

} // namespace
