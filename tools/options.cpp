// Switch parsing shared by every command.  Switches and inputs may be mixed
// in any order; "--" ends the switches, "-" is standard input and -e TEXT is
// an inline document.
#include "options.h"

#include <cstdlib>

namespace vxcli {

const char READ_OPTIONS_HELP[] =
    "reading switches:\n"
    "  --dialect standard|pg|mysql  the SQL dialect whose rules apply (default standard)\n"
    "  --strict                     only standard JSON (the default in pg and mysql)\n"
    "  --lax                        also single quotes, bare names, trailing commas,\n"
    "                               +1, 007, .5, TRUE (the default in standard)\n"
    "  --unique-keys                a repeated member name makes the text invalid\n"
    "  --dup-replace                the last of repeated member names wins\n"
    "  --sorted-keys                keep members sorted (shorter names first)\n"
    "  --scalar-top                 accept a scalar as the whole document\n"
    "                               (always so in pg and mysql)\n"
    "  --keep-escapes               keep escape sequences of strings as written\n"
    "  --charset utf8|gb18030|euckr the character set of the text (default utf8,\n"
    "                               or VXJSON_CHARSET=0|1|2 in the environment)\n"
    "  --max-memory SIZE            refuse a document that needs more than SIZE\n"
    "                               bytes of memory (suffix K, M or G)\n";

const char WRITE_OPTIONS_HELP[] =
    "writing switches:\n"
    "  --pretty, --pretty=b         indented, \"name\": value, nested containers\n"
    "                               on the name's line\n"
    "  --pretty=a                   indented, \"name\" : value, nested containers\n"
    "                               on lines of their own\n"
    "  --ascii                      write non-ASCII characters as \\uXXXX (one beyond\n"
    "                               U+FFFF keeps only its first UTF-16 unit, as the\n"
    "                               server writes it)\n";

namespace {

// Names a switch accepts and the values they stand for.
struct named_value {
    const char *name;
    int32_t value;
};

constexpr named_value DIALECTS[] = {{"standard", 0}, {"pg", 1}, {"mysql", 2}};
// Configuration value 635: 0 GB18030, 1 UTF-8, 2 EUC-KR.
constexpr named_value CHARSETS[] = {{"utf8", 1},  {"utf-8", 1},  {"gb18030", 0},
                                    {"euckr", 2}, {"euc-kr", 2}};

template <size_t N>
bool find_named(const named_value (&table)[N], const std::string &name, int32_t &out) {
    for (const named_value &row : table)
        if (name == row.name) {
            out = row.value;
            return true;
        }
    return false;
}

// A switch without a value; false when `arg` is none of them.
bool flag_switch(const std::string &arg, unsigned groups, command_line &out) {
    read_options &r = out.read;
    if (arg == "--strict") r.strict = 1;
    else if (arg == "--lax") r.strict = 0;
    else if (arg == "--unique-keys") r.unique_keys = true;
    else if (arg == "--dup-replace") r.dup_replace = true;
    else if (arg == "--sorted-keys") r.sorted_keys = true;
    else if (arg == "--scalar-top") r.scalar_top = true;
    else if (arg == "--keep-escapes") r.keep_escapes = true;
    else if ((groups & OPT_WRITE) && (arg == "--pretty" || arg == "--pretty=b")) out.write.layout = 4;
    else if ((groups & OPT_WRITE) && arg == "--pretty=a") out.write.layout = 2;
    else if ((groups & OPT_WRITE) && arg == "--ascii") out.write.ascii = true;
    else if ((groups & OPT_LINES) && arg == "--lines") out.lines = true;
    else if ((groups & OPT_QUIET) && (arg == "--quiet" || arg == "-q")) out.quiet = true;
    else if (arg == "--help" || arg == "-h") out.help = true;
    else return false;
    return true;
}

// A switch that takes a value; false with `error` set when the value is bad.
bool value_switch(const std::string &name, const std::string &value, read_options &r,
                  std::string &error) {
    bool ok = true;
    if (name == "--dialect") ok = r.dialect_given = find_named(DIALECTS, value, r.compat);
    else if (name == "--charset") ok = find_named(CHARSETS, value, r.charset);
    else if (name == "--max-memory") ok = parse_size(value, r.max_memory) && r.max_memory > 0;
    if (!ok) error = "bad value for " + name + ": '" + value + "'";
    return ok;
}

bool takes_value(const std::string &name) {
    return name == "--dialect" || name == "--charset" || name == "--max-memory";
}

// Where a clause switch of the SQL/JSON functions keeps its value (checked
// by the command), or null when `name` is none of them.
std::string *clause_switch(const std::string &name, clause_options &c) {
    if (name == "--returning") return &c.returning;
    if (name == "--wrapper") return &c.wrapper;
    if (name == "--on-empty") return &c.on_empty;
    if (name == "--on-error") return &c.on_error;
    return nullptr;
}

void add_input(command_line &out, bool is_inline, std::string text) {
    input_spec in;
    in.is_inline = is_inline;
    in.name = is_inline ? "<text>" : text == "-" ? "<stdin>" : text;
    in.text = std::move(text);
    out.inputs.push_back(std::move(in));
}

// Several inline texts are told apart by their position.
void number_inline_inputs(command_line &out) {
    size_t count = 0;
    for (const input_spec &in : out.inputs) count += in.is_inline;
    if (count < 2) return;
    size_t n = 0;
    for (input_spec &in : out.inputs)
        if (in.is_inline) in.name = "<text " + std::to_string(++n) + ">";
}

}  // namespace

bool parse_size(const std::string &text, uint64_t &out) {
    if (text.empty() || text[0] < '0' || text[0] > '9') return false;
    char *end = nullptr;
    unsigned long long v = std::strtoull(text.c_str(), &end, 10);
    uint64_t unit = 1;
    if (*end == 'K' || *end == 'k') unit = 1024, ++end;
    else if (*end == 'M' || *end == 'm') unit = 1024 * 1024, ++end;
    else if (*end == 'G' || *end == 'g') unit = 1024ull * 1024 * 1024, ++end;
    if (*end != '\0' || v > UINT64_MAX / unit) return false;
    out = v * unit;
    return true;
}

bool parse_command_line(int argc, char **argv, int first, unsigned groups, command_line &out,
                        std::string &error) {
    bool switches_end = false;
    for (int i = first; i < argc; ++i) {
        std::string arg = argv[i];
        // A negative number is an argument (a value, a position), not a switch.
        const bool negative_number = arg.size() > 1 && arg[0] == '-' && arg[1] >= '0' && arg[1] <= '9';
        if (switches_end || arg == "-" || arg.empty() || arg[0] != '-' || negative_number) {
            add_input(out, false, std::move(arg));
            continue;
        }
        if (arg == "--") {
            switches_end = true;
            continue;
        }
        if (arg == "-e") {
            if (i + 1 >= argc) {
                error = "-e needs a JSON text";
                return false;
            }
            add_input(out, true, argv[++i]);
            continue;
        }
        if (flag_switch(arg, groups, out)) continue;
        size_t eq = arg.find('=');
        std::string name = arg.substr(0, eq);
        std::string *clause = (groups & OPT_CLAUSES) ? clause_switch(name, out.clauses) : nullptr;
        if (!clause && !takes_value(name)) {
            error = "unknown switch '" + arg + "'";
            return false;
        }
        std::string value;
        if (eq != std::string::npos) {
            value = arg.substr(eq + 1);
        } else if (i + 1 < argc) {
            value = argv[++i];
        } else {
            error = name + " needs a value";
            return false;
        }
        if (clause) *clause = value;
        else if (!value_switch(name, value, out.read, error)) return false;
    }
    number_inline_inputs(out);
    return true;
}

}  // namespace vxcli
