/*
 * vx_number.h -- the server's number helpers.
 */
#ifndef VX_NUMBER_H
#define VX_NUMBER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* 1 when `d` is the result of an overflowing conversion (infinite). */
int32_t ntype_is_double_overflow(double d);
/* Read `len` bytes as a signed decimal 64-bit integer (optional sign,
 * digits only): 0, -1 for a text that is not an integer, -2 on overflow. */
int32_t str2int64(const char *text, uint32_t len, int64_t *out);

#ifdef __cplusplus
}
#endif

#endif
