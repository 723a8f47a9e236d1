// The reference documents every benchmark reads, and their loader.
#ifndef VXJSON_BENCH_DATA_H
#define VXJSON_BENCH_DATA_H

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

// The documents, by name without ".json", in the order the tables print.
inline const char *const BENCH_FILES[] = {"canada", "citm_catalog", "twitter"};

// The text of VXJSON_BENCH_DATA_DIR/<name>.json; empty, with a message on
// standard error, when it cannot be read.
inline std::string load_bench_data(const std::string &name) {
    std::ifstream in(std::string(VXJSON_BENCH_DATA_DIR) + "/" + name + ".json", std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    if (ss.str().empty()) std::fprintf(stderr, "cannot read %s/%s.json\n", VXJSON_BENCH_DATA_DIR, name.c_str());
    return ss.str();
}

#endif
