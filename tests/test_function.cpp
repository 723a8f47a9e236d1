// JSON_VALUE, JSON_QUERY and the dialects' text functions over rows of
// (document, path, clauses, returning type) -> (status, text or value),
// one file per clause under tests/data/functions; every row again with
// each allocation failing in turn; the reports of the ON ERROR clause.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "data_rows.h"
#include "sql_values.h"
#include "vx_env.h"

namespace {

// The clauses column: space-separated words, see the files' headers.
struct Clauses {
    uint32_t ret_type = 3, datatype = 4000; // text of at most 4000 bytes
    uint32_t format = 0, wrapper = 1, on_error = 0, on_empty = 0;
    int32_t compat = 0, incoming = 0;
    uint32_t option = 0;
    bool containers = false, nopath = false, nodoc = false;
};

uint32_t word_value(const std::string &v, std::initializer_list<const char *> words,
                    uint32_t first) {
    uint32_t n = first;
    for (const char *w : words) {
        if (v == w) return n;
        n++;
    }
    ADD_FAILURE() << "unknown clause value " << v;
    return 0;
}

Clauses parse_clauses(const std::string &text) {
    Clauses c;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        const size_t eq = word.find('=');
        const std::string key = word.substr(0, eq),
                          v = eq == std::string::npos ? "" : word.substr(eq + 1);
        const auto num = [&] { return uint32_t(std::stoul(v)); };
        if (key == "text") {
            c.ret_type = 3, c.datatype = num();
        } else if (key == "number") {
            const size_t comma = v.find(',');
            c.ret_type = 1;
            c.datatype = uint32_t(std::stoul(v.substr(0, comma))) << 8 |
                         uint32_t(std::stoul(v.substr(comma + 1)));
        } else if (key == "date" || key == "datetime") {
            c.ret_type = 4, c.datatype = key == "date" ? 3 : 16;
        } else if (key == "wrapper") {
            c.wrapper = word_value(v, {"without", "with", "conditional"}, 1);
        } else if (key == "empty") {
            c.on_empty = word_value(v, {"null", "error"}, 1);
        } else if (key == "error") {
            c.on_error = word_value(v, {"null", "error", "empty", "default"}, 1);
        } else if (key == "format" || key == "option") {
            (key == "format" ? c.format : c.option) = num();
        } else if (key == "compat" || key == "incoming") {
            (key == "compat" ? c.compat : c.incoming) = std::stoi(v);
        } else if (key == "containers" || key == "nopath" || key == "nodoc") {
            (key == "containers" ? c.containers : key == "nopath" ? c.nopath : c.nodoc) = true;
        } else {
            ADD_FAILURE() << "unknown clause " << word;
        }
    }
    return c;
}

struct Outcome {
    int32_t rc;
    std::string result; // the text, "NULL" for none, "''" for the empty text
};

std::string text_result(const char *text, uint32_t len) {
    if (!text) return "NULL";
    EXPECT_EQ(text[len], '\0') << "result text not terminated";
    return len ? std::string(text, len) : "''";
}

// A row's document read and path compiled in a context of its dialect.
struct Call {
    const DataRow &row;
    Clauses c;
    VxEnv env;
    json_node *doc = nullptr;
    jpath path{};

    static ReadSwitches switches(const DataRow &r, const Clauses &c) {
        ReadSwitches sw = c.compat ? dialect(c.compat) : lax();
        sw.escape_mode = r.f[1] == "query" ? JLPCA_ESCAPE_KEEP : JLPCA_ESCAPE_DECODE;
        return sw;
    }
    explicit Call(const DataRow &r) : row(r), c(parse_clauses(r.f[2])), env(switches(r, c)) {
        doc = env.tree(r.f[3]);
        jpath_init(&path,
                   jpath_encode_flag(c.ret_type, c.format, c.wrapper, c.on_error, c.on_empty),
                   c.datatype, 0, 0);
        EXPECT_EQ(env.start(r.f[4]), 0);
        EXPECT_EQ(jpath_flex(env.ctx.get(), &path), 0) << r.f[4];
        if (r.f[1] == "serialise") env.ctx->escape_mode = 3; // a kind that is only written
    }

    Outcome run() {
        const std::string &fun = row.f[1];
        jlpca_ctx *ctx = env.ctx.get();
        json_node *d = c.nodoc ? nullptr : doc;
        char *text = reinterpret_cast<char *>(1);
        uint32_t len = 99;
        if (fun == "number") {
            json_number_result out{};
            const int32_t rc = json_value_number(ctx, d, &path, &out, c.incoming);
            return {rc, sql_text(out)};
        }
        if (fun == "date") {
            json_datetime_result out{};
            const int32_t rc = json_value_date(ctx, d, &path, &out, c.incoming);
            return {rc, sql_text(out)};
        }
        int32_t rc;
        if (fun == "mysql") {
            rc = json_fun_varchar_mysql(ctx, d, c.nopath ? nullptr : &path, uint8_t(c.option),
                                        c.containers, &text, &len);
        } else if (fun == "pg") {
            rc = json_fun_varchar_pg(ctx, d, &path, c.option, &text, &len);
        } else {
            rc = json_fun_varchar(ctx, d, &path, &text, &len, c.incoming);
        }
        if (!text) {
            EXPECT_EQ(len, 0u);
        }
        return {rc, text_result(text, len)};
    }
};

class Functions : public ::testing::TestWithParam<DataRow> {};
TEST_P(Functions, StatusAndResult) {
    const DataRow &r = GetParam();
    Call call(r);
    const Outcome got = call.run();
    EXPECT_EQ(got.rc, r.num(5)) << r.f[3] << " " << r.f[4] << " [" << r.f[2] << "]";
    EXPECT_EQ(got.result, r.f[6]) << r.f[3] << " " << r.f[4] << " [" << r.f[2] << "]";
}

// Every row again with the heap and the allocator failing at each call in
// turn: the answer is either the row's own or -503, never a value made up
// from a failure.
TEST_P(Functions, EachAllocationFailure) {
    const DataRow &r = GetParam();
    for (uint64_t calls = 0; calls < 64; calls++) {
        Call call(r);
        mem_heap_set_call_limit(call.env.heap, calls);
        vx_allocator_set_call_limit(&call.env.alloc_state, calls);
        const Outcome got = call.run();
        if (got.rc == r.num(5) && got.result == r.f[6]) return;
        EXPECT_EQ(got.rc, VXJSON_ERR_NOMEM) << "after " << calls << " allocations";
        EXPECT_EQ(got.result, "NULL") << "after " << calls << " allocations";
        if (got.rc != VXJSON_ERR_NOMEM) return;
    }
    ADD_FAILURE() << "never got through";
}

INSTANTIATE_TEST_SUITE_P(Returning, Functions, rows_of("functions/returning.tsv"),
                         data_row_namer());
INSTANTIATE_TEST_SUITE_P(Wrapper, Functions, rows_of("functions/wrapper.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(OnEmpty, Functions, rows_of("functions/on_empty.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(OnError, Functions, rows_of("functions/on_error.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Dialects, Functions, rows_of("functions/dialects.tsv"), data_row_namer());

TEST(FunctionFiles, HoldTheirRows) {
    expect_row_counts({{"functions/returning.tsv", 45},
                       {"functions/wrapper.tsv", 29},
                       {"functions/on_empty.tsv", 17},
                       {"functions/on_error.tsv", 16},
                       {"functions/dialects.tsv", 25}});
}

} // namespace
