// Messages go to a terminal in UTF-8; anything else in them is written as
// hex, so that a bad byte is seen rather than garbling the line.
#include "show.h"

namespace vxcli {

namespace {

// Length of the well-formed UTF-8 character at the front of `s` (no
// overlong forms, no surrogates, nothing above U+10FFFF); 0 when there is
// none.
size_t utf8_length(std::string_view s) {
    const auto b = [&](size_t i) { return static_cast<unsigned char>(s[i]); };
    const unsigned char c = b(0);
    size_t n = 0;
    unsigned char lo = 0x80, hi = 0xBF; // range of the second byte
    if (c >= 0xC2 && c <= 0xDF) n = 2;
    else if (c == 0xE0) n = 3, lo = 0xA0;
    else if (c == 0xED) n = 3, hi = 0x9F;
    else if (c >= 0xE1 && c <= 0xEF) n = 3;
    else if (c == 0xF0) n = 4, lo = 0x90;
    else if (c == 0xF4) n = 4, hi = 0x8F;
    else if (c >= 0xF1 && c <= 0xF3) n = 4;
    if (n == 0 || s.size() < n || b(1) < lo || b(1) > hi) return 0;
    for (size_t i = 2; i < n; ++i)
        if (b(i) < 0x80 || b(i) > 0xBF) return 0;
    return n;
}

} // namespace

std::string shown(std::string_view text) {
    static constexpr char HEX[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c >= 0x20 && c < 0x7F) {
            out += static_cast<char>(c);
            ++i;
        } else if (size_t n = c >= 0x80 ? utf8_length(text.substr(i)) : 0) {
            out.append(text.substr(i, n));
            i += n;
        } else {
            out += "\\x";
            out += HEX[c >> 4];
            out += HEX[c & 15];
            ++i;
        }
    }
    return out;
}

} // namespace vxcli
