// tree_internal.h -- the primitives that build a tree, shared by the exported
// tree functions (tree.cpp) and the reader (json/read/grammar.cpp), so that
// a node or a member is made and linked the same way whichever builds it.
//
// Allocation goes through a source: anything with `void *take(size_t)`.
// The exported functions take each record from the context's heap; the
// reader carves them from chunks of that heap (chunk_pool.h).
#ifndef VXJSON_TREE_INTERNAL_H
#define VXJSON_TREE_INTERNAL_H

#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "links.h"
#include "report.h"
#include "report_sites.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

namespace vxjson {

// One heap call per record, at a fixed call site of "json/json".
struct heap_source {
    jlpca_ctx *ctx;
    int32_t line;
    void *take(size_t size) const {
        return mem_heap_alloc_low(ctx->env, ctx->heap, size, 0, SRC_JSON, line);
    }
};

// A zeroed node.  Plain stores: a memset of this size becomes a string
// instruction whose start-up costs more than the stores.
inline void clear_node(json_node *node) {
#if defined(__SSE2__)
    static_assert(sizeof(json_node) % 8 == 0);
    auto *p = reinterpret_cast<char *>(node);
    const __m128i zero = _mm_setzero_si128();
    size_t i = 0;
    for (; i + 16 <= sizeof(json_node); i += 16)
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p + i), zero);
    if (i < sizeof(json_node)) _mm_storel_epi64(reinterpret_cast<__m128i *>(p + i), zero);
#else
    std::memset(static_cast<void *>(node), 0, sizeof *node);
#endif
}

// A zeroed node of `type` with `extra` bytes behind it (its text, when the
// caller keeps the text in the same allocation); null when the source is
// exhausted.
template <class Source>
[[gnu::always_inline]] inline json_node *make_node(Source &src, uint32_t type, size_t extra) {
    auto *node = static_cast<json_node *>(src.take(sizeof(json_node) + extra));
    if (!node) [[unlikely]]
        return nullptr;
    clear_node(node);
    node->type = type;
    return node;
}

// Link a new node as json_create does: child of cur_node, next on the
// creation chain, and the new cur_node (and first_node when it is the first).
inline void link_created(jlpca_ctx *ctx, json_node *node) {
    node->parent = ctx->cur_node;
    if (ctx->last_node) ctx->last_node->chain_next = node;
    ctx->last_node = node;
    ctx->cur_node = node;
    if (!ctx->first_node) ctx->first_node = node;
}

// Put an element at the end of an array's element list.
inline void list_append(json_node *array, json_node *element) {
    append_linked<&json_node::prev_sibling, &json_node::next_sibling>(
        array->lst_first, array->lst_last, array->lst_count, element);
}

// The pointer array of an array with `count` elements, from the caller's
// allocator with array_spare slots to spare; fill(items) writes the
// elements.  0, or -503 (nothing changed but the capacity).
template <class Fill>
inline int32_t make_items(jlpca_ctx *ctx, json_node *array, uint32_t count, Fill &&fill) {
    array->capacity = count + ctx->array_spare;
    auto *items = static_cast<json_node **>(vx_alloc(ctx->env, ctx->allocator,
                                                     sizeof(json_node *) * size_t(array->capacity),
                                                     SRC_JSON, site::TREE_LST_TO_ARR));
    if (!items) [[unlikely]]
        return VXJSON_ERR_NOMEM;
    fill(items);
    array->items = items;
    array->count = count;
    return 0;
}

// The member record for `name` in `block` (record size plus name_len
// bytes): the name copied behind the record, `flags` stored, value and
// links null.
inline json_keyval *init_member(void *block, const char *name, uint32_t name_len, uint32_t flags) {
    auto *kv = static_cast<json_keyval *>(block);
    std::memset(static_cast<void *>(kv), 0, sizeof(json_keyval));
    kv->name_len = name_len;
    kv->name = reinterpret_cast<char *>(kv + 1);
    if (name_len) std::memcpy(kv->name, name, name_len);
    kv->flags = flags;
    return kv;
}

// Sorted-name order: shorter names first, then strncmp over the length
// (which stops at a NUL byte).  Negative, 0 or positive as a sorts
// before, with or after b.
inline int name_order(const char *a, uint32_t a_len, const char *b, uint32_t b_len) {
    if (a_len != b_len) return a_len < b_len ? -1 : 1;
    return std::strncmp(a, b, a_len);
}

// Adding a member finds an existing one of the same name: to refuse it
// (unique_keys) or to reuse it (dup_key_replace).
inline bool member_finds_existing(const jlpca_ctx *ctx) {
    return ctx->unique_keys == 1 || ctx->dup_key_replace == 1;
}

// Whether adding a member must look at the members already there: to
// refuse or reuse a repeated name, or to find its sorted place.  Without
// any of these policies a new member simply goes at the end.
inline bool member_policy_applies(const jlpca_ctx *ctx) {
    return member_finds_existing(ctx) || ctx->sorted_keys == 1;
}

} // namespace vxjson

#endif
