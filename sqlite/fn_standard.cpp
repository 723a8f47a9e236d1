// The SQL-standard functions SQLite lacks:
//   json_value(doc, path [, returning [, on_empty [, on_error [, default...]]]])
//   json_query(doc, path [, wrapper [, on_empty [, on_error [, default...]]]])
//   json_exists(doc, path [, on_error])
// The clauses are short strings (clauses.h).  A DEFAULT clause takes its
// value from the arguments after the clauses: the first for the first
// DEFAULT clause (ON EMPTY before ON ERROR), the next for the second.
// Documents are read lax; a document that cannot be read is an error that
// ON ERROR handles, as in a query over a JSON column.  A path that does not
// compile always fails the statement.
#include <charconv>
#include <cstdlib>

#include "cache.h"
#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"
#include "vxtime.h"
#include "xdec.h"

namespace vxsql {

namespace {

// Argument positions.
constexpr int ARG_DOC = 0;
constexpr int ARG_PATH = 1;
constexpr int ARG_TYPE_OR_WRAPPER = 2;
constexpr int ARG_ON_EMPTY = 3;
constexpr int ARG_ON_ERROR = 4;
constexpr int ARG_FIRST_DEFAULT = 5;

// The function kinds of the function layer, which reads them from the
// context's escape_mode (JSON_QUERY keeps strings in their JSON form).
constexpr int32_t KIND_VALUE = JLPCA_ESCAPE_DECODE;
constexpr int32_t KIND_QUERY = JLPCA_ESCAPE_KEEP;

// What both functions share: the clauses, the compiled path, the document.
struct sql_json_call {
    sqlite3_context *sc;
    int argc;
    sqlite3_value **argv;
    const char *fn;
    jlpca_ctx *ctx = nullptr;
    jpath *path = nullptr;
    json_node *doc = nullptr;
    int32_t incoming = 0; // the document's reading status, for ON ERROR
    on_clause on_empty{};
    on_clause on_error{};
    int empty_default = -1; // argument positions of the DEFAULT values
    int error_default = -1;
    jpath found_path{}; // the path's clauses over a value found in the text
};

// The ON clauses and the positions of their DEFAULT values; false when
// the call has failed.
bool read_on_clauses(sql_json_call &c) {
    if (!clause_arg(c.sc, c.argc, c.argv, ARG_ON_EMPTY, c.fn, parse_on_empty, default_on_empty(),
                    &c.on_empty) ||
        !clause_arg(c.sc, c.argc, c.argv, ARG_ON_ERROR, c.fn, parse_on_error, default_on_error(),
                    &c.on_error))
        return false;
    int next = ARG_FIRST_DEFAULT;
    if (c.on_empty.use_default) c.empty_default = next++;
    if (c.on_error.use_default) c.error_default = next++;
    const int wanted = next - ARG_FIRST_DEFAULT;
    const int given = c.argc > ARG_FIRST_DEFAULT ? c.argc - ARG_FIRST_DEFAULT : 0;
    if (given < wanted) {
        result_usage(c.sc, c.fn, "a DEFAULT clause needs its value after the clauses");
        return false;
    }
    if (given > wanted) {
        result_usage(c.sc, c.fn, "more arguments than the DEFAULT clauses take");
        return false;
    }
    return true;
}

// Begin a call of kind `kind`: the path, compiled once per statement.
// false when the call has been answered already.
bool begin(sql_json_call &c, call_cache &cache, int32_t kind) {
    if (sqlite3_value_type(c.argv[ARG_DOC]) == SQLITE_NULL ||
        sqlite3_value_type(c.argv[ARG_PATH]) == SQLITE_NULL)
        return false;
    c.ctx = row_begin(connection_of(c.sc), dialect::standard);
    c.ctx->escape_mode = kind;
    if (int32_t rc = cache.path(c.ctx, c.argv, ARG_PATH, path_language::standard, &c.path)) {
        result_path_code(c.sc, rc, c.ctx, ARG_PATH + 1);
        return false;
    }
    c.path->format = JSON_FMT_COMPACT;
    c.path->on_empty = c.on_empty.value;
    c.path->on_error = c.on_error.value;
    return true;
}

// Read the document into a tree; a failure is kept for ON ERROR.
void read_document(sql_json_call &c) {
    c.incoming = read_arg(c.ctx, c.argv, ARG_DOC, &c.doc);
    if (c.incoming) c.doc = nullptr;
}

// JSON_VALUE's document: where the library can find the one scalar the
// path names from the text alone, that scalar stands for the document and
// a copy of the path without its steps (which gives back its root) for the
// path, so the function layer answers exactly as over the tree.  Anything
// else reads the tree.  false when the call has failed.
bool find_value(sql_json_call &c) {
    int32_t rc = 0;
    const std::string_view text = arg_text(c.argv[ARG_DOC], &rc);
    json_node *found = nullptr;
    if (rc == 0)
        rc = json_query_text(c.ctx, text.data(), static_cast<uint32_t>(text.size()), c.path,
                             &found);
    else rc = JSON_QUERY_TEXT_USE_TREE; // the tree's reading fails the same way
    if (rc < 0) {
        result_code(c.sc, rc);
        return false;
    }
    if (rc == JSON_QUERY_TEXT_USE_TREE) {
        read_document(c);
        return true;
    }
    c.found_path = *c.path;
    c.found_path.first_filter = c.found_path.last_filter = nullptr;
    c.found_path.filter_count = 0;
    c.path = &c.found_path;
    c.doc = found;
    return true;
}

// The function layer's status: 100 is ON ERROR's DEFAULT; no match under
// DEFAULT ON EMPTY comes back as its error.  true when rc answered the call.
bool finish_status(const sql_json_call &c, int32_t rc) {
    if (rc == VXJSON_NO_VALUE) {
        if (c.error_default >= 0) sqlite3_result_value(c.sc, c.argv[c.error_default]);
        return true;
    }
    if (rc == VXJSON_ERR_PATH_NO_MATCH && c.empty_default >= 0) {
        sqlite3_result_value(c.sc, c.argv[c.empty_default]);
        return true;
    }
    if (rc < 0) {
        // The document's own error names its argument and the reader's text.
        if (rc == c.incoming) result_document_code(c.sc, rc, c.ctx, ARG_DOC + 1);
        else result_code(c.sc, rc);
        return true;
    }
    return false;
}

// A number as SQLite's INTEGER when it is whole and fits, else as REAL.
void result_number(sqlite3_context *sc, const xdec &d) {
    char text[XDEC_TEXT_MAX];
    const int32_t n = xdec_to_char(&d, text, sizeof text);
    if (n < 0) return result_code(sc, n);
    int64_t whole;
    auto [end, ec] = std::from_chars(text, text + n, whole);
    if (ec == std::errc() && end == text + n) return sqlite3_result_int64(sc, whole);
    sqlite3_result_double(sc, std::strtod(text, nullptr));
}

void result_datetime(sqlite3_context *sc, const vxtime &t, returning_kind kind) {
    char text[VXTIME_TEXT_MAX];
    const int32_t n = vxtime_to_char(
        &t, 9, kind == returning_kind::date ? VXTIME_FMT_DATE : VXTIME_FMT_ISO, text);
    if (n < 0) return result_code(sc, n);
    sqlite3_result_text(sc, text, n, SQLITE_TRANSIENT);
}

void json_value(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    sql_json_call c{sc, argc, argv, "json_value"};
    returning_clause ret;
    if (!clause_arg(sc, argc, argv, ARG_TYPE_OR_WRAPPER, c.fn, parse_returning, default_returning(),
                    &ret) ||
        !read_on_clauses(c))
        return;
    call_cache cache(sc);
    if (!begin(c, cache, KIND_VALUE)) return;
    c.path->ret_type = ret.ret_type;
    c.path->ret_len = ret.ret_len;
    c.path->ret_scale = ret.ret_scale;
    c.path->wrapper = JPATH_WRAPPER_WITHOUT;
    if (!find_value(c)) return;
    if (ret.kind == returning_kind::number) {
        json_number_result r{};
        const int32_t rc = json_value_number(c.ctx, c.doc, c.path, &r, c.incoming);
        if (finish_status(c, rc)) return;
        if (r.has_value) result_number(sc, r.value);
        return;
    }
    if (ret.kind != returning_kind::text) {
        json_datetime_result r{};
        const int32_t rc = json_value_date(c.ctx, c.doc, c.path, &r, c.incoming);
        if (finish_status(c, rc)) return;
        if (r.has_value) result_datetime(sc, r.value, ret.kind);
        return;
    }
    char *text = nullptr;
    uint32_t len = 0;
    const int32_t rc = json_fun_varchar(c.ctx, c.doc, c.path, &text, &len, c.incoming);
    if (finish_status(c, rc)) return;
    if (text) sqlite3_result_text(sc, text, static_cast<int>(len), SQLITE_TRANSIENT);
}

void json_query_fn(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    sql_json_call c{sc, argc, argv, "json_query"};
    uint32_t wrapper = JPATH_WRAPPER_WITHOUT;
    if (!clause_arg(sc, argc, argv, ARG_TYPE_OR_WRAPPER, c.fn, parse_wrapper,
                    uint32_t{JPATH_WRAPPER_WITHOUT}, &wrapper) ||
        !read_on_clauses(c))
        return;
    call_cache cache(sc);
    if (!begin(c, cache, KIND_QUERY)) return;
    const returning_clause ret = default_returning();
    c.path->ret_type = ret.ret_type;
    c.path->ret_len = ret.ret_len;
    c.path->ret_scale = 0;
    c.path->wrapper = wrapper;
    read_document(c);
    char *text = nullptr;
    uint32_t len = 0;
    const int32_t rc = json_fun_varchar(c.ctx, c.doc, c.path, &text, &len, c.incoming);
    if (finish_status(c, rc)) return;
    if (text) result_json(sc, text, len);
}

// 1 when the path matches something, 0 when it does not; an error (the
// document's included) gives what ON ERROR says, FALSE by default.
void json_exists(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    on_clause on_error;
    if (!clause_arg(sc, argc, argv, ARG_TYPE_OR_WRAPPER, "json_exists", parse_exists_on_error,
                    default_exists_on_error(), &on_error))
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
    {"json_value", 2, 7, json_value},
    {"json_query", 2, 7, json_query_fn},
    {"json_exists", 2, 3, json_exists},
};

} // namespace

std::span<const function_def> standard_functions() { return FUNCTIONS; }

} // namespace vxsql
