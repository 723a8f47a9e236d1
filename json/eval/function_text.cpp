// JSON_VALUE and JSON_QUERY returning text.  After the shared evaluation
// step, the function kind (the context's escape_mode) picks the shape rule
// and the form of the text:
//
//   JSON_VALUE, standard       the scalar as its plain text:  "a\"b" -> a"b
//   JSON_VALUE, compatibility  the whole result, compact, strings unquoted
//   JSON_QUERY                 JSON text; a wrapped result inside [ ]
//
// Every shape or length failure goes through the ON ERROR clause; a failure
// to write (out of memory) is reported and returned as it is.
#include "heap_text.h"
#include "report.h"
#include "report_sites.h"
#include "vxjson.h"

using namespace vxjson;

namespace {

constexpr int32_t KIND_TEXT = 2; // json_query_with_mode's result kind
constexpr int32_t FUN_VALUE = 0; // escape_mode as the function kind
constexpr int32_t FUN_QUERY = 1;
constexpr uint32_t WRAP_NONE = JPATH_WRAPPER_WITHOUT;  // written as it stands
constexpr uint32_t WRAP_BRACKETS = JPATH_WRAPPER_WITH; // written inside "[" and "]"

bool is_virtual(const json_node *n) { return n->type == JSON_ARRAY && n->is_virtual; }

// The text of a JSON_QUERY result: inside brackets, a gathered set of
// matches as an array, or one value as it stands.  Pretty printing starts a
// lone value on its own indented line and ends it with a line feed.
int32_t write_query(jlpca_ctx *ctx, heap_text &t, const json_node *node, uint32_t format,
                    uint32_t wrap) {
    const bool pretty = (format & JSON_FMT_PRETTY_A) != 0;
    if (wrap == WRAP_BRACKETS) {
        (void)vxstr_append_with_length(ctx->env, &t.alloc, &t.s, "[", 1);
        const int32_t rc = json_to_string(ctx, &t.alloc, &t.s, node, format, 1, 1, JSON_CONV_JSON);
        if (rc < 0) return rc;
        return vxstr_append(ctx->env, &t.alloc, &t.s, pretty ? "\n]" : "]");
    }
    if (is_virtual(node))
        return json_to_string(ctx, &t.alloc, &t.s, node, format, 0, 0, JSON_CONV_JSON);
    const int32_t rc = json_to_string(ctx, &t.alloc, &t.s, node, format, 1, 1, JSON_CONV_JSON);
    if (rc < 0 || !pretty) return rc;
    return vxstr_append_with_length(ctx->env, &t.alloc, &t.s, "\n", 1);
}

// The result's text by function kind and dialect.
int32_t write_result(jlpca_ctx *ctx, heap_text &t, const json_node *node, const jpath *path,
                     uint32_t wrap) {
    if (ctx->escape_mode == FUN_QUERY) return write_query(ctx, t, node, path->format, wrap);
    if (ctx->compat != JLPCA_COMPAT_STANDARD)
        return json_to_string(ctx, &t.alloc, &t.s, node, JSON_FMT_COMPACT, 1, 1, JSON_CONV_PLAIN);
    return json_scalar_to_string(ctx->env, &t.alloc, &t.s, node, path->format);
}

// The shape rule of the function kind: 0 or the code for ON ERROR.
int32_t check_shape(jlpca_ctx *ctx, const jpath *path, const json_node *node, uint32_t *wrap) {
    if (ctx->escape_mode == FUN_QUERY) return json_fun_query_check(path, node, wrap);
    if (ctx->escape_mode != FUN_VALUE) return 0; // other kinds are only written
    if (ctx->compat == JLPCA_COMPAT_STANDARD) return json_fun_value_check(node);
    return is_virtual(node) ? VXJSON_ERR_VALUE_MANY : 0;
}

} // namespace

extern "C" {

VXJSON_API int32_t json_fun_varchar(jlpca_ctx *ctx, json_node *document, const jpath *path,
                                    char **out, uint32_t *out_len, int32_t status) {
    *out = nullptr;
    *out_len = 0;
    if (status < 0) return jpath_varchar_ret_code(ctx, path, out, out_len, status);
    if (!document) return 0;
    int32_t handled;
    json_node *node;
    int32_t rc = json_query_with_mode(ctx, document, path, KIND_TEXT, out, out_len, nullptr,
                                      &handled, &node);
    if (handled) return rc;

    uint32_t wrap = path->wrapper;
    if ((rc = check_shape(ctx, path, node, &wrap)) < 0)
        return jpath_varchar_ret_code(ctx, path, out, out_len, rc);
    // A JSON null written as it stands is SQL NULL, in every kind and dialect.
    if (node->type == JSON_NULL && wrap == WRAP_NONE) return 0;

    heap_text t;
    if ((rc = heap_text_begin(ctx, &t, SRC_JPATH, site::FUN_TEXT_HEAP)) < 0)
        return report(rc, SRC_JPATH, site::FUN_TEXT_HEAP);
    if ((rc = heap_text_status(t, write_result(ctx, t, node, path, wrap))) < 0)
        return report(rc, SRC_JPATH, site::FUN_TEXT_WRITE);
    if (t.s.len > path->ret_len)
        return jpath_varchar_ret_code(ctx, path, out, out_len, VXJSON_ERR_RETURN_TYPE);
    // The standard dialect has no empty text: '' is SQL NULL there.
    if (t.s.len == 0 && ctx->compat == JLPCA_COMPAT_STANDARD) return 0;
    *out = t.s.buf;
    *out_len = t.s.len;
    return 0;
}

} // extern "C"
