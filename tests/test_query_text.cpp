// json_query_text against the tree: every (document, path) is answered
// both ways, and wherever the text walk answers, its value must be the one
// json_flex + json_query give, and JSON_VALUE over it (through a copy of
// the path without steps) must give the same status and text.  The table
// rows also say whether the walk may answer at all, so that a walk that
// gives up everywhere, or answers where the tree would gather, fails.
#include <gtest/gtest.h>

#include <random>
#include <string_view>

#include "path_text.h"
#include "vx_env.h"

namespace {
using ::operator<<;
using namespace std::string_view_literals;

constexpr int32_t USE_TREE = JSON_QUERY_TEXT_USE_TREE;

// What JSON_VALUE gives: status and text ("<null>" for SQL NULL).
struct ValueAnswer {
    int32_t rc;
    std::string text;
    bool operator==(const ValueAnswer &) const = default;
};

std::ostream &operator<<(std::ostream &os, const ValueAnswer &a) {
    return os << a.rc << " '" << a.text << "'";
}

ValueAnswer json_value(jlpca_ctx *ctx, json_node *doc, jpath *path, int32_t incoming,
                       uint32_t ret_len) {
    path->ret_len = ret_len;
    path->on_error = JPATH_ON_ERROR_ERROR;
    path->wrapper = JPATH_WRAPPER_WITHOUT;
    char *out = nullptr;
    uint32_t len = 0;
    const int32_t rc = json_fun_varchar(ctx, doc, path, &out, &len, incoming);
    return {rc, out ? std::string(out, len) : "<null>"};
}

// One document and path both ways under `sw`; true when the walk answered.
bool agree(const ReadSwitches &sw, const std::string &doc, const std::string &path_text) {
    SCOPED_TRACE("document " + doc + "  path " + path_text);
    VxEnv walked(sw), tree(sw);
    jpath path{}, tree_path{};
    if (compile_path(walked.ctx.get(), path_text, &path) != 0) return false;
    EXPECT_EQ(compile_path(tree.ctx.get(), path_text, &tree_path), 0);

    json_node *found = nullptr;
    const int32_t rc =
        json_query_text(walked.ctx.get(), doc.data(), uint32_t(doc.size()), &path, &found);
    if (rc == USE_TREE) {
        EXPECT_EQ(found, nullptr);
        return false;
    }
    EXPECT_EQ(rc, 0);
    if (rc != 0) return false;

    json_node *root = nullptr, *match = nullptr;
    const int32_t read = tree.read(doc, &root);
    EXPECT_EQ(read, 0) << "the walk answered for a document the tree refuses";
    if (read != 0) return true;
    EXPECT_EQ(json_query(tree.ctx.get(), root, &tree_path, &match), 0);
    if (!match) return true;
    EXPECT_EQ(found->type, match->type);
    EXPECT_EQ(walked.text_of(found), tree.text_of(match));

    jpath bare = path;
    bare.first_filter = bare.last_filter = nullptr;
    bare.filter_count = 0;
    for (uint32_t ret_len : {4000u, 2u})
        EXPECT_EQ(json_value(walked.ctx.get(), found, &bare, 0, ret_len),
                  json_value(tree.ctx.get(), root, &tree_path, read, ret_len));
    return true;
}

// ---------------------------------------------------------------------
// Hand-made rows: the plain cases, and each way the tree answers
// otherwise than a plain walk.
// ---------------------------------------------------------------------

enum Walk : int { TREE = 0, WALK = 1 }; // may the walk answer?

struct TextRow {
    const char *id;
    std::string_view doc; // may hold NUL bytes
    const char *path;
    Walk lax;    // under lax reading (the standard dialect's default)
    Walk strict; // under strict reading
};

class QueryText : public ::testing::TestWithParam<TextRow> {};

TEST_P(QueryText, AgreesWithTree) {
    const TextRow &r = GetParam();
    const std::string doc(r.doc);
    EXPECT_EQ(agree(lax(), doc, r.path), r.lax == WALK) << "lax";
    EXPECT_EQ(agree(strict(), doc, r.path), r.strict == WALK) << "strict";
}

INSTANTIATE_TEST_SUITE_P(
    Plain, QueryText,
    rows<TextRow>({
        {"member", R"({"a":1,"b":"x"})", "$.b", WALK, WALK},
        {"nested", R"({"a":{"b":{"c":true}}})", "$.a.b.c", WALK, WALK},
        {"element", R"([10,20,30])", "$[2]", WALK, WALK},
        {"mixed", R"({"s":[{"u":{"id":7}},{"u":{"id":8}}]})", "$.s[1].u.id", WALK, WALK},
        {"blanks", " {\n\t\"a\" :\r [ 1 , \"two\" ] } ", "$.a[1]", WALK, WALK},
        {"skipped_containers", R"({"x":[{"]":"}"},[[],{}]],"y":"\"{","a":null})", "$.a", WALK,
         WALK},
        {"escaped_value", R"({"a":"q\"\u00e9\\"})", "$.a", WALK, WALK},
        {"escapes_skipped", R"({"x":"\\\"","a":-1.5e3})", "$.a", WALK, WALK},
        {"empty_name", R"({"":5})", R"($."")", WALK, WALK},
        {"name_with_blank", R"({"a b":5})", R"($."a b")", WALK, WALK},
        {"multibyte", "{\"\xC3\xA9\":\"\xE2\x82\xAC\"}", "$.\"\xC3\xA9\"", WALK, WALK},
        {"first_of_repeated_last_step", R"({"a":1,"a":2})", "$.a", WALK, WALK},
        {"repeated_object_first", R"({"a":{"b":1},"a":{"b":2}})", "$.a.b", WALK, WALK},
        {"repeated_array_before_subscript", R"({"a":[1],"a":[2]})", "$.a[0]", WALK, WALK},
        {"text_after_nul", "{\"a\":1}\0x"sv, "$.a", WALK, WALK},
        {"big_integer", R"({"a":123456789012345678901234567890})", "$.a", WALK, WALK},
        {"string_too_long", R"({"a":"abc"})", "$.a", WALK, WALK},
        {"null_value", R"({"a":null})", "$.a", WALK, WALK},
        {"empty_string", R"({"a":""})", "$.a", WALK, WALK},
    }),
    by_id);

INSTANTIATE_TEST_SUITE_P(
    ToTheTree, QueryText,
    rows<TextRow>({
        {"no_match", R"({"a":1})", "$.b", TREE, TREE},
        {"past_the_end", R"([1,2])", "$[2]", TREE, TREE},
        {"object_at_end", R"({"a":{"b":1}})", "$.a", TREE, TREE},
        {"array_at_end", R"({"a":[1]})", "$.a", TREE, TREE},
        {"root", R"({"a":1})", "$", TREE, TREE},
        {"scalar_document", "5", "$", TREE, TREE},
        {"empty_text", "", "$.a", TREE, TREE},
        {"member_on_array", R"([{"a":1},{"a":2}])", "$.a", TREE, TREE},
        {"subscript_on_object", R"({"a":1})", "$[0].a", TREE, TREE},
        {"subscript_on_scalar", R"({"a":1})", "$.a[0]", TREE, TREE},
        {"member_on_scalar", R"({"a":1})", "$.a.b", TREE, TREE},
        {"repeated_scalar_first", R"({"a":1,"a":{"b":2}})", "$.a.b", TREE, TREE},
        {"repeated_array_first", R"({"a":[{"b":1}],"a":{"b":2}})", "$.a.b", TREE, TREE},
        {"escaped_name_before", R"({"\u0061":1,"a":2})", "$.a", TREE, TREE},
        {"escaped_name_other", R"({"\u0062":1,"a":2})", "$.a", TREE, TREE},
        {"name_with_nul", "{\"a\0b\":1,\"a\":2}"sv, "$.a", TREE, TREE},
        {"wildcard", R"({"a":1})", "$.*", TREE, TREE},
        {"all_elements", R"([1])", "$[*]", TREE, TREE},
        {"range", R"([1,2,3])", "$[1 to 2]", TREE, TREE},
        {"list", R"([1,2,3])", "$[0,2]", TREE, TREE},
        {"truncated", R"({"a":1,"b":)", "$.a", TREE, TREE},
        {"broken_after_match", R"({"a":1,"b":[}])", "$.a", TREE, TREE},
        {"trailing_text", R"({"a":1} x)", "$.a", TREE, TREE},
        {"raw_tab_after", "{\"a\":1,\"b\":\"\t\"}", "$.a", TREE, TREE},
    }),
    by_id);

// Lax forms: the walk skips them where they are only passed over, and
// leaves names and values it must read in their lax form to the tree.
INSTANTIATE_TEST_SUITE_P(
    Lax, QueryText,
    rows<TextRow>({
        {"single_quoted_skipped", R"({"x":'a"}',"a":1})", "$.a", WALK, TREE},
        {"unquoted_name_before", R"({x:1,"a":2})", "$.a", TREE, TREE},
        {"single_quoted_name_before", R"({'a':1,"a":2})", "$.a", TREE, TREE},
        {"keyword_name_before", R"({true:1,"a":2})", "$.a", TREE, TREE},
        {"trailing_comma_skipped", R"({"x":[1,],"a":2,})", "$.a", WALK, TREE},
        {"trailing_comma_no_match", R"({"x":1,})", "$.a", TREE, TREE},
        {"plus_number", R"({"a":+1})", "$.a", WALK, TREE},
        {"leading_zeros", R"({"a":007})", "$.a", WALK, TREE},
        {"bare_fraction", R"({"a":.5})", "$.a", WALK, TREE},
        {"suffix", R"({"a":1.5d})", "$.a", WALK, WALK},
        {"upper_keyword", R"({"a":TRUE})", "$.a", WALK, TREE},
        {"single_quoted_value", R"({"a":'x\'y'})", "$.a", TREE, TREE},
        {"single_quoted_value_plain", R"({"a":'x"y'})", "$.a", WALK, TREE},
        {"word_value", R"({"a":abc})", "$.a", TREE, TREE},
    }),
    by_id);

// Readers that keep members otherwise, the other dialects, and the
// character sets where a quote byte may end a character: always the tree.
int32_t walk_a(VxEnv &env) {
    const std::string doc = R"({"a":1,"a":2})";
    jpath path{};
    EXPECT_EQ(compile_path(env.ctx.get(), "$.a", &path), 0);
    json_node *found = nullptr;
    return json_query_text(env.ctx.get(), doc.data(), uint32_t(doc.size()), &path, &found);
}

TEST(QueryTextReaders, OtherReadersUseTheTree) {
    for (int which = 0; which < 5; which++) {
        ReadSwitches sw = lax();
        if (which == 0) sw = dialect(JLPCA_COMPAT_PG);
        if (which == 1) sw = dialect(JLPCA_COMPAT_MYSQL);
        if (which == 2) sw = unique(lax());
        VxEnv env(sw);
        if (which == 3) env.ctx->dup_key_replace = 1;
        if (which == 4) env.ctx->sorted_keys = 1;
        EXPECT_EQ(walk_a(env), USE_TREE) << which;
    }
    for (int32_t set : {GB, EUCKR, UTF8}) {
        CharsetScope cs(set);
        VxEnv env;
        EXPECT_EQ(walk_a(env), set == UTF8 ? 0 : USE_TREE) << set;
    }
}

// ---------------------------------------------------------------------
// Generated rows: small documents over few names (so names repeat and
// types clash), some lax, some cut short, along paths into them.
// ---------------------------------------------------------------------

class DocMaker {
public:
    explicit DocMaker(uint32_t seed) : rng_(seed) {}

    std::string document() {
        std::string out;
        value(out, 0, pick(4) == 0 ? '[' : '{');
        if (pick(8) == 0) out.resize(pick(uint32_t(out.size()) + 1)); // cut short
        return out;
    }

private:
    std::mt19937 rng_;
    uint32_t pick(uint32_t n) { return uint32_t(rng_() % n); }

    void blank(std::string &out) {
        static const char *const kBlanks[] = {"", "", "", " ", "\n ", "\t"};
        out += kBlanks[pick(6)];
    }

    void name(std::string &out) {
        static const char *const kNames[] = {
            R"("a")", R"("b")", R"("a")", R"("c")", R"("\u0061")", R"('a')", "a", R"("a b")",
        };
        out += kNames[pick(pick(3) == 0 ? 8 : 4)];
    }

    void scalar(std::string &out) {
        static const char *const kScalars[] = {
            "1",    "-2.5e1", R"("x")", "true",    "null", R"("q\"\\")", R"("")", "0",
            "007",  "+3",     ".5",     R"('s')", "TRUE", "1d",         R"("}]")", "9e999",
        };
        out += kScalars[pick(pick(3) == 0 ? 16 : 8)];
    }

    // Nested values without recursion on the generator's own stack being
    // deep: depth is at most 4.
    void value(std::string &out, int depth, char kind) {
        if (kind != '{' && kind != '[') return scalar(out);
        out += kind;
        const uint32_t n = pick(4);
        for (uint32_t i = 0; i < n; i++) {
            if (i) out += ',';
            blank(out);
            if (kind == '{') {
                name(out);
                out += ':';
                blank(out);
            }
            const uint32_t k = pick(5);
            value(out, depth + 1, depth >= 3 ? 's' : k == 0 ? '[' : k == 1 ? '{' : 's');
            blank(out);
        }
        if (n && pick(10) == 0) out += ','; // a lax trailing comma
        out += kind == '{' ? '}' : ']';
    }
};

// A path down a document read as a tree: members and positions that are
// there (the first, last or any of repeated names), now and then one past
// the end or one step too many.
std::string path_into(const json_node *node, std::mt19937 &rng) {
    std::string path = "$";
    for (int depth = 0; depth < 6; depth++) {
        const bool container = node && (node->type == JSON_OBJECT || node->type == JSON_ARRAY);
        if (rng() % (container ? 10 : 2) == 0) break;
        if (node && node->type == JSON_OBJECT && node->count) {
            uint32_t k = uint32_t(rng() % node->count);
            const json_keyval *kv = node->first_member;
            while (k-- && kv->next) kv = kv->next;
            path += ".\"" + std::string(kv->name, kv->name_len) + "\"";
            node = kv->value;
        } else if (node && node->type == JSON_ARRAY && node->count) {
            const uint32_t i = uint32_t(rng() % (node->count + 1));
            path += "[" + std::to_string(i) + "]";
            node = i < node->count ? node->items[i] : nullptr;
        } else {
            path += rng() % 2 ? ".a" : "[0]";
            node = nullptr;
        }
    }
    return path;
}

TEST(QueryTextGenerated, AgreesWithTree) {
    DocMaker maker(20261123);
    std::mt19937 rng(7);
    uint32_t walked = 0, total = 0;
    VxEnv reader;
    for (int d = 0; d < 3000; d++) {
        const std::string doc = maker.document();
        json_node *root = nullptr;
        if (reader.read(doc, &root) != 0) root = nullptr;
        for (int p = 0; p < 6; p++) {
            const std::string path = path_into(root, rng);
            for (const ReadSwitches &sw :
                 {lax(), strict(), ReadSwitches{.escape_mode = JLPCA_ESCAPE_KEEP}}) {
                walked += agree(sw, doc, path) ? 1 : 0;
                total++;
            }
            if (HasFailure()) return;
        }
    }
    // Enough answers must come from the walk for the comparison to mean
    // something.
    EXPECT_GT(walked, total / 10) << walked << " of " << total;
}

// The reference documents, along paths that reach their scalars.
TEST(QueryTextGenerated, BenchDocuments) {
    const std::string twitter = read_bench_data("twitter.json");
    const std::string citm = read_bench_data("citm_catalog.json");
    for (const char *path :
         {"$.statuses[0].user.id", "$.statuses[3].text", "$.statuses[99].user.screen_name",
          "$.statuses[14].entities.urls[0].url", "$.search_metadata.count",
          "$.statuses[0].metadata.iso_language_code", "$.statuses[100].id"}) {
        EXPECT_EQ(agree(lax(), twitter, path), std::string(path) != "$.statuses[100].id") << path;
        EXPECT_EQ(agree(strict(), twitter, path), std::string(path) != "$.statuses[100].id")
            << path;
    }
    EXPECT_TRUE(agree(lax(), citm, "$.venueNames.PLEYEL_PLEYEL"));
    EXPECT_TRUE(agree(lax(), citm, "$.performances[5].seatCategories[0].areas[0].areaId"));
}

// The heap failing at each call in turn: the walk answers correctly or
// leaves the document to the tree (whose reading then fails the same way).
TEST(QueryTextMemory, EveryHeapFailureIsClean) {
    const std::string doc = R"({"x":[1,{"y":"z"}],"a":{"b":["q\u00e9",2.5e3]}})";
    uint64_t needed = 0;
    {
        VxEnv env;
        jpath path{};
        ASSERT_EQ(compile_path(env.ctx.get(), "$.a.b[0]", &path), 0);
        const uint64_t before = mem_heap_alloc_count(env.heap);
        json_node *found = nullptr;
        ASSERT_EQ(json_query_text(env.ctx.get(), doc.data(), uint32_t(doc.size()), &path, &found),
                  0);
        needed = mem_heap_alloc_count(env.heap) - before;
        EXPECT_EQ(env.text_of(found), R"("qé")");
    }
    ASSERT_GT(needed, 0u);
    for (uint64_t n = 0; n <= needed; n++) {
        VxEnv env;
        jpath path{};
        ASSERT_EQ(compile_path(env.ctx.get(), "$.a.b[0]", &path), 0);
        mem_heap_set_call_limit(env.heap, n);
        json_node *found = nullptr;
        const int32_t rc =
            json_query_text(env.ctx.get(), doc.data(), uint32_t(doc.size()), &path, &found);
        EXPECT_EQ(rc, n >= needed ? 0 : USE_TREE) << "heap limit " << n;
        EXPECT_EQ(found != nullptr, rc == 0) << "heap limit " << n;
    }
}

} // namespace
