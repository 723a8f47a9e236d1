// Equality of values and the number-text conversions (numbers written in
// different ways, long number texts, structural equality of containers),
// and containment and overlap in both dialects.
#include <gtest/gtest.h>

#include "data_rows.h"
#include "vx_env.h"
#include "xdec.h"

namespace {
using ::operator<<;

constexpr int32_t kOverflow = VXJSON_ERR_DOUBLE_OVERFLOW;
constexpr int32_t kLineToDouble = 2139;
constexpr int32_t kLineCmpFirst = 2183;
constexpr int32_t kLineCmpSecond = 2186;

// Rows of tests/data/tree_ops/equality.tsv: id, a, b, equal, sorted keys.
class Equality : public ::testing::TestWithParam<DataRow> {};
TEST_P(Equality, BothWaysAsExpected) {
    const DataRow &r = GetParam();
    const bool sorted = r.f.size() > 4 && r.f[4] == "1";
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree(r.f[1], sorted), *b = env.tree(r.f[2], sorted);
    EXPECT_EQ(json_cmp(a, b, JSON_CMP_EQUAL), r.num(3)) << r.f[1] << " = " << r.f[2];
    EXPECT_EQ(json_cmp(b, a, JSON_CMP_EQUAL), r.num(3)) << r.f[2] << " = " << r.f[1];
}

INSTANTIATE_TEST_SUITE_P(Pairs, Equality, rows_of("tree_ops/equality.tsv"), data_row_namer());

// Number texts the reader would refuse (beyond the double range) are built
// directly; the predicates must treat the failure as "not equal".
struct TextRow {
    const char *id;
    std::string a, b; // JSON_DECIMAL texts
    int32_t rc;       // of json_decimal_string_cmp
    int32_t order;    // when rc is 0
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

// clang-format off
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
    {"OverflowFirst", "1e400", "1.0e400", kOverflow, 0,
        {{kOverflow, kLineToDouble}, {kOverflow, kLineCmpFirst}}},
    {"OverflowSecond", "1.0", "-1e400", kOverflow, 0,
        {{kOverflow, kLineToDouble}, {kOverflow, kLineCmpSecond}}},
}), by_id);
// clang-format on

// A number text as an exact decimal and as a double: the same code, and
// an overflow reported once where the double is made.
struct ConvertRow {
    const char *id;
    std::string text; // JSON_DECIMAL text
    int32_t rc;
    const char *exact; // read by xdec_from_char when rc is 0; NULL: zero
    double value;
};

class DecimalConvert : public ::testing::TestWithParam<ConvertRow> {};
TEST_P(DecimalConvert, ExactAndDouble) {
    const ConvertRow &r = GetParam();
    VxEnv env;
    xdec got{}, want{};
    double d = -1;
    EXPECT_EQ(json_decimal_string_to_xdec(env.decimal(r.text), &got), r.rc);
    elog_trail_clear();
    EXPECT_EQ(json_decimal_string_to_double(env.decimal(r.text), &d), r.rc);
    EXPECT_EQ(trail(), (r.rc ? Trail{{r.rc, kLineToDouble}} : Trail()));
    if (r.rc != 0) return;
    EXPECT_EQ(d, r.value);
    if (r.exact) ASSERT_EQ(xdec_from_char(&want, r.exact, uint32_t(std::strlen(r.exact))), 0);
    else xdec_fill_zero(&want);
    EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Texts, DecimalConvert, rows<ConvertRow>({
    {"Exact", "12.50", 0, "12.50", 12.5},
    {"Exponent", "-12.5e1", 0, "-125", -125.0},
    {"Long38Exact", "12345678901234567890123456789012345678.5", 0,
        "12345678901234567890123456789012345678.5", 12345678901234567890123456789012345678.5},
    {"Empty", "", 0, nullptr, 0.0},
    {"Overflow", "1e400", kOverflow, nullptr, 0},
    {"NegativeOverflow", "-1e400", kOverflow, nullptr, 0},
    // Refused by the exact reader, read by strtod instead.
    {"FallsBackToDouble", "0x1A", 0, "26", 26.0},
    {"FallbackOverflow", "inf", kOverflow, nullptr, 0},
}), by_id);
// clang-format on

// Nodes no reader makes: dates (which never compare equal, not even to
// themselves) and number texts beyond the double range.
TEST(ScalarEquality, HandMadeNodes) {
    VxEnv env;
    auto date = [&](uint32_t type) {
        json_node *d = json_mem_create(env.ctx.get(), type);
        d->dt = vxtime{86400, 0, VXTIME_TYPE_DATE};
        return d;
    };
    json_node *d1 = date(JSON_DATE), *d2 = date(JSON_DATE), *t1 = date(JSON_DATETIME);
    json_node *big = env.decimal("1e400"), *one = env.integer(1);
    struct Row {
        json_node *a, *b;
        int32_t same_type, equal; // json_type_is_same, json_scalar_value_equal both ways
    };
    for (const Row &r : {Row{d1, d2, 1, 0}, Row{one, big, 1, 0}, Row{one, env.decimal("1.5"), 1, 0},
                         Row{env.decimal("1"), env.string("1"), 0, 0},
                         Row{env.array({}), env.object({}), 0, 0}}) {
        EXPECT_EQ(json_type_is_same(r.a, r.b), r.same_type);
        if (r.a->type > JSON_ARRAY) {
            EXPECT_EQ(json_scalar_value_equal(r.a, r.b) + json_scalar_value_equal(r.b, r.a), 0);
        }
    }
    for (json_node *self : {d1, t1}) EXPECT_EQ(json_cmp(self, self, JSON_CMP_EQUAL), 0);
    EXPECT_EQ(json_cmp(env.array({d1}), env.array({d2}), JSON_CMP_EQUAL), 0);
    EXPECT_EQ(json_cmp(env.array({big}), env.array({env.decimal("1.0e400")}), JSON_CMP_EQUAL), 0);
}

// The predicates walk the element list the reader built; a pointer-array
// change made afterwards (as path insertion does) is not seen by them.
TEST(ScalarEquality, PredicatesReadTheElementList) {
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree("[1]");
    ASSERT_EQ(json_array_add_one_node(env.ctx.get(), a, JSON_ARRAY_END, env.integer(2),
                                      JSON_ARRAY_INSERT),
              0);
    ASSERT_EQ(a->count, 2u);
    EXPECT_EQ(json_cmp(a, env.tree("[1]"), JSON_CMP_EQUAL), 1);
    EXPECT_EQ(json_cmp(a, env.tree("[1,2]"), JSON_CMP_EQUAL), 0);
    EXPECT_EQ(json_contains_pg(a, env.integer(2)), 0);
}

// Containment in both dialects and MySQL overlap: rows of
// tests/data/tree_ops/containment.tsv state what @>, JSON_CONTAINS and
// JSON_OVERLAPS answer for a pair of documents.
class Containment : public ::testing::TestWithParam<DataRow> {};
TEST_P(Containment, EachDialect) {
    const DataRow &r = GetParam();
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *a = env.tree(r.f[1]), *b = env.tree(r.f[2]);
    EXPECT_EQ(json_contains_pg(a, b), r.num(3)) << r.f[1] << " @> " << r.f[2];
    EXPECT_EQ(json_contains_mysql(a, b), r.num(4))
        << "JSON_CONTAINS(" << r.f[1] << ", " << r.f[2] << ")";
    EXPECT_EQ(json_overlaps_mysql(a, b), r.num(5))
        << "JSON_OVERLAPS(" << r.f[1] << ", " << r.f[2] << ")";
    EXPECT_EQ(json_overlaps_mysql(b, a), r.num(5)) << "overlap is symmetric whatever the shapes";
}

INSTANTIATE_TEST_SUITE_P(Pairs, Containment, rows_of("tree_ops/containment.tsv"), data_row_namer());

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
