// JSON_VALUE calls per second on one twitter status (the first of
// twitter.json, about 3 KB), returning text and returning a number:
// on a status read once (the path evaluation, the shape check and the
// text or the exact decimal), and with the status text read anew for each
// call, as a server does for a value stored as text.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>

#include "bench_data.h"
#include "bench_reader.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"
#include "vxstr.h"

namespace {

// Results accumulate on the calls' heap; it is emptied this often.
constexpr int64_t kResetEvery = 4096;

struct Context : bench_reader {
    Context() : bench_reader(1 << 16, 0, JLPCA_COMPAT_STANDARD) {}
};

// The first status of twitter.json as its own compact text.
const std::string &status_text() {
    static const std::string text = [] {
        Context c;
        json_node *doc = c.read(load_bench_data("twitter"));
        if (!doc) return std::string();
        json_keyval *kv = json_object_find_keyval_by_name(doc, "statuses", 8);
        if (!kv || kv->value->type != JSON_ARRAY || kv->value->count == 0) return std::string();
        vxstr *s = vxstr_create(nullptr, &c.alloc, 0);
        std::string out;
        if (s && json_to_string(c.ctx, &c.alloc, s, kv->value->items[0], JSON_FMT_COMPACT, 0,
                                0, JSON_CONV_JSON) == 0)
            out.assign(s->buf, s->len);
        if (s) vxstr_free(nullptr, &c.alloc, s);
        return out;
    }();
    return text;
}

// A path compiled on a heap of its own, for a JSON_VALUE returning `ret_type`.
struct Path {
    Context c;
    jpath path{};
    bool ok = false;
    Path(const char *text, uint32_t ret_type, uint32_t datatype) {
        jpath_init(&path,
                   jpath_encode_flag(ret_type, 0, JPATH_WRAPPER_WITHOUT, JPATH_ON_ERROR_ERROR, 0),
                   datatype, 0, 0);
        ok = jlpca_reinit(c.ctx, text, uint32_t(std::strlen(text))) == 0 &&
             jpath_flex(c.ctx, &path) == 0;
    }
};

constexpr const char *TEXT_PATH = "$.user.screen_name";
constexpr const char *NUMBER_PATH = "$.user.followers_count";
constexpr uint32_t NUMBER_12_2 = 12 << 8 | 2;

int32_t value_text(Context &c, json_node *doc, const jpath *path) {
    char *out = nullptr;
    uint32_t len = 0;
    const int32_t rc = json_fun_varchar(c.ctx, doc, path, &out, &len, 0);
    benchmark::DoNotOptimize(out);
    return rc;
}

int32_t value_number(Context &c, json_node *doc, const jpath *path) {
    json_number_result out{};
    const int32_t rc = json_value_number(c.ctx, doc, path, &out, 0);
    benchmark::DoNotOptimize(out);
    return rc;
}

// Calls on a status read once.
template <int32_t (*Call)(Context &, json_node *, const jpath *)>
void on_tree(benchmark::State &state, const Path &p) {
    Context doc_ctx, calls;
    json_node *doc = doc_ctx.read(status_text());
    if (!doc || !p.ok || Call(calls, doc, &p.path) != 0) {
        state.SkipWithError("twitter status or path not usable");
        return;
    }
    int64_t n = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Call(calls, doc, &p.path));
        if (++n % kResetEvery == 0) calls.reset();
    }
    state.SetItemsProcessed(state.iterations());
}

// Calls that read the status text first.
template <int32_t (*Call)(Context &, json_node *, const jpath *)>
void with_read(benchmark::State &state, const Path &p) {
    Context c;
    const std::string &text = status_text();
    if (text.empty() || !p.ok) {
        state.SkipWithError("twitter status or path not usable");
        return;
    }
    for (auto _ : state) {
        json_node *doc = c.read(text);
        benchmark::DoNotOptimize(Call(c, doc, &p.path));
        c.reset();
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * int64_t(text.size()));
}

void BM_JsonValueText_TwitterStatus(benchmark::State &state) {
    Path p(TEXT_PATH, JPATH_RET_CHAR, 100);
    on_tree<value_text>(state, p);
}
void BM_JsonValueNumber_TwitterStatus(benchmark::State &state) {
    Path p(NUMBER_PATH, JPATH_RET_NUMBER, NUMBER_12_2);
    on_tree<value_number>(state, p);
}
void BM_JsonValueText_ReadAndCall_TwitterStatus(benchmark::State &state) {
    Path p(TEXT_PATH, JPATH_RET_CHAR, 100);
    with_read<value_text>(state, p);
}
void BM_JsonValueNumber_ReadAndCall_TwitterStatus(benchmark::State &state) {
    Path p(NUMBER_PATH, JPATH_RET_NUMBER, NUMBER_12_2);
    with_read<value_number>(state, p);
}

BENCHMARK(BM_JsonValueText_TwitterStatus);
BENCHMARK(BM_JsonValueNumber_TwitterStatus);
BENCHMARK(BM_JsonValueText_ReadAndCall_TwitterStatus);
BENCHMARK(BM_JsonValueNumber_ReadAndCall_TwitterStatus);

} // namespace

int main(int argc, char **argv) { return run_benchmarks(argc, argv); }
