// JSON_VALUE returning a number or a datetime: the shared evaluation step,
// the cast of the one scalar, then the precision and scale or the datetime
// type of the RETURNING clause.  Every failure after the evaluation goes
// through the ON ERROR clause, which reports what it raises.
#include "vxjson.h"
#include "vxtime.h"
#include "xdec.h"

namespace {

constexpr int32_t KIND_NUMBER = 9; // json_query_with_mode's result kinds
constexpr int32_t KIND_DATETIME = 14;
constexpr uint32_t RETURNS_DATE = 3; // ret_len of a path that returns a date

// A value the RETURNING type cannot hold is no value, whatever ON ERROR
// then makes of it.
int32_t does_not_fit(const jpath *path, int32_t *has_value) {
    *has_value = 0;
    return jpath_dop_ret_code(path, has_value, VXJSON_ERR_RETURN_TYPE);
}

// What both functions do before the RETURNING type: the incoming status,
// no document, the evaluation and the cast of the scalar.  true with the
// cast value in *out (has_value 1) to go on; false with the answer in *rc.
template <class Result, int32_t (*Cast)(jlpca_ctx *, const json_node *, Result *)>
bool cast_match(jlpca_ctx *ctx, json_node *document, const jpath *path, int32_t kind, Result *out,
                int32_t status, int32_t *rc) {
    out->has_value = 0;
    *rc = 0;
    if (status < 0) {
        *rc = jpath_dop_ret_code(path, &out->has_value, status);
        return false;
    }
    if (!document) return false;
    int32_t handled;
    json_node *node;
    *rc = json_query_with_mode(ctx, document, path, kind, nullptr, nullptr, &out->has_value,
                               &handled, &node);
    if (handled) return false;
    if ((*rc = Cast(ctx, node, out)) < 0) {
        *rc = jpath_dop_ret_code(path, &out->has_value, *rc);
        return false;
    }
    return out->has_value != 0;
}

} // namespace

extern "C" {

VXJSON_API int32_t json_value_number(jlpca_ctx *ctx, json_node *document, const jpath *path,
                                     json_number_result *out, int32_t status) {
    int32_t rc;
    if (!cast_match<json_number_result, json_cast_to_number>(ctx, document, path, KIND_NUMBER, out,
                                                             status, &rc))
        return rc;
    // Only a scale makes the precision count: with scale 0 the value is
    // returned as it came, however many digits it has.
    if (path->ret_len == 0 || path->ret_scale == 0) return 0;
    if (xdec_format(&out->value, int32_t(path->ret_len), int32_t(path->ret_scale)) < 0)
        return does_not_fit(path, &out->has_value);
    return 0;
}

VXJSON_API int32_t json_value_date(jlpca_ctx *ctx, json_node *document, const jpath *path,
                                   json_datetime_result *out, int32_t status) {
    int32_t rc;
    if (!cast_match<json_datetime_result, json_cast_to_date>(ctx, document, path, KIND_DATETIME,
                                                             out, status, &rc))
        return rc;
    const int32_t type = path->ret_len == RETURNS_DATE ? VXTIME_TYPE_DATE : VXTIME_TYPE_DATETIME;
    if (vxtime_reset(&out->value, type) < 0) return does_not_fit(path, &out->has_value);
    return 0;
}

} // extern "C"
