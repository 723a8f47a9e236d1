// Writing trees built by hand: the three layouts on nested and empty
// containers, scalars and number texts, dates, the conversion chosen for
// each string, error reports, and out-of-memory at every allocation.
#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "vx_env.h"
#include "vxtime.h"

namespace {
using ::operator<<;
using Build = std::function<json_node *(VxEnv &)>;

json_node *datetime(VxEnv &t, uint32_t type, const char *text) {
    json_node *n = t.scalar(type);
    const int32_t vxtype = type == JSON_DATE ? VXTIME_TYPE_DATE : VXTIME_TYPE_DATETIME;
    EXPECT_EQ(vxtime_from_char_ex2(text, uint32_t(std::strlen(text)), vxtype, &n->dt), 0);
    return n;
}

struct LayoutRow {
    const char *id;
    Build tree;
    uint32_t flags, level, newline_first;
    std::string out;
};

class Layout : public ::testing::TestWithParam<LayoutRow> {};
TEST_P(Layout, WritesExactly) {
    const LayoutRow &r = GetParam();
    VxEnv t;
    std::string out;
    EXPECT_EQ(t.write(r.tree(t), &out, r.flags, r.level, r.newline_first), 0);
    EXPECT_EQ(out, r.out);
}

// {"a":1,"b":[1,"x"]}
json_node *example(VxEnv &t) {
    return t.object({{"a", t.integer(1)}, {"b", t.array({t.integer(1), t.string("x")})}});
}
json_node *empty_object(VxEnv &t) { return t.object({}); }
json_node *empty_array(VxEnv &t) { return t.array({}); }
json_node *empties_in_array(VxEnv &t) { return t.array({t.array({}), t.object({})}); }
json_node *empties_in_object(VxEnv &t) {
    return t.object({{"a", t.object({})}, {"b", t.array({})}});
}

const char EXAMPLE_A[] = "{\n  \"a\" : 1,\n  \"b\" : \n  [\n    1,\n    \"x\"\n  ]\n}";

INSTANTIATE_TEST_SUITE_P(
    Rows, Layout,
    rows<LayoutRow>({
        {"example_compact", example, 0, 0, 0, "{\"a\":1,\"b\":[1,\"x\"]}"},
        {"example_compact_ignores_level", example, 0, 3, 1, "{\"a\":1,\"b\":[1,\"x\"]}"},
        {"example_ascii_bit_is_compact", example, 5, 0, 0, "{\"a\":1,\"b\":[1,\"x\"]}"},
        {"example_a", example, 2, 0, 0, EXAMPLE_A},
        {"example_a_wins_over_4", example, 6, 0, 0, EXAMPLE_A},
        {"example_b", example, 4, 0, 0, "{\n  \"a\": 1,\n  \"b\": [\n    1,\n    \"x\"\n  ]\n}"},
        {"example_a_as_sql_calls_it", example, 2, 1, 1,
         "\n  {\n    \"a\" : 1,\n    \"b\" : \n    [\n      1,\n      \"x\"\n    ]\n  }"},
        {"example_b_as_sql_calls_it", example, 4, 1, 1,
         "\n  {\n    \"a\": 1,\n    \"b\": [\n      1,\n      \"x\"\n    ]\n  }"},
        {"empty_object_compact", empty_object, 0, 0, 0, "{}"},
        {"empty_object_a", empty_object, 2, 0, 0, "{\n}"},
        {"empty_object_b", empty_object, 4, 0, 0, "{}"},
        {"empty_array_compact", empty_array, 0, 0, 0, "[]"},
        {"empty_array_a", empty_array, 2, 1, 0, "[\n  ]"},
        {"empty_array_b", empty_array, 4, 1, 0, "[]"},
        {"empties_in_array_compact", empties_in_array, 0, 0, 0, "[[],{}]"},
        {"empties_in_array_a", empties_in_array, 2, 0, 0, "[\n  [\n  ],\n  {\n  }\n]"},
        {"empties_in_array_b", empties_in_array, 4, 0, 0, "[\n  [],\n  {}\n]"},
        {"empties_in_object_compact", empties_in_object, 0, 0, 0, "{\"a\":{},\"b\":[]}"},
        {"empties_in_object_a", empties_in_object, 2, 0, 0,
         "{\n  \"a\" : \n  {\n  },\n  \"b\" : \n  [\n  ]\n}"},
        {"empties_in_object_b", empties_in_object, 4, 0, 0, "{\n  \"a\": {},\n  \"b\": []\n}"},
    }),
    by_id);

TEST(Layout, ContainerEntriesKeepTheirLevel) {
    VxEnv t;
    json_node *arr = t.array({t.integer(1), t.object({{"k", t.integer(2)}})});
    OutString o, p;
    ASSERT_EQ(json_array_to_string(t.ctx.get(), &o.alloc, o.s, arr, 4, 2), 0);
    EXPECT_EQ(o.str(), "[\n      1,\n      {\n        \"k\": 2\n      }\n    ]");
    ASSERT_EQ(json_object_to_string(t.ctx.get(), &p.alloc, p.s, arr->items[1], 2, 1), 0);
    EXPECT_EQ(p.str(), "{\n    \"k\" : 2\n  }");
}

TEST(Layout, ItemsWithoutBracketsAndTheCallersConversion) {
    VxEnv t;
    json_node *arr = t.array({t.string("\\q", 1), t.integer(7), t.string("\\q", 1)});
    OutString o, p;
    ASSERT_EQ(json_array_items_to_string(t.ctx.get(), &o.alloc, o.s, arr, 0, 0, 0, JSON_CONV_MYSQL),
              0);
    EXPECT_EQ(o.str(), "\"q\",7,\"q\"");
    ASSERT_EQ(json_array_items_to_string(t.ctx.get(), &p.alloc, p.s, t.array({}), 2, 0, 1, 2), 0);
    EXPECT_EQ(p.str(), "");
}

TEST(Layout, DeepNestingIsWrittenWhole) {
    VxEnv t;
    json_node *n = t.integer(0);
    for (int i = 0; i < 4000; ++i) n = t.array({n});
    EXPECT_EQ(t.text_of(n), std::string(4000, '[') + "0" + std::string(4000, ']'));
}

struct ScalarRow {
    const char *id;
    Build node;
    uint32_t flags;
    int32_t rc;
    std::string out;
};

class Scalar : public ::testing::TestWithParam<ScalarRow> {};
TEST_P(Scalar, WritesTheValue) {
    const ScalarRow &r = GetParam();
    VxEnv t;
    OutString o;
    EXPECT_EQ(json_scalar_to_string(nullptr, &o.alloc, o.s, r.node(t), r.flags), r.rc);
    EXPECT_EQ(o.str(), r.out);
}

Build text(uint32_t type, std::string s, uint32_t flags = 0) {
    return [=](VxEnv &t) { return t.text_node(type, s, flags); };
}
Build scalar(uint32_t type, uint32_t bval = 0) {
    return [=](VxEnv &t) { return t.scalar(type, bval); };
}
Build date(uint32_t type, const char *s) {
    return [=](VxEnv &t) { return datetime(t, type, s); };
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Scalar,
    rows<ScalarRow>({
        {"decimal_as_stored", text(JSON_DECIMAL, "1.50E+3"), 0, 0, "1.50E+3"},
        {"big_integer_text", text(JSON_DECIMAL, "-123456789012345678901234567890"), 0, 0,
         "-123456789012345678901234567890"},
        {"string_unquoted_unconverted", text(JSON_STRING, "a\"b\n", 1), 0, 0, "a\"b\n"},
        {"string_ascii_flag_acts", text(JSON_STRING, "\xC3\xA9\n"), 1, 0, "\\u00E9\n"},
        {"empty_string_nothing", text(JSON_STRING, ""), 0, 0, ""},
        {"true", scalar(JSON_BOOLEAN, 7), 0, 0, "true"},
        {"false", scalar(JSON_BOOLEAN, 0), 0, 0, "false"},
        {"null", scalar(JSON_NULL), 0, 0, "null"},
        {"object_is_no_scalar", scalar(JSON_OBJECT), 0, VXJSON_ERR_INVALID_JSON, ""},
        {"unknown_type", scalar(9), 0, VXJSON_ERR_INVALID_JSON, ""},
        {"date_returns_length", date(JSON_DATE, "2024-02-29"), 0, 10, "\"2024-02-29\""},
        {"datetime_with_fraction", date(JSON_DATETIME, "2024-02-29 13:05:09.25"), 0, 22,
         "\"2024-02-29T13:05:09.25\""},
        {"datetime_out_of_range",
         [](VxEnv &t) {
             json_node *n = t.scalar(JSON_DATETIME);
             n->dt = vxtime{INT64_MAX / 4, 0, VXTIME_TYPE_DATETIME};
             return n;
         },
         0, VXTIME_ERR_RANGE, ""},
    }),
    by_id);

TEST(Scalar, IntegersAtEveryDigitCountAndWordBoundary) {
    std::vector<int64_t> values = {0, INT64_MIN, INT64_MAX, int64_t(UINT32_MAX),
                                   int64_t(UINT32_MAX) + 1};
    for (int64_t p = 1; p <= INT64_MAX / 10; p *= 10)
        for (int64_t v : {p - 1, p, p + 1, p * 10 - 1}) values.insert(values.end(), {v, -v});
    VxEnv t;
    for (int64_t v : values) {
        OutString o;
        ASSERT_EQ(json_scalar_to_string(nullptr, &o.alloc, o.s, t.integer(v), 0), 0);
        EXPECT_EQ(o.str(), std::to_string(v));
    }
}

TEST(Scalar, DatesInsideContainersLeaveTheContainerResultZero) {
    VxEnv t;
    json_node *doc = t.array(
        {datetime(t, JSON_DATE, "2001-01-02"), datetime(t, JSON_DATETIME, "2001-01-02 03:04:05")});
    EXPECT_EQ(t.text_of(doc), "[\"2001-01-02\",\"2001-01-02T03:04:05\"]");
}

// The conversion chosen for a string from its escape flag, the context's
// escape mode and the caller's request.  The text a, backslash, t, quote:
// its four written forms differ.
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
    VxEnv t({.escape_mode = r.escape_mode});
    std::string out;
    EXPECT_EQ(t.write(t.string("a\\t\"", r.str_flags), &out, 0, 1, 1, r.conv), r.rc);
    EXPECT_EQ(out, r.out);
}

INSTANTIATE_TEST_SUITE_P(Rows, StringChoice,
                         rows<ChoiceRow>({
                             {"decoded_never_escaped_json", 0, 0, JSON_CONV_JSON, 0, "\"a\\t\"\""},
                             {"decoded_json", 0, 1, JSON_CONV_JSON, 0, "\"a\\\\t\\\"\""},
                             {"decoded_mysql", 0, 1, JSON_CONV_MYSQL, 0, "\"a\\t\\\"\""},
                             {"decoded_plain_left_alone", 0, 1, JSON_CONV_PLAIN, 0, "a\\t\""},
                             {"decoded_as_stored_quoted", 0, 1, JSON_CONV_NONE, 0, "\"a\\t\"\""},
                             {"kept_json_left_alone", 1, 1, JSON_CONV_JSON, 0, "\"a\\t\"\""},
                             {"kept_mysql", 1, 1, JSON_CONV_MYSQL, 0, "\"a\\t\\\"\""},
                             {"kept_plain_never_escaped", 1, 0, JSON_CONV_PLAIN, 0, "a\\t\""},
                             {"kept_plain_is_read", 1, 1, JSON_CONV_PLAIN, VXJSON_ERR_INVALID_JSON,
                              ""},
                         }),
                         by_id);

TEST(StringChoice, KeptPlainDecodesEscapes) {
    VxEnv t({.escape_mode = JLPCA_ESCAPE_KEEP});
    std::string out;
    EXPECT_EQ(t.write(t.string("a\\tb\\u00e9\\/", 1), &out, 0, 1, 1, JSON_CONV_PLAIN), 0);
    EXPECT_EQ(out, "a\tb\xC3\xA9/");
}

TEST(StringChoice, NamesFollowTheModeAndMembersIgnoreTheRequest) {
    for (int32_t mode : {0, 1}) {
        VxEnv t({.escape_mode = mode});
        json_node *doc = t.object({{"k\"", t.string("\\q\n", 1)}});
        doc->first_member->flags = 0;
        std::string out;
        EXPECT_EQ(t.write(doc, &out, 0, 1, 1, JSON_CONV_MYSQL), 0);
        EXPECT_EQ(out, mode == 0 ? "{\"k\\\"\":\"\\\\q\\n\"}" : "{\"k\"\":\"\\q\n\"}") << mode;
    }
}

// Each container level reports with its own line; the text so far stays.
TEST(Errors, ContainersReportInnermostFirst) {
    VxEnv t;
    json_node *doc = t.object({{"a", t.integer(1)}, {"b", t.array({t.integer(2), t.scalar(9)})}});
    elog_trail_clear();
    std::string out;
    EXPECT_EQ(t.write(doc, &out), VXJSON_ERR_INVALID_JSON);
    EXPECT_EQ(out, "{\"a\":1,\"b\":[2,");
    EXPECT_EQ(trail(), (Trail{{-3105, 1003}, {-3105, 1043}, {-3105, 790}}));
}

TEST(Errors, NameFailureReportsTheMemberLine) {
    CharsetScope cs(EUCKR);
    VxEnv t;
    json_node *doc = t.object({{"\xA1\x41", t.integer(1)}});
    elog_trail_clear();
    std::string out;
    EXPECT_EQ(t.write(doc, &out, JSON_FMT_ASCII), VXJSON_ERR_INVALID_JSON);
    EXPECT_EQ(trail(), (Trail{{-3105, 717}, {-3105, 770}}));
}

// Every allocation fails in turn, in every layout: -503 with a prefix of
// the full text, never a partial success.
TEST(OutOfMemory, EveryAllocationFailsCleanly) {
    VxEnv t;
    json_node *doc =
        t.object({{"name\xC3\xA9", t.string(std::string(300, 'x') + "\n\xC3\xA9", 1)},
                  {"list", t.array({t.integer(-5), t.decimal("2.5"), t.object({}),
                                    t.string("\\n", 1), datetime(t, JSON_DATE, "1999-12-31")})}});
    for (uint32_t flags : {0u, 1u, 2u, 4u}) {
        std::string full;
        ASSERT_EQ(t.write(doc, &full, flags, 1, 1, JSON_CONV_MYSQL), 0);
        bool failed_once = false;
        for (uint64_t calls = 0;; ++calls) {
            OutString o(1);
            o.fail_after(calls);
            const int32_t rc =
                json_to_string(t.ctx.get(), &o.alloc, o.s, doc, flags, 1, 1, JSON_CONV_MYSQL);
            o.fail_after(UINT64_MAX);
            if (rc == 0) {
                EXPECT_EQ(o.str(), full);
                break;
            }
            failed_once = true;
            ASSERT_EQ(rc, VXJSON_ERR_NOMEM) << "flags " << flags << " calls " << calls;
            EXPECT_EQ(full.compare(0, o.s->len, o.str()), 0) << "a prefix stays";
            ASSERT_LT(calls, 200u);
        }
        EXPECT_TRUE(failed_once);
    }
}


// Compact text of a container is written by a loop of its own, the
// object and array entries by the recursive writer.  Both must agree on
// the text, the result and the error trail, also when each allocation
// fails in turn and for nesting beyond the loop's stack.
TEST(CompactLoop, AgreesWithTheRecursiveWriter) {
    VxEnv t;
    json_node *deep = t.integer(7);
    for (int i = 0; i < 70; i++)
        deep = i % 2 ? t.array({deep, t.scalar(JSON_NULL)})
                     : t.object({{"k", deep}, {"e", t.array({})}});
    t.ctx->first_node = nullptr; // no output reserved from the text read
    const std::vector<std::pair<const char *, json_node *>> docs = {
        {"mixed", t.object({{"a", t.array({t.integer(-5), t.decimal("2.5"), t.object({}),
                                           t.string("q\"\n", 1), t.scalar(JSON_BOOLEAN, 1)})},
                            {"n\\", t.scalar(JSON_NULL)},
                            {"d", datetime(t, JSON_DATE, "1999-12-31")}})},
        {"deep", deep},
        {"bad_inner", t.array({t.object({{"x", t.array({t.integer(1), t.scalar(9)})}})})},
        {"bad_deep", t.array({deep, t.scalar(9)})},
    };
    for (const auto &[id, doc] : docs) {
        SCOPED_TRACE(id);
        for (uint64_t calls = 0; calls < 400; ++calls) {
            std::string text[2];
            int32_t rc[2];
            Trail trails[2];
            for (int recursive = 0; recursive < 2; recursive++) {
                OutString o(1);
                o.fail_after(calls);
                elog_trail_clear();
                auto *entry = doc->type == JSON_ARRAY ? json_array_to_string
                                                      : json_object_to_string;
                rc[recursive] =
                    recursive ? entry(t.ctx.get(), &o.alloc, o.s, doc, JSON_FMT_COMPACT, 0)
                              : json_to_string(t.ctx.get(), &o.alloc, o.s, doc, JSON_FMT_COMPACT,
                                               0, 0, JSON_CONV_JSON);
                o.fail_after(UINT64_MAX);
                text[recursive] = o.str();
                trails[recursive] = trail();
            }
            ASSERT_EQ(rc[0], rc[1]) << calls;
            EXPECT_EQ(text[0], text[1]) << calls;
            EXPECT_EQ(trails[0], trails[1]) << calls;
            if (rc[0] != VXJSON_ERR_NOMEM) break;
        }
    }
}

} // namespace
