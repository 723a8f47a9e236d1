// The check grammar and the tree grammar accept the same language: on any
// text, jcheck_flex and json_flex agree on acceptance.  Unique keys are
// off (with them jcheck_flex runs the tree grammar itself) and so is
// scalar_top, which only the tree grammar consults.
#include <cstdio>
#include <cstdlib>

#include "fuzz_setup.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzModes modes = take_modes(data, size);
    modes.unique_keys = 0;
    modes.scalar_top = 0;
    FuzzEnv env(modes);
    const char *text = reinterpret_cast<const char *>(data);
    json_node *root = nullptr;
    if (jlpca_reinit(env.ctx.get(), text, uint32_t(size)) != 0) return 0;
    bool read_ok = json_flex(env.ctx.get(), &root) == 0;
    if (jlpca_reinit(env.ctx.get(), text, uint32_t(size)) != 0) return 0;
    int32_t check = jcheck_flex(env.ctx.get());
    if (check != 0 && check != VXJSON_ERR_INVALID_JSON) {
        std::fprintf(stderr, "jcheck_flex returned %d\n", check);
        std::abort();
    }
    if (read_ok != (check == 0)) {
        std::fprintf(stderr, "json_flex %s but jcheck_flex %s\n", read_ok ? "accepts" : "rejects",
                     check == 0 ? "accepts" : "rejects");
        std::abort();
    }
    return 0;
}
