// String escaping: the two escape tables, standard and MySQL escaping, the
// \u conversion and the MySQL literal routines in every character set, the
// choices of json_string_convert, and every out-of-memory path.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "escape_internal.h"
#include "vx_charset.h"
#include "vx_env.h"
#include "vx_nstr.h"

namespace {
using ::operator<<;

TEST(Tables, OnlySevenBytesEscapeAndMysqlAddsTheExistingLetters) {
    const std::string std_bytes = "\b\t\n\f\r\"\\";
    const std::string std_letters = "btnfr\"\\";
    for (int c = 0; c < 256; ++c) {
        const size_t at = std_bytes.find(char(c));
        const int32_t want_std = at == std::string::npos ? 0 : std_letters[at];
        EXPECT_EQ(json_get_lit_escape(uint8_t(c)), want_std) << c;
        const bool letter = std::strchr("btnfr", c) && c != 0;
        EXPECT_EQ(json_get_lit_escape_for_mysql(uint8_t(c)), letter ? c : want_std) << c;
    }
}

// Standard and MySQL escaping, per character set.
struct EscapeRow {
    const char *id;
    int32_t charset;
    std::string in;
    int32_t rc;
    std::string out;
};

// The routines that hand back a text of their own.
using OutFn = int32_t (*)(void *, vx_allocator *, const char *, uint32_t, char **, uint32_t *);

// The row's text through fn: its code and its output, which comes back
// even with an error code where the routine says so.
void expect_out_text(OutFn fn, const EscapeRow &r) {
    CharsetScope cs(r.charset);
    OutString o;
    char *out = nullptr;
    uint32_t n = 0;
    EXPECT_EQ(fn(nullptr, &o.alloc, r.in.data(), uint32_t(r.in.size()), &out, &n), r.rc);
    EXPECT_EQ(bytes(out, n), r.out);
    if (out) vx_free(nullptr, &o.alloc, out);
}

class StdEscape : public ::testing::TestWithParam<EscapeRow> {};
TEST_P(StdEscape, Escapes) { expect_out_text(json_string_from_value_add_escape, GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Rows, StdEscape,
    rows<EscapeRow>({
        {"empty", UTF8, "", 0, ""},
        {"controls", UTF8, "\b\t\n\f\r", 0, "\\b\\t\\n\\f\\r"},
        {"quote_backslash", UTF8, "a\"b\\c", 0, "a\\\"b\\\\c"},
        {"slash_and_byte1_kept", UTF8, "/\x01\x0b\x1f\x7f", 0, "/\x01\x0b\x1f\x7f"},
        {"utf8_only_multibyte", UTF8, "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80", 0,
         "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"},
        {"utf8_malformed_bytes_copied", UTF8, "\xFF\x80\"", 0, "\xFF\x80\\\""},
        {"utf8_cut_at_end_copied", UTF8, "a\xE4\xB8", 0, "a\xE4\xB8"},
        {"utf8_lead_then_quote", UTF8, "\xE4\"x", 0, "\xE4\\\"x"},
        {"gb_trail_backslash_not_escaped", GB, "\x81\x5C\\", 0, "\x81\x5C\\\\"},
        {"gb_four_byte_swallows_quote", GB, "\x81\x22\x30\x30\"", 0, "\x81\x22\x30\x30\\\""},
        {"gb_cut_at_end_dropped", GB, "ab\x81", 0, "ab"},
        {"gb_cut_four_byte_dropped", GB, "ab\x81\x30\x81", 0, "ab"},
        {"gb_two_byte_at_end_kept", GB, "ab\xD6\xD0", 0, "ab\xD6\xD0"},
        {"utf8_same_bytes_escaped", UTF8, "\x81\x5C", 0, "\x81\\\\"},
        {"euckr_pair_kept", EUCKR, "\xB0\xA1\n", 0, "\xB0\xA1\\n"},
        {"euckr_cut_at_end_dropped", EUCKR, "x\xB0", 0, "x"},
        {"single_byte_set_every_byte_alone", SINGLE, "\xE9\x81\x5C", 0, "\xE9\x81\\\\"},
    }),
    by_id);

class MysqlEscape : public ::testing::TestWithParam<EscapeRow> {};
TEST_P(MysqlEscape, KeepsExistingEscapes) {
    expect_out_text(json_string_from_value_add_escape_for_mysql, GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MysqlEscape,
    rows<EscapeRow>({
        {"empty", UTF8, "", 0, ""},
        {"raw_line_feed", UTF8, "\n", 0, "\\n"},
        {"existing_escape_kept", UTF8, "\\n\\t\\b\\f\\r", 0, "\\n\\t\\b\\f\\r"},
        {"unknown_letter_loses_backslash", UTF8, "\\u0041", 0, "u0041"},
        {"escaped_backslash_and_quote", UTF8, "\\\\\\\"", 0, "\\\\\\\""},
        {"raw_quote", UTF8, "\"", 0, "\\\""},
        {"raw_control_after_backslash", UTF8, "\\\b", 0, "\\b"},
        {"letter_without_backslash", UTF8, "bn", 0, "bn"},
        {"lone_trailing_backslash", UTF8, "abc\\", VXJSON_ERR_LONE_BACKSLASH, "abc"},
        {"backslash_before_multibyte_lost", UTF8, "\\\xC3\xA9n", 0, "\xC3\xA9n"},
        {"gb_trail_backslash_is_no_escape", GB, "\x81\x5Cn", 0, "\x81\x5Cn"},
        {"gb_trail_then_lone_backslash", GB, "\x81\x5C\\", VXJSON_ERR_LONE_BACKSLASH, "\x81\x5C"},
        {"utf8_same_bytes_escape_n", UTF8, "\x81\x5Cn", 0, "\x81\\n"},
    }),
    by_id);

// The eight-byte scanner against a byte-at-a-time reading of the rules, on
// random texts in every character set.
std::string reference_std_escape(const std::string &in, int32_t charset) {
    std::string out;
    for (size_t i = 0; i < in.size();) {
        unsigned char pad[8] = {};
        std::memcpy(pad, in.data() + i, std::min<size_t>(4, in.size() - i));
        const size_t n = size_t(encoding_mblen(charset, pad, 0));
        if (i + n > in.size()) break;
        const int32_t letter = n == 1 ? json_get_lit_escape(uint8_t(in[i])) : 0;
        out += letter ? std::string{'\\', char(letter)} : in.substr(i, n);
        i += n;
    }
    return out;
}

// Every way of escaping: the word and vector scanners directly, and the
// conversion as the writer calls it.
std::vector<std::pair<const char *, std::function<std::string(const std::string &)>>> escapers() {
    auto direct = [](char *(*fn)(const unsigned char *, size_t, char *, vxjson::charset_cache &)) {
        return [fn](const std::string &in) {
            std::string out(2 * in.size() + vxjson::ESCAPE_SLACK, '\0');
            vxjson::charset_cache cs;
            char *end =
                fn(reinterpret_cast<const unsigned char *>(in.data()), in.size(), out.data(), cs);
            out.resize(size_t(end - out.data()));
            return out;
        };
    };
    std::vector<std::pair<const char *, std::function<std::string(const std::string &)>>> all = {
        {"words", direct(vxjson::escape_std_words)},
        {"convert", [](const std::string &in) {
             OutString o;
             const uint32_t n = uint32_t(in.size());
             EXPECT_EQ(
                 json_string_convert(nullptr, &o.alloc, o.s, 0, in.data(), n, 0, JSON_CONV_JSON),
                 0);
             return o.str();
         }}};
#if defined(__SSE2__)
    all.emplace_back("vectors", direct(vxjson::escape_std_vectors));
#endif
    return all;
}

TEST(StdEscapeProperty, AgreesWithTheByteWiseRulesOnRandomText) {
    std::mt19937 rng(20240611);
    // Mostly plain bytes, so that long plain runs end in every lane.
    const char special[] = "\"\\\n\t\x01\x81\x30\x5C\xC3\xA9\xE4\xB8\xAD\xB0\xA1\xFF";
    const auto all = escapers();
    for (int32_t cfg : {GB, UTF8, EUCKR, SINGLE}) {
        CharsetScope cs(cfg);
        for (int iter = 0; iter < 3000; ++iter) {
            std::string in(rng() % 40, ' ');
            for (char &c : in)
                c = rng() % 5 ? char('a' + rng() % 26) : special[rng() % (sizeof special - 1)];
            const std::string want = reference_std_escape(in, vx_charset_from_config(cfg));
            for (const auto &[name, escape] : all)
                ASSERT_EQ(escape(in), want)
                    << name << " charset " << cfg << " input " << ::testing::PrintToString(in);
        }
    }
}

// \u conversion of non-ASCII characters.
class AsciiConvert : public ::testing::TestWithParam<EscapeRow> {};
TEST_P(AsciiConvert, WritesTheFirstUtf16Unit) {
    const EscapeRow &r = GetParam();
    CharsetScope cs(r.charset);
    OutString o;
    vxstr_append(nullptr, &o.alloc, o.s, "<");
    EXPECT_EQ(
        json_string_convert_ascii(nullptr, &o.alloc, o.s, 1, r.in.data(), uint32_t(r.in.size())),
        r.rc);
    EXPECT_EQ(o.str(), r.out);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AsciiConvert,
    rows<EscapeRow>({
        {"ascii_untouched", UTF8, "a\"\\\n", 0, "<a\"\\\n"},
        {"e_acute", UTF8, "\xC3\xA9", 0, "<\\u00E9"},
        {"euro_upper_hex", UTF8, "x\xE2\x82\xAC", 0, "<x\\u20AC"},
        {"beyond_bmp_keeps_high_surrogate", UTF8, "\xF0\x9F\x98\x80", 0, "<\\uD83D"},
        {"malformed_byte_copied", UTF8, "\xFF", 0, "<\xFF"},
        {"gb_two_byte", GB, "\xD6\xD0", 0, "<\\u4E2D"},
        {"gb_four_byte", GB, "\x81\x30\x81\x30", 0, "<\\u0080"},
        {"gb_cut_at_end_dropped", GB, "a\x81", 0, "<a"},
        {"euckr_pair", EUCKR, "\xB0\xA1", 0, "<\\uAC00"},
        {"euckr_unconvertible", EUCKR, "a\xA1\x41", VXJSON_ERR_INVALID_JSON, "<"},
        {"single_byte_set_never_escapes", SINGLE, "\xE9", 0, "<\xE9"},
    }),
    by_id);

// json_string_convert: quoting, the conversion choice, reports.

struct ConvertRow {
    const char *id;
    int32_t charset;
    uint32_t flags;
    std::string in;
    int32_t quote;
    uint8_t conv;
    int32_t rc;
    std::string out;
    Trail reports = {};
};

class Convert : public ::testing::TestWithParam<ConvertRow> {};
TEST_P(Convert, QuotesConvertsAndReports) {
    const ConvertRow &r = GetParam();
    CharsetScope cs(r.charset);
    OutString o;
    elog_trail_clear();
    EXPECT_EQ(json_string_convert(nullptr, &o.alloc, o.s, r.flags, r.in.data(),
                                  uint32_t(r.in.size()), r.quote, r.conv),
              r.rc);
    EXPECT_EQ(o.str(), r.out);
    EXPECT_EQ(o.s->buf[o.s->len], '\0');
    EXPECT_EQ(trail(), r.reports);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Convert,
    rows<ConvertRow>({
        {"empty_quoted", UTF8, 0, "", 1, JSON_CONV_JSON, 0, "\"\""},
        {"empty_unquoted", UTF8, 0, "", 0, JSON_CONV_JSON, 0, ""},
        {"empty_not_converted", UTF8, 1, "", 1, JSON_CONV_PLAIN, 0, "\"\""},
        {"quote_only_when_one", UTF8, 0, "x", 2, JSON_CONV_NONE, 0, "x"},
        {"as_stored", UTF8, 0, "a\"b\n", 1, JSON_CONV_NONE, 0, "\"a\"b\n\""},
        {"standard", UTF8, 0, "a\"b\n", 1, JSON_CONV_JSON, 0, "\"a\\\"b\\n\""},
        {"mysql", UTF8, 0, "a\\qb\n", 1, JSON_CONV_MYSQL, 0, "\"aqb\\n\""},
        {"mysql_lone_backslash",
         UTF8,
         0,
         "ab\\",
         1,
         JSON_CONV_MYSQL,
         VXJSON_ERR_LONE_BACKSLASH,
         "\"",
         {{VXJSON_ERR_LONE_BACKSLASH, 692}}},
        {"unknown_conv_is_none", UTF8, 0, "a\n", 1, 7, 0, "\"a\n\""},
        {"ascii_as_stored", UTF8, 1, "\xC3\xA9\n", 0, JSON_CONV_NONE, 0, "\\u00E9\n"},
        {"ascii_after_standard", UTF8, 3, "\xC3\xA9\n", 1, JSON_CONV_JSON, 0, "\"\\u00E9\\n\""},
        {"ascii_after_mysql", UTF8, 1, "\\n\xC3\xA9", 1, JSON_CONV_MYSQL, 0, "\"\\n\\u00E9\""},
        {"ascii_failure_reported",
         EUCKR,
         1,
         "\xA1\x41",
         1,
         JSON_CONV_JSON,
         VXJSON_ERR_INVALID_JSON,
         "\"",
         {{VXJSON_ERR_INVALID_JSON, 717}}},
        {"gb_trail_quote_stays_inside", GB, 0, "\x81\x22\x30\x30", 1, JSON_CONV_JSON, 0,
         "\"\x81\x22\x30\x30\""},
    }),
    by_id);

// MySQL literal routines.
class SolveLiteral : public ::testing::TestWithParam<EscapeRow> {};
TEST_P(SolveLiteral, ChecksAndSimplifies) {
    expect_out_text(json_org_str_escape_solve_for_mysql, GetParam());
}

constexpr int32_t BAD = VXJSON_ERR_INVALID_JSON;

INSTANTIATE_TEST_SUITE_P(
    Rows, SolveLiteral,
    rows<EscapeRow>({
        {"plain", UTF8, "abc", 0, "abc"},
        {"escaped_backslash", UTF8, "a\\\\b", 0, "a\\b"},
        {"quoted", UTF8, "\"x\"", 0, "\"x\""},
        {"open_quote_at_end", UTF8, "\"x", BAD, ""},
        {"tab_escape_outside_quotes_is_blank", UTF8, "a\\tb\\nc\\r", 0, "a b c "},
        {"tab_escape_inside_quotes", UTF8, "\"\\t\"", BAD, ""},
        {"underscore_escape", UTF8, "\\_", BAD, ""},
        {"b_escape", UTF8, "\\b", BAD, ""},
        {"percent_escape", UTF8, "\\%", BAD, ""},
        {"letters_without_backslash", UTF8, "tnr_b%0'", 0, "tnr_b%0'"},
        {"zero_escape_ends_text", UTF8, "ab\\0\"cd", 0, "ab"},
        {"zero_escape_inside_open_quote", UTF8, "\"ab\\0cd\"", BAD, ""},
        {"escaped_single_quote_outside", UTF8, "\\'", BAD, ""},
        {"escaped_single_quote_inside", UTF8, "\"\\'\"", 0, "\"'\""},
        {"other_escape_drops_backslash", UTF8, "\\x\\\xC3\xA9", 0, "x\xC3\xA9"},
        {"pending_backslash_at_end", UTF8, "x\\", BAD, ""},
        {"escaped_quote_opens", UTF8, "\\\"", BAD, ""},
        {"escaped_quotes_pair", UTF8, "\\\"\\\"", 0, "\"\""},
        {"quote_after_escaped_backslash_stays_open", UTF8, "\"\\\\\"", BAD, ""},
        {"escaped_backslash_then_letter_closes", UTF8, "\"\\\\a\"", 0, "\"\\a\""},
        {"gb_trail_backslash_is_content", GB, "\x81\x5Ct", 0, "\x81\x5Ct"},
        {"utf8_same_bytes_escape", UTF8, "\x81\x5Ct", 0, "\x81 "},
    }),
    by_id);

struct DefaultRow {
    const char *id;
    int32_t charset;
    std::string in;
    uint32_t assign;
    int32_t rc;
    std::string out; // value of dst afterwards ("-" when unchanged)
};

class DefaultValue : public ::testing::TestWithParam<DefaultRow> {};
TEST_P(DefaultValue, RemovesEscapes) {
    const DefaultRow &r = GetParam();
    CharsetScope cs(r.charset);
    OutString o;
    vx_nstr src{}, dst{};
    ASSERT_EQ(nstr_assign_const_ex2_no_clear(nullptr, &o.alloc, &src, r.in.data(),
                                             uint32_t(r.in.size()), r.assign),
              0);
    ASSERT_EQ(nstr_assign_const_with_blank_no_clear(nullptr, &o.alloc, &dst, "-", 1), 0);
    dst.assign = 99;
    EXPECT_EQ(json_default_value_remove_escape_for_mysql(nullptr, &o.alloc, &src, &dst), r.rc);
    EXPECT_EQ(std::string(nstr_text(&dst), dst.len), r.out);
    if (r.out != "-") {
        EXPECT_EQ(dst.assign, r.assign);
    }
    if (src.len >= VX_NSTR_INLINE) vx_free(nullptr, &o.alloc, src.u.text);
    if (dst.len >= VX_NSTR_INLINE) vx_free(nullptr, &o.alloc, dst.u.text);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DefaultValue,
    rows<DefaultRow>({
        {"empty_changes_nothing", UTF8, "", 0, 0, "-"},
        {"letters", UTF8, "a\\nb\\bc\\td\\re\\f", 0, 0, "a\nb\bc\td\re\f"},
        {"letters_alone", UTF8, "nbtrf", 0, 0, "nbtrf"},
        {"double_backslash", UTF8, "\\\\n", 0, 0, "\\n"},
        {"other_escape", UTF8, "\\q\\'", 0, 0, "q'"},
        {"lone_backslash_fails", UTF8, "ab\\", 0, VXJSON_ERR_LONE_BACKSLASH, "-"},
        {"lone_backslash_dropped", UTF8, "ab\\", 2, 0, "ab"},
        {"long_text_through_pointer", UTF8, std::string(60, 'x') + "\\n", 1, 0,
         std::string(60, 'x') + "\n"},
        {"gb_trail_backslash_is_content", GB, "\x81\x5Cn", 0, 0, "\x81\x5Cn"},
        {"backslash_before_multibyte_lost", UTF8, "\\\xC3\xA9", 0, 0, "\xC3\xA9"},
    }),
    by_id);

TEST(OutOfMemory, EveryTemporaryTextAllocation) {
    for (OutFn fn : {json_string_from_value_add_escape, json_string_from_value_add_escape_for_mysql,
                     json_org_str_escape_solve_for_mysql}) {
        OutString o;
        o.fail_after(0);
        char *out = reinterpret_cast<char *>(&o);
        uint32_t n = 7;
        EXPECT_EQ(fn(nullptr, &o.alloc, "ab", 2, &out, &n), VXJSON_ERR_NOMEM);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(n, 0u);
    }
    OutString o;
    o.fail_after(0);
    EXPECT_EQ(json_string_convert_ascii(nullptr, &o.alloc, o.s, 1, "\xC3\xA9", 2),
              VXJSON_ERR_NOMEM);
    EXPECT_EQ(o.str(), "");
}

TEST(OutOfMemory, DefaultValueBufferAndAssignment) {
    const std::string text(60, 'y');
    for (uint64_t calls : {0, 1}) {
        OutString o;
        vx_nstr src{}, dst{};
        ASSERT_EQ(nstr_assign_const_with_blank_no_clear(nullptr, &o.alloc, &src, text.data(), 60),
                  0);
        o.fail_after(calls);
        EXPECT_EQ(json_default_value_remove_escape_for_mysql(nullptr, &o.alloc, &src, &dst),
                  VXJSON_ERR_NOMEM)
            << calls;
        EXPECT_EQ(dst.len, 0u);
        vx_free(nullptr, &o.alloc, src.u.text);
    }
}

struct NomemRow {
    const char *id;
    uint32_t flags;
    uint8_t conv;
    uint64_t calls; // allocations that succeed
    Trail reports = {};
};

class ConvertOutOfMemory : public ::testing::TestWithParam<NomemRow> {};
TEST_P(ConvertOutOfMemory, FailsWithNomemAndReleasesEverything) {
    const NomemRow &r = GetParam();
    const std::string text = "\xC3\xA9" + std::string(200, 'z') + "\n";
    OutString o(4);
    o.fail_after(r.calls);
    elog_trail_clear();
    EXPECT_EQ(json_string_convert(nullptr, &o.alloc, o.s, r.flags, text.data(),
                                  uint32_t(text.size()), 1, r.conv),
              VXJSON_ERR_NOMEM);
    EXPECT_EQ(trail(), r.reports);
    EXPECT_LE(o.s->len, o.s->cap);
    EXPECT_EQ(o.s->buf[o.s->len], '\0');
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ConvertOutOfMemory,
    rows<NomemRow>({
        {"direct_growth", 0, JSON_CONV_JSON, 0, {}},
        {"as_stored_growth", 0, JSON_CONV_NONE, 0, {}},
        {"standard_temporary", 1, JSON_CONV_JSON, 0, {{VXJSON_ERR_NOMEM, 687}}},
        {"mysql_temporary", 0, JSON_CONV_MYSQL, 0, {{VXJSON_ERR_NOMEM, 692}}},
        {"mysql_then_growth", 0, JSON_CONV_MYSQL, 1, {}},
        {"plain_string_record",
         0,
         JSON_CONV_PLAIN,
         0,
         {{VXJSON_ERR_NOMEM, 945}, {VXJSON_ERR_NOMEM, 697}}},
        {"plain_string_text",
         0,
         JSON_CONV_PLAIN,
         1,
         {{VXJSON_ERR_NOMEM, 945}, {VXJSON_ERR_NOMEM, 697}}},
        {"ascii_buffer", 1, JSON_CONV_NONE, 0, {{VXJSON_ERR_NOMEM, 717}}},
        {"ascii_after_standard", 1, JSON_CONV_JSON, 1, {{VXJSON_ERR_NOMEM, 717}}},
    }),
    by_id);

TEST(OutOfMemory, FailedStringTakesNoMoreText) {
    OutString o(4);
    o.fail_after(0);
    EXPECT_EQ(json_string_convert(nullptr, &o.alloc, o.s, 0, "abcdefgh", 8, 1, JSON_CONV_NONE),
              VXJSON_ERR_NOMEM);
    o.fail_after(UINT64_MAX);
    EXPECT_EQ(json_string_convert(nullptr, &o.alloc, o.s, 0, "a", 1, 0, JSON_CONV_NONE),
              VXJSON_ERR_NOMEM)
        << "the first failure is sticky";
}

} // namespace
