// path_scan.h -- the path scanner, shared only by path_scan.cpp and the
// path grammar.  Like the JSON scanner it reads the context's text in
// place and never at or past its end; literal text, integer values and
// errors go into the context.
#ifndef VXJSON_PATH_SCAN_H
#define VXJSON_PATH_SCAN_H

#include <cstdint>

#include "vxjson.h"

namespace vxjson::path {

// Start conditions: outside quotes, inside a quoted name, after a
// backslash inside it.
enum class scan_condition : uint8_t { initial, quoted, escape };

struct path_scanner {
    jlpca_ctx *ctx;           // the context every action writes into
    const unsigned char *pos; // next byte to read
    const unsigned char *end; // end of the text
    uint32_t line;            // current line, from 1
    scan_condition cond;      // start condition
};

// Set up s over the context's current text: INITIAL, line 1,
// no multibyte character pending, a fresh literal.
void scanner_start(path_scanner &s, jlpca_ctx *ctx);
void scanner_stop(path_scanner &s);

// The next token kind (0 at the end of input and after any error).  With
// `copy` false the value of a name or quoted name may point into the text
// or the literal buffer, valid until the next token: the grammar takes its
// own copy at once.
int32_t next_token(path_scanner &s, bool copy);

} // namespace vxjson::path

#endif
