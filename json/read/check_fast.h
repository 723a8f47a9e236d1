// check_fast.h -- a wide, single-pass well-formedness scan for plain JSON,
// tried by jcheck_flex before the check grammar.
//
// It accepts only a subset on which the scanner and the check grammar are
// known to accept as well: standard JSON with an object or array on top,
// double-quoted strings without control bytes and with short escapes, and
// numbers that cannot raise an overflow error.  Anything else, errors
// included, leaves the answer to the exact rules, which then read the text
// from the start; so codes, messages and error places are theirs alone.
#ifndef VXJSON_CHECK_FAST_H
#define VXJSON_CHECK_FAST_H

#include "vxjson.h"

namespace vxjson::scan {

// True when ctx's text is well-formed under ctx's switches; false when the
// exact rules must decide.  Reads ctx->text only; changes nothing.
bool check_fast(const jlpca_ctx *ctx);

} // namespace vxjson::scan

#endif
