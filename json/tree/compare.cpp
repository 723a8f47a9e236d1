// Equality of JSON values and the number-text conversions behind it.
//
// Numbers kept as text (JSON_DECIMAL) are compared through their text first:
// texts of equal length that match without regard to case ("1e5", "1E5")
// are equal without any conversion, which also keeps two identical texts
// beyond the double range equal.  Everything else goes through doubles, so
// 1, 1.0 and 10E-1 are equal, and so are long texts that differ only past
// a double's precision.
//
// json_cmp is the one dispatcher for the three comparison modes; the
// containment and overlap walks that it reaches live in contain.cpp.
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "links.h"
#include "number_text.h"
#include "report.h"
#include "report_sites.h"
#include "vx_number.h"
#include "vxjson.h"
#include "xdec.h"

using namespace vxjson;
using namespace vxjson::site;

namespace {

bool is_number(uint32_t type) { return type == JSON_INTEGER || type == JSON_DECIMAL; }

// A number text as a double, unreported: 0, or -6102 past the double range.
int32_t text_to_double(const char *text, uint32_t len, double *out) {
    double d = number_to_double(text, len);
    if (is_double_overflow(d)) return VXJSON_ERR_DOUBLE_OVERFLOW;
    *out = d;
    return 0;
}

// An integer and a number text are equal when their doubles are; a text
// that overflows equals nothing.
bool integer_equals_text(const json_node *integer, const json_node *decimal) {
    double d = 0;
    if (json_decimal_string_to_double(decimal, &d)) return false;
    return d == double(integer->ival);
}

} // namespace

extern "C" {

VXJSON_API int32_t json_type_is_same(const json_node *a, const json_node *b) {
    return a->type == b->type || (is_number(a->type) && is_number(b->type));
}

VXJSON_API int32_t json_decimal_string_to_double(const json_node *node, double *out) {
    if (int32_t rc = text_to_double(node->str, node->str_len, out))
        return report_json(rc, COMPARE_DECIMAL_TO_DOUBLE);
    return 0;
}

VXJSON_API int32_t json_decimal_string_cmp(const json_node *a, const json_node *b, int32_t *order) {
    const uint32_t len = a->str_len;
    if (len == b->str_len && (len == 0 || strncasecmp(a->str, b->str, len) == 0)) {
        *order = 0;
        return 0;
    }
    double da = 0, db = 0;
    if (int32_t rc = json_decimal_string_to_double(a, &da))
        return report_json(rc, COMPARE_DECIMAL_CMP_FIRST);
    if (int32_t rc = json_decimal_string_to_double(b, &db))
        return report_json(rc, COMPARE_DECIMAL_CMP_SECOND);
    // An unordered pair (NaN) falls through to 1.
    *order = da == db ? 0 : db > da ? -1 : 1;
    return 0;
}

VXJSON_API int32_t json_decimal_string_to_xdec(const json_node *node, xdec *out) {
    if (node->str_len == 0) return xdec_fill_zero(out);
    int32_t rc = xdec_from_char(out, node->str, node->str_len);
    if (rc == 0 || rc == XDEC_ERR_OVERFLOW) return rc;
    // Texts the exact reader refuses still get the value strtod gives them.
    double d;
    if (int32_t over = text_to_double(node->str, node->str_len, &d)) return over;
    return xdec_from_double(out, d);
}

VXJSON_API int32_t json_scalar_value_equal(const json_node *a, const json_node *b) {
    // Callers check compatibility first; checking again keeps a direct call
    // from reading the other node's payload as the wrong overlay.
    if (!json_type_is_same(a, b)) return 0;
    switch (a->type) {
    case JSON_INTEGER:
        if (b->type == JSON_INTEGER) return a->ival == b->ival;
        return integer_equals_text(a, b);
    case JSON_DECIMAL:
        if (b->type == JSON_INTEGER) return integer_equals_text(b, a);
        {
            int32_t order;
            return json_decimal_string_cmp(a, b, &order) == 0 && order == 0;
        }
    case JSON_STRING:
        return a->str_len == b->str_len &&
               (a->str_len == 0 || std::memcmp(a->str, b->str, a->str_len) == 0);
    case JSON_BOOLEAN: return a->bval == b->bval;
    case JSON_NULL: return 1;
    default:
        // Containers are not scalars; dates and datetimes are deliberately
        // never equal here, their callers compare them elsewhere.
        return 0;
    }
}

VXJSON_API int32_t json_cmp(const json_node *a, const json_node *b, uint32_t mode) {
    if (!json_type_is_same(a, b)) return 0;
    if (a->type == JSON_OBJECT) {
        if (mode == JSON_CMP_CONTAINS_PG) return json_contains_pg_object(a, b);
        if (mode == JSON_CMP_OVERLAPS_MYSQL) return json_overlaps_mysql_object(a, b);
        return jsonb_object_equal(a, b);
    }
    if (a->type == JSON_ARRAY) {
        if (mode == JSON_CMP_CONTAINS_PG) return json_contains_pg_array(a, b);
        if (mode == JSON_CMP_OVERLAPS_MYSQL) return json_overlaps_mysql_array(a, b);
        return json_array_equal(a, b);
    }
    return json_scalar_value_equal(a, b);
}

VXJSON_API int32_t json_array_equal(const json_node *a, const json_node *b) {
    if (a->lst_count != b->lst_count) return 0;
    const json_node *eb = b->lst_first;
    return all_listed_elements(a, [&](const json_node *ea) {
        bool same = eb && json_cmp(ea, eb, JSON_CMP_EQUAL);
        if (eb) eb = eb->next_sibling;
        return same;
    });
}

VXJSON_API int32_t jsonb_object_equal(const json_node *a, const json_node *b) {
    if (a->count != b->count) return 0;
    // Pairwise in list order: only trees read with sorted keys compare as sets.
    const json_keyval *ka = a->first_member, *kb = b->first_member;
    for (; ka && kb; ka = ka->next, kb = kb->next) {
        if (!json_object_keyval_name_equal(ka->name, ka->name_len, kb->name, kb->name_len) ||
            !json_cmp(ka->value, kb->value, JSON_CMP_EQUAL))
            return 0;
    }
    return !ka && !kb;
}

} // extern "C"
