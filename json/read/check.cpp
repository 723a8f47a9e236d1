// JSON check grammar: the language of the tree grammar without building
// anything.  It keeps the tree grammar's stack accounting, open states
// included, so that a text it calls well-formed is one json_flex reads,
// at any nesting depth (see parse_driver.h).
#include "check_fast.h"
#include "parse_driver.h"

using namespace vxjson;

namespace {

struct check_grammar {
    static constexpr scan::scan_mode MODE = scan::scan_mode::check;
    static constexpr uint32_t OPEN_ENTRIES = 1;

    static int32_t open(jlpca_ctx *, uint32_t, uintptr_t &) { return 0; }
    static int32_t open_empty(jlpca_ctx *, uint32_t) { return 0; }
    static void close(jlpca_ctx *, uint32_t, uintptr_t) {}
    static int32_t scalar(jlpca_ctx *, int32_t) { return 0; }
    // A dialect decides alone here; scalar_top is not consulted.
    static int32_t top_scalar(jlpca_ctx *ctx) { return ctx->compat == 0 ? VXJSON_ERR_SYNTAX : 0; }
    static void attach(jlpca_ctx *) {}
    static int32_t key(jlpca_ctx *, const char *, uint32_t, uintptr_t &) { return 0; }
    static void member(jlpca_ctx *, uintptr_t) {}
    static int32_t error(jlpca_ctx *ctx, const char *msg) { return jcheck_error(ctx, msg); }
    static int32_t error_ex(jlpca_ctx *ctx, int32_t code) { return jcheck_error_ex(ctx, code); }
};

} // namespace

extern "C" {

VXJSON_API int32_t jcheck_parse(void *scanner, jlpca_ctx *ctx) {
    check_grammar g;
    return parse::run(*static_cast<scan::scan_state *>(scanner), ctx, g);
}

VXJSON_API int32_t jcheck_error(jlpca_ctx *, const char *) { return -1; }

VXJSON_API int32_t jcheck_error_ex(jlpca_ctx *, int32_t code) { return code; }

VXJSON_API int32_t jcheck_flex(jlpca_ctx *ctx) {
    if (ctx->text_len == 0) return empty_text(ctx, ctx->compat != 0 || ctx->blank);
    scan::scan_state s;
    scan::scanner_start(s, ctx);
    // Duplicate names only show while members are added: build the tree
    // (it stays unconverted in the heap and is not handed out).
    check_grammar g;
    int32_t r;
    if (ctx->unique_keys) {
        r = parse_tree(s, ctx);
    } else if (scan::check_fast(ctx)) {
        ctx->tok = 0; // as after the grammar's last token, the end
        r = 0;
    } else {
        r = parse::run(s, ctx, g);
    }
    scan::json_lex_destroy(&s);
    ctx->scan_handle = nullptr;
    return r != 0 || ctx->err_code < 0 ? VXJSON_ERR_INVALID_JSON : VXJSON_OK;
}

} // extern "C"
