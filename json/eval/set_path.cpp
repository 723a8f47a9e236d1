// Setting by path: the walk over a compiled path, shared by PostgreSQL's
// jsonb_set (a text-array path, dialect 1, every step a key that names a
// member or a position) and MySQL's JSON_SET, JSON_INSERT and JSON_REPLACE
// (dialect 2, set_mode 2, 3 and 1).  Each step moves `current` one level
// down; the last step changes the tree in place.  Two flags travel with the
// walk: *last (the step is the last one, or a run of subscripts was already
// dealt with) and *done (cleared when the path leads nowhere, which ends
// the walk with no change and no error).
//
//   $.a[5] on {"a":1}:   $ -> current {"a":1};  .a -> member a, and the rest
//   of the path is subscripts on a scalar: a becomes [1, new].
//
// Values are put in as they are, never copied.  A step fails only for a
// bad path or for memory, and then before anything is linked.
#include "change_internal.h"
#include "report.h"
#include "report_sites.h"

using namespace vxjson;

namespace {

constexpr uint32_t STEP_ROOT = 0, STEP_ALL_ELEMENTS = 1, STEP_ALL_MEMBERS = 2, STEP_SUBSCRIPT = 4;
constexpr uint32_t DIALECT_MYSQL = 2, DIALECT_PG = 1;

} // namespace

extern "C" {

VXJSON_API int32_t jsonb_set_is_multi(const jpath_filter *step) {
    if (step->kind == STEP_ALL_ELEMENTS || step->kind == STEP_ALL_MEMBERS) return 1;
    if (step->kind == STEP_SUBSCRIPT)
        return step->multi == 1 || (step->index_head && step->index_head->end != 0);
    return 0;
}

VXJSON_API int32_t jsonb_set_with_array_path(json_node **current, json_node *value,
                                             json_node **slot, jpath_filter *step, jlpca_ctx *ctx,
                                             int32_t *last) {
    if (!step->next) {
        *last = 1;
        return 0;
    }
    jpath_filter *s = step->next;
    for (; s->next; s = s->next) {
        if (s->kind != STEP_SUBSCRIPT || (*slot)->type == JSON_ARRAY || s->first_index != 0) {
            *current = *slot;
            return 0;
        }
    }
    if (s->kind != STEP_SUBSCRIPT || (*slot)->type == JSON_ARRAY) {
        *current = *slot;
        return 0;
    }
    // A value that is no array, and nothing but subscripts left: position 0
    // is the value itself, any other position makes it an array.
    if (s->first_index == 0) {
        if (may_replace(ctx)) *slot = value;
    } else if (may_add(ctx)) {
        json_node *pair;
        if (int32_t rc = wrap_pair(ctx, *slot, value, &pair)) return rc;
        *slot = pair;
        settle_pair(pair);
    }
    *last = 1;
    return 0;
}

VXJSON_API int32_t jsonb_set_with_path_element(json_node **current, json_node *value,
                                               jpath_filter *step, jlpca_ctx *ctx, int32_t *last,
                                               int32_t *done, uint32_t dialect) {
    if (dialect == DIALECT_MYSQL && jsonb_set_is_multi(step)) return VXJSON_ERR_MULTI_STEP;
    switch ((*current)->type) {
    case JSON_OBJECT:
        return jsonb_set_object_with_path_element(current, value, step, ctx, last, done, dialect);
    case JSON_ARRAY:
        return jsonb_set_array_with_path_element(current, value, step, ctx, last, done, dialect);
    default: *done = 0; return 0;
    }
}

VXJSON_API int32_t jsonb_set_with_path(json_node *document, json_node *value, jpath *path,
                                       jlpca_ctx *ctx, char **out, uint32_t *out_len) {
    if (document->type > JSON_ARRAY && path->dialect == DIALECT_PG)
        return VXJSON_ERR_TEXT_PATH_SCALAR;
    json_node *current = document;
    int32_t done = 1, last = 0;
    for (jpath_filter *step = path->first_filter; step; step = step->next) {
        last = step->next == nullptr;
        if (step->kind == STEP_ROOT && last) {
            // The path names the whole document.
            if (may_replace(ctx)) document = value;
            break;
        }
        if (step->kind == STEP_ROOT) {
            if (int32_t rc =
                    jsonb_set_with_array_path(&current, value, &document, step, ctx, &last))
                return report(rc, SRC_JPATH, site::SET_ROOT_PATH);
            if (last) break;
            continue;
        }
        if (int32_t rc = jsonb_set_with_path_element(&current, value, step, ctx, &last, &done,
                                                     path->dialect))
            return report(rc, SRC_JPATH, site::SET_ELEMENT);
        if (last || !done) break;
    }
    return document_text(ctx, document, JSON_CONV_JSON, site::SET_WRITE, out, out_len);
}

} // extern "C"
