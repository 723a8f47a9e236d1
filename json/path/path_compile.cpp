// The compile entries: jpath_flex compiles the context's text into a path
// the caller has initialised; jpath_array_flex compiles one path, or each
// string of a JSON array of paths (the path arguments of the MySQL-style
// functions).
#include <cstring>

#include "jlpca_internal.h"
#include "path_scan.h"
#include "report.h"
#include "report_sites.h"
#include "vx_heap.h"

using namespace vxjson;

namespace vxjson::path {
int32_t parse(path_scanner &s, jlpca_ctx *ctx, bool copy);
}

namespace {

constexpr const char *MSG_NOT_PATH_ARRAY = "path argument is not a JSON array of strings";

// Steps are small and their count follows the text; a block of path records
// is the one allocation whose size the caller's array decides.
jpath *new_paths(jlpca_ctx *ctx, uint32_t count) {
    return static_cast<jpath *>(mem_heap_alloc_low(
        ctx->env, ctx->heap, sizeof(jpath) * size_t(count), 0, SRC_JPATH, site::PATH_HEAP_RECORDS));
}

int32_t not_path_array(jlpca_ctx *ctx) {
    set_error(ctx, VXJSON_ERR_PATH, MSG_NOT_PATH_ARRAY);
    return report(VXJSON_ERR_PATH, SRC_JPATH, site::PATH_ARRAY_SHAPE);
}

} // namespace

extern "C" {

VXJSON_API int32_t jpath_flex(jlpca_ctx *ctx, jpath *path) {
    ctx->cur_path = path;
    ctx->cur_filter = nullptr;
    path->fun_kind = uint32_t(ctx->escape_mode);
    path::path_scanner s;
    path::scanner_start(s, ctx);
    const int32_t rc = path::parse(s, ctx, false);
    path::scanner_stop(s);
    if (rc == 0 && ctx->err_code >= 0) return 0;
    // Every failure to compile is one code; running out of memory is not a
    // fault of the text and keeps its own.
    if (rc == VXJSON_ERR_NOMEM || ctx->err_code == VXJSON_ERR_NOMEM) return VXJSON_ERR_NOMEM;
    return VXJSON_ERR_PATH;
}

VXJSON_API int32_t jpath_array_flex(jlpca_ctx *ctx, const char *text, uint32_t len, int32_t single,
                                    uint32_t *count, jpath **paths) {
    *count = 0;
    *paths = nullptr;
    if (int32_t rc = jlpca_reinit(ctx, text, len); rc < 0) return rc;
    if (single) {
        jpath *p = new_paths(ctx, 1);
        if (!p) return report(VXJSON_ERR_NOMEM, SRC_JPATH, site::PATH_ARRAY_RECORDS);
        jpath_init_simple(p, JPATH_DIALECT_MYSQL_ARRAY);
        if (int32_t rc = jpath_flex(ctx, p); rc < 0)
            return report(rc, SRC_JPATH, site::PATH_ARRAY_SINGLE);
        *paths = p;
        *count = 1;
        return 0;
    }
    json_node *root = nullptr;
    const int32_t read = json_flex(ctx, &root);
    if (read < 0 || !root || root->type != JSON_ARRAY) return not_path_array(ctx);
    const uint32_t n = root->count;
    if (n == 0 && root->lst_count != 0) // its element array could not be had
        return report(VXJSON_ERR_NOMEM, SRC_JPATH, site::PATH_ARRAY_RECORDS);
    if (n == 0) return 0;
    jpath *block = new_paths(ctx, n);
    if (!block) return report(VXJSON_ERR_NOMEM, SRC_JPATH, site::PATH_ARRAY_RECORDS);
    for (uint32_t i = 0; i < n; i++) {
        const json_node *elem = root->items[i];
        jpath_init_simple(&block[i], JPATH_DIALECT_MYSQL_ARRAY);
        if (elem->type == JSON_NULL) return VXJSON_NO_VALUE;
        if (elem->type != JSON_STRING) return not_path_array(ctx);
        if (int32_t rc = jlpca_reinit(ctx, elem->str, elem->str_len); rc < 0) return rc;
        if (int32_t rc = jpath_flex(ctx, &block[i]); rc < 0)
            return report(rc, SRC_JPATH, site::PATH_ARRAY_ELEMENT);
    }
    *count = n;
    *paths = block;
    return 0;
}

} // extern "C"
