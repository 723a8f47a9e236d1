/*
 * vxstr.h -- the server's growable string.  Storage comes from a pluggable
 * allocator.  The first failed growth is sticky: later appends do nothing
 * and return -503, so a writer may check once at the end.
 */
#ifndef VXSTR_H
#define VXSTR_H

#include <stdint.h>

#include "vx_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define VXSTR_INITIAL_SIZE 100
#define VXSTR_NOMEM        (-503)

/* A new empty string with room for `initial` bytes, or NULL. */
vxstr *vxstr_create(void *env, vx_allocator *a, uint32_t initial);
/* Empty the string (keeps its storage and clears a sticky failure). */
int32_t vxstr_init(vxstr *s);
/* Append a NUL-terminated text, `n` bytes, or `n` copies of `c`:
 * 0, or -503 when the string cannot grow. */
int32_t vxstr_append(void *env, vx_allocator *a, vxstr *s, const char *text);
int32_t vxstr_append_with_length(void *env, vx_allocator *a, vxstr *s, const char *bytes,
                                 uint32_t n);
int32_t vxstr_append_n_const_char(void *env, vx_allocator *a, vxstr *s, char c, uint32_t n);
/* Make room for `extra` more bytes in one step: 0 or -503. */
int32_t vxstr_reserve(void *env, vx_allocator *a, vxstr *s, uint32_t extra);
/* The NUL-terminated text. */
char *vxstr_getstr(vxstr *s);
/* Release the record and its text. */
void vxstr_free(void *env, vx_allocator *a, vxstr *s);
/* Release only the record; the text now belongs to the caller (free it
 * through the same allocator). */
void vxstr_free_record(void *env, vx_allocator *a, vxstr *s);

#ifdef __cplusplus
}
#endif

#endif
