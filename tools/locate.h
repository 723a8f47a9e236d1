// Where a refused text went wrong.  The reader tells the line of a lexical
// error but not of a grammar error, so this walks the text once more, only
// after a refusal, with a small token-level model of the same grammar.
#ifndef VXJSON_TOOL_LOCATE_H
#define VXJSON_TOOL_LOCATE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace vxcli {

// The reading rules the model has to follow.
struct grammar_rules {
    bool strict = false;         // exact keywords, no trailing comma, no keyword names
    bool scalar_top = false;     // a scalar may be the whole document
    bool unique_keys = false;    // a repeated member name is an error
};

struct error_spot {
    bool found = false;
    uint32_t line = 1;           // from 1
    std::string message;
};

// The first token at which the grammar cannot go on.
error_spot locate_syntax_error(std::string_view text, const grammar_rules &rules);

// The first number the reader refuses: malformed under strict reading, or
// (when `overflow`) beyond the range of a double.
error_spot locate_number_error(std::string_view text, bool strict, bool overflow);

}  // namespace vxcli

#endif
