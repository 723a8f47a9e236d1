// vxjson: the library in a user's hands.  Dispatches to a command, prints
// help and the version, and applies the process-wide character set.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "commands.h"
#include "help.h"
#include "vx_ini.h"
#include "vxjson.h"

namespace vxcli {

namespace {

struct command {
    const char *name;
    int (*run)(command_line &);
    unsigned groups; // switch groups accepted besides the reading ones
};

// The changes by path write JSON and take JSON Lines streams.
constexpr unsigned OPT_CHANGE = OPT_READ | OPT_WRITE | OPT_LINES | OPT_QUIET;

constexpr command COMMANDS[] = {
    {"check", run_check, OPT_READ | OPT_LINES | OPT_QUIET},
    {"format", run_format, OPT_READ | OPT_WRITE | OPT_LINES | OPT_QUIET},
    {"equal", [](command_line &c) { return run_op(op_kind::equal, c); }, OPT_READ},
    {"contains", [](command_line &c) { return run_op(op_kind::contains, c); }, OPT_READ},
    {"overlaps", [](command_line &c) { return run_op(op_kind::overlaps, c); }, OPT_READ},
    {"merge-patch", [](command_line &c) { return run_op(op_kind::merge_patch, c); },
     OPT_READ | OPT_WRITE},
    {"merge-preserve", [](command_line &c) { return run_op(op_kind::merge_preserve, c); },
     OPT_READ | OPT_WRITE},
    {"concat", [](command_line &c) { return run_op(op_kind::concat, c); }, OPT_READ | OPT_WRITE},
    {"strip-nulls", [](command_line &c) { return run_op(op_kind::strip_nulls, c); },
     OPT_READ | OPT_WRITE},

    // Path queries.
    {"query", run_query, OPT_READ | OPT_WRITE | OPT_LINES | OPT_QUIET | OPT_CLAUSES},
    {"contains-path", run_contains_path, OPT_READ | OPT_LINES | OPT_QUIET},

    // SQL/JSON functions.
    {"value", run_value, OPT_READ | OPT_LINES | OPT_QUIET | OPT_CLAUSES},

    // Changes by path.
    {"set", [](command_line &c) { return run_change(change_kind::set, c); }, OPT_CHANGE},
    {"insert", [](command_line &c) { return run_change(change_kind::insert, c); }, OPT_CHANGE},
    {"replace", [](command_line &c) { return run_change(change_kind::replace, c); }, OPT_CHANGE},
    {"remove", [](command_line &c) { return run_change(change_kind::remove, c); }, OPT_CHANGE},
    {"array-append", [](command_line &c) { return run_change(change_kind::array_append, c); },
     OPT_CHANGE},
    {"array-insert", [](command_line &c) { return run_change(change_kind::array_insert, c); },
     OPT_CHANGE},
};

const command *find_command(const char *name) {
    for (const command &c : COMMANDS)
        if (std::strcmp(c.name, name) == 0) return &c;
    return nullptr;
}

// The values the library's configuration takes from the environment.
bool valid_charset_value(const char *v) {
    return std::strcmp(v, "0") == 0 || std::strcmp(v, "1") == 0 || std::strcmp(v, "2") == 0;
}

int usage_error(const std::string &message, const char *command_name) {
    tool_error(message);
    std::fprintf(stderr, "Try 'vxjson %s--help'.\n",
                 command_name ? (std::string(command_name) + " ").c_str() : "");
    return EXIT_TROUBLE;
}

int run(int argc, char **argv) {
    if (argc < 2) {
        std::fputs(general_help(), stderr);
        return EXIT_TROUBLE;
    }
    const std::string first = argv[1];
    if (first == "--help" || first == "-h") {
        std::fputs(general_help(), stdout);
        return EXIT_GOOD;
    }
    if (first == "--version" || first == "-V") {
        std::printf("vxjson %s\n", VXJSON_VERSION_STRING);
        return EXIT_GOOD;
    }
    if (first == "help") {
        const command *c = argc > 2 ? find_command(argv[2]) : nullptr;
        if (argc > 2 && !c)
            return usage_error("unknown command '" + std::string(argv[2]) + "'", nullptr);
        std::fputs(c ? command_help(c->name) : general_help(), stdout);
        return EXIT_GOOD;
    }
    const command *cmd = find_command(argv[1]);
    if (!cmd) {
        const char *what = first[0] == '-' ? "unknown switch '" : "unknown command '";
        return usage_error(what + first + "'", nullptr);
    }
    command_line cl;
    std::string error;
    if (!parse_command_line(argc, argv, 2, cmd->groups, cl, error))
        return usage_error(error, cmd->name);
    if (cl.help) {
        std::fputs(command_help(cmd->name), stdout);
        return EXIT_GOOD;
    }
    if (cl.read.charset >= 0) {
        ini_set_value(0, VX_INI_CHARSET, cl.read.charset);
    } else if (const char *env = std::getenv("VXJSON_CHARSET"); env && !valid_charset_value(env)) {
        tool_error(std::string("bad value for VXJSON_CHARSET: '") + env +
                   "' (0 GB18030, 1 UTF-8, 2 EUC-KR)");
        return EXIT_TROUBLE;
    }
    return cmd->run(cl);
}

} // namespace

} // namespace vxcli

int main(int argc, char **argv) { return vxcli::run(argc, argv); }
