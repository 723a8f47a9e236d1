// Setting by path, one step on an object or on an array.  An object step
// finds its member from the end, so among repeated names the last one is
// changed; an array step takes its position from a subscript (MySQL) or
// from a key read as an integer (text-array paths, negative from the end).
// What the last step may do depends on set_mode: replace an existing
// value (1, 2), add a missing one (2, 3).
#include <cstdint>

#include "change_internal.h"
#include "report.h"
#include "report_sites.h"
#include "vx_number.h"

using namespace vxjson;

namespace {

constexpr uint32_t STEP_SUBSCRIPT = 4;
constexpr uint32_t DIALECT_PG = 1, DIALECT_MYSQL = 2;

// The position a text-array key names in an array of `count` elements:
// 0 with *pos set, or -3115 for a key that is no 32-bit integer.
int32_t text_position(const jpath_filter *step, uint32_t count, int64_t *pos) {
    int64_t v = 0;
    if (step->key_len == 0 || str2int64(step->key, step->key_len, &v) != 0 || v < INT32_MIN ||
        v > INT32_MAX)
        return VXJSON_ERR_TEXT_PATH_INDEX;
    *pos = v < 0 ? v + int64_t(count) : v;
    return 0;
}

} // namespace

extern "C" {

VXJSON_API int32_t jsonb_set_object_with_path_element(json_node **current, json_node *value,
                                                      jpath_filter *step, jlpca_ctx *ctx,
                                                      int32_t *last, int32_t *done,
                                                      uint32_t dialect) {
    json_node *object = *current;
    if (step->kind == STEP_SUBSCRIPT) {
        // Position 0 of a value that is no array is the value itself.
        if (step->first_index != 0) *done = 0;
        return 0;
    }
    json_keyval *kv = object->last_member;
    while (kv && !jpath_filter_object_keyval_equal(ctx, kv, step)) kv = kv->prev;
    if (kv && *last) {
        if (may_replace(ctx)) kv->value = value;
        return 0;
    }
    if (kv) {
        if (dialect == DIALECT_PG) {
            *current = kv->value;
            return 0;
        }
        return jsonb_set_with_array_path(current, value, &kv->value, step, ctx, last);
    }
    if (!(*last && may_add(ctx))) {
        *done = 0;
        return 0;
    }
    json_keyval *added;
    if (int32_t rc = json_object_add_keyval(ctx, object, step->key, step->key_len, &added))
        return report(rc, SRC_JPATH, site::SET_ADD_MEMBER);
    added->value = value;
    value->parent = object;
    return 0;
}

VXJSON_API int32_t jsonb_set_array_with_path_element(json_node **current, json_node *value,
                                                     jpath_filter *step, jlpca_ctx *ctx,
                                                     int32_t *last, int32_t *done,
                                                     uint32_t dialect) {
    json_node *array = *current;
    int64_t pos = 0;
    if (dialect == DIALECT_MYSQL) {
        if (step->kind != STEP_SUBSCRIPT) {
            *done = 0;
            return 0;
        }
        pos = step->first_index;
    } else if (int32_t rc = text_position(step, array->count, &pos)) {
        return rc;
    }
    if (pos >= 0 && pos < int64_t(array->count)) {
        json_node **slot = &array->items[pos];
        if (*last) {
            if (may_replace(ctx)) *slot = value;
            return 0;
        }
        if (dialect == DIALECT_PG) {
            *current = *slot;
            return 0;
        }
        return jsonb_set_with_array_path(current, value, slot, step, ctx, last);
    }
    // Out of range, before the first element as well as past the last: an
    // addition goes at the end.
    if (!(*last && may_add(ctx))) {
        *done = 0;
        return 0;
    }
    if (int32_t rc = array_insert_at(ctx, array, value, array->count, 1))
        return report(rc, SRC_JPATH, site::SET_APPEND);
    return 0;
}

} // extern "C"
