// A layer reader through the public reading sequence: the input holds the
// main file REACHMAP_FUZZ_MAIN (a .shp or .mif) and its attribute file
// REACHMAP_FUZZ_ATTRIBUTES (the .dbf or .mid), split as writeTwoFiles says.
#include "read_layer.hpp"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (fuzz::holdsStopWords(data, size)) return -1;
    fuzz::writeTwoFiles(data, size, REACHMAP_FUZZ_MAIN, REACHMAP_FUZZ_ATTRIBUTES);
    fuzz::runOnce([] { fuzz::readWholeLayer(REACHMAP_FUZZ_MAIN); }, [] { gisReset(); });
    return 0;
}
