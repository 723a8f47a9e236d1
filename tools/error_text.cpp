// Messages for grammar errors.  The reader stops at the token it cannot
// take; naming that token (and the member name of a duplicate) is what
// lets a user find the fault in a large text.
#include "error_text.h"

#include <algorithm>
#include <cstdio>

namespace vxcli {

namespace {

constexpr size_t SHOWN_MAX = 24; // bytes of a token quoted in a message
constexpr size_t NAME_MAX = 40;  // bytes of a member name

bool is_digit(unsigned char c) { return c >= '0' && c <= '9'; }
bool is_word(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0x80 || is_digit(c);
}
bool in_number(unsigned char c) {
    return is_digit(c) || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E';
}

// The run of bytes from `at` that satisfy `keep`, at most `max` of them,
// quoted, with "..." when it goes on.
template <typename Pred>
std::string quoted_run(std::string_view text, size_t at, size_t max, Pred keep) {
    size_t end = at + 1;
    while (end < text.size() && keep(static_cast<unsigned char>(text[end]))) ++end;
    const size_t n = end - at;
    return "'" + std::string(text.substr(at, n < max ? n : max)) + (n > max ? "...'" : "'");
}

// The token that starts at `at`, in words.
std::string describe(std::string_view text, size_t at) {
    if (at >= text.size() || text[at] == '\0') return "end of input";
    const unsigned char c = static_cast<unsigned char>(text[at]);
    if (c == '"' || c == '\'') return "string";
    if (is_digit(c) || ((c == '-' || c == '+' || c == '.') && at + 1 < text.size() &&
                        is_digit(static_cast<unsigned char>(text[at + 1]))))
        return "number " + quoted_run(text, at, SHOWN_MAX, in_number);
    if (c < 32 || c == 127) {
        char buf[16];
        std::snprintf(buf, sizeof buf, "byte 0x%02X", c);
        return buf;
    }
    if (is_word(c)) return quoted_run(text, at, SHOWN_MAX, is_word);
    return "'" + std::string(1, static_cast<char>(c)) + "'";
}

// The member name at `at`: a quoted name without its quotes, or a bare one.
std::string name_at(std::string_view text, size_t at) {
    if (at >= text.size()) return {};
    const char q = text[at];
    if (q != '"' && q != '\'') {
        size_t end = at;
        while (end < text.size() && is_word(static_cast<unsigned char>(text[end]))) ++end;
        return std::string(text.substr(at, std::min(end - at, NAME_MAX)));
    }
    size_t end = at + 1;
    while (end < text.size() && text[end] != q) end += text[end] == '\\' ? 2 : 1;
    const size_t n = std::min(end, text.size()) - at - 1;
    return std::string(text.substr(at + 1, std::min(n, NAME_MAX)));
}

// Is the token at `at` a scalar that opens the text?
bool opens_with_scalar(std::string_view text, size_t at) {
    if (at >= text.size() || text[at] == '{' || text[at] == '[') return false;
    for (size_t i = 0; i < at; ++i)
        if (text[i] != ' ' && text[i] != '\t' && text[i] != '\n' && text[i] != '\r' &&
            text[i] != '\f')
            return false;
    const unsigned char c = static_cast<unsigned char>(text[at]);
    return c == '"' || c == '\'' || c == '-' || is_word(c);
}

// Is `at` inside a double-quoted string?  Single-quoted strings take no
// \u escape in any mode.  Quotes are the only bytes that open and close
// strings, and a backslash inside one takes the byte after it along.
bool in_double_quotes(std::string_view text, size_t at) {
    char open = 0;
    for (size_t i = 0; i < at && i < text.size(); ++i) {
        const char c = text[i];
        if (!open) {
            if (c == '"' || c == '\'') open = c;
        } else if (c == '\\') {
            ++i;
        } else if (c == open) {
            open = 0;
        }
    }
    return open == '"';
}

} // namespace

std::string grammar_error_text(std::string_view text, uint32_t offset, std::string_view message,
                               bool scalar_top) {
    if (message == "scalar at top level" ||
        (message == "syntax error" && !scalar_top && opens_with_scalar(text, offset)))
        return "a scalar is not allowed as the whole document (use --scalar-top or a dialect)";
    if (message == "syntax error") return "syntax error: unexpected " + describe(text, offset);
    if (message == "duplicate key")
        return "duplicate member name \"" + name_at(text, offset) + "\"";
    if (message == "empty document") return "the document is empty";
    if (message == "memory exhausted") return "nesting too deep";
    return std::string(message);
}

bool escaped_surrogate_pair_at(std::string_view text, uint32_t offset) {
    // The unit of the escape "\\uXXXX" at `at`, or -1.
    auto unit_at = [&](size_t at) -> long {
        if (at + 6 > text.size() || text[at] != '\\' || text[at + 1] != 'u') return -1;
        long v = 0;
        for (size_t i = at + 2; i < at + 6; ++i) {
            const char c = text[i];
            const int d = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
            if (d < 0) return -1;
            v = v * 16 + d;
        }
        return v;
    };
    const long high = unit_at(offset), low = unit_at(size_t(offset) + 6);
    return high >= 0xD800 && high <= 0xDBFF && low >= 0xDC00 && low <= 0xDFFF &&
           in_double_quotes(text, offset);
}

std::string size_text(uint64_t bytes) {
    static constexpr struct {
        uint64_t unit;
        const char *suffix;
    } UNITS[] = {{1ull << 30, "G"}, {1ull << 20, "M"}, {1ull << 10, "K"}};
    for (const auto &u : UNITS)
        if (bytes % u.unit == 0) return std::to_string(bytes / u.unit) + u.suffix;
    return std::to_string(bytes);
}

} // namespace vxcli
