// The gatherers of path evaluation: the walks that list the matches of one
// step over one object or one array, and the lookups that give a single
// member.  Their early stops (after an object value, after an object item)
// are how the server has always answered those paths, and are kept as they
// are.
#include <cstdlib>

#include "eval_internal.h"
#include "vx_alloc.h"

using namespace vxjson::eval;

namespace {

// Lists the values of the members named by the step, in member order,
// stopping right after one for which stop_after holds.
template <class Stop>
void gather_named(json_node *object, const jpath_filter *step, jpath_result_list *list,
                  Stop stop_after) {
    for (json_keyval *kv = object->first_member; kv; kv = kv->next) {
        if (!key_equal(kv, step)) continue;
        list_append(list, kv->value);
        if (stop_after(kv->value)) return;
    }
}

// Lists every member's value, stopping right after one for which
// stop_after holds.
template <class Stop>
void gather_values(json_node *object, jpath_result_list *list, Stop stop_after) {
    for (json_keyval *kv = object->first_member; kv; kv = kv->next) {
        list_append(list, kv->value);
        if (stop_after(kv->value)) return;
    }
}

// Predicates passed as function objects, named as functions.
// NOLINTBEGIN(readability-identifier-naming)
constexpr auto never = [](const json_node *) { return false; };
constexpr auto object_value = [](const json_node *v) { return v->type == JSON_OBJECT; };
constexpr auto container_value = [](const json_node *v) {
    return v->type == JSON_OBJECT || v->type == JSON_ARRAY;
};
// NOLINTEND(readability-identifier-naming)

// The standard subscript walk over an array of `count` items.  Positions
// are taken as unsigned 32-bit numbers, so a negative one ends the walk.
// Compiled paths keep their entries ascending and apart; a position at or
// below one already listed (possible only in entries made by hand) is
// passed over, so that no node is listed twice.
void subscript_walk(json_node *array, const jpath_filter *step, jpath_result_list *list) {
    const int64_t count = array->count;
    int64_t next_free = 0; // lowest position not listed yet
    for (const jpath_index *e = step->index_head; e; e = e->next) {
        if (e->end != 0 && e->start > e->end) continue;
        if (e->start < 0 || e->start >= count) return;
        const int64_t last = e->end != 0 ? e->end : e->start;
        for (int64_t i = e->start > next_free ? e->start : next_free; i <= last; i++) {
            if (i >= count) return;
            list_append(list, array->items[i]);
            next_free = i + 1;
        }
    }
}

} // namespace

extern "C" {

VXJSON_API int32_t jpath_filter_object_field_part_with_key(json_node *object,
                                                           const jpath_filter *step,
                                                           jpath_result_list *list) {
    gather_named(object, step, list, object_value);
    return 0;
}

VXJSON_API int32_t jpath_filter_object_field_part2_with_key(json_node *object,
                                                            const jpath_filter *step,
                                                            jpath_result_list *list) {
    gather_named(object, step, list, container_value);
    return 0;
}

VXJSON_API int32_t jpath_filter_object_field_all_with_key(json_node *object,
                                                          const jpath_filter *step,
                                                          jpath_result_list *list) {
    gather_named(object, step, list, never);
    return 0;
}

VXJSON_API int32_t jpath_filter_object_field_all(json_node *object, jpath_result_list *list) {
    gather_values(object, list, never);
    return 0;
}

VXJSON_API int32_t jpath_filter_object_field_part(json_node *object, jpath_result_list *list) {
    gather_values(object, list, object_value);
    return 0;
}

VXJSON_API int32_t jpath_filter_object_field_wildcard(json_node *object, const jpath_filter *step,
                                                      jpath_result_list *list) {
    if (step->next && step->next->kind == STEP_ALL_ELEMENTS)
        return jpath_filter_object_field_part(object, list);
    return jpath_filter_object_field_all(object, list);
}

VXJSON_API int32_t jpath_filter_array_item_entity(jlpca_ctx *ctx, json_node *array,
                                                  const jpath_filter *step,
                                                  jpath_result_list *list) {
    if (ctx->compat == JLPCA_COMPAT_PG)
        return jpath_filter_array_item_entity_pg(ctx, array, step, list);
    subscript_walk(array, step, list);
    return 0;
}

VXJSON_API int32_t jpath_filter_array_item_entity_pg(jlpca_ctx *, json_node *array,
                                                     const jpath_filter *step,
                                                     jpath_result_list *list) {
    if (!step->index_head) return 0;
    int64_t at = static_cast<int32_t>(step->index_head->start);
    if (at < 0) at += array->count;
    if (at >= 0 && at < int64_t(array->count)) list_append(list, array->items[at]);
    return 0;
}

VXJSON_API int32_t jpath_filter_array_item_virtual(jlpca_ctx *ctx, json_node *array,
                                                   const jpath_filter *step,
                                                   jpath_result_list *list) {
    for (uint32_t i = 0; i < array->count; i++) {
        json_node *item = array->items[i];
        if (is_array(item)) {
            (void)jpath_filter_array_item_entity(ctx, item, step, list);
            continue;
        }
        if (step->first_index != 0) continue;
        (void)jpath_filter_array_item_narr_lst(item, step, list);
        if (is_object(item)) break;
    }
    return 0;
}

VXJSON_API int32_t jpath_filter_array_item_narr_lst(json_node *node, const jpath_filter *step,
                                                    jpath_result_list *list) {
    json_node *self = nullptr;
    if (jpath_filter_array_item_narr(node, step, &self) == 0) list_append(list, self);
    return 0;
}

VXJSON_API int32_t jpath_filter_array_item_narr(json_node *node, const jpath_filter *step,
                                                json_node **out) {
    *out = nullptr;
    const jpath_filter *next = step->next;
    if (next && !(is_object(node) && (next->kind == STEP_WILDCARD || next->kind == STEP_FIELD)))
        return VXJSON_ERR_PATH_NO_MATCH;
    *out = node;
    return 0;
}

VXJSON_API int32_t jpath_filter_object_field_only_first(json_node *object, const jpath_filter *step,
                                                        json_node **out) {
    *out = nullptr;
    for (json_keyval *kv = object->first_member; kv; kv = kv->next)
        if (key_equal(kv, step)) {
            *out = kv->value;
            return 0;
        }
    return VXJSON_ERR_PATH_NO_MATCH;
}

VXJSON_API int32_t jpath_filter_object_field_only_last(jlpca_ctx *ctx, json_node *object,
                                                       const jpath_filter *step, json_node **out) {
    *out = nullptr;
    const bool backwards = ctx->path_last_key == 1;
    for (json_keyval *kv = backwards ? object->last_member : object->first_member; kv;
         kv = backwards ? kv->prev : kv->next)
        if (jpath_filter_object_keyval_equal(ctx, kv, step)) {
            *out = kv->value;
            return 0;
        }
    return VXJSON_ERR_PATH_NO_MATCH;
}

VXJSON_API int32_t jpath_filter_object_keyval_equal(jlpca_ctx *ctx, const json_keyval *member,
                                                    const jpath_filter *step) {
    const bool same_kind = !step->path || uint32_t(ctx->escape_mode) == step->path->fun_kind;
    if (same_kind || member->flags == 0) return key_equal(member, step);
    // An unescaped name is always shorter than its escaped form.
    if (member->name_len <= step->key_len) return 0;
    char *plain = nullptr;
    uint32_t plain_len = 0;
    if (json_string_to_value_remove_escape(ctx->env, ctx->allocator, member->name, member->name_len,
                                           &plain, &plain_len) < 0)
        return 0;
    const int32_t equal = json_object_keyval_name_equal(plain, plain_len, step->key, step->key_len);
    if (plain) vx_free(ctx->env, ctx->allocator, plain);
    return equal;
}

} // extern "C"
