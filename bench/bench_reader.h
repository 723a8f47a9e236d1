// A context over its own heap and counting allocator, as the tree
// benchmarks set one up: read() turns a text into a tree, reset() forgets
// every tree read so far.
#ifndef VXJSON_BENCH_READER_H
#define VXJSON_BENCH_READER_H

#include <cstdlib>
#include <string>

#include "vx_session.h"

struct bench_reader {
    vx_session session{};
    jlpca_ctx *ctx = nullptr;
    vx_heap *heap = nullptr;
    vx_allocator alloc{};

    bench_reader(size_t first_block, int32_t strict, int32_t compat) {
        const vx_session_options o{first_block, 0, JLPCA_ESCAPE_DECODE, strict, 0, compat};
        if (vx_session_open(&session, &o) != 0) std::abort(); // a benchmark cannot go on
        ctx = session.ctx;
        heap = session.heap;
        alloc = session.alloc;
    }
    ~bench_reader() { vx_session_close(&session); }
    bench_reader(const bench_reader &) = delete;
    bench_reader &operator=(const bench_reader &) = delete;

    json_node *read(const std::string &text) {
        json_node *root = nullptr;
        if (jlpca_reinit(ctx, text.data(), uint32_t(text.size())) || json_flex(ctx, &root))
            return nullptr;
        return root;
    }
    void reset() {
        vx_allocator_release_all(&session.alloc_state);
        mem_heap_reset(heap);
    }
};

#endif
