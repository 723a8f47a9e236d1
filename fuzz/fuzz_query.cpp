// Path evaluation on random paths over random documents, in all three
// dialects.  Input: two mode bytes (fuzz_setup.h), one byte choosing which
// document arrays to mark virtual (as the set functions leave them), then
// the path text up to the first line feed, then the document.  Bit 3 of
// that byte evaluates under the other function kind than the path was
// compiled for, so that stored names are compared after decoding.
//
// Whatever the input: only the codes the evaluators may give; a result is
// a node of the document or a virtual array of two or more of them; and a
// second evaluation writes the same text as the first.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_setup.h"

namespace {

[[noreturn]] void fail(const char *what, int32_t code) {
    std::fprintf(stderr, "%s (code %d)\n", what, code);
    std::abort();
}

bool in_document(const json_node *n, const json_node *root) {
    for (; n; n = n->parent)
        if (n == root) return true;
    return false;
}

void check_result(const json_node *out, const json_node *root) {
    if (!out) return;
    if (out->type == JSON_ARRAY && out->is_virtual && !in_document(out, root)) {
        if (out->count < 2) fail("a virtual array of fewer than two matches", 0);
        for (uint32_t i = 0; i < out->count; i++)
            if (!in_document(out->items[i], root)) fail("a match that is not the document's", 0);
        return;
    }
    if (!in_document(out, root)) fail("a result that is not the document's", 0);
}

// Evaluates in one dialect: compat 0 and 1 through json_query, 2 through
// jpath_filter_mysql with several matches allowed or not.  The written
// result, or "" for none.
std::string evaluate(FuzzEnv &env, json_node *root, const jpath *path, int32_t compat, int multi) {
    jlpca_ctx *ctx = env.ctx.get();
    ctx->compat = compat;
    ctx->path_last_key = compat ? 1 : 0;
    json_node *out = nullptr;
    int32_t rc;
    if (compat == JLPCA_COMPAT_MYSQL) {
        rc = jpath_filter_mysql(root, path, ctx, multi, &out);
        if (rc != 0 && rc != VXJSON_ERR_MULTI_STEP && rc != VXJSON_ERR_PATH)
            fail("jpath_filter_mysql gave an unexpected code", rc);
        if (rc == VXJSON_ERR_MULTI_STEP && multi) fail("-3113 with several matches allowed", rc);
    } else {
        rc = json_query(ctx, root, path, &out);
        if (rc != 0 && rc != VXJSON_ERR_PATH_NO_MATCH && rc != VXJSON_ERR_PATH)
            fail("json_query gave an unexpected code", rc);
        if (rc == 0 && !out) fail("json_query succeeded without a result", rc);
    }
    if (rc != 0) {
        if (out) fail("a result beside a failure", rc);
        return "!" + std::to_string(rc);
    }
    check_result(out, root);
    std::string text;
    if (out && !write_tree(env, out, JSON_FMT_COMPACT, text)) fail("the result does not write", 0);
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzModes modes = take_modes(data, size);
    modes.scalar_top = 1;
    modes.unique_keys = 0;
    const uint8_t virtual_every = size ? data[0] & 7 : 0; // 0: none
    const bool other_kind = size && (data[0] & 8);        // names compared across kinds
    if (size) data++, size--;
    std::string path_text, doc;
    if (!take_path_and_document(data, size, path_text, doc)) return 0;

    FuzzEnv env(modes);
    json_node *root = nullptr;
    if (jlpca_reinit(env.ctx.get(), doc.data(), uint32_t(doc.size())) != 0) return 0;
    if (json_flex(env.ctx.get(), &root) != 0 || !root) return 0;
    if (virtual_every) {
        uint32_t n = 0;
        for (json_node *node = env.ctx->first_node; node; node = node->chain_next)
            if (node->type == JSON_ARRAY && node != root && ++n % virtual_every == 0)
                node->is_virtual = 1;
    }
    for (int32_t compat : {0, 1, 2}) {
        jpath path{};
        (void)jpath_init_simple(&path, compat == 2 ? 2 : 0);
        env.ctx->escape_mode = modes.escape_mode;
        env.ctx->compat = compat; // subscript lists are refused in the MySQL dialect
        if (jlpca_reinit(env.ctx.get(), path_text.data(), uint32_t(path_text.size())) != 0)
            return 0;
        if (jpath_flex(env.ctx.get(), &path) != 0) continue;
        env.ctx->escape_mode = other_kind ? 1 - modes.escape_mode : modes.escape_mode;
        for (int multi : {1, 0}) {
            if (compat != 2 && !multi) continue;
            const std::string first = evaluate(env, root, &path, compat, multi);
            if (evaluate(env, root, &path, compat, multi) != first)
                fail("a second evaluation differs", 0);
            if (compat == 2 && multi) {
                int32_t found = -1;
                const int32_t rc = jpath_json_contains_path(root, &path, env.ctx.get(), &found);
                if (rc == 0 && found != (first.empty() ? 0 : 1))
                    fail("contains-path disagrees", rc);
            }
        }
    }
    return 0;
}
