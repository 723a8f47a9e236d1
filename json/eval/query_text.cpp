// JSON_VALUE without the tree.  For a path that names one place by member
// names and single subscripts ($.statuses[0].user.id) the document text is
// walked to that place, checked whole by the check grammar (nothing is
// built), and only the value found there is read:
//
//   {"statuses":[{"text":"..","user":{"id":7, ...}}, ...], ...}
//    ^ "statuses"  ^ [0]      ^ "user" ^ "id"  read "7" alone
//
// Values before the place are skipped by their brackets and quotes; those
// after it are only checked.  Wherever the tree could answer otherwise
// than this plain walk, the caller is sent back to the tree:
//   - a member name with an escape, a NUL or no double quotes (lax) before
//     the match: its stored form might equal the key;
//   - a first match followed by more steps that is no object (or no array
//     before a subscript): the tree then gathers later members of that name;
//   - a step on a value of another type (lax wrapping and unwrapping), no
//     match, a negative or multiple subscript, a container at the end;
//   - readers that keep members otherwise (sorted, last one wins, unique
//     names), the compatibility dialects, and character sets in which a
//     quote byte may belong to a character.
// The walk reads only inside the text, and its answer counts only once the
// check grammar has accepted the whole text.
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "eval_internal.h"
#include "vx_charset.h"

using namespace vxjson::eval;

namespace {

using uchar = unsigned char;

constexpr int32_t USE_TREE = JSON_QUERY_TEXT_USE_TREE;

// The bytes the scanner skips between tokens.
bool is_blank(uchar c) { return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r'; }

bool is_quote(uchar c) { return c == '"' || c == '\''; }

// Bytes that no number or word holds: in a well-formed text one of them
// follows every scalar that is not quoted.
bool ends_scalar(uchar c) {
    return is_blank(c) || is_quote(c) || c == ',' || c == ':' || c == '[' || c == ']' ||
           c == '{' || c == '}' || c == '\0';
}

// The first byte at or after p that is one of Cs, or end: sixteen bytes
// at a time where the machine allows, since skipped values are most of
// what the walk reads.
template <uchar... Cs> const uchar *find_any(const uchar *p, const uchar *end) {
#if defined(__SSE2__)
    while (end - p >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        __m128i hit = _mm_setzero_si128();
        ((hit = _mm_or_si128(hit, _mm_cmpeq_epi8(v, _mm_set1_epi8(char(Cs))))), ...);
        if (const auto m = unsigned(_mm_movemask_epi8(hit))) return p + __builtin_ctz(m);
        p += 16;
    }
#endif
    while (p < end && ((*p != Cs) && ...)) ++p;
    return p;
}

struct text_walk {
    const uchar *p;   // next byte
    const uchar *end; // end of the text

    bool at(uchar c) const { return p < end && *p == c; }

    void blanks() {
        while (p < end && is_blank(*p)) ++p;
    }

    // Past the string whose opening quote is at p; false when the text
    // ends inside it.  A backslash takes the byte after it along.
    bool skip_string() {
        const uchar quote = *p++;
        for (;;) {
            p = quote == '"' ? find_any<'"', '\\'>(p, end) : find_any<'\'', '\\'>(p, end);
            if (p == end) return false;
            if (*p++ == quote) return true;
            if (p++ == end) return false; // the byte a backslash takes along
        }
    }

    bool skip_scalar() {
        const uchar *start = p;
        while (p < end && !ends_scalar(*p)) ++p;
        return p > start;
    }

    // Past the value at p, containers by counting their brackets (no
    // recursion); false when the text ends first.
    bool skip_value() {
        if (p == end) return false;
        if (is_quote(*p)) return skip_string();
        if (*p != '{' && *p != '[') return skip_scalar();
        uint32_t depth = 0;
        for (;;) {
            p = find_any<'"', '\'', '{', '}', '[', ']'>(p, end);
            if (p == end) return false;
            const uchar c = *p;
            if (is_quote(c)) {
                if (!skip_string()) return false;
                continue;
            }
            ++p;
            if (c == '{' || c == '[') ++depth;
            else if (--depth == 0) return true;
        }
    }

    // After a ',' between items: false at anything else (the end of the
    // container included: nothing matched).
    bool next_item() {
        blanks();
        if (!at(',')) return false;
        ++p;
        return true;
    }

    // p at "{": p moves to the value of the first member named by step.
    bool find_member(const jpath_filter *step) {
        ++p;
        for (;;) {
            blanks();
            if (!at('"')) return false; // "}" (no match), or a lax name
            const uchar *name = p + 1, *q = name;
            while (q < end && *q != '"' && *q != '\\' && *q != '\0') ++q;
            if (q == end || *q != '"') return false; // stored otherwise than written
            p = q + 1;
            blanks();
            if (!at(':')) return false;
            ++p;
            blanks();
            const auto len = size_t(q - name);
            if (len == step->key_len && (len == 0 || std::memcmp(name, step->key, len) == 0))
                return true;
            if (!skip_value() || !next_item()) return false;
        }
    }

    // p at "[": p moves to element `index`.
    bool find_element(int64_t index) {
        ++p;
        for (int64_t i = 0;; ++i) {
            blanks();
            if (p == end || *p == ']') return false;
            if (i == index) return true;
            if (!skip_value() || !next_item()) return false;
        }
    }
};

// One subscript, not negative, and no range: the only subscript step that
// picks exactly the element it names, as the tree's walk does.
bool single_position(const jpath_filter *step) {
    const jpath_index *e = step->index_head;
    return step->multi == 0 && e && !e->next && e->end == 0 && e->start >= 0;
}

// Root first (if at all), then member steps and single subscripts.
bool walkable(const jpath *path) {
    for (const jpath_filter *s = path->first_filter; s; s = s->next) {
        if (s->kind == JPATH_STEP_ROOT && s == path->first_filter) continue;
        if (s->kind == STEP_FIELD) continue;
        if (s->kind == STEP_SUBSCRIPT && single_position(s)) continue;
        return false;
    }
    return true;
}

bool plain_reader(const jlpca_ctx *ctx) {
    return ctx->compat == JLPCA_COMPAT_STANDARD && !ctx->unique_keys && !ctx->dup_key_replace &&
           !ctx->sorted_keys && ctx->mb_charset != VX_CHARSET_GB18030 &&
           ctx->mb_charset != VX_CHARSET_EUCKR;
}

// Walk to the place the path names: true with the scalar's text in
// [*from, *to).
bool walk(const jpath *path, const uchar *text, uint32_t len, const uchar **from,
          const uchar **to) {
    text_walk w{text, text + len};
    for (const jpath_filter *s = path->first_filter; s; s = s->next) {
        if (s->kind == JPATH_STEP_ROOT) continue;
        w.blanks();
        const bool found = s->kind == STEP_FIELD ? w.at('{') && w.find_member(s)
                                                 : w.at('[') && w.find_element(s->index_head->start);
        if (!found) return false;
        // A member's first match stands alone before a further step only
        // when the tree's gathering stops at it: an object, or an array
        // before a subscript.
        if (s->kind == STEP_FIELD && s->next &&
            !(w.at('{') || (w.at('[') && s->next->kind == STEP_SUBSCRIPT)))
            return false;
    }
    w.blanks();
    if (w.p == w.end || *w.p == '{' || *w.p == '[') return false;
    *from = w.p;
    if (!(is_quote(*w.p) ? w.skip_string() : w.skip_scalar())) return false;
    *to = w.p;
    return true;
}

} // namespace

extern "C" {

VXJSON_API int32_t json_query_text(jlpca_ctx *ctx, const char *text, uint32_t len,
                                   const jpath *path, json_node **out) {
    *out = nullptr;
    if (!plain_reader(ctx) || !walkable(path)) return USE_TREE;
    const auto *bytes = reinterpret_cast<const uchar *>(text);
    const uchar *from, *to;
    if (!walk(path, bytes, len, &from, &to)) return USE_TREE;
    int32_t rc = jlpca_reinit(ctx, text, len);
    if (rc == 0 && jcheck_flex(ctx) != 0) rc = USE_TREE;
    if (rc) return rc;
    // The scalar alone is a document of its own; it reads as it does in
    // its place.
    if ((rc = jlpca_reinit(ctx, reinterpret_cast<const char *>(from), uint32_t(to - from))))
        return rc;
    const int32_t scalar_top = ctx->scalar_top;
    ctx->scalar_top = 1;
    json_node *node = nullptr;
    rc = json_flex(ctx, &node);
    ctx->scalar_top = scalar_top;
    if (rc == VXJSON_ERR_NOMEM) return rc;
    if (rc || !node || node->type == JSON_OBJECT || node->type == JSON_ARRAY) return USE_TREE;
    *out = node;
    return 0;
}

} // extern "C"
