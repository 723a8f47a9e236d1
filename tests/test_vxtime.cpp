// The datetime library against Python's datetime module: every row of
// tests/data/vxtime/*.tsv holds an input, the expected status and the
// expected record or text.
#include <gtest/gtest.h>

#include <string>

#include "data_rows.h"
#include "vxtime.h"

namespace {

std::string text_of(const vxtime &t, int32_t fmt) {
    char buf[VXTIME_TEXT_MAX];
    int32_t n = vxtime_to_char(&t, 16, fmt, buf);
    return n < 0 ? "<" + std::to_string(n) + ">" : std::string(buf, size_t(n));
}

// Checks `t` against the expected columns sec, nsec, type starting at `col`.
void expect_record(const vxtime &t, const DataRow &r, size_t col) {
    EXPECT_EQ(t.sec, r.num(col));
    EXPECT_EQ(t.nsec, r.num(col + 1));
    EXPECT_EQ(t.type, r.num(col + 2));
}

vxtime record(const DataRow &r, size_t col) {
    return vxtime{r.num(col), int32_t(r.num(col + 1)), uint8_t(r.num(col + 2))};
}

bool same_record(const vxtime &a, const vxtime &b) {
    return a.sec == b.sec && a.nsec == b.nsec && a.type == b.type;
}

class VxtimeParse : public testing::TestWithParam<DataRow> {};
TEST_P(VxtimeParse, RecordAndRoundTrip) {
    const DataRow &r = GetParam(); // id, text, type, status, sec, nsec, type_out
    // A digit right behind the text: a reader that looks past `len` fails.
    std::string guarded = r.f[1] + "7";
    const vxtime sentinel{42, 42, VXTIME_TYPE_DATETIME};
    vxtime t = sentinel;
    int32_t type = int32_t(r.num(2));
    ASSERT_EQ(vxtime_from_char_ex2(guarded.data(), uint32_t(r.f[1].size()), type, &t), r.num(3));
    if (r.num(3) != 0) {
        EXPECT_TRUE(same_record(t, sentinel)) << "a refused text wrote its result";
        return;
    }
    expect_record(t, r, 4);
    // Printed and read again, the record comes back unchanged.
    std::string text = text_of(t, type == VXTIME_TYPE_DATE ? VXTIME_FMT_DATE : VXTIME_FMT_ISO);
    vxtime again{};
    ASSERT_EQ(vxtime_from_char_ex2(text.data(), uint32_t(text.size()), type, &again), 0) << text;
    EXPECT_TRUE(same_record(again, t)) << text;
}

INSTANTIATE_TEST_SUITE_P(vxtime, VxtimeParse, rows_of("vxtime/parse.tsv"), data_row_namer());

class VxtimePrint : public testing::TestWithParam<DataRow> {};
TEST_P(VxtimePrint, Text) {
    const DataRow &r = GetParam(); // id, sec, nsec, type, prec, fmt, status, text
    const vxtime t = record(r, 1);
    char buf[VXTIME_TEXT_MAX];
    int32_t n = vxtime_to_char(&t, int32_t(r.num(4)), int32_t(r.num(5)), buf);
    if (r.num(6) != 0) {
        EXPECT_EQ(n, r.num(6));
        return;
    }
    ASSERT_GE(n, 0);
    EXPECT_EQ(std::string(buf, size_t(n)), r.f[7]);
    EXPECT_EQ(buf[n], '\0');
}

INSTANTIATE_TEST_SUITE_P(vxtime, VxtimePrint, rows_of("vxtime/print.tsv"), data_row_namer());

class VxtimeUnix : public testing::TestWithParam<DataRow> {};
TEST_P(VxtimeUnix, Operation) {
    // id, op, sec, nsec, type, arg, status, out_sec, out_nsec, out_type
    const DataRow &r = GetParam();
    const std::string &op = r.f[1];
    const vxtime in = record(r, 2);
    const int64_t arg = r.num(5);
    vxtime t = in;
    int32_t rc;
    if (op == "timestamp") {
        int64_t secs = 7;
        rc = vxtime_unix_timestamp(arg, &t, &secs);
        ASSERT_EQ(rc, r.num(6));
        EXPECT_EQ(secs, rc == 0 ? r.num(7) : 7);
        return;
    }
    if (op == "from_unix") rc = vxtime_from_unix_time(int32_t(arg), r.num(2), &t);
    else if (op == "set_msec") rc = vxtime_set_msec(&t, int32_t(arg));
    else rc = vxtime_reset(&t, int32_t(arg));
    ASSERT_EQ(rc, r.num(6));
    if (rc != 0) {
        EXPECT_TRUE(same_record(t, in)) << "a refused operation changed the value";
        return;
    }
    expect_record(t, r, 7);
    EXPECT_EQ(vxtime_get_msec(&t), r.num(8));
}

INSTANTIATE_TEST_SUITE_P(vxtime, VxtimeUnix, rows_of("vxtime/unix.tsv"), data_row_namer(1));

TEST(vxtime, EveryFileHasItsRows) {
    expect_row_counts(
        {{"vxtime/parse.tsv", 250}, {"vxtime/print.tsv", 150}, {"vxtime/unix.tsv", 140}});
}

TEST(vxtime, NullTextAndUnknownType) {
    vxtime t{};
    EXPECT_EQ(vxtime_from_char_ex2(nullptr, 0, VXTIME_TYPE_DATETIME, &t), VXTIME_NOT_DATETIME);
    EXPECT_EQ(vxtime_from_char_ex2("2024-01-01", 10, 3, &t), VXTIME_ERR_ARG);
}

} // namespace
