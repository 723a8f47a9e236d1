// Text-array paths: literals to member steps (or -3102), the element
// reader's states and results one element at a time, and its blank test.
#include <gtest/gtest.h>

#include "path_steps.h"

namespace {
using ::operator<<;
using namespace std::string_literals;

struct PgRow {
    const char *id;
    std::string text;
    int32_t code;
    const char *steps; // the steps made, also those before a failure
};

class PgArray : public ::testing::TestWithParam<PgRow> {};

TEST_P(PgArray, StepsOrCode) {
    const PgRow &r = GetParam();
    VxEnv env;
    jpath p;
    jpath_init_simple(&p, JPATH_DIALECT_PG_ARRAY);
    std::string text = r.text; // modified in place
    {
        OutString leak_check; // the element string is released on every path
        EXPECT_EQ(jpath_parse_pg_array(nullptr, env.heap, &leak_check.alloc, &p, text.data()),
                  r.code);
    }
    EXPECT_EQ(steps_text(&p), r.steps);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PgArray, rows<PgRow>({
    {"g01_empty", "{}", 0, ""},
    {"g02_blanks_dropped", "{a, b }", 0, ".a .b"},
    {"g03_quoted_with_blank", "{\"a b\",c}", 0, ".a b .c"},
    {"g04_quoted_comma", "{\"x,y\"}", 0, ".x,y"},
    {"g05_escaped_comma", "{a\\,b}", 0, ".a,b"},
    {"g06_numbers_are_keys", "{1,2}", 0, ".1 .2"},
    {"g07_empty_quoted", "{\"\"}", 0, "."},
    {"g08_quoted_null", "{\"null\"}", 0, ".null"},
    {"g09_escaped_null", "{nul\\l}", 0, ".null"},
    {"g10_inner_blanks_kept", "{ a  b }", 0, ".a  b"},
    {"g11_all_blanks", " \t\v{\f a \r}\n\v ", 0, ".a"},
    {"g12_braces_in_quotes", "{\"{}\\\"\"}", 0, ".{}\""},
    {"g13_escape_in_quotes", "{\"a\\\\b\"}", 0, ".a\\b"},
    {"g14_quote_then_blank", "{\"a\" ,b}", 0, ".a .b"},
    {"g15_nul_ahead_ignored", "{a}\0x"s, 0, ".a"},
    {"g16_multibyte", "{\xC3\xA9,\"\xE4\xB8\xAD\"}", 0, ".\\xC3\\xA9 .\\xE4\\xB8\\xAD"},
    {"g17_nullable_word", "{nulls,Nul}", 0, ".nulls .Nul"},
    {"g18_blank_element_quoted", "{\" \"}", 0, ". "},
    // refused
    {"b01_null_upper", "{NULL}", -3102, ""},
    {"b02_null_lower", "{null}", -3102, ""},
    {"b03_null_after", "{a, nUlL }", -3102, ".a"},
    {"b04_trailing_comma", "{a,}", -3102, ".a"},
    {"b05_leading_comma", "{,a}", -3102, ""},
    {"b06_no_brace", "a,b", -3102, ""},
    {"b07_text_after", "{a} b", -3102, ".a"},
    {"b08_quote_inside", "{a\"b\"}", -3102, ""},
    {"b09_text_after_quote", "{\"a\"b}", -3102, ""},
    {"b10_two_commas", "{a,,b}", -3102, ".a"},
    {"b11_trailing_backslash", "{a\\", -3102, ""},
    {"b12_cut_short", "{a,b", -3102, ".a"},
    {"b13_unclosed_quote", "{\"a}", -3102, ""},
    {"b14_nested_brace", "{{a}}", -3102, ""},
    {"b15_empty_text", "", -3102, ""},
    {"b16_brace_after_quote", "{\"a\"{}", -3102, ""},
    {"b17_second_literal", "{a}{b}", -3102, ".a"},
    {"b18_blank_only_element", "{a, ,b}", -3102, ".a"},
}), by_id);
// clang-format on

TEST(PgArrayEntry, OtherDialectRefusedBeforeReading) {
    VxEnv env;
    for (uint32_t dialect : {0u, 2u}) {
        jpath p;
        jpath_init_simple(&p, dialect);
        std::string text = "{a}";
        OutString leak_check;
        EXPECT_EQ(jpath_parse_pg_array(nullptr, env.heap, &leak_check.alloc, &p, text.data()),
                  -3102);
        EXPECT_EQ(text, "{a}");
        EXPECT_EQ(p.filter_count, 0u);
    }
}

TEST(PgArrayEntry, OutOfMemory) {
    VxEnv env;
    jpath p;
    jpath_init_simple(&p, JPATH_DIALECT_PG_ARRAY);
    std::string text = "{a,b}";
    {
        OutString s;
        s.fail_after(0);
        EXPECT_EQ(jpath_parse_pg_array(nullptr, env.heap, &s.alloc, &p, text.data()), -503);
    }
    text = "{a,b}";
    mem_heap_set_call_limit(env.heap, 2); // the first step and its key
    OutString s;
    EXPECT_EQ(jpath_parse_pg_array(nullptr, env.heap, &s.alloc, &p, text.data()), -503);
    EXPECT_EQ(steps_text(&p), ".a");
}

// One element at a time: the state, position and flags handed back.
TEST(PgArrayElement, StatesAndFlagsPerElement) {
    OutString out;
    std::string text = " {a , \"b c\",d\\e}  ";
    char *pos = text.data() + 1;
    int32_t state = 0, finished = -1, quoted = -1;
    struct Step {
        const char *text;
        int32_t state, finished, quoted;
        const char *rest;
    };
    const Step expected[] = {
        {"a", 5, 0, 0, " \"b c\",d\\e}  "},
        {"b c", 5, 0, 1, "d\\e}  "},
        {"de", 2, 1, 1, "  "},
    };
    for (const Step &e : expected) {
        vxstr_init(out.s);
        ASSERT_EQ(jpath_array_element(nullptr, &out.alloc, out.s, &pos, &state, &finished, &quoted),
                  0);
        EXPECT_EQ(out.str(), e.text);
        EXPECT_EQ(state, e.state);
        EXPECT_EQ(finished, e.finished);
        EXPECT_EQ(quoted, e.quoted);
        EXPECT_STREQ(pos, e.rest);
    }
    // Past the end the reader meets the zero byte.
    int32_t again = 4;
    char *end = text.data() + text.size();
    EXPECT_EQ(jpath_array_element(nullptr, &out.alloc, out.s, &end, &again, &finished, &quoted),
              -3102);
}

TEST(PgArrayElement, BlankCharacters) {
    std::string blanks;
    for (int c = 0; c < 256; c++)
        if (jpath_array_isspace(c)) blanks += char(c);
    EXPECT_EQ(blanks, "\t\n\v\f\r ");
    EXPECT_EQ(jpath_array_isspace(-1), 0);
}

} // namespace
