/*
 * report_sites.h -- the fixed source unit and line of every place that
 * reports a failure to the server's error hook, grouped by source unit and
 * by the folder of the library that holds the call site.
 */
#ifndef VXJSON_REPORT_SITES_H
#define VXJSON_REPORT_SITES_H

#include <cstdint>

namespace vxjson::site {

// ---- json/json and json_flex: value tree and text (json/tree) ----

// ---- json/jlpca and json_flex: context, scanner, grammars (json/read) ----

// ---- json/jpath: compiled paths, path scanner and grammar (json/path) ----

// ---- json/jpath: path evaluation (json/eval) ----
inline constexpr int32_t QUERY_STEP = 1302;            // json_query: a step evaluator failed
inline constexpr int32_t QUERY_VIRTUAL_ITEMS = 1247;   // json_virtual_array_create: its item vector
inline constexpr int32_t QUERY_MYSQL_SUBSCRIPT = 1561; // jpath_filter_array_item_mysql: a gatherer failed

// ---- json/jpath: SQL/JSON functions and casts (json/eval) ----

// ---- json/jpath: removal, setting and inserting by path (json/eval) ----

}  // namespace vxjson::site

#endif
