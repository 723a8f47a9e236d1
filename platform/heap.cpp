// Arena heap: blocks that grow geometrically, bump allocation inside a
// block, release all at once.  Nothing is freed piecemeal, which is what
// lets a parse allocate one node in a handful of instructions.  Blocks come
// from and go back to the thread's block cache (heap_blocks.cpp).
#include "vx_heap.h"

#include <cstdlib>
#include <cstring>

#include "heap_blocks.h"

using namespace vxheap;

namespace {

constexpr size_t DEFAULT_FIRST_BLOCK = 8 * 1024;
constexpr size_t MAX_GROW_BLOCK =
    64u * 1024 * 1024; // caps doubling; big requests get their own block

} // namespace

struct vx_heap {
    heap_block *current; // block being carved
    char *next;          // first free byte in current
    char *end;           // end of current
    heap_block *first;   // the block kept across resets
    size_t next_size;    // size of the next block to make
    uint64_t calls;      // successful allocations
    uint64_t bytes;      // bytes handed out
    uint64_t call_limit; // failure injection: calls allowed
    uint64_t byte_limit; // failure injection: bytes allowed
};

extern "C" vx_heap *mem_heap_create(size_t first_block) {
    auto *h = static_cast<vx_heap *>(std::calloc(1, sizeof(vx_heap)));
    if (!h) return nullptr;
    size_t size = first_block ? align_up(first_block) : DEFAULT_FIRST_BLOCK;
    heap_block *b = block_take(size);
    if (!b) {
        std::free(h);
        return nullptr;
    }
    h->current = h->first = b;
    h->next = block_data(b);
    h->end = h->next + b->size;
    h->next_size = size * 2;
    h->call_limit = UINT64_MAX;
    h->byte_limit = UINT64_MAX;
    return h;
}

// Free every block reachable from the current one except `keep`.
static void release_blocks_except(vx_heap *h, heap_block *keep) {
    heap_block *b = h->current;
    while (b) {
        heap_block *prev = b->prev;
        if (b != keep) block_give(b);
        b = prev;
    }
}

extern "C" void mem_heap_free(vx_heap *heap) {
    if (!heap) return;
    release_blocks_except(heap, nullptr);
    std::free(heap);
}

extern "C" void mem_heap_reset(vx_heap *heap) {
    release_blocks_except(heap, heap->first);
    heap->current = heap->first;
    heap->first->prev = nullptr;
    heap->next = block_data(heap->first);
    heap->end = heap->next + heap->first->size;
    heap->calls = 0;
    heap->bytes = 0;
}

[[gnu::noinline]] static void *alloc_in_new_block(vx_heap *h, size_t size) {
    const bool own = size > h->next_size / 4; // a large request gets a block of its own size
    heap_block *b = block_take(own ? size : h->next_size);
    if (!b) return nullptr;
    if (!own && h->next_size < MAX_GROW_BLOCK) h->next_size *= 2;
    if (own && h->next < h->end) {
        // Keep carving the current block: put the dedicated block behind it.
        b->prev = h->current->prev;
        h->current->prev = b;
        return block_data(b);
    }
    b->prev = h->current;
    h->current = b;
    h->next = block_data(b) + size;
    h->end = block_data(b) + b->size; // a cached block may be larger than asked
    return block_data(b);
}

extern "C" void *mem_heap_alloc_low(void *, void *heap, size_t size, int, const char *, int) {
    auto *h = static_cast<vx_heap *>(heap);
    if (h->calls >= h->call_limit) [[unlikely]]
        return nullptr;
    size = align_up(size ? size : 1);
    if (size > h->byte_limit - h->bytes) [[unlikely]]
        return nullptr;
    void *p;
    if (static_cast<size_t>(h->end - h->next) >= size) [[likely]] {
        p = h->next;
        h->next += size;
    } else {
        p = alloc_in_new_block(h, size);
        if (!p) return nullptr;
    }
    h->calls++;
    h->bytes += size;
    return p;
}

extern "C" char *mem_heap_strdup(void *env, void *heap, const char *text) {
    size_t n = std::strlen(text);
    auto *p = static_cast<char *>(mem_heap_alloc_low(env, heap, n + 1, 0, "mem_heap_strdup", 0));
    if (p) std::memcpy(p, text, n + 1);
    return p;
}

extern "C" void mem_heap_set_call_limit(vx_heap *heap, uint64_t calls) {
    heap->call_limit = calls == UINT64_MAX ? UINT64_MAX : heap->calls + calls;
}

extern "C" void mem_heap_set_byte_limit(vx_heap *heap, uint64_t bytes) {
    heap->byte_limit = bytes == UINT64_MAX ? UINT64_MAX : heap->bytes + bytes;
}

extern "C" uint64_t mem_heap_alloc_count(const vx_heap *heap) { return heap->calls; }

extern "C" uint64_t mem_heap_bytes_used(const vx_heap *heap) { return heap->bytes; }
