// values.h -- SQLite values in and out: documents read from text arguments
// into trees of the row heap, trees and texts given back as SQL text.
#ifndef VXJSON_SQLITE_VALUES_H
#define VXJSON_SQLITE_VALUES_H

#include <cstdint>
#include <string_view>

#include "row.h"
#include "sqlite_api.h"
#include "vxjson.h"

namespace vxsql {

// True when one of the arguments is SQL NULL (the functions that then
// give SQL NULL test this first).
bool any_null(int argc, sqlite3_value **argv);

// The text of a value (any SQLite type reads as its text), or an empty
// view with *rc set to -503 when SQLite could not make it.
std::string_view arg_text(sqlite3_value *v, int32_t *rc);

// Read argument `argv[i]` into a tree: 0 with *root, or a negative code.
// An empty text, which the standard dialect reads as no document at all,
// is refused as invalid JSON text.
int32_t read_arg(jlpca_ctx *ctx, sqlite3_value **argv, int i, json_node **root);

// read_arg that fails the call itself (naming the argument); false then.
bool read_arg_or_fail(sqlite3_context *sc, jlpca_ctx *ctx, sqlite3_value **argv, int i,
                      json_node **root);

// Give back the text of node written with flags (JSON_FMT_*) and conv
// (JSON_CONV_*); on failure the call fails with the code.
void result_tree(sqlite3_context *sc, jlpca_ctx *ctx, const json_node *node, uint32_t flags,
                 uint8_t conv);

// A SQL value as a JSON value, for the functions that put values into
// documents: text is a JSON string, integers and reals JSON numbers (a real
// that is no finite number is null), NULL the JSON null, and text that a
// JSON function made (SQLite's JSON subtype, which this extension's JSON
// results carry too) the JSON it holds, read in the context's dialect.
// 0 with *out, or a negative code.
int32_t value_arg(jlpca_ctx *ctx, sqlite3_value **argv, int i, json_node **out);

// Give back JSON text marked with SQLite's JSON subtype, so that SQLite's
// own JSON functions take it as JSON rather than as a string.
void result_json(sqlite3_context *sc, const char *text, uint32_t len);

// Give back JSON text (copied by SQLite), or fail with rc when it is
// negative.
void result_json_or_code(sqlite3_context *sc, int32_t rc, const char *text, uint32_t len);

// The dialect named by a value ('standard', 'pg' or 'mysql', any case);
// false for another name.
bool dialect_arg(sqlite3_value *v, dialect *d);

} // namespace vxsql

#endif
