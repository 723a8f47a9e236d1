// Read under the modes the first bytes choose, write the tree, read that
// text again and write it: the second text must equal the first (writing
// is a fixed point after one step), and nothing may crash or leak.
//
// The fixed point is asked of text that is valid in its double-byte
// character set.  An invalid sequence can leave a lead byte at the end of
// a string cut at a NUL byte (a string's length stops at its first NUL),
// and that byte then takes the closing quote as its trailing byte.  Nor is
// it asked of a tree holding a text that is written as stored and has a
// raw double quote: a single-quoted string such as 'say "hi"' (no escape,
// so never changed on output), or any name or string in keep-escapes mode.
// Nor, in keep-escapes mode, of a text with \u005c, which is stored as a
// bare backslash that joins what follows it into another escape, or into
// none, once written.
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
    return LocalToUtf16(text.data(), int32_t(text.size()), cs, units.data(), int32_t(units.size()),
                        &n) == 0;
}

bool has_quote(const char *p, uint32_t n) { return n && std::memchr(p, '"', n) != nullptr; }

// Conservative: an escaped backslash followed by the text u005c counts
// too.
bool has_u005c(const std::string &text) {
    for (size_t i = 0; i + 6 <= text.size(); i++)
        if (text.compare(i, 5, "\\u005") == 0 && (text[i + 5] | 0x20) == 'c') return true;
    return false;
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
    case JSON_DECIMAL: return lost_its_digits(node);
    case JSON_STRING:
        return has_quote(node->str, node->str_len) && (node->str_flags == 0 || keep_escapes);
    case JSON_OBJECT:
        for (const json_keyval *kv = node->first_member; kv; kv = kv->next)
            if ((keep_escapes && has_quote(kv->name, kv->name_len)) ||
                (kv->next && json_object_keyval_name_equal(kv->name, kv->name_len, kv->next->name,
                                                           kv->next->name_len)) ||
                written_unreadable(kv->value, keep_escapes))
                return true;
        return false;
    case JSON_ARRAY:
        for (uint32_t i = 0; i < node->count; i++)
            if (written_unreadable(node->items[i], keep_escapes)) return true;
        return false;
    default: return false;
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
    if (ascii &&
        (first.find("\\u0080") != std::string::npos || first.find("\\uD8") != std::string::npos ||
         first.find("\\uD9") != std::string::npos || first.find("\\uDA") != std::string::npos ||
         first.find("\\uDB") != std::string::npos))
        return 0;
    if (written_unreadable(root, modes.escape_mode)) return 0;
    if (modes.escape_mode && has_u005c(input)) return 0;
    json_node *again = nullptr;
    if (!read_text(env, first, &again) || !again)
        fail("written text does not read back", first, "");
    if (!write_tree(env, again, modes.write_flags, second))
        fail("re-read tree does not write", first, "");
    if (first != second) fail("writing is not a fixed point", first, second);
    return 0;
}
