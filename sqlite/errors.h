// errors.h -- how the library's codes reach SQL: a negative code becomes a
// SQLite error whose message names the code and its meaning, e.g.
//   vxjson -3105: invalid JSON text (argument 1, line 2: ...)
#ifndef VXJSON_SQLITE_ERRORS_H
#define VXJSON_SQLITE_ERRORS_H

#include <cstdint>

#include "sqlite_api.h"
#include "vxjson.h"

namespace vxsql {

// The meaning of a library code, or "error" for one it does not give.
const char *code_text(int32_t code);

// Fail the call with code (negative).
void result_code(sqlite3_context *sc, int32_t code);
// The same for a document argument `arg` (from 1) that the context just
// failed to read: the message adds where and why, from the reader.
void result_document_code(sqlite3_context *sc, int32_t code, const jlpca_ctx *ctx, int arg);
// The same for a path argument `arg`: the message adds the path scanner's
// own message when it left one.
void result_path_code(sqlite3_context *sc, int32_t code, const jlpca_ctx *ctx, int arg);

// Fail the call for a bad argument of the extension's own (an unknown
// dialect or clause): "<function>: <what>".
void result_usage(sqlite3_context *sc, const char *fn, const char *what);

} // namespace vxsql

#endif
