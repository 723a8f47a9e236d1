/*
 * vx_elog.h -- the server's error hook.  Each report is kept in the calling
 * thread's trail (innermost first); nothing is printed.
 */
#ifndef VX_ELOG_H
#define VX_ELOG_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Reports kept per thread; later ones are counted but not stored. */
#define VX_ELOG_TRAIL_MAX 64

typedef struct vx_elog_entry {
    int32_t code;    /* the reported status */
    const char *src; /* source unit, a static string */
    int32_t line;    /* line of the reporting call site */
} vx_elog_entry;

/* Record (code, src, line) in this thread's trail; returns code. */
int32_t elog_try_report_vxerr(int32_t code, const char *src, int32_t line);
/* Reports made since the last clear (may exceed VX_ELOG_TRAIL_MAX). */
uint32_t elog_trail_count(void);
/* The i-th stored report: 0, or -1 when i is out of range. */
int32_t elog_trail_get(uint32_t i, vx_elog_entry *out);
void elog_trail_clear(void);

#ifdef __cplusplus
}
#endif

#endif
