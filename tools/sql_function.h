// The SQL/JSON functions in the tool: the clauses of JSON_VALUE and
// JSON_QUERY from the command line, and one call of the function over a
// document with its answer as a line of output.
#ifndef VXJSON_TOOL_SQL_FUNCTION_H
#define VXJSON_TOOL_SQL_FUNCTION_H

#include <cstdint>
#include <string>

#include "options.h"
#include "session.h"
#include "vxjson.h"

namespace vxcli {

enum class sql_function { value, query };

// The clauses as the library's path options.
struct function_clauses {
    enum class result { text, number, datetime } returns = result::text;
    uint32_t ret_type = JPATH_RET_CHAR;
    uint32_t datatype = JPATH_SIMPLE_RET_LEN; // text: the longest result
    uint32_t wrapper = JPATH_WRAPPER_WITHOUT;
    uint32_t on_empty = JPATH_ON_EMPTY_AS_ERROR; // not given
    uint32_t on_error = JPATH_ON_ERROR_NULL;     // SQL's default
    uint32_t format = JSON_FMT_COMPACT;
    bool default_on_empty = false; // no match gives the DEFAULT

    uint32_t flag() const;
};

// Reads the clause switches (empty: not given); false with a message.
bool parse_clauses(const clause_options &given, bool pretty, function_clauses &out,
                   std::string &error);

// What one call came to.
struct function_answer {
    int32_t code = 0;      // the status: 0, 100, or the error raised
    std::string text;      // the value's text when there is one
    bool sql_null = false; // status 0 without a value
};

// Calls the function over `root` (NULL: SQL NULL) with `path`.
function_answer call_function(jlpca_ctx *ctx, json_node *root, const jpath *path,
                              const function_clauses &c);

// Appends the answer as a line: the text, "<null>" for SQL NULL,
// "<default>" for status 100.  0 or a negative code.
int32_t print_answer(session &s, const function_answer &a);

// Runs the function with `clauses` and the path text over every document
// of the command line; the exit status.  A raised error is told for its
// document, which then counts as bad (exit status 1).
int run_sql_function(const command_line &cl, const std::string &path_text,
                     const function_clauses &clauses);

extern const char CLAUSE_OPTIONS_HELP[];

} // namespace vxcli

#endif
