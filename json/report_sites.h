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

// Casts of scalars: a failed decimal or datetime library call, and the
// codes the casts raise themselves.
inline constexpr int32_t CAST_NUMBER_FROM_TEXT = 4410;    // a string read as a decimal
inline constexpr int32_t CAST_NUMBER_NOT_NUMBER = 4412;   // -6128 for text that is no number
inline constexpr int32_t CAST_NUMBER_FROM_DECIMAL = 4414; // a number text as a decimal
inline constexpr int32_t CAST_NUMBER_TYPE = 4416;         // -6149 for a type without a number
inline constexpr int32_t CAST_DATE_FROM_TEXT = 4430;      // a string read as a datetime
inline constexpr int32_t CAST_DATE_NOT_DATETIME = 4432;   // -6118 for text that is no datetime
inline constexpr int32_t CAST_DATE_EMPTY = 4434;          // -6128 for '' in compatibility mode 2
inline constexpr int32_t CAST_DATE_TYPE = 4436;           // -6149 for a type that is no string
inline constexpr int32_t CAST_EPOCH_SECONDS = 4450;       // datetime to Unix seconds
inline constexpr int32_t CAST_EPOCH_FRACTION = 4452;      // its fraction as a decimal
inline constexpr int32_t CAST_FROM_EPOCH_DECIMAL = 4470;  // seconds text to a decimal
inline constexpr int32_t CAST_FROM_EPOCH_SPLIT = 4472;    // whole seconds and fraction apart
inline constexpr int32_t CAST_FROM_EPOCH_RANGE = 4474;    // -6149 beyond the 32-bit range
inline constexpr int32_t CAST_FROM_EPOCH_MAKE = 4476;     // the datetime made from them
inline constexpr int32_t CAST_FROM_EPOCH_TYPE = 4478;     // -6149 for a node that is no number

// ON ERROR: a failure the clause raises, and the "[]" of EMPTY ON ERROR.
inline constexpr int32_t ON_ERROR_RAISE_VALUE = 4310;     // number and datetime results
inline constexpr int32_t ON_ERROR_RAISE_TEXT = 4312;      // text results
inline constexpr int32_t ON_ERROR_EMPTY_TEXT = 4314;      // the heap text "[]"

// Text results: the first block on the heap, and writing the value.
inline constexpr int32_t FUN_TEXT_HEAP = 4330;            // JSON_VALUE / JSON_QUERY text
inline constexpr int32_t FUN_TEXT_WRITE = 4332;
inline constexpr int32_t FUN_MYSQL_HEAP = 4340;           // the MySQL text functions
inline constexpr int32_t FUN_MYSQL_WRITE = 4342;
inline constexpr int32_t FUN_PG_HEAP = 4344;              // the PostgreSQL text operators
inline constexpr int32_t FUN_PG_WRITE = 4346;

// ---- json/jpath: removal, setting and inserting by path (json/eval) ----

}  // namespace vxjson::site

#endif
