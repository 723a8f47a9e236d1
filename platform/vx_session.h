/*
 * vx_session.h -- what every caller of libvxjson sets up before its first
 * call, done the one way the server does it: a memory heap, a pluggable
 * allocator, and a parse context initialised over both.  Tests, fuzz
 * targets, benchmarks, the tool and the examples all start here.
 *
 * Header-only and plain C, so that it needs nothing beyond libvxjson and
 * libvxplatform and compiles into C and C++ callers alike.
 */
#ifndef VX_SESSION_H
#define VX_SESSION_H

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How to set up; zero-filled options give the standard dialect, lax
 * reading, escapes decoded, a default heap and the counting allocator. */
typedef struct vx_session_options {
    size_t heap_first_block; /* bytes of the heap's first block; 0: its default */
    int32_t heap_allocator;  /* 1: element arrays and texts come from the heap and go
                                with it; 0: the counting malloc allocator */
    int32_t escape_mode;     /* jlpca_init's switches */
    int32_t strict;
    int32_t unique_keys;
    int32_t compat;
} vx_session_options;

typedef struct vx_session {
    vx_heap *heap;              /* nodes, members and token copies */
    vx_alloc_state alloc_state; /* behind `alloc` when it counts */
    vx_allocator alloc;         /* element arrays and result texts */
    jlpca_ctx *ctx;             /* the context (from malloc: it is large) */
} vx_session;

/* Set up `s` by `options` (NULL: all defaults).  0, or -503 when the heap
 * or the context cannot be had (then nothing is left to close). */
static inline int32_t vx_session_open(vx_session *s, const vx_session_options *options) {
    vx_session_options none = {0, 0, 0, 0, 0, 0};
    const vx_session_options *o = options ? options : &none;
    s->heap = mem_heap_create(o->heap_first_block);
    s->ctx = (jlpca_ctx *)malloc(sizeof(jlpca_ctx));
    if (!s->heap || !s->ctx) {
        if (s->heap) mem_heap_free(s->heap);
        free(s->ctx);
        s->heap = NULL;
        s->ctx = NULL;
        return VXJSON_ERR_NOMEM;
    }
    if (o->heap_allocator) {
        vx_alloc_state unused = {0, 0, 0, 0, NULL};
        s->alloc_state = unused;
        vx_allocator_init_heap(&s->alloc, s->heap);
    } else {
        vx_allocator_init(&s->alloc, &s->alloc_state);
    }
    return jlpca_init(NULL, s->ctx, s->heap, &s->alloc, o->escape_mode, o->strict, o->unique_keys,
                      o->compat);
}

/* Release everything the session holds: the context's buffers, the
 * allocator's outstanding blocks, the heap (and every tree in it). */
static inline void vx_session_close(vx_session *s) {
    if (!s->ctx) return;
    jlpca_deinit(s->ctx);
    free(s->ctx);
    s->ctx = NULL;
    if (s->alloc.handle == (void *)&s->alloc_state) vx_allocator_release_all(&s->alloc_state);
    mem_heap_free(s->heap);
    s->heap = NULL;
}

#ifdef __cplusplus
}
#endif

#endif
