// The walk over documents shared by check and format: whole inputs one by
// one, or JSON Lines streams line by line in bounded memory, with a count
// of bad lines at the end.
#include <cstdio>
#include <thread>

#include "commands.h"
#include "input.h"
#include "lines_parallel.h"
#include "show.h"

namespace vxcli {

namespace {

// Output is handed to standard output in pieces of about this size.
constexpr uint32_t FLUSH_AT = 1u << 20;

void run_whole(const input_spec &in, session &s, const doc_action &act, tally &t) {
    whole_input w;
    std::string error;
    if (!w.load(in, error)) {
        tool_error(error);
        t.trouble = true;
        return;
    }
    t.count(act(w.text(), in.name, 1));
    s.reset();
    if (!s.flush()) t.fatal = true;
}

void run_lines(const input_spec &in, session &s, const doc_action &act, tally &t) {
    line_source src;
    if (!t.open(src, in)) return;
    std::string_view line;
    while (!t.fatal && src.next(line)) {
        if (is_blank_line(line)) continue;
        t.count(act(line, in.name, src.line_number()));
        s.reset();
        if (!s.flush(FLUSH_AT)) t.fatal = true;
    }
    if (!src.error().empty()) {
        tool_error(src.error());
        t.trouble = true;
    }
}

// The end of a run: flush, the count of lines, the exit status.
int finish(const command_line &cl, tally &t, bool flushed) {
    if (!flushed || std::fflush(stdout) != 0) {
        tool_error("cannot write to standard output");
        t.fatal = true;
    }
    if (cl.lines && !cl.quiet)
        std::fprintf(stderr, "vxjson: %llu line%s, %llu bad\n",
                     static_cast<unsigned long long>(t.docs), t.docs == 1 ? "" : "s",
                     static_cast<unsigned long long>(t.bad));
    if (t.fatal || t.trouble) return EXIT_TROUBLE;
    return t.bad ? EXIT_INVALID : EXIT_GOOD;
}

// Where this thread's messages go: standard error, or the batch of lines
// a worker is handling.
thread_local std::string *message_sink = nullptr;

void say(const std::string &line) {
    if (message_sink) {
        *message_sink += line;
        return;
    }
    clear_progress_line();
    std::fputs(line.c_str(), stderr);
}

} // namespace

void capture_messages(std::string *into) { message_sink = into; }

void tool_error(const std::string &message) { say("vxjson: " + shown(message) + "\n"); }

void report_failure(const std::string &name, uint64_t line, const read_failure &why) {
    const std::string column = why.column ? ":" + std::to_string(why.column) : "";
    say(shown(name) + ":" + std::to_string(line) + column + ": error " + std::to_string(why.code) +
        ": " + shown(why.message) + "\n");
}

std::unique_ptr<session> open_session(const read_options &opts) {
    auto s = std::make_unique<session>(opts);
    if (s->ready()) return s;
    tool_error("out of memory");
    return nullptr;
}

doc_result refused(const command_line &cl, const std::string &name, uint64_t line,
                   const read_failure &why) {
    if (!cl.quiet || why.out_of_memory) report_failure(name, line + why.line - 1, why);
    // A document over --max-memory is refused like a bad one; the next
    // may fit.  Without a limit, running out of memory ends the run.
    return why.out_of_memory && cl.read.max_memory == 0 ? doc_result::fatal : doc_result::bad;
}

doc_result end_output_line(session &s, int32_t rc, const std::string &name, uint64_t line) {
    if (rc == 0) rc = s.append("\n");
    if (rc == 0) return doc_result::ok;
    report_failure(name, line, {rc, 1, std::string("cannot write: ") + code_message(rc), true});
    return doc_result::fatal;
}

int run_documents(const command_line &cl, session &s, const doc_action &act) {
    command_line::inputs_t inputs = cl.inputs;
    if (inputs.empty()) inputs.push_back({false, "-", "<stdin>"});
    tally t;
    for (const input_spec &in : inputs) {
        if (t.fatal) break;
        if (cl.lines) run_lines(in, s, act, t);
        else run_whole(in, s, act, t);
    }
    return finish(cl, t, s.flush());
}

int run_documents(const command_line &cl, const read_options &opts, const doc_job &job) {
    const unsigned jobs = cl.jobs ? cl.jobs : std::max(1u, std::thread::hardware_concurrency());
    if (!cl.lines || jobs == 1) {
        const std::unique_ptr<session> s = open_session(opts);
        if (!s) return EXIT_TROUBLE;
        return run_documents(cl, *s,
                             [&](std::string_view text, const std::string &name, uint64_t line) {
                                 return job(*s, text, name, line);
                             });
    }
    command_line::inputs_t inputs = cl.inputs;
    if (inputs.empty()) inputs.push_back({false, "-", "<stdin>"});
    tally t;
    for (const input_spec &in : inputs) {
        if (t.fatal) break;
        run_lines_parallel(in, opts, jobs, job, t);
    }
    return finish(cl, t, true);
}

} // namespace vxcli
