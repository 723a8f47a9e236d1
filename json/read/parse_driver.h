// parse_driver.h -- the shift-reduce driver shared by the tree grammar
// (grammar.cpp) and the check grammar (check.cpp).
//
// The grammars are LALR(1) grammars without error recovery; this driver is
// a hand-written, iterative equivalent.  It runs each grammar's actions in
// the order an LALR parser reduces them, and it keeps that parser's state
// stack, entry for entry, because the stack bounds the nesting depth a
// document may have: the stack starts with 200 entries and doubles up to
// 10,000, and a document that needs more fails with "memory exhausted".
//
// Entries per open container (O is 1: the tree grammar's empty object_open
// and array_open productions each leave a state, and the check grammar
// counts the same entries so that both refuse the same depths):
//
//   array, first element:     '['  [array_open]                    1 + O
//   array, later elements:    '['  [array_open] elements ','       3 + O
//   object, first member:     '{'  [object_open] key ':'           3 + O
//   object, later members:    '{'  [object_open] members ',' key ':'  5 + O
//
// plus one for the value token being reduced, and at a closing bracket
// elements/members, trailing_comma and the bracket itself.  So a document
// may nest about 5,000 levels of arrays or 2,500 of objects.
//
// The opening entry of each container records the index of the enclosing
// container's opening entry and its kind, so closing needs no other
// bookkeeping; a key entry holds the grammar's member handle.
#ifndef VXJSON_PARSE_DRIVER_H
#define VXJSON_PARSE_DRIVER_H

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "error_place.h"
#include "scan_internal.h"

namespace vxjson::parse {

enum container_kind : uint32_t { TOP = 0, ARRAY = 1, OBJECT = 2 };

// The state stack: inline at first, then from the system allocator.
class state_stack {
public:
    state_stack() = default;
    state_stack(const state_stack &) = delete;
    state_stack &operator=(const state_stack &) = delete;
    ~state_stack() {
        if (e_ != inline_) std::free(e_);
    }
    uintptr_t *entries() { return e_; }
    // Room for `n` entries as the parser's growth rule gives it: an entry
    // stored in the last slot makes the stack double, and at 10,000 it
    // cannot.  False when exhausted.
    bool fits(uint32_t n) { return n < cap_ || grow(n); }

private:
    [[gnu::noinline]] bool grow(uint32_t n) {
        while (n >= cap_) {
            if (cap_ >= JSON_PARSE_STACK_MAX) return false;
            uint32_t cap = cap_ * 2 > JSON_PARSE_STACK_MAX ? JSON_PARSE_STACK_MAX : cap_ * 2;
            auto *e = static_cast<uintptr_t *>(std::malloc(sizeof(uintptr_t) * cap));
            if (!e) return false;
            std::memcpy(e, e_, sizeof(uintptr_t) * cap_);
            if (e_ != inline_) std::free(e_);
            e_ = e;
            cap_ = cap;
        }
        return true;
    }

    uintptr_t inline_[JSON_PARSE_STACK_INITIAL];
    uintptr_t *e_ = inline_;
    uint32_t cap_ = JSON_PARSE_STACK_INITIAL;
};

inline int32_t closer_of(uint32_t kind) { return kind == ARRAY ? ']' : '}'; }

// Where and why the grammar stopped, at the token just read.
[[gnu::cold, gnu::noinline]] inline void note(const scan::scan_state &s, int32_t t,
                                              place::cause why) {
    place::record_grammar(s.ctx, why, scan::token_start(s, t));
}

// The cause of an action's failure: only the tree grammar's actions fail
// with -3105, for a repeated name inside an object or for a scalar that
// would be the whole document (no container is open then).
inline place::cause action_cause(const jlpca_ctx *ctx, int32_t rc) {
    if (rc == VXJSON_ERR_NOMEM) return place::NO_MEMORY;
    if (rc == VXJSON_ERR_INVALID_JSON)
        return ctx->cur_node ? place::DUPLICATE_KEY : place::SCALAR_DOCUMENT;
    return place::SYNTAX;
}

// G supplies the actions:
//   MODE, OPEN_ENTRIES                   scanner mode, entries of the open productions
//   open(ctx, type, slot)          object_open / array_open; `slot` is its entry
//   open_empty(ctx, type)          the empty pair {} or []
//   close(ctx, kind, slot)         a container with items is complete
//   scalar(ctx, token)             scalar value
//   top_scalar(ctx)                document -> scalar
//   attach(ctx)                    elements -> value
//   key(ctx, name, len, &member)   key -> name
//   member(ctx, member)            member -> key ':' value
//   error(ctx, msg), error_ex(ctx, code)
template <class G> int32_t run(scan::scan_state &s, jlpca_ctx *ctx, G &g) {
    constexpr uint32_t O = G::OPEN_ENTRIES;
    state_stack stack;
    uintptr_t *e = stack.entries();
    uint32_t n = 1;      // entries in use; entry 0 is the start state
    uint32_t base = 0;   // opening entry of the innermost container
    uint32_t kind = TOP; // and its kind
    bool top_is_scalar = false;
    int32_t rc = 0;
    int32_t t;
    e[0] = TOP;

    // Each state reads its token and goes straight to the next state: no
    // state variable to dispatch on, so the branches stay predictable.
#define VXJSON_NEXT() (t = scan::next_token_inline<G::MODE>(s))
#define VXJSON_PUSH(k)                                                                             \
    do {                                                                                           \
        n += (k);                                                                                  \
        if (!stack.fits(n)) [[unlikely]]                                                           \
            goto exhausted;                                                                        \
        e = stack.entries();                                                                       \
    } while (0)

    VXJSON_NEXT();
value:
    if (scan::is_scalar_token(t)) {
        VXJSON_PUSH(1); // the token's state, replaced by the value's
        n -= 1;
        if ((rc = g.scalar(ctx, t))) goto failed;
        top_is_scalar = kind == TOP;
        goto value_done;
    }
    if (t != '[' && t != '{') goto syntax;
    VXJSON_PUSH(1);
    kind = t == '[' ? ARRAY : OBJECT;
    e[n - 1] = uintptr_t(base) << 2 | kind;
    base = n - 1;
    VXJSON_NEXT();
    if (t == closer_of(kind)) {
        VXJSON_PUSH(1);
        if ((rc = g.open_empty(ctx, kind == ARRAY ? JSON_ARRAY : JSON_OBJECT))) goto failed;
        goto close;
    }
    if constexpr (O != 0) VXJSON_PUSH(O);
    if ((rc = g.open(ctx, kind == ARRAY ? JSON_ARRAY : JSON_OBJECT, e[n - 1]))) goto failed;
    if (kind == ARRAY) goto value;
    goto key;

value_done:
    // The value is reduced into its container (it takes no entry of its
    // own from here on).
    if (kind == TOP) {
        if (top_is_scalar && (rc = g.top_scalar(ctx))) goto failed;
        if (VXJSON_NEXT() != 0) goto syntax;
        return 0;
    }
    if (kind == ARRAY) g.attach(ctx);
    else g.member(ctx, e[n - 2]);
    n = base + O + 2; // elements / members
    if (VXJSON_NEXT() == ',') {
        VXJSON_PUSH(1);
        if (VXJSON_NEXT() != closer_of(kind)) {
            if (kind == ARRAY) goto value;
            goto key;
        }
        if (ctx->strict) {
            rc = VXJSON_ERR_SYNTAX;
            goto failed;
        }
        VXJSON_PUSH(1); // the bracket after the trailing comma
    } else if (t == closer_of(kind)) {
        VXJSON_PUSH(2); // the empty trailing comma and the bracket
    } else {
        goto syntax;
    }
    g.close(ctx, kind, e[base + O]);
close : {
    const uintptr_t open = e[base];
    n = base;
    base = uint32_t(open >> 2);
    kind = uint32_t(e[base] & 3);
    goto value_done;
}

key : {
    uintptr_t member = 0;
    if (t == JT_DQSTRING || t == JT_SQSTRING || t == JT_NAME) {
        VXJSON_PUSH(1);
        rc = g.key(ctx, ctx->tok_str, uint32_t(ctx->tok_val), member);
    } else if (t == JT_TRUE || t == JT_FALSE || t == JT_NULL) {
        VXJSON_PUSH(1);
        if (ctx->strict) {
            rc = VXJSON_ERR_SYNTAX;
            goto failed;
        }
        rc = t == JT_TRUE    ? g.key(ctx, "true", 4, member)
             : t == JT_FALSE ? g.key(ctx, "false", 5, member)
                             : g.key(ctx, "null", 4, member);
    } else {
        goto syntax;
    }
    if (rc) goto failed;
    e[n - 1] = member;
    if (VXJSON_NEXT() != ':') goto syntax;
    VXJSON_PUSH(1);
    VXJSON_NEXT();
    goto value;
}

exhausted:
    note(s, t, place::STACK);
    g.error(ctx, msg::text(msg::STACK_EXHAUSTED));
    return 2;
syntax:
    note(s, t, place::SYNTAX);
    g.error(ctx, msg::text(msg::SYNTAX));
    return 1;
failed:
    note(s, t, action_cause(ctx, rc));
    return g.error_ex(ctx, rc);
#undef VXJSON_PUSH
#undef VXJSON_NEXT
}

} // namespace vxjson::parse

namespace vxjson {
// The tree grammar over a started scanner (grammar.cpp); also used by the
// check entry when member names must be unique.
int32_t parse_tree(scan::scan_state &s, jlpca_ctx *ctx);
} // namespace vxjson

#endif
