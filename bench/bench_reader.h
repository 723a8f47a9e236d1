// A context over its own heap and counting allocator, as the tree
// benchmarks set one up: read() turns a text into a tree, reset() forgets
// every tree read so far.
#ifndef VXJSON_BENCH_READER_H
#define VXJSON_BENCH_READER_H

#include <memory>
#include <string>

#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

struct bench_reader {
    vx_heap *heap;
    vx_alloc_state state{};
    vx_allocator alloc{};
    std::unique_ptr<jlpca_ctx> ctx = std::make_unique<jlpca_ctx>();

    bench_reader(size_t first_block, int32_t strict, int32_t compat)
        : heap(mem_heap_create(first_block)) {
        vx_allocator_init(&alloc, &state);
        (void)jlpca_init(nullptr, ctx.get(), heap, &alloc, JLPCA_ESCAPE_DECODE, strict, 0, compat);
    }
    ~bench_reader() {
        jlpca_deinit(ctx.get());
        vx_allocator_release_all(&state);
        mem_heap_free(heap);
    }
    bench_reader(const bench_reader &) = delete;
    bench_reader &operator=(const bench_reader &) = delete;

    json_node *read(const std::string &text) {
        json_node *root = nullptr;
        if (jlpca_reinit(ctx.get(), text.data(), uint32_t(text.size())) ||
            json_flex(ctx.get(), &root))
            return nullptr;
        return root;
    }
    void reset() {
        vx_allocator_release_all(&state);
        mem_heap_reset(heap);
    }
};

#endif
