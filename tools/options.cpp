// Switch parsing shared by every command.  Switches and inputs may be mixed
// in any order; "--" ends the switches, "-" is standard input and -e TEXT is
// an inline document.
#include "options.h"

#include <cerrno>
#include <cstdlib>

namespace vxcli {

const char READ_OPTIONS_HELP[] =
    "reading switches:\n"
    "  --dialect standard|pg|mysql  the SQL dialect whose rules apply (default standard)\n"
    "                               standard: lax, members kept as written;\n"
    "                               pg, mysql: strict, a scalar may be the whole\n"
    "                               document, members sorted and the last of repeated\n"
    "                               names wins, as jsonb and MySQL's JSON type store\n"
    "                               documents (--unique-keys keeps them as written)\n"
    "  --strict                     only standard JSON (the default in pg and mysql)\n"
    "  --lax                        also single quotes, bare names, trailing commas,\n"
    "                               +1, 007, .5, TRUE (the default in standard)\n"
    "  --unique-keys                a repeated member name makes the text invalid\n"
    "  --dup-replace                the last of repeated member names wins\n"
    "  --sorted-keys                keep members sorted (shorter names first)\n"
    "  --scalar-top                 accept a scalar as the whole document\n"
    "                               (always so in pg and mysql)\n"
    "  --keep-escapes               keep escape sequences of strings as written\n"
    "  --rfc8259                    standard JSON strings (RFC 8259): an escaped\n"
    "                               surrogate pair (\\ud83d\\ude00) is one character;\n"
    "                               a lone surrogate escape and, in UTF-8, bytes\n"
    "                               that are no UTF-8 are errors (by default each\n"
    "                               \\u escape stands alone, so a pair is refused,\n"
    "                               and other bytes pass through as they are)\n"
    "  --charset utf8|gb18030|euckr the character set of the text (default utf8,\n"
    "                               or VXJSON_CHARSET=0|1|2 in the environment)\n"
    "  --max-memory SIZE            refuse a document that needs more than SIZE\n"
    "                               bytes of memory (suffix K, M or G)\n"
    "A switch and its opposite (--strict and --lax, --unique-keys and\n"
    "--dup-replace, two dialects, two character sets) are a usage error.\n";

const char WRITE_OPTIONS_HELP[] =
    "writing switches:\n"
    "  --pretty, --pretty=b         indented, \"name\": value, nested containers\n"
    "                               on the name's line\n"
    "  --pretty=a                   indented, \"name\" : value, nested containers\n"
    "                               on lines of their own\n"
    "  --ascii                      write non-ASCII characters as \\uXXXX (one beyond\n"
    "                               U+FFFF keeps only its first UTF-16 unit, as the\n"
    "                               server writes it; with --rfc8259 both units of\n"
    "                               its surrogate pair)\n";

namespace {

// Names a switch accepts and the values they stand for.
struct named_value {
    const char *name;
    int32_t value;
};

constexpr named_value DIALECTS[] = {{"standard", 0}, {"pg", 1}, {"mysql", 2}};
// Configuration value 635: 0 GB18030, 1 UTF-8, 2 EUC-KR.
constexpr named_value CHARSETS[] = {
    {"utf8", 1}, {"utf-8", 1}, {"gb18030", 0}, {"euckr", 2}, {"euc-kr", 2}};

template <size_t N>
bool find_named(const named_value (&table)[N], const std::string &name, int32_t &out) {
    for (const named_value &row : table)
        if (name == row.name) {
            out = row.value;
            return true;
        }
    return false;
}

// Records a value for a switch that may be given more than once only with
// the same value; false with `error` set when it contradicts an earlier one.
template <typename T>
bool set_once(T &field, T value, bool &given, const std::string &what, std::string &error) {
    if (given && field != value) {
        error = what;
        return false;
    }
    field = value;
    given = true;
    return true;
}

// A switch without a value: 1 taken, 0 not one of them, -1 a contradiction
// (with `error` set).
int flag_switch(const std::string &arg, unsigned groups, command_line &out, std::string &error) {
    read_options &r = out.read;
    bool ok = true;
    if (arg == "--strict" || arg == "--lax") {
        bool given = r.strict >= 0;
        ok = set_once(r.strict, arg == "--strict" ? 1 : 0, given,
                      "--strict and --lax contradict each other", error);
    } else if (arg == "--unique-keys") r.unique_keys = true;
    else if (arg == "--dup-replace") r.dup_replace = true;
    else if (arg == "--sorted-keys") r.sorted_keys = true;
    else if (arg == "--scalar-top") r.scalar_top = true;
    else if (arg == "--keep-escapes") r.keep_escapes = true;
    else if (arg == "--rfc8259") r.rfc8259 = true;
    else if ((groups & OPT_WRITE) &&
             (arg == "--pretty" || arg == "--pretty=b" || arg == "--pretty=a")) {
        bool given = out.write.layout != 0;
        ok = set_once(out.write.layout, arg == "--pretty=a" ? 2u : 4u, given,
                      "--pretty=a and --pretty=b contradict each other", error);
    } else if ((groups & OPT_WRITE) && arg == "--ascii") out.write.ascii = true;
    else if ((groups & OPT_LINES) && arg == "--lines") out.lines = true;
    else if ((groups & OPT_QUIET) && (arg == "--quiet" || arg == "-q")) out.quiet = true;
    else if (arg == "--help" || arg == "-h") out.help = true;
    else return 0;
    return ok ? 1 : -1;
}

// A switch that takes a value; false with `error` set when the value is bad.
bool value_switch(const std::string &name, const std::string &value, read_options &r,
                  std::string &error) {
    const std::string bad = "bad value for " + name + ": '" + value + "'";
    int32_t v = 0;
    if (name == "--dialect") {
        if (!find_named(DIALECTS, value, v)) return error = bad, false;
        return set_once(r.compat, v, r.dialect_given, "two different --dialect values", error);
    }
    if (name == "--charset") {
        if (!find_named(CHARSETS, value, v)) return error = bad, false;
        bool given = r.charset >= 0;
        return set_once(r.charset, v, given, "two different --charset values", error);
    }
    if (name == "--max-memory" && (!parse_size(value, r.max_memory) || r.max_memory == 0)) {
        error = bad + " (from 1 byte to 2^64-1 bytes, suffix K, M or G)";
        return false;
    }
    return true;
}

bool takes_value(const std::string &name, unsigned groups) {
    return name == "--dialect" || name == "--charset" || name == "--max-memory" ||
           ((groups & OPT_LINES) && name == "--jobs");
}

// --jobs N: from 1 to this many threads.
constexpr unsigned JOBS_MAX = 1024;

bool jobs_switch(const std::string &value, unsigned &jobs, std::string &error) {
    char *end = nullptr;
    errno = 0;
    const unsigned long v = value.empty() || value[0] < '0' || value[0] > '9'
                                ? 0
                                : std::strtoul(value.c_str(), &end, 10);
    if (v == 0 || v > JOBS_MAX || errno || *end) {
        error =
            "bad value for --jobs: '" + value + "' (from 1 to " + std::to_string(JOBS_MAX) + ")";
        return false;
    }
    jobs = static_cast<unsigned>(v);
    return true;
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

} // namespace

bool parse_size(const std::string &text, uint64_t &out) {
    if (text.empty() || text[0] < '0' || text[0] > '9') return false;
    char *end = nullptr;
    errno = 0;
    unsigned long long v = std::strtoull(text.c_str(), &end, 10);
    if (errno == ERANGE) return false;
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
        const bool negative_number =
            arg.size() > 1 && arg[0] == '-' && arg[1] >= '0' && arg[1] <= '9';
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
        if (int taken = flag_switch(arg, groups, out, error)) {
            if (taken < 0) return false;
            continue;
        }
        size_t eq = arg.find('=');
        std::string name = arg.substr(0, eq);
        std::string *clause = (groups & OPT_CLAUSES) ? clause_switch(name, out.clauses) : nullptr;
        if (!clause && !takes_value(name, groups)) {
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
        else if (name == "--jobs" ? !jobs_switch(value, out.jobs, error)
                                  : !value_switch(name, value, out.read, error))
            return false;
    }
    if (out.read.unique_keys && out.read.dup_replace) {
        error = "--unique-keys and --dup-replace contradict each other";
        return false;
    }
    number_inline_inputs(out);
    return true;
}

} // namespace vxcli
