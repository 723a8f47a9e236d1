// result_text.h -- the text results of the merge and concatenation entries:
// a growable string from the context's allocator that is either handed to
// the caller whole or released whole, so a failed call leaves nothing
// allocated behind it.
#ifndef VXJSON_RESULT_TEXT_H
#define VXJSON_RESULT_TEXT_H

#include <cstdint>

#include "report.h"
#include "vxjson.h"
#include "vxstr.h"

namespace vxjson {

// A new empty result string, or NULL when there is no memory.
inline vxstr *result_text_begin(jlpca_ctx *ctx) {
    return vxstr_create(ctx->env, ctx->allocator, VXSTR_INITIAL_SIZE);
}

// Hand the text over on success (it then belongs to the caller, to be
// released through the context's allocator); on a negative rc, or when an
// append failed unnoticed, release it and report the code at `line` of
// source unit `src`.
inline int32_t result_text_end(jlpca_ctx *ctx, vxstr *s, int32_t rc, const char *src, int32_t line,
                               char **out, uint32_t *out_len) {
    if (rc >= 0 && s->failed) rc = VXJSON_ERR_NOMEM;
    if (rc < 0) {
        vxstr_free(ctx->env, ctx->allocator, s);
        return report(rc, src, line);
    }
    *out = vxstr_getstr(s);
    *out_len = s->len;
    vxstr_free_record(ctx->env, ctx->allocator, s);
    return 0;
}

inline int32_t result_text_end(jlpca_ctx *ctx, vxstr *s, int32_t rc, int32_t line, char **out,
                               uint32_t *out_len) {
    return result_text_end(ctx, s, rc, SRC_JSON, line, out, out_len);
}

// The whole text of node, written compactly with conversion conv; failures
// are reported at `line`.
inline int32_t result_text_of(jlpca_ctx *ctx, const json_node *node, uint8_t conv, int32_t line,
                              char **out, uint32_t *out_len) {
    vxstr *s = result_text_begin(ctx);
    if (!s) return report_json(VXJSON_ERR_NOMEM, line);
    int32_t rc = json_to_string(ctx, ctx->allocator, s, node, JSON_FMT_COMPACT, 1, 1, conv);
    return result_text_end(ctx, s, rc, line, out, out_len);
}

} // namespace vxjson

#endif
