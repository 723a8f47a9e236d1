// The SQL-standard functions SQLite lacks: json_value, json_query and
// json_exists.
#include "registry.h"

namespace vxsql {

std::span<const function_def> standard_functions() { return {}; }

}  // namespace vxsql
