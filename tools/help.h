// Help texts of the vxjson tool.
#ifndef VXJSON_TOOL_HELP_H
#define VXJSON_TOOL_HELP_H

namespace vxcli {

// The overview: commands, inputs, exit statuses.
const char *general_help();
// The help of one command (its usage, switches and examples).
const char *command_help(const char *name);

} // namespace vxcli

#endif
