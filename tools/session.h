// One reading and writing session over the library: a parse context set up
// from the reading switches, the heap its trees live in, and the growable
// string the output is assembled in.
#ifndef VXJSON_TOOL_SESSION_H
#define VXJSON_TOOL_SESSION_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "options.h"
#include "vx_session.h"
#include "vxstr.h"

namespace vxcli {

// Why a text was refused.
struct read_failure {
    int32_t code = 0;  // err_code when the scanner set one, else the result
    uint32_t line = 1; // line within the text, from 1
    std::string message;
    bool out_of_memory = false; // the library ran out of memory (-503)
    uint32_t column = 0;        // column within the line, from 1; 0 unknown
};

class session {
public:
    explicit session(const read_options &opts);
    ~session();
    session(const session &) = delete;
    session &operator=(const session &) = delete;

    // False when the heap or the output string could not be had.
    bool ready() const { return vs_.ctx != nullptr && out_ != nullptr; }

    // Reads text into a tree (NULL for an empty text in the standard
    // dialect): 0, or the library's code with `why` filled in.
    int32_t read(std::string_view text, json_node **root, read_failure &why);
    // Is the text well-formed?  0, or the code with `why` filled in.
    int32_t check(std::string_view text, read_failure &why);

    // Appends the text of a tree to the output: 0 or a negative code.
    int32_t write(const json_node *node, const write_options &w);
    // Appends raw bytes to the output.
    int32_t append(std::string_view bytes);
    // Writes the output assembled so far to standard output once it is
    // larger than `at_least` bytes; false when standard output failed.
    bool flush(uint32_t at_least = 0);

    // Moves the output assembled so far to the end of `into`.
    void take_output(std::string &into);

    // Forgets every tree; the memory is kept for the next text.
    void reset();

    jlpca_ctx *ctx() { return vs_.ctx; }

private:
    void set_switches();
    int32_t run(std::string_view text, bool tree, json_node **root);
    int32_t too_large(read_failure &why);
    int32_t write_tree(const json_node *node, const write_options &w);
    int32_t refuse(std::string_view text, int32_t rc, read_failure &why);

    read_options opts_;
    vx_session vs_{};       // trees and element arrays share its heap
    size_t heap_first_ = 0; // size of the heap's first block
    vx_alloc_state out_state_{};
    vx_allocator out_alloc_{}; // output strings: malloc, kept across texts
    vxstr *out_ = nullptr;
    vxstr *scratch_ = nullptr; // pretty text before its ASCII pass
};

// Switches a context to standard JSON strings (--rfc8259).
void use_std_strings(jlpca_ctx *ctx);

// A message for a library status code.
const char *code_message(int32_t code);

} // namespace vxcli

#endif
