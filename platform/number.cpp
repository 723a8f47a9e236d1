// Number helpers of the server's numeric library.
#include "vx_number.h"

#include <charconv>
#include <cmath>

extern "C" int32_t ntype_is_double_overflow(double d) { return std::isinf(d) ? 1 : 0; }

extern "C" int32_t str2int64(const char *text, uint32_t len, int64_t *out) {
    const char *p = text;
    const char *end = text + len;
    if (p < end && *p == '+') {
        ++p; // from_chars takes '-' but not '+'
        if (p < end && *p == '-') return -1;
    }
    if (p == end || (*p == '-' && p + 1 == end)) return -1;
    int64_t v = 0;
    auto [ptr, ec] = std::from_chars(p, end, v, 10);
    if (ec == std::errc::result_out_of_range) return -2;
    if (ec != std::errc() || ptr != end) return -1;
    *out = v;
    return 0;
}
