// Writing trees built by hand: the three layouts on nested and empty
// containers, scalars and number texts, dates, the conversion chosen for
// each string, error reports, and out-of-memory at every allocation.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>

#include "text_fixture.h"
#include "tree_fixture.h"
#include "vxtime.h"

namespace {

// Rows print as their id; gtest would otherwise dump their bytes, padding
// included.
template <class Row> auto operator<<(std::ostream &os, const Row &r) -> decltype(os << r.id) {
    return os << r.id;
}

template <class Row> std::string row_name(const ::testing::TestParamInfo<Row> &info) {
    return info.param.id;
}

// A string node holding `text` with the given escape flag.
json_node *flagged(TreeEnv &t, const std::string &text, uint32_t flags) {
    json_node *n = t.string(text);
    n->str_flags = flags;
    return n;
}

json_node *scalar(TreeEnv &t, uint32_t type, uint32_t bval = 0) {
    json_node *n = json_mem_create(t.ctx.get(), type);
    n->bval = bval;
    return n;
}

json_node *datetime(TreeEnv &t, uint32_t type, const char *text) {
    json_node *n = json_mem_create(t.ctx.get(), type);
    EXPECT_EQ(vxtime_from_char_ex2(text, uint32_t(std::strlen(text)),
                                   type == JSON_DATE ? VXTIME_TYPE_DATE : VXTIME_TYPE_DATETIME,
                                   &n->dt),
              0);
    return n;
}

struct Written {
    int32_t rc;
    std::string text;
};

Written write(TreeEnv &t, const json_node *node, uint32_t flags, uint32_t level = 0,
              uint32_t newline_first = 0, uint8_t conv = JSON_CONV_JSON) {
    OutString o;
    const int32_t rc = json_to_string(t.ctx.get(), &o.alloc, o.s, node, flags, level,
                                      newline_first, conv);
    return {rc, o.str()};
}

// ------------------------------------------------------------------
// Layouts
// ------------------------------------------------------------------

struct LayoutRow {
    const char *id;
    std::function<json_node *(TreeEnv &)> tree;
    uint32_t flags, level, newline_first;
    std::string out;
};

class Layout : public ::testing::TestWithParam<LayoutRow> {};

TEST_P(Layout, WritesExactly) {
    const LayoutRow &r = GetParam();
    TreeEnv t;
    const Written w = write(t, r.tree(t), r.flags, r.level, r.newline_first);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.text, r.out);
}

// {"a":1,"b":[1,"x"]}
json_node *example(TreeEnv &t) {
    return t.object({{"a", t.integer(1)}, {"b", t.array({t.integer(1), t.string("x")})}});
}
json_node *empty_object(TreeEnv &t) { return t.object({}); }
json_node *empty_array(TreeEnv &t) { return t.array({}); }
json_node *empties_in_array(TreeEnv &t) { return t.array({t.array({}), t.object({})}); }
json_node *empties_in_object(TreeEnv &t) {
    return t.object({{"a", t.object({})}, {"b", t.array({})}});
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Layout,
    ::testing::Values(
        LayoutRow{"example_compact", example, 0, 0, 0, "{\"a\":1,\"b\":[1,\"x\"]}"},
        LayoutRow{"example_compact_ignores_level", example, 0, 3, 1, "{\"a\":1,\"b\":[1,\"x\"]}"},
        LayoutRow{"example_ascii_bit_is_compact", example, 5, 0, 0, "{\"a\":1,\"b\":[1,\"x\"]}"},
        LayoutRow{"example_a", example, 2, 0, 0,
                  "{\n  \"a\" : 1,\n  \"b\" : \n  [\n    1,\n    \"x\"\n  ]\n}"},
        LayoutRow{"example_a_wins_over_4", example, 6, 0, 0,
                  "{\n  \"a\" : 1,\n  \"b\" : \n  [\n    1,\n    \"x\"\n  ]\n}"},
        LayoutRow{"example_b", example, 4, 0, 0,
                  "{\n  \"a\": 1,\n  \"b\": [\n    1,\n    \"x\"\n  ]\n}"},
        LayoutRow{"example_a_as_sql_calls_it", example, 2, 1, 1,
                  "\n  {\n    \"a\" : 1,\n    \"b\" : \n    [\n      1,\n      \"x\"\n    ]\n  }"},
        LayoutRow{"example_b_as_sql_calls_it", example, 4, 1, 1,
                  "\n  {\n    \"a\": 1,\n    \"b\": [\n      1,\n      \"x\"\n    ]\n  }"},
        LayoutRow{"empty_object_compact", empty_object, 0, 0, 0, "{}"},
        LayoutRow{"empty_object_a", empty_object, 2, 0, 0, "{\n}"},
        LayoutRow{"empty_object_b", empty_object, 4, 0, 0, "{}"},
        LayoutRow{"empty_array_compact", empty_array, 0, 0, 0, "[]"},
        LayoutRow{"empty_array_a", empty_array, 2, 1, 0, "[\n  ]"},
        LayoutRow{"empty_array_b", empty_array, 4, 1, 0, "[]"},
        LayoutRow{"empties_in_array_compact", empties_in_array, 0, 0, 0, "[[],{}]"},
        LayoutRow{"empties_in_array_a", empties_in_array, 2, 0, 0, "[\n  [\n  ],\n  {\n  }\n]"},
        LayoutRow{"empties_in_array_b", empties_in_array, 4, 0, 0, "[\n  [],\n  {}\n]"},
        LayoutRow{"empties_in_object_compact", empties_in_object, 0, 0, 0,
                  "{\"a\":{},\"b\":[]}"},
        LayoutRow{"empties_in_object_a", empties_in_object, 2, 0, 0,
                  "{\n  \"a\" : \n  {\n  },\n  \"b\" : \n  [\n  ]\n}"},
        LayoutRow{"empties_in_object_b", empties_in_object, 4, 0, 0,
                  "{\n  \"a\": {},\n  \"b\": []\n}"}),
    row_name<LayoutRow>);

TEST(Layout, ContainerEntriesKeepTheirLevel) {
    TreeEnv t;
    json_node *arr = t.array({t.integer(1), t.object({{"k", t.integer(2)}})});
    OutString o;
    ASSERT_EQ(json_array_to_string(t.ctx.get(), &o.alloc, o.s, arr, 4, 2), 0);
    EXPECT_EQ(o.str(), "[\n      1,\n      {\n        \"k\": 2\n      }\n    ]");
    OutString p;
    ASSERT_EQ(json_object_to_string(t.ctx.get(), &p.alloc, p.s, arr->items[1], 2, 1), 0);
    EXPECT_EQ(p.str(), "{\n    \"k\" : 2\n  }");
}

TEST(Layout, ItemsWithoutBracketsAndTheCallersConversion) {
    TreeEnv t;
    json_node *arr = t.array({flagged(t, "\\q", 1), t.integer(7), flagged(t, "\\q", 1)});
    OutString o;
    ASSERT_EQ(json_array_items_to_string(t.ctx.get(), &o.alloc, o.s, arr, 0, 0, 0, JSON_CONV_MYSQL), 0);
    EXPECT_EQ(o.str(), "\"q\",7,\"q\"");
    OutString p;
    ASSERT_EQ(json_array_items_to_string(t.ctx.get(), &p.alloc, p.s, t.array({}), 2, 0, 1, 2), 0);
    EXPECT_EQ(p.str(), "");
}

TEST(Layout, DeepNestingIsWrittenWhole) {
    TreeEnv t;
    json_node *n = t.integer(0);
    for (int i = 0; i < 4000; ++i) n = t.array({n});
    const Written w = write(t, n, 0);
    ASSERT_EQ(w.rc, 0);
    EXPECT_EQ(w.text, std::string(4000, '[') + "0" + std::string(4000, ']'));
}

// ------------------------------------------------------------------
// Scalars
// ------------------------------------------------------------------

struct ScalarRow {
    const char *id;
    std::function<json_node *(TreeEnv &)> node;
    uint32_t flags;
    int32_t rc;
    std::string out;
};

class Scalar : public ::testing::TestWithParam<ScalarRow> {};

TEST_P(Scalar, WritesTheValue) {
    const ScalarRow &r = GetParam();
    TreeEnv t;
    OutString o;
    EXPECT_EQ(json_scalar_to_string(nullptr, &o.alloc, o.s, r.node(t), r.flags), r.rc);
    EXPECT_EQ(o.str(), r.out);
}

auto text(uint32_t type, std::string s, uint32_t flags = 0) {
    return [=](TreeEnv &t) {
        json_node *n = t.text(type, s);
        n->str_flags = flags;
        return n;
    };
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Scalar,
    ::testing::Values(
        ScalarRow{"decimal_as_stored", text(JSON_DECIMAL, "1.50E+3"), 0, 0, "1.50E+3"},
        ScalarRow{"big_integer_text", text(JSON_DECIMAL, "-123456789012345678901234567890"), 0,
                  0, "-123456789012345678901234567890"},
        ScalarRow{"string_unquoted_unconverted", text(JSON_STRING, "a\"b\n", 1), 0, 0,
                  "a\"b\n"},
        ScalarRow{"string_ascii_flag_acts", text(JSON_STRING, "\xC3\xA9\n"), 1, 0,
                  "\\u00E9\n"},
        ScalarRow{"empty_string_nothing", text(JSON_STRING, ""), 0, 0, ""},
        ScalarRow{"true", [](TreeEnv &t) { return scalar(t, JSON_BOOLEAN, 7); }, 0, 0, "true"},
        ScalarRow{"false", [](TreeEnv &t) { return scalar(t, JSON_BOOLEAN, 0); }, 0, 0, "false"},
        ScalarRow{"null", [](TreeEnv &t) { return scalar(t, JSON_NULL); }, 0, 0, "null"},
        ScalarRow{"object_is_no_scalar", [](TreeEnv &t) { return scalar(t, JSON_OBJECT); }, 0,
                  VXJSON_ERR_INVALID_JSON, ""},
        ScalarRow{"unknown_type", [](TreeEnv &t) { return scalar(t, 9); }, 0,
                  VXJSON_ERR_INVALID_JSON, ""},
        ScalarRow{"date_returns_length",
                  [](TreeEnv &t) { return datetime(t, JSON_DATE, "2024-02-29"); }, 0, 10,
                  "\"2024-02-29\""},
        ScalarRow{"datetime_with_fraction",
                  [](TreeEnv &t) { return datetime(t, JSON_DATETIME, "2024-02-29 13:05:09.25"); },
                  0, 22, "\"2024-02-29T13:05:09.25\""},
        ScalarRow{"datetime_out_of_range",
                  [](TreeEnv &t) {
                      json_node *n = scalar(t, JSON_DATETIME);
                      n->dt = vxtime{INT64_MAX / 4, 0, VXTIME_TYPE_DATETIME};
                      return n;
                  },
                  0, VXTIME_ERR_RANGE, ""}),
    row_name<ScalarRow>);

TEST(Scalar, IntegersAtEveryDigitCountAndWordBoundary) {
    std::vector<int64_t> values = {0, INT64_MIN, INT64_MAX, int64_t(UINT32_MAX), int64_t(UINT32_MAX) + 1};
    for (int64_t p = 1; p <= INT64_MAX / 10; p *= 10)
        for (int64_t v : {p - 1, p, p + 1, p * 10 - 1}) values.insert(values.end(), {v, -v});
    TreeEnv t;
    for (int64_t v : values) {
        OutString o;
        ASSERT_EQ(json_scalar_to_string(nullptr, &o.alloc, o.s, t.integer(v), 0), 0);
        EXPECT_EQ(o.str(), std::to_string(v));
    }
}

TEST(Scalar, DatesInsideContainersLeaveTheContainerResultZero) {
    TreeEnv t;
    const Written w = write(t, t.array({datetime(t, JSON_DATE, "2001-01-02"),
                                        datetime(t, JSON_DATETIME, "2001-01-02 03:04:05")}),
                            0);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.text, "[\"2001-01-02\",\"2001-01-02T03:04:05\"]");
}

// ------------------------------------------------------------------
// The conversion chosen for a string
// ------------------------------------------------------------------

// The text a, backslash, t, quote: its four written forms differ.
const std::string SOURCE = "a\\t\"";

struct ChoiceRow {
    const char *id;
    int32_t escape_mode;
    uint32_t str_flags;
    uint8_t conv;
    int32_t rc;
    std::string out;
};

class StringChoice : public ::testing::TestWithParam<ChoiceRow> {};

TEST_P(StringChoice, FollowsFlagsModeAndRequest) {
    const ChoiceRow &r = GetParam();
    TreeEnv t(JLPCA_COMPAT_STANDARD, r.escape_mode);
    const Written w = write(t, flagged(t, SOURCE, r.str_flags), 0, 1, 1, r.conv);
    EXPECT_EQ(w.rc, r.rc);
    EXPECT_EQ(w.text, r.out);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, StringChoice,
    ::testing::Values(
        ChoiceRow{"decoded_never_escaped_json", 0, 0, JSON_CONV_JSON, 0, "\"a\\t\"\""},
        ChoiceRow{"decoded_json", 0, 1, JSON_CONV_JSON, 0, "\"a\\\\t\\\"\""},
        ChoiceRow{"decoded_mysql", 0, 1, JSON_CONV_MYSQL, 0, "\"a\\t\\\"\""},
        ChoiceRow{"decoded_plain_left_alone", 0, 1, JSON_CONV_PLAIN, 0, "a\\t\""},
        ChoiceRow{"decoded_as_stored_quoted", 0, 1, JSON_CONV_NONE, 0, "\"a\\t\"\""},
        ChoiceRow{"kept_json_left_alone", 1, 1, JSON_CONV_JSON, 0, "\"a\\t\"\""},
        ChoiceRow{"kept_mysql", 1, 1, JSON_CONV_MYSQL, 0, "\"a\\t\\\"\""},
        ChoiceRow{"kept_plain_never_escaped", 1, 0, JSON_CONV_PLAIN, 0, "a\\t\""},
        ChoiceRow{"kept_plain_is_read", 1, 1, JSON_CONV_PLAIN, VXJSON_ERR_INVALID_JSON, ""}),
    row_name<ChoiceRow>);

TEST(StringChoice, KeptPlainDecodesEscapes) {
    TreeEnv t(JLPCA_COMPAT_STANDARD, JLPCA_ESCAPE_KEEP);
    const Written w = write(t, flagged(t, "a\\tb\\u00e9\\/", 1), 0, 1, 1, JSON_CONV_PLAIN);
    EXPECT_EQ(w.rc, 0);
    EXPECT_EQ(w.text, "a\tb\xC3\xA9/");
}

TEST(StringChoice, NamesFollowTheModeAndMembersIgnoreTheRequest) {
    for (int32_t mode : {0, 1}) {
        TreeEnv t(JLPCA_COMPAT_STANDARD, mode);
        json_node *doc = t.object({{"k\"", flagged(t, "\\q\n", 1)}});
        doc->first_member->flags = 0;
        const Written w = write(t, doc, 0, 1, 1, JSON_CONV_MYSQL);
        EXPECT_EQ(w.rc, 0);
        EXPECT_EQ(w.text, mode == 0 ? "{\"k\\\"\":\"\\\\q\\n\"}" : "{\"k\"\":\"\\q\n\"}") << mode;
    }
}

// ------------------------------------------------------------------
// Errors: each container level reports with its own line
// ------------------------------------------------------------------

TEST(Errors, ContainersReportInnermostFirst) {
    TreeEnv t;
    json_node *doc = t.object({{"a", t.integer(1)}, {"b", t.array({t.integer(2), scalar(t, 9)})}});
    elog_trail_clear();
    const Written w = write(t, doc, 0);
    EXPECT_EQ(w.rc, VXJSON_ERR_INVALID_JSON);
    EXPECT_EQ(w.text, "{\"a\":1,\"b\":[2,") << "the text so far stays";
    const std::vector<std::pair<int32_t, int32_t>> want = {
        {-3105, 1003}, {-3105, 1043}, {-3105, 790}};
    EXPECT_EQ(trail(), want);
}

TEST(Errors, NameFailureReportsTheMemberLine) {
    CharsetScope cs(2);
    TreeEnv t;
    json_node *doc = t.object({{"\xA1\x41", t.integer(1)}});
    elog_trail_clear();
    const Written w = write(t, doc, 1);
    EXPECT_EQ(w.rc, VXJSON_ERR_INVALID_JSON);
    const std::vector<std::pair<int32_t, int32_t>> want = {{-3105, 717}, {-3105, 770}};
    EXPECT_EQ(trail(), want);
}

// ------------------------------------------------------------------
// Out of memory at every allocation
// ------------------------------------------------------------------

TEST(OutOfMemory, EveryAllocationFailsCleanly) {
    TreeEnv t;
    json_node *doc = t.object(
        {{"name\xC3\xA9", flagged(t, std::string(300, 'x') + "\n\xC3\xA9", 1)},
         {"list", t.array({t.integer(-5), t.text(JSON_DECIMAL, "2.5"), t.object({}),
                           flagged(t, "\\n", 1), datetime(t, JSON_DATE, "1999-12-31")})}});
    for (uint32_t flags : {0u, 1u, 2u, 4u}) {
        const Written full = write(t, doc, flags, 1, 1, JSON_CONV_MYSQL);
        ASSERT_EQ(full.rc, 0);
        bool failed_once = false;
        for (uint64_t calls = 0;; ++calls) {
            OutString o(1);
            o.fail_after(calls);
            const int32_t rc = json_to_string(t.ctx.get(), &o.alloc, o.s, doc, flags, 1, 1,
                                              JSON_CONV_MYSQL);
            o.fail_after(UINT64_MAX);
            if (rc == 0) {
                EXPECT_EQ(o.str(), full.text);
                break;
            }
            failed_once = true;
            ASSERT_EQ(rc, VXJSON_ERR_NOMEM) << "flags " << flags << " calls " << calls;
            EXPECT_EQ(full.text.compare(0, o.s->len, o.str()), 0) << "a prefix stays";
            ASSERT_LT(calls, 200u);
        }
        EXPECT_TRUE(failed_once);
    }
}

} // namespace
