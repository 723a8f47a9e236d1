// MySQL's JSON_ARRAY_APPEND and JSON_ARRAY_INSERT, in place.  The path is
// evaluated with the MySQL rules and no step that may match several values.
// Append adds at the end of the array found, or makes the value found into
// an array [found, new] in its own place; insert puts the new value before
// the element found, and a position past the end appends.
//
//   JSON_ARRAY_INSERT('[1,2]', '$[9]', 3):  $[9] finds nothing, so the last
//   step is dropped from the compiled path for good and $ is tried: [1,2,3].
//
// json_set_parent is how a new node takes the place of an old one: it
// looks for the member from the front, so among repeated names it changes
// the first, while the evaluation found the last.  Both are kept so.
#include "change_internal.h"
#include "report.h"
#include "report_sites.h"

using namespace vxjson;

namespace {

constexpr uint32_t STEP_FIELD = 3, STEP_SUBSCRIPT = 4;
constexpr uint32_t OPT_INSERT = 1, OPT_SINGLE_VALUE = 2;

// Drop the last step of a path, for good.
void drop_last_step(jpath *path) {
    jpath_filter *last = path->last_filter;
    if (!last) return;
    path->last_filter = last->prev;
    if (last->prev) last->prev->next = nullptr;
    else path->first_filter = nullptr;
    last->prev = last->next = nullptr;
    path->filter_count--;
}

// Append mode on a value that is no array: [found, new] in found's place.
// The pair is built whole and linked last, so a failure changes nothing.
int32_t wrap_in_place(json_node **document, json_node *found, json_node *value, jpath *path,
                      jlpca_ctx *ctx) {
    json_node *pair;
    if (int32_t rc = wrap_pair(ctx, found, value, &pair))
        return report(rc, SRC_JPATH, site::ARRAY_ADD_WRAP_OLD);
    json_node *parent = found->parent;
    // No member of that exact name to take the pair: nothing is changed.
    if (parent && parent->type == JSON_OBJECT && path->last_filter &&
        path->last_filter->kind == STEP_FIELD &&
        !json_object_find_keyval_by_name(parent, path->last_filter->key,
                                         path->last_filter->key_len))
        return 0;
    if (!parent) {
        *document = pair;
    } else if (int32_t rc = json_set_parent(parent, pair, path->last_filter)) {
        return rc;
    }
    settle_pair(pair);
    return 0;
}

} // namespace

extern "C" {

VXJSON_API int32_t json_set_parent(json_node *container, json_node *node, jpath_filter *step) {
    if (container->type == JSON_ARRAY) {
        if (!step || step->kind != STEP_SUBSCRIPT || step->first_index < 0 ||
            uint32_t(step->first_index) >= container->count)
            return VXJSON_ERR_MULTI_STEP;
        node->parent = container;
        container->items[step->first_index] = node;
        return 0;
    }
    if (container->type == JSON_OBJECT) {
        if (!step || step->kind != STEP_FIELD) return VXJSON_ERR_MULTI_STEP;
        node->parent = container;
        if (json_keyval *kv = json_object_find_keyval_by_name(container, step->key, step->key_len))
            kv->value = node;
        return 0;
    }
    return VXJSON_ERR_MULTI_STEP;
}

VXJSON_API int32_t json_array_add_element_mysql(json_node **document, json_node *value, jpath *path,
                                                jlpca_ctx *ctx, int32_t insert) {
    json_node *found = nullptr;
    if (int32_t rc = jpath_filter_mysql(*document, path, ctx, 0, &found))
        return report(rc, SRC_JPATH, site::ARRAY_ADD_FIND);
    if (found && insert) {
        json_node *parent = found->parent;
        const jpath_filter *last = path->last_filter;
        if (!parent || parent->type != JSON_ARRAY || !last || last->first_index < 0 ||
            uint32_t(last->first_index) > parent->count)
            return 0;
        return array_insert_at(ctx, parent, value, uint32_t(last->first_index), ctx->array_spare);
    }
    if (found && found->type == JSON_ARRAY)
        return array_insert_at(ctx, found, value, found->count, ctx->array_spare);
    if (found) return wrap_in_place(document, found, value, path, ctx);
    if (!insert) return 0;
    drop_last_step(path);
    if (int32_t rc = jpath_filter_mysql(*document, path, ctx, 0, &found))
        return report(rc, SRC_JPATH, site::ARRAY_ADD_REFIND);
    if (found && found->type == JSON_ARRAY)
        return array_insert_at(ctx, found, value, found->count, ctx->array_spare);
    return 0;
}

VXJSON_API int32_t json_array_add_element_mysql_path_array(json_node *document, uint32_t path_count,
                                                           jpath *paths, json_node *values,
                                                           jlpca_ctx *ctx, uint32_t options,
                                                           char **out, uint32_t *out_len) {
    *out = nullptr;
    *out_len = 0;
    const int32_t insert = (options & OPT_INSERT) != 0;
    if (options & OPT_SINGLE_VALUE) {
        if (path_count > 0)
            if (int32_t rc =
                    json_array_add_element_mysql(&document, values, &paths[0], ctx, insert))
                return report(rc, SRC_JPATH, site::ARRAY_ADD_SINGLE);
    } else {
        if (path_count > 0 && (values->type != JSON_ARRAY || values->count < path_count))
            return report(VXJSON_ERR_PATH, SRC_JPATH, site::ARRAY_ADD_EACH);
        for (uint32_t i = 0; i < path_count; i++)
            if (int32_t rc = json_array_add_element_mysql(&document, values->items[i], &paths[i],
                                                          ctx, insert))
                return report(rc, SRC_JPATH, site::ARRAY_ADD_EACH);
    }
    return document_text(ctx, document, JSON_CONV_MYSQL, site::ARRAY_ADD_WRITE, out, out_len);
}

} // extern "C"
