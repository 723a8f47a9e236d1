// User bytes in messages: a file name, a switch value or a piece of a
// document may hold bytes a terminal cannot show.
#ifndef VXJSON_TOOL_SHOW_H
#define VXJSON_TOOL_SHOW_H

#include <string>
#include <string_view>

namespace vxcli {

// `text` with every control byte and every byte that is not part of a
// well-formed UTF-8 character written as \xHH.
std::string shown(std::string_view text);

} // namespace vxcli

#endif
