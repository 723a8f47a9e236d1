// Value tree: node creation and the creation chain, member policies,
// element arrays, copies, length and depth, and every out-of-memory path.
#include <gtest/gtest.h>

#include "vx_env.h"

namespace {
using ::operator<<;

using Names = std::vector<std::string>;

TEST(Create, TopLevelScalarNeedsADialectOrScalarTop) {
    struct Row {
        int32_t compat, scalar_top;
        uint32_t type;
        int32_t rc;
    };
    for (Row r : {Row{0, 0, JSON_STRING, VXJSON_ERR_INVALID_JSON}, Row{0, 0, JSON_INTEGER, -3105},
                  Row{0, 0, JSON_OBJECT, 0}, Row{0, 0, JSON_ARRAY, 0}, Row{0, 1, JSON_NULL, 0},
                  Row{1, 0, JSON_BOOLEAN, 0}, Row{2, 0, JSON_DECIMAL, 0}}) {
        VxEnv env;
        env.ctx->compat = r.compat;
        env.ctx->scalar_top = r.scalar_top;
        uint64_t before = mem_heap_alloc_count(env.heap);
        EXPECT_EQ(json_create(env.ctx.get(), r.type), r.rc) << r.type;
        if (r.rc) {
            EXPECT_EQ(mem_heap_alloc_count(env.heap), before) << "nothing allocated on refusal";
            EXPECT_EQ(env.ctx->first_node, nullptr);
        }
    }
}

TEST(Create, ChainsNodesInCreationOrderAndTracksTheCurrentNode) {
    VxEnv env;
    jlpca_ctx *ctx = env.ctx.get();
    std::vector<json_node *> made;
    for (uint32_t type : {JSON_ARRAY, JSON_INTEGER, JSON_NULL}) {
        ASSERT_EQ(json_create(ctx, type), 0);
        made.push_back(ctx->cur_node);
        if (type == JSON_INTEGER) jlpa_set_top_json(ctx, made[0]);
    }
    using Nodes = std::vector<const json_node *>;
    EXPECT_EQ((Nodes{ctx->first_node, made[0]->chain_next, made[1]->chain_next, ctx->last_node}),
              (Nodes{made[0], made[1], made[2], made[2]}));
    EXPECT_EQ(made[2]->chain_next, nullptr);
    EXPECT_EQ((Nodes{made[0]->parent, made[1]->parent, made[2]->parent}),
              (Nodes{nullptr, made[0], made[0]}));
}

struct KeyRow {
    const char *id;
    int32_t unique_keys, dup_key_replace, sorted_keys;
    Names adds;      // names added in order; values are 0, 1, 2, ...
    int32_t last_rc; // result of the last add
    Names order;     // member order afterwards
    std::vector<int64_t> values;
};

class KeyPolicy : public ::testing::TestWithParam<KeyRow> {};
TEST_P(KeyPolicy, MembersFollowTheContextSwitches) {
    const KeyRow &r = GetParam();
    VxEnv env;
    jlpca_ctx *ctx = env.ctx.get();
    ctx->unique_keys = r.unique_keys;
    ctx->dup_key_replace = r.dup_key_replace;
    ctx->sorted_keys = r.sorted_keys;
    json_node *obj = json_mem_create(ctx, JSON_OBJECT);
    int32_t rc = 0;
    for (size_t i = 0; i < r.adds.size(); i++) {
        json_keyval *kv = nullptr;
        rc = json_object_add_keyval(ctx, obj, r.adds[i].data(), uint32_t(r.adds[i].size()), &kv);
        if (rc == 0) kv->value = env.integer(int64_t(i));
    }
    EXPECT_EQ(rc, r.last_rc);
    EXPECT_EQ(member_names(obj), r.order);
    std::vector<int64_t> values;
    for (json_keyval *kv = obj->first_member; kv; kv = kv->next) values.push_back(kv->value->ival);
    EXPECT_EQ(values, r.values);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Policies, KeyPolicy, rows<KeyRow>({
    {"duplicates_kept", 0, 0, 0, {"a", "a"}, 0, {"a", "a"}, {0, 1}},
    {"last_wins_in_first_place", 0, 1, 0, {"a", "b", "a"}, 0, {"a", "b"}, {2, 1}},
    {"unique_rejects", 1, 0, 0, {"a", "b", "a"}, -3105, {"a", "b"}, {0, 1}},
    {"unique_wins_over_replace", 1, 1, 0, {"a", "a"}, -3105, {"a"}, {0}},
    {"sorted_by_length_then_bytes", 0, 0, 1, {"bb", "a", "ab"}, 0, {"a", "ab", "bb"}, {1, 2, 0}},
    {"sorted_newcomer_before_equal", 0, 0, 1, {"b", "a", "b"}, 0, {"a", "b", "b"}, {1, 2, 0}},
    {"sorted_replace", 0, 1, 1, {"b", "a", "b"}, 0, {"a", "b"}, {1, 2}},
    {"empty_name", 0, 1, 1, {"", "x", ""}, 0, {"", "x"}, {2, 1}},
    {"bytes_not_case_folded", 0, 1, 0, {"A", "a"}, 0, {"A", "a"}, {0, 1}},
}), by_id);
// clang-format on

TEST(AddOneNode, ReplaceMovesTheMemberLastUnlessSorted) {
    for (int32_t sorted : {0, 1}) {
        VxEnv env;
        env.ctx->sorted_keys = sorted;
        json_node *obj =
            env.object({{"a", env.integer(1)}, {"b", env.integer(2)}, {"c", env.integer(3)}});
        json_node *v = env.integer(9);
        ASSERT_EQ(json_object_add_one_node(env.ctx.get(), obj, "a", 1, v, 1), 0);
        EXPECT_EQ(member_names(obj), sorted ? Names({"a", "b", "c"}) : Names({"b", "c", "a"}));
        EXPECT_EQ(json_object_find_keyval_by_name(obj, "a", 1)->value, v);
        // Without replace a second member of the same name is added.
        ASSERT_EQ(json_object_add_one_node(env.ctx.get(), obj, "b", 1, env.integer(7), 0), 0);
        EXPECT_EQ(obj->count, 4u);
    }
}

TEST(Names, EqualityAndSortPosition) {
    EXPECT_EQ(json_object_keyval_name_equal("", 0, "", 0), 1);
    EXPECT_EQ(json_object_keyval_name_equal("ab", 2, "abc", 2), 1);
    EXPECT_EQ(json_object_keyval_name_equal("ab", 2, "ab", 1), 0);
    EXPECT_EQ(json_object_keyval_name_equal("a\0b", 3, "a\0c", 3), 0);
    VxEnv env;
    json_node *obj = env.object({{"b", env.integer(1)}, {"aa", env.integer(2)}});
    EXPECT_EQ(jsonb_object_add_keyval_sort_by_name(obj, "a", 1), obj->first_member);
    EXPECT_EQ(jsonb_object_add_keyval_sort_by_name(obj, "c", 1), obj->last_member);
    EXPECT_EQ(jsonb_object_add_keyval_sort_by_name(obj, "aa", 2), obj->last_member);
    EXPECT_EQ(jsonb_object_add_keyval_sort_by_name(obj, "zz", 2), nullptr);
    EXPECT_EQ(jsonb_object_add_keyval_sort_by_name(obj, "abc", 3), nullptr);
}

TEST(ListToArray, CapacityIsCountPlusSpare) {
    for (uint32_t spare : {0u, 3u}) {
        VxEnv env;
        env.ctx->array_spare = spare;
        json_node *a = env.array({env.integer(1), env.integer(2), env.integer(3)});
        EXPECT_EQ(a->count, 3u);
        EXPECT_EQ(a->capacity, 3u + spare);
        EXPECT_EQ(dump(a), "[1,2,3]");
        EXPECT_EQ(a->lst_count, 3u) << "the list stays as it was";
    }
}

TEST(ListToArray, FailureLeavesCapacitySetAndNoItems) {
    VxEnv env;
    json_node *a = env.array({}), *e = env.integer(1);
    vx_allocator_set_call_limit(&env.alloc_state, 0);
    EXPECT_EQ(json_lst_to_arr(env.ctx.get(), a, 1, e, e), VXJSON_ERR_NOMEM);
    EXPECT_EQ(a->capacity, 1u);
    EXPECT_EQ(a->items, nullptr);
}

struct ArrayOpRow {
    const char *id;
    int32_t position, mode;
    const char *expect;
    uint32_t capacity;
};

class ArrayAddOne : public ::testing::TestWithParam<ArrayOpRow> {};
TEST_P(ArrayAddOne, OnAFullArrayOfThree) {
    const ArrayOpRow &r = GetParam();
    VxEnv env;
    json_node *a = env.array({env.integer(1), env.integer(2), env.integer(3)});
    ASSERT_EQ(json_array_add_one_node(env.ctx.get(), a, r.position, env.integer(9), r.mode), 0);
    EXPECT_EQ(dump(a), r.expect);
    EXPECT_EQ(a->capacity, r.capacity);
    // The replaced pointer array went back to the allocator.
    EXPECT_EQ(env.alloc_state.outstanding, 1u);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Modes, ArrayAddOne, rows<ArrayOpRow>({
    {"insert_front_grows_by_five", 0, 0, "[9,1,2,3]", 8},
    {"insert_middle", 2, 0, "[1,2,9,3]", 8},
    {"append", -1, 0, "[1,2,3,9]", 8},
    {"replace_does_not_grow", 1, 1, "[1,9,3]", 3},
}), by_id);
// clang-format on

TEST(ArrayAddOne, GrowthFailureLeavesTheArrayUnchanged) {
    VxEnv env;
    json_node *a = env.array({env.integer(1)});
    json_node **items = a->items;
    vx_allocator_set_call_limit(&env.alloc_state, 0);
    EXPECT_EQ(json_array_add_one_node(env.ctx.get(), a, 0, env.integer(9), 0), VXJSON_ERR_NOMEM);
    EXPECT_EQ(a->items, items);
    EXPECT_EQ(dump(a), "[1]");
    EXPECT_EQ(a->capacity, 1u);
}

TEST(ArrayAppendWithNth, AllocatesWhenEmptyThenShifts) {
    VxEnv env;
    json_node *a = env.scalar(JSON_ARRAY), *x = env.integer(1), *y = env.integer(2),
              *z = env.integer(3);
    ASSERT_EQ(json_array_append_with_nth(env.ctx.get(), x, a, 4, 0), 0);
    ASSERT_EQ(json_array_append_with_nth(env.ctx.get(), y, a, 4, 1), 0);
    ASSERT_EQ(json_array_append_with_nth(env.ctx.get(), z, a, 4, 0), 0);
    EXPECT_EQ(dump(a), "[3,1,2]");
    EXPECT_EQ(a->capacity, 4u);
    EXPECT_EQ(z->parent, a);
    json_node *empty = env.scalar(JSON_ARRAY);
    mem_heap_set_call_limit(env.heap, 0);
    elog_trail_clear();
    EXPECT_EQ(json_array_append_with_nth(env.ctx.get(), x, empty, 4, 0), VXJSON_ERR_NOMEM);
    ASSERT_EQ(elog_trail_count(), 1u);
}

TEST(StringValue, PaddingAndEmptyTexts) {
    struct Row {
        const char *text;
        uint32_t len, pad;
        const char *expect;
    }; // expect nullptr: no text stored
    for (Row r : {Row{"", 0, 0, nullptr}, Row{"", 0, 3, "   "}, Row{"ab", 2, 2, "ab  "},
                  Row{"a\0b", 3, 0, "a\0b"}}) {
        VxEnv env;
        json_node *n = env.scalar(JSON_STRING);
        ASSERT_EQ(json_string_set_value_low(nullptr, env.heap, n, r.text, r.len, r.pad, 1), 0);
        if (!r.expect) {
            EXPECT_EQ(n->str, nullptr);
            EXPECT_EQ(n->str_len, 0u);
            continue;
        }
        ASSERT_EQ(n->str_len, r.len + r.pad);
        EXPECT_EQ(std::memcmp(n->str, r.expect, n->str_len), 0);
        EXPECT_EQ(n->str[n->str_len], '\0');
        EXPECT_EQ(n->str_flags, 1u);
    }
}

TEST(StringValue, TakesTheContextLiteral) {
    VxEnv env;
    jlpca_ctx *ctx = env.ctx.get();
    ctx->compat = 1;
    ASSERT_EQ(json_create(ctx, JSON_DECIMAL), 0);
    char lit[] = "1.50";
    ctx->tok_str = lit;
    ctx->tok_val = 4;
    ctx->lit_escaped = 0;
    ASSERT_EQ(json_decimal_set_value(ctx), 0);
    EXPECT_STREQ(ctx->cur_node->str, "1.50");
    EXPECT_NE(ctx->cur_node->str, lit) << "the literal is copied";
}

TEST(LengthAndDepth, ByShape) {
    VxEnv env;
    EXPECT_EQ(json_depth(env.object({})), 1u);
    EXPECT_EQ(json_depth(env.array({})), 1u);
    EXPECT_EQ(json_depth(env.array({env.array({})})), 2u);
    EXPECT_EQ(json_depth(env.object({{"a", env.array({env.integer(1)})}})), 3u);
    EXPECT_EQ(json_depth(env.integer(1)), 1u);
    EXPECT_EQ(json_length(env.string("abc")), 1u);
    EXPECT_EQ(json_length(env.scalar(JSON_NULL)), 1u);
    EXPECT_EQ(json_length(env.array({env.integer(1), env.integer(2)})), 2u);
    EXPECT_EQ(json_length(env.object({{"a", env.integer(1)}, {"b", env.integer(1)}})), 2u);
}

json_node *sample(VxEnv &env) {
    json_node *date = env.scalar(JSON_DATE);
    date->dt = vxtime{86400, 5, VXTIME_TYPE_DATE};
    return env.object(
        {{"a", env.array({env.integer(-7), env.decimal("1.5e3"), env.scalar(JSON_BOOLEAN, 1)})},
         {"", env.string("x\"y", 1)},
         {"d", date},
         {"n", env.scalar(JSON_NULL)},
         {"e", env.array({})}});
}

TEST(Copy, IsDeepEqualAndIndependent) {
    VxEnv env;
    env.ctx->array_spare = 2;
    json_node *src = sample(env);
    json_node *copy = json_mem_copy(env.ctx.get(), src);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(dump(src, true), dump(copy, true));
    EXPECT_EQ(copy->parent, nullptr);
    EXPECT_EQ(copy->chain_next, nullptr);
    json_node *arr = copy->first_member->value;
    EXPECT_EQ(arr->capacity, 3u + 2u);
    EXPECT_EQ(arr->items[0]->parent, arr);
    // Changing the original leaves the copy alone.
    src->first_member->value->items[0]->ival = 100;
    src->first_member->next->value->str[0] = 'z';
    EXPECT_EQ(arr->items[0]->ival, -7);
    EXPECT_EQ(copy->first_member->next->value->str[0], 'x');
}

TEST(Copy, UnknownTypeFails) {
    VxEnv env;
    json_node *bad = json_mem_create(env.ctx.get(), 42);
    EXPECT_EQ(json_mem_copy(env.ctx.get(), env.array({bad})), nullptr);
}

TEST(Copy, EveryAllocationFailureGivesNull) {
    VxEnv probe;
    json_node *src = sample(probe);
    const uint64_t heap0 = mem_heap_alloc_count(probe.heap), alloc0 = probe.alloc_state.calls;
    ASSERT_NE(json_mem_copy(probe.ctx.get(), src), nullptr);
    const uint64_t heap_calls = mem_heap_alloc_count(probe.heap) - heap0;
    const uint64_t alloc_calls = probe.alloc_state.calls - alloc0;
    for (uint64_t n = 0; n < heap_calls; n++) {
        mem_heap_set_call_limit(probe.heap, n);
        EXPECT_EQ(json_mem_copy(probe.ctx.get(), src), nullptr) << "heap call " << n;
    }
    mem_heap_set_call_limit(probe.heap, UINT64_MAX);
    for (uint64_t n = 0; n < alloc_calls; n++) {
        vx_allocator_set_call_limit(&probe.alloc_state, n);
        EXPECT_EQ(json_mem_copy(probe.ctx.get(), src), nullptr) << "allocator call " << n;
    }
}

TEST(OutOfMemory, BuildingOperationsReturn503AndReport) {
    VxEnv env;
    jlpca_ctx *ctx = env.ctx.get();
    json_node *obj = env.scalar(JSON_OBJECT), *s = env.scalar(JSON_STRING),
              *arr = env.scalar(JSON_ARRAY);
    mem_heap_set_call_limit(env.heap, 0);
    elog_trail_clear();
    EXPECT_EQ(json_mem_create(ctx, JSON_NULL), nullptr);
    EXPECT_EQ(json_create(ctx, JSON_OBJECT), VXJSON_ERR_NOMEM);
    json_keyval *kv = nullptr;
    EXPECT_EQ(json_object_keyval_mem_create(ctx, "a", 1, 0, &kv), VXJSON_ERR_NOMEM);
    EXPECT_EQ(json_object_add_keyval(ctx, obj, "a", 1, &kv), VXJSON_ERR_NOMEM);
    EXPECT_EQ(json_object_add_one_node(ctx, obj, "a", 1, s, 0), VXJSON_ERR_NOMEM);
    EXPECT_EQ(obj->count, 0u);
    EXPECT_EQ(obj->first_member, nullptr);
    EXPECT_EQ(json_string_set_value_low(nullptr, env.heap, s, "x", 1, 0, 0), VXJSON_ERR_NOMEM);
    EXPECT_EQ(json_array_mem_alloc_arr(ctx, 2, arr), VXJSON_ERR_NOMEM);
    // add_keyval reports once; add_one_node reports its callee's and its own.
    ASSERT_EQ(elog_trail_count(), 3u);
    vx_elog_entry e;
    ASSERT_EQ(elog_trail_get(0, &e), 0);
    EXPECT_TRUE(e.code == VXJSON_ERR_NOMEM && std::string(e.src) == "json/json")
        << e.code << " " << e.src;
}

} // namespace
