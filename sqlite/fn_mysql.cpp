// MySQL-compatible functions: mysql_json_contains(target, candidate [, path]),
// mysql_json_overlaps(a, b), mysql_json_merge_patch(doc, doc, ...) and
// mysql_json_merge_preserve(doc, doc, ...).  Documents are read as MySQL's
// JSON type keeps them (strict, scalars allowed, members sorted, the last
// of repeated names winning); results are written with MySQL's escapes.
// SQL NULL in any argument gives SQL NULL.
#include "cache.h"
#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"

namespace vxsql {

namespace {

// Begin a MySQL call and read its first argument; false when the call has
// been answered already (NULL, or an error).
bool begin_mysql(sqlite3_context *sc, int argc, sqlite3_value **argv, jlpca_ctx **ctx,
                 json_node **doc) {
    if (any_null(argc, argv)) return false;
    *ctx = row_begin(connection_of(sc), dialect::mysql);
    return read_arg_or_fail(sc, *ctx, argv, 0, doc);
}

// A predicate of two documents: 1 or 0.
void test_pair(sqlite3_context *sc, int argc, sqlite3_value **argv,
               int32_t (*predicate)(const json_node *, const json_node *)) {
    jlpca_ctx *ctx;
    json_node *a, *b;
    if (!begin_mysql(sc, argc, argv, &ctx, &a)) return;
    if (!read_arg_or_fail(sc, ctx, argv, 1, &b)) return;
    sqlite3_result_int(sc, predicate(a, b));
}

// mysql_json_contains(target, candidate [, path]): with a path, the value
// there is the target (a path to nothing gives NULL; one that may match
// several values is an error, as in MySQL).
void mysql_json_contains(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    if (argc < 3) return test_pair(sc, argc, argv, json_contains_mysql);
    jlpca_ctx *ctx;
    json_node *target, *candidate, *found = nullptr;
    if (!begin_mysql(sc, argc, argv, &ctx, &target)) return;
    if (!read_arg_or_fail(sc, ctx, argv, 1, &candidate)) return;
    call_cache cache(sc);
    jpath *path;
    if (int32_t rc = cache.path(ctx, argv, 2, path_language::mysql, &path))
        return result_path_code(sc, rc, ctx, 3);
    if (int32_t rc = jpath_filter_mysql(target, path, ctx, 0, &found)) return result_code(sc, rc);
    if (found) sqlite3_result_int(sc, json_contains_mysql(found, candidate));
}

void mysql_json_overlaps(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    test_pair(sc, argc, argv, json_overlaps_mysql);
}

// Merge the documents left to right; every tree stays in the row heap
// until the whole result is written.
void merge(sqlite3_context *sc, int argc, sqlite3_value **argv, int32_t patch) {
    if (argc < 2)
        return result_usage(sc, patch ? "mysql_json_merge_patch" : "mysql_json_merge_preserve",
                            "at least two documents are needed");
    jlpca_ctx *ctx;
    json_node *merged;
    if (!begin_mysql(sc, argc, argv, &ctx, &merged)) return;
    for (int i = 1; i < argc; i++) {
        json_node *next;
        if (!read_arg_or_fail(sc, ctx, argv, i, &next)) return;
        const int32_t rc = patch ? json_merge_patch_mysql(merged, next, ctx, &merged)
                                 : json_merge_preserve_mysql(merged, next, ctx, &merged);
        if (rc) return result_code(sc, rc);
    }
    result_tree(sc, ctx, merged, JSON_FMT_COMPACT, JSON_CONV_MYSQL);
}

void mysql_json_merge_patch(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    merge(sc, argc, argv, 1);
}

void mysql_json_merge_preserve(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    merge(sc, argc, argv, 0);
}

constexpr function_def FUNCTIONS[] = {
    {"mysql_json_contains", 2, 3, mysql_json_contains},
    {"mysql_json_overlaps", 2, 2, mysql_json_overlaps},
    {"mysql_json_merge_patch", -1, -1, mysql_json_merge_patch},
    {"mysql_json_merge_preserve", -1, -1, mysql_json_merge_preserve},
};

} // namespace

std::span<const function_def> mysql_functions() { return FUNCTIONS; }

} // namespace vxsql
