// The compiled path model: the option word, path records and the adders
// that the path grammar and the text-array reader build paths with.
//
// A path is a fixed record with a doubly linked chain of steps; a
// subscript step carries its own ascending chain of index entries.  For
// $.a[1, 3 to 5]:
//
//   jpath ── first_filter ─> [0 root] <─> [3 "a"] <─> [4] ── last_filter
//                                                      │
//                                             {1,0} <─> {3,5}
//
// Entries ascend and never overlap (each starts after max_index), so an
// evaluator walks an array once.  Everything comes from the caller's heap
// and is never freed one piece at a time.
#include <cstring>

#include "report.h"
#include "report_sites.h"
#include "vx_heap.h"
#include "vxjson.h"

using namespace vxjson;

namespace {

template <class T> T *heap_new(void *env, void *heap, int32_t line) {
    return static_cast<T *>(mem_heap_alloc_low(env, heap, sizeof(T), 0, SRC_JPATH, line));
}

// Append {start, end} at the tail of the step's entries.
int32_t append_entry(void *env, void *heap, jpath_filter *step, int64_t start, int64_t end) {
    auto *e = heap_new<jpath_index>(env, heap, site::PATH_HEAP_INDEX);
    if (!e) [[unlikely]]
        return VXJSON_ERR_NOMEM;
    e->start = start;
    e->end = end;
    e->prev = step->index_tail;
    e->next = nullptr;
    if (step->index_tail) step->index_tail->next = e;
    else step->index_head = e;
    step->index_tail = e;
    step->index_count++;
    return 0;
}

// The single subscript n once first_index and multi are settled.
int32_t add_single(void *env, void *heap, jpath_filter *step, int32_t n) {
    if (n < step->max_index) return VXJSON_ERR_PATH;
    if (n == step->max_index) {
        step->multi = 1; // a repeat is absorbed, not duplicated
        return 0;
    }
    if (int32_t rc = append_entry(env, heap, step, n, 0)) return rc;
    step->max_index = n;
    return 0;
}

// The first subscript or range of a step names its first position; every
// later one makes the step multi-valued.
void note_item(jpath_filter *step, int32_t first) {
    if (step->first_index == JPATH_NO_INDEX) step->first_index = first;
    else step->multi = 1;
}

} // namespace

extern "C" {

VXJSON_API uint32_t jpath_encode_flag(uint32_t ret_type, uint32_t format, uint32_t wrapper,
                                      uint32_t on_error, uint32_t on_empty) {
    return ret_type + format * 8 + (wrapper << JPATH_FLAG_WRAPPER_SHIFT) +
           (on_error << JPATH_FLAG_ON_ERROR_SHIFT) + (on_empty << JPATH_FLAG_ON_EMPTY_SHIFT);
}

VXJSON_API void jpath_decode_flag(jpath *path, uint32_t flag) {
    path->ret_type = (flag >> JPATH_FLAG_RET_TYPE_SHIFT) & JPATH_FLAG_RET_TYPE_MASK;
    path->format = (flag >> JPATH_FLAG_FORMAT_SHIFT) & JPATH_FLAG_FORMAT_MASK;
    path->wrapper = (flag >> JPATH_FLAG_WRAPPER_SHIFT) & JPATH_FLAG_WRAPPER_MASK;
    path->on_error = (flag >> JPATH_FLAG_ON_ERROR_SHIFT) & JPATH_FLAG_ON_ERROR_MASK;
    path->on_empty = (flag >> JPATH_FLAG_ON_EMPTY_SHIFT) & JPATH_FLAG_ON_EMPTY_MASK;
    if (path->ret_type < JPATH_RET_NUMBER || path->ret_type > JPATH_RET_CLASS_4 ||
        path->on_error > JPATH_ON_ERROR_MAX)
        path->ret_type = JPATH_RET_NONE;
}

VXJSON_API void jpath_decode_datatype(jpath *path, uint32_t datatype) {
    if (path->ret_type == JPATH_RET_NUMBER) {
        path->ret_scale = datatype & 0xFF;
        path->ret_len = (datatype >> 8) & 0xFF;
    } else {
        path->ret_len = datatype;
    }
}

VXJSON_API void jpath_init(jpath *path, uint32_t flag, uint32_t datatype, uint64_t user_data,
                           uint32_t dialect) {
    std::memset(static_cast<void *>(path), 0, sizeof *path);
    jpath_decode_flag(path, flag);
    if (path->wrapper == 0) path->wrapper = JPATH_WRAPPER_WITHOUT;
    jpath_decode_datatype(path, datatype); // after the flag: it reads ret_type
    path->user_data = user_data;
    path->dialect = dialect;
    path->fun_kind = JPATH_FUN_KIND_DEFAULT;
}

VXJSON_API int32_t jpath_init_simple(jpath *path, uint32_t dialect) {
    std::memset(static_cast<void *>(path), 0, sizeof *path);
    path->wrapper = JPATH_WRAPPER_WITHOUT;
    path->on_error = JPATH_ON_ERROR_ERROR;
    path->ret_type = JPATH_RET_CHAR;
    path->ret_len = JPATH_SIMPLE_RET_LEN;
    path->dialect = dialect;
    return 0;
}

VXJSON_API int32_t jpath_add_filter_low(void *env, void *heap, jpath *path, const char *key,
                                        uint32_t key_len, uint32_t kind) {
    auto *step = heap_new<jpath_filter>(env, heap, site::PATH_HEAP_STEP);
    if (!step) [[unlikely]]
        return VXJSON_ERR_NOMEM;
    auto *copy = static_cast<char *>(
        mem_heap_alloc_low(env, heap, size_t(key_len) + 1, 0, SRC_JPATH, site::PATH_HEAP_KEY));
    if (!copy) [[unlikely]]
        return VXJSON_ERR_NOMEM; // the step stays unlinked: the path is unchanged
    if (key_len) std::memcpy(copy, key, key_len);
    copy[key_len] = '\0';
    step->kind = kind;
    step->key = copy;
    step->key_len = key_len;
    step->first_index = JPATH_NO_INDEX;
    step->max_index = JPATH_NO_INDEX;
    step->multi = 0;
    step->index_count = 0;
    step->index_head = step->index_tail = nullptr;
    step->path = path;
    step->next = nullptr;
    step->prev = path->last_filter;
    if (path->last_filter) path->last_filter->next = step;
    path->last_filter = step;
    if (!path->first_filter) path->first_filter = step;
    path->filter_count++;
    return 0;
}

VXJSON_API int32_t jpath_add_filter(jlpca_ctx *ctx, jpath *path, const char *key, uint32_t key_len,
                                    uint32_t kind) {
    int32_t rc = jpath_add_filter_low(ctx->env, ctx->heap, path, key, key_len, kind);
    if (rc < 0) [[unlikely]]
        return report(rc, SRC_JPATH, site::PATH_ADD_FILTER);
    ctx->cur_filter = path->last_filter;
    return 0;
}

VXJSON_API int32_t jpath_add_index(void *env, void *heap, jpath_filter *step, int32_t index) {
    note_item(step, index);
    return add_single(env, heap, step, index);
}

VXJSON_API int32_t jpath_add_range(void *env, void *heap, jpath_filter *step, int32_t from,
                                   int32_t to) {
    note_item(step, from); // first_index is set even when the checks fail
    if (from > to) return VXJSON_ERR_PATH;
    if (from == to) {
        if (from == step->max_index) return 0;
        return jpath_add_index(env, heap, step, from);
    }
    if (from < step->max_index) return VXJSON_ERR_PATH; // overlaps what is covered
    if (from == step->max_index) {
        ++from; // from is below to, so this cannot overflow
        if (from == to) return jpath_add_index(env, heap, step, from);
    }
    if (int32_t rc = append_entry(env, heap, step, from, to)) return rc;
    step->max_index = to;
    return 0;
}

VXJSON_API int32_t jpath_add_index_pg(void *env, void *heap, jpath_filter *step, int32_t index) {
    if (int32_t rc = append_entry(env, heap, step, index, 0)) return rc;
    step->first_index = index;
    step->max_index = index;
    return 0;
}

} // extern "C"
