// Command-line switches of the vxjson tool: the reading switches every
// command shares, the writing switches of the commands that print JSON, and
// the list of inputs.
#ifndef VXJSON_TOOL_OPTIONS_H
#define VXJSON_TOOL_OPTIONS_H

#include <cstdint>
#include <string>
#include <vector>

namespace vxcli {

// How texts are read: the parse context's switches.
struct read_options {
    int32_t compat = 0;         // 0 standard, 1 pg, 2 mysql
    bool dialect_given = false; // --dialect was on the command line
    int strict = -1;            // -1: the dialect's own default
    bool unique_keys = false;   // a repeated member name is an error
    bool dup_replace = false;   // the last of repeated names wins
    bool sorted_keys = false;   // members kept sorted by name
    bool scalar_top = false;    // a scalar may be the whole document
    bool keep_escapes = false;  // strings keep their escape sequences
    bool rfc8259 = false;       // standard JSON strings: surrogate pairs, UTF-8 checked
    int32_t charset = -1;       // configuration value 635, -1: leave as is
    uint64_t max_memory = 0;    // heap bytes per document, 0: no limit
};

// How trees are written.
struct write_options {
    uint32_t layout = 0; // 0 compact, 2 pretty " : ", 4 pretty ": "
    bool ascii = false;  // non-ASCII text as \uXXXX
};

// The clauses of the SQL/JSON functions as given; empty: not given.
struct clause_options {
    std::string returning, wrapper, on_empty, on_error;
    bool any() const {
        return !(returning.empty() && wrapper.empty() && on_empty.empty() && on_error.empty());
    }
};

// One input: a file (or "-" for standard input) or inline text.
struct input_spec {
    bool is_inline = false;
    std::string text; // the file name, or the JSON text itself
    std::string name; // how messages name it
};

// Switch groups a command accepts, beyond the reading switches.
enum option_group : unsigned {
    OPT_READ = 1u,     // reading switches (every command)
    OPT_WRITE = 2u,    // --pretty, --ascii
    OPT_LINES = 4u,    // --lines
    OPT_QUIET = 8u,    // --quiet
    OPT_CLAUSES = 16u, // --returning, --wrapper, --on-empty, --on-error
};

struct command_line {
    using inputs_t = std::vector<input_spec>;
    read_options read;
    write_options write;
    clause_options clauses;
    bool lines = false; // JSON Lines: one document per line
    bool quiet = false; // no per-input messages, only the status
    bool help = false;  // --help was given
    unsigned jobs = 0;  // threads for --lines, 0: the machine's cores
    inputs_t inputs;
};

// Read argv[first..argc) into `out`, accepting the switch groups in
// `groups`.  Returns false with a message in `error` for a bad argument.
bool parse_command_line(int argc, char **argv, int first, unsigned groups, command_line &out,
                        std::string &error);

// A size with an optional K, M or G suffix; false when malformed.
bool parse_size(const std::string &text, uint64_t &out);

// The help lines of the shared reading switches.
extern const char READ_OPTIONS_HELP[];
extern const char WRITE_OPTIONS_HELP[];

} // namespace vxcli

#endif
