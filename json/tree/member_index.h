// member_index.h -- finding members by name in large objects while a text
// is read.
//
// With unique or last-wins names, or sorted keys, each member added must
// find an existing member of its name or its sorted place, and a scan of
// the member list makes an object of n members cost n^2.  While json_flex
// reads, an object that reaches INDEX_FROM members gets an index: a hash of
// its exact names and an ordered map in sorted-key order.  Answers are the
// scan's answers (the same member, the same insertion point), so trees are
// identical; only the time differs.  The index lives for one read, the only
// time nothing else changes the member lists, and it uses the system
// allocator: when that fails the reader simply goes back to scanning.
#ifndef VXJSON_MEMBER_INDEX_H
#define VXJSON_MEMBER_INDEX_H

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "tree_internal.h"
#include "vxjson.h"

namespace vxjson {

// Link a new member named `name` before `before` (NULL: at the end): the
// second half of json_object_add_keyval, after its policies have decided.
int32_t insert_new_member(jlpca_ctx *ctx, json_node *object, const char *name, uint32_t name_len,
                          json_keyval *before, json_keyval **out);

class member_index {
public:
    // Objects smaller than this are scanned: an index would cost more.
    static constexpr uint32_t INDEX_FROM = 32;

    // json_object_add_keyval, answered from an index for large objects.
    int32_t add(jlpca_ctx *ctx, json_node *object, const char *name, uint32_t name_len,
                json_keyval **out);

private:
    // Sorted-key order, exactly as the member scan compares.
    struct sorted_less {
        bool operator()(std::string_view a, std::string_view b) const {
            return name_order(a.data(), uint32_t(a.size()), b.data(), uint32_t(b.size())) < 0;
        }
    };
    struct object_index {
        std::unordered_map<std::string_view, json_keyval *> first_by_name;
        std::multimap<std::string_view, json_keyval *, sorted_less> sorted;
    };

    object_index *index_of(jlpca_ctx *ctx, json_node *object);
    void record(jlpca_ctx *ctx, object_index &ix, json_keyval *kv);

    std::unordered_map<const json_node *, std::unique_ptr<object_index>> objects_;
    bool failed_ = false; // the system allocator said no: scan from now on
};

} // namespace vxjson

#endif
