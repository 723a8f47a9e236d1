// Casts of single scalars to exact decimals and datetimes and between
// datetimes and Unix seconds, at the edges of 38 digits, of 32-bit and
// 64-bit integers and of the datetime range (years 0001 to 9999), with the
// one report each failure makes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "sql_values.h"
#include "vx_env.h"

namespace {
using ::operator<<;

constexpr int32_t kNotNumber = VXJSON_ERR_NOT_NUMBER, kNotDatetime = VXJSON_ERR_NOT_DATETIME;
constexpr int32_t kCast = VXJSON_ERR_CAST, kOverflow = VXJSON_ERR_DOUBLE_OVERFLOW;
constexpr int32_t kPrecision = XDEC_ERR_PRECISION, kNotScalar = VXJSON_ERR_VALUE_NOT_SCALAR;
constexpr int32_t kMany = VXJSON_ERR_VALUE_MANY;

// Node kinds of the rows: the type codes, and two the tables need besides.
constexpr uint32_t VIRTUAL = 100; // several matches gathered in a virtual array
constexpr uint32_t UNKNOWN = 9;   // no type code
constexpr uint32_t INT = JSON_INTEGER, DEC = JSON_DECIMAL, STR = JSON_STRING, DT = JSON_DATETIME;

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
    int32_t compat, rc;
    std::string value; // the result's text, or "NULL" (also after a failure)
    int32_t site = 0;  // the line of the one report a failure makes in json/jpath; 0: none
};

enum class Op { to_number, to_date, from_seconds };

// The cast, its result (the has_value flag starts set, so a failure must
// clear it) and its reports.
void check_cast(Op op, const CastRow &r) {
    VxEnv env(r.compat ? dialect(r.compat) : lax());
    json_node *node = make(env, r.node);
    elog_trail_clear();
    json_number_result num{};
    json_datetime_result date{};
    num.has_value = date.has_value = 7;
    const int32_t rc = op == Op::to_number ? json_cast_to_number(env.ctx.get(), node, &num)
                       : op == Op::to_date ? json_cast_to_date(env.ctx.get(), node, &date)
                                           : json_cast_number_to_datetime(node, &date);
    EXPECT_EQ(rc, r.rc);
    EXPECT_EQ(op == Op::to_number ? sql_text(num) : sql_text(date), r.value);
    EXPECT_EQ(trail(), (r.site ? Trail{{r.rc, r.site}} : Trail()));
    EXPECT_TRUE(!r.site || trail_has(r.rc, "json/jpath", r.site));
}

class ToNumber : public ::testing::TestWithParam<CastRow> {};
TEST_P(ToNumber, CodeValueAndReport) { check_cast(Op::to_number, GetParam()); }
class ToDate : public ::testing::TestWithParam<CastRow> {};
TEST_P(ToDate, CodeValueAndReport) { check_cast(Op::to_date, GetParam()); }
class FromSeconds : public ::testing::TestWithParam<CastRow> {};
TEST_P(FromSeconds, CodeValueAndReport) { check_cast(Op::from_seconds, GetParam()); }

const std::string N38(38, '9'), N39(39, '9'), FRAC38 = "-0.12345678901234567890123456789012345678";
const std::string D38 = "12345678901234567890123456789012345678", I64_MAX = "9223372036854775807";

// clang-format off
INSTANTIATE_TEST_SUITE_P(Casts, ToNumber, rows<CastRow>({
    {"IntegerSmall", {INT, "7"}, 0, 0, "7"},
    {"IntegerMax64", {INT, I64_MAX}, 0, 0, I64_MAX},
    {"IntegerMin64", {INT, "-9223372036854775808"}, 0, 0, "-9223372036854775808"},
    {"IntegerMax32", {INT, "2147483647"}, 0, 0, "2147483647"},
    {"IntegerBelowMin32", {INT, "-2147483649"}, 0, 0, "-2147483649"},
    {"DecimalKeepsScale", {DEC, "12.50"}, 0, 0, "12.50"},
    {"DecimalTenthIsExact", {DEC, "0.1"}, 0, 0, "0.1"},
    {"Decimal38Nines", {DEC, N38}, 0, 0, N38},
    {"Decimal39NinesRoundTo38", {DEC, N39}, 0, 0, "1.0000000000000000000000000000000000000E+39"},
    {"Decimal38DigitFraction", {DEC, FRAC38}, 0, 0, FRAC38},
    {"DecimalBeyondInt64", {DEC, "9223372036854775808"}, 0, 0, "9223372036854775808"},
    {"DecimalExponent", {DEC, "1.5e3"}, 0, 0, "1.5E+3"},
    {"DecimalOverflow", {DEC, "1e400"}, 0, kOverflow, "NULL", 4414},
    {"DecimalEmptyIsZero", {DEC, ""}, 0, 0, "0"},
    {"StringNumber", {STR, "12.5"}, 0, 0, "12.5"},
    {"StringWithBlanks", {STR, " -12 "}, 0, 0, "-12"},
    {"String38Digits", {STR, D38}, 0, 0, D38},
    {"StringNotNumber", {STR, "12x"}, 0, kNotNumber, "NULL", 4412},
    {"StringWord", {STR, "abc"}, 2, kNotNumber, "NULL", 4412},
    {"StringOverflow", {STR, "1e309"}, 0, kOverflow, "NULL", 4410},
    {"EmptyStringStandardIsNull", {STR, ""}, 0, 0, "NULL"},
    {"EmptyStringPgIsNull", {STR, ""}, 1, 0, "NULL"},
    {"EmptyStringMysqlFails", {STR, ""}, 2, kNotNumber, "NULL", 4412},
    {"True", {JSON_BOOLEAN, "1"}, 0, 0, "1"},
    {"False", {JSON_BOOLEAN, "0"}, 0, 0, "0"},
    {"Null", {JSON_NULL, ""}, 0, 0, "NULL"},
    // The shape checks only answer; the caller decides what to report.
    {"Object", {JSON_OBJECT, "{\"a\":1}"}, 0, kNotScalar, "NULL"},
    {"DocumentArray", {JSON_ARRAY, "[1]"}, 0, kNotScalar, "NULL"},
    {"SeveralMatches", {VIRTUAL, ""}, 0, kMany, "NULL"},
    {"DatetimeWhole", {DT, "2024-02-29T13:05:09"}, 0, 0, "1709211909"},
    {"DatetimeQuarter", {DT, "1970-01-01T00:00:01.25"}, 0, 0, "1.250000"},
    {"DatetimeBeforeEpoch", {DT, "1969-12-31T23:59:59.5"}, 0, 0, "-0.500000"},
    {"DateMidnight", {JSON_DATE, "2024-02-29"}, 0, 0, "1709164800"},
    {"DatetimeFirstInstant", {DT, "0001-01-01T00:00:00"}, 0, 0, "-62135596800"},
    {"DatetimeLastWholeSecond", {DT, "9999-12-31T23:59:59"}, 0, 0, "253402300799"},
    {"DatetimeMicrosecond", {DT, "1970-01-01T00:00:00.000001"}, 0, 0, "0.000001"},
    {"DatetimeSubMicroRoundsAway", {DT, "1970-01-01T00:00:00.0000004"}, 0, 0, "0.000000"},
    {"DatetimeLastMicrosecond", {DT, "9999-12-31T23:59:59.9999994"}, 0, 0, "253402300799.999999"},
    // Six places cannot hold a fraction that rounds to a whole second.
    {"DatetimeFractionRoundsToWhole", {DT, "9999-12-31T23:59:59.999999999"}, 0, kPrecision, "NULL",
        4452},
    {"DatetimeFractionRoundsToWholeAtEpoch", {DT, "1970-01-01T00:00:00.9999999"}, 0, kPrecision,
        "NULL", 4452},
    {"UnknownType", {UNKNOWN, ""}, 0, kCast, "NULL", 4416},
}), by_id);

INSTANTIATE_TEST_SUITE_P(Casts, ToDate, rows<CastRow>({
    {"DateIsMidnightDatetime", {STR, "2024-02-29"}, 0, 0, "2024-02-29T00:00:00/16"},
    {"ZoneToUtc", {STR, "2024-02-29T13:05:09.25+01:00"}, 0, 0, "2024-02-29T12:05:09.25/16"},
    {"BlankSeparator", {STR, "2024-02-29 13:05"}, 0, 0, "2024-02-29T13:05:00/16"},
    {"FirstDay", {STR, "0001-01-01"}, 0, 0, "0001-01-01T00:00:00/16"},
    {"LastNanosecond", {STR, "9999-12-31T23:59:59.999999999"}, 0, 0,
        "9999-12-31T23:59:59.999999999/16"},
    {"YearZero", {STR, "0000-12-31"}, 0, kNotDatetime, "NULL", 4432},
    {"PastLastByZone", {STR, "9999-12-31T23:59:59-01:00"}, 0, kNotDatetime, "NULL", 4432},
    {"BeforeFirstByZone", {STR, "0001-01-01T00:00:00+01:00"}, 0, kNotDatetime, "NULL", 4432},
    {"NotLeapYear", {STR, "2023-02-29"}, 0, kNotDatetime, "NULL", 4432},
    {"Word", {STR, "abc"}, 0, kNotDatetime, "NULL", 4432},
    {"EmptyStandardIsNull", {STR, ""}, 0, 0, "NULL"},
    // Compatibility mode 2 gives its "not a number" code here too.
    {"EmptyMysqlIsNotNumber", {STR, ""}, 2, kNotNumber, "NULL", 4434},
    {"Null", {JSON_NULL, ""}, 0, 0, "NULL"},
    {"Object", {JSON_OBJECT, "{}"}, 0, kNotScalar, "NULL"},
    {"SeveralMatches", {VIRTUAL, ""}, 0, kMany, "NULL"},
    {"Integer", {INT, "1709164800"}, 0, kCast, "NULL", 4436},
    {"Decimal", {DEC, "1.5"}, 0, kCast, "NULL", 4436},
    {"Boolean", {JSON_BOOLEAN, "1"}, 0, kCast, "NULL", 4436},
    // Only strings are read as datetimes, even a datetime node is refused.
    {"DateNodeRefused", {JSON_DATE, "2024-02-29"}, 0, kCast, "NULL", 4436},
    {"DatetimeNodeRefused", {DT, "2024-02-29T13:05:09"}, 0, kCast, "NULL", 4436},
}), by_id);

INSTANTIATE_TEST_SUITE_P(Casts, FromSeconds, rows<CastRow>({
    {"Epoch", {INT, "0"}, 0, 0, "1970-01-01T00:00:00/16"},
    {"Max32", {INT, "2147483647"}, 0, 0, "2038-01-19T03:14:07/16"},
    {"Past32", {INT, "2147483648"}, 0, kCast, "NULL", 4474},
    {"Min32", {INT, "-2147483648"}, 0, 0, "1901-12-13T20:45:52/16"},
    {"Below32", {INT, "-2147483649"}, 0, kCast, "NULL", 4474},
    {"Max64", {INT, I64_MAX}, 0, kCast, "NULL", 4474},
    {"Quarter", {DEC, "1.25"}, 0, 0, "1970-01-01T00:00:01.25/16"},
    {"NegativeHalfCountsBack", {DEC, "-1.5"}, 0, 0, "1969-12-31T23:59:58.5/16"},
    {"Exponent", {DEC, "1.5e3"}, 0, 0, "1970-01-01T00:25:00/16"},
    {"SubMicroDropped", {DEC, "0.0000004"}, 0, 0, "1970-01-01T00:00:00/16"},
    {"HalfMicroRoundsUp", {DEC, "0.0000005"}, 0, 0, "1970-01-01T00:00:00.000001/16"},
    {"FractionRoundsToWhole", {DEC, "0.9999996"}, 0, kPrecision, "NULL", 4472},
    {"Max32WithFraction", {DEC, "2147483647.999999"}, 0, 0, "2038-01-19T03:14:07.999999/16"},
    {"Past32WithFraction", {DEC, "2147483648.5"}, 0, kCast, "NULL", 4474},
    {"Min32WithFraction", {DEC, "-2147483648.5"}, 0, 0, "1901-12-13T20:45:51.5/16"},
    // Seconds that a 64-bit integer cannot hold fail in the decimal
    // library before the 32-bit bound is looked at.
    {"Beyond64IsDecimalOverflow", {DEC, "1e30"}, 0, kOverflow, "NULL", 4472},
    {"ThirtyEightDigits", {DEC, "-" + D38}, 0, kOverflow, "NULL", 4472},
    {"String", {STR, "1"}, 0, kCast, "NULL", 4478},
    {"Boolean", {JSON_BOOLEAN, "1"}, 0, kCast, "NULL", 4478},
}), by_id);
// clang-format on

// A datetime out of the library's range (made by hand, since no reader
// makes one) fails in the datetime library, reported at its call.
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
