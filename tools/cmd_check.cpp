// vxjson check: is each input (or each line) a well-formed document?
#include "commands.h"

namespace vxcli {

int run_check(command_line &cl) {
    session s(cl.read);
    if (!s.ready()) {
        tool_error("out of memory");
        return EXIT_TROUBLE;
    }
    return run_documents(cl, s, [&](std::string_view text, const std::string &name, uint64_t line) {
        read_failure why;
        if (s.check(text, why) == 0) return doc_result::ok;
        if (!cl.quiet || why.out_of_memory) report_failure(name, line + why.line - 1, why);
        return why.out_of_memory ? doc_result::fatal : doc_result::bad;
    });
}

}  // namespace vxcli
