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

// Fail the call with code (negative).  `arg` (from 1, 0 for none) names the
// argument whose text was refused; the context adds the reader's own
// message and line when it recorded one.
void result_code(sqlite3_context *sc, int32_t code, const jlpca_ctx *ctx = nullptr,
                 int arg = 0);

// Fail the call for a bad argument of the extension's own (an unknown
// dialect or clause): "<function>: <what>".
void result_usage(sqlite3_context *sc, const char *fn, const char *what);

}  // namespace vxsql

#endif
