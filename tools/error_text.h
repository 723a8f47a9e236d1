// What the tool says about a refused text, from where the reader stopped:
// the reader gives the place and a short message, this names what stands
// there.
#ifndef VXJSON_TOOL_ERROR_TEXT_H
#define VXJSON_TOOL_ERROR_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace vxcli {

// The message for an error the grammar met at `offset` of `text`, given
// the reader's own message for it ("syntax error", "duplicate key", ...);
// `scalar_top` says whether a scalar may be the whole document.
std::string grammar_error_text(std::string_view text, uint32_t offset, std::string_view message,
                               bool scalar_top);

// Does an escaped surrogate pair (\ud83d\ude00) start at `offset`: the
// escape the engine refuses by default and --rfc8259 reads?
bool escaped_surrogate_pair_at(std::string_view text, uint32_t offset);

// "1G", "512M", "1000" for a byte count, as --max-memory takes it.
std::string size_text(uint64_t bytes);

} // namespace vxcli

#endif
