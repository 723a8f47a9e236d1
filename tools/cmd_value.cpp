// vxjson value PATH [INPUT...]: JSON_VALUE over each document (or each
// line), one answer a line.  Strings come out as their plain text.
#include "commands.h"
#include "query_path.h"
#include "sql_function.h"

namespace vxcli {

int run_value(command_line &cl) {
    std::string path_text, error;
    if (!take_path_argument(cl, "value", path_text)) return EXIT_TROUBLE;
    function_clauses clauses;
    if (!parse_clauses(cl.clauses, false, clauses, error)) {
        tool_error(error);
        return EXIT_TROUBLE;
    }
    // JSON_VALUE is the function kind whose strings are decoded.
    cl.read.keep_escapes = false;
    return run_sql_function(cl, path_text, clauses);
}

} // namespace vxcli
