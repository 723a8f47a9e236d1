/* Builds {"name":"vxjson","tags":["fast","exact"]} through the public
 * interface and prints its length and depth. */
#include <stdio.h>

#include "vx_session.h"
#include "vxjson.h"

int main(void) {
    vx_session_options options = {0, 0, JLPCA_ESCAPE_DECODE, 1, 0, JLPCA_COMPAT_STANDARD};
    vx_session session;
    jlpca_ctx *ctx;
    vx_heap *heap;
    json_node *root, *name, *tags, *tag1, *tag2;
    int rc;

    if (vx_session_open(&session, &options)) return 1;
    ctx = session.ctx;
    heap = session.heap;
    root = json_mem_create(ctx, JSON_OBJECT);
    name = json_mem_create(ctx, JSON_STRING);
    tags = json_mem_create(ctx, JSON_ARRAY);
    tag1 = json_mem_create(ctx, JSON_STRING);
    tag2 = json_mem_create(ctx, JSON_STRING);
    if (!root || !name || !tags || !tag1 || !tag2) {
        vx_session_close(&session);
        return 1;
    }
    rc = json_string_set_value_low(NULL, heap, name, "vxjson", 6, 0, 0);
    if (!rc) rc = json_string_set_value_low(NULL, heap, tag1, "fast", 4, 0, 0);
    if (!rc) rc = json_string_set_value_low(NULL, heap, tag2, "exact", 5, 0, 0);
    if (!rc) rc = json_array_add_one_node(ctx, tags, JSON_ARRAY_END, tag1, JSON_ARRAY_INSERT);
    if (!rc) rc = json_array_add_one_node(ctx, tags, JSON_ARRAY_END, tag2, JSON_ARRAY_INSERT);
    if (!rc) rc = json_object_add_one_node(ctx, root, "name", 4, name, 0);
    if (!rc) rc = json_object_add_one_node(ctx, root, "tags", 4, tags, 0);
    if (rc) {
        fprintf(stderr, "error %d\n", rc);
        vx_session_close(&session);
        return 1;
    }
    printf("length %u, depth %u\n", json_length(root), json_depth(root));
    vx_session_close(&session);
    return 0;
}
