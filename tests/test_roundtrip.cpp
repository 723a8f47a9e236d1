// Written and re-read: for every document the reader accepts, in every
// dialect, escape mode and character set, compact text read back gives an
// equal tree and writing that tree gives the same bytes; pretty text reads
// back to an equal tree too.  What does not survive by design is pinned
// down at the end.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "doc_env.h"
#include "text_fixture.h"
#include "tree_fixture.h"

namespace {

// Rows print as their id; gtest would otherwise dump their bytes, padding
// included.
template <class Row> auto operator<<(std::ostream &os, const Row &r) -> decltype(os << r.id) {
    return os << r.id;
}

// One way of reading: the three switches that change the tree.
struct Config {
    int32_t escape_mode; // 0 decode, 1 keep, 2 decode with sorted keys and last duplicate winning
    int32_t compat;
    int32_t strict;
    int32_t charset; // configuration value 635
};

std::string describe(const Config &c) {
    std::ostringstream s;
    s << "escape_mode " << c.escape_mode << " compat " << c.compat << " strict " << c.strict
      << " charset " << c.charset;
    return s.str();
}

// A context over its own heap for one configuration; trees stay valid
// until the reader is destroyed.
struct Reader : TreeEnv {
    explicit Reader(const Config &c) : TreeEnv(c.compat, c.escape_mode) { ctx->strict = c.strict; }

    json_node *read(const std::string &text) {
        json_node *root = nullptr;
        if (jlpca_reinit(ctx.get(), text.data(), uint32_t(text.size())) != 0) return nullptr;
        return json_flex(ctx.get(), &root) == 0 ? root : nullptr;
    }
    std::string write(const json_node *root, uint32_t flags, uint32_t level, uint32_t newline_first,
                      int32_t *rc) {
        vxstr *s = vxstr_create(nullptr, &alloc, 0);
        *rc = json_to_string(ctx.get(), &alloc, s, root, flags, level, newline_first, JSON_CONV_JSON);
        std::string out(s->buf, s->len);
        vxstr_free(nullptr, &alloc, s);
        return out;
    }
};

// Equal values: types, numbers (decimal texts byte for byte), string bytes,
// member names and order, element order.  Escape flags are not compared:
// a string written with escapes may read back without needing any.
::testing::AssertionResult same_tree(const json_node *a, const json_node *b,
                                     const std::string &path = "$") {
    if (!a || !b) {
        if (a == b) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << path << ": one side missing";
    }
    if (a->type != b->type)
        return ::testing::AssertionFailure() << path << ": type " << a->type << " vs " << b->type;
    switch (a->type) {
    case JSON_OBJECT: {
        const json_keyval *x = a->first_member, *y = b->first_member;
        for (int i = 0; x && y; x = x->next, y = y->next, ++i) {
            const std::string nx(x->name, x->name_len), ny(y->name, y->name_len);
            if (nx != ny)
                return ::testing::AssertionFailure()
                       << path << ": member " << i << " name " << ::testing::PrintToString(nx)
                       << " vs " << ::testing::PrintToString(ny);
            if (auto r = same_tree(x->value, y->value, path + "." + nx); !r) return r;
        }
        if (x || y) return ::testing::AssertionFailure() << path << ": member count";
        return ::testing::AssertionSuccess();
    }
    case JSON_ARRAY: {
        const uint32_t na = a->items ? a->count : 0, nb = b->items ? b->count : 0;
        if (na != nb) return ::testing::AssertionFailure() << path << ": " << na << " vs " << nb;
        for (uint32_t i = 0; i < na; ++i)
            if (auto r = same_tree(a->items[i], b->items[i], path + "[" + std::to_string(i) + "]"); !r)
                return r;
        return ::testing::AssertionSuccess();
    }
    case JSON_INTEGER:
        if (a->ival == b->ival) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << path << ": " << a->ival << " vs " << b->ival;
    case JSON_BOOLEAN:
        if (!a->bval == !b->bval) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << path << ": boolean";
    case JSON_STRING:
    case JSON_DECIMAL: {
        const std::string x = bytes(a->str, a->str_len), y = bytes(b->str, b->str_len);
        if (x == y) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << path << ": " << ::testing::PrintToString(x)
                                             << " vs " << ::testing::PrintToString(y);
    }
    default:
        return ::testing::AssertionSuccess();
    }
}

// The property on one document under one configuration.  Returns whether
// the reader accepted the document at all.
bool check_round_trip(const std::string &text, const Config &c) {
    CharsetScope cs(c.charset);
    Reader r(c);
    const json_node *first = r.read(text);
    if (!first) return false;
    SCOPED_TRACE(describe(c));
    int32_t rc = 0;
    const std::string compact = r.write(first, JSON_FMT_COMPACT, 1, 1, &rc);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(r.write(first, JSON_FMT_COMPACT, 0, 0, &rc), compact) << "level has no effect";
    const json_node *second = r.read(compact);
    EXPECT_NE(second, nullptr) << "written text not readable: " << ::testing::PrintToString(compact);
    if (!second) return true;
    EXPECT_TRUE(same_tree(first, second));
    EXPECT_EQ(r.write(second, JSON_FMT_COMPACT, 1, 1, &rc), compact) << "not a fixed point";
    for (uint32_t flags : {JSON_FMT_PRETTY_A, JSON_FMT_PRETTY_B}) {
        const std::string pretty = r.write(first, flags, 1, 1, &rc);
        EXPECT_EQ(rc, 0);
        const json_node *third = r.read(pretty);
        EXPECT_NE(third, nullptr) << "pretty text not readable: " << ::testing::PrintToString(pretty);
        if (third) {
            EXPECT_TRUE(same_tree(first, third)) << "layout " << flags;
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
    for (const Config &c : all_configs({0, 1, 2, 3})) accepted += check_round_trip(GetParam().text, c);
    EXPECT_GT(accepted, 0) << "no configuration reads this document";
}

std::string nested(int depth) { return std::string(depth, '[') + "1" + std::string(depth, ']'); }

INSTANTIATE_TEST_SUITE_P(
    Docs, RoundTrip,
    ::testing::Values(
        DocRow{"example", R"({"a":1,"b":[1,"x"]})"},
        DocRow{"empties", R"({"a":{},"b":[],"c":[[],{}],"":""})"},
        DocRow{"scalars", R"([true,false,null,0,-1,2147483647,2147483648,-9223372036854775808])"},
        DocRow{"numbers_keep_their_text",
               R"([1.50E+3,-0.0,1e5,2.5e-10,1234567890123456789012345,1000000000000000000])"},
        DocRow{"lax_numbers", "[+1, 007, -007, 000, 1., .5, -.5, 5d, 2.0F, 1e400]"},
        DocRow{"top_level_string", R"("just \"text\"")"},
        DocRow{"top_level_number", "-12.50"},
        DocRow{"escapes", R"(["\"\\\/\b\f\n\r\t", "a\u0041\u00e9\u4e2d", "\u0001\u001f\u007f"])"},
        DocRow{"escape_only", R"(["\n","\\","\"","\u0008"])"},
        DocRow{"control_bytes_raw", "[\"a\x01\x02\x0b\x1f b\"]"},
        DocRow{"nul_escape", R"(["a\u0000b"])"},
        DocRow{"escaped_names", R"({"a\"b":1,"c\\d":2,"\n":3,"\u00e9":4})"},
        DocRow{"duplicate_names", R"({"b":1,"a":2,"b":3,"ab":4})"},
        DocRow{"utf8_raw", "{\"\xC3\xA9t\xC3\xA9\":[\"\xE4\xB8\xAD\xE6\x96\x87\",\"\xF0\x9F\x98\x80\"]}"},
        DocRow{"gb18030_trail_backslash", "[\"\x81\x5C\",\"\x81\x5C\\n\",{\"\x81\x5C\":\"\x81\x22\x30\x30\"}]"},
        DocRow{"euckr_pairs", "[\"\xB0\xA1\xB0\xA2\",\"x\xC7\xD1\\t\"]"},
        DocRow{"lax_quotes_and_names", "{a:'x', 'b c':TRUE, true:Null, _d:[1,2,],}"},
        DocRow{"single_quoted_escapes", R"(['a\"b', 'c\\d', 'e\/f'])"},
        DocRow{"blanks_everywhere", " \t\n{ \"a\" :\r\n [ 1 , 2 ] , \"b\" : { } }\n "},
        DocRow{"long_string_many_escapes", "[\"" + std::string(300, 'x') + "\\n\\\"" +
                                               std::string(17, 'y') + "\\\\\"]"},
        DocRow{"deep", nested(3000)}),
    [](const auto &info) { return std::string(info.param.id); });

// The reference documents, read in every dialect and escape mode in UTF-8
// and in the standard one in the other character sets.
class RoundTripData : public ::testing::TestWithParam<const char *> {};

TEST_P(RoundTripData, ReferenceDocument) {
    const std::string text =
        read_file(std::string(VXJSON_BENCH_DATA_DIR) + "/" + GetParam() + ".json");
    ASSERT_FALSE(text.empty());
    for (const Config &c : all_configs({1}))
        EXPECT_TRUE(check_round_trip(text, c)) << describe(c);
    for (int32_t charset : {0, 2, 3}) check_round_trip(text, Config{0, 0, 0, charset});
}

INSTANTIATE_TEST_SUITE_P(Files, RoundTripData,
                         ::testing::Values("canada", "citm_catalog", "twitter"));

// Non-ASCII text written as \u escapes reads back to the same characters
// in the character set it came from.
TEST(RoundTripAscii, BmpCharactersSurviveTheEscapes) {
    struct Row {
        int32_t charset;
        std::string text;
    };
    for (const Row &row : {Row{1, "{\"\xC3\xA9\":[\"x\xE4\xB8\xAD\\n\"]}"},
                           Row{0, "{\"\xD6\xD0\":[\"\x81\x5C\"]}"},
                           Row{2, "[\"\xB0\xA1 \xC7\xD1\"]"}}) {
        for (int32_t escape_mode : {0, 1}) {
            const Config c{escape_mode, 0, 0, row.charset};
            SCOPED_TRACE(describe(c));
            CharsetScope cs(row.charset);
            Reader r(c);
            const json_node *first = r.read(row.text);
            ASSERT_NE(first, nullptr);
            int32_t rc = 0;
            const std::string ascii = r.write(first, JSON_FMT_ASCII, 1, 1, &rc);
            ASSERT_EQ(rc, 0);
            for (char ch : ascii) EXPECT_GE(static_cast<signed char>(ch), 0) << ascii;
            const json_node *second = r.read(ascii);
            ASSERT_NE(second, nullptr) << ascii;
            EXPECT_TRUE(same_tree(first, second));
        }
    }
}

// ------------------------------------------------------------------
// What does not round-trip, by design
// ------------------------------------------------------------------

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
    EXPECT_EQ(r.write(first, row.flags, 1, 1, &rc), row.written);
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(r.read(row.written) != nullptr, row.rereads);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ByDesign,
    ::testing::Values(
        // A string that never held an escape is written as it is, so a raw
        // double quote inside single quotes breaks the text.
        LossRow{"raw_quote_in_single_quotes", {0, 0, 0, 1}, 0, "['a\"b']", "[\"a\"b\"]", false},
        LossRow{"raw_quote_in_single_quotes_kept", {1, 0, 0, 1}, 0, "['a\"b\\n']",
                "[\"a\"b\\n\"]", false},
        // Keep mode writes escapes as they stood, except the ones the
        // reader normalises.
        LossRow{"keep_mode_normalises_slash_and_backspace", {1, 0, 0, 1}, 0,
                R"(["\/\b\u0041\u001f"])", R"(["/\u0008A\u001F"])", true},
        LossRow{"keep_mode_backspace_in_a_dialect", {1, 1, 1, 1}, 0, R"(["\b"])", R"(["\b"])",
                true},
        // Only the first UTF-16 unit of a character beyond the BMP is written.
        LossRow{"ascii_flag_beyond_bmp", {0, 0, 0, 1}, 1, "[\"\xF0\x9F\x98\x80\"]",
                "[\"\\uD83D\"]", false},
        // \u0080 reads back as the single byte 0x80, not as the character.
        LossRow{"ascii_flag_u0080", {0, 0, 0, 0}, 1, "[\"\x81\x30\x81\x30\"]",
                "[\"\\u0080\"]", true},
        // Lax input becomes standard JSON.
        LossRow{"lax_input_normalised", {0, 0, 0, 1}, 0, "{a:+1,'b':TRUE,}",
                R"({"a":1,"b":true})", true}),
    [](const auto &info) { return std::string(info.param.id); });

} // namespace
