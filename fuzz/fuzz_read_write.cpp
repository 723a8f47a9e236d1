// Read under the modes the first bytes choose, write the tree, read that
// text again and write it: the second text must equal the first (writing
// is a fixed point after one step), and nothing may crash or leak.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_setup.h"

namespace {

// The written text of a tree, or nothing when writing failed.
bool write_tree(FuzzEnv &env, const json_node *root, uint32_t flags, std::string &out) {
    vxstr *s = vxstr_create(nullptr, &env.alloc, 0);
    if (!s) return false;
    int32_t rc = json_to_string(env.ctx.get(), &env.alloc, s, root, flags, 0, 0, JSON_CONV_JSON);
    if (rc == 0) out.assign(vxstr_getstr(s), s->len);
    vxstr_free(nullptr, &env.alloc, s);
    return rc == 0;
}

bool read_text(FuzzEnv &env, const std::string &text, json_node **root) {
    if (jlpca_reinit(env.ctx.get(), text.data(), uint32_t(text.size())) != 0) return false;
    return json_flex(env.ctx.get(), root) == 0;
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
    json_node *again = nullptr;
    if (!read_text(env, first, &again) || !again) fail("written text does not read back", first, "");
    if (!write_tree(env, again, modes.write_flags, second)) fail("re-read tree does not write", first, "");
    if (first != second) fail("writing is not a fixed point", first, second);
    return 0;
}
