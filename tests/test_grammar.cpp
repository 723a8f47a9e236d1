// The tree grammar (json_flex) and the check grammar (jcheck_flex): both
// over the shared case table (nesting limits included), empty text,
// truncated input and the parsers' own result codes; then what only the
// tree reader does: the order in which nodes are created and linked,
// escape flags, spare slots and allocator failure during conversion.
#include <gtest/gtest.h>

#include "read_cases.h"

namespace {

class BothGrammars : public ::testing::TestWithParam<ReadCase> {};
TEST_P(BothGrammars, ReadAndCheck) {
    const ReadCase &c = GetParam();
    VxEnv env(c.sw);
    json_node *root = nullptr;
    ASSERT_EQ(env.read(c.text, &root), c.rc);
    const int32_t read_err = env.ctx->err_code;
    if (c.rc == 0) {
        EXPECT_EQ(dump(root), std::string(c.tree) == "=" ? c.text : c.tree);
        EXPECT_EQ(root, env.ctx->first_node);
    } else {
        EXPECT_EQ(root, nullptr);
    }
    EXPECT_EQ(env.check(c.text), expected_check(c));
    EXPECT_EQ(env.ctx->err_code, read_err) << "both grammars see the same lexical cause";
}

// Tokens near the end of the text are read byte by byte and the others
// in wider steps; with blanks behind it every row must read the same.
TEST_P(BothGrammars, ReadAndCheckWithTextBehind) {
    const ReadCase &c = GetParam();
    const std::string padded = c.text + std::string(40, ' ');
    VxEnv env(c.sw);
    json_node *root = nullptr;
    ASSERT_EQ(env.read(padded, &root), c.rc);
    if (c.rc == 0) {
        EXPECT_EQ(dump(root), std::string(c.tree) == "=" ? c.text : c.tree);
    }
    EXPECT_EQ(env.check(padded), expected_check(c));
}

INSTANTIATE_TEST_SUITE_P(Cases, BothGrammars, ::testing::ValuesIn(read_cases()), by_id);

// Every number shape, read with nothing and with plenty of text behind
// it, in each mode that changes how numbers read: the same tree (or the
// same refusal, cause and message) either way.
TEST(BothGrammars, NumbersReadAlikeAtAndAwayFromTheEnd) {
    const std::string thirty_one(31, '7'), forty(40, '3');
    const std::vector<std::string> numbers = {
        "0",
        "-0",
        "7",
        "-7",
        "0.5",
        "-0.5",
        "0.0",
        "00",
        "-007",
        "+1",
        "1.",
        "-1.",
        ".5",
        "-.5",
        "1.2.3",
        "1e5",
        "1E+5",
        "1e-5",
        "-2.5e3",
        "5e",
        "5E",
        "5d",
        "5D",
        "5f",
        "5F",
        "0d",
        "5x",
        "2147483647",
        "2147483648",
        "-2147483649",
        "123456789012345678",
        "1234567890123456789",
        "-123456789012345678",
        thirty_one,
        "1." + std::string(29, '1'),
        std::string(30, '2') + ".5",
        forty,
        "-" + forty,
        forty + ".5",
        "0." + forty,
        "1.7976931348623159e308",
        "1" + std::string(400, '0'),
        "-",
        "-a",
        "1-2",
        "1.5.",
    };
    ReadSwitches number_mode_2 = strict();
    number_mode_2.number_mode = 2;
    for (const ReadSwitches &sw : {lax(), strict(), dialect(JLPCA_COMPAT_MYSQL), number_mode_2}) {
        for (const std::string &n : numbers) {
            const std::string text = "[" + n + "]";
            SCOPED_TRACE(text);
            VxEnv at_end(sw), away(sw);
            json_node *a = nullptr, *b = nullptr;
            const int32_t rc = at_end.read(text, &a);
            ASSERT_EQ(away.read(text + std::string(64, ' '), &b), rc);
            EXPECT_EQ(away.ctx->err_code, at_end.ctx->err_code);
            EXPECT_STREQ(away.ctx->err_msg, at_end.ctx->err_msg);
            if (rc == 0) {
                EXPECT_EQ(dump(b), dump(a));
                ASSERT_EQ(b->count, a->count);
                for (uint32_t i = 0; i < a->count; i++)
                    EXPECT_EQ(b->items[i]->type, a->items[i]->type);
            }
            EXPECT_EQ(away.check(text + std::string(64, ' ')), at_end.check(text));
        }
    }
}

TEST(BothGrammars, EmptyText) {
    struct Row {
        ReadSwitches sw;
        int32_t blank, rc;
    };
    for (const Row &r :
         {Row{lax(), 0, 0}, Row{lax(), 1, BAD}, Row{dialect(JLPCA_COMPAT_PG), 0, BAD},
          Row{dialect(JLPCA_COMPAT_MYSQL), 0, BAD}}) {
        VxEnv env(r.sw);
        ASSERT_EQ(jlpca_reinit_with_blank(env.ctx.get(), "", 0, r.blank), 0);
        json_node *root = reinterpret_cast<json_node *>(1);
        EXPECT_EQ(json_flex(env.ctx.get(), &root), r.rc);
        EXPECT_EQ(root, nullptr);
        ASSERT_EQ(jlpca_reinit_with_blank(env.ctx.get(), "", 0, r.blank), 0);
        EXPECT_EQ(jcheck_flex(env.ctx.get()), r.rc);
    }
}

// 0 accepted, 1 syntax error, 2 stack exhausted, or a code from an action.
TEST(BothGrammars, ParserResultCodes) {
    struct Row {
        std::string text;
        int32_t parse_rc, check_rc;
    };
    for (const Row &r : {Row{"[1]", 0, 0}, Row{"[1 2]", 1, 1}, Row{nested_arrays(5000), 2, 2},
                         Row{"[1,]", VXJSON_ERR_SYNTAX, VXJSON_ERR_SYNTAX},
                         Row{"{true:1}", VXJSON_ERR_SYNTAX, VXJSON_ERR_SYNTAX},
                         Row{"7", BAD, VXJSON_ERR_SYNTAX}}) {
        for (bool tree : {true, false}) {
            VxEnv env(strict());
            ASSERT_EQ(env.start(r.text), 0);
            void *scanner = nullptr;
            ASSERT_EQ(json_flex_scanner_init(env.ctx.get(), &scanner), 0);
            EXPECT_EQ(tree ? json_parse(scanner, env.ctx.get())
                           : jcheck_parse(scanner, env.ctx.get()),
                      tree ? r.parse_rc : r.check_rc)
                << r.text.substr(0, 10) << (tree ? " tree" : " check");
            json_flex_scanner_deinit(env.ctx.get(), scanner);
        }
    }
    VxEnv env;
    EXPECT_EQ(json_error(nullptr, "syntax error"), -1);
    EXPECT_EQ(json_error_ex(nullptr, -503), -503);
    EXPECT_EQ(jcheck_error(env.ctx.get(), "syntax error"), -1);
    EXPECT_EQ(jcheck_error_ex(env.ctx.get(), -2007), -2007);
}

// Every prefix of a document is read without harm; only complete ones
// succeed.
TEST(BothGrammars, TruncatedAtEveryByte) {
    const std::string doc =
        R"({"id":7,"name":"caf\u00e9 \"x\"","tags":['a',{b:1}],"n":[-1.5e3,0,true,null,{}],"t":false})";
    for (size_t len = 0; len <= doc.size(); len++) {
        VxEnv env(lax());
        json_node *root = nullptr;
        const int32_t want = len == 0 || len == doc.size() ? 0 : BAD;
        EXPECT_EQ(env.read(doc.substr(0, len), &root), want) << len;
        EXPECT_EQ(env.check(doc.substr(0, len)), want) << len;
    }
}

// The check grammar builds nothing, unless unique names need the tree
// grammar's member lists.
TEST(Check, BuildsNothingWithoutUniqueNames) {
    const std::string doc = R"({"a":[1,2,{"b":null}]})";
    VxEnv env(lax());
    EXPECT_EQ(env.check(doc), 0);
    EXPECT_EQ(env.ctx->first_node, nullptr);
    EXPECT_EQ(mem_heap_alloc_count(env.heap), 0u);
    VxEnv u(unique(lax()));
    EXPECT_EQ(u.check(doc), 0);
    ASSERT_NE(u.ctx->first_node, nullptr);
    EXPECT_EQ(u.ctx->first_node->type, uint32_t(JSON_OBJECT));
}

// Objects and arrays are created right after their opening bracket, so
// the creation chain is the document in pre-order; parents and element
// lists are linked as the values are reduced.
TEST(Read, CreationChainAndLinks) {
    VxEnv env(strict());
    json_node *root = env.tree(R"({"a":[1,{"b":"x"}],"c":[],"d":true})");
    std::vector<std::string> chain;
    for (json_node *n = env.ctx->first_node; n; n = n->chain_next) chain.push_back(dump(n));
    EXPECT_EQ(chain, (std::vector<std::string>{R"({"a":[1,{"b":"x"}],"c":[],"d":true})",
                                               R"([1,{"b":"x"}])", "1", R"({"b":"x"})", R"("x")",
                                               "[]", "true"}));
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
    EXPECT_EQ(root->first_member->next->value->items, nullptr)
        << "an empty list has nothing to convert";
    EXPECT_EQ(root->count, 3u);
    EXPECT_EQ(root->last_member->name_len, 1u);
}

TEST(Read, StringNodesKeepEscapeFlag) {
    VxEnv env(strict());
    json_node *root = env.tree(R"({"k\n":["plain","e\tsc",""]})");
    const json_keyval *kv = root->first_member;
    EXPECT_EQ(kv->flags, 1u);
    EXPECT_EQ(std::string(kv->name, kv->name_len), "k\n");
    json_node *arr = kv->value;
    EXPECT_EQ(arr->items[0]->str_flags, 0u);
    EXPECT_EQ(arr->items[1]->str_flags, 1u);
    EXPECT_EQ(arr->items[1]->str_len, 4u);
    EXPECT_EQ(arr->items[2]->str, nullptr) << "an empty string has no text";
    EXPECT_EQ(arr->items[2]->str_len, 0u);
}

TEST(Read, ArraySpareSlots) {
    VxEnv env(strict());
    env.ctx->array_spare = 3;
    json_node *root = env.tree("[[1,2],[3]]");
    EXPECT_EQ(root->capacity, 5u);
    EXPECT_EQ(root->items[0]->capacity, 5u);
    EXPECT_EQ(root->items[1]->capacity, 4u);
    EXPECT_EQ(root->items[1]->count, 1u);
}

// json_flex maps every failure to -3105; the lexical cause stays behind.
TEST(Read, LexicalErrorStaysInContext) {
    VxEnv env(strict());
    json_node *root = nullptr;
    EXPECT_EQ(env.read("[\n\n\"a\tb\"]", &root), BAD);
    EXPECT_EQ(env.ctx->err_code, VXJSON_ERR_LEX);
    EXPECT_STREQ(env.ctx->err_msg, "charactor need escape");
    EXPECT_EQ(env.ctx->err_line, 3u);
}

// Out of allocator while converting element lists: the arrays made before
// the failure (in creation order) are converted, the rest are not, the
// failure is reported, and the read itself succeeds.
TEST(Read, AllocatorExhaustedInConversion) {
    for (uint64_t n = 0; n <= 4; n++) {
        VxEnv env(strict());
        vx_allocator_set_call_limit(&env.alloc_state, n);
        elog_trail_clear();
        json_node *root = env.tree("[[1],[2,[3]]]");
        const json_node *arrays[] = {root, root->lst_first, root->lst_last,
                                     root->lst_last->lst_last};
        for (uint64_t i = 0; i < 4; i++)
            EXPECT_EQ(arrays[i]->items != nullptr, i < n) << n << " " << i;
        EXPECT_EQ(trail_has(VXJSON_ERR_NOMEM, "json/json", 86), n < 4) << n;
    }
}

// The final conversion done from the reader's log agrees with the exported
// chain walk on a document with many arrays.
TEST(Read, ConversionMatchesChainWalk) {
    std::string doc = "[";
    for (int i = 0; i < 3000; i++) doc += (i ? ",[" : "[") + std::to_string(i) + ",[],[1,[2]]]";
    doc += "]";
    VxEnv env(strict());
    json_node *root = env.tree(doc);
    const std::string fast = dump(root);
    for (json_node *n = env.ctx->first_node; n; n = n->chain_next)
        if (n->type == JSON_ARRAY) n->items = nullptr;
    ASSERT_EQ(json_adjust_array(env.ctx.get()), 0);
    EXPECT_EQ(dump(root), fast);
    EXPECT_EQ(root->count, 3000u);
}

} // namespace
