/* Compiled as C11 with -pedantic-errors: the interface is plain C. */
#include "vxjson.h"

int vxjson_header_is_c(void);
int vxjson_header_is_c(void) {
    json_node node;
    node.type = JSON_ARRAY;
    node.count = 0;
    return (int)sizeof(jlpca_ctx) > 0 && node.type == JSON_ARRAY;
}
