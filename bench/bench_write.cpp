// Writing speed: compact and pretty text from trees read once, for the
// three reference documents, next to the peer libraries that are
// installed (RapidJSON Writer/PrettyWriter into a StringBuffer, nlohmann
// dump, simdjson minify of the source text).  Prints MB/s of output per run
// and, at the end, our ratio to each peer.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench_data.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"
#include "vxstr.h"

#ifdef VXJSON_HAVE_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif
#ifdef VXJSON_HAVE_NLOHMANN
#include <nlohmann/json.hpp>
#endif
#ifdef VXJSON_HAVE_SIMDJSON
#include <simdjson.h>
#endif

namespace {

// One document read into a vxjson tree that lives for the whole run.
struct Doc {
    std::string text;
    vx_heap *heap = nullptr;
    vx_alloc_state state{};
    vx_allocator alloc{};
    std::unique_ptr<jlpca_ctx> ctx = std::make_unique<jlpca_ctx>();
    json_node *root = nullptr;
};

// Rate counter: bytes written per second, in MB.
void count_output(benchmark::State &state, size_t bytes) {
    state.counters["MB/s"] = benchmark::Counter(double(bytes) * double(state.iterations()) / 1e6,
                                                benchmark::Counter::kIsRate);
}

void write_vxjson(benchmark::State &state, Doc *doc, uint32_t flags) {
    size_t bytes = 0;
    for (auto _ : state) {
        vxstr *s = vxstr_create(nullptr, &doc->alloc, VXSTR_INITIAL_SIZE);
        if (json_to_string(doc->ctx.get(), &doc->alloc, s, doc->root, flags, 0, 0,
                           JSON_CONV_JSON) != 0) {
            state.SkipWithError("json_to_string failed");
            vxstr_free(nullptr, &doc->alloc, s);
            break;
        }
        bytes = s->len;
        benchmark::DoNotOptimize(s->buf);
        vxstr_free(nullptr, &doc->alloc, s);
    }
    count_output(state, bytes);
}

#ifdef VXJSON_HAVE_RAPIDJSON
template <bool Pretty> void write_rapidjson(benchmark::State &state, rapidjson::Document *d) {
    size_t bytes = 0;
    for (auto _ : state) {
        rapidjson::StringBuffer sb;
        if constexpr (Pretty) {
            rapidjson::PrettyWriter<rapidjson::StringBuffer> w(sb);
            w.SetIndent(' ', 2);
            d->Accept(w);
        } else {
            rapidjson::Writer<rapidjson::StringBuffer> w(sb);
            d->Accept(w);
        }
        bytes = sb.GetSize();
        benchmark::DoNotOptimize(sb.GetString());
    }
    count_output(state, bytes);
}
#endif

#ifdef VXJSON_HAVE_NLOHMANN
void write_nlohmann(benchmark::State &state, nlohmann::json *j, int indent) {
    size_t bytes = 0;
    for (auto _ : state) {
        std::string out = j->dump(indent);
        bytes = out.size();
        benchmark::DoNotOptimize(out.data());
    }
    count_output(state, bytes);
}
#endif

#ifdef VXJSON_HAVE_SIMDJSON
// Text to compact text without a tree: not the same work, shown for scale.
void minify_simdjson(benchmark::State &state, const std::string *text) {
    std::unique_ptr<char[]> out(new char[text->size() + 64]);
    size_t bytes = 0;
    for (auto _ : state) {
        if (simdjson::minify(text->data(), text->size(), out.get(), bytes) != simdjson::SUCCESS) {
            state.SkipWithError("minify failed");
            break;
        }
        benchmark::DoNotOptimize(out.get());
    }
    count_output(state, bytes);
}
#endif

// Keeps the best MB/s of every benchmark over its repetitions, so the
// ratios printed after the table are not at the mercy of a busy machine.
class Collect : public benchmark::ConsoleReporter {
public:
    std::map<std::string, double> mbps;
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &r : runs) {
            auto it = r.counters.find("MB/s");
            if (r.error_occurred || it == r.counters.end()) continue;
            if (r.run_type == Run::RT_Aggregate && r.aggregate_name != "max") continue;
            double &best = mbps[r.run_name.function_name];
            best = std::max(best, it->second.value);
        }
        ConsoleReporter::ReportRuns(runs);
    }
};

void print_ratios(const Collect &c) {
    std::printf("\n%-14s %-8s %10s  %-22s %10s %8s\n", "file", "layout", "vxjson MB/s", "peer",
                "peer MB/s", "ratio");
    for (const char *file : BENCH_FILES) {
        for (const char *mode : {"compact", "pretty"}) {
            const std::string base = std::string("write/") + file + "/" + mode + "/";
            auto ours = c.mbps.find(base + "vxjson");
            if (ours == c.mbps.end()) continue;
            for (const char *peer : {"rapidjson", "nlohmann", "simdjson_minify"}) {
                auto theirs = c.mbps.find(base + peer);
                if (theirs == c.mbps.end()) continue;
                std::printf("%-14s %-8s %10.0f  %-22s %10.0f %7.2fx\n", file, mode, ours->second,
                            peer, theirs->second, ours->second / theirs->second);
            }
        }
    }
}

// Five repetitions of every benchmark, shown as mean, median and max.
template <class... Args> void add(const std::string &name, Args &&...args) {
    benchmark::RegisterBenchmark(name.c_str(), std::forward<Args>(args)...)
        ->Repetitions(5)
        ->DisplayAggregatesOnly(true)
        ->ComputeStatistics("max", [](const std::vector<double> &v) {
            return *std::max_element(v.begin(), v.end());
        });
}

} // namespace

int main(int argc, char **argv) {
    std::vector<char *> args = with_default_flags(argc, argv);
    int nargs = int(args.size()) - 1;
    benchmark::Initialize(&nargs, args.data());
    std::vector<std::unique_ptr<Doc>> docs;
#ifdef VXJSON_HAVE_RAPIDJSON
    std::vector<std::unique_ptr<rapidjson::Document>> rdocs;
#endif
#ifdef VXJSON_HAVE_NLOHMANN
    std::vector<std::unique_ptr<nlohmann::json>> ndocs;
#endif
    for (const char *file : BENCH_FILES) {
        auto d = std::make_unique<Doc>();
        d->text = load_bench_data(file);
        if (d->text.empty()) return 1;
        d->heap = mem_heap_create(4 * d->text.size());
        vx_allocator_init(&d->alloc, &d->state);
        jlpca_init(nullptr, d->ctx.get(), d->heap, &d->alloc, JLPCA_ESCAPE_DECODE, 0, 0,
                   JLPCA_COMPAT_STANDARD);
        if (jlpca_reinit(d->ctx.get(), d->text.data(), uint32_t(d->text.size())) != 0 ||
            json_flex(d->ctx.get(), &d->root) != 0 || !d->root) {
            std::fprintf(stderr, "cannot read %s\n", file);
            return 1;
        }
        const std::string base = std::string("write/") + file + "/";
        Doc *raw = d.get();
        add(base + "compact/vxjson", write_vxjson, raw, uint32_t(JSON_FMT_COMPACT));
        add(base + "pretty/vxjson", write_vxjson, raw, uint32_t(JSON_FMT_PRETTY_B));
#ifdef VXJSON_HAVE_RAPIDJSON
        auto rd = std::make_unique<rapidjson::Document>();
        rd->Parse(d->text.data(), d->text.size());
        add(base + "compact/rapidjson", write_rapidjson<false>, rd.get());
        add(base + "pretty/rapidjson", write_rapidjson<true>, rd.get());
        rdocs.push_back(std::move(rd));
#endif
#ifdef VXJSON_HAVE_NLOHMANN
        auto nd = std::make_unique<nlohmann::json>(nlohmann::json::parse(d->text));
        add(base + "compact/nlohmann", write_nlohmann, nd.get(), -1);
        add(base + "pretty/nlohmann", write_nlohmann, nd.get(), 2);
        ndocs.push_back(std::move(nd));
#endif
#ifdef VXJSON_HAVE_SIMDJSON
        add(base + "compact/simdjson_minify", minify_simdjson, &raw->text);
#endif
        docs.push_back(std::move(d));
    }
    Collect reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    print_ratios(reporter);
    for (auto &d : docs) {
        jlpca_deinit(d->ctx.get());
        mem_heap_free(d->heap);
    }
    benchmark::Shutdown();
    return 0;
}
