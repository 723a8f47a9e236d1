// The one test environment: a parse context over its own heap and counting
// allocator with read, check and write helpers and builders for trees made
// by hand; an output string that checks its temporaries come back; the
// character-set switch; the error trail; a plain dump of a tree.
#ifndef VXJSON_TEST_VX_ENV_H
#define VXJSON_TEST_VX_ENV_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "vx_alloc.h"
#include "vx_elog.h"
#include "vx_heap.h"
#include "vx_ini.h"
#include "vx_session.h"
#include "vxjson.h"
#include "vxstr.h"

// Rows print as their id (gtest would dump their bytes, padding included)
// and name their generated tests by it.  Files with rows in their own
// namespace bring the printer in with `using ::operator<<;`.
template <class Row> auto operator<<(std::ostream &os, const Row &r) -> decltype(os << r.id) {
    return os << r.id;
}
inline constexpr auto by_id = [](const auto &info) { return std::string(info.param.id); };
// A table of rows for INSTANTIATE_TEST_SUITE_P, one braced row a line.
template <class Row> auto rows(std::initializer_list<Row> list) {
    return ::testing::ValuesIn(std::vector<Row>(list));
}

// Switches of a read; the defaults are the standard dialect, lax.
struct ReadSwitches {
    int32_t compat = JLPCA_COMPAT_STANDARD, strict = 0, scalar_top = 0, unique_keys = 0;
    int32_t escape_mode = JLPCA_ESCAPE_DECODE;
    uint8_t number_mode = 0;
};
inline ReadSwitches lax() { return {}; }
inline ReadSwitches strict() { return {.strict = 1}; }
inline ReadSwitches dialect(int32_t compat) {
    return {.compat = compat, .strict = 1, .scalar_top = 1};
}
inline ReadSwitches with_scalar_top(ReadSwitches s) {
    s.scalar_top = 1;
    return s;
}
inline ReadSwitches unique(ReadSwitches s) {
    s.unique_keys = 1;
    return s;
}

// Configuration value 635 for the life of the object: 0 GB18030, 1 UTF-8,
// 2 EUC-KR, anything else the single-byte set.
inline constexpr int32_t GB = 0, UTF8 = 1, EUCKR = 2, SINGLE = 3;
struct CharsetScope {
    explicit CharsetScope(int32_t value) { ini_set_value(0, VX_INI_CHARSET, value); }
    ~CharsetScope() { ini_reset_value(0, VX_INI_CHARSET); }
    CharsetScope(const CharsetScope &) = delete;
};

// A growable string over its own counting allocator; checks at the end
// that every temporary text was given back.
struct OutString {
    vx_alloc_state state{};
    vx_allocator alloc{};
    vxstr *s = nullptr;
    uint64_t baseline = 0;

    explicit OutString(uint32_t initial = VXSTR_INITIAL_SIZE) {
        vx_allocator_init(&alloc, &state);
        s = vxstr_create(nullptr, &alloc, initial);
        baseline = state.outstanding;
    }
    ~OutString() {
        EXPECT_EQ(state.outstanding, baseline) << "temporary text not released";
        vxstr_free(nullptr, &alloc, s);
    }
    std::string str() const { return std::string(s->buf, s->len); }
    // The first `calls` allocations from now on succeed, later ones fail.
    void fail_after(uint64_t calls) { vx_allocator_set_call_limit(&state, calls); }
};

// A session's context, reached as ctx.get() and ctx->.
struct SessionCtx {
    jlpca_ctx *p = nullptr;
    jlpca_ctx *get() const { return p; }
    jlpca_ctx *operator->() const { return p; }
};

// A session (a context over a fresh heap and counting allocator), read
// with `sw`.
struct VxEnv {
    vx_session session{};
    vx_heap *heap = nullptr;
    vx_alloc_state &alloc_state = session.alloc_state;
    vx_allocator &alloc = session.alloc;
    SessionCtx ctx;
    std::string text; // the text given by start(), alive while it is scanned

    explicit VxEnv(const ReadSwitches &sw = lax()) {
        vx_session_options o{};
        o.escape_mode = sw.escape_mode;
        o.strict = sw.strict;
        o.unique_keys = sw.unique_keys;
        o.compat = sw.compat;
        EXPECT_EQ(vx_session_open(&session, &o), 0);
        heap = session.heap;
        ctx.p = session.ctx;
        ctx->scalar_top = sw.scalar_top;
        ctx->number_mode = sw.number_mode;
    }
    ~VxEnv() { vx_session_close(&session); }
    VxEnv(const VxEnv &) = delete;

    int32_t reinit(const std::string &t) {
        return jlpca_reinit(ctx.get(), t.data(), uint32_t(t.size()));
    }
    int32_t start(std::string t) { return reinit(text = std::move(t)); }
    // json_flex over t; the root in *root.
    int32_t read(const std::string &t, json_node **root) {
        *root = nullptr;
        const int32_t rc = reinit(t);
        return rc ? rc : json_flex(ctx.get(), root);
    }
    int32_t check(const std::string &t) {
        const int32_t rc = reinit(t);
        return rc ? rc : jcheck_flex(ctx.get());
    }
    // A document that must read; `sorted` keeps members in sorted-key order.
    json_node *tree(const std::string &t, bool sorted = false) {
        ctx->sorted_keys = sorted ? 1 : 0;
        json_node *root = nullptr;
        EXPECT_EQ(read(t, &root), 0) << t;
        EXPECT_NE(root, nullptr) << t;
        return root;
    }
    // json_to_string into a fresh string: the code, and in *out the text
    // (so far, on failure).
    int32_t write(const json_node *n, std::string *out, uint32_t flags = JSON_FMT_COMPACT,
                  uint32_t level = 0, uint32_t newline_first = 0, uint8_t conv = JSON_CONV_JSON) {
        const uint64_t before = alloc_state.outstanding;
        vxstr *s = vxstr_create(nullptr, &alloc, 0);
        if (!s) return VXJSON_ERR_NOMEM;
        int32_t rc = json_to_string(ctx.get(), &alloc, s, n, flags, level, newline_first, conv);
        out->assign(s->buf, s->len);
        vxstr_free(nullptr, &alloc, s);
        EXPECT_EQ(alloc_state.outstanding, before) << "temporary text not released";
        return rc;
    }
    std::string text_of(const json_node *n, uint32_t flags = JSON_FMT_COMPACT) {
        std::string out;
        EXPECT_EQ(write(n, &out, flags), 0);
        return out;
    }
    // Take over a result text handed out through the context's allocator.
    std::string take(char *t, uint32_t len) {
        std::string out(t, len);
        vx_free(nullptr, &alloc, t);
        return out;
    }

    // Builders for trees made by hand.
    json_node *scalar(uint32_t type, uint32_t bval = 0) {
        json_node *n = json_mem_create(ctx.get(), type);
        n->bval = bval;
        return n;
    }
    json_node *integer(int64_t v) {
        json_node *n = scalar(JSON_INTEGER);
        n->ival = v;
        return n;
    }
    json_node *text_node(uint32_t type, const std::string &s, uint32_t flags = 0) {
        json_node *n = scalar(type);
        EXPECT_EQ(json_string_set_value_low(nullptr, heap, n, s.data(), uint32_t(s.size()), 0, 0),
                  0);
        n->str_flags = flags;
        return n;
    }
    json_node *string(const std::string &s, uint32_t flags = 0) {
        return text_node(JSON_STRING, s, flags);
    }
    json_node *decimal(const std::string &s) { return text_node(JSON_DECIMAL, s); }
    // An array filled through its element list and converted, as the reader does.
    json_node *array(const std::vector<json_node *> &elements) {
        json_node *a = scalar(JSON_ARRAY);
        for (json_node *e : elements) {
            e->parent = a;
            e->prev_sibling = a->lst_last;
            (a->lst_last ? a->lst_last->next_sibling : a->lst_first) = e;
            a->lst_last = e;
            a->lst_count++;
        }
        EXPECT_EQ(elements.empty()
                      ? 0
                      : json_lst_to_arr(ctx.get(), a, a->lst_count, a->lst_first, a->lst_last),
                  0);
        return a;
    }
    json_node *object(const std::vector<std::pair<std::string, json_node *>> &members) {
        json_node *o = scalar(JSON_OBJECT);
        for (auto &[name, value] : members)
            EXPECT_EQ(json_object_add_one_node(ctx.get(), o, name.data(), uint32_t(name.size()),
                                               value, 0),
                      0);
        return o;
    }
};

using Trail = std::vector<std::pair<int32_t, int32_t>>;

// The reports made since the last clear, innermost first, as (code, line).
inline Trail trail() {
    Trail out;
    vx_elog_entry e;
    for (uint32_t i = 0; elog_trail_get(i, &e) == 0; ++i) out.emplace_back(e.code, e.line);
    return out;
}

inline bool trail_has(int32_t code, const char *src, int32_t line) {
    vx_elog_entry e;
    for (uint32_t i = 0; elog_trail_get(i, &e) == 0; ++i)
        if (e.code == code && e.line == line && std::string(e.src) == src) return true;
    return false;
}

inline std::string bytes(const char *p, uint32_t n) {
    return p ? std::string(p, n) : std::string();
}

inline std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

#ifdef VXJSON_BENCH_DATA_DIR
// A reference document of bench/data (file name with its extension); a
// missing or empty one fails the test, naming the path.
inline std::string read_bench_data(const std::string &file) {
    const std::string path = std::string(VXJSON_BENCH_DATA_DIR) + "/" + file;
    std::string text = read_file(path);
    if (text.empty()) ADD_FAILURE() << "cannot read the reference document " << path;
    return text;
}
#endif

// Member names of an object in list order, checking the back links too.
inline std::vector<std::string> member_names(const json_node *o) {
    std::vector<std::string> names;
    const json_keyval *prev = nullptr;
    for (const json_keyval *kv = o->first_member; kv; prev = kv, kv = kv->next) {
        EXPECT_EQ(kv->prev, prev);
        names.emplace_back(kv->name, kv->name_len);
    }
    EXPECT_EQ(o->last_member, prev);
    EXPECT_EQ(o->count, names.size());
    return names;
}

// A plain text form of a tree, independent of the writer: strings quoted
// with bytes outside printable ASCII (and '"' and '\') as \xHH, numbers as
// read, arrays through their pointer arrays, dates as seconds.nanoseconds/type.
// With `flags`, names and strings that held an escape are marked with '!'.
inline void dump_to(const json_node *n, std::string &out, bool flags) {
    auto quoted = [&](const char *s, uint32_t len, uint32_t escaped) {
        out += '"';
        for (uint32_t i = 0; i < len; i++) {
            const unsigned char c = static_cast<unsigned char>(s[i]);
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\x%02X", c);
            out += c < 0x20 || c >= 0x7F || c == '"' || c == '\\' ? std::string(buf)
                                                                  : std::string(1, char(c));
        }
        out += flags && escaped ? "\"!" : "\"";
    };
    switch (n->type) {
    case JSON_OBJECT:
        out += '{';
        for (const json_keyval *kv = n->first_member; kv; kv = kv->next) {
            if (kv != n->first_member) out += ',';
            quoted(kv->name, kv->name_len, kv->flags);
            out += ':';
            dump_to(kv->value, out, flags);
        }
        out += '}';
        break;
    case JSON_ARRAY:
        out += '[';
        for (uint32_t i = 0; i < n->count; i++) {
            if (i) out += ',';
            dump_to(n->items[i], out, flags);
        }
        out += ']';
        break;
    case JSON_INTEGER: out += std::to_string(n->ival); break;
    case JSON_DECIMAL: out += bytes(n->str, n->str_len); break;
    case JSON_STRING: quoted(n->str, n->str_len, n->str_flags); break;
    case JSON_BOOLEAN: out += n->bval ? "true" : "false"; break;
    case JSON_NULL: out += "null"; break;
    case JSON_DATE:
    case JSON_DATETIME:
        out += (n->type == JSON_DATE ? "date:" : "datetime:") + std::to_string(n->dt.sec) + "." +
               std::to_string(n->dt.nsec) + "/" + std::to_string(n->dt.type);
        break;
    default: out += '?';
    }
}

inline std::string dump(const json_node *n, bool flags = false) {
    std::string out;
    if (n) dump_to(n, out, flags);
    return out;
}

#endif
