// Writing speed of the GIS layer library: one million points and ten
// thousand polylines of a thousand vertices, each with its record, to a MIF
// layer and to an SHP layer. Reports the bytes of all files of the layer
// divided by the time.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "bench_folder.hpp"
#include "gis/gis.hpp"
#include "runtime/units.hpp"

namespace {

const std::filesystem::path& folder() { return benchFolder("reachmap_gis_bench"); }

uintmax_t bytesOfLayer(const std::string& stem) {
    uintmax_t n = 0;
    for (const auto& e : std::filesystem::directory_iterator(folder()))
        if (e.path().filename().string().starts_with(stem)) n += e.file_size();
    return n;
}

// Writes `objects` objects of `vertices` points each (a point when 1).
void writeLayer(benchmark::State& state, const char* ext, int objects, int vertices) {
    const std::string stem = std::string(vertices == 1 ? "points" : "lines") + "_" + (ext + 1);
    const std::string name = (folder() / (stem + ext)).string();
    uintmax_t bytes = 0;
    for (auto _ : state) {
        gisA_.n = 2;
        gisA_.name[1] = "Name";
        gisA_.type[1] = "Char";
        gisA_.width[1] = 10;
        gisA_.name[2] = "Level";
        gisA_.type[2] = "Float";
        gisA_.width[2] = 0;
        gisA_.nrecords = 0;
        int32_t id = gisOpenLayer(name, false, "O ", vertices == 1 ? "P" : "L");
        gisWriteHeader(id);
        gisClearObject(gisO_);
        gisO_.isPoint = vertices == 1;
        gisO_.isPline = vertices > 1;
        gisRecordLine = "\"abc\",123.456";
        gisN = vertices;
        for (int i = 1; i <= vertices; ++i) {
            gisX[i] = 300000.0 + 0.5 * i;
            gisY[i] = 6000000.0 + 0.25 * i;
        }
        for (int k = 0; k < objects; ++k) {
            if (vertices == 1) {
                gisX[1] = 300000.0 + 0.125 * k;
                gisY[1] = 6000000.0 - 0.125 * k;
            } else {
                gisX[1] = 300000.0 + k;
            }
            gisWriteObject(id, gisO_);
            gisWriteRecord(id, gisO_);
        }
        gisCloseLayer(id);
        state.PauseTiming();
        bytes += bytesOfLayer(stem);
        state.ResumeTiming();
    }
    state.counters["MB/s"] = benchmark::Counter(static_cast<double>(bytes) / 1e6, benchmark::Counter::kIsRate);
    state.counters["MB"] =
        benchmark::Counter(static_cast<double>(bytes) / 1e6 / static_cast<double>(state.iterations()));
}

void BM_MifPoints(benchmark::State& s) { writeLayer(s, ".mif", 1000000, 1); }
void BM_ShpPoints(benchmark::State& s) { writeLayer(s, ".shp", 1000000, 1); }
void BM_MifPolylines(benchmark::State& s) { writeLayer(s, ".mif", 10000, 1000); }
void BM_ShpPolylines(benchmark::State& s) { writeLayer(s, ".shp", 10000, 1000); }

}  // namespace

BENCHMARK(BM_MifPoints)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_ShpPoints)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_MifPolylines)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_ShpPolylines)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

BENCHMARK_MAIN();
