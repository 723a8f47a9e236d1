// heap_text.h -- the text results of the SQL/JSON function layer: a
// growable string whose storage is the context's heap, so the text handed
// to the caller lives exactly as long as the document and the path, and the
// "[]" of EMPTY ON ERROR (also on the heap) needs no other rule.  Growth
// leaves the smaller block to the heap; the first block of 100 bytes holds
// most results, so a call usually takes one block.
#ifndef VXJSON_HEAP_TEXT_H
#define VXJSON_HEAP_TEXT_H

#include <cstdint>

#include "vx_heap.h"
#include "vxjson.h"
#include "vxstr.h"

namespace vxjson {

struct heap_text {
    vx_allocator alloc; // from the context's heap; nothing is freed
    vxstr s;            // the string record itself stays on the stack
};

inline void *heap_text_alloc(void *env, void *heap, size_t size, const char *src, int line) {
    return mem_heap_alloc_low(env, heap, size, 0, src, line);
}

// An empty text of VXSTR_INITIAL_SIZE bytes: 0 or -503 (unreported).
inline int32_t heap_text_begin(jlpca_ctx *ctx, heap_text *t, const char *src, int32_t line) {
    t->alloc = vx_allocator{heap_text_alloc, nullptr, ctx->heap};
    t->s = vxstr{0, VXSTR_INITIAL_SIZE, nullptr, 0};
    t->s.buf = static_cast<char *>(
        mem_heap_alloc_low(ctx->env, ctx->heap, VXSTR_INITIAL_SIZE + 1, 0, src, line));
    if (!t->s.buf) return VXJSON_ERR_NOMEM;
    t->s.buf[0] = '\0';
    return 0;
}

// The status of the appends: -503 once one of them failed, else rc.
inline int32_t heap_text_status(const heap_text &t, int32_t rc) {
    return rc >= 0 && t.s.failed ? VXJSON_ERR_NOMEM : rc;
}

} // namespace vxjson

#endif
