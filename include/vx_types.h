/*
 * vx_types.h -- records that libvxjson shares with the server's platform
 * libraries: the pluggable allocator, the growable string, the datetime
 * value stored in JSON date nodes, the exact decimal that the number casts
 * return and the server's fixed string value.
 *
 * They live apart from vxjson.h so that a platform layer (ours in
 * platform/, or the server's own) can include them without pulling in the
 * JSON interface.  Plain C, usable from C11 and C++.
 */
#ifndef VX_TYPES_H
#define VX_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------ */
/* Pluggable allocator                                                 */
/* ------------------------------------------------------------------ */

/* Allocate `size` bytes for `env`; `src`/`line` name the call site for
 * diagnostics.  Returns NULL when memory is exhausted. */
typedef void *(*vx_alloc_fn)(void *env, void *handle, size_t size, const char *src, int line);
/* Release a block returned by the matching allocate operation. */
typedef void (*vx_free_fn)(void *env, void *handle, void *block);

typedef struct vx_allocator {
    vx_alloc_fn alloc; /* allocate operation */
    vx_free_fn free;   /* free operation; called only together with a handle */
    void *handle;      /* allocator state, opaque to callers */
} vx_allocator;

/* ------------------------------------------------------------------ */
/* Growable string                                                     */
/* ------------------------------------------------------------------ */

/* The first 32-bit field is the current length, as the server's string
 * builder has it.  The text is always NUL-terminated at `len`. */
typedef struct vxstr {
    uint32_t len;   /* bytes of text, terminator excluded */
    uint32_t cap;   /* usable bytes in `buf`, terminator excluded */
    char *buf;      /* text, from the string's allocator */
    int32_t failed; /* sticky: 1 after the first failed growth */
} vxstr;

/* ------------------------------------------------------------------ */
/* Datetime value                                                      */
/* ------------------------------------------------------------------ */

/* Datetime types understood by the datetime library. */
#define VXTIME_TYPE_DATE     14 /* a calendar date */
#define VXTIME_TYPE_DATETIME 16 /* date and time, up to nanoseconds */

/* A point in time: a 64-bit, a 32-bit and an 8-bit part.  JSON nodes store
 * and copy it opaquely; only the datetime library interprets it. */
typedef struct vxtime {
    int64_t sec;  /* whole seconds since 1970-01-01T00:00:00 UTC */
    int32_t nsec; /* fraction in nanoseconds, 0..999999999 */
    uint8_t type; /* VXTIME_TYPE_DATE or VXTIME_TYPE_DATETIME */
} vxtime;

/* ------------------------------------------------------------------ */
/* Exact decimal                                                       */
/* ------------------------------------------------------------------ */

/* The server's exact decimal (operations in the platform's xdec.h): a
 * coefficient below 10^38 with a power-of-ten scale, value
 * (-1)^neg x coefficient x 10^-scale.  Fixed size, nothing on the heap. */
typedef struct xdec {
    uint64_t lo;    /* low 64 bits of the coefficient */
    uint64_t hi;    /* high 64 bits; the coefficient stays below 10^38 */
    int16_t scale;  /* -308..345: digits after the point */
    uint8_t neg;    /* 1 for a value below zero, never for zero */
    uint8_t pad[5]; /* always zero, so copies of a value are identical bytes */
} xdec;

/* ------------------------------------------------------------------ */
/* Server string value                                                 */
/* ------------------------------------------------------------------ */

#define VX_NSTR_INLINE 49 /* texts shorter than this are stored inline */

/* The server's string value record: bytes inline below 49, else behind a
 * pointer.  `assign` selects how a value is stored into it. */
typedef struct vx_nstr {
    uint32_t len;    /* bytes of text */
    uint32_t assign; /* assignment field */
    union {
        char inline_text[VX_NSTR_INLINE]; /* text when len < 49 */
        char *text;                       /* text when len >= 49 */
    } u;
} vx_nstr;

#ifdef __cplusplus
}
#endif

#endif /* VX_TYPES_H */
