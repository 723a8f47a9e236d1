// Growable string over a pluggable allocator.  Growth doubles; the first
// failure is sticky so writers can append freely and check once.
#include "vxstr.h"

#include <cstring>

#include "vx_alloc.h"

namespace {

constexpr char SRC[] = "vxstr";

// Make room for `extra` more bytes plus the terminator.
[[gnu::noinline]] int32_t grow(void *env, vx_allocator *a, vxstr *s, uint32_t extra) {
    if (s->failed) return VXSTR_NOMEM;
    uint64_t need = uint64_t(s->len) + extra;
    if (need > UINT32_MAX - 1) {
        s->failed = 1;
        return VXSTR_NOMEM;
    }
    uint64_t cap = s->cap ? s->cap : VXSTR_INITIAL_SIZE;
    while (cap < need) cap *= 2;
    if (cap > UINT32_MAX - 1) cap = UINT32_MAX - 1;
    auto *buf = static_cast<char *>(vx_alloc(env, a, cap + 1, SRC, __LINE__));
    if (!buf) {
        s->failed = 1;
        return VXSTR_NOMEM;
    }
    std::memcpy(buf, s->buf, s->len + 1);
    vx_free(env, a, s->buf);
    s->buf = buf;
    s->cap = uint32_t(cap);
    return 0;
}

inline int32_t ensure(void *env, vx_allocator *a, vxstr *s, uint32_t extra) {
    if (s->failed) [[unlikely]]
        return VXSTR_NOMEM;
    if (s->cap - s->len >= extra) [[likely]]
        return 0;
    return grow(env, a, s, extra);
}

} // namespace

extern "C" vxstr *vxstr_create(void *env, vx_allocator *a, uint32_t initial) {
    auto *s = static_cast<vxstr *>(vx_alloc(env, a, sizeof(vxstr), SRC, __LINE__));
    if (!s) return nullptr;
    uint32_t cap = initial ? initial : VXSTR_INITIAL_SIZE;
    s->buf = static_cast<char *>(vx_alloc(env, a, size_t(cap) + 1, SRC, __LINE__));
    if (!s->buf) {
        vx_free(env, a, s);
        return nullptr;
    }
    s->buf[0] = '\0';
    s->len = 0;
    s->cap = cap;
    s->failed = 0;
    return s;
}

extern "C" int32_t vxstr_init(vxstr *s) {
    s->len = 0;
    s->failed = 0;
    if (s->buf) s->buf[0] = '\0';
    return 0;
}

extern "C" int32_t vxstr_append_with_length(void *env, vx_allocator *a, vxstr *s, const char *bytes,
                                            uint32_t n) {
    if (int32_t rc = ensure(env, a, s, n)) return rc;
    std::memcpy(s->buf + s->len, bytes, n);
    s->len += n;
    s->buf[s->len] = '\0';
    return 0;
}

extern "C" int32_t vxstr_append(void *env, vx_allocator *a, vxstr *s, const char *text) {
    return vxstr_append_with_length(env, a, s, text, uint32_t(std::strlen(text)));
}

extern "C" int32_t vxstr_append_n_const_char(void *env, vx_allocator *a, vxstr *s, char c,
                                             uint32_t n) {
    if (int32_t rc = ensure(env, a, s, n)) return rc;
    std::memset(s->buf + s->len, c, n);
    s->len += n;
    s->buf[s->len] = '\0';
    return 0;
}

extern "C" int32_t vxstr_reserve(void *env, vx_allocator *a, vxstr *s, uint32_t extra) {
    return ensure(env, a, s, extra);
}

extern "C" char *vxstr_getstr(vxstr *s) { return s->buf; }

extern "C" void vxstr_free(void *env, vx_allocator *a, vxstr *s) {
    if (!s) return;
    vx_free(env, a, s->buf);
    vx_free(env, a, s);
}

extern "C" void vxstr_free_record(void *env, vx_allocator *a, vxstr *s) { vx_free(env, a, s); }
