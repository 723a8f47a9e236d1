// The shape rules of JSON_VALUE and JSON_QUERY: which results each function
// accepts, and whether JSON_QUERY writes a result inside brackets.
#include "vxjson.h"

namespace {

// What the caller's wrap comes to: values of the wrapper clause.
constexpr uint32_t WRAP_NONE = JPATH_WRAPPER_WITHOUT;  // written as it stands
constexpr uint32_t WRAP_BRACKETS = JPATH_WRAPPER_WITH; // written inside "[" and "]"

bool is_container(const json_node *n) { return n->type == JSON_OBJECT || n->type == JSON_ARRAY; }

} // namespace

extern "C" {

VXJSON_API int32_t json_fun_value_check(const json_node *node) {
    if (node->type == JSON_OBJECT) return VXJSON_ERR_VALUE_NOT_SCALAR;
    // A virtual array is several matches; a document array is one value
    // that is not a scalar.
    if (node->type == JSON_ARRAY)
        return node->is_virtual ? VXJSON_ERR_VALUE_MANY : VXJSON_ERR_VALUE_NOT_SCALAR;
    return 0;
}

VXJSON_API int32_t json_fun_query_check(const jpath *path, const json_node *node, uint32_t *wrap) {
    const uint32_t clause = path->wrapper;
    const bool several = node->type == JSON_ARRAY && node->is_virtual;
    if (is_container(node) && !several) {
        // One object or array is JSON already; only a conditional wrapper
        // decides here, and it leaves the value bare.
        if (clause == JPATH_WRAPPER_CONDITIONAL) *wrap = WRAP_NONE;
        return 0;
    }
    // Several matches or a scalar need brackets, which only a wrapper gives.
    if (clause != WRAP_BRACKETS && clause != JPATH_WRAPPER_CONDITIONAL)
        return VXJSON_ERR_QUERY_SCALAR;
    if (several) {
        // The gathered matches are written as an array of their own.
        *wrap = WRAP_NONE;
    } else if (clause == JPATH_WRAPPER_CONDITIONAL) {
        *wrap = WRAP_BRACKETS;
    }
    return 0;
}

} // extern "C"
