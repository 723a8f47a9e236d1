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

// tree.cpp: heap call sites (the server's allocation diagnostics) ...
inline constexpr int32_t TREE_NODE_ALLOC = 147;
inline constexpr int32_t TREE_KEYVAL_ALLOC = 214;
inline constexpr int32_t TREE_ITEMS_ALLOC = 402;
inline constexpr int32_t TREE_STRING_ALLOC = 611;
// ... report sites ...
inline constexpr int32_t TREE_ADD_KEYVAL = 283; // a member that could not be added
inline constexpr int32_t TREE_ADD_ONE_NODE = 341;
inline constexpr int32_t TREE_APPEND_NTH = 455;
// ... and pluggable-allocator call sites (the reader's element arrays too).
inline constexpr int32_t TREE_ARRAY_GROW = 498;
inline constexpr int32_t TREE_LST_TO_ARR = 533;

// write.cpp: a part of a container that could not be written.
inline constexpr int32_t WRITE_MEMBER = 770;       // a member's name
inline constexpr int32_t WRITE_MEMBER_VALUE = 790; // a member's value
inline constexpr int32_t WRITE_ELEMENT = 1003;     // an array element
inline constexpr int32_t WRITE_ARRAY = 1043;       // an array's elements as a whole

// escape.cpp: conversions that failed and the allocations of their output.
inline constexpr int32_t ESCAPE_ALLOC_ASCII = 594;    // output of the \u conversion
inline constexpr int32_t ESCAPE_CONVERT_STD = 687;    // standard escaping failed
inline constexpr int32_t ESCAPE_CONVERT_MYSQL = 692;  // MySQL escaping failed
inline constexpr int32_t ESCAPE_CONVERT_PLAIN = 697;  // removing escapes failed
inline constexpr int32_t ESCAPE_CONVERT_ASCII = 717;  // \u conversion failed
inline constexpr int32_t ESCAPE_UNESCAPE_QUOTE = 945; // quoting the text to re-read
inline constexpr int32_t ESCAPE_UNESCAPE_READ = 958;  // reading it
inline constexpr int32_t ESCAPE_UNESCAPE_WRITE = 965; // writing the decoded value
inline constexpr int32_t ESCAPE_ALLOC_MYSQL = 1511;   // output of the MySQL escaper
inline constexpr int32_t ESCAPE_ALLOC_DEFAULT = 1613; // output of the default value
inline constexpr int32_t ESCAPE_ALLOC_STD = 1727;     // output of the standard escaper
inline constexpr int32_t ESCAPE_ALLOC_SOLVE = 2820;   // output of the SQL literal check

// concat.cpp: null stripping and PostgreSQL concatenation.
inline constexpr int32_t CONCAT_STRIP_OBJECT_IN_OBJECT = 1331;
inline constexpr int32_t CONCAT_STRIP_ARRAY_IN_OBJECT = 1336;
inline constexpr int32_t CONCAT_STRIP_OBJECT_IN_ARRAY = 1379;
inline constexpr int32_t CONCAT_STRIP_ARRAY_IN_ARRAY = 1384;
inline constexpr int32_t CONCAT_FIRST = 1794;
inline constexpr int32_t CONCAT_SECOND = 1804;
inline constexpr int32_t CONCAT_ADD_MEMBER = 1842;
inline constexpr int32_t CONCAT_WRITE_OBJECT = 1856;

// compare.cpp: number texts that overflow a double.
inline constexpr int32_t COMPARE_DECIMAL_TO_DOUBLE = 2139;
inline constexpr int32_t COMPARE_DECIMAL_CMP_FIRST = 2183;
inline constexpr int32_t COMPARE_DECIMAL_CMP_SECOND = 2186;

// merge.cpp: MySQL merges.
inline constexpr int32_t MERGE_PRESERVE_ARRAY = 3325;
inline constexpr int32_t MERGE_PRESERVE_VALUE = 3455;
inline constexpr int32_t MERGE_PATCH_VALUE = 3474;
inline constexpr int32_t MERGE_RESULT = 3539;
inline constexpr int32_t MERGE_WRITE = 3547;

// ---- json/jlpca and json_flex: context, scanner, grammars (json/read) ----

// grammar.cpp ("json/json"): the final array conversion and the reader's nodes.
inline constexpr int32_t READ_ADJUST_ARRAY = 86;
inline constexpr int32_t READ_NODE = 120;

// jlpca.cpp ("json/jlpca"): heap call sites and the \u report.
inline constexpr int32_t JLPCA_NUMBER_COPY = 418;
inline constexpr int32_t JLPCA_LIT_GROW = 774;
inline constexpr int32_t JLPCA_UCHAR_REPORT = 890;
// std_strings.cpp ("json/jlpca"): a surrogate pair the character set has
// no character for (standard strings only).
inline constexpr int32_t JLPCA_PAIR_REPORT = 896;

// scan.cpp ("json_flex"): heap call sites.
inline constexpr int32_t SCAN_INSTANCE_HEAP = 379;
inline constexpr int32_t SCAN_TOKEN_COPY = 405;

// ---- json/jpath: compiled paths, path scanner and grammar (json/path) ----

// Heap call sites of the path model (mem_heap_alloc_low diagnostics).
inline constexpr int32_t PATH_HEAP_STEP = 62;
inline constexpr int32_t PATH_HEAP_KEY = 70;
inline constexpr int32_t PATH_HEAP_INDEX = 141;
inline constexpr int32_t PATH_HEAP_SCANNER = 226;
inline constexpr int32_t PATH_HEAP_TOKEN = 241;
inline constexpr int32_t PATH_HEAP_RECORDS = 318;
// jpath_array_flex: no records, one path failed, an element failed, the
// text is no array of strings.
inline constexpr int32_t PATH_ARRAY_RECORDS = 322;
inline constexpr int32_t PATH_ARRAY_SINGLE = 330;
inline constexpr int32_t PATH_ARRAY_ELEMENT = 352;
inline constexpr int32_t PATH_ARRAY_SHAPE = 361;
// jpath_parse_pg_array: no element string, an element failed, a step failed.
inline constexpr int32_t PATH_PG_STRING = 412;
inline constexpr int32_t PATH_PG_ELEMENT = 421;
inline constexpr int32_t PATH_PG_STEP = 430;
// Path text generation: segment heap site; json_lst_to_path_arr passes on
// a failed array or element.
inline constexpr int32_t PATH_HEAP_SEGMENT = 517;
inline constexpr int32_t PATH_GEN_ARRAY = 548;
inline constexpr int32_t PATH_GEN_ELEMENT = 561;
// jpath_add_filter passes on a failed step allocation.
inline constexpr int32_t PATH_ADD_FILTER = 96;

// ---- json/jpath: path evaluation (json/eval) ----
inline constexpr int32_t QUERY_STEP = 1302;          // json_query: a step evaluator failed
inline constexpr int32_t QUERY_VIRTUAL_ITEMS = 1247; // json_virtual_array_create: its item vector
inline constexpr int32_t QUERY_MYSQL_SUBSCRIPT =
    1561; // jpath_filter_array_item_mysql: a gatherer failed

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
inline constexpr int32_t ON_ERROR_RAISE_VALUE = 4310; // number and datetime results
inline constexpr int32_t ON_ERROR_RAISE_TEXT = 4312;  // text results
inline constexpr int32_t ON_ERROR_EMPTY_TEXT = 4314;  // the heap text "[]"

// Text results: the first block on the heap, and writing the value.
inline constexpr int32_t FUN_TEXT_HEAP = 4330; // JSON_VALUE / JSON_QUERY text
inline constexpr int32_t FUN_TEXT_WRITE = 4332;
inline constexpr int32_t FUN_MYSQL_HEAP = 4340; // the MySQL text functions
inline constexpr int32_t FUN_MYSQL_WRITE = 4342;
inline constexpr int32_t FUN_PG_HEAP = 4344; // the PostgreSQL text operators
inline constexpr int32_t FUN_PG_WRITE = 4346;

// ---- json/jpath: removal, setting and inserting by path (json/eval) ----

// Removal.  The server numbers these sites itself; these are ours.
inline constexpr int32_t REMOVE_PG_STEP = 2160;  // a remover, PostgreSQL form
inline constexpr int32_t REMOVE_PG_WRITE = 2172; // the document text, PostgreSQL form
inline constexpr int32_t REMOVE_FIND = 2204;     // evaluating a removal path
inline constexpr int32_t REMOVE_APPLY = 2221;    // a remover, MySQL form
inline constexpr int32_t REMOVE_EACH = 2248;     // one path of a list
inline constexpr int32_t REMOVE_WRITE = 2259;    // the document text, MySQL form
// Set, insert and replace.
inline constexpr int32_t SET_ADD_MEMBER = 2286; // adding a missing member
inline constexpr int32_t SET_APPEND = 2370;     // appending past the end
inline constexpr int32_t SET_ROOT_PATH = 2515;  // subscripts after the root step
inline constexpr int32_t SET_ELEMENT = 2525;    // one step of the walk
inline constexpr int32_t SET_WRITE = 2542;      // the document text
// Array append and insert.
inline constexpr int32_t ARRAY_ADD_FIND = 3606;     // evaluating the path
inline constexpr int32_t ARRAY_ADD_REFIND = 3622;   // evaluating the shortened path
inline constexpr int32_t ARRAY_ADD_WRAP_OLD = 3663; // the found value into its pair
inline constexpr int32_t ARRAY_ADD_WRAP_NEW = 3667; // the new value into the pair
inline constexpr int32_t ARRAY_ADD_SINGLE = 3719;   // the one path of a single value
inline constexpr int32_t ARRAY_ADD_EACH = 3730;     // one path of a list
inline constexpr int32_t ARRAY_ADD_WRITE = 3741;    // the document text
// Heap call site of the element storage that changes take.
inline constexpr int32_t CHANGE_ITEMS_ALLOC = 3650;

} // namespace vxjson::site

#endif
