// Written and re-read: for every document the reader accepts, in every
// dialect, escape mode and character set, compact text read back gives an
// equal tree and writing that tree gives the same bytes; pretty text reads
// back to an equal tree too.  What does not survive by design is pinned
// down at the end.
#include <gtest/gtest.h>

#include "vx_env.h"

namespace {
using ::operator<<;

// One way of reading: the switches that change the tree, and the
// character set.
struct Config {
    int32_t escape_mode; // 0 decode, 1 keep, 2 decode with sorted keys and last duplicate winning
    int32_t compat;
    int32_t strict;
    int32_t charset;
};

std::string describe(const Config &c) {
    std::ostringstream s;
    s << "escape_mode " << c.escape_mode << " compat " << c.compat << " strict " << c.strict
      << " charset " << c.charset;
    return s.str();
}

// A context for one configuration; its trees live as long as it does.
struct Reader : VxEnv {
    explicit Reader(const Config &c)
        : VxEnv({.compat = c.compat,
                 .strict = c.strict,
                 .scalar_top = c.compat != 0,
                 .escape_mode = c.escape_mode}) {}

    json_node *read(const std::string &t) {
        json_node *root = nullptr;
        return VxEnv::read(t, &root) == 0 ? root : nullptr;
    }
    std::string write(const json_node *root, uint32_t flags, int32_t *rc) {
        std::string out;
        *rc = VxEnv::write(root, &out, flags, 1, 1);
        return out;
    }
};

// The property on one document under one configuration.  Returns whether
// the reader accepted the document at all.
bool check_round_trip(const std::string &text, const Config &c) {
    CharsetScope cs(c.charset);
    Reader r(c);
    const json_node *first = r.read(text);
    if (!first) return false;
    SCOPED_TRACE(describe(c));
    int32_t rc = 0;
    const std::string compact = r.write(first, JSON_FMT_COMPACT, &rc);
    EXPECT_EQ(rc, 0);
    std::string at_level_0;
    EXPECT_EQ(r.VxEnv::write(first, &at_level_0), 0);
    EXPECT_EQ(at_level_0, compact) << "level has no effect";
    const json_node *second = r.read(compact);
    EXPECT_NE(second, nullptr) << "written text not readable: "
                               << ::testing::PrintToString(compact);
    if (!second) return true;
    EXPECT_EQ(dump(first), dump(second));
    EXPECT_EQ(r.write(second, JSON_FMT_COMPACT, &rc), compact) << "not a fixed point";
    for (uint32_t flags : {JSON_FMT_PRETTY_A, JSON_FMT_PRETTY_B}) {
        const std::string pretty = r.write(first, flags, &rc);
        EXPECT_EQ(rc, 0);
        const json_node *third = r.read(pretty);
        EXPECT_NE(third, nullptr) << "pretty text not readable: "
                                  << ::testing::PrintToString(pretty);
        if (third) {
            EXPECT_EQ(dump(first), dump(third)) << "layout " << flags;
        }
    }
    return true;
}

std::vector<Config> all_configs(std::initializer_list<int32_t> charsets) {
    std::vector<Config> out;
    for (int32_t charset : charsets)
        for (int32_t escape_mode : {0, 1, 2})
            for (int32_t compat : {0, 1, 2})
                for (int32_t strict : {0, 1}) out.push_back({escape_mode, compat, strict, charset});
    return out;
}

struct DocRow {
    const char *id;
    std::string text;
};

class RoundTrip : public ::testing::TestWithParam<DocRow> {};
TEST_P(RoundTrip, CompactIsAFixedPointInEveryConfiguration) {
    int accepted = 0;
    for (const Config &c : all_configs({GB, UTF8, EUCKR, SINGLE}))
        accepted += check_round_trip(GetParam().text, c);
    EXPECT_GT(accepted, 0) << "no configuration reads this document";
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Docs, RoundTrip, rows<DocRow>({
    {"example", R"({"a":1,"b":[1,"x"]})"},
    {"empties", R"({"a":{},"b":[],"c":[[],{}],"":""})"},
    {"scalars", R"([true,false,null,0,-1,2147483647,2147483648,-9223372036854775808])"},
    {"numbers_keep_their_text",
        R"([1.50E+3,-0.0,1e5,2.5e-10,1234567890123456789012345,1000000000000000000])"},
    {"lax_numbers", "[+1, 007, -007, 000, 1., .5, -.5, 5d, 2.0F, 1e400]"},
    {"top_level_string", R"("just \"text\"")"},
    {"top_level_number", "-12.50"},
    {"escapes", R"(["\"\\\/\b\f\n\r\t", "a\u0041\u00e9\u4e2d", "\u0001\u001f\u007f"])"},
    {"escape_only", R"(["\n","\\","\"","\u0008"])"},
    {"control_bytes_raw", "[\"a\x01\x02\x0b\x1f b\"]"},
    {"nul_escape", R"(["a\u0000b"])"},
    {"escaped_names", R"({"a\"b":1,"c\\d":2,"\n":3,"\u00e9":4})"},
    {"duplicate_names", R"({"b":1,"a":2,"b":3,"ab":4})"},
    {"utf8_raw", "{\"\xC3\xA9t\xC3\xA9\":[\"\xE4\xB8\xAD\xE6\x96\x87\",\"\xF0\x9F\x98\x80\"]}"},
    {"gb18030_trail_backslash",
        "[\"\x81\x5C\",\"\x81\x5C\\n\",{\"\x81\x5C\":\"\x81\x22\x30\x30\"}]"},
    {"euckr_pairs", "[\"\xB0\xA1\xB0\xA2\",\"x\xC7\xD1\\t\"]"},
    {"lax_quotes_and_names", "{a:'x', 'b c':TRUE, true:Null, _d:[1,2,],}"},
    {"single_quoted_escapes", R"(['a\"b', 'c\\d', 'e\/f'])"},
    {"blanks_everywhere", " \t\n{ \"a\" :\r\n [ 1 , 2 ] , \"b\" : { } }\n "},
    {"long_string_many_escapes",
        "[\"" + std::string(300, 'x') + "\\n\\\"" + std::string(17, 'y') + "\\\\\"]"},
    {"deep", std::string(3000, '[') + "1" + std::string(3000, ']')},
}), by_id);
// clang-format on

// The reference documents, read in every dialect and escape mode in UTF-8
// and in the standard one in the other character sets.
class RoundTripData : public ::testing::TestWithParam<const char *> {};
TEST_P(RoundTripData, ReferenceDocument) {
    const std::string text = read_bench_data(std::string(GetParam()) + ".json");
    if (text.empty()) return;
    for (const Config &c : all_configs({UTF8}))
        EXPECT_TRUE(check_round_trip(text, c)) << describe(c);
    for (int32_t charset : {GB, EUCKR, SINGLE}) check_round_trip(text, Config{0, 0, 0, charset});
}

INSTANTIATE_TEST_SUITE_P(Files, RoundTripData,
                         ::testing::Values("canada", "citm_catalog", "twitter"),
                         [](const auto &info) { return std::string(info.param); });

// Non-ASCII text written as \u escapes reads back to the same characters
// in the character set it came from.
TEST(RoundTripAscii, BmpCharactersSurviveTheEscapes) {
    struct Row {
        int32_t charset;
        std::string text;
    };
    for (const Row &row :
         {Row{UTF8, "{\"\xC3\xA9\":[\"x\xE4\xB8\xAD\\n\"]}"},
          Row{GB, "{\"\xD6\xD0\":[\"\x81\x5C\"]}"}, Row{EUCKR, "[\"\xB0\xA1 \xC7\xD1\"]"}}) {
        for (int32_t escape_mode : {0, 1}) {
            const Config c{escape_mode, 0, 0, row.charset};
            SCOPED_TRACE(describe(c));
            CharsetScope cs(row.charset);
            Reader r(c);
            const json_node *first = r.read(row.text);
            ASSERT_NE(first, nullptr);
            int32_t rc = 0;
            const std::string ascii = r.write(first, JSON_FMT_ASCII, &rc);
            ASSERT_EQ(rc, 0);
            for (char ch : ascii) EXPECT_GE(static_cast<signed char>(ch), 0) << ascii;
            const json_node *second = r.read(ascii);
            ASSERT_NE(second, nullptr) << ascii;
            EXPECT_EQ(dump(first), dump(second));
        }
    }
}

// What does not round-trip, by design.
struct LossRow {
    const char *id;
    Config config;
    uint32_t flags;
    std::string text;
    std::string written; // what the first tree is written as
    bool rereads;        // whether that text can be read again
};

class ByDesign : public ::testing::TestWithParam<LossRow> {};
TEST_P(ByDesign, WrittenTextIsAsStated) {
    const LossRow &row = GetParam();
    CharsetScope cs(row.config.charset);
    Reader r(row.config);
    const json_node *first = r.read(row.text);
    ASSERT_NE(first, nullptr);
    int32_t rc = 0;
    EXPECT_EQ(r.write(first, row.flags, &rc), row.written);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(r.read(row.written) != nullptr, row.rereads);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, ByDesign, rows<LossRow>({
    // A string that never held an escape is written as it is, so a raw
    // double quote inside single quotes breaks the text.
    {"raw_quote_in_single_quotes", {0, 0, 0, UTF8}, 0, "['a\"b']", "[\"a\"b\"]", false},
    {"raw_quote_in_single_quotes_kept", {1, 0, 0, UTF8}, 0, "['a\"b\\n']", "[\"a\"b\\n\"]", false},
    // Keep mode writes escapes as they stood, except the ones the reader
    // normalises.
    {"keep_mode_normalises_slash_and_backspace", {1, 0, 0, UTF8}, 0, R"(["\/\b\u0041\u001f"])",
        R"(["/\u0008A\u001F"])", true},
    {"keep_mode_backspace_in_a_dialect", {1, 1, 1, UTF8}, 0, R"(["\b"])", R"(["\b"])", true},
    // Keep mode stores \u0022 and \u005c as the bare byte, which then
    // breaks the written text.
    {"keep_mode_u005c_is_a_bare_backslash", {1, 0, 0, UTF8}, 0, R"(["\n\u005c"])", R"(["\n\"])",
        false},
    {"keep_mode_u005c_joins_the_next_escape", {1, 0, 0, UTF8}, 0, R"(["\u005c\/"])", R"(["\/"])",
        true},
    {"keep_mode_u0022_is_a_bare_quote", {1, 0, 0, UTF8}, 0, R"(["\u0022"])", R"(["""])", false},
    // Only the first UTF-16 unit of a character beyond the BMP is written.
    {"ascii_flag_beyond_bmp", {0, 0, 0, UTF8}, 1, "[\"\xF0\x9F\x98\x80\"]", "[\"\\uD83D\"]", false},
    // \u0080 reads back as the single byte 0x80, not as the character.
    {"ascii_flag_u0080", {0, 0, 0, GB}, 1, "[\"\x81\x30\x81\x30\"]", "[\"\\u0080\"]", true},
    // Lax input becomes standard JSON.
    {"lax_input_normalised", {0, 0, 0, UTF8}, 0, "{a:+1,'b':TRUE,}", R"({"a":1,"b":true})", true},
}), by_id);
// clang-format on

} // namespace
