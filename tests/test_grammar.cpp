// The tree reader: json_flex over the shared case table, the order in
// which nodes are created and linked, dialect and duplicate-name rules,
// the nesting limits of the parser stack, truncated input, conformance
// cases, and out-of-memory at every heap and allocator call.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "read_cases.h"
#include "vx_elog.h"

namespace {

class ReadTable : public ::testing::TestWithParam<ReadCase> {};

TEST_P(ReadTable, JsonFlex) {
    const ReadCase &c = GetParam();
    ReadEnv env(c.sw);
    json_node *root = nullptr;
    ASSERT_EQ(env.read(c.text, &root), c.rc);
    if (c.rc == 0) {
        EXPECT_EQ(dump(root), c.tree);
        EXPECT_EQ(root, env.ctx->first_node);
    } else {
        EXPECT_EQ(root, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, ReadTable, ::testing::ValuesIn(read_cases()),
                         [](const auto &info) { return std::string(info.param.id); });

TEST(Read, EmptyText) {
    struct Row {
        ReadSwitches sw;
        int32_t blank;
        int32_t rc;
    };
    for (const Row &r : {Row{lax(), 0, 0}, Row{lax(), 1, BAD},
                         Row{dialect(JLPCA_COMPAT_PG), 0, BAD},
                         Row{dialect(JLPCA_COMPAT_MYSQL), 0, BAD}}) {
        ReadEnv env(r.sw);
        ASSERT_EQ(jlpca_reinit_with_blank(env.ctx.get(), "", 0, r.blank), 0);
        json_node *root = reinterpret_cast<json_node *>(1);
        EXPECT_EQ(json_flex(env.ctx.get(), &root), r.rc);
        EXPECT_EQ(root, nullptr);
    }
}

// Objects and arrays are created right after their opening bracket, so
// the creation chain is the document in pre-order; parents and element
// lists are linked as the values are reduced.
TEST(Read, CreationChainAndLinks) {
    ReadEnv env(strict());
    json_node *root = nullptr;
    ASSERT_EQ(env.read(R"({"a":[1,{"b":"x"}],"c":[],"d":true})", &root), 0);
    std::vector<std::string> chain;
    for (json_node *n = env.ctx->first_node; n; n = n->chain_next) chain.push_back(dump(n));
    EXPECT_EQ(chain, (std::vector<std::string>{R"({"a":[1,{"b":"x"}],"c":[],"d":true})",
                                               R"([1,{"b":"x"}])", "1", R"({"b":"x"})",
                                               R"("x")", "[]", "true"}));
    EXPECT_EQ(env.ctx->last_node->type, uint32_t(JSON_BOOLEAN));
    EXPECT_EQ(env.ctx->cur_node, root);

    json_node *a = root->first_member->value;
    ASSERT_EQ(a->type, uint32_t(JSON_ARRAY));
    EXPECT_EQ(a->parent, root);
    EXPECT_EQ(a->lst_count, 2u);
    EXPECT_EQ(a->count, 2u);
    EXPECT_EQ(a->capacity, 2u);
    EXPECT_EQ(a->lst_first, a->items[0]);
    EXPECT_EQ(a->lst_last, a->items[1]);
    EXPECT_EQ(a->items[0]->next_sibling, a->items[1]);
    EXPECT_EQ(a->items[1]->prev_sibling, a->items[0]);
    EXPECT_EQ(a->items[1]->parent, a);
    json_node *empty = root->first_member->next->value;
    EXPECT_EQ(empty->items, nullptr); // nothing to convert
    EXPECT_EQ(root->count, 3u);
    EXPECT_EQ(root->last_member->name_len, 1u);
}

TEST(Read, StringNodesKeepEscapeFlag) {
    ReadEnv env(strict());
    json_node *root = nullptr;
    ASSERT_EQ(env.read(R"({"k\n":["plain","e\tsc",""]})", &root), 0);
    const json_keyval *kv = root->first_member;
    EXPECT_EQ(kv->flags, 1u);
    EXPECT_EQ(std::string(kv->name, kv->name_len), "k\n");
    json_node *arr = kv->value;
    EXPECT_EQ(arr->items[0]->str_flags, 0u);
    EXPECT_EQ(arr->items[1]->str_flags, 1u);
    EXPECT_EQ(arr->items[1]->str_len, 4u);
    EXPECT_EQ(arr->items[2]->str, nullptr); // an empty string has no text
    EXPECT_EQ(arr->items[2]->str_len, 0u);
}

TEST(Read, ArraySpareSlots) {
    ReadEnv env(strict());
    env.ctx->array_spare = 3;
    json_node *root = nullptr;
    ASSERT_EQ(env.read("[[1,2],[3]]", &root), 0);
    EXPECT_EQ(root->capacity, 5u);
    EXPECT_EQ(root->items[0]->capacity, 5u);
    EXPECT_EQ(root->items[1]->capacity, 4u);
    EXPECT_EQ(root->items[1]->count, 1u);
}

TEST(Read, KeyPolicies) {
    struct Row {
        const char *id;
        int32_t escape_mode;
        int32_t unique;
        const char *text;
        int32_t rc;
        const char *tree;
    };
    for (const Row &r : {
             Row{"last_wins_in_place", JLPCA_ESCAPE_SORTED, 0, R"({"b":1,"a":2,"b":3})", 0,
                 R"({"a":2,"b":3})"},
             Row{"sorted_by_length_then_bytes", JLPCA_ESCAPE_SORTED, 0,
                 R"({"bb":1,"a":2,"ab":3})", 0, R"({"a":2,"ab":3,"bb":1})"},
             Row{"unique_rejects", JLPCA_ESCAPE_DECODE, 1, R"({"a":{"x":1,"x":2}})", BAD,
                 nullptr},
         }) {
        ReadSwitches sw = strict();
        sw.escape_mode = r.escape_mode;
        sw.unique_keys = r.unique;
        ReadEnv env(sw);
        json_node *root = nullptr;
        ASSERT_EQ(env.read(r.text, &root), r.rc) << r.id;
        if (r.tree) {
            EXPECT_EQ(dump(root), r.tree) << r.id;
        }
    }
}

// The parser stack holds 10,000 entries: two per array level and four per
// object level in this grammar.
std::string nested_arrays(int depth) {
    return std::string(size_t(depth), '[') + "1" + std::string(size_t(depth), ']');
}
std::string nested_objects(int depth) {
    std::string s;
    for (int i = 0; i < depth; i++) s += R"({"a":)";
    return s + "1" + std::string(size_t(depth), '}');
}

TEST(Read, NestingLimits) {
    struct Row {
        std::string text;
        int32_t rc;
    };
    for (const Row &r : {Row{nested_arrays(4000), 0}, Row{nested_arrays(4997), 0},
                         Row{nested_arrays(4998), BAD}, Row{nested_arrays(5000), BAD},
                         Row{nested_objects(2499), 0}, Row{nested_objects(2500), BAD}}) {
        ReadEnv env(strict());
        json_node *root = nullptr;
        EXPECT_EQ(env.read(r.text, &root), r.rc) << r.text.size();
    }
}

TEST(Read, ParserResultCodes) {
    struct Row {
        std::string text;
        int32_t parse_rc;
    };
    for (const Row &r : {Row{"[1]", 0}, Row{"[1 2]", 1}, Row{nested_arrays(5000), 2},
                         Row{"[1,]", VXJSON_ERR_SYNTAX}, Row{"{true:1}", VXJSON_ERR_SYNTAX},
                         Row{"7", VXJSON_ERR_INVALID_JSON}}) {
        ReadEnv env(strict());
        env.text = r.text;
        ASSERT_EQ(jlpca_reinit(env.ctx.get(), env.text.data(), uint32_t(env.text.size())), 0);
        void *scanner = nullptr;
        ASSERT_EQ(json_flex_scanner_init(env.ctx.get(), &scanner), 0);
        EXPECT_EQ(json_parse(scanner, env.ctx.get()), r.parse_rc) << r.text.substr(0, 10);
        json_flex_scanner_deinit(env.ctx.get(), scanner);
    }
    EXPECT_EQ(json_error(nullptr, "syntax error"), -1);
    EXPECT_EQ(json_error_ex(nullptr, -503), -503);
}

TEST(Read, LexicalErrorStaysInContext) {
    ReadEnv env(strict());
    json_node *root = nullptr;
    EXPECT_EQ(env.read("[\n\n\"a\tb\"]", &root), BAD);
    EXPECT_EQ(env.ctx->err_code, VXJSON_ERR_LEX);
    EXPECT_STREQ(env.ctx->err_msg, "charactor need escape");
    EXPECT_EQ(env.ctx->err_line, 3u);
    // The next read starts clean.
    EXPECT_EQ(env.read("[1]", &root), 0);
    EXPECT_EQ(env.ctx->err_code, 0);
    EXPECT_STREQ(env.ctx->err_msg, "");
}

// A few RFC 8259 cases, read strictly.
TEST(Read, Rfc8259Strict) {
    struct Row {
        const char *text;
        bool ok;
    };
    for (const Row &r : {Row{R"({"Image":{"Width":800,"Height":600,"Title":"View",)"
                             R"("Thumbnail":{"Url":"http://x/y","Height":125,"Width":100},)"
                             R"("Animated":false,"IDs":[116,943,234,38793]}})",
                             true},
                         Row{R"([{"precision":"zip","Latitude":37.7668,"Longitude":-122.3959}])",
                             true},
                         Row{R"(["\u00e9", -0, 0.0, 1E+2, 1e-2, 12.5e3])", true},
                         Row{"[01]", false}, Row{"[1.]", false}, Row{"[.1]", false},
                         Row{"[+1]", false}, Row{"['x']", false}, Row{"{x:1}", false},
                         Row{"[1,]", false}, Row{"[\"\t\"]", false}, Row{"[True]", false}}) {
        ReadEnv env(strict());
        json_node *root = nullptr;
        EXPECT_EQ(env.read(r.text, &root), r.ok ? 0 : BAD) << r.text;
    }
}

// Every prefix of a document is read without harm; only complete ones
// succeed.
TEST(Read, TruncatedAtEveryByte) {
    const std::string doc =
        R"({"id":7,"name":"caf\u00e9 \"x\"","tags":['a',{b:1}],"n":[-1.5e3,0,true,null,{}],"t":false})";
    ReadEnv env(lax());
    json_node *root = nullptr;
    ASSERT_EQ(env.read(doc, &root), 0);
    for (size_t len = 0; len < doc.size(); len++) {
        ReadEnv e(lax());
        int32_t rc = e.read(doc.substr(0, len), &root);
        EXPECT_EQ(rc, len == 0 ? 0 : BAD) << len;
        EXPECT_EQ(e.check(doc.substr(0, len)), len == 0 ? 0 : BAD) << len;
    }
}

// Out of heap at every call: -3105 (json_flex maps every failure to it)
// until the limit covers all calls, never a crash.
TEST(Read, HeapExhaustedAtEveryCall) {
    // An escaped long string grows the literal into the heap; -007 needs a
    // heap copy of its normalised text.
    const std::string doc = std::string(R"({"a":[1,-007,"s\n",'q',true,null,{}],b:{"c":[[]]},)") +
                            R"("long":"\t)" + std::string(40000, 'x') + R"("})";
    uint64_t needed;
    std::string full;
    {
        ReadEnv env(lax());
        json_node *root = nullptr;
        ASSERT_EQ(env.read(doc, &root), 0);
        needed = mem_heap_alloc_count(env.heap);
        full = dump(root);
    }
    for (uint64_t n = 0; n <= needed; n++) {
        ReadEnv env(lax());
        mem_heap_set_call_limit(env.heap, n);
        json_node *root = nullptr;
        int32_t rc = env.read(doc, &root);
        EXPECT_EQ(rc, n >= needed ? 0 : BAD) << n;
        if (rc == 0) {
            EXPECT_EQ(dump(root), full);
        }
    }
}

// Out of allocator while converting element lists: the arrays made before
// the failure (in creation order) are converted, the rest are not, the
// failure is reported, and the read itself succeeds.
TEST(Read, AllocatorExhaustedInConversion) {
    for (uint64_t n = 0; n <= 4; n++) {
        ReadEnv env(strict());
        vx_allocator_set_call_limit(&env.alloc_state, n);
        elog_trail_clear();
        json_node *root = nullptr;
        ASSERT_EQ(env.read("[[1],[2,[3]]]", &root), 0);
        const json_node *arrays[] = {root, root->lst_first, root->lst_last,
                                     root->lst_last->lst_last};
        for (uint64_t i = 0; i < 4; i++)
            EXPECT_EQ(arrays[i]->items != nullptr, i < n) << n << " " << i;
        bool reported = false;
        for (uint32_t i = 0; i < elog_trail_count(); i++) {
            vx_elog_entry e;
            if (elog_trail_get(i, &e) == 0 && e.code == VXJSON_ERR_NOMEM && e.line == 86 &&
                std::string(e.src) == "json/json")
                reported = true;
        }
        EXPECT_EQ(reported, n < 4) << n;
    }
}

// The final conversion done from the reader's log agrees with the exported
// chain walk on a document with many arrays.
TEST(Read, ConversionMatchesChainWalk) {
    std::string doc = "[";
    for (int i = 0; i < 3000; i++) doc += (i ? ",[" : "[") + std::to_string(i) + ",[],[1,[2]]]";
    doc += "]";
    ReadEnv env(strict());
    json_node *root = nullptr;
    ASSERT_EQ(env.read(doc, &root), 0);
    const std::string fast = dump(root);
    for (json_node *n = env.ctx->first_node; n; n = n->chain_next)
        if (n->type == JSON_ARRAY) n->items = nullptr;
    ASSERT_EQ(json_adjust_array(env.ctx.get()), 0);
    EXPECT_EQ(dump(root), fast);
    EXPECT_EQ(root->count, 3000u);
}

} // namespace
