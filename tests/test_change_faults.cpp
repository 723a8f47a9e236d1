// Every change of tests/data/change/*.tsv with the heap, and apart the
// allocator, exhausted at each of its calls: the change ends with its own
// code or -503, never crashes, leaves the tree's links whole and writable,
// and gives back every temporary block.
#include <gtest/gtest.h>

#include "change_run.h"
#include "data_rows.h"

namespace {
using ::operator<<;

enum class Limit { heap, allocator };

struct Calls {
    uint64_t heap, alloc;
};

// The calls the change itself makes, after its inputs are read.
Calls count_calls(const ChangeInput &in) {
    VxEnv env(dialect(change_is_pg(in.op) ? JLPCA_COMPAT_PG : JLPCA_COMPAT_MYSQL));
    ChangeSetup s(env, in);
    EXPECT_EQ(s.code, 0);
    const uint64_t heap = mem_heap_alloc_count(env.heap), alloc = env.alloc_state.calls;
    std::string text;
    (void)s.run(env, in.op, &text);
    return {mem_heap_alloc_count(env.heap) - heap, env.alloc_state.calls - alloc};
}

void run_limited(const ChangeInput &in, Limit which, uint64_t n, uint64_t needed, int32_t code) {
    VxEnv env(dialect(change_is_pg(in.op) ? JLPCA_COMPAT_PG : JLPCA_COMPAT_MYSQL));
    ChangeSetup s(env, in);
    ASSERT_EQ(s.code, 0);
    const uint64_t arrays = env.alloc_state.outstanding;
    if (which == Limit::heap) mem_heap_set_call_limit(env.heap, n);
    else vx_allocator_set_call_limit(&env.alloc_state, n);
    std::string text;
    const int32_t rc = s.run(env, in.op, &text);
    if (n >= needed) EXPECT_EQ(rc, code) << "limit " << n;
    else EXPECT_TRUE(rc == code || rc == VXJSON_ERR_NOMEM) << "limit " << n << " gave " << rc;
    EXPECT_EQ(env.alloc_state.outstanding, arrays) << "limit " << n;
    mem_heap_set_call_limit(env.heap, UINT64_MAX);
    vx_allocator_set_call_limit(&env.alloc_state, UINT64_MAX);
    EXPECT_EQ(tree_problem(s.doc), "") << "limit " << n;
    std::string after;
    EXPECT_EQ(env.write(s.doc, &after), 0) << "limit " << n;
}

class ChangeFaults : public ::testing::TestWithParam<DataRow> {};
TEST_P(ChangeFaults, AtEveryAllocation) {
    const DataRow &r = GetParam();
    const ChangeInput in{r.f[1], r.f[2], r.f[3], r.f[4]};
    const int32_t code = int32_t(r.num(5));
    const Calls c = count_calls(in);
    for (uint64_t n = 0; n <= c.heap; n++) run_limited(in, Limit::heap, n, c.heap, code);
    for (uint64_t n = 0; n <= c.alloc; n++) run_limited(in, Limit::allocator, n, c.alloc, code);
}
INSTANTIATE_TEST_SUITE_P(Remove, ChangeFaults, rows_of("change/remove.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(Set, ChangeFaults, rows_of("change/set.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(PgSet, ChangeFaults, rows_of("change/pg_set.tsv"), data_row_namer());
INSTANTIATE_TEST_SUITE_P(ArrayAdd, ChangeFaults, rows_of("change/array_add.tsv"), data_row_namer());

} // namespace
