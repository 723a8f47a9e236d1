// clauses.h -- the clauses of json_value, json_query and json_exists,
// written as short strings in their own arguments:
//   returning   'varchar', 'varchar(100)', 'number', 'number(10,2)', 'date',
//               'timestamp'
//   wrapper     'without wrapper', 'with wrapper', 'with conditional wrapper'
//               (each also with 'array' before 'wrapper', and 'unconditional')
//   on empty    'null on empty', 'error on empty', 'default on empty'
//   on error    'null on error', 'error on error', 'empty on error',
//               'empty array on error', 'default on error'; for json_exists
//               'true on error', 'false on error', 'unknown on error'
// Words are matched without regard to case and may be spaced freely.  A
// SQL NULL or empty clause is left out (the function's default).
#ifndef VXJSON_SQLITE_CLAUSES_H
#define VXJSON_SQLITE_CLAUSES_H

#include <cstdint>
#include <string_view>

namespace vxsql {

// What a json_value result is given back as.
enum class returning_kind : uint8_t { text, number, date, timestamp };

struct returning_clause {
    returning_kind kind;
    uint32_t ret_type;  // JPATH_RET_*
    uint32_t ret_len;   // longest text; precision of a number; datetime kind
    uint32_t ret_scale; // scale of a number
};

// ON EMPTY / ON ERROR behaviours.  `value` is the library's on_empty or
// on_error code; `use_default` says the DEFAULT argument stands in.
struct on_clause {
    uint32_t value;
    bool use_default;
    int8_t exists_result; // json_exists: 1 true, 0 false, -1 unknown, -2 error
};

// The defaults of a function whose clause argument is left out.
returning_clause default_returning();
on_clause default_on_empty();
on_clause default_on_error();
on_clause default_exists_on_error();

// Parsers: true with the clause, or false with a message naming what the
// argument may hold.
bool parse_returning(std::string_view text, returning_clause *out, const char **why);
bool parse_wrapper(std::string_view text, uint32_t *out, const char **why);
bool parse_on_empty(std::string_view text, on_clause *out, const char **why);
bool parse_on_error(std::string_view text, on_clause *out, const char **why);
bool parse_exists_on_error(std::string_view text, on_clause *out, const char **why);

} // namespace vxsql

#endif
