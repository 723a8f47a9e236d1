/*
 * xdec.cpp -- making decimals (from text, doubles and integers), reading
 * them back (64-bit integers, text) and fitting them to a scale.
 */
#include <charconv>
#include <cmath>
#include <cstring>

#include "xdec_internal.h"

using namespace xdec_impl;

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/* Mantissa digits as they are read.  Half away from zero needs only the
 * first digit past the 38 kept, so one more is kept and the rest only
 * move the exponent. */
struct digit_reader {
    u128 coef = 0;       /* first 38 significant digits */
    int kept = 0;        /* significant digits taken, at most 39 */
    int round_digit = 0; /* the 39th significant digit */
    int64_t exp = 0;     /* exponent of the last digit taken */

    void take(int d, bool in_fraction) {
        if (kept == 0 && d == 0) {
            exp -= in_fraction; /* a leading zero only places the point */
            return;
        }
        if (kept <= PREC) {
            if (kept < PREC) coef = coef * 10 + static_cast<unsigned>(d);
            else round_digit = d;
            kept++;
            exp -= in_fraction;
        } else {
            exp += !in_fraction; /* an integer digit past the kept ones */
        }
    }

    wide coefficient() const {
        wide w = wide_from_u128(coef);
        if (kept > PREC) {
            wide_mul_pow10(w, 1);
            wide_add(w, wide_from_u128(static_cast<unsigned>(round_digit)));
        }
        return w;
    }
};

/* Exponent digits, saturated far beyond any exponent that can matter. */
const char *read_exponent(const char *p, const char *end, int64_t *out) {
    bool neg = false;
    if (p < end && (*p == '+' || *p == '-')) neg = *p++ == '-';
    if (p == end || !is_digit(*p)) return nullptr;
    int64_t e = 0;
    for (; p < end && is_digit(*p); p++)
        if (e < 1000000000000) e = e * 10 + (*p - '0');
    *out = neg ? -e : e;
    return p;
}

/* The digits of a coefficient, most significant first; returns the count. */
int coef_digits(u128 v, char *buf) {
    constexpr uint64_t TEN19 = 10000000000000000000ull;
    char *p = buf;
    uint64_t high = static_cast<uint64_t>(v / TEN19);
    uint64_t low = static_cast<uint64_t>(v % TEN19);
    if (high != 0) {
        p = std::to_chars(p, buf + 20, high).ptr;
        char tmp[20];
        char *t = std::to_chars(tmp, tmp + 20, low).ptr;
        size_t n = static_cast<size_t>(t - tmp);
        std::memset(p, '0', 19 - n);
        std::memcpy(p + 19 - n, tmp, n);
        p += 19;
    } else {
        p = std::to_chars(p, buf + 20, low).ptr;
    }
    return static_cast<int>(p - buf);
}

char *put_exponent(char *p, int64_t e) {
    *p++ = 'E';
    *p++ = e < 0 ? '-' : '+';
    return std::to_chars(p, p + 8, e < 0 ? -e : e).ptr;
}

bool scale_in_range(int32_t scale) { return scale >= XDEC_MIN_SCALE && scale <= XDEC_MAX_SCALE; }

/* coef / 10^drop, rounded half away from zero; drop >= 1. */
u128 round_off(u128 coef, int64_t drop) {
    if (drop > digits_u128(coef)) return 0;
    u128 q = coef / POW10.v[drop - 1];
    return q / 10 + (q % 10 >= 5 ? 1 : 0);
}

} // namespace

int32_t xdec_from_char(xdec *out, const char *text, uint32_t len) {
    if (text == nullptr) return XDEC_NOT_NUMBER;
    const char *p = text, *end = text + len;
    while (p < end && is_blank(*p)) p++;
    while (end > p && is_blank(end[-1])) end--;
    bool neg = false;
    if (p < end && (*p == '+' || *p == '-')) neg = *p++ == '-';
    digit_reader r;
    bool any_digit = false;
    for (; p < end && is_digit(*p); p++, any_digit = true) r.take(*p - '0', false);
    if (p < end && *p == '.')
        for (p++; p < end && is_digit(*p); p++, any_digit = true) r.take(*p - '0', true);
    if (!any_digit) return XDEC_NOT_NUMBER;
    int64_t e = 0;
    if (p < end && (*p == 'e' || *p == 'E')) {
        p = read_exponent(p + 1, end, &e);
        if (p == nullptr) return XDEC_NOT_NUMBER;
    }
    if (p != end) return XDEC_NOT_NUMBER;
    return finish(neg, r.coefficient(), r.exp + e, out);
}

int32_t xdec_from_double(xdec *out, double d) {
    if (std::isnan(d)) return XDEC_NOT_NUMBER;
    if (std::isinf(d)) return XDEC_ERR_OVERFLOW;
    char buf[32];
    auto res = std::to_chars(buf, buf + sizeof buf, d, std::chars_format::scientific);
    xdec tmp;
    int32_t rc = xdec_from_char(&tmp, buf, static_cast<uint32_t>(res.ptr - buf));
    if (rc != 0) return rc;
    /* 1500.0 reads back as 1500, not as 1.5E+3. */
    unpacked u = unpack(&tmp);
    if (u.exp > 0 && digits_u128(u.coef) + u.exp <= PREC)
        pack(u.coef * POW10.v[u.exp], 0, u.neg, &tmp);
    *out = tmp;
    return 0;
}

int32_t xdec_from_int64(xdec *out, int64_t v) {
    uint64_t mag = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
    pack(mag, 0, v < 0, out);
    return 0;
}

int32_t xdec_fill_zero(xdec *out) {
    pack(0, 0, false, out);
    return 0;
}

int32_t xdec_copy(xdec *dst, const xdec *src) {
    *dst = *src;
    return 0;
}

int32_t xdec_trunc_scale(xdec *d, int32_t scale) {
    if (!scale_in_range(scale)) return XDEC_ERR_ARG;
    if (d->scale <= scale) return 0;
    unpacked u = unpack(d);
    int drop = d->scale - scale;
    u128 coef = drop > PREC ? 0 : u.coef / POW10.v[drop];
    pack(coef, -scale, u.neg, d);
    return 0;
}

int32_t xdec_format(xdec *d, int32_t prec, int32_t scale) {
    if (prec < 1 || prec > PREC || !scale_in_range(scale)) return XDEC_ERR_ARG;
    unpacked u = unpack(d);
    int target_exp = -scale;
    u128 coef = 0;
    if (u.exp >= target_exp) {
        int pad = u.exp - target_exp;
        if (u.coef != 0 && digits_u128(u.coef) + pad > prec) return XDEC_ERR_PRECISION;
        coef = u.coef == 0 ? 0 : u.coef * POW10.v[pad];
    } else {
        coef = round_off(u.coef, target_exp - u.exp);
    }
    if (coef >= POW10.v[prec]) return XDEC_ERR_PRECISION;
    pack(coef, target_exp, u.neg, d);
    return 0;
}

int32_t xdec_get_int64(const xdec *d, int64_t *out) {
    unpacked u = unpack(d);
    u128 mag = 0;
    if (u.exp >= 0) {
        if (u.coef != 0 && digits_u128(u.coef) + u.exp > 19) return XDEC_ERR_OVERFLOW;
        mag = u.coef == 0 ? 0 : u.coef * POW10.v[u.exp];
    } else if (-u.exp <= PREC) {
        mag = u.coef / POW10.v[-u.exp];
    }
    constexpr u128 MAX_POS = static_cast<u128>(INT64_MAX);
    if (mag > MAX_POS + (u.neg ? 1 : 0)) return XDEC_ERR_OVERFLOW;
    uint64_t m = static_cast<uint64_t>(mag);
    *out = u.neg ? static_cast<int64_t>(0 - m) : static_cast<int64_t>(m);
    return 0;
}

int32_t xdec_to_char(const xdec *d, char *buf, uint32_t size) {
    unpacked u = unpack(d);
    char digits[40];
    int nd = coef_digits(u.coef, digits);
    /* Where the point falls relative to the digits; plain notation while
     * the exponent is not positive and the value is not below 10^-6. */
    int64_t left = static_cast<int64_t>(u.exp) + nd;
    int64_t dot = (u.exp <= 0 && left > -6) ? left : 1;
    char text[XDEC_TEXT_MAX];
    char *p = text;
    if (u.neg) *p++ = '-';
    if (dot <= 0) {
        *p++ = '0';
        *p++ = '.';
        std::memset(p, '0', static_cast<size_t>(-dot));
        p += -dot;
        std::memcpy(p, digits, static_cast<size_t>(nd));
        p += nd;
    } else {
        /* dot <= nd here: a positive exponent always takes the E form. */
        std::memcpy(p, digits, static_cast<size_t>(dot));
        p += dot;
        if (dot < nd) {
            *p++ = '.';
            std::memcpy(p, digits + dot, static_cast<size_t>(nd - dot));
            p += nd - dot;
        }
    }
    if (left != dot) p = put_exponent(p, left - dot);
    uint32_t n = static_cast<uint32_t>(p - text);
    if (buf == nullptr || n >= size) return XDEC_ERR_ARG;
    std::memcpy(buf, text, n);
    buf[n] = '\0';
    return static_cast<int32_t>(n);
}
