// vxjson format: read each input (or each line) and write it back, compact
// or pretty, one document per line of output.
#include "commands.h"

namespace vxcli {

int run_format(command_line &cl) {
    session s(cl.read);
    if (!s.ready()) {
        tool_error("out of memory");
        return EXIT_TROUBLE;
    }
    return run_documents(cl, s, [&](std::string_view text, const std::string &name, uint64_t line) {
        json_node *root = nullptr;
        read_failure why;
        if (s.read(text, &root, why) != 0) {
            if (!cl.quiet || why.out_of_memory) report_failure(name, line + why.line - 1, why);
            return why.out_of_memory ? doc_result::fatal : doc_result::bad;
        }
        if (!root) return doc_result::ok;  // an empty text writes nothing
        int32_t rc = s.write(root, cl.write);
        if (rc == 0) rc = s.append("\n");
        if (rc == 0) return doc_result::ok;
        report_failure(name, line, read_failure{rc, 1, std::string("cannot write: ") + code_message(rc), true});
        return doc_result::fatal;
    });
}

}  // namespace vxcli
