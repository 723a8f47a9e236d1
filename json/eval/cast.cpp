// Casts of the one scalar a JSON_VALUE path selected into the SQL value the
// function returns: an exact decimal or a datetime, and datetimes to and
// from seconds since the Unix epoch.
//
// Every number goes through the server's exact decimal and every datetime
// through its datetime library, never through a double, so 0.1 stays 0.1
// and 38-digit values keep every digit.  A failed library call is reported
// where it happened and its code returned unchanged; the codes the casts
// raise themselves (-6118, -6128, -6149) are reported at their site too.
#include <cstdint>

#include "report.h"
#include "report_sites.h"
#include "vxjson.h"
#include "vxtime.h"
#include "xdec.h"

using namespace vxjson;

namespace {

constexpr int32_t NANOS_PER_SECOND = 1000000000;
// The fraction of a second enters a number with six places: microseconds.
constexpr int32_t FRACTION_DIGITS = 6;

int32_t fail(int32_t code, int32_t line) { return report(code, SRC_JPATH, line); }

bool fits_int32(int64_t v) { return v >= INT32_MIN && v <= INT32_MAX; }

// The empty string is SQL NULL, except in compatibility mode 2, where it is
// no number (and, for datetimes too, -6128: that mode's own code).
int32_t empty_string(const jlpca_ctx *ctx, int32_t line, int32_t *has_value) {
    *has_value = 0;
    return ctx->compat == JLPCA_COMPAT_MYSQL ? fail(VXJSON_ERR_NOT_NUMBER, line) : 0;
}

// A string's text as a decimal: 109 from the reader means the text is not
// wholly a number.
int32_t number_from_text(const json_node *node, xdec *out) {
    const int32_t rc = xdec_from_char(out, node->str, node->str_len);
    if (rc == XDEC_NOT_NUMBER) return fail(VXJSON_ERR_NOT_NUMBER, site::CAST_NUMBER_NOT_NUMBER);
    if (rc < 0) return fail(rc, site::CAST_NUMBER_FROM_TEXT);
    return 0;
}

// A number text (JSON_DECIMAL) as a decimal.  The reader only makes number
// texts, so a positive answer (a NaN spelling) counts as no number.
int32_t number_from_decimal(const json_node *node, xdec *out, int32_t line) {
    const int32_t rc = json_decimal_string_to_xdec(node, out);
    if (rc < 0) return fail(rc, line);
    if (rc > 0) return fail(VXJSON_ERR_NOT_NUMBER, site::CAST_NUMBER_NOT_NUMBER);
    return 0;
}

// A fraction of a second, in nanoseconds, as a decimal of six places.
int32_t fraction_of_second(int32_t nanos, xdec *out) {
    xdec num, den, f;
    (void)xdec_from_int64(&num, nanos);
    (void)xdec_from_int64(&den, NANOS_PER_SECOND);
    int32_t rc = xdec_div(&f, &num, &den);
    if (rc == 0) rc = xdec_format(&f, FRACTION_DIGITS, FRACTION_DIGITS);
    if (rc < 0) return fail(rc, site::CAST_EPOCH_FRACTION);
    *out = f;
    return 0;
}

// Seconds and nanoseconds of a number text D: the whole seconds of D
// (truncated towards zero) and the rest, cut to six places, in nanoseconds;
// so -1.5 gives -1 and -500000000.
int32_t split_seconds(const json_node *node, int64_t *secs, int64_t *nanos) {
    xdec d, whole, frac, billion, n;
    if (int32_t rc = number_from_decimal(node, &d, site::CAST_FROM_EPOCH_DECIMAL)) return rc;
    (void)xdec_copy(&whole, &d);
    int32_t rc = xdec_trunc_scale(&whole, 0);
    if (rc == 0) rc = xdec_get_int64(&whole, secs);
    if (rc == 0) rc = xdec_sub(&frac, &d, &whole);
    if (rc == 0) rc = xdec_format(&frac, FRACTION_DIGITS, FRACTION_DIGITS);
    if (rc == 0) rc = xdec_from_int64(&billion, NANOS_PER_SECOND);
    if (rc == 0) rc = xdec_mul(&n, &frac, &billion);
    if (rc == 0) rc = xdec_get_int64(&n, nanos);
    return rc < 0 ? fail(rc, site::CAST_FROM_EPOCH_SPLIT) : 0;
}

} // namespace

extern "C" {

VXJSON_API int32_t json_cast_to_number(jlpca_ctx *ctx, const json_node *node,
                                       json_number_result *out) {
    out->has_value = 0;
    switch (node->type) {
    case JSON_OBJECT:
    case JSON_ARRAY: return json_fun_value_check(node);
    case JSON_INTEGER: (void)xdec_from_int64(&out->value, node->ival); break;
    case JSON_DECIMAL:
        if (int32_t rc = number_from_decimal(node, &out->value, site::CAST_NUMBER_FROM_DECIMAL))
            return rc;
        break;
    case JSON_STRING:
        if (node->str_len == 0)
            return empty_string(ctx, site::CAST_NUMBER_NOT_NUMBER, &out->has_value);
        if (int32_t rc = number_from_text(node, &out->value)) return rc;
        break;
    case JSON_BOOLEAN: (void)xdec_from_int64(&out->value, node->bval); break;
    case JSON_NULL: return 0;
    case JSON_DATE:
    case JSON_DATETIME: return json_cast_datetime_to_number(node, out);
    default: return fail(VXJSON_ERR_CAST, site::CAST_NUMBER_TYPE);
    }
    out->has_value = 1;
    return 0;
}

VXJSON_API int32_t json_cast_to_date(jlpca_ctx *ctx, const json_node *node,
                                     json_datetime_result *out) {
    out->has_value = 0;
    switch (node->type) {
    case JSON_STRING: {
        if (node->str_len == 0) return empty_string(ctx, site::CAST_DATE_EMPTY, &out->has_value);
        const int32_t rc =
            vxtime_from_char_ex2(node->str, node->str_len, VXTIME_TYPE_DATETIME, &out->value);
        if (rc == VXTIME_NOT_DATETIME)
            return fail(VXJSON_ERR_NOT_DATETIME, site::CAST_DATE_NOT_DATETIME);
        if (rc < 0) return fail(rc, site::CAST_DATE_FROM_TEXT);
        out->has_value = 1;
        return 0;
    }
    case JSON_OBJECT:
    case JSON_ARRAY: return json_fun_value_check(node);
    case JSON_NULL: return 0;
    default:
        // Only strings are read as datetimes: numbers, booleans and even
        // the datetime nodes themselves are refused.
        return fail(VXJSON_ERR_CAST, site::CAST_DATE_TYPE);
    }
}

VXJSON_API int32_t json_cast_datetime_to_number(const json_node *node, json_number_result *out) {
    out->has_value = 0;
    int64_t secs;
    if (int32_t rc = vxtime_unix_timestamp(VXTIME_UNIX_SECONDS, &node->dt, &secs); rc < 0)
        return fail(rc, site::CAST_EPOCH_SECONDS);
    xdec s;
    (void)xdec_from_int64(&s, secs);
    if (const int32_t nanos = vxtime_get_msec(&node->dt)) {
        xdec f;
        if (int32_t rc = fraction_of_second(nanos, &f)) return rc;
        if (int32_t rc = xdec_add(&s, &s, &f)) return fail(rc, site::CAST_EPOCH_FRACTION);
    }
    out->value = s;
    out->has_value = 1;
    return 0;
}

VXJSON_API int32_t json_cast_number_to_datetime(const json_node *node, json_datetime_result *out) {
    out->has_value = 0;
    int64_t secs = 0, nanos = 0;
    if (node->type == JSON_INTEGER) {
        secs = node->ival;
    } else if (node->type == JSON_DECIMAL) {
        if (int32_t rc = split_seconds(node, &secs, &nanos)) return rc;
        if (!fits_int32(nanos)) return fail(VXJSON_ERR_CAST, site::CAST_FROM_EPOCH_RANGE);
    } else {
        return fail(VXJSON_ERR_CAST, site::CAST_FROM_EPOCH_TYPE);
    }
    // Seconds are bounded to 32 bits: instants past early 2038 or before
    // late 1901 are refused, though the datetime library could hold them.
    if (!fits_int32(secs)) return fail(VXJSON_ERR_CAST, site::CAST_FROM_EPOCH_RANGE);
    vxtime t;
    int32_t rc = vxtime_from_unix_time(VXTIME_FROM_UNIX_UTC, secs, &t);
    if (rc == 0) rc = vxtime_set_msec(&t, int32_t(nanos));
    if (rc < 0) return fail(rc, site::CAST_FROM_EPOCH_MAKE);
    out->value = t;
    out->has_value = 1;
    return 0;
}

} // extern "C"
