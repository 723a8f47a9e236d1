// eval_internal.h -- what the path evaluators share: the step kinds, the
// result list's append, and the byte-for-byte name test.
//
// A result list threads the matched nodes through their own sibling
// links, so gathering costs no allocation:
//
//   list.first --> n1 <--> n2 <--> n3 <-- list.last      (count 3)
//
// The links of a node are overwritten each time a step lists it; between
// steps they mean nothing.  The lists of one step never hold a node twice
// (see subscript_walk in query_gather.cpp), or the threading would cut the
// list short.
#ifndef VXJSON_EVAL_INTERNAL_H
#define VXJSON_EVAL_INTERNAL_H

#include <cstdint>
#include <cstring>

#include "links.h"
#include "report.h"
#include "report_sites.h"
#include "vxjson.h"

namespace vxjson::eval {

// Step kinds of a compiled path, by the names the evaluators use.
inline constexpr uint32_t STEP_ALL_ELEMENTS = JPATH_STEP_ALL_ELEMENTS; // [*]
inline constexpr uint32_t STEP_WILDCARD = JPATH_STEP_WILDCARD;         // .*
inline constexpr uint32_t STEP_FIELD = JPATH_STEP_MEMBER;              // .name
inline constexpr uint32_t STEP_SUBSCRIPT = JPATH_STEP_SUBSCRIPTS;      // [1, 3 to 5]

inline void list_append(jpath_result_list *list, json_node *node) {
    append_linked<&json_node::prev_sibling, &json_node::next_sibling>(list->first, list->last,
                                                                      list->count, node);
}

inline bool is_object(const json_node *n) { return n->type == JSON_OBJECT; }
inline bool is_array(const json_node *n) { return n->type == JSON_ARRAY; }
// is_virtual shares its place with an object's member list: ask arrays only.
inline bool is_virtual(const json_node *n) { return n->type == JSON_ARRAY && n->is_virtual; }
inline bool is_doc_array(const json_node *n) { return n->type == JSON_ARRAY && !n->is_virtual; }

// The member's stored name against the step's key, byte for byte.
inline bool key_equal(const json_keyval *kv, const jpath_filter *step) {
    return kv->name_len == step->key_len &&
           (kv->name_len == 0 || std::memcmp(kv->name, step->key, kv->name_len) == 0);
}

// The value of the last member named by the step, or null.  Walked from
// the end: the same member as a forward walk keeping the last, found sooner.
inline json_node *last_named_value(const json_node *object, const jpath_filter *step) {
    for (const json_keyval *kv = object->last_member; kv; kv = kv->prev)
        if (key_equal(kv, step)) return kv->value;
    return nullptr;
}

inline int32_t report_jpath(int32_t code, int32_t line) { return report(code, SRC_JPATH, line); }

} // namespace vxjson::eval

#endif
