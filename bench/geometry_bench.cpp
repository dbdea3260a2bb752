// Geometry library timings: the grid fill of a large region with holes, and
// the walk of many segments along a grid.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "geometry/gridline.hpp"
#include "geometry/polygon.hpp"

namespace {

// A star-shaped ring of n points round (cx, cy) with radii in [rmin, rmax].
void addRing(std::vector<double>& X, std::vector<double>& Y, std::vector<int32_t>& ends, std::mt19937& rng, double cx,
             double cy, double rmin, double rmax, int n) {
    std::uniform_real_distribution<double> radius(rmin, rmax);
    const std::size_t first = X.size();
    for (int k = 0; k < n; ++k) {
        const double a = 2 * std::numbers::pi * k / n;
        const double r = radius(rng);
        X.push_back(cx + r * std::cos(a));
        Y.push_back(cy + r * std::sin(a));
    }
    X.push_back(X[first]);
    Y.push_back(Y[first]);
    ends.push_back(static_cast<int32_t>(X.size()) - 1);
    X.push_back(X[first + 1]);
    Y.push_back(Y[first + 1]);
}

// 10,000 vertices: an outer ring of 8,000 and four holes of 500 each, on a
// 5,000 by 5,000 grid.
void BM_GridInsidePolygon8(benchmark::State& state) {
    constexpr int32_t dim = 5000;
    std::mt19937 rng(12345u);
    std::vector<double> X{0.0}, Y{0.0};
    std::vector<int32_t> ends{0};
    addRing(X, Y, ends, rng, 2500, 2500, 2000, 2450, 8000);
    addRing(X, Y, ends, rng, 1700, 1700, 150, 300, 500);
    addRing(X, Y, ends, rng, 3300, 1700, 150, 300, 500);
    addRing(X, Y, ends, rng, 1700, 3300, 150, 300, 500);
    addRing(X, Y, ends, rng, 3300, 3300, 150, 300, 500);
    const int32_t N = static_cast<int32_t>(X.size()) - 1;
    const int32_t npoly = static_cast<int32_t>(ends.size()) - 1;

    const std::size_t size = static_cast<std::size_t>(dim) * dim;
    std::vector<uint8_t> inside(size), crossings(size);
    std::vector<float> rvalues(size);
    int32_t jMin, iMin, jMax, iMax, count = 0;
    for (auto _ : state) {
        grid_inside_polygon_8(inside.data(), crossings.data(), nullptr, rvalues.data(), dim, dim, 1.0, 1.0, 0, 0, true,
                              true, false, true, 1.5f, false, jMin, iMin, jMax, iMax, count, X.data(), Y.data(),
                              nullptr, N, ends.data(), npoly);
        benchmark::DoNotOptimize(count);
        benchmark::ClobberMemory();
    }
    state.counters["vertices"] = static_cast<double>(N - 2 * npoly);
    state.counters["inside"] = static_cast<double>(count);
}
BENCHMARK(BM_GridInsidePolygon8)->Unit(benchmark::kMillisecond);

// 1,000,000 random segments of up to 20 cells each way on unit cells.
void BM_Gridline5(benchmark::State& state) {
    constexpr int kSegments = 1000000;
    std::mt19937 rng(54321u);
    std::uniform_real_distribution<float> pos(0.0f, 1000.0f), step(-20.0f, 20.0f);
    std::vector<float> seg(static_cast<std::size_t>(kSegments) * 4);
    for (int k = 0; k < kSegments; ++k) {
        const float x = pos(rng), y = pos(rng);
        seg[4 * k] = x;
        seg[4 * k + 1] = y;
        seg[4 * k + 2] = x + step(rng);
        seg[4 * k + 3] = y + step(rng);
    }
    std::vector<int32_t> jCells(10001), iCells(10001);
    int64_t cells = 0;
    for (auto _ : state) {
        cells = 0;
        for (int k = 0; k < kSegments; ++k) {
            int32_t jFirst = 0, jLast = 0, iFirst = 0, iLast = 0, n = 0;
            gridline_5(seg[4 * k], seg[4 * k + 1], seg[4 * k + 2], seg[4 * k + 3], false, 1.0f, 1.0f, jFirst, jLast,
                       iFirst, iLast, n, jCells.data(), iCells.data(), 10000, 0, 0);
            cells += n;
        }
        benchmark::DoNotOptimize(cells);
    }
    state.counters["cells"] = static_cast<double>(cells);
}
BENCHMARK(BM_Gridline5)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
