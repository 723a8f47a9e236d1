// The scalar index of containment and overlap (see scalar_index.h).
#include "scalar_index.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <new>

#include "links.h"
#include "number_text.h"

namespace vxjson {
namespace {

enum : uint32_t { KIND_NUMBER = 1, KIND_STRING, KIND_BOOLEAN, KIND_NULL };

inline uint64_t mix(uint64_t h) {
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdull;
    h ^= h >> 33;
    h *= 0xc4ceb9fe1a85ec53ull;
    return h ^ (h >> 33);
}

uint64_t hash_bytes(const char *p, uint32_t n) {
    uint64_t h = 0x9e3779b97f4a7c15ull ^ n;
    for (; n >= 8; p += 8, n -= 8) {
        uint64_t w;
        std::memcpy(&w, p, 8);
        h = mix(h ^ w);
    }
    uint64_t tail = 0;
    if (n) std::memcpy(&tail, p, n); // an empty string may have no text at all
    return mix(h ^ tail);
}

// The double every number equal to this one has: integers compare with
// number texts through doubles, number texts with each other by text or,
// failing that, by double, and equal texts give equal doubles.
bool number_value(const json_node *n, double *out) {
    if (n->type == JSON_INTEGER) {
        *out = double(n->ival);
        return true;
    }
    const double d = number_to_double(n->str, n->str_len);
    if (!std::isfinite(d)) return false;
    *out = d;
    return true;
}

} // namespace

bool scalar_index::key_of(const json_node *b, index_key *key) {
    switch (b->type) {
    case JSON_INTEGER:
    case JSON_DECIMAL: {
        double d;
        if (!number_value(b, &d)) return false;
        if (d == 0) d = 0; // -0 equals 0
        *key = {mix(std::bit_cast<uint64_t>(d)), KIND_NUMBER};
        return true;
    }
    case JSON_STRING: *key = {hash_bytes(b->str, b->str_len), KIND_STRING}; return true;
    case JSON_BOOLEAN: *key = {mix(b->bval), KIND_BOOLEAN}; return true;
    case JSON_NULL: *key = {0, KIND_NULL}; return true;
    default:
        // Dates and datetimes equal nothing: a key no element has.
        *key = {0, 0};
        return true;
    }
}

bool scalar_index::build(const json_node *array) {
    const uint32_t n = array->lst_count;
    uint64_t buckets = std::bit_ceil(uint64_t(n) * 2 + 1);
    entries_.reset(new (std::nothrow) index_entry[n]);
    heads_.reset(new (std::nothrow) uint32_t[buckets]);
    containers_.reset(new (std::nothrow) const json_node *[n]);
    if (!entries_ || !heads_ || !containers_) return false;
    mask_ = buckets - 1;
    std::memset(heads_.get(), 0xff, buckets * sizeof(uint32_t));
    // Bucket chains keep element order: each bucket remembers its tail.
    std::unique_ptr<uint32_t[]> tails(new (std::nothrow) uint32_t[buckets]);
    if (!tails) return false;
    uint32_t used = 0;
    const bool ok = !any_listed_element(array, [&](const json_node *e) {
        if (e->type == JSON_OBJECT || e->type == JSON_ARRAY) {
            has_arrays_ |= e->type == JSON_ARRAY;
            containers_[containers_count_++] = e;
            return false;
        }
        index_key k;
        if (!key_of(e, &k)) return true; // a number text without a value
        if (k.kind == 0) return false;   // equals nothing
        entries_[used] = {e, k.hash, k.kind, NONE};
        const uint64_t slot = k.hash & mask_;
        if (heads_[slot] == NONE) heads_[slot] = used;
        else entries_[tails[slot]].next = used;
        tails[slot] = used;
        used++;
        return false;
    });
    return ok;
}

} // namespace vxjson
