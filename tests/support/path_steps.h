// Compiled paths for tests: compile a path text in a VxEnv, and write a
// path's steps as one line of text, checking the step and entry links on
// the way:
//   $        root            .*      member wildcard     [*]  every element
//   .name    member (bytes outside printable ASCII as \xHH)
//   [1,3-5]  subscripts and ranges, with a trailing m when the step is multi
#ifndef VXJSON_TEST_PATH_STEPS_H
#define VXJSON_TEST_PATH_STEPS_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "vx_env.h"

inline std::string printable_bytes(const char *s, size_t n) {
    std::string out;
    char buf[8];
    for (size_t i = 0; i < n; i++) {
        const unsigned char c = static_cast<unsigned char>(s[i]);
        std::snprintf(buf, sizeof buf, "\\x%02X", c);
        out += c < 0x20 || c >= 0x7F ? std::string(buf) : std::string(1, char(c));
    }
    return out;
}

inline std::string entries_text(const jpath_filter *f) {
    std::string out;
    const jpath_index *prev = nullptr;
    uint32_t n = 0;
    for (const jpath_index *e = f->index_head; e; prev = e, e = e->next, n++) {
        EXPECT_EQ(e->prev, prev);
        if (n) out += ',';
        out += std::to_string(e->start);
        if (e->end) out += "-" + std::to_string(e->end);
    }
    EXPECT_EQ(f->index_tail, prev);
    EXPECT_EQ(f->index_count, n);
    return out;
}

inline std::string steps_text(const jpath *p) {
    std::string out;
    const jpath_filter *prev = nullptr;
    uint32_t n = 0;
    for (const jpath_filter *f = p->first_filter; f; prev = f, f = f->next, n++) {
        EXPECT_EQ(f->prev, prev);
        EXPECT_EQ(f->path, p);
        EXPECT_EQ(f->key[f->key_len], '\0');
        if (n) out += ' ';
        switch (f->kind) {
        case JPATH_STEP_ROOT: out += "$"; break;
        case JPATH_STEP_ALL_ELEMENTS: out += "[*]"; break;
        case JPATH_STEP_WILDCARD: out += ".*"; break;
        case JPATH_STEP_MEMBER: out += "." + printable_bytes(f->key, f->key_len); break;
        case JPATH_STEP_SUBSCRIPTS: out += "[" + entries_text(f) + "]"; break;
        default: out += "?" + std::to_string(f->kind);
        }
        if (f->multi) out += 'm';
    }
    EXPECT_EQ(p->last_filter, prev);
    EXPECT_EQ(p->filter_count, n);
    return out;
}

// jpath_flex over text into *p (initialised simple, standard dialect).
inline int32_t compile_path(VxEnv &env, const std::string &text, jpath *p) {
    jpath_init_simple(p, JPATH_DIALECT_STANDARD);
    env.text = text;
    if (int32_t rc = env.reinit(env.text)) return rc;
    return jpath_flex(env.ctx.get(), p);
}

#endif
