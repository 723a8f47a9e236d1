// JSON grammar and tree building: json_parse runs the JSON grammar over the
// scanner's tokens and builds the tree through the value-tree operations;
// json_flex is the entry the server calls.
//
// Nodes are created in the order the grammar reduces: an object or array
// right after its opening bracket (or at the closing one when empty), a
// scalar as soon as its token is read.  cur_node is the innermost open
// container, or the value just made until it is attached; array elements
// are collected in the array's element list and become pointer arrays in
// one pass at the end, in creation order (json_adjust_array).
//
// Nodes and members come from chunks of the heap (chunk_pool.h), made and
// linked by the tree's own primitives (tree_internal.h); the final pass
// reads the element log (element_log.h) instead of the tree.
#include <cstring>

#include "chunk_pool.h"
#include "element_log.h"
#include "links.h"
#include "member_index.h"
#include "parse_driver.h"
#include "report.h"
#include "report_sites.h"
#include "tree_internal.h"

using namespace vxjson;
using namespace vxjson::site;

namespace {

// memcpy for the short texts most values have, without a call: two
// overlapping loads and stores that stay inside both ranges.
inline void copy_text(char *dst, const char *src, size_t len) {
    auto two = [&](auto word) {
        decltype(word) a, b;
        std::memcpy(&a, src, sizeof a);
        std::memcpy(&b, src + len - sizeof b, sizeof b);
        std::memcpy(dst, &a, sizeof a);
        std::memcpy(dst + len - sizeof b, &b, sizeof b);
    };
    struct two_words {
        uint64_t lo, hi;
    };
    if (len >= 32) std::memcpy(dst, src, len);
    else if (len >= 16) two(two_words{});
    else if (len >= 8) two(uint64_t{});
    else if (len >= 4) two(uint32_t{});
    else
        for (size_t i = 0; i < len; i++) dst[i] = src[i];
}

// json_create with the node's text in the same allocation.
[[gnu::always_inline]] inline json_node *new_node(jlpca_ctx *ctx, chunk_pool &pool, uint32_t type,
                                                  size_t text_len) {
    json_node *node = make_node(pool, type, text_len ? text_len + 1 : 0);
    if (!node) [[unlikely]]
        return nullptr;
    link_created(ctx, node);
    return node;
}

// A string or decimal node holding the current literal, as
// json_string_set_value stores it (no text at all when it is empty).
[[gnu::always_inline]] inline int32_t new_text_node(jlpca_ctx *ctx, chunk_pool &pool,
                                                    uint32_t type) {
    const size_t len = size_t(ctx->tok_val);
    json_node *node = new_node(ctx, pool, type, len);
    if (!node) [[unlikely]]
        return VXJSON_ERR_NOMEM;
    if (len) {
        node->str = reinterpret_cast<char *>(node + 1);
        copy_text(node->str, ctx->tok_str, len);
        node->str[len] = '\0';
        node->str_len = uint32_t(len);
        node->str_flags = uint32_t(ctx->lit_escaped);
    }
    return 0;
}

class tree_grammar {
public:
    tree_grammar(jlpca_ctx *ctx, const scan::scan_state &s) : pool_(ctx, s), log_(ctx) {}

    static constexpr scan::scan_mode MODE = scan::scan_mode::tree;
    static constexpr uint32_t OPEN_ENTRIES = 1;

    int32_t open(jlpca_ctx *ctx, uint32_t type, uintptr_t &slot) {
        json_node *node = new_node(ctx, pool_, type, 0);
        if (!node) [[unlikely]]
            return VXJSON_ERR_NOMEM;
        if (type == JSON_ARRAY) slot = log_.open(node);
        return 0;
    }

    int32_t open_empty(jlpca_ctx *ctx, uint32_t type) {
        return new_node(ctx, pool_, type, 0) ? 0 : VXJSON_ERR_NOMEM;
    }

    void close(jlpca_ctx *ctx, uint32_t kind, uintptr_t slot) {
        if (kind == parse::ARRAY) log_.close(slot, ctx->cur_node->lst_count);
    }

    int32_t scalar(jlpca_ctx *ctx, int32_t token) {
        // The document must be an object or an array unless a dialect or
        // the caller allows a scalar.
        if (!ctx->cur_node && !ctx->compat && !ctx->scalar_top) [[unlikely]]
            return VXJSON_ERR_INVALID_JSON;
        if (token == JT_DECIMAL || token == JT_DQSTRING || token == JT_SQSTRING)
            return new_text_node(ctx, pool_, token == JT_DECIMAL ? JSON_DECIMAL : JSON_STRING);
        json_node *node;
        if (token == JT_INT || token == JT_BIGINT) {
            if (!(node = new_node(ctx, pool_, JSON_INTEGER, 0))) return VXJSON_ERR_NOMEM;
            node->ival = ctx->tok_val;
            return 0;
        }
        if (!(node = new_node(ctx, pool_, token == JT_NULL ? JSON_NULL : JSON_BOOLEAN, 0)))
            return VXJSON_ERR_NOMEM;
        node->bval = token == JT_TRUE; // JT_TRUE, JT_FALSE, JT_NULL
        return 0;
    }

    int32_t top_scalar(jlpca_ctx *ctx) {
        return ctx->compat == 0 && ctx->scalar_top == 0 ? VXJSON_ERR_SYNTAX : 0;
    }

    void attach(jlpca_ctx *ctx) {
        json_node *node = ctx->cur_node;
        json_node *array = node->parent;
        list_append(array, node);
        ctx->cur_node = array; // jlpa_set_top_json
        log_.push(node);
    }

    int32_t key(jlpca_ctx *ctx, const char *name, uint32_t len, uintptr_t &member) {
        if (!member_policy_applies(ctx)) {
            // Appended, from the read's own chunks.
            void *block = pool_.take(sizeof(json_keyval) + len);
            if (!block) [[unlikely]]
                return report_json(VXJSON_ERR_NOMEM, TREE_ADD_KEYVAL);
            json_keyval *kv = init_member(block, name, len, uint32_t(ctx->lit_escaped));
            member_append(ctx->cur_node, kv);
            member = reinterpret_cast<uintptr_t>(kv);
            return 0;
        }
        json_keyval *kv = nullptr;
        int32_t rc = members_.add(ctx, ctx->cur_node, name, len, &kv);
        member = reinterpret_cast<uintptr_t>(kv);
        return rc;
    }

    void member(jlpca_ctx *ctx, uintptr_t member) {
        reinterpret_cast<json_keyval *>(member)->value = ctx->cur_node;
        ctx->cur_node = ctx->cur_node->parent; // jlpa_set_top_json
    }

    int32_t error(jlpca_ctx *ctx, const char *msg) { return json_error(ctx, msg); }
    int32_t error_ex(jlpca_ctx *ctx, int32_t code) { return json_error_ex(ctx, code); }

    // json_adjust_array from the log: the same conversions, in the same
    // order, with the same result.
    int32_t adjust(jlpca_ctx *ctx) {
        if (!log_.ok()) return json_adjust_array(ctx);
        return log_.each([ctx](json_node *array, json_node **items, uint32_t count) {
            auto fill = [&](json_node **block) { copy_words(block, items, count); };
            if (make_items(ctx, array, count, fill))
                return report_json(VXJSON_ERR_NOMEM, READ_ADJUST_ARRAY);
            return 0;
        });
    }

private:
    chunk_pool pool_;
    element_log log_;
    member_index members_;
};

} // namespace

namespace vxjson {

int32_t parse_tree(scan::scan_state &s, jlpca_ctx *ctx) {
    tree_grammar g(ctx, s);
    return parse::run(s, ctx, g);
}

} // namespace vxjson

extern "C" {

VXJSON_API int32_t json_parse(void *scanner, jlpca_ctx *ctx) {
    return parse_tree(*static_cast<scan::scan_state *>(scanner), ctx);
}

VXJSON_API int32_t json_error(jlpca_ctx *, const char *) { return -1; }

VXJSON_API int32_t json_error_ex(jlpca_ctx *, int32_t code) { return code; }

VXJSON_API int32_t json_adjust_array(jlpca_ctx *ctx) {
    for (json_node *node = ctx->first_node; node; node = node->chain_next) {
        if (node->type != JSON_ARRAY || node->lst_count == 0) continue;
        int32_t rc = json_lst_to_arr(ctx, node, node->lst_count, node->lst_first, node->lst_last);
        if (rc < 0) return report_json(rc, READ_ADJUST_ARRAY);
    }
    return 0;
}

VXJSON_API int32_t json_flex(jlpca_ctx *ctx, json_node **root) {
    *root = nullptr;
    if (ctx->text_len == 0) return empty_text(ctx, ctx->compat != 0 || ctx->blank);
    scan::scan_state s;
    scan::scanner_start(s, ctx);
    tree_grammar g(ctx, s);
    int32_t r = parse::run(s, ctx, g);
    scan::json_lex_destroy(&s);
    ctx->scan_handle = nullptr;
    if (r == 0 && ctx->err_code >= 0) {
        (void)g.adjust(ctx); // a failed conversion is reported, not fatal here
        *root = ctx->first_node;
        return VXJSON_OK;
    }
    return ctx->err_code == VXJSON_ERR_DOUBLE_OVERFLOW ? VXJSON_ERR_DOUBLE_OVERFLOW
                                                       : VXJSON_ERR_INVALID_JSON;
}

} // extern "C"
