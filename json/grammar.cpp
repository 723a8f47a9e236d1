// JSON grammar and tree building: json_parse runs the JSON grammar over the
// scanner's tokens and builds the tree through the value-tree operations;
// json_flex is the entry the server calls.
//
// Nodes are created in the order the grammar reduces: an object or array
// right after its opening bracket (or at the closing one when empty), a
// scalar as soon as its token is read.  cur_node is the innermost open
// container, or the value just made until it is attached; array elements
// are collected in the array's element list and become pointer arrays in
// one pass at the end (json_adjust_array).
#include <cstring>

#include "parse_driver.h"
#include "report.h"
#include "vx_heap.h"

using namespace vxjson;

namespace {

// Report site of json_adjust_array in "json/json".
constexpr int32_t LINE_ADJUST_ARRAY = 86;
// Heap call site of the reader's nodes in "json/json".
constexpr int32_t LINE_READ_NODE = 120;

// json_create with the node's text in the same heap bump: a read tree
// costs one allocation per value.  The node is linked exactly as
// json_create links it (parent, creation chain, cur_node, first_node).
json_node *new_node(jlpca_ctx *ctx, uint32_t type, size_t text_len) {
    const size_t size = sizeof(json_node) + (text_len ? text_len + 1 : 0);
    auto *node = static_cast<json_node *>(
        mem_heap_alloc_low(ctx->env, ctx->heap, size, 0, SRC_JSON, LINE_READ_NODE));
    if (!node) [[unlikely]] return nullptr;
    std::memset(static_cast<void *>(node), 0, sizeof *node);
    node->type = type;
    node->parent = ctx->cur_node;
    if (ctx->last_node) ctx->last_node->chain_next = node;
    else ctx->first_node = node;
    ctx->last_node = node;
    ctx->cur_node = node;
    return node;
}

// A string or decimal node holding the current literal, as
// json_string_set_value stores it (no text at all when it is empty).
int32_t new_text_node(jlpca_ctx *ctx, uint32_t type) {
    const size_t len = size_t(ctx->tok_val);
    json_node *node = new_node(ctx, type, len);
    if (!node) [[unlikely]] return VXJSON_ERR_NOMEM;
    if (len) {
        node->str = reinterpret_cast<char *>(node + 1);
        std::memcpy(node->str, ctx->tok_str, len);
        node->str[len] = '\0';
        node->str_len = uint32_t(len);
        node->str_flags = uint32_t(ctx->lit_escaped);
    }
    return 0;
}

struct TreeGrammar {
    static constexpr scan::Mode kMode = scan::Mode::tree;
    static constexpr uint32_t kOpen = 1;

    static int32_t open(jlpca_ctx *ctx, uint32_t type) {
        return new_node(ctx, type, 0) ? 0 : VXJSON_ERR_NOMEM;
    }

    static int32_t scalar(jlpca_ctx *ctx, int32_t token) {
        // The document must be an object or an array unless a dialect or
        // the caller allows a scalar.
        if (!ctx->cur_node && !ctx->compat && !ctx->scalar_top) [[unlikely]]
            return VXJSON_ERR_INVALID_JSON;
        json_node *node;
        switch (token) {
        case JT_INT:
        case JT_BIGINT:
            if (!(node = new_node(ctx, JSON_INTEGER, 0))) return VXJSON_ERR_NOMEM;
            node->ival = ctx->tok_val;
            return 0;
        case JT_DECIMAL: return new_text_node(ctx, JSON_DECIMAL);
        case JT_TRUE:
            if (!(node = new_node(ctx, JSON_BOOLEAN, 0))) return VXJSON_ERR_NOMEM;
            node->bval = 1;
            return 0;
        case JT_FALSE: return new_node(ctx, JSON_BOOLEAN, 0) ? 0 : VXJSON_ERR_NOMEM;
        case JT_NULL: return new_node(ctx, JSON_NULL, 0) ? 0 : VXJSON_ERR_NOMEM;
        default: return new_text_node(ctx, JSON_STRING); // JT_DQSTRING, JT_SQSTRING
        }
    }

    static int32_t top_scalar(jlpca_ctx *ctx) {
        return ctx->compat == 0 && ctx->scalar_top == 0 ? VXJSON_ERR_SYNTAX : 0;
    }

    static void attach(jlpca_ctx *ctx) {
        json_node *node = ctx->cur_node;
        json_node *array = node->parent;
        array->lst_count++;
        node->prev_sibling = array->lst_last;
        node->next_sibling = nullptr;
        if (array->lst_last) array->lst_last->next_sibling = node;
        else array->lst_first = node;
        array->lst_last = node;
        jlpa_set_top_json(ctx, array);
    }

    static int32_t key(jlpca_ctx *ctx, const char *name, uint32_t len, uintptr_t &member) {
        json_keyval *kv = nullptr;
        int32_t rc = json_object_add_keyval(ctx, ctx->cur_node, name, len, &kv);
        member = reinterpret_cast<uintptr_t>(kv);
        return rc;
    }

    static void member(jlpca_ctx *ctx, uintptr_t member) {
        reinterpret_cast<json_keyval *>(member)->value = ctx->cur_node;
        jlpa_set_top_json(ctx, ctx->cur_node->parent);
    }

    static int32_t error(jlpca_ctx *ctx, const char *msg) { return json_error(ctx, msg); }
    static int32_t error_ex(jlpca_ctx *ctx, int32_t code) { return json_error_ex(ctx, code); }
};

} // namespace

namespace vxjson {

int32_t parse_tree(scan::Scanner &s, jlpca_ctx *ctx) { return parse::run<TreeGrammar>(s, ctx); }

} // namespace vxjson

extern "C" {

VXJSON_API int32_t json_parse(void *scanner, jlpca_ctx *ctx) {
    return parse_tree(*static_cast<scan::Scanner *>(scanner), ctx);
}

VXJSON_API int32_t json_error(jlpca_ctx *, const char *) { return -1; }

VXJSON_API int32_t json_error_ex(jlpca_ctx *, int32_t code) { return code; }

VXJSON_API int32_t json_adjust_array(jlpca_ctx *ctx) {
    for (json_node *node = ctx->first_node; node; node = node->chain_next) {
        if (node->type != JSON_ARRAY || node->lst_count == 0) continue;
        int32_t rc = json_lst_to_arr(ctx, node, node->lst_count, node->lst_first, node->lst_last);
        if (rc < 0) return report_json(rc, LINE_ADJUST_ARRAY);
    }
    return 0;
}

VXJSON_API int32_t json_flex(jlpca_ctx *ctx, json_node **root) {
    *root = nullptr;
    if (ctx->text_len == 0)
        return ctx->compat != 0 || ctx->blank ? VXJSON_ERR_INVALID_JSON : VXJSON_OK;
    scan::Scanner s;
    scan::scanner_start(s, ctx);
    int32_t r = parse_tree(s, ctx);
    scan::json_lex_destroy(&s);
    ctx->scan_handle = nullptr;
    if (r == 0 && ctx->err_code >= 0) {
        (void)json_adjust_array(ctx); // a failed conversion is reported, not fatal here
        *root = ctx->first_node;
        return VXJSON_OK;
    }
    return ctx->err_code == VXJSON_ERR_DOUBLE_OVERFLOW ? VXJSON_ERR_DOUBLE_OVERFLOW
                                                       : VXJSON_ERR_INVALID_JSON;
}

} // extern "C"
