// The check grammar and the tree grammar accept the same language: on any
// text, jcheck_flex and json_flex agree on acceptance.  Unique keys are
// off (with them jcheck_flex runs the tree grammar itself) and so is
// scalar_top, which only the tree grammar consults.
//
// Standard strings (a selector bit) go through the same scanner rules in
// both, surrogate pairs and UTF-8 checks included.
//
// Tokens near the end of a text are scanned byte by byte and the others in
// wider steps, so the text is also read with blanks behind it: the same
// acceptance, and the same tree written out.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz_setup.h"

// jcheck_flex's answer (`check`, with lexical cause `err`) against the
// check grammar run alone over the same text.
static bool grammar_agrees(FuzzEnv &env, const char *text, size_t size, int32_t check,
                           int32_t err) {
    if (jlpca_reinit(env.ctx.get(), text, uint32_t(size)) != 0) return true;
    void *scanner = nullptr;
    if (json_flex_scanner_init(env.ctx.get(), &scanner) != 0) return true;
    const bool grammar_ok = jcheck_parse(scanner, env.ctx.get()) == 0 && env.ctx->err_code >= 0;
    json_flex_scanner_deinit(env.ctx.get(), scanner);
    if (grammar_ok == (check == 0) && env.ctx->err_code == err) return true;
    std::fprintf(stderr, "jcheck_flex %s (%d) but the check grammar %s (%d)\n",
                 check == 0 ? "accepts" : "rejects", err, grammar_ok ? "accepts" : "rejects",
                 env.ctx->err_code);
    return false;
}

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
    // jcheck_flex may decide a plain text in one wide pass; the check
    // grammar alone must agree, cause included (an empty text is decided
    // before either).
    const int32_t check_err = env.ctx->err_code;
    if (size != 0 && !grammar_agrees(env, text, size, check, check_err)) std::abort();
    if (read_ok != (check == 0)) {
        std::fprintf(stderr, "json_flex %s but jcheck_flex %s\n", read_ok ? "accepts" : "rejects",
                     check == 0 ? "accepts" : "rejects");
        std::abort();
    }
    // An empty text reads as nothing, but blanks alone are refused.
    if (size == 0) return 0;
    std::string written, padded_written;
    if (read_ok && root && !write_tree(env, root, JSON_FMT_COMPACT, written)) return 0;
    const std::string padded = std::string(text, size) + std::string(64, ' ');
    json_node *padded_root = nullptr;
    if (jlpca_reinit(env.ctx.get(), padded.data(), uint32_t(padded.size())) != 0) return 0;
    const bool padded_ok = json_flex(env.ctx.get(), &padded_root) == 0;
    if (padded_ok && padded_root && !write_tree(env, padded_root, JSON_FMT_COMPACT, padded_written))
        return 0;
    if (jlpca_reinit(env.ctx.get(), padded.data(), uint32_t(padded.size())) != 0) return 0;
    if ((jcheck_flex(env.ctx.get()) == 0) != read_ok) {
        std::fprintf(stderr, "jcheck_flex with blanks behind disagrees\n");
        std::abort();
    }
    if (padded_ok != read_ok || padded_written != written) {
        std::fprintf(stderr, "with blanks behind: %s, %s\nwithout: %s, %s\n",
                     padded_ok ? "accepted" : "rejected", padded_written.c_str(),
                     read_ok ? "accepted" : "rejected", written.c_str());
        std::abort();
    }
    return 0;
}
