// The tree operations: equality, containment and overlap (print true or
// false), merges, concatenation and null stripping (print the result).
// Each reads its inputs the way its own dialect does unless --dialect says
// otherwise.
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "commands.h"
#include "input.h"

namespace vxcli {

namespace {

struct op_info {
    op_kind op;
    const char *name;
    size_t min_inputs;
    size_t max_inputs; // 0: no bound
    int32_t dialect;   // the dialect inputs are read in unless told
};

constexpr op_info OPS[] = {
    {op_kind::equal, "equal", 2, 2, JLPCA_COMPAT_STANDARD},
    {op_kind::contains, "contains", 2, 2, JLPCA_COMPAT_PG},
    {op_kind::overlaps, "overlaps", 2, 2, JLPCA_COMPAT_MYSQL},
    {op_kind::merge_patch, "merge-patch", 2, 0, JLPCA_COMPAT_MYSQL},
    {op_kind::merge_preserve, "merge-preserve", 2, 0, JLPCA_COMPAT_MYSQL},
    {op_kind::concat, "concat", 2, 2, JLPCA_COMPAT_PG},
    {op_kind::strip_nulls, "strip-nulls", 1, 1, JLPCA_COMPAT_PG},
};

const op_info &info_of(op_kind op) {
    for (const op_info &i : OPS)
        if (i.op == op) return i;
    return OPS[0];
}

} // namespace

const char *default_dialect(const char *command) {
    static constexpr const char *NAMES[] = {"standard", "pg", "mysql"};
    for (const op_info &i : OPS)
        if (std::strcmp(i.name, command) == 0) return NAMES[i.dialect];
    return NAMES[JLPCA_COMPAT_STANDARD];
}

namespace {

// The reading switches an operation needs on top of the user's.
void adapt_reading(const op_info &info, read_options &r) {
    if (!r.dialect_given) r.compat = info.dialect;
    switch (info.op) {
    case op_kind::equal:
        // Values compare as values: member order does not count, and a
        // scalar is a value like any other.
        r.sorted_keys = true;
        r.scalar_top = true;
        break;
    case op_kind::merge_patch:
    case op_kind::merge_preserve:
        // The merge walks both member lists in sorted order; repeated names
        // collapse to the last, as a stored document has them.
        r.sorted_keys = true;
        r.dup_replace = true;
        break;
    case op_kind::concat:
        // The right operand's members win, as in jsonb.
        r.dup_replace = true;
        break;
    default: break;
    }
}

bool arity_ok(const op_info &info, const command_line &cl) {
    const size_t n = cl.inputs.size();
    if (n < info.min_inputs || (info.max_inputs && n > info.max_inputs)) {
        std::string want = info.max_inputs == info.min_inputs
                               ? std::to_string(info.min_inputs)
                               : "at least " + std::to_string(info.min_inputs);
        tool_error(std::string(info.name) + " takes " + want + " input" +
                   (info.min_inputs == 1 && info.max_inputs == 1 ? "" : "s") + ", got " +
                   std::to_string(n) + " (try 'vxjson " + info.name + " --help')");
        return false;
    }
    size_t stdin_uses = 0;
    for (const input_spec &in : cl.inputs) stdin_uses += !in.is_inline && in.text == "-";
    if (stdin_uses > 1) {
        tool_error("standard input can be read only once");
        return false;
    }
    return true;
}

// Reads every input into a tree; false after reporting the first failure.
bool read_all(const command_line &cl, session &s, std::vector<json_node *> &trees) {
    for (const input_spec &in : cl.inputs) {
        whole_input w;
        std::string error;
        if (!w.load(in, error)) {
            tool_error(error);
            return false;
        }
        json_node *root = nullptr;
        read_failure why;
        if (s.read(w.text(), &root, why) != 0) {
            report_failure(in.name, why.line, why);
            return false;
        }
        if (!root) {
            tool_error(in.name + ": empty document");
            return false;
        }
        trees.push_back(root);
    }
    return true;
}

int op_failed(const op_info &info, int32_t rc) {
    tool_error(std::string(info.name) + ": error " + std::to_string(rc) + ": " + code_message(rc));
    return EXIT_TROUBLE;
}

int print_answer(bool yes) {
    std::puts(yes ? "true" : "false");
    return std::fflush(stdout) == 0 ? EXIT_GOOD : EXIT_TROUBLE;
}

// The result's text and a line feed to standard output.
int print_output(const op_info &info, session &s, int32_t rc) {
    if (rc == 0) rc = s.append("\n");
    if (rc != 0) return op_failed(info, rc);
    return s.flush() && std::fflush(stdout) == 0 ? EXIT_GOOD : EXIT_TROUBLE;
}

// Writes a tree as the result, in the user's layout, and a line feed.
int print_tree(const op_info &info, session &s, const command_line &cl, const json_node *tree) {
    return print_output(info, s, s.write(tree, cl.write));
}

// A result the library hands back as compact text: printed as it is, or
// read again to be laid out as asked.  Text that does not read back (the
// concatenation of an empty array gives "[,1]") is printed as it is.
int print_text(const op_info &info, session &s, const command_line &cl, const char *text,
               uint32_t len) {
    if (cl.write.layout != 0 || cl.write.ascii) {
        json_node *again = nullptr;
        read_failure ignored;
        if (s.read(std::string_view(text, len), &again, ignored) == 0 && again)
            return print_tree(info, s, cl, again);
    }
    return print_output(info, s, s.append(std::string_view(text, len)));
}

int merge(const op_info &info, session &s, const command_line &cl,
          const std::vector<json_node *> &trees) {
    json_node *acc = trees[0];
    for (size_t i = 1; i < trees.size(); ++i) {
        json_node *out = nullptr;
        const int32_t rc = info.op == op_kind::merge_patch
                               ? json_merge_patch_mysql(acc, trees[i], s.ctx(), &out)
                               : json_merge_preserve_mysql(acc, trees[i], s.ctx(), &out);
        if (rc != 0) return op_failed(info, rc);
        acc = out;
    }
    return print_tree(info, s, cl, acc);
}

int strip_nulls(const op_info &info, session &s, const command_line &cl, json_node *tree) {
    int32_t rc = 0;
    if (tree->type == JSON_OBJECT) rc = jsonb_strip_nulls_object(tree);
    else if (tree->type == JSON_ARRAY) rc = jsonb_strip_nulls_array(tree);
    if (rc != 0) return op_failed(info, rc);
    return print_tree(info, s, cl, tree);
}

} // namespace

int run_op(op_kind op, command_line &cl) {
    const op_info &info = info_of(op);
    if (!arity_ok(info, cl)) return EXIT_TROUBLE;
    adapt_reading(info, cl.read);
    const std::unique_ptr<session> sp = open_session(cl.read);
    if (!sp) return EXIT_TROUBLE;
    session &s = *sp;
    std::vector<json_node *> trees;
    if (!read_all(cl, s, trees)) return EXIT_TROUBLE;
    switch (op) {
    case op_kind::equal: return print_answer(json_cmp(trees[0], trees[1], JSON_CMP_EQUAL) != 0);
    case op_kind::contains:
        return print_answer(cl.read.compat == JLPCA_COMPAT_MYSQL
                                ? json_contains_mysql(trees[0], trees[1]) != 0
                                : json_contains_pg(trees[0], trees[1]) != 0);
    case op_kind::overlaps: return print_answer(json_overlaps_mysql(trees[0], trees[1]) != 0);
    case op_kind::merge_patch:
    case op_kind::merge_preserve: return merge(info, s, cl, trees);
    case op_kind::concat: {
        char *text = nullptr;
        uint32_t len = 0;
        const int32_t rc = jsonb_concat(trees[0], trees[1], s.ctx(), &text, &len);
        if (rc != 0) return op_failed(info, rc);
        return print_text(info, s, cl, text, len);
    }
    case op_kind::strip_nulls: return strip_nulls(info, s, cl, trees[0]);
    }
    return EXIT_TROUBLE;
}

} // namespace vxcli
