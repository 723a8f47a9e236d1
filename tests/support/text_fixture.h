// Output strings, character-set switching and error-trail helpers for the
// escaping and writing tests.
#ifndef VXJSON_TEST_TEXT_FIXTURE_H
#define VXJSON_TEST_TEXT_FIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "vx_alloc.h"
#include "vx_elog.h"
#include "vx_ini.h"
#include "vxjson.h"
#include "vxstr.h"

// Configuration value 635 for the life of the object: 0 GB18030, 1 UTF-8,
// 2 EUC-KR, anything else the single-byte set.
struct CharsetScope {
    explicit CharsetScope(int32_t value) { ini_set_value(0, VX_INI_CHARSET, value); }
    ~CharsetScope() { ini_reset_value(0, VX_INI_CHARSET); }
    CharsetScope(const CharsetScope &) = delete;
    CharsetScope &operator=(const CharsetScope &) = delete;
};

// A growable string over a counting allocator; checks at the end that
// every temporary text was given back.
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
    OutString(const OutString &) = delete;
    OutString &operator=(const OutString &) = delete;

    std::string str() const { return std::string(s->buf, s->len); }
    // The first `calls` allocations from now on succeed, later ones fail.
    void fail_after(uint64_t calls) { vx_allocator_set_call_limit(&state, calls); }
};

// The reports made since the last clear, innermost first, as (code, line).
inline std::vector<std::pair<int32_t, int32_t>> trail() {
    std::vector<std::pair<int32_t, int32_t>> out;
    vx_elog_entry e;
    for (uint32_t i = 0; elog_trail_get(i, &e) == 0; ++i) out.emplace_back(e.code, e.line);
    return out;
}

inline std::string bytes(const char *p, uint32_t n) { return p ? std::string(p, n) : std::string(); }

#endif
