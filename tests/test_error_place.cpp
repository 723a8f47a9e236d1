// Where a read failed: every bad text runs through both the tree reader
// and the check grammar, and each must place the failure at the same
// offset, line and column with the expected message and code.
#include <gtest/gtest.h>

#include <string>

#include "vx_env.h"

namespace {

using namespace std::string_literals;

struct PlaceRow {
    const char *id;
    std::string text;
    ReadSwitches sw;
    uint32_t offset, line, column;
    int32_t code;
    const char *message;
    // The check grammar's view where it differs (it builds nothing, so a
    // scalar document is a plain syntax error there).
    int32_t check_code = 0;
    const char *check_message = nullptr;
};

class ErrorPlace : public ::testing::TestWithParam<PlaceRow> {};

void expect_place(VxEnv &env, const PlaceRow &r, int32_t code, const char *message,
                  const char *how) {
    uint32_t offset = 99, line = 99, column = 99;
    const char *msg = nullptr;
    EXPECT_EQ(jlpca_error_position(env.ctx.get(), &offset, &line, &column, &msg), code) << how;
    EXPECT_EQ(offset, r.offset) << how;
    EXPECT_EQ(line, r.line) << how;
    EXPECT_EQ(column, r.column) << how;
    ASSERT_NE(msg, nullptr) << how;
    EXPECT_STREQ(msg, message) << how;
}

TEST_P(ErrorPlace, TreeReaderAndCheckAgree) {
    const PlaceRow &r = GetParam();
    {
        VxEnv env(r.sw);
        json_node *root = nullptr;
        EXPECT_NE(env.read(r.text, &root), 0);
        expect_place(env, r, r.code, r.message, "json_flex");
    }
    {
        VxEnv env(r.sw);
        EXPECT_EQ(env.check(r.text), VXJSON_ERR_INVALID_JSON);
        expect_place(env, r, r.check_message ? r.check_code : r.code,
                     r.check_message ? r.check_message : r.message, "jcheck_flex");
    }
}

const ReadSwitches MYSQL = dialect(JLPCA_COMPAT_MYSQL);

// clang-format off
INSTANTIATE_TEST_SUITE_P(Texts, ErrorPlace, rows<PlaceRow>({
    {"missing_comma", "[1 2]", lax(), 3, 1, 4, -2007, "syntax error"},
    {"second_line", "{\"a\":1,\n \"b\" 2}", lax(), 13, 2, 6, -2007, "syntax error"},
    {"crlf_lines", "[1,\r\n\r\n2 3]", lax(), 9, 3, 3, -2007, "syntax error"},
    {"raw_tab_in_string", "[1,\n\t\"a\tb\"]", lax(), 7, 2, 4, -5, "charactor need escape"},
    {"unterminated_dq", "[\n  \"abc", lax(), 4, 2, 3, -5, "Unterminated quoted identifier"},
    {"unterminated_sq", "['abc", lax(), 1, 1, 2, -4, "Unterminated quoted string"},
    {"strict_single_quote", "{'a':1}", strict(), 1, 1, 2, -5,
        "json strict only support double quotation"},
    {"strict_bare_name", "{ab:1}", strict(), 1, 1, 2, -5,
        "json strict only support double quotation"},
    {"bad_escape_letter", "[\"a\\qb\"]", lax(), 3, 1, 4, -5, "escape error"},
    {"bad_unicode_escape", "[\"\\u12G4\"]", lax(), 2, 1, 3, -5, "escape error"},
    {"quote_escape_in_sq", "['it\\'s']", lax(), 4, 1, 5, -5, "charactor not support"},
    {"strict_leading_zero", "[7,\n01]", strict(), 4, 2, 1, -3105, "invalid json number"},
    {"overflow_mysql", "[0, 1e400]", MYSQL, 4, 1, 5, -6102, "number overflow"},
    {"strict_trailing_comma", "[1,]", strict(), 3, 1, 4, -2007, "syntax error"},
    {"strict_keyword_name", "{true:1}", strict(), 1, 1, 2, -2007, "syntax error"},
    {"ends_early", "[1,2", lax(), 4, 1, 5, -2007, "syntax error"},
    {"nul_ends_text", "[1,\0]"s, lax(), 3, 1, 4, -2007, "syntax error"},
    {"word_after_document", "[1] x", lax(), 4, 1, 5, -2007, "syntax error"},
    {"lexical_after_document", "[1] \"x", lax(), 4, 1, 5, -5, "Unterminated quoted identifier"},
    {"duplicate_key", "{\"a\":1,\n\"a\":2}", unique(lax()), 8, 2, 1, -3105, "duplicate key"},
    {"scalar_document", "  42", lax(), 2, 1, 3, -3105, "scalar at top level", -2007,
        "syntax error"},
    {"empty_in_dialect", "", MYSQL, 0, 1, 1, -3105, "empty document"},
    {"too_deep", std::string(5000, '['), lax(), 4999, 1, 5000, -2007, "memory exhausted"},
}), by_id);
// clang-format on

TEST(ErrorPlace, NothingFailedNothingPlaced) {
    VxEnv env;
    json_node *root = nullptr;
    const std::string bad = "[1,\n\"unterminated", good = "[1,\n2]";
    ASSERT_EQ(env.read(bad, &root), VXJSON_ERR_INVALID_JSON);
    ASSERT_EQ(env.read(good, &root), 0); // a new text clears the old place
    uint32_t offset = 9, line = 9, column = 9;
    const char *msg = nullptr;
    EXPECT_EQ(jlpca_error_position(env.ctx.get(), &offset, &line, &column, &msg), 0);
    EXPECT_EQ(offset, 0u);
    EXPECT_EQ(line, 1u);
    EXPECT_EQ(column, 1u);
    EXPECT_STREQ(msg, "");
    EXPECT_EQ(jlpca_error_position(env.ctx.get(), nullptr, nullptr, nullptr, nullptr), 0);
}

TEST(ErrorPlace, LexicalLineAgreesWithErrLine) {
    VxEnv env;
    json_node *root = nullptr;
    const std::string text = "{\n\"a\":\n[1, 'x\\'y']}"; // must outlive the question
    ASSERT_EQ(env.read(text, &root), VXJSON_ERR_INVALID_JSON);
    uint32_t line = 0;
    EXPECT_EQ(jlpca_error_position(env.ctx.get(), nullptr, &line, nullptr, nullptr),
              VXJSON_ERR_LEX);
    EXPECT_EQ(line, env.ctx->err_line);
    EXPECT_EQ(line, 3u);
}

TEST(ErrorPlace, OutOfMemoryWhileBuilding) {
    VxEnv env;
    json_node *root = nullptr;
    const std::string text = "[1,2,[3,4]]";
    ASSERT_EQ(env.reinit(text), 0);
    mem_heap_set_call_limit(env.heap, 0);
    ASSERT_EQ(json_flex(env.ctx.get(), &root), VXJSON_ERR_INVALID_JSON);
    mem_heap_set_call_limit(env.heap, UINT64_MAX);
    uint32_t offset = 9;
    const char *msg = nullptr;
    EXPECT_EQ(jlpca_error_position(env.ctx.get(), &offset, nullptr, nullptr, &msg),
              VXJSON_ERR_NOMEM);
    EXPECT_EQ(offset, 1u); // the first node is made at the token after '['
    EXPECT_STREQ(msg, "out of memory");
}

} // namespace
