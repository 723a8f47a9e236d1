// Text-array paths: a PostgreSQL text array literal such as {a,0,"b c"}
// becomes a path of member steps, one per element, in order; whether an
// element names a member or a position is for the evaluator to decide from
// the value it meets.  No root step is added.
//
// The element reader is a state machine over the characters; the caller
// keeps its state between elements:
//   0 before "{"   1 just after it   2 in an unquoted element
//   3 in quotes    4 after a closing quote   5 just after ","
// An element is compacted in place over the input as it is read (escapes
// and quotes dropped), so the text is modified.  White space outside
// quotes is dropped at the front and not counted at the end.
#include "report.h"
#include "report_sites.h"
#include "vxjson.h"
#include "vxstr.h"

using namespace vxjson;

namespace {

enum array_state : int32_t {
    BEFORE_BRACE = 0,
    AFTER_BRACE = 1,
    UNQUOTED = 2,
    QUOTED = 3,
    AFTER_QUOTE = 4,
    AFTER_COMMA = 5,
};

// The initial room of the element string: most elements are short.
constexpr uint32_t ELEMENT_INITIAL = 1024;

bool is_null_word(const char *p, size_t len) {
    static constexpr char NULL_WORD[] = "null";
    if (len != 4) return false;
    for (size_t i = 0; i < 4; i++)
        if ((p[i] | 0x20) != NULL_WORD[i]) return false;
    return true;
}

int32_t report_pg(int32_t rc, int32_t line) { return report(rc, SRC_JPATH, line); }

} // namespace

extern "C" {

VXJSON_API int32_t jpath_array_isspace(int32_t c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

VXJSON_API int32_t jpath_array_element(void *env, vx_allocator *allocator, vxstr *out, char **pos,
                                       int32_t *state, int32_t *finished, int32_t *quoted) {
    char *const start = *pos;
    char *r = start;   // next character to read
    char *w = start;   // where the element's text is compacted to
    char *end = start; // end of its content, trailing blanks left out
    int32_t st = *state;
    bool leading = true; // blanks are still skipped
    bool was_quoted = false;
    bool done = false;
    for (;;) {
        const char c = *r;
        if (c == '\\') {
            if (r[1] == '\0' ||
                !(st == AFTER_BRACE || st == UNQUOTED || st == QUOTED || st == AFTER_COMMA))
                return VXJSON_ERR_PATH;
            *w++ = r[1];
            r += 2;
            if (st != QUOTED) st = UNQUOTED;
            end = w;
            was_quoted = true;
            leading = false;
            continue;
        }
        if (c == '\0') return VXJSON_ERR_PATH; // the literal ended without "}"
        ++r;
        if (c == '"') {
            if (st == QUOTED) {
                st = AFTER_QUOTE;
                end = w;
            } else if (st == AFTER_BRACE || st == AFTER_COMMA) {
                st = QUOTED;
                was_quoted = true;
                leading = false;
            } else {
                return VXJSON_ERR_PATH;
            }
            continue;
        }
        if (st == QUOTED) {
            *w++ = c;
            continue;
        }
        if (c == '{') {
            if (st != BEFORE_BRACE) return VXJSON_ERR_PATH;
            st = AFTER_BRACE;
        } else if (c == '}') {
            if (st != AFTER_BRACE && st != UNQUOTED && st != AFTER_QUOTE) return VXJSON_ERR_PATH;
            done = true;
            break;
        } else if (c == ',') {
            if (st != UNQUOTED && st != AFTER_QUOTE) return VXJSON_ERR_PATH;
            st = AFTER_COMMA;
            break;
        } else if (jpath_array_isspace(static_cast<unsigned char>(c))) {
            if (!leading) *w++ = c;
        } else {
            if (st != AFTER_BRACE && st != UNQUOTED && st != AFTER_COMMA) return VXJSON_ERR_PATH;
            *w++ = c;
            st = UNQUOTED;
            end = w;
            leading = false;
        }
    }
    const size_t len = size_t(end - start);
    if (!was_quoted && is_null_word(start, len)) return VXJSON_ERR_PATH; // a NULL element
    if (int32_t rc = vxstr_append_with_length(env, allocator, out, start, uint32_t(len)); rc < 0)
        return rc;
    *pos = r;
    *state = st;
    *finished = done ? 1 : 0;
    *quoted = was_quoted ? 1 : 0;
    return 0;
}

VXJSON_API int32_t jpath_parse_pg_array(void *env, void *heap, vx_allocator *allocator, jpath *path,
                                        char *text) {
    if (path->dialect != JPATH_DIALECT_PG_ARRAY) return VXJSON_ERR_PATH;
    char *p = text;
    while (jpath_array_isspace(static_cast<unsigned char>(*p))) ++p;
    if (*p != '{') return VXJSON_ERR_PATH;
    vxstr *element = vxstr_create(env, allocator, ELEMENT_INITIAL);
    if (!element) return report_pg(VXJSON_ERR_NOMEM, site::PATH_PG_STRING);
    int32_t state = BEFORE_BRACE, finished = 0, quoted = 0;
    int32_t rc = 0;
    while (!finished) {
        rc = jpath_array_element(env, allocator, element, &p, &state, &finished, &quoted);
        if (rc < 0) {
            rc = report_pg(rc, site::PATH_PG_ELEMENT);
            break;
        }
        if (element->len != 0 || quoted) {
            rc = jpath_add_filter_low(env, heap, path, element->buf, element->len,
                                      JPATH_STEP_MEMBER);
            if (rc < 0) {
                rc = report_pg(rc, site::PATH_PG_STEP);
                break;
            }
        }
        vxstr_init(element);
    }
    vxstr_free(env, allocator, element);
    if (rc < 0) return rc;
    while (jpath_array_isspace(static_cast<unsigned char>(*p))) ++p;
    return *p == '\0' ? 0 : VXJSON_ERR_PATH;
}

} // extern "C"
