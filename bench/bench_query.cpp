// Path queries: read plus evaluate a path over many distinct documents
// shaped like twitter.json, next to SQLite's JSON functions on the same
// documents in an in-memory table, in MB/s of input.  Every document is a
// variant of the reference (its ids and texts changed), and the runs cycle
// through them, so no cache of a parsed document can help either side.
// Prints, at the end, the median rates and our ratio to SQLite.
//
// SQLite has no wildcard steps: a wildcard path is its json_each over the
// containing value (for a member of each element, json_extract of each
// element's value, which SQLite reads again from its text).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bench_data.h"
#include "bench_medians.h"
#include "vx_heap.h"
#include "vxjson.h"
#include "vxstr.h"

#ifdef VXJSON_HAVE_SQLITE
#include <sqlite3.h>
#endif

namespace {

struct Query {
    const char *name;
    const char *path;
    const char *sql; // ?1 is the document's row id
};

const Query QUERIES[] = {
    {"first_user_id", "$.statuses[0].user.id",
     "SELECT json_extract(j, '$.statuses[0].user.id') FROM docs WHERE id = ?1"},
    {"every_screen_name", "$.statuses[*].user.screen_name",
     "SELECT json_group_array(json_extract(e.value, '$.user.screen_name'))"
     " FROM docs, json_each(docs.j, '$.statuses') AS e WHERE docs.id = ?1"},
    {"metadata_wildcard", "$.search_metadata.*",
     "SELECT json_group_array(e.value) FROM docs, json_each(docs.j, '$.search_metadata') AS e"
     " WHERE docs.id = ?1"},
};

constexpr int VARIANTS = 32;

// Variant k of the reference: every "id" number gets its last digit moved
// on by k, and every "text" string a prefix naming k.
std::string make_variant(const std::string &text, int k) {
    std::string out;
    out.reserve(text.size() + 4096);
    const std::string id_key = "\"id\":", text_key = "\"text\":\"";
    for (size_t i = 0; i < text.size();) {
        if (text.compare(i, text_key.size(), text_key) == 0) {
            out += text_key + "v" + std::to_string(k) + " ";
            i += text_key.size();
        } else if (text.compare(i, id_key.size(), id_key) == 0) {
            out += id_key;
            i += id_key.size();
            size_t end = i;
            while (end < text.size() && text[end] >= '0' && text[end] <= '9') end++;
            out.append(text, i, end - i);
            if (end > i) out.back() = char('0' + (out.back() - '0' + k) % 10);
            i = end;
        } else {
            out += text[i++];
        }
    }
    return out;
}

void *heap_array_alloc(void *env, void *handle, size_t size, const char *src, int line) {
    return mem_heap_alloc_low(env, handle, size, 0, src, line);
}

// Our side: a context over a heap reset per document, the compiled path,
// and the result written as text, as the function layer hands it back.
struct Engine {
    const std::vector<std::string> *docs = nullptr;
    vx_heap *heap = nullptr;      // trees, reset per document
    vx_heap *path_heap = nullptr; // the compiled path, kept
    vx_allocator alloc{};
    vx_allocator out_alloc{};
    std::unique_ptr<jlpca_ctx> ctx = std::make_unique<jlpca_ctx>();
    jpath path{};
    vxstr *out = nullptr;

    ~Engine() {
        jlpca_deinit(ctx.get());
        if (out) vxstr_free(nullptr, &out_alloc, out);
        mem_heap_free(heap);
        mem_heap_free(path_heap);
    }
    bool open(const std::vector<std::string> *d, const char *path_text) {
        docs = d;
        heap = mem_heap_create(8u << 20);
        path_heap = mem_heap_create(0);
        alloc = vx_allocator{heap_array_alloc, nullptr, heap};
        out_alloc = vx_allocator{heap_array_alloc, nullptr, path_heap};
        // Strict, as SQLite reads: both sides take the same language.
        jlpca_init(nullptr, ctx.get(), path_heap, &alloc, JLPCA_ESCAPE_DECODE, 1, 0,
                   JLPCA_COMPAT_STANDARD);
        (void)jpath_init_simple(&path, 0);
        if (jlpca_reinit(ctx.get(), path_text, uint32_t(std::strlen(path_text))) != 0 ||
            jpath_flex(ctx.get(), &path) != 0)
            return false;
        ctx->heap = heap;
        out = vxstr_create(nullptr, &out_alloc, 4096);
        return out != nullptr;
    }
    // Reads document i and evaluates the path: the result's text length.
    int64_t run(size_t i) {
        const std::string &text = (*docs)[i];
        mem_heap_reset(heap);
        json_node *root = nullptr, *match = nullptr;
        if (jlpca_reinit(ctx.get(), text.data(), uint32_t(text.size())) != 0 ||
            json_flex(ctx.get(), &root) != 0 || json_query(ctx.get(), root, &path, &match) != 0)
            return -1;
        vxstr_init(out);
        if (json_to_string(ctx.get(), &out_alloc, out, match, 0, 0, 0, JSON_CONV_JSON) != 0)
            return -1;
        return out->len;
    }
};

void query_vxjson(benchmark::State &state, Engine *e) {
    size_t i = 0, bytes = 0;
    for (auto _ : state) {
        const int64_t n = e->run(i);
        if (n < 0) {
            state.SkipWithError("evaluation failed");
            break;
        }
        benchmark::DoNotOptimize(n);
        bytes += (*e->docs)[i].size();
        i = (i + 1) % e->docs->size();
    }
    state.SetBytesProcessed(int64_t(bytes));
}

#ifdef VXJSON_HAVE_SQLITE
// SQLite's side: the same documents in an in-memory table, one prepared
// statement per query.
struct Sqlite {
    const std::vector<std::string> *docs = nullptr;
    sqlite3 *db = nullptr;
    sqlite3_stmt *stmt = nullptr;

    ~Sqlite() {
        sqlite3_finalize(stmt);
        sqlite3_close(db);
    }
    bool open(const std::vector<std::string> *d, const char *sql) {
        docs = d;
        if (sqlite3_open(":memory:", &db) != SQLITE_OK) return false;
        if (sqlite3_exec(db, "CREATE TABLE docs(id INTEGER PRIMARY KEY, j TEXT)", nullptr, nullptr,
                         nullptr) != SQLITE_OK)
            return false;
        sqlite3_stmt *ins = nullptr;
        sqlite3_prepare_v2(db, "INSERT INTO docs(id, j) VALUES(?1, ?2)", -1, &ins, nullptr);
        for (size_t i = 0; i < d->size(); i++) {
            sqlite3_bind_int64(ins, 1, int64_t(i) + 1);
            sqlite3_bind_text(ins, 2, (*d)[i].data(), int((*d)[i].size()), SQLITE_STATIC);
            if (sqlite3_step(ins) != SQLITE_DONE) return false;
            sqlite3_reset(ins);
        }
        sqlite3_finalize(ins);
        return sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr) == SQLITE_OK;
    }
    int64_t run(size_t i) {
        sqlite3_bind_int64(stmt, 1, int64_t(i) + 1);
        int64_t n = -1;
        if (sqlite3_step(stmt) == SQLITE_ROW) n = sqlite3_column_bytes(stmt, 0);
        sqlite3_reset(stmt);
        return n;
    }
};

void query_sqlite(benchmark::State &state, Sqlite *s) {
    size_t i = 0, bytes = 0;
    for (auto _ : state) {
        const int64_t n = s->run(i);
        if (n < 0) {
            state.SkipWithError("sqlite query failed");
            break;
        }
        benchmark::DoNotOptimize(n);
        bytes += (*s->docs)[i].size();
        i = (i + 1) % s->docs->size();
    }
    state.SetBytesProcessed(int64_t(bytes));
}
#endif

void print_summary(const MedianRates &c) {
    std::printf("\n%-20s %-32s %12s %12s %8s\n", "query", "path", "vxjson MB/s", "sqlite MB/s",
                "ratio");
    for (const Query &q : QUERIES) {
        const double ours = c.mbps(std::string("query/") + q.name + "/vxjson");
        const double theirs = c.mbps(std::string("query/") + q.name + "/sqlite");
        std::printf("%-20s %-32s %12.0f %12.0f %7.2fx\n", q.name, q.path, ours, theirs,
                    theirs > 0 ? ours / theirs : 0.0);
    }
}

} // namespace

int main(int argc, char **argv) {
    std::vector<char *> args = with_default_flags(argc, argv);
    int nargs = int(args.size()) - 1;
    benchmark::Initialize(&nargs, args.data());
    const std::string twitter = load_bench_data("twitter");
    if (twitter.empty()) return 1;
    std::vector<std::string> docs;
    for (int k = 0; k < VARIANTS; k++) docs.push_back(make_variant(twitter, k));
    std::vector<std::unique_ptr<Engine>> engines;
#ifdef VXJSON_HAVE_SQLITE
    std::vector<std::unique_ptr<Sqlite>> sqlites;
#endif
    for (const Query &q : QUERIES) {
        const std::string base = std::string("query/") + q.name + "/";
        auto e = std::make_unique<Engine>();
        if (!e->open(&docs, q.path) || e->run(0) < 0) {
            std::fprintf(stderr, "cannot evaluate %s\n", q.path);
            return 1;
        }
        benchmark::RegisterBenchmark((base + "vxjson").c_str(), query_vxjson, e.get());
        engines.push_back(std::move(e));
#ifdef VXJSON_HAVE_SQLITE
        auto s = std::make_unique<Sqlite>();
        if (!s->open(&docs, q.sql) || s->run(0) < 0) {
            std::fprintf(stderr, "sqlite cannot run %s\n", q.sql);
            return 1;
        }
        benchmark::RegisterBenchmark((base + "sqlite").c_str(), query_sqlite, s.get());
        sqlites.push_back(std::move(s));
#endif
    }
    MedianRates reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    print_summary(reporter);
    benchmark::Shutdown();
    return 0;
}
