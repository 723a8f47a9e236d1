/*
 * xdec_internal.h -- what the decimal reader, writer and arithmetic share:
 * the coefficient as a 128-bit integer, a 384-bit scratch integer for the
 * exact intermediate results of multiplication, division and aligned
 * addition, and the one rounding step every result passes through.
 * C++ only; not part of the interface.
 *
 * Internally a value is sign, coefficient and exponent (= -scale): the
 * exponent reads more naturally in the rounding rules.
 */
#ifndef XDEC_INTERNAL_H
#define XDEC_INTERNAL_H

#include <cstdint>

#include "xdec.h"

namespace xdec_impl {

using u128 = unsigned __int128;

constexpr int PREC = XDEC_MAX_PREC;
constexpr int MAX_EXP = XDEC_MAX_EXP;            /* highest leading digit */
constexpr int MIN_EXP = -XDEC_MAX_SCALE;         /* finest digit */
constexpr int TOP_EXP = XDEC_MAX_EXP - PREC + 1; /* exponent of a full 38-digit maximum */
constexpr int WIDE_LIMBS = 6;                    /* 384 bits: 115 digits */

/* 10^0 .. 10^38, all of which fit 128 bits. */
struct pow10_table {
    u128 v[PREC + 1];
};
constexpr pow10_table make_pow10() {
    pow10_table t{};
    t.v[0] = 1;
    for (int i = 1; i <= PREC; i++) t.v[i] = t.v[i - 1] * 10;
    return t;
}
inline constexpr pow10_table POW10 = make_pow10();

/* Decimal digits of `v` (1 for zero). */
inline int digits_u128(u128 v) {
    int n = 1;
    while (n <= PREC && v >= POW10.v[n]) n++;
    return n;
}

/* An unpacked value: what the arithmetic works on. */
struct unpacked {
    u128 coef; /* below 10^38 */
    int exp;   /* value = coef x 10^exp */
    bool neg;  /* sign; false for zero */
};

inline unpacked unpack(const xdec *d) {
    return unpacked{(static_cast<u128>(d->hi) << 64) | d->lo, -d->scale, d->neg != 0};
}

/* Unsigned scratch integer, little-endian 64-bit limbs. */
struct wide {
    uint64_t limb[WIDE_LIMBS];
};

wide wide_from_u128(u128 v);
bool wide_is_zero(const wide &w);
bool wide_fits_u128(const wide &w);
u128 wide_low_u128(const wide &w);
int wide_cmp(const wide &a, const wide &b);
/* a += b and a -= b (a >= b); the operands stay within 384 bits. */
void wide_add(wide &a, const wide &b);
void wide_sub(wide &a, const wide &b);
/* w *= 10^k; the product stays within 384 bits. */
void wide_mul_pow10(wide &w, int k);
/* w /= d; returns the remainder. */
uint64_t wide_div_small(wide &w, uint64_t d);
/* The full product of two coefficients. */
wide wide_mul_u128(u128 a, u128 b);
/* num / den into `quot`; returns the remainder.  den is not zero. */
u128 wide_divmod_u128(const wide &num, u128 den, wide &quot);
/* Decimal digits of `w` (1 for zero). */
int wide_digits(const wide &w);

/* Round the exact result sign x coef x 10^exp to 38 digits and the
 * exponent range, half away from zero, and store it: 0 or
 * XDEC_ERR_OVERFLOW (then `out` is untouched). */
int32_t finish(bool neg, wide coef, int64_t exp, xdec *out);
/* Store a value already within range: coef < 10^38, exp in range. */
void pack(u128 coef, int exp, bool neg, xdec *out);

} // namespace xdec_impl

#endif
