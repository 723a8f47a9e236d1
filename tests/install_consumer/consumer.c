/* Reads a small document through the installed library. */
#include <stdio.h>
#include <string.h>

#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

static jlpca_ctx ctx;

int main(void) {
    const char *text = "{\"a\":[1,2,3]}";
    vx_heap *heap = mem_heap_create(0);
    vx_alloc_state state;
    vx_allocator alloc;
    json_node *root = NULL;
    vx_allocator_init(&alloc, &state);
    jlpca_init(NULL, &ctx, heap, &alloc, JLPCA_ESCAPE_DECODE, 1, 0, JLPCA_COMPAT_STANDARD);
    if (jlpca_reinit(&ctx, text, (uint32_t)strlen(text)) != 0) return 1;
    if (json_flex(&ctx, &root) != 0 || !root) return 1;
    printf("length %u depth %u\n", json_length(root), json_depth(root));
    jlpca_deinit(&ctx);
    mem_heap_free(heap);
    return json_depth(root) == 3 ? 0 : 1;
}
