// Running one change by path the way the server does: the document, the
// path or paths and the values read into one context, the library call,
// and the text it gives (or, after a failure, the text the tree still
// writes).  Shared by the change suites and their fault-injection test.
//
// Ops: replace, set, insert (MySQL set_mode 1, 2, 3, one path), pgset (a
// text-array path), pgremove (a key, or an integer as a position), remove
// (a JSON array of paths), append and arrayinsert (a JSON array of paths
// and a JSON array of values, one per path).
#ifndef VXJSON_TEST_CHANGE_RUN_H
#define VXJSON_TEST_CHANGE_RUN_H

#include <cstring>
#include <string>
#include <vector>

#include "vx_env.h"
#include "vx_number.h"

struct ChangeInput {
    std::string op, doc, path, value;
};

struct ChangeOutcome {
    int32_t code = 0;
    std::string text;    // the function's text, or the tree's after a failure
    std::string problem; // a broken link found in the tree, if any
};

inline bool change_is_pg(const std::string &op) { return op == "pgset" || op == "pgremove"; }

// Links of the tree below n that a change must leave whole: member lists
// linked both ways with their count, arrays within their capacity and
// holding nodes.  Empty when all is well.
inline std::string tree_problem(const json_node *n, int depth = 0) {
    if (!n) return "null node";
    if (depth > 200) return "too deep (a cycle?)";
    if (n->type == JSON_OBJECT) {
        uint32_t count = 0;
        const json_keyval *prev = nullptr;
        for (const json_keyval *kv = n->first_member; kv; prev = kv, kv = kv->next) {
            if (kv->prev != prev) return "member back link";
            if (++count > n->count) return "member count";
            if (std::string p = tree_problem(kv->value, depth + 1); !p.empty()) return p;
        }
        if (count != n->count || n->last_member != prev) return "member list ends";
    } else if (n->type == JSON_ARRAY) {
        if (n->count > n->capacity) return "count beyond capacity";
        if (n->count && !n->items) return "no items";
        for (uint32_t i = 0; i < n->count; i++)
            if (std::string p = tree_problem(n->items[i], depth + 1); !p.empty()) return p;
    }
    return {};
}

// Text-array path literal into a fresh path record.
inline int32_t compile_pg_path(VxEnv &env, const std::string &literal, jpath *path) {
    jpath_init_simple(path, 1);
    std::vector<char> text(literal.begin(), literal.end());
    text.push_back('\0');
    return jpath_parse_pg_array(nullptr, env.heap, &env.alloc, path, text.data());
}

// The root step and one step after it: a key, or a position when the text
// is an integer.
inline int32_t compile_pg_step(VxEnv &env, const std::string &key, jpath *path) {
    jpath_init_simple(path, 1);
    int32_t rc = jpath_add_filter_low(nullptr, env.heap, path, "", 0, 0);
    int64_t pos = 0;
    const bool is_position = !key.empty() && str2int64(key.data(), uint32_t(key.size()), &pos) == 0;
    if (!rc)
        rc = jpath_add_filter_low(nullptr, env.heap, path, key.data(), uint32_t(key.size()),
                                  is_position ? 4 : 3);
    if (!rc && is_position)
        rc = jpath_add_index_pg(nullptr, env.heap, path->last_filter, int32_t(pos));
    return rc;
}

// The inputs of a change, read and compiled; then `run` makes it.
struct ChangeSetup {
    json_node *doc = nullptr, *value = nullptr;
    jpath one{};
    jpath *paths = nullptr;
    uint32_t count = 0;
    int32_t code = 0; // a failure to read or compile (a test bug, or memory)

    ChangeSetup(VxEnv &env, const ChangeInput &in) {
        jlpca_ctx *ctx = env.ctx.get();
        if ((code = env.read(in.doc, &doc))) return;
        if (!in.value.empty() && (code = env.read(in.value, &value))) return;
        if (in.op == "pgset") code = compile_pg_path(env, in.path, &one);
        else if (in.op == "pgremove") code = compile_pg_step(env, in.path, &one);
        else if (in.op == "remove" || in.op == "append" || in.op == "arrayinsert")
            code =
                jpath_array_flex(ctx, in.path.data(), uint32_t(in.path.size()), 0, &count, &paths);
        else
            code =
                jpath_array_flex(ctx, in.path.data(), uint32_t(in.path.size()), 1, &count, &paths);
    }

    // The change itself: its code, and its text in *text on success.
    int32_t run(VxEnv &env, const std::string &op, std::string *text) {
        jlpca_ctx *ctx = env.ctx.get();
        char *out = nullptr;
        uint32_t len = 0;
        int32_t rc;
        if (op == "replace" || op == "set" || op == "insert") {
            ctx->set_mode = op == "replace" ? 1 : op == "set" ? 2 : 3;
            rc = jsonb_set_with_path(doc, value, paths, ctx, &out, &len);
        } else if (op == "pgset") {
            ctx->set_mode = 2;
            rc = jsonb_set_with_path(doc, value, &one, ctx, &out, &len);
        } else if (op == "pgremove") {
            rc = jsonb_remove_with_path(doc, &one, ctx, &out, &len);
        } else if (op == "remove") {
            rc = json_remove_mysql_path_array(doc, count, paths, ctx, &out, &len);
        } else {
            rc = json_array_add_element_mysql_path_array(doc, count, paths, value, ctx,
                                                         op == "arrayinsert" ? 1 : 0, &out, &len);
        }
        if (rc == 0) *text = env.take(out, len);
        else if (out) *text = "<text on failure>";
        return rc;
    }
};

// A fresh read of the inputs in the op's dialect, and the change.
inline ChangeOutcome run_change(const ChangeInput &in) {
    VxEnv env(dialect(change_is_pg(in.op) ? JLPCA_COMPAT_PG : JLPCA_COMPAT_MYSQL));
    ChangeSetup setup(env, in);
    ChangeOutcome o;
    if (setup.code) {
        o.code = setup.code;
        o.text = "<inputs refused>";
        return o;
    }
    o.code = setup.run(env, in.op, &o.text);
    o.problem = tree_problem(setup.doc);
    if (o.code != 0 && o.problem.empty()) {
        if (env.write(setup.doc, &o.text) != 0) o.problem = "tree does not write after failure";
    }
    return o;
}

#endif
