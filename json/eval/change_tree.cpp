// The tree operations shared by the changes by path: room in an array, the
// wrapping of a value into a pair, the written document.
#include <cstring>

#include "change_internal.h"
#include "report.h"
#include "report_sites.h"
#include "result_text.h"
#include "vx_heap.h"

namespace vxjson {

namespace {

// Growth of a full array: as many spare slots as the caller asked for with
// array_spare, at least a few, since a path change often adds again.
constexpr uint32_t MIN_GROWTH = 4;

json_node **heap_items(jlpca_ctx *ctx, uint32_t n) {
    return static_cast<json_node **>(mem_heap_alloc_low(ctx->env, ctx->heap,
                                                        sizeof(json_node *) * size_t(n), 0,
                                                        SRC_JPATH, site::CHANGE_ITEMS_ALLOC));
}

} // namespace

int32_t array_insert_at(jlpca_ctx *ctx, json_node *array, json_node *element, uint32_t position,
                        uint32_t capacity) {
    const uint32_t count = array->count;
    if (count == 0) {
        // The append allocates fresh storage of `capacity` slots itself; on
        // failure it has already changed the capacity, which is put back.
        const uint32_t old_capacity = array->capacity;
        const int32_t rc =
            json_array_append_with_nth(ctx, element, array, capacity ? capacity : 1, 0);
        if (rc) array->capacity = old_capacity;
        return rc;
    }
    if (count >= array->capacity || !array->items) {
        const uint32_t spare = ctx->array_spare > MIN_GROWTH ? ctx->array_spare : MIN_GROWTH;
        if (count > UINT32_MAX - spare) return VXJSON_ERR_NOMEM;
        json_node **grown = heap_items(ctx, count + spare);
        if (!grown) return VXJSON_ERR_NOMEM;
        std::memcpy(grown, array->items, sizeof(json_node *) * count);
        array->items = grown;
        array->capacity = count + spare;
    }
    return json_array_append_with_nth(ctx, element, array, array->capacity, position);
}

int32_t wrap_pair(jlpca_ctx *ctx, json_node *first, json_node *second, json_node **out) {
    json_node *pair = json_mem_create(ctx, JSON_ARRAY);
    const uint32_t capacity = 2 + ctx->array_spare;
    json_node **items = pair && capacity >= 2 ? heap_items(ctx, capacity) : nullptr;
    if (!items) return VXJSON_ERR_NOMEM;
    items[0] = first;
    items[1] = second;
    pair->items = items;
    pair->count = 2;
    pair->capacity = capacity;
    pair->parent = first->parent;
    *out = pair;
    return 0;
}

int32_t document_text(jlpca_ctx *ctx, const json_node *document, uint8_t conv, int32_t line,
                      char **out, uint32_t *out_len) {
    vxstr *s = result_text_begin(ctx);
    if (!s) return report(VXJSON_ERR_NOMEM, SRC_JPATH, line);
    const int32_t rc =
        json_to_string(ctx, ctx->allocator, s, document, JSON_FMT_COMPACT, 1, 1, conv);
    return result_text_end(ctx, s, rc, SRC_JPATH, line, out, out_len);
}

} // namespace vxjson
