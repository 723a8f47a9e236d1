// std_strings.h -- standard JSON strings, the reading a caller asks for
// with jlpca_set_std_strings: an escaped surrogate pair is one character,
// a lone surrogate escape is an error, and in the UTF-8 character set text
// that is no UTF-8 is an error.  Shared by the scanner (scan.cpp) and the
// context's setter; the default reading never calls in here.
#ifndef VXJSON_STD_STRINGS_H
#define VXJSON_STD_STRINGS_H

#include <cstdint>

#include "messages.h"
#include "vxjson.h"

namespace vxjson::std_strings {

// The first byte of [p, end) that does not start a well-formed UTF-8
// character, with `why` set; end when the whole range is UTF-8.  Each
// sequence is judged by the first rule it breaks, in this order: a
// continuation or impossible byte where a character starts, a missing
// continuation byte, then an overlong form, an encoded surrogate or a
// code point beyond U+10FFFF.
const unsigned char *find_invalid_utf8(const unsigned char *p, const unsigned char *end,
                                       msg::msg_id &why);

// What a \u escape is to standard strings.  `u` points at the letter u;
// the text ends at `end`.
struct u_escape {
    enum kind_t : uint8_t {
        PLAIN, // no surrogate (or no four hex digits): the general rules take it
        PAIR,  // a high and a low surrogate escape, 12 bytes from the backslash
        BAD,   // a surrogate escape without its partner: `why` says which
    } kind = PLAIN;
    msg::msg_id why = msg::ESCAPE;
    uint16_t high = 0, low = 0; // the pair's units
};
u_escape classify_u_escape(const unsigned char *u, const unsigned char *end);

// Bytes from the letter u of a pair's first escape to the end of its
// second: "ud83d\ude00".
inline constexpr int32_t PAIR_TAIL = 11;

// Appends the character of a surrogate pair to ctx's literal in the server
// character set.  0, -3105 (reported) when the set has no such character,
// -503.
int32_t addlit_surrogate_pair(jlpca_ctx *ctx, uint16_t high, uint16_t low);

} // namespace vxjson::std_strings

#endif
