// The text functions of the compatibility dialects: MySQL's extraction
// functions and PostgreSQL's path operators.  They have no ON EMPTY or ON
// ERROR clause: a path that does not evaluate is no value (status 100),
// and the serialise option (the string conversion, JSON_CONV_*) chooses
// between JSON text and plain text.
#include "heap_text.h"
#include "report.h"
#include "report_sites.h"
#include "vxjson.h"

using namespace vxjson;

namespace {

constexpr uint32_t LOW_BYTE = 0xFF;

// A path that does not evaluate is no value; running out of memory on the
// way is still an error.
int32_t evaluate(jlpca_ctx *ctx, json_node *document, const jpath *path, json_node **node) {
    *node = nullptr;
    const int32_t rc = json_query(ctx, document, path, node);
    if (rc == VXJSON_ERR_NOMEM) return rc;
    return rc < 0 || !*node ? VXJSON_NO_VALUE : 0;
}

bool is_scalar(const json_node *n) { return n->type != JSON_OBJECT && n->type != JSON_ARRAY; }

// The text of node with the given format and conversion, on the heap.
int32_t write_text(jlpca_ctx *ctx, const json_node *node, uint32_t format, uint8_t conv,
                   int32_t heap_line, int32_t write_line, char **out, uint32_t *out_len) {
    heap_text t;
    if (int32_t rc = heap_text_begin(ctx, &t, SRC_JPATH, heap_line); rc < 0)
        return report(rc, SRC_JPATH, heap_line);
    const int32_t rc = json_to_string(ctx, &t.alloc, &t.s, node, format, 1, 1, conv);
    if (int32_t st = heap_text_status(t, rc); st < 0) return report(st, SRC_JPATH, write_line);
    *out = t.s.buf;
    *out_len = t.s.len;
    return 0;
}

} // namespace

extern "C" {

VXJSON_API int32_t json_fun_varchar_mysql(jlpca_ctx *ctx, json_node *document, const jpath *path,
                                          uint8_t option, uint32_t containers_only, char **out,
                                          uint32_t *out_len) {
    *out = nullptr;
    *out_len = 0;
    if (!document) return 0;
    if (!path)
        return write_text(ctx, document, JSON_FMT_COMPACT, option, site::FUN_MYSQL_HEAP,
                          site::FUN_MYSQL_WRITE, out, out_len);
    json_node *node;
    if (int32_t rc = evaluate(ctx, document, path, &node)) return rc;
    if ((containers_only & LOW_BYTE) && is_scalar(node)) return VXJSON_NO_VALUE;
    return write_text(ctx, node, path->format, option, site::FUN_MYSQL_HEAP, site::FUN_MYSQL_WRITE,
                      out, out_len);
}

VXJSON_API int32_t json_fun_varchar_pg(jlpca_ctx *ctx, json_node *document, const jpath *path,
                                       uint32_t option, char **out, uint32_t *out_len) {
    *out = nullptr;
    *out_len = 0;
    if (!document) return 0;
    json_node *node;
    if (int32_t rc = evaluate(ctx, document, path, &node)) return rc;
    // As plain text (option 1) a JSON null is SQL NULL.
    const auto conv = uint8_t(option & LOW_BYTE);
    if (node->type == JSON_NULL && conv == JSON_CONV_PLAIN) return 0;
    return write_text(ctx, node, path->format, conv, site::FUN_PG_HEAP, site::FUN_PG_WRITE, out,
                      out_len);
}

} // extern "C"
