// Configuration values.  The character set is read on every call, so it
// must be cheap: the environment is consulted once, an override set by a
// test or tool wins over it.
#include "vx_ini.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int32_t DEFAULT_CHARSET = 1; // UTF-8
constexpr int32_t NO_OVERRIDE = INT32_MIN;

std::atomic<int32_t> charset_override{NO_OVERRIDE};

int32_t charset_from_environment() {
    const char *v = std::getenv("VXJSON_CHARSET");
    if (v && v[0] >= '0' && v[0] <= '2' && v[1] == '\0') return v[0] - '0';
    return DEFAULT_CHARSET;
}

} // namespace

extern "C" int32_t ini_get_value(int32_t, int32_t number) {
    if (number != VX_INI_CHARSET) return 0;
    int32_t v = charset_override.load(std::memory_order_relaxed);
    if (v != NO_OVERRIDE) return v;
    static const int32_t FROM_ENVIRONMENT = charset_from_environment();
    return FROM_ENVIRONMENT;
}

extern "C" void ini_set_value(int32_t, int32_t number, int32_t value) {
    if (number == VX_INI_CHARSET) charset_override.store(value, std::memory_order_relaxed);
}

extern "C" void ini_reset_value(int32_t, int32_t number) {
    if (number == VX_INI_CHARSET) charset_override.store(NO_OVERRIDE, std::memory_order_relaxed);
}
