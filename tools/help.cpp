// Help texts, assembled once from a head per command and the shared
// switch lists.
#include "help.h"

#include <cstring>
#include <string>

#include "commands.h"
#include "options.h"
#include "sql_function.h"

namespace vxcli {

namespace {

// --jobs in the switch list of every command that takes --lines.
#define JOBS_HELP                                                                                  \
    "  --jobs N                     with --lines, N threads (default: the machine's\n"             \
    "                               cores); output and messages stay in input order\n"

const char GENERAL[] =
    "vxjson - check, format and combine JSON documents with libvxjson\n"
    "\n"
    "usage: vxjson COMMAND [SWITCHES] [INPUT...]\n"
    "       vxjson COMMAND --help | vxjson --help | vxjson --version\n"
    "\n"
    "commands:\n"
    "  check [INPUT...]            is each input well-formed JSON?\n"
    "  format [INPUT...]           write each input back, compact or pretty\n"
    "  equal A B                   are A and B equal values? (true or false)\n"
    "  contains A B                does A contain B? (true or false)\n"
    "  overlaps A B                do A and B share a member or element?\n"
    "  merge-patch A B [C...]      JSON_MERGE_PATCH of the inputs, left to right\n"
    "  merge-preserve A B [C...]   JSON_MERGE_PRESERVE of the inputs, left to right\n"
    "  concat A B                  A || B, PostgreSQL jsonb concatenation\n"
    "  strip-nulls A               A without null-valued members (jsonb_strip_nulls)\n"
    "  set DOC PATH VALUE...       JSON_SET; with --dialect pg, jsonb_set\n"
    "  insert DOC PATH VALUE...    JSON_INSERT: add only where nothing is\n"
    "  replace DOC PATH VALUE...   JSON_REPLACE: change only what is there\n"
    "  remove DOC PATH...          JSON_REMOVE; with --dialect pg, jsonb - and #-\n"
    "  array-append DOC PATH VALUE...  JSON_ARRAY_APPEND\n"
    "  array-insert DOC PATH VALUE...  JSON_ARRAY_INSERT\n"
    "  query PATH [INPUT...]       the values PATH selects in each input\n"
    "  contains-path one|all PATH... [INPUT]  does a path match? (JSON_CONTAINS_PATH)\n"
    "  value PATH [INPUT...]       JSON_VALUE: the scalar PATH selects, as text, number\n"
    "                              or datetime (query takes JSON_QUERY's clauses)\n"
    "\n"
    "An INPUT is a file name, '-' for standard input, or -e TEXT for a JSON\n"
    "text given inline.  check and format read standard input when given no\n"
    "input; with --lines they read JSON Lines, one document per line.\n"
    "\n"
    "exit status: 0 all inputs valid (a predicate prints its answer and exits 0),\n"
    "1 some input is not well-formed (check, format), 2 bad arguments, an\n"
    "unreadable input, out of memory, or an operation that failed, 3 (query)\n"
    "some input in which the path matched nothing.\n"
    "\n"
    "examples:\n"
    "  vxjson check data/*.json\n"
    "  vxjson format --pretty examples/sample.json\n"
    "  producer | vxjson format --lines --dialect mysql > compact.jsonl\n"
    "  vxjson contains -e '{\"a\":[1,2]}' -e '{\"a\":[2]}'\n"
    "\n"
    "Run 'vxjson COMMAND --help' for the switches of a command.\n";

const char CHECK[] =
    "usage: vxjson check [SWITCHES] [INPUT...]\n"
    "\n"
    "Tells whether each input is a well-formed JSON document under the\n"
    "reading switches.  Prints nothing for a good input and one line on\n"
    "standard error for a bad one:\n"
    "  NAME:LINE:COLUMN: error CODE: MESSAGE\n"
    "CODE is the library's error code: -5 or -4 for a lexical error, -3105\n"
    "for any other invalid text, -6102 for a number beyond a double (mysql).\n"
    "Exit status 0 when every input is good, 1 otherwise (a document over\n"
    "--max-memory counts as bad), 2 on trouble.\n"
    "\n"
    "check switches:\n"
    "  --lines                      JSON Lines: check each line on its own (blank\n"
    "                               lines are skipped) and end with a count\n"
    JOBS_HELP
    "  -q, --quiet                  no messages, only the exit status\n";

const char CHECK_EXAMPLES[] = "\n"
                              "examples:\n"
                              "  vxjson check examples/broken.json\n"
                              "  vxjson check --strict --unique-keys config.json\n"
                              "  vxjson check --dialect mysql -e '[1e400]'\n"
                              "  vxjson check --lines events.jsonl\n";

const char FORMAT[] =
    "usage: vxjson format [SWITCHES] [INPUT...]\n"
    "\n"
    "Reads each input and writes it back, compact unless --pretty, followed\n"
    "by a line feed.  An empty input writes nothing.  A bad input is reported\n"
    "as by check and skipped.  Exit status as for check.\n"
    "\n"
    "format switches:\n"
    "  --lines                      JSON Lines in and out, a line at a time\n"
    JOBS_HELP
    "  -q, --quiet                  no messages for bad inputs\n";

const char FORMAT_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson format --pretty examples/sample.json\n"
    "  vxjson format --pretty=a --ascii -e '{\"name\":\"caf\xc3\xa9\"}'\n"
    "  vxjson format --lax -e \"{name:'x', list:[1,2,],}\"\n"
    "  vxjson format --lines big.jsonl > compact.jsonl\n";

const char EQUAL[] = "usage: vxjson equal [SWITCHES] A B\n"
                     "\n"
                     "Prints true when A and B are the same value, false otherwise.  Member\n"
                     "order does not count; a scalar may be a whole input.\n"
                     "Numbers compare by their text first, then as doubles: 1 and 1.0 are\n"
                     "equal, and so are two numbers of 37 digits that differ only in the last\n"
                     "(a double keeps about 16 digits).\n";

const char EQUAL_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson equal -e '{\"a\":1,\"b\":2}' -e '{\"b\":2,\"a\":1.0}'     # true\n"
    "  vxjson equal old.json new.json\n";

const char CONTAINS[] = "usage: vxjson contains [SWITCHES] A B\n"
                        "\n"
                        "Prints true when A contains B.  By default the PostgreSQL rule (A @> B);\n"
                        "with --dialect mysql, MySQL's JSON_CONTAINS(A, B), under which an\n"
                        "object in an array also contains a part of itself.\n"
                        "Numbers compare by their text first, then as doubles: 1 and 1.0 are\n"
                        "equal, and so are two numbers of 37 digits that differ only in the last\n"
                        "(a double keeps about 16 digits).\n";

const char CONTAINS_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson contains -e '{\"a\":[1,2],\"b\":3}' -e '{\"a\":[2]}'     # true\n"
    "  vxjson contains --dialect mysql -e '[{\"a\":1,\"b\":2}]' -e '{\"a\":1}'\n";

const char OVERLAPS[] = "usage: vxjson overlaps [SWITCHES] A B\n"
                        "\n"
                        "Prints true when A and B share a member (same name, equal value) or an\n"
                        "element, as MySQL's JSON_OVERLAPS.  Inputs are read in the mysql dialect\n"
                        "unless --dialect says otherwise.\n"
                        "Numbers compare by their text first, then as doubles: 1 and 1.0 are\n"
                        "equal, and so are two numbers of 37 digits that differ only in the last\n"
                        "(a double keeps about 16 digits).\n";

const char OVERLAPS_EXAMPLES[] = "\n"
                                 "examples:\n"
                                 "  vxjson overlaps -e '[1,2,3]' -e '[3,4]'     # true\n"
                                 "  vxjson overlaps -e '{\"a\":1}' -e '{\"a\":2}'   # false\n";

const char MERGE_PATCH[] =
    "usage: vxjson merge-patch [SWITCHES] A B [C...]\n"
    "\n"
    "MySQL's JSON_MERGE_PATCH(A, B, ...): members of the later inputs replace\n"
    "those of the earlier, a null member removes one, a non-object replaces\n"
    "the whole.  Inputs are read in the mysql dialect with sorted member\n"
    "names (the last of repeated names wins) unless --dialect says otherwise.\n";

const char MERGE_PATCH_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson merge-patch -e '{\"a\":1,\"b\":2}' -e '{\"b\":null,\"c\":3}'   # {\"a\":1,\"c\":3}\n"
    "  vxjson merge-patch --pretty defaults.json site.json local.json\n";

const char MERGE_PRESERVE[] =
    "usage: vxjson merge-preserve [SWITCHES] A B [C...]\n"
    "\n"
    "MySQL's JSON_MERGE_PRESERVE(A, B, ...): members of the same name are\n"
    "gathered into arrays, arrays are joined, scalars become arrays.  Inputs\n"
    "are read as for merge-patch.\n";

const char MERGE_PRESERVE_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson merge-preserve -e '{\"a\":1}' -e '{\"a\":2}'   # {\"a\":[1,2]}\n"
    "  vxjson merge-preserve -e '[1,2]' -e 3             # [1,2,3]\n";

const char CONCAT[] = "usage: vxjson concat [SWITCHES] A B\n"
                      "\n"
                      "PostgreSQL's A || B: two objects give their union (B's members win),\n"
                      "anything else gives an array of A's elements followed by B's.  An\n"
                      "object with a scalar is an error (-3119).  Inputs are read in the pg\n"
                      "dialect unless --dialect says otherwise.\n";

const char CONCAT_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson concat -e '{\"a\":1}' -e '{\"a\":2,\"b\":3}'   # {\"a\":2,\"b\":3}\n"
    "  vxjson concat -e '[1,2]' -e 3                   # [1,2,3]\n";

const char STRIP_NULLS[] =
    "usage: vxjson strip-nulls [SWITCHES] A\n"
    "\n"
    "PostgreSQL's jsonb_strip_nulls(A): members whose value is null are\n"
    "dropped at every depth; null elements of arrays stay.  Inputs are read\n"
    "in the pg dialect unless --dialect says otherwise.\n";

const char STRIP_NULLS_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson strip-nulls -e '{\"a\":null,\"b\":[null,{\"c\":null}]}'   # {\"b\":[null,{}]}\n"
    "  vxjson strip-nulls --pretty record.json\n";

const char CHANGE_COMMON[] =
    "\n"
    "DOC is -e TEXT, a file, or '-' for standard input; with --lines it is a\n"
    "JSON Lines stream and every document in it is changed the same way, one\n"
    "result a line.  Paths and values follow DOC as plain arguments (after\n"
    "'--' an argument may start with '-').  A VALUE is JSON text: '\"x\"' for\n"
    "a string.  In the mysql dialect (the default) a PATH is a path text such\n"
    "as '$.a[0]'; with --dialect pg it is a text-array path such as '{a,0}',\n"
    "whose elements name members of objects and positions of arrays\n"
    "(negative from the end).  The document is written back compact unless\n"
    "--pretty.  A failed change is reported as NAME:LINE: error CODE: MESSAGE\n"
    "and the document skipped (exit status 1); -3113 for a path that may name\n"
    "several places, -3114 for a text-array path on a scalar document, -3115\n"
    "for a text-array element on an array that is not an integer.\n"
    "\n"
    "change switches:\n"
    "  --lines                      JSON Lines in and out, a line at a time\n"
    JOBS_HELP
    "  -q, --quiet                  no messages for documents that fail\n";

const char SET[] = "usage: vxjson set [SWITCHES] DOC PATH VALUE [PATH VALUE...]\n"
                   "\n"
                   "MySQL's JSON_SET(DOC, PATH, VALUE, ...): each value replaces what its\n"
                   "path names, or is added where nothing is: a missing member is added at\n"
                   "the end, a position past the end appends, a position other than 0 on a\n"
                   "value that is no array wraps it as [old, new].  Among repeated member\n"
                   "names the last is changed.  With --dialect pg, jsonb_set(DOC, PATH,\n"
                   "VALUE); a position before the first element appends as well.\n";

const char SET_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson set -e '{\"a\":1}' '$.b' '[2]'            # {\"a\":1,\"b\":[2]}\n"
    "  vxjson set -e '{\"a\":1}' '$.a[5]' 2             # {\"a\":[1,2]}\n"
    "  vxjson set --dialect pg -e '{\"a\":[1,2]}' '{a,-1}' 9   # {\"a\":[1,9]}\n"
    "  vxjson set --lines events.jsonl '$.seen' true\n";

const char INSERT[] = "usage: vxjson insert [SWITCHES] DOC PATH VALUE [PATH VALUE...]\n"
                      "\n"
                      "MySQL's JSON_INSERT: as set, but what is already there stays.\n";

const char INSERT_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson insert -e '{\"a\":1}' '$.a' 2 '$.b' 3     # {\"a\":1,\"b\":3}\n";

const char REPLACE[] = "usage: vxjson replace [SWITCHES] DOC PATH VALUE [PATH VALUE...]\n"
                       "\n"
                       "MySQL's JSON_REPLACE: as set, but nothing is added.\n";

const char REPLACE_EXAMPLES[] = "\n"
                                "examples:\n"
                                "  vxjson replace -e '{\"a\":1}' '$.a' 2 '$.b' 3    # {\"a\":2}\n";

const char REMOVE[] = "usage: vxjson remove [SWITCHES] DOC PATH [PATH...]\n"
                      "\n"
                      "MySQL's JSON_REMOVE(DOC, PATH, ...): each path in turn removes the one\n"
                      "member or element it names (the last of repeated member names); a path\n"
                      "to nothing removes nothing; '$' and paths with wildcards or ranges are\n"
                      "refused (-3113).  With --dialect pg each argument is a key (jsonb - key),\n"
                      "a position (jsonb - n, negative from the end) or a text-array path\n"
                      "(jsonb #- '{a,0}').\n";

const char REMOVE_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson remove -e '[1,2,3]' '$[0]' '$[0]'            # [3]\n"
    "  vxjson remove --dialect pg -e '[1,2,3]' -1          # [1,2]\n"
    "  vxjson remove --dialect pg -e '{\"a\":[1,2]}' '{a,0}'   # {\"a\":[2]}\n";

const char ARRAY_APPEND[] =
    "usage: vxjson array-append [SWITCHES] DOC PATH VALUE [PATH VALUE...]\n"
    "\n"
    "MySQL's JSON_ARRAY_APPEND: each value goes at the end of the array its\n"
    "path names; a value that is no array becomes [old, new] in its place.\n"
    "A path to nothing changes nothing.  Only in the mysql dialect.\n";

const char ARRAY_APPEND_EXAMPLES[] = "\n"
                                     "examples:\n"
                                     "  vxjson array-append -e '{\"a\":[1],\"b\":1}' '$.a' 2 '$.b' "
                                     "2   # {\"a\":[1,2],\"b\":[1,2]}\n";

const char ARRAY_INSERT[] =
    "usage: vxjson array-insert [SWITCHES] DOC PATH VALUE [PATH VALUE...]\n"
    "\n"
    "MySQL's JSON_ARRAY_INSERT: each value goes before the element its path\n"
    "names; a position past the end appends.  Only in the mysql dialect.\n";

const char ARRAY_INSERT_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson array-insert -e '[1,2]' '$[0]' 0 '$[9]' 3    # [0,1,2,3]\n";
const char QUERY[] = "usage: vxjson query [SWITCHES] PATH [INPUT...]\n"
                     "\n"
                     "Writes the value that PATH selects in each input as JSON text, followed\n"
                     "by a line feed.  Several matches are written as one array of them (in\n"
                     "document order, the values themselves).  Nothing is written for an\n"
                     "input in which nothing matched; with --lines such a line gives an empty\n"
                     "output line, so that output lines follow the good input lines.\n"
                     "The evaluator is the dialect's:\n"
                     "  standard  JSON_VALUE / JSON_QUERY paths; the first of repeated member\n"
                     "            names wins\n"
                     "  pg        the PostgreSQL-compatible mode: the last of repeated names\n"
                     "            wins, [1 to 3] takes its first position only\n"
                     "  mysql     MySQL paths: the last of repeated names wins, a member step\n"
                     "            never looks into an array, [1, 2] is a bad path\n"
                     "A bad input is reported as by check and skipped.\n"
                     "\n"
                     "exit status: 0 every input had a value, 3 some input had none (and none\n"
                     "was bad), 1 some input was not well-formed or could not be evaluated,\n"
                     "2 a bad path or switch, an unreadable input, out of memory.\n"
                     "\n"
                     "With a clause switch, query is JSON_QUERY(INPUT, PATH ...): the result\n"
                     "is JSON text with strings as written, several matches or a scalar need\n"
                     "--wrapper with|conditional (else ON ERROR settles it), --pretty lays\n"
                     "the result out as the server does, and SQL NULL prints as <null>, a\n"
                     "DEFAULT result as <default>.\n"
                     "  --wrapper without|with|conditional  WITHOUT / WITH [CONDITIONAL] WRAPPER\n"
                     "  --returning text|varchar(N)  JSON_QUERY returns text only\n"
                     "\n"
                     "query switches:\n"
                     "  --lines                      JSON Lines: one result line per good line\n"
                     JOBS_HELP
                     "  -q, --quiet                  no messages for bad inputs\n";

const char QUERY_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson query '$.statuses[0].user.id' twitter.json\n"
    "  vxjson query '$.a[*]' -e '{\"a\":[1,2]}'                  # [1,2]\n"
    "  vxjson query --dialect mysql '$.a' -e '{\"a\":1,\"a\":2}'     # 2\n"
    "  vxjson query --lines '$.user.name' events.jsonl\n";

const char CONTAINS_PATH[] =
    "usage: vxjson contains-path [SWITCHES] one|all PATH... [INPUT]\n"
    "\n"
    "MySQL's JSON_CONTAINS_PATH(INPUT, 'one'|'all', PATH, ...): prints true\n"
    "when one of the paths (one) or every path (all) matches a value in the\n"
    "input, else false.  The input is the last argument unless it starts with\n"
    "'$'; then standard input is read.  Inputs are read in the mysql dialect\n"
    "unless --dialect says otherwise.  Exit status 0 when every input was\n"
    "answered, 1 when some input was bad, 2 on trouble.\n"
    "\n"
    "contains-path switches:\n"
    "  --lines                      JSON Lines: one answer line per good line\n"
    JOBS_HELP
    "  -q, --quiet                  no messages for bad inputs\n";

const char CONTAINS_PATH_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson contains-path one '$.a' '$.z' -e '{\"a\":1}'       # true\n"
    "  vxjson contains-path all '$.a' '$.z' -e '{\"a\":1}'       # false\n"
    "  vxjson contains-path one '$.user.id' --lines events.jsonl\n";

const char VALUE[] = "usage: vxjson value [SWITCHES] PATH [INPUT...]\n"
                     "\n"
                     "JSON_VALUE(INPUT, PATH RETURNING ...) over each input: one answer line\n"
                     "per input, the scalar PATH selects as plain text (strings without quotes\n"
                     "or escapes), or as a number or datetime with --returning.  An object,\n"
                     "an array or several matches are errors that ON ERROR settles.\n"
                     "SQL NULL prints as <null>, a DEFAULT result as <default>.\n"
                     "A bad input is reported as by check and skipped.\n"
                     "\n"
                     "exit status: 0 every input answered, 1 some input was bad or raised an\n"
                     "error, 2 a bad path or switch, an unreadable input, out of memory.\n"
                     "\n"
                     "value switches:\n"
                     "  --lines                      JSON Lines: one answer line per good line\n"
                     JOBS_HELP
                     "  -q, --quiet                  no messages for bad inputs\n";

const char VALUE_EXAMPLES[] =
    "\n"
    "examples:\n"
    "  vxjson value '$.user.name' -e '{\"user\":{\"name\":\"x\"}}'      # x\n"
    "  vxjson value --returning 'number(10,2)' '$.price' order.json\n"
    "  vxjson value --returning date --on-error error '$.day' --lines log.jsonl\n";

struct help_entry {
    const char *name;
    const char *head;
    bool writes; // takes the writing switches
    const char *examples;
    std::string text;        // assembled on first use
    bool clauses = false;    // takes the clauses of the SQL/JSON functions
    const char *common = ""; // text shared by a family of commands
};

help_entry HELP[] = {
    {"check", CHECK, false, CHECK_EXAMPLES, {}},
    {"format", FORMAT, true, FORMAT_EXAMPLES, {}},
    {"equal", EQUAL, false, EQUAL_EXAMPLES, {}},
    {"contains", CONTAINS, false, CONTAINS_EXAMPLES, {}},
    {"overlaps", OVERLAPS, false, OVERLAPS_EXAMPLES, {}},
    {"merge-patch", MERGE_PATCH, true, MERGE_PATCH_EXAMPLES, {}},
    {"merge-preserve", MERGE_PRESERVE, true, MERGE_PRESERVE_EXAMPLES, {}},
    {"concat", CONCAT, true, CONCAT_EXAMPLES, {}},
    {"strip-nulls", STRIP_NULLS, true, STRIP_NULLS_EXAMPLES, {}},
    {"set", SET, true, SET_EXAMPLES, {}, false, CHANGE_COMMON},
    {"insert", INSERT, true, INSERT_EXAMPLES, {}, false, CHANGE_COMMON},
    {"replace", REPLACE, true, REPLACE_EXAMPLES, {}, false, CHANGE_COMMON},
    {"remove", REMOVE, true, REMOVE_EXAMPLES, {}, false, CHANGE_COMMON},
    {"array-append", ARRAY_APPEND, true, ARRAY_APPEND_EXAMPLES, {}, false, CHANGE_COMMON},
    {"array-insert", ARRAY_INSERT, true, ARRAY_INSERT_EXAMPLES, {}, false, CHANGE_COMMON},
    {"query", QUERY, true, QUERY_EXAMPLES, {}, true},
    {"value", VALUE, false, VALUE_EXAMPLES, {}, true},
    {"contains-path", CONTAINS_PATH, false, CONTAINS_PATH_EXAMPLES, {}},
};

} // namespace

const char *general_help() { return GENERAL; }

const char *command_help(const char *name) {
    for (help_entry &h : HELP) {
        if (std::strcmp(h.name, name) != 0) continue;
        if (h.text.empty()) {
            h.text = std::string(h.head) + h.common;
            h.text = h.head;
            if (h.clauses) h.text += std::string("\n") + CLAUSE_OPTIONS_HELP;
            if (h.writes) h.text += std::string("\n") + WRITE_OPTIONS_HELP;
            std::string reading = READ_OPTIONS_HELP;
            const std::string standard = "(default standard)";
            reading.replace(reading.find(standard), standard.size(),
                            std::string("(default ") + default_dialect(h.name) + ")");
            h.text += "\n" + reading + h.examples;
        }
        return h.text.c_str();
    }
    return GENERAL;
}

} // namespace vxcli
