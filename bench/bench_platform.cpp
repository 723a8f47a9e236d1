// Throughput of the platform's number and datetime text paths: decimal
// parse + format and datetime parse + print, in operations per second.
#include <benchmark/benchmark.h>

#include <cstring>

#include "vxtime.h"
#include "xdec.h"

namespace {

// Typical JSON numbers: short integers, money, long fractions, exponents.
const char *const kDecimals[] = {
    "0",
    "42",
    "-17",
    "12.50",
    "3.14159265358979",
    "-0.000123",
    "1234567890123456789",
    "99999999999999999999999999999999999999",
    "6.02214076e23",
    "1.5E-10",
    "-987654.321",
    "0.1",
};

const char *const kDatetimes[] = {
    "2024-02-29",
    "1970-01-01T00:00:00",
    "2024-01-15 10:30:00.123456789",
    "1969-12-31T23:59:59.5",
    "2024-01-15T10:30:00+05:30",
    "9999-12-31T23:59:59Z",
};

// Runs `op` over `texts` in turn, one item per call.
template <size_t N, typename Op>
void over_texts(benchmark::State &state, const char *const (&texts)[N], Op op) {
    size_t i = 0;
    for (auto _ : state) {
        const char *s = texts[i++ % N];
        benchmark::DoNotOptimize(op(s, uint32_t(std::strlen(s))));
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_XdecParseFormat(benchmark::State &state) {
    over_texts(state, kDecimals, [](const char *s, uint32_t len) {
        char buf[XDEC_TEXT_MAX];
        xdec d;
        return xdec_from_char(&d, s, len) == 0 ? xdec_to_char(&d, buf, sizeof buf) : -1;
    });
}
BENCHMARK(BM_XdecParseFormat);

void BM_XdecArithmetic(benchmark::State &state) {
    xdec a, b, out;
    (void)xdec_from_char(&a, "12345.6789", 10);
    (void)xdec_from_char(&b, "3.14159", 7);
    for (auto _ : state) {
        benchmark::DoNotOptimize(xdec_add(&out, &a, &b));
        benchmark::DoNotOptimize(xdec_mul(&out, &a, &b));
        benchmark::DoNotOptimize(xdec_div(&out, &a, &b));
    }
    state.SetItemsProcessed(state.iterations() * 3);
}
BENCHMARK(BM_XdecArithmetic);

void BM_VxtimeParsePrint(benchmark::State &state) {
    over_texts(state, kDatetimes, [](const char *s, uint32_t len) {
        char buf[VXTIME_TEXT_MAX];
        vxtime t;
        return vxtime_from_char_ex2(s, len, VXTIME_TYPE_DATETIME, &t) == 0
                   ? vxtime_to_char(&t, 16, VXTIME_FMT_ISO, buf)
                   : -1;
    });
}
BENCHMARK(BM_VxtimeParsePrint);

} // namespace

BENCHMARK_MAIN();
