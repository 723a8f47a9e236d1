// Equality of values and the number-text conversions: numbers written in
// different ways, long number texts, structural equality of containers.
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tree_ops_env.h"
#include "text_fixture.h"
#include "xdec.h"

namespace {

constexpr int32_t kOverflow = VXJSON_ERR_DOUBLE_OVERFLOW;
constexpr int32_t kLineToDouble = 2139;
constexpr int32_t kLineCmpFirst = 2183;
constexpr int32_t kLineCmpSecond = 2186;

// Rows are named by their stable ids.
constexpr auto kById = [](const auto &info) { return std::string(info.param.id); };

const std::string k38 = "12345678901234567890123456789012345678";
const std::string k38Next = "12345678901234567890123456789012345679";

// ---------------------------------------------------------------- equality

struct EqualRow {
    const char *id;
    std::string a, b;
    bool sorted;  // read with sorted keys
    int32_t equal;
};
void PrintTo(const EqualRow &r, std::ostream *os) { *os << r.id; }

class Equality : public ::testing::TestWithParam<EqualRow> {};

TEST_P(Equality, BothWaysAsExpected) {
    const EqualRow &r = GetParam();
    TreeOpsEnv env;
    json_node *a = env.read(r.a, r.sorted);
    json_node *b = env.read(r.b, r.sorted);
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_EQUAL), r.equal) << r.a << " = " << r.b;
    EXPECT_EQ(json_cmp(b, a, JSON_CMP_EQUAL), r.equal) << r.b << " = " << r.a;
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, Equality,
    ::testing::Values(
        EqualRow{"IntAndPointZero", "1", "1.0", false, 1},
        EqualRow{"PointZeroAndPointZeroZero", "1.0", "1.00", false, 1},
        EqualRow{"IntAndExponent", "1", "1e0", false, 1},
        EqualRow{"IntAndNegativeExponent", "1", "10E-1", false, 1},
        EqualRow{"ExponentAndNegativeExponent", "1e0", "10E-1", false, 1},
        EqualRow{"ExponentCaseOnly", "1E2", "1e2", false, 1},
        EqualRow{"ExponentAndInt", "1e2", "100", false, 1},
        EqualRow{"NegativeZero", "-0.0", "0", false, 1},
        EqualRow{"NegativeInts", "-1", "-1.0", false, 1},
        EqualRow{"DifferentInts", "1", "2", false, 0},
        EqualRow{"DifferentFractions", "1.0", "1.1", false, 0},
        EqualRow{"SignMatters", "1.5", "-1.5", false, 0},
        EqualRow{"Long38Same", k38, k38, false, 1},
        EqualRow{"Long38AndPointZero", k38, k38 + ".0", false, 1},
        // Texts of equal length that differ are compared as doubles, which
        // cannot tell the 38th digit apart: kept as the dialects have it.
        EqualRow{"LongNumbersEqualPastDoublePrecision", k38, k38Next, false, 1},
        EqualRow{"Long40DifferEarly", "1234567890123456789012345678901234567890",
                 "1334567890123456789012345678901234567890", false, 0},
        // Up to 18 characters the reader keeps integers, compared exactly
        // (these two share one double); longer ones are number texts.
        EqualRow{"IntegersCompareExactly", "900719925474099301", "900719925474099302", false, 0},
        EqualRow{"NineteenDigitsCompareAsDoubles", "1000000000000000001", "1000000000000000002",
                 false, 1},
        // An integer against a number text goes through doubles too.
        EqualRow{"IntegerAgainstTextComparesAsDoubles", "9007199254740993", "9007199254740992.0",
                 false, 1},
        EqualRow{"IntNotString", "1", "\"1\"", false, 0}),
    kById);

INSTANTIATE_TEST_SUITE_P(
    Scalars, Equality,
    ::testing::Values(EqualRow{"TrueTrue", "true", "true", false, 1},
                      EqualRow{"TrueFalse", "true", "false", false, 0},
                      EqualRow{"NullNull", "null", "null", false, 1},
                      EqualRow{"NullFalse", "null", "false", false, 0},
                      EqualRow{"SameString", "\"ab\"", "\"ab\"", false, 1},
                      EqualRow{"StringCaseMatters", "\"ab\"", "\"aB\"", false, 0},
                      EqualRow{"StringPrefix", "\"ab\"", "\"abc\"", false, 0},
                      EqualRow{"EmptyStrings", "\"\"", "\"\"", false, 1},
                      EqualRow{"EscapedAndPlain", "\"\\u0041\"", "\"A\"", false, 1}),
    kById);

INSTANTIATE_TEST_SUITE_P(
    Containers, Equality,
    ::testing::Values(
        EqualRow{"SameArray", "[1,2]", "[1,2]", false, 1},
        EqualRow{"ArrayOrderMatters", "[1,2]", "[2,1]", false, 0},
        EqualRow{"ArrayLength", "[1]", "[1,1]", false, 0},
        EqualRow{"EmptyArrays", "[]", "[]", false, 1},
        EqualRow{"EmptyArrayAndObject", "[]", "{}", false, 0},
        EqualRow{"NestedNumbersWrittenDifferently", "[[1,[2]],{\"a\":3}]",
                 "[[1.0,[2e0]],{\"a\":30E-1}]", false, 1},
        EqualRow{"NestedDiffersDeep", "[[1,[2]]]", "[[1,[3]]]", false, 0},
        EqualRow{"EmptyObjects", "{}", "{}", false, 1},
        EqualRow{"SameObject", "{\"a\":1,\"b\":[null]}", "{\"a\":1,\"b\":[null]}", false, 1},
        EqualRow{"MemberOrderMattersWithoutSortedKeys", "{\"a\":1,\"b\":2}", "{\"b\":2,\"a\":1}",
                 false, 0},
        EqualRow{"SortedKeysCompareAsSets", "{\"a\":1,\"b\":2}", "{\"b\":2,\"a\":1}", true, 1},
        EqualRow{"MemberCount", "{\"a\":1}", "{\"a\":1,\"b\":2}", false, 0},
        EqualRow{"MemberName", "{\"a\":1}", "{\"b\":1}", false, 0},
        EqualRow{"MemberValue", "{\"a\":{\"b\":1}}", "{\"a\":{\"b\":2}}", false, 0},
        EqualRow{"DuplicateMembers", "{\"a\":1,\"a\":1}", "{\"a\":1}", false, 0},
        EqualRow{"DuplicateElements", "[1,1,2]", "[1,2,2]", false, 0}),
    kById);

// ---------------------------------------------------- number texts by hand

// Number texts the reader would refuse (beyond the double range) are built
// directly; the predicates must treat the failure as "not equal".
struct TextRow {
    const char *id;
    std::string a, b;  // JSON_DECIMAL texts
    int32_t rc;        // of json_decimal_string_cmp
    int32_t order;     // when rc is 0
    std::vector<std::pair<int32_t, int32_t>> trail;
};
void PrintTo(const TextRow &r, std::ostream *os) { *os << r.id; }

class DecimalOrder : public ::testing::TestWithParam<TextRow> {};

TEST_P(DecimalOrder, OrderCodeAndReports) {
    const TextRow &r = GetParam();
    TreeEnv env;
    json_node *a = env.text(JSON_DECIMAL, r.a);
    json_node *b = env.text(JSON_DECIMAL, r.b);
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

INSTANTIATE_TEST_SUITE_P(
    Texts, DecimalOrder,
    ::testing::Values(
        TextRow{"Less", "1.5", "2.5", 0, -1, {}},
        TextRow{"Greater", "2.5", "1.5", 0, 1, {}},
        TextRow{"LengthsDiffer", "2.5", "10.25", 0, -1, {}},
        TextRow{"ExponentCase", "1e5", "1E5", 0, 0, {}},
        TextRow{"EqualByValue", "1.50", "1.5", 0, 0, {}},
        TextRow{"BothEmpty", "", "", 0, 0, {}},
        TextRow{"EmptyIsZero", "", "0.0", 0, 0, {}},
        TextRow{"EmptyBelowOne", "", "1.0", 0, -1, {}},
        TextRow{"TinyIsNotOverflow", "1e-400", "0.0", 0, 0, {}},
        // Equal texts never reach the conversion, so they stay equal even
        // past the double range; any other pairing with them fails.
        TextRow{"OverflowingTextsEqualOnlyByText", "1e400", "1E400", 0, 0, {}},
        TextRow{"OverflowFirst",
                "1e400",
                "1.0e400",
                kOverflow,
                0,
                {{kOverflow, kLineToDouble}, {kOverflow, kLineCmpFirst}}},
        TextRow{"OverflowSecond",
                "1.0",
                "-1e400",
                kOverflow,
                0,
                {{kOverflow, kLineToDouble}, {kOverflow, kLineCmpSecond}}}),
    kById);

TEST(DecimalToDouble, ValuesAndOverflow) {
    TreeEnv env;
    double d = -1;
    EXPECT_EQ(json_decimal_string_to_double(env.text(JSON_DECIMAL, ""), &d), 0);
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(json_decimal_string_to_double(env.text(JSON_DECIMAL, "-12.5e1"), &d), 0);
    EXPECT_EQ(d, -125.0);
    elog_trail_clear();
    EXPECT_EQ(json_decimal_string_to_double(env.text(JSON_DECIMAL, "-1e400"), &d), kOverflow);
    EXPECT_EQ(trail(), (std::vector<std::pair<int32_t, int32_t>>{{kOverflow, kLineToDouble}}));
}

TEST(DecimalToDouble, IntegerAgainstOverflowingTextIsUnequal) {
    TreeEnv env;
    json_node *big = env.text(JSON_DECIMAL, "1e400");
    json_node *one = env.integer(1);
    EXPECT_EQ(json_scalar_value_equal(one, big), 0);
    EXPECT_EQ(json_scalar_value_equal(big, one), 0);
    EXPECT_EQ(json_cmp(env.array({env.text(JSON_DECIMAL, "1e400")}),
                       env.array({env.text(JSON_DECIMAL, "1.0e400")}), JSON_CMP_EQUAL),
              0);
}

// ------------------------------------------------------- exact decimals

struct XdecRow {
    const char *id;
    std::string text;  // JSON_DECIMAL text
    int32_t rc;
    const char *expect;  // read by xdec_from_char when rc is 0; NULL: zero
};
void PrintTo(const XdecRow &r, std::ostream *os) { *os << r.id; }

class DecimalToXdec : public ::testing::TestWithParam<XdecRow> {};

TEST_P(DecimalToXdec, Converts) {
    const XdecRow &r = GetParam();
    TreeEnv env;
    xdec got{}, want{};
    EXPECT_EQ(json_decimal_string_to_xdec(env.text(JSON_DECIMAL, r.text), &got), r.rc);
    if (r.rc != 0) return;
    if (r.expect) ASSERT_EQ(xdec_from_char(&want, r.expect, uint32_t(std::strlen(r.expect))), 0);
    else xdec_fill_zero(&want);
    EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DecimalToXdec,
    ::testing::Values(XdecRow{"Exact", "12.50", 0, "12.50"},
                      XdecRow{"Long38Exact", k38 + ".5", 0, "12345678901234567890123456789012345678.5"},
                      XdecRow{"Empty", "", 0, nullptr},
                      XdecRow{"Overflow", "1e400", kOverflow, nullptr},
                      // Refused by the exact reader, read by strtod instead.
                      XdecRow{"FallsBackToDouble", "0x1A", 0, "26"},
                      XdecRow{"FallbackOverflow", "inf", kOverflow, nullptr}),
    kById);

// ------------------------------------------------------------ behaviours

TEST(ScalarEquality, DatesNeverCompareEqual) {
    TreeEnv env;
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
    TreeEnv env;
    EXPECT_EQ(json_type_is_same(env.integer(1), env.text(JSON_DECIMAL, "1.5")), 1);
    EXPECT_EQ(json_type_is_same(env.text(JSON_DECIMAL, "1"), env.string("1")), 0);
    EXPECT_EQ(json_type_is_same(env.array({}), env.object({})), 0);
}

// The predicates walk the element list the reader built; a pointer-array
// change made afterwards (as path insertion does) is not seen by them.
TEST(ScalarEquality, PredicatesReadTheElementList) {
    TreeOpsEnv env;
    json_node *a = env.read("[1]");
    ASSERT_EQ(json_array_add_one_node(env.ctx.get(), a, JSON_ARRAY_END, env.integer(2),
                                      JSON_ARRAY_INSERT),
              0);
    ASSERT_EQ(a->count, 2u);
    EXPECT_EQ(json_cmp(a, env.read("[1]"), JSON_CMP_EQUAL), 1);
    EXPECT_EQ(json_cmp(a, env.read("[1,2]"), JSON_CMP_EQUAL), 0);
    EXPECT_EQ(json_contains_pg(a, env.integer(2)), 0);
}

} // namespace
