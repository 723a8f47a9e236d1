// Removal by path: one member or one element goes, in place, and the whole
// document comes back as text.  The PostgreSQL form takes a path of one
// step after the root (a key or a position, negative from the end); the
// MySQL form takes a list of paths, each applied to what the previous ones
// left.  Both share the two removers below.
//
// Nothing is allocated until the text is written, so a failed removal
// leaves the tree whole: either the member or element is out, fully
// unlinked, or nothing changed.
#include <cstring>

#include "change_internal.h"
#include "links.h"
#include "report.h"
#include "report_sites.h"

using namespace vxjson;

namespace {

constexpr uint32_t STEP_ROOT = 0, STEP_FIELD = 3, STEP_SUBSCRIPT = 4;

} // namespace

extern "C" {

VXJSON_API int32_t jsonb_remove_array_element_with_path(json_node *array, jpath_filter *step,
                                                        jlpca_ctx *) {
    if (step->kind == STEP_FIELD) return 0;
    int64_t i = step->first_index;
    if (i < 0) i += array->count;
    if (i < 0 || i >= int64_t(array->count)) return 0;
    const uint32_t at = uint32_t(i);
    std::memmove(array->items + at, array->items + at + 1,
                 sizeof(json_node *) * (array->count - at - 1));
    array->count--;
    return 0;
}

VXJSON_API int32_t jsonb_remove_object_with_path_element(json_node *object, jpath_filter *step,
                                                         jlpca_ctx *ctx) {
    if (step->kind == STEP_SUBSCRIPT) return VXJSON_ERR_REMOVE_SUBSCRIPT;
    // A scalar holds no members: there is nothing to find in it.
    if (object->type != JSON_OBJECT) return 0;
    for (json_keyval *kv = object->last_member; kv; kv = kv->prev) {
        if (jpath_filter_object_keyval_equal(ctx, kv, step)) {
            member_unlink(object, kv);
            return 0;
        }
    }
    return 0;
}

VXJSON_API int32_t jsonb_remove_with_path(json_node *document, jpath *path, jlpca_ctx *ctx,
                                          char **out, uint32_t *out_len) {
    jpath_filter *step = path->first_filter ? path->first_filter->next : nullptr;
    if (!step) return report(VXJSON_ERR_PATH, SRC_JPATH, site::REMOVE_PG_STEP);
    const int32_t rc = document->type == JSON_ARRAY
                           ? jsonb_remove_array_element_with_path(document, step, ctx)
                           : jsonb_remove_object_with_path_element(document, step, ctx);
    if (rc) return report(rc, SRC_JPATH, site::REMOVE_PG_STEP);
    return document_text(ctx, document, JSON_CONV_PLAIN, site::REMOVE_PG_WRITE, out, out_len);
}

VXJSON_API int32_t json_remove_mysql(json_node *document, jpath *path, jlpca_ctx *ctx) {
    jpath_filter *last = path->last_filter;
    if (!last || last->kind == STEP_ROOT) return VXJSON_ERR_MULTI_STEP;
    json_node *found = nullptr;
    if (int32_t rc = jpath_filter_mysql(document, path, ctx, 0, &found))
        return report(rc, SRC_JPATH, site::REMOVE_FIND);
    if (!found || !found->parent) return 0;
    json_node *parent = found->parent;
    int32_t rc = 0;
    if (parent->type == JSON_ARRAY) {
        rc = jsonb_remove_array_element_with_path(parent, last, ctx);
    } else {
        // A subscript 0 on a value that is no array names the value itself:
        // the member holding it goes.
        jpath_filter *field = last;
        while (field && field->kind != STEP_FIELD) field = field->prev;
        if (!field) return 0;
        rc = jsonb_remove_object_with_path_element(parent, field, ctx);
    }
    return rc ? report(rc, SRC_JPATH, site::REMOVE_APPLY) : 0;
}

VXJSON_API int32_t json_remove_mysql_path_array(json_node *document, uint32_t path_count,
                                                jpath *paths, jlpca_ctx *ctx, char **out,
                                                uint32_t *out_len) {
    *out = nullptr;
    *out_len = 0;
    for (uint32_t i = 0; i < path_count; i++)
        if (int32_t rc = json_remove_mysql(document, &paths[i], ctx))
            return report(rc, SRC_JPATH, site::REMOVE_EACH);
    return document_text(ctx, document, JSON_CONV_MYSQL, site::REMOVE_WRITE, out, out_len);
}

} // extern "C"
