// Compiled paths from path text for the evaluation tests.
// TEMPORARY: a small stand-in for jpath_flex until it lands.
#ifndef VXJSON_TEST_PATH_TEXT_H
#define VXJSON_TEST_PATH_TEXT_H

#include <cctype>
#include <cstring>
#include <string>

#include "vx_heap.h"
#include "vxjson.h"

namespace shim {
inline jpath_filter *add(jlpca_ctx *ctx, jpath *p, const std::string &key, uint32_t kind) {
    auto *f = static_cast<jpath_filter *>(mem_heap_alloc_low(nullptr, ctx->heap, sizeof(jpath_filter), 0, "t", 0));
    std::memset(f, 0, sizeof *f);
    f->key = static_cast<char *>(mem_heap_alloc_low(nullptr, ctx->heap, key.size() + 1, 0, "t", 0));
    std::memcpy(f->key, key.data(), key.size());
    f->key[key.size()] = 0;
    f->key_len = uint32_t(key.size());
    f->first_index = -1;
    f->max_index = -1;
    f->kind = kind;
    f->path = p;
    f->prev = p->last_filter;
    if (p->last_filter) p->last_filter->next = f;
    p->last_filter = f;
    if (!p->first_filter) p->first_filter = f;
    p->filter_count++;
    return f;
}
inline void entry(jlpca_ctx *ctx, jpath_filter *f, int64_t s, int64_t e) {
    auto *x = static_cast<jpath_index *>(mem_heap_alloc_low(nullptr, ctx->heap, sizeof(jpath_index), 0, "t", 0));
    *x = {s, e, f->index_tail, nullptr};
    if (f->index_tail) f->index_tail->next = x;
    else f->index_head = x;
    f->index_tail = x;
    f->index_count++;
}
inline int32_t index(jlpca_ctx *ctx, jpath_filter *f, int32_t n) {
    if (f->first_index == -1) f->first_index = n;
    else f->multi = 1;
    if (n < f->max_index) return -3102;
    if (n == f->max_index) { f->multi = 1; return 0; }
    f->max_index = n;
    entry(ctx, f, n, 0);
    return 0;
}
inline int32_t range(jlpca_ctx *ctx, jpath_filter *f, int32_t a, int32_t b) {
    if (f->first_index == -1) f->first_index = a;
    else f->multi = 1;
    if (a > b) return -3102;
    if (a == b) {
        if (a == f->max_index) return 0;
        if (a < f->max_index) return -3102;
        f->max_index = a;
        entry(ctx, f, a, 0);
        return 0;
    }
    if (a < f->max_index) return -3102;
    if (a == f->max_index) { a++; if (a == b) { f->max_index = a; entry(ctx, f, a, 0); return 0; } }
    f->max_index = b;
    entry(ctx, f, a, b);
    return 0;
}
} // namespace shim

// Compiles `text` into `p` on ctx's heap: 0 or -3102.
inline int32_t compile_path(jlpca_ctx *ctx, const std::string &text, jpath *p) {
    std::memset(p, 0, sizeof *p);
    p->wrapper = 1;
    p->fun_kind = uint32_t(ctx->escape_mode);
    size_t i = 0;
    auto ws = [&] { while (i < text.size() && text[i] == ' ') i++; };
    auto num = [&](int32_t &v) {
        ws();
        if (i >= text.size() || !std::isdigit((unsigned char)text[i])) return false;
        v = 0;
        while (i < text.size() && std::isdigit((unsigned char)text[i])) v = v * 10 + (text[i++] - '0');
        return true;
    };
    auto subscripts = [&]() -> int32_t {
        while (i < text.size() && text[i] == '[') {
            i++;
            jpath_filter *f = shim::add(ctx, p, "", 4);
            ws();
            if (text[i] == '*') { f->kind = 1; i++; ws(); }
            else for (;;) {
                int32_t a, b;
                if (!num(a)) return -3102;
                ws();
                if (text.compare(i, 2, "to") == 0) {
                    i += 2;
                    if (!num(b)) return -3102;
                    if (shim::range(ctx, f, a, b)) return -3102;
                } else if (shim::index(ctx, f, a)) return -3102;
                ws();
                if (text[i] == ',') { if (ctx->compat == 2) return -3102; i++; continue; }
                break;
            }
            if (text[i] != ']') return -3102;
            i++;
        }
        return 0;
    };
    if (text.empty() || text[0] != '$') return -3102;
    i = 1;
    shim::add(ctx, p, "", 0);
    if (subscripts()) return -3102;
    while (i < text.size()) {
        if (text[i++] != '.') return -3102;
        if (i < text.size() && text[i] == '*') { i++; shim::add(ctx, p, "", 2); }
        else if (i < text.size() && text[i] == '"') {
            std::string k;
            for (i++; i < text.size() && text[i] != '"'; i++) {
                if (text[i] == '\\') i++;
                k += text[i];
            }
            i++;
            shim::add(ctx, p, k, 3);
        } else {
            std::string k;
            while (i < text.size() && (std::isalnum((unsigned char)text[i]) || text[i] == '_')) k += text[i++];
            if (k.empty()) return -3102;
            shim::add(ctx, p, k, 3);
        }
        if (subscripts()) return -3102;
    }
    return 0;
}

#endif
