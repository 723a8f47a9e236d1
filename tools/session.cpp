// The tool's one way into the library.  Trees and element arrays share one
// heap that is reset between texts, so a stream of documents runs in the
// memory of its largest document; output strings have their own allocator
// because they outlive the trees they are written from.
#include "session.h"

#include <cstdio>

#include "error_text.h"
#include "vx_elog.h"

namespace vxcli {

namespace {

constexpr size_t HEAP_FIRST_BLOCK = 64u << 10;
// A heap whose documents outgrow its first block is made again with a
// larger one, up to this size, so large documents stop paying for growth.
constexpr size_t HEAP_FIRST_BLOCK_MAX = 64u << 20;
constexpr uint32_t OUTPUT_INITIAL = 64u << 10;
// The reader keeps lengths in 32 bits and adds a little slack to them.
constexpr size_t TEXT_MAX = UINT32_MAX - 16;
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

bool trail_has(int32_t code) {
    const uint32_t n = elog_trail_count();
    vx_elog_entry e{};
    for (uint32_t i = 0; i < n && elog_trail_get(i, &e) == 0; ++i)
        if (e.code == code) return true;
    return false;
}

} // namespace

const char *code_message(int32_t code) {
    switch (code) {
    case VXJSON_ERR_UNTERMINATED_SQ: return "unterminated quoted string";
    case VXJSON_ERR_LEX: return "lexical error";
    case VXJSON_ERR_NOMEM: return "out of memory";
    case VXJSON_ERR_SYNTAX: return "syntax error";
    case VXJSON_ERR_INVALID_JSON: return "invalid JSON text";
    case VXJSON_ERR_PATH: return "bad path";
    case VXJSON_ERR_PATH_NO_MATCH: return "the path matched nothing";
    case VXJSON_ERR_MULTI_STEP: return "the path may match several values";
    case VXJSON_ERR_CONCAT_SCALAR: return "cannot concatenate an object with a scalar";
    case VXJSON_ERR_DOUBLE_OVERFLOW: return "number overflows a double";
    case VXJSON_ERR_TEXT_PATH_SCALAR: return "a text-array path cannot change a scalar document";
    case VXJSON_ERR_TEXT_PATH_INDEX: return "a path element on an array is not an integer";
    case VXJSON_ERR_REMOVE_SUBSCRIPT: return "a position cannot be removed from a non-array";
    case VXJSON_ERR_QUERY_SCALAR:
        return "JSON_QUERY without wrapper met a scalar or several values";
    case VXJSON_ERR_VALUE_NOT_SCALAR: return "JSON_VALUE met an object or array";
    case VXJSON_ERR_VALUE_MANY: return "JSON_VALUE met several values";
    case VXJSON_ERR_RETURN_TYPE: return "the result does not fit the returning type";
    case VXJSON_ERR_NOT_DATETIME: return "the string is not a datetime";
    case VXJSON_ERR_NOT_NUMBER: return "the string is not a number";
    case VXJSON_ERR_CAST: return "the value cannot be cast to the returning type";
    default: return "error";
    }
}

session::session(const read_options &opts) : opts_(opts) {
    heap_first_ = HEAP_FIRST_BLOCK;
    const int32_t strict = opts_.strict >= 0 ? opts_.strict : opts_.compat != 0;
    const vx_session_options o{heap_first_,
                               1,
                               opts_.keep_escapes ? JLPCA_ESCAPE_KEEP : JLPCA_ESCAPE_DECODE,
                               strict,
                               opts_.unique_keys,
                               opts_.compat};
    vx_allocator_init(&out_alloc_, &out_state_);
    out_ = vxstr_create(nullptr, &out_alloc_, OUTPUT_INITIAL);
    if (vx_session_open(&vs_, &o) != 0) return;
    if (opts_.max_memory) mem_heap_set_byte_limit(vs_.heap, opts_.max_memory);
    set_switches();
}

session::~session() {
    vx_session_close(&vs_);
    vx_allocator_release_all(&out_state_);
}

void session::set_switches() {
    jlpca_ctx *c = vs_.ctx;
    if (opts_.scalar_top) c->scalar_top = 1;
    if (opts_.dup_replace) c->dup_key_replace = 1;
    if (opts_.sorted_keys) c->sorted_keys = 1;
    if (opts_.rfc8259) use_std_strings(c);
    // pg and mysql read a document as their servers store it (jsonb, the
    // MySQL JSON type): members sorted, the last of repeated names kept.
    if (opts_.compat != JLPCA_COMPAT_STANDARD && !opts_.unique_keys) {
        c->sorted_keys = 1;
        c->dup_key_replace = 1;
    }
}

void use_std_strings(jlpca_ctx *ctx) {
    // Cannot fail: the context is there and 1 is a valid setting.
    const int32_t rc = jlpca_set_std_strings(ctx, 1);
    (void)rc;
}

int32_t session::run(std::string_view text, bool tree, json_node **root) {
    jlpca_ctx *c = vs_.ctx;
    if (int32_t rc = jlpca_reinit(c, text.data(), static_cast<uint32_t>(text.size()))) return rc;
    if (tree) return json_flex(c, root);
    return jcheck_flex(c);
}

int32_t session::read(std::string_view text, json_node **root, read_failure &why) {
    *root = nullptr;
    if (text.size() > TEXT_MAX) return too_large(why);
    const int32_t rc = run(text, true, root);
    return rc == 0 ? 0 : refuse(text, rc, why);
}

// The check grammar ignores scalar_top in the standard dialect, and only
// the tree grammar sees repeated names, so those switches need the tree.
int32_t session::check(std::string_view text, read_failure &why) {
    if (text.size() > TEXT_MAX) return too_large(why);
    const bool tree = opts_.unique_keys || (vs_.ctx->scalar_top && vs_.ctx->compat == 0);
    json_node *root = nullptr;
    const int32_t rc = run(text, tree, &root);
    return rc == 0 ? 0 : refuse(text, rc, why);
}

int32_t session::too_large(read_failure &why) {
    why = {VXJSON_ERR_INVALID_JSON, 1, "text too large (4 GB at most)", false};
    return VXJSON_ERR_INVALID_JSON;
}

// Where and why the reader stopped, as it recorded it: the text is never
// read again, so a refusal costs no more memory than the reading did.
int32_t session::refuse(std::string_view text, int32_t rc, read_failure &why) {
    const jlpca_ctx &c = *vs_.ctx;
    why = read_failure{};
    uint32_t offset = 0, line = 1, column = 1;
    const char *message = "";
    const int32_t code = jlpca_error_position(&c, &offset, &line, &column, &message);
    if (rc == VXJSON_ERR_NOMEM || code == VXJSON_ERR_NOMEM || trail_has(VXJSON_ERR_NOMEM)) {
        why.code = VXJSON_ERR_NOMEM;
        why.out_of_memory = true;
        why.message = opts_.max_memory ? "the document needs more memory than --max-memory " +
                                             size_text(opts_.max_memory) + " allows"
                                       : "out of memory";
        elog_trail_clear();
        return VXJSON_ERR_NOMEM;
    }
    why.code = c.err_code < 0 ? c.err_code : rc;
    why.line = line;
    why.column = column;
    if (text.substr(0, 3) == BYTE_ORDER_MARK) {
        // Nothing after a byte-order mark is read: it is the first fault.
        why.line = why.column = 1;
        why.message = "the text starts with a byte-order mark (EF BB BF), which JSON text has not";
    } else if (c.err_code < 0) {
        why.message = message[0] ? message : code_message(c.err_code);
        if (!opts_.rfc8259 && escaped_surrogate_pair_at(text, offset))
            why.message += " (an escaped surrogate pair: accepted with --rfc8259)";
    } else {
        why.message = grammar_error_text(text, offset, message, c.scalar_top || c.compat != 0);
    }
    elog_trail_clear();
    return rc;
}

int32_t session::write(const json_node *node, const write_options &w) {
    const uint32_t mark = out_->len;
    const int32_t rc = write_tree(node, w);
    if (rc != 0) {
        // Drop the partial text so that what was written before stays whole.
        vxstr_init(out_);
        out_->len = mark;
        out_->buf[mark] = '\0';
    }
    return rc;
}

// Always JSON text by the standard table, whatever the dialect: the MySQL
// table keeps what it takes for escapes already present, so a decoded
// backslash would not read back as itself.
int32_t session::write_tree(const json_node *node, const write_options &w) {
    jlpca_ctx *c = vs_.ctx;
    const uint32_t flags = w.layout | (w.ascii ? JSON_FMT_ASCII : 0u);
    if (!(w.ascii && w.layout == JSON_FMT_PRETTY_B))
        return json_to_string(c, &out_alloc_, out_, node, flags, 0, 0, JSON_CONV_JSON);
    // The ": " layout is chosen only by the bare flag word 4, so the ASCII
    // pass runs over its finished text (non-ASCII bytes occur only inside
    // names and strings, where \uXXXX means the same).
    if (!scratch_ && !(scratch_ = vxstr_create(nullptr, &out_alloc_, OUTPUT_INITIAL)))
        return VXJSON_ERR_NOMEM;
    vxstr_init(scratch_);
    if (int32_t rc =
            json_to_string(c, &out_alloc_, scratch_, node, JSON_FMT_PRETTY_B, 0, 0, JSON_CONV_JSON))
        return rc;
    const uint32_t pairs = jlpca_std_strings(c) ? JSON_FMT_ASCII_PAIRS : 0u;
    return json_string_convert_ascii(nullptr, &out_alloc_, out_, pairs, scratch_->buf,
                                     scratch_->len);
}

int32_t session::append(std::string_view bytes) {
    return vxstr_append_with_length(nullptr, &out_alloc_, out_, bytes.data(),
                                    static_cast<uint32_t>(bytes.size()));
}

bool session::flush(uint32_t at_least) {
    if (out_->len <= at_least && at_least != 0) return true;
    if (out_->len && std::fwrite(out_->buf, 1, out_->len, stdout) != out_->len) return false;
    vxstr_init(out_);
    return true;
}

void session::take_output(std::string &into) {
    into.append(out_->buf, out_->len);
    vxstr_init(out_);
}

void session::reset() {
    const uint64_t used = mem_heap_bytes_used(vs_.heap);
    if (used <= heap_first_ || heap_first_ >= HEAP_FIRST_BLOCK_MAX) {
        mem_heap_reset(vs_.heap);
        return;
    }
    size_t first = heap_first_;
    while (first < used && first < HEAP_FIRST_BLOCK_MAX) first *= 2;
    vx_heap *bigger = mem_heap_create(first);
    if (!bigger) {
        mem_heap_reset(vs_.heap);
        return;
    }
    mem_heap_free(vs_.heap);
    vs_.heap = bigger;
    heap_first_ = first;
    if (opts_.max_memory) mem_heap_set_byte_limit(bigger, opts_.max_memory);
    vx_allocator_init_heap(&vs_.alloc, bigger);
    vs_.ctx->heap = bigger;
}

} // namespace vxcli
