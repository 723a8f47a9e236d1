// Compiled paths from path text for the evaluation tests, on the context's
// heap and in its dialect (the MySQL-compatible one refuses subscript
// lists).
#ifndef VXJSON_TEST_PATH_TEXT_H
#define VXJSON_TEST_PATH_TEXT_H

#include <string>

#include "vxjson.h"

// 0, or -3102 when the text does not compile.
inline int32_t compile_path(jlpca_ctx *ctx, const std::string &text, jpath *p) {
    (void)jpath_init_simple(p, ctx->compat == JLPCA_COMPAT_MYSQL ? JPATH_DIALECT_MYSQL_ARRAY
                                                                 : JPATH_DIALECT_STANDARD);
    if (int32_t rc = jlpca_reinit(ctx, text.data(), uint32_t(text.size()))) return rc;
    return jpath_flex(ctx, p);
}

#endif
