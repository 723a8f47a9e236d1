// change_internal.h -- what the removal, set and array-add units share: the
// set_mode tests, the one way an array gains an element, the wrapping of a
// value with a new one into a two-element array, and the document text.
//
// Every change is made so that a failure leaves the tree as it was: new
// storage is taken first and linked only once nothing can fail any more.
#ifndef VXJSON_CHANGE_INTERNAL_H
#define VXJSON_CHANGE_INTERNAL_H

#include <cstdint>

#include "vxjson.h"

namespace vxjson {

// set_mode: 1 replace only, 2 replace or add, 3 add only.
inline bool may_replace(const jlpca_ctx *ctx) { return ctx->set_mode == 1 || ctx->set_mode == 2; }
inline bool may_add(const jlpca_ctx *ctx) { return ctx->set_mode == 2 || ctx->set_mode == 3; }

// Insert `element` at `position` (not beyond count) of a document array.
// json_array_append_with_nth trusts its caller for room; this is that
// caller: a full array first gets larger storage from the heap (the old
// storage stays with the heap, whoever allocated it), and an empty one gets
// at least one slot.  -503 with the array unchanged when memory runs out.
int32_t array_insert_at(jlpca_ctx *ctx, json_node *array, json_node *element, uint32_t position,
                        uint32_t capacity);

// A new document array [first, second] whose parent is first's parent.
// The two nodes are not touched: the caller links the pair into the tree
// and then calls settle_pair.  -503 with nothing changed.
int32_t wrap_pair(jlpca_ctx *ctx, json_node *first, json_node *second, json_node **out);

// The elements of a pair linked into the tree now belong to it.
inline void settle_pair(json_node *pair) {
    pair->items[0]->parent = pair;
    pair->items[1]->parent = pair;
}

// The whole document as compact text with conversion conv, handed over
// through the context's allocator; a failure is reported at `line` of
// json/jpath and nothing stays allocated.
int32_t document_text(jlpca_ctx *ctx, const json_node *document, uint8_t conv, int32_t line,
                      char **out, uint32_t *out_len);

} // namespace vxjson

#endif
