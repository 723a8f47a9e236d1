// Compiled paths for the path commands: path text compiled once, on a heap
// of its own, so that it outlives the per-document resets of a session.
#ifndef VXJSON_TOOL_QUERY_PATH_H
#define VXJSON_TOOL_QUERY_PATH_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "commands.h"
#include "options.h"
#include "vx_heap.h"
#include "vxjson.h"

namespace vxcli {

class compiled_path {
public:
    compiled_path() = default;
    ~compiled_path();
    compiled_path(const compiled_path &) = delete;
    compiled_path &operator=(const compiled_path &) = delete;

    // Compiles `text` for the dialect and string form of `opts`; false with
    // a message in `error` when it does not compile.
    bool compile(const std::string &text, const read_options &opts, std::string &error);
    // A SQL/JSON function's path takes its clauses as the option word
    // `flag` and `datatype`.
    bool compile(const std::string &text, const read_options &opts, std::string &error,
                 uint32_t flag, uint32_t datatype);
    const jpath *get() const { return &path_; }
    const std::string &text() const { return text_; }

private:
    bool compile_prepared(const std::string &text, std::string &error);
    void start(const std::string &text, const read_options &opts);
    vx_heap *heap_ = nullptr;
    std::unique_ptr<jlpca_ctx> ctx_;
    jpath path_{};
    std::string text_;
};

// Evaluates a path over a document in a dialect: the match (a node of the
// document, or a virtual array of several), NULL when nothing matched, or
// a failure code.
struct query_outcome {
    int32_t code = 0;
    json_node *match = nullptr;
};
// Takes the first positional argument of `cl` as the path text; false
// after saying that `command` needs one.
bool take_path_argument(command_line &cl, const char *command, std::string &text);

query_outcome evaluate_path(jlpca_ctx *ctx, json_node *root, const compiled_path &path);

// Runs `answer` over the tree of every document (NULL for an empty one),
// read in a session opened from `opts`; a document that does not read is
// reported and counted as bad.  With --lines the lines run on --jobs
// threads, each with a session of its own, so whatever `answer` shares
// between documents must be safe to share between threads.
using tree_job =
    std::function<doc_result(session &s, json_node *root, const std::string &name, uint64_t line)>;
int run_trees(const command_line &cl, const read_options &opts, const tree_job &answer);

} // namespace vxcli

#endif
