// The SHP reader through the public reading sequence: a .shp and its .dbf.
#include "read_layer.hpp"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz::writeTwoFiles(data, size, "f.shp", "f.dbf");
    fuzz::runOnce([] { fuzz::readWholeLayer("f.shp"); }, [] { gisReset(); });
    return 0;
}
