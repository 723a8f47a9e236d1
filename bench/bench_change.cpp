// Changes by path on twitter.json, in changes per second (items_per_second).
// Every change writes the whole document back as text, as the server's
// functions do, so the figure is dominated by that writing.  A replace
// puts the same value node in the same place each time, so the tree stays
// the same size; the removals and appends change it, so their iterations
// read a fresh tree first with the timer paused.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>

#include "bench_data.h"
#include "bench_reader.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

namespace {

const std::string &twitter() {
    static const std::string text = load_bench_data("twitter");
    return text;
}

// A context over its own heap and counting allocator in one dialect.
struct Changer : bench_reader {
    explicit Changer(int32_t compat) : bench_reader(1 << 20, 1, compat) {}
    jpath *path(const char *text) {
        uint32_t n = 0;
        jpath *p = nullptr;
        return jpath_array_flex(ctx, text, uint32_t(std::strlen(text)), 1, &n, &p) ? nullptr
                                                                                         : p;
    }
    void release(char *text) { vx_free(nullptr, &alloc, text); }
};

// JSON_REPLACE(doc, '$.statuses[50].user.followers_count', 7).
void BM_Replace_Twitter(benchmark::State &state) {
    Changer c(JLPCA_COMPAT_MYSQL);
    json_node *doc = c.read(twitter()), *value = c.read("7");
    jpath *path = c.path("$.statuses[50].user.followers_count");
    if (!doc || !value || !path) return state.SkipWithError("twitter.json not readable");
    c.ctx->set_mode = JSON_SET_MODE_REPLACE;
    for (auto _ : state) {
        char *out = nullptr;
        uint32_t len = 0;
        if (jsonb_set_with_path(doc, value, path, c.ctx, &out, &len))
            return state.SkipWithError("change failed");
        benchmark::DoNotOptimize(len);
        c.release(out);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(twitter().size()));
}

// jsonb_set(doc, '{statuses,-1,user,name}', '"x"').
void BM_PgSet_Twitter(benchmark::State &state) {
    Changer c(JLPCA_COMPAT_PG);
    json_node *doc = c.read(twitter()), *value = c.read("\"x\"");
    jpath path{};
    jpath_init_simple(&path, 1);
    char literal[] = "{statuses,-1,user,name}";
    if (!doc || !value ||
        jpath_parse_pg_array(c.ctx->env, c.ctx->heap, c.ctx->allocator, &path, literal))
        return state.SkipWithError("twitter.json not readable");
    c.ctx->set_mode = JSON_SET_MODE_SET;
    for (auto _ : state) {
        char *out = nullptr;
        uint32_t len = 0;
        if (jsonb_set_with_path(doc, value, &path, c.ctx, &out, &len))
            return state.SkipWithError("change failed");
        benchmark::DoNotOptimize(len);
        c.release(out);
    }
    state.SetItemsProcessed(state.iterations());
}

// JSON_REMOVE(doc, '$.statuses[0]') then JSON_ARRAY_APPEND(doc,
// '$.search_metadata', 1) on fresh trees: the change and the text only.
template <bool Append> void BM_Change_FreshTwitter(benchmark::State &state) {
    Changer c(JLPCA_COMPAT_MYSQL);
    for (auto _ : state) {
        state.PauseTiming();
        c.reset();
        json_node *doc = c.read(twitter()), *value = c.read("1");
        jpath *path = c.path(Append ? "$.search_metadata" : "$.statuses[0]");
        state.ResumeTiming();
        if (!doc || !value || !path) return state.SkipWithError("twitter.json not readable");
        char *out = nullptr;
        uint32_t len = 0;
        const int32_t rc =
            Append ? json_array_add_element_mysql_path_array(doc, 1, path, value, c.ctx,
                                                             JSON_ARRAY_ADD_SINGLE, &out, &len)
                   : json_remove_mysql_path_array(doc, 1, path, c.ctx, &out, &len);
        if (rc) return state.SkipWithError("change failed");
        benchmark::DoNotOptimize(len);
        c.release(out);
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(BM_Replace_Twitter)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PgSet_Twitter)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_Change_FreshTwitter, false)
    ->Name("BM_Remove_Twitter")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_Change_FreshTwitter, true)
    ->Name("BM_ArrayAppend_Twitter")
    ->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv) { return run_benchmarks(argc, argv); }
