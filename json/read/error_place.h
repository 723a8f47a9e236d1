// error_place.h -- where in the text a read failed, kept in the context's
// second position word (err_aux) so that no caller has to read the text
// again to find it:
//
//   bits 31..29  cause: what failed (below); 0 while nothing failed
//   bits 28..0   byte offset of the failing token from the text's start
//
// Line and column follow from the offset and the text (see
// jlpca_error_position).  Offsets beyond the field's reach (512 MiB) are
// kept as its largest value.  A lexical error always records its place, as
// err_code and err_msg always take the latest one; a grammar error records
// only when nothing did before it, since a lexical error reaches the
// grammar as the end of the text and the grammar's complaint follows from it.
#ifndef VXJSON_ERROR_PLACE_H
#define VXJSON_ERROR_PLACE_H

#include <cstdint>

#include "vxjson.h"

namespace vxjson::place {

enum cause : uint32_t {
    NONE = 0,
    LEXICAL = 1,         // code and message in err_code and err_msg
    SYNTAX = 2,          // a token the grammar cannot take, or a strict-only refusal
    STACK = 3,           // nesting deeper than the grammar's stack
    NO_MEMORY = 4,       // an allocation while building failed
    DUPLICATE_KEY = 5,   // a repeated member name when names must be unique
    SCALAR_DOCUMENT = 6, // a scalar as the whole document
    EMPTY_DOCUMENT = 7,  // an empty text where a document is required
};

inline constexpr uint32_t CAUSE_SHIFT = 29;
inline constexpr uint32_t OFFSET_MAX = (1u << CAUSE_SHIFT) - 1;

inline constexpr uint32_t pack(cause c, uint64_t offset) {
    return uint32_t(c) << CAUSE_SHIFT | uint32_t(offset < OFFSET_MAX ? offset : OFFSET_MAX);
}
inline constexpr cause cause_of(uint32_t aux) { return cause(aux >> CAUSE_SHIFT); }
inline constexpr uint32_t offset_of(uint32_t aux) { return aux & OFFSET_MAX; }

inline uint64_t offset_in(const jlpca_ctx *ctx, const void *at) {
    return uint64_t(static_cast<const char *>(at) - ctx->text);
}

// A lexical error at `at` (a byte of the context's text).
inline void record_lexical(jlpca_ctx *ctx, const void *at) {
    ctx->err_aux = pack(LEXICAL, offset_in(ctx, at));
}

// A grammar error at `at`, unless an earlier error holds the place.
inline void record_grammar(jlpca_ctx *ctx, cause c, const void *at) {
    if (!ctx->err_aux) ctx->err_aux = pack(c, offset_in(ctx, at));
}

} // namespace vxjson::place

namespace vxjson {

// The result of reading an empty text: an error where a document is
// required, success (and nothing read) otherwise.
inline int32_t empty_text(jlpca_ctx *ctx, bool required) {
    ctx->err_aux = required ? place::pack(place::EMPTY_DOCUMENT, 0) : 0;
    return required ? VXJSON_ERR_INVALID_JSON : VXJSON_OK;
}

} // namespace vxjson

#endif
