// Read under the modes the first bytes choose, write the tree, read that
// text again and write it: the second text must equal the first (writing
// is a fixed point after one step), and nothing may crash or leak.
//
// The fixed point is asked of text that is valid in its double-byte
// character set.  An invalid sequence can leave a lead byte at the end of
// a string cut at a NUL byte (a string's length stops at its first NUL),
// and that byte then takes the closing quote as its trailing byte.  Nor is
// it asked of a tree holding a text that is written as stored and is not
// valid string content: a single-quoted string with a raw double quote,
// such as 'say "hi"' (no escape, so never changed on output), or, in
// keep-escapes mode, any name or string with a raw quote or a backslash
// that starts no escape (\u0022 and \u005c are stored as the bare byte).
// Nor of a lax number whose zeros were dropped before a suffix or an
// exponent: 0d is kept as the text d, and -0e5 as -e5, which read as words.
// With the ASCII flag the text must be valid, and U+0080 (written \u0080,
// read back as the byte 0x80) and characters beyond U+FFFF (only their
// high surrogate is written) are left out.  And with sorted keys, members
// of equal name come back in reverse order on each reading (a newcomer goes
// before its equals), so objects with repeated names are left out there.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_setup.h"
#include "vx_charset.h"

namespace {

bool read_text(FuzzEnv &env, const std::string &text, json_node **root) {
    if (jlpca_reinit(env.ctx.get(), text.data(), uint32_t(text.size())) != 0) return false;
    return json_flex(env.ctx.get(), root) == 0;
}

bool valid_in_charset(const std::string &text, int32_t charset_config, bool ascii) {
    int32_t cs = vx_charset_from_config(charset_config);
    if (cs != VX_CHARSET_GB18030 && cs != VX_CHARSET_EUCKR && !ascii) return true;
    std::vector<uint16_t> units(text.size() + 1);
    int32_t n = 0;
    return LocalToUtf16(text.data(), int32_t(text.size()), cs, units.data(),
                        int32_t(units.size()), &n) == 0;
}

bool has_quote(const char *p, uint32_t n) { return n && std::memchr(p, '"', n) != nullptr; }

bool is_hex(char c) { return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f'); }

// Text that, written as it is stored, is not valid string content.
bool bad_source_form(const char *p, uint32_t n) {
    for (uint32_t i = 0; i < n; i++) {
        if (p[i] == '"') return true;
        if (p[i] != '\\') continue;
        if (++i == n) return true;
        if (p[i] == 'u') {
            if (n - i < 5 || !is_hex(p[i + 1]) || !is_hex(p[i + 2]) || !is_hex(p[i + 3]) || !is_hex(p[i + 4]))
                return true;
            i += 4;
        } else if (p[i] == '\0' || !std::strchr("\"\\/bfnrt", p[i])) {
            return true;
        }
    }
    return false;
}

// A name or string that is written as it is stored and does not read back.
bool unreadable_as_stored(const char *p, uint32_t n, uint32_t escaped, int32_t keep_escapes) {
    return keep_escapes ? bad_source_form(p, n) : escaped == 0 && has_quote(p, n);
}

bool lost_its_digits(const json_node *node) {
    const char *p = node->str;
    uint32_t n = node->str_len;
    if (n && *p == '-') p++, n--;
    return n && ((*p >= 'a' && *p <= 'z') || (*p >= 'A' && *p <= 'Z'));
}

// True when the written text of the tree cannot be read back by design.
bool written_unreadable(const json_node *node, int32_t keep_escapes) {
    switch (node->type) {
    case JSON_DECIMAL:
        return lost_its_digits(node);
    case JSON_STRING:
        return unreadable_as_stored(node->str, node->str_len, node->str_flags, keep_escapes);
    case JSON_OBJECT:
        for (const json_keyval *kv = node->first_member; kv; kv = kv->next)
            if ((keep_escapes && bad_source_form(kv->name, kv->name_len)) ||
                (kv->next && json_object_keyval_name_equal(kv->name, kv->name_len,
                                                           kv->next->name, kv->next->name_len)) ||
                written_unreadable(kv->value, keep_escapes))
                return true;
        return false;
    case JSON_ARRAY:
        for (uint32_t i = 0; i < node->count; i++)
            if (written_unreadable(node->items[i], keep_escapes)) return true;
        return false;
    default:
        return false;
    }
}

[[noreturn]] void fail(const char *what, const std::string &a, const std::string &b) {
    std::fprintf(stderr, "%s\nfirst:  %s\nsecond: %s\n", what, a.c_str(), b.c_str());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzModes modes = take_modes(data, size);
    FuzzEnv env(modes);
    json_node *root = nullptr;
    std::string input(reinterpret_cast<const char *>(data), size);
    if (!read_text(env, input, &root) || !root) return 0;
    std::string first, second;
    if (!write_tree(env, root, modes.write_flags, first)) return 0;
    bool ascii = modes.write_flags & JSON_FMT_ASCII;
    if (!valid_in_charset(input, modes.charset_config, ascii)) return 0;
    if (ascii && (first.find("\\u0080") != std::string::npos ||
                  first.find("\\uD8") != std::string::npos || first.find("\\uD9") != std::string::npos ||
                  first.find("\\uDA") != std::string::npos || first.find("\\uDB") != std::string::npos))
        return 0;
    if (written_unreadable(root, modes.escape_mode)) return 0;
    json_node *again = nullptr;
    if (!read_text(env, first, &again) || !again) fail("written text does not read back", first, "");
    if (!write_tree(env, again, modes.write_flags, second)) fail("re-read tree does not write", first, "");
    if (first != second) fail("writing is not a fixed point", first, second);
    return 0;
}
