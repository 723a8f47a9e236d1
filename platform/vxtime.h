/*
 * vxtime.h -- the server's datetime library: reading ISO 8601 / SQL date
 * and datetime text, printing it, and converting to and from Unix time.
 * A value (vxtime, in vx_types.h) counts whole seconds and nanoseconds
 * from 1970-01-01T00:00:00 UTC, so every instant has exactly one form and
 * arithmetic needs no calendar.  Valid values lie in the years 0001 to
 * 9999, the range of four-digit years; a date's time of day is midnight.
 */
#ifndef VXTIME_H
#define VXTIME_H

#include <stdint.h>

#include "vx_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define VXTIME_TEXT_MAX      64   /* buffer for vxtime_to_char, NUL included */
#define VXTIME_FMT_ISO       6    /* 2024-02-29T13:05:09.25 */
#define VXTIME_FMT_DATE      8192 /* 2024-02-29 */
#define VXTIME_UNIX_SECONDS  1000 /* vxtime_unix_timestamp: whole seconds */
#define VXTIME_FROM_UNIX_UTC 0    /* vxtime_from_unix_time: seconds as UTC */

/* Statuses.  109 is not an error: the reader says the text is no datetime. */
#define VXTIME_NOT_DATETIME 109     /* "2023-02-29", "2024-1-5", "12:00" */
#define VXTIME_ERR_RANGE    (-6170) /* an instant outside the years 0001..9999 */
#define VXTIME_ERR_ARG      (-6171) /* unknown type, format or flag; short buffer */

/* Read `len` bytes: YYYY-MM-DD, optionally followed by a blank or T and
 * HH:MM[:SS[.fraction of 1 to 9 digits]] and a zone (Z, +hh:mm, +hhmm or
 * the same with -), which is converted to UTC; blanks around the text are
 * ignored.  `type` VXTIME_TYPE_DATETIME keeps the time, VXTIME_TYPE_DATE
 * drops it after the zone is applied.  0; 109 for text that is not wholly a
 * datetime, has a field out of range (2023-02-29, 24:00:00) or lands
 * outside the years 0001..9999 once in UTC; VXTIME_ERR_ARG for a bad type. */
int32_t vxtime_from_char_ex2(const char *text, uint32_t len, int32_t type, vxtime *out);
/* Print `t` into `buf` (VXTIME_TEXT_MAX bytes) with a NUL: format
 * VXTIME_FMT_DATE gives YYYY-MM-DD, VXTIME_FMT_ISO gives
 * YYYY-MM-DDTHH:MM:SS and, for a nonzero fraction, a point and at most
 * `prec` fraction digits (9 and above: all) without trailing zeros.  The
 * text length, VXTIME_ERR_RANGE for a value out of range, VXTIME_ERR_ARG
 * for an unknown format. */
int32_t vxtime_to_char(const vxtime *t, int32_t prec, int32_t fmt, char *buf);
/* The datetime `secs` seconds after the epoch (negative: before it), with
 * no fraction; `flag` must be VXTIME_FROM_UNIX_UTC.  0, VXTIME_ERR_RANGE,
 * VXTIME_ERR_ARG. */
int32_t vxtime_from_unix_time(int32_t flag, int64_t secs, vxtime *out);
/* Whole seconds since the epoch, rounded down (so 1969-12-31T23:59:59.5
 * gives -1 and the fraction adds to it); `unit` must be
 * VXTIME_UNIX_SECONDS.  0, VXTIME_ERR_RANGE, VXTIME_ERR_ARG. */
int32_t vxtime_unix_timestamp(int64_t unit, const vxtime *t, int64_t *out_secs);
/* The fraction of the second of `t` in nanoseconds, 0..999999999. */
int32_t vxtime_get_msec(const vxtime *t);
/* Make `t` its whole seconds plus `nsec` nanoseconds; a negative `nsec`
 * counts back (seconds -1 with -500000000 is -1.5 s, stored as -2 s plus
 * 500000000 ns).  A date accepts only 0.  0, VXTIME_ERR_RANGE (`t`
 * unchanged), VXTIME_ERR_ARG. */
int32_t vxtime_set_msec(vxtime *t, int32_t nsec);
/* Change the type of `t`: to VXTIME_TYPE_DATE drops the time of day, to
 * VXTIME_TYPE_DATETIME keeps the value.  0, VXTIME_ERR_RANGE, VXTIME_ERR_ARG. */
int32_t vxtime_reset(vxtime *t, int32_t type);

#ifdef __cplusplus
}
#endif

#endif
