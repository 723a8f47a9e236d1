// Reading and writing whole documents in tests: a context over its own heap
// and counting allocator, with helpers that return codes and texts.
#ifndef VXJSON_TEST_DOC_ENV_H
#define VXJSON_TEST_DOC_ENV_H

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"
#include "vxstr.h"

struct DocEnv {
    vx_heap *heap = mem_heap_create(0);
    vx_alloc_state alloc_state{};
    vx_allocator alloc{};
    std::unique_ptr<jlpca_ctx> ctx = std::make_unique<jlpca_ctx>();

    explicit DocEnv(int32_t compat = JLPCA_COMPAT_STANDARD, int32_t strict = 1) {
        vx_allocator_init(&alloc, &alloc_state);
        jlpca_init(nullptr, ctx.get(), heap, &alloc, JLPCA_ESCAPE_DECODE, strict, 0, compat);
    }
    ~DocEnv() {
        jlpca_deinit(ctx.get());
        vx_allocator_release_all(&alloc_state);
        mem_heap_free(heap);
    }
    DocEnv(const DocEnv &) = delete;
    DocEnv &operator=(const DocEnv &) = delete;

    // json_flex over text; the root in *root.
    int32_t read(const std::string &text, json_node **root) {
        *root = nullptr;
        int32_t rc = jlpca_reinit(ctx.get(), text.data(), uint32_t(text.size()));
        return rc ? rc : json_flex(ctx.get(), root);
    }
    int32_t check(const std::string &text) {
        int32_t rc = jlpca_reinit(ctx.get(), text.data(), uint32_t(text.size()));
        return rc ? rc : jcheck_flex(ctx.get());
    }
    // json_to_string at level 0 with JSON conversion; the text in *out.
    int32_t write(const json_node *root, std::string *out, uint32_t flags = JSON_FMT_COMPACT) {
        vxstr *s = vxstr_create(nullptr, &alloc, 0);
        if (!s) return VXJSON_ERR_NOMEM;
        int32_t rc = json_to_string(ctx.get(), &alloc, s, root, flags, 0, 0, JSON_CONV_JSON);
        if (rc == 0) out->assign(vxstr_getstr(s), s->len);
        vxstr_free(nullptr, &alloc, s);
        return rc;
    }
};

inline std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

#endif
