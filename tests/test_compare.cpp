// Equality of values and the number-text conversions (numbers written in
// different ways, long number texts, structural equality of containers),
// and containment and overlap in both dialects.
#include <gtest/gtest.h>

#include "vx_env.h"
#include "xdec.h"

namespace {
using ::operator<<;

constexpr int32_t kOverflow = VXJSON_ERR_DOUBLE_OVERFLOW;
constexpr int32_t kLineToDouble = 2139;
constexpr int32_t kLineCmpFirst = 2183;
constexpr int32_t kLineCmpSecond = 2186;

const std::string k38 = "12345678901234567890123456789012345678";
const std::string k38Next = "12345678901234567890123456789012345679";

struct EqualRow {
    const char *id;
    std::string a, b;
    int32_t equal;
    bool sorted = false; // read with sorted keys
};

class Equality : public ::testing::TestWithParam<EqualRow> {};
TEST_P(Equality, BothWaysAsExpected) {
    const EqualRow &r = GetParam();
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree(r.a, r.sorted), *b = env.tree(r.b, r.sorted);
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_EQUAL), r.equal) << r.a << " = " << r.b;
    EXPECT_EQ(json_cmp(b, a, JSON_CMP_EQUAL), r.equal) << r.b << " = " << r.a;
}

INSTANTIATE_TEST_SUITE_P(Numbers, Equality, rows<EqualRow>({
    {"IntAndPointZero", "1", "1.0", 1},
    {"PointZeroAndPointZeroZero", "1.0", "1.00", 1},
    {"IntAndExponent", "1", "1e0", 1},
    {"IntAndNegativeExponent", "1", "10E-1", 1},
    {"ExponentAndNegativeExponent", "1e0", "10E-1", 1},
    {"ExponentCaseOnly", "1E2", "1e2", 1},
    {"ExponentAndInt", "1e2", "100", 1},
    {"NegativeZero", "-0.0", "0", 1},
    {"NegativeInts", "-1", "-1.0", 1},
    {"DifferentInts", "1", "2", 0},
    {"DifferentFractions", "1.0", "1.1", 0},
    {"SignMatters", "1.5", "-1.5", 0},
    {"Long38Same", k38, k38, 1},
    {"Long38AndPointZero", k38, k38 + ".0", 1},
    // Texts of equal length that differ are compared as doubles, which
    // cannot tell the 38th digit apart: kept as the dialects have it.
    {"LongNumbersEqualPastDoublePrecision", k38, k38Next, 1},
    {"Long40DifferEarly", "1234567890123456789012345678901234567890", "1334567890123456789012345678901234567890", 0},
    // Up to 18 characters the reader keeps integers, compared exactly
    // (these two share one double); longer ones are number texts.
    {"IntegersCompareExactly", "900719925474099301", "900719925474099302", 0},
    {"NineteenDigitsCompareAsDoubles", "1000000000000000001", "1000000000000000002", 1},
    // An integer against a number text goes through doubles too.
    {"IntegerAgainstTextComparesAsDoubles", "9007199254740993", "9007199254740992.0", 1},
    {"IntNotString", "1", "\"1\"", 0},
}), by_id);

INSTANTIATE_TEST_SUITE_P(Scalars, Equality, rows<EqualRow>({
    {"TrueTrue", "true", "true", 1},
    {"TrueFalse", "true", "false", 0},
    {"NullNull", "null", "null", 1},
    {"NullFalse", "null", "false", 0},
    {"SameString", "\"ab\"", "\"ab\"", 1},
    {"StringCaseMatters", "\"ab\"", "\"aB\"", 0},
    {"StringPrefix", "\"ab\"", "\"abc\"", 0},
    {"EmptyStrings", "\"\"", "\"\"", 1},
    {"EscapedAndPlain", "\"\\u0041\"", "\"A\"", 1},
}), by_id);

INSTANTIATE_TEST_SUITE_P(Containers, Equality, rows<EqualRow>({
    {"SameArray", "[1,2]", "[1,2]", 1},
    {"ArrayOrderMatters", "[1,2]", "[2,1]", 0},
    {"ArrayLength", "[1]", "[1,1]", 0},
    {"EmptyArrays", "[]", "[]", 1},
    {"EmptyArrayAndObject", "[]", "{}", 0},
    {"NestedNumbersWrittenDifferently", "[[1,[2]],{\"a\":3}]", "[[1.0,[2e0]],{\"a\":30E-1}]", 1},
    {"NestedDiffersDeep", "[[1,[2]]]", "[[1,[3]]]", 0},
    {"EmptyObjects", "{}", "{}", 1},
    {"SameObject", "{\"a\":1,\"b\":[null]}", "{\"a\":1,\"b\":[null]}", 1},
    {"MemberOrderMattersWithoutSortedKeys", "{\"a\":1,\"b\":2}", "{\"b\":2,\"a\":1}", 0},
    {"SortedKeysCompareAsSets", "{\"a\":1,\"b\":2}", "{\"b\":2,\"a\":1}", 1, true},
    {"MemberCount", "{\"a\":1}", "{\"a\":1,\"b\":2}", 0},
    {"MemberName", "{\"a\":1}", "{\"b\":1}", 0},
    {"MemberValue", "{\"a\":{\"b\":1}}", "{\"a\":{\"b\":2}}", 0},
    {"DuplicateMembers", "{\"a\":1,\"a\":1}", "{\"a\":1}", 0},
    {"DuplicateElements", "[1,1,2]", "[1,2,2]", 0},
}), by_id);

// Number texts the reader would refuse (beyond the double range) are built
// directly; the predicates must treat the failure as "not equal".
struct TextRow {
    const char *id;
    std::string a, b;  // JSON_DECIMAL texts
    int32_t rc;        // of json_decimal_string_cmp
    int32_t order;     // when rc is 0
    Trail trail = {};
};

class DecimalOrder : public ::testing::TestWithParam<TextRow> {};
TEST_P(DecimalOrder, OrderCodeAndReports) {
    const TextRow &r = GetParam();
    VxEnv env;
    json_node *a = env.decimal(r.a), *b = env.decimal(r.b);
    elog_trail_clear();
    int32_t order = 99;
    EXPECT_EQ(json_decimal_string_cmp(a, b, &order), r.rc);
    if (r.rc == 0) {
        EXPECT_EQ(order, r.order);
    }
    EXPECT_EQ(trail(), r.trail);
    // The predicates see the same answer, a failure as inequality.
    EXPECT_EQ(json_scalar_value_equal(a, b), r.rc == 0 && r.order == 0);
}

INSTANTIATE_TEST_SUITE_P(Texts, DecimalOrder, rows<TextRow>({
    {"Less", "1.5", "2.5", 0, -1},
    {"Greater", "2.5", "1.5", 0, 1},
    {"LengthsDiffer", "2.5", "10.25", 0, -1},
    {"ExponentCase", "1e5", "1E5", 0, 0},
    {"EqualByValue", "1.50", "1.5", 0, 0},
    {"BothEmpty", "", "", 0, 0},
    {"EmptyIsZero", "", "0.0", 0, 0},
    {"EmptyBelowOne", "", "1.0", 0, -1},
    {"TinyIsNotOverflow", "1e-400", "0.0", 0, 0},
    // Equal texts never reach the conversion, so they stay equal even
    // past the double range; any other pairing with them fails.
    {"OverflowingTextsEqualOnlyByText", "1e400", "1E400", 0, 0},
    {"OverflowFirst", "1e400", "1.0e400", kOverflow, 0, {{kOverflow, kLineToDouble}, {kOverflow, kLineCmpFirst}}},
    {"OverflowSecond", "1.0", "-1e400", kOverflow, 0, {{kOverflow, kLineToDouble}, {kOverflow, kLineCmpSecond}}},
}), by_id);

TEST(DecimalToDouble, ValuesAndOverflow) {
    VxEnv env;
    double d = -1;
    EXPECT_EQ(json_decimal_string_to_double(env.decimal(""), &d), 0);
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(json_decimal_string_to_double(env.decimal("-12.5e1"), &d), 0);
    EXPECT_EQ(d, -125.0);
    elog_trail_clear();
    EXPECT_EQ(json_decimal_string_to_double(env.decimal("-1e400"), &d), kOverflow);
    EXPECT_EQ(trail(), (Trail{{kOverflow, kLineToDouble}}));
}

TEST(DecimalToDouble, IntegerAgainstOverflowingTextIsUnequal) {
    VxEnv env;
    json_node *big = env.decimal("1e400");
    json_node *one = env.integer(1);
    EXPECT_EQ(json_scalar_value_equal(one, big), 0);
    EXPECT_EQ(json_scalar_value_equal(big, one), 0);
    EXPECT_EQ(json_cmp(env.array({env.decimal("1e400")}), env.array({env.decimal("1.0e400")}), JSON_CMP_EQUAL), 0);
}

struct XdecRow {
    const char *id;
    std::string text;  // JSON_DECIMAL text
    int32_t rc;
    const char *expect;  // read by xdec_from_char when rc is 0; NULL: zero
};

class DecimalToXdec : public ::testing::TestWithParam<XdecRow> {};
TEST_P(DecimalToXdec, Converts) {
    const XdecRow &r = GetParam();
    VxEnv env;
    xdec got{}, want{};
    EXPECT_EQ(json_decimal_string_to_xdec(env.decimal(r.text), &got), r.rc);
    if (r.rc != 0) return;
    if (r.expect) ASSERT_EQ(xdec_from_char(&want, r.expect, uint32_t(std::strlen(r.expect))), 0);
    else xdec_fill_zero(&want);
    EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0);
}

INSTANTIATE_TEST_SUITE_P(Texts, DecimalToXdec, rows<XdecRow>({
    {"Exact", "12.50", 0, "12.50"},
    {"Long38Exact", k38 + ".5", 0, "12345678901234567890123456789012345678.5"},
    {"Empty", "", 0, nullptr},
    {"Overflow", "1e400", kOverflow, nullptr},
    // Refused by the exact reader, read by strtod instead.
    {"FallsBackToDouble", "0x1A", 0, "26"},
    {"FallbackOverflow", "inf", kOverflow, nullptr},
}), by_id);

TEST(ScalarEquality, DatesNeverCompareEqual) {
    VxEnv env;
    json_node *d1 = json_mem_create(env.ctx.get(), JSON_DATE);
    json_node *d2 = json_mem_create(env.ctx.get(), JSON_DATE);
    json_node *t1 = json_mem_create(env.ctx.get(), JSON_DATETIME);
    d1->dt = d2->dt = t1->dt = vxtime{86400, 0, VXTIME_TYPE_DATE};
    EXPECT_EQ(json_type_is_same(d1, d2), 1);
    EXPECT_EQ(json_scalar_value_equal(d1, d2), 0);
    EXPECT_EQ(json_cmp(d1, d1, JSON_CMP_EQUAL), 0);
    EXPECT_EQ(json_cmp(t1, t1, JSON_CMP_EQUAL), 0);
    EXPECT_EQ(json_cmp(env.array({d1}), env.array({d2}), JSON_CMP_EQUAL), 0);
}

TEST(ScalarEquality, TypeCompatibility) {
    VxEnv env;
    EXPECT_EQ(json_type_is_same(env.integer(1), env.decimal("1.5")), 1);
    EXPECT_EQ(json_type_is_same(env.decimal("1"), env.string("1")), 0);
    EXPECT_EQ(json_type_is_same(env.array({}), env.object({})), 0);
}

// The predicates walk the element list the reader built; a pointer-array
// change made afterwards (as path insertion does) is not seen by them.
TEST(ScalarEquality, PredicatesReadTheElementList) {
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree("[1]");
    ASSERT_EQ(json_array_add_one_node(env.ctx.get(), a, JSON_ARRAY_END, env.integer(2), JSON_ARRAY_INSERT), 0);
    ASSERT_EQ(a->count, 2u);
    EXPECT_EQ(json_cmp(a, env.tree("[1]"), JSON_CMP_EQUAL), 1);
    EXPECT_EQ(json_cmp(a, env.tree("[1,2]"), JSON_CMP_EQUAL), 0);
    EXPECT_EQ(json_contains_pg(a, env.integer(2)), 0);
}

// Containment in both dialects and MySQL overlap, over one table of
// document pairs: each row states what @>, JSON_CONTAINS and JSON_OVERLAPS
// answer for it.
struct ContainRow {
    const char *id;
    const char *a, *b;
    int32_t pg;       // json_contains_pg(a, b)
    int32_t mysql;    // json_contains_mysql(a, b)
    int32_t overlap;  // json_overlaps_mysql(a, b)
};

class Containment : public ::testing::TestWithParam<ContainRow> {};
TEST_P(Containment, EachDialect) {
    const ContainRow &r = GetParam();
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree(r.a), *b = env.tree(r.b);
    EXPECT_EQ(json_contains_pg(a, b), r.pg) << r.a << " @> " << r.b;
    EXPECT_EQ(json_contains_mysql(a, b), r.mysql) << "JSON_CONTAINS(" << r.a << ", " << r.b << ")";
    EXPECT_EQ(json_overlaps_mysql(a, b), r.overlap) << "JSON_OVERLAPS(" << r.a << ", " << r.b << ")";
    // Overlap is symmetric whatever the shapes.
    EXPECT_EQ(json_overlaps_mysql(b, a), r.overlap) << "JSON_OVERLAPS(" << r.b << ", " << r.a << ")";
}

INSTANTIATE_TEST_SUITE_P(Scalars, Containment, rows<ContainRow>({
    {"SameInt", "1", "1", 1, 1, 1},
    {"IntAndDecimal", "1", "1.0", 1, 1, 1},
    {"IntNotString", "1", "\"1\"", 0, 0, 0},
    {"Booleans", "true", "false", 0, 0, 0},
}), by_id);

INSTANTIATE_TEST_SUITE_P(Arrays, Containment, rows<ContainRow>({
    {"ScalarElement", "[1,2]", "2", 1, 1, 1},
    // @> and JSON_CONTAINS find a scalar at any depth; overlap looks one
    // level down only.
    {"ScalarInNestedArray", "[1,[2]]", "2", 1, 1, 0},
    {"ScalarTwoLevelsDown", "[[1]]", "1", 1, 1, 0},
    {"NestedArrayNotInFlat", "[1,2]", "[[1]]", 0, 0, 0},
    // @> matches array elements one level at a time (a scalar element of
    // b needs a scalar element of a); JSON_CONTAINS searches in depth.
    {"PgMatchesArrayElementsOneLevelAtATime", "[[1,2]]", "[1]", 0, 1, 0},
    {"NestedArrayInNestedArray", "[[1,2],3]", "[[1],3]", 1, 1, 1},
    {"DuplicatesInCandidate", "[1,2]", "[2,2,1]", 1, 1, 1},
    {"DuplicatesInTarget", "[1,1]", "[1]", 1, 1, 1},
    {"NumbersWrittenDifferently", "[1.0,2e0]", "[2,1]", 1, 1, 1},
    {"MissingElement", "[1,2]", "[1,3]", 0, 0, 1},
    {"BothEmpty", "[]", "[]", 1, 1, 0},
    {"EmptyCandidate", "[1]", "[]", 1, 1, 0},
    {"EmptyTarget", "[]", "[1]", 0, 0, 0},
    {"EmptyTargetScalar", "[]", "1", 0, 0, 0},
    {"ScalarTargetArrayCandidate", "1", "[1]", 0, 0, 1},
    {"StringInArray", "\"x\"", "[\"x\"]", 0, 0, 1},
    {"MixedTypes", "[1,\"1\"]", "\"1\"", 1, 1, 1},
    {"NullElement", "[null]", "null", 1, 1, 1},
}), by_id);

INSTANTIATE_TEST_SUITE_P(Objects, Containment, rows<ContainRow>({
    {"EmptyCandidateObject", "{\"a\":1}", "{}", 1, 1, 0},
    {"EmptyTargetObject", "{}", "{\"a\":1}", 0, 0, 0},
    {"BothEmptyObjects", "{}", "{}", 1, 1, 0},
    {"SubsetOfMembers", "{\"a\":1,\"b\":2}", "{\"a\":1}", 1, 1, 1},
    {"SupersetOfMembers", "{\"a\":1}", "{\"a\":1,\"b\":2}", 0, 0, 1},
    {"MemberOrderIgnored", "{\"a\":1,\"b\":2}", "{\"b\":2,\"a\":1}", 1, 1, 1},
    {"SameNameOtherValue", "{\"a\":1}", "{\"a\":2}", 0, 0, 0},
    {"ArrayValueContained", "{\"a\":[1,2,3]}", "{\"a\":[3]}", 1, 1, 0},
    // A scalar member value needs a scalar in @>; JSON_CONTAINS looks
    // inside the array.
    {"ScalarAgainstArrayValue", "{\"a\":[1,2,3]}", "{\"a\":3}", 0, 1, 0},
    {"DeepObject", "{\"a\":{\"b\":[1,{\"c\":2,\"d\":3}],\"e\":4}}", "{\"a\":{\"b\":[{\"c\":2}]}}", 1, 1, 0},
    {"DeepObjectMissing", "{\"a\":{\"b\":[1,{\"c\":2}]}}", "{\"a\":{\"b\":[{\"c\":3}]}}", 0, 0, 0},
    {"NestedObjectEqualForOverlap", "{\"a\":{\"b\":1},\"c\":2}", "{\"a\":{\"b\":1}}", 1, 1, 1},
    {"NestedObjectPartForOverlap", "{\"a\":{\"b\":1,\"c\":2}}", "{\"a\":{\"c\":2}}", 1, 1, 0},
    // Without a key policy the reader keeps both members; any of them
    // may match.
    {"DuplicateMembers", "{\"a\":1,\"a\":2}", "{\"a\":2}", 1, 1, 1},
    {"NullMember", "{\"a\":null}", "{\"a\":null}", 1, 1, 1},
}), by_id);

INSTANTIATE_TEST_SUITE_P(Mixed, Containment, rows<ContainRow>({
    {"ObjectInArrayPartly", "[{\"a\":1,\"b\":2}]", "{\"a\":1}", 0, 1, 0},
    {"ObjectInArrayWhole", "[{\"a\":1}]", "{\"a\":1}", 0, 1, 1},
    {"ArrayOfObjects", "[{\"a\":1},{\"b\":2}]", "[{\"b\":2}]", 1, 1, 1},
    {"ObjectTargetArrayCandidate", "{\"a\":1}", "[{\"a\":1}]", 0, 0, 1},
    {"ObjectAndScalar", "{\"a\":1}", "1", 0, 0, 0},
    {"ScalarAndObject", "1", "{\"a\":1}", 0, 0, 0},
    {"ArrayAndEmptyObject", "[{}]", "{}", 0, 1, 1},
    {"EmptyObjectAndEmptyArray", "{}", "[]", 0, 0, 0},
}), by_id);

TEST(Containment, ModesOfTheDispatcher) {
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree("{\"a\":1,\"b\":2}"), *b = env.tree("{\"b\":2,\"c\":3}");
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_CONTAINS_PG), 0);
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_OVERLAPS_MYSQL), 1);
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_EQUAL), 0);
    // Any mode but 1 and 2 is equality.
    EXPECT_EQ(json_cmp(a, env.tree("{\"a\":1,\"b\":2}"), 7), 1);
    EXPECT_EQ(json_cmp(a, env.tree("{\"a\":1}"), 7), 0);
}

} // namespace
