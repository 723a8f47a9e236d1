// Documents read by the reader into a TreeEnv, and their text, for the
// comparison, containment and merge suites.
#ifndef VXJSON_TEST_TREE_OPS_ENV_H
#define VXJSON_TEST_TREE_OPS_ENV_H

#include <gtest/gtest.h>

#include <string>

#include "tree_fixture.h"
#include "vx_alloc.h"
#include "vxjson.h"
#include "vxstr.h"

struct TreeOpsEnv : TreeEnv {
    // The PostgreSQL dialect reads scalars as whole documents.
    explicit TreeOpsEnv(int32_t compat = JLPCA_COMPAT_PG) : TreeEnv(compat) {}

    // Read text into a tree; `sorted` keeps members in sorted-key order.
    json_node *read(const std::string &text, bool sorted = false) {
        ctx->sorted_keys = sorted ? 1 : 0;
        json_node *root = nullptr;
        EXPECT_EQ(jlpca_reinit(ctx.get(), text.data(), uint32_t(text.size())), 0);
        EXPECT_EQ(json_flex(ctx.get(), &root), 0) << text;
        EXPECT_NE(root, nullptr) << text;
        return root;
    }

    // Compact JSON text of a tree.
    std::string text_of(const json_node *node) {
        vxstr *s = vxstr_create(nullptr, &alloc, VXSTR_INITIAL_SIZE);
        EXPECT_GE(json_to_string(ctx.get(), &alloc, s, node, JSON_FMT_COMPACT, 0, 0, JSON_CONV_JSON), 0);
        std::string out(s->buf, s->len);
        vxstr_free(nullptr, &alloc, s);
        return out;
    }

    // Take over a result text handed out through the context's allocator.
    std::string take(char *text, uint32_t len) {
        std::string out(text, len);
        vx_free(nullptr, &alloc, text);
        return out;
    }
};

#endif
