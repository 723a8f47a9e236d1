// The reference documents every benchmark reads, and their loader.
#ifndef VXJSON_BENCH_DATA_H
#define VXJSON_BENCH_DATA_H

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// The documents, by name without ".json", in the order the tables print.
inline const char *const BENCH_FILES[] = {"canada", "citm_catalog", "twitter"};

// The text of VXJSON_BENCH_DATA_DIR/<name>.json; empty, with a message on
// standard error, when it cannot be read.
inline std::string load_bench_data(const std::string &name) {
    std::ifstream in(std::string(VXJSON_BENCH_DATA_DIR) + "/" + name + ".json", std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    if (ss.str().empty())
        std::fprintf(stderr, "cannot read %s/%s.json\n", VXJSON_BENCH_DATA_DIR, name.c_str());
    return ss.str();
}

// Arguments for benchmark::Initialize.  We and the peers are timed in one
// run, and on a shared machine the load changes from second to second; so
// by default every benchmark runs as a dozen short repetitions interleaved
// at random, and the tables use the medians.  Flags given on the command
// line come later and win.
inline std::vector<char *> with_default_flags(int argc, char **argv) {
    static char repetitions[] = "--benchmark_repetitions=12";
    static char interleave[] = "--benchmark_enable_random_interleaving=true";
    static char min_time[] = "--benchmark_min_time=0.1";
    static char aggregates[] = "--benchmark_report_aggregates_only=true";
    std::vector<char *> args{argv[0], repetitions, interleave, min_time, aggregates};
    args.insert(args.end(), argv + 1, argv + argc);
    args.push_back(nullptr);
    return args;
}

// The main of a benchmark program that needs no table of its own: every
// registered benchmark under the default flags.
inline int run_benchmarks(int argc, char **argv) {
    std::vector<char *> args = with_default_flags(argc, argv);
    int n = int(args.size()) - 1;
    benchmark::Initialize(&n, args.data());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

#endif
