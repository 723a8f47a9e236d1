// The fast well-formedness scan (check_fast.h).  One loop with the
// nesting kept in a byte per level, strings and blank runs classified
// sixteen bytes at a time; no token is produced and nothing is written.
//
// Where the exact rules might disagree with plain JSON the scan gives up:
// a control byte or a long escape-bearing string (whose literal could
// outgrow the inline buffer and fail to allocate), a \u escape above
// U+0080 (the character set decides it), a number that an overflow check
// could refuse, a scalar on top, a form feed, a NUL, or nesting deeper
// than the grammar's stack is sure to hold.
#include "check_fast.h"

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "escape_letters.h"
#include "jlpca_internal.h"
#include "scan_internal.h"
#include "vx_charset.h"

namespace vxjson::scan {

namespace {

// Nesting the grammar's stack holds for certain: at most six entries per
// level (an object's later member) and three more, well under its 10,000.
constexpr uint32_t MAX_DEPTH = 1024;
// Longest escape-bearing string taken here: its literal, at most three
// times as long (a \b kept as \u0008), stays in the inline buffer.
constexpr ptrdiff_t MAX_ESCAPED_STRING = (JLPCA_LIT_INLINE_SIZE - 1) / 3 - 16;
// Longest number that no overflow check can refuse: fewer digits than a
// double's decimal range.
constexpr ptrdiff_t MAX_CHECKED_NUMBER = 300;

inline bool is_space(uchar c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

// Past the blanks at p (space, line feed, carriage return, tab).
inline const uchar *skip_space(const uchar *p, const uchar *end) {
    if (p == end || *p > ' ') return p;
    // Most runs are one space or a line break and its indentation.
    if (!is_space(*p)) return p;
    ++p;
#if defined(__SSE2__)
    while (end - p >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        const __m128i sp = _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8(' ')),
                                        _mm_cmpeq_epi8(v, _mm_set1_epi8('\n')));
        const __m128i tr = _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8('\t')),
                                        _mm_cmpeq_epi8(v, _mm_set1_epi8('\r')));
        const unsigned other = ~unsigned(_mm_movemask_epi8(_mm_or_si128(sp, tr))) & 0xFFFFu;
        if (other) return p + __builtin_ctz(other);
        p += 16;
    }
#endif
    while (p != end && is_space(*p)) ++p;
    return p;
}

// The byte after the closing quote of the string whose content starts at
// p, or null when the exact rules must read it.
inline const uchar *skip_string(const uchar *p, const uchar *end) {
    const uchar *const open = p;
    bool escaped = false;
    for (;;) {
#if defined(__SSE2__)
        // A quote, a backslash or a control byte ends the run.
        while (end - p >= 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
            const __m128i ctl = _mm_cmpeq_epi8(_mm_min_epu8(v, _mm_set1_epi8(0x1F)), v);
            const __m128i qb = _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8('"')),
                                            _mm_cmpeq_epi8(v, _mm_set1_epi8('\\')));
            const unsigned m = unsigned(_mm_movemask_epi8(_mm_or_si128(qb, ctl)));
            if (m) {
                p += __builtin_ctz(m);
                goto stop;
            }
            p += 16;
        }
#endif
        while (p != end && *p != '"' && *p != '\\' && *p >= 0x20) ++p;
        if (p == end) return nullptr;
#if defined(__SSE2__)
    stop:
#endif
        if (*p == '"') {
            if (escaped && p - open > MAX_ESCAPED_STRING) return nullptr;
            return p + 1;
        }
        if (*p != '\\' || end - p < 2) return nullptr; // a control byte, or the end
        const uchar letter = p[1];
        if (letter == 'u') {
            if (end - p < 6) return nullptr;
            uint32_t code = 0;
            for (int i = 2; i < 6; i++) {
                uint32_t d;
                if (!hex_digit(p[i], d)) return nullptr;
                code = code * 16 + d;
            }
            if (code > 0x80) return nullptr;
            p += 6;
        } else {
            if (BYTE_OF_LETTER[letter] < 0) return nullptr;
            p += 2;
        }
        escaped = true;
    }
}

// The byte after a number in plain form, -?(0|[1-9][0-9]*)(.[0-9]+)?
// ([eE][+-]?[0-9]+)?, or null.  Only the exponent and the length can make
// an overflow check refuse a number; where such checks apply, numbers
// that have either are left to the exact rules.
inline const uchar *skip_number(const uchar *p, const uchar *end, bool overflow_checked) {
    const uchar *const start = p;
    if (*p == '-' && ++p == end) return nullptr;
    if (*p == '0') ++p;
    else if (uchar(*p - '1') < 9) p = skip_digits(p + 1, end);
    else return nullptr;
    // A lone zero before an exponent counts as a leading zero to strict
    // reading.
    bool lone_zero = p - start == 1 + (*start == '-') && p[-1] == '0';
    if (p != end && *p == '.') {
        const uchar *frac = ++p;
        p = skip_digits(p, end);
        if (p == frac) return nullptr;
        lone_zero = false;
    }
    if (p != end && (*p | 0x20) == 'e') {
        if (overflow_checked || lone_zero) return nullptr;
        if (++p != end && (*p == '+' || *p == '-')) ++p;
        const uchar *exp = p;
        p = skip_digits(p, end);
        if (p == exp) return nullptr;
    }
    if (overflow_checked && p - start > MAX_CHECKED_NUMBER) return nullptr;
    return p;
}

// The byte after the keyword `kw` (n bytes) at p, or null; the keyword
// must end where a word would.
inline const uchar *skip_keyword(const uchar *p, const uchar *end, const char *kw, size_t n) {
    if (size_t(end - p) < n || std::memcmp(p, kw, n) != 0) return nullptr;
    p += n;
    return p != end && is_word(*p) ? nullptr : p;
}

enum : uint8_t { IN_ARRAY, IN_OBJECT };

bool scan_text(const uchar *p, const uchar *end, bool overflow_checked) {
    uint8_t kinds[MAX_DEPTH];
    uint32_t depth = 0;
    p = skip_space(p, end);
    if (p == end || (*p != '[' && *p != '{')) return false;

value:
    if (p == end) return false;
    switch (*p) {
    case '"':
        if (!(p = skip_string(p + 1, end))) return false;
        goto after_value;
    case '[':
    case '{': {
        if (depth == MAX_DEPTH) return false;
        const bool object = *p == '{';
        kinds[depth++] = object ? IN_OBJECT : IN_ARRAY;
        p = skip_space(p + 1, end);
        if (p != end && *p == (object ? '}' : ']')) {
            --depth;
            ++p;
            goto after_value;
        }
        if (object) goto key;
        goto value;
    }
    case 't': p = skip_keyword(p, end, "true", 4); break;
    case 'f': p = skip_keyword(p, end, "false", 5); break;
    case 'n': p = skip_keyword(p, end, "null", 4); break;
    default: p = skip_number(p, end, overflow_checked); break;
    }
    if (!p) return false;

after_value:
    p = skip_space(p, end);
    if (depth == 0) return p == end;
    if (p == end) return false;
    if (*p == ',') {
        p = skip_space(p + 1, end);
        if (kinds[depth - 1] == IN_ARRAY) goto value;
        goto key;
    }
    if (*p != (kinds[depth - 1] == IN_ARRAY ? ']' : '}')) return false;
    --depth;
    ++p;
    goto after_value;

key:
    if (p == end || *p != '"' || !(p = skip_string(p + 1, end))) return false;
    p = skip_space(p, end);
    if (p == end || *p != ':') return false;
    p = skip_space(p + 1, end);
    goto value;
}

} // namespace

bool check_fast(const jlpca_ctx *ctx) {
    // Character sets whose characters may hold a quote or a backslash as a
    // later byte need the scanner's multibyte measuring; standard strings
    // need its UTF-8 checks.
    if (ctx->unique_keys || ctx->mb_charset == VX_CHARSET_GB18030 ||
        ctx->mb_charset == VX_CHARSET_EUCKR || ctx->std_strings == 1)
        return false;
    const auto *p = reinterpret_cast<const uchar *>(ctx->text);
    return p && scan_text(p, p + ctx->text_len, overflow_is_an_error(ctx));
}

} // namespace vxjson::scan
