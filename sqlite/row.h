// row.h -- what one SQL function call works in.  A database connection
// owns one parse context and one heap; every call begins by resetting the
// heap (so the trees, paths and texts of the previous row are gone at once,
// and memory stays flat however many rows go by) and by putting the
// context's switches back to its dialect's defaults.
//
// SQLite runs the functions of one connection one at a time, so the
// connection's context is never used by two calls at once; nested calls
// such as json_value(jsonb_concat(a, b), '$.x') finish the inner call (its
// result copied out by SQLite) before the outer one begins.
#ifndef VXJSON_SQLITE_ROW_H
#define VXJSON_SQLITE_ROW_H

#include <cstddef>
#include <cstdint>

#include "sqlite_api.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

namespace vxsql {

enum class dialect : int32_t {
    standard = JLPCA_COMPAT_STANDARD,
    pg = JLPCA_COMPAT_PG,
    mysql = JLPCA_COMPAT_MYSQL,
};

// The per-connection state behind every registered function (its user
// data).  Each registration holds a reference; SQLite drops them one by
// one as the functions go, and the last one frees the state.
struct connection {
    vx_heap *heap;      // the row heap: trees, texts, element arrays
    size_t heap_first;  // bytes of its first block (kept across resets)
    vx_allocator alloc; // carves element arrays and texts from the heap
    uint32_t refs;      // registrations still holding the state
    jlpca_ctx ctx;      // the one parse context (large: never on a stack)
};

// A new connection state holding one reference, or NULL without memory.
connection *connection_create();
void connection_retain(connection *c);
// The destructor SQLite calls per registration (void * for its signature).
void connection_release(void *c);

// Begin a call in `d`: the heap forgets the previous row and the context
// gets the dialect's default switches; returns the context.
jlpca_ctx *row_begin(connection *c, dialect d);

// The connection of the function being called.
inline connection *connection_of(sqlite3_context *sc) {
    return static_cast<connection *>(sqlite3_user_data(sc));
}

} // namespace vxsql

#endif
