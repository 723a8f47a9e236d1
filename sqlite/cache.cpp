// Clauses and compiled paths kept as SQLite auxiliary data.
#include "cache.h"

#include <cstring>

#include "errors.h"
#include "values.h"

namespace vxsql {

namespace {

// A path and its steps take a few hundred bytes.
constexpr size_t PATH_HEAP_FIRST_BLOCK = 1024;

void destroy_compiled_path(void *p) {
    // The record lives in its own heap.
    mem_heap_free(static_cast<compiled_path *>(p)->heap);
}

// A text array literal, read from a NUL-terminated copy since the
// compiler writes the elements over its input.
int32_t compile_pg_array(jlpca_ctx *ctx, std::string_view text, jpath **path, uint32_t *count) {
    *path = static_cast<jpath *>(
        mem_heap_alloc_low(ctx->env, ctx->heap, sizeof(jpath), 0, "sqlite/cache", __LINE__));
    auto *copy = static_cast<char *>(
        mem_heap_alloc_low(ctx->env, ctx->heap, text.size() + 1, 0, "sqlite/cache", __LINE__));
    if (!*path || !copy) return VXJSON_ERR_NOMEM;
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    *count = 1;
    jpath_init(*path, 0, 0, 0, JPATH_DIALECT_PG_ARRAY);
    // Names are compared as the documents hold them: decoded.
    (*path)->fun_kind = static_cast<uint32_t>(ctx->escape_mode);
    // The compiler leaves no message; an old one must not show.
    (void)jlpca_lex_error_reinit(ctx);
    return jpath_parse_pg_array(ctx->env, ctx->heap, ctx->allocator, *path, copy);
}

// Compile text in the language on the context's heap: 0 with the path
// (and the count of a MySQL block), or a negative code.
int32_t compile_on_heap(jlpca_ctx *ctx, std::string_view text, path_language lang, jpath **path,
                        uint32_t *count) {
    const auto len = static_cast<uint32_t>(text.size());
    int32_t rc = VXJSON_ERR_PATH;
    switch (lang) {
    case path_language::standard:
        *path = static_cast<jpath *>(
            mem_heap_alloc_low(ctx->env, ctx->heap, sizeof(jpath), 0, "sqlite/cache", __LINE__));
        if (!*path) return VXJSON_ERR_NOMEM;
        *count = 1;
        jpath_init(*path, 0, 0, 0, JPATH_DIALECT_STANDARD);
        rc = jlpca_reinit(ctx, text.data(), len);
        if (rc == 0) rc = jpath_flex(ctx, *path);
        break;
    case path_language::mysql: rc = jpath_array_flex(ctx, text.data(), len, 1, count, path); break;
    case path_language::pg_array: rc = compile_pg_array(ctx, text, path, count); break;
    }
    return rc < 0 ? rc : rc == 0 ? 0 : VXJSON_ERR_PATH;
}

// Compile into a heap of the path's own, so that it outlives the row.
int32_t compile_kept(jlpca_ctx *ctx, std::string_view text, path_language lang,
                     compiled_path **out) {
    vx_heap *heap = mem_heap_create(PATH_HEAP_FIRST_BLOCK);
    if (!heap) return VXJSON_ERR_NOMEM;
    auto *cp = static_cast<compiled_path *>(
        mem_heap_alloc_low(nullptr, heap, sizeof(compiled_path), 0, "sqlite/cache", __LINE__));
    if (!cp) {
        mem_heap_free(heap);
        return VXJSON_ERR_NOMEM;
    }
    *cp = compiled_path{heap, {}, nullptr, 0, 0, nullptr};
    vx_allocator_init_heap(&cp->alloc, heap);
    void *row_heap = ctx->heap;
    vx_allocator *row_alloc = ctx->allocator;
    ctx->heap = heap;
    ctx->allocator = &cp->alloc;
    const int32_t rc = compile_on_heap(ctx, text, lang, &cp->path, &cp->count);
    ctx->heap = row_heap;
    ctx->allocator = row_alloc;
    if (rc) {
        mem_heap_free(heap);
        return rc;
    }
    *out = cp;
    return 0;
}

} // namespace

call_cache::~call_cache() {
    while (compiled_path *cp = pending_) {
        pending_ = cp->next;
        sqlite3_set_auxdata(sc_, cp->arg, cp, destroy_compiled_path);
    }
}

int32_t call_cache::path(jlpca_ctx *ctx, sqlite3_value **argv, int i, path_language lang,
                         jpath **out, bool keep) {
    if (auto *kept = keep ? static_cast<compiled_path *>(sqlite3_get_auxdata(sc_, i)) : nullptr) {
        *out = kept->path;
        return 0;
    }
    int32_t rc = 0;
    const std::string_view text = arg_text(argv[i], &rc);
    if (rc) return rc;
    if (!keep) {
        uint32_t count;
        return compile_on_heap(ctx, text, lang, out, &count);
    }
    compiled_path *cp;
    if ((rc = compile_kept(ctx, text, lang, &cp))) return rc;
    *out = cp->path;
    cp->arg = i;
    cp->next = pending_;
    pending_ = cp;
    return 0;
}

bool clause_text(sqlite3_value **argv, int argc, int i, std::string_view *text) {
    if (i >= argc || sqlite3_value_type(argv[i]) == SQLITE_NULL) return false;
    const auto *t = reinterpret_cast<const char *>(sqlite3_value_text(argv[i]));
    if (!t || !*t) return false;
    *text = std::string_view(t, static_cast<size_t>(sqlite3_value_bytes(argv[i])));
    return true;
}

void *cached_clause(sqlite3_context *sc, int i) { return sqlite3_get_auxdata(sc, i); }

void keep_clause(sqlite3_context *sc, int i, const void *clause, size_t size) {
    void *copy = sqlite3_malloc64(size);
    if (!copy) return; // parsed again next row
    std::memcpy(copy, clause, size);
    sqlite3_set_auxdata(sc, i, copy, sqlite3_free);
}

void clause_failed(sqlite3_context *sc, const char *fn, const char *why) {
    result_usage(sc, fn, why);
}

} // namespace vxsql
