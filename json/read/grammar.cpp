// JSON grammar and tree building: json_parse runs the JSON grammar over the
// scanner's tokens and builds the tree through the value-tree operations;
// json_flex is the entry the server calls.
//
// Nodes are created in the order the grammar reduces: an object or array
// right after its opening bracket (or at the closing one when empty), a
// scalar as soon as its token is read.  cur_node is the innermost open
// container, or the value just made until it is attached; array elements
// are collected in the array's element list and become pointer arrays in
// one pass at the end, in creation order (json_adjust_array).
//
// That pass would have to walk every node and every element list again,
// long after they left the cache; so while json_flex reads, it also logs
// each array in creation order and copies each array's element pointers
// out when the array closes (ElementLog).  The final pass then makes
// exactly the same allocator calls in the same order from the log, without
// touching the elements.  Should the log run out of memory, the reader
// falls back to the chain walk.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "links.h"
#include "member_index.h"
#include "parse_driver.h"
#include "report.h"
#include "vx_alloc.h"
#include "vx_heap.h"

using namespace vxjson;

namespace {

// Report site of json_adjust_array in "json/json".
constexpr int32_t LINE_ADJUST_ARRAY = 86;
// Heap call site of the reader's nodes in "json/json".
constexpr int32_t LINE_READ_NODE = 120;
// Allocator call site of the element arrays in "json/json".
constexpr int32_t LINE_READ_ITEMS = 533;

// A zeroed node.  Plain stores: a memset of this size becomes a string
// instruction whose start-up costs more than the stores.
inline void clear_node(json_node *node) {
#if defined(__SSE2__)
    static_assert(sizeof(json_node) % 8 == 0);
    auto *p = reinterpret_cast<char *>(node);
    const __m128i zero = _mm_setzero_si128();
    size_t i = 0;
    for (; i + 16 <= sizeof(json_node); i += 16)
        _mm_storeu_si128(reinterpret_cast<__m128i *>(p + i), zero);
    if (i < sizeof(json_node)) _mm_storel_epi64(reinterpret_cast<__m128i *>(p + i), zero);
#else
    std::memset(static_cast<void *>(node), 0, sizeof *node);
#endif
}

// memcpy for the short texts most values have, without a call: two
// overlapping loads and stores that stay inside both ranges.
inline void copy_text(char *dst, const char *src, size_t len) {
    auto two = [&](auto word) {
        decltype(word) a, b;
        std::memcpy(&a, src, sizeof a);
        std::memcpy(&b, src + len - sizeof b, sizeof b);
        std::memcpy(dst, &a, sizeof a);
        std::memcpy(dst + len - sizeof b, &b, sizeof b);
    };
    struct Wide {
        uint64_t lo, hi;
    };
    if (len >= 32) std::memcpy(dst, src, len);
    else if (len >= 16) two(Wide{});
    else if (len >= 8) two(uint64_t{});
    else if (len >= 4) two(uint32_t{});
    else
        for (size_t i = 0; i < len; i++) dst[i] = src[i];
}

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

// The nodes and members of one read are carved from chunks of the heap
// instead of taking one heap call each: the tree is the same, and a value
// costs a pointer bump.  A chunk is sized from the text still to read, so a
// small document takes little more than it needs and a large one few
// chunks; a request too large to share a chunk gets a block of its own, and
// a chunk the heap refuses is asked for again at the exact size, so that a
// heap near its limit still gives what it has.
class Pool {
public:
    Pool(jlpca_ctx *ctx, const scan::Scanner &s) : ctx_(ctx), s_(s) {}

    void *take(size_t size) {
        size = (size + kAlign - 1) & ~(kAlign - 1);
        if (size <= size_t(end_ - next_)) [[likely]] {
            char *p = next_;
            next_ += size;
            return p;
        }
        return refill(size);
    }

private:
    static constexpr size_t kAlign = alignof(json_node);
    static constexpr size_t kMinChunk = 256;
    static constexpr size_t kMaxChunk = 64 * 1024;
    // Heap bytes a byte of text usually becomes, at the low end, so that
    // a chunk seldom outgrows what the rest of the text needs.
    static constexpr size_t kBytesPerTextByte = 2;

    [[gnu::noinline]] void *refill(size_t size) {
        if (size > kMaxChunk / 4) return alloc(size);
        const size_t left = std::min(size_t(s_.end - s_.pos), kMaxChunk);
        size_t chunk = std::max(std::min(left * kBytesPerTextByte + kMinChunk, kMaxChunk), size);
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
        return mem_heap_alloc_low(ctx_->env, ctx_->heap, size, 0, SRC_JSON, LINE_READ_NODE);
    }

    jlpca_ctx *ctx_;
    const scan::Scanner &s_; // how much text is left to read
    char *next_ = nullptr;
    char *end_ = nullptr;
};

// json_create with the node's text in the same allocation.  The node is
// linked exactly as json_create links it (parent, creation chain,
// cur_node, first_node).
[[gnu::always_inline]] inline json_node *new_node(jlpca_ctx *ctx, Pool &pool, uint32_t type,
                                                  size_t text_len) {
    const size_t size = sizeof(json_node) + (text_len ? text_len + 1 : 0);
    auto *node = static_cast<json_node *>(pool.take(size));
    if (!node) [[unlikely]] return nullptr;
    clear_node(node);
    node->type = type;
    node->parent = ctx->cur_node;
    if (ctx->last_node) ctx->last_node->chain_next = node;
    else ctx->first_node = node;
    ctx->last_node = node;
    ctx->cur_node = node;
    return node;
}

// A string or decimal node holding the current literal, as
// json_string_set_value stores it (no text at all when it is empty).
[[gnu::always_inline]] inline int32_t new_text_node(jlpca_ctx *ctx, Pool &pool, uint32_t type) {
    const size_t len = size_t(ctx->tok_val);
    json_node *node = new_node(ctx, pool, type, len);
    if (!node) [[unlikely]] return VXJSON_ERR_NOMEM;
    if (len) {
        node->str = reinterpret_cast<char *>(node + 1);
        copy_text(node->str, ctx->tok_str, len);
        node->str[len] = '\0';
        node->str_len = uint32_t(len);
        node->str_flags = uint32_t(ctx->lit_escaped);
    }
    return 0;
}

// The element log.  Two parts share the context's token-text buffer
// (which this scanner does not otherwise need, and which the context keeps
// across parses, so a large document pays for it once):
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
class ElementLog {
public:
    explicit ElementLog(jlpca_ctx *ctx) : ctx_(ctx) { attach_buffer(); }
    bool ok() const { return ok_; }

    // Record an array when it opens; the result is its record's index.
    uintptr_t open(json_node *array) {
        if (!room(kRecord)) return 0;
        const uintptr_t rec = lo_;
        w_[rec] = reinterpret_cast<uintptr_t>(array);
        w_[rec + 1] = w_[rec + 2] = w_[rec + 3] = 0;
        lo_ += kRecord;
        free_ -= kRecord;
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
        constexpr size_t kAhead = 16;
        size_t left = records_, ahead = first_, pending = records_;
        for (size_t i = 0; i < kAhead && pending; i++, pending--) {
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
    static constexpr size_t kRecord = 4;

    // count, items and capacity: they may straddle two lines.
    static void fetch_array_fields(uintptr_t array) {
        const auto *node = reinterpret_cast<const json_node *>(array);
        const auto *last = reinterpret_cast<const char *>(&node->capacity) + sizeof node->capacity - 1;
        __builtin_prefetch(&node->count, 1);
        __builtin_prefetch(last, 1);
    }

    void attach_buffer() {
        auto addr = reinterpret_cast<uintptr_t>(ctx_->scan_buf);
        uintptr_t aligned = (addr + alignof(uintptr_t) - 1) & ~uintptr_t(alignof(uintptr_t) - 1);
        w_ = reinterpret_cast<uintptr_t *>(aligned);
        const size_t skip = aligned - addr;
        cap_ = ctx_->scan_cap > skip ? (ctx_->scan_cap - skip) / sizeof(uintptr_t) : 0;
        free_ = cap_;
    }

    bool room(size_t k) {
        if (free_ >= k) [[likely]] return true;
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

class TreeGrammar {
public:
    TreeGrammar(jlpca_ctx *ctx, const scan::Scanner &s) : pool_(ctx, s), log_(ctx) {}

    static constexpr scan::Mode kMode = scan::Mode::tree;
    static constexpr uint32_t kOpen = 1;

    int32_t open(jlpca_ctx *ctx, uint32_t type, uintptr_t &slot) {
        json_node *node = new_node(ctx, pool_, type, 0);
        if (!node) [[unlikely]] return VXJSON_ERR_NOMEM;
        if (type == JSON_ARRAY) slot = log_.open(node);
        return 0;
    }

    int32_t open_empty(jlpca_ctx *ctx, uint32_t type) {
        return new_node(ctx, pool_, type, 0) ? 0 : VXJSON_ERR_NOMEM;
    }

    void close(jlpca_ctx *ctx, uint32_t kind, uintptr_t slot) {
        if (kind == parse::kArray) log_.close(slot, ctx->cur_node->lst_count);
    }

    int32_t scalar(jlpca_ctx *ctx, int32_t token) {
        // The document must be an object or an array unless a dialect or
        // the caller allows a scalar.
        if (!ctx->cur_node && !ctx->compat && !ctx->scalar_top) [[unlikely]]
            return VXJSON_ERR_INVALID_JSON;
        if (token == JT_DECIMAL || token == JT_DQSTRING || token == JT_SQSTRING)
            return new_text_node(ctx, pool_, token == JT_DECIMAL ? JSON_DECIMAL : JSON_STRING);
        json_node *node;
        if (token == JT_INT || token == JT_BIGINT) {
            if (!(node = new_node(ctx, pool_, JSON_INTEGER, 0))) return VXJSON_ERR_NOMEM;
            node->ival = ctx->tok_val;
            return 0;
        }
        if (!(node = new_node(ctx, pool_, token == JT_NULL ? JSON_NULL : JSON_BOOLEAN, 0)))
            return VXJSON_ERR_NOMEM;
        node->bval = token == JT_TRUE; // JT_TRUE, JT_FALSE, JT_NULL
        return 0;
    }

    int32_t top_scalar(jlpca_ctx *ctx) {
        return ctx->compat == 0 && ctx->scalar_top == 0 ? VXJSON_ERR_SYNTAX : 0;
    }

    void attach(jlpca_ctx *ctx) {
        json_node *node = ctx->cur_node;
        json_node *array = node->parent;
        array->lst_count++;
        node->prev_sibling = array->lst_last;
        node->next_sibling = nullptr;
        if (array->lst_last) array->lst_last->next_sibling = node;
        else array->lst_first = node;
        array->lst_last = node;
        ctx->cur_node = array; // jlpa_set_top_json
        log_.push(node);
    }

    int32_t key(jlpca_ctx *ctx, const char *name, uint32_t len, uintptr_t &member) {
        if (!member_policy_applies(ctx)) {
            // Appended, from the read's own chunks.
            void *block = pool_.take(sizeof(json_keyval) + len);
            if (!block) [[unlikely]] return report_json(VXJSON_ERR_NOMEM, LINE_ADD_KEYVAL);
            json_keyval *kv = init_member(block, name, len, uint32_t(ctx->lit_escaped));
            member_append(ctx->cur_node, kv);
            member = reinterpret_cast<uintptr_t>(kv);
            return 0;
        }
        json_keyval *kv = nullptr;
        int32_t rc = members_.add(ctx, ctx->cur_node, name, len, &kv);
        member = reinterpret_cast<uintptr_t>(kv);
        return rc;
    }

    void member(jlpca_ctx *ctx, uintptr_t member) {
        reinterpret_cast<json_keyval *>(member)->value = ctx->cur_node;
        ctx->cur_node = ctx->cur_node->parent; // jlpa_set_top_json
    }

    int32_t error(jlpca_ctx *ctx, const char *msg) { return json_error(ctx, msg); }
    int32_t error_ex(jlpca_ctx *ctx, int32_t code) { return json_error_ex(ctx, code); }

    // json_adjust_array from the log: the same conversions, in the same
    // order, with the same result.
    int32_t adjust(jlpca_ctx *ctx) {
        if (!log_.ok()) return json_adjust_array(ctx);
        return log_.each([ctx](json_node *array, json_node **items, uint32_t count) {
            array->capacity = count + ctx->array_spare;
            auto *block = static_cast<json_node **>(vx_alloc(
                ctx->env, ctx->allocator, sizeof(json_node *) * size_t(array->capacity), SRC_JSON,
                LINE_READ_ITEMS));
            if (!block) return report_json(VXJSON_ERR_NOMEM, LINE_ADJUST_ARRAY);
            copy_words(block, items, count);
            array->items = block;
            array->count = count;
            return 0;
        });
    }

private:
    Pool pool_;
    ElementLog log_;
    MemberIndex members_;
};

} // namespace

namespace vxjson {

int32_t parse_tree(scan::Scanner &s, jlpca_ctx *ctx) {
    TreeGrammar g(ctx, s);
    return parse::run(s, ctx, g);
}

} // namespace vxjson

extern "C" {

VXJSON_API int32_t json_parse(void *scanner, jlpca_ctx *ctx) {
    return parse_tree(*static_cast<scan::Scanner *>(scanner), ctx);
}

VXJSON_API int32_t json_error(jlpca_ctx *, const char *) { return -1; }

VXJSON_API int32_t json_error_ex(jlpca_ctx *, int32_t code) { return code; }

VXJSON_API int32_t json_adjust_array(jlpca_ctx *ctx) {
    for (json_node *node = ctx->first_node; node; node = node->chain_next) {
        if (node->type != JSON_ARRAY || node->lst_count == 0) continue;
        int32_t rc = json_lst_to_arr(ctx, node, node->lst_count, node->lst_first, node->lst_last);
        if (rc < 0) return report_json(rc, LINE_ADJUST_ARRAY);
    }
    return 0;
}

VXJSON_API int32_t json_flex(jlpca_ctx *ctx, json_node **root) {
    *root = nullptr;
    if (ctx->text_len == 0) return empty_text(ctx, ctx->compat != 0 || ctx->blank);
    scan::Scanner s;
    scan::scanner_start(s, ctx);
    TreeGrammar g(ctx, s);
    int32_t r = parse::run(s, ctx, g);
    scan::json_lex_destroy(&s);
    ctx->scan_handle = nullptr;
    if (r == 0 && ctx->err_code >= 0) {
        (void)g.adjust(ctx); // a failed conversion is reported, not fatal here
        *root = ctx->first_node;
        return VXJSON_OK;
    }
    return ctx->err_code == VXJSON_ERR_DOUBLE_OVERFLOW ? VXJSON_ERR_DOUBLE_OVERFLOW
                                                       : VXJSON_ERR_INVALID_JSON;
}

} // extern "C"
