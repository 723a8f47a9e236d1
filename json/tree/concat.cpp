// PostgreSQL's jsonb || jsonb and jsonb_strip_nulls.
//
// Concatenation into an array never builds a tree: the two values' texts
// are spliced between brackets with one comma, always written, so an empty
// array on either side leaves a dangling comma ("[,1]", "[1,]").  Callers
// depend on that exact text.  Concatenation of objects adds b's members to
// a through the ordinary member policy of the context (duplicates kept,
// replaced or refused; sorted or appended).
#include "links.h"
#include "report.h"
#include "report_sites.h"
#include "result_text.h"
#include "vxjson.h"
#include "vxstr.h"

using namespace vxjson;
using namespace vxjson::site;

namespace {

// One side of an array concatenation: an array's elements without their
// brackets, any other value whole.
int32_t write_side(jlpca_ctx *ctx, vxstr *s, const json_node *v) {
    if (v->type == JSON_ARRAY)
        return json_array_items_to_string(ctx, ctx->allocator, s, v, JSON_FMT_COMPACT, 1, 1,
                                          JSON_CONV_JSON);
    return json_to_string(ctx, ctx->allocator, s, v, JSON_FMT_COMPACT, 1, 1, JSON_CONV_JSON);
}

int32_t append(jlpca_ctx *ctx, vxstr *s, const char *text) {
    return vxstr_append(ctx->env, ctx->allocator, s, text);
}

// Strip the nulls below one value, reporting a failure at the line for its type.
int32_t strip_below(json_node *v, int32_t object_line, int32_t array_line) {
    if (v->type == JSON_OBJECT) {
        if (int32_t rc = jsonb_strip_nulls_object(v)) return report_json(rc, object_line);
    } else if (v->type == JSON_ARRAY) {
        if (int32_t rc = jsonb_strip_nulls_array(v)) return report_json(rc, array_line);
    }
    return 0;
}

} // namespace

extern "C" {

VXJSON_API int32_t jsonb_concat(json_node *a, json_node *b, jlpca_ctx *ctx, char **out,
                                uint32_t *out_len) {
    const bool a_object = a->type == JSON_OBJECT;
    const bool a_array = a->type == JSON_ARRAY;
    const bool b_object = b->type == JSON_OBJECT;
    const bool b_array = b->type == JSON_ARRAY;
    if (a_object && b_object) return jsonb_concat_to_object(a, b, ctx, out, out_len);
    // An object goes with an object or an array, never with a scalar.
    if ((a_object && !b_array) || (!a_object && !a_array && b_object))
        return VXJSON_ERR_CONCAT_SCALAR;
    return jsonb_concat_to_array(a, b, ctx, out, out_len);
}

VXJSON_API int32_t jsonb_concat_to_object(json_node *a, json_node *b, jlpca_ctx *ctx, char **out,
                                          uint32_t *out_len) {
    for (json_keyval *kb = b->first_member; kb; kb = kb->next) {
        json_keyval *kv;
        if (int32_t rc = json_object_add_keyval(ctx, a, kb->name, kb->name_len, &kv))
            return report_json(rc, CONCAT_ADD_MEMBER);
        kv->value = kb->value;
    }
    return result_text_of(ctx, a, JSON_CONV_JSON, CONCAT_WRITE_OBJECT, out, out_len);
}

VXJSON_API int32_t jsonb_concat_to_array(json_node *a, json_node *b, jlpca_ctx *ctx, char **out,
                                         uint32_t *out_len) {
    vxstr *s = result_text_begin(ctx);
    if (!s) return report_json(VXJSON_ERR_NOMEM, CONCAT_FIRST);
    int32_t rc = append(ctx, s, "[");
    if (rc >= 0) rc = write_side(ctx, s, a);
    if (rc < 0) return result_text_end(ctx, s, rc, CONCAT_FIRST, out, out_len);
    rc = append(ctx, s, ",");
    if (rc >= 0) rc = write_side(ctx, s, b);
    if (rc >= 0) rc = append(ctx, s, "]");
    return result_text_end(ctx, s, rc, CONCAT_SECOND, out, out_len);
}

VXJSON_API int32_t jsonb_strip_nulls_object(json_node *node) {
    for (json_keyval *kv = node->first_member, *next; kv; kv = next) {
        next = kv->next;
        if (kv->value->type == JSON_NULL) member_unlink(node, kv);
        else if (int32_t rc = strip_below(kv->value, CONCAT_STRIP_OBJECT_IN_OBJECT,
                                          CONCAT_STRIP_ARRAY_IN_OBJECT))
            return rc;
    }
    return 0;
}

VXJSON_API int32_t jsonb_strip_nulls_array(json_node *node) {
    // Null elements of arrays stay; only members are dropped.
    for (uint32_t k = 0; k < node->count; k++)
        if (int32_t rc = strip_below(node->items[k], CONCAT_STRIP_OBJECT_IN_ARRAY,
                                     CONCAT_STRIP_ARRAY_IN_ARRAY))
            return rc;
    return 0;
}

} // extern "C"
