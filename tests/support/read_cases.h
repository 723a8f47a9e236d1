// The case table that the tree reader and the check grammar share: one
// document, the switches it is read with, what json_flex gives (its code
// and, on success, the dump of the tree) and what jcheck_flex gives.
#ifndef VXJSON_TEST_READ_CASES_H
#define VXJSON_TEST_READ_CASES_H

#include <string>
#include <vector>

#include "vx_env.h"

// jcheck_flex accepts exactly the rows json_flex accepts, unless
// `check_rc` says otherwise.
struct ReadCase {
    const char *id;
    std::string text;
    ReadSwitches sw;
    int32_t rc;
    const char *tree = nullptr; // "=": the text itself
    int32_t check_rc = 1;       // 1: 0 when rc is 0, else -3105
};

inline int32_t expected_check(const ReadCase &c) {
    if (c.check_rc != 1) return c.check_rc;
    return c.rc == 0 ? 0 : VXJSON_ERR_INVALID_JSON;
}

inline constexpr int32_t BAD = VXJSON_ERR_INVALID_JSON;

inline std::string nested_arrays(int depth) {
    return std::string(size_t(depth), '[') + "1" + std::string(size_t(depth), ']');
}
inline std::string nested_objects(int depth) {
    std::string s;
    for (int i = 0; i < depth; i++) s += R"({"a":)";
    return s + "1" + std::string(size_t(depth), '}');
}
inline constexpr int32_t TOO_BIG = VXJSON_ERR_DOUBLE_OVERFLOW;

inline const std::vector<ReadCase> &read_cases() {
    const ReadSwitches MYSQL = dialect(JLPCA_COMPAT_MYSQL);
    const ReadSwitches SORTED{.strict = 1, .escape_mode = JLPCA_ESCAPE_SORTED};
    static const std::vector<ReadCase> rows = {
        // Shapes.
        {"object_two_members", R"({"a":1,"b":[true,null,"x"]})", lax(), 0, "="},
        {"empty_object", "{}", lax(), 0, "="},
        {"empty_array", "[]", lax(), 0, "="},
        {"nested_empty", "[[],[1]]", lax(), 0, "="},
        {"blanks_everywhere", " \t\r\n\f[ 1 ,\n2 ] \n", lax(), 0, "[1,2]"},
        {"empty_key", R"({"":""})", strict(), 0, "="},
        // Trailing commas and lone commas.
        {"trailing_comma_array_lax", "[1,2,]", lax(), 0, "[1,2]"},
        {"trailing_comma_array_strict", "[1,2,]", strict(), BAD},
        {"trailing_comma_object_lax", R"({"a":1,})", lax(), 0, R"({"a":1})"},
        {"trailing_comma_object_strict", R"({"a":1,})", strict(), BAD},
        {"comma_alone_array", "[,]", lax(), BAD},
        {"comma_alone_object", "{,}", lax(), BAD},
        {"two_trailing_commas", "[1,,]", lax(), BAD},
        // Names.
        {"unquoted_name_lax", "{a:TRUE}", lax(), 0, R"({"a":true})"},
        {"unquoted_name_strict", "{a:1}", strict(), BAD},
        {"keyword_name_lax", "{true:1,False:2,NULL:3}", lax(), 0,
         R"({"true":1,"false":2,"null":3})"},
        {"keyword_name_strict", "{true:1}", strict(), BAD},
        {"keyword_case_strict", "[True]", strict(), BAD},
        {"single_quoted_name_lax", "{'a':'b'}", lax(), 0, R"({"a":"b"})"},
        {"single_quote_strict", "['a']", strict(), BAD},
        {"name_as_value", "[abc]", lax(), BAD},
        {"duplicate_names_kept", R"({"a":1,"a":2})", lax(), 0, "="},
        {"duplicate_names_unique", R"({"a":1,"a":2})", unique(lax()), BAD},
        {"same_name_other_objects_unique", R"({"a":{"a":1},"b":{"a":2}})", unique(lax()), 0, "="},
        {"duplicate_nested_unique", R"({"a":{"x":1,"x":2}})", unique(strict()), BAD},
        {"sorted_last_wins_in_place", R"({"b":1,"a":2,"b":3})", SORTED, 0, R"({"a":2,"b":3})"},
        {"sorted_by_length_then_bytes", R"({"bb":1,"a":2,"ab":3})", SORTED, 0,
         R"({"a":2,"ab":3,"bb":1})"},
        // Top level.
        {"scalar_top_standard", R"("x")", lax(), BAD},
        {"number_top_standard", "42", strict(), BAD},
        {"scalar_top_allowed", "42", with_scalar_top(lax()), 0, "=",
         BAD}, // the check grammar asks only for a dialect
        {"scalar_top_pg", R"("x")", dialect(JLPCA_COMPAT_PG), 0, "="},
        {"scalar_top_mysql", "null", MYSQL, 0, "="},
        {"two_documents", "[1] [2]", lax(), BAD},
        {"nul_ends_input", std::string("[1]\0garbage[", 12), strict(), 0, "[1]"},
        {"nul_inside_array", std::string("[1\0]", 4), strict(), BAD},
        {"blank_only", "  \n ", lax(), BAD},
        // The parser stack holds 10,000 entries: two per array level and
        // four per object level, in both grammars.
        {"nesting_4000_arrays", nested_arrays(4000), strict(), 0, "="},
        {"nesting_4997_arrays", nested_arrays(4997), strict(), 0, "="},
        {"nesting_4998_arrays", nested_arrays(4998), strict(), BAD},
        {"nesting_5000_arrays", nested_arrays(5000), strict(), BAD},
        {"nesting_2499_objects", nested_objects(2499), strict(), 0, "="},
        {"nesting_2500_objects", nested_objects(2500), strict(), BAD},
        // Numbers.
        {"numbers_lax", "[+1,007,-007,000,0.5,.5,1.,-.5]", lax(), 0, "[1,7,-7,0,0.5,.5,1.,-.5]"},
        {"plus_strict", "[+1]", strict(), BAD},
        {"leading_zero_strict", "[007]", strict(), BAD},
        {"dot_first_strict", "[.5]", strict(), BAD},
        {"dot_last_strict", "[1.]", strict(), BAD},
        {"int_edges", "[2147483647,2147483648,-2147483648,-2147483649]", strict(), 0, "="},
        {"int64_edges", "[999999999999999999,-99999999999999999,1000000000000000000]", strict(), 0,
         "="},
        {"reals_keep_spelling", "[1e5,5d,2.5E-3,1.5f]", lax(), 0, "="},
        {"overflow_standard", "[1e400]", strict(), 0, "="},
        {"overflow_mysql", "[1e400]", MYSQL, TOO_BIG},
        {"long_integer_overflow_mysql", "[1" + std::string(400, '0') + "]", MYSQL, TOO_BIG},
        {"near_max_double_mysql", "[1.7976931348623157e308]", MYSQL, 0, "="},
        {"past_max_double_mysql", "[1.7976931348623159e308]", MYSQL, TOO_BIG},
        {"rfc_numbers", R"(["\u00e9", -0, 0.0, 1E+2, 1e-2, 12.5e3])", strict(), 0,
         R"(["\xC3\xA9",0,0.0,1E+2,1e-2,12.5e3])"},
        {"number_mode_overflow", "[1.5e999]", {.number_mode = 2}, TOO_BIG},
        {"number_mode_in_range", "[1.5e99]", {.number_mode = 2}, 0, "="},
        {"e_without_digits", "[5e]", lax(), BAD},
        {"lone_minus", "[-]", lax(), BAD},
        // Strings.
        {"escapes_decoded", R"(["\"\\\/\b\f\n\r\t"])", strict(), 0,
         R"(["\x22\x5C/\x08\x0C\x0A\x0D\x09"])"},
        {"unicode_escape", R"(["\u0041\u00e9"])", strict(), 0, R"(["A\xC3\xA9"])"},
        {"nul_escape_truncates", R"(["ab\u0000cd"])", strict(), 0, R"(["ab"])"},
        {"raw_nul_truncates", std::string("[\"ab\0cd\"]", 9), strict(), 0, R"(["ab"])"},
        {"raw_control_kept", "[\"a\x01\x1f\"]", strict(), 0, R"(["a\x01\x1F"])"},
        {"raw_tab", "[\"a\tb\"]", strict(), BAD},
        {"bad_escape", R"(["\x"])", strict(), BAD},
        {"lone_surrogate", R"(["\ud83d"])", strict(), BAD},
        {"surrogate_pair_unit_by_unit", R"(["\ud83d\ude00"])", strict(), BAD},
        {"unterminated_string", R"(["abc)", strict(), BAD},
        {"unterminated_sq_string", "['abc", lax(), BAD},
        {"sq_escaped_quote", R"(['it\'s'])", lax(), BAD},
        {"sq_escaped_dq", R"(['a\"b'])", lax(), 0, R"(["a\x22b"])"},
        // Syntax.
        {"missing_colon", R"({"a" 1})", lax(), BAD},
        {"missing_value", R"({"a":})", lax(), BAD},
        {"unclosed_array", "[1,2", lax(), BAD},
        {"unbalanced", "[1}", lax(), BAD},
        {"parenthesis", "[(1)]", lax(), BAD},
    };
    return rows;
}

#endif
