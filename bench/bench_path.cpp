// Path compilation in paths per second (items_per_second): short paths of
// the kind SQL calls carry, long ones (many steps, a long subscript list, a
// long quoted name), text-array literals, and the generation of path text
// for every node of a reference document.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench_data.h"
#include "bench_reader.h"

namespace {

// Heap bytes a run may take before it is reset: paths are never freed one
// by one, so the heap is emptied now and then with the timer paused.
constexpr uint64_t kHeapResetBytes = 64u << 20;

struct Compiler : bench_reader {
    explicit Compiler(int32_t compat = JLPCA_COMPAT_STANDARD) : bench_reader(1 << 20, 0, compat) {}

    void reset_if_full(benchmark::State &st) {
        if (mem_heap_bytes_used(heap) < kHeapResetBytes) return;
        st.PauseTiming();
        reset();
        st.ResumeTiming();
    }
};

void compile_each(benchmark::State &st, const std::vector<std::string> &texts, int32_t compat) {
    Compiler c(compat);
    int64_t bytes = 0;
    for (auto _ : st) {
        for (const std::string &t : texts) {
            jpath p;
            jpath_init(&p, 3, 4000, 0, JPATH_DIALECT_STANDARD);
            if (jlpca_reinit(c.ctx, t.data(), uint32_t(t.size())) ||
                jpath_flex(c.ctx, &p)) {
                st.SkipWithError("path did not compile");
                return;
            }
            benchmark::DoNotOptimize(p.last_filter);
            bytes += int64_t(t.size());
        }
        c.reset_if_full(st);
    }
    st.SetItemsProcessed(st.iterations() * int64_t(texts.size()));
    st.SetBytesProcessed(bytes);
}

const std::vector<std::string> kShort = {
    "$",
    "$.a",
    "$.store.book[0].title",
    "$[*].price",
    "$.a[1 to 3, 5]",
    "$.\"first name\"",
    "$.*[0]",
    "$[2][3].x",
};

std::vector<std::string> long_paths() {
    std::string steps = "$";
    for (int i = 0; i < 200; i++)
        steps += ".member" + std::to_string(i) + "[" + std::to_string(i) + "]";
    std::string list = "$[";
    for (int i = 0; i < 1000; i++)
        list += (i ? "," : "") + std::to_string(2 * i) + " to " + std::to_string(2 * i + 1);
    list += "]";
    const std::string name = "$.\"" + std::string(64 * 1024, 'q') + "\"";
    return {steps, list, name};
}

void BM_CompileShort(benchmark::State &st) { compile_each(st, kShort, JLPCA_COMPAT_STANDARD); }
void BM_CompileShort_Mysql(benchmark::State &st) {
    std::vector<std::string> singles;
    for (const std::string &t : kShort)
        if (t.find(',') == std::string::npos) singles.push_back(t);
    compile_each(st, singles, JLPCA_COMPAT_MYSQL);
}
void BM_CompileLong(benchmark::State &st) { compile_each(st, long_paths(), JLPCA_COMPAT_STANDARD); }

void BM_ArrayFlex(benchmark::State &st) {
    Compiler c(JLPCA_COMPAT_MYSQL);
    const std::string text = R"(["$.a", "$.b[1]", "$[*].c", "$.\"d e\".f"])";
    for (auto _ : st) {
        uint32_t count = 0;
        jpath *paths = nullptr;
        if (jpath_array_flex(c.ctx, text.data(), uint32_t(text.size()), 0, &count, &paths)) {
            st.SkipWithError("path array did not compile");
            return;
        }
        benchmark::DoNotOptimize(paths);
        c.reset_if_full(st);
    }
    st.SetItemsProcessed(st.iterations() * 4);
}

void BM_PgArray(benchmark::State &st) {
    Compiler c;
    const std::string literal = R"({a, 0, "b c", d\,e, 17})";
    std::string work;
    for (auto _ : st) {
        work = literal; // read in place
        jpath p;
        jpath_init_simple(&p, JPATH_DIALECT_PG_ARRAY);
        if (jpath_parse_pg_array(nullptr, c.heap, &c.alloc, &p, work.data())) {
            st.SkipWithError("literal did not compile");
            return;
        }
        benchmark::DoNotOptimize(p.last_filter);
        c.reset_if_full(st);
    }
    st.SetItemsProcessed(st.iterations());
}

// The path text of every node of twitter.json, in nodes per second.
void BM_PathGen_Twitter(benchmark::State &st) {
    Compiler c(JLPCA_COMPAT_MYSQL);
    const std::string text = load_bench_data("twitter");
    json_node *root = nullptr;
    if (text.empty() || jlpca_reinit(c.ctx, text.data(), uint32_t(text.size())) ||
        json_flex(c.ctx, &root)) {
        st.SkipWithError("twitter.json not read");
        return;
    }
    std::vector<const json_node *> nodes;
    for (const json_node *n = root; n; n = n->chain_next) nodes.push_back(n);
    for (auto _ : st) {
        for (const json_node *n : nodes) {
            json_node *out = nullptr;
            if (json_path_gen(n, c.ctx, &out)) {
                st.SkipWithError("no path made");
                return;
            }
            benchmark::DoNotOptimize(out);
        }
    }
    st.SetItemsProcessed(st.iterations() * int64_t(nodes.size()));
}

} // namespace

BENCHMARK(BM_CompileShort);
BENCHMARK(BM_CompileShort_Mysql);
BENCHMARK(BM_CompileLong);
BENCHMARK(BM_ArrayFlex);
BENCHMARK(BM_PgArray);
BENCHMARK(BM_PathGen_Twitter)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv) { return run_benchmarks(argc, argv); }
