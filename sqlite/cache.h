// cache.h -- what a statement works out once: the clauses and the compiled
// paths of its arguments, kept as SQLite auxiliary data on the argument.
// SQLite keeps such data while the argument stays the same (a constant, or
// a bound parameter until it is bound again) and drops it otherwise.
//
// SQLite may free auxiliary data as soon as it is handed over, so a call
// keeps what it compiled to itself and hands it over when the call ends:
// one call_cache per call, on the stack, does that in its destructor.
#ifndef VXJSON_SQLITE_CACHE_H
#define VXJSON_SQLITE_CACHE_H

#include <cstdint>
#include <string_view>

#include "clauses.h"
#include "sqlite_api.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

namespace vxsql {

// How a path argument is compiled.
enum class path_language : uint8_t {
    standard, // $.a[1 to 3].b: jpath_flex under the context's switches
    mysql,    // one MySQL path: jpath_array_flex, single
    pg_array, // a PostgreSQL text array such as {a,0,"b c"}: jpath_parse_pg_array
};

// A compiled path with the heap it lives in.
struct compiled_path {
    vx_heap *heap;
    vx_allocator alloc;
    jpath *path; // the path (a block of count for MySQL arrays)
    uint32_t count;
    int arg;             // the argument it was compiled from
    compiled_path *next; // the call's other new paths, until handed over
};

class call_cache {
public:
    explicit call_cache(sqlite3_context *sc) : sc_(sc) {}
    ~call_cache();
    call_cache(const call_cache &) = delete;
    call_cache &operator=(const call_cache &) = delete;

    // The compiled path of argv[i]: 0 with *out, or the compiler's code
    // (the call has not failed yet).  The path's clause fields are the
    // caller's to set for each call.  keep false: the path is for this
    // row only (for callers that change the path as they use it).
    int32_t path(jlpca_ctx *ctx, sqlite3_value **argv, int i, path_language lang, jpath **out,
                 bool keep = true);

private:
    sqlite3_context *sc_;
    compiled_path *pending_ = nullptr; // compiled in this call, to hand over
};

// A clause argument argv[i] (left out when i >= argc, NULL or empty): true
// with *out (the default when left out), or false with the call failed
// with a message "<fn>: <what the clause may be>".
template <class T> using clause_parser = bool (*)(std::string_view, T *, const char **);

bool clause_text(sqlite3_value **argv, int argc, int i, std::string_view *text);
void *cached_clause(sqlite3_context *sc, int i);
void keep_clause(sqlite3_context *sc, int i, const void *clause, size_t size);
void clause_failed(sqlite3_context *sc, const char *fn, const char *why);

template <class T>
bool clause_arg(sqlite3_context *sc, int argc, sqlite3_value **argv, int i, const char *fn,
                clause_parser<T> parse, T fallback, T *out) {
    if (const void *kept = cached_clause(sc, i)) {
        *out = *static_cast<const T *>(kept);
        return true;
    }
    std::string_view text;
    if (!clause_text(argv, argc, i, &text)) {
        *out = fallback;
        return true;
    }
    const char *why = "";
    if (!parse(text, out, &why)) {
        clause_failed(sc, fn, why);
        return false;
    }
    keep_clause(sc, i, out, sizeof(T));
    return true;
}

} // namespace vxsql

#endif
