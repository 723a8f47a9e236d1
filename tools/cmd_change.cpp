// Changes by path: set, insert, replace, remove, array-append and
// array-insert.  The first input is the document (or, with --lines, a JSON
// Lines stream of documents); the arguments after it are paths and values.
// In the mysql dialect (the default) paths are path texts; with --dialect
// pg they are text-array paths such as '{a,0}', and remove also takes a
// bare key or position.  Paths and values are compiled and read afresh for
// every document, since a change puts the value nodes themselves into the
// tree and array-insert may shorten its path.
#include <string>
#include <vector>

#include "commands.h"
#include "vx_number.h"

namespace vxcli {

namespace {

struct change_info {
    change_kind kind;
    const char *name;
    int32_t set_mode;  // for the set family
    bool takes_values; // PATH VALUE pairs rather than PATHs
};

constexpr change_info CHANGES[] = {
    {change_kind::set, "set", 2, true},
    {change_kind::insert, "insert", 3, true},
    {change_kind::replace, "replace", 1, true},
    {change_kind::remove, "remove", 0, false},
    {change_kind::array_append, "array-append", 0, true},
    {change_kind::array_insert, "array-insert", 0, true},
};

const change_info &info_of(change_kind k) {
    for (const change_info &i : CHANGES)
        if (i.kind == k) return i;
    return CHANGES[0];
}

bool is_array_change(change_kind k) {
    return k == change_kind::array_append || k == change_kind::array_insert;
}

// A JSON string holding `text`, for the path-list form of the library.
std::string json_quoted(const std::string &text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

// What the command line asks for, apart from the documents.
struct change_request {
    const change_info *info;
    bool pg;
    std::vector<std::string> paths, values;
};

// What a change gives: the library's text, or (when the tool itself
// changed the tree) the tree to write.
struct change_result {
    std::string text;
    const json_node *tree = nullptr;
};

class change_runner {
public:
    change_runner(const change_request &rq, session &s) : rq_(rq), s_(s), ctx_(s.ctx()) {}

    // Applies the change to the tree of one document.  0 or the library's
    // code.
    int32_t apply(json_node *doc, change_result *r) {
        r->tree = nullptr;
        value_error_.clear();
        if (rq_.pg)
            return rq_.info->kind == change_kind::remove ? pg_remove(doc, r)
                                                         : pg_set(doc, &r->text);
        switch (rq_.info->kind) {
        case change_kind::remove: return my_remove(doc, &r->text);
        case change_kind::array_append:
        case change_kind::array_insert: return my_array_add(doc, &r->text);
        default: return my_set(doc, &r->text);
        }
    }

private:
    // The text of a call that has returned `rc`, handed back to the
    // allocator it came from.
    int32_t take(int32_t rc, char *out, uint32_t len, std::string *text) {
        if (rc == 0) text->assign(out, len);
        if (out) vx_free(nullptr, ctx_->allocator, out);
        return rc;
    }

    int32_t read_value(const std::string &value, json_node **node) {
        read_failure why;
        const int32_t rc = s_.read(value, node, why);
        if (rc != 0) value_error_ = "value '" + value + "': " + why.message;
        return rc;
    }

    // Paths from a JSON array of path strings: one contiguous block.
    int32_t compile_list(uint32_t *count, jpath **paths) {
        std::string list = "[";
        for (size_t i = 0; i < rq_.paths.size(); ++i)
            list += (i ? "," : "") + json_quoted(rq_.paths[i]);
        list += "]";
        return jpath_array_flex(ctx_, list.data(), static_cast<uint32_t>(list.size()), 0, count,
                                paths);
    }

    // Each pair in turn; the text of one pair's result is the next one's
    // document, so a change of the whole document carries over.
    int32_t my_set(json_node *doc, std::string *text) {
        ctx_->set_mode = rq_.info->set_mode;
        for (size_t i = 0; i < rq_.paths.size(); ++i) {
            if (i > 0) {
                read_failure why;
                if (int32_t rc = s_.read(*text, &doc, why)) return rc;
            }
            uint32_t n = 0;
            jpath *path = nullptr;
            json_node *value = nullptr;
            const std::string &p = rq_.paths[i];
            if (int32_t rc =
                    jpath_array_flex(ctx_, p.data(), static_cast<uint32_t>(p.size()), 1, &n, &path))
                return rc;
            if (int32_t rc = read_value(rq_.values[i], &value)) return rc;
            ctx_->set_mode = rq_.info->set_mode;
            char *out = nullptr;
            uint32_t len = 0;
            const int32_t rc = jsonb_set_with_path(doc, value, path, ctx_, &out, &len);
            if (take(rc, out, len, text)) return rc;
        }
        return 0;
    }

    int32_t my_remove(json_node *doc, std::string *text) {
        uint32_t n = 0;
        jpath *paths = nullptr;
        if (int32_t rc = compile_list(&n, &paths)) return rc;
        char *out = nullptr;
        uint32_t len = 0;
        const int32_t rc = json_remove_mysql_path_array(doc, n, paths, ctx_, &out, &len);
        return take(rc, out, len, text);
    }

    int32_t my_array_add(json_node *doc, std::string *text) {
        uint32_t n = 0;
        jpath *paths = nullptr;
        if (int32_t rc = compile_list(&n, &paths)) return rc;
        std::string list = "[";
        for (size_t i = 0; i < rq_.values.size(); ++i) list += (i ? "," : "") + rq_.values[i];
        list += "]";
        json_node *values = nullptr;
        if (int32_t rc = read_value(list, &values)) return rc;
        const uint32_t options =
            rq_.info->kind == change_kind::array_insert ? JSON_ARRAY_ADD_INSERT : 0;
        char *out = nullptr;
        uint32_t len = 0;
        const int32_t rc = json_array_add_element_mysql_path_array(doc, n, paths, values, ctx_,
                                                                   options, &out, &len);
        return take(rc, out, len, text);
    }

    int32_t text_path(const std::string &literal, jpath *path) {
        (void)jpath_init_simple(path, 1);
        std::vector<char> buf(literal.begin(), literal.end());
        buf.push_back('\0');
        return jpath_parse_pg_array(ctx_->env, ctx_->heap, ctx_->allocator, path, buf.data());
    }

    int32_t pg_set(json_node *doc, std::string *text) {
        for (size_t i = 0; i < rq_.paths.size(); ++i) {
            if (i > 0) {
                read_failure why;
                if (int32_t rc = s_.read(*text, &doc, why)) return rc;
            }
            jpath path{};
            json_node *value = nullptr;
            if (int32_t rc = text_path(rq_.paths[i], &path)) return rc;
            if (int32_t rc = read_value(rq_.values[i], &value)) return rc;
            ctx_->set_mode = rq_.info->set_mode;
            char *out = nullptr;
            uint32_t len = 0;
            const int32_t rc = jsonb_set_with_path(doc, value, &path, ctx_, &out, &len);
            if (take(rc, out, len, text)) return rc;
        }
        return 0;
    }

    // A key or a position after a root step, as jsonb - text and
    // jsonb - integer take it.
    int32_t key_path(const std::string &key, jpath *path) {
        (void)jpath_init_simple(path, 1);
        int64_t pos = 0;
        const bool position = !key.empty() &&
                              str2int64(key.data(), static_cast<uint32_t>(key.size()), &pos) == 0 &&
                              pos >= INT32_MIN && pos <= INT32_MAX;
        int32_t rc = jpath_add_filter_low(ctx_->env, ctx_->heap, path, "", 0, 0);
        if (!rc)
            rc = jpath_add_filter_low(ctx_->env, ctx_->heap, path, key.data(),
                                      static_cast<uint32_t>(key.size()), position ? 4 : 3);
        if (!rc && position)
            rc = jpath_add_index_pg(ctx_->env, ctx_->heap, path->last_filter,
                                    static_cast<int32_t>(pos));
        return rc;
    }

    // jsonb #- '{a,0}': walk to the container of the last key as jsonb_set
    // walks, then remove the member or element the last key names.
    int32_t remove_at_text_path(json_node *doc, const std::string &literal) {
        jpath path{};
        if (int32_t rc = text_path(literal, &path)) return rc;
        if (doc->type != JSON_OBJECT && doc->type != JSON_ARRAY) return VXJSON_ERR_TEXT_PATH_SCALAR;
        json_node *cur = doc;
        jpath_filter *step = path.first_filter;
        if (!step) return 0;
        for (; step->next; step = step->next) {
            int32_t last = 0, done = 1;
            if (int32_t rc =
                    jsonb_set_with_path_element(&cur, nullptr, step, ctx_, &last, &done, 1))
                return rc;
            if (!done) return 0;
        }
        if (cur->type == JSON_OBJECT) return jsonb_remove_object_with_path_element(cur, step, ctx_);
        if (cur->type != JSON_ARRAY) return 0;
        jpath at{};
        if (int32_t rc = key_path(std::string(step->key, step->key_len), &at)) return rc;
        if (at.last_filter->kind != 4) return VXJSON_ERR_TEXT_PATH_INDEX;
        return jsonb_remove_array_element_with_path(cur, at.last_filter, ctx_);
    }

    // The library's text when the last removal was by key or position,
    // else the tree as the text-array removals left it.
    int32_t pg_remove(json_node *doc, change_result *r) {
        for (const std::string &p : rq_.paths) {
            r->tree = doc;
            if (!p.empty() && p[0] == '{') {
                if (int32_t rc = remove_at_text_path(doc, p)) return rc;
                continue;
            }
            jpath path{};
            if (int32_t rc = key_path(p, &path)) return rc;
            char *out = nullptr;
            uint32_t len = 0;
            const int32_t rc = jsonb_remove_with_path(doc, &path, ctx_, &out, &len);
            if (take(rc, out, len, &r->text)) return rc;
            r->tree = nullptr;
        }
        return 0;
    }

public:
    // Why the last apply failed when a value did not read, else empty.
    const std::string &value_error() const { return value_error_; }

private:
    const change_request &rq_;
    session &s_;
    jlpca_ctx *ctx_;
    std::string value_error_;
};

// The result in the user's layout: the library's compact text as it is,
// or read again to be laid out as asked.
int32_t print_result(session &s, const command_line &cl, const change_result &r) {
    if (r.tree) return s.write(r.tree, cl.write);
    if (cl.write.layout != 0 || cl.write.ascii) {
        json_node *again = nullptr;
        read_failure ignored;
        if (s.read(r.text, &again, ignored) == 0 && again) return s.write(again, cl.write);
    }
    return s.append(r.text);
}

// Splits the inputs into the document and the paths and values; false
// after saying what is wrong.
bool parse_request(const change_info &info, command_line &cl, change_request &rq) {
    const std::string usage = " (try 'vxjson " + std::string(info.name) + " --help')";
    rq.info = &info;
    rq.pg = cl.read.compat == JLPCA_COMPAT_PG;
    if (rq.pg && is_array_change(info.kind)) {
        tool_error(std::string(info.name) + " exists only in the mysql dialect");
        return false;
    }
    if (cl.inputs.size() < 2) {
        tool_error(std::string(info.name) + " needs a document and " +
                   (info.takes_values ? "PATH VALUE pairs" : "at least one path") + usage);
        return false;
    }
    for (size_t i = 1; i < cl.inputs.size(); ++i) {
        if (cl.inputs[i].is_inline) {
            tool_error("-e gives the document; paths and values follow it as plain arguments" +
                       usage);
            return false;
        }
        std::vector<std::string> &to = info.takes_values && i % 2 == 0 ? rq.values : rq.paths;
        to.push_back(cl.inputs[i].text);
    }
    if (info.takes_values && rq.paths.size() != rq.values.size()) {
        tool_error("path '" + rq.paths.back() + "' has no value" + usage);
        return false;
    }
    cl.inputs.resize(1);
    return true;
}

} // namespace

int run_change(change_kind kind, command_line &cl) {
    const change_info &info = info_of(kind);
    if (!cl.read.dialect_given) cl.read.compat = JLPCA_COMPAT_MYSQL;
    change_request rq;
    if (!parse_request(info, cl, rq)) return EXIT_TROUBLE;
    cl.read.scalar_top = true; // a value may be a scalar
    // The request is only read while lines run on several threads; each
    // document gets a runner over its thread's session.
    return run_documents(
        cl, cl.read,
        [&](session &s, std::string_view text, const std::string &name, uint64_t line) {
            change_runner runner(rq, s);
            json_node *doc = nullptr;
            read_failure why;
            if (s.read(text, &doc, why) != 0) return refused(cl, name, line, why);
            if (!doc) return doc_result::ok;
            change_result result;
            int32_t rc = runner.apply(doc, &result);
            if (rc != 0) {
                const bool oom = rc == VXJSON_ERR_NOMEM;
                if (!cl.quiet || oom)
                    report_failure(name, line,
                                   {rc, 1,
                                    std::string(info.name) + ": " +
                                        (runner.value_error().empty() ? code_message(rc)
                                                                      : runner.value_error()),
                                    oom});
                return oom ? doc_result::fatal : doc_result::bad;
            }
            rc = print_result(s, cl, result);
            if (rc == 0) rc = s.append("\n");
            if (rc == 0) return doc_result::ok;
            report_failure(name, line,
                           {rc, 1, std::string("cannot write: ") + code_message(rc), true});
            return doc_result::fatal;
        });
}

} // namespace vxcli
