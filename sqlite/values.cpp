// SQLite values in and out.
#include "values.h"

#include <strings.h>

#include <cmath>

#include "errors.h"
#include "vxstr.h"

namespace vxsql {

namespace {

// SQLite's mark on text that holds JSON (its json() and friends set it).
constexpr unsigned JSON_SUBTYPE = 'J';

} // namespace

bool any_null(int argc, sqlite3_value **argv) {
    for (int i = 0; i < argc; i++)
        if (sqlite3_value_type(argv[i]) == SQLITE_NULL) return true;
    return false;
}

std::string_view arg_text(sqlite3_value *v, int32_t *rc) {
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(v));
    const int len = sqlite3_value_bytes(v);
    if (!text) {
        // A NULL text for a value that is not NULL means SQLite ran out of
        // memory converting it.
        if (sqlite3_value_type(v) != SQLITE_NULL) *rc = VXJSON_ERR_NOMEM;
        return {};
    }
    return {text, static_cast<size_t>(len)};
}

int32_t read_arg(jlpca_ctx *ctx, sqlite3_value **argv, int i, json_node **root) {
    int32_t rc = 0;
    const std::string_view text = arg_text(argv[i], &rc);
    if (rc) return rc;
    if ((rc = jlpca_reinit(ctx, text.data(), static_cast<uint32_t>(text.size())))) return rc;
    *root = nullptr;
    if ((rc = json_flex(ctx, root))) return rc;
    return *root ? 0 : VXJSON_ERR_INVALID_JSON;
}

bool read_arg_or_fail(sqlite3_context *sc, jlpca_ctx *ctx, sqlite3_value **argv, int i,
                      json_node **root) {
    const int32_t rc = read_arg(ctx, argv, i, root);
    if (rc == 0) return true;
    result_document_code(sc, rc, ctx, i + 1);
    return false;
}

void result_json(sqlite3_context *sc, const char *text, uint32_t len) {
    sqlite3_result_text(sc, text ? text : "", static_cast<int>(len), SQLITE_TRANSIENT);
    sqlite3_result_subtype(sc, JSON_SUBTYPE);
}

void result_json_or_code(sqlite3_context *sc, int32_t rc, const char *text, uint32_t len) {
    if (rc < 0) return result_code(sc, rc);
    result_json(sc, text, len);
}

int32_t value_arg(jlpca_ctx *ctx, sqlite3_value **argv, int i, json_node **out) {
    sqlite3_value *v = argv[i];
    const int type = sqlite3_value_type(v);
    if (type == SQLITE_TEXT && sqlite3_value_subtype(v) == JSON_SUBTYPE)
        return read_arg(ctx, argv, i, out);
    json_node *node = nullptr;
    int32_t rc = 0;
    switch (type) {
    case SQLITE_NULL: node = json_mem_create(ctx, JSON_NULL); break;
    case SQLITE_INTEGER:
        if ((node = json_mem_create(ctx, JSON_INTEGER))) node->ival = sqlite3_value_int64(v);
        break;
    case SQLITE_FLOAT: {
        const double d = sqlite3_value_double(v);
        if (!std::isfinite(d)) {
            node = json_mem_create(ctx, JSON_NULL);
            break;
        }
        // SQLite's own text of a real ("1.5", "1.0e+20") is a JSON number.
        const std::string_view text = arg_text(v, &rc);
        if (rc) return rc;
        if ((node = json_mem_create(ctx, JSON_DECIMAL)))
            rc = json_string_set_value_low(ctx->env, ctx->heap, node, text.data(),
                                           static_cast<uint32_t>(text.size()), 0, 0);
        break;
    }
    default: {
        const std::string_view text = arg_text(v, &rc);
        if (rc) return rc;
        // Flag 1: the text is decoded, so writing it as JSON escapes it.
        if ((node = json_mem_create(ctx, JSON_STRING)))
            rc = json_string_set_value_low(ctx->env, ctx->heap, node, text.data(),
                                           static_cast<uint32_t>(text.size()), 0, 1);
        break;
    }
    }
    if (!node) return VXJSON_ERR_NOMEM;
    if (rc) return rc;
    *out = node;
    return 0;
}

void result_tree(sqlite3_context *sc, jlpca_ctx *ctx, const json_node *node, uint32_t flags,
                 uint8_t conv) {
    vxstr *s = vxstr_create(ctx->env, ctx->allocator, VXSTR_INITIAL_SIZE);
    if (!s) return result_code(sc, VXJSON_ERR_NOMEM);
    int32_t rc = json_to_string(ctx, ctx->allocator, s, node, flags, 0, 0, conv);
    if (rc == 0 && s->failed) rc = VXJSON_ERR_NOMEM;
    // Both the record and its text are in the row heap: nothing to free.
    result_json_or_code(sc, rc, vxstr_getstr(s), s->len);
}

bool dialect_arg(sqlite3_value *v, dialect *d) {
    const auto *name = reinterpret_cast<const char *>(sqlite3_value_text(v));
    if (!name) return false;
    if (strcasecmp(name, "standard") == 0) *d = dialect::standard;
    else if (strcasecmp(name, "pg") == 0) *d = dialect::pg;
    else if (strcasecmp(name, "mysql") == 0) *d = dialect::mysql;
    else return false;
    return true;
}

} // namespace vxsql
