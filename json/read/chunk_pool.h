// chunk_pool.h -- where the tree reader takes its nodes and members from.
#ifndef VXJSON_CHUNK_POOL_H
#define VXJSON_CHUNK_POOL_H

#include <algorithm>
#include <cstddef>

#include "report.h"
#include "report_sites.h"
#include "scan_internal.h"
#include "vx_heap.h"

namespace vxjson {

// The nodes and members of one read are carved from chunks of the heap
// instead of taking one heap call each: the tree is the same, and a value
// costs a pointer bump.  A chunk is sized from the text still to read, so a
// small document takes little more than it needs and a large one few
// chunks; a request too large to share a chunk gets a block of its own, and
// a chunk the heap refuses is asked for again at the exact size, so that a
// heap near its limit still gives what it has.
class chunk_pool {
public:
    chunk_pool(jlpca_ctx *ctx, const scan::scan_state &s) : ctx_(ctx), s_(s) {}

    void *take(size_t size) {
        size = (size + ALIGN - 1) & ~(ALIGN - 1);
        if (size <= size_t(end_ - next_)) [[likely]] {
            char *p = next_;
            next_ += size;
            return p;
        }
        return refill(size);
    }

private:
    static constexpr size_t ALIGN = alignof(json_node);
    static constexpr size_t MIN_CHUNK = 256;
    static constexpr size_t MAX_CHUNK = 64 * 1024;
    // Heap bytes a byte of text usually becomes, at the low end, so that
    // a chunk seldom outgrows what the rest of the text needs.
    static constexpr size_t BYTES_PER_TEXT_BYTE = 2;

    [[gnu::noinline]] void *refill(size_t size) {
        if (size > MAX_CHUNK / 4) return alloc(size);
        const size_t left = std::min(size_t(s_.end - s_.pos), MAX_CHUNK);
        size_t chunk = std::max(std::min(left * BYTES_PER_TEXT_BYTE + MIN_CHUNK, MAX_CHUNK), size);
        auto *p = static_cast<char *>(alloc(chunk));
        if (!p && chunk > size) {
            chunk = size;
            p = static_cast<char *>(alloc(chunk));
        }
        if (!p) return nullptr;
        next_ = p + size;
        end_ = p + chunk;
        return p;
    }

    void *alloc(size_t size) {
        return mem_heap_alloc_low(ctx_->env, ctx_->heap, size, 0, SRC_JSON, site::READ_NODE);
    }

    jlpca_ctx *ctx_;
    const scan::scan_state &s_; // how much text is left to read
    char *next_ = nullptr;
    char *end_ = nullptr;
};

} // namespace vxjson

#endif
