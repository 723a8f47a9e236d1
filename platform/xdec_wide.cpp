/*
 * xdec_wide.cpp -- the 384-bit scratch integer and the rounding step that
 * turns any exact intermediate result into a stored decimal.  384 bits hold
 * the largest intermediate: a 38-digit dividend widened by 77 digits.
 */
#include "xdec_internal.h"

namespace xdec_impl {

namespace {

constexpr uint64_t TEN19 = 10000000000000000000ull; /* largest power of ten in 64 bits */

/* w *= m; the caller guarantees the product fits. */
void wide_mul_small(wide &w, uint64_t m) {
    uint64_t carry = 0;
    for (auto &limb : w.limb) {
        u128 p = static_cast<u128>(limb) * m + carry;
        limb = static_cast<uint64_t>(p);
        carry = static_cast<uint64_t>(p >> 64);
    }
}

/* w /= 10^k, the remainder discarded. */
void wide_div_pow10(wide &w, int k) {
    for (; k >= 19; k -= 19) wide_div_small(w, TEN19);
    if (k > 0) wide_div_small(w, static_cast<uint64_t>(POW10.v[k]));
}

int wide_top_bit(const wide &w) {
    for (int i = WIDE_LIMBS - 1; i >= 0; i--)
        if (w.limb[i] != 0) return i * 64 + 63 - __builtin_clzll(w.limb[i]);
    return -1;
}

} // namespace

wide wide_from_u128(u128 v) {
    wide w{};
    w.limb[0] = static_cast<uint64_t>(v);
    w.limb[1] = static_cast<uint64_t>(v >> 64);
    return w;
}

bool wide_is_zero(const wide &w) {
    for (uint64_t limb : w.limb)
        if (limb != 0) return false;
    return true;
}

bool wide_fits_u128(const wide &w) {
    for (int i = 2; i < WIDE_LIMBS; i++)
        if (w.limb[i] != 0) return false;
    return true;
}

u128 wide_low_u128(const wide &w) { return (static_cast<u128>(w.limb[1]) << 64) | w.limb[0]; }

int wide_cmp(const wide &a, const wide &b) {
    for (int i = WIDE_LIMBS - 1; i >= 0; i--)
        if (a.limb[i] != b.limb[i]) return a.limb[i] < b.limb[i] ? -1 : 1;
    return 0;
}

void wide_add(wide &a, const wide &b) {
    unsigned carry = 0;
    for (int i = 0; i < WIDE_LIMBS; i++) {
        u128 s = static_cast<u128>(a.limb[i]) + b.limb[i] + carry;
        a.limb[i] = static_cast<uint64_t>(s);
        carry = static_cast<unsigned>(s >> 64);
    }
}

void wide_sub(wide &a, const wide &b) {
    uint64_t borrow = 0;
    for (int i = 0; i < WIDE_LIMBS; i++) {
        uint64_t x = a.limb[i], y = b.limb[i];
        uint64_t d = x - y - borrow;
        borrow = (x < y || (x == y && borrow)) ? 1 : 0;
        a.limb[i] = d;
    }
}

void wide_mul_pow10(wide &w, int k) {
    for (; k >= 19; k -= 19) wide_mul_small(w, TEN19);
    if (k > 0) wide_mul_small(w, static_cast<uint64_t>(POW10.v[k]));
}

uint64_t wide_div_small(wide &w, uint64_t d) {
    uint64_t rem = 0;
    for (int i = WIDE_LIMBS - 1; i >= 0; i--) {
        u128 cur = (static_cast<u128>(rem) << 64) | w.limb[i];
        w.limb[i] = static_cast<uint64_t>(cur / d);
        rem = static_cast<uint64_t>(cur % d);
    }
    return rem;
}

wide wide_mul_u128(u128 a, u128 b) {
    const uint64_t x[2] = {static_cast<uint64_t>(a), static_cast<uint64_t>(a >> 64)};
    const uint64_t y[2] = {static_cast<uint64_t>(b), static_cast<uint64_t>(b >> 64)};
    wide w{};
    for (int i = 0; i < 2; i++) {
        uint64_t carry = 0;
        for (int j = 0; j < 2; j++) {
            u128 p = static_cast<u128>(x[i]) * y[j] + w.limb[i + j] + carry;
            w.limb[i + j] = static_cast<uint64_t>(p);
            carry = static_cast<uint64_t>(p >> 64);
        }
        w.limb[i + 2] = carry;
    }
    return w;
}

u128 wide_divmod_u128(const wide &num, u128 den, wide &quot) {
    if ((den >> 64) == 0) {
        quot = num;
        return wide_div_small(quot, static_cast<uint64_t>(den));
    }
    /* Bit by bit: den < 10^38 < 2^127, so the doubled remainder never
     * leaves 128 bits.  Only division by a coefficient above 2^64 gets here. */
    quot = wide{};
    u128 rem = 0;
    for (int i = wide_top_bit(num); i >= 0; i--) {
        rem = (rem << 1) | ((num.limb[i / 64] >> (i % 64)) & 1);
        if (rem >= den) {
            rem -= den;
            quot.limb[i / 64] |= uint64_t{1} << (i % 64);
        }
    }
    return rem;
}

int wide_digits(const wide &w) {
    wide t = w;
    int extra = 0;
    while (!wide_fits_u128(t)) {
        wide_div_small(t, TEN19);
        extra += 19;
    }
    return extra + digits_u128(wide_low_u128(t));
}

void pack(u128 coef, int exp, bool neg, xdec *out) {
    *out = xdec{};
    out->lo = static_cast<uint64_t>(coef);
    out->hi = static_cast<uint64_t>(coef >> 64);
    out->scale = static_cast<int16_t>(-exp);
    out->neg = (neg && coef != 0) ? 1 : 0;
}

int32_t finish(bool neg, wide coef, int64_t exp, xdec *out) {
    if (wide_is_zero(coef)) {
        /* Zero keeps its exponent, pulled into range. */
        int64_t e = exp < MIN_EXP ? MIN_EXP : exp > MAX_EXP ? MAX_EXP : exp;
        pack(0, static_cast<int>(e), false, out);
        return 0;
    }
    int n = wide_digits(coef);
    int64_t exp_min = n + exp - PREC; /* exponent that leaves 38 digits */
    if (exp_min > TOP_EXP) [[unlikely]]
        return XDEC_ERR_OVERFLOW;
    if (exp_min < MIN_EXP) exp_min = MIN_EXP;
    if (exp >= exp_min) {
        pack(wide_low_u128(coef), static_cast<int>(exp), neg, out);
        return 0;
    }
    /* Half away from zero looks only at the first dropped digit. */
    int64_t drop = exp_min - exp;
    u128 q = 0;
    if (drop <= n) {
        wide_div_pow10(coef, static_cast<int>(drop - 1));
        uint64_t first_dropped = wide_div_small(coef, 10);
        q = wide_low_u128(coef) + (first_dropped >= 5 ? 1 : 0);
    }
    if (q == POW10.v[PREC]) {
        q = POW10.v[PREC - 1];
        if (++exp_min > TOP_EXP) [[unlikely]]
            return XDEC_ERR_OVERFLOW;
    }
    pack(q, static_cast<int>(exp_min), neg, out);
    return 0;
}

} // namespace xdec_impl
