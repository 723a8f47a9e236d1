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

// Heap call sites of the path model (mem_heap_alloc_low diagnostics).
inline constexpr int32_t PATH_HEAP_STEP = 62;
inline constexpr int32_t PATH_HEAP_KEY = 70;
inline constexpr int32_t PATH_HEAP_INDEX = 141;
// jpath_add_filter passes on a failed step allocation.
inline constexpr int32_t PATH_ADD_FILTER = 96;

// ---- json/jpath: path evaluation (json/eval) ----

// ---- json/jpath: SQL/JSON functions and casts (json/eval) ----

// ---- json/jpath: removal, setting and inserting by path (json/eval) ----

}  // namespace vxjson::site

#endif
