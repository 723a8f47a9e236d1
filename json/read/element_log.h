// element_log.h -- the tree reader's record of its arrays and their
// elements, so that the final conversion to pointer arrays need not walk
// the tree again.
//
// That conversion (json_adjust_array) would walk every node and every
// element list long after they left the cache; so while json_flex reads,
// it logs each array in creation order and copies each array's element
// pointers out when the array closes.  The final pass then makes exactly
// the same allocator calls in the same order from the log, without
// touching the elements.  Should the log run out of memory, the reader
// falls back to the chain walk.
#ifndef VXJSON_ELEMENT_LOG_H
#define VXJSON_ELEMENT_LOG_H

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "vxjson.h"

namespace vxjson {

// Pointer copies, without a call for the few that most arrays hold.
inline void copy_words(void *dst, const void *src, size_t n) {
    if (n > 8) {
        std::memcpy(dst, src, n * sizeof(uintptr_t));
        return;
    }
    auto *d = static_cast<uintptr_t *>(dst);
    const auto *s = static_cast<const uintptr_t *>(src);
    for (size_t i = 0; i < n; i++) d[i] = s[i];
}

// The element log of one read, in the context's token-text buffer (which
// the tree reader does not otherwise need), grown from the system allocator:
//
//   front, growing up:    per array, a record {array, items, next, count}
//                         made when it opens (linked in creation order), and
//                         the run of its element pointers copied there when
//                         it closes; read front to back at the end
//   back, growing down:   element pointers of the arrays still open
//
// Front entries are addressed by index and the back by distance from the
// end, so both stay valid when the buffer grows.  A failed growth ends
// logging (ok() false).
class element_log {
public:
    explicit element_log(jlpca_ctx *ctx) : ctx_(ctx) {
        // The context keeps its token-text buffer across reads, so a large
        // document pays for the log's memory once, not at every read.
        auto addr = reinterpret_cast<uintptr_t>(ctx_->scan_buf);
        uintptr_t aligned = (addr + alignof(uintptr_t) - 1) & ~uintptr_t(alignof(uintptr_t) - 1);
        w_ = reinterpret_cast<uintptr_t *>(aligned);
        const size_t skip = aligned - addr;
        cap_ = ctx_->scan_cap > skip ? (ctx_->scan_cap - skip) / sizeof(uintptr_t) : 0;
        free_ = cap_;
    }
    element_log(const element_log &) = delete;
    element_log &operator=(const element_log &) = delete;
    bool ok() const { return ok_; }

    // Record an array when it opens; the result is its record's index.
    uintptr_t open(json_node *array) {
        if (!room(RECORD_WORDS)) return 0;
        const uintptr_t rec = lo_;
        w_[rec] = reinterpret_cast<uintptr_t>(array);
        w_[rec + 1] = w_[rec + 2] = w_[rec + 3] = 0;
        lo_ += RECORD_WORDS;
        free_ -= RECORD_WORDS;
        if (records_) w_[last_ + 2] = rec;
        else first_ = rec;
        last_ = rec;
        records_++;
        return rec;
    }
    void push(json_node *element) {
        if (!room(1)) return;
        w_[cap_ - ++hi_] = reinterpret_cast<uintptr_t>(element);
        free_--;
    }
    // The array of record `rec` closed with its last `count` elements on
    // the back stack (newest lowest).
    void close(uintptr_t rec, size_t count) {
        if (!room(count)) return;
        const uintptr_t *top = w_ + cap_ - hi_;
        uintptr_t *run = w_ + lo_;
        for (size_t i = 0; i < count; i++) run[i] = top[count - 1 - i];
        w_[rec + 1] = lo_;
        w_[rec + 3] = count;
        lo_ += count;
        hi_ -= count; // the back words move to the front: free_ unchanged
    }
    // Visit the arrays in creation order with their element pointers and
    // counts.  The array nodes were written long ago: the lines that the
    // conversion writes are fetched a few records ahead.
    template <class F> int32_t each(F &&f) {
        constexpr size_t AHEAD = 16;
        size_t left = records_, ahead = first_, pending = records_;
        for (size_t i = 0; i < AHEAD && pending; i++, pending--) {
            fetch_array_fields(w_[ahead]);
            ahead = w_[ahead + 2];
        }
        for (uintptr_t rec = first_; left; left--, rec = w_[rec + 2]) {
            if (pending) {
                fetch_array_fields(w_[ahead]);
                ahead = w_[ahead + 2];
                pending--;
            }
            auto *array = reinterpret_cast<json_node *>(w_[rec]);
            auto **items = reinterpret_cast<json_node **>(w_ + w_[rec + 1]);
            if (int32_t rc = f(array, items, uint32_t(w_[rec + 3]))) return rc;
        }
        return 0;
    }

private:
    static constexpr size_t RECORD_WORDS = 4;

    // count, items and capacity: they may straddle two lines.
    static void fetch_array_fields(uintptr_t array) {
        const auto *node = reinterpret_cast<const json_node *>(array);
        const auto *last =
            reinterpret_cast<const char *>(&node->capacity) + sizeof node->capacity - 1;
        __builtin_prefetch(&node->count, 1);
        __builtin_prefetch(last, 1);
    }

    bool room(size_t k) {
        if (free_ >= k) [[likely]]
            return true;
        return grow(k);
    }

    [[gnu::noinline]] bool grow(size_t k) {
        if (!ok_) return false;
        size_t cap = cap_ * 2 + k;
        if (cap * sizeof(uintptr_t) > UINT32_MAX - alignof(uintptr_t)) return fail();
        auto *w = static_cast<uintptr_t *>(std::malloc(cap * sizeof(uintptr_t)));
        if (!w) return fail();
        std::memcpy(w, w_, lo_ * sizeof(uintptr_t));
        std::memcpy(w + cap - hi_, w_ + cap_ - hi_, hi_ * sizeof(uintptr_t));
        if (ctx_->scan_buf != ctx_->scan_inline) std::free(ctx_->scan_buf);
        ctx_->scan_buf = reinterpret_cast<char *>(w);
        ctx_->scan_cap = uint32_t(cap * sizeof(uintptr_t));
        w_ = w;
        cap_ = cap;
        free_ = cap_ - lo_ - hi_;
        return true;
    }

    bool fail() {
        free_ = 0;
        return ok_ = false;
    }

    jlpca_ctx *ctx_;
    size_t free_ = 0;        // words between the two parts
    uintptr_t *w_ = nullptr; // the buffer, as words
    size_t cap_ = 0;         // its words
    size_t lo_ = 0;          // words of the front part
    size_t hi_ = 0;          // words of the back stack
    size_t records_ = 0;     // arrays recorded
    uintptr_t first_ = 0;    // first record's index
    uintptr_t last_ = 0;     // newest record's index
    bool ok_ = true;
};

} // namespace vxjson

#endif
