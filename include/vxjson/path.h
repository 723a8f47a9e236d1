/*
 * vxjson/path.h -- part of the exported interface of libvxjson.
 *
 * Compiled paths: the path model, the path scanner and grammar,
 * text-array paths and path text generation.
 * Include "vxjson.h", which includes every part; the records, codes and
 * the parse context these functions take are declared there.
 */
#ifndef VXJSON_PATH_H
#define VXJSON_PATH_H

#include "vxjson.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ================================================================== */
/* Compiled paths (source unit json/jpath)                             */
/* ================================================================== */

/* A path such as $.a[1 to 3, 5].* is compiled once into a jpath: the
 * options of the SQL/JSON function that uses it and a doubly linked chain
 * of steps ("filters"), each with its ascending list of index entries.
 * Everything lives on the parse context's heap and goes with it. */

/* Step kinds (jpath_filter.kind). */
#define JPATH_STEP_ROOT         0 /* $ ; added with an empty key */
#define JPATH_STEP_ALL_ELEMENTS 1 /* [*] */
#define JPATH_STEP_WILDCARD     2 /* .* */
#define JPATH_STEP_MEMBER       3 /* .name or ."name"; every text-array element */
#define JPATH_STEP_SUBSCRIPTS   4 /* [1, 3 to 5] */

/* Option word: jpath_encode_flag packs, jpath_decode_flag unpacks. */
#define JPATH_FLAG_RET_TYPE_SHIFT 0
#define JPATH_FLAG_RET_TYPE_MASK  7u /* bits 0-2 */
#define JPATH_FLAG_FORMAT_SHIFT   3
#define JPATH_FLAG_FORMAT_MASK    3u /* bits 3-4 */
#define JPATH_FLAG_WRAPPER_SHIFT  5
#define JPATH_FLAG_WRAPPER_MASK   3u /* bits 5-6 */
#define JPATH_FLAG_ON_ERROR_SHIFT 7
#define JPATH_FLAG_ON_ERROR_MASK  7u /* bits 7-9 */
#define JPATH_FLAG_ON_EMPTY_SHIFT 10
#define JPATH_FLAG_ON_EMPTY_MASK  3u /* bits 10-11 */

/* ret_type: the returning class (0: invalid or none). */
#define JPATH_RET_NONE    0
#define JPATH_RET_NUMBER  1 /* ret_len precision, ret_scale scale */
#define JPATH_RET_CLASS_2 2 /* a returning class of the function layer */
#define JPATH_RET_CHAR    3 /* ret_len the maximum result length */
#define JPATH_RET_CLASS_4 4 /* a returning class of the function layer */
/* wrapper */
#define JPATH_WRAPPER_WITHOUT     1 /* the default; 0 decodes to it */
#define JPATH_WRAPPER_WITH        2
#define JPATH_WRAPPER_CONDITIONAL 3
/* on_error (0 behaves as 1) */
#define JPATH_ON_ERROR_NULL    1
#define JPATH_ON_ERROR_ERROR   2 /* the error code is returned */
#define JPATH_ON_ERROR_EMPTY   3 /* a character result becomes "[]" */
#define JPATH_ON_ERROR_DEFAULT 4 /* 100 is returned; the caller's DEFAULT */
#define JPATH_ON_ERROR_MAX     4
/* on_empty (any value above 1 is ERROR) */
#define JPATH_ON_EMPTY_AS_ERROR 0
#define JPATH_ON_EMPTY_NULL     1
#define JPATH_ON_EMPTY_ERROR    2

/* dialect: the path language a path is compiled for. */
#define JPATH_DIALECT_STANDARD    0
#define JPATH_DIALECT_PG_ARRAY    1 /* required by jpath_parse_pg_array */
#define JPATH_DIALECT_MYSQL_ARRAY 2 /* set by jpath_array_flex */

/* fun_kind before jpath_flex copies the context's escape_mode into it. */
#define JPATH_FUN_KIND_DEFAULT 1
/* ret_len of jpath_init_simple: the longest character result. */
#define JPATH_SIMPLE_RET_LEN 32767
/* first_index and max_index of a step without subscripts. */
#define JPATH_NO_INDEX (-1)

/* One subscript (end 0) or range of a subscript step, in ascending order. */
struct jpath_index {
    int64_t start;     /* first position */
    int64_t end;       /* last position of a range; 0 for one subscript */
    jpath_index *prev; /* previous entry */
    jpath_index *next; /* next entry */
};

/* One step of a compiled path. */
struct jpath_filter {
    uint32_t kind;           /* JPATH_STEP_* */
    char *key;               /* member name (kind 3), NUL-terminated copy; else "" */
    uint32_t key_len;        /* bytes of key, terminator excluded */
    int32_t first_index;     /* first subscript given; -1 none yet */
    int32_t max_index;       /* largest position covered; -1 none yet */
    uint32_t multi;          /* 1 once a second subscript, range or repeat came */
    uint32_t index_count;    /* index entries */
    jpath_index *index_head; /* first entry */
    jpath_index *index_tail; /* last entry */
    jpath *path;             /* the owning path */
    jpath_filter *prev;      /* previous step, NULL for the first */
    jpath_filter *next;      /* next step, NULL for the last */
};

/* One compiled path with the options of the function that uses it. */
struct jpath {
    uint32_t ret_type;          /* JPATH_RET_* */
    uint32_t ret_len;           /* precision (number), else the whole datatype */
    uint32_t ret_scale;         /* scale (number), else 0 */
    uint32_t wrapper;           /* JPATH_WRAPPER_* */
    uint32_t format;            /* serialisation option word (JSON_FMT_*) */
    uint32_t on_error;          /* JPATH_ON_ERROR_* (0-4) */
    uint32_t on_empty;          /* JPATH_ON_EMPTY_* */
    uint64_t user_data;         /* the caller's, never read here */
    uint32_t filter_count;      /* steps */
    jpath_filter *first_filter; /* head: evaluation starts here */
    jpath_filter *last_filter;  /* tail: steps are appended here */
    uint32_t dialect;           /* JPATH_DIALECT_* */
    uint32_t fun_kind;          /* the context's escape_mode at compile time */
};

/* The option word: ret_type + format*8 + wrapper<<5 + on_error<<7 +
 * on_empty<<10.  Not masked: an out-of-range value spills into the next
 * field. */
VXJSON_API uint32_t jpath_encode_flag(uint32_t ret_type, uint32_t format, uint32_t wrapper,
                                      uint32_t on_error, uint32_t on_empty);
/* Unpack an option word into path.  A ret_type outside 1-4 or an on_error
 * above 4 leaves ret_type 0 (invalid); the other fields keep their bits. */
VXJSON_API void jpath_decode_flag(jpath *path, uint32_t flag);
/* Returning type details: for ret_type 1 the scale is bits 0-7 and the
 * precision bits 8-15 of datatype; otherwise ret_len is datatype whole. */
VXJSON_API void jpath_decode_datatype(jpath *path, uint32_t datatype);
/* Clear path, decode flag (a wrapper of 0 becomes 1), then datatype; store
 * user_data and dialect; fun_kind 1. */
VXJSON_API void jpath_init(jpath *path, uint32_t flag, uint32_t datatype, uint64_t user_data,
                           uint32_t dialect);
/* Clear path for use outside a SQL/JSON function: character result of up
 * to 32,767 bytes, without wrapper, ERROR ON ERROR.  Returns 0. */
VXJSON_API int32_t jpath_init_simple(jpath *path, uint32_t dialect);
/* Append a step of `kind` with a private NUL-terminated copy of key/key_len
 * (key may be NULL when key_len is 0).  Step and key come from heap
 * (allocation arguments env, heap).  0, or -503 with the path unchanged. */
VXJSON_API VXJSON_CHECK int32_t jpath_add_filter_low(void *env, void *heap, jpath *path,
                                                     const char *key, uint32_t key_len,
                                                     uint32_t kind);
/* jpath_add_filter_low with the context's env and heap; the new step
 * becomes ctx->cur_filter.  A failure is reported ("json/jpath") and
 * returned: -503. */
VXJSON_API VXJSON_CHECK int32_t jpath_add_filter(jlpca_ctx *ctx, jpath *path, const char *key,
                                                 uint32_t key_len, uint32_t kind);
/* Add subscript `index` to a step.  Subscripts must ascend: one below the
 * largest so far is -3102; a repeat of the largest only sets multi.  The
 * first subscript sets first_index, every later one multi.  -503 when the
 * entry cannot be allocated. */
VXJSON_API VXJSON_CHECK int32_t jpath_add_index(void *env, void *heap, jpath_filter *step,
                                                int32_t index);
/* Add the range from..to: reversed (from > to) or starting below the
 * largest position so far is -3102; a range starting at that position is
 * trimmed by one, and one of a single position is added as a subscript
 * (jpath_add_index).  A first range sets first_index and leaves multi 0.
 * -503 when the entry cannot be allocated. */
VXJSON_API VXJSON_CHECK int32_t jpath_add_range(void *env, void *heap, jpath_filter *step,
                                                int32_t from, int32_t to);
/* PostgreSQL subscript: appended as given (any order, negative allowed);
 * first_index and max_index become `index`, multi is untouched.  0, or
 * -503 when the entry cannot be allocated. */
VXJSON_API VXJSON_CHECK int32_t jpath_add_index_pg(void *env, void *heap, jpath_filter *step,
                                                   int32_t index);

/* ---- path scanner and grammar ---- */

/* Stack bounds of the path grammar: a subscript list takes two entries an
 * item, so about 5,000 items fit in one bracket. */
#define JPATH_PARSE_STACK_INITIAL JSON_PARSE_STACK_INITIAL
#define JPATH_PARSE_STACK_MAX     JSON_PARSE_STACK_MAX

/* Create a path scanner over the context's text (from its heap; NULL and
 * -503 when exhausted); stored in ctx->scanner. */
VXJSON_API VXJSON_CHECK int32_t jpath_flex_scanner_init(jlpca_ctx *ctx, void **scanner);
VXJSON_API void jpath_flex_scanner_deinit(jlpca_ctx *ctx, void *scanner);
/* The next path token: JT_INT, JT_BIGINT, JT_DECIMAL, JT_DQSTRING (quoted
 * name), JT_NAME, a single character's code, or 0 at the end and after a
 * lexical error (err_code -5 with "charactor need escape", "escape error"
 * or "Unterminated quoted identifier" in err_msg).  The value is in the
 * context (tok_str a heap copy, tok_val), not in `value`. */
VXJSON_API int32_t jpath_lex(void *value, void *scanner);
/* The path grammar over a scanner, appending steps to ctx->cur_path: 0
 * accepted, 1 syntax error, 2 stack exhausted, or the negative code of the
 * action that failed (-2007 range word not "to", -6102 position out of
 * range, -3102 subscript order or a list in the MySQL dialect, -503). */
VXJSON_API int32_t jpath_parse(void *scanner, jlpca_ctx *ctx);
/* Grammar error hooks: record nothing; -1 and the code respectively. */
VXJSON_API int32_t jpath_error(jlpca_ctx *ctx, const char *msg);
VXJSON_API int32_t jpath_error_ex(jlpca_ctx *ctx, int32_t code);

/* JSON_VALUE(doc, '$.a[1 to 3]' ...): compile the context's text (given by
 * jlpca_reinit) into path, which the caller initialised (jpath_init or
 * jpath_init_simple); the steps come from the context's heap.  The path's
 * fun_kind becomes the context's escape_mode.  0, -503 when memory ran
 * out, or -3102 for every other failure (a syntax error, a lexical error,
 * a bad subscript); the steps made before a failure stay, and the caller
 * discards the path.  A NUL byte outside quotes ends the path text. */
VXJSON_API VXJSON_CHECK int32_t jpath_flex(jlpca_ctx *ctx, jpath *path);
/* JSON_SET(doc, path, value, ...) and friends: compile the path arguments
 * of a MySQL-style call.  single nonzero: text/len is one path text.  Zero:
 * text/len is a JSON array of path strings, one path each, in order.
 * Every path is initialised with jpath_init_simple, dialect 2.  On success
 * *paths is a block of *count records on the context's heap (an empty
 * array gives 0 and NULL).  100 when an element is null (no paths);
 * -3102 when a path does not compile, or the text is not a JSON array of
 * strings (err_msg says so); -503.  The outputs are set only on success. */
VXJSON_API VXJSON_CHECK int32_t jpath_array_flex(jlpca_ctx *ctx, const char *text, uint32_t len,
                                                 int32_t single, uint32_t *count, jpath **paths);

/* ---- text-array paths ---- */

/* jsonb_set(doc, '{a,0,"b c"}', ...): compile the PostgreSQL text array
 * literal `text` (NUL-terminated; modified in place) into path, which must
 * have been initialised with dialect 1: one member step per element, in
 * order, no root step.  Steps come from heap (allocation arguments env,
 * heap); the element text is gathered in a growable string of allocator
 * (NULL: malloc), released before returning.  Elements may be quoted with
 * "..." and escape any character with a backslash; white space around
 * unquoted elements is dropped; an unquoted empty element adds no step.
 * 0; -3102 for a path of another dialect and every malformed literal
 * (missing braces, text after "}", misplaced quote, comma or brace, an
 * empty element between commas, a trailing backslash, an unquoted NULL);
 * -503.  Steps added before a failure stay. */
VXJSON_API VXJSON_CHECK int32_t jpath_parse_pg_array(void *env, void *heap, vx_allocator *allocator,
                                                     jpath *path, char *text);
/* Read one element of a text array literal from *pos with the reader state
 * *state (0 before "{", 1 after it, 2 unquoted, 3 in quotes, 4 after a
 * closing quote, 5 after ","), kept by the caller between elements.  The
 * element's text is compacted in place and appended to out; *pos moves
 * past its "," or "}", *finished is 1 when that was "}", *quoted 1 when
 * the element was quoted or held an escape.  0, -3102, or -503 from out. */
VXJSON_API VXJSON_CHECK int32_t jpath_array_element(void *env, vx_allocator *allocator, vxstr *out,
                                                    char **pos, int32_t *state, int32_t *finished,
                                                    int32_t *quoted);
/* 1 for space, tab, line feed, carriage return, form feed and vertical
 * tab; 0 otherwise. */
VXJSON_API int32_t jpath_array_isspace(int32_t c);

/* ================================================================== */
/* Path text generation                                                */
/* ================================================================== */

/* One step of a generated path, root first: a member name, or an element
 * position marked by key_len JPATH_SEGMENT_POSITION. */
#define JPATH_SEGMENT_POSITION 0xFFFFFFFFu
typedef struct jpath_segment jpath_segment;
struct jpath_segment {
    const char *key;     /* member name bytes (not NUL-terminated), NULL for a position */
    uint32_t key_len;    /* bytes of key, or JPATH_SEGMENT_POSITION */
    uint32_t position;   /* element position of an array step */
    jpath_segment *prev; /* the step above */
    jpath_segment *next; /* the step below */
};

/* JSON_SEARCH-style results: the path text of each found node, from the
 * document root.  found is the first of `count` nodes linked through
 * next_sibling, as a result list links them.  count 0: *out NULL.  count
 * 1: *out the string node of json_path_gen.  More: *out a new array of one
 * string node per found node, in list order (fewer when the list is
 * shorter).  Nodes and texts come from the context's heap.  0, -503 (the
 * failure reported, *out NULL), or an error of json_path_gen. */
VXJSON_API VXJSON_CHECK int32_t json_lst_to_path_arr(jlpca_ctx *ctx, json_node **out,
                                                     uint32_t count, const json_node *found);
/* The path text of found, e.g. $.a[2]."b c": "$", then for each step from
 * the root "[n]" for an element (the first slot holding the node) or "."
 * and the member name (of the first member holding it), bare when it is a
 * plain name (a letter then letters and digits, or "_" then anything) and
 * otherwise between double quotes, nothing escaped, so a name holding a
 * quote, backslash, "/" or control character does not compile back.
 * *out is a new JSON_STRING node (str_flags 1) with the text, both on the
 * context's heap; a root gives "$".  0, -503, or -3102 when the node's
 * parent does not hold it among its members. */
VXJSON_API VXJSON_CHECK int32_t json_path_gen(const json_node *found, jlpca_ctx *ctx,
                                              json_node **out);
/* Format a chain of segments (NULL: none) as path text in a string of
 * allocator (NULL: malloc).  *text, NUL-terminated, and *len are the
 * caller's: free *text through the same allocator.  0 or -503. */
VXJSON_API VXJSON_CHECK int32_t jpath_get_from_lst(jlpca_ctx *ctx, vx_allocator *allocator,
                                                   char **text, uint32_t *len,
                                                   const jpath_segment *first);

#ifdef __cplusplus
}
#endif

#endif /* VXJSON_PATH_H */
