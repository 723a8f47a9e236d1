// JSON scanner: the out-of-line rules (strings with escapes or multibyte
// corner cases, unusual numbers, words that are no keyword, errors) and
// the scanner's entry points.  The hot rules are inline in scan_internal.h.
//
// Inside a string the scanner works in pieces, as a table-driven scanner
// would: a run of plain content, or one special byte.  The pieces matter
// because multibyte measuring (jlpca_addlit) sees one piece at a time; in
// GB18030 a closing quote or backslash right after a lead byte is the
// second byte of a character, and so content.
#include "scan_internal.h"

#include <cstring>

#include "error_place.h"
#include "number_text.h"
#include "report.h"
#include "report_sites.h"
#include "std_strings.h"
#include "vx_heap.h"

using namespace vxjson;
using namespace vxjson::site;

namespace vxjson::scan {

namespace {

// A NUL-terminated heap copy of `len` bytes for a token value.
char *token_copy(jlpca_ctx *ctx, const char *text, size_t len) {
    auto *p = static_cast<char *>(
        mem_heap_alloc_low(ctx->env, ctx->heap, len + 1, 0, SRC_FLEX, SCAN_TOKEN_COPY));
    if (!p) return nullptr;
    std::memcpy(p, text, len);
    p[len] = '\0';
    return p;
}

// The literal becomes the token value: up to its first NUL, as a C-string
// copy of it would be.
template <scan_mode M> int32_t finish_literal(scan_state &s, int32_t kind) {
    jlpca_ctx *ctx = s.ctx;
    size_t len = std::strlen(ctx->lit_buf);
    if constexpr (M == scan_mode::raw) {
        char *copy = token_copy(ctx, ctx->lit_buf, len);
        if (!copy) return lex_error(s, msg::NO_MEMORY);
        ctx->tok_str = copy;
    } else {
        ctx->tok_str = ctx->lit_buf;
    }
    ctx->tok_val = int64_t(len);
    ctx->tok = uint32_t(kind);
    return kind;
}

int32_t unterminated(scan_state &s, uchar quote) {
    return lex_error(s, quote == '"' ? msg::UNTERMINATED_DQ : msg::UNTERMINATED_SQ);
}

// An escape that could not be added; `backslash` is where it starts.
int32_t escape_failed(scan_state &s, int32_t rc, const uchar *backslash) {
    return rc == VXJSON_ERR_NOMEM ? lex_error(s, msg::NO_MEMORY)
                                  : lex_error(s, msg::ESCAPE, backslash);
}

} // namespace

int32_t lex_error(scan_state &s, msg::msg_id why, const uchar *at) {
    set_error(s.ctx, why);
    s.ctx->err_line = s.line;
    place::record_lexical(s.ctx, at);
    s.pos = s.end;
    return 0;
}

template <scan_mode M, uchar Q> int32_t string_slow(scan_state &s, const uchar *q, const uchar *r) {
    jlpca_ctx *ctx = s.ctx;
    constexpr int32_t kind = Q == '"' ? JT_DQSTRING : JT_SQSTRING;
    jlpca_startlit(ctx);
    if (lit_append(ctx, reinterpret_cast<const char *>(q), uint32_t(r - q)))
        return lex_error(s, msg::NO_MEMORY);
    const uchar *p = r;
    const uchar *const end = s.end;
    auto add = [&](const uchar *from, const uchar *to) {
        return jlpca_addlit(reinterpret_cast<const char *>(from), int32_t(to - from), ctx);
    };
    auto escape = [&](const uchar *from, const uchar *to) {
        return jlpca_addlit_escape(reinterpret_cast<const char *>(from), int32_t(to - from), ctx);
    };
    bool ctrl = false;
    for (;;) {
        // In the string (DQ or SQ).
        if (p == end) return unterminated(s, Q);
        uchar c = *p;
        if (!is_stop<Q>(c)) {
            const uchar *e = find_stop<Q>(p, end, ctrl);
            if (s.check_utf8 && !utf8_ok(s, p, e)) return 0;
            if (add(p, e)) return lex_error(s, msg::NO_MEMORY);
            p = e;
            continue;
        }
        if (c == '\n') s.line++;
        if (ctx->mb_pending) {
            // The trailing byte of a multibyte character: content.
            if (add(p, p + 1)) return lex_error(s, msg::NO_MEMORY);
            ++p;
            continue;
        }
        if (c == Q) break;
        if (c != '\\') return lex_error(s, msg::NEED_ESCAPE, p);
        // After a backslash (DQ_ESC or SQ_ESC).
        const uchar *backslash = p;
        if (++p == end) return unterminated(s, Q);
        c = *p;
        int32_t rc;
        if (is_esc_need(c)) {
            if (c == '\n') s.line++;
            return lex_error(s, msg::NEED_ESCAPE, p);
        }
        if constexpr (Q == '"') {
            if (c == 'u' && s.std_strings) {
                const std_strings::u_escape u = std_strings::classify_u_escape(p, end);
                if (u.kind == std_strings::u_escape::BAD) return lex_error(s, u.why, backslash);
                if (u.kind == std_strings::u_escape::PAIR) {
                    rc = std_strings::addlit_surrogate_pair(ctx, u.high, u.low);
                    if (rc < 0) return escape_failed(s, rc, backslash);
                    p += std_strings::PAIR_TAIL; // the text after it is a run of its own
                    continue;
                }
            }
            // The escape letter goes with the plain text after it.
            const uchar *e = c == '"' || c == '\\' ? p + 1 : find_stop<'"'>(p, end, ctrl);
            rc = escape(p, e);
            if (rc < 0) return escape_failed(s, rc, backslash);
            if (s.check_utf8 && !utf8_ok(s, p + 1, e)) return 0;
            p = e;
        } else {
            if (c == '\'') return lex_error(s, msg::NOT_SUPPORT, p - 1);
            rc = escape(p, p + 1);
            if (rc < 0) return escape_failed(s, rc, backslash);
            ++p;
        }
    }
    ctx->mb_track = 0;
    s.pos = p + 1;
    return finish_literal<M>(s, kind);
}

bool utf8_ok(scan_state &s, const uchar *p, const uchar *end) {
    msg::msg_id why;
    const uchar *bad = std_strings::find_invalid_utf8(p, end, why);
    if (bad == end) return true;
    lex_error(s, why, bad);
    return false;
}

bool check_run_slow(scan_state &s, const uchar *q, const uchar *r) {
    if (s.check_utf8 && !utf8_ok(s, q, r)) return false;
    jlpca_ctx *ctx = s.ctx;
    if (!s.mb_simple || ctx->mb_pending || ctx->mb_split)
        ctx->mb_pending =
            jlpca_encoding_mblen(ctx, reinterpret_cast<const char *>(q), int32_t(r - q));
    return true;
}

int32_t string_raw_plain(scan_state &s, const uchar *q, const uchar *r, int32_t kind) {
    jlpca_startlit(s.ctx);
    if (lit_append(s.ctx, reinterpret_cast<const char *>(q), uint32_t(r - q)))
        return lex_error(s, msg::NO_MEMORY);
    return finish_literal<scan_mode::raw>(s, kind);
}

namespace {

// The token of a number by the general rules, or 0 with the error set.
template <scan_mode M>
int32_t number_token(jlpca_ctx *ctx, number_kind kind, const char *t, int32_t n) {
    if constexpr (M == scan_mode::raw) {
        switch (kind) {
        case INTEGER: return jlpca_ret_integer(t, n, ctx);
        case DECIMAL: return jlpca_ret_decimal(t, n, ctx);
        default: return jlpca_ret_real(t, n, ctx);
        }
    } else {
        number_parts sp = number_split(t, n, ctx->strict != 0);
        if (sp.invalid) {
            set_error(ctx, msg::INVALID_NUMBER);
            return 0;
        }
        const char *norm;
        int32_t len;
        if (M == scan_mode::tree && (sp.len == 0 || (sp.negative && sp.dropped))) {
            // The normalised text is not a slice of the token: a heap copy.
            if (!jlpca_number_prefix(t, n, ctx, &norm, &len)) return 0;
        } else if (sp.len == 0) {
            norm = "0";
            len = 1;
        } else {
            // The check grammar needs no text; the sign never decides
            // whether a number overflows.
            norm = sp.negative && !sp.dropped ? sp.digits - 1 : sp.digits;
            len = int32_t(sp.digits + sp.len - norm);
        }
        return classify_number(ctx, kind, norm, len, false);
    }
}

} // namespace

template <scan_mode M>
int32_t number_slow(scan_state &s, number_kind kind, const char *t, int32_t n) {
    const int32_t tok = number_token<M>(s.ctx, kind, t, n);
    if (tok == 0) place::record_lexical(s.ctx, t); // refused: invalid, overflow, out of memory
    return tok;
}

template <scan_mode M> int32_t word_slow(scan_state &s, const char *w, int32_t n) {
    jlpca_ctx *ctx = s.ctx;
    if (ctx->strict) return lex_error(s, msg::STRICT_QUOTE);
    if (s.check_utf8) {
        const auto *p = reinterpret_cast<const uchar *>(w);
        if (!utf8_ok(s, p, p + n)) return 0;
    }
    if constexpr (M == scan_mode::raw) {
        char *copy = token_copy(ctx, w, size_t(n));
        if (!copy) return lex_error(s, msg::NO_MEMORY);
        ctx->tok_str = copy;
    } else {
        ctx->tok_str = const_cast<char *>(w);
    }
    ctx->tok_val = n;
    ctx->tok = JT_NAME;
    return JT_NAME;
}

#define VXJSON_SCAN_INSTANTIATE(M)                                                                 \
    template int32_t string_slow<M, '"'>(scan_state &, const uchar *, const uchar *);              \
    template int32_t string_slow<M, '\''>(scan_state &, const uchar *, const uchar *);             \
    template int32_t number_slow<M>(scan_state &, number_kind, const char *, int32_t);             \
    template int32_t word_slow<M>(scan_state &, const char *, int32_t);
VXJSON_SCAN_INSTANTIATE(scan_mode::raw)
VXJSON_SCAN_INSTANTIATE(scan_mode::tree)
VXJSON_SCAN_INSTANTIATE(scan_mode::check)
#undef VXJSON_SCAN_INSTANTIATE

// ------------------------------------------------------------------
// scan_state instances
// ------------------------------------------------------------------

scan_state *json_lex_init_extra(jlpca_ctx *ctx) {
    auto *s = static_cast<scan_state *>(mem_heap_alloc_low(ctx->env, ctx->heap, sizeof(scan_state),
                                                           0, SRC_FLEX, SCAN_INSTANCE_HEAP));
    if (s) *s = scan_state{ctx, nullptr, nullptr, nullptr, 1, false, false, false, false};
    return s;
}

void json_lex_destroy(scan_state *s) {
    // The instance lives in the context's heap and goes with it.
    if (s && s->ctx->scanner == s) s->ctx->scanner = nullptr;
}

void json__scan_bytes(scan_state &s, const char *text, uint32_t len) {
    // Read in place: the scanner never reads past `len`, so no terminated
    // copy is needed, and a NUL between tokens still ends the input.
    s.pos = reinterpret_cast<const uchar *>(text);
    s.end = s.pos + (text ? len : 0);
}

void json_set_lineno(uint32_t line, scan_state &s) { s.line = line; }

void scanner_start(scan_state &s, jlpca_ctx *ctx) {
    s.ctx = ctx;
    attach_scanner(ctx, &s);
    json__scan_bytes(s, ctx->text, ctx->text_len);
    json_set_lineno(1, s);
    s.start = s.pos;
    ctx->err_aux = 0; // the place of an earlier text's error
    s.mb_simple = ctx->mb_charset != VX_CHARSET_GB18030 && ctx->mb_charset != VX_CHARSET_EUCKR;
    s.std_strings = ctx->std_strings == 1;
    s.check_utf8 = s.std_strings && ctx->mb_charset == VX_CHARSET_UTF8;
    s.plain_runs = s.mb_simple && !s.check_utf8;
}

} // namespace vxjson::scan

using namespace vxjson::scan;

extern "C" {

VXJSON_API int32_t json_flex_scanner_init(jlpca_ctx *ctx, void **scanner) {
    scan_state *s = json_lex_init_extra(ctx);
    *scanner = s;
    if (!s) return VXJSON_ERR_NOMEM;
    scanner_start(*s, ctx);
    return 0;
}

VXJSON_API void json_flex_scanner_deinit(jlpca_ctx *ctx, void *scanner) {
    json_lex_destroy(static_cast<scan_state *>(scanner));
    if (ctx->scan_handle == scanner) ctx->scan_handle = nullptr;
}

VXJSON_API int32_t json_lex(void *, void *scanner) {
    return next_token<scan_mode::raw>(*static_cast<scan_state *>(scanner));
}

VXJSON_API int32_t json_flex_next_token(void *scanner) { return json_lex(nullptr, scanner); }

} // extern "C"
