// The path scanner through jpath_lex: token rules and values, the quoted
// name with its escapes and the bytes that must be escaped, the error
// messages and their lines, numbers under strict reading, a NUL ending the
// text, and bytes inside quotes that complete a multibyte character.
#include <gtest/gtest.h>

#include "path_steps.h"

namespace {
using ::operator<<;

// Every token up to the end or the first error, as text.
std::string scan_path(jlpca_ctx *ctx) {
    void *scanner = nullptr;
    if (jpath_flex_scanner_init(ctx, &scanner) != 0) return "NOMEM";
    std::string out;
    for (int i = 0; i < 64; i++) {
        const int32_t t = jpath_lex(nullptr, scanner);
        if (!out.empty()) out += ' ';
        if (t == 0) {
            out += ctx->err_code ? "ERR(" + std::to_string(ctx->err_code) + "," + ctx->err_msg +
                                       "," + std::to_string(ctx->err_line) + ")"
                                 : std::string("END");
            break;
        }
        EXPECT_EQ(ctx->tok, uint32_t(t));
        switch (t) {
        case JT_INT: out += "INT:" + std::to_string(ctx->tok_val); break;
        case JT_BIGINT: out += "BIG:" + std::to_string(ctx->tok_val); break;
        case JT_DECIMAL: out += "DEC:" + printable_bytes(ctx->tok_str, size_t(ctx->tok_val)); break;
        case JT_DQSTRING: out += "DQ:" + printable_bytes(ctx->tok_str, size_t(ctx->tok_val)); break;
        case JT_NAME: out += "NAME:" + printable_bytes(ctx->tok_str, size_t(ctx->tok_val)); break;
        default: {
            const char c = char(t);
            out += printable_bytes(&c, 1);
        }
        }
    }
    jpath_flex_scanner_deinit(ctx, scanner);
    EXPECT_EQ(ctx->scanner, nullptr);
    return out;
}

struct ScanRow {
    const char *id;
    std::string text;
    int32_t compat;
    int32_t charset;
    const char *tokens;
};

class PathScan : public ::testing::TestWithParam<ScanRow> {};

TEST_P(PathScan, Tokens) {
    const ScanRow &r = GetParam();
    CharsetScope cs(r.charset);
    VxEnv env(r.compat ? dialect(r.compat) : lax());
    env.start(r.text);
    EXPECT_EQ(scan_path(env.ctx.get()), r.tokens);
}

using namespace std::string_literals;

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathScan, rows<ScanRow>({
    // names, numbers, punctuation
    {"s01_name", "$.ab_1", 0, UTF8, "$ . NAME:ab_1 END"},
    {"s02_digit_then_name", "$.1a", 0, UTF8, "$ . INT:1 NAME:a END"},
    {"s03_underscore_name", "$._9", 0, UTF8, "$ . NAME:_9 END"},
    {"s04_punct", "$()[]{},.:;~", 0, UTF8, "$ ( ) [ ] { } , . : ; ~ END"},
    {"s05_other_bytes", "$*-+/@\xC3", 0, UTF8, "$ * - + / @ \\xC3 END"},
    {"s06_blanks_skipped", " \t\r\f\n$ .\n a", 0, UTF8, "$ . NAME:a END"},
    {"s07_vertical_tab_token", "$\v.a", 0, UTF8, "$ \\x0B . NAME:a END"},
    {"s08_nul_ends", "$.a\0.b"s, 0, UTF8, "$ . NAME:a END"},
    {"s09_int_max", "[2147483647]", 0, UTF8, "[ INT:2147483647 ] END"},
    {"s10_bigint", "[2147483648]", 0, UTF8, "[ BIG:2147483648 ] END"},
    {"s11_nineteen_digits", "[1000000000000000000]", 0, UTF8, "[ DEC:1000000000000000000 ] END"},
    {"s12_leading_zeros_lax", "[007]", 0, UTF8, "[ INT:7 ] END"},
    {"s13_leading_zeros_strict", "[007]", 2, UTF8, "[ ERR(-3105,invalid json number,1)"},
    {"s14_keyword_is_name", "$.true.NULL", 0, UTF8, "$ . NAME:true . NAME:NULL END"},
    // quoted names
    {"q01_plain", "$.\"a b\"", 0, UTF8, "$ . DQ:a b END"},
    {"q02_escaped_quote", "$.\"a\\\"b\"", 0, UTF8, "$ . DQ:a\"b END"},
    {"q03_escaped_tab", "$.\"a\\tb\"", 0, UTF8, "$ . DQ:a\\x09b END"},
    {"q04_raw_tab", "$.\"a\tb\"", 0, UTF8, "$ . ERR(-5,charactor need escape,1)"},
    {"q05_raw_slash", "$.\"a/b\"", 0, UTF8, "$ . ERR(-5,charactor need escape,1)"},
    {"q06_escaped_slash", "$.\"a\\/b\"", 0, UTF8, "$ . DQ:a/b END"},
    {"q07_escaped_backslash", "$.\"a\\\\b\"", 0, UTF8, "$ . DQ:a\\b END"},
    {"q08_raw_control_accepted", "$.\"a\x01\x0B\x1F\"", 0, UTF8, "$ . DQ:a\\x01\\x0B\\x1F END"},
    {"q09_unterminated", "$.\"ab", 0, UTF8, "$ . ERR(-5,Unterminated quoted identifier,1)"},
    {"q10_unterminated_escape", "$.\"ab\\", 0, UTF8,
        "$ . ERR(-5,Unterminated quoted identifier,1)"},
    {"q11_bad_escape", "$.\"a\\x\"", 0, UTF8, "$ . ERR(-5,escape error,1)"},
    {"q12_short_u", "$.\"\\u00\"", 0, UTF8, "$ . ERR(-5,escape error,1)"},
    {"q13_u_escape_run", "$.\"\\u0041bc\"", 0, UTF8, "$ . DQ:Abc END"},
    {"q14_u0000_cuts", "$.\"a\\u0000b\"", 0, UTF8, "$ . DQ:a END"},
    {"q15_raw_nul_cuts", "$.\"a\0b\""s, 0, UTF8, "$ . DQ:a END"},
    {"q16_escaped_raw_tab", "$.\"\\\t\"", 0, UTF8, "$ . ERR(-5,charactor need escape,1)"},
    {"q17_lines_counted", "$\n.\n\"a\nb\"", 0, UTF8, "$ . ERR(-5,charactor need escape,4)"},
    {"q18_escaped_lf_line", "$\n.\"\\\n\"", 0, UTF8, "$ . ERR(-5,charactor need escape,3)"},
    {"q19_empty", "$.\"\"", 0, UTF8, "$ . DQ: END"},
    {"q20_utf8_content", "$.\"\xC3\xA9\"", 0, UTF8, "$ . DQ:\\xC3\\xA9 END"},
    // GB18030: a second byte that is a backslash or slash is content.
    {"g01_backslash_trail", "$.\"\x81\\\"", 0, GB, "$ . DQ:\\x81\\ END"},
    // In UTF-8 no trailing byte is ASCII: the backslash escapes the quote.
    {"g02_utf8_lead_then_backslash", "$.\"\xC3\\\"", 0, UTF8,
        "$ . ERR(-5,Unterminated quoted identifier,1)"},
    {"g03_backslash_after_full_char", "$.\"\xC3\xA9\\t\"", 0, UTF8, "$ . DQ:\\xC3\\xA9\\x09 END"},
}), by_id);
// clang-format on

} // namespace
