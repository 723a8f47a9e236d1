/*
 * xdec.h -- the server's exact decimal: a coefficient of up to 38 decimal
 * digits with a power-of-ten scale, so SQL numbers keep their decimal
 * digits instead of picking up binary rounding.  The record has a fixed
 * size and nothing in it lives on the heap, so it can sit in result records
 * and on the stack.
 *
 * A value is (-1)^neg x coefficient x 10^-scale.  Results that need more
 * than 38 significant digits are rounded half away from zero.  The leading
 * digit of a value may sit at most at 10^308, the same bound as a double, so
 * a number text that overflows one overflows the other; digits finer than
 * 10^-345 (below every double's shortest digits) are rounded away rather
 * than refused.  Zero is never negative: -0 and -0.00 read as 0 and 0.00.
 * A call that fails leaves its output as it was.
 *
 * Text out is the usual decimal notation while the scale is not negative
 * and the value's leading digit is not below 10^-6, else one digit, a point
 * and the exponent: 12.50, 0.000001, 1.5E+3, 1E-7, 0E+2.
 */
#ifndef XDEC_H
#define XDEC_H

#include <stdint.h>

#include "vx_types.h" /* the xdec record */

#ifdef __cplusplus
extern "C" {
#endif

#define XDEC_MAX_PREC  38     /* significant digits: 10^38 fits 128 bits */
#define XDEC_MAX_SCALE 345    /* finest digit 10^-345: every double's digits */
#define XDEC_MIN_SCALE (-308) /* coarsest digit 10^308, as for a double */
#define XDEC_MAX_EXP   308    /* highest place a leading digit may take */
#define XDEC_TEXT_MAX  64     /* buffer for any value's text and its NUL */

/* Statuses.  109 is not an error: the reader says the text is no number. */
#define XDEC_NOT_NUMBER    109     /* "12x", "", "1e", "--1" */
#define XDEC_ERR_OVERFLOW  (-6102) /* "1e309"; 2^63 read as a 64-bit integer */
#define XDEC_ERR_DIV_ZERO  (-6160) /* 1 / 0, also 0 / 0 */
#define XDEC_ERR_PRECISION (-6161) /* 123.4 formatted to precision 3, scale 1 */
#define XDEC_ERR_ARG       (-6162) /* precision 0, scale out of range, short buffer */

/* Read `len` bytes of text: blanks, a sign, digits with an optional point,
 * an optional exponent (e or E, sign, digits), blanks.  0, 109 when the text
 * is not wholly a number, XDEC_ERR_OVERFLOW when the value rounded to 38
 * digits reaches 10^309. */
int32_t xdec_from_char(xdec *out, const char *text, uint32_t len);
/* The shortest digits that read back as `d`; whole numbers below 10^38
 * get scale 0.  0, 109 for NaN, XDEC_ERR_OVERFLOW for an infinity. */
int32_t xdec_from_double(xdec *out, double d);
/* The integer `v` with scale 0; always 0. */
int32_t xdec_from_int64(xdec *out, int64_t v);
/* Zero with scale 0; always 0. */
int32_t xdec_fill_zero(xdec *out);
/* Copy `src` to `dst`; always 0. */
int32_t xdec_copy(xdec *dst, const xdec *src);

/* out := a + b, a - b, a * b: exact when 38 digits hold the result, else
 * rounded.  `out` may be `a` or `b`.  0 or XDEC_ERR_OVERFLOW. */
int32_t xdec_add(xdec *out, const xdec *a, const xdec *b);
int32_t xdec_sub(xdec *out, const xdec *a, const xdec *b);
int32_t xdec_mul(xdec *out, const xdec *a, const xdec *b);
/* out := a / b to 38 significant digits; an exact quotient keeps the
 * scale a.scale - b.scale where its digits allow.  0, XDEC_ERR_DIV_ZERO,
 * XDEC_ERR_OVERFLOW. */
int32_t xdec_div(xdec *out, const xdec *a, const xdec *b);

/* Drop the digits of `d` past `scale` places, towards zero; a value with
 * no more places is left as it is.  0 or XDEC_ERR_ARG for a scale out of
 * range. */
int32_t xdec_trunc_scale(xdec *d, int32_t scale);
/* Round `d` half away from zero to exactly `scale` places (padding with
 * zeros) for a column of `prec` digits (1..38): 0, XDEC_ERR_PRECISION when
 * the value then needs more than `prec` digits (`d` is left unchanged),
 * XDEC_ERR_ARG for a precision or scale out of range. */
int32_t xdec_format(xdec *d, int32_t prec, int32_t scale);
/* The integer part of `d` (fraction dropped towards zero) in `*out`: 0 or
 * XDEC_ERR_OVERFLOW beyond the 64-bit range. */
int32_t xdec_get_int64(const xdec *d, int64_t *out);
/* Write the text of `d` and a NUL into `buf` of `size` bytes (XDEC_TEXT_MAX
 * always suffices): the text length, or XDEC_ERR_ARG when it does not fit. */
int32_t xdec_to_char(const xdec *d, char *buf, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
