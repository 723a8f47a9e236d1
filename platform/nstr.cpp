// Storing into the server's string value record.
#include "vx_nstr.h"

#include <cstring>

#include "vx_alloc.h"

namespace {

int32_t assign(void *env, vx_allocator *a, vx_nstr *dst, const char *text, uint32_t len,
               uint32_t mode) {
    char *target = dst->u.inline_text;
    if (len >= VX_NSTR_INLINE) {
        target = static_cast<char *>(vx_alloc(env, a, size_t(len) + 1, "nstr", __LINE__));
        if (!target) return -503;
        dst->u.text = target;
    }
    if (len) std::memcpy(target, text, len);
    target[len] = '\0';
    dst->len = len;
    dst->assign = mode;
    return 0;
}

} // namespace

extern "C" const char *nstr_text(const vx_nstr *s) {
    return s->len >= VX_NSTR_INLINE ? s->u.text : s->u.inline_text;
}

extern "C" int32_t nstr_assign_const_with_blank_no_clear(void *env, vx_allocator *a, vx_nstr *dst,
                                                         const char *text, uint32_t len) {
    return assign(env, a, dst, text, len, 0);
}

extern "C" int32_t nstr_assign_const_ex2_no_clear(void *env, vx_allocator *a, vx_nstr *dst,
                                                  const char *text, uint32_t len, uint32_t mode) {
    return assign(env, a, dst, text, len, mode);
}
