/*
 * vxjson.h -- the exported interface of libvxjson, the JSON engine of the
 * vx relational database server.
 *
 * The server's SQL layer calls these plain C functions for the JSON type
 * and the SQL/JSON functions.  Every call receives a parse context
 * (jlpca_ctx) that the caller owns; it carries the caller's environment
 * handle, memory heap and pluggable allocator.  Nodes, members, literals and
 * result texts come from that heap or allocator and live until the caller
 * releases them; nothing is freed piecemeal.
 *
 * Conventions: every operation returns a signed 32-bit status, 0 (or a
 * token kind, or 100) on success and a negative code on failure; results
 * travel through out-arguments; predicates return 1 or 0.  A failure passed
 * up from a callee is reported to the server's error hook with a fixed
 * source and line, so one failure leaves a trail innermost first.
 *
 * Banners follow the order of the sources: limits and switches, type codes
 * and token kinds, error codes, records, then the functions by family.
 */
#ifndef VXJSON_H
#define VXJSON_H

#include <stddef.h>
#include <stdint.h>

#include "vx_types.h"

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__) || defined(__clang__)
#define VXJSON_API   __attribute__((visibility("default")))
#define VXJSON_CHECK __attribute__((warn_unused_result))
#else
#define VXJSON_API
#define VXJSON_CHECK
#endif

#define VXJSON_VERSION_MAJOR  0
#define VXJSON_VERSION_MINOR  1
#define VXJSON_VERSION_PATCH  0
#define VXJSON_VERSION_STRING "0.1.0"

/* ================================================================== */
/* Limits and switches                                                 */
/* ================================================================== */

/* Inline literal buffer: most strings and names never touch the heap. */
#define JLPCA_LIT_INLINE_SIZE 32768
/* Inline token-text buffer; longer texts get one from the system allocator. */
#define JLPCA_SCAN_INLINE_SIZE 2048
/* Room for a lexical error message, terminator included. */
#define JLPCA_ERR_MSG_SIZE 1024
/* Grammar stacks start small and double up to a hard bound, so that a
 * hostile nesting depth ends in an error rather than unbounded memory:
 * about 5,000 levels of arrays or 2,500 levels of objects. */
#define JSON_PARSE_STACK_INITIAL 200
#define JSON_PARSE_STACK_MAX     10000

/* escape_mode: how string literals are kept (and the caller's function kind). */
#define JLPCA_ESCAPE_DECODE 0 /* escapes decoded to the characters they stand for */
#define JLPCA_ESCAPE_KEEP   1 /* escape sequences kept in JSON form */
#define JLPCA_ESCAPE_SORTED 2 /* at init only: decode, sorted keys, last duplicate wins */

/* compat: the dialect. */
#define JLPCA_COMPAT_STANDARD 0
#define JLPCA_COMPAT_PG       1
#define JLPCA_COMPAT_MYSQL    2

/* Serialisation format flags. */
#define JSON_FMT_COMPACT  0
#define JSON_FMT_ASCII    1 /* non-ASCII text written as \uXXXX */
#define JSON_FMT_PRETTY_A 2 /* " : " separator, nested containers on new lines */
#define JSON_FMT_PRETTY_B 4 /* ": " separator, only when the whole word is 4 */
/* With JSON_FMT_ASCII: a character beyond U+FFFF is written as its UTF-16
 * surrogate pair (\uD83D\uDE00) rather than its high surrogate alone.  The
 * json_to_string family adds it by itself when the context reads standard
 * strings (jlpca_set_std_strings). */
#define JSON_FMT_ASCII_PAIRS 8

/* Conversion requests for string text. */
#define JSON_CONV_NONE  0 /* written as stored */
#define JSON_CONV_PLAIN 1 /* no quotes, escapes removed */
#define JSON_CONV_JSON  2 /* quoted, standard escapes */
#define JSON_CONV_MYSQL 3 /* quoted, MySQL escapes */

/* json_cmp modes. */
#define JSON_CMP_CONTAINS_PG    1
#define JSON_CMP_OVERLAPS_MYSQL 2
#define JSON_CMP_EQUAL          3

/* json_array_add_one_node modes and positions. */
#define JSON_ARRAY_INSERT  0
#define JSON_ARRAY_REPLACE 1
#define JSON_ARRAY_END     (-1)

/* ================================================================== */
/* Type codes and token kinds                                          */
/* ================================================================== */

#define JSON_OBJECT   0
#define JSON_ARRAY    1
#define JSON_INTEGER  2
#define JSON_DECIMAL  3 /* a number kept as its text */
#define JSON_STRING   4
#define JSON_BOOLEAN  5
#define JSON_NULL     6
#define JSON_DATE     7 /* printed with datetime format 8192 */
#define JSON_DATETIME 8 /* printed with datetime format 6 */

/* Token kinds of the JSON scanner; single characters are their own byte. */
#define JT_INT      258 /* integer fitting signed 32 bits, value in tok_val */
#define JT_BIGINT   259 /* integer needing signed 64 bits, value in tok_val */
#define JT_DECIMAL  260 /* number kept as text in tok_str, length in tok_val */
#define JT_DQSTRING 261 /* double-quoted string */
#define JT_SQSTRING 262 /* single-quoted string (lax) */
#define JT_NAME     263 /* unquoted word that is no keyword (lax) */
#define JT_TRUE     264
#define JT_FALSE    265
#define JT_NULL     266

/* ================================================================== */
/* Error and status codes                                              */
/* ================================================================== */

#define VXJSON_OK                   0
#define VXJSON_NO_VALUE             100     /* no value: caller substitutes NULL or DEFAULT */
#define VXJSON_ERR_UNTERMINATED_SQ  (-4)    /* 'abc */
#define VXJSON_ERR_LEX              (-5)    /* "abc  or  a raw tab inside a string */
/* Only while the context reads standard strings (jlpca_set_std_strings): */
#define VXJSON_ERR_SURROGATE        (-6)    /* ["\ud83d"]  a lone or reversed surrogate escape */
#define VXJSON_ERR_UTF8             (-7)    /* ["\xC0\xAF"]  invalid UTF-8 in the text */
#define VXJSON_ERR_NOMEM            (-503)  /* any allocation failed */
#define VXJSON_ERR_SYNTAX           (-2007) /* [1 2]  (inside a grammar) */
#define VXJSON_ERR_LONE_BACKSLASH   (-2206) /* MySQL escaping of  abc\  */
#define VXJSON_ERR_PATH             (-3102) /* $.a[  */
#define VXJSON_ERR_QUERY_SCALAR     (-3103) /* JSON_QUERY without wrapper on 1 */
#define VXJSON_ERR_PATH_NO_MATCH    (-3104) /* strict $.b on {"a":1} */
#define VXJSON_ERR_INVALID_JSON     (-3105) /* [1,  or  {"a":1,"a":2} with unique keys */
#define VXJSON_ERR_VALUE_NOT_SCALAR (-3106) /* JSON_VALUE on [1] */
#define VXJSON_ERR_VALUE_MANY       (-3107) /* JSON_VALUE on $[*] of [1,2] */
#define VXJSON_ERR_RETURN_TYPE      (-3111) /* RETURNING a type the value does not fit */
#define VXJSON_ERR_MULTI_STEP       (-3113) /* removal of $ */
#define VXJSON_ERR_TEXT_PATH_SCALAR (-3114) /* {a} applied to 1 */
#define VXJSON_ERR_TEXT_PATH_INDEX  (-3115) /* {x} applied to [1] */
#define VXJSON_ERR_REMOVE_SUBSCRIPT (-3118) /* removal of $[0] from {} */
#define VXJSON_ERR_CONCAT_SCALAR    (-3119) /* {"a":1} || 1 */
#define VXJSON_ERR_DOUBLE_OVERFLOW  (-6102) /* [1e400] in the MySQL dialect */
#define VXJSON_ERR_NOT_DATETIME     (-6118) /* "abc" cast to a date */
#define VXJSON_ERR_NOT_NUMBER       (-6128) /* "abc" cast to a number */
#define VXJSON_ERR_CAST             (-6149) /* true cast to a number */

/* ================================================================== */
/* Records                                                             */
/* ================================================================== */

typedef struct json_node json_node;
typedef struct json_keyval json_keyval;
struct xdec; /* the server's exact decimal (platform/xdec.h) */

/* One JSON value.  The payload overlays share storage; `type` says which
 * one is valid.  The count of an array and of an object share one place. */
struct json_node {
    json_node *parent; /* containing object or array; NULL for a root */
    uint32_t type;     /* JSON_OBJECT .. JSON_DATETIME */
    union {
        int64_t ival;           /* JSON_INTEGER */
        uint32_t bval;          /* JSON_BOOLEAN: 0 false, else true */
        vxtime dt;              /* JSON_DATE, JSON_DATETIME: opaque here */
        struct {                /* JSON_STRING, JSON_DECIMAL */
            uint32_t str_len;   /* bytes of text, terminator excluded */
            char *str;          /* NUL-terminated text, NULL when empty */
            uint32_t str_flags; /* 1 when the literal held an escape */
        };
        struct {            /* JSON_ARRAY, JSON_OBJECT */
            uint32_t count; /* elements or members */
            union {
                json_node **items;         /* array: element pointers */
                json_keyval *first_member; /* object: member list head */
            };
            union {
                struct {
                    uint32_t capacity;   /* array: room in items */
                    uint32_t is_virtual; /* array: 1 for gathered path matches */
                };
                json_keyval *last_member; /* object: member list tail */
            };
        };
    };
    uint32_t lst_count;      /* element list while an array is built */
    json_node *lst_first;    /* first element of that list */
    json_node *lst_last;     /* last element of that list */
    json_node *chain_next;   /* next node in creation order */
    json_node *prev_sibling; /* links inside the parent's element list */
    json_node *next_sibling;
};

/* One object member; the name bytes follow the record in one allocation. */
struct json_keyval {
    char *name;        /* name bytes, not NUL-terminated */
    uint32_t name_len; /* bytes of the name */
    uint32_t flags;    /* lit_escaped of the name literal */
    json_node *value;  /* the member's value */
    json_keyval *prev; /* links in the object's member list */
    json_keyval *next;
};

/* Compiled paths and their steps (defined under "Compiled paths"); the
 * path grammar keeps the path it builds and its current step in the
 * parse context. */
typedef struct jpath jpath;
typedef struct jpath_filter jpath_filter;
typedef struct jpath_index jpath_index;

/* The parse context: everything one parse needs, owned by the caller. */
typedef struct jlpca_ctx {
    void *env; /* caller's environment, passed to every allocation */
    /* token value */
    uint32_t tok;    /* kind of the token just returned, 0 when rejected */
    char *tok_str;   /* text of a string, name or decimal token */
    int64_t tok_val; /* integer value, or byte length of tok_str */
    /* error block */
    int32_t err_code;                 /* 0, or the negative code of the lexical error */
    char err_msg[JLPCA_ERR_MSG_SIZE]; /* NUL-terminated message */
    uint32_t err_line;                /* line (from 1) where the error was detected */
    uint32_t err_aux;                 /* place of the error: see jlpca_error_position */
    /* multibyte tracking */
    int32_t mb_track;        /* 1 while inside a quoted string */
    uint32_t mb_pending;     /* bytes of the last character beyond the piece */
    int32_t mb_split;        /* previous piece ended on a double-byte lead */
    int32_t mb_charset;      /* character-set code: 10, 1, 6 (or 0) */
    void *heap;              /* memory heap for nodes, members and copies */
    vx_allocator *allocator; /* pluggable allocator for element arrays */
    /* tree under construction */
    json_node *first_node; /* first node created; the root after success */
    json_node *cur_node;   /* node to which the next one is attached */
    json_node *last_node;  /* most recent node of the creation chain */
    /* input */
    const char *text;  /* input text, not NUL-terminated, not owned */
    uint32_t text_len; /* its length in bytes */
    int32_t blank;     /* caller's text held only blanks */
    void *scanner;     /* scanner instance of this parse */
    /* literal buffer */
    char lit_inline[JLPCA_LIT_INLINE_SIZE]; /* inline first buffer */
    char *lit_buf;                          /* current buffer: inline or from heap */
    int32_t lit_len;                        /* bytes collected, NUL at lit_len */
    uint32_t lit_cap;                       /* usable capacity, 32,767 inline */
    void *scan_handle;                      /* scanner's input buffer */
    int32_t lit_escaped;                    /* 1 once an escape was processed */
    /* token text buffer */
    char scan_inline[JLPCA_SCAN_INLINE_SIZE]; /* inline buffer */
    char *scan_buf;                           /* inline, or from the system allocator */
    uint32_t scan_cap;                        /* its capacity */
    /* switches */
    int32_t escape_mode;     /* JLPCA_ESCAPE_*; also the function kind */
    int32_t strict;          /* 1 strict reading, 0 lax */
    int32_t unique_keys;     /* 1 = a repeated member name is an error */
    uint8_t number_mode;     /* 2 = integral reals become integers */
    int32_t path_last_key;   /* read only by path evaluation */
    int32_t dup_key_replace; /* 1 = the last of repeated names wins */
    int32_t scalar_top;      /* 1 = a scalar may be the whole document */
    int32_t compat;          /* JLPCA_COMPAT_* */
    int32_t set_mode;        /* set by path: 1 replace, 2 replace or add, 3 add */
    int32_t sorted_keys;     /* 1 = members kept sorted by name */
    uint32_t array_spare;    /* spare slots added to every array built from a list */
    /* path under construction (path grammar) */
    jpath *cur_path;          /* the path jpath_flex compiles into */
    jpath_filter *cur_filter; /* its current step: subscripts go here */
    /* opt-in modes (zero after jlpca_init: the engine's own behaviour) */
    int32_t std_strings; /* 1 = standard JSON strings: see jlpca_set_std_strings */
} jlpca_ctx;

/* ================================================================== */
/* Parse context (source unit json/jlpca)                              */
/* ================================================================== */

/* Set up a context in the caller's memory: jlpca_init_simple, then strict
 * and unique_keys over what it chose.  env: the caller's environment,
 * handed to every allocation (may be NULL); ctx: the record to fill (not
 * NULL); heap: the memory heap for nodes, members and token copies (not
 * NULL for any read); allocator: the pluggable allocator for element
 * arrays and result texts (NULL: malloc and free); escape_mode, compat: as
 * for jlpca_init_simple; strict: 1 strict reading, 0 lax; unique_keys: 1
 * refuses a repeated member name.  Release with jlpca_deinit.  Returns 0. */
VXJSON_API int32_t jlpca_init(void *env, jlpca_ctx *ctx, void *heap, vx_allocator *allocator,
                              int32_t escape_mode, int32_t strict, int32_t unique_keys,
                              int32_t compat);
/* Zero ctx and set its switches for a function kind and dialect.
 * escape_mode: JLPCA_ESCAPE_DECODE, JLPCA_ESCAPE_KEEP, or JLPCA_ESCAPE_SORTED
 * (decode, sorted keys, the last of repeated names wins); compat:
 * JLPCA_COMPAT_* (nonzero selects strict reading with scalars allowed as
 * the whole document).  env, heap, allocator as for jlpca_init.  Reads the
 * character set (configuration value 635).  Returns 0. */
VXJSON_API int32_t jlpca_init_simple(void *env, jlpca_ctx *ctx, void *heap, vx_allocator *allocator,
                                     int32_t escape_mode, int32_t compat);
/* Clear ctx's multibyte tracking and read the character set afresh
 * (configuration value 635: 0, 1, 2 give mb_charset 10, 1, 6; any other
 * value leaves it).  ctx not NULL.  Returns 0. */
VXJSON_API int32_t jlpca_mblen_init(jlpca_ctx *ctx);
/* Give ctx the text to read next: text (not copied, not owned, not
 * NUL-terminated; NULL only with len 0) must stay unchanged until the read
 * and any jlpca_error_position question about it are done.  Clears the
 * tree fields and the error block.  0, or -503 when the token-text buffer
 * (len + 10 bytes, from malloc) cannot be had; it then stays the inline one. */
VXJSON_API int32_t jlpca_reinit(jlpca_ctx *ctx, const char *text, uint32_t len);
/* jlpca_reinit, then blank := blank: 1 tells the readers that the caller's
 * text held only blanks, so that an empty text is an error (-3105).
 * Returns what jlpca_reinit returns. */
VXJSON_API int32_t jlpca_reinit_with_blank(jlpca_ctx *ctx, const char *text, uint32_t len,
                                           int32_t blank);
/* Clear ctx's error block: err_code, err_msg, err_line and err_aux (the
 * place jlpca_error_position reads).  Returns 0. */
VXJSON_API int32_t jlpca_lex_error_reinit(jlpca_ctx *ctx);
/* Give back a token-text buffer taken from malloc (the inline one serves
 * again) and clear first_node, cur_node and last_node.  Trees already read
 * stay in the heap. */
VXJSON_API void jlpca_clear(jlpca_ctx *ctx);
/* Release what ctx took from malloc (its token-text buffer).  The heap and
 * everything in it stay the caller's.  ctx may be reused after jlpca_init. */
VXJSON_API void jlpca_deinit(jlpca_ctx *ctx);
/* cur_node := node (NULL: no open container): where the next node the
 * grammar creates is attached. */
VXJSON_API void jlpa_set_top_json(jlpca_ctx *ctx, json_node *node);
/* Begin a new literal in ctx's inline buffer (lit_len 0, lit_escaped 0);
 * a heap buffer of the previous literal is left to the heap.  Returns the
 * inline buffer, owned by ctx. */
VXJSON_API char *jlpca_startlit(jlpca_ctx *ctx);
/* Append n bytes (n <= 0: nothing) to ctx's literal, measuring multibyte
 * characters while a quoted string is open; the literal stays
 * NUL-terminated.  bytes need no terminator.  0, or -503 when a larger
 * buffer cannot be had from the heap. */
VXJSON_API int32_t jlpca_addlit(const char *bytes, int32_t n, jlpca_ctx *ctx);
/* How many bytes of the last character of the n-byte piece at bytes lie
 * beyond its end, in ctx's character set (UINT32_MAX when the piece ends
 * on a double-byte lead byte; the next piece then decides).  Updates
 * mb_split. */
VXJSON_API uint32_t jlpca_encoding_mblen(jlpca_ctx *ctx, const char *bytes, int32_t n);
/* Add the escape whose letter starts text (the bytes after a backslash; n
 * of them, the plain text after the escape included) to the literal:
 * decoded, or kept in JSON form under JLPCA_ESCAPE_KEEP; then the rest of
 * text.  Sets lit_escaped.  0, -3105 for an unknown letter or a bad \u
 * escape (the \u failure is also reported), -503. */
VXJSON_API int32_t jlpca_addlit_escape(const char *text, int32_t n, jlpca_ctx *ctx);
/* Read the four hex digits at hex4 (n must be at least 4) into a UTF-16
 * code unit and append it through jlpca_addlit_uchar.  0, -3105 for a
 * character that is no hex digit, or what jlpca_addlit_uchar returns. */
VXJSON_API int32_t jlpca_uchar(const char *hex4, int32_t n, jlpca_ctx *ctx);
/* Append the code unit `code` in the server character set; under
 * JLPCA_ESCAPE_KEEP a control character is kept as an escape (hex4, its
 * four digits as written, in upper case).  n is unused.  0, -3105 when the
 * character set has no such character, -503. */
VXJSON_API int32_t jlpca_addlit_uchar(jlpca_ctx *ctx, const char *hex4, int32_t n, uint32_t code);
/* Normalise a number's sign and leading zeros (text, n bytes).  1 with the
 * text to classify in *out and *out_len (a slice of text, or a heap copy
 * when the sign had to be moved); 0 with err_code set (-3105 strict
 * rejection, -503) otherwise.  out and out_len not NULL. */
VXJSON_API int32_t jlpca_number_prefix(const char *text, int32_t n, jlpca_ctx *ctx,
                                       const char **out, int32_t *out_len);
/* Does the number text (len bytes) fit a double?  JT_DECIMAL when it does
 * (the value in *out when out is not NULL); else 0, and in the MySQL
 * dialect or under number_mode 2 err_code -6102 "number overflow". */
VXJSON_API int32_t jlpca_check_decimal_overflow(const char *text, int32_t len, jlpca_ctx *ctx,
                                                double *out);
/* Classify an integer token (text, n bytes): JT_INT or JT_BIGINT with the
 * value in tok_val, JT_DECIMAL (a heap copy in tok_str) beyond 18
 * characters; 0 with err_code set (-3105, -6102, -503) when refused. */
VXJSON_API int32_t jlpca_ret_integer(const char *text, int32_t n, jlpca_ctx *ctx);
/* Classify a decimal token: JT_DECIMAL with a heap copy of the normalised
 * text in tok_str and its length in tok_val, or 0 with err_code set. */
VXJSON_API int32_t jlpca_ret_decimal(const char *text, int32_t n, jlpca_ctx *ctx);
/* Classify a real token (exponent or suffix): as jlpca_ret_decimal, and
 * under number_mode 2 an integral value becomes JT_INT or JT_BIGINT. */
VXJSON_API int32_t jlpca_ret_real(const char *text, int32_t n, jlpca_ctx *ctx);
/* JT_TRUE, JT_FALSE or JT_NULL for the NUL-terminated word (any letter
 * case unless ctx is strict); -1 (lax) or -2 (strict) for any other word. */
VXJSON_API int32_t jkeyword_lookup(const char *word, jlpca_ctx *ctx);

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

/* ================================================================== */
/* Error positions and opt-in reading modes                            */
/* ================================================================== */

/* Where the last json_flex, jcheck_flex (or json_flex_next_token) of ctx
 * failed, without reading the text again.  The reader records the place
 * of its first lexical or grammar error (a lexical error wins over the
 * syntax error it causes) in err_aux; this turns it into:
 *   offset   bytes of the text before the failing token, or before the
 *            byte inside it that is to blame (a raw tab in a string, the
 *            backslash of a bad escape)
 *   line     1 + the line feeds before offset (as err_line counts them)
 *   column   1 + the bytes between the last line feed and offset
 *   message  the error's message: err_msg for a lexical error, else the
 *            grammar's ("syntax error", "memory exhausted", "out of
 *            memory", "duplicate key", "scalar at top level", "empty
 *            document"); static or inside ctx, valid until ctx changes
 * Any output pointer may be NULL.  ctx->text must still be the text that
 * was read.  Offsets past 512 MiB are reported as 512 MiB - 1.
 * Returns the failure's own code: -4, -5, -3105, -6102 (lexical), -2007
 * (syntax, strict-only refusal or nesting too deep), -503 (out of memory),
 * -3105 (duplicate key, scalar or empty document); 0 when the last read
 * failed nowhere (then offset 0, line 1, column 1, message ""). */
VXJSON_API VXJSON_CHECK int32_t jlpca_error_position(const jlpca_ctx *ctx, uint32_t *offset,
                                                     uint32_t *line, uint32_t *column,
                                                     const char **message);

/* Switch ctx's strings to standard JSON (RFC 8259), or back to the
 * engine's own reading, for every later json_flex, jcheck_flex and
 * json_flex_next_token and for writing through the json_to_string family.
 * By default (and after jlpca_init) each \u escape is converted on its own,
 * so an escaped surrogate pair is refused ("escape error"), and bytes that
 * are no UTF-8 are kept as they stand.  With on = 1:
 *   - an escaped surrogate pair (\ud83d\ude00) becomes its one character
 *     (four bytes in UTF-8, or the character set's own bytes);
 *   - a high surrogate escape not followed by a low one, a low one alone
 *     and a low one before a high one are lexical errors -6 (err_code),
 *     with the messages "unpaired high surrogate escape", "unpaired low
 *     surrogate escape" and "surrogate escapes in reverse order";
 *   - in the UTF-8 character set, text that is no UTF-8 (in strings and
 *     bare names) is a lexical error -7: "invalid UTF-8: continuation byte
 *     without a lead byte", "...: byte that never occurs in UTF-8",
 *     "...: sequence cut short", "...: overlong encoding", "...: encoded
 *     surrogate", "...: beyond U+10FFFF";
 *   - written with JSON_FMT_ASCII, a character beyond U+FFFF becomes its
 *     surrogate pair (JSON_FMT_ASCII_PAIRS).
 * Like every lexical error these fail json_flex and jcheck_flex with
 * -3105, and jlpca_error_position gives their code, message and place
 * (the backslash of the escape, the first byte of the bad sequence).
 * Other character sets are not checked for UTF-8.  Quoted names in path
 * texts (jpath_flex) take surrogate pairs the same way; path texts are not
 * checked for UTF-8.  ctx: an initialised context (NULL: nothing is set); on: 1
 * standard strings, 0 the engine's own.  0, or -3105 for a NULL ctx or an
 * `on` other than 0 and 1 (ctx is then unchanged). */
VXJSON_API VXJSON_CHECK int32_t jlpca_set_std_strings(jlpca_ctx *ctx, int32_t on);
/* 1 when ctx reads standard strings (jlpca_set_std_strings), else 0 (also
 * for a NULL ctx). */
VXJSON_API int32_t jlpca_std_strings(const jlpca_ctx *ctx);

#ifdef __cplusplus
}
#endif

#endif /* VXJSON_H */
