// The escaping routines on arbitrary bytes in every character set: no
// crash, no leak, and for valid UTF-8 without NUL bytes, removing the
// standard escapes undoes adding them.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_setup.h"
#include "vx_charset.h"
#include "vx_nstr.h"

namespace {

bool valid_utf8_without_nul(const uint8_t *p, size_t n) {
    for (size_t i = 0; i < n;) {
        if (p[i] == 0) return false;
        int32_t len = encoding_mblen(VX_CHARSET_UTF8, p + i, int32_t(n - i));
        if (len == 1 && p[i] >= 0x80) return false;
        i += size_t(len);
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzModes modes = take_modes(data, size);
    FuzzEnv env(modes);
    const char *text = reinterpret_cast<const char *>(data);
    uint32_t len = uint32_t(size);
    vx_allocator *a = &env.alloc;
    char *out = nullptr;
    uint32_t out_len = 0;

    if (json_string_from_value_add_escape(nullptr, a, text, len, &out, &out_len) == 0 && out) {
        char *back = nullptr;
        uint32_t back_len = 0;
        int32_t rc = json_string_to_value_remove_escape(nullptr, a, out, out_len, &back, &back_len);
        if (modes.charset_config == 1 && valid_utf8_without_nul(data, size)) {
            if (rc != 0 || back_len != len || (len && std::memcmp(back, text, len) != 0))
                std::abort();
        }
        vx_free(nullptr, a, back);
        vx_free(nullptr, a, out);
    }
    out = nullptr;
    if (json_string_from_value_add_escape_for_mysql(nullptr, a, text, len, &out, &out_len) !=
        VXJSON_ERR_NOMEM)
        vx_free(nullptr, a, out);
    out = nullptr;
    if (json_org_str_escape_solve_for_mysql(nullptr, a, text, len, &out, &out_len) == 0)
        vx_free(nullptr, a, out);
    for (uint32_t flags : {0u, 1u}) {
        for (uint8_t conv = 0; conv <= 3; conv++) {
            vxstr *s = vxstr_create(nullptr, a, 0);
            if (!s) return 0;
            (void)json_string_convert(nullptr, a, s, flags, text, len, conv != 1, conv);
            vxstr_free(nullptr, a, s);
        }
    }
    vx_nstr src{}, dst{};
    if (nstr_assign_const_ex2_no_clear(nullptr, a, &src, text, len, modes.strict) == 0)
        (void)json_default_value_remove_escape_for_mysql(nullptr, a, &src, &dst);
    return 0;
}
