// The evaluation step that JSON_VALUE and JSON_QUERY share: run the path in
// the context's dialect and settle a failure by the ON EMPTY and ON ERROR
// clauses, so the functions go on only with a node in hand.
//
// A path that matches nothing is "empty", not yet an error: the standard
// dialect hands it to ON ERROR when no ON EMPTY was given, the
// compatibility dialects make it SQL NULL.
#include "vxjson.h"

namespace {

// Result kinds: only text differs, in what its ON ERROR can give.
constexpr int32_t KIND_TEXT = 2;

// What ON EMPTY makes of no match: 0 (SQL NULL), -3104 (raised), or 1 to
// hand it on to ON ERROR.  Any value above NULL is ERROR ON EMPTY.
int32_t on_empty(const jlpca_ctx *ctx, const jpath *path) {
    const uint32_t clause = path->on_empty;
    if (ctx->compat == JLPCA_COMPAT_STANDARD) {
        if (clause == JPATH_ON_EMPTY_AS_ERROR) return 1;
        return clause == JPATH_ON_EMPTY_NULL ? 0 : VXJSON_ERR_PATH_NO_MATCH;
    }
    return clause == JPATH_ON_EMPTY_AS_ERROR || clause == JPATH_ON_EMPTY_NULL
               ? 0
               : VXJSON_ERR_PATH_NO_MATCH;
}

} // namespace

extern "C" {

VXJSON_API int32_t json_query_with_mode(jlpca_ctx *ctx, json_node *document, const jpath *path,
                                        int32_t kind, char **out, uint32_t *out_len,
                                        int32_t *indicator, int32_t *handled, json_node **node) {
    *handled = 0;
    if (indicator) *indicator = 0;
    *node = nullptr;
    int32_t rc;
    if (ctx->compat == JLPCA_COMPAT_STANDARD) {
        rc = json_query(ctx, document, path, node);
    } else {
        rc = jpath_filter_mysql(document, path, ctx, 1, node);
        if (rc == 0 && !*node) rc = VXJSON_ERR_PATH_NO_MATCH;
    }
    if (rc >= 0) return rc;
    *handled = 1;
    if (rc == VXJSON_ERR_PATH_NO_MATCH) {
        const int32_t empty = on_empty(ctx, path);
        if (empty <= 0) return empty;
    }
    if (kind == KIND_TEXT) return jpath_varchar_ret_code(ctx, path, out, out_len, rc);
    return jpath_dop_ret_code(path, indicator, rc);
}

} // extern "C"
