// Shared by the fuzz targets: a context whose switches and character set
// come from the first input bytes, so one target covers every mode.
#ifndef VXJSON_FUZZ_SETUP_H
#define VXJSON_FUZZ_SETUP_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vx_alloc.h"
#include "vx_heap.h"
#include "vx_ini.h"
#include "vx_session.h"
#include "vxjson.h"
#include "vxstr.h"

struct FuzzModes {
    int32_t compat, strict, unique_keys, dup_key_replace, sorted_keys, scalar_top, escape_mode;
    int32_t charset_config; // configuration value 635: 0, 1 or 2
    uint8_t number_mode;
    uint32_t array_spare;
    uint32_t write_flags; // compact, ascii, or one of the pretty layouts
    int32_t std_strings;  // standard JSON strings (jlpca_set_std_strings)
};

// Two selector bytes; they are consumed from the front of the input.
inline FuzzModes take_modes(const uint8_t *&data, size_t &size) {
    uint8_t a = size > 0 ? data[0] : 0, b = size > 1 ? data[1] : 0;
    size_t used = size < 2 ? size : 2;
    data += used;
    size -= used;
    static constexpr uint32_t kFlags[4] = {JSON_FMT_COMPACT, JSON_FMT_ASCII, JSON_FMT_PRETTY_A,
                                           JSON_FMT_PRETTY_B};
    return FuzzModes{(a & 3) == 3 ? 0 : a & 3,
                     (a >> 2) & 1,
                     (a >> 3) & 1,
                     (a >> 4) & 1,
                     (a >> 5) & 1,
                     (a >> 6) & 1,
                     (a >> 7) & 1,
                     (b & 3) == 3 ? 1 : b & 3,
                     uint8_t((b >> 2) & 1 ? 2 : 0),
                     (b >> 3) & 1u,
                     kFlags[(b >> 4) & 3],
                     (b >> 6) & 1};
}

struct FuzzEnv {
    vx_session session{};
    vx_heap *heap = nullptr;
    vx_alloc_state &state = session.alloc_state;
    vx_allocator &alloc = session.alloc;
    // The context, reached as ctx.get() and ctx->.
    struct {
        jlpca_ctx *p;
        jlpca_ctx *get() const { return p; }
        jlpca_ctx *operator->() const { return p; }
    } ctx{};

    explicit FuzzEnv(const FuzzModes &m) {
        ini_set_value(0, VX_INI_CHARSET, m.charset_config);
        vx_session_options o{};
        o.escape_mode = m.escape_mode;
        o.strict = m.strict;
        o.unique_keys = m.unique_keys;
        o.compat = m.compat;
        if (vx_session_open(&session, &o) != 0) std::abort(); // the fuzzer's own memory
        heap = session.heap;
        ctx.p = session.ctx;
        ctx->dup_key_replace = m.dup_key_replace;
        ctx->sorted_keys = m.sorted_keys;
        ctx->scalar_top = m.scalar_top;
        ctx->number_mode = m.number_mode;
        ctx->array_spare = m.array_spare;
        if (jlpca_set_std_strings(ctx.get(), m.std_strings) != 0) std::abort();
    }
    ~FuzzEnv() { vx_session_close(&session); }
    FuzzEnv(const FuzzEnv &) = delete;
};

// The rest of an input as a path text up to the first line feed and a
// document after it; false when there is no line feed.
inline bool take_path_and_document(const uint8_t *data, size_t size, std::string &path,
                                   std::string &doc) {
    const char *text = reinterpret_cast<const char *>(data);
    const char *nl = static_cast<const char *>(std::memchr(text, '\n', size));
    if (!nl) return false;
    path.assign(text, size_t(nl - text));
    doc.assign(nl + 1, size - size_t(nl - text) - 1);
    return true;
}

// The written text of a tree; false when writing failed.
inline bool write_tree(FuzzEnv &env, const json_node *root, uint32_t flags, std::string &out) {
    vxstr *s = vxstr_create(nullptr, &env.alloc, 0);
    if (!s) return false;
    int32_t rc = json_to_string(env.ctx.get(), &env.alloc, s, root, flags, 0, 0, JSON_CONV_JSON);
    if (rc == 0) out.assign(vxstr_getstr(s), s->len);
    vxstr_free(nullptr, &env.alloc, s);
    return rc == 0;
}

#endif
