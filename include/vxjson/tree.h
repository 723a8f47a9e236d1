/*
 * vxjson/tree.h -- part of the exported interface of libvxjson.
 *
 * The value tree, the JSON scanner and grammars, writing, escaping,
 * comparison, containment and merging.
 * Include "vxjson.h", which includes every part; the records, codes and
 * the parse context these functions take are declared there.
 */
#ifndef VXJSON_TREE_H
#define VXJSON_TREE_H

#include "vxjson.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ================================================================== */
/* Value tree (source unit json/json)                                  */
/* ================================================================== */

/* A new zeroed node of `type` (JSON_OBJECT .. JSON_DATETIME) from ctx's
 * heap, not linked anywhere; NULL when the heap is exhausted.  The node
 * lives as long as the heap. */
VXJSON_API json_node *json_mem_create(jlpca_ctx *ctx, uint32_t type);
/* Create a node of `type` while reading and link it: child of cur_node,
 * next on the creation chain, the new cur_node (and first_node when it is
 * the first).  0, -3105 for a scalar as the whole document in the standard
 * dialect without scalar_top, -503. */
VXJSON_API VXJSON_CHECK int32_t json_create(jlpca_ctx *ctx, uint32_t type);
/* A member record from ctx's heap with name (name_len bytes, copied
 * inline, need not be NUL-terminated) and flags (1: the name held an
 * escape); value and links NULL.  0 with the record in *out, or -503. */
VXJSON_API VXJSON_CHECK int32_t json_object_keyval_mem_create(jlpca_ctx *ctx, const char *name,
                                                              uint32_t name_len, uint32_t flags,
                                                              json_keyval **out);
/* Add the member `name` to object under ctx's member policies: a repeated
 * name is refused (unique_keys) or the existing member is handed back
 * (dup_key_replace); with sorted_keys the member goes to its sorted place,
 * else to the end.  The caller then stores the value in (*out)->value.
 * 0, -3105 for a repeated name with unique_keys, -503 (reported). */
VXJSON_API VXJSON_CHECK int32_t json_object_add_keyval(jlpca_ctx *ctx, json_node *object,
                                                       const char *name, uint32_t name_len,
                                                       json_keyval **out);
/* Add a member name (name_len bytes) with its value to object; with
 * replace 1 an existing member of that name gets the value instead (and
 * moves to the end unless keys are sorted).  value becomes part of the
 * tree, not copied.  0, or what json_object_add_keyval returns (reported). */
VXJSON_API VXJSON_CHECK int32_t json_object_add_one_node(jlpca_ctx *ctx, json_node *object,
                                                         const char *name, uint32_t name_len,
                                                         json_node *value, int32_t replace);
/* The first member of object named exactly name (name_len bytes), or NULL. */
VXJSON_API json_keyval *json_object_find_keyval_by_name(const json_node *object, const char *name,
                                                        uint32_t name_len);
/* 1 when the names a (a_len bytes) and b (b_len bytes) have the same length
 * and bytes, else 0. */
VXJSON_API int32_t json_object_keyval_name_equal(const char *a, uint32_t a_len, const char *b,
                                                 uint32_t b_len);
/* The member of object before which `name` belongs in sorted order
 * (shorter names first, then bytewise up to a NUL), or NULL for the end. */
VXJSON_API json_keyval *jsonb_object_add_keyval_sort_by_name(const json_node *object,
                                                             const char *name, uint32_t name_len);
/* Give array an empty pointer array of `capacity` slots from ctx's heap
 * (none when capacity is 0): count 0.  0, or -503. */
VXJSON_API VXJSON_CHECK int32_t json_array_mem_alloc_arr(jlpca_ctx *ctx, uint32_t capacity,
                                                         json_node *array);
/* Insert element at `position` (at most count) of array, which must have
 * room; an array without elements first gets `capacity` slots.  element's
 * parent becomes array.  0, or -503 (reported). */
VXJSON_API VXJSON_CHECK int32_t json_array_append_with_nth(jlpca_ctx *ctx, json_node *element,
                                                           json_node *array, uint32_t capacity,
                                                           uint32_t position);
/* Put element into array at position (JSON_ARRAY_END: after the last):
 * mode JSON_ARRAY_INSERT inserts, growing a full pointer array by 5 slots
 * through ctx's allocator (the old one is freed through it);
 * JSON_ARRAY_REPLACE overwrites.  position must be within the array.
 * 0, or -503 (the array is unchanged). */
VXJSON_API VXJSON_CHECK int32_t json_array_add_one_node(jlpca_ctx *ctx, json_node *array,
                                                        int32_t position, json_node *element,
                                                        int32_t mode);
/* Turn array's element list (lst_count elements from lst_first; lst_last
 * is unused) into its pointer array, from ctx's allocator with
 * array_spare slots to spare; the caller releases it through that
 * allocator or with it.  0, or -503 (only capacity changed). */
VXJSON_API VXJSON_CHECK int32_t json_lst_to_arr(jlpca_ctx *ctx, json_node *array,
                                                uint32_t lst_count, json_node *lst_first,
                                                json_node *lst_last);
/* Store a heap copy of text (len bytes) followed by `pad` blanks in a string
 * or decimal node, NUL-terminated, with flags (1: the literal held an
 * escape); no text at all (str NULL) when both are 0.  env, heap: the
 * caller's.  0, or -503. */
VXJSON_API VXJSON_CHECK int32_t json_string_set_value_low(void *env, void *heap, json_node *node,
                                                          const char *text, uint32_t len,
                                                          uint32_t pad, uint32_t flags);
/* Store the current literal (tok_str, tok_val bytes, lit_escaped) in
 * cur_node, as json_string_set_value_low does.  0, or -503. */
VXJSON_API VXJSON_CHECK int32_t json_string_set_value(jlpca_ctx *ctx);
/* The same for a decimal node: its number text is the current literal. */
VXJSON_API VXJSON_CHECK int32_t json_decimal_set_value(jlpca_ctx *ctx);
/* A deep copy of the tree below node (not NULL) from ctx's heap, arrays
 * with pointer arrays from ctx's allocator; NULL when memory ran out (the
 * part copied so far stays in the heap). */
VXJSON_API json_node *json_mem_copy(jlpca_ctx *ctx, const json_node *node);
/* Members of an object, elements of an array, 1 for any other value. */
VXJSON_API uint32_t json_length(const json_node *node);
/* Nesting depth of node: 1 for a scalar or an empty container. */
VXJSON_API uint32_t json_depth(const json_node *node);

/* ================================================================== */
/* JSON scanner (source unit json_flex)                                */
/* ================================================================== */

/* Create a scanner over ctx's text (from ctx's heap; stored in
 * ctx->scanner and in *scanner).  0, or -503 with *scanner NULL. */
VXJSON_API VXJSON_CHECK int32_t json_flex_scanner_init(jlpca_ctx *ctx, void **scanner);
/* Retire the scanner (its memory goes with ctx's heap) and forget it in ctx. */
VXJSON_API void json_flex_scanner_deinit(jlpca_ctx *ctx, void *scanner);
/* The next token kind (0 at the end or after an error); its value is in
 * ctx (tok, tok_str, tok_val), `value` is unused.  A lexical error leaves
 * err_code, err_msg, err_line and its place (jlpca_error_position). */
VXJSON_API int32_t json_lex(void *value, void *scanner);
/* The next token, for callers outside the grammars; string, name and
 * number texts are heap copies that live as long as ctx's heap. */
VXJSON_API int32_t json_flex_next_token(void *scanner);

/* ================================================================== */
/* JSON grammar and check grammar                                      */
/* ================================================================== */

/* Read ctx's text (jlpca_reinit) into a tree.  0 with the root in *root
 * (NULL only for an empty text in the standard dialect without blank),
 * -6102 for a number beyond a double where that is an error, -3105 for any
 * other failure (jlpca_error_position tells where and why).  The tree
 * lives in ctx's heap, its pointer arrays in ctx's allocator; root not NULL. */
VXJSON_API VXJSON_CHECK int32_t json_flex(jlpca_ctx *ctx, json_node **root);
/* The tree grammar over a scanner of json_flex_scanner_init: 0 accepted,
 * 1 syntax error, 2 nesting too deep, or a negative action code. */
VXJSON_API int32_t json_parse(void *scanner, jlpca_ctx *ctx);
/* Turn the element list of every array on ctx's creation chain into its
 * pointer array.  0, or the first failure (-503, reported); the arrays
 * after it stay unconverted. */
VXJSON_API int32_t json_adjust_array(jlpca_ctx *ctx);
/* The grammar's error hooks: record nothing; -1, and `code` unchanged. */
VXJSON_API int32_t json_error(jlpca_ctx *ctx, const char *msg);
VXJSON_API int32_t json_error_ex(jlpca_ctx *ctx, int32_t code);
/* Is ctx's text a well-formed document under its switches?  0 or -3105
 * (a number overflow too); nothing is built, except that unique_keys runs
 * the tree grammar (the tree stays in the heap, unconverted).
 * jlpca_error_position tells where and why a text failed. */
VXJSON_API VXJSON_CHECK int32_t jcheck_flex(jlpca_ctx *ctx);
/* The check grammar over a scanner: results as json_parse. */
VXJSON_API int32_t jcheck_parse(void *scanner, jlpca_ctx *ctx);
/* The check grammar's error hooks: -1, and `code` unchanged. */
VXJSON_API int32_t jcheck_error(jlpca_ctx *ctx, const char *msg);
VXJSON_API int32_t jcheck_error_ex(jlpca_ctx *ctx, int32_t code);

/* ================================================================== */
/* Serialisation                                                       */
/* ================================================================== */

/* Append the text of node to string (a growable string of the caller's,
 * not NULL).  flags: JSON_FMT_*; level: the indent level to start at;
 * newline_first: start a pretty value on a new line; conv: JSON_CONV_* for
 * strings.  Temporary texts come from allocator and go back to it.  0, or
 * a negative code, reported: -503, -3105 for a NULL node or an unknown
 * type, or the escapers' codes; the text so far stays in string. */
VXJSON_API VXJSON_CHECK int32_t json_to_string(jlpca_ctx *ctx, vx_allocator *allocator,
                                               vxstr *string, const json_node *node, uint32_t flags,
                                               uint32_t level, uint32_t newline_first,
                                               uint8_t conv);
/* Append an object (node not NULL) as json_to_string does, at `level`. */
VXJSON_API VXJSON_CHECK int32_t json_object_to_string(jlpca_ctx *ctx, vx_allocator *allocator,
                                                      vxstr *string, const json_node *node,
                                                      uint32_t flags, uint32_t level);
/* Append an array (node not NULL) as json_to_string does, at `level`. */
VXJSON_API VXJSON_CHECK int32_t json_array_to_string(jlpca_ctx *ctx, vx_allocator *allocator,
                                                     vxstr *string, const json_node *node,
                                                     uint32_t flags, uint32_t level);
/* Append an array's elements separated by ",", without brackets; other
 * arguments and results as json_to_string. */
VXJSON_API VXJSON_CHECK int32_t json_array_items_to_string(jlpca_ctx *ctx, vx_allocator *allocator,
                                                           vxstr *string, const json_node *node,
                                                           uint32_t flags, uint32_t level,
                                                           uint32_t newline_first, uint8_t conv);
/* Append a scalar (node not NULL) to string as json_to_string does; env
 * and allocator as there. */
VXJSON_API VXJSON_CHECK int32_t json_scalar_to_string(void *env, vx_allocator *allocator,
                                                      vxstr *string, const json_node *node,
                                                      uint32_t flags);

/* ================================================================== */
/* String escaping                                                     */
/* ================================================================== */

/* Append text (len bytes) to string, quoted when quote is 1, converted by
 * conv (JSON_CONV_*), through json_string_convert_ascii when bit 0 of flags
 * is set.  Temporaries from allocator.  0, -503, -2206 or -3105 (reported). */
VXJSON_API VXJSON_CHECK int32_t json_string_convert(void *env, vx_allocator *allocator,
                                                    vxstr *string, uint32_t flags, const char *text,
                                                    uint32_t len, int32_t quote, uint8_t conv);
/* Escape text (len bytes) by the standard table.  0 with a new text from
 * allocator in *out (NUL-terminated; NULL when len is 0) and its length
 * in *out_len; the caller frees it through allocator.  -503. */
VXJSON_API VXJSON_CHECK int32_t json_string_from_value_add_escape(void *env,
                                                                  vx_allocator *allocator,
                                                                  const char *text, uint32_t len,
                                                                  char **out, uint32_t *out_len);
/* Escape text by the MySQL table, keeping escapes already present; out as
 * for json_string_from_value_add_escape.  -2206 for a trailing lone
 * backslash (the output is handed out all the same), -503. */
VXJSON_API VXJSON_CHECK int32_t
json_string_from_value_add_escape_for_mysql(void *env, vx_allocator *allocator, const char *text,
                                            uint32_t len, char **out, uint32_t *out_len);
/* Decode the escapes of a JSON string body (text, len bytes) by reading it
 * as JSON; out as for json_string_from_value_add_escape.  -3105 for a bad
 * escape, -503 (reported). */
VXJSON_API VXJSON_CHECK int32_t json_string_to_value_remove_escape(void *env,
                                                                   vx_allocator *allocator,
                                                                   const char *text, uint32_t len,
                                                                   char **out, uint32_t *out_len);
/* Append text to string with every multibyte character written as \uXXXX,
 * its first UTF-16 unit only; with JSON_FMT_ASCII_PAIRS in flags a
 * character beyond U+FFFF as both units of its pair (other flags unused).
 * Temporaries from allocator.  0, -503, -3105 (reported). */
VXJSON_API VXJSON_CHECK int32_t json_string_convert_ascii(void *env, vx_allocator *allocator,
                                                          vxstr *string, uint32_t flags,
                                                          const char *text, uint32_t len);
/* The escape letter the standard table writes for byte, or 0. */
VXJSON_API int32_t json_get_lit_escape(uint8_t byte);
/* The escape letter the MySQL table writes for byte, or 0. */
VXJSON_API int32_t json_get_lit_escape_for_mysql(uint8_t byte);
/* Check and simplify the escapes of a MySQL SQL literal (text, len bytes);
 * out as for json_string_from_value_add_escape.  -3105 for a bad escape,
 * -503. */
VXJSON_API VXJSON_CHECK int32_t json_org_str_escape_solve_for_mysql(void *env,
                                                                    vx_allocator *allocator,
                                                                    const char *text, uint32_t len,
                                                                    char **out, uint32_t *out_len);
/* Turn a column default's stored text (src) into its value in dst,
 * assigned through the server's string operations with allocator.  0,
 * -2206 for a trailing lone backslash, -503. */
VXJSON_API VXJSON_CHECK int32_t json_default_value_remove_escape_for_mysql(void *env,
                                                                           vx_allocator *allocator,
                                                                           const vx_nstr *src,
                                                                           vx_nstr *dst);

/* ================================================================== */
/* Comparison and containment                                          */
/* ================================================================== */

/* 1 when a and b (not NULL) have the same type or are both numbers. */
VXJSON_API int32_t json_type_is_same(const json_node *a, const json_node *b);
/* 1 when two scalars of the same kind are equal (numbers by value, 1 = 1.0),
 * else 0. */
VXJSON_API int32_t json_scalar_value_equal(const json_node *a, const json_node *b);
/* A number node's text as a double in *out; 0, or -6102 past the double
 * range (reported; *out unchanged). */
VXJSON_API VXJSON_CHECK int32_t json_decimal_string_to_double(const json_node *node, double *out);
/* Order of two number nodes' values: *order -1, 0 or 1.  0, or -6102 when
 * either overflows a double (reported). */
VXJSON_API VXJSON_CHECK int32_t json_decimal_string_cmp(const json_node *a, const json_node *b,
                                                        int32_t *order);
/* A number node's text as the server's exact decimal in *out (not NULL).
 * 0, or a negative code of the decimal library. */
VXJSON_API VXJSON_CHECK int32_t json_decimal_string_to_xdec(const json_node *node,
                                                            struct xdec *out);
/* Compare a with b in mode JSON_CMP_CONTAINS_PG (a @> b),
 * JSON_CMP_OVERLAPS_MYSQL or JSON_CMP_EQUAL: 1 or 0. */
VXJSON_API int32_t json_cmp(const json_node *a, const json_node *b, uint32_t mode);
/* 1 when two arrays have equal elements in the same order, else 0. */
VXJSON_API int32_t json_array_equal(const json_node *a, const json_node *b);
/* 1 when two objects have the same names with equal values, else 0. */
VXJSON_API int32_t jsonb_object_equal(const json_node *a, const json_node *b);
/* a @> b (PostgreSQL): 1 when a contains b, else 0; the _object, _array
 * and _array_simple variants take a and b of those kinds. */
VXJSON_API int32_t json_contains_pg(const json_node *a, const json_node *b);
VXJSON_API int32_t json_contains_pg_object(const json_node *a, const json_node *b);
VXJSON_API int32_t json_contains_pg_array(const json_node *a, const json_node *b);
VXJSON_API int32_t json_contains_pg_array_simple(const json_node *a, const json_node *b);
/* JSON_CONTAINS(target a, candidate b) (MySQL): 1 or 0; the _object and
 * _array variants take a and b of those kinds. */
VXJSON_API int32_t json_contains_mysql(const json_node *a, const json_node *b);
VXJSON_API int32_t json_contains_mysql_object(const json_node *a, const json_node *b);
VXJSON_API int32_t json_contains_mysql_array(const json_node *a, const json_node *b);
/* JSON_OVERLAPS(a, b) (MySQL): 1 or 0; the _object, _array and
 * _array_simple variants take a and b of those kinds. */
VXJSON_API int32_t json_overlaps_mysql(const json_node *a, const json_node *b);
VXJSON_API int32_t json_overlaps_mysql_object(const json_node *a, const json_node *b);
VXJSON_API int32_t json_overlaps_mysql_array(const json_node *a, const json_node *b);
VXJSON_API int32_t json_overlaps_mysql_array_simple(const json_node *a, const json_node *b);

/* ================================================================== */
/* Merge, concatenation and null stripping                             */
/* ================================================================== */

/* JSON_MERGE_PATCH (patch 1) or JSON_MERGE_PRESERVE (patch 0) of b into a,
 * in place (both trees are changed; their objects must be in sorted-key
 * order), written compactly with MySQL escapes: 0 with the text in *out
 * (from ctx's allocator; the caller frees it) and *out_len; -503 (reported). */
VXJSON_API VXJSON_CHECK int32_t json_merge_mysql(json_node *a, json_node *b, int32_t patch,
                                                 jlpca_ctx *ctx, char **out, uint32_t *out_len);
/* JSON_MERGE_PRESERVE of b into a, in place: 0 with the merged tree in
 * *out (a for two objects, else a new array from ctx's heap whose elements
 * are a's and b's own nodes), or -503 (reported). */
VXJSON_API VXJSON_CHECK int32_t json_merge_preserve_mysql(json_node *a, json_node *b,
                                                          jlpca_ctx *ctx, json_node **out);
/* JSON_MERGE_PATCH of b into a, in place: 0 with the result in *out, or -503. */
VXJSON_API VXJSON_CHECK int32_t json_merge_patch_mysql(json_node *a, json_node *b, jlpca_ctx *ctx,
                                                       json_node **out);
/* Merge the members of object b into object a (patch 1: patch, 0:
 * preserve), in place; *out is a.  0, or -503. */
VXJSON_API VXJSON_CHECK int32_t json_object_merge_mysql(json_node *a, json_node *b, jlpca_ctx *ctx,
                                                        int32_t patch, json_node **out);
/* a || b (PostgreSQL), in place, written as JSON: 0 with the text in *out
 * (from ctx's allocator; the caller frees it) and *out_len; -3119 for an
 * object with a scalar, -503 (reported). */
VXJSON_API VXJSON_CHECK int32_t jsonb_concat(json_node *a, json_node *b, jlpca_ctx *ctx, char **out,
                                             uint32_t *out_len);
/* a || b for two objects (b's members win); results as jsonb_concat. */
VXJSON_API VXJSON_CHECK int32_t jsonb_concat_to_object(json_node *a, json_node *b, jlpca_ctx *ctx,
                                                       char **out, uint32_t *out_len);
/* a || b where either is an array; results as jsonb_concat. */
VXJSON_API VXJSON_CHECK int32_t jsonb_concat_to_array(json_node *a, json_node *b, jlpca_ctx *ctx,
                                                      char **out, uint32_t *out_len);
/* jsonb_strip_nulls: drop null-valued members below node, in place.  0. */
VXJSON_API VXJSON_CHECK int32_t jsonb_strip_nulls_object(json_node *node);
/* The same for an array node.  0. */
VXJSON_API VXJSON_CHECK int32_t jsonb_strip_nulls_array(json_node *node);

#ifdef __cplusplus
}
#endif

#endif /* VXJSON_TREE_H */
