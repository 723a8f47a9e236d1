// Reading documents in the reader's tests: a context with chosen switches
// over its own heap and counting allocator, a plain dump of a read tree,
// and the case table that the tree reader and the check grammar share.
#ifndef VXJSON_TEST_READ_CASES_H
#define VXJSON_TEST_READ_CASES_H

#include <cstdio>
#include <string>
#include <vector>

#include "doc_env.h"
#include "vx_ini.h"

// Switches of a read; the defaults are the standard dialect, lax.
struct ReadSwitches {
    int32_t compat = JLPCA_COMPAT_STANDARD;
    int32_t strict = 0;
    int32_t scalar_top = 0;
    int32_t unique_keys = 0;
    int32_t escape_mode = JLPCA_ESCAPE_DECODE;
    uint8_t number_mode = 0;
};

inline ReadSwitches lax() { return {}; }
inline ReadSwitches strict() {
    ReadSwitches s;
    s.strict = 1;
    return s;
}
inline ReadSwitches dialect(int32_t compat) {
    ReadSwitches s;
    s.compat = compat;
    s.strict = 1;
    s.scalar_top = 1;
    return s;
}
inline ReadSwitches with_scalar_top(ReadSwitches s) {
    s.scalar_top = 1;
    return s;
}
inline ReadSwitches unique(ReadSwitches s) {
    s.unique_keys = 1;
    return s;
}

// Sets configuration value 635 for the life of the object.
struct CharsetScope {
    explicit CharsetScope(int32_t value) { ini_set_value(0, VX_INI_CHARSET, value); }
    ~CharsetScope() { ini_reset_value(0, VX_INI_CHARSET); }
    CharsetScope(const CharsetScope &) = delete;
    CharsetScope &operator=(const CharsetScope &) = delete;
};

// A document environment (doc_env.h) read with chosen switches.  `text`
// keeps a text alive for callers that scan it token by token.
struct ReadEnv : DocEnv {
    std::string text;

    explicit ReadEnv(const ReadSwitches &sw = {}) : DocEnv(sw.compat, sw.strict) {
        jlpca_init(nullptr, ctx.get(), heap, &alloc, sw.escape_mode, sw.strict, sw.unique_keys,
                   sw.compat);
        ctx->scalar_top = sw.scalar_top;
        ctx->number_mode = sw.number_mode;
    }
    int32_t read(const std::string &t, json_node **root) {
        text = t;
        return DocEnv::read(text, root);
    }
    int32_t check(const std::string &t) {
        text = t;
        return DocEnv::check(text);
    }
};

// A plain text form of a read tree: strings quoted with bytes outside
// printable ASCII (and '"' and '\') as \xHH, numbers as read, arrays
// through their pointer arrays.
inline void dump_to(const json_node *n, std::string &out) {
    char buf[32];
    auto text = [&](const char *s, uint32_t len) {
        out += '"';
        for (uint32_t i = 0; i < len; i++) {
            unsigned char c = static_cast<unsigned char>(s[i]);
            if (c < 0x20 || c >= 0x7F || c == '"' || c == '\\') {
                std::snprintf(buf, sizeof buf, "\\x%02X", c);
                out += buf;
            } else {
                out += char(c);
            }
        }
        out += '"';
    };
    switch (n->type) {
    case JSON_OBJECT:
        out += '{';
        for (const json_keyval *kv = n->first_member; kv; kv = kv->next) {
            if (kv != n->first_member) out += ',';
            text(kv->name, kv->name_len);
            out += ':';
            dump_to(kv->value, out);
        }
        out += '}';
        break;
    case JSON_ARRAY:
        out += '[';
        for (uint32_t i = 0; i < n->count; i++) {
            if (i) out += ',';
            dump_to(n->items[i], out);
        }
        out += ']';
        break;
    case JSON_INTEGER:
        out += std::to_string(n->ival);
        break;
    case JSON_DECIMAL: out.append(n->str ? n->str : "", n->str_len); break;
    case JSON_STRING: text(n->str, n->str_len); break;
    case JSON_BOOLEAN: out += n->bval ? "true" : "false"; break;
    case JSON_NULL: out += "null"; break;
    default: out += '?';
    }
}

inline std::string dump(const json_node *n) {
    std::string out;
    if (n) dump_to(n, out);
    return out;
}

// One document, the switches it is read with, and what json_flex gives:
// its code and, on success, the dump of the tree.  jcheck_flex must accept
// exactly the rows json_flex accepts, unless `check_rc` says otherwise.
struct ReadCase {
    const char *id;
    std::string text;
    ReadSwitches sw;
    int32_t rc;
    const char *tree;
    int32_t check_rc = 1; // 1: 0 when rc is 0, else -3105
};

inline int32_t expected_check(const ReadCase &c) {
    if (c.check_rc != 1) return c.check_rc;
    return c.rc == 0 ? 0 : VXJSON_ERR_INVALID_JSON;
}

inline constexpr int32_t BAD = VXJSON_ERR_INVALID_JSON;

inline const std::vector<ReadCase> &read_cases() {
    static const std::vector<ReadCase> rows = {
        // Shapes.
        {"object_two_members", R"({"a":1,"b":[true,null,"x"]})", lax(), 0,
         R"({"a":1,"b":[true,null,"x"]})"},
        {"empty_object", "{}", lax(), 0, "{}"},
        {"empty_array", "[]", lax(), 0, "[]"},
        {"nested_empty", "[[],[1]]", lax(), 0, "[[],[1]]"},
        {"blanks_everywhere", " \t\r\n\f[ 1 ,\n2 ] \n", lax(), 0, "[1,2]"},
        {"empty_key", R"({"":""})", strict(), 0, R"({"":""})"},
        // Trailing commas and lone commas.
        {"trailing_comma_array_lax", "[1,2,]", lax(), 0, "[1,2]"},
        {"trailing_comma_array_strict", "[1,2,]", strict(), BAD, nullptr},
        {"trailing_comma_object_lax", R"({"a":1,})", lax(), 0, R"({"a":1})"},
        {"trailing_comma_object_strict", R"({"a":1,})", strict(), BAD, nullptr},
        {"comma_alone_array", "[,]", lax(), BAD, nullptr},
        {"comma_alone_object", "{,}", lax(), BAD, nullptr},
        {"two_trailing_commas", "[1,,]", lax(), BAD, nullptr},
        // Names.
        {"unquoted_name_lax", "{a:TRUE}", lax(), 0, R"({"a":true})"},
        {"unquoted_name_strict", "{a:1}", strict(), BAD, nullptr},
        {"keyword_name_lax", "{true:1,False:2,NULL:3}", lax(), 0,
         R"({"true":1,"false":2,"null":3})"},
        {"keyword_name_strict", "{true:1}", strict(), BAD, nullptr},
        {"single_quoted_name_lax", "{'a':'b'}", lax(), 0, R"({"a":"b"})"},
        {"single_quote_strict", "['a']", strict(), BAD, nullptr},
        {"name_as_value", "[abc]", lax(), BAD, nullptr},
        {"duplicate_names_kept", R"({"a":1,"a":2})", lax(), 0, R"({"a":1,"a":2})"},
        {"duplicate_names_unique", R"({"a":1,"a":2})", unique(lax()), BAD, nullptr},
        {"same_name_other_objects_unique", R"({"a":{"a":1},"b":{"a":2}})", unique(lax()), 0,
         R"({"a":{"a":1},"b":{"a":2}})"},
        // Top level.
        {"scalar_top_standard", R"("x")", lax(), BAD, nullptr},
        {"number_top_standard", "42", strict(), BAD, nullptr},
        {"scalar_top_allowed", "42", with_scalar_top(lax()), 0, "42",
         BAD}, // the check grammar asks only for a dialect
        {"scalar_top_pg", R"("x")", dialect(JLPCA_COMPAT_PG), 0, R"("x")"},
        {"scalar_top_mysql", "null", dialect(JLPCA_COMPAT_MYSQL), 0, "null"},
        {"two_documents", "[1] [2]", lax(), BAD, nullptr},
        {"nul_ends_input", std::string("[1]\0garbage[", 12), strict(), 0, "[1]"},
        {"nul_inside_array", std::string("[1\0]", 4), strict(), BAD, nullptr},
        {"blank_only", "  \n ", lax(), BAD, nullptr},
        // Numbers.
        {"numbers_lax", "[+1,007,-007,000,0.5,.5,1.,-.5]", lax(), 0,
         "[1,7,-7,0,0.5,.5,1.,-.5]"},
        {"plus_strict", "[+1]", strict(), BAD, nullptr},
        {"leading_zero_strict", "[007]", strict(), BAD, nullptr},
        {"dot_first_strict", "[.5]", strict(), BAD, nullptr},
        {"dot_last_strict", "[1.]", strict(), BAD, nullptr},
        {"int_edges", "[2147483647,2147483648,-2147483648,-2147483649]", strict(), 0,
         "[2147483647,2147483648,-2147483648,-2147483649]"},
        {"int64_edges", "[999999999999999999,-99999999999999999,1000000000000000000]", strict(),
         0, "[999999999999999999,-99999999999999999,1000000000000000000]"},
        {"reals_keep_spelling", "[1e5,5d,2.5E-3,1.5f]", lax(), 0, "[1e5,5d,2.5E-3,1.5f]"},
        {"overflow_standard", "[1e400]", strict(), 0, "[1e400]"},
        {"overflow_mysql", "[1e400]", dialect(JLPCA_COMPAT_MYSQL), VXJSON_ERR_DOUBLE_OVERFLOW,
         nullptr},
        {"long_integer_overflow_mysql", "[1" + std::string(400, '0') + "]",
         dialect(JLPCA_COMPAT_MYSQL), VXJSON_ERR_DOUBLE_OVERFLOW, nullptr},
        {"near_max_double_mysql", "[1.7976931348623157e308]", dialect(JLPCA_COMPAT_MYSQL), 0,
         "[1.7976931348623157e308]"},
        {"past_max_double_mysql", "[1.7976931348623159e308]", dialect(JLPCA_COMPAT_MYSQL),
         VXJSON_ERR_DOUBLE_OVERFLOW, nullptr},
        {"e_without_digits", "[5e]", lax(), BAD, nullptr},
        {"lone_minus", "[-]", lax(), BAD, nullptr},
        // Strings.
        {"escapes_decoded", R"(["\"\\\/\b\f\n\r\t"])", strict(), 0,
         R"(["\x22\x5C/\x08\x0C\x0A\x0D\x09"])"},
        {"unicode_escape", R"(["\u0041\u00e9"])", strict(), 0, R"(["A\xC3\xA9"])"},
        {"nul_escape_truncates", R"(["ab\u0000cd"])", strict(), 0, R"(["ab"])"},
        {"raw_nul_truncates", std::string("[\"ab\0cd\"]", 9), strict(), 0, R"(["ab"])"},
        {"raw_control_kept", "[\"a\x01\x1f\"]", strict(), 0, R"(["a\x01\x1F"])"},
        {"raw_tab", "[\"a\tb\"]", strict(), BAD, nullptr},
        {"bad_escape", R"(["\x"])", strict(), BAD, nullptr},
        {"lone_surrogate", R"(["\ud83d"])", strict(), BAD, nullptr},
        {"surrogate_pair_unit_by_unit", R"(["\ud83d\ude00"])", strict(), BAD, nullptr},
        {"unterminated_string", R"(["abc)", strict(), BAD, nullptr},
        {"unterminated_sq_string", "['abc", lax(), BAD, nullptr},
        {"sq_escaped_quote", R"(['it\'s'])", lax(), BAD, nullptr},
        {"sq_escaped_dq", R"(['a\"b'])", lax(), 0, R"(["a\x22b"])"},
        // Syntax.
        {"missing_colon", R"({"a" 1})", lax(), BAD, nullptr},
        {"missing_value", R"({"a":})", lax(), BAD, nullptr},
        {"unclosed_array", "[1,2", lax(), BAD, nullptr},
        {"unbalanced", "[1}", lax(), BAD, nullptr},
        {"parenthesis", "[(1)]", lax(), BAD, nullptr},
    };
    return rows;
}

#endif
