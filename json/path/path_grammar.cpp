// The path grammar: compiles path text into steps as its pieces are
// recognised, and the two compile entries jpath_flex and jpath_array_flex.
//
// The grammar is LALR(1):
//
//    1 path-text     -> path END                      accept
//    2 root-mark     -> (empty)                       root step
//    3 path          -> '$' root-mark rest
//    4 rest          -> (empty)
//    5               |  '.' members
//    6               |  subscripts
//    7               |  subscripts '.' members
//    8 members       -> member
//    9               |  members '.' member
//   10 quoted-mark   -> (empty)                       member step, quoted name
//   11 quoted-member -> QUOTED quoted-mark opt-subscripts
//   12 name-mark     -> (empty)                       member step, name
//   13 name-member   -> NAME name-mark opt-subscripts
//   14 wild-mark     -> (empty)                       wildcard step
//   15 wild-member   -> '*' wild-mark opt-subscripts
//   16-18 member     -> quoted-member | name-member | wild-member
//   19 opt-subscripts -> (empty)
//   20               |  subscripts
//   21 subscripts    -> subscript
//   22               |  subscripts subscript
//   23 subscript-body -> index-list
//   24               |  '*'                           step becomes every-element
//   25 array-mark    -> (empty)                       subscript step
//   26 subscript     -> '[' array-mark subscript-body ']'
//   27 index-list    -> index-item
//   28               |  index-item ',' index-list     lists refused in MySQL dialect
//   29 index-item    -> position                      subscript
//   30               |  position to-word position     range
//   31 position      -> INT                           0 .. INT32_MAX
//   32 to-word       -> NAME                          "to" in any case
//
// This is a hand-written, iterative LR parser over that grammar's automaton
// (states below).  It keeps the parser's state stack entry for entry, since
// the stack bounds the input: the right-recursive index list takes two
// entries per item, so a bracket of about 5,000 items exhausts the 10,000
// entries and fails with "memory exhausted".  A state whose only action is
// a reduction reduces without reading a token, so each mark action reads
// the token value of the name just shifted; in a state with shifts and one
// reduction, any token without a shift takes the reduction, and the error
// shows in a later state.
#include <cctype>

#include "parse_driver.h"
#include "path_scan.h"
#include "report.h"
#include "report_sites.h"
#include "vx_heap.h"

using namespace vxjson;
using namespace vxjson::path;

namespace {

enum symbol : uint8_t {
    PATH,
    ROOT_MARK,
    REST,
    MEMBERS,
    QUOTED_MARK,
    QUOTED_MEMBER,
    NAME_MARK,
    NAME_MEMBER,
    WILD_MARK,
    WILD_MEMBER,
    MEMBER,
    OPT_SUBS,
    SUBS,
    SUB_BODY,
    ARRAY_MARK,
    SUBSCRIPT,
    INDEX_LIST,
    INDEX_ITEM,
    POSITION,
    TO_WORD,
};

struct production {
    symbol lhs;
    uint8_t len;
};

// Indexed by production number; 0 and 1 are never reduced.
constexpr production PROD[] = {
    {PATH, 0},        {PATH, 2},          {ROOT_MARK, 0},  {PATH, 3},        {REST, 0},
    {REST, 2},        {REST, 1},          {REST, 3},       {MEMBERS, 1},     {MEMBERS, 3},
    {QUOTED_MARK, 0}, {QUOTED_MEMBER, 3}, {NAME_MARK, 0},  {NAME_MEMBER, 3}, {WILD_MARK, 0},
    {WILD_MEMBER, 3}, {MEMBER, 1},        {MEMBER, 1},     {MEMBER, 1},      {OPT_SUBS, 0},
    {OPT_SUBS, 1},    {SUBS, 1},          {SUBS, 2},       {SUB_BODY, 1},    {SUB_BODY, 1},
    {ARRAY_MARK, 0},  {SUBSCRIPT, 4},     {INDEX_LIST, 1}, {INDEX_LIST, 3},  {INDEX_ITEM, 1},
    {INDEX_ITEM, 3},  {POSITION, 1},      {TO_WORD, 1},
};

// Per state: the reduction it makes without a matching shift (0 none),
// and whether that is its only action (then no token is read for it).
struct state_info {
    uint8_t reduce;
    bool only;
};

constexpr uint8_t STATES = 42;
constexpr uint8_t ACCEPT = 2; // path . END
constexpr state_info INFO[STATES] = {
    /* 0 */ {0, false},  {2, true},   {0, false}, {4, false},  {0, false},
    /* 5 */ {25, true},  {3, true},   {6, false}, {21, true},  {0, false},
    /*10 */ {22, true},  {10, true},  {12, true}, {14, true},  {5, false},
    /*15 */ {8, true},   {16, true},  {17, true}, {18, true},  {0, false},
    /*20 */ {9, true},   {19, false}, {11, true}, {20, false}, {19, false},
    /*25 */ {13, true},  {19, false}, {15, true}, {7, false},  {0, false},
    /*30 */ {31, true},  {24, true},  {0, false}, {23, true},  {27, false},
    /*35 */ {29, false}, {26, true},  {0, false}, {28, true},  {32, true},
    /*40 */ {0, false},  {30, true},
};

// The state a token moves to from `state`, or -1.
int shift_of(uint8_t state, int32_t t) {
    switch (state) {
    case 0: return t == '$' ? 1 : -1;
    case 3: return t == '.' ? 4 : t == '[' ? 5 : -1;
    case 7: return t == '.' ? 9 : t == '[' ? 5 : -1;
    case 4:
    case 9:
    case 19: return t == JT_DQSTRING ? 11 : t == JT_NAME ? 12 : t == '*' ? 13 : -1;
    case 14:
    case 28: return t == '.' ? 19 : -1;
    case 21:
    case 23:
    case 24:
    case 26: return t == '[' ? 5 : -1;
    case 29: return t == JT_INT ? 30 : t == '*' ? 31 : -1;
    case 32: return t == ']' ? 36 : -1;
    case 34: return t == ',' ? 37 : -1;
    case 35: return t == JT_NAME ? 39 : -1;
    case 37:
    case 40: return t == JT_INT ? 30 : -1;
    default: return -1;
    }
}

// The state reached on `sym` from `state` (the automaton's goto table).
uint8_t goto_of(uint8_t state, symbol sym) {
    switch (sym) {
    case PATH: return 2;
    case ROOT_MARK: return 3;
    case REST: return 6;
    case SUBS: return state == 3 ? 7 : 23;
    case SUBSCRIPT: return state == 7 || state == 23 ? 10 : 8;
    case MEMBERS: return state == 4 ? 14 : 28;
    case MEMBER: return state == 19 ? 20 : 15;
    case QUOTED_MEMBER: return 16;
    case NAME_MEMBER: return 17;
    case WILD_MEMBER: return 18;
    case QUOTED_MARK: return 21;
    case NAME_MARK: return 24;
    case WILD_MARK: return 26;
    case OPT_SUBS: return state == 21 ? 22 : state == 24 ? 25 : 27;
    case ARRAY_MARK: return 29;
    case SUB_BODY: return 32;
    case INDEX_LIST: return state == 29 ? 33 : 38;
    case INDEX_ITEM: return 34;
    case POSITION: return state == 40 ? 41 : 35;
    case TO_WORD: return 40;
    }
    return 0;
}

// An entry: the state in the low byte, a position's value above it.
constexpr uintptr_t entry(uint8_t state, int32_t value = 0) {
    return uintptr_t(uint32_t(value)) << 8 | state;
}
constexpr uint8_t state_of(uintptr_t e) { return uint8_t(e & 0xFF); }
constexpr int32_t value_of(uintptr_t e) { return int32_t(uint32_t(e >> 8)); }
static_assert(sizeof(uintptr_t) >= 8, "an entry holds a state and a 32-bit position");

bool is_to_word(const jlpca_ctx *ctx) {
    return ctx->tok_val == 2 && std::tolower(static_cast<unsigned char>(ctx->tok_str[0])) == 't' &&
           std::tolower(static_cast<unsigned char>(ctx->tok_str[1])) == 'o';
}

// The action of production `p`; `rhs` are its entries.  0, or the code
// that stops the grammar.  *value is the value of the reduced symbol.
int32_t act(jlpca_ctx *ctx, int p, const uintptr_t *rhs, int32_t *value) {
    jpath *path = ctx->cur_path;
    switch (p) {
    case 2: return jpath_add_filter(ctx, path, "", 0, JPATH_STEP_ROOT);
    case 10:
    case 12:
        return jpath_add_filter(ctx, path, ctx->tok_str, uint32_t(ctx->tok_val), JPATH_STEP_MEMBER);
    case 14: return jpath_add_filter(ctx, path, "", 0, JPATH_STEP_WILDCARD);
    case 24: ctx->cur_filter->kind = JPATH_STEP_ALL_ELEMENTS; return 0;
    case 25: return jpath_add_filter(ctx, path, "", 0, JPATH_STEP_SUBSCRIPTS);
    case 28: return ctx->compat == JLPCA_COMPAT_MYSQL ? VXJSON_ERR_PATH : 0;
    case 29: return jpath_add_index(ctx->env, ctx->heap, ctx->cur_filter, value_of(rhs[0]));
    case 30:
        return jpath_add_range(ctx->env, ctx->heap, ctx->cur_filter, value_of(rhs[0]),
                               value_of(rhs[2]));
    case 31:
        // The scanner hands larger numbers over as other kinds; a second guard.
        if (ctx->tok_val < 0 || ctx->tok_val > INT32_MAX) return VXJSON_ERR_DOUBLE_OVERFLOW;
        *value = int32_t(ctx->tok_val);
        return 0;
    case 32: return is_to_word(ctx) ? 0 : VXJSON_ERR_SYNTAX;
    default: return 0;
    }
}

} // namespace

namespace vxjson::path {

// The grammar over a started scanner: 0 accepted, 1 syntax error, 2 stack
// exhausted, or the negative code of a failed action.
int32_t parse(path_scanner &s, jlpca_ctx *ctx, bool copy) {
    parse::state_stack stack;
    uintptr_t *e = stack.entries();
    uint32_t n = 1; // entries in use; entry 0 is the start state
    e[0] = entry(0);
    int32_t t = 0;
    bool have = false; // a lookahead token is read
    for (;;) {
        const uint8_t state = state_of(e[n - 1]);
        int next = -1;
        if (!INFO[state].only) {
            if (!have) {
                t = next_token(s, copy);
                have = true;
            }
            if (state == ACCEPT && t == 0) return 0;
            next = shift_of(state, t);
        }
        int32_t value = 0;
        if (next >= 0) {
            have = false;
        } else {
            const int p = INFO[state].reduce;
            if (p == 0) {
                jpath_error(ctx, "syntax error");
                return 1;
            }
            if (int32_t rc = act(ctx, p, e + n - PROD[p].len, &value))
                return jpath_error_ex(ctx, rc);
            n -= PROD[p].len;
            next = goto_of(state_of(e[n - 1]), PROD[p].lhs);
        }
        ++n;
        if (!stack.fits(n)) [[unlikely]] {
            if (n < JSON_PARSE_STACK_MAX) return jpath_error_ex(ctx, VXJSON_ERR_NOMEM);
            jpath_error(ctx, "memory exhausted");
            return 2;
        }
        e = stack.entries();
        e[n - 1] = entry(uint8_t(next), value);
    }
}

} // namespace vxjson::path

extern "C" {

VXJSON_API int32_t jpath_parse(void *scanner, jlpca_ctx *ctx) {
    return path::parse(*static_cast<path_scanner *>(scanner), ctx, false);
}

VXJSON_API int32_t jpath_error(jlpca_ctx *, const char *) { return -1; }

VXJSON_API int32_t jpath_error_ex(jlpca_ctx *, int32_t code) { return code; }

} // extern "C"
