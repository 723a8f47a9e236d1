// A parse context over a fresh heap and counting allocator, plus small
// builders for trees made by hand.
#ifndef VXJSON_TEST_TREE_FIXTURE_H
#define VXJSON_TEST_TREE_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

struct TreeEnv {
    vx_heap *heap = mem_heap_create(0);
    vx_alloc_state alloc_state{};
    vx_allocator alloc{};
    std::unique_ptr<jlpca_ctx> ctx = std::make_unique<jlpca_ctx>();

    explicit TreeEnv(int32_t compat = JLPCA_COMPAT_STANDARD, int32_t escape_mode = 0) {
        vx_allocator_init(&alloc, &alloc_state);
        jlpca_init(nullptr, ctx.get(), heap, &alloc, escape_mode, 1, 0, compat);
    }
    ~TreeEnv() {
        jlpca_deinit(ctx.get());
        vx_allocator_release_all(&alloc_state);
        mem_heap_free(heap);
    }
    TreeEnv(const TreeEnv &) = delete;
    TreeEnv &operator=(const TreeEnv &) = delete;

    json_node *integer(int64_t v) {
        json_node *n = json_mem_create(ctx.get(), JSON_INTEGER);
        n->ival = v;
        return n;
    }
    json_node *text(uint32_t type, const std::string &s) {
        json_node *n = json_mem_create(ctx.get(), type);
        EXPECT_EQ(json_string_set_value_low(nullptr, heap, n, s.data(), uint32_t(s.size()), 0, 0), 0);
        return n;
    }
    json_node *string(const std::string &s) { return text(JSON_STRING, s); }
    // An array filled through its element list and converted, as the reader does.
    json_node *array(const std::vector<json_node *> &elements) {
        json_node *a = json_mem_create(ctx.get(), JSON_ARRAY);
        for (json_node *e : elements) {
            e->parent = a;
            e->prev_sibling = a->lst_last;
            if (a->lst_last) a->lst_last->next_sibling = e;
            else a->lst_first = e;
            a->lst_last = e;
            a->lst_count++;
        }
        if (!elements.empty()) {
            EXPECT_EQ(json_lst_to_arr(ctx.get(), a, a->lst_count, a->lst_first, a->lst_last), 0);
        }
        return a;
    }
    json_node *object(const std::vector<std::pair<std::string, json_node *>> &members) {
        json_node *o = json_mem_create(ctx.get(), JSON_OBJECT);
        for (auto &[name, value] : members)
            EXPECT_EQ(json_object_add_one_node(ctx.get(), o, name.data(), uint32_t(name.size()),
                                               value, 0),
                      0);
        return o;
    }
};

// Member names of an object in list order, checking the back links too.
inline std::vector<std::string> member_names(const json_node *o) {
    std::vector<std::string> names;
    const json_keyval *prev = nullptr;
    for (const json_keyval *kv = o->first_member; kv; prev = kv, kv = kv->next) {
        EXPECT_EQ(kv->prev, prev);
        names.emplace_back(kv->name, kv->name_len);
    }
    EXPECT_EQ(o->last_member, prev);
    EXPECT_EQ(o->count, names.size());
    return names;
}

#endif
