// The check grammar: jcheck_flex accepts what json_flex accepts (over the
// shared case table), answers only 0 or -3105, consults the dialect but
// not scalar_top, runs the tree grammar for unique names, and refuses the
// same nesting depths as the tree grammar.
#include <gtest/gtest.h>

#include <string>

#include "read_cases.h"

namespace {

class CheckTable : public ::testing::TestWithParam<ReadCase> {};

TEST_P(CheckTable, AgreesWithReader) {
    const ReadCase &c = GetParam();
    ReadEnv env(c.sw);
    EXPECT_EQ(env.check(c.text), expected_check(c));
    // Both grammars see the same lexical cause.
    const int32_t check_err = env.ctx->err_code;
    json_node *root = nullptr;
    (void)env.read(c.text, &root);
    EXPECT_EQ(env.ctx->err_code, check_err);
}

INSTANTIATE_TEST_SUITE_P(Cases, CheckTable, ::testing::ValuesIn(read_cases()),
                         [](const auto &info) { return std::string(info.param.id); });

TEST(Check, EmptyText) {
    struct Row {
        ReadSwitches sw;
        int32_t blank;
        int32_t rc;
    };
    for (const Row &r : {Row{lax(), 0, 0}, Row{lax(), 1, BAD},
                         Row{dialect(JLPCA_COMPAT_PG), 0, BAD}}) {
        ReadEnv env(r.sw);
        ASSERT_EQ(jlpca_reinit_with_blank(env.ctx.get(), "", 0, r.blank), 0);
        EXPECT_EQ(jcheck_flex(env.ctx.get()), r.rc);
    }
}

TEST(Check, ScalarDocumentNeedsADialect) {
    struct Row {
        ReadSwitches sw;
        int32_t rc;
    };
    for (const Row &r : {Row{lax(), BAD}, Row{with_scalar_top(lax()), BAD},
                         Row{dialect(JLPCA_COMPAT_PG), 0}, Row{dialect(JLPCA_COMPAT_MYSQL), 0}}) {
        ReadEnv env(r.sw);
        EXPECT_EQ(env.check("42"), r.rc);
        EXPECT_EQ(env.check("\"x\""), r.rc);
    }
}

TEST(Check, BuildsNothingWithoutUniqueNames) {
    ReadEnv env(lax());
    EXPECT_EQ(env.check(R"({"a":[1,2,{"b":null}]})"), 0);
    EXPECT_EQ(env.ctx->first_node, nullptr);
    EXPECT_EQ(mem_heap_alloc_count(env.heap), 0u);

    ReadEnv u(unique(lax()));
    EXPECT_EQ(u.check(R"({"a":[1,2,{"b":null}]})"), 0);
    ASSERT_NE(u.ctx->first_node, nullptr);
    EXPECT_EQ(u.ctx->first_node->type, uint32_t(JSON_OBJECT));
}

TEST(Check, OverflowIsInvalid) {
    ReadEnv env(dialect(JLPCA_COMPAT_MYSQL));
    EXPECT_EQ(env.check("[1e400]"), BAD);
    EXPECT_EQ(env.ctx->err_code, VXJSON_ERR_DOUBLE_OVERFLOW);
    EXPECT_STREQ(env.ctx->err_msg, "number overflow");
    ReadSwitches nm = lax();
    nm.number_mode = 2;
    ReadEnv env2(nm);
    EXPECT_EQ(env2.check("[1.5e999]"), BAD);
    EXPECT_EQ(env2.check("[1.5e99]"), 0);
}

// The same depths as the tree grammar: two entries per array level and
// four per object level.
TEST(Check, NestingLimits) {
    auto arrays = [](int d) {
        return std::string(size_t(d), '[') + "1" + std::string(size_t(d), ']');
    };
    auto objects = [](int d) {
        std::string s;
        for (int i = 0; i < d; i++) s += "{\"a\":";
        return s + "1" + std::string(size_t(d), '}');
    };
    struct Row {
        std::string text;
        int32_t rc;
    };
    for (const Row &r : {Row{arrays(4000), 0}, Row{arrays(4997), 0}, Row{arrays(4998), BAD},
                         Row{objects(2499), 0}, Row{objects(2500), BAD}}) {
        ReadEnv env(strict());
        EXPECT_EQ(env.check(r.text), r.rc) << r.text.size();
    }
    ReadEnv env(strict());
    env.text = arrays(4998);
    ASSERT_EQ(jlpca_reinit(env.ctx.get(), env.text.data(), uint32_t(env.text.size())), 0);
    void *scanner = nullptr;
    ASSERT_EQ(json_flex_scanner_init(env.ctx.get(), &scanner), 0);
    EXPECT_EQ(jcheck_parse(scanner, env.ctx.get()), 2);
    json_flex_scanner_deinit(env.ctx.get(), scanner);
    EXPECT_EQ(jcheck_error(env.ctx.get(), "syntax error"), -1);
    EXPECT_EQ(jcheck_error_ex(env.ctx.get(), -2007), -2007);
}

} // namespace
