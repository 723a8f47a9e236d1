// PostgreSQL-compatible functions: jsonb_contains(a, b) (a @> b),
// jsonb_concat(a, b) (a || b), jsonb_strip_nulls(a).  Documents are read as
// jsonb keeps them (strict, members sorted, the last of repeated names
// winning); SQL NULL in any argument gives SQL NULL.
#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"

namespace vxsql {

namespace {

// Read the first n arguments of a PostgreSQL call; false when the call has
// been answered already (NULL, or an error).
bool read_pg_args(sqlite3_context *sc, int argc, sqlite3_value **argv, int n, jlpca_ctx **ctx,
                  json_node **docs) {
    if (any_null(argc, argv)) return false;
    *ctx = row_begin(connection_of(sc), dialect::pg);
    for (int i = 0; i < n; i++)
        if (!read_arg_or_fail(sc, *ctx, argv, i, &docs[i])) return false;
    return true;
}

void jsonb_contains(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    jlpca_ctx *ctx;
    json_node *docs[2];
    if (!read_pg_args(sc, argc, argv, 2, &ctx, docs)) return;
    sqlite3_result_int(sc, json_contains_pg(docs[0], docs[1]));
}

void jsonb_concat(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    jlpca_ctx *ctx;
    json_node *docs[2];
    if (!read_pg_args(sc, argc, argv, 2, &ctx, docs)) return;
    char *text = nullptr;
    uint32_t len = 0;
    const int32_t rc = jsonb_concat(docs[0], docs[1], ctx, &text, &len);
    result_json_or_code(sc, rc, text, len);
}

void jsonb_strip_nulls(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    jlpca_ctx *ctx;
    json_node *doc;
    if (!read_pg_args(sc, argc, argv, 1, &ctx, &doc)) return;
    int32_t rc = 0;
    if (doc->type == JSON_OBJECT) rc = jsonb_strip_nulls_object(doc);
    else if (doc->type == JSON_ARRAY) rc = jsonb_strip_nulls_array(doc);
    if (rc) return result_code(sc, rc);
    result_tree(sc, ctx, doc, JSON_FMT_COMPACT, JSON_CONV_JSON);
}

constexpr function_def FUNCTIONS[] = {
    {"jsonb_contains", 2, 2, jsonb_contains},
    {"jsonb_concat", 2, 2, jsonb_concat},
    {"jsonb_strip_nulls", 1, 1, jsonb_strip_nulls},
};

} // namespace

std::span<const function_def> pg_functions() { return FUNCTIONS; }

} // namespace vxsql
