/*
 * vx_alloc.h -- a pluggable allocator over malloc, with the accounting and
 * failure injection that tests need (outstanding blocks, fail after N).
 */
#ifndef VX_ALLOC_H
#define VX_ALLOC_H

#include <stdint.h>

#include "vx_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* State behind the default allocator's handle. */
typedef struct vx_alloc_state {
    uint64_t call_limit;  /* calls allowed to succeed; UINT64_MAX: no limit */
    uint64_t calls;       /* successful allocations so far */
    uint64_t outstanding; /* blocks allocated and not yet freed */
    uint64_t bytes_out;   /* bytes allocated and not yet freed */
    void *blocks;         /* outstanding blocks, owned by the state */
} vx_alloc_state;

/* Fill `a` with the malloc-backed operations over `state`, which is reset
 * (no limit, nothing counted).  The state must outlive every block. */
void vx_allocator_init(vx_allocator *a, vx_alloc_state *state);
/* Failure injection: the first `calls` allocations from now on succeed. */
void vx_allocator_set_call_limit(vx_alloc_state *state, uint64_t calls);
/* Free every block still outstanding (element arrays are never freed one
 * by one; this is how their owner releases them). */
void vx_allocator_release_all(vx_alloc_state *state);

/* An allocator that carves from a vx_heap and frees nothing: the fastest
 * choice for callers that release a whole parse with its heap. */
void vx_allocator_init_heap(vx_allocator *a, void *heap);

/* Allocate or free through a pluggable allocator; a NULL allocator means
 * malloc and free.  Free is done only when the allocator has both a handle
 * and a free operation, as the server's allocators require. */
void *vx_alloc(void *env, vx_allocator *a, size_t size, const char *src, int line);
void vx_free(void *env, vx_allocator *a, void *block);

#ifdef __cplusplus
}
#endif

#endif
