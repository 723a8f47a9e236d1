// Value tree: creating nodes and members, linking them into objects and
// arrays, copying and measuring trees.
//
// Layout.  A node is a fixed record whose payload overlays depend on its
// type; an object's members are a doubly linked list of json_keyval
// records, each carrying its name inline right behind the record so that a
// member costs one heap bump.  An array is filled as a linked element list
// while it is read (no reallocation while the size is unknown) and turned
// into a pointer array once, at the end.  Every node the reader creates is
// also chained in creation order, which is how that final pass finds the
// arrays without walking the tree.
//
//   {"a":[1,2]}         object --first_member--> keyval "a" --value--> array
//                         |                                          items[0]=1
//   creation chain:     object -> array -> 1 -> 2                    items[1]=2
#include <cstring>

#include "links.h"
#include "member_index.h"
#include "report.h"
#include "report_sites.h"
#include "tree_internal.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

using namespace vxjson;
using namespace vxjson::site;

namespace {

// Growth step of json_array_add_one_node: small, since arrays changed by
// path functions usually gain one element at a time.
constexpr uint32_t ARRAY_GROW_STEP = 5;

void *heap_alloc(jlpca_ctx *ctx, size_t size, int32_t line) {
    return heap_source{ctx, line}.take(size);
}

bool is_container(uint32_t type) { return type == JSON_OBJECT || type == JSON_ARRAY; }

} // namespace

namespace vxjson {

int32_t insert_new_member(jlpca_ctx *ctx, json_node *object, const char *name, uint32_t name_len,
                          json_keyval *before, json_keyval **out) {
    json_keyval *kv;
    if (int32_t rc =
            json_object_keyval_mem_create(ctx, name, name_len, uint32_t(ctx->lit_escaped), &kv))
        return report_json(rc, TREE_ADD_KEYVAL);
    if (before) member_insert_before(object, before, kv);
    else member_append(object, kv);
    *out = kv;
    return 0;
}

} // namespace vxjson

extern "C" {

VXJSON_API json_node *json_mem_create(jlpca_ctx *ctx, uint32_t type) {
    heap_source heap{ctx, TREE_NODE_ALLOC};
    return make_node(heap, type, 0);
}

VXJSON_API int32_t json_create(jlpca_ctx *ctx, uint32_t type) {
    if (!ctx->cur_node && !ctx->compat && !ctx->scalar_top && !is_container(type))
        return VXJSON_ERR_INVALID_JSON;
    json_node *node = json_mem_create(ctx, type);
    if (!node) [[unlikely]]
        return VXJSON_ERR_NOMEM;
    link_created(ctx, node);
    return 0;
}

VXJSON_API int32_t json_object_keyval_mem_create(jlpca_ctx *ctx, const char *name,
                                                 uint32_t name_len, uint32_t flags,
                                                 json_keyval **out) {
    auto *kv = static_cast<json_keyval *>(
        heap_alloc(ctx, sizeof(json_keyval) + size_t(name_len), TREE_KEYVAL_ALLOC));
    if (!kv) [[unlikely]]
        return VXJSON_ERR_NOMEM;
    *out = init_member(kv, name, name_len, flags);
    return 0;
}

VXJSON_API json_keyval *json_object_find_keyval_by_name(const json_node *object, const char *name,
                                                        uint32_t name_len) {
    for (json_keyval *kv = object->first_member; kv; kv = kv->next)
        if (json_object_keyval_name_equal(kv->name, kv->name_len, name, name_len)) return kv;
    return nullptr;
}

VXJSON_API int32_t json_object_keyval_name_equal(const char *a, uint32_t a_len, const char *b,
                                                 uint32_t b_len) {
    return a_len == b_len && (a_len == 0 || std::memcmp(a, b, a_len) == 0);
}

VXJSON_API json_keyval *jsonb_object_add_keyval_sort_by_name(const json_node *object,
                                                             const char *name, uint32_t name_len) {
    for (json_keyval *kv = object->first_member; kv; kv = kv->next)
        if (name_order(kv->name, kv->name_len, name, name_len) >= 0) return kv;
    return nullptr;
}

VXJSON_API int32_t json_object_add_keyval(jlpca_ctx *ctx, json_node *object, const char *name,
                                          uint32_t name_len, json_keyval **out) {
    if (member_finds_existing(ctx)) {
        if (json_keyval *existing = json_object_find_keyval_by_name(object, name, name_len)) {
            if (ctx->unique_keys) return VXJSON_ERR_INVALID_JSON;
            *out = existing; // the caller's value replaces the earlier one, in place
            return 0;
        }
    }
    json_keyval *before = nullptr;
    if (ctx->sorted_keys == 1)
        before = jsonb_object_add_keyval_sort_by_name(object, name, name_len);
    return vxjson::insert_new_member(ctx, object, name, name_len, before, out);
}

VXJSON_API int32_t json_object_add_one_node(jlpca_ctx *ctx, json_node *object, const char *name,
                                            uint32_t name_len, json_node *value, int32_t replace) {
    if (replace == 1) {
        if (json_keyval *kv = json_object_find_keyval_by_name(object, name, name_len)) {
            if (!ctx->sorted_keys) {
                member_unlink(object, kv);
                member_append(object, kv);
            }
            kv->value = value;
            return 0;
        }
    }
    json_keyval *kv;
    if (int32_t rc = json_object_add_keyval(ctx, object, name, name_len, &kv))
        return report_json(rc, TREE_ADD_ONE_NODE);
    kv->value = value;
    return 0;
}

VXJSON_API int32_t json_array_mem_alloc_arr(jlpca_ctx *ctx, uint32_t capacity, json_node *array) {
    array->count = 0;
    array->capacity = capacity;
    if (capacity) {
        auto *items = static_cast<json_node **>(
            heap_alloc(ctx, sizeof(json_node *) * size_t(capacity), TREE_ITEMS_ALLOC));
        if (!items) return VXJSON_ERR_NOMEM;
        array->items = items;
    }
    return 0;
}

VXJSON_API int32_t json_array_append_with_nth(jlpca_ctx *ctx, json_node *element, json_node *array,
                                              uint32_t capacity, uint32_t position) {
    if (array->count == 0) {
        if (json_array_mem_alloc_arr(ctx, capacity, array))
            return report_json(VXJSON_ERR_NOMEM, TREE_APPEND_NTH);
    }
    json_node **items = array->items;
    if (position < array->count)
        std::memmove(items + position + 1, items + position,
                     sizeof(json_node *) * (array->count - position));
    items[position] = element;
    array->count++;
    element->parent = array;
    return 0;
}

VXJSON_API int32_t json_array_add_one_node(jlpca_ctx *ctx, json_node *array, int32_t position,
                                           json_node *element, int32_t mode) {
    json_node **items = array->items;
    json_node **grown = nullptr;
    uint32_t count = array->count;
    if (mode == JSON_ARRAY_INSERT && count == array->capacity) {
        size_t new_cap = size_t(array->capacity) + ARRAY_GROW_STEP;
        grown = static_cast<json_node **>(vx_alloc(
            ctx->env, ctx->allocator, sizeof(json_node *) * new_cap, SRC_JSON, TREE_ARRAY_GROW));
        if (!grown) return VXJSON_ERR_NOMEM;
        // Element order is kept whatever the position, so copying all of
        // them and then shifting in place gives the same result.
        if (count) std::memcpy(grown, items, sizeof(json_node *) * count);
        items = grown;
    }
    if (position == JSON_ARRAY_END) {
        items[count] = element;
        array->count = count + 1;
    } else if (mode == JSON_ARRAY_REPLACE) {
        items[position] = element;
    } else {
        uint32_t at = uint32_t(position);
        if (at < count)
            std::memmove(items + at + 1, items + at, sizeof(json_node *) * (count - at));
        items[at] = element;
        array->count = count + 1;
    }
    if (grown) {
        if (array->items && ctx->allocator && ctx->allocator->handle && ctx->allocator->free)
            ctx->allocator->free(ctx->env, ctx->allocator->handle, array->items);
        array->items = grown;
        array->capacity += ARRAY_GROW_STEP;
    }
    return 0;
}

VXJSON_API int32_t json_lst_to_arr(jlpca_ctx *ctx, json_node *array, uint32_t lst_count,
                                   json_node *lst_first, json_node *) {
    return make_items(ctx, array, lst_count, [&](json_node **items) {
        uint32_t n = 0;
        for (json_node *e = lst_first; e && n < lst_count; e = e->next_sibling) items[n++] = e;
    });
}

VXJSON_API int32_t json_string_set_value_low(void *env, void *heap, json_node *node,
                                             const char *text, uint32_t len, uint32_t pad,
                                             uint32_t flags) {
    if (len == 0 && pad == 0) {
        node->str = nullptr;
        node->str_len = 0;
        return 0;
    }
    size_t total = size_t(len) + pad;
    auto *s = static_cast<char *>(
        mem_heap_alloc_low(env, heap, total + 1, 0, SRC_JSON, TREE_STRING_ALLOC));
    if (!s) return VXJSON_ERR_NOMEM;
    if (len) std::memcpy(s, text, len);
    std::memset(s + len, ' ', pad);
    s[total] = '\0';
    node->str = s;
    node->str_len = uint32_t(total);
    node->str_flags = flags;
    return 0;
}

VXJSON_API int32_t json_string_set_value(jlpca_ctx *ctx) {
    return json_string_set_value_low(ctx->env, ctx->heap, ctx->cur_node, ctx->tok_str,
                                     uint32_t(ctx->tok_val), 0, uint32_t(ctx->lit_escaped));
}

VXJSON_API int32_t json_decimal_set_value(jlpca_ctx *ctx) { return json_string_set_value(ctx); }

VXJSON_API json_node *json_mem_copy(jlpca_ctx *ctx, const json_node *node) {
    json_node *copy = json_mem_create(ctx, node->type);
    if (!copy) return nullptr;
    switch (node->type) {
    case JSON_OBJECT:
        for (json_keyval *kv = node->first_member; kv; kv = kv->next) {
            json_keyval *nkv;
            if (json_object_keyval_mem_create(ctx, kv->name, kv->name_len, kv->flags, &nkv))
                return nullptr;
            if (!(nkv->value = json_mem_copy(ctx, kv->value))) return nullptr;
            nkv->value->parent = copy;
            member_append(copy, nkv);
        }
        return copy;
    case JSON_ARRAY: {
        // Read through the pointer array when there is one: after path
        // changes it is the authoritative form.
        uint32_t n = node->items ? node->count : node->lst_count;
        const json_node *e = node->lst_first;
        for (uint32_t i = 0; i < n; i++) {
            const json_node *src = node->items ? node->items[i] : e;
            if (!node->items) e = e->next_sibling;
            json_node *c = json_mem_copy(ctx, src);
            if (!c) return nullptr;
            c->parent = copy;
            list_append(copy, c);
        }
        if (json_lst_to_arr(ctx, copy, copy->lst_count, copy->lst_first, copy->lst_last))
            return nullptr;
        return copy;
    }
    case JSON_INTEGER: copy->ival = node->ival; return copy;
    case JSON_BOOLEAN: copy->bval = node->bval; return copy;
    case JSON_NULL: return copy;
    case JSON_DECIMAL:
    case JSON_STRING:
        if (json_string_set_value_low(ctx->env, ctx->heap, copy, node->str, node->str_len, 0,
                                      node->str_flags))
            return nullptr;
        copy->str_flags = node->str_flags;
        return copy;
    case JSON_DATE:
    case JSON_DATETIME:
        copy->dt.sec = node->dt.sec;
        copy->dt.nsec = node->dt.nsec;
        copy->dt.type = node->dt.type;
        return copy;
    default: return nullptr;
    }
}

VXJSON_API uint32_t json_length(const json_node *node) {
    return is_container(node->type) ? node->count : 1;
}

VXJSON_API uint32_t json_depth(const json_node *node) {
    uint32_t deepest = 0;
    if (node->type == JSON_OBJECT) {
        for (json_keyval *kv = node->first_member; kv; kv = kv->next) {
            uint32_t d = json_depth(kv->value);
            if (d > deepest) deepest = d;
        }
    } else if (node->type == JSON_ARRAY) {
        for (uint32_t i = 0; i < node->count; i++) {
            uint32_t d = json_depth(node->items[i]);
            if (d > deepest) deepest = d;
        }
    }
    return deepest + 1;
}

} // extern "C"
