/*
 * vxjson/query.h -- part of the exported interface of libvxjson.
 *
 * Path evaluation in the three dialects, JSON_VALUE and JSON_QUERY,
 * and casts of JSON scalars.
 * Include "vxjson.h", which includes every part; the records, codes and
 * the parse context these functions take are declared there.
 */
#ifndef VXJSON_QUERY_H
#define VXJSON_QUERY_H

#include "vxjson.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ================================================================== */
/* Path evaluation                                                     */
/* ================================================================== */

/*
 * A compiled path is applied step by step; each step turns the current
 * value into its matches.  One match is the document's node itself; two or
 * more are gathered into a virtual array: a JSON_ARRAY node with
 * is_virtual 1, made on the context's heap, whose items are the document's
 * own nodes (never copies).  The next step takes a virtual array as
 * several current values, not as an array of the document.
 *
 * Evaluation writes one thing into the document: the prev_sibling and
 * next_sibling links of every node it gathers, through which the matches
 * of a step are listed.  Those links mean nothing between steps, and a
 * tree must not be evaluated by two callers at once.
 *
 * Dialects: json_query follows the context's compat (0 standard, 1 the
 * PostgreSQL-compatible mode; the modes differ in which of repeated member
 * names a last field step takes, and in subscripts); jpath_filter_mysql is
 * the evaluator of the compatibility dialects, under which a path that
 * matches nothing is no error.
 *
 * Codes: -3104 nothing matched or a step does not apply; -3102 a virtual
 * array met inside a virtual array by an all-elements step; -3113 a step
 * that may match several values where the caller forbids them; -503 no
 * memory for a virtual array.  Nothing recurses on the document's depth.
 */

/* The matches of one step, listed through the nodes' sibling links in the
 * order they were found; the same three fields as an array's element list
 * (json_lst_to_arr takes them).  Lives on the stack of one step; start it
 * zeroed. */
typedef struct jpath_result_list {
    uint32_t count;   /* nodes listed */
    json_node *first; /* first node listed, NULL when empty */
    json_node *last;  /* last node listed, NULL when empty */
} jpath_result_list;

/* Evaluate `path` over `root` (JSON_VALUE / JSON_QUERY, and the
 * PostgreSQL-compatible text operators).  ctx: its heap takes a virtual
 * array, its compat picks the mode (0 standard: the first of repeated
 * names wins a last field step; 1: the last one wins, and a subscript -1
 * also applies to a non-array).  *out: the result node (a node of the
 * document, or a virtual array on the heap), NULL on failure.  A path
 * without steps gives root.  0, or -3104 (root NULL, nothing matched, a
 * step that does not apply), -3102, -503; a step's failure is reported
 * with source "json/jpath". */
VXJSON_API VXJSON_CHECK int32_t json_query(jlpca_ctx *ctx, json_node *root, const jpath *path,
                                           json_node **out);

/* json_query without reading the whole document into a tree, for paths of
 * member steps and single non-negative subscripts after the root
 * ($.statuses[0].user.id).  text/len: the document (not NUL-terminated).
 * The text is walked to the place the path names, checked whole with the
 * check grammar under ctx's switches (nothing built), and only the scalar
 * found there is read (json_flex over its text): *out is then the node that
 * json_flex and json_query would give, up to its parent link, on ctx's
 * heap.  Whenever the tree could answer otherwise than a plain walk -- the
 * path has other steps; ctx is not the standard dialect, or sorts, replaces
 * or refuses repeated names; the character set lets a quote byte end a
 * character; the text does not check; a member name before the match holds
 * an escape or is not double-quoted; a first match is followed by more
 * steps and may not stand alone (no object, or no array before a
 * subscript); a step meets a value of another type; nothing matches; the
 * place holds an object or array -- it returns
 * JSON_QUERY_TEXT_USE_TREE with *out NULL, and the caller reads the tree as
 * usual.  ctx's text is left at text or at the scalar's part of it.
 * 0, JSON_QUERY_TEXT_USE_TREE, or -503. */
#define JSON_QUERY_TEXT_USE_TREE 1
VXJSON_API VXJSON_CHECK int32_t json_query_text(jlpca_ctx *ctx, const char *text, uint32_t len,
                                                const jpath *path, json_node **out);

/* Turn the matches of a step into its result: -3104 for none; for one,
 * *out := that node (nothing is allocated); for more, *out := a new
 * virtual array on ctx's heap whose items are the listed nodes in order
 * (-503 when the node or its item vector cannot be had; the item vector
 * comes from ctx's allocator and has ctx->array_spare spare slots). */
VXJSON_API VXJSON_CHECK int32_t json_virtual_array_create(jlpca_ctx *ctx, json_node **out,
                                                          jpath_result_list *list);

/* The four step evaluators of json_query, one per step kind; each turns
 * `node` (a document node or a virtual array) into *out (NULL on
 * failure) and returns 0, -3104, -3102 or -503.
 * jpath_filter_field_item: member by name (kind 3); a scalar gives -3104.
 * jpath_filter_wildcard: every member (kind 2): of an object, of each
 *   object element of an array, and of each object inside that array's
 *   array elements; a scalar gives -3104.
 * jpath_filter_all_array: every element (kind 1); a non-array stands for a
 *   one-element array (jpath_filter_array_item_narr).
 * jpath_filter_array_item: subscripts and ranges (kind 4); a non-array
 *   takes only the subscript 0 (and -1 when ctx->compat is 1). */
VXJSON_API VXJSON_CHECK int32_t jpath_filter_field_item(jlpca_ctx *ctx, json_node *node,
                                                        const jpath_filter *step, json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_wildcard(jlpca_ctx *ctx, json_node *node,
                                                      const jpath_filter *step, json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_all_array(jlpca_ctx *ctx, json_node *node,
                                                       const jpath_filter *step, json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_array_item(jlpca_ctx *ctx, json_node *node,
                                                        const jpath_filter *step, json_node **out);

/* The field step on an object: when more steps follow, the values of the
 * members named by the step, up to and including the first whose value is
 * an object (or, before a single subscript, an object or an array); as the
 * last step, one member: the first of that name in the standard mode, else
 * the last (jpath_filter_object_field_only_last).  0 or -3104, -503. */
VXJSON_API VXJSON_CHECK int32_t jpath_filter_object_field(jlpca_ctx *ctx, json_node *object,
                                                          const jpath_filter *step,
                                                          json_node **out);
/* The field step on an array: every member of that name of each object
 * element; of the array elements only the first is looked into (its object
 * elements), and a second array element ends the walk.  0 or -3104, -503. */
VXJSON_API VXJSON_CHECK int32_t jpath_filter_array_field(jlpca_ctx *ctx, json_node *array,
                                                         const jpath_filter *step, json_node **out);

/* Gatherers: append matches to `list` (see jpath_result_list) and return 0.
 * Names are compared byte for byte with the step's key.
 * _part_with_key: members named by the step, stopping after the first
 *   object value; _part2_with_key: stopping after the first object or
 *   array value; _all_with_key: every member of that name.
 * _all: every member's value; _part: stopping after the first object value.
 * _wildcard: _part when the next step is an all-elements step, else _all. */
VXJSON_API int32_t jpath_filter_object_field_part_with_key(json_node *object,
                                                           const jpath_filter *step,
                                                           jpath_result_list *list);
VXJSON_API int32_t jpath_filter_object_field_part2_with_key(json_node *object,
                                                            const jpath_filter *step,
                                                            jpath_result_list *list);
VXJSON_API int32_t jpath_filter_object_field_all_with_key(json_node *object,
                                                          const jpath_filter *step,
                                                          jpath_result_list *list);
VXJSON_API int32_t jpath_filter_object_field_all(json_node *object, jpath_result_list *list);
VXJSON_API int32_t jpath_filter_object_field_part(json_node *object, jpath_result_list *list);
VXJSON_API int32_t jpath_filter_object_field_wildcard(json_node *object, const jpath_filter *step,
                                                      jpath_result_list *list);

/* Array gatherers; each returns 0.
 * _entity: the elements of a document array that the step's subscripts
 *   select, ascending (with ctx->compat 1, _entity_pg).  A range whose
 *   start lies beyond its end is skipped; the walk ends at the first
 *   position past the last element; negative positions select nothing.
 * _entity_pg: only the step's first subscript counts; a negative one
 *   counts from the end.
 * _virtual: for each item of a virtual array: an array item gets _entity;
 *   a non-array item, only for the subscript 0, goes to _narr_lst, and the
 *   walk stops after such an item when it is an object.
 * _narr_lst: appends `node` when jpath_filter_array_item_narr accepts it. */
VXJSON_API int32_t jpath_filter_array_item_entity(jlpca_ctx *ctx, json_node *array,
                                                  const jpath_filter *step,
                                                  jpath_result_list *list);
VXJSON_API int32_t jpath_filter_array_item_entity_pg(jlpca_ctx *ctx, json_node *array,
                                                     const jpath_filter *step,
                                                     jpath_result_list *list);
VXJSON_API int32_t jpath_filter_array_item_virtual(jlpca_ctx *ctx, json_node *array,
                                                   const jpath_filter *step,
                                                   jpath_result_list *list);
VXJSON_API int32_t jpath_filter_array_item_narr_lst(json_node *node, const jpath_filter *step,
                                                    jpath_result_list *list);

/* Single results.  _only_first: the value of the first member named by the
 * step (byte for byte).  _only_last: with ctx->path_last_key 1 the last
 * member for which jpath_filter_object_keyval_equal holds, else the first.
 * Both 0 with *out set, or -3104 with *out NULL.
 * jpath_filter_array_item_narr: a non-array taken as a one-element array:
 * as the last step *out := node; before a wildcard or field step only an
 * object passes; otherwise -3104. */
VXJSON_API VXJSON_CHECK int32_t jpath_filter_object_field_only_first(json_node *object,
                                                                     const jpath_filter *step,
                                                                     json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_object_field_only_last(jlpca_ctx *ctx,
                                                                    json_node *object,
                                                                    const jpath_filter *step,
                                                                    json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_array_item_narr(json_node *node,
                                                             const jpath_filter *step,
                                                             json_node **out);

/* 1 when the member's name equals the step's key, else 0.  When the
 * context's escape_mode differs from the function kind the path was
 * compiled for (step->path->fun_kind), a name stored with its escapes
 * (flags set) is compared after decoding them (a name no longer than the
 * key cannot match); a name that does not decode matches nothing. */
VXJSON_API int32_t jpath_filter_object_keyval_equal(jlpca_ctx *ctx, const json_keyval *member,
                                                    const jpath_filter *step);

/* ------------------------------------------------------------------ */
/* Compatibility-dialect evaluation (MySQL-compatible paths)          */
/* ------------------------------------------------------------------ */

/* Evaluate `path` over `doc` by the compatibility rules: a field step
 * takes the last member of that name and does not look into a document
 * array; a step that does not apply, or a path that matches nothing,
 * gives *out NULL and 0.  multi_allowed 0 refuses, before looking at any
 * value, a step that may match several values (every element, every
 * member, a range or several subscripts) with -3113.  A path without steps
 * gives doc.  0, -3113, -3102 (a virtual array inside a virtual array),
 * -503. */
VXJSON_API VXJSON_CHECK int32_t jpath_filter_mysql(json_node *doc, const jpath *path,
                                                   jlpca_ctx *ctx, int32_t multi_allowed,
                                                   json_node **out);
/* Its step evaluators: 0 with *out (NULL when the step does not apply),
 * -3104 when a gathering step found nothing, -3102, -503.
 * _all_array_mysql: the elements of a document array, or of each document
 *   array item of a virtual array; a non-array gives NULL.
 * _wildcard_mysql: the member values of an object, or of each object item
 *   of a virtual array; a document array or a scalar gives NULL.
 * _field_item_mysql: _object_field_mysql for an object (the last member of
 *   that name, or NULL), _array_field_mysql for an array (NULL for a
 *   document array; for a virtual array the last member of that name of
 *   each object item).
 * _array_item_mysql: subscripts of a document array, or of each item of a
 *   virtual array (_array_item_virtual_mysql: an array item by its
 *   subscripts, a non-array item itself under the subscript 0); a
 *   non-array is itself under the subscript 0, else NULL. */
VXJSON_API VXJSON_CHECK int32_t jpath_filter_all_array_mysql(jlpca_ctx *ctx, json_node *node,
                                                             const jpath_filter *step,
                                                             json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_wildcard_mysql(jlpca_ctx *ctx, json_node *node,
                                                            const jpath_filter *step,
                                                            json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_field_item_mysql(jlpca_ctx *ctx, json_node *node,
                                                              const jpath_filter *step,
                                                              json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_object_field_mysql(jlpca_ctx *ctx, json_node *object,
                                                                const jpath_filter *step,
                                                                json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_array_field_mysql(jlpca_ctx *ctx, json_node *array,
                                                               const jpath_filter *step,
                                                               json_node **out);
VXJSON_API VXJSON_CHECK int32_t jpath_filter_array_item_mysql(jlpca_ctx *ctx, json_node *node,
                                                              const jpath_filter *step,
                                                              json_node **out);
/* Appends to `list`; 0, or -3102 for a virtual array item. */
VXJSON_API VXJSON_CHECK int32_t jpath_filter_array_item_virtual_mysql(jlpca_ctx *ctx,
                                                                      json_node *array,
                                                                      const jpath_filter *step,
                                                                      jpath_result_list *list);

/* JSON_CONTAINS_PATH(doc, 'one' | 'all', path) for one path (MySQL):
 * *found := 1 when the path matches at least one value, else 0.  Steps
 * that match several values are allowed.  Combining the answers of several
 * paths ('one': any, 'all': every) is the caller's.  0, or the
 * evaluation's failure (-3102, -503) with *found 0. */
VXJSON_API VXJSON_CHECK int32_t jpath_json_contains_path(json_node *doc, const jpath *path,
                                                         jlpca_ctx *ctx, int32_t *found);

/* ================================================================== */
/* SQL/JSON functions: JSON_VALUE and JSON_QUERY                       */
/* ================================================================== */

/* Result of a cast to a number and of JSON_VALUE ... RETURNING a number,
 * owned by the caller.  has_value 0 is SQL NULL (value then undefined). */
typedef struct json_number_result {
    int32_t has_value; /* 1 a value, 0 SQL NULL */
    xdec value;        /* the exact decimal (platform's xdec.h) */
} json_number_result;

/* Result of a cast to a datetime and of JSON_VALUE ... RETURNING a date or
 * datetime, owned by the caller.  has_value 0 is SQL NULL. */
typedef struct json_datetime_result {
    int32_t has_value; /* 1 a value, 0 SQL NULL */
    vxtime value;      /* the datetime (platform's vxtime.h) */
} json_datetime_result;

/* The shape JSON_VALUE accepts: 0 for a scalar; -3106 for an object or a
 * document array (one value that is no scalar); -3107 for a virtual array
 * (several matches).  node must not be NULL.  Reports nothing. */
VXJSON_API VXJSON_CHECK int32_t json_fun_value_check(const json_node *node);

/* Text results of this family live on the context's heap (ctx->heap),
 * NUL-terminated, and go with it; the caller frees nothing.  Function
 * kind: the context's escape_mode, 0 JSON_VALUE (strings decoded), 1
 * JSON_QUERY (strings keep their escapes; results are JSON text), any
 * other value: the result is only written.  The clauses come from the
 * compiled path: ret_len (longest text in bytes; for numbers the
 * precision; for datetimes 3 asks for a date), ret_scale, wrapper, format
 * (JSON_FMT_*), on_error and on_empty (JPATH_ON_*).  Status 100 is no
 * value: the caller substitutes its DEFAULT (DEFAULT ON ERROR).  Status 0
 * with no text (or has_value 0) is SQL NULL.  Out of memory (-503) is
 * never turned into NULL or DEFAULT, whatever ON ERROR says. */

/* JSON_VALUE(doc, path RETURNING VARCHAR(n) ...) and
 * JSON_QUERY(doc, path RETURNING VARCHAR(n) [WITH [CONDITIONAL] WRAPPER]
 * [PRETTY] ...): the text of what path selects in document.
 * document: the root, NULL for SQL NULL (status 0, no text).  status: a
 * failure the caller met before (reading the document): below 0 it goes
 * straight to the ON ERROR clause.  *out / *out_len: the text on the heap,
 * or NULL and 0.  JSON_VALUE writes a scalar's plain text (standard
 * dialect) or the whole result compactly with strings unquoted
 * (compatibility dialects); JSON_QUERY writes JSON text, inside brackets
 * when the wrapper asks for them; a JSON null written as it stands and,
 * in the standard dialect, the empty text are SQL NULL.
 * Returns 0, 100, or (under ERROR ON ERROR / ON EMPTY) -3103 (JSON_QUERY
 * without wrapper on a scalar or several values), -3104 (no match),
 * -3106 / -3107 (JSON_VALUE on an object or array / several values),
 * -3111 (longer than ret_len), the incoming status; -503; -3105 when a
 * function kind other than 0 and 1 meets a container. */
VXJSON_API VXJSON_CHECK int32_t json_fun_varchar(jlpca_ctx *ctx, json_node *document,
                                                 const jpath *path, char **out, uint32_t *out_len,
                                                 int32_t status);
/* JSON_VALUE(doc, path RETURNING NUMBER(p, s)): the selected scalar as an
 * exact decimal (json_cast_to_number), then rounded to precision ret_len
 * and scale ret_scale when both are non-zero.  A scale of 0 leaves the
 * value as it came, whatever the precision.  document NULL, a JSON null
 * and NULL ON ERROR give has_value 0 with status 0.  out: the caller's.
 * Returns 0, 100, or under ERROR ON ERROR / ON EMPTY the code: -3104,
 * -3106, -3107, -3111 (does not fit p, s), -6128, -6149, -6102, the
 * incoming status; -503. */
VXJSON_API VXJSON_CHECK int32_t json_value_number(jlpca_ctx *ctx, json_node *document,
                                                  const jpath *path, json_number_result *out,
                                                  int32_t status);
/* JSON_VALUE(doc, path RETURNING DATE / TIMESTAMP): the selected string
 * as a datetime (json_cast_to_date), of type VXTIME_TYPE_DATE when
 * ret_len is 3 (the time of day dropped) and VXTIME_TYPE_DATETIME
 * otherwise.  Codes as json_value_number, with -6118 for a string that is
 * no datetime and -6149 for a value that is no string. */
VXJSON_API VXJSON_CHECK int32_t json_value_date(jlpca_ctx *ctx, json_node *document,
                                                const jpath *path, json_datetime_result *out,
                                                int32_t status);
/* The evaluation step the three functions share: json_query (compat 0) or
 * jpath_filter_mysql (any other compat, several matches allowed), then
 * ON EMPTY and ON ERROR for a failure.  kind: 2 text (out / out_len may
 * get "[]"), 9 number, 14 datetime (out / out_len unused, may be NULL).
 * indicator: set to 0 when not NULL.  *handled: 1 when a failure was
 * settled by a clause; the status is then the answer.  *node: the match
 * (a document node, or a virtual array of several) when *handled is 0.
 * No match: standard dialect: ON EMPTY NULL gives 0, ERROR ON EMPTY
 * -3104, none given hands it to ON ERROR; compatibility dialects: 0
 * unless ERROR ON EMPTY. */
VXJSON_API VXJSON_CHECK int32_t json_query_with_mode(jlpca_ctx *ctx, json_node *document,
                                                     const jpath *path, int32_t kind, char **out,
                                                     uint32_t *out_len, int32_t *indicator,
                                                     int32_t *handled, json_node **node);
/* The shape JSON_QUERY accepts under path->wrapper, and how it writes it.
 * *wrap: the caller sets it to path->wrapper first; afterwards
 * JPATH_WRAPPER_WITH means "inside brackets" and JPATH_WRAPPER_WITHOUT
 * "as it stands" (several matches as an array of them).  An object or
 * document array: 0 (conditional: as it stands).  Several matches: -3103
 * without wrapper, else 0, as they stand.  A scalar: -3103 without
 * wrapper, else 0, inside brackets.  Reports nothing. */
VXJSON_API VXJSON_CHECK int32_t json_fun_query_check(const jpath *path, const json_node *node,
                                                     uint32_t *wrap);
/* ON ERROR for a number or datetime result: ERROR returns status (reported
 * with source "json/jpath"), DEFAULT returns 100, NULL and EMPTY set
 * *indicator (when not NULL) to 0 and return 0.  -503 is always
 * returned. */
VXJSON_API int32_t jpath_dop_ret_code(const jpath *path, int32_t *indicator, int32_t status);
/* ON ERROR for a text result: *out / *out_len cleared; EMPTY gives "[]"
 * on the heap and 0 (-503 without memory), DEFAULT 100, ERROR status
 * (reported), NULL 0.  -503 is always returned. */
VXJSON_API VXJSON_CHECK int32_t jpath_varchar_ret_code(jlpca_ctx *ctx, const jpath *path,
                                                       char **out, uint32_t *out_len,
                                                       int32_t status);
/* JSON_EXTRACT(doc, path) and -> / ->> (MySQL): the text of what path
 * (json_query) selects, written with path->format and the string
 * conversion option (JSON_CONV_MYSQL for JSON text, JSON_CONV_PLAIN for
 * unquoted text).  path NULL: the whole document, compact.
 * containers_only (low byte): a scalar result is no value.  document NULL:
 * 0 with no text.  Returns 0, 100 when the path selects nothing (or a
 * scalar under containers_only), -503 or a writing failure (reported). */
VXJSON_API VXJSON_CHECK int32_t json_fun_varchar_mysql(jlpca_ctx *ctx, json_node *document,
                                                       const jpath *path, uint8_t option,
                                                       uint32_t containers_only, char **out,
                                                       uint32_t *out_len);
/* jsonb #> path and #>> path (PostgreSQL): the text of what path selects,
 * written with path->format and the option word's low byte as string
 * conversion (JSON_CONV_JSON for #>, JSON_CONV_PLAIN for #>>, where a JSON
 * null is SQL NULL: 0 with no text).  Returns as json_fun_varchar_mysql. */
VXJSON_API VXJSON_CHECK int32_t json_fun_varchar_pg(jlpca_ctx *ctx, json_node *document,
                                                    const jpath *path, uint32_t option, char **out,
                                                    uint32_t *out_len);

/* ================================================================== */
/* Casts of JSON scalars                                               */
/* ================================================================== */

/* The value of one scalar node as an exact decimal, never through a
 * double: an integer exactly, a number text rounded to 38 digits, a string
 * read as a number ("12.5" is 12.5), a boolean as 0 or 1 (its stored
 * value), a date or datetime as seconds since the epoch (as
 * json_cast_datetime_to_number).  JSON null and, outside compatibility
 * mode 2, the empty string give has_value 0 (SQL NULL).  ctx: read for its
 * compat only.  out->has_value is 0 on every failure.
 * Returns 0; -6128 for a string that is no number ("12x"), or for the
 * empty string under compat 2; -3106 / -3107 for an object, array or
 * several matches (json_fun_value_check); -6149 for an unknown type code;
 * -6102 for a number beyond the decimal range ("1e400"). */
VXJSON_API VXJSON_CHECK int32_t json_cast_to_number(jlpca_ctx *ctx, const json_node *node,
                                                    json_number_result *out);
/* A string node read as a datetime ("2024-02-29", "2024-02-29T13:05:09.25Z"
 * and the other forms of vxtime_from_char_ex2), of datetime type
 * VXTIME_TYPE_DATETIME.  JSON null and, outside compatibility mode 2, the
 * empty string give has_value 0.  Only strings are read: numbers, booleans
 * and date and datetime nodes give -6149.  Returns 0; -6118 for a string
 * that is no datetime; -6128 for the empty string under compat 2; -3106 /
 * -3107 for an object, array or several matches. */
VXJSON_API VXJSON_CHECK int32_t json_cast_to_date(jlpca_ctx *ctx, const json_node *node,
                                                  json_datetime_result *out);
/* A date or datetime node as seconds since 1970-01-01T00:00:00 UTC: whole
 * seconds (scale 0) when it has no fraction, else the seconds plus the
 * fraction to six places (a datetime at :00.25 gives S.250000).  A fraction that rounds
 * to a whole second at six places (from .9999995) gives the decimal
 * library's precision error -6161.  Returns 0, or the datetime library's
 * code for a value out of range. */
VXJSON_API VXJSON_CHECK int32_t json_cast_datetime_to_number(const json_node *node,
                                                             json_number_result *out);
/* A number node (JSON_INTEGER or JSON_DECIMAL) of seconds since the epoch
 * as a datetime (type VXTIME_TYPE_DATETIME).  The fraction counts to six
 * places; for a negative number it counts back (-1.5 is half a second
 * before -1).  Returns 0; -6149 for seconds beyond the signed 32-bit range
 * (after 2038-01-19T03:14:07 or before 1901-12-13T20:45:52) and for any
 * other node type; -6102 for seconds beyond 64 bits ("1e30"). */
VXJSON_API VXJSON_CHECK int32_t json_cast_number_to_datetime(const json_node *node,
                                                             json_datetime_result *out);

#ifdef __cplusplus
}
#endif

#endif /* VXJSON_QUERY_H */
