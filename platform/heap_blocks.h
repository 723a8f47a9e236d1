/*
 * heap_blocks.h -- where the heap's blocks come from and go to.
 *
 * A server makes a heap per statement and drops it when the statement
 * ends; memory the process has never touched costs a page fault per page
 * on first use.  So released blocks wait in a small cache of the calling
 * thread and the next heap on that thread takes them back, already
 * touched.  The cache is bounded in blocks and bytes and is emptied when
 * the thread ends.
 */
#ifndef VX_HEAP_BLOCKS_H
#define VX_HEAP_BLOCKS_H

#include <stddef.h>

namespace vxheap {

struct heap_block {
    heap_block *prev; // older block of the same heap, or the next cached block
    size_t size;      // usable bytes after the header
};

inline constexpr size_t ALIGN = 8;
inline size_t align_up(size_t n) { return (n + (ALIGN - 1)) & ~(ALIGN - 1); }
inline char *block_data(heap_block *b) {
    return reinterpret_cast<char *>(b) + align_up(sizeof(heap_block));
}

// A block of at least `size` usable bytes (its `size` says how many), from
// the cache when one there fits without wasting more than it holds, else
// from the system; NULL when the system has none.
heap_block *block_take(size_t size);
// Hand a block back: kept for reuse while the cache has room, else freed.
void block_give(heap_block *b);

} // namespace vxheap

#endif
