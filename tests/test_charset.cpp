// Multibyte lengths and UTF-16 conversions for the three server character
// sets, including malformed input.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vx_charset.h"

namespace {

struct MblenRow {
    const char *id;
    int32_t charset;
    std::string bytes;
    int32_t avail;
    int32_t expect;
};

class Mblen : public ::testing::TestWithParam<MblenRow> {};

TEST_P(Mblen, Length) {
    const MblenRow &r = GetParam();
    EXPECT_EQ(encoding_mblen(r.charset, reinterpret_cast<const unsigned char *>(r.bytes.data()),
                             r.avail),
              r.expect);
}

INSTANTIATE_TEST_SUITE_P(
    Sets, Mblen,
    ::testing::Values(
        MblenRow{"utf8_ascii", VX_CHARSET_UTF8, "a", 0, 1},
        MblenRow{"utf8_two", VX_CHARSET_UTF8, "\xC3\xA9", 0, 2},
        MblenRow{"utf8_three", VX_CHARSET_UTF8, "\xE4\xB8\xAD", 0, 3},
        MblenRow{"utf8_four", VX_CHARSET_UTF8, "\xF0\x9F\x98\x80", 0, 4},
        MblenRow{"utf8_lone_continuation", VX_CHARSET_UTF8, "\x80", 0, 1},
        MblenRow{"utf8_overlong", VX_CHARSET_UTF8, "\xC0\xAF", 0, 1},
        MblenRow{"utf8_truncated_by_nul", VX_CHARSET_UTF8, std::string("\xE4\xB8\0", 3), 0, 1},
        MblenRow{"utf8_truncated_by_avail", VX_CHARSET_UTF8, "\xE4\xB8\xAD", 2, 1},
        MblenRow{"utf8_surrogate_encoded", VX_CHARSET_UTF8, "\xED\xA0\x80", 0, 1},
        MblenRow{"utf8_beyond_unicode", VX_CHARSET_UTF8, "\xF4\x90\x80\x80", 0, 1},
        MblenRow{"gb_two", VX_CHARSET_GB18030, "\xD6\xD0", 0, 2},
        MblenRow{"gb_trail_backslash", VX_CHARSET_GB18030, "\x81\x5C", 0, 2},
        MblenRow{"gb_four", VX_CHARSET_GB18030, "\x81\x30\x81\x30", 0, 4},
        MblenRow{"gb_single", VX_CHARSET_GB18030, "A", 0, 1},
        MblenRow{"gb_lead_at_end", VX_CHARSET_GB18030, "\x81", 1, 1},
        MblenRow{"euckr_two", VX_CHARSET_EUCKR, "\xB0\xA1", 0, 2},
        MblenRow{"euckr_single", VX_CHARSET_EUCKR, "z", 0, 1},
        MblenRow{"euckr_c1_is_single", VX_CHARSET_EUCKR, "\x91\x8A", 0, 1},
        MblenRow{"none_high_byte", VX_CHARSET_NONE, "\xE9", 0, 1}),
    [](const auto &info) { return std::string(info.param.id); });

struct ConvRow {
    const char *id;
    int32_t charset;
    std::string local;
    std::vector<uint16_t> utf16;  // empty: the conversion to UTF-16 fails
};

class Conversion : public ::testing::TestWithParam<ConvRow> {};

TEST_P(Conversion, BothWays) {
    const ConvRow &r = GetParam();
    uint16_t units[50];
    int32_t n = -1;
    int32_t rc = LocalToUtf16(r.local.data(), int32_t(r.local.size()), r.charset, units, 50, &n);
    if (r.utf16.empty()) {
        EXPECT_LT(rc, 0);
        return;
    }
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(std::vector<uint16_t>(units, units + n), r.utf16);
    char back[50];
    int32_t len = Utf16ToLocal(r.utf16.data(), int32_t(r.utf16.size()), r.charset, back, 50);
    ASSERT_GE(len, 0);
    EXPECT_EQ(std::string(back, size_t(len)), r.local);
}

INSTANTIATE_TEST_SUITE_P(
    Sets, Conversion,
    ::testing::Values(
        ConvRow{"utf8_e_acute", VX_CHARSET_UTF8, "\xC3\xA9", {0xE9}},
        ConvRow{"utf8_cjk", VX_CHARSET_UTF8, "\xE4\xB8\xAD", {0x4E2D}},
        ConvRow{"utf8_emoji_pair", VX_CHARSET_UTF8, "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
        ConvRow{"utf8_invalid", VX_CHARSET_UTF8, "\xFF", {}},
        ConvRow{"utf8_truncated", VX_CHARSET_UTF8, "\xE4\xB8", {}},
        ConvRow{"gb_cjk", VX_CHARSET_GB18030, "\xD6\xD0", {0x4E2D}},
        ConvRow{"gb_e_acute", VX_CHARSET_GB18030, "\xA8\xA6", {0xE9}},
        ConvRow{"gb_four_byte", VX_CHARSET_GB18030, "\x81\x30\x86\x30", {0xB8}},
        ConvRow{"gb_truncated", VX_CHARSET_GB18030, "\xD6", {}},
        ConvRow{"euckr_ga", VX_CHARSET_EUCKR, "\xB0\xA1", {0xAC00}},
        ConvRow{"euckr_invalid", VX_CHARSET_EUCKR, "\xFF\xFF", {}},
        ConvRow{"euckr_c1_bytes", VX_CHARSET_EUCKR, "\x91\x8A", {0x91, 0x8A}},
        ConvRow{"none_latin1", VX_CHARSET_NONE, "\xE9", {0xE9}}),
    [](const auto &info) { return std::string(info.param.id); });

TEST(Utf16ToLocal, LoneSurrogatesFailInEverySet) {
    for (int32_t cs : {VX_CHARSET_UTF8, VX_CHARSET_GB18030, VX_CHARSET_EUCKR}) {
        for (uint16_t unit : {uint16_t(0xD83D), uint16_t(0xDE00)}) {
            char out[50];
            EXPECT_LT(Utf16ToLocal(&unit, 1, cs, out, 50), 0) << cs << " " << unit;
        }
    }
}

TEST(Utf16ToLocal, UnmappableCharacterFails) {
    uint16_t hangul = 0xAC00;
    char out[50];
    EXPECT_LT(Utf16ToLocal(&hangul, 1, VX_CHARSET_NONE, out, 50), 0);
    uint16_t emoji_high_low[] = {0xD83D, 0xDE00};
    EXPECT_LT(Utf16ToLocal(emoji_high_low, 2, VX_CHARSET_EUCKR, out, 50), 0);
    EXPECT_EQ(Utf16ToLocal(emoji_high_low, 2, VX_CHARSET_GB18030, out, 50), 4);
}

TEST(Utf16ToLocal, SmallBufferFails) {
    uint16_t cjk = 0x4E2D;
    char out[2];
    EXPECT_LT(Utf16ToLocal(&cjk, 1, VX_CHARSET_UTF8, out, 2), 0);
}

TEST(Charset, ConfigurationMapping) {
    EXPECT_EQ(vx_charset_from_config(0), VX_CHARSET_GB18030);
    EXPECT_EQ(vx_charset_from_config(1), VX_CHARSET_UTF8);
    EXPECT_EQ(vx_charset_from_config(2), VX_CHARSET_EUCKR);
    EXPECT_EQ(vx_charset_from_config(3), VX_CHARSET_NONE);
    EXPECT_EQ(vx_charset_from_config(-1), VX_CHARSET_NONE);
}

TEST(Charset, UpperCasesAsciiOnly) {
    char text[] = "00e9ab\xC3\xA9";
    EXPECT_STREQ(vx_mbsupr(text), "00E9AB\xC3\xA9");
}

} // namespace
