// links.h -- walking and relinking the two list forms of the value tree, for
// the units that compare, merge and strip trees.
//
// The predicates walk an array's element list (lst_first / next_sibling, as
// the reader and json_mem_copy leave it), bounded by lst_count so that a
// list whose tail was later relinked by a path change is still read as it
// was built.  The merges move object members between lists in place.
#ifndef VXJSON_LINKS_H
#define VXJSON_LINKS_H

#include <cstdint>

#include "vxjson.h"

namespace vxjson {

// Put `item` at the end of a doubly linked list kept as first, last and
// count, linking it through its Prev and Next members: the one append of
// the tree's element and member lists and of evaluation's result lists.
template <auto Prev, auto Next, class T, class Count>
inline void append_linked(T *&first, T *&last, Count &count, T *item) {
    item->*Prev = last;
    item->*Next = nullptr;
    if (last) last->*Next = item;
    else first = item;
    last = item;
    count++;
}

// True when pred holds for some element of the array's element list.
template <class Pred> bool any_listed_element(const json_node *array, Pred &&pred) {
    const json_node *e = array->lst_first;
    for (uint32_t i = 0; i < array->lst_count && e; i++, e = e->next_sibling)
        if (pred(e)) return true;
    return false;
}

// True when pred holds for every element of the array's element list.
template <class Pred> bool all_listed_elements(const json_node *array, Pred &&pred) {
    return !any_listed_element(array, [&](const json_node *e) { return !pred(e); });
}

// Take a member out of an object's list; count and both ends kept right.
inline void member_unlink(json_node *object, json_keyval *kv) {
    if (kv->prev) kv->prev->next = kv->next;
    else object->first_member = kv->next;
    if (kv->next) kv->next->prev = kv->prev;
    else object->last_member = kv->prev;
    kv->prev = kv->next = nullptr;
    object->count--;
}

// Put a member at the end of an object's list.
inline void member_append(json_node *object, json_keyval *kv) {
    append_linked<&json_keyval::prev, &json_keyval::next>(object->first_member,
                                                          object->last_member, object->count, kv);
}

// Put a member just before `at`, which is in the object's list.
inline void member_insert_before(json_node *object, json_keyval *at, json_keyval *kv) {
    kv->next = at;
    kv->prev = at->prev;
    if (at->prev) at->prev->next = kv;
    else object->first_member = kv;
    at->prev = kv;
    object->count++;
}

} // namespace vxjson

#endif
