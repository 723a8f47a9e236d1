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
};

constexpr bool is_known_code(int32_t code) {
    switch (code) {
    case VXJSON_ERR_UNTERMINATED_SQ:
    case VXJSON_ERR_LEX:
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
