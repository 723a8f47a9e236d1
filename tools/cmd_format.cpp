// vxjson format: read each input (or each line) and write it back, compact
// or pretty, one document per line of output.
#include "commands.h"

namespace vxcli {

int run_format(command_line &cl) {
    return run_documents(
        cl, cl.read,
        [&](session &s, std::string_view text, const std::string &name, uint64_t line) {
            json_node *root = nullptr;
            read_failure why;
            if (s.read(text, &root, why) != 0) return refused(cl, name, line, why);
            if (!root) return doc_result::ok; // an empty text writes nothing
            int32_t rc = s.write(root, cl.write);
            if (rc == 0) rc = s.append("\n");
            if (rc == 0) return doc_result::ok;
            report_failure(name, line,
                           {rc, 1, std::string("cannot write: ") + code_message(rc), true});
            return doc_result::fatal;
        });
}

} // namespace vxcli
