// The shape rules of JSON_VALUE and JSON_QUERY: which results each function
// accepts, and whether JSON_QUERY writes a result inside brackets.
#include "vxjson.h"

extern "C" {

VXJSON_API int32_t json_fun_value_check(const json_node *node) {
    if (node->type == JSON_OBJECT) return VXJSON_ERR_VALUE_NOT_SCALAR;
    // A virtual array is several matches; a document array is one value
    // that is not a scalar.
    if (node->type == JSON_ARRAY)
        return node->is_virtual ? VXJSON_ERR_VALUE_MANY : VXJSON_ERR_VALUE_NOT_SCALAR;
    return 0;
}

} // extern "C"
