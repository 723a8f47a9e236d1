// Character sets of the server.  UTF-8 and the single-byte set are done by
// hand; GB18030 and EUC-KR go through glibc iconv, with one converter pair
// per thread and set, opened on first use (opening costs far more than a
// conversion of one character).
#include "vx_charset.h"

#include <iconv.h>

#include <bit>
#include <cerrno>
#include <cstring>

#include "vx_ini.h"

namespace {

bool is_cont(unsigned char c) { return (c & 0xC0) == 0x80; }

// Length of a well-formed UTF-8 sequence at p, else 1.
int32_t utf8_len(const unsigned char *p, int32_t avail) {
    unsigned char c = p[0];
    int32_t n;
    if (c < 0xC2) return 1;
    if (c < 0xE0) n = 2;
    else if (c < 0xF0) n = 3;
    else if (c < 0xF5) n = 4;
    else return 1;
    for (int32_t i = 1; i < n; i++) {
        if (avail && i >= avail) return 1;
        if (!is_cont(p[i])) return 1;
    }
    if (n == 3 && ((c == 0xE0 && p[1] < 0xA0) || (c == 0xED && p[1] >= 0xA0))) return 1;
    if (n == 4 && ((c == 0xF0 && p[1] < 0x90) || (c == 0xF4 && p[1] >= 0x90))) return 1;
    return n;
}

int32_t gb18030_len(const unsigned char *p, int32_t avail) {
    if (p[0] < 0x81 || p[0] > 0xFE) return 1;
    if (avail == 1) return 1;
    unsigned char t = p[1];
    if (t < 0x40 || t == 0x7F || t == 0xFF) return (avail && avail < 4) ? 1 : 4;
    return 2;
}

// EUC-KR leads are 0xA1..0xFE; 0x80..0xA0 are single bytes (C1 controls),
// as the converter maps them.
int32_t euckr_len(const unsigned char *p, int32_t avail) {
    if (p[0] < 0xA1 || p[0] > 0xFE) return 1;
    return avail == 1 ? 1 : 2;
}

const char *utf16_name() {
    return std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
}

const char *iconv_name(int32_t charset) {
    switch (charset) {
    case VX_CHARSET_GB18030: return "GB18030";
    case VX_CHARSET_EUCKR: return "EUC-KR";
    default: return nullptr;
    }
}

// Per-thread converters, closed when the thread ends.
struct converters {
    iconv_t to_utf16[2] = {iconv_t(-1), iconv_t(-1)};
    iconv_t from_utf16[2] = {iconv_t(-1), iconv_t(-1)};
    ~converters() {
        for (iconv_t cd : to_utf16)
            if (cd != iconv_t(-1)) iconv_close(cd);
        for (iconv_t cd : from_utf16)
            if (cd != iconv_t(-1)) iconv_close(cd);
    }
};

thread_local converters converters;

iconv_t converter(int32_t charset, bool to_utf16) {
    int slot = charset == VX_CHARSET_GB18030 ? 0 : 1;
    iconv_t &cd = to_utf16 ? converters.to_utf16[slot] : converters.from_utf16[slot];
    if (cd == iconv_t(-1)) {
        cd = to_utf16 ? iconv_open(utf16_name(), iconv_name(charset))
                      : iconv_open(iconv_name(charset), utf16_name());
    } else {
        iconv(cd, nullptr, nullptr, nullptr, nullptr); // reset shift state
    }
    return cd;
}

// Run iconv over the whole input; bytes written, or -1.
int32_t run_iconv(iconv_t cd, const char *src, size_t len, char *dst, size_t cap) {
    if (cd == iconv_t(-1)) return -1;
    char *in = const_cast<char *>(src);
    char *out = dst;
    size_t in_left = len, out_left = cap;
    if (iconv(cd, &in, &in_left, &out, &out_left) == size_t(-1) || in_left != 0) return -1;
    return int32_t(cap - out_left);
}

int32_t utf8_to_utf16(const unsigned char *s, int32_t len, uint16_t *dst, int32_t cap) {
    int32_t units = 0;
    for (int32_t i = 0; i < len;) {
        int32_t n = utf8_len(s + i, len - i);
        uint32_t cp;
        if (n == 1) {
            if (s[i] >= 0x80) return -1;
            cp = s[i];
        } else if (n == 2) {
            cp = (s[i] & 0x1Fu) << 6 | (s[i + 1] & 0x3Fu);
        } else if (n == 3) {
            cp = (s[i] & 0x0Fu) << 12 | (s[i + 1] & 0x3Fu) << 6 | (s[i + 2] & 0x3Fu);
        } else {
            cp = (s[i] & 0x07u) << 18 | (s[i + 1] & 0x3Fu) << 12 | (s[i + 2] & 0x3Fu) << 6 |
                 (s[i + 3] & 0x3Fu);
        }
        i += n;
        if (cp >= 0x10000) {
            if (units + 2 > cap) return -1;
            cp -= 0x10000;
            dst[units++] = uint16_t(0xD800 + (cp >> 10));
            dst[units++] = uint16_t(0xDC00 + (cp & 0x3FF));
        } else {
            if (units + 1 > cap) return -1;
            dst[units++] = uint16_t(cp);
        }
    }
    return units;
}

int32_t utf16_to_utf8(const uint16_t *s, int32_t units, char *dst, int32_t cap) {
    int32_t n = 0;
    for (int32_t i = 0; i < units; i++) {
        uint32_t cp = s[i];
        if (cp >= 0xD800 && cp <= 0xDBFF) {
            if (i + 1 >= units || s[i + 1] < 0xDC00 || s[i + 1] > 0xDFFF) return -1;
            cp = 0x10000 + ((cp - 0xD800) << 10) + (s[++i] - 0xDC00);
        } else if (cp >= 0xDC00 && cp <= 0xDFFF) {
            return -1;
        }
        unsigned char buf[4];
        int32_t k;
        if (cp < 0x80) {
            buf[0] = uint8_t(cp);
            k = 1;
        } else if (cp < 0x800) {
            buf[0] = uint8_t(0xC0 | cp >> 6);
            buf[1] = uint8_t(0x80 | (cp & 0x3F));
            k = 2;
        } else if (cp < 0x10000) {
            buf[0] = uint8_t(0xE0 | cp >> 12);
            buf[1] = uint8_t(0x80 | (cp >> 6 & 0x3F));
            buf[2] = uint8_t(0x80 | (cp & 0x3F));
            k = 3;
        } else {
            buf[0] = uint8_t(0xF0 | cp >> 18);
            buf[1] = uint8_t(0x80 | (cp >> 12 & 0x3F));
            buf[2] = uint8_t(0x80 | (cp >> 6 & 0x3F));
            buf[3] = uint8_t(0x80 | (cp & 0x3F));
            k = 4;
        }
        if (n + k > cap) return -1;
        std::memcpy(dst + n, buf, size_t(k));
        n += k;
    }
    return n;
}

} // namespace

extern "C" int32_t vx_charset_from_config(int32_t value) {
    switch (value) {
    case 0: return VX_CHARSET_GB18030;
    case 1: return VX_CHARSET_UTF8;
    case 2: return VX_CHARSET_EUCKR;
    default: return VX_CHARSET_NONE;
    }
}

extern "C" int32_t vx_charset_current(void) {
    return vx_charset_from_config(ini_get_value(0, VX_INI_CHARSET));
}

extern "C" int32_t encoding_mblen(int32_t charset, const unsigned char *p, int32_t avail) {
    if (p[0] < 0x80) return 1;
    switch (charset) {
    case VX_CHARSET_UTF8: return utf8_len(p, avail);
    case VX_CHARSET_GB18030: return gb18030_len(p, avail);
    case VX_CHARSET_EUCKR: return euckr_len(p, avail);
    default: return 1;
    }
}

extern "C" int32_t LocalToUtf16(const char *src, int32_t len, int32_t charset, uint16_t *dst,
                                int32_t dst_units, int32_t *out_units) {
    int32_t units;
    const auto *s = reinterpret_cast<const unsigned char *>(src);
    if (len < 0 || dst_units < 0) return -1;
    if (charset == VX_CHARSET_UTF8) {
        units = utf8_to_utf16(s, len, dst, dst_units);
    } else if (charset == VX_CHARSET_NONE) {
        if (len > dst_units) return -1;
        for (int32_t i = 0; i < len; i++) dst[i] = s[i];
        units = len;
    } else {
        int32_t bytes = run_iconv(converter(charset, true), src, size_t(len),
                                  reinterpret_cast<char *>(dst), size_t(dst_units) * 2);
        units = bytes < 0 ? -1 : bytes / 2;
    }
    if (units < 0) return -1;
    if (out_units) *out_units = units;
    return 0;
}

extern "C" int32_t Utf16ToLocal(const uint16_t *src, int32_t units, int32_t charset, char *dst,
                                int32_t dst_cap) {
    if (units < 0 || dst_cap < 0) return -1;
    if (charset == VX_CHARSET_UTF8) return utf16_to_utf8(src, units, dst, dst_cap);
    if (charset == VX_CHARSET_NONE) {
        if (units > dst_cap) return -1;
        for (int32_t i = 0; i < units; i++) {
            if (src[i] > 0xFF) return -1;
            dst[i] = char(src[i]);
        }
        return units;
    }
    // A lone surrogate is refused here: iconv implementations differ on it.
    for (int32_t i = 0; i < units; i++) {
        if (src[i] >= 0xD800 && src[i] <= 0xDBFF) {
            if (i + 1 >= units || src[i + 1] < 0xDC00 || src[i + 1] > 0xDFFF) return -1;
            i++;
        } else if (src[i] >= 0xDC00 && src[i] <= 0xDFFF) {
            return -1;
        }
    }
    return run_iconv(converter(charset, false), reinterpret_cast<const char *>(src),
                     size_t(units) * 2, dst, size_t(dst_cap));
}

extern "C" char *vx_mbsupr(char *text) {
    for (char *p = text; *p; p++)
        if (*p >= 'a' && *p <= 'z') *p = char(*p - 'a' + 'A');
    return text;
}
