// Evaluation at scale: a document 4,000 levels deep and an array of a
// million elements, evaluated on a thread with a small stack, so that any
// recursion on the document's depth or any per-match stack use fails.
#include <pthread.h>

#include <gtest/gtest.h>

#include <functional>

#include "path_text.h"
#include "vx_env.h"

namespace {
using ::operator<<;

// Far less than one frame per level of a 4,000-deep document would need.
constexpr size_t SMALL_STACK = 64 * 1024;

void run_on_small_stack(const std::function<void()> &fn) {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstacksize(&attr, SMALL_STACK);
    pthread_t t;
    auto body = [](void *arg) -> void * {
        (*static_cast<const std::function<void()> *>(arg))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&t, &attr, body, const_cast<std::function<void()> *>(&fn)), 0);
    pthread_join(t, nullptr);
    pthread_attr_destroy(&attr);
}

// Evaluates on the small stack: compat 2 through jpath_filter_mysql, the
// others through json_query.
int32_t evaluate_small_stack(VxEnv &env, json_node *root, const jpath &path, int32_t compat,
                             json_node **out) {
    int32_t rc = -1;
    run_on_small_stack([&] {
        rc = compat == 2 ? jpath_filter_mysql(root, &path, env.ctx.get(), 1, out)
                         : json_query(env.ctx.get(), root, &path, out);
    });
    return rc;
}

std::string repeat(const std::string &s, int n) {
    std::string out;
    for (int i = 0; i < n; i++) out += s;
    return out;
}

struct DeepRow {
    const char *id;
    std::string doc;
    std::string path;
    int32_t compat;
    std::string expected;
};

class DeepDocument : public ::testing::TestWithParam<DeepRow> {};
TEST_P(DeepDocument, EvaluatesWithBoundedStack) {
    const DeepRow &r = GetParam();
    VxEnv env(dialect(r.compat));
    json_node *root = env.tree(r.doc);
    jpath path{};
    ASSERT_EQ(compile_path(env.ctx.get(), r.path, &path), 0);
    json_node *out = nullptr;
    ASSERT_EQ(evaluate_small_stack(env, root, path, r.compat, &out), 0);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(env.text_of(out), r.expected);
}

const std::string ARRAYS_4000 = std::string(4000, '[') + "1" + std::string(4000, ']');
const std::string OBJECTS_2499 = repeat(R"({"a":)", 2499) + "1" + std::string(2499, '}');

// clang-format off
INSTANTIATE_TEST_SUITE_P(Depth, DeepDocument, rows<DeepRow>({
    {"arrays_by_position", ARRAYS_4000, "$" + repeat("[0]", 4000), 0, "1"},
    {"arrays_by_every_element", ARRAYS_4000, "$" + repeat("[*]", 4000), 1, "1"},
    {"arrays_mysql", ARRAYS_4000, "$" + repeat("[0]", 4000), 2, "1"},
    {"objects_by_name", OBJECTS_2499, "$" + repeat(".a", 2499), 0, "1"},
    {"objects_by_wildcard_mysql", OBJECTS_2499, "$" + repeat(".*", 2499), 2, "1"},
}), by_id);
// clang-format on

struct WideRow {
    const char *id;
    const char *path;
    int32_t compat;
    uint32_t count;   // matches
    std::string last; // text of the last match
};

// A million objects {"a":i}, read once per dialect and shared by the rows
// (evaluation leaves nothing behind that the next row would see).
struct Million {
    std::unique_ptr<VxEnv> env;
    json_node *root = nullptr;
};
Million &million_objects(int32_t compat) {
    static Million docs[3];
    Million &m = docs[compat];
    if (!m.env) {
        std::string s = "[";
        for (int i = 0; i < 1000000; i++)
            s += (i ? ",{\"a\":" : "{\"a\":") + std::to_string(i) + "}";
        m.env = std::make_unique<VxEnv>(dialect(compat));
        m.root = m.env->tree(s + "]");
    }
    return m;
}

class WideArray : public ::testing::TestWithParam<WideRow> {};
TEST_P(WideArray, EvaluatesEveryElementOnce) {
    const WideRow &r = GetParam();
    Million &m = million_objects(r.compat);
    VxEnv &env = *m.env;
    json_node *root = m.root;
    jpath path{};
    ASSERT_EQ(compile_path(env.ctx.get(), r.path, &path), 0);
    json_node *out = nullptr;
    ASSERT_EQ(evaluate_small_stack(env, root, path, r.compat, &out), 0);
    ASSERT_NE(out, nullptr);
    const bool several = out->type == JSON_ARRAY && out->is_virtual;
    EXPECT_EQ(several ? out->count : 1u, r.count);
    EXPECT_EQ(env.text_of(several ? out->items[out->count - 1] : out), r.last);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Million, WideArray, rows<WideRow>({
    {"every_element", "$[*]", 0, 1000000, R"({"a":999999})"},
    {"every_member_a", "$.a", 0, 1000000, "999999"},
    {"every_element_then_a", "$[*].a", 1, 1000000, "999999"},
    {"every_member", "$.*", 0, 1000000, "999999"},
    {"range", "$[10 to 999999]", 0, 999990, R"({"a":999999})"},
    {"last_position", "$[999999].a", 0, 1, "999999"},
    {"every_element_then_a_mysql", "$[*].a", 2, 1000000, "999999"},
}), by_id);
// clang-format on

} // namespace
