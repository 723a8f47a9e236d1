// Standard JSON strings (jlpca_set_std_strings): escaped surrogate pairs,
// lone and reversed surrogate escapes, and invalid UTF-8.  Every row runs
// through the tree reader and the check grammar, which must agree on the
// verdict, the code, the message and the place; an accepted text must also
// read to the expected tree.  Writing rows cover the \u form of characters
// beyond U+FFFF and the round trip.
#include <gtest/gtest.h>

#include <string>

#include "vx_env.h"

namespace {

using namespace std::string_literals;
using ::operator<<;

constexpr bool ON = true, OFF = false;

struct StdRow {
    const char *id;
    std::string text;
    bool std_strings;
    int32_t code;         // 0: accepted; else the code jlpca_error_position gives
    std::string expected; // accepted: the tree as dump() shows it; else the message
    uint32_t offset = 0, line = 1;
    int32_t charset = UTF8;
    ReadSwitches sw = lax();
};

class StandardStrings : public ::testing::TestWithParam<StdRow> {};

void expect_outcome(VxEnv &env, const StdRow &r, int32_t rc, const json_node *root,
                    const char *how) {
    if (r.code == 0) {
        EXPECT_EQ(rc, 0) << how << ": " << env.ctx->err_msg;
        if (root) {
            EXPECT_EQ(dump(root), r.expected) << how;
        }
        return;
    }
    EXPECT_EQ(rc, VXJSON_ERR_INVALID_JSON) << how;
    uint32_t offset = 99, line = 99;
    const char *msg = nullptr;
    EXPECT_EQ(jlpca_error_position(env.ctx.get(), &offset, &line, nullptr, &msg), r.code) << how;
    EXPECT_EQ(env.ctx->err_code, r.code) << how;
    EXPECT_EQ(offset, r.offset) << how;
    EXPECT_EQ(line, r.line) << how;
    EXPECT_EQ(env.ctx->err_line, r.line) << how;
    ASSERT_NE(msg, nullptr) << how;
    EXPECT_EQ(std::string(msg), r.expected) << how;
}

TEST_P(StandardStrings, TreeReaderAndCheckAgree) {
    const StdRow &r = GetParam();
    CharsetScope cs(r.charset);
    {
        VxEnv env(r.sw);
        ASSERT_EQ(jlpca_set_std_strings(env.ctx.get(), r.std_strings), 0);
        json_node *root = nullptr;
        const int32_t rc = env.read(r.text, &root);
        expect_outcome(env, r, rc, root, "json_flex");
    }
    {
        VxEnv env(r.sw);
        ASSERT_EQ(jlpca_set_std_strings(env.ctx.get(), r.std_strings), 0);
        expect_outcome(env, r, env.check(r.text), nullptr, "jcheck_flex");
    }
}

const ReadSwitches STRICT = strict();
const ReadSwitches KEEP = {.escape_mode = JLPCA_ESCAPE_KEEP};
const std::string GRIN = "\xF0\x9F\x98\x80"; // U+1F600 in UTF-8
const std::string GRIN_DUMP = "\\xF0\\x9F\\x98\\x80";

const char *const HIGH_ALONE = "unpaired high surrogate escape";
const char *const LOW_ALONE = "unpaired low surrogate escape";
const char *const REVERSED = "surrogate escapes in reverse order";
const char *const STRAY = "invalid UTF-8: continuation byte without a lead byte";
const char *const NEVER = "invalid UTF-8: byte that never occurs in UTF-8";
const char *const CUT = "invalid UTF-8: sequence cut short";
const char *const OVERLONG = "invalid UTF-8: overlong encoding";
const char *const SURROGATE = "invalid UTF-8: encoded surrogate";
const char *const TOO_HIGH = "invalid UTF-8: beyond U+10FFFF";
constexpr int32_t SUR = VXJSON_ERR_SURROGATE, UTF = VXJSON_ERR_UTF8;

INSTANTIATE_TEST_SUITE_P(
    Pairs, StandardStrings,
    rows<StdRow>({
        {"pair", R"(["\ud83d\ude00"])", ON, 0, "[\"" + GRIN_DUMP + "\"]"},
        {"pair_upper_case", R"(["\uD83D\uDE00"])", ON, 0, "[\"" + GRIN_DUMP + "\"]"},
        {"pair_lowest", R"(["\ud800\udc00"])", ON, 0, R"(["\xF0\x90\x80\x80"])"},
        {"pair_highest", R"(["\udbff\udfff"])", ON, 0, R"(["\xF4\x8F\xBF\xBF"])"},
        {"pair_inside_text", R"(["a\ud83d\ude00b\n"])", ON, 0, "[\"a" + GRIN_DUMP + "b\\x0A\"]"},
        {"two_pairs", R"(["\ud83d\ude00\ud83d\ude00"])", ON, 0,
         "[\"" + GRIN_DUMP + GRIN_DUMP + "\"]"},
        {"pair_as_name", R"({"\ud83d\ude00":1})", ON, 0, "{\"" + GRIN_DUMP + "\":1}"},
        {"pair_strict", R"(["\ud83d\ude00"])", ON, 0, "[\"" + GRIN_DUMP + "\"]", 0, 1, UTF8,
         STRICT},
        {"pair_keep_escapes", R"(["\ud83d\ude00\n"])", ON, 0, "[\"" + GRIN_DUMP + "\\x5Cn\"]", 0, 1,
         UTF8, KEEP},
        {"bmp_escape", R"(["\u00e9\u20ac"])", ON, 0, R"(["\xC3\xA9\xE2\x82\xAC"])"},
        // U+0080 is a character here, not the engine's bare byte 0x80,
        // so that the text written from it reads back.
        {"u0080_is_a_character", R"(["\u0080"])", ON, 0, R"(["\xC2\x80"])"},
        {"u0080_by_default", R"(["\u0080"])", OFF, 0, R"(["\x80"])"},
        {"pair_gb18030", R"(["\ud83d\ude00"])", ON, 0, R"(["\x949\xFC6"])", 0, 1, GB},
        {"pair_single_byte_set", R"(["\ud83d\ude00"])", ON, VXJSON_ERR_LEX, "escape error", 2, 1,
         SINGLE},
        {"pair_by_default", R"(["\ud83d\ude00"])", OFF, VXJSON_ERR_LEX, "escape error", 2},
    }),
    by_id);

INSTANTIATE_TEST_SUITE_P(
    LoneSurrogates, StandardStrings,
    rows<StdRow>({
        {"lone_high", R"(["\ud83d"])", ON, SUR, HIGH_ALONE, 2},
        {"lone_high_then_text", R"(["ab\ud83dxy"])", ON, SUR, HIGH_ALONE, 4},
        {"lone_high_at_end_of_input", R"(["\ud83d)", ON, SUR, HIGH_ALONE, 2},
        {"high_then_bmp_escape", R"(["\ud83d\u0041"])", ON, SUR, HIGH_ALONE, 2},
        {"high_then_high", R"(["\ud83d\ud83d\ude00"])", ON, SUR, HIGH_ALONE, 2},
        {"high_then_short_escape", R"(["\ud83d\ude0"])", ON, SUR, HIGH_ALONE, 2},
        {"pair_split_by_text", R"(["\ud83dx\ude00"])", ON, SUR, HIGH_ALONE, 2},
        {"pair_split_by_escape", R"(["\ud83d\n\ude00"])", ON, SUR, HIGH_ALONE, 2},
        {"pair_split_by_strings", R"(["\ud83d","\ude00"])", ON, SUR, HIGH_ALONE, 2},
        {"lone_low", R"(["\ude00"])", ON, SUR, LOW_ALONE, 2},
        {"lone_low_after_pair", "[\"\\ud83d\\ude00\\ude00\"]", ON, SUR, LOW_ALONE, 14},
        {"reversed", R"(["\ude00\ud83d"])", ON, SUR, REVERSED, 2},
        {"low_before_pair", R"(["\ude00\ud83d\ude00"])", ON, SUR, LOW_ALONE, 2},
        {"lone_high_in_name", "{\"a\":1,\n\"\\udbff\":2}", ON, SUR, HIGH_ALONE, 9, 2},
        {"lone_high_by_default", R"(["\ud83d"])", OFF, VXJSON_ERR_LEX, "escape error", 2},
        {"bad_hex_stays_escape_error", R"(["\ud8G3"])", ON, VXJSON_ERR_LEX, "escape error", 2},
    }),
    by_id);

INSTANTIATE_TEST_SUITE_P(
    Utf8, StandardStrings,
    rows<StdRow>({
        {"valid_text", "[\"\xC3\xA9\xE2\x82\xAC" + GRIN + "\"]", ON, 0,
         "[\"\\xC3\\xA9\\xE2\\x82\\xAC" + GRIN_DUMP + "\"]"},
        {"highest_code_point", "[\"\xF4\x8F\xBF\xBF\"]", ON, 0, R"(["\xF4\x8F\xBF\xBF"])"},
        {"overlong_2", "[\"\xC0\xAF\"]", ON, UTF, OVERLONG, 2},
        {"overlong_2_c1", "[\"a\xC1\xBF\"]", ON, UTF, OVERLONG, 3},
        {"overlong_3", "[\"\xE0\x80\xAF\"]", ON, UTF, OVERLONG, 2},
        {"overlong_4", "[\"\xF0\x80\x80\xAF\"]", ON, UTF, OVERLONG, 2},
        {"encoded_surrogate", "[\"\xED\xA0\x80\"]", ON, UTF, SURROGATE, 2},
        {"encoded_low_surrogate", "[\"\xED\xBF\xBF\"]", ON, UTF, SURROGATE, 2},
        {"beyond_10ffff", "[\"\xF4\x90\x80\x80\"]", ON, UTF, TOO_HIGH, 2},
        {"beyond_10ffff_f5", "[\"\xF5\x80\x80\x80\"]", ON, UTF, TOO_HIGH, 2},
        {"byte_f8", "[\"\xF8\x88\x80\x80\x80\"]", ON, UTF, NEVER, 2},
        {"byte_ff", "[\"ok\xFF\"]", ON, UTF, NEVER, 4},
        {"stray_continuation", "[\"\x80\"]", ON, UTF, STRAY, 2},
        {"extra_continuation", "[\"\xC3\xA9\xA9\"]", ON, UTF, STRAY, 4},
        {"missing_continuation",
         "[\"\xC3"
         "A\"]",
         ON, UTF, CUT, 2},
        {"cut_by_closing_quote", "[\"\xE2\x82\"]", ON, UTF, CUT, 2},
        {"cut_by_end_of_input", "[\"\xE2\x82", ON, UTF, CUT, 2},
        {"cut_by_escape", "[\"\xE2\x82\\n\"]", ON, UTF, CUT, 2},
        {"after_an_escape", "[\"\\n\xFF\"]", ON, UTF, NEVER, 4},
        {"after_a_pair", "[\"\\ud83d\\ude00\xC0\xAF\"]", ON, UTF, OVERLONG, 14},
        {"in_a_name", "{\"\xC0\xAF\":1}", ON, UTF, OVERLONG, 2},
        {"in_a_bare_name", "{a\xC3:1}", ON, UTF, CUT, 2},
        {"in_single_quotes", "['\xFF']", ON, UTF, NEVER, 2},
        {"second_line", "[1,\n\"\xED\xA0\x80\"]", ON, UTF, SURROGATE, 5, 2},
        {"keep_escapes", "[\"\\t\xC0\xAF\"]", ON, UTF, OVERLONG, 4, 1, UTF8, KEEP},
        {"long_ascii_then_bad", "[\"" + std::string(40, 'x') + "\xFF\"]", ON, UTF, NEVER, 42},
        {"kept_by_default", "[\"\xC0\xAF\xFF\"]", OFF, 0, R"(["\xC0\xAF\xFF"])"},
        {"not_checked_in_gb18030", "[\"\x81\x30\x81\x30\"]", ON, 0, R"(["\x810\x810"])", 0, 1, GB},
    }),
    by_id);

// The switch itself: off after jlpca_init, and a bad call changes nothing.
TEST(StandardStringsSwitch, SetAndGet) {
    VxEnv env;
    jlpca_ctx *ctx = env.ctx.get();
    EXPECT_EQ(jlpca_std_strings(ctx), 0);
    EXPECT_EQ(jlpca_set_std_strings(ctx, 1), 0);
    EXPECT_EQ(jlpca_std_strings(ctx), 1);
    EXPECT_EQ(jlpca_set_std_strings(ctx, 2), VXJSON_ERR_INVALID_JSON);
    EXPECT_EQ(jlpca_std_strings(ctx), 1);
    EXPECT_EQ(jlpca_set_std_strings(nullptr, 1), VXJSON_ERR_INVALID_JSON);
    EXPECT_EQ(jlpca_std_strings(nullptr), 0);
    EXPECT_EQ(jlpca_set_std_strings(ctx, 0), 0);
    EXPECT_EQ(jlpca_std_strings(ctx), 0);
    ASSERT_EQ(jlpca_set_std_strings(ctx, 1), 0);
    (void)jlpca_init(nullptr, ctx, env.heap, &env.alloc, 0, 0, 0, 0);
    EXPECT_EQ(jlpca_std_strings(ctx), 0);
}

// A pair the character set has no character for is reported at its site.
TEST(StandardStringsSwitch, UnconvertiblePairIsReported) {
    CharsetScope cs(SINGLE);
    VxEnv env;
    ASSERT_EQ(jlpca_set_std_strings(env.ctx.get(), 1), 0);
    elog_trail_clear();
    json_node *root = nullptr;
    EXPECT_EQ(env.read(R"(["\ud83d\ude00"])", &root), VXJSON_ERR_INVALID_JSON);
    EXPECT_TRUE(trail_has(VXJSON_ERR_INVALID_JSON, "json/jlpca", 896)) << "the pair's report site";
    elog_trail_clear();
}

// Raw tokens see the same strings as the grammars.
TEST(StandardStringsSwitch, RawTokens) {
    VxEnv env;
    ASSERT_EQ(jlpca_set_std_strings(env.ctx.get(), 1), 0);
    ASSERT_EQ(env.start(R"("\ud83d\ude00" "\ude00")"), 0);
    void *scanner = nullptr;
    ASSERT_EQ(json_flex_scanner_init(env.ctx.get(), &scanner), 0);
    EXPECT_EQ(json_flex_next_token(scanner), JT_DQSTRING);
    EXPECT_EQ(std::string(env.ctx->tok_str, size_t(env.ctx->tok_val)), GRIN);
    EXPECT_EQ(json_flex_next_token(scanner), 0);
    EXPECT_EQ(env.ctx->err_code, VXJSON_ERR_SURROGATE);
    EXPECT_STREQ(env.ctx->err_msg, LOW_ALONE);
    json_flex_scanner_deinit(env.ctx.get(), scanner);
}

// A quoted name in a path takes the pair too, and finds the member whose
// name was read from the same escapes.
TEST(StandardStringsSwitch, PathNames) {
    VxEnv env;
    ASSERT_EQ(jlpca_set_std_strings(env.ctx.get(), 1), 0);
    json_node *doc = env.tree(R"({"\ud83d\ude00":7})");
    for (const char *text : {R"($."\ud83d\ude00")", "$.\""
                                                    "\xF0\x9F\x98\x80"
                                                    "\""}) {
        jpath path{};
        (void)jpath_init_simple(&path, 0);
        ASSERT_EQ(env.start(text), 0);
        ASSERT_EQ(jpath_flex(env.ctx.get(), &path), 0) << text;
        json_node *found = nullptr;
        ASSERT_EQ(json_query(env.ctx.get(), doc, &path, &found), 0) << text;
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->ival, 7);
    }
    jpath path{};
    (void)jpath_init_simple(&path, 0);
    ASSERT_EQ(env.start(R"($."\ud83d")"), 0);
    EXPECT_NE(jpath_flex(env.ctx.get(), &path), 0);
    EXPECT_STREQ(env.ctx->err_msg, HIGH_ALONE);
}

// ------------------------------------------------------------------
// Writing
// ------------------------------------------------------------------

struct WriteRow {
    const char *id;
    std::string text;     // read with standard strings on
    bool std_strings;     // the switch while writing
    uint32_t flags;       // JSON_FMT_*
    std::string expected; // the written text
};

class StandardStringsWrite : public ::testing::TestWithParam<WriteRow> {};

TEST_P(StandardStringsWrite, Writes) {
    const WriteRow &r = GetParam();
    VxEnv env;
    ASSERT_EQ(jlpca_set_std_strings(env.ctx.get(), 1), 0);
    const json_node *root = env.tree(r.text);
    ASSERT_EQ(jlpca_set_std_strings(env.ctx.get(), r.std_strings), 0);
    std::string out;
    EXPECT_EQ(env.write(root, &out, r.flags), 0);
    EXPECT_EQ(out, r.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, StandardStringsWrite,
    rows<WriteRow>({
        {"ascii_pair", R"(["\ud83d\ude00"])", ON, JSON_FMT_ASCII, R"(["\uD83D\uDE00"])"},
        {"ascii_pair_in_name", R"({"x\ud83d\ude00":"\u00e9"})", ON, JSON_FMT_ASCII,
         R"({"x\uD83D\uDE00":"\u00E9"})"},
        {"ascii_pair_pretty", R"(["\ud83d\ude00"])", ON, JSON_FMT_ASCII | JSON_FMT_PRETTY_A,
         "[\n  \"\\uD83D\\uDE00\"\n]"},
        {"ascii_by_default_keeps_high_half", R"(["\ud83d\ude00"])", OFF, JSON_FMT_ASCII,
         R"(["\uD83D"])"},
        {"pairs_flag_without_the_switch", R"(["\ud83d\ude00"])", OFF,
         JSON_FMT_ASCII | JSON_FMT_ASCII_PAIRS, R"(["\uD83D\uDE00"])"},
        {"pairs_flag_alone_is_not_ascii", R"(["\ud83d\ude00"])", OFF, JSON_FMT_ASCII_PAIRS,
         "[\"" + GRIN + "\"]"},
        {"not_ascii", R"(["\ud83d\ude00"])", ON, JSON_FMT_COMPACT, "[\"" + GRIN + "\"]"},
        {"bmp_stays_one_escape", "[\"\xE2\x82\xAC\"]", ON, JSON_FMT_ASCII, R"(["\u20AC"])"},
    }),
    by_id);

// Read, written as ASCII, read again: the same tree; and the ASCII text of
// that tree is the text written first.
TEST(StandardStringsWrite, RoundTrip) {
    VxEnv env;
    ASSERT_EQ(jlpca_set_std_strings(env.ctx.get(), 1), 0);
    const std::string text = "{\"k\\ud83d\\ude00\":[\"a" + GRIN + "b\",\"\\udbff\\udfff\"]}";
    const json_node *first = env.tree(text);
    const std::string ascii = env.text_of(first, JSON_FMT_ASCII);
    EXPECT_EQ(ascii, R"({"k\uD83D\uDE00":["a\uD83D\uDE00b","\uDBFF\uDFFF"]})");
    const std::string plain = env.text_of(first);
    const json_node *again = env.tree(ascii);
    EXPECT_EQ(dump(again), dump(first));
    EXPECT_EQ(env.text_of(again, JSON_FMT_ASCII), ascii);
    EXPECT_EQ(env.text_of(again), plain);
}

// The escaper on its own takes the pair flag too.
TEST(StandardStringsWrite, ConvertAsciiFlag) {
    for (const uint32_t flags : {0u, uint32_t(JSON_FMT_ASCII_PAIRS)}) {
        OutString out;
        ASSERT_EQ(json_string_convert_ascii(nullptr, &out.alloc, out.s, flags, GRIN.data(),
                                            uint32_t(GRIN.size())),
                  0);
        EXPECT_EQ(out.str(), flags ? "\\uD83D\\uDE00" : "\\uD83D");
    }
}

// Some two-byte GB18030 characters lie beyond U+FFFF: as a pair they take
// six output bytes per input byte (0xFE6C is U+215D7).
TEST(StandardStringsWrite, ConvertAsciiTwoBytePairs) {
    CharsetScope cs(GB);
    const std::string text = "\xFE\x6C\xFE\x6C\xFE\x6C";
    OutString out;
    ASSERT_EQ(json_string_convert_ascii(nullptr, &out.alloc, out.s, JSON_FMT_ASCII_PAIRS,
                                        text.data(), uint32_t(text.size())),
              0);
    EXPECT_EQ(out.str(), "\\uD845\\uDDD7\\uD845\\uDDD7\\uD845\\uDDD7");
}

} // namespace
