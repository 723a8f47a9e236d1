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

// Removal.  The server numbers these sites itself; these are ours.
inline constexpr int32_t LINE_REMOVE_PG_STEP = 2160;     // a remover, PostgreSQL form
inline constexpr int32_t LINE_REMOVE_PG_WRITE = 2172;    // the document text, PostgreSQL form
inline constexpr int32_t LINE_REMOVE_FIND = 2204;        // evaluating a removal path
inline constexpr int32_t LINE_REMOVE_APPLY = 2221;       // a remover, MySQL form
inline constexpr int32_t LINE_REMOVE_EACH = 2248;        // one path of a list
inline constexpr int32_t LINE_REMOVE_WRITE = 2259;       // the document text, MySQL form
// Set, insert and replace.
inline constexpr int32_t LINE_SET_ADD_MEMBER = 2286;     // adding a missing member
inline constexpr int32_t LINE_SET_APPEND = 2370;         // appending past the end
inline constexpr int32_t LINE_SET_ROOT_PATH = 2515;      // subscripts after the root step
inline constexpr int32_t LINE_SET_ELEMENT = 2525;        // one step of the walk
inline constexpr int32_t LINE_SET_WRITE = 2542;          // the document text
// Array append and insert.
inline constexpr int32_t LINE_ARRAY_ADD_FIND = 3606;     // evaluating the path
inline constexpr int32_t LINE_ARRAY_ADD_REFIND = 3622;   // evaluating the shortened path
inline constexpr int32_t LINE_ARRAY_ADD_WRAP_OLD = 3663; // the found value into its pair
inline constexpr int32_t LINE_ARRAY_ADD_WRAP_NEW = 3667; // the new value into the pair
inline constexpr int32_t LINE_ARRAY_ADD_SINGLE = 3719;   // the one path of a single value
inline constexpr int32_t LINE_ARRAY_ADD_EACH = 3730;     // one path of a list
inline constexpr int32_t LINE_ARRAY_ADD_WRITE = 3741;    // the document text
// Heap call site of the element storage that changes take.
inline constexpr int32_t LINE_CHANGE_ITEMS_ALLOC = 3650;

}  // namespace vxjson::site

#endif
