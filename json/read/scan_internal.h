// scan_internal.h -- the JSON scanner, shared only by scan.cpp and the two
// grammars.  The token dispatch, blank skipping, plain string runs and
// plain numbers are inline here so that each grammar gets its own copy
// without a call per token; escapes, multibyte corner cases, errors and
// unusual numbers live out of line in scan.cpp.
//
// The scanner reads the context's text in place.  It never reads at or past
// text + text_len: end of input is the end pointer, not a terminator.
//
// Three modes share the rules and differ only in what they leave behind:
//  - raw:   json_lex / json_flex_next_token; every token value is a heap
//           copy, as a caller outside the grammars may keep it.
//  - tree:  the tree grammar; tok_str may point into the text or the
//           literal buffer, since the grammar copies it before the next token.
//  - check: the check grammar; token values are not produced at all.
#ifndef VXJSON_SCAN_INTERNAL_H
#define VXJSON_SCAN_INTERNAL_H

#include <bit>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "jlpca_internal.h"
#include "messages.h"
#include "number_text.h"
#include "vx_charset.h"
#include "vxjson.h"

namespace vxjson::scan {

using uchar = unsigned char;

enum class scan_mode { raw, tree, check };

// ------------------------------------------------------------------
// Byte classes
// ------------------------------------------------------------------

enum : uint16_t {
    BLANK = 1 << 0,    // skipped between tokens
    ESC_NEED = 1 << 1, // must be escaped inside a string
    DQ_STOP = 1 << 2,  // ends a run of double-quoted string content
    SQ_STOP = 1 << 3,  // ends a run of single-quoted string content
    DIGIT = 1 << 4,
    WORD_START = 1 << 5, // letters, '_' and every byte 0x80-0xFF
    WORD = 1 << 6,       // word start or digit
    PUNCT = 1 << 7,      // single-character tokens
    NUM_START = 1 << 8,  // may start a number: digit, sign, '.'
};

constexpr uint16_t byte_class(unsigned c) {
    uint16_t f = 0;
    const bool esc = c == 8 || c == 9 || c == 10 || c == 12 || c == 13;
    if (c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r') f |= BLANK;
    if (esc) f |= ESC_NEED;
    if (esc || c == '"' || c == '\\') f |= DQ_STOP;
    if (esc || c == '\'' || c == '\\') f |= SQ_STOP;
    const bool digit = c >= '0' && c <= '9';
    const bool start = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c >= 0x80;
    if (digit) f |= DIGIT;
    if (start) f |= WORD_START;
    if (start || digit) f |= WORD;
    for (char p : {'(', ')', ',', ':', ';', '[', ']', '{', '}', '~'})
        if (c == uchar(p)) f |= PUNCT;
    if (digit || c == '+' || c == '-' || c == '.') f |= NUM_START;
    return f;
}

struct byte_classes {
    uint16_t v[256];
    constexpr byte_classes() : v{} {
        for (unsigned c = 0; c < 256; c++) v[c] = byte_class(c);
    }
};
inline constexpr byte_classes SCAN_CLASS{};

inline bool is_blank(uchar c) { return SCAN_CLASS.v[c] & BLANK; }
inline bool is_esc_need(uchar c) { return SCAN_CLASS.v[c] & ESC_NEED; }
inline bool is_digit(uchar c) { return SCAN_CLASS.v[c] & DIGIT; }
inline bool is_word(uchar c) { return SCAN_CLASS.v[c] & WORD; }
inline bool is_word_start(uchar c) { return SCAN_CLASS.v[c] & WORD_START; }
inline bool is_punct(uchar c) { return SCAN_CLASS.v[c] & PUNCT; }
template <uchar Q> inline bool is_stop(uchar c) {
    return SCAN_CLASS.v[c] & (Q == '"' ? DQ_STOP : SQ_STOP);
}

// ------------------------------------------------------------------
// scan_state instance
// ------------------------------------------------------------------

struct scan_state {
    jlpca_ctx *ctx;     // the context every action writes into
    const uchar *pos;   // next byte to read
    const uchar *end;   // end of the text
    const uchar *start; // start of the token just read, unless it is a punctuation byte
    uint32_t line;      // current line, from 1
    bool mb_simple;     // the charset never leaves a piece inside a character
    bool std_strings;   // the context reads standard strings: surrogate pairs
    bool check_utf8;    // ... and its text must be UTF-8
    bool plain_runs;    // mb_simple and no check_utf8: a run needs no look at all
};

// Generated-scanner entry points, under the names the server knows.
// Instance from the context's heap; null when the heap is exhausted.
scan_state *json_lex_init_extra(jlpca_ctx *ctx);
void json_lex_destroy(scan_state *s);
// Set up an instance over the context's text (read in place, not copied).
void scanner_start(scan_state &s, jlpca_ctx *ctx);
void json__scan_bytes(scan_state &s, const char *text, uint32_t len);
void json_set_lineno(uint32_t line, scan_state &s);

// ------------------------------------------------------------------
// Out-of-line parts (scan.cpp)
// ------------------------------------------------------------------

// Raise a lexical error at the current line, placed at `at` (the token's
// start unless a byte inside it is to blame): tok 0, returns 0, and the
// scanner stops reading.
[[gnu::cold]] int32_t lex_error(scan_state &s, msg::msg_id why, const uchar *at);
[[gnu::cold]] inline int32_t lex_error(scan_state &s, msg::msg_id why) {
    return lex_error(s, why, s.start);
}
// The quoted string from `q` (after the quote) whose first run [q, r) has
// been measured but not collected, continued at r byte by byte.
template <scan_mode M, uchar Q>
[[gnu::noinline]] int32_t string_slow(scan_state &s, const uchar *q, const uchar *r);
// Numbers that need more than the plain path: leading zeros after a '-',
// overflow checks, number_mode 2, strictness errors.
template <scan_mode M>
[[gnu::noinline]] int32_t number_slow(scan_state &s, number_kind kind, const char *t, int32_t n);
// Words in raw mode, and words that are no keyword in every mode.
template <scan_mode M> [[gnu::noinline]] int32_t word_slow(scan_state &s, const char *w, int32_t n);
// A string closed on its first run in raw mode: literal and heap copy.
int32_t string_raw_plain(scan_state &s, const uchar *q, const uchar *r, int32_t kind);
// Standard strings: is [p, end) UTF-8?  False after raising the error at
// the first bad sequence.
[[gnu::noinline]] bool utf8_ok(scan_state &s, const uchar *p, const uchar *end);
// The look at a run that check_run cannot skip: the UTF-8 check of
// standard strings, then multibyte measuring.  False after an error.
[[gnu::noinline]] bool check_run_slow(scan_state &s, const uchar *q, const uchar *r);

// ------------------------------------------------------------------
// Runs
// ------------------------------------------------------------------

// First byte at or after p that ends string content for quote Q, or end.
// `ctrl` is set when a control byte that is content (NUL among them) was
// passed, so the caller knows to look for a NUL.
template <uchar Q> inline const uchar *find_stop(const uchar *p, const uchar *end, bool &ctrl) {
#if defined(__SSE2__)
    const __m128i vq = _mm_set1_epi8(char(Q));
    const __m128i vb = _mm_set1_epi8('\\');
    const __m128i v13 = _mm_set1_epi8(13);
    while (end - p >= 16) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        __m128i low = _mm_cmpeq_epi8(_mm_min_epu8(v, v13), v); // bytes 0..13
        unsigned m = unsigned(_mm_movemask_epi8(
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, vq), _mm_cmpeq_epi8(v, vb)), low)));
        while (m) {
            unsigned i = unsigned(__builtin_ctz(m));
            if (is_stop<Q>(p[i])) return p + i;
            ctrl = true;
            m &= m - 1;
        }
        p += 16;
    }
#endif
    for (; p < end; ++p) {
        uchar c = *p;
        if (c <= 13 || c == Q || c == '\\') {
            if (is_stop<Q>(c)) return p;
            ctrl = true;
        }
    }
    return end;
}

// Past the blanks starting at p, counting line feeds.
inline const uchar *skip_blanks(const uchar *p, const uchar *end, uint32_t &line) {
#if defined(__SSE2__)
    const __m128i sp = _mm_set1_epi8(' '), nl = _mm_set1_epi8('\n');
    const __m128i tab = _mm_set1_epi8('\t'), cr = _mm_set1_epi8('\r'), ff = _mm_set1_epi8('\f');
    while (end - p >= 16) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        __m128i lf = _mm_cmpeq_epi8(v, nl);
        __m128i ws =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, sp), lf),
                         _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, tab), _mm_cmpeq_epi8(v, cr)),
                                      _mm_cmpeq_epi8(v, ff)));
        unsigned nonblank = ~unsigned(_mm_movemask_epi8(ws)) & 0xFFFFu;
        unsigned lines = unsigned(_mm_movemask_epi8(lf));
        if (nonblank) {
            unsigned k = unsigned(__builtin_ctz(nonblank));
            lines &= (1u << k) - 1;
            for (; lines; lines &= lines - 1) line++;
            return p + k;
        }
        for (; lines; lines &= lines - 1) line++;
        p += 16;
    }
#endif
    for (; p < end && is_blank(*p); ++p) line += *p == '\n';
    return p;
}

// ------------------------------------------------------------------
// Tokens
// ------------------------------------------------------------------

inline int32_t byte_token(scan_state &s, const uchar *p) {
    s.pos = p + 1;
    s.ctx->tok = *p;
    return *p;
}

// Multibyte measuring (and for standard strings the UTF-8 check) of the
// first run of a string.  Skipped when the charset cannot end a piece
// inside a character, nothing is pending and no check is asked for:
// measuring would give 0 and change nothing.  False after an error.
inline bool check_run(scan_state &s, const uchar *q, const uchar *r) {
    jlpca_ctx *ctx = s.ctx;
    if (q == r) return true;
    if (s.plain_runs && !ctx->mb_pending && !ctx->mb_split) return true;
    return check_run_slow(s, q, r);
}

template <scan_mode M, uchar Q> inline int32_t scan_string(scan_state &s, const uchar *p) {
    jlpca_ctx *ctx = s.ctx;
    constexpr int32_t kind = Q == '"' ? JT_DQSTRING : JT_SQSTRING;
    const uchar *q = p + 1;
    ctx->mb_track = 1;
    bool ctrl = false;
    const uchar *r = find_stop<Q>(q, s.end, ctrl);
    if (!check_run(s, q, r)) return 0;
    if (r == s.end || *r != Q || ctx->mb_pending) [[unlikely]]
        return string_slow<M, Q>(s, q, r);
    ctx->mb_track = 0;
    s.pos = r + 1;
    if constexpr (M == scan_mode::raw) {
        return string_raw_plain(s, q, r, kind);
    } else {
        ctx->lit_escaped = 0;
        if constexpr (M == scan_mode::tree) {
            // The value ends at its first NUL, as a C-string copy would.
            size_t len = size_t(r - q);
            if (ctrl) {
                if (const void *z = std::memchr(q, 0, len))
                    len = size_t(static_cast<const uchar *>(z) - q);
            }
            ctx->tok_str = const_cast<char *>(reinterpret_cast<const char *>(q));
            ctx->tok_val = int64_t(len);
        }
        ctx->tok = kind;
        return kind;
    }
}

// Past a run of decimal digits, eight at a time where the text allows.
inline const uchar *skip_digits(const uchar *p, const uchar *end) {
    constexpr uint64_t ONES = 0x0101010101010101ull;
    while (end - p >= 8) {
        uint64_t x;
        std::memcpy(&x, p, 8);
        // A byte is a digit when its high nibble is 3 and its low one <= 9;
        // `bad` is nonzero exactly in the other bytes (no carries cross).
        uint64_t bad =
            ((x & 0xF0 * ONES) ^ 0x30 * ONES) | (((x & 0x0F * ONES) + 0x06 * ONES) & 0x10 * ONES);
        if (bad) {
            uint64_t high = (((bad & 0x7F * ONES) + 0x7F * ONES) | bad) & 0x80 * ONES;
            if constexpr (std::endian::native == std::endian::little)
                return p + (__builtin_ctzll(high) >> 3);
            else return p + (__builtin_clzll(high) >> 3);
        }
        p += 8;
    }
    while (p < end && is_digit(*p)) ++p;
    return p;
}

// The token of a plain number: one that is its own normalised text and
// that no overflow check can change.  Integers of up to 18 characters get
// their value (in the check grammar, which needs none, simply JT_INT);
// longer ones and decimals keep their text, in place.
template <scan_mode M>
inline int32_t plain_number_token(jlpca_ctx *ctx, const char *t, int32_t n, bool integer) {
    if (integer && n <= MAX_INTEGER_CHARS) {
        int32_t kind = JT_INT;
        if constexpr (M == scan_mode::tree) {
            const int64_t v = parse_int_digits(t, n);
            ctx->tok_val = v;
            kind = integer_token_kind(v);
        }
        ctx->tok = uint32_t(kind);
        return kind;
    }
    if constexpr (M == scan_mode::tree) {
        ctx->tok_str = const_cast<char *>(t);
        ctx->tok_val = n;
    }
    ctx->tok = JT_DECIMAL;
    return JT_DECIMAL;
}

#if defined(__SSE2__)
// The common numbers, from one mask of the digits among the 32 bytes at p:
// an optional '-', digits without a leading zero, optionally a '.' and
// more digits, and then a byte that does not continue a number.  Such a
// number is its own normalised text and cannot change under an overflow
// check.  0 for any other number, which the general rules take; the
// caller makes sure that 32 bytes are there to load.
template <scan_mode M> inline int32_t scan_plain_number(scan_state &s, const uchar *p) {
    jlpca_ctx *ctx = s.ctx;
    if (overflow_is_an_error(ctx)) return 0;
    auto digit_mask16 = [](const uchar *q) {
        const __m128i v =
            _mm_sub_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(q)), _mm_set1_epi8('0'));
        return uint32_t(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(v, _mm_set1_epi8(9)), v)));
    };
    // Bit i set for a non-digit at p[i]; bit 32 stands for "not within
    // reach", so the search below always finds a bit.
    const uint64_t non_digits =
        uint64_t(~(digit_mask16(p) | digit_mask16(p + 16) << 16)) | uint64_t(1) << 32;
    auto run_end = [non_digits](uint32_t from) {
        return uint32_t(__builtin_ctzll(non_digits >> from << from));
    };
    const uint32_t lead = *p == '-';
    uint32_t n = run_end(lead);
    if (n == lead || n == 32 || (p[lead] == '0' && n > lead + 1)) return 0;
    bool integer = true;
    if (p[n] == '.') {
        const uint32_t frac_end = run_end(n + 1);
        if (frac_end == n + 1 || frac_end == 32) return 0;
        n = frac_end;
        integer = false;
    }
    const uchar c = p[n] | 0x20; // an exponent or a suffix follows: general rules
    if (c == 'e' || c == 'd' || c == 'f') return 0;
    s.pos = p + n;
    return plain_number_token<M>(ctx, reinterpret_cast<const char *>(p), int32_t(n), integer);
}
#endif

template <scan_mode M> inline int32_t scan_number(scan_state &s, const uchar *p) {
    const uchar *start = p, *end = s.end;
#if defined(__SSE2__)
    if constexpr (M != scan_mode::raw) {
        if (end - p >= 32) {
            if (int32_t kind = scan_plain_number<M>(s, p)) return kind;
        }
    }
#endif
    if (*p == '+' || *p == '-') ++p;
    const uchar *digits = p;
    p = skip_digits(p, end);
    const bool whole = p != digits;
    number_kind kind = INTEGER;
    bool dot_last = false; // strict reading rejects a '.' that ends the number
    if (p < end && *p == '.' && (whole || (p + 1 < end && is_digit(p[1])))) {
        kind = DECIMAL;
        const uchar *frac = ++p;
        p = skip_digits(p, end);
        dot_last = p == frac;
    }
    if (kind == INTEGER && !whole) return byte_token(s, start); // a sign or '.' alone
    if (p < end) {
        uchar c = *p;
        if (c == 'd' || c == 'D' || c == 'f' || c == 'F') {
            ++p;
            kind = REAL;
            dot_last = false;
        } else if (c == 'e' || c == 'E') {
            const uchar *e = p + 1;
            if (e < end && (*e == '+' || *e == '-')) ++e;
            if (e < end && is_digit(*e)) {
                p = skip_digits(e, end);
                kind = REAL;
                dot_last = false;
            }
        }
    }
    s.pos = p;
    const auto *t = reinterpret_cast<const char *>(start);
    const int32_t n = int32_t(p - start);
    jlpca_ctx *ctx = s.ctx;
    if constexpr (M != scan_mode::raw) {
        // A plain number is its own normalised text: no '+', digits before
        // any '.', no leading zero, no '.' at the end; and no overflow
        // check can change its outcome.
        const bool plain = *start != '+' && whole && !dot_last &&
                           (*digits != '0' || digits + 1 == p || digits[1] == '.') &&
                           !overflow_is_an_error(ctx);
        if (plain) [[likely]]
            return plain_number_token<M>(ctx, t, n, kind == INTEGER);
    }
    return number_slow<M>(s, kind, t, n);
}

template <scan_mode M> inline int32_t scan_word(scan_state &s, const uchar *p) {
    const uchar *q = p + 1;
    while (q < s.end && is_word(*q)) ++q;
    s.pos = q;
    const auto *w = reinterpret_cast<const char *>(p);
    const int32_t n = int32_t(q - p);
    if (n == 4 || n == 5) {
        int32_t kw = keyword_lookup(w, size_t(n), s.ctx->strict != 0);
        if (kw > 0) {
            s.ctx->tok = uint32_t(kw);
            return kw;
        }
    }
    return word_slow<M>(s, w, n);
}

// Where the token just read starts: a punctuation byte does not record
// its start, being one byte before the scanner's position.
inline const uchar *token_start(const scan_state &s, int32_t t) {
    return t > 0 && t < 256 && is_punct(uchar(t)) ? s.pos - 1 : s.start;
}

// Tokens that are a whole scalar value.
inline bool is_scalar_token(int32_t t) {
    return uint32_t(t - JT_INT) <= uint32_t(JT_NULL - JT_INT) && t != JT_NAME;
}

// The next token.  Dispatch by byte class, most frequent first, with
// conditional branches rather than a jump table.
template <scan_mode M> [[gnu::noinline]] int32_t next_token(scan_state &s) {
    const uchar *p = s.pos;
    const uchar *const end = s.end;
    jlpca_ctx *ctx = s.ctx;
    for (;;) {
        if (p == end) [[unlikely]] {
            s.pos = p;
            s.start = p;
            ctx->tok = 0;
            return 0;
        }
        const uchar c = *p;
        const uint16_t cls = SCAN_CLASS.v[c];
        if (cls & PUNCT) return byte_token(s, p);
        s.start = p;
        if (cls & NUM_START) return scan_number<M>(s, p);
        if (c == '"') return scan_string<M, '"'>(s, p);
        if (cls & BLANK) {
            p = skip_blanks(p, end, s.line);
            continue;
        }
        if (cls & WORD_START) return scan_word<M>(s, p);
        if (c == '\'') {
            if (ctx->strict) {
                s.pos = p + 1;
                return lex_error(s, msg::STRICT_QUOTE);
            }
            return scan_string<M, '\''>(s, p);
        }
        // Any other byte is its own token; a NUL thus ends the input.
        return byte_token(s, p);
    }
}

// The next token for a grammar.  For the tree grammar a single-character
// token right at the current position (the bracket or comma after most
// values, in text without blanks) is taken without a call; the check
// grammar does so little per token that the extra test costs it more than
// the call.
template <scan_mode M> inline int32_t next_token_inline(scan_state &s) {
    if constexpr (M == scan_mode::tree) {
        const uchar *p = s.pos;
        if (p != s.end && is_punct(*p)) return byte_token(s, p);
    }
    return next_token<M>(s);
}

} // namespace vxjson::scan

#endif
