// Containment (PostgreSQL @> and MySQL JSON_CONTAINS) and overlap (MySQL
// JSON_OVERLAPS).  All of them are predicates: 1 or 0, never an error; a
// number that cannot be compared simply does not match.
//
// The two containment dialects differ in how far a scalar is looked for:
// PostgreSQL finds a scalar candidate in nested arrays at any depth only at
// the top (json_contains_pg re-enters itself per element), while array
// elements are matched one level at a time by json_cmp; MySQL re-enters its
// full test for every element and every candidate element.
//
// Arrays with many pairs of elements are matched through an index of one
// side's scalars (scalar_index.h); the answers, and the order in which
// elements that can match are tried, stay those of the pairwise walk.
#include "links.h"
#include "scalar_index.h"
#include "vxjson.h"

using namespace vxjson;

namespace {

// Some member of a has kb's name (any of them, when the reader kept
// duplicates) and a value satisfying pred(value of a, value of kb).
template <class Pred>
bool has_matching_member(const json_node *a, const json_keyval *kb, Pred &&pred) {
    for (const json_keyval *ka = a->first_member; ka; ka = ka->next)
        if (json_object_keyval_name_equal(ka->name, ka->name_len, kb->name, kb->name_len) &&
            pred(ka->value, kb->value))
            return true;
    return false;
}

template <class Pred>
bool every_member_matched(const json_node *a, const json_node *b, Pred &&pred) {
    for (const json_keyval *kb = b->first_member; kb; kb = kb->next)
        if (!has_matching_member(a, kb, pred)) return false;
    return true;
}

bool is_container(const json_node *n) { return n->type == JSON_OBJECT || n->type == JSON_ARRAY; }

// Some element of a matches eb by pred(element of a, eb).  A scalar never
// matches a container nor a container a scalar, so the index offers only
// the elements that can.  `deep`: pred also looks for a scalar inside a's
// nested arrays, which the index does not hold; then a scalar is matched
// by the walk.
template <class Pred>
bool some_element_matches(const scalar_index *index, const json_node *a, const json_node *eb,
                          Pred &pred, bool deep) {
    auto against = [&](const json_node *ea) { return pred(ea, eb) != 0; };
    if (!index) return any_listed_element(a, against);
    if (is_container(eb)) return index->any_container(against);
    scalar_index::index_key key;
    if ((deep && index->has_arrays()) || !scalar_index::key_of(eb, &key))
        return any_listed_element(a, against);
    return index->any_with_key(key, against);
}

// Runs walk(index or null) with an index of a's scalars when a and b have
// enough pairs of elements to pay for it and the index can be built.
template <class Walk> bool with_index(const json_node *a, const json_node *b, Walk &&walk) {
    if (uint64_t(a->lst_count) * b->lst_count >= scalar_index::MIN_PAIRS) {
        scalar_index index;
        if (index.build(a)) return walk(&index);
    }
    return walk(nullptr);
}

// Every element of b matches some element of a by pred(element of a,
// element of b); order and repetition do not matter.
template <class Pred>
bool every_element_matched(const json_node *a, const json_node *b, Pred &&pred, bool deep) {
    return with_index(a, b, [&](const scalar_index *index) {
        return all_listed_elements(
            b, [&](const json_node *eb) { return some_element_matches(index, a, eb, pred, deep); });
    });
}

bool contains_pg_by_cmp(const json_node *a, const json_node *b) {
    return json_cmp(a, b, JSON_CMP_CONTAINS_PG);
}

bool equal_by_cmp(const json_node *a, const json_node *b) { return json_cmp(a, b, JSON_CMP_EQUAL); }

bool contains_mysql(const json_node *a, const json_node *b) { return json_contains_mysql(a, b); }

bool is_scalar(const json_node *n) { return !is_container(n); }

} // namespace

extern "C" {

VXJSON_API int32_t json_contains_pg(const json_node *a, const json_node *b) {
    if (a->type != JSON_ARRAY) return json_cmp(a, b, JSON_CMP_CONTAINS_PG);
    if (b->type == JSON_OBJECT) return 0;
    if (b->type == JSON_ARRAY) return json_contains_pg_array(a, b);
    return json_contains_pg_array_simple(a, b);
}

VXJSON_API int32_t json_contains_pg_array_simple(const json_node *a, const json_node *b) {
    return any_listed_element(a, [&](const json_node *e) { return json_contains_pg(e, b); });
}

VXJSON_API int32_t json_contains_pg_object(const json_node *a, const json_node *b) {
    return every_member_matched(a, b, contains_pg_by_cmp);
}

VXJSON_API int32_t json_contains_pg_array(const json_node *a, const json_node *b) {
    return every_element_matched(a, b, contains_pg_by_cmp, false);
}

VXJSON_API int32_t json_contains_mysql(const json_node *a, const json_node *b) {
    if (a->type == JSON_ARRAY) return json_contains_mysql_array(a, b);
    if (a->type == JSON_OBJECT) return b->type == JSON_OBJECT && json_contains_mysql_object(a, b);
    return is_scalar(b) && json_type_is_same(a, b) && json_scalar_value_equal(a, b);
}

VXJSON_API int32_t json_contains_mysql_array(const json_node *a, const json_node *b) {
    if (b->type != JSON_ARRAY)
        return any_listed_element(a, [&](const json_node *e) { return contains_mysql(e, b); });
    return every_element_matched(a, b, contains_mysql, true);
}

VXJSON_API int32_t json_contains_mysql_object(const json_node *a, const json_node *b) {
    return every_member_matched(a, b, contains_mysql);
}

VXJSON_API int32_t json_overlaps_mysql(const json_node *a, const json_node *b) {
    if (json_type_is_same(a, b)) return json_cmp(a, b, JSON_CMP_OVERLAPS_MYSQL);
    if (a->type == JSON_ARRAY) return json_overlaps_mysql_array_simple(a, b);
    if (b->type == JSON_ARRAY) return json_overlaps_mysql_array_simple(b, a);
    return 0;
}

VXJSON_API int32_t json_overlaps_mysql_object(const json_node *a, const json_node *b) {
    for (const json_keyval *kb = b->first_member; kb; kb = kb->next)
        if (has_matching_member(a, kb, equal_by_cmp)) return 1;
    return 0;
}

VXJSON_API int32_t json_overlaps_mysql_array(const json_node *a, const json_node *b) {
    return with_index(a, b, [&](const scalar_index *index) {
        return any_listed_element(b, [&](const json_node *eb) {
            return some_element_matches(index, a, eb, equal_by_cmp, false);
        });
    });
}

VXJSON_API int32_t json_overlaps_mysql_array_simple(const json_node *a, const json_node *b) {
    // One level only: [[1]] and 1 do not overlap.
    return any_listed_element(a, [&](const json_node *e) { return equal_by_cmp(e, b); });
}

} // extern "C"
