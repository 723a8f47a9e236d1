// Writing a tree as JSON text: one recursive family that dispatches on the
// node type, with every name and string going through the string
// conversion of escape.cpp.
//
// The family is instantiated once per layout (compact, pretty A, pretty B)
// so that compact writing, the common case, carries no layout tests, and it
// writes through a cursor into the output string, checking room once per
// piece rather than once per byte.
#include <array>
#include <bit>
#include <cstring>
#include <type_traits>

#include "escape_internal.h"
#include "report.h"
#include "report_sites.h"
#include "vxtime.h"

namespace vxjson {
namespace {

// Call sites named in error reports.
constexpr int32_t LINE_MEMBER = site::WRITE_MEMBER;
constexpr int32_t LINE_MEMBER_VALUE = site::WRITE_MEMBER_VALUE;
constexpr int32_t LINE_ELEMENT = site::WRITE_ELEMENT;
constexpr int32_t LINE_ARRAY = site::WRITE_ARRAY;

enum class layout { compact, a, b };

template <layout L> using layout_t = std::integral_constant<layout, L>;

struct writer {
    out_buf o;
    charset_cache cs;
    uint32_t flags;
    bool keep; // escape_mode != 0: string text is in source form
};

// The small writes do not report: a write that finds no room marks the
// output string failed, and from then on every write is a no-op (the
// buffer keeps no room), so each entry point checks the mark once at the
// end.  Values still hand their own errors up at once, each container
// level reporting them.

// A line feed and two blanks per level.
inline void indent(writer &w, uint32_t level) {
    const size_t n = 1 + 2 * size_t(level);
    if (!w.o.ensure(n)) return;
    w.o.p[0] = '\n';
    std::memset(w.o.p + 1, ' ', n - 1);
    w.o.p += n;
}

inline void put(writer &w, const char *text, size_t n) {
    if (w.o.ensure(n)) w.o.put(text, n);
}

inline void put(writer &w, char c) {
    if (w.o.ensure(1)) w.o.put(c);
}

inline bool is_container(const json_node *n) {
    return n && (n->type == JSON_OBJECT || n->type == JSON_ARRAY);
}

// Names and member values are escaped for JSON when strings are decoded in
// the tree, and written as stored when they are kept in source form.
inline uint8_t member_conv(const writer &w) { return w.keep ? JSON_CONV_NONE : JSON_CONV_JSON; }

// Pairs of decimal digits, "00" to "99".
constexpr std::array<char, 200> make_digit_pairs() {
    std::array<char, 200> t{};
    for (int i = 0; i < 100; ++i) {
        t[2 * i] = char('0' + i / 10);
        t[2 * i + 1] = char('0' + i % 10);
    }
    return t;
}
inline constexpr std::array<char, 200> DIGIT_PAIRS = make_digit_pairs();

// Digits of u, from its bit length: 1233 / 4096 approximates log10(2).
inline unsigned decimal_digits(uint64_t u) {
    static constexpr uint64_t POW10[20] = {1ull,
                                           10ull,
                                           100ull,
                                           1000ull,
                                           10000ull,
                                           100000ull,
                                           1000000ull,
                                           10000000ull,
                                           100000000ull,
                                           1000000000ull,
                                           10000000000ull,
                                           100000000000ull,
                                           1000000000000ull,
                                           10000000000000ull,
                                           100000000000000ull,
                                           1000000000000000ull,
                                           10000000000000000ull,
                                           100000000000000000ull,
                                           1000000000000000000ull,
                                           10000000000000000000ull};
    u |= 1; // 0 has one digit; no power of ten is odd, so no count changes
    const unsigned bits = 64 - unsigned(std::countl_zero(u));
    const unsigned n = (bits * 1233) >> 12;
    return n + (u >= POW10[n]);
}

// Two digits per step from the back; values that fit 32 bits, nearly all
// of them, take the cheaper 32-bit division.
template <class U> inline void put_digits(char *end, U u) {
    while (u >= 100) {
        const unsigned r = unsigned(u % 100);
        u /= 100;
        end -= 2;
        std::memcpy(end, &DIGIT_PAIRS[2 * r], 2);
    }
    if (u >= 10) std::memcpy(end - 2, &DIGIT_PAIRS[2 * unsigned(u)], 2);
    else end[-1] = char('0' + unsigned(u));
}

// The text of v as "%lld" writes it; 20 bytes of room.
inline char *format_int(char *p, int64_t v) {
    uint64_t u = uint64_t(v);
    if (v < 0) {
        *p++ = '-';
        u = 0 - u;
    }
    p += decimal_digits(u);
    if (u <= UINT32_MAX) put_digits(p, uint32_t(u));
    else put_digits(p, u);
    return p;
}

int32_t scalar(writer &w, const json_node *node) {
    switch (node->type) {
    case JSON_INTEGER: {
        if (w.o.ensure(20)) w.o.p = format_int(w.o.p, node->ival);
        return 0;
    }
    case JSON_DECIMAL:
    case JSON_STRING:
        return convert_into(w.o, w.cs, w.flags, node->str, node->str_len, 0, JSON_CONV_NONE);
    case JSON_BOOLEAN:
        if (node->bval) put(w, "true", 4);
        else put(w, "false", 5);
        return 0;
    case JSON_NULL: put(w, "null", 4); return 0;
    case JSON_DATE:
    case JSON_DATETIME: {
        char text[VXTIME_TEXT_MAX];
        const int32_t rc = vxtime_to_char(
            &node->dt, 16, node->type == JSON_DATE ? VXTIME_FMT_DATE : VXTIME_FMT_ISO, text);
        if (rc < 0) return rc;
        if (w.o.ensure(size_t(rc) + 2)) {
            w.o.put('"');
            w.o.put(text, size_t(rc));
            w.o.put('"');
        }
        return rc;
    }
    default: return VXJSON_ERR_INVALID_JSON;
    }
}

template <layout L>
int32_t value(writer &w, const json_node *node, uint32_t level, uint32_t newline_first,
              uint8_t conv);

template <layout L> int32_t object(writer &w, const json_node *node, uint32_t level) {
    put(w, '{');
    const json_keyval *kv = node->first_member;
    if (!kv) {
        if (L == layout::a) indent(w, level);
        put(w, '}');
        return 0;
    }
    const uint8_t conv = member_conv(w);
    for (; kv; kv = kv->next) {
        if (L != layout::compact) indent(w, level + 1);
        int32_t rc = convert_into(w.o, w.cs, w.flags, kv->name, kv->name_len, 1, conv);
        if (rc < 0) return report_json(rc, LINE_MEMBER);
        if constexpr (L == layout::a) put(w, " : ", 3);
        else if constexpr (L == layout::b) put(w, ": ", 2);
        else put(w, ':');
        rc = value<L>(w, kv->value, level + 1, L == layout::a && is_container(kv->value), conv);
        if (rc < 0) return report_json(rc, LINE_MEMBER_VALUE);
        if (kv->next) put(w, ',');
    }
    if (L != layout::compact) indent(w, level);
    put(w, '}');
    return 0;
}

template <layout L>
int32_t items(writer &w, const json_node *node, uint32_t level, uint32_t newline_first,
              uint8_t conv) {
    // An array whose element list was never converted has no items yet.
    const uint32_t count = node->items ? node->count : 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (i) put(w, ',');
        const int32_t rc = value<L>(w, node->items[i], level, newline_first, conv);
        if (rc < 0) return report_json(rc, LINE_ELEMENT);
    }
    return 0;
}

template <layout L> int32_t array(writer &w, const json_node *node, uint32_t level) {
    put(w, '[');
    const int32_t rc = items<L>(w, node, level + 1, 1, member_conv(w));
    if (rc < 0) return report_json(rc, LINE_ARRAY);
    if (L == layout::a || (L == layout::b && node->items && node->count)) indent(w, level);
    put(w, ']');
    return 0;
}

template <layout L>
int32_t value(writer &w, const json_node *node, uint32_t level, uint32_t newline_first,
              uint8_t conv) {
    if (!node) return VXJSON_ERR_INVALID_JSON;
    if (L != layout::compact && newline_first) indent(w, level);
    switch (node->type) {
    case JSON_ARRAY: return array<L>(w, node, level);
    case JSON_OBJECT: return object<L>(w, node, level);
    case JSON_STRING: {
        // A decoded string is escaped for JSON output and left alone for
        // plain output; a string kept in source form the other way round; a
        // string that never held an escape is written as it is.
        uint8_t c = conv;
        if (!node->str_flags) c = JSON_CONV_NONE;
        else if (!w.keep ? conv == JSON_CONV_PLAIN : conv == JSON_CONV_JSON) c = JSON_CONV_NONE;
        return convert_into(w.o, w.cs, w.flags, node->str, node->str_len, conv != JSON_CONV_PLAIN,
                            c);
    }
    default: return scalar(w, node);
    }
}

// ------------------------------------------------------------------
// Compact text without recursion
// ------------------------------------------------------------------

// The compact layout of a container, the common case, in one loop with the
// output cursor in locals and the open containers on a small stack.  It
// writes the same bytes as value<compact>, asks the output for room in the
// same amounts and order (so a failing allocation strikes at the same
// place), and reports failures at the same sites, innermost first.
// Containers nested deeper than the stack go to value<compact>.
class compact_writer {
public:
    explicit compact_writer(writer &w) : w_(w), p_(w.o.p), end_(w.o.end) {}

    int32_t run(const json_node *root);

private:
    static constexpr uint32_t DEPTH = 64; // beyond this, value<compact> recurses

    struct frame {
        const json_node *node;  // the open container
        const json_keyval *kv;  // object: the member being written
        uint32_t i;             // array: the element being written
    };

    bool room(size_t n) {
        if (size_t(end_ - p_) >= n) [[likely]]
            return true;
        return grow(n);
    }
    [[gnu::noinline]] bool grow(size_t n) {
        w_.o.p = p_;
        const bool ok = w_.o.grow(n);
        load();
        return ok;
    }
    void load() {
        p_ = w_.o.p;
        end_ = w_.o.end;
    }
    void put(char c) {
        if (room(1)) *p_++ = c;
    }
    void put(const char *text, size_t n) {
        if (room(n)) {
            std::memcpy(p_, text, n);
            p_ += n;
        }
    }
    // convert_into for text escaped by the standard table or written as
    // stored, quoted: its room request, its bytes, its failure.
    int32_t text(const char *t, uint32_t len, uint8_t conv) {
        const bool esc = conv == JSON_CONV_JSON;
        if (!room((esc ? 2 * size_t(len) + ESCAPE_SLACK : len) + 2)) return NOMEM;
        *p_++ = '"';
        if (esc) {
            p_ = escape_std(reinterpret_cast<const unsigned char *>(t), len, p_, w_.cs);
        } else if (len) {
            std::memcpy(p_, t, len);
            p_ += len;
        }
        *p_++ = '"';
        return 0;
    }
    // A value inside a container: 0, or the failure the container reports.
    int32_t scalar_value(const json_node *n, uint8_t conv);
    // A value that another writer writes: the cursor goes over and back.
    template <class F> int32_t elsewhere(F &&f) {
        w_.o.p = p_;
        const int32_t rc = f();
        load();
        return rc;
    }

    writer &w_;
    char *p_;
    char *end_;
};

int32_t compact_writer::scalar_value(const json_node *n, uint8_t conv) {
    switch (n->type) {
    case JSON_INTEGER:
        if (room(20)) p_ = format_int(p_, n->ival);
        return 0;
    case JSON_STRING: {
        // As value<compact> chooses: see there.
        uint8_t c = conv;
        if (!n->str_flags || (!w_.keep ? conv == JSON_CONV_PLAIN : conv == JSON_CONV_JSON))
            c = JSON_CONV_NONE;
        return text(n->str, n->str_len, c);
    }
    case JSON_DECIMAL:
        if (!room(size_t(n->str_len) + 2)) return NOMEM;
        if (n->str_len) {
            std::memcpy(p_, n->str, n->str_len);
            p_ += n->str_len;
        }
        return 0;
    case JSON_BOOLEAN:
        if (n->bval) put("true", 4);
        else put("false", 5);
        return 0;
    case JSON_NULL: put("null", 4); return 0;
    default: return elsewhere([&] { return scalar(w_, n); });
    }
}

int32_t compact_writer::run(const json_node *root) {
    frame st[DEPTH];
    uint32_t d = 0;
    const uint8_t conv = member_conv(w_);
    const json_node *n = root; // the value to write next
    int32_t rc = 0;

open: // n is a container
    if (n->type == JSON_ARRAY) {
        put('[');
        if (!n->items || n->count == 0) {
            put(']');
            goto written;
        }
        st[d++] = frame{n, nullptr, 0};
        n = n->items[0];
        goto value;
    }
    put('{');
    if (!n->first_member) {
        put('}');
        goto written;
    }
    st[d++] = frame{n, n->first_member, 0};
member:
    if ((rc = text(st[d - 1].kv->name, st[d - 1].kv->name_len, conv)) < 0) {
        report_json(rc, LINE_MEMBER);
        goto unwind;
    }
    put(':');
    n = st[d - 1].kv->value;
value:
    if (!n) {
        rc = VXJSON_ERR_INVALID_JSON;
        goto failed;
    }
    if (n->type == JSON_ARRAY || n->type == JSON_OBJECT) {
        if (d < DEPTH) goto open;
        rc = elsewhere([&] { return value<layout::compact>(w_, n, 0, 0, conv); });
    } else {
        rc = scalar_value(n, conv);
    }
    if (rc < 0) goto failed;
written: // the value n is complete: on to the next item of its container
    if (d == 0) {
        w_.o.p = p_;
        return 0;
    }
    {
        frame &f = st[d - 1];
        if (f.node->type == JSON_ARRAY) {
            if (++f.i < f.node->count) {
                put(',');
                n = f.node->items[f.i];
                goto value;
            }
            put(']');
        } else {
            if (f.kv->next) {
                put(',');
                f.kv = f.kv->next;
                goto member;
            }
            put('}');
        }
        --d;
        goto written;
    }

failed: // the value in the innermost container failed with rc
    if (st[d - 1].node->type == JSON_ARRAY) {
        report_json(rc, LINE_ELEMENT);
        report_json(rc, LINE_ARRAY);
    } else {
        report_json(rc, LINE_MEMBER_VALUE);
    }
unwind: // the innermost container has reported; each enclosing one does
    while (--d > 0) {
        if (st[d - 1].node->type == JSON_ARRAY) {
            report_json(rc, LINE_ELEMENT);
            report_json(rc, LINE_ARRAY);
        } else {
            report_json(rc, LINE_MEMBER_VALUE);
        }
    }
    w_.o.p = p_;
    return rc;
}

// Bytes that the text of `node` will take at `level`, counting strings as
// stored and integers at their widest: enough in all but heavily escaped
// documents, so the output is reserved once instead of growing through
// copies of itself.
template <layout L> size_t estimate(const json_node *node, uint32_t level) {
    constexpr bool pretty = L != layout::compact;
    const size_t line = pretty ? 2 + 2 * size_t(level) : 0; // line feed, blanks, one spare
    switch (node ? node->type : 9u) {
    case JSON_OBJECT: {
        size_t n = 2 + line;
        for (const json_keyval *kv = node->first_member; kv; kv = kv->next)
            n += kv->name_len + 6 + 2 * line + estimate<L>(kv->value, level + 1);
        return n;
    }
    case JSON_ARRAY: {
        size_t n = 2 + line;
        const uint32_t count = node->items ? node->count : 0;
        for (uint32_t i = 0; i < count; ++i) n += 3 + line + estimate<L>(node->items[i], level + 1);
        return n;
    }
    case JSON_STRING:
    case JSON_DECIMAL: return node->str_len + 2;
    case JSON_INTEGER: return 20;
    case JSON_DATE:
    case JSON_DATETIME: return VXTIME_TEXT_MAX;
    default: return 8;
    }
}

// Reserves the output of a container once, so that a large document is not
// copied through a series of ever larger buffers.  Compact text of the tree
// that the context has just read is about as long as the text read (blanks
// gone, escapes as in the source); otherwise a walk over the tree says how
// much room the text takes, which costs less than the copies it saves.
template <layout L>
bool reserve_for(writer &w, const jlpca_ctx *ctx, const json_node *node, uint32_t level) {
    // Past this the estimate may be far off; growth handles the rest.
    constexpr size_t RESERVE_MAX = size_t(1) << 30;
    if (!is_container(node)) return true;
    size_t want;
    if (L == layout::compact) {
        if (!ctx || node != ctx->first_node) return true;
        want = size_t(ctx->text_len) + 64;
    } else {
        want = estimate<L>(node, level);
    }
    return want > RESERVE_MAX || w.o.ensure(want);
}

// The end of every entry point: the text so far stored, and a write that
// found no room turned into the result.
int32_t finish(writer &w, int32_t rc) {
    w.o.finish();
    return rc >= 0 && w.o.s->failed ? NOMEM : rc;
}

// Runs `f` with the layout that the flag word selects: bit 1 is layout A
// whatever else is set, layout B only when the whole word is 4.
template <class F> int32_t with_layout(writer &w, F &&f) {
    int32_t rc;
    if (w.flags & JSON_FMT_PRETTY_A) rc = f(layout_t<layout::a>{});
    else if (w.flags == JSON_FMT_PRETTY_B) rc = f(layout_t<layout::b>{});
    else rc = f(layout_t<layout::compact>{});
    return finish(w, rc);
}

writer make_writer(jlpca_ctx *ctx, vx_allocator *allocator, vxstr *string, uint32_t flags) {
    // A context that reads standard strings writes them too: a character
    // beyond U+FFFF keeps both halves of its \u pair.
    if (ctx && ctx->std_strings == 1 && (flags & JSON_FMT_ASCII)) flags |= JSON_FMT_ASCII_PAIRS;
    return writer{out_buf(ctx ? ctx->env : nullptr, allocator, string), charset_cache{}, flags,
                  ctx && ctx->escape_mode != JLPCA_ESCAPE_DECODE};
}

} // namespace
} // namespace vxjson

using namespace vxjson;

VXJSON_API int32_t json_to_string(jlpca_ctx *ctx, vx_allocator *allocator, vxstr *string,
                                  const json_node *node, uint32_t flags, uint32_t level,
                                  uint32_t newline_first, uint8_t conv) {
    if (string->failed) return NOMEM;
    writer w = make_writer(ctx, allocator, string, flags);
    return with_layout(w, [&](auto l) {
        constexpr layout L = decltype(l)::value;
        if (!reserve_for<L>(w, ctx, node, level)) return NOMEM;
        if constexpr (L == layout::compact) {
            if (is_container(node) && !(w.flags & JSON_FMT_ASCII))
                return compact_writer(w).run(node);
        }
        return value<L>(w, node, level, newline_first, conv);
    });
}

VXJSON_API int32_t json_object_to_string(jlpca_ctx *ctx, vx_allocator *allocator, vxstr *string,
                                         const json_node *node, uint32_t flags, uint32_t level) {
    if (string->failed) return NOMEM;
    writer w = make_writer(ctx, allocator, string, flags);
    return with_layout(w, [&](auto l) { return object<decltype(l)::value>(w, node, level); });
}

VXJSON_API int32_t json_array_to_string(jlpca_ctx *ctx, vx_allocator *allocator, vxstr *string,
                                        const json_node *node, uint32_t flags, uint32_t level) {
    if (string->failed) return NOMEM;
    writer w = make_writer(ctx, allocator, string, flags);
    return with_layout(w, [&](auto l) { return array<decltype(l)::value>(w, node, level); });
}

VXJSON_API int32_t json_array_items_to_string(jlpca_ctx *ctx, vx_allocator *allocator,
                                              vxstr *string, const json_node *node, uint32_t flags,
                                              uint32_t level, uint32_t newline_first,
                                              uint8_t conv) {
    if (string->failed) return NOMEM;
    writer w = make_writer(ctx, allocator, string, flags);
    return with_layout(
        w, [&](auto l) { return items<decltype(l)::value>(w, node, level, newline_first, conv); });
}

// A date or datetime returns the length of its text; every other scalar 0.
VXJSON_API int32_t json_scalar_to_string(void *env, vx_allocator *allocator, vxstr *string,
                                         const json_node *node, uint32_t flags) {
    if (string->failed) return NOMEM;
    if (!node) return VXJSON_ERR_INVALID_JSON;
    writer w{out_buf(env, allocator, string), charset_cache{}, flags, false};
    return finish(w, scalar(w, node));
}
