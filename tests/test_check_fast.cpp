// The fast well-formedness scan that jcheck_flex tries first: which texts
// it decides (the plain ones, the benchmark documents among them) and,
// whether it decides or gives up, that jcheck_flex answers as the check
// grammar alone does, with the same cause, at the end of the text and
// with blanks behind it.
#include <gtest/gtest.h>

#include "check_fast.h"
#include "read_cases.h"

namespace {

using ::operator<<;

struct FastRow {
    const char *id;
    std::string text;
    ReadSwitches sw;
    bool fast; // decided by the fast scan
};

ReadSwitches number_mode_2() {
    ReadSwitches s = lax();
    s.number_mode = 2;
    return s;
}

std::string quoted(const std::string &content) { return "[\"" + content + "\"]"; }

// What the check grammar alone says: 0 or the parser's code, and the
// lexical cause.
std::pair<int32_t, int32_t> exact_check(VxEnv &env, const std::string &text) {
    EXPECT_EQ(env.start(text), 0);
    void *scanner = nullptr;
    EXPECT_EQ(json_flex_scanner_init(env.ctx.get(), &scanner), 0);
    int32_t rc = jcheck_parse(scanner, env.ctx.get());
    json_flex_scanner_deinit(env.ctx.get(), scanner);
    if (rc == 0 && env.ctx->err_code < 0) rc = 1;
    return {rc, env.ctx->err_code};
}

const std::string LONG_ESCAPED = std::string(11000, 'x') + "\\n";

class CheckFast : public ::testing::TestWithParam<FastRow> {};

TEST_P(CheckFast, DecidesOnlyPlainTextsAndAgreesWithTheGrammar) {
    const FastRow &r = GetParam();
    for (const std::string &text : {r.text, r.text + std::string(40, ' ')}) {
        VxEnv env(r.sw);
        ASSERT_EQ(env.start(text), 0);
        EXPECT_EQ(vxjson::scan::check_fast(env.ctx.get()), r.fast);
        const auto [exact_rc, exact_err] = exact_check(env, text);
        EXPECT_EQ(env.check(text), exact_rc == 0 ? 0 : VXJSON_ERR_INVALID_JSON);
        EXPECT_EQ(env.ctx->err_code, exact_err);
        if (r.fast) {
            EXPECT_EQ(exact_rc, 0) << "the fast scan accepted a text the grammar refuses";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CheckFast,
    rows<FastRow>({
        {"plain", R"({"a":[1,-2.5,true,false,null,"x"],"b":{},"c":[[],{}]})", lax(), true},
        {"plain_strict", R"({"a":[1,-2.5,true,false,null,"x"],"b":{}})", strict(), true},
        {"plain_mysql", R"([0,-0,12.75,"y"])", dialect(JLPCA_COMPAT_MYSQL), true},
        {"blank_runs", "{\r\n\t\"a\" :\n" + std::string(40, ' ') + "[ 1 , 2 ]\n}\n", lax(), true},
        {"short_escapes", quoted(R"(a\"b\\c\/d\b\f\n\r\t\u0041\u0080)"), lax(), true},
        {"non_ascii", quoted("caf\xC3\xA9 \xE6\x97\xA5"), lax(), true},
        {"long_plain_string", quoted(std::string(40000, 'x')), lax(), true},
        {"long_escaped_string", quoted(LONG_ESCAPED), lax(), false},
        {"escape_above_0080", quoted(R"(\u0081)"), lax(), false},
        {"escape_bad_hex", quoted(R"(\u00g1)"), lax(), false},
        {"escape_short_hex", quoted(R"(\u12)"), lax(), false},
        {"escape_bad_letter", quoted(R"(\x)"), lax(), false},
        {"string_tab", quoted("a\tb"), lax(), false},
        {"string_control_01", quoted("a\x01" "b"), lax(), false},
        {"string_nul", "[\"a" + std::string(1, '\0') + "b\"]", lax(), false},
        {"string_unterminated", "[\"abc", lax(), false},
        {"exponents", "[1e5,2.5E-3,-10e+0]", strict(), true},
        {"exponent_after_zero", "[0e1,-0E1]", lax(), false},
        {"exponent_after_zero_strict", "[0e1]", strict(), false},
        {"exponent_after_zero_point", "[0.0e1,-0.5E1]", strict(), true},
        {"exponent_mysql", "[1e5]", dialect(JLPCA_COMPAT_MYSQL), false},
        {"exponent_number_mode_2", "[1e5]", number_mode_2(), false},
        {"overflow_mysql", "[1e999]", dialect(JLPCA_COMPAT_MYSQL), false},
        {"number_300_mysql", "[" + std::string(300, '7') + "]", dialect(JLPCA_COMPAT_MYSQL), true},
        {"number_301_mysql", "[" + std::string(301, '7') + "]", dialect(JLPCA_COMPAT_MYSQL), false},
        {"number_301_lax", "[" + std::string(301, '7') + "]", lax(), true},
        {"leading_zero", "[01]", lax(), false},
        {"dot_at_end", "[1.]", lax(), false},
        {"minus_alone", "[-]", lax(), false},
        {"plus_sign", "[+1]", lax(), false},
        {"suffix", "[1d]", lax(), false},
        {"exponent_without_digits", "[1e]", lax(), false},
        {"scalar_on_top", "7", lax(), false},
        {"string_on_top", "\"a\"", dialect(JLPCA_COMPAT_PG), false},
        {"blank_text", "  ", lax(), false},
        {"trailing_comma", "[1,]", lax(), false},
        {"trailing_comma_strict", "[1,]", strict(), false},
        {"form_feed", "[1,\f2]", lax(), false},
        {"nul_after_text", std::string("[1]\0x", 5), lax(), false},
        {"text_after_value", "[1] [2]", lax(), false},
        {"keyword_continues", "[truex]", lax(), false},
        {"keyword_cut", "[tru]", lax(), false},
        {"keyword_upper", "[TRUE]", lax(), false},
        {"keyword_as_key", "{true:1}", lax(), false},
        {"bare_name_key", "{a:1}", lax(), false},
        {"single_quotes", "['a']", lax(), false},
        {"wrong_closer", "[{]}", lax(), false},
        {"missing_colon", R"({"a" 1})", lax(), false},
        {"unclosed", "[[1]", lax(), false},
        {"unique_keys", R"({"a":1})", unique(lax()), false},
        {"arrays_1024_deep", nested_arrays(1024), strict(), true},
        {"arrays_1025_deep", nested_arrays(1025), strict(), false},
        {"objects_1024_deep", nested_objects(1024), strict(), true},
        {"arrays_5000_deep", nested_arrays(5000), strict(), false},
    }),
    by_id);

// Character sets whose characters may end in a quote or backslash byte
// need the scanner's measuring: the fast scan leaves them alone.
TEST(CheckFast, LeavesDoubleByteCharsetsToTheScanner) {
    for (const auto &[charset, fast] : {std::pair{GB, false}, std::pair{EUCKR, false},
                                        std::pair{UTF8, true}, std::pair{SINGLE, true}}) {
        CharsetScope scope(charset);
        VxEnv env;
        ASSERT_EQ(env.start(R"({"a":["b",1]})"), 0);
        EXPECT_EQ(vxjson::scan::check_fast(env.ctx.get()), fast) << charset;
    }
}

TEST(CheckFast, DecidesTheBenchmarkDocuments) {
    for (const char *file : {"canada.json", "citm_catalog.json", "twitter.json"}) {
        std::ifstream in(std::string(VXJSON_BENCH_DATA_DIR) + "/" + file, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(in), {}};
        ASSERT_FALSE(text.empty()) << file;
        VxEnv env;
        ASSERT_EQ(env.start(text), 0);
        EXPECT_TRUE(vxjson::scan::check_fast(env.ctx.get())) << file;
    }
}

} // namespace
