// Path evaluation by the compatibility dialects' rules (the MySQL-style
// path functions, and the function layer whenever the dialect is not the
// standard one): a path that matches nothing, or a step that does not
// apply, gives no value rather than an error; a field step takes the last
// member of its name and never looks into a document array; the caller
// may forbid steps that can match several values.
#include "eval_internal.h"

using namespace vxjson::eval;

namespace {

// Can the step match several values?  Every element, every member, or
// subscripts that are a range or more than one.
bool may_match_many(const jpath_filter *step) {
    switch (step->kind) {
    case STEP_ALL_ELEMENTS:
    case STEP_WILDCARD: return true;
    case STEP_SUBSCRIPT: return (step->index_head && step->index_head->end != 0) || step->multi;
    default: return false;
    }
}

using step_fn = int32_t (*)(jlpca_ctx *, json_node *, const jpath_filter *, json_node **);

step_fn evaluator_of(uint32_t kind) {
    switch (kind) {
    case STEP_ALL_ELEMENTS: return jpath_filter_all_array_mysql;
    case STEP_WILDCARD: return jpath_filter_wildcard_mysql;
    case STEP_FIELD: return jpath_filter_field_item_mysql;
    case STEP_SUBSCRIPT: return jpath_filter_array_item_mysql;
    default: return nullptr;
    }
}

} // namespace

extern "C" {

VXJSON_API int32_t jpath_filter_mysql(json_node *doc, const jpath *path, jlpca_ctx *ctx,
                                      int32_t multi_allowed, json_node **out) {
    *out = doc;
    json_node *cur = doc;
    for (const jpath_filter *step = path->first_filter; step; step = step->next) {
        if (!cur) {
            *out = nullptr;
            return 0;
        }
        const step_fn eval = evaluator_of(step->kind);
        if (!eval) continue;
        json_node *next = nullptr;
        const int32_t rc = !multi_allowed && may_match_many(step) ? VXJSON_ERR_MULTI_STEP
                                                                  : eval(ctx, cur, step, &next);
        if (rc < 0) {
            *out = nullptr;
            return rc == VXJSON_ERR_PATH_NO_MATCH ? 0 : rc;
        }
        cur = next;
    }
    *out = cur;
    return 0;
}

VXJSON_API int32_t jpath_filter_field_item_mysql(jlpca_ctx *ctx, json_node *node,
                                                 const jpath_filter *step, json_node **out) {
    *out = nullptr;
    if (is_object(node)) return jpath_filter_object_field_mysql(ctx, node, step, out);
    if (is_array(node)) return jpath_filter_array_field_mysql(ctx, node, step, out);
    return 0;
}

VXJSON_API int32_t jpath_filter_object_field_mysql(jlpca_ctx *, json_node *object,
                                                   const jpath_filter *step, json_node **out) {
    *out = last_named_value(object, step);
    return 0;
}

VXJSON_API int32_t jpath_filter_array_field_mysql(jlpca_ctx *ctx, json_node *array,
                                                  const jpath_filter *step, json_node **out) {
    *out = nullptr;
    if (!array->is_virtual) return 0;
    jpath_result_list list{};
    for (uint32_t i = 0; i < array->count; i++) {
        json_node *item = array->items[i];
        if (!is_object(item)) continue;
        if (json_node *v = last_named_value(item, step)) list_append(&list, v);
    }
    return json_virtual_array_create(ctx, out, &list);
}

VXJSON_API int32_t jpath_filter_wildcard_mysql(jlpca_ctx *ctx, json_node *node,
                                               const jpath_filter *, json_node **out) {
    *out = nullptr;
    jpath_result_list list{};
    if (is_object(node)) {
        (void)jpath_filter_object_field_all(node, &list);
    } else if (is_virtual(node)) {
        for (uint32_t i = 0; i < node->count; i++)
            if (is_object(node->items[i]))
                (void)jpath_filter_object_field_all(node->items[i], &list);
    } else {
        return 0;
    }
    return json_virtual_array_create(ctx, out, &list);
}

VXJSON_API int32_t jpath_filter_all_array_mysql(jlpca_ctx *ctx, json_node *node,
                                                const jpath_filter *, json_node **out) {
    *out = nullptr;
    if (!is_array(node)) return 0;
    jpath_result_list list{};
    if (!node->is_virtual) {
        for (uint32_t i = 0; i < node->count; i++) list_append(&list, node->items[i]);
        return json_virtual_array_create(ctx, out, &list);
    }
    for (uint32_t i = 0; i < node->count; i++) {
        json_node *item = node->items[i];
        if (!is_array(item)) continue;
        if (item->is_virtual) return VXJSON_ERR_PATH;
        for (uint32_t j = 0; j < item->count; j++) list_append(&list, item->items[j]);
    }
    return json_virtual_array_create(ctx, out, &list);
}

VXJSON_API int32_t jpath_filter_array_item_mysql(jlpca_ctx *ctx, json_node *node,
                                                 const jpath_filter *step, json_node **out) {
    *out = nullptr;
    if (!node) return 0;
    if (!is_array(node)) {
        if (step->first_index == 0) *out = node;
        return 0;
    }
    jpath_result_list list{};
    const int32_t rc = node->is_virtual
                           ? jpath_filter_array_item_virtual_mysql(ctx, node, step, &list)
                           : jpath_filter_array_item_entity(ctx, node, step, &list);
    if (rc < 0) return report_jpath(rc, vxjson::site::QUERY_MYSQL_SUBSCRIPT);
    return json_virtual_array_create(ctx, out, &list);
}

VXJSON_API int32_t jpath_filter_array_item_virtual_mysql(jlpca_ctx *ctx, json_node *array,
                                                         const jpath_filter *step,
                                                         jpath_result_list *list) {
    for (uint32_t i = 0; i < array->count; i++) {
        json_node *item = array->items[i];
        if (is_virtual(item)) return VXJSON_ERR_PATH;
        if (is_array(item)) {
            if (int32_t rc = jpath_filter_array_item_entity(ctx, item, step, list); rc < 0)
                return rc;
        } else if (step->first_index == 0) {
            list_append(list, item);
        }
    }
    return 0;
}

VXJSON_API int32_t jpath_json_contains_path(json_node *doc, const jpath *path, jlpca_ctx *ctx,
                                            int32_t *found) {
    *found = 0;
    json_node *match = nullptr;
    if (int32_t rc = jpath_filter_mysql(doc, path, ctx, 1, &match); rc < 0) return rc;
    *found = match != nullptr;
    return 0;
}

} // extern "C"
