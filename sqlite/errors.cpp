// Codes to SQLite error messages.
#include "errors.h"

#include <cstdio>

#include "vx_elog.h"
#include "vxtime.h"
#include "xdec.h"

namespace vxsql {

namespace {

struct code_row {
    int32_t code;
    const char *text;
};

constexpr code_row CODE_TEXTS[] = {
    {VXJSON_ERR_UNTERMINATED_SQ, "unterminated single-quoted string"},
    {VXJSON_ERR_LEX, "lexical error"},
    {VXJSON_ERR_NOMEM, "out of memory"},
    {VXJSON_ERR_SYNTAX, "syntax error"},
    {VXJSON_ERR_LONE_BACKSLASH, "text ends in a lone backslash"},
    {VXJSON_ERR_PATH, "invalid path or subscripts"},
    {VXJSON_ERR_QUERY_SCALAR, "JSON_QUERY without wrapper met a scalar or several values"},
    {VXJSON_ERR_PATH_NO_MATCH, "path step matched nothing or does not apply"},
    {VXJSON_ERR_INVALID_JSON, "invalid JSON text"},
    {VXJSON_ERR_VALUE_NOT_SCALAR, "JSON_VALUE met an object or array"},
    {VXJSON_ERR_VALUE_MANY, "JSON_VALUE met several values"},
    {VXJSON_ERR_RETURN_TYPE, "result does not fit the returning type"},
    {VXJSON_ERR_MULTI_STEP, "path must name one place"},
    {VXJSON_ERR_TEXT_PATH_SCALAR, "text-array path applied to a scalar"},
    {VXJSON_ERR_TEXT_PATH_INDEX, "text-array path element on an array is not an integer"},
    {VXJSON_ERR_REMOVE_SUBSCRIPT, "subscript applied to an object in a removal"},
    {VXJSON_ERR_CONCAT_SCALAR, "cannot concatenate an object with a scalar"},
    {VXJSON_ERR_DOUBLE_OVERFLOW, "number overflows a double"},
    {VXJSON_ERR_NOT_DATETIME, "string is not a datetime"},
    {VXJSON_ERR_NOT_NUMBER, "string is not a number"},
    {VXJSON_ERR_CAST, "value cannot be cast"},
    {XDEC_ERR_DIV_ZERO, "division by zero"},
    {XDEC_ERR_PRECISION, "number does not fit the precision and scale"},
    {XDEC_ERR_ARG, "bad precision or scale"},
    {VXTIME_ERR_RANGE, "datetime out of range"},
    {VXTIME_ERR_ARG, "bad datetime type or format"},
};

} // namespace

const char *code_text(int32_t code) {
    for (const code_row &r : CODE_TEXTS)
        if (r.code == code) return r.text;
    return "error";
}

namespace {

// "vxjson <code>: <meaning>" and, when given, " (<detail>)".
void fail(sqlite3_context *sc, int32_t code, const char *detail) {
    // The trail of reports is of no use here; keep it from growing.
    elog_trail_clear();
    char msg[JLPCA_ERR_MSG_SIZE + 160];
    if (detail && *detail)
        std::snprintf(msg, sizeof msg, "vxjson %d: %s (%s)", code, code_text(code), detail);
    else std::snprintf(msg, sizeof msg, "vxjson %d: %s", code, code_text(code));
    sqlite3_result_error(sc, msg, -1);
    if (code == VXJSON_ERR_NOMEM) sqlite3_result_error_code(sc, SQLITE_NOMEM);
}

} // namespace

void result_code(sqlite3_context *sc, int32_t code) { fail(sc, code, nullptr); }

void result_document_code(sqlite3_context *sc, int32_t code, const jlpca_ctx *ctx, int arg) {
    char detail[JLPCA_ERR_MSG_SIZE + 96];
    uint32_t offset = 0, line = 1, column = 1;
    const char *why = "";
    if (jlpca_error_position(ctx, &offset, &line, &column, &why) != 0 && why && *why)
        std::snprintf(detail, sizeof detail, "argument %d, line %u, column %u: %s", arg, line,
                      column, why);
    else std::snprintf(detail, sizeof detail, "argument %d", arg);
    fail(sc, code, detail);
}

void result_path_code(sqlite3_context *sc, int32_t code, const jlpca_ctx *ctx, int arg) {
    char detail[JLPCA_ERR_MSG_SIZE + 32];
    if (ctx->err_code != 0 && ctx->err_msg[0] != '\0')
        std::snprintf(detail, sizeof detail, "argument %d: %s", arg, ctx->err_msg);
    else std::snprintf(detail, sizeof detail, "argument %d", arg);
    fail(sc, code, detail);
}

void result_usage(sqlite3_context *sc, const char *fn, const char *what) {
    char msg[256];
    std::snprintf(msg, sizeof msg, "%s: %s", fn, what);
    sqlite3_result_error(sc, msg, -1);
}

} // namespace vxsql
