// Path evaluation in the standard and PostgreSQL-compatible modes: the
// step loop of json_query, the evaluator of each step kind, and the
// gathering of several matches into a virtual array.
//
//   path $.a[*]        step(root) -> step(field "a") -> step(all elements)
//   document           {"a":[1,2]}
//   after "a"          the array node [1,2] itself (one match: no copy)
//   after [*]          virtual array {items: 1, 2}, the document's own nodes
//
// Nothing here recurses: each step is one pass over the current value and,
// for a virtual array, over its items and their children.
#include "eval_internal.h"

using namespace vxjson::eval;

namespace {

using step_fn = int32_t (*)(jlpca_ctx *, json_node *, const jpath_filter *, json_node **);

step_fn evaluator_of(uint32_t kind) {
    switch (kind) {
    case STEP_ALL_ELEMENTS: return jpath_filter_all_array;
    case STEP_WILDCARD: return jpath_filter_wildcard;
    case STEP_FIELD: return jpath_filter_field_item;
    case STEP_SUBSCRIPT: return jpath_filter_array_item;
    default: return nullptr; // the root step, and kinds no compiler makes
    }
}

} // namespace

extern "C" {

VXJSON_API int32_t json_query(jlpca_ctx *ctx, json_node *root, const jpath *path, json_node **out) {
    *out = nullptr;
    if (!root) return VXJSON_ERR_PATH_NO_MATCH;
    json_node *cur = root;
    for (const jpath_filter *step = path->first_filter; step; step = step->next) {
        const step_fn eval = evaluator_of(step->kind);
        if (!eval) continue;
        if (!cur) return VXJSON_ERR_PATH_NO_MATCH;
        json_node *next = nullptr;
        if (int32_t rc = eval(ctx, cur, step, &next); rc < 0)
            return report_jpath(rc, vxjson::site::QUERY_STEP);
        cur = next;
    }
    if (!cur) return VXJSON_ERR_PATH_NO_MATCH;
    *out = cur;
    return 0;
}

VXJSON_API int32_t json_virtual_array_create(jlpca_ctx *ctx, json_node **out,
                                             jpath_result_list *list) {
    *out = nullptr;
    if (list->count == 0) return VXJSON_ERR_PATH_NO_MATCH;
    if (list->count == 1) {
        *out = list->first;
        return 0;
    }
    json_node *array = json_mem_create(ctx, JSON_ARRAY);
    if (!array) [[unlikely]]
        return VXJSON_ERR_NOMEM;
    if (int32_t rc = json_lst_to_arr(ctx, array, list->count, list->first, list->last))
        return report_jpath(rc, vxjson::site::QUERY_VIRTUAL_ITEMS);
    array->is_virtual = 1;
    *out = array;
    return 0;
}

VXJSON_API int32_t jpath_filter_field_item(jlpca_ctx *ctx, json_node *node,
                                           const jpath_filter *step, json_node **out) {
    *out = nullptr;
    if (is_object(node)) return jpath_filter_object_field(ctx, node, step, out);
    if (is_array(node)) return jpath_filter_array_field(ctx, node, step, out);
    return VXJSON_ERR_PATH_NO_MATCH;
}

VXJSON_API int32_t jpath_filter_object_field(jlpca_ctx *ctx, json_node *object,
                                             const jpath_filter *step, json_node **out) {
    *out = nullptr;
    const jpath_filter *next = step->next;
    if (!next) {
        if (ctx->compat == JLPCA_COMPAT_STANDARD)
            return jpath_filter_object_field_only_first(object, step, out);
        return jpath_filter_object_field_only_last(ctx, object, step, out);
    }
    jpath_result_list list{};
    if (next->kind == STEP_SUBSCRIPT && next->multi == 0)
        (void)jpath_filter_object_field_part2_with_key(object, step, &list);
    else (void)jpath_filter_object_field_part_with_key(object, step, &list);
    return json_virtual_array_create(ctx, out, &list);
}

VXJSON_API int32_t jpath_filter_array_field(jlpca_ctx *ctx, json_node *array,
                                            const jpath_filter *step, json_node **out) {
    *out = nullptr;
    jpath_result_list list{};
    bool array_seen = false;
    for (uint32_t i = 0; i < array->count; i++) {
        json_node *e = array->items[i];
        if (is_object(e)) {
            (void)jpath_filter_object_field_all_with_key(e, step, &list);
        } else if (is_array(e)) {
            // Only the first nested array is looked into; a second one
            // ends the walk, objects after it included.
            if (array_seen) break;
            array_seen = true;
            for (uint32_t j = 0; j < e->count; j++)
                if (is_object(e->items[j]))
                    (void)jpath_filter_object_field_all_with_key(e->items[j], step, &list);
        }
    }
    return json_virtual_array_create(ctx, out, &list);
}

VXJSON_API int32_t jpath_filter_wildcard(jlpca_ctx *ctx, json_node *node, const jpath_filter *step,
                                         json_node **out) {
    *out = nullptr;
    jpath_result_list list{};
    if (is_object(node)) {
        (void)jpath_filter_object_field_wildcard(node, step, &list);
    } else if (is_array(node)) {
        for (uint32_t i = 0; i < node->count; i++) {
            json_node *e = node->items[i];
            if (is_object(e)) {
                (void)jpath_filter_object_field_wildcard(e, step, &list);
            } else if (is_array(e)) {
                for (uint32_t j = 0; j < e->count; j++)
                    if (is_object(e->items[j]))
                        (void)jpath_filter_object_field_wildcard(e->items[j], step, &list);
            }
        }
    } else {
        return VXJSON_ERR_PATH_NO_MATCH;
    }
    return json_virtual_array_create(ctx, out, &list);
}

VXJSON_API int32_t jpath_filter_all_array(jlpca_ctx *ctx, json_node *node, const jpath_filter *step,
                                          json_node **out) {
    *out = nullptr;
    if (!is_array(node)) return jpath_filter_array_item_narr(node, step, out);
    jpath_result_list list{};
    if (!node->is_virtual) {
        for (uint32_t i = 0; i < node->count; i++) list_append(&list, node->items[i]);
        return json_virtual_array_create(ctx, out, &list);
    }
    // An array item right after an object item stands whole, as the
    // object stands for itself.
    bool after_object = false;
    for (uint32_t i = 0; i < node->count; i++) {
        json_node *item = node->items[i];
        if (!is_array(item)) {
            (void)jpath_filter_array_item_narr_lst(item, step, &list);
            if (is_object(item)) after_object = true;
        } else if (item->is_virtual) {
            return VXJSON_ERR_PATH;
        } else if (after_object) {
            list_append(&list, item);
        } else {
            for (uint32_t j = 0; j < item->count; j++) list_append(&list, item->items[j]);
            after_object = false;
        }
    }
    return json_virtual_array_create(ctx, out, &list);
}

VXJSON_API int32_t jpath_filter_array_item(jlpca_ctx *ctx, json_node *node,
                                           const jpath_filter *step, json_node **out) {
    *out = nullptr;
    if (!node) return VXJSON_ERR_PATH_NO_MATCH;
    if (!is_array(node)) {
        const bool pg_last = ctx->compat == JLPCA_COMPAT_PG && step->first_index == -1;
        if (step->first_index != 0 && !pg_last) return VXJSON_ERR_PATH_NO_MATCH;
        return jpath_filter_array_item_narr(node, step, out);
    }
    jpath_result_list list{};
    if (node->is_virtual) (void)jpath_filter_array_item_virtual(ctx, node, step, &list);
    else (void)jpath_filter_array_item_entity(ctx, node, step, &list);
    return json_virtual_array_create(ctx, out, &list);
}

} // extern "C"
