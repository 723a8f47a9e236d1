// Contexts on different threads work at once: each thread reads and writes
// its own documents with its own context and heap, and every result must
// match the one computed on a single thread.  Run under ThreadSanitizer in
// CI.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "vx_env.h"

namespace {

const std::vector<std::string> kDocs = {
    R"({"a":[1,2.50,"x\ty"],"b":{"c":null,"d":true}})",
    R"([[],[{}],[[1e400]],"\u00e9\ud83d\ude00",-9223372036854775808])",
    R"({"dup":1,"dup":2,"nested":{"k":[false,"\/\\\""]}})",
    "[" + std::string(3000, '[') + std::string(3000, ']') + "]",
    "{\"bad\":[1,2,}",
};

struct Result {
    int32_t rc;
    std::string text;
};

Result round(const std::string &doc) {
    VxEnv env(strict());
    json_node *root = nullptr;
    Result r{env.read(doc, &root), ""};
    if (r.rc == 0) r.rc = env.write(root, &r.text, JSON_FMT_PRETTY_B);
    return r;
}

TEST(Threads, ContextsOnDifferentThreadsGiveSingleThreadResults) {
    std::vector<Result> expected;
    for (const std::string &d : kDocs) expected.push_back(round(d));
    ASSERT_EQ(expected[4].rc, VXJSON_ERR_INVALID_JSON);
    constexpr int kThreads = 4, kRounds = 40;
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; t++) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; i++) {
                size_t k = size_t(t + i) % kDocs.size();
                Result r = round(kDocs[k]);
                if (r.rc != expected[k].rc || r.text != expected[k].text) mismatches++;
            }
        });
    }
    for (std::thread &th : threads) th.join();
    EXPECT_EQ(mismatches.load(), 0);
}

} // namespace
