/*
 * xdec_arith.cpp -- decimal addition, subtraction, multiplication and
 * division.  Each forms the exact result (or, for a quotient, enough digits
 * to round it correctly) in a 384-bit scratch integer and rounds once.
 */
#include "xdec_internal.h"

using namespace xdec_impl;

namespace {

/* A value during alignment: the coefficient may exceed 38 digits. */
struct operand {
    wide coef;
    int64_t exp;
    bool neg;
};

operand widen(const unpacked &u) { return operand{wide_from_u128(u.coef), u.exp, u.neg}; }

/* Bring both operands to the smaller exponent.  When the smaller operand
 * lies wholly below the 38 digits the larger one keeps plus a guard digit,
 * it is replaced by a single unit just under them: adding any such small
 * amount rounds the same way, and the alignment shift stays bounded. */
void align(operand &a, operand &b) {
    operand &big = a.exp < b.exp ? b : a;
    operand &small = a.exp < b.exp ? a : b;
    int big_len = wide_digits(big.coef);
    int64_t floor_exp = big.exp + (big_len - PREC - 2 < -1 ? big_len - PREC - 2 : -1);
    if (wide_digits(small.coef) + small.exp - 1 < floor_exp) {
        small.coef = wide_from_u128(1);
        small.exp = floor_exp;
    }
    wide_mul_pow10(big.coef, static_cast<int>(big.exp - small.exp));
    big.exp = small.exp;
}

int32_t add_signed(xdec *out, unpacked a, unpacked b) {
    int64_t exp = a.exp < b.exp ? a.exp : b.exp;
    if (a.coef == 0 || b.coef == 0) {
        if (a.coef == 0 && b.coef == 0) return finish(false, wide{}, exp, out);
        /* x + 0 takes the finer exponent, but no more than 39 places finer
         * than x's own: enough to keep all of x's digits. */
        const unpacked &x = a.coef == 0 ? b : a;
        if (exp < x.exp - PREC - 1) exp = x.exp - PREC - 1;
        wide coef = wide_from_u128(x.coef);
        wide_mul_pow10(coef, static_cast<int>(x.exp - exp));
        return finish(x.neg, coef, exp, out);
    }
    operand p = widen(a), q = widen(b);
    align(p, q);
    if (p.neg == q.neg) {
        wide_add(p.coef, q.coef);
        return finish(p.neg, p.coef, p.exp, out);
    }
    /* Equal magnitudes leave zero, which is never negative. */
    bool p_larger = wide_cmp(p.coef, q.coef) > 0;
    operand &larger = p_larger ? p : q;
    const operand &smaller = p_larger ? q : p;
    wide_sub(larger.coef, smaller.coef);
    return finish(larger.neg, larger.coef, larger.exp, out);
}

} // namespace

int32_t xdec_add(xdec *out, const xdec *a, const xdec *b) {
    return add_signed(out, unpack(a), unpack(b));
}

int32_t xdec_sub(xdec *out, const xdec *a, const xdec *b) {
    unpacked nb = unpack(b);
    nb.neg = !nb.neg;
    return add_signed(out, unpack(a), nb);
}

int32_t xdec_mul(xdec *out, const xdec *a, const xdec *b) {
    unpacked x = unpack(a), y = unpack(b);
    return finish(x.neg != y.neg, wide_mul_u128(x.coef, y.coef),
                  static_cast<int64_t>(x.exp) + y.exp, out);
}

int32_t xdec_div(xdec *out, const xdec *a, const xdec *b) {
    unpacked x = unpack(a), y = unpack(b);
    if (y.coef == 0) [[unlikely]]
        return XDEC_ERR_DIV_ZERO;
    int64_t ideal_exp = static_cast<int64_t>(x.exp) - y.exp;
    if (x.coef == 0) return finish(false, wide{}, ideal_exp, out);
    /* Widen the dividend so the quotient has 39 or 40 digits: one more
     * than is kept, which is all half-away-from-zero rounding looks at. */
    int shift = digits_u128(y.coef) - digits_u128(x.coef) + PREC + 1;
    wide num = wide_from_u128(x.coef);
    wide_mul_pow10(num, shift);
    wide quot;
    u128 rem = wide_divmod_u128(num, y.coef, quot);
    int64_t exp = ideal_exp - shift;
    if (rem == 0) {
        /* An exact quotient gives back its trailing zeros down to the
         * scale the operands suggest: 1.00 / 4 is 0.25, not 0.2500...0. */
        while (exp < ideal_exp) {
            wide t = quot;
            if (wide_div_small(t, 10) != 0) break;
            quot = t;
            exp++;
        }
    }
    return finish(x.neg != y.neg, quot, exp, out);
}
