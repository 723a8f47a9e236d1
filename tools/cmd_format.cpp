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
            return end_output_line(s, s.write(root, cl.write), name, line);
        });
}

} // namespace vxcli
