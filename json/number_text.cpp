// Number texts to doubles (see number_text.h).
#include "number_text.h"

#include <cstdlib>
#include <cstring>

namespace vxjson {

double number_to_double(const char *text, size_t len) {
    if (len == 0) return 0;
    // strtod needs a terminator, and the text may be a slice of the caller's.
    char small[64];
    char *buf = small;
    if (len >= sizeof small) {
        buf = static_cast<char *>(std::malloc(len + 1));
        if (!buf) return 0; // cannot happen for a realistic number; no overflow then
    }
    std::memcpy(buf, text, len);
    buf[len] = '\0';
    double d = std::strtod(buf, nullptr);
    if (buf != small) std::free(buf);
    return d;
}

} // namespace vxjson
