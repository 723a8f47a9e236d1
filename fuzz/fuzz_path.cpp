// Path compilation on arbitrary bytes: the text as one path (jpath_flex),
// as a path argument or a JSON array of them (jpath_array_flex), and as a
// text-array literal (jpath_parse_pg_array) never crashes or leaks.  When
// the bytes read as a JSON document, the generated path of every node
// compiles back to steps that name the same members and positions (for
// names that the path syntax can carry inside quotes).
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_setup.h"

namespace {

// A name whose generated path text must compile back to it: printable
// ASCII without the quote, the backslash and "/" (which need escapes inside
// quotes), and, when it starts with "_" (written bare), only name bytes.
// Other bytes may end inside a multibyte character or need an escape.
bool name_round_trips(const char *name, uint32_t len) {
    for (uint32_t i = 0; i < len; i++) {
        const unsigned char c = static_cast<unsigned char>(name[i]);
        if (c < 0x20 || c > 0x7E || c == '"' || c == '\\' || c == '/') return false;
    }
    if (len > 0 && name[0] == '_') {
        for (uint32_t i = 1; i < len; i++) {
            const unsigned char c = static_cast<unsigned char>(name[i]);
            if (!(c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                  (c >= 'a' && c <= 'z')))
                return false;
        }
    }
    return true;
}

// The steps a node's path must compile to, root first: member names, or
// positions as -1 - position.  False when a name cannot round trip.
bool expected_steps(const json_node *n, std::vector<std::string> &names,
                    std::vector<int64_t> &pos) {
    for (; n->parent; n = n->parent) {
        const json_node *p = n->parent;
        if (p->type == JSON_ARRAY) {
            uint32_t i = 0;
            while (i < p->count && p->items[i] != n) i++;
            names.insert(names.begin(), std::string());
            pos.insert(pos.begin(), i);
            continue;
        }
        const json_keyval *kv = p->first_member;
        while (kv && kv->value != n) kv = kv->next;
        if (!kv || !name_round_trips(kv->name, kv->name_len)) return false;
        names.insert(names.begin(), std::string(kv->name, kv->name_len));
        pos.insert(pos.begin(), -1);
    }
    return true;
}

// Whether every ancestor lists the node on the way up.  A value whose
// member a later repeated name replaced keeps its parent link but is no
// longer in the tree, and has no path.
bool listed_by_parents(const json_node *n) {
    for (; n->parent; n = n->parent) {
        const json_node *p = n->parent;
        bool found = false;
        if (p->type == JSON_ARRAY) {
            for (uint32_t i = 0; i < p->count && !found; i++) found = p->items[i] == n;
        } else {
            for (const json_keyval *kv = p->first_member; kv && !found; kv = kv->next)
                found = kv->value == n;
        }
        if (!found) return false;
    }
    return true;
}

void check_generated_paths(FuzzEnv &env, const json_node *root) {
    jlpca_ctx *ctx = env.ctx.get();
    const int32_t saved_escape = ctx->escape_mode;
    const int32_t saved_compat = ctx->compat, saved_strict = ctx->strict;
    std::vector<const json_node *> nodes;
    for (const json_node *n = root; n && nodes.size() < 2000; n = n->chain_next) nodes.push_back(n);
    // Compile as the standard dialect with escapes decoded, so a key reads
    // back byte for byte.
    ctx->escape_mode = JLPCA_ESCAPE_DECODE;
    ctx->compat = JLPCA_COMPAT_STANDARD;
    ctx->strict = 0;
    for (const json_node *n : nodes) {
        json_node *text = nullptr;
        const uint64_t before = env.state.outstanding;
        const int32_t rc = json_path_gen(n, ctx, &text);
        if (env.state.outstanding != before) std::abort();
        if (rc == VXJSON_ERR_PATH && !listed_by_parents(n)) continue;
        if (rc != 0) std::abort();
        std::vector<std::string> names;
        std::vector<int64_t> pos;
        if (!expected_steps(n, names, pos)) continue;
        const std::string path(text->str, text->str_len);
        if (jlpca_reinit(ctx, path.data(), uint32_t(path.size())) != 0) std::abort();
        jpath p;
        jpath_init_simple(&p, JPATH_DIALECT_STANDARD);
        if (jpath_flex(ctx, &p) != 0) std::abort();
        const jpath_filter *f = p.first_filter;
        if (!f || f->kind != JPATH_STEP_ROOT || p.filter_count != names.size() + 1) std::abort();
        f = f->next;
        for (size_t i = 0; i < names.size(); i++, f = f->next) {
            if (pos[i] >= 0) {
                if (f->kind != JPATH_STEP_SUBSCRIPTS || f->index_count != 1 ||
                    f->index_head->start != pos[i])
                    std::abort();
            } else if (f->kind != JPATH_STEP_MEMBER || f->key_len != names[i].size() ||
                       std::memcmp(f->key, names[i].data(), names[i].size()) != 0) {
                std::abort();
            }
        }
    }
    ctx->escape_mode = saved_escape;
    ctx->compat = saved_compat;
    ctx->strict = saved_strict;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzModes modes = take_modes(data, size);
    FuzzEnv env(modes);
    jlpca_ctx *ctx = env.ctx.get();
    const char *text = reinterpret_cast<const char *>(data);
    const uint32_t len = uint32_t(size);

    jpath p;
    jpath_init(&p, 3, 100, 0, JPATH_DIALECT_STANDARD);
    if (jlpca_reinit(ctx, text, len) == 0) {
        const int32_t rc = jpath_flex(ctx, &p);
        if (rc != 0 && rc != VXJSON_ERR_PATH && rc != VXJSON_ERR_NOMEM) std::abort();
    }
    for (int32_t single : {1, 0}) {
        uint32_t count = 0;
        jpath *paths = nullptr;
        const int32_t rc = jpath_array_flex(ctx, text, len, single, &count, &paths);
        if (rc != 0 && rc != VXJSON_NO_VALUE && rc != VXJSON_ERR_PATH && rc != VXJSON_ERR_NOMEM)
            std::abort();
        if (rc == 0 && count && !paths) std::abort();
    }
    std::string literal(text, size); // modified in place; NUL-terminated
    jpath pg;
    jpath_init_simple(&pg, JPATH_DIALECT_PG_ARRAY);
    const uint64_t before = env.state.outstanding;
    const int32_t pg_rc = jpath_parse_pg_array(nullptr, env.heap, &env.alloc, &pg, literal.data());
    if (pg_rc != 0 && pg_rc != VXJSON_ERR_PATH) std::abort();
    if (env.state.outstanding != before) std::abort(); // its element string is released

    json_node *root = nullptr;
    if (jlpca_reinit(ctx, text, len) == 0 && json_flex(ctx, &root) == 0 && root)
        check_generated_paths(env, root);
    return 0;
}
