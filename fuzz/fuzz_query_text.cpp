// json_query_text against the tree on random paths over random texts.
// Input: two mode bytes (fuzz_setup.h), the path text up to the first line
// feed, then the document.  The path is compiled in the standard dialect;
// the reading switches, dialect and character set are the modes'.
//
// Whatever the input: only 0, the tree's answer or -503; never an answer
// outside the standard dialect's plain readers; and an answer must be a
// scalar that the tree reads the text into and finds, written the same.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_setup.h"
#include "vx_charset.h"

namespace {

[[noreturn]] void fail(const char *what, int32_t code) {
    std::fprintf(stderr, "%s (code %d)\n", what, code);
    std::abort();
}

bool is_scalar(const json_node *n) { return n->type != JSON_OBJECT && n->type != JSON_ARRAY; }

bool plain_reader(const jlpca_ctx *ctx) {
    return ctx->compat == 0 && !ctx->unique_keys && !ctx->dup_key_replace && !ctx->sorted_keys &&
           ctx->mb_charset != VX_CHARSET_GB18030 && ctx->mb_charset != VX_CHARSET_EUCKR;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const FuzzModes modes = take_modes(data, size);
    std::string path_text, doc;
    if (!take_path_and_document(data, size, path_text, doc)) return 0;

    FuzzEnv env(modes);
    jlpca_ctx *ctx = env.ctx.get();
    jpath path{};
    (void)jpath_init_simple(&path, JPATH_DIALECT_STANDARD);
    ctx->compat = 0;
    if (jlpca_reinit(ctx, path_text.data(), uint32_t(path_text.size())) != 0) return 0;
    const int32_t compiled = jpath_flex(ctx, &path);
    ctx->compat = modes.compat;
    if (compiled != 0) return 0;

    json_node *found = nullptr;
    const int32_t rc = json_query_text(ctx, doc.data(), uint32_t(doc.size()), &path, &found);
    if (rc == JSON_QUERY_TEXT_USE_TREE || rc == VXJSON_ERR_NOMEM) {
        if (found) fail("a value beside no answer", rc);
        return 0;
    }
    if (rc != 0) fail("json_query_text gave an unexpected code", rc);
    if (!found || !is_scalar(found)) fail("an answer that is no scalar", rc);
    if (!plain_reader(ctx)) fail("an answer under a reader that keeps members otherwise", rc);
    std::string walked;
    if (!write_tree(env, found, JSON_FMT_COMPACT, walked)) fail("the answer does not write", 0);

    json_node *root = nullptr, *match = nullptr;
    if (jlpca_reinit(ctx, doc.data(), uint32_t(doc.size())) != 0) return 0;
    const int32_t read = json_flex(ctx, &root);
    if (read != 0 || !root) fail("an answer for a text the tree refuses", read);
    const int32_t q = json_query(ctx, root, &path, &match);
    if (q != 0 || !match) fail("an answer where the tree finds nothing", q);
    if (match->type != found->type) fail("an answer of another type than the tree's", 0);
    std::string tree;
    if (!write_tree(env, match, JSON_FMT_COMPACT, tree)) fail("the tree's match does not write", 0);
    if (tree != walked) fail("an answer that differs from the tree's", 0);
    return 0;
}
