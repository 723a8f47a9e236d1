/*
 * vx_charset.h -- the server's character sets: UTF-8 (code 1), GB18030
 * (code 10) and EUC-KR (code 6); code 0 is a single-byte set mapped to the
 * first 256 code points.  Conversions to and from UTF-16 use glibc iconv
 * for the two double-byte sets.
 */
#ifndef VX_CHARSET_H
#define VX_CHARSET_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VX_CHARSET_NONE    0
#define VX_CHARSET_UTF8    1
#define VX_CHARSET_EUCKR   6
#define VX_CHARSET_GB18030 10

/* The character-set code for configuration value 635: 0 -> 10, 1 -> 1,
 * 2 -> 6, anything else -> 0. */
int32_t vx_charset_from_config(int32_t value);
/* The configured character-set code (reads value 635 afresh). */
int32_t vx_charset_current(void);

/* Byte length (1 to 4) of the character that starts at `p`.  `avail` bounds
 * how many bytes may be read (0: the text is NUL-terminated).  A malformed
 * sequence counts as one byte. */
int32_t encoding_mblen(int32_t charset, const unsigned char *p, int32_t avail);
/* Convert `len` bytes to UTF-16 in `dst` (room for `dst_units`); units
 * written in *out_units.  0, or -1 for an invalid or unconvertible text. */
int32_t LocalToUtf16(const char *src, int32_t len, int32_t charset, uint16_t *dst,
                     int32_t dst_units, int32_t *out_units);
/* Convert `units` UTF-16 code units to `charset` in `dst` (room for
 * `dst_cap` bytes): bytes written, or -1 (a lone surrogate fails). */
int32_t Utf16ToLocal(const uint16_t *src, int32_t units, int32_t charset, char *dst,
                     int32_t dst_cap);
/* Upper-case the ASCII letters of a NUL-terminated text in place. */
char *vx_mbsupr(char *text);

#ifdef __cplusplus
}
#endif

#endif
