/*
 * vx_ini.h -- the server's configuration values.  Only value 635, the
 * character set (0 GB18030, 1 UTF-8, 2 EUC-KR), is known: 1 by default,
 * else the environment variable VXJSON_CHARSET, else a value set by
 * ini_set_value (for tests and tools).
 */
#ifndef VX_INI_H
#define VX_INI_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VX_INI_CHARSET 635

/* The current value of configuration `number`; 0 for unknown numbers. */
int32_t ini_get_value(int32_t section, int32_t number);
/* Override configuration `number` process-wide. */
void ini_set_value(int32_t section, int32_t number, int32_t value);
/* Drop the override, so the environment or the default applies again. */
void ini_reset_value(int32_t section, int32_t number);

#ifdef __cplusplus
}
#endif

#endif
