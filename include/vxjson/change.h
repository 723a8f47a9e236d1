/*
 * vxjson/change.h -- part of the exported interface of libvxjson.
 *
 * Removal, setting and inserting by path.
 * Include "vxjson.h", which includes every part; the records, codes and
 * the parse context these functions take are declared there.
 */
#ifndef VXJSON_CHANGE_H
#define VXJSON_CHANGE_H

#include "vxjson.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ================================================================== */
/* Removal by path                                                     */
/* ================================================================== */

/* The removers change the caller's tree in place and allocate nothing, so
 * a removal either takes out one whole member or element (its node stays
 * on the heap, unlinked from the list that held it) or changes nothing.
 * The result texts come from ctx's allocator and belong to the caller
 * (release them through that allocator); on failure *out is left NULL. */

/* PostgreSQL  jsonb - text  and  jsonb - integer: remove the key or
 * position named by the one step after the root step of `path` (a field
 * step with its key, or a subscript step whose first_index may be negative
 * to count from the end) and write the whole document, compact, strings in
 * plain form at top level.  An array document loses that element (nothing
 * when out of range); any other document loses its LAST member of that
 * name.  -3118 for a subscript step on a non-array, -3102 when the path has
 * no step after its root, -503 when the text cannot be had. */
VXJSON_API VXJSON_CHECK int32_t jsonb_remove_with_path(json_node *document, jpath *path,
                                                       jlpca_ctx *ctx, char **out,
                                                       uint32_t *out_len);
/* MySQL  JSON_REMOVE(doc, path[, path...]): apply the `path_count` compiled
 * paths of the block `paths` (from jpath_array_flex) one after another,
 * each to what the previous ones left, then write the document with MySQL
 * escapes.  A path to nothing removes nothing.  -3113 for a path that names
 * the whole document or may match several values (wildcards, ranges,
 * lists); the removals made before a failing path stay in the tree. */
VXJSON_API VXJSON_CHECK int32_t json_remove_mysql_path_array(json_node *document,
                                                             uint32_t path_count, jpath *paths,
                                                             jlpca_ctx *ctx, char **out,
                                                             uint32_t *out_len);
/* One path of JSON_REMOVE: find the value with the MySQL rules and take it
 * out of its parent.  A parent array loses the element at the last step's
 * position; a parent object loses its last member named by the nearest
 * field step (so "$.a[0]" with a scalar a removes a).  0, -3113, or the
 * evaluation's code. */
VXJSON_API VXJSON_CHECK int32_t json_remove_mysql(json_node *document, jpath *path, jlpca_ctx *ctx);
/* Remove the element that `step` names from `array`: a field step removes
 * nothing; a negative first_index counts from the end; out of range
 * removes nothing.  Always 0. */
VXJSON_API VXJSON_CHECK int32_t jsonb_remove_array_element_with_path(json_node *array,
                                                                     jpath_filter *step,
                                                                     jlpca_ctx *ctx);
/* Remove the last member of `object` whose name equals the step's key (as
 * path evaluation compares names); its prev and next are cleared.  -3118
 * for a subscript step; 0 otherwise, also when nothing matched or `object`
 * is a scalar. */
VXJSON_API VXJSON_CHECK int32_t jsonb_remove_object_with_path_element(json_node *object,
                                                                      jpath_filter *step,
                                                                      jlpca_ctx *ctx);

/* ================================================================== */
/* Setting and inserting by path                                       */
/* ================================================================== */

/* ctx->set_mode chooses what the set family may do at the place a path
 * names: replace an existing value, add a missing one, or both.  The
 * caller's value nodes go into the tree as they are (no copies), so each
 * may be used once.  A step that leads nowhere (a missing member in
 * replace mode, a step on a scalar) is no error: the document comes back
 * unchanged.  A failing call returns before it links anything, so the tree
 * stays whole and can be written or dropped; changes made by earlier paths
 * of the same call stay.  Result texts as for removal. */
#define JSON_SET_MODE_REPLACE 1 /* JSON_REPLACE: only existing values */
#define JSON_SET_MODE_SET     2 /* JSON_SET, jsonb_set: replace or add */
#define JSON_SET_MODE_INSERT  3 /* JSON_INSERT: only missing values */

/* json_array_add_element_mysql_path_array options. */
#define JSON_ARRAY_ADD_INSERT 1 /* JSON_ARRAY_INSERT rather than APPEND */
#define JSON_ARRAY_ADD_SINGLE 2 /* `values` is the one value; first path only */

/* PostgreSQL  jsonb_set(doc, '{a,0}', value)  (path->dialect 1, from
 * jpath_parse_pg_array) and MySQL  JSON_SET / JSON_INSERT / JSON_REPLACE
 * (dialect 2, one path from jpath_array_flex): put `value` at the place
 * `path` names and write the whole document, compact.  Keys of a
 * text-array path name members of objects and positions of arrays
 * (negative from the end; out of range, before the start as well, adds at
 * the end).  Among repeated member names the last is changed.  In MySQL
 * form a subscript past the end of an array appends, "$" names the whole
 * document, and subscripts on a value that is no array treat it as
 * [value]: position 0 is the value, any other wraps it as [old, value].
 * -3114 text-array path on a scalar document; -3115 a text-array key on an
 * array that is not a 32-bit integer; -3113 a wildcard, range or list in
 * MySQL form; -503. */
VXJSON_API VXJSON_CHECK int32_t jsonb_set_with_path(json_node *document, json_node *value,
                                                    jpath *path, jlpca_ctx *ctx, char **out,
                                                    uint32_t *out_len);
/* One step of the walk: *current is the node reached so far and moves
 * down; *last is set (also by a run of subscripts dealt with early) when
 * the walk is over; *done is cleared when the path leads nowhere.  Objects
 * and arrays go to the two functions below; a scalar clears *done. */
VXJSON_API VXJSON_CHECK int32_t jsonb_set_with_path_element(json_node **current, json_node *value,
                                                            jpath_filter *step, jlpca_ctx *ctx,
                                                            int32_t *last, int32_t *done,
                                                            uint32_t dialect);
VXJSON_API VXJSON_CHECK int32_t jsonb_set_object_with_path_element(json_node **current,
                                                                   json_node *value,
                                                                   jpath_filter *step,
                                                                   jlpca_ctx *ctx, int32_t *last,
                                                                   int32_t *done, uint32_t dialect);
VXJSON_API VXJSON_CHECK int32_t jsonb_set_array_with_path_element(json_node **current,
                                                                  json_node *value,
                                                                  jpath_filter *step,
                                                                  jlpca_ctx *ctx, int32_t *last,
                                                                  int32_t *done, uint32_t dialect);
/* Descend into *slot (a member value or an element) after `step`: when the
 * rest of the path is subscripts and *slot is no array, deal with them
 * here (replace, or wrap as [old, value]) and set *last; otherwise
 * *current := *slot.  0, or -503 when the wrapping array cannot be had. */
VXJSON_API VXJSON_CHECK int32_t jsonb_set_with_array_path(json_node **current, json_node *value,
                                                          json_node **slot, jpath_filter *step,
                                                          jlpca_ctx *ctx, int32_t *last);
/* 1 when the step may match several values (all elements, all members, a
 * range or several subscripts), else 0. */
VXJSON_API int32_t jsonb_set_is_multi(const jpath_filter *step);
/* Put `node` where `step` points inside `container` and make container its
 * parent: an array's element at the step's position, or the value of the
 * FIRST member whose name equals the step's key (none: nothing changes,
 * 0).  -3113 when the step cannot name a place in the container (a field
 * step on an array, a subscript on an object, a position out of range) or
 * the container is a scalar; then nothing changes. */
VXJSON_API VXJSON_CHECK int32_t json_set_parent(json_node *container, json_node *node,
                                                jpath_filter *step);
/* One path of JSON_ARRAY_APPEND (insert 0) or JSON_ARRAY_INSERT (insert
 * 1).  Append: an array found gains `value` at its end; any other value
 * found becomes [found, value] in its place (*document when it was the
 * document).  Insert: `value` goes before the element found; when nothing
 * is found the path's last step is DROPPED FROM `path` for good and the
 * shortened path is tried, so a position past the end appends (do not use
 * the path again).  Arrays grow as needed; ctx->array_spare sets the
 * spare room new storage gets.  0, -3113, -503 or the evaluation's code. */
VXJSON_API VXJSON_CHECK int32_t json_array_add_element_mysql(json_node **document, json_node *value,
                                                             jpath *path, jlpca_ctx *ctx,
                                                             int32_t insert);
/* MySQL  JSON_ARRAY_APPEND(doc, path, value[, path, value...])  and
 * JSON_ARRAY_INSERT: the `path_count` paths of the block `paths` with the
 * values values->items[i], in order (with JSON_ARRAY_ADD_SINGLE, `values`
 * itself with the first path), then the document with MySQL escapes.
 * -3102 when `values` is no array of at least path_count values; the first
 * failing path's code otherwise, earlier changes staying in the tree. */
VXJSON_API VXJSON_CHECK int32_t json_array_add_element_mysql_path_array(
    json_node *document, uint32_t path_count, jpath *paths, json_node *values, jlpca_ctx *ctx,
    uint32_t options, char **out, uint32_t *out_len);

#ifdef __cplusplus
}
#endif

#endif /* VXJSON_CHANGE_H */
