// Standard JSON strings: UTF-8 checking, escaped surrogate pairs, and the
// context's switch for them.  Only a context that asked for standard
// strings reaches the first two; the scanner's default rules never do.
#include "std_strings.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "jlpca_internal.h"
#include "report.h"
#include "report_sites.h"
#include "vx_charset.h"
#include "vx_ini.h"

using namespace vxjson;

namespace vxjson::std_strings {

namespace {

using uchar = unsigned char;

// Room for one character of any server character set.
constexpr int32_t CHAR_BUF = 16;

bool is_cont(uchar c) { return (c & 0xC0) == 0x80; }

// Past the ASCII bytes at the front of [p, end).
const uchar *skip_ascii(const uchar *p, const uchar *end) {
#if defined(__SSE2__)
    while (end - p >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        if (const int high = _mm_movemask_epi8(v)) return p + __builtin_ctz(unsigned(high));
        p += 16;
    }
#endif
    while (p < end && *p < 0x80) ++p;
    return p;
}

// The length of the sequence led by `lead` (2 to 4), or 0 with `why` set
// for a byte that cannot lead one.
int sequence_length(uchar lead, msg::msg_id &why) {
    if (lead < 0xC0) return why = msg::UTF8_STRAY, 0;
    if (lead < 0xC2) return why = msg::UTF8_OVERLONG, 0; // C0, C1: always overlong
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    if (lead < 0xF5) return 4;
    if (lead < 0xF8) return why = msg::UTF8_TOO_HIGH, 0; // F5-F7 lead past U+10FFFF
    return why = msg::UTF8_NEVER, 0;
}

// Is the second byte (a continuation) allowed after `lead`?  The limits
// that the lead byte alone cannot express.
bool second_byte_ok(uchar lead, uchar second, msg::msg_id &why) {
    switch (lead) {
    case 0xE0: return second >= 0xA0 || (why = msg::UTF8_OVERLONG, false);
    case 0xED: return second < 0xA0 || (why = msg::UTF8_SURROGATE, false);
    case 0xF0: return second >= 0x90 || (why = msg::UTF8_OVERLONG, false);
    case 0xF4: return second < 0x90 || (why = msg::UTF8_TOO_HIGH, false);
    default: return true;
    }
}

bool hex4(const uchar *p, const uchar *end, uint32_t &unit) {
    if (end - p < 4) return false;
    unit = 0;
    for (int i = 0; i < 4; i++) {
        uint32_t d;
        if (!hex_digit(p[i], d)) return false;
        unit = unit << 4 | d;
    }
    return true;
}

bool is_high(uint32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool is_low(uint32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

// The unit of a "\uXXXX" escape at p (at the backslash), if one is there.
bool escape_at(const uchar *p, const uchar *end, uint32_t &unit) {
    return end - p >= 6 && p[0] == '\\' && p[1] == 'u' && hex4(p + 2, end, unit);
}

} // namespace

const uchar *find_invalid_utf8(const uchar *p, const uchar *end, msg::msg_id &why) {
    for (;;) {
        p = skip_ascii(p, end);
        if (p == end) return end;
        const int n = sequence_length(*p, why);
        if (n == 0) return p;
        if (end - p < n) return why = msg::UTF8_CUT_SHORT, p;
        for (int i = 1; i < n; i++)
            if (!is_cont(p[i])) return why = msg::UTF8_CUT_SHORT, p;
        if (!second_byte_ok(p[0], p[1], why)) return p;
        p += n;
    }
}

u_escape classify_u_escape(const uchar *u, const uchar *end) {
    u_escape r;
    uint32_t first = 0, second = 0;
    if (!hex4(u + 1, end, first) || !(is_high(first) || is_low(first))) return r;
    const uchar *next = u + 5; // where a second escape would start
    r.kind = u_escape::BAD;
    if (is_low(first)) {
        // A low one right before a high one that has no low one of its own
        // reads as the pair written the wrong way round.
        uint32_t third = 0;
        const bool reversed = escape_at(next, end, second) && is_high(second) &&
                              !(escape_at(next + 6, end, third) && is_low(third));
        r.why = reversed ? msg::REVERSED_SURROGATES : msg::LONE_LOW_SURROGATE;
        return r;
    }
    if (!escape_at(next, end, second) || !is_low(second)) {
        r.why = msg::LONE_HIGH_SURROGATE;
        return r;
    }
    r.kind = u_escape::PAIR;
    r.high = uint16_t(first);
    r.low = uint16_t(second);
    return r;
}

int32_t addlit_surrogate_pair(jlpca_ctx *ctx, uint16_t high, uint16_t low) {
    const uint16_t units[2] = {high, low};
    char out[CHAR_BUF];
    const int32_t cs = vx_charset_from_config(ini_get_value(0, VX_INI_CHARSET));
    const int32_t len = Utf16ToLocal(units, 2, cs, out, CHAR_BUF);
    ctx->lit_escaped = 1;
    if (len < 0) return report(VXJSON_ERR_INVALID_JSON, SRC_JLPCA, site::JLPCA_PAIR_REPORT);
    return jlpca_addlit(out, len, ctx);
}

} // namespace vxjson::std_strings

extern "C" {

VXJSON_API int32_t jlpca_set_std_strings(jlpca_ctx *ctx, int32_t on) {
    if (!ctx || (on != 0 && on != 1)) return VXJSON_ERR_INVALID_JSON;
    ctx->std_strings = on;
    return 0;
}

VXJSON_API int32_t jlpca_std_strings(const jlpca_ctx *ctx) { return ctx && ctx->std_strings == 1; }

} // extern "C"
