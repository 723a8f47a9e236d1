// The JSON scanner through json_flex_next_token: token rules and their
// values, strict and lax, string start conditions and their messages,
// line counting, the end of input at a NUL, and multibyte strings in the
// three server character sets, including GB18030 characters whose second
// byte is a backslash or a quote.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "read_cases.h"

namespace {

std::string show_bytes(const char *s, size_t n) {
    std::string out;
    char buf[8];
    for (size_t i = 0; i < n; i++) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        if (c < 0x21 || c >= 0x7F) {
            std::snprintf(buf, sizeof buf, "\\x%02X", c);
            out += buf;
        } else {
            out += char(c);
        }
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
            if (ctx->err_code)
                out += "ERR(" + std::to_string(ctx->err_code) + "," + ctx->err_msg + "," +
                       std::to_string(ctx->err_line) + ")";
            else
                out += "END";
            EXPECT_EQ(ctx->tok, 0u);
            break;
        }
        EXPECT_EQ(ctx->tok, uint32_t(t));
        const std::string text = t == JT_DQSTRING || t == JT_SQSTRING || t == JT_NAME ||
                                         t == JT_DECIMAL
                                     ? show_bytes(ctx->tok_str, size_t(ctx->tok_val))
                                     : std::string();
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
            char c = char(t);
            out += show_bytes(&c, 1);
        }
        }
    }
    json_flex_scanner_deinit(ctx, scanner);
    return out;
}

struct ScanRow {
    const char *id;
    std::string text;
    int32_t strict;
    const char *tokens;
};

class ScanTable : public ::testing::TestWithParam<ScanRow> {};

TEST_P(ScanTable, Tokens) {
    const ScanRow &r = GetParam();
    ReadSwitches sw;
    sw.strict = r.strict;
    ReadEnv env(sw);
    env.text = r.text;
    ASSERT_EQ(jlpca_reinit(env.ctx.get(), env.text.data(), uint32_t(env.text.size())), 0);
    EXPECT_EQ(scan_all(env.ctx.get()), r.tokens);
}

const char *const kStrictQuote = "json strict only support double quotation";

INSTANTIATE_TEST_SUITE_P(
    Rules, ScanTable,
    ::testing::Values(
        ScanRow{"object", R"({"a":1})", 1, "{ DQ:a : INT:1 } END"},
        ScanRow{"punctuation", "()[]{},:;~", 0, "( ) [ ] { } , : ; ~ END"},
        ScanRow{"other_bytes", "!#/\\\x0b+-", 0, "! # / \\ \\x0B + - END"},
        ScanRow{"dot_alone", ". .x", 0, ". . NAME:x END"},
        ScanRow{"blanks_and_lines", " \t\f\r\n\n1", 0, "INT:1 END"},
        ScanRow{"nul_ends_input", std::string("[1]\0[2]", 7), 0, "[ INT:1 ] END"},
        ScanRow{"unquoted_lax", "{a:TRUE}", 0, "{ NAME:a : TRUE } END"},
        ScanRow{"unquoted_strict", "{a:true}", 1,
                "{ ERR(-5,json strict only support double quotation,1)"},
        ScanRow{"keyword_case_lax", "True fALSE NULL nulls tru", 0,
                "TRUE FALSE NULL NAME:nulls NAME:tru END"},
        ScanRow{"keyword_case_strict", "true TRUE", 1,
                "TRUE ERR(-5,json strict only support double quotation,1)"},
        ScanRow{"word_chars", "_a1\xC3\xA9 b", 0, "NAME:_a1\\xC3\\xA9 NAME:b END"},
        // Numbers.
        ScanRow{"integers", "0 -1 2147483647 2147483648 -2147483649", 1,
                "INT:0 INT:-1 INT:2147483647 BIG:2147483648 BIG:-2147483649 END"},
        ScanRow{"decimals", "-.5 5. 0.25 .5", 0, "DEC:-.5 DEC:5. DEC:0.25 DEC:.5 END"},
        ScanRow{"reals", "5d 1e5 2.5E-3 7F 1.e2", 0, "DEC:5d DEC:1e5 DEC:2.5E-3 DEC:7F DEC:1.e2 END"},
        ScanRow{"e_without_digits", "5e 5E+", 0, "INT:5 NAME:e INT:5 NAME:E + END"},
        ScanRow{"number_then_word", "12ab 1.5.3", 0, "INT:12 NAME:ab DEC:1.5 DEC:.3 END"},
        ScanRow{"signs", "+1 +x --1", 0, "INT:1 + NAME:x - INT:-1 END"},
        ScanRow{"plus_strict", "+1", 1, "ERR(-3105,invalid json number,0)"},
        ScanRow{"lax_zeros", "007 -007 000 00.5 0e5", 0, "INT:7 INT:-7 INT:0 DEC:0.5 DEC:e5 END"},
        ScanRow{"zero_exponent_strict", "0e5", 1, "ERR(-3105,invalid json number,0)"},
        ScanRow{"nineteen_digits", "1000000000000000000 -100000000000000000", 1,
                "DEC:1000000000000000000 DEC:-100000000000000000 END"},
        ScanRow{"overflow_kept", "1e400", 1, "DEC:1e400 END"},
        // Strings: DQ and SQ.
        ScanRow{"dq_escapes", R"("a\"b\\c\/d\n\u0041z")", 1, "DQ:a\"b\\c/d\\x0AAz END"},
        ScanRow{"sq_lax", R"('x' 'a"b')", 0, "SQ:x SQ:a\"b END"},
        ScanRow{"sq_strict", "'x'", 1, "ERR(-5,json strict only support double quotation,1)"},
        ScanRow{"sq_escapes", R"('a\nb\\c\"')", 0, "SQ:a\\x0Ab\\c\" END"},
        ScanRow{"sq_unicode_escape", R"('\u0041')", 0, "ERR(-5,escape error,1)"},
        ScanRow{"sq_escaped_quote", R"('it\'s')", 0, "ERR(-5,charactor not support,1)"},
        ScanRow{"raw_tab", "\"a\tb\"", 1, "ERR(-5,charactor need escape,1)"},
        ScanRow{"raw_line_feed_counts", "\n\"a\nb\"", 1, "ERR(-5,charactor need escape,3)"},
        ScanRow{"raw_control_kept", "\"a\x01\x0b\"", 1, "DQ:a\\x01\\x0B END"},
        ScanRow{"nul_in_string", std::string("\"ab\0cd\" 1", 9), 1, "DQ:ab INT:1 END"},
        ScanRow{"escaped_tab", "\"a\\\tb\"", 1, "ERR(-5,charactor need escape,1)"},
        ScanRow{"bad_escape_letter", R"("\q")", 1, "ERR(-5,escape error,1)"},
        ScanRow{"short_unicode", R"("\u12")", 1, "ERR(-5,escape error,1)"},
        ScanRow{"bad_hex", R"("\u12g4")", 1, "ERR(-5,escape error,1)"},
        ScanRow{"unterminated_dq", "\n\"abc", 1, "ERR(-5,Unterminated quoted identifier,2)"},
        ScanRow{"unterminated_dq_escape", "\"abc\\", 1, "ERR(-5,Unterminated quoted identifier,1)"},
        ScanRow{"unterminated_sq", "'abc", 0, "ERR(-4,Unterminated quoted string,1)"},
        ScanRow{"unterminated_sq_escape", "'abc\\", 0, "ERR(-4,Unterminated quoted string,1)"}),
    [](const auto &info) { return std::string(info.param.id); });

// Token values handed to callers outside the grammars are heap copies
// that outlive the next token.
TEST(Scan, RawTokensAreCopies) {
    ReadEnv env(lax());
    env.text = R"("first" abc -007 "sec\nond")";
    ASSERT_EQ(jlpca_reinit(env.ctx.get(), env.text.data(), uint32_t(env.text.size())), 0);
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
    const std::string doc = R"({"a\n":[-007,'q',name,1.5e3,"x"],"long":"\t)" +
                            std::string(40000, 'y') + R"("})";
    auto scan_with_limit = [&](uint64_t limit, uint64_t *calls) {
        ReadEnv env(lax());
        env.text = doc;
        EXPECT_EQ(jlpca_reinit(env.ctx.get(), env.text.data(), uint32_t(env.text.size())), 0);
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
    ReadEnv env(strict());
    env.text = "\"" + std::string(70000, 'y') + "\\n\"";
    ASSERT_EQ(jlpca_reinit(env.ctx.get(), env.text.data(), uint32_t(env.text.size())), 0);
    void *scanner = nullptr;
    ASSERT_EQ(json_flex_scanner_init(env.ctx.get(), &scanner), 0);
    EXPECT_EQ(json_flex_next_token(scanner), JT_DQSTRING);
    EXPECT_EQ(env.ctx->tok_val, 70001);
    EXPECT_EQ(env.ctx->lit_len, 70001);
    EXPECT_GT(env.ctx->lit_cap, 70001u);
    EXPECT_EQ(json_flex_next_token(scanner), 0);
    json_flex_scanner_deinit(env.ctx.get(), scanner);
}

// Strings in each server character set (value 635: 0 GB18030, 1 UTF-8,
// 2 EUC-KR).  A double-byte character whose second byte is '\' or '"' is
// content; in GB18030 a '"' after a lead byte even counts as the start of
// a four-byte character, taking two more bytes as content.
struct MbRow {
    const char *id;
    int32_t charset;
    std::string text;
    const char *tokens;
};

class Multibyte : public ::testing::TestWithParam<MbRow> {};

TEST_P(Multibyte, Tokens) {
    const MbRow &r = GetParam();
    CharsetScope cs(r.charset);
    ReadEnv env(strict());
    env.text = r.text;
    ASSERT_EQ(jlpca_reinit(env.ctx.get(), env.text.data(), uint32_t(env.text.size())), 0);
    EXPECT_EQ(scan_all(env.ctx.get()), r.tokens);
}

INSTANTIATE_TEST_SUITE_P(
    Charsets, Multibyte,
    ::testing::Values(
        MbRow{"gb_plain", 0, "\"\xD6\xD0\xCE\xC4\"", "DQ:\\xD6\\xD0\\xCE\\xC4 END"},
        MbRow{"gb_backslash_trail", 0, "\"\x81\x5C\" 1", "DQ:\\x81\\ INT:1 END"},
        MbRow{"gb_backslash_trail_then_escape", 0, "\"\x81\x5C\\n\"", "DQ:\\x81\\\\x0A END"},
        MbRow{"gb_quote_trail", 0, "\"\x81\"ab\" 1", "DQ:\\x81\"ab INT:1 END"},
        MbRow{"gb_quote_trail_unterminated", 0, "\"\x81\"\"", "ERR(-5,Unterminated quoted identifier,1)"},
        MbRow{"gb_four_byte", 0, "\"\x81\x30\x81\x30\"", "DQ:\\x810\\x810 END"},
        MbRow{"gb_split_four_byte", 0, "\"\x81\x30\\n\" 1", "DQ:\\x810\\n INT:1 END"},
        MbRow{"gb_tab_trail", 0, "\"\x81\tab\" 1", "DQ:\\x81\\x09ab INT:1 END"},
        MbRow{"gb_unicode_escape", 0, R"("\u4e2d")", "DQ:\\xD6\\xD0 END"},
        MbRow{"utf8_plain", 1, "\"\xE4\xB8\xAD\"", "DQ:\\xE4\\xB8\\xAD END"},
        MbRow{"utf8_cut_character_closes", 1, "\"\xE4\" 1", "DQ:\\xE4 INT:1 END"},
        MbRow{"utf8_unicode_escape", 1, R"("\u4e2d\u0080")", "DQ:\\xE4\\xB8\\xAD\\x80 END"},
        MbRow{"euckr_plain", 2, "\"\xB0\xA1\"", "DQ:\\xB0\\xA1 END"},
        MbRow{"euckr_lead_before_quote", 2, "\"\xB0\"\" 1", "DQ:\\xB0\" INT:1 END"},
        MbRow{"euckr_unicode_escape", 2, R"("\uac00")", "DQ:\\xB0\\xA1 END"}),
    [](const auto &info) { return std::string(info.param.id); });

} // namespace
