// Containment and overlap of large arrays go through an index of one
// side's scalars; the element-by-element rule they replace is written out
// here.  On any two documents (the input split at its first NUL byte) the
// exported predicates give the same answers as that rule, in both orders,
// and leave the same error reports behind in the same order.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz_setup.h"
#include "vx_elog.h"

namespace {

enum { PG = 1, OVERLAP = 2, EQUAL = 3 };

bool container(const json_node *n) { return n->type == JSON_OBJECT || n->type == JSON_ARRAY; }

template <class F> bool any_element(const json_node *a, F &&f) {
    const json_node *e = a->lst_first;
    for (uint32_t i = 0; i < a->lst_count && e; i++, e = e->next_sibling)
        if (f(e)) return true;
    return false;
}

template <class F> bool any_member_named(const json_node *a, const json_keyval *kb, F &&f) {
    for (const json_keyval *ka = a->first_member; ka; ka = ka->next)
        if (json_object_keyval_name_equal(ka->name, ka->name_len, kb->name, kb->name_len) &&
            f(ka->value, kb->value))
            return true;
    return false;
}

bool ref_cmp(const json_node *a, const json_node *b, int mode);

bool ref_pg(const json_node *a, const json_node *b) {
    if (a->type != JSON_ARRAY) return ref_cmp(a, b, PG);
    if (b->type == JSON_OBJECT) return false;
    if (b->type == JSON_ARRAY) return ref_cmp(a, b, PG);
    return any_element(a, [&](const json_node *e) { return ref_pg(e, b); });
}

bool ref_mysql(const json_node *a, const json_node *b) {
    if (a->type == JSON_ARRAY) {
        if (b->type != JSON_ARRAY)
            return any_element(a, [&](const json_node *e) { return ref_mysql(e, b); });
        return !any_element(b, [&](const json_node *eb) {
            return !any_element(a, [&](const json_node *ea) { return ref_mysql(ea, eb); });
        });
    }
    if (a->type == JSON_OBJECT) {
        if (b->type != JSON_OBJECT) return false;
        for (const json_keyval *kb = b->first_member; kb; kb = kb->next)
            if (!any_member_named(a, kb, ref_mysql)) return false;
        return true;
    }
    return !container(b) && json_type_is_same(a, b) && json_scalar_value_equal(a, b);
}

bool overlap_simple(const json_node *a, const json_node *b) {
    return any_element(a, [&](const json_node *e) { return json_cmp(e, b, EQUAL) != 0; });
}

bool ref_overlap(const json_node *a, const json_node *b) {
    if (json_type_is_same(a, b)) return ref_cmp(a, b, OVERLAP);
    if (a->type == JSON_ARRAY) return overlap_simple(a, b);
    if (b->type == JSON_ARRAY) return overlap_simple(b, a);
    return false;
}

bool ref_cmp(const json_node *a, const json_node *b, int mode) {
    if (!json_type_is_same(a, b)) return false;
    if (mode == EQUAL || !container(a)) return json_cmp(a, b, EQUAL) != 0;
    auto equal = [](const json_node *x, const json_node *y) { return json_cmp(x, y, EQUAL) != 0; };
    auto pg = [](const json_node *x, const json_node *y) { return ref_cmp(x, y, PG); };
    if (a->type == JSON_OBJECT) {
        for (const json_keyval *kb = b->first_member; kb; kb = kb->next) {
            const bool found =
                mode == PG ? any_member_named(a, kb, pg) : any_member_named(a, kb, equal);
            if (mode == OVERLAP && found) return true;
            if (mode == PG && !found) return false;
        }
        return mode == PG;
    }
    if (mode == OVERLAP)
        return any_element(b, [&](const json_node *eb) { return overlap_simple(a, eb); });
    return !any_element(b, [&](const json_node *eb) {
        return !any_element(a, [&](const json_node *ea) { return ref_cmp(ea, eb, PG); });
    });
}

std::vector<vx_elog_entry> trail() {
    std::vector<vx_elog_entry> t(elog_trail_count() < VX_ELOG_TRAIL_MAX ? elog_trail_count()
                                                                        : VX_ELOG_TRAIL_MAX);
    for (uint32_t i = 0; i < t.size(); i++) elog_trail_get(i, &t[i]);
    return t;
}

bool same(const std::vector<vx_elog_entry> &x, const std::vector<vx_elog_entry> &y) {
    if (x.size() != y.size()) return false;
    for (size_t i = 0; i < x.size(); i++)
        if (x[i].code != y[i].code || x[i].line != y[i].line || std::strcmp(x[i].src, y[i].src))
            return false;
    return true;
}

void agree(const char *what, const json_node *a, const json_node *b,
           int32_t (*fast)(const json_node *, const json_node *),
           bool (*ref)(const json_node *, const json_node *)) {
    elog_trail_clear();
    const bool want = ref(a, b);
    const uint32_t want_count = elog_trail_count();
    const std::vector<vx_elog_entry> want_trail = trail();
    elog_trail_clear();
    const bool got = fast(a, b) != 0;
    if (got != want || elog_trail_count() != want_count || !same(trail(), want_trail)) {
        std::fprintf(stderr, "%s: %d, element by element %d; reports %u, element by element %u\n",
                     what, got, want, elog_trail_count(), want_count);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzEnv env(take_modes(data, size));
    const char *text = reinterpret_cast<const char *>(data);
    const char *cut = static_cast<const char *>(std::memchr(text, 0, size));
    if (!cut) return 0;
    json_node *a = nullptr, *b = nullptr;
    if (jlpca_reinit(env.ctx.get(), text, uint32_t(cut - text)) || json_flex(env.ctx.get(), &a) ||
        !a)
        return 0;
    const size_t rest = size - size_t(cut - text) - 1;
    if (jlpca_reinit(env.ctx.get(), cut + 1, uint32_t(rest)) || json_flex(env.ctx.get(), &b) || !b)
        return 0;
    for (int turn = 0; turn < 2; turn++, std::swap(a, b)) {
        agree("json_contains_pg", a, b, json_contains_pg, ref_pg);
        agree("json_contains_mysql", a, b, json_contains_mysql, ref_mysql);
        agree("json_overlaps_mysql", a, b, json_overlaps_mysql, ref_overlap);
    }
    return 0;
}
