// vxjson query PATH [INPUT...]: the values a path selects in each document,
// as JSON text; several matches print as one array of them.  The request
// (the path and, later, the clauses of the SQL/JSON functions) is set up
// once; each document is read, evaluated and answered in turn.
#include <atomic>

#include "commands.h"
#include "query_path.h"
#include "sql_function.h"

namespace vxcli {

namespace {

struct query_request {
    compiled_path path;               // only read while lines run on several threads
    std::atomic<uint64_t> no_value{}; // documents in which nothing matched
};

// With a clause switch the command is JSON_QUERY, whose strings keep their
// escapes and whose result is always text.
int run_json_query(command_line &cl, const std::string &path_text) {
    function_clauses clauses;
    std::string error;
    if (!parse_clauses(cl.clauses, cl.write.layout != 0, clauses, error)) {
        tool_error(error);
        return EXIT_TROUBLE;
    }
    if (clauses.returns != function_clauses::result::text) {
        tool_error("JSON_QUERY returns text: bad value for --returning: '" + cl.clauses.returning +
                   "'");
        return EXIT_TROUBLE;
    }
    cl.read.keep_escapes = true;
    return run_sql_function(cl, path_text, clauses);
}

doc_result answer(session &s, const command_line &cl, query_request &q, json_node *root,
                  const std::string &name, uint64_t line) {
    const query_outcome r = root ? evaluate_path(s.ctx(), root, q.path) : query_outcome{};
    if (r.code != 0) {
        report_failure(name, line,
                       {r.code, 1, std::string("cannot evaluate: ") + code_message(r.code),
                        r.code == VXJSON_ERR_NOMEM});
        return r.code == VXJSON_ERR_NOMEM ? doc_result::fatal : doc_result::bad;
    }
    int32_t rc = 0;
    if (r.match) {
        rc = s.write(r.match, cl.write);
    } else {
        ++q.no_value;
        if (!cl.lines) return doc_result::ok; // nothing to print
    }
    if (rc == 0) rc = s.append("\n");
    if (rc == 0) return doc_result::ok;
    report_failure(name, line, {rc, 1, std::string("cannot write: ") + code_message(rc), true});
    return doc_result::fatal;
}

} // namespace

int run_query(command_line &cl) {
    std::string path_text, error;
    if (!take_path_argument(cl, "query", path_text)) return EXIT_TROUBLE;
    if (cl.clauses.any()) return run_json_query(cl, path_text);
    query_request q;
    if (!q.path.compile(path_text, cl.read, error)) {
        tool_error(error);
        return EXIT_TROUBLE;
    }
    const int status = run_trees(cl, cl.read,
                                 [&](session &s, json_node *root, const std::string &name,
                                     uint64_t line) { return answer(s, cl, q, root, name, line); });
    return status == EXIT_GOOD && q.no_value ? EXIT_NO_VALUE : status;
}

} // namespace vxcli
