// Number reading and writing as the converter does them for every surface
// point: a row "x, y, z" read as two 8-byte reals and one 4-byte real, an
// n-table row as two 4-byte reals, and the fixed-point fields of the record
// lines and .csv rows written with putFixed.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "text/freeformat.hpp"
#include "text/numbers.hpp"

namespace {

// Rows laid out as the generated and the real files have them: leading
// blanks, comma and blank separators, three or four decimals.
std::vector<std::string> surfaceRows() {
    std::vector<std::string> rows;
    char b[96];
    for (int i = 0; i < 4096; ++i) {
        std::snprintf(b, sizeof b, "         %.4f, %.4f, %.3f", 352025.49 + 4.129 * i, 6254930.468 + 3.242 * i,
                      100.0 + 0.001 * (i * 7919 % 10007));
        rows.emplace_back(b);
    }
    return rows;
}

void BM_SurfaceRow(benchmark::State& state) {
    const std::vector<std::string> rows = surfaceRows();
    double x = 0, y = 0;
    float z = 0;
    size_t i = 0, bytes = 0;
    for (auto _ : state) {
        const std::string& r = rows[i++ & 4095];
        FreeFormat f(r);
        ReadResult ok = f.real8(x);
        if (ok == ReadResult::ok) ok = f.real8(y);
        if (ok == ReadResult::ok) ok = f.real4(z);
        benchmark::DoNotOptimize(ok);
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
        benchmark::DoNotOptimize(z);
        bytes += r.size();
    }
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
    state.SetItemsProcessed(state.iterations());
}

void BM_NValuesRow(benchmark::State& state) {
    const std::string rows[] = {"         0, 0.06", "         0.35, 0.035", "         0.65, 0.06"};
    float s = 0, n = 0;
    size_t i = 0;
    for (auto _ : state) {
        FreeFormat f(rows[i++ % 3]);
        ReadResult ok = f.real4(s);
        if (ok == ReadResult::ok) ok = f.real4(n);
        benchmark::DoNotOptimize(ok);
        benchmark::DoNotOptimize(s);
        benchmark::DoNotOptimize(n);
    }
    state.SetItemsProcessed(state.iterations());
}

// One surface point's fields: elevation 12.3 and Manning's n 8.4 of its
// record, and chainage 12.3, elevation 12.4, n 8.4 of its .csv row.
void BM_PutFixedPoint(benchmark::State& state) {
    char out[64];
    double v = 101.2345;
    for (auto _ : state) {
        char* p = putFixed(out, 12, 3, v);
        p = putFixed(p, 8, 4, 0.035);
        p = putFixed(p, 12, 3, v * 3.5);
        p = putFixed(p, 12, 4, v);
        p = putFixed(p, 8, 4, 0.06);
        benchmark::DoNotOptimize(out);
        benchmark::DoNotOptimize(p);
        v += 0.0007;
    }
    state.SetItemsProcessed(state.iterations());
}

// One MIF point line's coordinates: x and y in 16 columns with 6 decimals.
void BM_PutFixedCoordinates(benchmark::State& state) {
    char out[32];
    double x = 352025.49, y = 6254930.468;
    for (auto _ : state) {
        putFixed(out, 16, 6, x);
        putFixed(out + 16, 16, 6, y);
        benchmark::DoNotOptimize(out);
        x += 4.129;
        y -= 3.242;
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK(BM_SurfaceRow);
BENCHMARK(BM_NValuesRow);
BENCHMARK(BM_PutFixedPoint);
BENCHMARK(BM_PutFixedCoordinates);

BENCHMARK_MAIN();
