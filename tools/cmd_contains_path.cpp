// vxjson contains-path one|all PATH... [INPUT]: MySQL's JSON_CONTAINS_PATH.
// Prints true or false for the document (or for each line with --lines):
// whether one of the paths, or all of them, match a value in it.
#include <vector>

#include "commands.h"
#include "query_path.h"

namespace vxcli {

namespace {

struct contains_request {
    bool all = false; // "all": every path must match
    std::vector<std::unique_ptr<compiled_path>> paths;
};

// Positional arguments: the mode word, the paths, then the input (standard
// input when the last argument is itself a path).
bool take_request(command_line &cl, contains_request &q, std::string &error) {
    command_line::inputs_t &in = cl.inputs;
    if (in.empty() || in.front().is_inline ||
        (in.front().text != "one" && in.front().text != "all")) {
        error = "contains-path needs 'one' or 'all' first (try 'vxjson contains-path --help')";
        return false;
    }
    q.all = in.front().text == "all";
    in.erase(in.begin());
    size_t n_paths = in.size();
    if (n_paths && (in.back().is_inline || in.back().text.empty() || in.back().text[0] != '$'))
        --n_paths; // the last one is the input
    if (n_paths == 0) {
        error = "contains-path needs at least one PATH";
        return false;
    }
    for (size_t i = 0; i < n_paths; ++i) {
        if (in[i].is_inline) {
            error = "contains-path takes one input, after the paths";
            return false;
        }
        q.paths.push_back(std::make_unique<compiled_path>());
        if (!q.paths.back()->compile(in[i].text, cl.read, error)) return false;
    }
    in.erase(in.begin(), in.begin() + static_cast<long>(n_paths));
    return true;
}

doc_result answer(session &s, const contains_request &q, json_node *root, const std::string &name,
                  uint64_t line) {
    bool any = false, every = true;
    for (const auto &p : q.paths) {
        int32_t found = 0;
        const int32_t rc = root ? jpath_json_contains_path(root, p->get(), s.ctx(), &found) : 0;
        if (rc != 0) {
            report_failure(name, line,
                           {rc, 1, "cannot evaluate " + p->text() + ": " + code_message(rc),
                            rc == VXJSON_ERR_NOMEM});
            return rc == VXJSON_ERR_NOMEM ? doc_result::fatal : doc_result::bad;
        }
        any = any || found;
        every = every && found;
        if (q.all ? !every : any) break; // the answer is known
    }
    const bool yes = q.all ? every : any;
    return s.append(yes ? "true\n" : "false\n") == 0 ? doc_result::ok : doc_result::fatal;
}

} // namespace

int run_contains_path(command_line &cl) {
    // Read as the MySQL function reads, unless told otherwise.
    if (!cl.read.dialect_given) cl.read.compat = JLPCA_COMPAT_MYSQL;
    contains_request q;
    std::string error;
    if (!take_request(cl, q, error)) {
        tool_error(error);
        return EXIT_TROUBLE;
    }
    if (cl.inputs.size() > 1) {
        tool_error("contains-path takes one input, after the paths");
        return EXIT_TROUBLE;
    }
    // The compiled paths are only read while the lines run on several threads.
    return run_trees(cl, cl.read,
                     [&](session &s, json_node *root, const std::string &name, uint64_t line) {
                         return answer(s, q, root, name, line);
                     });
}

} // namespace vxcli
