// Containment in both dialects and MySQL overlap, over one table of
// document pairs: each row states what @>, JSON_CONTAINS and JSON_OVERLAPS
// answer for it.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tree_ops_env.h"

namespace {

struct ContainRow {
    const char *id;
    const char *a, *b;
    int32_t pg;       // json_contains_pg(a, b)
    int32_t mysql;    // json_contains_mysql(a, b)
    int32_t overlap;  // json_overlaps_mysql(a, b)
};
void PrintTo(const ContainRow &r, std::ostream *os) { *os << r.id; }

class Containment : public ::testing::TestWithParam<ContainRow> {};

TEST_P(Containment, EachDialect) {
    const ContainRow &r = GetParam();
    TreeOpsEnv env;
    json_node *a = env.read(r.a);
    json_node *b = env.read(r.b);
    EXPECT_EQ(json_contains_pg(a, b), r.pg) << r.a << " @> " << r.b;
    EXPECT_EQ(json_contains_mysql(a, b), r.mysql) << "JSON_CONTAINS(" << r.a << ", " << r.b << ")";
    EXPECT_EQ(json_overlaps_mysql(a, b), r.overlap) << "JSON_OVERLAPS(" << r.a << ", " << r.b << ")";
    // Overlap is symmetric whatever the shapes.
    EXPECT_EQ(json_overlaps_mysql(b, a), r.overlap) << "JSON_OVERLAPS(" << r.b << ", " << r.a << ")";
}

constexpr auto kById = [](const auto &info) { return std::string(info.param.id); };

INSTANTIATE_TEST_SUITE_P(
    Scalars, Containment,
    ::testing::Values(ContainRow{"SameInt", "1", "1", 1, 1, 1},
                      ContainRow{"IntAndDecimal", "1", "1.0", 1, 1, 1},
                      ContainRow{"IntNotString", "1", "\"1\"", 0, 0, 0},
                      ContainRow{"Booleans", "true", "false", 0, 0, 0}),
    kById);

INSTANTIATE_TEST_SUITE_P(
    Arrays, Containment,
    ::testing::Values(
        ContainRow{"ScalarElement", "[1,2]", "2", 1, 1, 1},
        // @> and JSON_CONTAINS find a scalar at any depth; overlap looks one
        // level down only.
        ContainRow{"ScalarInNestedArray", "[1,[2]]", "2", 1, 1, 0},
        ContainRow{"ScalarTwoLevelsDown", "[[1]]", "1", 1, 1, 0},
        ContainRow{"NestedArrayNotInFlat", "[1,2]", "[[1]]", 0, 0, 0},
        // @> matches array elements one level at a time (a scalar element of
        // b needs a scalar element of a); JSON_CONTAINS searches in depth.
        ContainRow{"PgMatchesArrayElementsOneLevelAtATime", "[[1,2]]", "[1]", 0, 1, 0},
        ContainRow{"NestedArrayInNestedArray", "[[1,2],3]", "[[1],3]", 1, 1, 1},
        ContainRow{"DuplicatesInCandidate", "[1,2]", "[2,2,1]", 1, 1, 1},
        ContainRow{"DuplicatesInTarget", "[1,1]", "[1]", 1, 1, 1},
        ContainRow{"NumbersWrittenDifferently", "[1.0,2e0]", "[2,1]", 1, 1, 1},
        ContainRow{"MissingElement", "[1,2]", "[1,3]", 0, 0, 1},
        ContainRow{"BothEmpty", "[]", "[]", 1, 1, 0},
        ContainRow{"EmptyCandidate", "[1]", "[]", 1, 1, 0},
        ContainRow{"EmptyTarget", "[]", "[1]", 0, 0, 0},
        ContainRow{"EmptyTargetScalar", "[]", "1", 0, 0, 0},
        ContainRow{"ScalarTargetArrayCandidate", "1", "[1]", 0, 0, 1},
        ContainRow{"StringInArray", "\"x\"", "[\"x\"]", 0, 0, 1},
        ContainRow{"MixedTypes", "[1,\"1\"]", "\"1\"", 1, 1, 1},
        ContainRow{"NullElement", "[null]", "null", 1, 1, 1}),
    kById);

INSTANTIATE_TEST_SUITE_P(
    Objects, Containment,
    ::testing::Values(
        ContainRow{"EmptyCandidateObject", "{\"a\":1}", "{}", 1, 1, 0},
        ContainRow{"EmptyTargetObject", "{}", "{\"a\":1}", 0, 0, 0},
        ContainRow{"BothEmptyObjects", "{}", "{}", 1, 1, 0},
        ContainRow{"SubsetOfMembers", "{\"a\":1,\"b\":2}", "{\"a\":1}", 1, 1, 1},
        ContainRow{"SupersetOfMembers", "{\"a\":1}", "{\"a\":1,\"b\":2}", 0, 0, 1},
        ContainRow{"MemberOrderIgnored", "{\"a\":1,\"b\":2}", "{\"b\":2,\"a\":1}", 1, 1, 1},
        ContainRow{"SameNameOtherValue", "{\"a\":1}", "{\"a\":2}", 0, 0, 0},
        ContainRow{"ArrayValueContained", "{\"a\":[1,2,3]}", "{\"a\":[3]}", 1, 1, 0},
        // A scalar member value needs a scalar in @>; JSON_CONTAINS looks
        // inside the array.
        ContainRow{"ScalarAgainstArrayValue", "{\"a\":[1,2,3]}", "{\"a\":3}", 0, 1, 0},
        ContainRow{"DeepObject", "{\"a\":{\"b\":[1,{\"c\":2,\"d\":3}],\"e\":4}}",
                   "{\"a\":{\"b\":[{\"c\":2}]}}", 1, 1, 0},
        ContainRow{"DeepObjectMissing", "{\"a\":{\"b\":[1,{\"c\":2}]}}",
                   "{\"a\":{\"b\":[{\"c\":3}]}}", 0, 0, 0},
        ContainRow{"NestedObjectEqualForOverlap", "{\"a\":{\"b\":1},\"c\":2}", "{\"a\":{\"b\":1}}",
                   1, 1, 1},
        ContainRow{"NestedObjectPartForOverlap", "{\"a\":{\"b\":1,\"c\":2}}", "{\"a\":{\"c\":2}}",
                   1, 1, 0},
        // Without a key policy the reader keeps both members; any of them
        // may match.
        ContainRow{"DuplicateMembers", "{\"a\":1,\"a\":2}", "{\"a\":2}", 1, 1, 1},
        ContainRow{"NullMember", "{\"a\":null}", "{\"a\":null}", 1, 1, 1}),
    kById);

INSTANTIATE_TEST_SUITE_P(
    Mixed, Containment,
    ::testing::Values(
        ContainRow{"ObjectInArrayPartly", "[{\"a\":1,\"b\":2}]", "{\"a\":1}", 0, 1, 0},
        ContainRow{"ObjectInArrayWhole", "[{\"a\":1}]", "{\"a\":1}", 0, 1, 1},
        ContainRow{"ArrayOfObjects", "[{\"a\":1},{\"b\":2}]", "[{\"b\":2}]", 1, 1, 1},
        ContainRow{"ObjectTargetArrayCandidate", "{\"a\":1}", "[{\"a\":1}]", 0, 0, 1},
        ContainRow{"ObjectAndScalar", "{\"a\":1}", "1", 0, 0, 0},
        ContainRow{"ScalarAndObject", "1", "{\"a\":1}", 0, 0, 0},
        ContainRow{"ArrayAndEmptyObject", "[{}]", "{}", 0, 1, 1},
        ContainRow{"EmptyObjectAndEmptyArray", "{}", "[]", 0, 0, 0}),
    kById);

TEST(Containment, ModesOfTheDispatcher) {
    TreeOpsEnv env;
    json_node *a = env.read("{\"a\":1,\"b\":2}");
    json_node *b = env.read("{\"b\":2,\"c\":3}");
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_CONTAINS_PG), 0);
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_OVERLAPS_MYSQL), 1);
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_EQUAL), 0);
    // Any mode but 1 and 2 is equality.
    EXPECT_EQ(json_cmp(a, env.read("{\"a\":1,\"b\":2}"), 7), 1);
    EXPECT_EQ(json_cmp(a, env.read("{\"a\":1}"), 7), 0);
}

} // namespace
