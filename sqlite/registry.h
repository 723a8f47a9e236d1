// registry.h -- the SQL functions of each family, as tables that the entry
// point registers.  Names never take one of SQLite's own json_* names:
// the standard functions are ones SQLite lacks (json_value, json_query,
// json_exists), the others carry a jsonb_, mysql_json_ or vxjson_ prefix.
#ifndef VXJSON_SQLITE_REGISTRY_H
#define VXJSON_SQLITE_REGISTRY_H

#include <span>

#include "sqlite_api.h"

namespace vxsql {

using sql_function = void (*)(sqlite3_context *, int, sqlite3_value **);

struct function_def {
    const char *name; // SQL name
    int min_args;     // registered for every count from min to max
    int max_args;     // -1: any number (SQLite's variadic form)
    sql_function call;
};

std::span<const function_def> common_functions();     // vxjson_check, vxjson_format
std::span<const function_def> pg_functions();         // jsonb_* over documents
std::span<const function_def> pg_path_functions();    // jsonb_* with a key or path
std::span<const function_def> mysql_functions();      // mysql_json_* over documents
std::span<const function_def> mysql_path_functions(); // mysql_json_* with paths
std::span<const function_def> standard_functions();   // json_value, json_query, json_exists

} // namespace vxsql

#endif
