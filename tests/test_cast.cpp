// Casts of single scalars to exact decimals and datetimes and between
// datetimes and Unix seconds, at the edges of 38 digits, of 32-bit and
// 64-bit integers and of the datetime range (years 0001 to 9999).
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "sql_values.h"
#include "vx_env.h"

namespace {
using ::operator<<;

constexpr int32_t kNotNumber = VXJSON_ERR_NOT_NUMBER;
constexpr int32_t kNotDatetime = VXJSON_ERR_NOT_DATETIME;
constexpr int32_t kCast = VXJSON_ERR_CAST;
constexpr int32_t kOverflow = VXJSON_ERR_DOUBLE_OVERFLOW;
constexpr int32_t kPrecision = XDEC_ERR_PRECISION;
constexpr int32_t kNotScalar = VXJSON_ERR_VALUE_NOT_SCALAR;
constexpr int32_t kMany = VXJSON_ERR_VALUE_MANY;

// Node kinds of the rows: the type codes, and two the tables need besides.
constexpr uint32_t VIRTUAL = 100; // several matches gathered in a virtual array
constexpr uint32_t UNKNOWN = 9;   // no type code

// A node made from a row: numbers and strings from their text, booleans
// from "0"/"1", dates and datetimes from datetime text, containers by
// reading the text.
struct Node {
    uint32_t type;
    std::string text;
};

json_node *make(VxEnv &env, const Node &n) {
    switch (n.type) {
    case JSON_INTEGER: return env.integer(std::strtoll(n.text.c_str(), nullptr, 10));
    case JSON_DECIMAL: return env.decimal(n.text);
    case JSON_STRING: return env.string(n.text);
    case JSON_BOOLEAN:
        return env.scalar(JSON_BOOLEAN, uint32_t(std::strtoul(n.text.c_str(), nullptr, 10)));
    case JSON_DATE:
    case JSON_DATETIME: {
        json_node *d = env.scalar(n.type);
        const int32_t type = n.type == JSON_DATE ? VXTIME_TYPE_DATE : VXTIME_TYPE_DATETIME;
        EXPECT_EQ(vxtime_from_char_ex2(n.text.data(), uint32_t(n.text.size()), type, &d->dt), 0)
            << n.text;
        return d;
    }
    case JSON_OBJECT:
    case JSON_ARRAY: return env.tree(n.text);
    case VIRTUAL: {
        json_node *v = env.array({env.integer(1), env.integer(2)});
        v->is_virtual = 1;
        return v;
    }
    default: return env.scalar(n.type);
    }
}

struct CastRow {
    const char *id;
    Node node;
    int32_t compat;
    int32_t rc;
    std::string value; // the result's text, or "NULL" (also after a failure)
};

// ---- to a number ----

class ToNumber : public ::testing::TestWithParam<CastRow> {};
TEST_P(ToNumber, CodeAndValue) {
    const CastRow &r = GetParam();
    VxEnv env(r.compat ? dialect(r.compat) : lax());
    json_node *node = make(env, r.node);
    json_number_result out{};
    out.has_value = 7;
    EXPECT_EQ(json_cast_to_number(env.ctx.get(), node, &out), r.rc);
    EXPECT_EQ(sql_text(out), r.value);
}

INSTANTIATE_TEST_SUITE_P(
    Casts, ToNumber,
    rows<CastRow>({
        {"IntegerSmall", {JSON_INTEGER, "7"}, 0, 0, "7"},
        {"IntegerMax64", {JSON_INTEGER, "9223372036854775807"}, 0, 0, "9223372036854775807"},
        {"IntegerMin64", {JSON_INTEGER, "-9223372036854775808"}, 0, 0, "-9223372036854775808"},
        {"IntegerMax32", {JSON_INTEGER, "2147483647"}, 0, 0, "2147483647"},
        {"IntegerBelowMin32", {JSON_INTEGER, "-2147483649"}, 0, 0, "-2147483649"},
        {"DecimalKeepsScale", {JSON_DECIMAL, "12.50"}, 0, 0, "12.50"},
        {"DecimalTenthIsExact", {JSON_DECIMAL, "0.1"}, 0, 0, "0.1"},
        {"Decimal38Nines",
         {JSON_DECIMAL, "99999999999999999999999999999999999999"},
         0,
         0,
         "99999999999999999999999999999999999999"},
        {"Decimal39NinesRoundTo38",
         {JSON_DECIMAL, "999999999999999999999999999999999999999"},
         0,
         0,
         "1.0000000000000000000000000000000000000E+39"},
        {"Decimal38DigitFraction",
         {JSON_DECIMAL, "-0.12345678901234567890123456789012345678"},
         0,
         0,
         "-0.12345678901234567890123456789012345678"},
        {"DecimalBeyondInt64", {JSON_DECIMAL, "9223372036854775808"}, 0, 0, "9223372036854775808"},
        {"DecimalExponent", {JSON_DECIMAL, "1.5e3"}, 0, 0, "1.5E+3"},
        {"DecimalOverflow", {JSON_DECIMAL, "1e400"}, 0, kOverflow, "NULL"},
        {"DecimalEmptyIsZero", {JSON_DECIMAL, ""}, 0, 0, "0"},
        {"StringNumber", {JSON_STRING, "12.5"}, 0, 0, "12.5"},
        {"StringWithBlanks", {JSON_STRING, " -12 "}, 0, 0, "-12"},
        {"String38Digits",
         {JSON_STRING, "12345678901234567890123456789012345678"},
         0,
         0,
         "12345678901234567890123456789012345678"},
        {"StringNotNumber", {JSON_STRING, "12x"}, 0, kNotNumber, "NULL"},
        {"StringWord", {JSON_STRING, "abc"}, 2, kNotNumber, "NULL"},
        {"StringOverflow", {JSON_STRING, "1e309"}, 0, kOverflow, "NULL"},
        {"EmptyStringStandardIsNull", {JSON_STRING, ""}, 0, 0, "NULL"},
        {"EmptyStringPgIsNull", {JSON_STRING, ""}, 1, 0, "NULL"},
        {"EmptyStringMysqlFails", {JSON_STRING, ""}, 2, kNotNumber, "NULL"},
        {"True", {JSON_BOOLEAN, "1"}, 0, 0, "1"},
        {"False", {JSON_BOOLEAN, "0"}, 0, 0, "0"},
        {"Null", {JSON_NULL, ""}, 0, 0, "NULL"},
        {"Object", {JSON_OBJECT, "{\"a\":1}"}, 0, kNotScalar, "NULL"},
        {"DocumentArray", {JSON_ARRAY, "[1]"}, 0, kNotScalar, "NULL"},
        {"SeveralMatches", {VIRTUAL, ""}, 0, kMany, "NULL"},
        {"DatetimeWhole", {JSON_DATETIME, "2024-02-29T13:05:09"}, 0, 0, "1709211909"},
        {"DatetimeQuarter", {JSON_DATETIME, "1970-01-01T00:00:01.25"}, 0, 0, "1.250000"},
        {"DatetimeBeforeEpoch", {JSON_DATETIME, "1969-12-31T23:59:59.5"}, 0, 0, "-0.500000"},
        {"DateMidnight", {JSON_DATE, "2024-02-29"}, 0, 0, "1709164800"},
        {"DatetimeFirstInstant", {JSON_DATETIME, "0001-01-01T00:00:00"}, 0, 0, "-62135596800"},
        {"DatetimeLastWholeSecond", {JSON_DATETIME, "9999-12-31T23:59:59"}, 0, 0, "253402300799"},
        {"DatetimeMicrosecond", {JSON_DATETIME, "1970-01-01T00:00:00.000001"}, 0, 0, "0.000001"},
        {"DatetimeSubMicroRoundsAway",
         {JSON_DATETIME, "1970-01-01T00:00:00.0000004"},
         0,
         0,
         "0.000000"},
        {"DatetimeLastMicrosecond",
         {JSON_DATETIME, "9999-12-31T23:59:59.9999994"},
         0,
         0,
         "253402300799.999999"},
        // Six places cannot hold a fraction that rounds to a whole second.
        {"DatetimeFractionRoundsToWhole",
         {JSON_DATETIME, "9999-12-31T23:59:59.999999999"},
         0,
         kPrecision,
         "NULL"},
        {"UnknownType", {UNKNOWN, ""}, 0, kCast, "NULL"},
    }),
    by_id);

// ---- to a datetime ----

class ToDate : public ::testing::TestWithParam<CastRow> {};
TEST_P(ToDate, CodeAndValue) {
    const CastRow &r = GetParam();
    VxEnv env(r.compat ? dialect(r.compat) : lax());
    json_node *node = make(env, r.node);
    json_datetime_result out{};
    out.has_value = 7;
    EXPECT_EQ(json_cast_to_date(env.ctx.get(), node, &out), r.rc);
    EXPECT_EQ(sql_text(out), r.value);
}

INSTANTIATE_TEST_SUITE_P(
    Casts, ToDate,
    rows<CastRow>({
        {"DateIsMidnightDatetime", {JSON_STRING, "2024-02-29"}, 0, 0, "2024-02-29T00:00:00/16"},
        {"ZoneToUtc",
         {JSON_STRING, "2024-02-29T13:05:09.25+01:00"},
         0,
         0,
         "2024-02-29T12:05:09.25/16"},
        {"BlankSeparator", {JSON_STRING, "2024-02-29 13:05"}, 0, 0, "2024-02-29T13:05:00/16"},
        {"FirstDay", {JSON_STRING, "0001-01-01"}, 0, 0, "0001-01-01T00:00:00/16"},
        {"LastNanosecond",
         {JSON_STRING, "9999-12-31T23:59:59.999999999"},
         0,
         0,
         "9999-12-31T23:59:59.999999999/16"},
        {"YearZero", {JSON_STRING, "0000-12-31"}, 0, kNotDatetime, "NULL"},
        {"PastLastByZone", {JSON_STRING, "9999-12-31T23:59:59-01:00"}, 0, kNotDatetime, "NULL"},
        {"BeforeFirstByZone", {JSON_STRING, "0001-01-01T00:00:00+01:00"}, 0, kNotDatetime, "NULL"},
        {"NotLeapYear", {JSON_STRING, "2023-02-29"}, 0, kNotDatetime, "NULL"},
        {"Word", {JSON_STRING, "abc"}, 0, kNotDatetime, "NULL"},
        {"EmptyStandardIsNull", {JSON_STRING, ""}, 0, 0, "NULL"},
        // Compatibility mode 2 gives its "not a number" code here too.
        {"EmptyMysqlIsNotNumber", {JSON_STRING, ""}, 2, kNotNumber, "NULL"},
        {"Null", {JSON_NULL, ""}, 0, 0, "NULL"},
        {"Object", {JSON_OBJECT, "{}"}, 0, kNotScalar, "NULL"},
        {"SeveralMatches", {VIRTUAL, ""}, 0, kMany, "NULL"},
        {"Integer", {JSON_INTEGER, "1709164800"}, 0, kCast, "NULL"},
        {"Decimal", {JSON_DECIMAL, "1.5"}, 0, kCast, "NULL"},
        {"Boolean", {JSON_BOOLEAN, "1"}, 0, kCast, "NULL"},
        // Only strings are read as datetimes, even a datetime node is refused.
        {"DateNodeRefused", {JSON_DATE, "2024-02-29"}, 0, kCast, "NULL"},
        {"DatetimeNodeRefused", {JSON_DATETIME, "2024-02-29T13:05:09"}, 0, kCast, "NULL"},
    }),
    by_id);

// ---- Unix seconds to a datetime ----

class FromSeconds : public ::testing::TestWithParam<CastRow> {};
TEST_P(FromSeconds, CodeAndValue) {
    const CastRow &r = GetParam();
    VxEnv env;
    json_node *node = make(env, r.node);
    json_datetime_result out{};
    out.has_value = 7;
    EXPECT_EQ(json_cast_number_to_datetime(node, &out), r.rc);
    EXPECT_EQ(sql_text(out), r.value);
}

INSTANTIATE_TEST_SUITE_P(
    Casts, FromSeconds,
    rows<CastRow>({
        {"Epoch", {JSON_INTEGER, "0"}, 0, 0, "1970-01-01T00:00:00/16"},
        {"Max32", {JSON_INTEGER, "2147483647"}, 0, 0, "2038-01-19T03:14:07/16"},
        {"Past32", {JSON_INTEGER, "2147483648"}, 0, kCast, "NULL"},
        {"Min32", {JSON_INTEGER, "-2147483648"}, 0, 0, "1901-12-13T20:45:52/16"},
        {"Below32", {JSON_INTEGER, "-2147483649"}, 0, kCast, "NULL"},
        {"Max64", {JSON_INTEGER, "9223372036854775807"}, 0, kCast, "NULL"},
        {"Quarter", {JSON_DECIMAL, "1.25"}, 0, 0, "1970-01-01T00:00:01.25/16"},
        {"NegativeHalfCountsBack", {JSON_DECIMAL, "-1.5"}, 0, 0, "1969-12-31T23:59:58.5/16"},
        {"Exponent", {JSON_DECIMAL, "1.5e3"}, 0, 0, "1970-01-01T00:25:00/16"},
        {"SubMicroDropped", {JSON_DECIMAL, "0.0000004"}, 0, 0, "1970-01-01T00:00:00/16"},
        {"HalfMicroRoundsUp", {JSON_DECIMAL, "0.0000005"}, 0, 0, "1970-01-01T00:00:00.000001/16"},
        {"FractionRoundsToWhole", {JSON_DECIMAL, "0.9999996"}, 0, kPrecision, "NULL"},
        {"Max32WithFraction",
         {JSON_DECIMAL, "2147483647.999999"},
         0,
         0,
         "2038-01-19T03:14:07.999999/16"},
        {"Past32WithFraction", {JSON_DECIMAL, "2147483648.5"}, 0, kCast, "NULL"},
        {"Min32WithFraction", {JSON_DECIMAL, "-2147483648.5"}, 0, 0, "1901-12-13T20:45:51.5/16"},
        // Seconds that a 64-bit integer cannot hold fail in the decimal
        // library before the 32-bit bound is looked at.
        {"Beyond64IsDecimalOverflow", {JSON_DECIMAL, "1e30"}, 0, kOverflow, "NULL"},
        {"ThirtyEightDigits",
         {JSON_DECIMAL, "-12345678901234567890123456789012345678"},
         0,
         kOverflow,
         "NULL"},
        {"String", {JSON_STRING, "1"}, 0, kCast, "NULL"},
        {"Boolean", {JSON_BOOLEAN, "1"}, 0, kCast, "NULL"},
    }),
    by_id);

// ---- reports ----

struct TrailRow {
    const char *id;
    Node node;
    int32_t compat;
    Trail trail; // (code, line) innermost first, all in "json/jpath"
};

class CastReports : public ::testing::TestWithParam<TrailRow> {};
TEST_P(CastReports, OneReportAtTheFailingSite) {
    const TrailRow &r = GetParam();
    VxEnv env(r.compat ? dialect(r.compat) : lax());
    json_node *node = make(env, r.node);
    elog_trail_clear();
    json_number_result num{};
    json_datetime_result date{};
    const std::string id = r.id;
    if (id.rfind("Number", 0) == 0) {
        EXPECT_NE(json_cast_to_number(env.ctx.get(), node, &num), 0);
    } else if (id.rfind("Date", 0) == 0) {
        EXPECT_NE(json_cast_to_date(env.ctx.get(), node, &date), 0);
    } else {
        EXPECT_NE(json_cast_number_to_datetime(node, &date), 0);
    }
    EXPECT_EQ(trail(), r.trail);
    for (const auto &[code, line] : r.trail)
        EXPECT_TRUE(trail_has(code, "json/jpath", line)) << line;
}

INSTANTIATE_TEST_SUITE_P(
    Casts, CastReports,
    rows<TrailRow>({
        {"NumberNotNumber", {JSON_STRING, "12x"}, 0, {{kNotNumber, 4412}}},
        {"NumberStringOverflow", {JSON_STRING, "1e309"}, 0, {{kOverflow, 4410}}},
        {"NumberDecimalOverflow", {JSON_DECIMAL, "1e400"}, 0, {{kOverflow, 4414}}},
        {"NumberUnknownType", {UNKNOWN, ""}, 0, {{kCast, 4416}}},
        {"NumberFractionPrecision",
         {JSON_DATETIME, "1970-01-01T00:00:00.9999999"},
         0,
         {{kPrecision, 4452}}},
        // The shape check only answers; the caller decides what to report.
        {"NumberObject", {JSON_OBJECT, "{}"}, 0, {}},
        {"DateNotDatetime", {JSON_STRING, "abc"}, 0, {{kNotDatetime, 4432}}},
        {"DateEmptyMysql", {JSON_STRING, ""}, 2, {{kNotNumber, 4434}}},
        {"DateInteger", {JSON_INTEGER, "1"}, 0, {{kCast, 4436}}},
        {"SecondsPast32", {JSON_INTEGER, "2147483648"}, 0, {{kCast, 4474}}},
        {"SecondsBeyond64", {JSON_DECIMAL, "1e30"}, 0, {{kOverflow, 4472}}},
        {"SecondsString", {JSON_STRING, "1"}, 0, {{kCast, 4478}}},
    }),
    by_id);

// The reports of a datetime out of the library's range (a node made by
// hand, since no reader makes one).
TEST(CastReportsRange, DatetimeOutOfRange) {
    VxEnv env;
    json_node *d = env.scalar(JSON_DATETIME);
    d->dt = vxtime{INT64_MAX / 2, 0, VXTIME_TYPE_DATETIME};
    elog_trail_clear();
    json_number_result out{};
    EXPECT_EQ(json_cast_datetime_to_number(d, &out), VXTIME_ERR_RANGE);
    EXPECT_EQ(out.has_value, 0);
    EXPECT_EQ(trail(), (Trail{{VXTIME_ERR_RANGE, 4450}}));
}

} // namespace
