// json_exists(doc, path [, on_error]), which SQLite lacks: 1 when the path
// (compiled once per statement) matches something, 0 when it does not.
// Documents are read lax; one that cannot be read is an error that ON
// ERROR handles (FALSE by default).  A path that does not compile always
// fails the statement.
#include "cache.h"
#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"

namespace vxsql {

namespace {

constexpr int ARG_DOC = 0;
constexpr int ARG_PATH = 1;
constexpr int ARG_ON_ERROR = 2;

// 1 when the path matches something, 0 when it does not; an error (the
// document's included) gives what ON ERROR says, FALSE by default.
void json_exists(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    on_clause on_error;
    if (!clause_arg(sc, argc, argv, ARG_ON_ERROR, "json_exists",
                    parse_exists_on_error, default_exists_on_error(), &on_error))
        return;
    if (sqlite3_value_type(argv[ARG_DOC]) == SQLITE_NULL ||
        sqlite3_value_type(argv[ARG_PATH]) == SQLITE_NULL)
        return;
    jlpca_ctx *ctx = row_begin(connection_of(sc), dialect::standard);
    call_cache cache(sc);
    jpath *path;
    if (int32_t rc = cache.path(ctx, argv, ARG_PATH, path_language::standard, &path))
        return result_path_code(sc, rc, ctx, ARG_PATH + 1);
    json_node *doc = nullptr, *found = nullptr;
    int32_t rc = read_arg(ctx, argv, ARG_DOC, &doc);
    const bool doc_failed = rc != 0;
    if (rc == 0) rc = json_query(ctx, doc, path, &found);
    if (rc == 0) return sqlite3_result_int(sc, found != nullptr);
    if (rc == VXJSON_ERR_PATH_NO_MATCH) return sqlite3_result_int(sc, 0);
    switch (on_error.exists_result) {
    case 1:
    case 0: return sqlite3_result_int(sc, on_error.exists_result);
    case -1: return sqlite3_result_null(sc);
    default:
        if (doc_failed) return result_document_code(sc, rc, ctx, ARG_DOC + 1);
        return result_code(sc, rc);
    }
}

constexpr function_def FUNCTIONS[] = {
    {"json_exists", 2, 3, json_exists},
};

}  // namespace

std::span<const function_def> standard_functions() { return FUNCTIONS; }

}  // namespace vxsql
