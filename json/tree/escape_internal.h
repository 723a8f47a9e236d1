/*
 * escape_internal.h -- what the string escapers and the tree writer share:
 * the byte tables, the character-set stepping and a direct writer into a
 * growable string.
 *
 * The writer is the hot path of every SQL function that returns JSON text,
 * so the common cases (text written as stored, text escaped by the standard
 * table) go straight into the output string instead of through a temporary
 * copy; the bytes are the same either way.
 */
#ifndef VXJSON_ESCAPE_INTERNAL_H
#define VXJSON_ESCAPE_INTERNAL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "escape_letters.h"
#include "vx_charset.h"
#include "vx_ini.h"
#include "vx_types.h"
#include "vxjson.h"

namespace vxjson {

// ------------------------------------------------------------------
// Byte tables
// ------------------------------------------------------------------

// Escape letter of a byte under the standard table, 0 when it is written
// as it is (see escape_letters.h).
constexpr char std_escape_letter(unsigned c) { return letter_of_byte(c); }

// The MySQL table adds the letters of an escape that is already there, so
// that a backslash before one of them stays that escape.
constexpr char mysql_escape_letter(unsigned c) {
    switch (c) {
    case 'b':
    case 't':
    case 'n':
    case 'f':
    case 'r': return static_cast<char>(c);
    default: return std_escape_letter(c);
    }
}

enum : uint8_t {
    BYTE_ESC_STD = 1, // written as backslash and letter by the standard table
    BYTE_HIGH = 2,    // may start a multibyte character: ask the charset
};

constexpr uint8_t byte_class(unsigned c) {
    return static_cast<uint8_t>((std_escape_letter(c) ? BYTE_ESC_STD : 0) |
                                (c >= 0x80 ? BYTE_HIGH : 0));
}

template <class F> constexpr std::array<uint8_t, 256> make_byte_table(F f) {
    std::array<uint8_t, 256> t{};
    for (unsigned c = 0; c < 256; ++c) t[c] = static_cast<uint8_t>(f(c));
    return t;
}

inline constexpr std::array<uint8_t, 256> BYTE_CLASS = make_byte_table(byte_class);
inline constexpr std::array<uint8_t, 256> STD_LETTER = make_byte_table(std_escape_letter);
inline constexpr std::array<uint8_t, 256> MYSQL_LETTER = make_byte_table(mysql_escape_letter);

inline bool is_std_escaped(unsigned char c) { return BYTE_CLASS[c] & BYTE_ESC_STD; }
inline bool is_high(unsigned char c) { return BYTE_CLASS[c] & BYTE_HIGH; }
// A byte the plain-run scanner must stop at.
inline bool is_scan_stop(unsigned char c) { return BYTE_CLASS[c] != 0; }

// ------------------------------------------------------------------
// Character-set stepping
// ------------------------------------------------------------------

// The character set is read from the configuration at most once per call,
// and only when a byte above 127 shows up: pure ASCII text never asks.
struct charset_cache {
    int32_t code = -1;
    int32_t get() {
        if (code < 0) code = vx_charset_from_config(ini_get_value(0, VX_INI_CHARSET));
        return code;
    }
};

// Bytes of the character that starts with the high byte at p, `rem` bytes
// being left (rem >= 1).  May exceed rem: such a character is cut off by
// the end of the text and the escapers drop it.
uint32_t mb_char_len(int32_t charset, const unsigned char *p, size_t rem);

// Bytes of the character at p.  ASCII is one byte in every server
// character set (their lead bytes are all above 127).
inline uint32_t char_len(charset_cache &cs, const unsigned char *p, size_t rem) {
    return *p < 0x80 ? 1u : mb_char_len(cs.get(), p, rem);
}

// Escape `n` bytes by the standard table into `out`, which has room for
// 2 * n + ESCAPE_SLACK bytes; returns the end of the output.  Two ways of
// finding the bytes that need a look, both kept so both can be tested:
// eight bytes in a machine word, sixteen in a vector register.
inline constexpr size_t ESCAPE_SLACK = 16;
char *escape_std_words(const unsigned char *in, size_t n, char *out, charset_cache &cs);
#if defined(__SSE2__)
char *escape_std_vectors(const unsigned char *in, size_t n, char *out, charset_cache &cs);
#endif
inline char *escape_std(const unsigned char *in, size_t n, char *out, charset_cache &cs) {
#if defined(__SSE2__)
    return escape_std_vectors(in, n, out, cs);
#else
    return escape_std_words(in, n, out, cs);
#endif
}

// ------------------------------------------------------------------
// Direct output into a growable string
// ------------------------------------------------------------------

// Writes through a cursor into the string's own buffer; `finish` stores the
// length back and terminates the text.  Growth doubles the capacity, so a
// long document costs a logarithmic number of copies whatever the string
// library's own policy is.
struct out_buf {
    void *env;
    vx_allocator *alloc;
    vxstr *s;
    char *p;   // next byte to write
    char *end; // last usable byte + 1 (the terminator slot lies beyond)

    out_buf(void *e, vx_allocator *a, vxstr *str) : env(e), alloc(a), s(str) { load(); }

    void load() {
        p = s->buf ? s->buf + s->len : nullptr;
        end = s->buf ? s->buf + s->cap : nullptr;
    }
    // Room for n more bytes; false when the string cannot grow.  The
    // failure sticks: the string is marked failed and the buffer keeps no
    // room, so every later write finds none either and writes nothing.
    bool ensure(size_t n) { return static_cast<size_t>(end - p) >= n || grow(n); }
    bool grow(size_t n);
    void put(char c) { *p++ = c; }
    void put(const char *b, size_t n) {
        if (n == 0) return; // an empty text may have no buffer at all
        std::memcpy(p, b, n);
        p += n;
    }
    void finish() {
        if (!s->buf) return;
        s->len = static_cast<uint32_t>(p - s->buf);
        *p = 0;
    }
};

// The temporary-text path of json_string_convert: conversion into a text
// of its own, then the optional \u conversion, as separate steps.
int32_t convert_general(out_buf &o, uint32_t flags, const char *text, uint32_t len, bool quote,
                        uint8_t conv);

// The body of json_string_convert over an open cursor: the text of `len`
// bytes, quoted when `quote` is 1, converted by `conv`, through the ASCII
// conversion when bit 0 of flags is set.  Text written as stored or escaped
// by the standard table, without the ASCII conversion, goes straight into
// the output; the bytes are the same as through a temporary text.
inline int32_t convert_into(out_buf &o, charset_cache &cs, uint32_t flags, const char *text,
                            uint32_t len, int32_t quote, uint8_t conv) {
    const bool q = quote == 1;
    if (!(flags & JSON_FMT_ASCII) && (conv == JSON_CONV_NONE || conv == JSON_CONV_JSON)) {
        const size_t need = (conv == JSON_CONV_JSON ? 2 * size_t(len) + ESCAPE_SLACK : len) + 2;
        if (!o.ensure(need)) return VXJSON_ERR_NOMEM;
        if (q) o.put('"');
        if (conv == JSON_CONV_NONE) o.put(text, len);
        else o.p = escape_std(reinterpret_cast<const unsigned char *>(text), len, o.p, cs);
        if (q) o.put('"');
        return 0;
    }
    if (len == 0) { // no conversion is attempted on an empty text
        if (!q) return 0;
        if (!o.ensure(2)) return VXJSON_ERR_NOMEM;
        o.put('"');
        o.put('"');
        return 0;
    }
    return convert_general(o, flags, text, len, q, conv);
}

inline constexpr int32_t NOMEM = VXJSON_ERR_NOMEM;

} // namespace vxjson

#endif
