// Path text generation: for a node found inside a document, the path text
// that leads from the root to it ($, then .name, ."name" or [position]),
// and for a list of found nodes a JSON array of such texts.
//
// The segments are collected from the node upward, each placed in front of
// the last, so the chain runs root first:
//
//   {"a":[1,2,{"b c":0}]}, found 0:   {"a"} -> {[2]} -> {"b c"}   $.a[2]."b c"
//
// A name is written bare when it is a plain name by the rule below, else
// between double quotes with no character escaped: a name holding a quote,
// a backslash, "/" or a control character gives a text that does not
// compile back.
#include <cstdio>

#include "report.h"
#include "report_sites.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"
#include "vxstr.h"

using namespace vxjson;

namespace {

// Room for "$" and a few steps; the string grows as needed.
constexpr uint32_t PATH_TEXT_INITIAL = 100;

bool is_letter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool is_digit(unsigned char c) { return c >= '0' && c <= '9'; }

// Plain: not empty, starting with a letter or "_"; after a letter only
// letters and digits.  A name starting with "_" is plain whatever follows,
// and one starting with a letter is not once it holds a "_".
bool is_plain_name(const char *name, uint32_t len) {
    if (len == 0) return false;
    const auto first = static_cast<unsigned char>(name[0]);
    if (first == '_') return true;
    if (!is_letter(first)) return false;
    for (uint32_t i = 1; i < len; i++) {
        const auto c = static_cast<unsigned char>(name[i]);
        if (!is_letter(c) && !is_digit(c)) return false;
    }
    return true;
}

// The segment of `node` below `parent`; false when the parent does not
// hold the node (a tree whose links disagree).
bool segment_of(const json_node *parent, const json_node *node, jpath_segment *seg) {
    if (parent->type == JSON_ARRAY) {
        uint32_t i = 0;
        while (i < parent->count && parent->items[i] != node) i++;
        seg->key = nullptr;
        seg->key_len = JPATH_SEGMENT_POSITION;
        seg->position = i; // not found: the element count
        return true;
    }
    for (const json_keyval *kv = parent->first_member; kv; kv = kv->next) {
        if (kv->value == node) {
            seg->key = kv->name;
            seg->key_len = kv->name_len;
            seg->position = 0;
            return true;
        }
    }
    return false;
}

int32_t append_segment(void *env, vx_allocator *a, vxstr *s, const jpath_segment *seg) {
    if (seg->key_len == JPATH_SEGMENT_POSITION) {
        char buf[16];
        const int n = std::snprintf(buf, sizeof buf, "[%d]", int32_t(seg->position));
        return vxstr_append_with_length(env, a, s, buf, uint32_t(n));
    }
    if (is_plain_name(seg->key, seg->key_len)) {
        if (int32_t rc = vxstr_append_with_length(env, a, s, ".", 1)) return rc;
        return vxstr_append_with_length(env, a, s, seg->key, seg->key_len);
    }
    if (int32_t rc = vxstr_append_with_length(env, a, s, ".\"", 2)) return rc;
    if (int32_t rc = vxstr_append_with_length(env, a, s, seg->key, seg->key_len)) return rc;
    return vxstr_append_with_length(env, a, s, "\"", 1);
}

} // namespace

extern "C" {

VXJSON_API int32_t jpath_get_from_lst(jlpca_ctx *ctx, vx_allocator *allocator, char **text,
                                      uint32_t *len, const jpath_segment *first) {
    *text = nullptr;
    *len = 0;
    vxstr *s = vxstr_create(ctx->env, allocator, PATH_TEXT_INITIAL);
    if (!s) return VXJSON_ERR_NOMEM;
    int32_t rc = vxstr_append_with_length(ctx->env, allocator, s, "$", 1);
    for (const jpath_segment *seg = first; seg && rc == 0; seg = seg->next)
        rc = append_segment(ctx->env, allocator, s, seg);
    if (rc < 0) {
        vxstr_free(ctx->env, allocator, s);
        return VXJSON_ERR_NOMEM;
    }
    *len = s->len;
    *text = vxstr_getstr(s);
    vxstr_free_record(ctx->env, allocator, s); // the text is the caller's now
    return 0;
}

VXJSON_API int32_t json_path_gen(const json_node *found, jlpca_ctx *ctx, json_node **out) {
    *out = nullptr;
    jpath_segment *first = nullptr;
    for (const json_node *node = found; node->parent; node = node->parent) {
        auto *seg = static_cast<jpath_segment *>(mem_heap_alloc_low(
            ctx->env, ctx->heap, sizeof(jpath_segment), 0, SRC_JPATH, site::PATH_HEAP_SEGMENT));
        if (!seg) return VXJSON_ERR_NOMEM;
        if (!segment_of(node->parent, node, seg)) return VXJSON_ERR_PATH;
        seg->prev = nullptr;
        seg->next = first;
        if (first) first->prev = seg;
        first = seg;
    }
    // The text is built in a string of the context's allocator and kept on
    // its heap with the node, so nothing is left with the allocator.
    char *text = nullptr;
    uint32_t len = 0;
    if (int32_t rc = jpath_get_from_lst(ctx, ctx->allocator, &text, &len, first); rc < 0) return rc;
    json_node *node = json_mem_create(ctx, JSON_STRING);
    int32_t rc = node ? json_string_set_value_low(ctx->env, ctx->heap, node, text, len, 0, 1)
                      : VXJSON_ERR_NOMEM;
    vx_free(ctx->env, ctx->allocator, text);
    if (rc < 0) return rc;
    node->str_flags = 1;
    *out = node;
    return 0;
}

VXJSON_API int32_t json_lst_to_path_arr(jlpca_ctx *ctx, json_node **out, uint32_t count,
                                        const json_node *found) {
    *out = nullptr;
    if (count == 0) return 0;
    if (count == 1) return json_path_gen(found, ctx, out);
    json_node *array = json_mem_create(ctx, JSON_ARRAY);
    if (!array) return report(VXJSON_ERR_NOMEM, SRC_JPATH, site::PATH_GEN_ARRAY);
    if (int32_t rc = json_array_mem_alloc_arr(ctx, count, array); rc < 0)
        return report(rc, SRC_JPATH, site::PATH_GEN_ARRAY);
    uint32_t n = 0;
    for (const json_node *f = found; f && n < count; f = f->next_sibling) {
        json_node *text = nullptr;
        if (int32_t rc = json_path_gen(f, ctx, &text); rc < 0)
            return report(rc, SRC_JPATH, site::PATH_GEN_ELEMENT);
        text->parent = array;
        array->items[n++] = text;
    }
    array->count = n;
    *out = array;
    return 0;
}

} // extern "C"
