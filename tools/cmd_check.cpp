// vxjson check: is each input (or each line) a well-formed document?
#include "commands.h"

namespace vxcli {

int run_check(command_line &cl) {
    return run_documents(
        cl, cl.read,
        [&](session &s, std::string_view text, const std::string &name, uint64_t line) {
            read_failure why;
            return s.check(text, why) == 0 ? doc_result::ok : refused(cl, name, line, why);
        });
}

} // namespace vxcli
