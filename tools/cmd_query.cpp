// vxjson query PATH [INPUT...]: the values a path selects in each document,
// as JSON text; several matches print as one array of them.  The request
// (the path and, later, the clauses of the SQL/JSON functions) is set up
// once; each document is read, evaluated and answered in turn.
#include "commands.h"
#include "query_path.h"

namespace vxcli {

namespace {

struct query_request {
    compiled_path path;
    uint64_t no_value = 0;  // documents in which nothing matched
};

// The first positional argument is the path; the rest are the inputs.
bool take_path(command_line &cl, std::string &text) {
    if (cl.inputs.empty() || cl.inputs.front().is_inline) {
        tool_error("query needs a PATH before its inputs (try 'vxjson query --help')");
        return false;
    }
    text = cl.inputs.front().text;
    cl.inputs.erase(cl.inputs.begin());
    return true;
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
        if (!cl.lines) return doc_result::ok;  // nothing to print
    }
    if (rc == 0) rc = s.append("\n");
    if (rc == 0) return doc_result::ok;
    report_failure(name, line, {rc, 1, std::string("cannot write: ") + code_message(rc), true});
    return doc_result::fatal;
}

}  // namespace

int run_query(command_line &cl) {
    std::string path_text, error;
    if (!take_path(cl, path_text)) return EXIT_TROUBLE;
    query_request q;
    if (!q.path.compile(path_text, cl.read, error)) {
        tool_error(error);
        return EXIT_TROUBLE;
    }
    const std::unique_ptr<session> s = open_session(cl.read);
    if (!s) return EXIT_TROUBLE;
    const int status = run_trees(cl, *s, [&](json_node *root, const std::string &name, uint64_t line) {
        return answer(*s, cl, q, root, name, line);
    });
    return status == EXIT_GOOD && q.no_value ? EXIT_NO_VALUE : status;
}

}  // namespace vxcli
