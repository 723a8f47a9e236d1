// number_text.h -- number texts as the reader and the comparisons see them:
// one conversion to a double, one overflow test, and one choice between
// the 32- and 64-bit integer tokens.
#ifndef VXJSON_NUMBER_TEXT_H
#define VXJSON_NUMBER_TEXT_H

#include <cstddef>
#include <cstdint>

#include "vx_number.h"
#include "vxjson.h"

namespace vxjson {

// strtod over `len` bytes that need not be NUL-terminated (a slice of the
// caller's text, or a node's text); 0 for an empty text.
double number_to_double(const char *text, size_t len);

inline bool is_double_overflow(double d) { return ntype_is_double_overflow(d) != 0; }

// JT_INT for a value that fits 32 signed bits, else JT_BIGINT.
inline int32_t integer_token_kind(int64_t v) {
    return v == int64_t(int32_t(v)) ? JT_INT : JT_BIGINT;
}

} // namespace vxjson

#endif
