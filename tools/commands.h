// The commands of the vxjson tool and what they share: exit statuses, the
// form of messages, and the walk over the documents of the inputs.
#ifndef VXJSON_TOOL_COMMANDS_H
#define VXJSON_TOOL_COMMANDS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "options.h"
#include "session.h"

namespace vxcli {

// Exit statuses.
constexpr int EXIT_GOOD = 0;    // everything valid, or a predicate answered
constexpr int EXIT_INVALID = 1; // some input is not well-formed (check, format)
constexpr int EXIT_TROUBLE = 2; // bad arguments, unreadable input, an operation failed

// "vxjson: MESSAGE" on standard error.
void tool_error(const std::string &message);
// "NAME:LINE: error CODE: MESSAGE" on standard error.
void report_failure(const std::string &name, uint64_t line, const read_failure &why);

// A session over the reading switches, or null after saying why not.
std::unique_ptr<session> open_session(const read_options &opts);

// What handling one document came to.
enum class doc_result { ok, bad, fatal };

// Reports a refused document (unless quiet; running out of memory is
// always told) and says what that means for the run.
doc_result refused(const command_line &cl, const std::string &name, uint64_t line,
                   const read_failure &why);
// Ends a document's output with a line feed: ok, or fatal with the failure
// told.  rc: how writing the document's text went (0 or a code).
doc_result end_output_line(session &s, int32_t rc, const std::string &name, uint64_t line);
using doc_action =
    std::function<doc_result(std::string_view text, const std::string &name, uint64_t line)>;

// Runs `act` over every document: each whole input, or with --lines each
// non-blank line, resetting the session in between.  Returns the exit status.
int run_documents(const command_line &cl, session &s, const doc_action &act);

// A handler given the session to use, so that with --lines several threads
// can each run it over a session of their own.
using doc_job = std::function<doc_result(session &s, std::string_view text, const std::string &name,
                                         uint64_t line)>;
// As above, over sessions opened from `opts`: with --lines the lines are
// handled on --jobs threads (the machine's cores by default) and written in
// input order.  Whatever `job` shares between documents must be safe to
// share between threads.
int run_documents(const command_line &cl, const read_options &opts, const doc_job &job);

// Sends this thread's messages into `into` (null: to standard error).
void capture_messages(std::string *into);

int run_check(command_line &cl);
int run_format(command_line &cl);

// Tree operations on two or more documents.
enum class op_kind { equal, contains, overlaps, merge_patch, merge_preserve, concat, strip_nulls };
int run_op(op_kind op, command_line &cl);
// The dialect a command reads its inputs in unless --dialect is given.
const char *default_dialect(const char *command);

// Path queries.
constexpr int EXIT_NO_VALUE = 3; // query: in some document nothing matched
int run_query(command_line &cl);
int run_contains_path(command_line &cl);

// SQL/JSON functions.
int run_value(command_line &cl);

// Changes by path.
enum class change_kind { set, insert, replace, remove, array_append, array_insert };
int run_change(change_kind kind, command_line &cl);

} // namespace vxcli

#endif
