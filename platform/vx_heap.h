/*
 * vx_heap.h -- the server's memory heap: an arena of growing blocks.
 * Allocations are bump-pointer fast and never freed one by one; the whole
 * heap is reset or released at once.  Optional call and byte limits make
 * it return NULL on demand, so tests can drive every out-of-memory path.
 */
#ifndef VX_HEAP_H
#define VX_HEAP_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct vx_heap vx_heap;

/* A new heap whose first block holds `first_block` bytes (0: a default). */
vx_heap *mem_heap_create(size_t first_block);
/* Release the heap and everything allocated from it. */
void mem_heap_free(vx_heap *heap);
/* Forget every allocation but keep the first block for reuse. */
void mem_heap_reset(vx_heap *heap);

/* `size` bytes aligned to 8 from `heap` (a vx_heap), or NULL when
 * exhausted.  `env`, `flags`, `src` and `line` are the server's diagnostic
 * arguments and are not interpreted here. */
void *mem_heap_alloc_low(void *env, void *heap, size_t size, int flags, const char *src, int line);
/* A NUL-terminated copy of `text`, or NULL. */
char *mem_heap_strdup(void *env, void *heap, const char *text);

/* Failure injection: the first `calls` allocations from now on succeed,
 * every later one fails (UINT64_MAX: no limit). */
void mem_heap_set_call_limit(vx_heap *heap, uint64_t calls);
/* Failure injection: allocations beyond `bytes` in total fail. */
void mem_heap_set_byte_limit(vx_heap *heap, uint64_t bytes);
/* Allocations made (successful calls) since creation or reset. */
uint64_t mem_heap_alloc_count(const vx_heap *heap);
/* Bytes handed out since creation or reset. */
uint64_t mem_heap_bytes_used(const vx_heap *heap);

#ifdef __cplusplus
}
#endif

#endif
