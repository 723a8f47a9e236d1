// PostgreSQL-compatible functions with a key or a path:
//   jsonb_delete(doc, key | position)   doc - 'key', doc - n (negative from the end)
//   jsonb_path_query(doc, '$.a[*]')     the match; several matches as one array
//   jsonb_set(doc, '{a,0}', value [, create_missing])   set or add at a text-array path
//   jsonb_insert(doc, '{a,0}', value [, insert_after])  insert before (after) an element,
//                                                       or add a missing member
//   jsonb_delete_path(doc, '{a,0}')     doc #- path
// Like PostgreSQL's, they give SQL NULL for any NULL argument.  Values are
// JSON text, as PostgreSQL's jsonb arguments are.
#include "cache.h"
#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"
#include "vx_number.h"

namespace vxsql {

namespace {

constexpr int ARG_DOC = 0;
constexpr int ARG_KEY_OR_PATH = 1;
constexpr int ARG_VALUE = 2;
constexpr int ARG_FLAG = 3; // create_missing, insert_after

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

// What the last step of a text-array path does at the place it names.
enum class pg_change { set, replace, insert_before, insert_after, remove };

// The position a text-array key names in an array of count elements, read
// as the library's set walk reads it (negative from the end); *before is
// true for a negative one that lies before the first element.  -3115 for
// a key that is no 32-bit integer.
int32_t array_position(const jpath_filter *step, uint32_t count, int64_t *pos, bool *before) {
    int64_t v = 0;
    if (step->key_len == 0 || str2int64(step->key, step->key_len, &v) != 0 || v < INT32_MIN ||
        v > INT32_MAX)
        return VXJSON_ERR_TEXT_PATH_INDEX;
    if (v < 0) v += count;
    *before = v < 0;
    *pos = v;
    return 0;
}

// Walk every step but the last with the library's set walk, which only
// descends on a step that is not its last: 0 with *parent the value the
// last step applies to, or NULL when an earlier step leads nowhere.
int32_t find_parent(jlpca_ctx *ctx, json_node *doc, json_node *value, const jpath *path,
                    json_node **parent) {
    json_node *current = doc;
    int32_t last = 0, done = 1;
    for (jpath_filter *step = path->first_filter; step != path->last_filter; step = step->next) {
        const int32_t rc = jsonb_set_with_path_element(&current, value, step, ctx, &last, &done,
                                                       JPATH_DIALECT_PG_ARRAY);
        if (rc) return rc;
        if (!done) current = nullptr;
        if (!current) break;
    }
    *parent = current;
    return 0;
}

int32_t insert_element(jlpca_ctx *ctx, json_node *array, json_node *value, int64_t at) {
    const int32_t rc =
        json_array_add_one_node(ctx, array, static_cast<int32_t>(at), value, JSON_ARRAY_INSERT);
    if (rc == 0) value->parent = array;
    return rc;
}

// An array's last step.  Out of range, a change that may add puts the
// value at the front for a negative position and at the end otherwise.
int32_t change_element(jlpca_ctx *ctx, json_node *array, jpath_filter *step, json_node *value,
                       pg_change what) {
    int64_t pos;
    bool before;
    if (int32_t rc = array_position(step, array->count, &pos, &before)) return rc;
    const int64_t count = array->count;
    switch (what) {
    case pg_change::remove: {
        if (before || pos >= count) return 0;
        jpath_filter one{};
        one.kind = JPATH_STEP_SUBSCRIPTS;
        one.first_index = static_cast<int32_t>(pos);
        return jsonb_remove_array_element_with_path(array, &one, ctx);
    }
    case pg_change::insert_before:
    case pg_change::insert_after:
        if (before) return insert_element(ctx, array, value, 0);
        if (pos >= count) return insert_element(ctx, array, value, count);
        return insert_element(ctx, array, value, what == pg_change::insert_after ? pos + 1 : pos);
    case pg_change::set:
        if (before) return insert_element(ctx, array, value, 0);
        break;
    case pg_change::replace: break;
    }
    // In range the value replaces the element; past the end it is added
    // when set_mode allows.
    int32_t last = 1, done = 1;
    return jsonb_set_array_with_path_element(&array, value, step, ctx, &last, &done,
                                             JPATH_DIALECT_PG_ARRAY);
}

// An object's last step; *exists when an insertion found the key there.
int32_t change_member(jlpca_ctx *ctx, json_node *object, jpath_filter *step, json_node *value,
                      pg_change what, bool *exists) {
    if (what == pg_change::remove) return jsonb_remove_object_with_path_element(object, step, ctx);
    if (what == pg_change::insert_before || what == pg_change::insert_after) {
        *exists = json_object_find_keyval_by_name(object, step->key, step->key_len) != nullptr;
        if (*exists) return 0;
    }
    int32_t last = 1, done = 1;
    return jsonb_set_object_with_path_element(&object, value, step, ctx, &last, &done,
                                              JPATH_DIALECT_PG_ARRAY);
}

uint32_t set_mode_of(pg_change what) {
    switch (what) {
    case pg_change::replace: return JSON_SET_MODE_REPLACE;
    case pg_change::set: return JSON_SET_MODE_SET;
    default: return JSON_SET_MODE_INSERT;
    }
}

// jsonb_set, jsonb_insert and jsonb_delete_path: read, walk to the last
// step's place, change it there, write the whole document.
void change_by_path(sqlite3_context *sc, int argc, sqlite3_value **argv, const char *fn,
                    pg_change what) {
    jlpca_ctx *ctx;
    json_node *doc;
    if (!begin(sc, argc, argv, &ctx, &doc)) return;
    json_node *value = nullptr;
    if (what != pg_change::remove && !read_arg_or_fail(sc, ctx, argv, ARG_VALUE, &value)) return;
    call_cache cache(sc);
    jpath *path;
    if (int32_t rc = cache.path(ctx, argv, ARG_KEY_OR_PATH, path_language::pg_array, &path))
        return result_path_code(sc, rc, ctx, ARG_KEY_OR_PATH + 1);
    if (doc->type != JSON_OBJECT && doc->type != JSON_ARRAY)
        return result_code(sc, VXJSON_ERR_TEXT_PATH_SCALAR);
    // PostgreSQL gives back an empty document where nothing could be added
    // before it looks at the path.
    const bool adds = what != pg_change::remove && what != pg_change::replace;
    json_node *parent = nullptr;
    if (path->last_filter && (doc->count > 0 || adds)) {
        if (int32_t rc = find_parent(ctx, doc, value, path, &parent)) return result_code(sc, rc);
    }
    if (parent) {
        ctx->set_mode = set_mode_of(what);
        bool exists = false;
        int32_t rc = 0;
        if (parent->type == JSON_OBJECT)
            rc = change_member(ctx, parent, path->last_filter, value, what, &exists);
        else if (parent->type == JSON_ARRAY)
            rc = change_element(ctx, parent, path->last_filter, value, what);
        if (rc) return result_code(sc, rc);
        if (exists)
            return result_usage(sc, fn, "cannot replace existing key (jsonb_set replaces values)");
    }
    result_tree(sc, ctx, doc, JSON_FMT_COMPACT, JSON_CONV_JSON);
}

void jsonb_set(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    const bool create = argc <= ARG_FLAG || sqlite3_value_int(argv[ARG_FLAG]) != 0;
    change_by_path(sc, argc, argv, "jsonb_set", create ? pg_change::set : pg_change::replace);
}

void jsonb_insert(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    const bool after = argc > ARG_FLAG && sqlite3_value_int(argv[ARG_FLAG]) != 0;
    change_by_path(sc, argc, argv, "jsonb_insert",
                   after ? pg_change::insert_after : pg_change::insert_before);
}

void jsonb_delete_path(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    change_by_path(sc, argc, argv, "jsonb_delete_path", pg_change::remove);
}

constexpr function_def FUNCTIONS[] = {
    {"jsonb_delete", 2, 2, jsonb_delete},
    {"jsonb_path_query", 2, 2, jsonb_path_query},
    {"jsonb_set", 3, 4, jsonb_set},
    {"jsonb_insert", 3, 4, jsonb_insert},
    {"jsonb_delete_path", 2, 2, jsonb_delete_path},
};

} // namespace

std::span<const function_def> pg_path_functions() { return FUNCTIONS; }

} // namespace vxsql
