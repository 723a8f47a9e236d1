// The per-connection row heap and parse context.
#include "row.h"

#include <new>

namespace vxsql {

namespace {

// Small rows live in the first block and cost no system call at all.
constexpr size_t HEAP_FIRST_BLOCK = 64u << 10;
// A row that outgrew the first block makes the heap come back with one of
// the row's size, so that a table of large documents stops paying for
// growth; past this size the extra blocks are given back after each row.
constexpr size_t HEAP_FIRST_BLOCK_MAX = 16u << 20;

size_t first_block_for(uint64_t used) {
    size_t size = HEAP_FIRST_BLOCK;
    while (size < used && size < HEAP_FIRST_BLOCK_MAX) size *= 2;
    return size;
}

void attach_heap(connection *c, vx_heap *heap, size_t first) {
    c->heap = heap;
    c->heap_first = first;
    vx_allocator_init_heap(&c->alloc, heap);
    c->ctx.heap = heap;
    c->ctx.allocator = &c->alloc;
}

// Grow the first block after a row that needed more; when the larger heap
// cannot be had the old one is simply kept.
void fit_heap(connection *c) {
    const uint64_t used = mem_heap_bytes_used(c->heap);
    if (used <= c->heap_first || c->heap_first >= HEAP_FIRST_BLOCK_MAX) return;
    const size_t first = first_block_for(used);
    vx_heap *bigger = mem_heap_create(first);
    if (!bigger) return;
    mem_heap_free(c->heap);
    attach_heap(c, bigger, first);
}

} // namespace

connection *connection_create() {
    auto *c = new (std::nothrow) connection{};
    if (!c) return nullptr;
    vx_heap *heap = mem_heap_create(HEAP_FIRST_BLOCK);
    if (!heap) {
        delete c;
        return nullptr;
    }
    c->refs = 1;
    (void)jlpca_init(nullptr, &c->ctx, heap, nullptr, JLPCA_ESCAPE_DECODE, 0, 0,
                     JLPCA_COMPAT_STANDARD);
    attach_heap(c, heap, HEAP_FIRST_BLOCK);
    return c;
}

void connection_retain(connection *c) { c->refs++; }

void connection_release(void *p) {
    auto *c = static_cast<connection *>(p);
    if (--c->refs) return;
    jlpca_deinit(&c->ctx);
    mem_heap_free(c->heap);
    delete c;
}

jlpca_ctx *row_begin(connection *c, dialect d) {
    fit_heap(c);
    mem_heap_reset(c->heap);
    jlpca_ctx *x = &c->ctx;
    // The switches of jlpca_init for the dialect.  PostgreSQL and MySQL
    // documents are kept as their binary JSON types keep them: members
    // sorted, the last of repeated names winning.
    const bool compat = d != dialect::standard;
    x->escape_mode = JLPCA_ESCAPE_DECODE;
    x->sorted_keys = compat;
    x->dup_key_replace = compat;
    x->strict = compat;
    x->unique_keys = 0;
    x->number_mode = 0;
    x->compat = static_cast<int32_t>(d);
    x->path_last_key = compat;
    x->scalar_top = compat;
    x->set_mode = 0;
    x->array_spare = 0;
    return x;
}

} // namespace vxsql
