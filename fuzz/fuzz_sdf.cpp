// The whole conversion of one SDF file, in the format named by
// REACHMAP_FUZZ_FORMAT ("-shp" or "-mif"), in process, through the exit
// handler, with a full reset after each run.
#include "driver/run.hpp"
#include "fuzz_common.hpp"

namespace {

// Ids and stations become the names of .csv files; a path in them would write
// outside the scratch folder, so such inputs are not run. Values are taken
// behind the first colon of a line, so a separator behind a colon is refused.
bool writesOutsideFolder(const uint8_t* data, std::size_t size) {
    bool colon = false;
    for (std::size_t i = 0; i < size; ++i) {
        const char c = static_cast<char>(data[i]);
        if (c == '\n') colon = false;
        else if (c == ':') colon = true;
        else if (colon && (c == '/' || c == '\\')) return true;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::setUp();
    fuzz::writeFile("Header.mif", "CoordSys Earth Projection 8, 33, \"m\", 153, 0, 0.9996, 500000, 10000000\r\n");
    fuzz::writeFile("Header.prj", "PROJCS[\"GDA94 / MGA zone 56\",GEOGCS[\"GDA94\"]]\r\n");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (writesOutsideFolder(data, size) || fuzz::holdsStopWords(data, size)) return -1;
    fuzz::writeFile("f.sdf", data, size);
    char prog[] = "reachmap", format[] = REACHMAP_FUZZ_FORMAT, file[] = "f.sdf";
    char* argv[] = {prog, format, file, nullptr};
    fuzz::runOnce([&] { runReachmap(3, argv); }, [] { reachmapReset(); });
    fuzz::clearFolder([](const std::string& name) { return name.starts_with("Header."); });
    return 0;
}
