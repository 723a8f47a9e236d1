// MySQL's JSON_MERGE_PRESERVE and JSON_MERGE_PATCH, done in place.
//
// The object merge walks both member lists once, side by side, so both must
// be in sorted-key order (shorter names first, equal lengths bytewise), as
// the reader leaves them with sorted_keys set.  Members of b are moved into
// a, never copied; b is left holding only the members whose names a already
// had.
//
//   a: {"a":1, "c":2}        b: {"b":3, "c":4, "dd":5}
//        i                        j         step: j sorts before i -> move
//   a: {"a":1, "b":3, "c":[2,4], "dd":5}   (preserve)
//
// The preserve merge of anything but two objects builds a new array as a
// pointer array only; its elements are the inputs' own nodes.
#include <cstring>

#include "links.h"
#include "report.h"
#include "report_sites.h"
#include "result_text.h"
#include "tree_internal.h"
#include "vxjson.h"

using namespace vxjson;
using namespace vxjson::site;

namespace {

// Negative when j's name sorts before i's, 0 when equal, positive after:
// the order of the sorted insertion that built the lists.
int name_order(const json_keyval *j, const json_keyval *i) {
    return vxjson::name_order(j->name, j->name_len, i->name, i->name_len);
}

bool is_null(const json_node *n) { return n->type == JSON_NULL; }

// Append a (its elements when it is an array) to the pointer array out.
void append_spread(json_node *out, const json_node *a) {
    if (a->type != JSON_ARRAY) {
        out->items[out->count++] = const_cast<json_node *>(a);
        return;
    }
    for (uint32_t k = 0; k < a->count; k++) out->items[out->count++] = a->items[k];
}

uint32_t spread_count(const json_node *a) { return a->type == JSON_ARRAY ? a->count : 1; }

} // namespace

extern "C" {

VXJSON_API int32_t json_merge_mysql(json_node *a, json_node *b, int32_t patch, jlpca_ctx *ctx,
                                    char **out, uint32_t *out_len) {
    json_node *result;
    int32_t rc = patch ? json_merge_patch_mysql(a, b, ctx, &result)
                       : json_merge_preserve_mysql(a, b, ctx, &result);
    if (rc) return report_json(rc, MERGE_RESULT);
    return result_text_of(ctx, result, JSON_CONV_MYSQL, MERGE_WRITE, out, out_len);
}

VXJSON_API int32_t json_merge_preserve_mysql(json_node *a, json_node *b, jlpca_ctx *ctx,
                                             json_node **out) {
    if (a->type == JSON_OBJECT && b->type == JSON_OBJECT)
        return json_object_merge_mysql(a, b, ctx, 0, out);
    json_node *merged = json_mem_create(ctx, JSON_ARRAY);
    if (!merged || json_array_mem_alloc_arr(ctx, spread_count(a) + spread_count(b), merged))
        return report_json(VXJSON_ERR_NOMEM, MERGE_PRESERVE_ARRAY);
    // Elements stay shared with the inputs, parents unchanged.
    append_spread(merged, a);
    append_spread(merged, b);
    *out = merged;
    return 0;
}

VXJSON_API int32_t json_merge_patch_mysql(json_node *a, json_node *b, jlpca_ctx *ctx,
                                          json_node **out) {
    // A non-object patch replaces the target, and a non-object target is
    // replaced by the patch as it stands, nulls inside it included.
    if (a->type != JSON_OBJECT || b->type != JSON_OBJECT) {
        *out = b;
        return 0;
    }
    return json_object_merge_mysql(a, b, ctx, 1, out);
}

VXJSON_API int32_t json_object_merge_mysql(json_node *a, json_node *b, jlpca_ctx *ctx,
                                           int32_t patch, json_node **out) {
    json_keyval *i = a->first_member;
    json_keyval *j = b->first_member;
    while (i && j) {
        const int order = name_order(j, i);
        if (order > 0) {
            i = i->next;
            continue;
        }
        if (order < 0) {
            json_keyval *j_next = j->next;
            member_unlink(b, j);
            if (!(patch && is_null(j->value))) member_insert_before(a, i, j);
            j = j_next;
            continue;
        }
        json_keyval *i_next = i->next;
        if (patch && is_null(j->value)) {
            member_unlink(a, i);
        } else if (patch) {
            if (int32_t rc = json_merge_patch_mysql(i->value, j->value, ctx, &i->value))
                return report_json(rc, MERGE_PATCH_VALUE);
        } else {
            if (int32_t rc = json_merge_preserve_mysql(i->value, j->value, ctx, &i->value))
                return report_json(rc, MERGE_PRESERVE_VALUE);
        }
        i = i_next;
        j = j->next;
    }
    // Members of b past the end of a; a moved member keeps its value as it
    // is, so nulls nested inside it stay even in patch mode.
    while (j) {
        json_keyval *j_next = j->next;
        member_unlink(b, j);
        if (!(patch && is_null(j->value))) member_append(a, j);
        j = j_next;
    }
    *out = a;
    return 0;
}

} // extern "C"
