// escape_letters.h -- the one table of JSON's two-character escapes, read
// in both directions: the writer turns a byte into backslash and letter,
// the reader turns a letter after a backslash back into its byte.
#ifndef VXJSON_ESCAPE_LETTERS_H
#define VXJSON_ESCAPE_LETTERS_H

#include <array>
#include <cstdint>

namespace vxjson {

struct escape_letter {
    unsigned char byte; // the character
    char letter;        // what follows the backslash
};

inline constexpr escape_letter ESCAPE_LETTERS[] = {
    {8, 'b'}, {9, 't'}, {10, 'n'}, {12, 'f'}, {13, 'r'}, {'"', '"'}, {'\\', '\\'},
};

// The letter of a byte the standard escaping writes as an escape, else 0.
// Only these seven: other control bytes, '/' and bytes above 127 are
// written as they are.
constexpr char letter_of_byte(unsigned c) {
    for (const escape_letter &e : ESCAPE_LETTERS)
        if (e.byte == c) return e.letter;
    return 0;
}

// Reading: the byte that backslash and `letter` stand for, or -1 for a
// letter that is no two-character escape.  '/' is read but never written.
constexpr int byte_of_letter(unsigned char letter) {
    if (letter == '/') return '/';
    for (const escape_letter &e : ESCAPE_LETTERS)
        if (static_cast<unsigned char>(e.letter) == letter) return e.byte;
    return -1;
}

inline constexpr std::array<int16_t, 256> BYTE_OF_LETTER = [] {
    std::array<int16_t, 256> t{};
    for (unsigned c = 0; c < 256; ++c)
        t[c] = static_cast<int16_t>(byte_of_letter(static_cast<unsigned char>(c)));
    return t;
}();

} // namespace vxjson

#endif
