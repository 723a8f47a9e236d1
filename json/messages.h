/*
 * messages.h -- every message text the reader stores or hands out, each
 * with the code it goes with, in one table.  The texts are the system's
 * own and are written exactly as the server shows them (spelling
 * included); the compile-time checks below keep the table in step with
 * its ids and with the error codes of vxjson.h.
 */
#ifndef VXJSON_MESSAGES_H
#define VXJSON_MESSAGES_H

#include <cstddef>
#include <cstdint>

#include "vxjson.h"

namespace vxjson::msg {

enum msg_id : uint8_t {
    STRICT_QUOTE,    // a single quote or a bare word under strict reading
    NEED_ESCAPE,     // a raw control character inside a string
    NOT_SUPPORT,     // \' inside a single-quoted string
    ESCAPE,          // an escape the reader cannot decode
    UNTERMINATED_DQ, // "abc
    UNTERMINATED_SQ, // 'abc
    NO_MEMORY,       // an allocation failed
    INVALID_NUMBER,  // a number strict reading refuses
    NUMBER_OVERFLOW, // a number beyond a double where that is an error
    SYNTAX,          // the grammar met a token it cannot take
    STACK_EXHAUSTED, // the document nests deeper than the grammar's stack
    DUPLICATE_KEY,   // a repeated member name when names must be unique
    SCALAR_DOCUMENT, // a scalar as the whole document in the standard dialect
    EMPTY_DOCUMENT,  // an empty text where a document is required
    // Standard strings only (jlpca_set_std_strings).
    LONE_HIGH_SURROGATE, // "\ud83d" not followed by a low surrogate escape
    LONE_LOW_SURROGATE,  // "\ude00" without a high surrogate before it
    REVERSED_SURROGATES, // "\ude00\ud83d"
    UTF8_STRAY,          // a continuation byte 0x80-0xBF where a character starts
    UTF8_NEVER,          // 0xF8-0xFF, bytes no UTF-8 text holds
    UTF8_CUT_SHORT,      // a lead byte without all its continuation bytes
    UTF8_OVERLONG,       // C0 AF: a character in more bytes than it needs
    UTF8_SURROGATE,      // ED A0 80: a surrogate encoded as a character
    UTF8_TOO_HIGH,       // F4 90 80 80: beyond U+10FFFF
    COUNT
};

struct msg_entry {
    msg_id id;
    int32_t code;
    const char *text;
};

inline constexpr msg_entry TABLE[] = {
    {STRICT_QUOTE, VXJSON_ERR_LEX, "json strict only support double quotation"},
    {NEED_ESCAPE, VXJSON_ERR_LEX, "charactor need escape"},
    {NOT_SUPPORT, VXJSON_ERR_LEX, "charactor not support"},
    {ESCAPE, VXJSON_ERR_LEX, "escape error"},
    {UNTERMINATED_DQ, VXJSON_ERR_LEX, "Unterminated quoted identifier"},
    {UNTERMINATED_SQ, VXJSON_ERR_UNTERMINATED_SQ, "Unterminated quoted string"},
    {NO_MEMORY, VXJSON_ERR_NOMEM, "out of memory"},
    {INVALID_NUMBER, VXJSON_ERR_INVALID_JSON, "invalid json number"},
    {NUMBER_OVERFLOW, VXJSON_ERR_DOUBLE_OVERFLOW, "number overflow"},
    {SYNTAX, VXJSON_ERR_SYNTAX, "syntax error"},
    {STACK_EXHAUSTED, VXJSON_ERR_SYNTAX, "memory exhausted"},
    {DUPLICATE_KEY, VXJSON_ERR_INVALID_JSON, "duplicate key"},
    {SCALAR_DOCUMENT, VXJSON_ERR_INVALID_JSON, "scalar at top level"},
    {EMPTY_DOCUMENT, VXJSON_ERR_INVALID_JSON, "empty document"},
    {LONE_HIGH_SURROGATE, VXJSON_ERR_SURROGATE, "unpaired high surrogate escape"},
    {LONE_LOW_SURROGATE, VXJSON_ERR_SURROGATE, "unpaired low surrogate escape"},
    {REVERSED_SURROGATES, VXJSON_ERR_SURROGATE, "surrogate escapes in reverse order"},
    {UTF8_STRAY, VXJSON_ERR_UTF8, "invalid UTF-8: continuation byte without a lead byte"},
    {UTF8_NEVER, VXJSON_ERR_UTF8, "invalid UTF-8: byte that never occurs in UTF-8"},
    {UTF8_CUT_SHORT, VXJSON_ERR_UTF8, "invalid UTF-8: sequence cut short"},
    {UTF8_OVERLONG, VXJSON_ERR_UTF8, "invalid UTF-8: overlong encoding"},
    {UTF8_SURROGATE, VXJSON_ERR_UTF8, "invalid UTF-8: encoded surrogate"},
    {UTF8_TOO_HIGH, VXJSON_ERR_UTF8, "invalid UTF-8: beyond U+10FFFF"},
};

constexpr bool is_known_code(int32_t code) {
    switch (code) {
    case VXJSON_ERR_UNTERMINATED_SQ:
    case VXJSON_ERR_LEX:
    case VXJSON_ERR_SURROGATE:
    case VXJSON_ERR_UTF8:
    case VXJSON_ERR_NOMEM:
    case VXJSON_ERR_SYNTAX:
    case VXJSON_ERR_INVALID_JSON:
    case VXJSON_ERR_DOUBLE_OVERFLOW: return true;
    default: return false;
    }
}

constexpr bool table_is_sound() {
    if (sizeof TABLE / sizeof TABLE[0] != COUNT) return false;
    for (size_t i = 0; i < COUNT; i++) {
        const msg_entry &e = TABLE[i];
        if (e.id != i || !is_known_code(e.code) || !e.text || !e.text[0]) return false;
        size_t n = 0;
        while (e.text[n]) n++;
        if (n >= JLPCA_ERR_MSG_SIZE) return false; // must fit the context's err_msg
    }
    return true;
}
static_assert(table_is_sound(), "one entry per id, in id order, with a known code");

constexpr const char *text(msg_id id) { return TABLE[id].text; }
constexpr int32_t code(msg_id id) { return TABLE[id].code; }

} // namespace vxjson::msg

#endif
