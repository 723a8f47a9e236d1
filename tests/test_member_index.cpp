// Large objects under unique names, last-wins names and sorted keys: the
// reader looks members up through an index once an object is large, and
// must build exactly the tree that adding the members one by one builds.
#include <gtest/gtest.h>

#include <random>

#include "vx_env.h"

namespace {
using ::operator<<;

struct Policy {
    const char *id;
    int32_t unique_keys, dup_key_replace, sorted_keys;
};

// A context that reads strictly under the row's policy.
struct PolicyEnv : VxEnv {
    explicit PolicyEnv(const Policy &p) : VxEnv({.strict = 1, .unique_keys = p.unique_keys}) {
        ctx->dup_key_replace = p.dup_key_replace;
        ctx->sorted_keys = p.sorted_keys;
    }
};

// Names of 0 to 3 letters from a small alphabet: many repeats, all lengths.
std::vector<std::string> random_names(size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<std::string> names;
    for (size_t i = 0; i < n; i++) {
        std::string s(rng() % 4, ' ');
        for (char &c : s) c = "abAB_"[rng() % 5];
        names.push_back(s);
    }
    return names;
}

class MemberIndex : public ::testing::TestWithParam<Policy> {};
TEST_P(MemberIndex, ReaderBuildsWhatAddingOneByOneBuilds) {
    const Policy &p = GetParam();
    for (unsigned seed = 1; seed <= 4; seed++) {
        const std::vector<std::string> names = random_names(400, seed);
        PolicyEnv ref(p), env(p);
        json_node *expected = ref.scalar(JSON_OBJECT), *root = nullptr;
        int32_t expected_rc = 0;
        std::string text = "{";
        for (size_t i = 0; i < names.size(); i++) {
            text += (i ? ",\"" : "\"") + names[i] + "\":" + std::to_string(i);
            if (expected_rc) continue;
            json_keyval *kv = nullptr;
            const std::string &name = names[i];
            expected_rc = json_object_add_keyval(ref.ctx.get(), expected, name.data(),
                                                 uint32_t(name.size()), &kv);
            if (!expected_rc) kv->value = ref.integer(int64_t(i));
        }
        const int32_t rc = env.read(text + "}", &root);
        EXPECT_EQ(rc, expected_rc ? VXJSON_ERR_INVALID_JSON : 0) << "seed " << seed;
        if (rc == 0) {
            EXPECT_EQ(dump(root), dump(expected)) << "seed " << seed;
        }
    }
}

// A large object whose repeated name comes only after the index exists.
TEST_P(MemberIndex, LateDuplicateOfAnEarlyName) {
    const Policy &p = GetParam();
    std::string text = "{";
    for (int i = 0; i < 100; i++)
        text += "\"k" + std::to_string(i) + "\":" + std::to_string(i) + ",";
    PolicyEnv env(p);
    json_node *root = nullptr;
    const int32_t rc = env.read(text + "\"k3\":1000}", &root);
    if (p.unique_keys) {
        EXPECT_EQ(rc, VXJSON_ERR_INVALID_JSON);
        return;
    }
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(root->count, p.dup_key_replace ? 100u : 101u);
    const json_keyval *k3 = json_object_find_keyval_by_name(root, "k3", 2);
    ASSERT_NE(k3, nullptr);
    EXPECT_EQ(k3->value->ival, p.dup_key_replace || p.sorted_keys ? 1000 : 3);
}

// Hostile size: a scan per member would make this take hours.
TEST_P(MemberIndex, QuarterMillionMembers) {
    const Policy &p = GetParam();
    constexpr int kMembers = 250000;
    std::string text = "{";
    for (int i = kMembers - 1; i >= 0; i--)
        text += "\"m" + std::to_string(i) + "\":" + std::to_string(i) + (i ? "," : "}");
    PolicyEnv env(p);
    json_node *root = nullptr;
    ASSERT_EQ(env.read(text, &root), 0);
    EXPECT_EQ(root->count, uint32_t(kMembers));
    if (p.sorted_keys) {
        EXPECT_EQ(std::string(root->first_member->name, root->first_member->name_len), "m0");
    }
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Policies, MemberIndex, rows<Policy>({
    {"none", 0, 0, 0},
    {"unique", 1, 0, 0},
    {"last_wins", 0, 1, 0},
    {"sorted", 0, 0, 1},
    {"sorted_last_wins", 0, 1, 1},
    {"sorted_unique", 1, 0, 1},
}), by_id);
// clang-format on

} // namespace
