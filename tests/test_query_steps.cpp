// Path evaluation below json_query: the member-name test across function
// kinds, the subscript walks over entries no compiler makes, and the
// PostgreSQL subscript rules.
#include <gtest/gtest.h>

#include "path_text.h"
#include "vx_env.h"

namespace {
using ::operator<<;

constexpr int32_t NO_MATCH = VXJSON_ERR_PATH_NO_MATCH;

// A step of kind `kind` named `key`, owned by `path`.
jpath_filter make_step(jpath *path, const std::string &key, uint32_t kind = 3) {
    jpath_filter f{};
    f.kind = kind;
    f.key = const_cast<char *>(key.c_str());
    f.key_len = uint32_t(key.size());
    f.first_index = -1;
    f.max_index = -1;
    f.path = path;
    return f;
}

struct NameRow {
    const char *id;
    std::string stored;  // the member's name as stored
    uint32_t flags;      // the stored name still holds its escapes
    std::string key;     // the step's name
    int32_t escape_mode; // the context's at evaluation
    uint32_t fun_kind;   // the context's when the path was compiled
    int32_t equal;
};

class KeyvalEqual : public ::testing::TestWithParam<NameRow> {};
TEST_P(KeyvalEqual, ComparesAsTheFunctionKindsAsk) {
    const NameRow &r = GetParam();
    VxEnv env;
    env.ctx->escape_mode = r.escape_mode;
    json_keyval *kv = nullptr;
    ASSERT_EQ(json_object_keyval_mem_create(env.ctx.get(), r.stored.data(),
                                            uint32_t(r.stored.size()), r.flags, &kv),
              0);
    jpath path{};
    path.fun_kind = r.fun_kind;
    const jpath_filter step = make_step(&path, r.key);
    const uint64_t before = env.alloc_state.outstanding;
    EXPECT_EQ(jpath_filter_object_keyval_equal(env.ctx.get(), kv, &step), r.equal);
    EXPECT_EQ(env.alloc_state.outstanding, before) << "the decoded name is given back";
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Names, KeyvalEqual, rows<NameRow>({
    {"same_kind_plain", "ab", 0, "ab", 1, 1, 1},
    {"same_kind_escapes_compared_as_stored", R"(a\"b)", 1, R"(a"b)", 1, 1, 0},
    {"same_kind_stored_form_matches", R"(a\"b)", 1, R"(a\"b)", 0, 0, 1},
    {"other_kind_plain_bytewise", "ab", 0, "ab", 1, 0, 1},
    {"other_kind_plain_differs", "ab", 0, "ac", 1, 0, 0},
    {"other_kind_escapes_decoded", R"(a\"b)", 1, R"(a"b)", 1, 0, 1},
    {"other_kind_unicode_decoded", R"(\u0041)", 1, "A", 0, 1, 1},
    {"other_kind_decoded_differs", R"(a\"b)", 1, R"(a"c)", 1, 0, 0},
    // A name no longer than the key cannot be the escaped form of it.
    {"other_kind_not_longer_never_equal", "ab", 1, "ab", 1, 0, 0},
    {"other_kind_undecodable", R"(ab\)", 1, "ab", 1, 0, 0},
    {"other_kind_empty_key", R"(\u0041)", 1, "", 1, 0, 0},
}), by_id);
// clang-format on

TEST(KeyvalEqual, AStepWithoutAPathComparesBytes) {
    VxEnv env;
    env.ctx->escape_mode = 1;
    json_keyval *kv = nullptr;
    ASSERT_EQ(json_object_keyval_mem_create(env.ctx.get(), R"(\u0041)", 6, 1, &kv), 0);
    jpath_filter step = make_step(nullptr, "A");
    EXPECT_EQ(jpath_filter_object_keyval_equal(env.ctx.get(), kv, &step), 0);
}

// A document read keeping its escapes, a path compiled for decoded text:
// the last field step of the pg mode decodes the stored names, the
// standard mode compares them as they are.
TEST(FieldStep, EscapedNamesAcrossFunctionKinds) {
    for (int32_t compat : {0, 1}) {
        VxEnv env(dialect(compat));
        jpath path{};
        ASSERT_EQ(compile_path(env.ctx.get(), R"($."a\"b")", &path), 0);
        env.ctx->escape_mode = JLPCA_ESCAPE_KEEP;
        json_node *root = env.tree(R"({"a\"b":1})");
        json_node *out = nullptr;
        EXPECT_EQ(json_query(env.ctx.get(), root, &path, &out), compat ? 0 : NO_MATCH) << compat;
        if (compat) {
            EXPECT_EQ(env.text_of(out), "1");
        }
    }
}

TEST(FieldStep, LastKeySwitchOffTakesTheFirstDuplicate) {
    VxEnv env(dialect(JLPCA_COMPAT_PG));
    json_node *root = env.tree(R"({"a":1,"b":0,"a":2})");
    jpath path{};
    ASSERT_EQ(compile_path(env.ctx.get(), "$.a", &path), 0);
    json_node *out = nullptr;
    ASSERT_EQ(json_query(env.ctx.get(), root, &path, &out), 0);
    EXPECT_EQ(env.text_of(out), "2");
    env.ctx->path_last_key = 0;
    ASSERT_EQ(json_query(env.ctx.get(), root, &path, &out), 0);
    EXPECT_EQ(env.text_of(out), "1");
}

// Subscript entries as given by hand (or by the PostgreSQL adder): start
// and end of each entry, in order.
struct EntryRow {
    const char *id;
    int32_t compat;
    std::vector<std::pair<int64_t, int64_t>> entries;
    std::string matches; // positions listed, joined by " "
};

class SubscriptWalk : public ::testing::TestWithParam<EntryRow> {};
TEST_P(SubscriptWalk, ListsEachElementOnce) {
    const EntryRow &r = GetParam();
    VxEnv env(dialect(r.compat));
    json_node *root = env.tree("[0,1,2,3,4]");
    jpath path{};
    jpath_filter step = make_step(&path, "", 4);
    std::vector<jpath_index> entries(r.entries.size());
    for (size_t i = 0; i < entries.size(); i++) {
        entries[i] = {r.entries[i].first, r.entries[i].second, i ? &entries[i - 1] : nullptr,
                      nullptr};
        if (i) entries[i - 1].next = &entries[i];
    }
    step.index_head = entries.empty() ? nullptr : &entries[0];
    jpath_result_list list{};
    EXPECT_EQ(jpath_filter_array_item_entity(env.ctx.get(), root, &step, &list), 0);
    std::string got;
    uint32_t n = 0;
    for (json_node *e = list.first; e && n < list.count; e = e->next_sibling, n++)
        got += (n ? " " : "") + env.text_of(e);
    EXPECT_EQ(n, list.count);
    EXPECT_EQ(got, r.matches);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Entries, SubscriptWalk, rows<EntryRow>({
    {"single", 0, {{3, 0}}, "3"},
    {"ranges_ascending", 0, {{0, 1}, {3, 9}}, "0 1 3 4"},
    {"reversed_range_skipped", 0, {{3, 1}, {4, 0}}, "4"},
    {"negative_ends_the_walk", 0, {{-1, 0}, {2, 0}}, ""},
    {"past_the_end_ends_the_walk", 0, {{5, 0}, {1, 0}}, ""},
    {"descending_by_hand_listed_once", 0, {{2, 0}, {1, 0}, {3, 0}}, "2 3"},
    {"overlapping_by_hand_listed_once", 0, {{0, 2}, {1, 3}}, "0 1 2 3"},
    {"repeated_by_hand_listed_once", 0, {{1, 0}, {1, 0}}, "1"},
    {"no_entries", 0, {}, ""},
    {"pg_first_entry_only", 1, {{1, 3}, {4, 0}}, "1"},
    {"pg_negative_from_the_end", 1, {{-1, 0}}, "4"},
    {"pg_most_negative", 1, {{-5, 0}}, "0"},
    {"pg_before_the_first", 1, {{-6, 0}}, ""},
    {"pg_past_the_end", 1, {{5, 0}}, ""},
    {"pg_no_entries", 1, {}, ""},
    // Only the low 32 bits of a pg position count, as a signed number.
    {"pg_position_taken_as_32_bits", 1, {{(int64_t(1) << 32) + 2, 0}}, "2"},
}), by_id);
// clang-format on

TEST(SubscriptStep, PgLastPositionAppliesToANonArray) {
    for (int32_t compat : {0, 1}) {
        VxEnv env(dialect(compat));
        json_node *root = env.tree(R"({"a":1})");
        jpath path{};
        jpath_filter step = make_step(&path, "", 4);
        jpath_index last{-1, 0, nullptr, nullptr};
        step.first_index = -1;
        step.index_head = &last;
        json_node *out = nullptr;
        EXPECT_EQ(jpath_filter_array_item(env.ctx.get(), root, &step, &out), compat ? 0 : NO_MATCH);
        EXPECT_EQ(out, compat ? root : nullptr);
    }
}

} // namespace
