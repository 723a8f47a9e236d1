// Path text compiled for the tool's path commands, and the one place that
// picks the evaluator of a dialect.
#include "query_path.h"

#include "commands.h"

namespace vxcli {

compiled_path::~compiled_path() {
    if (ctx_) jlpca_deinit(ctx_.get());
    if (heap_) mem_heap_free(heap_);
}

void compiled_path::start(const std::string &text, const read_options &opts) {
    text_ = text;
    heap_ = mem_heap_create(0);
    ctx_ = std::make_unique<jlpca_ctx>();
    // Names are compared as the documents store them: with their escapes
    // when the documents keep theirs.
    (void)jlpca_init_simple(nullptr, ctx_.get(), heap_, nullptr,
                            opts.keep_escapes ? JLPCA_ESCAPE_KEEP : JLPCA_ESCAPE_DECODE,
                            opts.compat);
    // Quoted names read as the documents' strings do.
    if (opts.rfc8259) use_std_strings(ctx_.get());
}

bool compiled_path::compile_prepared(const std::string &text, std::string &error) {
    if (!heap_) {
        error = "out of memory";
        return false;
    }
    int32_t rc = jlpca_reinit(ctx_.get(), text.data(), static_cast<uint32_t>(text.size()));
    if (rc == 0) rc = jpath_flex(ctx_.get(), &path_);
    if (rc == 0) return true;
    error = "bad path '" + text + "': error " + std::to_string(rc);
    if (ctx_->err_msg[0]) error += std::string(": ") + ctx_->err_msg;
    return false;
}

bool compiled_path::compile(const std::string &text, const read_options &opts, std::string &error) {
    start(text, opts);
    (void)jpath_init_simple(&path_, opts.compat == JLPCA_COMPAT_MYSQL ? 2 : 0);
    return compile_prepared(text, error);
}

bool compiled_path::compile(const std::string &text, const read_options &opts, std::string &error,
                            uint32_t flag, uint32_t datatype) {
    start(text, opts);
    jpath_init(&path_, flag, datatype, 0, JPATH_DIALECT_STANDARD);
    return compile_prepared(text, error);
}

bool take_path_argument(command_line &cl, const char *command, std::string &text) {
    if (cl.inputs.empty() || cl.inputs.front().is_inline) {
        tool_error(std::string(command) + " needs a PATH before its inputs (try 'vxjson " +
                   command + " --help')");
        return false;
    }
    text = cl.inputs.front().text;
    cl.inputs.erase(cl.inputs.begin());
    return true;
}

query_outcome evaluate_path(jlpca_ctx *ctx, json_node *root, const compiled_path &path) {
    query_outcome r;
    if (ctx->compat == JLPCA_COMPAT_MYSQL) {
        r.code = jpath_filter_mysql(root, path.get(), ctx, 1, &r.match);
    } else {
        r.code = json_query(ctx, root, path.get(), &r.match);
        if (r.code == VXJSON_ERR_PATH_NO_MATCH) r.code = 0;
    }
    return r;
}

int run_trees(const command_line &cl, const read_options &opts, const tree_job &answer) {
    return run_documents(
        cl, opts, [&](session &s, std::string_view text, const std::string &name, uint64_t line) {
            json_node *root = nullptr;
            read_failure why;
            if (s.read(text, &root, why) != 0) return refused(cl, name, line, why);
            return answer(s, root, name, line);
        });
}

} // namespace vxcli
