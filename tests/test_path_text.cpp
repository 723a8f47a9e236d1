// Path text generation: the path of every node of a document (bare and
// quoted names, positions), lists of found nodes, memory failures, and
// generated texts compiled back to steps that reach the same node.
#include <gtest/gtest.h>

#include "path_steps.h"

namespace {
using ::operator<<;

std::string path_of(VxEnv &env, const json_node *node) {
    json_node *out = nullptr;
    const int32_t rc = json_path_gen(node, env.ctx.get(), &out);
    if (rc != 0) return "ERR" + std::to_string(rc);
    EXPECT_EQ(out->type, uint32_t(JSON_STRING));
    EXPECT_EQ(out->str_flags, 1u);
    EXPECT_EQ(out->parent, nullptr);
    return bytes(out->str, out->str_len);
}

// Every node of a read document, in creation order (a preorder walk).
std::vector<const json_node *> nodes_of(const json_node *root) {
    std::vector<const json_node *> nodes;
    for (const json_node *n = root; n; n = n->chain_next) nodes.push_back(n);
    return nodes;
}

struct TextRow {
    const char *id;
    std::string doc;
    std::string paths; // of every node, creation order, joined by " | "
};

class PathText : public ::testing::TestWithParam<TextRow> {};

TEST_P(PathText, EveryNode) {
    const TextRow &r = GetParam();
    VxEnv env(with_scalar_top(lax()));
    const json_node *root = env.tree(r.doc);
    std::string got;
    for (const json_node *n : nodes_of(root)) got += (got.empty() ? "" : " | ") + path_of(env, n);
    EXPECT_EQ(got, r.paths);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathText, rows<TextRow>({
    {"t01_member_and_positions", R"({"a":[1,2,{"b":0}]})",
        "$ | $.a | $.a[0] | $.a[1] | $.a[2] | $.a[2].b"},
    {"t02_bare_names", R"({"abc":1,"a1":2,"A9z":3,"_":4})", "$ | $.abc | $.a1 | $.A9z | $._"},
    // "_" first: bare whatever follows; a letter first: quoted at any "_".
    {"t03_underscore_asymmetry", R"({"_x y":1,"a_b":2,"Z_":3})",
        "$ | $._x y | $.\"a_b\" | $.\"Z_\""},
    {"t04_quoted_names", "{\"1a\":1,\"\":2,\"a b\":3,\"\xC3\xA9\":4}",
        "$ | $.\"1a\" | $.\"\" | $.\"a b\" | $.\"\xC3\xA9\""},
    // Nothing inside a quoted name is escaped.
    {"t05_quote_unescaped", R"({"a\"b":1,"c\\d":2})", "$ | $.\"a\"b\" | $.\"c\\d\""},
    {"t06_scalar_root", "1", "$"},
    {"t07_nested_arrays", "[[[]],[]]", "$ | $[0] | $[0][0] | $[1]"},
    {"t08_duplicate_names", R"({"a":1,"a":2})", "$ | $.a | $.a"},
}), by_id);
// clang-format on

// A member step names the first member that holds the node; an element the
// first position that holds it (a node shared by two slots).
TEST(PathTextShape, SharedNodeTakesFirstSlot) {
    VxEnv env;
    json_node *x = env.integer(5);
    json_node *arr = env.array({env.integer(1), x});
    arr->items[0] = x; // both slots hold x
    x->parent = arr;
    EXPECT_EQ(path_of(env, x), "$[0]");
    // A parent that does not hold the node: its element count.
    json_node *stray = env.integer(9);
    stray->parent = arr;
    EXPECT_EQ(path_of(env, stray), "$[2]");
}

TEST(PathTextList, ZeroOneAndManyFound) {
    VxEnv env;
    const json_node *root = env.tree(R"({"a":[10,20,30],"b":{"c":true}})");
    json_node *arr = root->first_member->value;
    json_node *out = reinterpret_cast<json_node *>(1);
    ASSERT_EQ(json_lst_to_path_arr(env.ctx.get(), &out, 0, arr->items[0]), 0);
    EXPECT_EQ(out, nullptr);
    ASSERT_EQ(json_lst_to_path_arr(env.ctx.get(), &out, 1, arr->items[1]), 0);
    ASSERT_EQ(out->type, uint32_t(JSON_STRING));
    EXPECT_EQ(bytes(out->str, out->str_len), "$.a[1]");
    // Found nodes are linked through next_sibling, as a result list has them.
    ASSERT_EQ(json_lst_to_path_arr(env.ctx.get(), &out, 3, arr->items[0]), 0);
    EXPECT_EQ(env.text_of(out), R"(["$.a[0]","$.a[1]","$.a[2]"])");
    json_node *c = root->last_member->value->first_member->value;
    arr->items[2]->next_sibling = c;
    ASSERT_EQ(json_lst_to_path_arr(env.ctx.get(), &out, 3, arr->items[1]), 0);
    EXPECT_EQ(env.text_of(out), R"(["$.a[1]","$.a[2]","$.b.c"])");
    EXPECT_EQ(out->items[0]->parent, out);
    // A list shorter than its count: the array holds what was generated.
    c->next_sibling = nullptr;
    ASSERT_EQ(json_lst_to_path_arr(env.ctx.get(), &out, 5, arr->items[2]), 0);
    EXPECT_EQ(env.text_of(out), R"(["$.a[2]","$.b.c"])");
}

TEST(PathTextList, OutOfMemoryGivesNoHalfArray) {
    for (uint64_t calls = 0;; calls++) {
        VxEnv env;
        const json_node *root = env.tree(R"([{"k":[0]},1])");
        const json_node *deep = root->items[0]->first_member->value->items[0];
        const_cast<json_node *>(deep)->next_sibling = root->items[1];
        mem_heap_set_call_limit(env.heap, calls);
        elog_trail_clear();
        json_node *out = nullptr;
        const int32_t rc = json_lst_to_path_arr(env.ctx.get(), &out, 2, deep);
        mem_heap_set_call_limit(env.heap, UINT64_MAX);
        if (rc == 0) {
            EXPECT_EQ(env.text_of(out), R"(["$[0].k[0]","$[1]"])");
            EXPECT_GT(calls, 3u);
            break;
        }
        EXPECT_EQ(rc, -503) << calls;
        EXPECT_EQ(out, nullptr);
        EXPECT_GE(elog_trail_count(), 1u);
        ASSERT_LT(calls, 100u);
    }
}

// ---- generated text compiles back to the same node ----

// Follow compiled steps from the root, the way the standard evaluator
// takes a single member name or a single position.
const json_node *walk(const json_node *root, const jpath *p) {
    const json_node *n = root;
    for (const jpath_filter *f = p->first_filter; f && n; f = f->next) {
        if (f->kind == JPATH_STEP_ROOT) continue;
        if (f->kind == JPATH_STEP_MEMBER && n->type == JSON_OBJECT) {
            const json_keyval *kv = json_object_find_keyval_by_name(n, f->key, f->key_len);
            n = kv ? kv->value : nullptr;
        } else if (f->kind == JPATH_STEP_SUBSCRIPTS && n->type == JSON_ARRAY &&
                   f->index_count == 1 && f->index_head->end == 0 &&
                   f->index_head->start < n->count) {
            n = n->items[f->index_head->start];
        } else {
            return nullptr;
        }
    }
    return n;
}

struct BackRow {
    const char *id;
    std::string doc;
};

class PathTextBack : public ::testing::TestWithParam<BackRow> {};

TEST_P(PathTextBack, CompilesToTheSameNode) {
    VxEnv env;
    const json_node *root = env.tree(GetParam().doc);
    size_t checked = 0;
    for (const json_node *n : nodes_of(root)) {
        const std::string text = path_of(env, n);
        jpath p;
        ASSERT_EQ(compile_path(env, text, &p), 0) << text;
        EXPECT_EQ(walk(root, &p), n) << text;
        checked++;
    }
    EXPECT_GT(checked, 1u);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PathTextBack, rows<BackRow>({
    {"b01_mixed", R"({"a":[1,{"b c":[true,null]},"x"],"_y":{"Z9":{}},"":[[0]]})"},
    {"b02_awkward_names", R"({"a_b":{"1":[2]},"\u00e9t\u00e9":[{"x y":0}],"TO":[]})"},
    {"b03_arrays", "[[],[[1,2],[3]],{\"k\":[4,[5]]}]"},
}), by_id);
// clang-format on

} // namespace
