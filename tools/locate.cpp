// A token-level model of the reader's grammar, run only on texts the
// library already refused, to say on which line and at which token.  It
// has to agree with the reader about positions, not about every corner of
// the language: the verdict is always the library's.
#include "locate.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace vxcli {

namespace {

enum class tk { end, lbrace, rbrace, lbrack, rbrack, comma, colon, string, number, keyword, name,
                other, unterminated };

struct token {
    tk kind;
    uint32_t line;
    std::string_view text;
};

inline bool is_digit(unsigned char c) { return c >= '0' && c <= '9'; }
inline bool is_blank(unsigned char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}
inline bool is_word_start(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0x80;
}
inline bool is_word(unsigned char c) { return is_word_start(c) || is_digit(c); }

bool same_word(std::string_view w, const char *kw, bool exact) {
    if (w.size() != std::strlen(kw)) return false;
    for (size_t i = 0; i < w.size(); ++i) {
        char c = w[i];
        if (!exact && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (c != kw[i]) return false;
    }
    return true;
}

class lexer {
public:
    lexer(std::string_view text, bool strict)
        : p_(text.data()), end_(text.data() + text.size()), strict_(strict) {}

    token next() {
        while (p_ < end_ && is_blank(static_cast<unsigned char>(*p_)))
            if (*p_++ == '\n') ++line_;
        const uint32_t line = line_;
        if (p_ == end_ || *p_ == '\0') return {tk::end, line, {}};
        const char *start = p_;
        const unsigned char c = static_cast<unsigned char>(*p_);
        tk kind = tk::other;
        switch (c) {
        case '{': kind = tk::lbrace; ++p_; break;
        case '}': kind = tk::rbrace; ++p_; break;
        case '[': kind = tk::lbrack; ++p_; break;
        case ']': kind = tk::rbrack; ++p_; break;
        case ',': kind = tk::comma; ++p_; break;
        case ':': kind = tk::colon; ++p_; break;
        case '"':
        case '\'': kind = quoted(static_cast<char>(c)); break;
        default:
            if (size_t n = number_length()) {
                kind = tk::number;
                p_ += n;
            } else if (is_word_start(c)) {
                while (p_ < end_ && is_word(static_cast<unsigned char>(*p_))) ++p_;
                kind = keyword(std::string_view(start, static_cast<size_t>(p_ - start)))
                           ? tk::keyword : tk::name;
            } else {
                ++p_;
            }
        }
        return {kind, line, std::string_view(start, static_cast<size_t>(p_ - start))};
    }

private:
    tk quoted(char quote) {
        for (++p_; p_ < end_; ++p_) {
            if (*p_ == '\\') {
                if (++p_ == end_) break;
            } else if (*p_ == quote) {
                ++p_;
                return tk::string;
            }
            if (*p_ == '\n') ++line_;
        }
        return tk::unterminated;
    }

    // [+-]? (digits ("." digits?)? | "." digits) ([eE][+-]?digits | [dDfF])?
    size_t number_length() const {
        const char *q = p_;
        if (*q == '+' || *q == '-') ++q;
        const char *digits = q;
        while (q < end_ && is_digit(static_cast<unsigned char>(*q))) ++q;
        bool any = q > digits;
        if (q < end_ && *q == '.') {
            const char *frac = q + 1;
            while (frac < end_ && is_digit(static_cast<unsigned char>(*frac))) ++frac;
            if (!any && frac == q + 1) return 0;
            any = true;
            q = frac;
        }
        if (!any) return 0;
        if (q < end_ && (*q == 'e' || *q == 'E')) {
            const char *r = q + 1;
            if (r < end_ && (*r == '+' || *r == '-')) ++r;
            if (r < end_ && is_digit(static_cast<unsigned char>(*r))) {
                while (r < end_ && is_digit(static_cast<unsigned char>(*r))) ++r;
                q = r;
            }
        } else if (q < end_ && (*q == 'd' || *q == 'D' || *q == 'f' || *q == 'F')) {
            ++q;
        }
        return static_cast<size_t>(q - p_);
    }

    bool keyword(std::string_view w) const {
        return same_word(w, "true", strict_) || same_word(w, "false", strict_) ||
               same_word(w, "null", strict_);
    }

    const char *p_;
    const char *end_;
    uint32_t line_ = 1;
    bool strict_;
};

std::string describe(const token &t) {
    switch (t.kind) {
    case tk::end: return "end of input";
    case tk::string: return "string";
    case tk::unterminated: return "unterminated string";
    case tk::number: return "number " + std::string(t.text.substr(0, 24));
    default: break;
    }
    const unsigned char c = static_cast<unsigned char>(t.text[0]);
    if (t.text.size() == 1 && (c < 32 || c == 127)) {
        char buf[16];
        std::snprintf(buf, sizeof buf, "byte 0x%02X", c);
        return buf;
    }
    std::string s = "'" + std::string(t.text.substr(0, 24));
    return s + (t.text.size() > 24 ? "...'" : "'");
}

// What the model waits for next.
enum class expect { value, first_element, element_after_comma, first_key, key_after_comma, colon,
                    next };

struct frame {
    bool object;
    std::vector<std::string_view> keys;  // raw spellings, kept only for unique keys
};

// Entries of the reader's stack that one level takes: about two for an
// array, four for an object member; the stack holds 10,000.
constexpr uint32_t ARRAY_UNITS = 2;
constexpr uint32_t OBJECT_UNITS = 4;
constexpr uint32_t STACK_LIMIT = 10000;

class grammar_model {
public:
    explicit grammar_model(const grammar_rules &rules) : rules_(rules) {}

    // False when the token cannot be taken; spot_ says why.
    bool take(const token &t) {
        switch (state_) {
        case expect::value:
        case expect::first_element:
        case expect::element_after_comma: return value(t);
        case expect::first_key:
        case expect::key_after_comma: return key(t);
        case expect::colon:
            if (t.kind != tk::colon) return fail(t, "syntax error: expected ':', found " + describe(t));
            state_ = expect::value;
            return true;
        case expect::next: return next(t);
        }
        return true;
    }

    const error_spot &spot() const { return spot_; }

    // After the whole text: only depth is left to blame.
    void finish() {
        if (max_units_ >= STACK_LIMIT - 2 * OBJECT_UNITS && !spot_.found) {
            spot_ = {true, deepest_line_, "nesting too deep"};
        }
    }

private:
    bool fail(const token &t, std::string message) {
        spot_ = {true, t.line, std::move(message)};
        return false;
    }
    bool unexpected(const token &t) {
        return fail(t, "syntax error: unexpected " + describe(t));
    }

    bool value(const token &t) {
        if (t.kind == tk::rbrack && state_ != expect::value) {
            if (state_ == expect::element_after_comma && rules_.strict)
                return fail(t, "syntax error: trailing comma (strict reading)");
            return close(t);
        }
        if (t.kind == tk::lbrace || t.kind == tk::lbrack) {
            const bool object = t.kind == tk::lbrace;
            stack_.push_back({object, {}});
            units_ += object ? OBJECT_UNITS : ARRAY_UNITS;
            if (units_ > max_units_) {
                max_units_ = units_;
                deepest_line_ = t.line;
            }
            state_ = object ? expect::first_key : expect::first_element;
            return true;
        }
        if (t.kind == tk::string || t.kind == tk::number || t.kind == tk::keyword) {
            if (stack_.empty() && !rules_.scalar_top)
                return fail(t, "a scalar is not allowed as the whole document "
                               "(use --scalar-top or a dialect)");
            state_ = expect::next;
            return true;
        }
        return unexpected(t);
    }

    bool key(const token &t) {
        if (t.kind == tk::rbrace) {
            if (state_ == expect::key_after_comma && rules_.strict)
                return fail(t, "syntax error: trailing comma (strict reading)");
            return close(t);
        }
        std::string_view name = t.text;
        if (t.kind == tk::string) {
            name = name.substr(1, name.size() - 2);
        } else if (t.kind == tk::keyword) {
            if (rules_.strict)
                return fail(t, "syntax error: " + describe(t) + " as a member name (strict reading)");
        } else if (t.kind != tk::name) {
            return fail(t, "syntax error: expected a member name, found " + describe(t));
        }
        if (rules_.unique_keys) {
            std::vector<std::string_view> &keys = stack_.back().keys;
            for (std::string_view k : keys)
                if (k == name)
                    return fail(t, "duplicate member name \"" + std::string(name.substr(0, 40)) + "\"");
            keys.push_back(name);
        }
        state_ = expect::colon;
        return true;
    }

    bool next(const token &t) {
        if (stack_.empty()) {
            if (t.kind == tk::end) return true;
            return fail(t, "syntax error: unexpected " + describe(t) + " after the document");
        }
        const bool object = stack_.back().object;
        if (t.kind == tk::comma) {
            state_ = object ? expect::key_after_comma : expect::element_after_comma;
            return true;
        }
        if (t.kind == (object ? tk::rbrace : tk::rbrack)) return close(t);
        return unexpected(t);
    }

    bool close(const token &) {
        units_ -= stack_.back().object ? OBJECT_UNITS : ARRAY_UNITS;
        stack_.pop_back();
        state_ = expect::next;
        return true;
    }

    grammar_rules rules_;
    expect state_ = expect::value;
    std::vector<frame> stack_;
    uint32_t units_ = 0;
    uint32_t max_units_ = 0;
    uint32_t deepest_line_ = 1;
    error_spot spot_;
};

// The strict reader refuses a leading '+', a '.' at either end and a
// leading zero before another digit.
bool strict_number_bad(std::string_view n) {
    if (n[0] == '+') return true;
    if (n[0] == '-') n.remove_prefix(1);
    if (n.empty() || n.front() == '.' || n.back() == '.') return true;
    return n.size() > 1 && n[0] == '0' && n[1] != '.';
}

bool number_overflows(std::string_view n) {
    std::string text(n);
    return std::isinf(std::strtod(text.c_str(), nullptr));
}

}  // namespace

error_spot locate_syntax_error(std::string_view text, const grammar_rules &rules) {
    lexer lex(text, rules.strict);
    grammar_model model(rules);
    for (;;) {
        const token t = lex.next();
        if (!model.take(t) || t.kind == tk::end) break;
    }
    model.finish();
    return model.spot();
}

error_spot locate_number_error(std::string_view text, bool strict, bool overflow) {
    lexer lex(text, strict);
    for (token t = lex.next(); t.kind != tk::end; t = lex.next()) {
        if (t.kind != tk::number) continue;
        if (overflow ? number_overflows(t.text) : strict && strict_number_bad(t.text))
            return {true, t.line, {}};
    }
    return {};
}

}  // namespace vxcli
