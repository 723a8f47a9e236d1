// The vxjson command-line tool, run as a subprocess over a table of
// (arguments, standard input, expected standard output, standard error and
// exit status).  "@S" in a row stands for the source tree, "@D" for a
// scratch folder holding the data files below; an expectation starting
// with "~" only has to occur in the output.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "vx_env.h"

extern char **environ;

namespace {
using ::operator<<;

struct data_file { const char *name; const char *content; };

// A JSON Lines stream with a bad line in the middle, a blank line and a
// raw tab inside a string.
const data_file DATA_FILES[] = {
    {"good.json", "{\"a\":[1,2]}\n"},
    {"empty.json", ""},
    {"lines.jsonl", "{\"id\":1}\n{\"id\":2\n\n[3]\n{\"id\":\"a\tb\"}\n{\"id\":5}\n"},
    {"crlf.jsonl", "[1]\r\n{\"b\" : 2}\r\n"},
    {"multi.json", "{\n  \"a\": 1,\n  \"b\": [1,\n        2\n  ]]\n}\n"},
    {"left.json", "{\"a\":1,\"b\":{\"c\":2}}"},
    {"right.json", "{\"b\":{\"c\":null,\"d\":3}}"},
};

std::string g_dir;  // scratch folder of this process

class scratch_folder : public ::testing::Environment {
public:
    void SetUp() override {
        char tmpl[] = "/tmp/vxjson_tool_XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        g_dir = tmpl;
        for (const data_file &f : DATA_FILES) std::ofstream(g_dir + "/" + f.name, std::ios::binary) << f.content;
    }
    void TearDown() override { (void)std::system(("rm -rf '" + g_dir + "'").c_str()); }
};

const auto *const g_env = ::testing::AddGlobalTestEnvironment(new scratch_folder);

std::string expand(std::string s) {
    const std::pair<const char *, std::string> subs[] = {{"@S", VXJSON_SOURCE_DIR}, {"@D", g_dir}};
    for (const auto &[key, value] : subs)
        for (size_t at = s.find(key); at != std::string::npos; at = s.find(key, at + value.size()))
            s.replace(at, 2, value);
    return s;
}

// A null-terminated array of pointers into `strings`, for exec.
std::vector<char *> pointers(std::vector<std::string> &strings) {
    std::vector<char *> out;
    for (std::string &s : strings) out.push_back(s.data());
    out.push_back(nullptr);
    return out;
}

struct run_result { std::string out, err; int status = -1; long max_rss_kb = 0; };

// Runs the tool with `args`, feeding `input_path` as standard input.  The
// environment is the test's own without VXJSON_CHARSET, plus `extra_env`.
run_result run_tool_from(const std::vector<std::string> &args, const std::string &input_path,
                         const std::vector<std::string> &extra_env) {
    const std::string tag = std::to_string(getpid());
    const std::string out_path = g_dir + "/out." + tag, err_path = g_dir + "/err." + tag;
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_addopen(&fa, 0, input_path.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&fa, 1, out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&fa, 2, err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<std::string> arg_store{VXJSON_TOOL_PATH}, env_store;
    for (const std::string &a : args) arg_store.push_back(expand(a));
    for (char **e = environ; *e; ++e)
        if (std::strncmp(*e, "VXJSON_CHARSET=", 15) != 0) env_store.emplace_back(*e);
    env_store.insert(env_store.end(), extra_env.begin(), extra_env.end());
    run_result r;
    pid_t pid = 0;
    const int rc = posix_spawn(&pid, VXJSON_TOOL_PATH, &fa, nullptr, pointers(arg_store).data(),
                               pointers(env_store).data());
    posix_spawn_file_actions_destroy(&fa);
    if (rc != 0) {
        r.err = std::string("spawn failed: ") + std::strerror(rc);
        return r;
    }
    int wstatus = 0;
    struct rusage usage {};
    if (wait4(pid, &wstatus, 0, &usage) == pid && WIFEXITED(wstatus)) r.status = WEXITSTATUS(wstatus);
    r.max_rss_kb = usage.ru_maxrss;
    r.out = read_file(out_path);
    r.err = read_file(err_path);
    return r;
}

run_result run_tool(const std::vector<std::string> &args, const std::string &input,
                    const std::vector<std::string> &extra_env = {}) {
    const std::string in_path = g_dir + "/in." + std::to_string(getpid());
    std::ofstream(in_path, std::ios::binary) << input;
    return run_tool_from(args, in_path, extra_env);
}

void expect_text(const std::string &what, const std::string &expected, const std::string &actual) {
    const std::string want = expand(expected);
    if (!want.empty() && want[0] == '~')
        EXPECT_NE(actual.find(want.substr(1)), std::string::npos)
            << what << " lacks: " << want.substr(1) << "\n--- " << what << ":\n" << actual;
    else
        EXPECT_EQ(actual, want) << what;
}

struct tool_case {
    const char *id;
    std::vector<std::string> args;
    std::string input;   // standard input
    std::string out;     // expected standard output
    std::string err;     // expected standard error
    int status;
    std::vector<std::string> env = {};
};

class Tool : public ::testing::TestWithParam<tool_case> {};
TEST_P(Tool, Runs) {
    const tool_case &c = GetParam();
    const run_result r = run_tool(c.args, c.input, c.env);
    expect_text("stdout", c.out, r.out);
    expect_text("stderr", c.err, r.err);
    EXPECT_EQ(r.status, c.status) << "stderr: " << r.err;
}

const char SAMPLE_COMPACT[] =
    "{\"name\":\"vxjson\",\"kind\":\"JSON engine\",\"dialects\":[\"standard\",\"pg\",\"mysql\"],"
    "\"limits\":{\"array_depth\":4000,\"exact_digits\":38},\"fast\":true,\"exact\":true,"
    "\"crashes\":null,\"numbers\":[0,-1,2147483648,1.50E+3,12345678901234567890123],"
    "\"text\":\"tab\\there, quote \\\" and \xc3\xa9\"}\n";

// The command line itself: help, version, bad arguments.
const tool_case GENERAL_CASES[] = {
    {"version", {"--version"}, "", "vxjson " VXJSON_VERSION_STRING "\n", "", 0},
    {"help", {"--help"}, "", "~usage: vxjson COMMAND", "", 0},
    {"help_command", {"help", "merge-patch"}, "", "~JSON_MERGE_PATCH(A, B, ...)", "", 0},
    {"help_check", {"check", "--help"}, "", "~check switches:\n  --lines", "", 0},
    {"help_format_writing", {"format", "-h"}, "", "~--pretty=a", "", 0},
    {"help_ops_examples", {"concat", "--help"}, "", "~examples:\n  vxjson concat", "", 0},
    {"no_arguments", {}, "", "", "~usage: vxjson COMMAND", 2},
    {"unknown_command", {"frob"}, "", "", "vxjson: unknown command 'frob'\nTry 'vxjson --help'.\n", 2},
    {"unknown_switch", {"check", "--frob"}, "", "", "vxjson: unknown switch '--frob'\nTry 'vxjson check --help'.\n", 2},
    {"write_switch_on_check", {"check", "--pretty"}, "", "", "~unknown switch '--pretty'", 2},
    {"lines_on_ops", {"equal", "--lines", "-e", "1", "-e", "1"}, "", "", "~unknown switch '--lines'", 2},
    {"bad_dialect", {"format", "--dialect", "oracle"}, "", "", "~bad value for --dialect: 'oracle'", 2},
    {"bad_charset", {"format", "--charset=latin1"}, "", "", "~bad value for --charset: 'latin1'", 2},
    {"bad_max_memory", {"check", "--max-memory", "lots"}, "", "", "~bad value for --max-memory", 2},
    {"dialect_without_value", {"check", "--dialect"}, "", "", "~--dialect needs a value", 2},
    {"e_without_text", {"check", "-e"}, "", "", "~-e needs a JSON text", 2},
    {"help_unknown_command", {"help", "frob"}, "", "", "~unknown command 'frob'", 2},
    {"help_alone", {"help"}, "", "~Run 'vxjson COMMAND --help'", "", 0},
    {"version_short", {"-V"}, "", "vxjson " VXJSON_VERSION_STRING "\n", "", 0},
    {"switches_end", {"check", "--", "-weird.json"}, "", "", "vxjson: cannot open '-weird.json': No such file or directory\n", 2},
};

INSTANTIATE_TEST_SUITE_P(General, Tool, ::testing::ValuesIn(GENERAL_CASES), by_id);

// What checking or formatting lines.jsonl reports: the bad lines, then the
// count.
const char LINES_REPORT[] = "@D/lines.jsonl:2: error -3105: syntax error: unexpected end of input\n"
                            "@D/lines.jsonl:5: error -5: charactor need escape\nvxjson: 5 lines, 2 bad\n";

const tool_case CHECK_CASES[] = {
    {"sample_good", {"check", "@S/examples/sample.json"}, "", "", "", 0},
    {"broken_example", {"check", "@S/examples/broken.json"}, "", "", "@S/examples/broken.json:3: error -5: charactor need escape\n", 1},
    {"one_bad_of_two", {"check", "@D/good.json", "@S/examples/broken.json"},
     "", "", "@S/examples/broken.json:3: error -5: charactor need escape\n", 1},
    {"missing_file", {"check", "@D/nope.json", "@D/good.json"}, "", "", "vxjson: cannot open '@D/nope.json': No such file or directory\n", 2},
    {"directory", {"check", "@D"}, "", "", "~vxjson: cannot read '@D': Is a directory", 2},
    {"stdin_default", {"check"}, "[1,2]", "", "", 0},
    {"stdin_dash_bad", {"check", "-"}, "[1,\n2", "", "<stdin>:2: error -3105: syntax error: unexpected end of input\n", 1},
    {"syntax_line", {"check", "@D/multi.json"}, "", "", "@D/multi.json:5: error -3105: syntax error: unexpected ']'\n", 1},
    {"empty_file_standard", {"check", "@D/empty.json"}, "", "", "", 0},
    {"empty_stdin_pg", {"check", "--dialect", "pg"}, "", "", "<stdin>:1: error -3105: syntax error: unexpected end of input\n", 1},
    {"blank_text", {"check", "-e", " \n "}, "", "", "<text>:2: error -3105: syntax error: unexpected end of input\n", 1},
    {"inline_names", {"check", "-e", "[1]", "-e", "[2"}, "", "", "<text 2>:1: error -3105: syntax error: unexpected end of input\n", 1},
    {"unterminated_dq", {"check", "-e", "[\"abc"}, "", "", "<text>:1: error -5: Unterminated quoted identifier\n", 1},
    {"unterminated_sq", {"check", "-e", "['abc"}, "", "", "<text>:1: error -4: Unterminated quoted string\n", 1},
    {"after_document", {"check", "-e", "[1] [2]"}, "", "", "<text>:1: error -3105: syntax error: unexpected '[' after the document\n", 1},
    {"missing_colon", {"check", "-e", "{\"a\"\n1}"}, "", "", "<text>:2: error -3105: syntax error: expected ':', found number 1\n", 1},
    {"quiet", {"check", "-q", "@S/examples/broken.json"}, "", "", "", 1},
    // Dialects: a scalar document, number overflow, strictness.
    {"scalar_standard", {"check", "-e", "42"},
     "", "", "<text>:1: error -3105: a scalar is not allowed as the whole document (use --scalar-top or a dialect)\n", 1},
    {"scalar_pg", {"check", "--dialect", "pg", "-e", "42"}, "", "", "", 0},
    {"scalar_mysql", {"check", "--dialect=mysql", "-e", "\"x\""}, "", "", "", 0},
    {"scalar_top_switch", {"check", "--scalar-top", "-e", "true"}, "", "", "", 0},
    {"overflow_standard", {"check", "-e", "[1e400]"}, "", "", "", 0},
    {"overflow_mysql", {"check", "--dialect", "mysql", "-e", "[1,\n1e400]"}, "", "", "<text>:2: error -6102: number overflow\n", 1},
    {"lax_standard", {"check", "-e", "{a:'x',b:[+1,007,.5,TRUE,],}"}, "", "", "", 0},
    {"strict_name", {"check", "--strict", "-e", "{a:1}"}, "", "", "<text>:1: error -5: json strict only support double quotation\n", 1},
    {"strict_in_pg", {"check", "--dialect", "pg", "-e", "['x']"}, "", "", "<text>:1: error -5: json strict only support double quotation\n", 1},
    {"lax_in_pg", {"check", "--dialect", "pg", "--lax", "-e", "['x',]"}, "", "", "", 0},
    {"strict_number_line", {"check", "--strict", "-e", "[1,\n\n01]"}, "", "", "<text>:3: error -3105: invalid json number\n", 1},
    {"strict_trailing_comma", {"check", "--strict", "-e", "[1,\n2,\n]"},
     "", "", "<text>:3: error -3105: syntax error: trailing comma (strict reading)\n", 1},
    {"strict_keyword_name", {"check", "--strict", "-e", "{true:1}"},
     "", "", "<text>:1: error -3105: syntax error: 'true' as a member name (strict reading)\n", 1},
    // A double-byte character ending in a backslash byte is content only
    // in GB18030, whether chosen by switch or by the environment.
    {"charset_gb18030_trail_byte", {"check", "--charset", "gb18030", "-e", "[\"\x95\x5c\"]"}, "", "", "", 0},
    {"charset_env_trail_byte", {"check", "-e", "[\"\x95\x5c\"]"}, "", "", "", 0, {"VXJSON_CHARSET=0"}},
    {"charset_utf8_trail_byte", {"check", "-e", "[\"\x95\x5c\"]"}, "", "", "<text>:1: error -5: Unterminated quoted identifier\n", 1},
    {"duplicate_allowed", {"check", "-e", "{\"a\":1,\"a\":2}"}, "", "", "", 0},
    {"unique_keys", {"check", "--unique-keys", "-e", "{\"a\":1,\n\"b\":{\"a\":2},\n\"a\":3}"},
     "", "", "<text>:3: error -3105: duplicate member name \"a\"\n", 1},
    {"max_memory", {"check", "--unique-keys", "--max-memory", "1K", "@S/examples/sample.json"},
     "", "", "@S/examples/sample.json:1: error -503: out of memory (more than --max-memory)\n", 2},
    {"max_memory_enough", {"check", "--unique-keys", "--max-memory=1M", "@S/examples/sample.json"}, "", "", "", 0},
    // JSON Lines: a bad line in the middle does not stop the rest.
    {"lines_bad_middle", {"check", "--lines", "@D/lines.jsonl"}, "", "", LINES_REPORT, 1},
    {"lines_stdin", {"check", "--lines"}, "[1]\n\n  \n[2]", "", "vxjson: 2 lines, 0 bad\n", 0},
    {"lines_empty", {"check", "--lines"}, "", "", "vxjson: 0 lines, 0 bad\n", 0},
    {"lines_one", {"check", "--lines", "-e", "{}"}, "", "", "vxjson: 1 line, 0 bad\n", 0},
    {"lines_crlf", {"check", "--lines", "--strict", "@D/crlf.jsonl"}, "", "", "vxjson: 2 lines, 0 bad\n", 0},
    {"lines_inline", {"check", "--lines", "-e", "[1]\n[2"},
     "", "", "<text>:2: error -3105: syntax error: unexpected end of input\nvxjson: 2 lines, 1 bad\n", 1},
    {"lines_quiet", {"check", "--lines", "-q", "@D/lines.jsonl"}, "", "", "", 1},
    {"lines_dialect", {"check", "--lines", "--dialect", "pg"},
     "1\n\"s\"\nnull\n{a:1}\n", "", "<stdin>:4: error -5: json strict only support double quotation\nvxjson: 4 lines, 1 bad\n", 1},
};

INSTANTIATE_TEST_SUITE_P(Check, Tool, ::testing::ValuesIn(CHECK_CASES), by_id);

const tool_case FORMAT_CASES[] = {
    {"sample_compact", {"format", "@S/examples/sample.json"}, "", SAMPLE_COMPACT, "", 0},
    {"pretty_b", {"format", "--pretty", "-e", "{\"a\":1,\"b\":[1,\"x\"],\"c\":{}}"},
     "", "{\n  \"a\": 1,\n  \"b\": [\n    1,\n    \"x\"\n  ],\n  \"c\": {}\n}\n", "", 0},
    {"pretty_a", {"format", "--pretty=a", "-e", "{\"a\":1,\"b\":[1,\"x\"]}"},
     "", "{\n  \"a\" : 1,\n  \"b\" : \n  [\n    1,\n    \"x\"\n  ]\n}\n", "", 0},
    {"ascii", {"format", "--ascii", "-e", "[\"caf\xc3\xa9\"]"}, "", "[\"caf\\u00E9\"]\n", "", 0},
    {"pretty_ascii", {"format", "--pretty", "--ascii", "-e", "{\"\xc3\xa9\":[\"\xc3\xa9\"]}"},
     "", "{\n  \"\\u00E9\": [\n    \"\\u00E9\"\n  ]\n}\n", "", 0},
    {"empty_input", {"format"}, "", "", "", 0},
    {"empty_strings", {"format", "-e", "{\"\":[\"\",{\"\":\"\"}]}"}, "", "{\"\":[\"\",{\"\":\"\"}]}\n", "", 0},
    {"empty_file", {"format", "@D/empty.json", "@D/good.json"}, "", "{\"a\":[1,2]}\n", "", 0},
    {"bad_input", {"format", "@S/examples/broken.json", "@D/good.json"},
     "", "{\"a\":[1,2]}\n", "@S/examples/broken.json:3: error -5: charactor need escape\n", 1},
    {"lax_to_json", {"format", "-e", "{a:'x',b:[+1,007,.5,TRUE,],}"}, "", "{\"a\":\"x\",\"b\":[1,7,.5,true]}\n", "", 0},
    {"escapes_decoded", {"format", "-e", "[\"\\b\\/\\u0041\"]"}, "", "[\"\\b/A\"]\n", "", 0},
    {"keep_escapes", {"format", "--keep-escapes", "-e", "[\"\\b\\/\\u0041\"]"}, "", "[\"\\u0008/A\"]\n", "", 0},
    {"sorted_keys", {"format", "--sorted-keys", "-e", "{\"bb\":1,\"a\":2,\"c\":3}"}, "", "{\"a\":2,\"c\":3,\"bb\":1}\n", "", 0},
    {"duplicates_kept", {"format", "-e", "{\"a\":1,\"a\":2}"}, "", "{\"a\":1,\"a\":2}\n", "", 0},
    {"dup_replace", {"format", "--dup-replace", "-e", "{\"a\":1,\"a\":2}"}, "", "{\"a\":2}\n", "", 0},
    {"scalar_pg", {"format", "--dialect", "pg", "-e", " 1.50 "}, "", "1.50\n", "", 0},
    {"backslashes_mysql", {"format", "--dialect", "mysql", "-e", "\"C:\\\\dir\\\\new\""}, "", "\"C:\\\\dir\\\\new\"\n", "", 0},
    {"charset_gb18030", {"format", "--charset", "gb18030", "-e", "[\"\\u4e2d\"]"}, "", "[\"\xd6\xd0\"]\n", "", 0},
    {"charset_env", {"format", "-e", "[\"\\u4e2d\"]"}, "", "[\"\xd6\xd0\"]\n", "", 0, {"VXJSON_CHARSET=0"}},
    {"charset_utf8", {"format", "--charset=utf8", "-e", "[\"\\u4e2d\"]"}, "", "[\"\xe4\xb8\xad\"]\n", "", 0, {"VXJSON_CHARSET=0"}},
    {"charset_euckr", {"format", "--charset", "euckr", "-e", "[\"\\uac00\"]"}, "", "[\"\xb0\xa1\"]\n", "", 0},
    {"lines_bad_middle", {"format", "--lines", "@D/lines.jsonl"}, "", "{\"id\":1}\n[3]\n{\"id\":5}\n", LINES_REPORT, 1},
    {"lines_crlf", {"format", "--lines", "@D/crlf.jsonl"}, "", "[1]\n{\"b\":2}\n", "vxjson: 2 lines, 0 bad\n", 0},
    {"lines_pretty", {"format", "--lines", "--pretty"}, "[1]\n{}\n", "[\n  1\n]\n{}\n", "vxjson: 2 lines, 0 bad\n", 0},
    {"quiet", {"format", "--quiet", "-e", "[1", "-e", "[2]"}, "", "[2]\n", "", 1},
    {"max_memory", {"format", "--max-memory", "1K", "@S/examples/sample.json"},
     "", "", "@S/examples/sample.json:1: error -503: out of memory (more than --max-memory)\n", 2},
};

INSTANTIATE_TEST_SUITE_P(Format, Tool, ::testing::ValuesIn(FORMAT_CASES), by_id);

const tool_case OPS_CASES[] = {
    {"equal_member_order", {"equal", "-e", "{\"a\":1,\"b\":2}", "-e", "{\"b\":2,\"a\":1.0}"}, "", "true\n", "", 0},
    {"equal_element_order", {"equal", "-e", "[1,2]", "-e", "[2,1]"}, "", "false\n", "", 0},
    {"equal_scalars", {"equal", "-e", "1", "-e", "1.0"}, "", "true\n", "", 0},
    {"equal_string_number", {"equal", "-e", "\"1\"", "-e", "1"}, "", "false\n", "", 0},
    {"equal_files", {"equal", "@D/good.json", "-"}, "{ \"a\" : [1, 2.0] }", "true\n", "", 0},
    // Kept escapes are compared as written: \" and \u0022 differ then.
    {"equal_decoded_escapes", {"equal", "-e", "[\"\\\"\"]", "-e", "[\"\\u0022\"]"}, "", "true\n", "", 0},
    {"equal_kept_escapes", {"equal", "--keep-escapes", "-e", "[\"\\\"\"]", "-e", "[\"\\u0022\"]"}, "", "false\n", "", 0},
    {"contains_standard_reading", {"contains", "--dialect", "standard", "-e", "1", "-e", "1"},
     "", "", "~<text 1>:1: error -3105: a scalar is not allowed", 2},
    {"contains_pg", {"contains", "-e", "{\"a\":[1,2],\"b\":3}", "-e", "{\"a\":[2]}"}, "", "true\n", "", 0},
    {"contains_pg_nested_scalar", {"contains", "-e", "[1,[2]]", "-e", "2"}, "", "true\n", "", 0},
    {"contains_pg_object_in_array", {"contains", "-e", "[{\"a\":1,\"b\":2}]", "-e", "{\"a\":1}"}, "", "false\n", "", 0},
    {"contains_mysql_object_in_array", {"contains", "--dialect", "mysql", "-e", "[{\"a\":1,\"b\":2}]", "-e", "{\"a\":1}"}, "", "true\n", "", 0},
    {"contains_mysql_scalar_array", {"contains", "--dialect", "mysql", "-e", "1", "-e", "[1]"}, "", "false\n", "", 0},
    {"overlaps_arrays", {"overlaps", "-e", "[1,2,3]", "-e", "[3,4]"}, "", "true\n", "", 0},
    {"overlaps_members", {"overlaps", "-e", "{\"a\":1}", "-e", "{\"a\":2}"}, "", "false\n", "", 0},
    {"overlaps_empty", {"overlaps", "-e", "{\"a\":1}", "-e", "{}"}, "", "false\n", "", 0},
    {"merge_patch", {"merge-patch", "-e", "{\"a\":1,\"b\":2}", "-e", "{\"b\":null,\"c\":3}"}, "", "{\"a\":1,\"c\":3}\n", "", 0},
    {"merge_patch_three", {"merge-patch", "@D/left.json", "@D/right.json", "-e", "{\"e\":[]}"}, "", "{\"a\":1,\"b\":{\"d\":3},\"e\":[]}\n", "", 0},
    {"merge_patch_scalar_target", {"merge-patch", "-e", "1", "-e", "{\"a\":null}"}, "", "{\"a\":null}\n", "", 0},
    {"merge_patch_pretty", {"merge-patch", "--pretty", "-e", "{\"a\":1}", "-e", "{\"b\":[2]}"},
     "", "{\n  \"a\": 1,\n  \"b\": [\n    2\n  ]\n}\n", "", 0},
    {"merge_preserve", {"merge-preserve", "-e", "{\"a\":1}", "-e", "{\"a\":2}"}, "", "{\"a\":[1,2]}\n", "", 0},
    {"merge_preserve_layout_a", {"merge-preserve", "--pretty=a", "--ascii", "-e", "{\"\xc3\xa9\":1}", "-e", "{\"\xc3\xa9\":[2]}"},
     "", "{\n  \"\\u00E9\" : \n  [\n    1,\n    2\n  ]\n}\n", "", 0},
    {"merge_preserve_arrays", {"merge-preserve", "-e", "[1,2]", "-e", "3", "-e", "[4]"}, "", "[1,2,3,4]\n", "", 0},
    {"merge_one_input", {"merge-patch", "-e", "{}"},
     "", "", "vxjson: merge-patch takes at least 2 inputs, got 1 (try 'vxjson merge-patch --help')\n", 2},
    {"concat_objects", {"concat", "-e", "{\"a\":1}", "-e", "{\"a\":2,\"b\":3}"}, "", "{\"a\":2,\"b\":3}\n", "", 0},
    {"concat_array_scalar", {"concat", "-e", "[1,2]", "-e", "3"}, "", "[1,2,3]\n", "", 0},
    {"concat_pretty", {"concat", "--pretty", "-e", "1", "-e", "[2]"}, "", "[\n  1,\n  2\n]\n", "", 0},
    {"concat_object_scalar", {"concat", "-e", "{\"a\":1}", "-e", "3"},
     "", "", "vxjson: concat: error -3119: cannot concatenate an object with a scalar\n", 2},
    {"strip_nulls", {"strip-nulls", "-e", "{\"a\":null,\"b\":[null,{\"c\":null}]}"}, "", "{\"b\":[null,{}]}\n", "", 0},
    {"strip_nulls_stdin", {"strip-nulls", "-"}, "[null, {\"x\": null, \"y\": 1}]", "[null,{\"y\":1}]\n", "", 0},
    {"strip_nulls_two_inputs", {"strip-nulls", "-e", "1", "-e", "2"},
     "", "", "vxjson: strip-nulls takes 1 input, got 2 (try 'vxjson strip-nulls --help')\n", 2},
    {"ops_bad_input", {"equal", "-e", "[1,", "-e", "[1]"}, "", "", "<text 1>:1: error -3105: syntax error: unexpected end of input\n", 2},
    {"ops_missing_file", {"contains", "@D/nope.json", "-e", "1"}, "", "", "vxjson: cannot open '@D/nope.json': No such file or directory\n", 2},
    {"ops_empty_input", {"equal", "-", "-e", "1"}, "", "", "vxjson: <stdin>: empty document\n", 2},
    {"ops_stdin_twice", {"equal", "-", "-"}, "1", "", "vxjson: standard input can be read only once\n", 2},
    {"ops_strict_dialect", {"contains", "-e", "{a:1}", "-e", "{}"}, "", "", "<text 1>:1: error -5: json strict only support double quotation\n", 2},
    {"ops_lax", {"contains", "--lax", "-e", "{a:1}", "-e", "{}"}, "", "true\n", "", 0},
};

INSTANTIATE_TEST_SUITE_P(Ops, Tool, ::testing::ValuesIn(OPS_CASES), by_id);

// A JSON Lines stream much larger than the tool's buffers is read in
// bounded memory: its peak is about that of a one-line stream, far below
// the stream's size.
TEST(ToolStream, LinesInBoundedMemory) {
    std::string line = "{\"id\":0,\"tags\":[";
    for (int i = 0; i < 100; ++i) line += "\"tag" + std::to_string(i) + "\",";
    line += "\"end\"],\"ok\":true}\n";
    const std::string small = g_dir + "/small.jsonl", big = g_dir + "/big.jsonl";
    std::ofstream(small, std::ios::binary) << line;
    {
        std::ofstream out(big, std::ios::binary);
        for (int i = 0; i < 40000; ++i) out << line;  // about 33 MB
        out << "[1,\n";                               // one bad line at the very end
    }
    const run_result one = run_tool_from({"format", "--lines", small}, "/dev/null", {});
    const run_result r = run_tool_from({"format", "--lines", big}, "/dev/null", {});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, big + ":40001: error -3105: syntax error: unexpected end of input\n"
                           "vxjson: 40001 lines, 1 bad\n");
    EXPECT_EQ(r.out.size(), 40000 * line.size());
    EXPECT_LT(r.max_rss_kb - one.max_rss_kb, 8 * 1024) << "peak memory grew with the stream";
}

}  // namespace
