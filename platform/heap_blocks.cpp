// The per-thread cache of released heap blocks (see heap_blocks.h).
#include "heap_blocks.h"

#include <cstdint>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define VX_POISON(p, n)   ASAN_POISON_MEMORY_REGION(p, n)
#define VX_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION(p, n)
#else
#define VX_POISON(p, n)   ((void)(p), (void)(n))
#define VX_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace vxheap {
namespace {

// Enough for the blocks of a few large statements; a block larger than
// the whole allowance is never kept.
constexpr size_t MAX_BLOCKS = 32;
constexpr size_t MAX_BYTES = size_t(96) << 20;

struct block_cache {
    heap_block *head = nullptr; // singly linked through prev
    size_t blocks = 0;
    size_t bytes = 0;
    ~block_cache() {
        while (heap_block *b = head) {
            head = b->prev;
            VX_UNPOISON(block_data(b), b->size);
            std::free(b);
        }
    }
};

thread_local block_cache cache;

} // namespace

heap_block *block_take(size_t size) {
    // Best fit among the cached blocks that are at least `size` and at most
    // twice as big, so a small heap does not pin a large block.
    heap_block **best = nullptr;
    for (heap_block **link = &cache.head; *link; link = &(*link)->prev) {
        const size_t have = (*link)->size;
        if (have >= size && have / 2 <= size && (!best || have < (*best)->size)) best = link;
    }
    if (best) {
        heap_block *b = *best;
        *best = b->prev;
        cache.blocks--;
        cache.bytes -= b->size;
        VX_UNPOISON(block_data(b), b->size);
        b->prev = nullptr;
        return b;
    }
    if (size > SIZE_MAX - align_up(sizeof(heap_block))) return nullptr;
    auto *b = static_cast<heap_block *>(std::malloc(align_up(sizeof(heap_block)) + size));
    if (!b) return nullptr;
    b->prev = nullptr;
    b->size = size;
    return b;
}

void block_give(heap_block *b) {
    if (cache.blocks == MAX_BLOCKS || b->size > MAX_BYTES - cache.bytes) {
        std::free(b); // the cache is full: the system takes it back
        return;
    }
    VX_POISON(block_data(b), b->size);
    b->prev = cache.head;
    cache.head = b;
    cache.blocks++;
    cache.bytes += b->size;
}

} // namespace vxheap
