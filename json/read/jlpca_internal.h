// jlpca_internal.h -- the parse-context helpers shared by jlpca.cpp and the
// JSON scanner: error raising, literal appends, and the number and keyword
// steps split so that the scanner can run them without the heap copies the
// exported helpers make.
#ifndef VXJSON_JLPCA_INTERNAL_H
#define VXJSON_JLPCA_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "messages.h"
#include "vxjson.h"

namespace vxjson {

// An integer text longer than this (sign included) may not fit 64 bits and
// is kept as a decimal text instead.
inline constexpr int32_t MAX_INTEGER_CHARS = 18;

// A number that overflows a double is refused (-6102) rather than kept as
// its text: in the MySQL dialect and under number_mode 2.
inline bool overflow_is_an_error(const jlpca_ctx *ctx) {
    return ctx->compat == JLPCA_COMPAT_MYSQL || ctx->number_mode == 2;
}

// The value of a hex digit of a \u escape; false for any other byte.
inline bool hex_digit(unsigned char c, uint32_t &v) {
    if (c >= '0' && c <= '9') v = c - '0';
    else if (c >= 'A' && c <= 'F') v = c - 'A' + 10u;
    else if (c >= 'a' && c <= 'f') v = c - 'a' + 10u;
    else return false;
    return true;
}

// err_code, err_msg and tok := 0: how every rejected token is raised.
void set_error(jlpca_ctx *ctx, int32_t code, const char *msg);
inline void set_error(jlpca_ctx *ctx, msg::msg_id why) {
    set_error(ctx, msg::code(why), msg::text(why));
}

// Hands the context to a scanner starting on a text.  No character is
// pending at the start of a text: an earlier text that ended inside a
// multibyte character must not reach into this one.
inline void attach_scanner(jlpca_ctx *ctx, void *scanner) {
    ctx->scanner = scanner;
    ctx->scan_handle = scanner;
    ctx->mb_track = 0;
    ctx->mb_pending = 0;
    ctx->mb_split = 0;
    jlpca_startlit(ctx);
}

// Move the literal to a heap buffer with room for n more bytes.
[[gnu::noinline]] int32_t lit_grow(jlpca_ctx *ctx, uint32_t n);

// Append n bytes to the literal without multibyte measuring: 0 or -503.
inline int32_t lit_append(jlpca_ctx *ctx, const char *bytes, uint32_t n) {
    if (uint64_t(n) + uint32_t(ctx->lit_len) >= ctx->lit_cap) [[unlikely]] {
        if (int32_t rc = lit_grow(ctx, n)) return rc;
    }
    std::memcpy(ctx->lit_buf + ctx->lit_len, bytes, n);
    ctx->lit_len += int32_t(n);
    ctx->lit_buf[ctx->lit_len] = '\0';
    return 0;
}

// A number token split into sign and digits by the prefix rules: a dropped
// '+' or leading zeros (`dropped`), a dropped '-' (`negative`), or a text
// that strict reading rejects (`invalid`).  digits/len is what follows.
struct number_parts {
    const char *digits;
    int32_t len;
    bool negative;
    bool dropped;
    bool invalid;
};
inline number_parts number_split(const char *text, int32_t n, bool strict) {
    number_parts r{text, n, false, false, false};
    const char *p = text;
    int32_t len = n;
    if (len > 0 && p[0] == '+') {
        if (strict) return r.invalid = true, r;
        ++p, --len;
        r.dropped = true;
    } else if (len > 0 && p[0] == '-') {
        ++p, --len;
        r.negative = true;
        if (strict && len > 0 && (p[0] == '.' || p[len - 1] == '.')) return r.invalid = true, r;
    } else if (strict && len > 0 && (p[0] == '.' || p[len - 1] == '.')) {
        return r.invalid = true, r;
    }
    if (len > 1 && p[0] == '0' && p[1] != '.') [[unlikely]] {
        if (strict) return r.invalid = true, r;
        while (len > 1 && p[0] == '0' && p[1] != '.') ++p, --len, r.dropped = true;
    }
    r.digits = p;
    r.len = len;
    return r;
}

// The value of an optional '-' and at most 18 digits.
inline int64_t parse_int_digits(const char *t, int32_t len) {
    bool neg = len > 0 && t[0] == '-';
    int64_t v = 0;
    for (int32_t i = neg ? 1 : 0; i < len; i++) v = v * 10 + (t[i] - '0');
    return neg ? -v : v;
}

// How a number token is written: digits only, with a '.', or with an
// exponent or a d/f suffix.
enum number_kind { INTEGER, DECIMAL, REAL };

// The one classifier of a normalised number text (no '+', no dropped
// zeros): an integer of up to 18 characters gets its value and the
// narrowest integer kind; anything else is checked for overflow and kept
// as text.  `copy` makes tok_str a heap copy, otherwise it points at `t`
// (which must outlive the token's use).  The token kind, or 0 with the
// error set.
int32_t classify_number(jlpca_ctx *ctx, number_kind kind, const char *t, int32_t len, bool copy);

// JT_TRUE, JT_FALSE, JT_NULL, or -1 (lax) / -2 (strict).
int32_t keyword_lookup(const char *w, size_t len, bool strict);

} // namespace vxjson

#endif
