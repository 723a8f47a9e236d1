// JSON_VALUE and JSON_QUERY for the tool: the clause switches become the
// path's option word and datatype, and each document's answer one line.
#include "sql_function.h"

#include <cstdlib>

#include "commands.h"
#include "query_path.h"

#include "vxtime.h"
#include "xdec.h"

namespace vxcli {

const char CLAUSE_OPTIONS_HELP[] =
    "clauses (as in SQL; the defaults are SQL's):\n"
    "  --returning text|varchar(N)|number|number(P,S)|date|datetime\n"
    "                               the result type (default text, at most 32767\n"
    "                               bytes; number(P,S) rounds to S places)\n"
    "  --on-empty null|error|default  when the path matches nothing (default: as\n"
    "                               ON ERROR in the standard dialect, NULL in the\n"
    "                               others)\n"
    "  --on-error null|error|empty|default  when the result does not fit the\n"
    "                               function (default null; empty gives [] for text)\n"
    "\n"
    "answers, one line a document:\n"
    "  the value's text, <null> for SQL NULL, <default> where the caller's DEFAULT\n"
    "  would stand (status 100); an error raised by ERROR ON ERROR or ERROR ON\n"
    "  EMPTY prints \"NAME:LINE: error CODE: MESSAGE\" on standard error.\n";

namespace {

// "number(10,2)": the numbers inside the parentheses after `head`.
bool arguments(const std::string &v, const std::string &head, uint32_t *a, uint32_t *b) {
    if (v.compare(0, head.size() + 1, head + "(") != 0 || v.back() != ')') return false;
    const std::string inner = v.substr(head.size() + 1, v.size() - head.size() - 2);
    char *end = nullptr;
    const unsigned long x = std::strtoul(inner.c_str(), &end, 10);
    if (end == inner.c_str()) return false;
    *a = uint32_t(x);
    if (!b) return *end == '\0' && x <= UINT32_MAX;
    if (*end != ',') return false;
    const char *second = end + 1;
    const unsigned long y = std::strtoul(second, &end, 10);
    *b = uint32_t(y);
    return end != second && *end == '\0';
}

bool parse_returning(const std::string &v, function_clauses &c) {
    using result = function_clauses::result;
    uint32_t p = 0, s = 0;
    if (v.empty() || v == "text") return true;
    if (arguments(v, "varchar", &p, nullptr)) {
        c.datatype = p;
        return true;
    }
    if (v == "number" || (arguments(v, "number", &p, &s) && p >= 1 && p <= 38 && s <= p)) {
        c.returns = result::number;
        c.ret_type = JPATH_RET_NUMBER;
        c.datatype = p << 8 | s;
        return true;
    }
    if (v == "date" || v == "datetime") {
        c.returns = result::datetime;
        c.ret_type = JPATH_RET_CLASS_4;
        c.datatype = v == "date" ? 3 : VXTIME_TYPE_DATETIME; // 3 asks for a date
        return true;
    }
    return false;
}

// A clause value among `names`, standing for first, first + 1, ...
bool pick(const std::string &v, std::initializer_list<const char *> names, uint32_t first,
          uint32_t &out) {
    for (const char *n : names) {
        if (v == n) {
            out = first;
            return true;
        }
        ++first;
    }
    return false;
}

std::string decimal_text(const xdec &d) {
    char buf[XDEC_TEXT_MAX];
    const int32_t n = xdec_to_char(&d, buf, sizeof buf);
    return n < 0 ? std::string() : std::string(buf, size_t(n));
}

std::string datetime_text(const vxtime &t) {
    char buf[VXTIME_TEXT_MAX];
    const int32_t fmt = t.type == VXTIME_TYPE_DATE ? VXTIME_FMT_DATE : VXTIME_FMT_ISO;
    const int32_t n = vxtime_to_char(&t, 9, fmt, buf);
    return n < 0 ? std::string() : std::string(buf, size_t(n));
}

} // namespace

uint32_t function_clauses::flag() const {
    return jpath_encode_flag(ret_type, format, wrapper, on_error, on_empty);
}

bool parse_clauses(const clause_options &given, bool pretty, function_clauses &out,
                   std::string &error) {
    const auto bad = [&](const char *name, const std::string &v) {
        error = std::string("bad value for ") + name + ": '" + v + "'";
        return false;
    };
    if (!parse_returning(given.returning, out)) return bad("--returning", given.returning);
    if (!given.wrapper.empty() && !pick(given.wrapper, {"without", "with", "conditional"},
                                        JPATH_WRAPPER_WITHOUT, out.wrapper))
        return bad("--wrapper", given.wrapper);
    if (!given.on_error.empty() && !pick(given.on_error, {"null", "error", "empty", "default"},
                                         JPATH_ON_ERROR_NULL, out.on_error))
        return bad("--on-error", given.on_error);
    if (!given.on_empty.empty()) {
        // The library raises -3104 under ERROR ON EMPTY; DEFAULT ON EMPTY
        // is the caller's substitution for it, as a server does.
        uint32_t v = 0;
        if (!pick(given.on_empty, {"null", "error", "default"}, 1, v))
            return bad("--on-empty", given.on_empty);
        out.on_empty = v == 1 ? JPATH_ON_EMPTY_NULL : JPATH_ON_EMPTY_ERROR;
        out.default_on_empty = v == 3;
    }
    if (pretty) out.format = JSON_FMT_PRETTY_A;
    return true;
}

function_answer call_function(jlpca_ctx *ctx, json_node *root, const jpath *path,
                              const function_clauses &c) {
    function_answer a;
    using result = function_clauses::result;
    if (c.returns == result::number) {
        json_number_result r{};
        a.code = json_value_number(ctx, root, path, &r, 0);
        if (a.code == 0 && r.has_value) a.text = decimal_text(r.value);
        a.sql_null = a.code == 0 && !r.has_value;
    } else if (c.returns == result::datetime) {
        json_datetime_result r{};
        a.code = json_value_date(ctx, root, path, &r, 0);
        if (a.code == 0 && r.has_value) a.text = datetime_text(r.value);
        a.sql_null = a.code == 0 && !r.has_value;
    } else {
        char *text = nullptr;
        uint32_t len = 0;
        a.code = json_fun_varchar(ctx, root, path, &text, &len, 0);
        if (text) a.text.assign(text, len);
        a.sql_null = a.code == 0 && !text;
    }
    if (a.code == VXJSON_ERR_PATH_NO_MATCH && c.default_on_empty) a.code = VXJSON_NO_VALUE;
    return a;
}

int32_t print_answer(session &s, const function_answer &a) {
    const std::string line = a.code == VXJSON_NO_VALUE ? "<default>"
                             : a.sql_null              ? "<null>"
                                                       : a.text;
    int32_t rc = s.append(line);
    return rc ? rc : s.append("\n");
}

int run_sql_function(const command_line &cl, const std::string &path_text,
                     const function_clauses &clauses) {
    compiled_path path;
    std::string error;
    if (!path.compile(path_text, cl.read, error, clauses.flag(), clauses.datatype)) {
        tool_error(error);
        return EXIT_TROUBLE;
    }
    // The compiled path is only read while lines run on several threads.
    return run_trees(
        cl, cl.read, [&](session &s, json_node *root, const std::string &name, uint64_t line) {
            const function_answer a = call_function(s.ctx(), root, path.get(), clauses);
            if (a.code < 0) {
                const bool nomem = a.code == VXJSON_ERR_NOMEM;
                report_failure(name, line, {a.code, 1, code_message(a.code), nomem});
                return nomem ? doc_result::fatal : doc_result::bad;
            }
            if (print_answer(s, a) == 0) return doc_result::ok;
            report_failure(name, line, {VXJSON_ERR_NOMEM, 1, "cannot write: out of memory", true});
            return doc_result::fatal;
        });
}

} // namespace vxcli
