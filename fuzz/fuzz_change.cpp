// Random changes to random documents.  The input is a selector byte, a
// fault byte, then a document, a path and a value separated by 0x01 bytes.
// The selector picks the change (replace, set, insert, text-array set, key
// removal, removal, array append, array insert); the fault byte, when not
// 0, makes the heap (or, with its top bit, the allocator) fail after that
// many calls of the change.  Whatever happens, the tree's links stay whole
// and it still writes; and when the document and value made the round trip
// through text before the change, the changed document makes it too.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_setup.h"
#include "vx_number.h"

namespace {

enum Op { REPLACE, SET, INSERT, PG_SET, PG_REMOVE, REMOVE, APPEND, ARRAY_INSERT, OP_COUNT };

bool links_whole(const json_node *n, int depth) {
    if (!n || depth > 100000) return false;
    if (n->type == JSON_OBJECT) {
        uint32_t count = 0;
        const json_keyval *prev = nullptr;
        for (const json_keyval *kv = n->first_member; kv; prev = kv, kv = kv->next) {
            if (kv->prev != prev || ++count > n->count || !links_whole(kv->value, depth + 1))
                return false;
        }
        return count == n->count && n->last_member == prev;
    }
    if (n->type == JSON_ARRAY) {
        if (n->count > n->capacity || (n->count && !n->items)) return false;
        for (uint32_t i = 0; i < n->count; i++)
            if (!links_whole(n->items[i], depth + 1)) return false;
    }
    return true;
}

bool read_text(FuzzEnv &env, const std::string &text, json_node **root) {
    *root = nullptr;
    return jlpca_reinit(env.ctx.get(), text.data(), uint32_t(text.size())) == 0 &&
           json_flex(env.ctx.get(), root) == 0 && *root;
}

// Keys taken from a path go into the tree as they stand, undecoded; only
// printable ASCII without quotes or backslashes is sure to be written as
// a name that reads back as itself.
bool plain_path(const std::string &path) {
    for (char c : path)
        if (c < 0x20 || c > 0x7E || c == '\\' || c == '"') return false;
    return true;
}

// The tree written and read again, written the same.
bool round_trips(FuzzEnv &env, const json_node *root) {
    std::string first, second;
    json_node *again = nullptr;
    return write_tree(env, root, JSON_FMT_COMPACT, first) && read_text(env, first, &again) &&
           write_tree(env, again, JSON_FMT_COMPACT, second) && first == second;
}

int32_t compile(FuzzEnv &env, Op op, const std::string &path, jpath *one, jpath **paths) {
    jlpca_ctx *ctx = env.ctx.get();
    if (op == PG_SET || op == PG_REMOVE) {
        jpath_init_simple(one, 1);
        *paths = one;
        if (op == PG_SET) {
            std::string text = path; // read in place, zero-terminated
            return jpath_parse_pg_array(ctx->env, ctx->heap, ctx->allocator, one, text.data());
        }
        int32_t rc = jpath_add_filter_low(ctx->env, ctx->heap, one, "", 0, 0);
        int64_t pos = 0;
        const bool position = !path.empty() &&
                              str2int64(path.data(), uint32_t(path.size()), &pos) == 0 &&
                              pos >= INT32_MIN && pos <= INT32_MAX;
        if (!rc)
            rc = jpath_add_filter_low(ctx->env, ctx->heap, one, path.data(), uint32_t(path.size()),
                                      position ? 4 : 3);
        if (!rc && position)
            rc = jpath_add_index_pg(ctx->env, ctx->heap, one->last_filter, int32_t(pos));
        return rc;
    }
    uint32_t count = 0;
    return jpath_array_flex(ctx, path.data(), uint32_t(path.size()), 1, &count, paths);
}

int32_t change(FuzzEnv &env, Op op, json_node *doc, json_node *value, jpath *path) {
    jlpca_ctx *ctx = env.ctx.get();
    char *out = nullptr;
    uint32_t len = 0;
    int32_t rc;
    switch (op) {
    case REPLACE:
    case SET:
    case INSERT:
    case PG_SET:
        ctx->set_mode = op == REPLACE ? 1 : op == INSERT ? 3 : 2;
        rc = jsonb_set_with_path(doc, value, path, ctx, &out, &len);
        break;
    case PG_REMOVE: rc = jsonb_remove_with_path(doc, path, ctx, &out, &len); break;
    case REMOVE: rc = json_remove_mysql_path_array(doc, 1, path, ctx, &out, &len); break;
    default:
        rc = json_array_add_element_mysql_path_array(
            doc, 1, path, value, ctx,
            JSON_ARRAY_ADD_SINGLE | (op == ARRAY_INSERT ? JSON_ARRAY_ADD_INSERT : 0), &out, &len);
    }
    if ((rc == 0) != (out != nullptr)) std::abort();
    if (out) vx_free(nullptr, &env.alloc, out);
    return rc;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2) return 0;
    const Op op = Op(data[0] % OP_COUNT);
    const uint8_t fault = data[1];
    std::string rest(reinterpret_cast<const char *>(data + 2), size - 2), parts[3];
    for (size_t i = 0, at = 0; i < 3; i++) {
        const size_t sep = i < 2 ? rest.find('\x01', at) : std::string::npos;
        if (i < 2 && sep == std::string::npos) return 0;
        parts[i] = rest.substr(at, sep == std::string::npos ? std::string::npos : sep - at);
        at = sep + 1;
    }
    FuzzModes modes{};
    modes.compat = op == PG_SET || op == PG_REMOVE ? JLPCA_COMPAT_PG : JLPCA_COMPAT_MYSQL;
    modes.strict = 1;
    modes.scalar_top = 1;
    modes.charset_config = 1;
    FuzzEnv env(modes);
    json_node *doc = nullptr, *value = nullptr;
    if (!read_text(env, parts[0], &doc)) return 0;
    if (!read_text(env, parts[2].empty() ? std::string("0") : parts[2], &value)) return 0;
    const bool comparable =
        plain_path(parts[1]) && round_trips(env, doc) && round_trips(env, value);
    jpath one{}, *path = nullptr;
    if (compile(env, op, parts[1], &one, &path) != 0) return 0;
    if (fault & 0x7F) {
        if (fault & 0x80) vx_allocator_set_call_limit(&env.state, (fault & 0x7F) - 1u);
        else mem_heap_set_call_limit(env.heap, fault - 1u);
    }
    const int32_t rc = change(env, op, doc, value, path);
    mem_heap_set_call_limit(env.heap, UINT64_MAX);
    vx_allocator_set_call_limit(&env.state, UINT64_MAX);
    if (!links_whole(doc, 0)) std::abort();
    std::string text;
    if (!write_tree(env, doc, JSON_FMT_COMPACT, text)) std::abort();
    if (rc == 0 && comparable && !round_trips(env, doc)) std::abort();
    return 0;
}
