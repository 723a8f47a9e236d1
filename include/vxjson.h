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
 * and token kinds, error codes, records and the parse context here, then
 * the functions by family in vxjson/tree.h, path.h, query.h and change.h,
 * which this header includes.
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
 * texts (jpath_flex) take surrogate pairs the same way; path texts are
 * not checked for UTF-8.
 * ctx: an initialised context (NULL: nothing is set); on: 1 standard
 * strings, 0 the engine's own.  0, or -3105 for a NULL ctx or an `on`
 * other than 0 and 1 (ctx is then unchanged). */
VXJSON_API VXJSON_CHECK int32_t jlpca_set_std_strings(jlpca_ctx *ctx, int32_t on);
/* 1 when ctx reads standard strings (jlpca_set_std_strings), else 0 (also
 * for a NULL ctx). */
VXJSON_API int32_t jlpca_std_strings(const jlpca_ctx *ctx);

#ifdef __cplusplus
}
#endif

/* The functions by family, one header each. */
#include "vxjson/tree.h"
#include "vxjson/path.h"
#include "vxjson/query.h"
#include "vxjson/change.h"

#endif /* VXJSON_H */
