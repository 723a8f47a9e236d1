// Parse context: set-up and buffers of jlpca_ctx, and the helpers the
// scanners' actions call -- literal collection with multibyte tracking,
// escape decoding, \u conversion into the server character set, number
// normalisation and classification, keyword lookup.
//
// The exported helpers take (text, length) and never read past the length:
// the scanners hand them pieces of the caller's text, which is neither
// copied nor NUL-terminated.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "escape_letters.h"
#include "jlpca_internal.h"
#include "number_text.h"
#include "report.h"
#include "report_sites.h"
#include "vx_charset.h"
#include "vx_heap.h"
#include "vx_ini.h"
#include "vx_number.h"

using namespace vxjson;
using namespace vxjson::site;

namespace {

// Growth unit of the literal buffer: the inline buffer's usable size.
constexpr uint32_t LIT_STEP = JLPCA_LIT_INLINE_SIZE - 1;
constexpr uint32_t LIT_GEOMETRIC_FROM = 1u << 20; // literals below this grow by the fixed step
// Room for the bytes of one UTF-16 unit in any server character set.
constexpr int32_t UCHAR_BUF = 50;
// The token-text buffer holds a whole match plus a terminator and slack.
constexpr uint32_t SCAN_SLACK = 10;

// A heap copy of `len` bytes, NUL-terminated.
char *heap_copy(jlpca_ctx *ctx, const char *text, size_t len, int32_t line) {
    auto *p =
        static_cast<char *>(mem_heap_alloc_low(ctx->env, ctx->heap, len + 1, 0, SRC_JLPCA, line));
    if (!p) return nullptr;
    if (len) std::memcpy(p, text, len);
    p[len] = '\0';
    return p;
}

// Raises the out-of-memory failure of a number helper the way its other
// rejections are raised: tok 0, helper result 0.
int32_t number_nomem(jlpca_ctx *ctx) {
    set_error(ctx, msg::NO_MEMORY);
    return 0;
}

} // namespace

namespace vxjson {

void set_error(jlpca_ctx *ctx, int32_t code, const char *msg) {
    ctx->err_code = code;
    size_t n = std::strlen(msg);
    if (n >= sizeof ctx->err_msg) n = sizeof ctx->err_msg - 1;
    std::memcpy(ctx->err_msg, msg, n);
    ctx->err_msg[n] = '\0';
    ctx->tok = 0;
}

int32_t lit_grow(jlpca_ctx *ctx, uint32_t n) {
    uint64_t cap = n > LIT_STEP - 1 ? uint64_t(ctx->lit_cap) + (n / LIT_STEP + 1) * LIT_STEP
                                    : uint64_t(ctx->lit_cap) + LIT_STEP;
    // Past a megabyte the fixed step would make a long literal built of
    // many small pieces (an escape-heavy string) cost quadratic copying and
    // heap; growing by half again keeps both linear.
    if (ctx->lit_cap >= LIT_GEOMETRIC_FROM) cap = std::max(cap, uint64_t(ctx->lit_cap) * 3 / 2);
    if (cap > INT32_MAX - 1) cap = INT32_MAX - 1; // lit_len is a signed 32-bit count
    if (cap <= uint64_t(ctx->lit_len) + n) return VXJSON_ERR_NOMEM;
    auto *buf = static_cast<char *>(
        mem_heap_alloc_low(ctx->env, ctx->heap, size_t(cap) + 1, 0, SRC_JLPCA, JLPCA_LIT_GROW));
    if (!buf) return VXJSON_ERR_NOMEM;
    std::memcpy(buf, ctx->lit_buf, size_t(ctx->lit_len) + 1);
    ctx->lit_buf = buf;
    ctx->lit_cap = uint32_t(cap);
    return 0;
}

} // namespace vxjson

extern "C" {

// ------------------------------------------------------------------
// Set-up and buffers
// ------------------------------------------------------------------

VXJSON_API int32_t jlpca_init(void *env, jlpca_ctx *ctx, void *heap, vx_allocator *allocator,
                              int32_t escape_mode, int32_t strict, int32_t unique_keys,
                              int32_t compat) {
    jlpca_init_simple(env, ctx, heap, allocator, escape_mode, compat);
    ctx->strict = strict;
    ctx->unique_keys = unique_keys;
    return 0;
}

VXJSON_API int32_t jlpca_init_simple(void *env, jlpca_ctx *ctx, void *heap, vx_allocator *allocator,
                                     int32_t escape_mode, int32_t compat) {
    std::memset(ctx, 0, sizeof *ctx);
    ctx->env = env;
    ctx->heap = heap;
    ctx->allocator = allocator;
    if (escape_mode == JLPCA_ESCAPE_SORTED) {
        ctx->escape_mode = JLPCA_ESCAPE_DECODE;
        ctx->sorted_keys = 1;
        ctx->dup_key_replace = 1;
    } else {
        ctx->escape_mode = escape_mode;
    }
    // A dialect reads strictly but takes a scalar as the whole document.
    if (compat != JLPCA_COMPAT_STANDARD) {
        ctx->strict = 1;
        ctx->compat = compat;
        ctx->path_last_key = 1;
        ctx->scalar_top = 1;
    }
    ctx->scan_buf = ctx->scan_inline;
    ctx->scan_cap = JLPCA_SCAN_INLINE_SIZE;
    jlpca_mblen_init(ctx);
    return 0;
}

VXJSON_API int32_t jlpca_mblen_init(jlpca_ctx *ctx) {
    ctx->mb_track = 0;
    ctx->mb_pending = 0;
    ctx->mb_split = 0;
    int32_t cs = vx_charset_from_config(ini_get_value(0, VX_INI_CHARSET));
    if (cs != VX_CHARSET_NONE) ctx->mb_charset = cs;
    return 0;
}

VXJSON_API int32_t jlpca_reinit(jlpca_ctx *ctx, const char *text, uint32_t len) {
    ctx->text = text;
    ctx->text_len = len;
    ctx->blank = 0;
    int32_t rc = 0;
    if (uint64_t(len) + SCAN_SLACK > ctx->scan_cap) {
        if (ctx->scan_buf != ctx->scan_inline) std::free(ctx->scan_buf);
        size_t want = size_t(len) + SCAN_SLACK;
        ctx->scan_buf = static_cast<char *>(std::malloc(want));
        ctx->scan_cap = uint32_t(want);
        if (!ctx->scan_buf) {
            ctx->scan_buf = ctx->scan_inline;
            ctx->scan_cap = JLPCA_SCAN_INLINE_SIZE;
            rc = VXJSON_ERR_NOMEM;
        }
    }
    ctx->first_node = ctx->cur_node = ctx->last_node = nullptr;
    jlpca_lex_error_reinit(ctx);
    return rc;
}

VXJSON_API int32_t jlpca_reinit_with_blank(jlpca_ctx *ctx, const char *text, uint32_t len,
                                           int32_t blank) {
    int32_t rc = jlpca_reinit(ctx, text, len);
    ctx->blank = blank;
    return rc;
}

VXJSON_API int32_t jlpca_lex_error_reinit(jlpca_ctx *ctx) {
    ctx->err_code = 0;
    ctx->err_msg[0] = '\0';
    ctx->err_line = 0;
    ctx->err_aux = 0;
    return 0;
}

VXJSON_API void jlpca_clear(jlpca_ctx *ctx) {
    if (ctx->scan_buf != ctx->scan_inline) {
        std::free(ctx->scan_buf);
        ctx->scan_buf = ctx->scan_inline;
        ctx->scan_cap = JLPCA_SCAN_INLINE_SIZE;
    }
    ctx->first_node = ctx->cur_node = ctx->last_node = nullptr;
}

VXJSON_API void jlpca_deinit(jlpca_ctx *ctx) {
    if (ctx->scan_buf != ctx->scan_inline) std::free(ctx->scan_buf);
}

VXJSON_API void jlpa_set_top_json(jlpca_ctx *ctx, json_node *node) { ctx->cur_node = node; }

// ------------------------------------------------------------------
// Literal collection
// ------------------------------------------------------------------

VXJSON_API char *jlpca_startlit(jlpca_ctx *ctx) {
    ctx->lit_inline[0] = '\0';
    ctx->lit_escaped = 0;
    ctx->lit_cap = LIT_STEP;
    ctx->lit_len = 0;
    ctx->lit_buf = ctx->lit_inline;
    return ctx->lit_inline;
}

VXJSON_API int32_t jlpca_addlit(const char *bytes, int32_t n, jlpca_ctx *ctx) {
    if (n <= 0) return 0;
    // In a charset that never leaves a piece inside a character, with
    // nothing pending, measuring gives 0 and changes nothing.
    const bool simple = ctx->mb_charset != VX_CHARSET_GB18030 &&
                        ctx->mb_charset != VX_CHARSET_EUCKR && !ctx->mb_pending && !ctx->mb_split;
    if (ctx->mb_track == 1 && !simple) ctx->mb_pending = jlpca_encoding_mblen(ctx, bytes, n);
    return lit_append(ctx, bytes, uint32_t(n));
}

VXJSON_API uint32_t jlpca_encoding_mblen(jlpca_ctx *ctx, const char *bytes, int32_t n) {
    const auto *p = reinterpret_cast<const unsigned char *>(bytes);
    const unsigned char *end = p + (n > 0 ? n : 0);
    if (ctx->mb_split) {
        unsigned char b = p[0];
        ctx->mb_pending = (b < 0x40 || b > 0xFE || b == 0x7F) ? 3 : 1;
        ctx->mb_split = 0;
    }
    if (int64_t(ctx->mb_pending) >= end - p) return ctx->mb_pending - uint32_t(end - p);
    p += ctx->mb_pending;
    const int32_t cs = ctx->mb_charset;
    for (;;) {
        uint32_t len;
        if (cs == VX_CHARSET_GB18030) {
            unsigned char b = p[0];
            if (b >= 0x81 && b <= 0xFE) {
                if (p + 1 == end) {
                    ctx->mb_split = 1;
                    return UINT32_MAX;
                }
                unsigned char t = p[1];
                len = (t < 0x40 || t == 0xFF || t == 0x7F) ? 4 : 2;
            } else {
                len = 1;
            }
        } else if (end - p >= 4) {
            len = uint32_t(encoding_mblen(cs, p, 0));
        } else {
            // The piece ends within four bytes: measure it as if a NUL
            // followed it, as it does in a token buffer.
            unsigned char tail[4] = {0, 0, 0, 0};
            std::memcpy(tail, p, size_t(end - p));
            len = uint32_t(encoding_mblen(cs, tail, 0));
        }
        if (len == 0) len = 1;
        if (end - p <= int64_t(len)) {
            ctx->mb_split = 0;
            return len - uint32_t(end - p);
        }
        p += len;
    }
}

// ------------------------------------------------------------------
// Escapes
// ------------------------------------------------------------------

VXJSON_API int32_t jlpca_addlit_escape(const char *text, int32_t n, jlpca_ctx *ctx) {
    ctx->lit_escaped = 1;
    if (n <= 0) return VXJSON_ERR_INVALID_JSON;
    const char letter = text[0];
    const bool keep = ctx->escape_mode == JLPCA_ESCAPE_KEEP;
    if (letter == 'u') {
        if (n < 5) return VXJSON_ERR_INVALID_JSON;
        if (int32_t rc = jlpca_uchar(text + 1, 4, ctx); rc < 0)
            return report(rc, SRC_JLPCA, JLPCA_UCHAR_REPORT);
        return jlpca_addlit(text + 5, n - 5, ctx);
    }
    const int byte = BYTE_OF_LETTER[static_cast<unsigned char>(letter)];
    if (byte < 0) return VXJSON_ERR_INVALID_JSON;
    const char decoded = static_cast<char>(byte);
    int32_t rc;
    if (!keep || letter == '/') {
        rc = jlpca_addlit(&decoded, 1, ctx);
    } else if (letter == 'b' && ctx->compat == JLPCA_COMPAT_STANDARD) {
        rc = jlpca_addlit("\\u0008", 6, ctx);
    } else {
        const char pair[2] = {'\\', letter};
        rc = jlpca_addlit(pair, 2, ctx);
    }
    if (rc < 0) return rc;
    return jlpca_addlit(text + 1, n - 1, ctx);
}

VXJSON_API int32_t jlpca_uchar(const char *hex4, int32_t n, jlpca_ctx *ctx) {
    if (n < 4) return VXJSON_ERR_INVALID_JSON;
    uint32_t d[4];
    for (int i = 0; i < 4; i++)
        if (!hex_digit(static_cast<unsigned char>(hex4[i]), d[i])) return VXJSON_ERR_INVALID_JSON;
    uint32_t code = (d[0] * 16 + d[1]) * 256 + (d[2] * 16 + d[3]);
    return jlpca_addlit_uchar(ctx, hex4, n, code);
}

VXJSON_API int32_t jlpca_addlit_uchar(jlpca_ctx *ctx, const char *hex4, int32_t, uint32_t code) {
    // The bound is inclusive on purpose: U+0080 is kept as the byte 0x80,
    // except in standard strings, whose text must stay valid.
    if (code > 0x80 || (code == 0x80 && ctx->std_strings == 1)) {
        const uint16_t unit = uint16_t(code);
        char out[UCHAR_BUF];
        int32_t cs = vx_charset_from_config(ini_get_value(0, VX_INI_CHARSET));
        int32_t len = Utf16ToLocal(&unit, 1, cs, out, UCHAR_BUF);
        if (len < 0) return VXJSON_ERR_INVALID_JSON;
        return jlpca_addlit(out, len, ctx);
    }
    const char byte = char(code & 0xFF);
    if (ctx->escape_mode == JLPCA_ESCAPE_KEEP && static_cast<int8_t>(byte) < 32) {
        switch (byte) {
        case '\n': return jlpca_addlit("\\n", 2, ctx);
        case '\t': return jlpca_addlit("\\t", 2, ctx);
        case '\f': return jlpca_addlit("\\f", 2, ctx);
        case '\r': return jlpca_addlit("\\r", 2, ctx);
        default: {
            // Re-escaped as written, in upper case.
            char esc[7] = {'\\', 'u', hex4[0], hex4[1], hex4[2], hex4[3], '\0'};
            vx_mbsupr(esc + 2);
            return jlpca_addlit(esc, 6, ctx);
        }
        }
    }
    return jlpca_addlit(&byte, 1, ctx);
}

// ------------------------------------------------------------------
// Numbers
// ------------------------------------------------------------------

VXJSON_API int32_t jlpca_number_prefix(const char *text, int32_t n, jlpca_ctx *ctx,
                                       const char **out, int32_t *out_len) {
    number_parts s = number_split(text, n, ctx->strict != 0);
    if (s.invalid) {
        set_error(ctx, msg::INVALID_NUMBER);
        return 0;
    }
    if (s.len == 0) {
        char *zero = heap_copy(ctx, "0", 1, JLPCA_NUMBER_COPY);
        if (!zero) return number_nomem(ctx);
        *out = zero;
        *out_len = 1;
    } else if (s.negative) {
        char *copy = static_cast<char *>(mem_heap_alloc_low(ctx->env, ctx->heap, size_t(s.len) + 2,
                                                            0, SRC_JLPCA, JLPCA_NUMBER_COPY));
        if (!copy) return number_nomem(ctx);
        copy[0] = '-';
        std::memcpy(copy + 1, s.digits, size_t(s.len));
        copy[s.len + 1] = '\0';
        *out = copy;
        *out_len = s.len + 1;
    } else {
        *out = s.digits;
        *out_len = s.len;
    }
    return 1;
}

VXJSON_API int32_t jlpca_check_decimal_overflow(const char *text, int32_t len, jlpca_ctx *ctx,
                                                double *out) {
    double d = number_to_double(text, size_t(len));
    if (is_double_overflow(d)) {
        if (overflow_is_an_error(ctx)) {
            set_error(ctx, msg::NUMBER_OVERFLOW);
            return 0;
        }
        if (out) *out = d;
        return 0;
    }
    if (out) *out = d;
    return JT_DECIMAL;
}

VXJSON_API int32_t jlpca_ret_integer(const char *text, int32_t n, jlpca_ctx *ctx) {
    const char *t;
    int32_t len;
    if (!jlpca_number_prefix(text, n, ctx, &t, &len)) return 0;
    return classify_number(ctx, INTEGER, t, len, true);
}

VXJSON_API int32_t jlpca_ret_decimal(const char *text, int32_t n, jlpca_ctx *ctx) {
    const char *t;
    int32_t len;
    if (!jlpca_number_prefix(text, n, ctx, &t, &len)) return 0;
    return classify_number(ctx, DECIMAL, t, len, true);
}

VXJSON_API int32_t jlpca_ret_real(const char *text, int32_t n, jlpca_ctx *ctx) {
    const char *t;
    int32_t len;
    if (!jlpca_number_prefix(text, n, ctx, &t, &len)) return 0;
    return classify_number(ctx, REAL, t, len, true);
}

VXJSON_API int32_t jkeyword_lookup(const char *word, jlpca_ctx *ctx) {
    return keyword_lookup(word, std::strlen(word), ctx->strict != 0);
}

} // extern "C"

namespace vxjson {

static int32_t set_decimal(jlpca_ctx *ctx, const char *t, int32_t len, bool copy);

static int32_t ret_decimal_low(jlpca_ctx *ctx, const char *t, int32_t len, bool copy) {
    if (jlpca_check_decimal_overflow(t, len, ctx, nullptr) == 0 && ctx->err_code < 0) return 0;
    return set_decimal(ctx, t, len, copy);
}

static int32_t ret_real_low(jlpca_ctx *ctx, const char *t, int32_t len, bool copy) {
    double d = 0;
    int32_t fits = jlpca_check_decimal_overflow(t, len, ctx, &d);
    if (!fits && ctx->err_code < 0) return 0;
    if (fits && ctx->number_mode == 2) {
        // Integral reals become integers; the range tests keep the
        // conversions defined.
        if (d >= -2147483648.0 && d <= 2147483647.0 && d == double(int32_t(d))) {
            ctx->tok_val = int32_t(d);
            return int32_t(ctx->tok = JT_INT);
        }
        if (d >= -9223372036854775808.0 && d < 9223372036854775808.0 && d == double(int64_t(d))) {
            ctx->tok_val = int64_t(d);
            return int32_t(ctx->tok = JT_BIGINT);
        }
    }
    return set_decimal(ctx, t, len, copy);
}

static int32_t set_decimal(jlpca_ctx *ctx, const char *t, int32_t len, bool copy) {
    if (copy) {
        char *c = heap_copy(ctx, t, size_t(len), JLPCA_NUMBER_COPY);
        if (!c) return number_nomem(ctx);
        t = c;
    }
    ctx->tok_str = const_cast<char *>(t);
    ctx->tok_val = len;
    return int32_t(ctx->tok = JT_DECIMAL);
}

// Largest decimal exponent a number text may reach without any chance of
// overflowing a double (DBL_MAX is about 1.8e308).
constexpr int32_t SAFE_DECIMAL_EXPONENT = 300;

// True when the number text cannot exceed a double whatever its digits:
// fewer integer digits plus exponent than the double range allows.
static bool cannot_overflow(const char *t, int32_t len) {
    int32_t i = 0, whole = 0;
    if (i < len && (t[i] == '+' || t[i] == '-')) i++;
    for (; i < len && t[i] >= '0' && t[i] <= '9'; i++) whole++;
    if (i < len && t[i] == '.')
        for (i++; i < len && t[i] >= '0' && t[i] <= '9';) i++;
    int32_t exp = 0;
    if (i < len && (t[i] == 'e' || t[i] == 'E')) {
        bool neg = ++i < len && t[i] == '-';
        if (i < len && (t[i] == '+' || t[i] == '-')) i++;
        for (; i < len && t[i] >= '0' && t[i] <= '9'; i++)
            if (exp < 100000) exp = exp * 10 + (t[i] - '0');
        if (neg) exp = -exp;
    }
    return whole + exp <= SAFE_DECIMAL_EXPONENT;
}

int32_t classify_number(jlpca_ctx *ctx, number_kind kind, const char *t, int32_t len, bool copy) {
    if (kind == INTEGER && len <= MAX_INTEGER_CHARS) {
        const int64_t v = parse_int_digits(t, len);
        ctx->tok_val = v;
        ctx->tok = uint32_t(integer_token_kind(v));
        return int32_t(ctx->tok);
    }
    if (kind == REAL && ctx->number_mode == 2) return ret_real_low(ctx, t, len, copy);
    // Most texts are far from the double range: no conversion needed.
    if (cannot_overflow(t, len)) return set_decimal(ctx, t, len, copy);
    return kind == REAL ? ret_real_low(ctx, t, len, copy) : ret_decimal_low(ctx, t, len, copy);
}

int32_t keyword_lookup(const char *w, size_t len, bool strict) {
    const int32_t none = strict ? -2 : -1;
    if (len != 4 && len != 5) return none;
    auto same = [&](const char *kw) {
        if (strict) return std::memcmp(w, kw, len) == 0;
        for (size_t i = 0; i < len; i++) {
            char c = w[i];
            if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
            if (c != kw[i]) return false;
        }
        return true;
    };
    if (len == 4) {
        if (same("true")) return JT_TRUE;
        if (same("null")) return JT_NULL;
        return none;
    }
    return same("false") ? JT_FALSE : none;
}

} // namespace vxjson
