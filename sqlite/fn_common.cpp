// vxjson_check(doc [, dialect]) and vxjson_format(doc [, 'pretty' | 'compact']).
#include <strings.h>

#include "errors.h"
#include "registry.h"
#include "row.h"
#include "values.h"

namespace vxsql {

namespace {

// 1 when doc is well-formed JSON in the dialect (standard by default), 0
// when it is not, NULL for NULL.
void vxjson_check(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    if (any_null(argc, argv)) return;
    dialect d = dialect::standard;
    if (argc > 1 && !dialect_arg(argv[1], &d))
        return result_usage(sc, "vxjson_check", "the dialect is 'standard', 'pg' or 'mysql'");
    jlpca_ctx *ctx = row_begin(connection_of(sc), d);
    int32_t rc = 0;
    const std::string_view text = arg_text(argv[0], &rc);
    if (rc == 0) rc = jlpca_reinit(ctx, text.data(), static_cast<uint32_t>(text.size()));
    if (rc == 0) rc = jcheck_flex(ctx);
    if (rc == VXJSON_ERR_NOMEM) return result_code(sc, rc);
    sqlite3_result_int(sc, rc == 0 && !text.empty());
}

// The document written again: compact (the default), or pretty with two
// blanks per level.  Lax text is accepted, so this also makes lax
// documents strict.
void vxjson_format(sqlite3_context *sc, int argc, sqlite3_value **argv) {
    if (any_null(argc, argv)) return;
    uint32_t flags = JSON_FMT_COMPACT;
    if (argc > 1) {
        const auto *mode = reinterpret_cast<const char *>(sqlite3_value_text(argv[1]));
        if (mode && strcasecmp(mode, "pretty") == 0) flags = JSON_FMT_PRETTY_B;
        else if (!mode || strcasecmp(mode, "compact") != 0)
            return result_usage(sc, "vxjson_format", "the layout is 'pretty' or 'compact'");
    }
    jlpca_ctx *ctx = row_begin(connection_of(sc), dialect::standard);
    ctx->scalar_top = 1;
    json_node *root;
    if (!read_arg_or_fail(sc, ctx, argv, 0, &root)) return;
    result_tree(sc, ctx, root, flags, JSON_CONV_JSON);
}

constexpr function_def FUNCTIONS[] = {
    {"vxjson_check", 1, 2, vxjson_check},
    {"vxjson_format", 1, 2, vxjson_format},
};

} // namespace

std::span<const function_def> common_functions() { return FUNCTIONS; }

} // namespace vxsql
