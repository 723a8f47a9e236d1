// The tool's one way into the library.  Trees and element arrays share one
// heap that is reset between texts, so a stream of documents runs in the
// memory of its largest document; output strings have their own allocator
// because they outlive the trees they are written from.
#include "session.h"

#include <cstdio>

#include "locate.h"
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

bool trail_has(int32_t code) {
    const uint32_t n = elog_trail_count();
    vx_elog_entry e{};
    for (uint32_t i = 0; i < n && elog_trail_get(i, &e) == 0; ++i)
        if (e.code == code) return true;
    return false;
}

}  // namespace

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
    case VXJSON_ERR_QUERY_SCALAR: return "JSON_QUERY without wrapper met a scalar or several values";
    case VXJSON_ERR_VALUE_NOT_SCALAR: return "JSON_VALUE met an object or array";
    case VXJSON_ERR_VALUE_MANY: return "JSON_VALUE met several values";
    case VXJSON_ERR_RETURN_TYPE: return "the result does not fit the returning type";
    case VXJSON_ERR_NOT_DATETIME: return "the string is not a datetime";
    case VXJSON_ERR_NOT_NUMBER: return "the string is not a number";
    case VXJSON_ERR_CAST: return "the value cannot be cast to the returning type";
    default: return "error";
    }
}

session::session(const read_options &opts) : opts_(opts), ctx_(std::make_unique<jlpca_ctx>()) {
    heap_first_ = HEAP_FIRST_BLOCK;
    heap_ = mem_heap_create(heap_first_);
    vx_allocator_init(&out_alloc_, &out_state_);
    out_ = vxstr_create(nullptr, &out_alloc_, OUTPUT_INITIAL);
    if (!heap_) return;
    if (opts_.max_memory) mem_heap_set_byte_limit(heap_, opts_.max_memory);
    vx_allocator_init_heap(&tree_alloc_, heap_);
    init_context();
}

session::~session() {
    jlpca_deinit(ctx_.get());
    vx_allocator_release_all(&out_state_);
    if (heap_) mem_heap_free(heap_);
}

void session::init_context() {
    jlpca_ctx *c = ctx_.get();
    const int32_t strict = opts_.strict >= 0 ? opts_.strict : opts_.compat != 0;
    (void)jlpca_init(nullptr, c, heap_, &tree_alloc_,
                     opts_.keep_escapes ? JLPCA_ESCAPE_KEEP : JLPCA_ESCAPE_DECODE, strict,
                     opts_.unique_keys, opts_.compat);
    if (opts_.scalar_top) c->scalar_top = 1;
    if (opts_.dup_replace) c->dup_key_replace = 1;
    if (opts_.sorted_keys) c->sorted_keys = 1;
}

int32_t session::run(std::string_view text, bool tree, json_node **root) {
    jlpca_ctx *c = ctx_.get();
    if (int32_t rc = jlpca_reinit(c, text.data(), static_cast<uint32_t>(text.size())))
        return rc;
    if (tree) return json_flex(c, root);
    return jcheck_flex(c);
}

int32_t session::read(std::string_view text, json_node **root, read_failure &why) {
    *root = nullptr;
    if (text.size() > TEXT_MAX) return too_large(why);
    const int32_t rc = run(text, true, root);
    return rc == 0 ? 0 : refuse(text, rc, why, true);
}

// The check grammar ignores scalar_top in the standard dialect, and only
// the tree grammar sees repeated names, so those switches need the tree.
int32_t session::check(std::string_view text, read_failure &why) {
    if (text.size() > TEXT_MAX) return too_large(why);
    const bool tree = opts_.unique_keys || (ctx_->scalar_top && ctx_->compat == 0);
    json_node *root = nullptr;
    const int32_t rc = run(text, tree, &root);
    return rc == 0 ? 0 : refuse(text, rc, why, tree);
}

int32_t session::too_large(read_failure &why) {
    why = {VXJSON_ERR_INVALID_JSON, 1, "text too large (4 GB at most)", false};
    return VXJSON_ERR_INVALID_JSON;
}

bool session::out_of_memory(std::string_view text, int32_t rc, bool tree) {
    if (rc == VXJSON_ERR_NOMEM || trail_has(VXJSON_ERR_NOMEM)) return true;
    if (!opts_.max_memory) return false;
    // The reader folds allocation failures into -3105: a text that reads
    // without the limit was refused for its size alone.
    mem_heap_set_byte_limit(heap_, UINT64_MAX);
    json_node *root = nullptr;
    const bool fits_without_limit = run(text, tree, &root) == 0;
    const uint64_t used = mem_heap_bytes_used(heap_);
    mem_heap_set_byte_limit(heap_, used < opts_.max_memory ? opts_.max_memory - used : 0);
    return fits_without_limit;
}

int32_t session::refuse(std::string_view text, int32_t rc, read_failure &why, bool tree) {
    const jlpca_ctx &c = *ctx_;
    why = read_failure{};
    if (out_of_memory(text, rc, tree)) {
        why.code = VXJSON_ERR_NOMEM;
        why.out_of_memory = true;
        why.message = opts_.max_memory ? "out of memory (more than --max-memory)" : "out of memory";
        elog_trail_clear();
        return VXJSON_ERR_NOMEM;
    }
    if (c.err_code < 0) {
        why.code = c.err_code;
        why.message = c.err_msg[0] ? c.err_msg : code_message(c.err_code);
        if (c.err_line) {
            why.line = c.err_line;
        } else {
            // Number errors come from the number helpers, which know no line.
            const bool overflow = c.err_code == VXJSON_ERR_DOUBLE_OVERFLOW;
            why.line = locate_number_error(text, c.strict != 0, overflow).line;
        }
    } else {
        grammar_rules rules;
        rules.strict = c.strict != 0;
        rules.scalar_top = c.compat != 0 || (tree && c.scalar_top);
        rules.unique_keys = c.unique_keys != 0;
        const error_spot spot = locate_syntax_error(text, rules);
        why.code = rc;
        why.line = spot.line;
        why.message = spot.found ? spot.message : "syntax error";
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
    jlpca_ctx *c = ctx_.get();
    const uint32_t flags = w.layout | (w.ascii ? JSON_FMT_ASCII : 0u);
    if (!(w.ascii && w.layout == JSON_FMT_PRETTY_B))
        return json_to_string(c, &out_alloc_, out_, node, flags, 0, 0, JSON_CONV_JSON);
    // The ": " layout is chosen only by the bare flag word 4, so the ASCII
    // pass runs over its finished text (non-ASCII bytes occur only inside
    // names and strings, where \uXXXX means the same).
    if (!scratch_ && !(scratch_ = vxstr_create(nullptr, &out_alloc_, OUTPUT_INITIAL)))
        return VXJSON_ERR_NOMEM;
    vxstr_init(scratch_);
    if (int32_t rc = json_to_string(c, &out_alloc_, scratch_, node, JSON_FMT_PRETTY_B, 0, 0,
                                    JSON_CONV_JSON))
        return rc;
    return json_string_convert_ascii(nullptr, &out_alloc_, out_, 0, scratch_->buf, scratch_->len);
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

void session::reset() {
    const uint64_t used = mem_heap_bytes_used(heap_);
    if (used <= heap_first_ || heap_first_ >= HEAP_FIRST_BLOCK_MAX) {
        mem_heap_reset(heap_);
        return;
    }
    size_t first = heap_first_;
    while (first < used && first < HEAP_FIRST_BLOCK_MAX) first *= 2;
    vx_heap *bigger = mem_heap_create(first);
    if (!bigger) {
        mem_heap_reset(heap_);
        return;
    }
    mem_heap_free(heap_);
    heap_ = bigger;
    heap_first_ = first;
    if (opts_.max_memory) mem_heap_set_byte_limit(heap_, opts_.max_memory);
    vx_allocator_init_heap(&tree_alloc_, heap_);
    ctx_->heap = heap_;
}

}  // namespace vxcli
