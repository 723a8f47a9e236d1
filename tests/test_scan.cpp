// The JSON scanner through json_flex_next_token: token rules and their
// values, strict and lax, string start conditions and their messages,
// line counting, the end of input at a NUL, and multibyte strings in the
// three server character sets, including GB18030 characters whose second
// byte is a backslash or a quote.
#include <gtest/gtest.h>

#include "vx_env.h"

namespace {
using ::operator<<;

std::string show_bytes(const char *s, size_t n) {
    std::string out;
    char buf[8];
    for (size_t i = 0; i < n; i++) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        std::snprintf(buf, sizeof buf, "\\x%02X", c);
        out += c < 0x21 || c >= 0x7F ? std::string(buf) : std::string(1, char(c));
    }
    return out;
}

// Every token up to the end (or the first error) as text: kinds by name
// with their values, single bytes as themselves, an error as
// ERR(code,message,line).
std::string scan_all(jlpca_ctx *ctx) {
    void *scanner = nullptr;
    if (json_flex_scanner_init(ctx, &scanner) != 0) return "NOMEM";
    std::string out;
    for (int i = 0; i < 64; i++) {
        int32_t t = json_flex_next_token(scanner);
        if (!out.empty()) out += ' ';
        if (t == 0) {
            out += ctx->err_code ? "ERR(" + std::to_string(ctx->err_code) + "," + ctx->err_msg +
                                       "," + std::to_string(ctx->err_line) + ")"
                                 : std::string("END");
            EXPECT_EQ(ctx->tok, 0u);
            break;
        }
        EXPECT_EQ(ctx->tok, uint32_t(t));
        const bool has_text =
            t == JT_DQSTRING || t == JT_SQSTRING || t == JT_NAME || t == JT_DECIMAL;
        const std::string text = has_text ? show_bytes(ctx->tok_str, size_t(ctx->tok_val)) : "";
        switch (t) {
        case JT_INT: out += "INT:" + std::to_string(ctx->tok_val); break;
        case JT_BIGINT: out += "BIG:" + std::to_string(ctx->tok_val); break;
        case JT_DECIMAL: out += "DEC:" + text; break;
        case JT_DQSTRING: out += "DQ:" + text; break;
        case JT_SQSTRING: out += "SQ:" + text; break;
        case JT_NAME: out += "NAME:" + text; break;
        case JT_TRUE: out += "TRUE"; break;
        case JT_FALSE: out += "FALSE"; break;
        case JT_NULL: out += "NULL"; break;
        default: {
            const char c = char(t);
            out += show_bytes(&c, 1);
        }
        }
    }
    json_flex_scanner_deinit(ctx, scanner);
    return out;
}

// A text scanned strictly or not in one server character set (value 635).
struct ScanRow {
    const char *id;
    std::string text;
    int32_t strict;
    const char *tokens;
    int32_t charset = UTF8;
};

class ScanTable : public ::testing::TestWithParam<ScanRow> {};
TEST_P(ScanTable, Tokens) {
    const ScanRow &r = GetParam();
    CharsetScope cs(r.charset);
    VxEnv env(r.strict ? strict() : lax());
    ASSERT_EQ(env.start(r.text), 0);
    EXPECT_EQ(scan_all(env.ctx.get()), r.tokens);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, ScanTable,
    rows<ScanRow>({
        {"object", R"({"a":1})", 1, "{ DQ:a : INT:1 } END"},
        {"punctuation", "()[]{},:;~", 0, "( ) [ ] { } , : ; ~ END"},
        {"other_bytes", "!#/\\\x0b+-", 0, "! # / \\ \\x0B + - END"},
        {"dot_alone", ". .x", 0, ". . NAME:x END"},
        {"blanks_and_lines", " \t\f\r\n\n1", 0, "INT:1 END"},
        {"nul_ends_input", std::string("[1]\0[2]", 7), 0, "[ INT:1 ] END"},
        {"unquoted_lax", "{a:TRUE}", 0, "{ NAME:a : TRUE } END"},
        {"unquoted_strict", "{a:true}", 1, "{ ERR(-5,json strict only support double quotation,1)"},
        {"keyword_case_lax", "True fALSE NULL nulls tru nul truefalse", 0,
         "TRUE FALSE NULL NAME:nulls NAME:tru NAME:nul NAME:truefalse END"},
        {"keyword_case_strict", "true false null TRUE", 1,
         "TRUE FALSE NULL ERR(-5,json strict only support double quotation,1)"},
        {"keyword_prefix_strict", "nul", 1, "ERR(-5,json strict only support double quotation,1)"},
        {"word_chars", "_a1\xC3\xA9 b", 0, "NAME:_a1\\xC3\\xA9 NAME:b END"},
        // Numbers.
        {"integers", "0 -0 -1 2147483647 -2147483648 2147483648 -2147483649", 1,
         "INT:0 INT:0 INT:-1 INT:2147483647 INT:-2147483648 BIG:2147483648 BIG:-2147483649 END"},
        {"eighteen_digits", "999999999999999999 -99999999999999999", 1,
         "BIG:999999999999999999 BIG:-99999999999999999 END"},
        {"decimals", "-.5 5. 0.25 .5", 0, "DEC:-.5 DEC:5. DEC:0.25 DEC:.5 END"},
        {"reals", "5d 1e5 2.5E-3 7F 1.e2", 0, "DEC:5d DEC:1e5 DEC:2.5E-3 DEC:7F DEC:1.e2 END"},
        {"e_without_digits", "5e 5E+", 0, "INT:5 NAME:e INT:5 NAME:E + END"},
        {"number_then_word", "12ab 1.5.3", 0, "INT:12 NAME:ab DEC:1.5 DEC:.3 END"},
        {"signs", "+1 +x --1", 0, "INT:1 + NAME:x - INT:-1 END"},
        {"plus_strict", "+1", 1, "ERR(-3105,invalid json number,0)"},
        {"lax_zeros", "007 -007 000 00.5 -007.5 0e5 0000000000000000000001", 0,
         "INT:7 INT:-7 INT:0 DEC:0.5 DEC:-7.5 DEC:e5 INT:1 END"},
        {"zero_exponent_strict", "0e5", 1, "ERR(-3105,invalid json number,0)"},
        {"nineteen_digits", "1000000000000000000 -100000000000000000", 1,
         "DEC:1000000000000000000 DEC:-100000000000000000 END"},
        {"overflow_kept", "1e400", 1, "DEC:1e400 END"},
        // Strings: DQ and SQ.
        {"dq_escapes", R"("a\"b\\c\/d\n\u0041z")", 1, "DQ:a\"b\\c/d\\x0AAz END"},
        {"sq_lax", R"('x' 'a"b')", 0, "SQ:x SQ:a\"b END"},
        {"sq_strict", "'x'", 1, "ERR(-5,json strict only support double quotation,1)"},
        {"sq_escapes", R"('a\nb\\c\"')", 0, "SQ:a\\x0Ab\\c\" END"},
        {"sq_unicode_escape", R"('\u0041')", 0, "ERR(-5,escape error,1)"},
        {"sq_escaped_quote", R"('it\'s')", 0, "ERR(-5,charactor not support,1)"},
        {"raw_tab", "\"a\tb\"", 1, "ERR(-5,charactor need escape,1)"},
        {"raw_line_feed_counts", "\n\"a\nb\"", 1, "ERR(-5,charactor need escape,3)"},
        {"raw_control_kept", "\"a\x01\x0b\"", 1, "DQ:a\\x01\\x0B END"},
        {"nul_in_string", std::string("\"ab\0cd\" 1", 9), 1, "DQ:ab INT:1 END"},
        {"escaped_tab", "\"a\\\tb\"", 1, "ERR(-5,charactor need escape,1)"},
        {"bad_escape_letter", R"("\q")", 1, "ERR(-5,escape error,1)"},
        {"short_unicode", R"("\u12")", 1, "ERR(-5,escape error,1)"},
        {"bad_hex", R"("\u12g4")", 1, "ERR(-5,escape error,1)"},
        {"unterminated_dq", "\n\"abc", 1, "ERR(-5,Unterminated quoted identifier,2)"},
        {"unterminated_dq_escape", "\"abc\\", 1, "ERR(-5,Unterminated quoted identifier,1)"},
        {"unterminated_sq", "'abc", 0, "ERR(-4,Unterminated quoted string,1)"},
        {"unterminated_sq_escape", "'abc\\", 0, "ERR(-4,Unterminated quoted string,1)"},
    }),
    by_id);

// A double-byte character whose second byte is '\' or '"' is content; in
// GB18030 a '"' after a lead byte even counts as the start of a four-byte
// character, taking two more bytes as content.
INSTANTIATE_TEST_SUITE_P(
    Charsets, ScanTable,
    rows<ScanRow>({
        {"gb_plain", "\"\xD6\xD0\xCE\xC4\"", 1, "DQ:\\xD6\\xD0\\xCE\\xC4 END", GB},
        {"gb_backslash_trail", "\"\x81\x5C\" 1", 1, "DQ:\\x81\\ INT:1 END", GB},
        {"gb_backslash_trail_then_escape", "\"\x81\x5C\\n\"", 1, "DQ:\\x81\\\\x0A END", GB},
        {"gb_quote_trail", "\"\x81\"ab\" 1", 1, "DQ:\\x81\"ab INT:1 END", GB},
        {"gb_quote_trail_unterminated", "\"\x81\"\"", 1, "ERR(-5,Unterminated quoted identifier,1)",
         GB},
        {"gb_four_byte", "\"\x81\x30\x81\x30\"", 1, "DQ:\\x810\\x810 END", GB},
        {"gb_split_four_byte", "\"\x81\x30\\n\" 1", 1, "DQ:\\x810\\n INT:1 END", GB},
        {"gb_tab_trail", "\"\x81\tab\" 1", 1, "DQ:\\x81\\x09ab INT:1 END", GB},
        {"gb_unicode_escape", R"("\u4e2d")", 1, "DQ:\\xD6\\xD0 END", GB},
        {"utf8_plain", "\"\xE4\xB8\xAD\"", 1, "DQ:\\xE4\\xB8\\xAD END", UTF8},
        {"utf8_cut_character_closes", "\"\xE4\" 1", 1, "DQ:\\xE4 INT:1 END", UTF8},
        {"utf8_unicode_escape", R"("\u4e2d\u0080")", 1, "DQ:\\xE4\\xB8\\xAD\\x80 END", UTF8},
        {"euckr_plain", "\"\xB0\xA1\"", 1, "DQ:\\xB0\\xA1 END", EUCKR},
        {"euckr_lead_before_quote", "\"\xB0\"\" 1", 1, "DQ:\\xB0\" INT:1 END", EUCKR},
        {"euckr_unicode_escape", R"("\uac00")", 1, "DQ:\\xB0\\xA1 END", EUCKR},
    }),
    by_id);

// Token values handed to callers outside the grammars are heap copies
// that outlive the next token.
TEST(Scan, RawTokensAreCopies) {
    VxEnv env(lax());
    ASSERT_EQ(env.start(R"("first" abc -007 "sec\nond")"), 0);
    void *scanner = nullptr;
    ASSERT_EQ(json_flex_scanner_init(env.ctx.get(), &scanner), 0);
    std::vector<const char *> values;
    for (int32_t t; (t = json_flex_next_token(scanner)) != 0;) {
        values.push_back(env.ctx->tok_str);
        EXPECT_TRUE(env.ctx->tok_str < env.text.data() ||
                    env.ctx->tok_str >= env.text.data() + env.text.size());
    }
    json_flex_scanner_deinit(env.ctx.get(), scanner);
    ASSERT_EQ(values.size(), 4u);
    EXPECT_STREQ(values[0], "first");
    EXPECT_STREQ(values[1], "abc");
    EXPECT_STREQ(values[3], "sec\nond");
}

// Out of heap at every call while scanning raw tokens: each run gives the
// same tokens up to an "out of memory" error, or all of them.
TEST(Scan, RawTokensHeapExhausted) {
    const std::string doc =
        R"({"a\n":[-007,'q',name,1.5e3,"x"],"long":"\t)" + std::string(40000, 'y') + R"("})";
    auto scan_with_limit = [&](uint64_t limit, uint64_t *calls) {
        VxEnv env(lax());
        EXPECT_EQ(env.start(doc), 0);
        mem_heap_set_call_limit(env.heap, limit);
        std::string out = scan_all(env.ctx.get());
        if (calls) *calls = mem_heap_alloc_count(env.heap);
        return out;
    };
    uint64_t needed = 0;
    const std::string full = scan_with_limit(UINT64_MAX, &needed);
    ASSERT_EQ(full.substr(full.size() - 3), "END");
    for (uint64_t n = 0; n < needed; n++) {
        const std::string got = scan_with_limit(n, nullptr);
        if (got == "NOMEM") continue;
        const size_t err = got.rfind("ERR(-503,out of memory,");
        ASSERT_NE(err, std::string::npos) << n << ": " << got.substr(0, 80);
        EXPECT_EQ(got.substr(0, err), full.substr(0, err)) << n;
    }
}

TEST(Scan, LongLiteralLength) {
    VxEnv env(strict());
    ASSERT_EQ(env.start("\"" + std::string(70000, 'y') + "\\n\""), 0);
    void *scanner = nullptr;
    ASSERT_EQ(json_flex_scanner_init(env.ctx.get(), &scanner), 0);
    EXPECT_EQ(json_flex_next_token(scanner), JT_DQSTRING);
    EXPECT_EQ(env.ctx->tok_val, 70001);
    EXPECT_EQ(env.ctx->lit_len, 70001);
    EXPECT_GT(env.ctx->lit_cap, 70001u);
    EXPECT_EQ(json_flex_next_token(scanner), 0);
    json_flex_scanner_deinit(env.ctx.get(), scanner);
}

} // namespace
