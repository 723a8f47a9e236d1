// String escaping: between the decoded form of string text and its JSON
// forms (standard and MySQL escapes, \u escapes for non-ASCII), and the
// single entry json_string_convert that the tree writer uses for every name
// and string.
//
// Every routine steps through the text one character at a time in the
// server's character set, because a trailing byte of a double-byte
// character may look like a backslash or a quote; such bytes are copied
// with their character and never escaped.
#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "escape_internal.h"
#include "report.h"
#include "report_sites.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vx_nstr.h"
#include "vxstr.h"

namespace vxjson {

using namespace site;

namespace {

// ------------------------------------------------------------------
// Plain-run scanning, eight bytes at a time
// ------------------------------------------------------------------

constexpr uint64_t ONES = 0x0101010101010101ull;
constexpr uint64_t HIGHS = 0x8080808080808080ull;

inline uint64_t has_zero_byte(uint64_t v) { return (v - ONES) & ~v & HIGHS; }

// A high bit in every byte lane that may need a look: a byte below 14 (the
// escaped controls, with a few harmless ones), a quote, a backslash or a
// byte above 127.  The lowest flagged lane is always exact; higher ones may
// be false alarms, which the byte-wise step sorts out.
inline uint64_t scan_stop_mask(uint64_t w) {
    return (w & HIGHS) | has_zero_byte(w ^ (ONES * '"')) | has_zero_byte(w ^ (ONES * '\\')) |
           ((w - ONES * 14) & ~w & HIGHS);
}

// Length of a well-formed UTF-8 sequence at p that lies within rem bytes,
// else 0.  The server's own measure agrees on every well-formed sequence;
// anything else is left to it.
inline uint32_t utf8_well_formed(const unsigned char *p, size_t rem) {
    const unsigned c = p[0];
    auto cont = [&](size_t i) { return (p[i] & 0xC0) == 0x80; };
    if (c >= 0xC2 && c <= 0xDF) return rem >= 2 && cont(1) ? 2 : 0;
    if (c >= 0xE0 && c <= 0xEF) {
        if (rem < 3 || !cont(1) || !cont(2)) return 0;
        if ((c == 0xE0 && p[1] < 0xA0) || (c == 0xED && p[1] >= 0xA0)) return 0;
        return 3;
    }
    if (c >= 0xF0 && c <= 0xF4) {
        if (rem < 4 || !cont(1) || !cont(2) || !cont(3)) return 0;
        if ((c == 0xF0 && p[1] < 0x90) || (c == 0xF4 && p[1] >= 0x90)) return 0;
        return 4;
    }
    return 0;
}

} // namespace

// The server measures a character on NUL-terminated text.  Near the end of
// a text that is not terminated (member names are not), the last bytes are
// measured from a copy padded with NULs, so that nothing past the text is
// read and a character cut off by the end is seen as such.
uint32_t mb_char_len(int32_t charset, const unsigned char *p, size_t rem) {
    if (charset == VX_CHARSET_UTF8) {
        if (uint32_t n = utf8_well_formed(p, rem)) return n;
    }
    int32_t n;
    if (rem >= 4) {
        n = encoding_mblen(charset, p, 0);
    } else {
        unsigned char pad[8] = {};
        std::memcpy(pad, p, rem);
        n = encoding_mblen(charset, pad, 0);
    }
    return n < 1 ? 1u : static_cast<uint32_t>(n);
}

namespace {

// The bytes p[0..rem) (rem 1 to 7) in the low lanes of a word, the others
// zero, read without passing the end of the text.
inline uint64_t load_tail(const unsigned char *p, size_t rem) {
    if (rem >= 4) {
        uint32_t lo, hi;
        std::memcpy(&lo, p, 4);
        std::memcpy(&hi, p + rem - 4, 4);
        return uint64_t(lo) | uint64_t(hi) << ((rem - 4) * 8);
    }
    return uint64_t(p[0]) | uint64_t(p[rem >> 1]) << ((rem >> 1) * 8) |
           uint64_t(p[rem - 1]) << ((rem - 1) * 8);
}

inline uint64_t load8(const unsigned char *p) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    return w;
}

// The byte at *p needs a look: escape it, copy it, or copy the multibyte
// character it starts.  False when that character is cut off by the end
// of the text, which ends the text.
inline bool escape_one(const unsigned char *&p, const unsigned char *e, char *&out,
                       charset_cache &cs) {
    const unsigned char c = *p;
    if (c < 0x80) {
        if (const char l = static_cast<char>(STD_LETTER[c])) {
            out[0] = '\\';
            out[1] = l;
            out += 2;
        } else {
            *out++ = static_cast<char>(c);
        }
        ++p;
        return true;
    }
    const size_t len = mb_char_len(cs.get(), p, static_cast<size_t>(e - p));
    if (len > static_cast<size_t>(e - p)) return false;
    std::memcpy(out, p, len);
    out += len;
    p += len;
    return true;
}

} // namespace

// Eight bytes at a time, the last few included: each word is stored whole
// and the cursor moves past its plain bytes only, so the stores may run up
// to eight bytes beyond what is finally written.
char *escape_std_words(const unsigned char *in, size_t n, char *out, charset_cache &cs) {
    const unsigned char *p = in;
    const unsigned char *const e = in + n;
    if constexpr (std::endian::native != std::endian::little) {
        while (p < e) {
            if (!is_scan_stop(*p)) *out++ = static_cast<char>(*p++);
            else if (!escape_one(p, e, out, cs)) break;
        }
        return out;
    }
    while (p < e) {
        const size_t rem = static_cast<size_t>(e - p);
        uint64_t w, m;
        size_t step;
        if (rem >= 8) {
            std::memcpy(&w, p, 8);
            m = scan_stop_mask(w);
            step = 8;
        } else {
            w = load_tail(p, rem);
            m = scan_stop_mask(w) & ((uint64_t(1) << (rem * 8)) - 1);
            step = rem;
        }
        std::memcpy(out, &w, 8);
        if (m) step = static_cast<unsigned>(std::countr_zero(m)) >> 3;
        p += step;
        out += step;
        if (m && !escape_one(p, e, out, cs)) break;
    }
    return out;
}

#if defined(__SSE2__)
namespace {
// The sign bit of each lane while bytes above 127 need a look.  In UTF-8
// (bytes above 127 never stand for a quote or backslash, and a character
// cut off by the end measures as one byte) and in the single-byte set they
// are copied as they are, so once either is known they need none.
inline __m128i high_bytes_to_check(const charset_cache &cs) {
    return cs.code == VX_CHARSET_UTF8 || cs.code == VX_CHARSET_NONE ? _mm_setzero_si128()
                                                                     : _mm_set1_epi8(char(0x80));
}
} // namespace

// Sixteen bytes at a time, as the word version; the mask has a bit per
// byte that needs a look: at most 13 (the escaped controls and a few
// harmless ones), a quote, a backslash, or above 127 (its own sign bit).
char *escape_std_vectors(const unsigned char *in, size_t n, char *out, charset_cache &cs) {
    const unsigned char *p = in;
    const unsigned char *const e = in + n;
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i backslash = _mm_set1_epi8('\\');
    const __m128i thirteen = _mm_set1_epi8(13);
    __m128i high = high_bytes_to_check(cs);
    while (p < e) {
        const size_t rem = static_cast<size_t>(e - p);
        __m128i v;
        size_t step = 16;
        if (rem >= 16) {
            v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        } else if (rem > 8) {
            uint64_t lo, hi;
            std::memcpy(&lo, p, 8);
            std::memcpy(&hi, e - 8, 8); // overlaps lo; keep only bytes 8 and up
            v = _mm_set_epi64x(static_cast<long long>(hi >> ((16 - rem) * 8)),
                               static_cast<long long>(lo));
            step = rem;
        } else {
            v = _mm_set_epi64x(0, static_cast<long long>(rem == 8 ? load8(p) : load_tail(p, rem)));
            step = rem;
        }
        unsigned m = static_cast<unsigned>(_mm_movemask_epi8(
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, quote), _mm_cmpeq_epi8(v, backslash)),
                         _mm_or_si128(_mm_cmpeq_epi8(_mm_min_epu8(v, thirteen), v),
                                      _mm_and_si128(v, high)))));
        m &= step == 16 ? 0xFFFFu : (1u << step) - 1;
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out), v);
        if (m) step = static_cast<unsigned>(std::countr_zero(m));
        p += step;
        out += step;
        if (m) {
            const bool was_high = *p >= 0x80;
            if (!escape_one(p, e, out, cs)) break;
            if (was_high) high = high_bytes_to_check(cs);
        }
    }
    return out;
}
#endif

bool out_buf::grow(size_t n) {
    finish();
    if (s->failed) {
        end = p; // no room from now on: later writes do nothing
        return false;
    }
    // Ask for at least the current capacity again, so that a writer making
    // many small requests still doubles.
    const size_t room = UINT32_MAX - 1 - static_cast<size_t>(s->len);
    size_t want = std::max<size_t>(n, s->cap);
    if (want > room) want = n;
    if (want > room || vxstr_reserve(env, alloc, s, static_cast<uint32_t>(want)) < 0) {
        s->failed = 1;
        load();
        end = p;
        return false;
    }
    load();
    return true;
}

namespace {

void release(void *env, vx_allocator *a, char *text) {
    if (text) vx_free(env, a, text);
}

// Walks the characters of a text in the server's character set: a
// multibyte character goes to on_multi(bytes, length), a single byte to
// on_byte(byte); either returns false to end the walk.  A character cut
// off by the end of the text is dropped.
template <class OnMulti, class OnByte>
void walk_chars(const char *text, size_t len, charset_cache &cs, OnMulti on_multi, OnByte on_byte) {
    const auto *p = reinterpret_cast<const unsigned char *>(text);
    const auto *const e = p + len;
    while (p < e) {
        const size_t n = char_len(cs, p, static_cast<size_t>(e - p));
        if (n > static_cast<size_t>(e - p)) return;
        if (!(n > 1 ? on_multi(p, n) : on_byte(*p))) return;
        p += n;
    }
}

// Appends n bytes at o; returns the new end.
inline char *copy_bytes(char *o, const unsigned char *p, size_t n) {
    std::memcpy(o, p, n);
    return o + n;
}

// A byte as a backslash and its escape letter, or as it is when it has none.
inline char *put_escaped(char *o, unsigned char c, uint8_t letter) {
    if (!letter) {
        *o = static_cast<char>(c);
        return o + 1;
    }
    o[0] = '\\';
    o[1] = static_cast<char>(letter);
    return o + 2;
}

// An output text of `size` bytes from the allocator, for the routines that
// hand back a text of their own.
char *alloc_text(void *env, vx_allocator *a, size_t size, int32_t line) {
    return static_cast<char *>(vx_alloc(env, a, size, SRC_JSON, line));
}

// Hands back `buf` up to `end` as an output text.
void set_out(char *buf, const char *end, char **out, uint32_t *out_len) {
    *out = buf;
    *out_len = static_cast<uint32_t>(end - buf);
}

} // namespace

int32_t convert_general(out_buf &o, uint32_t flags, const char *text, uint32_t len, bool quote,
                        uint8_t conv) {
    if (quote) {
        if (!o.ensure(1)) return NOMEM;
        o.put('"');
    }
    char *tmp = nullptr;
    uint32_t tmp_len = 0;
    int32_t rc = 0;
    int32_t line = 0;
    switch (conv) {
    case JSON_CONV_JSON:
        rc = json_string_from_value_add_escape(o.env, o.alloc, text, len, &tmp, &tmp_len);
        line = ESCAPE_CONVERT_STD;
        break;
    case JSON_CONV_MYSQL:
        rc = json_string_from_value_add_escape_for_mysql(o.env, o.alloc, text, len, &tmp, &tmp_len);
        line = ESCAPE_CONVERT_MYSQL;
        break;
    case JSON_CONV_PLAIN:
        rc = json_string_to_value_remove_escape(o.env, o.alloc, text, len, &tmp, &tmp_len);
        line = ESCAPE_CONVERT_PLAIN;
        break;
    default: break;
    }
    if (rc < 0) {
        release(o.env, o.alloc, tmp);
        return report_json(rc, line);
    }
    if (line) {
        text = tmp;
        len = tmp_len;
    }
    if (flags & JSON_FMT_ASCII) {
        o.finish();
        rc = json_string_convert_ascii(o.env, o.alloc, o.s, flags, text, len);
        o.load();
        if (rc < 0) {
            release(o.env, o.alloc, tmp);
            return report_json(rc, ESCAPE_CONVERT_ASCII);
        }
    } else if (len) {
        if (!o.ensure(len)) {
            release(o.env, o.alloc, tmp);
            return NOMEM;
        }
        o.put(text, len);
    }
    release(o.env, o.alloc, tmp);
    if (quote) {
        if (!o.ensure(1)) return NOMEM;
        o.put('"');
    }
    return 0;
}

} // namespace vxjson

using namespace vxjson;
using namespace vxjson::site;

VXJSON_API int32_t json_string_convert(void *env, vx_allocator *allocator, vxstr *string,
                                       uint32_t flags, const char *text, uint32_t len,
                                       int32_t quote, uint8_t conv) {
    if (string->failed) return NOMEM;
    out_buf o(env, allocator, string);
    charset_cache cs;
    const int32_t rc = convert_into(o, cs, flags, text, len, quote, conv);
    o.finish();
    return rc;
}

VXJSON_API int32_t json_get_lit_escape(uint8_t byte) { return STD_LETTER[byte]; }

VXJSON_API int32_t json_get_lit_escape_for_mysql(uint8_t byte) { return MYSQL_LETTER[byte]; }

VXJSON_API int32_t json_string_from_value_add_escape(void *env, vx_allocator *allocator,
                                                     const char *text, uint32_t len, char **out,
                                                     uint32_t *out_len) {
    *out = nullptr;
    *out_len = 0;
    if (len == 0) return 0;
    char *buf = alloc_text(env, allocator, 2 * size_t(len) + ESCAPE_SLACK, ESCAPE_ALLOC_STD);
    if (!buf) return NOMEM;
    charset_cache cs;
    set_out(buf, escape_std(reinterpret_cast<const unsigned char *>(text), len, buf, cs), out,
            out_len);
    return 0;
}

// Escapes already in the text are kept (a backslash before a letter of the
// MySQL table), the rest is escaped by the standard table; a backslash
// before anything else is dropped.
VXJSON_API int32_t json_string_from_value_add_escape_for_mysql(void *env, vx_allocator *allocator,
                                                               const char *text, uint32_t len,
                                                               char **out, uint32_t *out_len) {
    *out = nullptr;
    *out_len = 0;
    if (len == 0) return 0;
    char *buf = alloc_text(env, allocator, 2 * size_t(len), ESCAPE_ALLOC_MYSQL);
    if (!buf) return NOMEM;
    charset_cache cs;
    char *o = buf;
    bool after_backslash = false;
    walk_chars(
        text, len, cs,
        [&](const unsigned char *p, size_t n) {
            o = copy_bytes(o, p, n);
            after_backslash = false;
            return true;
        },
        [&](unsigned char c) {
            if (c == '\\' && !after_backslash) {
                after_backslash = true;
                return true;
            }
            o = put_escaped(o, c, after_backslash ? MYSQL_LETTER[c] : STD_LETTER[c]);
            after_backslash = false;
            return true;
        });
    set_out(buf, o, out, out_len);
    return after_backslash ? VXJSON_ERR_LONE_BACKSLASH : 0;
}

// Decoding is done by the JSON reader itself, so that exactly the escapes
// it accepts are decoded, with its errors.  The reader's nodes need a heap
// of their own; it lives only for this call.
VXJSON_API int32_t json_string_to_value_remove_escape(void *env, vx_allocator *allocator,
                                                      const char *text, uint32_t len, char **out,
                                                      uint32_t *out_len) {
    *out = nullptr;
    *out_len = 0;
    if (len == 0) return 0;
    vxstr *s = vxstr_create(env, allocator, len + 10);
    if (!s) return report_json(NOMEM, ESCAPE_UNESCAPE_QUOTE);
    int32_t rc = json_string_convert(env, allocator, s, 0, text, len, 1, JSON_CONV_NONE);
    if (rc < 0) {
        vxstr_free(env, allocator, s);
        return report_json(rc, ESCAPE_UNESCAPE_QUOTE);
    }
    vx_heap *heap = mem_heap_create(sizeof(jlpca_ctx) + 2 * size_t(s->len) + 1024);
    auto *ctx = heap ? static_cast<jlpca_ctx *>(mem_heap_alloc_low(env, heap, sizeof(jlpca_ctx), 0,
                                                                   SRC_JSON, ESCAPE_UNESCAPE_READ))
                     : nullptr;
    if (!ctx) {
        if (heap) mem_heap_free(heap);
        vxstr_free(env, allocator, s);
        return report_json(NOMEM, ESCAPE_UNESCAPE_READ);
    }
    json_node *root = nullptr;
    jlpca_init_simple(env, ctx, heap, allocator, JLPCA_ESCAPE_DECODE, JLPCA_COMPAT_PG);
    rc = jlpca_reinit(ctx, s->buf, s->len);
    if (rc >= 0) rc = json_flex(ctx, &root);
    jlpca_deinit(ctx);
    if (rc >= 0 && !root) rc = VXJSON_ERR_INVALID_JSON;
    if (rc < 0) {
        mem_heap_free(heap);
        vxstr_free(env, allocator, s);
        return report_json(rc, ESCAPE_UNESCAPE_READ);
    }
    vxstr_init(s);
    rc = json_scalar_to_string(env, allocator, s, root, 0);
    mem_heap_free(heap);
    if (rc < 0) {
        vxstr_free(env, allocator, s);
        return report_json(rc, ESCAPE_UNESCAPE_WRITE);
    }
    *out = s->buf;
    *out_len = s->len;
    vxstr_free_record(env, allocator, s);
    return 0;
}

// Each multibyte character becomes \u and the first UTF-16 unit in
// upper-case hex: a character beyond the Basic Multilingual Plane keeps
// only its high surrogate, as the server has always written it, unless
// the flags ask for the whole pair.  (Three output bytes per input byte
// hold one unit; a pair needs six: some two-byte GB18030 characters lie
// beyond U+FFFF.)
VXJSON_API int32_t json_string_convert_ascii(void *env, vx_allocator *allocator, vxstr *string,
                                             uint32_t flags, const char *text, uint32_t len) {
    if (string->failed) return NOMEM;
    if (len == 0) return 0;
    const size_t per_byte = flags & JSON_FMT_ASCII_PAIRS ? 6 : 3;
    char *buf = alloc_text(env, allocator, per_byte * size_t(len) + 2, ESCAPE_ALLOC_ASCII);
    if (!buf) return NOMEM;
    static constexpr char HEX[] = "0123456789ABCDEF";
    charset_cache cs;
    char *o = buf;
    bool unconvertible = false;
    walk_chars(
        text, len, cs,
        [&](const unsigned char *p, size_t n) {
            uint16_t units[50];
            int32_t count = 0;
            if (LocalToUtf16(reinterpret_cast<const char *>(p), static_cast<int32_t>(n), cs.get(),
                             units, 50, &count) < 0 ||
                count < 1) {
                unconvertible = true;
                return false;
            }
            const int32_t written = (flags & JSON_FMT_ASCII_PAIRS) && count == 2 ? 2 : 1;
            for (int32_t i = 0; i < written; ++i) {
                const unsigned u = units[i];
                const char esc[6] = {
                    '\\', 'u', HEX[u >> 12], HEX[(u >> 8) & 15], HEX[(u >> 4) & 15], HEX[u & 15]};
                o = copy_bytes(o, reinterpret_cast<const unsigned char *>(esc), 6);
            }
            return true;
        },
        [&](unsigned char c) {
            *o++ = static_cast<char>(c);
            return true;
        });
    const int32_t rc = unconvertible ? VXJSON_ERR_INVALID_JSON
                                     : vxstr_append_with_length(env, allocator, string, buf,
                                                                static_cast<uint32_t>(o - buf));
    vx_free(env, allocator, buf);
    return rc < 0 ? rc : 0;
}

namespace {} // namespace

// Walks an SQL string literal with three flags: after a backslash (P), the
// last output an escaped backslash (D), inside double quotes (Q).  An escape
// that MySQL mode cannot take is an error; "\0" ends the text.
VXJSON_API int32_t json_org_str_escape_solve_for_mysql(void *env, vx_allocator *allocator,
                                                       const char *text, uint32_t len, char **out,
                                                       uint32_t *out_len) {
    *out = nullptr;
    *out_len = 0;
    if (len == 0) return 0;
    char *buf = alloc_text(env, allocator, 2 * size_t(len), ESCAPE_ALLOC_SOLVE);
    if (!buf) return NOMEM;
    charset_cache cs;
    char *o = buf;
    bool pending = false, escaped_backslash = false, in_quotes = false, bad = false;
    // Writes c (nothing when 0) and clears P and D.
    auto plain = [&](char c) {
        if (c) *o++ = c;
        pending = escaped_backslash = false;
        return true;
    };
    auto fail = [&] {
        bad = true;
        return false;
    };
    walk_chars(
        text, len, cs,
        [&](const unsigned char *p, size_t n) {
            o = copy_bytes(o, p, n);
            return plain(0);
        },
        [&](unsigned char c) {
            switch (c) {
            case '\\':
                if (!pending) {
                    pending = true;
                    return true;
                }
                *o++ = '\\';
                escaped_backslash = !escaped_backslash;
                pending = false;
                return true;
            case '"': in_quotes = in_quotes ? escaped_backslash : true; return plain('"');
            case 't':
            case 'n':
            case 'r':
                if (!pending) return plain(static_cast<char>(c));
                return in_quotes ? fail() : plain(' ');
            case '_':
            case 'b':
            case '%': return pending ? fail() : plain(static_cast<char>(c));
            case '0':
                if (!pending) return plain('0');
                pending = false;
                return false; // the rest of the text is ignored
            case '\'': return pending && !in_quotes ? fail() : plain('\'');
            default: return plain(static_cast<char>(c)); // a backslash before it is dropped
            }
        });
    if (bad || pending || in_quotes) {
        vx_free(env, allocator, buf);
        return VXJSON_ERR_INVALID_JSON;
    }
    set_out(buf, o, out, out_len);
    return 0;
}

// A column default is stored with MySQL escapes; its value has them
// decoded.  With an assignment field other than 0 a lone trailing
// backslash is tolerated and dropped.
VXJSON_API int32_t json_default_value_remove_escape_for_mysql(void *env, vx_allocator *allocator,
                                                              const vx_nstr *src, vx_nstr *dst) {
    if (src->len == 0) return 0;
    char *buf = alloc_text(env, allocator, src->len, ESCAPE_ALLOC_DEFAULT);
    if (!buf) return NOMEM;
    charset_cache cs;
    char *o = buf;
    bool pending = false;
    walk_chars(
        nstr_text(src), src->len, cs,
        [&](const unsigned char *p, size_t n) {
            o = copy_bytes(o, p, n);
            pending = false;
            return true;
        },
        [&](unsigned char c) {
            if (!pending && c == '\\') {
                pending = true;
                return true;
            }
            if (pending) {
                switch (c) {
                case 'n': c = '\n'; break;
                case 'b': c = '\b'; break;
                case 't': c = '\t'; break;
                case 'r': c = '\r'; break;
                case 'f': c = '\f'; break;
                default: break;
                }
            }
            *o++ = static_cast<char>(c);
            pending = false;
            return true;
        });
    int32_t rc;
    const auto n = static_cast<uint32_t>(o - buf);
    if (pending && src->assign == 0) rc = VXJSON_ERR_LONE_BACKSLASH;
    else if (src->assign == 0)
        rc = nstr_assign_const_with_blank_no_clear(env, allocator, dst, buf, n);
    else rc = nstr_assign_const_ex2_no_clear(env, allocator, dst, buf, n, src->assign);
    vx_free(env, allocator, buf);
    return rc;
}
