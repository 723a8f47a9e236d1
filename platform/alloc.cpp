// The default pluggable allocator: malloc with a small header that records
// the block size, so tests can see what is outstanding and make the Nth
// call fail.
#include "vx_alloc.h"

#include <cstdlib>

namespace {

constexpr size_t kHeader = 16; // keeps the user block 16-byte aligned
// Marks blocks made here, so that a block from another allocator (an
// array first made on a heap and later grown) is never released as ours.
constexpr uint64_t kMagic = 0x7678616c6c6f6321ull;

struct Header {
    uint64_t size;
    uint64_t magic;
};
static_assert(sizeof(Header) == kHeader);

void *counted_alloc(void *, void *handle, size_t size, const char *, int) {
    auto *st = static_cast<vx_alloc_state *>(handle);
    if (st->calls >= st->call_limit) return nullptr;
    if (size > SIZE_MAX - kHeader) return nullptr;
    auto *raw = static_cast<unsigned char *>(std::malloc(size + kHeader));
    if (!raw) return nullptr;
    *reinterpret_cast<Header *>(raw) = {size, kMagic};
    st->calls++;
    st->outstanding++;
    st->bytes_out += size;
    return raw + kHeader;
}

void counted_free(void *, void *handle, void *block) {
    if (!block) return;
    auto *st = static_cast<vx_alloc_state *>(handle);
    auto *raw = static_cast<unsigned char *>(block) - kHeader;
    auto *h = reinterpret_cast<Header *>(raw);
    if (h->magic != kMagic) return;
    h->magic = 0;
    st->outstanding--;
    st->bytes_out -= h->size;
    std::free(raw);
}

} // namespace

extern "C" void vx_allocator_init(vx_allocator *a, vx_alloc_state *state) {
    *state = vx_alloc_state{UINT64_MAX, 0, 0, 0};
    a->alloc = counted_alloc;
    a->free = counted_free;
    a->handle = state;
}

extern "C" void vx_allocator_set_call_limit(vx_alloc_state *state, uint64_t calls) {
    state->call_limit = calls == UINT64_MAX ? UINT64_MAX : state->calls + calls;
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
