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

#include "data_rows.h"
#include "vx_env.h"

extern char **environ;

namespace {
using ::operator<<;

struct data_file {
    const char *name;
    const char *content;
};

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

std::string g_dir; // scratch folder of this process

class scratch_folder : public ::testing::Environment {
public:
    void SetUp() override {
        char tmpl[] = "/tmp/vxjson_tool_XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        g_dir = tmpl;
        for (const data_file &f : DATA_FILES)
            std::ofstream(g_dir + "/" + f.name, std::ios::binary) << f.content;
    }
    void TearDown() override { (void)std::system(("rm -rf '" + g_dir + "'").c_str()); }
};

const auto *const g_env = ::testing::AddGlobalTestEnvironment(new scratch_folder);

std::string expand(std::string s) {
    const std::pair<const char *, std::string> subs[] = {
        {"@S", VXJSON_SOURCE_DIR}, {"@D", g_dir}, {"@V", VXJSON_VERSION_STRING}};
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

struct run_result {
    std::string out, err;
    int status = -1;
    long max_rss_kb = 0;
};

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
    if (wait4(pid, &wstatus, 0, &usage) == pid && WIFEXITED(wstatus))
        r.status = WEXITSTATUS(wstatus);
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
            << what << " lacks: " << want.substr(1) << "\n--- " << what << ":\n"
            << actual;
    else EXPECT_EQ(actual, want) << what;
}

// A row of tests/data/tool/*.tsv: id, exit status, extra environment,
// standard input, expected standard output and error, then the arguments.
class Tool : public ::testing::TestWithParam<DataRow> {};
TEST_P(Tool, Runs) {
    std::vector<std::string> f = GetParam().f;
    f.resize(std::max<size_t>(f.size(), 6));
    const std::vector<std::string> env =
        f[2].empty() ? std::vector<std::string>{} : std::vector{f[2]};
    const run_result r = run_tool({f.begin() + 6, f.end()}, f[3], env);
    expect_text("stdout", f[4], r.out);
    expect_text("stderr", f[5], r.err);
    EXPECT_EQ(r.status, GetParam().num(1)) << "stderr: " << r.err;
}

INSTANTIATE_TEST_SUITE_P(General, Tool, rows_of("tool/general.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Check, Tool, rows_of("tool/check.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Format, Tool, rows_of("tool/format.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Ops, Tool, rows_of("tool/ops.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Query, Tool, rows_of("tool/query.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Value, Tool, rows_of("tool/value.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Change, Tool, rows_of("tool/change.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Rfc8259, Tool, rows_of("tool/rfc8259.tsv"), data_row_namer());

TEST(ToolCases, EveryFileHasItsRows) {
    expect_row_counts({{"tool/general.tsv", 41},
                       {"tool/check.tsv", 58},
                       {"tool/format.tsv", 28},
                       {"tool/ops.tsv", 45},
                       {"tool/query.tsv", 50},
                       {"tool/value.tsv", 46},
                       {"tool/change.tsv", 35},
                       {"tool/rfc8259.tsv", 47}});
}

// A JSON Lines stream much larger than the tool's buffers is read in
// bounded memory: its peak is about that of a one-line stream, far below
// the stream's size.
TEST(ToolStream, LinesInBoundedMemory) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP()
        << "AddressSanitizer holds freed memory in quarantine; the bound is the plain build's";
#endif
    std::string line = "{\"id\":0,\"tags\":[";
    for (int i = 0; i < 100; ++i) line += "\"tag" + std::to_string(i) + "\",";
    line += "\"end\"],\"ok\":true}\n";
    const std::string small = g_dir + "/small.jsonl", big = g_dir + "/big.jsonl";
    std::ofstream(small, std::ios::binary) << line;
    {
        std::ofstream out(big, std::ios::binary);
        for (int i = 0; i < 40000; ++i) out << line; // about 33 MB
        out << "[1,\n";                              // one bad line at the very end
    }
    const run_result one = run_tool_from({"format", "--lines", small}, "/dev/null", {});
    const run_result r = run_tool_from({"format", "--lines", big}, "/dev/null", {});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, big + ":40001:4: error -3105: syntax error: unexpected end of input\n"
                           "vxjson: 40001 lines, 1 bad\n");
    EXPECT_EQ(r.out.size(), 40000 * line.size());
    EXPECT_LT(r.max_rss_kb - one.max_rss_kb, 8 * 1024) << "peak memory grew with the stream";
}

// The JSON Lines stream of the --jobs runs: 60,000 lines, several batches
// for each worker, with a line that strict reading refuses every 7,919.
const std::string &mixed_lines() {
    static const std::string path = [] {
        const std::string p = g_dir + "/mixed.jsonl";
        std::ofstream out(p, std::ios::binary);
        for (int i = 0; i < 60000; ++i) {
            if (i % 7919 == 0) out << "{\"bad\":" << i << ",}\n";
            else out << "{\"id\":" << i << ",\"v\":[" << i % 13 << ",\"x\"]}\n";
        }
        return p;
    }();
    return path;
}

// A command over the stream ("@F" in its arguments).
struct JobsRow {
    const char *id;
    std::vector<std::string> args; // the command first
};

// Lines handled on several threads come out in input order, messages too:
// every --jobs gives the output, messages and status of --jobs 1.
class ToolJobs : public ::testing::TestWithParam<JobsRow> {};
TEST_P(ToolJobs, KeepInputOrder) {
    auto run = [&](const char *jobs) {
        std::vector<std::string> args{GetParam().args.front(), "--lines", "--jobs", jobs};
        for (auto a = GetParam().args.begin() + 1; a != GetParam().args.end(); ++a)
            args.push_back(*a == "@F" ? mixed_lines() : *a);
        return run_tool_from(args, "/dev/null", {});
    };
    const run_result one = run("1");
    EXPECT_EQ(one.status, 1) << one.err; // the bad lines
    EXPECT_NE(one.err.find("vxjson: 60000 lines, 8 bad\n"), std::string::npos) << one.err;
    for (const char *jobs : {"2", "4"}) {
        const run_result many = run(jobs);
        EXPECT_EQ(many.status, one.status) << "--jobs " << jobs;
        EXPECT_TRUE(many.out == one.out) << "--jobs " << jobs << ": the output differs";
        EXPECT_EQ(many.err, one.err) << "--jobs " << jobs;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Commands, ToolJobs,
    rows<JobsRow>({
        {"check", {"check", "--strict", "@F"}},
        {"format", {"format", "--strict", "@F"}},
        {"format_pretty_ascii", {"format", "--strict", "--pretty", "--ascii", "@F"}},
        {"query", {"query", "--strict", "$.v[0]", "@F"}},
        {"query_mysql", {"query", "--dialect", "mysql", "$.v[*]", "@F"}},
        {"json_query", {"query", "--strict", "--wrapper", "with", "$.v", "@F"}},
        {"value", {"value", "--strict", "$.id", "@F"}},
        {"value_number", {"value", "--strict", "--returning", "number(5,1)", "$.v[0]", "@F"}},
        {"contains_path", {"contains-path", "all", "$.v[0]", "$.id", "@F"}},
        {"set", {"set", "@F", "$.x", "1", "$.v[0]", "[2]"}},
        {"insert", {"insert", "@F", "$.v[9]", "0"}},
        {"replace", {"replace", "--pretty", "@F", "$.id", "\"r\""}},
        {"remove", {"remove", "@F", "$.v[0]"}},
        {"array_append", {"array-append", "@F", "$.v", "7"}},
        {"array_insert", {"array-insert", "@F", "$.v[1]", "0"}},
        {"set_pg", {"set", "--dialect", "pg", "@F", "{v,0}", "5"}},
        {"remove_pg", {"remove", "--dialect", "pg", "@F", "v"}},
        {"remove_pg_path", {"remove", "--dialect", "pg", "@F", "{v,1}"}},
    }),
    by_id);

// A document over --max-memory is refused without reading it again: the
// peak under a limit stays below the peak of reading it whole.
TEST(ToolStream, LimitNeverRaisesThePeak) {
    const std::string doc = g_dir + "/large.json";
    {
        std::ofstream out(doc, std::ios::binary);
        out << "[";
        for (int i = 0; i < 400000; ++i) out << "{\"k\":" << i << ",\"v\":[1.5,\"x\"]},";
        out << "0]"; // about 11 MB
    }
    const run_result whole = run_tool_from({"format", doc}, "/dev/null", {});
    const run_result limited =
        run_tool_from({"format", "--max-memory", "8M", doc}, "/dev/null", {});
    EXPECT_EQ(whole.status, 0);
    EXPECT_EQ(limited.status, 1);
    EXPECT_EQ(limited.err,
              doc + ":1: error -503: the document needs more memory than --max-memory 8M allows\n");
    EXPECT_LT(limited.max_rss_kb, whole.max_rss_kb) << "the limit raised the peak";
}

} // namespace
