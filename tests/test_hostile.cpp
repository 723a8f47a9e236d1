// Hostile input: huge strings, absurd nesting, huge objects and numbers,
// every byte value in and out of strings, and text that stops inside a
// multibyte character.  Each gets its expected code, quickly, within
// bounded memory (ASan builds would catch any overread).
#include <gtest/gtest.h>

#include "vx_env.h"

namespace {
using ::operator<<;

TEST(Hostile, HundredMegabyteString) {
    constexpr size_t kLen = 100u * 1024 * 1024;
    std::string doc = "[\"" + std::string(kLen, 'a') + "\"]";
    VxEnv env(strict());
    json_node *root = nullptr;
    ASSERT_EQ(env.read(doc, &root), 0);
    ASSERT_EQ(root->count, 1u);
    EXPECT_EQ(root->items[0]->str_len, kLen);
    // Memory stays a small multiple of the text.
    EXPECT_LT(mem_heap_bytes_used(env.heap), 4 * kLen);
}

TEST(Hostile, EscapeHeavyStringGrowsInLinearSpace) {
    // Each escape is its own small piece of the literal.
    constexpr size_t kEscapes = 8u * 1024 * 1024;
    std::string doc = "[\"";
    for (size_t i = 0; i < kEscapes; i++) doc += "\\n";
    doc += "\"]";
    VxEnv env(strict());
    json_node *root = nullptr;
    ASSERT_EQ(env.read(doc, &root), 0);
    EXPECT_EQ(root->items[0]->str_len, kEscapes);
    EXPECT_LT(mem_heap_bytes_used(env.heap), 8 * kEscapes);
}

TEST(Hostile, MillionNestedArraysAreRejected) {
    for (const char *open : {"[", "{\"a\":"}) {
        std::string doc;
        for (int i = 0; i < 1000000; i++) doc += open;
        VxEnv env(strict());
        json_node *root = nullptr;
        EXPECT_EQ(env.read(doc, &root), VXJSON_ERR_INVALID_JSON) << open;
        EXPECT_EQ(env.check(doc), VXJSON_ERR_INVALID_JSON) << open;
    }
}

TEST(Hostile, HundredThousandDigitNumbers) {
    std::string digits(100000, '7');
    struct Row {
        int32_t compat;
        std::string doc;
        int32_t rc;
    };
    const int32_t TOO_BIG = VXJSON_ERR_DOUBLE_OVERFLOW;
    for (const Row &r : {Row{0, "[" + digits + "]", 0}, Row{2, "[" + digits + "]", TOO_BIG},
                         Row{0, "[0." + digits + "]", 0}, Row{2, "[0." + digits + "]", 0},
                         Row{0, "[1e" + digits + "]", 0}, Row{2, "[1e" + digits + "]", TOO_BIG}}) {
        VxEnv env({.compat = r.compat, .strict = 1});
        json_node *root = nullptr;
        ASSERT_EQ(env.read(r.doc, &root), r.rc) << r.compat << " " << r.doc.substr(0, 4);
        if (r.rc == 0) {
            EXPECT_EQ(root->items[0]->type, uint32_t(JSON_DECIMAL));
            EXPECT_EQ(root->items[0]->str_len, r.doc.size() - 2) << "the text is kept exactly";
        }
    }
}

bool is_blank(int b) { return b == ' ' || b == '\t' || b == '\n' || b == '\f' || b == '\r'; }

TEST(Hostile, EveryByteInsideAndOutsideStrings) {
    for (int b = 0; b < 256; b++) {
        std::string byte(1, char(b));
        VxEnv env(strict());
        json_node *root = nullptr;
        // Inside a string only the bytes that need escaping, the quote and
        // the backslash are refused; NUL and other control bytes are content.
        bool inside_ok =
            !(b == 8 || b == 9 || b == 10 || b == 12 || b == 13 || b == '"' || b == '\\');
        EXPECT_EQ(env.read("[\"" + byte + "\"]", &root), inside_ok ? 0 : VXJSON_ERR_INVALID_JSON)
            << b;
        if (inside_ok) {
            EXPECT_EQ(root->items[0]->str_len, b == 0 ? 0u : 1u)
                << "a string's length stops at NUL";
        }
        // Between tokens (strict) only a digit or a blank keeps [ ] valid.
        bool outside_ok = (b >= '0' && b <= '9') || is_blank(b);
        EXPECT_EQ(env.read("[" + byte + "]", &root), outside_ok ? 0 : VXJSON_ERR_INVALID_JSON) << b;
        EXPECT_EQ(env.check("[" + byte + "]"), outside_ok ? 0 : VXJSON_ERR_INVALID_JSON) << b;
    }
}

struct CutRow {
    const char *id;
    int32_t charset_config;
    std::string lead;  // the first byte(s) of a multibyte character
    int32_t closed_rc; // result when the closing quote follows the cut
};

class CutMultibyte : public ::testing::TestWithParam<CutRow> {};
TEST_P(CutMultibyte, TextEndsInsideACharacter) {
    const CutRow &r = GetParam();
    CharsetScope cs(r.charset_config);
    VxEnv env(strict());
    json_node *root = nullptr;
    EXPECT_EQ(env.read("[\"" + r.lead, &root), VXJSON_ERR_INVALID_JSON);
    EXPECT_EQ(env.read("[\"" + r.lead + "\"]", &root), r.closed_rc);
}

// A double-byte lead before the quote makes the quote its trailing byte in
// GB18030 and EUC-KR, so the string never closes; a malformed UTF-8
// sequence is one byte of content and the quote closes the string.
// clang-format off
INSTANTIATE_TEST_SUITE_P(Sets, CutMultibyte, rows<CutRow>({
    {"utf8", UTF8, "\xE4\xB8", 0},
    {"gb18030_lead", GB, "\x81", VXJSON_ERR_INVALID_JSON},
    {"gb18030_four_byte", GB, "\x81\x30", VXJSON_ERR_INVALID_JSON},
    {"euckr", EUCKR, "\xB0", VXJSON_ERR_INVALID_JSON},
}), by_id);
// clang-format on

} // namespace
