// Member lookups for large objects while a text is read (see member_index.h).
#include "member_index.h"

#include <new>

namespace vxjson {

namespace {

std::string_view name_of(const json_keyval *kv) { return {kv->name, kv->name_len}; }

} // namespace

void member_index::record(jlpca_ctx *ctx, object_index &ix, json_keyval *kv) {
    std::string_view name = name_of(kv);
    if (member_finds_existing(ctx)) ix.first_by_name.emplace(name, kv); // keeps the first
    if (ctx->sorted_keys == 1) {
        // Before its equals, as the scan inserts a newcomer before them.
        ix.sorted.emplace_hint(ix.sorted.lower_bound(name), name, kv);
    }
}

member_index::object_index *member_index::index_of(jlpca_ctx *ctx, json_node *object) {
    auto it = objects_.find(object);
    if (it != objects_.end()) return it->second.get();
    auto ix = std::make_unique<object_index>();
    // In list order, so that equal names keep their list order.
    for (json_keyval *kv = object->last_member; kv; kv = kv->prev) {
        if (member_finds_existing(ctx)) ix->first_by_name.insert_or_assign(name_of(kv), kv);
        if (ctx->sorted_keys == 1) ix->sorted.emplace_hint(ix->sorted.begin(), name_of(kv), kv);
    }
    return objects_.emplace(object, std::move(ix)).first->second.get();
}

int32_t member_index::add(jlpca_ctx *ctx, json_node *object, const char *name, uint32_t name_len,
                          json_keyval **out) {
    if (!member_policy_applies(ctx) || failed_ || object->count < INDEX_FROM)
        return json_object_add_keyval(ctx, object, name, name_len, out);
    json_keyval *inserted = nullptr;
    try {
        object_index *ix = index_of(ctx, object);
        std::string_view key(name, name_len);
        if (member_finds_existing(ctx)) {
            auto found = ix->first_by_name.find(key);
            if (found != ix->first_by_name.end()) {
                if (ctx->unique_keys) return VXJSON_ERR_INVALID_JSON;
                *out = found->second;
                return 0;
            }
        }
        json_keyval *before = nullptr;
        if (ctx->sorted_keys == 1) {
            auto at = ix->sorted.lower_bound(key);
            if (at != ix->sorted.end()) before = at->second;
        }
        if (int32_t rc = insert_new_member(ctx, object, name, name_len, before, &inserted))
            return rc;
        *out = inserted;
        record(ctx, *ix, inserted);
        return 0;
    } catch (const std::bad_alloc &) {
        // Scan from now on; a member already linked is seen by the scan.
        failed_ = true;
        objects_.clear();
        if (inserted) return 0;
        return json_object_add_keyval(ctx, object, name, name_len, out);
    }
}

} // namespace vxjson
