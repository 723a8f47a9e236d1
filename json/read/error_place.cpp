// Where the last read of a context failed, as offset, line, column and
// message (see error_place.h for what the reader records).
#include "error_place.h"

#include <algorithm>
#include <cstring>

#include "messages.h"

using namespace vxjson;

namespace {

// The message and code of a cause other than a lexical one.
msg::msg_id message_of(place::cause why) {
    switch (why) {
    case place::STACK: return msg::STACK_EXHAUSTED;
    case place::NO_MEMORY: return msg::NO_MEMORY;
    case place::DUPLICATE_KEY: return msg::DUPLICATE_KEY;
    case place::SCALAR_DOCUMENT: return msg::SCALAR_DOCUMENT;
    case place::EMPTY_DOCUMENT: return msg::EMPTY_DOCUMENT;
    default: return msg::SYNTAX;
    }
}

} // namespace

extern "C" {

VXJSON_API int32_t jlpca_error_position(const jlpca_ctx *ctx, uint32_t *offset, uint32_t *line,
                                        uint32_t *column, const char **message) {
    const place::cause why = place::cause_of(ctx->err_aux);
    uint32_t at = 0, lines = 1, col = 1;
    const char *text = "";
    int32_t code = 0;
    if (why != place::NONE) {
        at = ctx->text ? std::min(place::offset_of(ctx->err_aux), ctx->text_len) : 0;
        // Lines are counted as the scanner counts them: one per line feed.
        const char *begin = ctx->text, *end = ctx->text + at, *line_start = begin;
        for (const char *p = begin; p != end;) {
            const auto *lf = static_cast<const char *>(std::memchr(p, '\n', size_t(end - p)));
            if (!lf) break;
            lines++;
            p = line_start = lf + 1;
        }
        col = uint32_t(end - line_start) + 1;
        if (why == place::LEXICAL) {
            text = ctx->err_msg;
            code = ctx->err_code;
        } else {
            text = msg::text(message_of(why));
            code = msg::code(message_of(why));
        }
    }
    if (offset) *offset = at;
    if (line) *line = lines;
    if (column) *column = col;
    if (message) *message = text;
    return code;
}

} // extern "C"
