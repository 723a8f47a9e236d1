// JSON Lines on several threads: the lines are handed out in batches, each
// worker reads its batch with a session of its own, and the output and
// messages of every batch are written in input order.
#ifndef VXJSON_TOOL_LINES_PARALLEL_H
#define VXJSON_TOOL_LINES_PARALLEL_H

#include "commands.h"
#include "input.h"

namespace vxcli {

// What the documents of a run came to.
struct tally {
    uint64_t docs = 0;
    uint64_t bad = 0;
    bool trouble = false; // an input could not be read
    bool fatal = false;   // stop everything

    // Opens `in` as lines into src, or tells why not and marks the trouble.
    bool open(line_source &src, const input_spec &in) {
        std::string error;
        if (src.open(in, error)) return true;
        tool_error(error);
        trouble = true;
        return false;
    }
    void count(doc_result r) {
        ++docs;
        if (r != doc_result::ok) ++bad;
        if (r == doc_result::fatal) fatal = true;
    }
    void add(const tally &o) {
        docs += o.docs;
        bad += o.bad;
        trouble |= o.trouble;
        fatal |= o.fatal;
    }
};

bool is_blank_line(std::string_view line);

// Runs `job` over the non-blank lines of `in` on `jobs` threads.
void run_lines_parallel(const input_spec &in, const read_options &opts, unsigned jobs,
                        const doc_job &job, tally &t);

} // namespace vxcli

#endif
