// The path scanner: splits path text such as $.a[1 to 3]."b c" into
// tokens for the path grammar, and the exported scanner entry points.
//
// Rules, longest match first (as a table-driven scanner would have them):
//   outside quotes   blanks are skipped; ( ) , . : ; [ ] { } ~ and every
//                    other single byte are tokens of their own code (a NUL
//                    is code 0, which ends the path); digits make an
//                    integer; a letter or '_' then letters, digits and '_'
//                    make a name; '"' opens a quoted name.
//   inside quotes    a run of plain bytes is collected as one piece; the
//                    short-escape bytes and '/' must be escaped; '\' starts
//                    an escape; '"' closes.  A byte that completes a
//                    multibyte character (mb_pending) is content whatever
//                    it is.
//   after '\'        '"', '/' or '\' alone, or a run of plain bytes whose
//                    head is the escape letter, goes to the escape decoder.
// Raw control bytes other than the short-escape ones are accepted inside
// quotes as they are: only bytes that JSON has a short escape for (and
// '/') must be escaped.
#include "path_scan.h"

#include <cstring>

#include "jlpca_internal.h"
#include "report.h"
#include "report_sites.h"
#include "std_strings.h"
#include "vx_heap.h"

using namespace vxjson;
using namespace vxjson::path;

namespace {

using uchar = unsigned char;

constexpr const char *MSG_NEED_ESCAPE = "charactor need escape";
constexpr const char *MSG_UNTERMINATED = "Unterminated quoted identifier";
constexpr const char *MSG_ESCAPE = "escape error";
constexpr const char *MSG_NO_MEMORY = "out of memory";

enum : uint8_t {
    BLANK = 1 << 0,     // skipped between tokens
    SHORT_ESC = 1 << 1, // backspace, tab, line feed, form feed, carriage return
    STOP = 1 << 2,      // ends a run of quoted content: short escapes, '"', '/', '\'
    DIGIT = 1 << 3,
    NAME_START = 1 << 4,
    NAME = 1 << 5,
};

constexpr uint8_t byte_class(unsigned c) {
    uint8_t f = 0;
    const bool esc = c == 8 || c == 9 || c == 10 || c == 12 || c == 13;
    if (c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r') f |= BLANK;
    if (esc) f |= SHORT_ESC;
    if (esc || c == '"' || c == '/' || c == '\\') f |= STOP;
    const bool digit = c >= '0' && c <= '9';
    const bool start = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    if (digit) f |= DIGIT;
    if (start) f |= NAME_START;
    if (start || digit) f |= NAME;
    return f;
}

struct byte_classes {
    uint8_t v[256];
    constexpr byte_classes() : v{} {
        for (unsigned c = 0; c < 256; c++) v[c] = byte_class(c);
    }
};
constexpr byte_classes PATH_CLASS{};

inline bool is_blank(uchar c) { return PATH_CLASS.v[c] & BLANK; }
inline bool is_short_esc(uchar c) { return PATH_CLASS.v[c] & SHORT_ESC; }
inline bool is_stop(uchar c) { return PATH_CLASS.v[c] & STOP; }
inline bool is_digit(uchar c) { return PATH_CLASS.v[c] & DIGIT; }
inline bool is_name_start(uchar c) { return PATH_CLASS.v[c] & NAME_START; }
inline bool is_name(uchar c) { return PATH_CLASS.v[c] & NAME; }

// Raise a lexical error at the current line: tok 0, the scanner reads no
// further, and the grammar sees the end of input.
[[gnu::cold]] int32_t lex_error(path_scanner &s, int32_t code, const char *msg) {
    set_error(s.ctx, code, msg);
    s.ctx->err_line = s.line;
    s.pos = s.end;
    return 0;
}

int32_t append_failed(path_scanner &s, int32_t rc) {
    return rc == VXJSON_ERR_NOMEM ? lex_error(s, VXJSON_ERR_NOMEM, MSG_NO_MEMORY)
                                  : lex_error(s, VXJSON_ERR_LEX, MSG_ESCAPE);
}

// The token value: a heap copy when the caller may keep it, else the
// bytes themselves (the grammar copies them before the next token).
int32_t set_value(path_scanner &s, const char *text, uint32_t len, int32_t kind, bool copy) {
    jlpca_ctx *ctx = s.ctx;
    if (copy) {
        auto *p = static_cast<char *>(mem_heap_alloc_low(ctx->env, ctx->heap, size_t(len) + 1, 0,
                                                         SRC_JPATH, site::PATH_HEAP_TOKEN));
        if (!p) [[unlikely]]
            return lex_error(s, VXJSON_ERR_NOMEM, MSG_NO_MEMORY);
        std::memcpy(p, text, len);
        p[len] = '\0';
        text = p;
    }
    ctx->tok_str = const_cast<char *>(text);
    ctx->tok_val = int64_t(len);
    ctx->tok = uint32_t(kind);
    return kind;
}

// One piece of quoted content, measured for multibyte characters.
inline int32_t add_piece(path_scanner &s, const uchar *p, size_t n) {
    return jlpca_addlit(reinterpret_cast<const char *>(p), int32_t(n), s.ctx);
}

// Inside quotes, up to the closing quote or an error.
int32_t quoted(path_scanner &s, bool copy) {
    jlpca_ctx *ctx = s.ctx;
    while (s.pos < s.end) {
        const uchar *p = s.pos;
        const uchar c = *p;
        if (s.cond == scan_condition::escape) {
            if (is_short_esc(c)) {
                s.line += c == '\n';
                return lex_error(s, VXJSON_ERR_LEX, MSG_NEED_ESCAPE);
            }
            if (c == 'u' && ctx->std_strings == 1) {
                // Standard strings: a name may hold a character beyond
                // U+FFFF as its escaped surrogate pair, as a document may.
                const std_strings::u_escape u = std_strings::classify_u_escape(p, s.end);
                if (u.kind == std_strings::u_escape::BAD)
                    return lex_error(s, msg::code(u.why), msg::text(u.why));
                if (u.kind == std_strings::u_escape::PAIR) {
                    s.pos = p + std_strings::PAIR_TAIL;
                    s.cond = scan_condition::quoted;
                    if (int32_t rc = std_strings::addlit_surrogate_pair(ctx, u.high, u.low); rc < 0)
                        return append_failed(s, rc);
                    continue;
                }
            }
            const uchar *q = p + 1;
            if (!is_stop(c))
                while (q < s.end && !is_stop(*q)) ++q;
            s.pos = q;
            s.cond = scan_condition::quoted;
            if (int32_t rc =
                    jlpca_addlit_escape(reinterpret_cast<const char *>(p), int32_t(q - p), ctx);
                rc < 0)
                return append_failed(s, rc);
            continue;
        }
        if (!is_stop(c)) {
            const uchar *q = p + 1;
            while (q < s.end && !is_stop(*q)) ++q;
            s.pos = q;
            if (int32_t rc = add_piece(s, p, size_t(q - p)); rc < 0) return append_failed(s, rc);
            continue;
        }
        s.pos = p + 1;
        s.line += c == '\n';
        if (ctx->mb_pending != 0) {
            // The second byte of a multibyte character: content.
            if (int32_t rc = add_piece(s, p, 1); rc < 0) return append_failed(s, rc);
            continue;
        }
        if (c == '\\') {
            s.cond = scan_condition::escape;
        } else if (c == '"') {
            ctx->mb_track = 0;
            s.cond = scan_condition::initial;
            return set_value(s, ctx->lit_buf, uint32_t(std::strlen(ctx->lit_buf)), JT_DQSTRING,
                             copy);
        } else {
            return lex_error(s, VXJSON_ERR_LEX, MSG_NEED_ESCAPE);
        }
    }
    return lex_error(s, VXJSON_ERR_LEX, MSG_UNTERMINATED);
}

} // namespace

namespace vxjson::path {

void scanner_start(path_scanner &s, jlpca_ctx *ctx) {
    s.ctx = ctx;
    attach_scanner(ctx, &s);
    s.pos = reinterpret_cast<const uchar *>(ctx->text);
    s.end = s.pos + (ctx->text ? ctx->text_len : 0);
    s.line = 1;
    s.cond = scan_condition::initial;
}

void scanner_stop(path_scanner &s) {
    jlpca_ctx *ctx = s.ctx;
    if (ctx->scanner == &s) ctx->scanner = nullptr;
    if (ctx->scan_handle == &s) ctx->scan_handle = nullptr;
}

int32_t next_token(path_scanner &s, bool copy) {
    if (s.cond != scan_condition::initial) return quoted(s, copy);
    const uchar *p = s.pos;
    while (p < s.end && is_blank(*p)) s.line += *p++ == '\n';
    if (p == s.end) {
        s.pos = p;
        s.ctx->tok = 0;
        return 0;
    }
    const uchar c = *p;
    const uchar *q = p + 1;
    if (c == '"') {
        s.pos = q;
        jlpca_startlit(s.ctx);
        s.ctx->mb_track = 1;
        s.cond = scan_condition::quoted;
        return quoted(s, copy);
    }
    if (is_digit(c)) {
        while (q < s.end && is_digit(*q)) ++q;
        s.pos = q;
        const int32_t kind =
            jlpca_ret_integer(reinterpret_cast<const char *>(p), int32_t(q - p), s.ctx);
        if (kind == 0) { // a rejected number: its error is in the context
            s.ctx->err_line = s.line;
            s.pos = s.end;
        }
        return kind;
    }
    if (is_name_start(c)) {
        while (q < s.end && is_name(*q)) ++q;
        s.pos = q;
        return set_value(s, reinterpret_cast<const char *>(p), uint32_t(q - p), JT_NAME, copy);
    }
    // Punctuation and every other single byte; a NUL is code 0 and so
    // reads as the end of the path.
    s.pos = q;
    s.ctx->tok = c;
    return c;
}

} // namespace vxjson::path

extern "C" {

VXJSON_API int32_t jpath_flex_scanner_init(jlpca_ctx *ctx, void **scanner) {
    auto *s = static_cast<path_scanner *>(mem_heap_alloc_low(
        ctx->env, ctx->heap, sizeof(path_scanner), 0, SRC_JPATH, site::PATH_HEAP_SCANNER));
    *scanner = s;
    if (!s) return VXJSON_ERR_NOMEM;
    scanner_start(*s, ctx);
    return 0;
}

VXJSON_API void jpath_flex_scanner_deinit(jlpca_ctx *, void *scanner) {
    // The instance lives in the context's heap and goes with it.
    if (scanner) scanner_stop(*static_cast<path_scanner *>(scanner));
}

VXJSON_API int32_t jpath_lex(void *, void *scanner) {
    return next_token(*static_cast<path_scanner *>(scanner), true);
}

} // extern "C"
