// The pieces of the function layer on their own: the JSON_QUERY wrapping
// table cell by cell, the JSON_VALUE shape rule, the ON ERROR actions with
// their reports, and the handled flag of the shared evaluation step.
#include <gtest/gtest.h>

#include <string>

#include "vx_env.h"

namespace {
using ::operator<<;

constexpr int32_t kScalar = VXJSON_ERR_QUERY_SCALAR;
constexpr uint32_t UNTOUCHED = 99; // a wrap the check must leave alone

enum class shape { object, document_array, virtual_array, scalar };

json_node *make(VxEnv &env, shape s) {
    switch (s) {
    case shape::object: return env.object({{"a", env.integer(1)}});
    case shape::document_array: return env.array({env.integer(1)});
    case shape::virtual_array: {
        json_node *v = env.array({env.integer(1), env.integer(2)});
        v->is_virtual = 1;
        return v;
    }
    case shape::scalar: return env.integer(5);
    }
    return nullptr;
}

// A result's shape through JSON_QUERY's wrapping rule under each wrapper
// clause (1 without, 2 with, 3 conditional) and JSON_VALUE's scalar rule.
struct ShapeRow {
    const char *id;
    shape result;
    int32_t value_rc;                      // json_fun_value_check
    std::pair<int32_t, uint32_t> query[3]; // per clause: code, the caller's wrap afterwards
};

class ShapeCheck : public ::testing::TestWithParam<ShapeRow> {};
TEST_P(ShapeCheck, QueryWrapAndValueCode) {
    const ShapeRow &r = GetParam();
    VxEnv env;
    for (uint32_t wrapper : {1u, 2u, 3u}) {
        jpath path{};
        path.wrapper = wrapper;
        uint32_t wrap = UNTOUCHED;
        EXPECT_EQ(json_fun_query_check(&path, make(env, r.result), &wrap), r.query[wrapper - 1].first)
            << wrapper;
        EXPECT_EQ(wrap, r.query[wrapper - 1].second) << wrapper;
    }
    EXPECT_EQ(json_fun_value_check(make(env, r.result)), r.value_rc);
}

constexpr uint32_t U = UNTOUCHED;
// clang-format off
INSTANTIATE_TEST_SUITE_P(Table, ShapeCheck, rows<ShapeRow>({
    {"Object", shape::object, VXJSON_ERR_VALUE_NOT_SCALAR, {{0, U}, {0, U}, {0, 1}}},
    {"DocumentArray", shape::document_array, VXJSON_ERR_VALUE_NOT_SCALAR, {{0, U}, {0, U}, {0, 1}}},
    {"Several", shape::virtual_array, VXJSON_ERR_VALUE_MANY, {{kScalar, U}, {0, 1}, {0, 1}}},
    {"Scalar", shape::scalar, 0, {{kScalar, U}, {0, U}, {0, 2}}},
}), by_id);
// clang-format on

// ---- ON ERROR ----

constexpr int32_t kLineValue = 4310, kLineText = 4312, kLineEmpty = 4314;

struct OnErrorRow {
    const char *id;
    uint32_t on_error;
    int32_t status;      // the failure handed in
    int32_t rc_number;   // jpath_dop_ret_code
    int32_t indicator;   // its indicator afterwards (starts at 7)
    int32_t rc_text;     // jpath_varchar_ret_code
    std::string text;    // its text, "NULL" for none
    int32_t line_number; // the report of a raised failure, 0 for none
    int32_t line_text;
};

// One report of code at line, or none for line 0.
Trail reports(int32_t code, int32_t line) { return line ? Trail{{code, line}} : Trail{}; }

class OnError : public ::testing::TestWithParam<OnErrorRow> {};
TEST_P(OnError, BothActions) {
    const OnErrorRow &r = GetParam();
    VxEnv env;
    jpath path{};
    path.on_error = r.on_error;

    elog_trail_clear();
    int32_t indicator = 7;
    EXPECT_EQ(jpath_dop_ret_code(&path, &indicator, r.status), r.rc_number);
    EXPECT_EQ(indicator, r.indicator);
    EXPECT_EQ(trail(), reports(r.status, r.line_number));
    // No indicator is needed when the caller has none.
    EXPECT_EQ(jpath_dop_ret_code(&path, nullptr, r.status), r.rc_number);

    elog_trail_clear();
    char *text = reinterpret_cast<char *>(1);
    uint32_t len = 99;
    EXPECT_EQ(jpath_varchar_ret_code(env.ctx.get(), &path, &text, &len, r.status), r.rc_text);
    EXPECT_EQ(text ? std::string(text, len) : "NULL", r.text);
    if (!text) {
        EXPECT_EQ(len, 0u);
    }
    EXPECT_EQ(trail(), reports(r.status, r.line_text));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Actions, OnError, rows<OnErrorRow>({
    {"NotGivenIsNull", 0, -3106, 0, 0, 0, "NULL", 0, 0},
    {"Null", 1, -3106, 0, 0, 0, "NULL", 0, 0},
    {"Error", 2, -3106, -3106, 7, -3106, "NULL", kLineValue, kLineText},
    {"EmptyOnlyForText", 3, -3107, 0, 0, 0, "[]", 0, 0},
    {"Default", 4, -3111, 100, 7, 100, "NULL", 0, 0},
    {"OutOfRangeIsNull", 7, -3111, 0, 0, 0, "NULL", 0, 0},
    // Out of memory passes every clause.
    {"NoMemoryUnderNull", 1, -503, -503, 7, -503, "NULL", kLineValue, kLineText},
    {"NoMemoryUnderEmpty", 3, -503, -503, 7, -503, "NULL", kLineValue, kLineText},
    {"NoMemoryUnderDefault", 4, -503, -503, 7, -503, "NULL", kLineValue, kLineText},
}), by_id);
// clang-format on

TEST(OnErrorEmpty, TextOnTheHeapOrNoMemory) {
    VxEnv env;
    jpath path{};
    path.on_error = 3;
    char *text = nullptr;
    uint32_t len = 0;
    const uint64_t before = mem_heap_bytes_used(env.heap);
    ASSERT_EQ(jpath_varchar_ret_code(env.ctx.get(), &path, &text, &len, -3103), 0);
    EXPECT_STREQ(text, "[]");
    EXPECT_EQ(len, 2u);
    EXPECT_GT(mem_heap_bytes_used(env.heap), before);

    mem_heap_set_call_limit(env.heap, 0);
    elog_trail_clear();
    EXPECT_EQ(jpath_varchar_ret_code(env.ctx.get(), &path, &text, &len, -3103), VXJSON_ERR_NOMEM);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(trail(), (Trail{{VXJSON_ERR_NOMEM, kLineEmpty}}));
}

// ---- the shared evaluation step ----

struct StepRow {
    const char *id;
    int32_t compat;
    std::string path;
    uint32_t on_empty, on_error;
    int32_t kind; // 2 text, 9 number, 14 datetime
    int32_t rc, handled;
    bool node;        // a node came back
    std::string text; // "NULL" for none
};

class EvaluationStep : public ::testing::TestWithParam<StepRow> {};
TEST_P(EvaluationStep, HandledAndNode) {
    const StepRow &r = GetParam();
    VxEnv env(r.compat ? dialect(r.compat) : lax());
    json_node *doc = env.tree("{\"a\":1}");
    jpath path{};
    jpath_init(&path, jpath_encode_flag(3, 0, 1, r.on_error, r.on_empty), 100, 0, 0);
    ASSERT_EQ(env.start(r.path), 0);
    ASSERT_EQ(jpath_flex(env.ctx.get(), &path), 0);
    char *text = nullptr;
    uint32_t len = 0;
    int32_t indicator = 7, handled = 7;
    json_node *node = nullptr;
    EXPECT_EQ(json_query_with_mode(env.ctx.get(), doc, &path, r.kind, &text, &len, &indicator,
                                   &handled, &node),
              r.rc);
    EXPECT_EQ(handled, r.handled);
    EXPECT_EQ(node != nullptr, r.node);
    EXPECT_EQ(indicator, 0);
    EXPECT_EQ(text ? std::string(text, len) : "NULL", r.text);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Step, EvaluationStep, rows<StepRow>({
    {"Match", 0, "$.a", 0, 2, 2, 0, 0, true, "NULL"},
    {"NoMatchToOnError", 0, "$.b", 0, 2, 2, -3104, 1, false, "NULL"},
    {"NoMatchEmptyText", 0, "$.b", 0, 3, 2, 0, 1, false, "[]"},
    {"NoMatchEmptyNumberIsNull", 0, "$.b", 0, 3, 9, 0, 1, false, "NULL"},
    {"NoMatchDefault", 0, "$.b", 0, 4, 14, 100, 1, false, "NULL"},
    {"NullOnEmpty", 0, "$.b", 1, 2, 2, 0, 1, false, "NULL"},
    {"ErrorOnEmpty", 0, "$.b", 2, 4, 2, -3104, 1, false, "NULL"},
    {"MysqlMatch", 2, "$.a", 0, 2, 2, 0, 0, true, "NULL"},
    {"MysqlNoMatchIsNull", 2, "$.b", 0, 4, 2, 0, 1, false, "NULL"},
    {"MysqlErrorOnEmpty", 2, "$.b", 3, 1, 9, -3104, 1, false, "NULL"},
}), by_id);
// clang-format on

} // namespace
