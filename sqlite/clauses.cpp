// Reading the clause strings.  A clause is a handful of words, perhaps with
// numbers in parentheses; it is split into lower-case tokens first.
#include "clauses.h"

#include <array>
#include <charconv>

#include "vxjson.h"
#include "xdec.h"

namespace vxsql {

namespace {

// Results of a text RETURNING type without a length: SQLite texts have
// no length of their own, so nothing is too long.
constexpr uint32_t TEXT_LEN_MAX = 0x7fffffff;
// The datetime kind (ret_len) that asks for a date; others a timestamp.
constexpr uint32_t DATETIME_KIND_DATE = 3;
// No clause needs more tokens than this: with conditional array wrapper,
// number ( 10 , 2 ).
constexpr size_t TOKENS_MAX = 8;

struct tokens {
    std::array<std::array<char, 16>, TOKENS_MAX> text{}; // lower-case, NUL-terminated
    size_t count = 0;
    size_t at = 0; // the next one to read

    bool next_is(std::string_view word) const {
        return at < count && word == std::string_view(text[at].data());
    }
    bool take(std::string_view word) {
        if (!next_is(word)) return false;
        at++;
        return true;
    }
    bool take_number(uint32_t *out) {
        if (at >= count) return false;
        std::string_view t(text[at].data());
        auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), *out);
        if (ec != std::errc() || end != t.data() + t.size()) return false;
        at++;
        return true;
    }
    bool done() const { return at == count; }
};

bool is_word_char(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// Split text into words and the characters ( , ); false for anything else,
// too many tokens or a token too long to be a clause word.
bool tokenize(std::string_view text, tokens *t) {
    size_t i = 0;
    while (i < text.size()) {
        const char c = text[i];
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            i++;
            continue;
        }
        if (t->count == TOKENS_MAX) return false;
        auto &out = t->text[t->count++];
        if (c == '(' || c == ')' || c == ',') {
            out[0] = c;
            i++;
            continue;
        }
        size_t n = 0;
        for (; i < text.size() && is_word_char(text[i]); i++) {
            if (n + 1 == out.size()) return false;
            const char w = text[i];
            out[n++] = (w >= 'A' && w <= 'Z') ? char(w - 'A' + 'a') : w;
        }
        if (n == 0) return false;
    }
    return true;
}

// "( n )" or "( n , m )" after a type name; absent parts stay as given.
bool take_sizes(tokens &t, uint32_t *first, uint32_t *second, bool second_allowed) {
    if (!t.take("(")) return true;
    if (!t.take_number(first)) return false;
    if (second_allowed && t.take(",") && !t.take_number(second)) return false;
    return t.take(")");
}

// "on <what>" closing an ON clause.
bool take_on(tokens &t, std::string_view what) { return t.take("on") && t.take(what) && t.done(); }

} // namespace

returning_clause default_returning() {
    return {returning_kind::text, JPATH_RET_CHAR, TEXT_LEN_MAX, 0};
}
on_clause default_on_empty() { return {JPATH_ON_EMPTY_AS_ERROR, false, 0}; }
on_clause default_on_error() { return {JPATH_ON_ERROR_NULL, false, 0}; }
on_clause default_exists_on_error() { return {JPATH_ON_ERROR_NULL, false, 0}; }

bool parse_returning(std::string_view text, returning_clause *out, const char **why) {
    *why = "RETURNING is varchar[(n)], number[(p[,s])], date or timestamp";
    tokens t;
    if (!tokenize(text, &t)) return false;
    returning_clause r = default_returning();
    if (t.take("varchar") || t.take("varchar2") || t.take("char") || t.take("text") ||
        t.take("clob")) {
        if (!take_sizes(t, &r.ret_len, nullptr, false) || r.ret_len == 0) return false;
    } else if (t.take("number") || t.take("numeric") || t.take("decimal") || t.take("dec")) {
        r = {returning_kind::number, JPATH_RET_NUMBER, 0, 0};
        if (!take_sizes(t, &r.ret_len, &r.ret_scale, true)) return false;
        if (r.ret_len > XDEC_MAX_PREC || r.ret_scale > r.ret_len) return false;
        if (t.at > 1 && r.ret_len == 0) return false;
    } else if (t.take("date")) {
        r = {returning_kind::date, JPATH_RET_CLASS_2, DATETIME_KIND_DATE, 0};
    } else if (t.take("timestamp") || t.take("datetime")) {
        r = {returning_kind::timestamp, JPATH_RET_CLASS_2, 0, 0};
    } else {
        return false;
    }
    if (!t.done()) return false;
    *out = r;
    return true;
}

bool parse_wrapper(std::string_view text, uint32_t *out, const char **why) {
    *why = "the wrapper is 'without wrapper', 'with wrapper' or 'with conditional wrapper'";
    tokens t;
    if (!tokenize(text, &t)) return false;
    uint32_t w;
    if (t.take("without")) {
        w = JPATH_WRAPPER_WITHOUT;
    } else if (t.take("with")) {
        w = t.take("conditional") ? JPATH_WRAPPER_CONDITIONAL : JPATH_WRAPPER_WITH;
        if (w == JPATH_WRAPPER_WITH) (void)t.take("unconditional");
    } else {
        return false;
    }
    (void)t.take("array");
    if (!t.take("wrapper") || !t.done()) return false;
    *out = w;
    return true;
}

bool parse_on_empty(std::string_view text, on_clause *out, const char **why) {
    *why = "ON EMPTY is 'null on empty', 'error on empty' or 'default on empty'";
    tokens t;
    if (!tokenize(text, &t)) return false;
    on_clause c = default_on_empty();
    if (t.take("null")) c.value = JPATH_ON_EMPTY_NULL;
    else if (t.take("error")) c.value = JPATH_ON_EMPTY_ERROR;
    // No match comes back as an error, which the DEFAULT argument replaces.
    else if (t.take("default")) c = {JPATH_ON_EMPTY_ERROR, true, 0};
    else return false;
    if (!take_on(t, "empty")) return false;
    *out = c;
    return true;
}

bool parse_on_error(std::string_view text, on_clause *out, const char **why) {
    *why = "ON ERROR is 'null on error', 'error on error', 'empty [array] on error' or "
           "'default on error'";
    tokens t;
    if (!tokenize(text, &t)) return false;
    on_clause c = default_on_error();
    if (t.take("null")) c.value = JPATH_ON_ERROR_NULL;
    else if (t.take("error")) c.value = JPATH_ON_ERROR_ERROR;
    else if (t.take("empty")) c.value = JPATH_ON_ERROR_EMPTY, (void)t.take("array");
    else if (t.take("default")) c = {JPATH_ON_ERROR_DEFAULT, true, 0};
    else return false;
    if (!take_on(t, "error")) return false;
    *out = c;
    return true;
}

bool parse_exists_on_error(std::string_view text, on_clause *out, const char **why) {
    *why = "ON ERROR is 'true on error', 'false on error', 'unknown on error' or "
           "'error on error'";
    tokens t;
    if (!tokenize(text, &t)) return false;
    on_clause c = default_exists_on_error();
    if (t.take("true")) c.exists_result = 1;
    else if (t.take("false")) c.exists_result = 0;
    else if (t.take("unknown")) c.exists_result = -1;
    else if (t.take("error")) c.exists_result = -2;
    else return false;
    if (!take_on(t, "error")) return false;
    *out = c;
    return true;
}

} // namespace vxsql
