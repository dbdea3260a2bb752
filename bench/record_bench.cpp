// The record path of the surface points, as the converter runs it: the
// attribute text composed in a line buffer (the section's ids, then the
// elevation and Manning's n in their fixed layouts), copied into
// gisRecordLine, and the point and its record written to a MIF/MID or an
// SHP/SHX/DBF layer opened with the converter's own layer definitions.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "bench_folder.hpp"
#include "driver/layer_set.hpp"
#include "gis/gis.hpp"
#include "runtime/units.hpp"
#include "text/linebuf.hpp"

namespace {

const std::filesystem::path& folder() { return benchFolder("reachmap_record_bench"); }

constexpr int kPoints = 200000;

void writePoints(benchmark::State& state, bool useMif) {
    const std::string base = (folder() / (useMif ? "mif" : "shp")).string();
    const std::string ids = "\"Big River\",\"Reach 3\",\"99850.50\"";
    for (auto _ : state) {
        int32_t surfPts = 0, surfLine = 0, cutLine = 0, leveePts = 0, endPts = 0;
        CreateSectionLayers(base, useMif, surfPts, surfLine, cutLine, leveePts, endPts);
        gisO_.isPoint = true;
        gisN = 1;
        for (int i = 0; i < kPoints; ++i) {
            LineBuf<4096> l;
            l << ids << ",";
            l.fixed(12, 3, 100.0 + 0.001 * (i % 9973));
            l << ",";
            l.fixed(8, 4, i % 3 == 1 ? 0.035 : 0.06);
            gisX[1] = 300000.0 + 0.25 * i;
            gisY[1] = 6200000.0 - 0.125 * i;
            gisRecordLine = l.view();
            gisWriteObject(surfPts, gisO_);
            gisWriteRecord(surfPts, gisO_);
        }
        gisO_.isPoint = false;
        bool anyOpen = false;
        gisCloseAllLayers(anyOpen);
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
}

void BM_SurfacePointsMif(benchmark::State& s) { writePoints(s, true); }
void BM_SurfacePointsShp(benchmark::State& s) { writePoints(s, false); }

}  // namespace

BENCHMARK(BM_SurfacePointsMif)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_SurfacePointsShp)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

// The layers' progress lines go to standard output with the results.
// The folder (about 90 MB) is removed at the end.
int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::filesystem::remove_all(folder());
    return 0;
}
