// Path compilation: path text to steps (or the code) through jpath_flex,
// the grammar's own results through jpath_parse, its stack bound, hostile
// texts, and jpath_array_flex over one path or a JSON array of paths.
#include <gtest/gtest.h>

#include "path_steps.h"

namespace {
using ::operator<<;
using namespace std::string_literals;

struct CompileRow {
    const char *id;
    std::string text;
    int32_t compat;
    int32_t code;
    const char *steps; // on success
};

class PathCompile : public ::testing::TestWithParam<CompileRow> {};

TEST_P(PathCompile, StepsOrCode) {
    const CompileRow &r = GetParam();
    VxEnv env(r.compat ? dialect(r.compat) : lax());
    jpath p;
    const int32_t rc = compile_path(env, r.text, &p);
    ASSERT_EQ(rc, r.code);
    if (rc == 0) {
        EXPECT_EQ(steps_text(&p), r.steps);
    }
    EXPECT_EQ(env.ctx->cur_path, &p);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathCompile, rows<CompileRow>({
    // accepted shapes
    {"a01_root", "$", 0, 0, "$"},
    {"a02_member", "$.a", 0, 0, "$ .a"},
    {"a03_quoted_member", "$.\"a b\"", 0, 0, "$ .a b"},
    {"a04_all_elements", "$[*]", 0, 0, "$ [*]"},
    {"a05_wildcard", "$.*", 0, 0, "$ .*"},
    {"a06_list_and_range", "$[1 to 3, 5]", 0, 0, "$ [1-3,5]m"},
    {"a07_to_upper", "$[1 TO 3]", 0, 0, "$ [1-3]"},
    {"a08_to_mixed", "$[1 To 3]", 0, 0, "$ [1-3]"},
    {"a09_subscript_then_member", "$[1].a", 0, 0, "$ [1] .a"},
    {"a10_chain", "$.a[1][2].b", 0, 0, "$ .a [1] [2] .b"},
    {"a11_wildcard_subscript", "$.*[0]", 0, 0, "$ .* [0]"},
    {"a12_all_twice", "$[*][*]", 0, 0, "$ [*] [*]"},
    {"a13_blanks", " $ . a [ 1 ] ", 0, 0, "$ .a [1]"},
    {"a14_repeat_absorbed", "$[0,0]", 0, 0, "$ [0]m"},
    {"a15_point_range", "$[0 to 0]", 0, 0, "$ [0]m"},
    {"a16_touching_ranges", "$[2 to 4, 4 to 6]", 0, 0, "$ [2-4,5-6]m"},
    {"a17_keywords_are_names", "$.true.NULL", 0, 0, "$ .true .NULL"},
    {"a18_empty_quoted", "$.\"\"", 0, 0, "$ ."},
    {"a19_escapes_decoded", "$.\"a\\\"b\\u0041\"", 0, 0, "$ .a\"bA"},
    {"a20_u0000_cuts_key", "$.\"a\\u0000b\"", 0, 0, "$ .a"},
    {"a21_all_then_member", "$[*].a.*", 0, 0, "$ [*] .a .*"},
    {"a22_int_max", "$[2147483647]", 0, 0, "$ [2147483647]"},
    {"a23_leading_zeros_lax", "$[007]", 0, 0, "$ [7]"},
    {"a24_single_in_mysql", "$[1]", 2, 0, "$ [1]"},
    {"a25_range_in_mysql", "$[1 to 2]", 2, 0, "$ [1-2]"},
    {"a26_pg_dialect_list", "$[1,2]", 1, 0, "$ [1,2]m"},
    {"a27_newlines", "$\n.a\n[1]", 0, 0, "$ .a [1]"},
    // A NUL outside quotes is the end of the path: what follows is not read.
    {"a28_nul_ends_path", "$.a\0garbage[["s, 0, 0, "$ .a"},
    // syntax errors
    {"e01_empty", "", 0, -3102, ""},
    {"e02_no_dollar", "a", 0, -3102, ""},
    {"e03_dollar_name", "$a", 0, -3102, ""},
    {"e04_double_star", "$**", 0, -3102, ""},
    {"e05_empty_brackets", "$[]", 0, -3102, ""},
    {"e06_trailing_dot", "$.a.", 0, -3102, ""},
    {"e07_star_in_list", "$[1,*]", 0, -3102, ""},
    {"e08_last", "$[last]", 0, -3102, ""},
    {"e09_negative", "$[-1]", 0, -3102, ""},
    {"e10_vertical_tab", "$\v", 0, -3102, ""},
    {"e11_digit_member", "$.1a", 0, -3102, ""},
    {"e12_bigint", "$[2147483648]", 0, -3102, ""},
    {"e13_decimal", "$[1000000000000000000]", 0, -3102, ""},
    {"e14_double_dollar", "$$", 0, -3102, ""},
    {"e15_two_names", "$.a b", 0, -3102, ""},
    {"e16_two_positions", "$[1 2]", 0, -3102, ""},
    {"e17_range_chain", "$[1 to 3 to 5]", 0, -3102, ""},
    {"e18_missing_from", "$[ to 3]", 0, -3102, ""},
    {"e19_unclosed_bracket", "$[1", 0, -3102, ""},
    {"e20_dot_bracket", "$.[1]", 0, -3102, ""},
    {"e21_nul_first", "\0$"s, 0, -3102, ""},
    {"e22_blank_only", "  ", 0, -3102, ""},
    // failed actions and lexical errors
    {"f01_till", "$[1 till 3]", 0, -3102, ""},
    {"f02_reversed_range", "$[3 to 1]", 0, -3102, ""},
    {"f03_descending", "$[3, 1]", 0, -3102, ""},
    {"f04_list_in_mysql", "$[1 to 3, 5]", 2, -3102, ""},
    {"f05_pair_in_mysql", "$[1,2]", 2, -3102, ""},
    {"f06_unterminated", "$.\"a", 0, -3102, ""},
    {"f07_raw_tab_quoted", "$.\"a\tb\"", 0, -3102, ""},
    {"f08_bad_escape", "$.\"\\q\"", 0, -3102, ""},
    {"f09_leading_zeros_strict", "$[007]", 2, -3102, ""},
    // A lexical error fails the path even when the tokens before it form one.
    {"f10_error_after_complete_path", "$\"", 0, -3102, ""},
    {"f11_overlap", "$[2 to 5, 3]", 0, -3102, ""},
    {"f12_t_word", "$[1 t 3]", 0, -3102, ""},
    {"f13_too_word", "$[1 too 3]", 0, -3102, ""},
}), by_id);
// clang-format on

// The grammar's own result, before jpath_flex folds it into -3102.
struct ParseRow {
    const char *id;
    std::string text;
    int32_t compat;
    int32_t result;
};

class PathParse : public ::testing::TestWithParam<ParseRow> {};

int32_t grammar_result(VxEnv &env, const std::string &text, jpath *p) {
    jpath_init_simple(p, 0);
    env.start(text);
    env.ctx->cur_path = p;
    void *scanner = nullptr;
    EXPECT_EQ(jpath_flex_scanner_init(env.ctx.get(), &scanner), 0);
    const int32_t rc = jpath_parse(scanner, env.ctx.get());
    jpath_flex_scanner_deinit(env.ctx.get(), scanner);
    return rc;
}

TEST_P(PathParse, GrammarResult) {
    const ParseRow &r = GetParam();
    VxEnv env(r.compat ? dialect(r.compat) : lax());
    jpath p;
    EXPECT_EQ(grammar_result(env, r.text, &p), r.result);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathParse, rows<ParseRow>({
    {"p01_accept", "$.a[1 to 2]", 0, 0},
    {"p02_syntax", "$a", 0, 1},
    {"p03_not_to", "$[1 till 3]", 0, -2007},
    {"p04_order", "$[3, 1]", 0, -3102},
    {"p05_list_mysql", "$[1, 2]", 2, -3102},
    {"p06_reversed", "$[3 to 1]", 0, -3102},
    // The scanner's error ends the tokens; the grammar alone accepts.
    {"p07_lexical_error_accepted", "$\"", 0, 0},
    {"p08_empty", "", 0, 1},
}), by_id);
// clang-format on

TEST(PathCompileEntry, FunKindFromContextAndStepsKeptOnFailure) {
    VxEnv env(ReadSwitches{.escape_mode = JLPCA_ESCAPE_KEEP});
    jpath p;
    jpath_init(&p, 3, 100, 0, 0);
    EXPECT_EQ(p.fun_kind, 1u);
    env.start("$.a");
    ASSERT_EQ(jpath_flex(env.ctx.get(), &p), 0);
    EXPECT_EQ(p.fun_kind, uint32_t(JLPCA_ESCAPE_KEEP));
    // Keep mode keeps escapes in the key, as in the member names it meets.
    jpath q;
    EXPECT_EQ(compile_path(env, "$.\"a\\nb\"", &q), 0);
    EXPECT_EQ(steps_text(&q), "$ .a\\nb");
    jpath r;
    EXPECT_EQ(compile_path(env, "$.a.b[3, 1]", &r), -3102);
    EXPECT_EQ(steps_text(&r), "$ .a .b [3]m");
}

TEST(PathCompileEntry, OutOfMemoryIsItsOwnCode) {
    for (uint64_t calls = 0; calls < 12; calls++) {
        VxEnv env;
        jpath p;
        jpath_init_simple(&p, 0);
        env.start("$.a[1 to 3, 5].\"b c\"");
        mem_heap_set_call_limit(env.heap, calls);
        const int32_t rc = jpath_flex(env.ctx.get(), &p);
        EXPECT_TRUE(rc == -503 || rc == 0) << calls << ": " << rc;
        if (rc == 0) {
            EXPECT_EQ(steps_text(&p), "$ .a [1-3,5]m .b c");
            break;
        }
    }
}

// ---- stack bound and hostile texts ----

std::string list_of(uint32_t items) {
    std::string t = "$[";
    for (uint32_t i = 0; i < items; i++) t += (i ? "," : "") + std::to_string(i);
    return t + "]";
}

// Each item of a subscript list holds two stack entries until the list
// closes: 4,997 items fit the 10,000 entries, 4,998 do not.
TEST(PathLimits, SubscriptListBoundByTheStack) {
    VxEnv env;
    jpath p;
    ASSERT_EQ(compile_path(env, list_of(4997), &p), 0);
    EXPECT_EQ(p.last_filter->index_count, 4997u);
    EXPECT_EQ(p.last_filter->max_index, 4996);
    jpath q;
    EXPECT_EQ(compile_path(env, list_of(4998), &q), -3102);
    EXPECT_EQ(grammar_result(env, list_of(4998), &q), 2) << "memory exhausted";
}

TEST(PathLimits, HostileTexts) {
    VxEnv env;
    jpath p;
    // 100,000 separate subscripts: a step each, in linear memory.
    std::string many = "$";
    for (int i = 0; i < 100000; i++) many += "[0]";
    const uint64_t before = mem_heap_bytes_used(env.heap);
    ASSERT_EQ(compile_path(env, many, &p), 0);
    EXPECT_EQ(p.filter_count, 100001u);
    EXPECT_LT(mem_heap_bytes_used(env.heap) - before, 100000u * 256);
    // 100,000 in one bracket: the stack bound.
    EXPECT_EQ(compile_path(env, list_of(100000), &p), -3102);
    // A 10 MB member name, bare and quoted; and quoted without its end.
    const std::string big(10 << 20, 'n');
    ASSERT_EQ(compile_path(env, "$." + big, &p), 0);
    EXPECT_EQ(p.last_filter->key_len, big.size());
    ASSERT_EQ(compile_path(env, "$.\"" + big + "\"", &p), 0);
    EXPECT_EQ(p.last_filter->key_len, big.size());
    EXPECT_EQ(compile_path(env, "$.\"" + big, &p), -3102);
    EXPECT_STREQ(env.ctx->err_msg, "Unterminated quoted identifier");
    // Garbage bytes.
    std::string garbage;
    for (int i = 0; i < 4096; i++) garbage += char((i * 131 + 7) & 0xFF);
    EXPECT_EQ(compile_path(env, garbage, &p), -3102);
    EXPECT_EQ(compile_path(env, "$" + garbage, &p), -3102);
}

// ---- jpath_array_flex ----

struct ArrayRow {
    const char *id;
    std::string text;
    int32_t single;
    int32_t code;
    std::vector<std::string> steps; // one line per compiled path
};

class PathArray : public ::testing::TestWithParam<ArrayRow> {};

TEST_P(PathArray, PathsOrCode) {
    const ArrayRow &r = GetParam();
    VxEnv env(dialect(JLPCA_COMPAT_MYSQL));
    env.text = r.text;
    uint32_t count = 77;
    jpath *paths = reinterpret_cast<jpath *>(&count);
    ASSERT_EQ(jpath_array_flex(env.ctx.get(), env.text.data(), uint32_t(env.text.size()), r.single,
                               &count, &paths),
              r.code);
    ASSERT_EQ(count, r.steps.size());
    if (count == 0) {
        EXPECT_EQ(paths, nullptr);
    }
    for (uint32_t i = 0; i < count; i++) {
        EXPECT_EQ(paths[i].dialect, uint32_t(JPATH_DIALECT_MYSQL_ARRAY));
        EXPECT_EQ(paths[i].ret_len, 32767u);
        EXPECT_EQ(steps_text(&paths[i]), r.steps[i]) << i;
    }
    if (r.code == -3102 && std::string(r.id).find("shape") != std::string::npos) {
        EXPECT_STREQ(env.ctx->err_msg, "path argument is not a JSON array of strings");
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathArray, rows<ArrayRow>({
    {"r01_single", "$.a[1]", 1, 0, {"$ .a [1]"}},
    {"r02_single_bad", "$.a[", 1, -3102, {}},
    {"r03_single_is_path_not_json", "[\"$.a\"]", 1, -3102, {}},
    {"r04_two", "[\"$.a\", \"$[*].b\"]", 0, 0, {"$ .a", "$ [*] .b"}},
    {"r05_empty_array", "[]", 0, 0, {}},
    {"r06_null_element", "[\"$.a\", null]", 0, 100, {}},
    {"r07_null_before_bad", "[null, \"x\"]", 0, 100, {}},
    {"r08_bad_path", "[\"$.a\", \"x\"]", 0, -3102, {}},
    {"r09_list_refused", "[\"$[1,2]\"]", 0, -3102, {}},
    {"r10_escaped_in_json", "[\"$.\\\"a b\\\"\"]", 0, 0, {"$ .a b"}},
    {"r11_shape_object", "{\"a\": \"$\"}", 0, -3102, {}},
    {"r12_shape_number_element", "[\"$\", 1]", 0, -3102, {}},
    {"r13_shape_string", "\"$.a\"", 0, -3102, {}},
    {"r14_shape_invalid_json", "[\"$\"", 0, -3102, {}},
    {"r15_shape_empty_text", "", 0, -3102, {}},
    {"r16_shape_nested_array", "[[\"$\"]]", 0, -3102, {}},
    {"r17_empty_string", "[\"\"]", 0, -3102, {}},
}), by_id);
// clang-format on

} // namespace
