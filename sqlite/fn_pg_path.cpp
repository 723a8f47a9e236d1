// PostgreSQL-compatible jsonb_path_query(doc, '$.a[*]'): the match, or
// several matches as one array; SQL NULL when nothing matches, and for any
// NULL argument, as in PostgreSQL.
#include "cache.h"
#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"

namespace vxsql {

namespace {

constexpr int ARG_DOC = 0;
constexpr int ARG_PATH = 1;

void jsonb_path_query(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    if (any_null(argc, argv)) return;
    jlpca_ctx *ctx = row_begin(connection_of(sc), dialect::pg);
    json_node *doc;
    if (!read_arg_or_fail(sc, ctx, argv, ARG_DOC, &doc)) return;
    call_cache cache(sc);
    jpath *path;
    if (int32_t rc = cache.path(ctx, argv, ARG_PATH, path_language::standard, &path))
        return result_path_code(sc, rc, ctx, ARG_PATH + 1);
    json_node *found = nullptr;
    const int32_t rc = json_query(ctx, doc, path, &found);
    if (rc == VXJSON_ERR_PATH_NO_MATCH) return;
    if (rc) return result_code(sc, rc);
    result_tree(sc, ctx, found, JSON_FMT_COMPACT, JSON_CONV_JSON);
}

constexpr function_def FUNCTIONS[] = {
    {"jsonb_path_query", 2, 2, jsonb_path_query},
};

}  // namespace

std::span<const function_def> pg_path_functions() { return FUNCTIONS; }

}  // namespace vxsql
