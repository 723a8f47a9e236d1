// The SQLite extension against SQLite's own JSON functions, in one run:
// over an in-memory table of distinct twitter-shaped rows,
//   json_value(j, '$.statuses[0].user.id')  vs  json_extract(j, same path)
//   vxjson_check(j)                          vs  json_valid(j)
// Each iteration scans the whole table.  Prints the medians' ratios at the
// end (above 1 means the extension is faster).
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "bench_data.h"
#include "bench_medians.h"

namespace {

// Rows are built from twitter.json's statuses: each holds a pair of them
// and the document's search metadata, so every row differs and all keep
// the document's shape.  The row count keeps the table near 20 MB.
constexpr int FIRST_STATUSES = 100;
constexpr int PARTNERS = 20;

const char *const BUILD_TABLE = R"(
create table t(j text);
with s(k, v) as (select key, value from json_each(?1, '$.statuses'))
insert into t
  select json_object('statuses', json_array(json(a.v), json(b.v)),
                     'search_metadata', json_extract(?1, '$.search_metadata'))
  from s a join s b on b.k > a.k and b.k <= a.k + ?2
  where a.k < ?3;
)";

struct pair_def {
    const char *name;   // the comparison, as the summary prints it
    const char *ours;   // a query over t through the extension
    const char *theirs; // the same through SQLite's own function
};

const pair_def PAIRS[] = {
    {"json_value / json_extract", "select count(json_value(j, '$.statuses[0].user.id')) from t",
     "select count(json_extract(j, '$.statuses[0].user.id')) from t"},
    {"vxjson_check / json_valid", "select sum(vxjson_check(j)) from t",
     "select sum(json_valid(j)) from t"},
};

sqlite3 *db = nullptr;

bool open_database(const std::string &twitter) {
    if (sqlite3_open(":memory:", &db) != SQLITE_OK) return false;
    sqlite3_enable_load_extension(db, 1);
    char *err = nullptr;
    if (sqlite3_load_extension(db, VXJSON_SQLITE_EXTENSION, nullptr, &err) != SQLITE_OK) {
        std::fprintf(stderr, "cannot load %s: %s\n", VXJSON_SQLITE_EXTENSION, err ? err : "");
        sqlite3_free(err);
        return false;
    }
    sqlite3_stmt *st = nullptr;
    const char *tail = BUILD_TABLE;
    // Two statements: the table, then its rows (which take the parameters).
    for (int i = 0; i < 2; i++) {
        if (sqlite3_prepare_v2(db, tail, -1, &st, &tail) != SQLITE_OK) break;
        sqlite3_bind_text(st, 1, twitter.data(), int(twitter.size()), SQLITE_STATIC);
        sqlite3_bind_int(st, 2, PARTNERS);
        sqlite3_bind_int(st, 3, FIRST_STATUSES);
        const int rc = sqlite3_step(st);
        sqlite3_finalize(st);
        st = nullptr;
        if (rc != SQLITE_DONE) break;
        if (i == 1) return true;
    }
    std::fprintf(stderr, "cannot build the table: %s\n", sqlite3_errmsg(db));
    return false;
}

// A query is usable when it prepares (the function exists) and runs.
bool usable(const char *sql) {
    sqlite3_stmt *st = nullptr;
    const bool ok = sqlite3_prepare_v2(db, sql, -1, &st, nullptr) == SQLITE_OK &&
                    sqlite3_step(st) == SQLITE_ROW;
    if (!ok) std::fprintf(stderr, "skipped (%s): %s\n", sqlite3_errmsg(db), sql);
    sqlite3_finalize(st);
    return ok;
}

void scan(benchmark::State &state, const char *sql) {
    sqlite3_stmt *st = nullptr;
    if (sqlite3_prepare_v2(db, sql, -1, &st, nullptr) != SQLITE_OK) {
        state.SkipWithError(sqlite3_errmsg(db));
        return;
    }
    for (auto _ : state) {
        if (sqlite3_step(st) != SQLITE_ROW) {
            state.SkipWithError(sqlite3_errmsg(db));
            break;
        }
        benchmark::DoNotOptimize(sqlite3_column_int64(st, 0));
        sqlite3_reset(st);
    }
    sqlite3_finalize(st);
}

// Keeps the median CPU time of every benchmark for the ratios: on a
// shared machine the wall clock also counts other people's work.
class Collect : public RepresentativeRuns {
public:
    std::map<std::string, double> median_ms;

protected:
    void keep(const std::string &name, const Run &run) override {
        median_ms[name] = run.GetAdjustedCPUTime();
    }
};

void print_summary(const Collect &c, int rows) {
    std::printf("\n%d rows; CPU time per table scan (median), ratio = SQLite / vxjson\n", rows);
    for (const pair_def &p : PAIRS) {
        auto ours = c.median_ms.find(std::string("sqlite/vxjson/") + p.name);
        auto theirs = c.median_ms.find(std::string("sqlite/sqlite/") + p.name);
        if (ours == c.median_ms.end() || theirs == c.median_ms.end()) continue;
        std::printf("%-28s %10.2f ms %10.2f ms %6.2fx\n", p.name, ours->second, theirs->second,
                    theirs->second / ours->second);
    }
}

int row_count() {
    sqlite3_stmt *st = nullptr;
    int n = 0;
    if (sqlite3_prepare_v2(db, "select count(*) from t", -1, &st, nullptr) == SQLITE_OK &&
        sqlite3_step(st) == SQLITE_ROW)
        n = sqlite3_column_int(st, 0);
    sqlite3_finalize(st);
    return n;
}

} // namespace

int main(int argc, char **argv) {
    std::vector<char *> args = with_default_flags(argc, argv);
    int nargs = int(args.size()) - 1;
    benchmark::Initialize(&nargs, args.data());
    const std::string twitter = load_bench_data("twitter");
    if (twitter.empty() || !open_database(twitter)) return 1;
    for (const pair_def &p : PAIRS) {
        if (!usable(p.ours) || !usable(p.theirs)) continue;
        benchmark::RegisterBenchmark((std::string("sqlite/vxjson/") + p.name).c_str(), scan, p.ours)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("sqlite/sqlite/") + p.name).c_str(), scan,
                                     p.theirs)
            ->Unit(benchmark::kMillisecond);
    }
    Collect reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    print_summary(reporter, row_count());
    benchmark::Shutdown();
    sqlite3_close(db);
    return 0;
}
