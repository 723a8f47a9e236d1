// Containment, equality, merge, concatenation and null stripping on the
// sample documents, in operations per second (items_per_second).
//
// The predicates run on trees read once.  The merges and null stripping
// change their inputs, so each of their iterations reads fresh trees first
// with the timer paused; only the operation itself (and, for the merges
// and concatenation, the writing of the result text) is timed.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>

#include "bench_data.h"
#include "bench_reader.h"
#include "vx_alloc.h"
#include "vx_heap.h"
#include "vxjson.h"

namespace {

const std::string &twitter() {
    static const std::string text = load_bench_data("twitter");
    return text;
}

const std::string &citm() {
    static const std::string text = load_bench_data("citm_catalog");
    return text;
}

// A context over its own heap and counting allocator; reset() forgets
// every tree read so far.
struct Reader : bench_reader {
    explicit Reader(bool sorted) : bench_reader(1 << 20, 1, JLPCA_COMPAT_MYSQL) {
        ctx->sorted_keys = sorted ? 1 : 0;
    }
    void release(char *text) { vx_free(nullptr, &alloc, text); }
};

json_node *member(const json_node *object, const char *name) {
    json_keyval *kv = json_object_find_keyval_by_name(object, name, uint32_t(std::strlen(name)));
    return kv ? kv->value : nullptr;
}

// An array whose element list holds just `element` (its own sibling links
// are ignored past the count), as the predicates read arrays.
json_node *list_of_one(Reader &r, json_node *element) {
    json_node *a = json_mem_create(r.ctx, JSON_ARRAY);
    a->lst_count = 1;
    a->lst_first = a->lst_last = element;
    return a;
}

// The document, and {"statuses":[its last status]} read separately.
struct TwitterPair {
    Reader r{false};
    json_node *doc = r.read(twitter());
    json_node *candidate = nullptr;
    json_node *status_list = nullptr; // [last status]

    TwitterPair() {
        json_node *copy = r.read(twitter());
        if (!doc || !copy) return;
        json_node *statuses = member(copy, "statuses");
        status_list = list_of_one(r, statuses->items[statuses->count - 1]);
        candidate = json_mem_create(r.ctx, JSON_OBJECT);
        if (json_object_add_one_node(r.ctx, candidate, "statuses", 8, status_list, 0))
            candidate = nullptr;
    }
};

template <int32_t (*Pred)(const json_node *, const json_node *)>
void run_predicate(benchmark::State &state, bool whole_doc) {
    TwitterPair p;
    if (!p.candidate) {
        state.SkipWithError("twitter.json not readable");
        return;
    }
    const json_node *a = whole_doc ? p.doc : member(p.doc, "statuses");
    const json_node *b = whole_doc ? p.candidate : p.status_list;
    int32_t expect = Pred(a, b);
    for (auto _ : state) benchmark::DoNotOptimize(Pred(a, b));
    state.counters["result"] = expect;
    state.SetItemsProcessed(state.iterations());
}

void BM_ContainsPg_TwitterStatus(benchmark::State &state) {
    run_predicate<json_contains_pg>(state, true);
}
void BM_ContainsMysql_TwitterStatus(benchmark::State &state) {
    run_predicate<json_contains_mysql>(state, true);
}
void BM_OverlapsMysql_TwitterStatus(benchmark::State &state) {
    run_predicate<json_overlaps_mysql>(state, false);
}

// Two arrays of 20,000 scalars (integers, strings and number texts in
// turn): `same` holds the values of `base` in reverse order, `apart` none
// of them, so containment must match every element and overlap must look
// at every pair.
struct ScalarArrays {
    static constexpr int kCount = 20000;
    Reader r{false};
    json_node *base = r.read(text(0, false));
    json_node *same = r.read(text(0, true));
    json_node *apart = r.read(text(kCount, false));

    static std::string text(int from, bool reverse) {
        std::string t = "[";
        for (int k = 0; k < kCount; k++) {
            const int i = from + (reverse ? kCount - 1 - k : k);
            if (k) t += ',';
            if (i % 3 == 0) t += std::to_string(i);
            else if (i % 3 == 1) t += "\"k" + std::to_string(i) + "\"";
            else t += std::to_string(i) + ".5";
        }
        return t + "]";
    }
};

template <int32_t (*Pred)(const json_node *, const json_node *)>
void run_scalar_arrays(benchmark::State &state, bool overlap) {
    ScalarArrays p;
    if (!p.base || !p.same || !p.apart) {
        state.SkipWithError("arrays not readable");
        return;
    }
    const json_node *b = overlap ? p.apart : p.same;
    const int32_t expect = Pred(p.base, b);
    for (auto _ : state) benchmark::DoNotOptimize(Pred(p.base, b));
    state.counters["result"] = expect;
    state.SetItemsProcessed(state.iterations());
}

void BM_ContainsPg_Scalars20k(benchmark::State &state) {
    run_scalar_arrays<json_contains_pg>(state, false);
}
void BM_ContainsMysql_Scalars20k(benchmark::State &state) {
    run_scalar_arrays<json_contains_mysql>(state, false);
}
void BM_OverlapsMysql_Scalars20k(benchmark::State &state) {
    run_scalar_arrays<json_overlaps_mysql>(state, true);
}

void BM_Equal_Twitter(benchmark::State &state) {
    Reader r(false);
    json_node *a = r.read(twitter());
    json_node *b = r.read(twitter());
    if (!a || !b) {
        state.SkipWithError("twitter.json not readable");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(json_cmp(a, b, JSON_CMP_EQUAL));
    state.SetItemsProcessed(state.iterations());
}

// Time op, which hands back a result text, over `state`; `fresh` (when
// given) reads its inputs anew before each run, untimed.
template <class Fresh, class Op>
void run_text_op(benchmark::State &state, Reader &r, Fresh &&fresh, Op &&op) {
    uint64_t bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const bool ready = fresh();
        state.ResumeTiming();
        char *out = nullptr;
        uint32_t len = 0;
        if (!ready || op(&out, &len)) {
            state.SkipWithError("operation failed");
            return;
        }
        bytes += len;
        r.release(out);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(int64_t(bytes));
}

// A merge of a document with itself (read twice, sorted keys), written out.
void run_merge(benchmark::State &state, const std::string &text, int32_t patch) {
    Reader r(true);
    json_node *a = nullptr, *b = nullptr;
    run_text_op(
        state, r,
        [&] {
            r.reset();
            a = r.read(text);
            b = r.read(text);
            return a && b;
        },
        [&](char **out, uint32_t *len) {
            return json_merge_mysql(a, b, patch, r.ctx, out, len);
        });
}

void BM_MergePreserve_Twitter(benchmark::State &state) { run_merge(state, twitter(), 0); }
void BM_MergePatch_Twitter(benchmark::State &state) { run_merge(state, twitter(), 1); }
void BM_MergePreserve_Citm(benchmark::State &state) { run_merge(state, citm(), 0); }
void BM_MergePatch_Citm(benchmark::State &state) { run_merge(state, citm(), 1); }

// statuses || statuses: concatenation leaves arrays as they are, so the
// same trees serve every run.
void BM_Concat_TwitterStatuses(benchmark::State &state) {
    Reader r(false);
    json_node *doc = r.read(twitter());
    json_node *statuses = doc ? member(doc, "statuses") : nullptr;
    run_text_op(
        state, r, [&] { return statuses != nullptr; },
        [&](char **out, uint32_t *len) {
            return jsonb_concat(statuses, statuses, r.ctx, out, len);
        });
}

void BM_StripNulls_Twitter(benchmark::State &state) {
    Reader r(false);
    for (auto _ : state) {
        state.PauseTiming();
        r.reset();
        json_node *doc = r.read(twitter());
        state.ResumeTiming();
        if (!doc || jsonb_strip_nulls_object(doc)) {
            state.SkipWithError("strip failed");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(BM_ContainsPg_TwitterStatus);
BENCHMARK(BM_ContainsMysql_TwitterStatus);
BENCHMARK(BM_OverlapsMysql_TwitterStatus);
BENCHMARK(BM_ContainsPg_Scalars20k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ContainsMysql_Scalars20k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OverlapsMysql_Scalars20k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Equal_Twitter);
BENCHMARK(BM_MergePreserve_Twitter)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MergePatch_Twitter)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MergePreserve_Citm)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MergePatch_Citm)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Concat_TwitterStatuses)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StripNulls_Twitter)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
