// Multibyte lengths and UTF-16 conversions for the three server character
// sets, including malformed input.
#include <gtest/gtest.h>

#include "vx_charset.h"
#include "vx_env.h"

namespace {
using ::operator<<;

// Character-set codes (not configuration values).
constexpr int32_t U8 = VX_CHARSET_UTF8, GB18030 = VX_CHARSET_GB18030, EUC = VX_CHARSET_EUCKR,
                  NONE = VX_CHARSET_NONE;

struct MblenRow {
    const char *id;
    int32_t charset;
    std::string bytes;
    int32_t avail, expect;
};

class Mblen : public ::testing::TestWithParam<MblenRow> {};
TEST_P(Mblen, Length) {
    const MblenRow &r = GetParam();
    EXPECT_EQ(
        encoding_mblen(r.charset, reinterpret_cast<const unsigned char *>(r.bytes.data()), r.avail),
        r.expect);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Sets, Mblen, rows<MblenRow>({
    {"utf8_ascii", U8, "a", 0, 1},
    {"utf8_two", U8, "\xC3\xA9", 0, 2},
    {"utf8_three", U8, "\xE4\xB8\xAD", 0, 3},
    {"utf8_four", U8, "\xF0\x9F\x98\x80", 0, 4},
    {"utf8_lone_continuation", U8, "\x80", 0, 1},
    {"utf8_overlong", U8, "\xC0\xAF", 0, 1},
    {"utf8_truncated_by_nul", U8, std::string("\xE4\xB8\0", 3), 0, 1},
    {"utf8_truncated_by_avail", U8, "\xE4\xB8\xAD", 2, 1},
    {"utf8_surrogate_encoded", U8, "\xED\xA0\x80", 0, 1},
    {"utf8_beyond_unicode", U8, "\xF4\x90\x80\x80", 0, 1},
    {"gb_two", GB18030, "\xD6\xD0", 0, 2},
    {"gb_trail_backslash", GB18030, "\x81\x5C", 0, 2},
    {"gb_four", GB18030, "\x81\x30\x81\x30", 0, 4},
    {"gb_single", GB18030, "A", 0, 1},
    {"gb_lead_at_end", GB18030, "\x81", 1, 1},
    {"euckr_two", EUC, "\xB0\xA1", 0, 2},
    {"euckr_single", EUC, "z", 0, 1},
    {"euckr_c1_is_single", EUC, "\x91\x8A", 0, 1},
    {"none_high_byte", NONE, "\xE9", 0, 1},
}), by_id);
// clang-format on

struct ConvRow {
    const char *id;
    int32_t charset;
    std::string local;
    std::vector<uint16_t> utf16; // empty: the conversion to UTF-16 fails
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

// clang-format off
INSTANTIATE_TEST_SUITE_P(Sets, Conversion, rows<ConvRow>({
    {"utf8_e_acute", U8, "\xC3\xA9", {0xE9}},
    {"utf8_cjk", U8, "\xE4\xB8\xAD", {0x4E2D}},
    {"utf8_emoji_pair", U8, "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
    {"utf8_invalid", U8, "\xFF", {}},
    {"utf8_truncated", U8, "\xE4\xB8", {}},
    {"gb_cjk", GB18030, "\xD6\xD0", {0x4E2D}},
    {"gb_e_acute", GB18030, "\xA8\xA6", {0xE9}},
    {"gb_four_byte", GB18030, "\x81\x30\x86\x30", {0xB8}},
    {"gb_truncated", GB18030, "\xD6", {}},
    {"euckr_ga", EUC, "\xB0\xA1", {0xAC00}},
    {"euckr_invalid", EUC, "\xFF\xFF", {}},
    {"euckr_c1_bytes", EUC, "\x91\x8A", {0x91, 0x8A}},
    {"none_latin1", NONE, "\xE9", {0xE9}},
}), by_id);
// clang-format on

// Lone surrogates fail in every set; a character the set lacks fails; the
// buffer must hold the result.
TEST(Utf16ToLocal, Failures) {
    char out[50];
    for (int32_t cs : {U8, GB18030, EUC})
        for (uint16_t unit : {uint16_t(0xD83D), uint16_t(0xDE00)})
            EXPECT_LT(Utf16ToLocal(&unit, 1, cs, out, 50), 0) << cs << " " << unit;
    const uint16_t hangul = 0xAC00, cjk = 0x4E2D, emoji[] = {0xD83D, 0xDE00};
    EXPECT_LT(Utf16ToLocal(&hangul, 1, NONE, out, 50), 0);
    EXPECT_LT(Utf16ToLocal(emoji, 2, EUC, out, 50), 0);
    EXPECT_EQ(Utf16ToLocal(emoji, 2, GB18030, out, 50), 4);
    EXPECT_LT(Utf16ToLocal(&cjk, 1, U8, out, 2), 0);
}

TEST(Charset, ConfigurationMappingAndUpperCase) {
    for (auto [value, code] : {std::pair{0, GB18030}, {1, U8}, {2, EUC}, {3, NONE}, {-1, NONE}})
        EXPECT_EQ(vx_charset_from_config(value), code) << value;
    char text[] = "00e9ab\xC3\xA9";
    EXPECT_STREQ(vx_mbsupr(text), "00E9AB\xC3\xA9") << "ASCII letters only";
}

} // namespace
