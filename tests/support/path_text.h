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
    if (jpath_add_filter_low(nullptr, ctx->heap, p, key.data(), uint32_t(key.size()), kind)) return nullptr;
    return p->last_filter;
}
inline int32_t index(jlpca_ctx *ctx, jpath_filter *f, int32_t n) { return jpath_add_index(nullptr, ctx->heap, f, n); }
inline int32_t range(jlpca_ctx *ctx, jpath_filter *f, int32_t a, int32_t b) { return jpath_add_range(nullptr, ctx->heap, f, a, b); }
} // namespace shim

// Compiles `text` into `p` on ctx's heap: 0 or -3102.
inline int32_t compile_path(jlpca_ctx *ctx, const std::string &text, jpath *p) {
    const uint32_t dialect = p->dialect;
    (void)jpath_init_simple(p, dialect);
    p->fun_kind = uint32_t(ctx->escape_mode);
    size_t i = 0;
    auto ws = [&] { while (i < text.size() && text[i] == ' ') i++; };
    auto num = [&](int32_t &v) {
        ws();
        if (i >= text.size() || !std::isdigit((unsigned char)text[i])) return false;
        int64_t w = 0;
        while (i < text.size() && std::isdigit((unsigned char)text[i]) && w <= INT32_MAX) w = w * 10 + (text[i++] - '0');
        v = int32_t(w);
        return w <= INT32_MAX;
    };
    auto subscripts = [&]() -> int32_t {
        while (i < text.size() && text[i] == '[') {
            i++;
            jpath_filter *f = shim::add(ctx, p, "", 4);
            ws();
            if (i < text.size() && text[i] == '*') { f->kind = 1; i++; ws(); }
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
                if (i < text.size() && text[i] == ',') { if (ctx->compat == 2) return -3102; i++; continue; }
                break;
            }
            if (i >= text.size() || text[i] != ']') return -3102;
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
