// PostgreSQL-compatible functions with a key or a path:
//   jsonb_delete(doc, key | position)   doc - 'key', doc - n (negative from the end)
//   jsonb_path_query(doc, '$.a[*]')     the match; several matches as one array
// Like PostgreSQL's, they give SQL NULL for any NULL argument.
#include "cache.h"
#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"

namespace vxsql {

namespace {

constexpr int ARG_DOC = 0;
constexpr int ARG_KEY_OR_PATH = 1;

bool begin(sqlite3_context *sc, int argc, sqlite3_value **argv, jlpca_ctx **ctx, json_node **doc) {
    if (any_null(argc, argv)) return false;
    *ctx = row_begin(connection_of(sc), dialect::pg);
    return read_arg_or_fail(sc, *ctx, argv, ARG_DOC, doc);
}

// The path of doc - key: the root, then a member step (text) or a subscript
// step (integer), on the row heap.
int32_t removal_path(jlpca_ctx *ctx, sqlite3_value *key, jpath **out) {
    auto *path = static_cast<jpath *>(
        mem_heap_alloc_low(ctx->env, ctx->heap, sizeof(jpath), 0, "sqlite/pg", __LINE__));
    if (!path) return VXJSON_ERR_NOMEM;
    jpath_init(path, 0, 0, 0, JPATH_DIALECT_PG_ARRAY);
    int32_t rc = jpath_add_filter_low(ctx->env, ctx->heap, path, "", 0, JPATH_STEP_ROOT);
    if (rc) return rc;
    if (sqlite3_value_type(key) == SQLITE_INTEGER) {
        const int64_t n = sqlite3_value_int64(key);
        if (n < INT32_MIN || n > INT32_MAX) return VXJSON_ERR_TEXT_PATH_INDEX;
        rc = jpath_add_filter_low(ctx->env, ctx->heap, path, "", 0, JPATH_STEP_SUBSCRIPTS);
        if (rc == 0)
            rc =
                jpath_add_index_pg(ctx->env, ctx->heap, path->last_filter, static_cast<int32_t>(n));
    } else {
        const std::string_view name = arg_text(key, &rc);
        if (rc == 0)
            rc = jpath_add_filter_low(ctx->env, ctx->heap, path, name.data(),
                                      static_cast<uint32_t>(name.size()), JPATH_STEP_MEMBER);
    }
    if (rc == 0) *out = path;
    return rc;
}

void jsonb_delete(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    jlpca_ctx *ctx;
    json_node *doc;
    if (!begin(sc, argc, argv, &ctx, &doc)) return;
    jpath *path;
    if (int32_t rc = removal_path(ctx, argv[ARG_KEY_OR_PATH], &path)) return result_code(sc, rc);
    char *text = nullptr;
    uint32_t len = 0;
    const int32_t rc = jsonb_remove_with_path(doc, path, ctx, &text, &len);
    result_json_or_code(sc, rc, text, len);
}

void jsonb_path_query(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    jlpca_ctx *ctx;
    json_node *doc;
    if (!begin(sc, argc, argv, &ctx, &doc)) return;
    call_cache cache(sc);
    jpath *path;
    if (int32_t rc = cache.path(ctx, argv, ARG_KEY_OR_PATH, path_language::standard, &path))
        return result_path_code(sc, rc, ctx, ARG_KEY_OR_PATH + 1);
    path->format = JSON_FMT_COMPACT;
    char *text = nullptr;
    uint32_t len = 0;
    const int32_t rc = json_fun_varchar_pg(ctx, doc, path, JSON_CONV_JSON, &text, &len);
    if (rc == VXJSON_NO_VALUE) return;
    if (rc < 0) return result_code(sc, rc);
    if (text) result_json(sc, text, len);
}

constexpr function_def FUNCTIONS[] = {
    {"jsonb_delete", 2, 2, jsonb_delete},
    {"jsonb_path_query", 2, 2, jsonb_path_query},
};

} // namespace

std::span<const function_def> pg_path_functions() { return FUNCTIONS; }

} // namespace vxsql
