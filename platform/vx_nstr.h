/*
 * vx_nstr.h -- storing into the server's string value record (vx_nstr):
 * texts below 49 bytes inline, longer ones through the allocator.
 */
#ifndef VX_NSTR_H
#define VX_NSTR_H

#include <stdint.h>

#include "vx_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The bytes of a string value. */
const char *nstr_text(const vx_nstr *s);
/* Store `len` bytes as the value (assignment field 0): 0 or -503. */
int32_t nstr_assign_const_with_blank_no_clear(void *env, vx_allocator *a, vx_nstr *dst,
                                              const char *text, uint32_t len);
/* Store `len` bytes with the given assignment field: 0 or -503. */
int32_t nstr_assign_const_ex2_no_clear(void *env, vx_allocator *a, vx_nstr *dst, const char *text,
                                       uint32_t len, uint32_t assign);

#ifdef __cplusplus
}
#endif

#endif
