// MySQL-compatible functions that take paths ('$.a[1]', compiled once per
// statement):
//   mysql_json_extract(doc, path [, path ...])
//   mysql_json_contains_path(doc, 'one' | 'all', path [, path ...])
//   mysql_json_set / mysql_json_insert / mysql_json_replace(doc, path, value [, path, value ...])
//   mysql_json_remove(doc, path [, path ...])
//   mysql_json_array_append / mysql_json_array_insert(doc, path, value [, path, value ...])
// SQL NULL for the document or a path gives SQL NULL; a NULL value is the
// JSON null.  Values are SQL values (mysql_json_set(doc, '$.a', 'x') sets
// the string "x"); JSON made by a JSON function goes in as JSON.
#include <strings.h>

#include "cache.h"
#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"

namespace vxsql {

namespace {

constexpr int ARG_DOC = 0;

// Begin a MySQL call whose arguments from `first_path` on alternate path
// and value (stride 2) or are all paths (stride 1): NULL for a NULL
// document or path, else the context and the document.  false when the
// call has been answered.
bool begin(sqlite3_context *sc, int argc, sqlite3_value **argv, int first_path, int stride,
           jlpca_ctx **ctx, json_node **doc) {
    if (sqlite3_value_type(argv[ARG_DOC]) == SQLITE_NULL) return false;
    for (int i = first_path; i < argc; i += stride)
        if (sqlite3_value_type(argv[i]) == SQLITE_NULL) return false;
    *ctx = row_begin(connection_of(sc), dialect::mysql);
    return read_arg_or_fail(sc, *ctx, argv, ARG_DOC, doc);
}

bool path_or_fail(sqlite3_context *sc, call_cache &cache, jlpca_ctx *ctx, sqlite3_value **argv,
                  int i, jpath **path, bool keep = true) {
    const int32_t rc = cache.path(ctx, argv, i, path_language::mysql, path, keep);
    if (rc == 0) return true;
    result_path_code(sc, rc, ctx, i + 1);
    return false;
}

// The matches of several paths, gathered on the row heap.
struct match_list {
    json_node **items = nullptr;
    uint32_t count = 0;
    uint32_t capacity = 0;
};

int32_t add_match(jlpca_ctx *ctx, match_list &m, json_node *node) {
    if (m.count == m.capacity) {
        const uint32_t capacity = m.capacity ? m.capacity * 2 : 8;
        auto *items = static_cast<json_node **>(mem_heap_alloc_low(
            ctx->env, ctx->heap, sizeof(json_node *) * capacity, 0, "sqlite/mysql", __LINE__));
        if (!items) return VXJSON_ERR_NOMEM;
        for (uint32_t k = 0; k < m.count; k++) items[k] = m.items[k];
        m.items = items;
        m.capacity = capacity;
    }
    m.items[m.count++] = node;
    return 0;
}

// One path: its value (several matches come as an array).  Several paths:
// an array of every match of every path.  No match at all: NULL.
void mysql_json_extract(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    if (argc < 2) return result_usage(sc, "mysql_json_extract", "a document and a path are needed");
    jlpca_ctx *ctx;
    json_node *doc;
    if (!begin(sc, argc, argv, 1, 1, &ctx, &doc)) return;
    call_cache cache(sc);
    match_list matches;
    for (int i = 1; i < argc; i++) {
        jpath *path;
        json_node *found = nullptr;
        if (!path_or_fail(sc, cache, ctx, argv, i, &path)) return;
        int32_t rc = jpath_filter_mysql(doc, path, ctx, 1, &found);
        if (rc) return result_code(sc, rc);
        if (!found) continue;
        if (argc == 2) return result_tree(sc, ctx, found, JSON_FMT_COMPACT, JSON_CONV_MYSQL);
        if (found->type == JSON_ARRAY && found->is_virtual) {
            for (uint32_t k = 0; k < found->count && rc == 0; k++)
                rc = add_match(ctx, matches, found->items[k]);
        } else {
            rc = add_match(ctx, matches, found);
        }
        if (rc) return result_code(sc, rc);
    }
    if (matches.count == 0) return;
    // An array over the matches, which stay where they are in the document.
    json_node *all = json_mem_create(ctx, JSON_ARRAY);
    if (!all) return result_code(sc, VXJSON_ERR_NOMEM);
    all->items = matches.items;
    all->count = matches.count;
    all->capacity = matches.capacity;
    result_tree(sc, ctx, all, JSON_FMT_COMPACT, JSON_CONV_MYSQL);
}

void mysql_json_contains_path(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    if (argc < 3)
        return result_usage(sc, "mysql_json_contains_path",
                            "a document, 'one' or 'all' and a path are needed");
    if (sqlite3_value_type(argv[1]) == SQLITE_NULL) return;
    const auto *mode = reinterpret_cast<const char *>(sqlite3_value_text(argv[1]));
    const bool all = mode && strcasecmp(mode, "all") == 0;
    if (!all && (!mode || strcasecmp(mode, "one") != 0))
        return result_usage(sc, "mysql_json_contains_path",
                            "the second argument is 'one' or 'all'");
    jlpca_ctx *ctx;
    json_node *doc;
    if (!begin(sc, argc, argv, 2, 1, &ctx, &doc)) return;
    call_cache cache(sc);
    for (int i = 2; i < argc; i++) {
        jpath *path;
        int32_t found = 0;
        if (!path_or_fail(sc, cache, ctx, argv, i, &path)) return;
        if (int32_t rc = jpath_json_contains_path(doc, path, ctx, &found))
            return result_code(sc, rc);
        // 'one' is answered by the first path found, 'all' by the first missing.
        if (found != all) return sqlite3_result_int(sc, found);
    }
    sqlite3_result_int(sc, all);
}

// The (path, value) pairs of a call, applied in order to the document.
using pair_action = int32_t (*)(jlpca_ctx *, json_node **doc, json_node *value, jpath *path,
                                char **text, uint32_t *len);

void apply_pairs(sqlite3_context *sc, int argc, sqlite3_value **argv, const char *fn,
                 pair_action action, bool keep_paths, int32_t set_mode) {
    if (argc < 3 || argc % 2 == 0)
        return result_usage(sc, fn, "a document and pairs of path and value are needed");
    jlpca_ctx *ctx;
    json_node *doc;
    if (!begin(sc, argc, argv, 1, 2, &ctx, &doc)) return;
    ctx->set_mode = set_mode;
    call_cache cache(sc);
    char *text = nullptr;
    uint32_t len = 0;
    for (int i = 1; i < argc; i += 2) {
        jpath *path;
        json_node *value;
        if (!path_or_fail(sc, cache, ctx, argv, i, &path, keep_paths)) return;
        if (int32_t rc = value_arg(ctx, argv, i + 1, &value))
            return result_document_code(sc, rc, ctx, i + 2);
        if (int32_t rc = action(ctx, &doc, value, path, &text, &len)) return result_code(sc, rc);
    }
    if (text) return result_json(sc, text, len);
    result_tree(sc, ctx, doc, JSON_FMT_COMPACT, JSON_CONV_MYSQL);
}

int32_t set_value(jlpca_ctx *ctx, json_node **doc, json_node *value, jpath *path, char **text,
                  uint32_t *len) {
    // Each pair writes the whole document; the last text is the answer.
    return jsonb_set_with_path(*doc, value, path, ctx, text, len);
}

int32_t append_value(jlpca_ctx *ctx, json_node **doc, json_node *value, jpath *path, char **,
                     uint32_t *) {
    return json_array_add_element_mysql(doc, value, path, ctx, 0);
}

int32_t insert_value(jlpca_ctx *ctx, json_node **doc, json_node *value, jpath *path, char **,
                     uint32_t *) {
    return json_array_add_element_mysql(doc, value, path, ctx, 1);
}

void mysql_json_set(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    apply_pairs(sc, argc, argv, "mysql_json_set", set_value, true, JSON_SET_MODE_SET);
}

void mysql_json_insert(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    apply_pairs(sc, argc, argv, "mysql_json_insert", set_value, true, JSON_SET_MODE_INSERT);
}

void mysql_json_replace(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    apply_pairs(sc, argc, argv, "mysql_json_replace", set_value, true, JSON_SET_MODE_REPLACE);
}

void mysql_json_array_append(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    apply_pairs(sc, argc, argv, "mysql_json_array_append", append_value, true, 0);
}

// Inserting may shorten the path it is given, so its paths are compiled
// for each row.
void mysql_json_array_insert(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    apply_pairs(sc, argc, argv, "mysql_json_array_insert", insert_value, false, 0);
}

void mysql_json_remove(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    if (argc < 2) return result_usage(sc, "mysql_json_remove", "a document and a path are needed");
    jlpca_ctx *ctx;
    json_node *doc;
    if (!begin(sc, argc, argv, 1, 1, &ctx, &doc)) return;
    call_cache cache(sc);
    for (int i = 1; i < argc; i++) {
        jpath *path;
        if (!path_or_fail(sc, cache, ctx, argv, i, &path)) return;
        if (int32_t rc = json_remove_mysql(doc, path, ctx)) return result_code(sc, rc);
    }
    result_tree(sc, ctx, doc, JSON_FMT_COMPACT, JSON_CONV_MYSQL);
}

constexpr function_def FUNCTIONS[] = {
    {"mysql_json_extract", -1, -1, mysql_json_extract},
    {"mysql_json_contains_path", -1, -1, mysql_json_contains_path},
    {"mysql_json_set", -1, -1, mysql_json_set},
    {"mysql_json_insert", -1, -1, mysql_json_insert},
    {"mysql_json_replace", -1, -1, mysql_json_replace},
    {"mysql_json_remove", -1, -1, mysql_json_remove},
    {"mysql_json_array_append", -1, -1, mysql_json_array_append},
    {"mysql_json_array_insert", -1, -1, mysql_json_array_insert},
};

} // namespace

std::span<const function_def> mysql_path_functions() { return FUNCTIONS; }

} // namespace vxsql
