// Reading speed: json_flex (text to tree) and jcheck_flex (well-formedness
// only) on the three reference documents, next to the peer libraries that
// are installed (RapidJSON Document::Parse with default flags, simdjson DOM,
// nlohmann::json::parse).  json_flex runs twice: on one heap reset between
// reads (the best case) and on a fresh heap per document, made before the
// read and released after it, as a server does per statement.  Prints MB/s
// of input per run and, at the end, a table of our ratios to each peer and
// the heap bytes a tree takes per input byte.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "bench_data.h"
#include "bench_medians.h"
#include "vx_heap.h"
#include "vxjson.h"

#ifdef VXJSON_HAVE_RAPIDJSON
#include <rapidjson/document.h>
#endif
#ifdef VXJSON_HAVE_NLOHMANN
#include <nlohmann/json.hpp>
#endif
#ifdef VXJSON_HAVE_SIMDJSON
#include <simdjson.h>
#endif

namespace {

const char *const PEERS[] = {"rapidjson", "simdjson_dom", "nlohmann"};

// Element arrays come from the same heap, so one reset frees the whole
// tree between iterations, as releasing the heap does in the server.
void *heap_array_alloc(void *env, void *handle, size_t size, const char *src, int line) {
    return mem_heap_alloc_low(env, handle, size, 0, src, line);
}

// A context over a heap whose first block holds a whole tree: resetting it
// between iterations then costs no system allocation.
struct Reader {
    std::string text;
    vx_heap *heap = nullptr;
    vx_allocator alloc{};
    std::unique_ptr<jlpca_ctx> ctx = std::make_unique<jlpca_ctx>();
    double heap_per_byte = 0;
    jlpca_ctx fresh_ctx{};

    ~Reader() {
        if (heap) {
            jlpca_deinit(ctx.get());
            mem_heap_free(heap);
        }
    }
    void open(size_t first_block) {
        if (heap) mem_heap_free(heap);
        heap = mem_heap_create(first_block);
        alloc = vx_allocator{heap_array_alloc, nullptr, heap};
        jlpca_init(nullptr, ctx.get(), heap, &alloc, JLPCA_ESCAPE_DECODE, 0, 0,
                   JLPCA_COMPAT_STANDARD);
    }
    int32_t read(json_node **root) {
        mem_heap_reset(heap);
        if (jlpca_reinit(ctx.get(), text.data(), uint32_t(text.size())) != 0) return -1;
        return json_flex(ctx.get(), root);
    }
    // The server's way: a heap and a context per statement.
    int32_t read_fresh() {
        vx_heap *h = mem_heap_create(0);
        if (!h) return -1;
        vx_allocator a{heap_array_alloc, nullptr, h};
        jlpca_ctx &c = fresh_ctx;
        jlpca_init(nullptr, &c, h, &a, JLPCA_ESCAPE_DECODE, 0, 0, JLPCA_COMPAT_STANDARD);
        json_node *root = nullptr;
        int32_t rc = jlpca_reinit(&c, text.data(), uint32_t(text.size()));
        if (rc == 0) rc = json_flex(&c, &root);
        benchmark::DoNotOptimize(root);
        jlpca_deinit(&c);
        mem_heap_free(h);
        return rc;
    }
    int32_t check() {
        if (jlpca_reinit(ctx.get(), text.data(), uint32_t(text.size())) != 0) return -1;
        return jcheck_flex(ctx.get());
    }
};

void count_input(benchmark::State &state, size_t bytes) {
    state.SetBytesProcessed(int64_t(bytes) * int64_t(state.iterations()));
}

void read_vxjson(benchmark::State &state, Reader *r) {
    for (auto _ : state) {
        json_node *root = nullptr;
        if (r->read(&root) != 0) {
            state.SkipWithError("json_flex failed");
            break;
        }
        benchmark::DoNotOptimize(root);
    }
    count_input(state, r->text.size());
    state.counters["heap_B_per_B"] = r->heap_per_byte;
}

void read_vxjson_fresh(benchmark::State &state, Reader *r) {
    for (auto _ : state) {
        if (r->read_fresh() != 0) {
            state.SkipWithError("json_flex failed");
            break;
        }
    }
    count_input(state, r->text.size());
}

void check_vxjson(benchmark::State &state, Reader *r) {
    for (auto _ : state) {
        if (r->check() != 0) {
            state.SkipWithError("jcheck_flex failed");
            break;
        }
    }
    count_input(state, r->text.size());
}

#ifdef VXJSON_HAVE_RAPIDJSON
void read_rapidjson(benchmark::State &state, const std::string *text) {
    for (auto _ : state) {
        rapidjson::Document d;
        d.Parse(text->data(), text->size());
        if (d.HasParseError()) {
            state.SkipWithError("rapidjson failed");
            break;
        }
        benchmark::DoNotOptimize(&d);
    }
    count_input(state, text->size());
}
#endif

#ifdef VXJSON_HAVE_SIMDJSON
void read_simdjson(benchmark::State &state, const std::string *text) {
    simdjson::dom::parser parser;
    simdjson::padded_string padded(*text);
    for (auto _ : state) {
        simdjson::dom::element root;
        if (parser.parse(padded).get(root) != simdjson::SUCCESS) {
            state.SkipWithError("simdjson failed");
            break;
        }
        benchmark::DoNotOptimize(root);
    }
    count_input(state, text->size());
}
#endif

#ifdef VXJSON_HAVE_NLOHMANN
void read_nlohmann(benchmark::State &state, const std::string *text) {
    for (auto _ : state) {
        nlohmann::json j = nlohmann::json::parse(*text);
        benchmark::DoNotOptimize(&j);
    }
    count_input(state, text->size());
}
#endif

// Keeps every run's rate so the ratios can be printed after the table;
// with --benchmark_repetitions the median stands for the runs.
class Collect : public RepresentativeRuns {
public:
    std::map<std::string, double> mbps;
    std::map<std::string, double> heap_per_byte;

protected:
    void keep(const std::string &name, const Run &run) override {
        double v;
        if (run_counter(run, "bytes_per_second", v)) mbps[name] = v / 1e6;
        if (run_counter(run, "heap_B_per_B", v)) heap_per_byte[name] = v;
    }
};

void print_summary(const Collect &c) {
    auto rate = [&](const std::string &name) {
        auto it = c.mbps.find(name);
        return it == c.mbps.end() ? 0.0 : it->second;
    };
    std::printf("\n%-13s %-12s %9s %9s %9s %9s %9s %9s %9s\n", "file", "", "json_flex", "fresh",
                "jcheck", "peer MB/s", "flex/peer", "fresh/peer", "chk/peer");
    for (const char *file : BENCH_FILES) {
        const std::string base = std::string("read/") + file + "/";
        const double flex = rate(base + "json_flex"), fresh = rate(base + "json_flex_fresh"),
                     check = rate(base + "jcheck_flex");
        auto heap = c.heap_per_byte.find(base + "json_flex");
        std::printf("%-13s %-12s %9.0f %9.0f %9.0f   heap B/B %.2f\n", file, "(MB/s)", flex, fresh,
                    check, heap == c.heap_per_byte.end() ? 0.0 : heap->second);
        for (const char *peer : PEERS) {
            const double theirs = rate(base + peer);
            if (theirs <= 0) continue;
            std::printf("%-13s %-12s %9s %9s %9s %9.0f %8.2fx %8.2fx %8.2fx\n", "", peer, "", "",
                        "", theirs, flex / theirs, fresh / theirs, check / theirs);
        }
    }
}

} // namespace

int main(int argc, char **argv) {
    std::vector<char *> args = with_default_flags(argc, argv);
    int nargs = int(args.size()) - 1;
    benchmark::Initialize(&nargs, args.data());
    std::vector<std::unique_ptr<Reader>> readers;
    for (const char *file : BENCH_FILES) {
        auto r = std::make_unique<Reader>();
        r->text = load_bench_data(file);
        if (r->text.empty()) return 1;
        // One read on a default heap tells how big the tree is.
        r->open(0);
        json_node *root = nullptr;
        if (r->read(&root) != 0 || !root) {
            std::fprintf(stderr, "json_flex cannot read %s\n", file);
            return 1;
        }
        const uint64_t used = mem_heap_bytes_used(r->heap);
        r->heap_per_byte = double(used) / double(r->text.size());
        r->open(used + used / 4 + 4096);

        const std::string base = std::string("read/") + file + "/";
        Reader *raw = r.get();
        benchmark::RegisterBenchmark((base + "json_flex").c_str(), read_vxjson, raw);
        benchmark::RegisterBenchmark((base + "json_flex_fresh").c_str(), read_vxjson_fresh, raw);
        benchmark::RegisterBenchmark((base + "jcheck_flex").c_str(), check_vxjson, raw);
#ifdef VXJSON_HAVE_RAPIDJSON
        benchmark::RegisterBenchmark((base + "rapidjson").c_str(), read_rapidjson, &raw->text);
#endif
#ifdef VXJSON_HAVE_SIMDJSON
        benchmark::RegisterBenchmark((base + "simdjson_dom").c_str(), read_simdjson, &raw->text);
#endif
#ifdef VXJSON_HAVE_NLOHMANN
        benchmark::RegisterBenchmark((base + "nlohmann").c_str(), read_nlohmann, &raw->text);
#endif
        readers.push_back(std::move(r));
    }
    Collect reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    print_summary(reporter);
    benchmark::Shutdown();
    return 0;
}
