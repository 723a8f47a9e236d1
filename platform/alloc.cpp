// Pluggable allocators of the stand-alone platform.
//
// The counting allocator wraps malloc with a header per block: the block
// size for accounting, a mark that tells its own blocks from foreign ones
// (an array first made on a heap and later grown hands its old storage to
// the allocator), and list links so that the state owns every block and can
// release them all at once, as a server releases a statement's memory.
//
// The heap allocator carves from an arena and frees nothing, for callers
// that release a whole parse at once.
#include "vx_alloc.h"

#include <cstdlib>

#include "vx_heap.h"

namespace {

// Marks blocks made here, so foreign blocks are never released as ours.
constexpr uint64_t MAGIC = 0x7678616c6c6f6321ull;

struct block_header {
    uint64_t size;
    uint64_t magic;
    block_header *prev; // links in the state's list of outstanding blocks
    block_header *next;
};
static_assert(sizeof(block_header) % 16 == 0, "user blocks stay 16-byte aligned");

void *counted_alloc(void *, void *handle, size_t size, const char *, int) {
    auto *st = static_cast<vx_alloc_state *>(handle);
    if (st->calls >= st->call_limit) return nullptr;
    if (size > SIZE_MAX - sizeof(block_header)) return nullptr;
    auto *h = static_cast<block_header *>(std::malloc(sizeof(block_header) + size));
    if (!h) return nullptr;
    auto *head = static_cast<block_header *>(st->blocks);
    *h = block_header{size, MAGIC, nullptr, head};
    if (head) head->prev = h;
    st->blocks = h;
    st->calls++;
    st->outstanding++;
    st->bytes_out += size;
    return h + 1;
}

void unlink_and_free(vx_alloc_state *st, block_header *h) {
    if (h->prev) h->prev->next = h->next;
    else st->blocks = h->next;
    if (h->next) h->next->prev = h->prev;
    h->magic = 0;
    st->outstanding--;
    st->bytes_out -= h->size;
    std::free(h);
}

void counted_free(void *, void *handle, void *block) {
    if (!block) return;
    auto *h = static_cast<block_header *>(block) - 1;
    if (h->magic != MAGIC) return;
    unlink_and_free(static_cast<vx_alloc_state *>(handle), h);
}

void *heap_backed_alloc(void *env, void *handle, size_t size, const char *src, int line) {
    return mem_heap_alloc_low(env, handle, size, 0, src, line);
}

} // namespace

extern "C" void vx_allocator_init(vx_allocator *a, vx_alloc_state *state) {
    *state = vx_alloc_state{UINT64_MAX, 0, 0, 0, nullptr};
    a->alloc = counted_alloc;
    a->free = counted_free;
    a->handle = state;
}

extern "C" void vx_allocator_set_call_limit(vx_alloc_state *state, uint64_t calls) {
    state->call_limit = calls == UINT64_MAX ? UINT64_MAX : state->calls + calls;
}

extern "C" void vx_allocator_release_all(vx_alloc_state *state) {
    while (state->blocks) unlink_and_free(state, static_cast<block_header *>(state->blocks));
}

extern "C" void vx_allocator_init_heap(vx_allocator *a, void *heap) {
    a->alloc = heap_backed_alloc;
    a->free = nullptr; // the heap is released whole
    a->handle = heap;
}

extern "C" void *vx_alloc(void *env, vx_allocator *a, size_t size, const char *src, int line) {
    if (!a) return std::malloc(size ? size : 1);
    return a->alloc(env, a->handle, size, src, line);
}

extern "C" void vx_free(void *env, vx_allocator *a, void *block) {
    if (!a) {
        std::free(block);
        return;
    }
    if (a->handle && a->free) a->free(env, a->handle, block);
}
