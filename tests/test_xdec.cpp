// The exact decimal against Python's decimal module: every row of
// tests/data/xdec/*.tsv holds an input, the expected status and the
// expected text of the result.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "data_rows.h"
#include "sql_values.h"

namespace {

// Reads `s` from a buffer with a digit right behind it, so a reader that
// looks past `len` gets a different answer.
int32_t parse(const std::string &s, xdec *out) {
    std::string guarded = s + "7";
    return xdec_from_char(out, guarded.data(), uint32_t(s.size()));
}

xdec parsed(const std::string &s) {
    xdec d{};
    EXPECT_EQ(parse(s, &d), 0) << s;
    return d;
}

// Byte equality: the padding is part of the contract.
bool same_record(const xdec &a, const xdec &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

class XdecParse : public testing::TestWithParam<DataRow> {};
TEST_P(XdecParse, StatusTextAndRoundTrip) {
    const DataRow &r = GetParam(); // id, text, status, result
    xdec d{};
    ASSERT_EQ(parse(r.f[1], &d), r.num(2));
    if (r.num(2) != 0) return;
    std::string text = decimal_text(d);
    EXPECT_EQ(text, r.f[3]);
    // The text reads back as the very same record.
    EXPECT_TRUE(same_record(parsed(text), d)) << text;
}

INSTANTIATE_TEST_SUITE_P(xdec, XdecParse, rows_of("xdec/parse.tsv"), data_row_namer());

using binary_op = int32_t (*)(xdec *, const xdec *, const xdec *);

binary_op op_named(const std::string &op) {
    if (op == "add") return xdec_add;
    if (op == "sub") return xdec_sub;
    if (op == "mul") return xdec_mul;
    return xdec_div;
}

class XdecArith : public testing::TestWithParam<DataRow> {};
TEST_P(XdecArith, MatchesDecimalModule) {
    const DataRow &r = GetParam(); // id, op, a, b, status, result
    binary_op op = op_named(r.f[1]);
    xdec a = parsed(r.f[2]), b = parsed(r.f[3]);
    const xdec sentinel = parsed("-4.2");
    xdec out = sentinel;
    ASSERT_EQ(op(&out, &a, &b), r.num(4));
    if (r.num(4) != 0) {
        EXPECT_TRUE(same_record(out, sentinel)) << "a failed operation wrote its result";
        return;
    }
    EXPECT_EQ(decimal_text(out), r.f[5]);
    // The result may overwrite either operand.
    xdec in_a = a, in_b = b;
    EXPECT_EQ(op(&in_a, &in_a, &b), 0);
    EXPECT_EQ(op(&in_b, &a, &in_b), 0);
    EXPECT_TRUE(same_record(in_a, out));
    EXPECT_TRUE(same_record(in_b, out));
}

INSTANTIATE_TEST_SUITE_P(xdec, XdecArith, rows_of("xdec/arith.tsv"), data_row_namer(1));

class XdecScale : public testing::TestWithParam<DataRow> {};
TEST_P(XdecScale, FormatAndTruncate) {
    const DataRow &r = GetParam(); // id, op, a, prec, scale, status, result
    const xdec a = parsed(r.f[2]);
    xdec d = a;
    int32_t scale = int32_t(r.num(4));
    int32_t rc = r.f[1] == "format" ? xdec_format(&d, int32_t(r.num(3)), scale)
                                    : xdec_trunc_scale(&d, scale);
    ASSERT_EQ(rc, r.num(5));
    if (rc == 0) {
        EXPECT_EQ(decimal_text(d), r.f[6]);
    } else {
        EXPECT_TRUE(same_record(d, a)) << "a refused value was changed";
    }
}

INSTANTIATE_TEST_SUITE_P(xdec, XdecScale, rows_of("xdec/scale.tsv"), data_row_namer(1));

class XdecConvert : public testing::TestWithParam<DataRow> {};
TEST_P(XdecConvert, IntegersAndDoubles) {
    const DataRow &r = GetParam(); // id, op, input, status, result
    const std::string &op = r.f[1];
    xdec d{};
    if (op == "int64_out") {
        d = parsed(r.f[2]);
        int64_t v = 12345;
        ASSERT_EQ(xdec_get_int64(&d, &v), r.num(3));
        EXPECT_EQ(std::to_string(v), r.num(3) == 0 ? r.f[4] : "12345");
        return;
    }
    int32_t rc = op == "int64_in" ? xdec_from_int64(&d, r.num(2))
                                  : xdec_from_double(&d, std::strtod(r.f[2].c_str(), nullptr));
    ASSERT_EQ(rc, r.num(3));
    if (rc == 0) {
        EXPECT_EQ(decimal_text(d), r.f[4]);
    }
}

INSTANTIATE_TEST_SUITE_P(xdec, XdecConvert, rows_of("xdec/convert.tsv"), data_row_namer(1));

TEST(xdec, EveryFileHasItsRows) {
    expect_row_counts({{"xdec/parse.tsv", 250},
                       {"xdec/arith.tsv", 400},
                       {"xdec/scale.tsv", 150},
                       {"xdec/convert.tsv", 100}});
}

TEST(xdec, BufferMustHoldTextAndTerminator) {
    xdec d = parsed("-1.25");
    char buf[6];
    EXPECT_EQ(xdec_to_char(&d, buf, 5), XDEC_ERR_ARG);
    EXPECT_EQ(xdec_to_char(&d, buf, 6), 5);
    EXPECT_STREQ(buf, "-1.25");
    EXPECT_EQ(xdec_to_char(&d, nullptr, 64), XDEC_ERR_ARG);
}

TEST(xdec, LongestTextsFitTheAdvertisedBuffer) {
    for (const char *s : {"-0.0000099999999999999999999999999999999999999",
                          "-9.9999999999999999999999999999999999999E-300",
                          "-9.9999999999999999999999999999999999999E+308"}) {
        xdec d = parsed(s);
        char buf[XDEC_TEXT_MAX];
        EXPECT_EQ(xdec_to_char(&d, buf, sizeof buf), int32_t(std::strlen(s))) << s;
    }
}

TEST(xdec, ZeroCopyAndNullText) {
    xdec a = parsed("-12.5"), b{}, z = parsed("7");
    EXPECT_EQ(xdec_copy(&b, &a), 0);
    EXPECT_TRUE(same_record(a, b));
    EXPECT_EQ(xdec_fill_zero(&z), 0);
    EXPECT_TRUE(same_record(z, parsed("0")));
    EXPECT_EQ(xdec_from_char(&z, nullptr, 0), XDEC_NOT_NUMBER);
}

} // namespace
