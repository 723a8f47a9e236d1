// The ON ERROR clause of JSON_VALUE and JSON_QUERY: the one place that
// decides whether a failure met by the function layer is raised, becomes
// SQL NULL, the empty array "[]", or the caller's DEFAULT (status 100).
//
// A raised code is reported here, once, so the caller sees the trail of the
// failure only when the clause lets it through.  Running out of memory is
// never turned into a value: -503 passes whatever the clause says, since a
// NULL or DEFAULT there would hide a result that was never computed.
#include <cstring>

#include "report.h"
#include "report_sites.h"
#include "vx_heap.h"
#include "vxjson.h"

using namespace vxjson;

namespace {

constexpr char EMPTY_ARRAY[] = "[]";

enum class verdict { raise, null, empty_array, fallback };

// What the clause makes of a failure.
verdict on_error_verdict(const jpath *path, int32_t status) {
    if (status == VXJSON_ERR_NOMEM) return verdict::raise;
    // Any value but these three (0, 1, one out of range) is NULL ON ERROR.
    switch (path->on_error) {
    case JPATH_ON_ERROR_ERROR: return verdict::raise;
    case JPATH_ON_ERROR_EMPTY: return verdict::empty_array;
    case JPATH_ON_ERROR_DEFAULT: return verdict::fallback;
    default: return verdict::null;
    }
}

} // namespace

extern "C" {

VXJSON_API int32_t jpath_dop_ret_code(const jpath *path, int32_t *indicator, int32_t status) {
    switch (on_error_verdict(path, status)) {
    case verdict::raise: return report(status, SRC_JPATH, site::ON_ERROR_RAISE_VALUE);
    case verdict::fallback: return VXJSON_NO_VALUE;
    default:
        // NULL, and EMPTY, which only a text result can honour.
        if (indicator) *indicator = 0;
        return 0;
    }
}

VXJSON_API int32_t jpath_varchar_ret_code(jlpca_ctx *ctx, const jpath *path, char **out,
                                          uint32_t *out_len, int32_t status) {
    *out = nullptr;
    *out_len = 0;
    switch (on_error_verdict(path, status)) {
    case verdict::raise: return report(status, SRC_JPATH, site::ON_ERROR_RAISE_TEXT);
    case verdict::fallback: return VXJSON_NO_VALUE;
    case verdict::null: return 0;
    case verdict::empty_array: break;
    }
    auto *text = static_cast<char *>(mem_heap_alloc_low(ctx->env, ctx->heap, sizeof EMPTY_ARRAY, 0,
                                                        SRC_JPATH, site::ON_ERROR_EMPTY_TEXT));
    if (!text) return report(VXJSON_ERR_NOMEM, SRC_JPATH, site::ON_ERROR_EMPTY_TEXT);
    std::memcpy(text, EMPTY_ARRAY, sizeof EMPTY_ARRAY);
    *out = text;
    *out_len = sizeof EMPTY_ARRAY - 1;
    return 0;
}

} // extern "C"
