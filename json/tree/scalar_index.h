// scalar_index.h -- an index over the scalar elements of one array, so that
// containment and overlap of large arrays look each element of one side up
// instead of comparing it with every element of the other.
//
// Scalars that can be equal share a key: numbers (integers and number
// texts alike) the value as a double, strings their bytes, booleans their
// stored value, null one key; dates and datetimes equal nothing and are
// left out.  A lookup only narrows the search: each element with the same
// key is still put to the caller's own test, so every answer is the one the
// element-by-element walk gives, and no test reaches an element that could
// not match.  Containers stay in a list of their own, in element order.
#ifndef VXJSON_SCALAR_INDEX_H
#define VXJSON_SCALAR_INDEX_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "vxjson.h"

namespace vxjson {

class scalar_index {
public:
    // Arrays whose pairs are fewer than this are compared pairwise: below it
    // the index costs more than it saves.
    static constexpr uint64_t MIN_PAIRS = 64;

    // Indexes the listed elements of `array`.  False (use the pairwise walk)
    // when memory is short or a number text has no finite value: comparing
    // such a text reports an error, and those reports must come as the
    // pairwise walk makes them.
    bool build(const json_node *array);

    // The key of scalar `b`; false when it has none that the index can use
    // (a number text without a finite value): then walk the array instead.
    struct index_key {
        uint64_t hash;
        uint32_t kind;
    };
    static bool key_of(const json_node *b, index_key *key);

    // pred(e) for each indexed element e with b's key, in element order,
    // until one holds.
    template <class Pred> bool any_with_key(const index_key &key, Pred &&pred) const {
        for (uint32_t i = heads_[key.hash & mask_]; i != NONE; i = entries_[i].next)
            if (entries_[i].hash == key.hash && entries_[i].kind == key.kind &&
                pred(entries_[i].node))
                return true;
        return false;
    }

    // pred(c) for each object or array element c, in element order, until
    // one holds.
    template <class Pred> bool any_container(Pred &&pred) const {
        for (size_t i = 0; i < containers_count_; i++)
            if (pred(containers_[i])) return true;
        return false;
    }
    bool has_arrays() const { return has_arrays_; }

private:
    static constexpr uint32_t NONE = UINT32_MAX;
    struct index_entry {
        const json_node *node;
        uint64_t hash;
        uint32_t kind;
        uint32_t next; // next entry in the same bucket, in element order
    };
    std::unique_ptr<index_entry[]> entries_;
    std::unique_ptr<uint32_t[]> heads_;
    std::unique_ptr<const json_node *[]> containers_;
    size_t containers_count_ = 0;
    uint64_t mask_ = 0;
    bool has_arrays_ = false;
};

} // namespace vxjson

#endif
