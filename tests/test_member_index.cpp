// Large objects under unique names, last-wins names and sorted keys: the
// reader looks members up through an index once an object is large, and
// must build exactly the tree that adding the members one by one builds.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

namespace {

struct Policy {
    const char *id;
    int32_t unique_keys, dup_key_replace, sorted_keys;
};

struct Env {
    vx_heap *heap = mem_heap_create(0);
    vx_alloc_state state{};
    vx_allocator alloc{};
    std::unique_ptr<jlpca_ctx> ctx = std::make_unique<jlpca_ctx>();
    explicit Env(const Policy &p) {
        vx_allocator_init(&alloc, &state);
        jlpca_init(nullptr, ctx.get(), heap, &alloc, 0, 1, p.unique_keys, 0);
        ctx->dup_key_replace = p.dup_key_replace;
        ctx->sorted_keys = p.sorted_keys;
    }
    ~Env() {
        jlpca_deinit(ctx.get());
        vx_allocator_release_all(&state);
        mem_heap_free(heap);
    }
};

using Members = std::vector<std::pair<std::string, int64_t>>;

Members members_of(const json_node *o) {
    Members m;
    for (const json_keyval *kv = o->first_member; kv; kv = kv->next)
        m.emplace_back(std::string(kv->name, kv->name_len), kv->value->ival);
    return m;
}

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
        std::vector<std::string> names = random_names(400, seed);
        Env ref(p);
        json_node *expected = json_mem_create(ref.ctx.get(), JSON_OBJECT);
        int32_t expected_rc = 0;
        std::string text = "{";
        for (size_t i = 0; i < names.size(); i++) {
            text += (i ? ",\"" : "\"") + names[i] + "\":" + std::to_string(i);
            if (expected_rc) continue;
            json_keyval *kv = nullptr;
            expected_rc = json_object_add_keyval(ref.ctx.get(), expected, names[i].data(),
                                                 uint32_t(names[i].size()), &kv);
            if (!expected_rc) {
                kv->value = json_mem_create(ref.ctx.get(), JSON_INTEGER);
                kv->value->ival = int64_t(i);
            }
        }
        text += "}";
        Env env(p);
        json_node *root = nullptr;
        ASSERT_EQ(jlpca_reinit(env.ctx.get(), text.data(), uint32_t(text.size())), 0);
        int32_t rc = json_flex(env.ctx.get(), &root);
        EXPECT_EQ(rc, expected_rc ? VXJSON_ERR_INVALID_JSON : 0) << "seed " << seed;
        if (rc == 0) {
            EXPECT_EQ(members_of(root), members_of(expected)) << "seed " << seed;
        }
    }
}

// A large object whose repeated name comes only after the index exists.
TEST_P(MemberIndex, LateDuplicateOfAnEarlyName) {
    const Policy &p = GetParam();
    std::string text = "{";
    for (int i = 0; i < 100; i++) text += "\"k" + std::to_string(i) + "\":" + std::to_string(i) + ",";
    text += "\"k3\":1000}";
    Env env(p);
    json_node *root = nullptr;
    ASSERT_EQ(jlpca_reinit(env.ctx.get(), text.data(), uint32_t(text.size())), 0);
    int32_t rc = json_flex(env.ctx.get(), &root);
    if (p.unique_keys) {
        EXPECT_EQ(rc, VXJSON_ERR_INVALID_JSON);
        return;
    }
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(root->count, p.dup_key_replace ? 100u : 101u);
    const json_keyval *k3 = json_object_find_keyval_by_name(root, "k3", 2);
    ASSERT_NE(k3, nullptr);
    EXPECT_EQ(k3->value->ival, p.dup_key_replace ? 1000 : (p.sorted_keys ? 1000 : 3));
}

// Hostile size: a scan per member would make this take hours.
TEST_P(MemberIndex, QuarterMillionMembers) {
    const Policy &p = GetParam();
    constexpr int kMembers = 250000;
    std::string text = "{";
    for (int i = kMembers - 1; i >= 0; i--) text += "\"m" + std::to_string(i) + "\":" + std::to_string(i) + (i ? "," : "}");
    Env env(p);
    json_node *root = nullptr;
    ASSERT_EQ(jlpca_reinit(env.ctx.get(), text.data(), uint32_t(text.size())), 0);
    ASSERT_EQ(json_flex(env.ctx.get(), &root), 0);
    EXPECT_EQ(root->count, uint32_t(kMembers));
    if (p.sorted_keys) {
        EXPECT_EQ(std::string(root->first_member->name, root->first_member->name_len), "m0");
    }
}

INSTANTIATE_TEST_SUITE_P(Policies, MemberIndex,
                         ::testing::Values(Policy{"none", 0, 0, 0}, Policy{"unique", 1, 0, 0},
                                           Policy{"last_wins", 0, 1, 0}, Policy{"sorted", 0, 0, 1},
                                           Policy{"sorted_last_wins", 0, 1, 1},
                                           Policy{"sorted_unique", 1, 0, 1}),
                         [](const auto &info) { return std::string(info.param.id); });

} // namespace
