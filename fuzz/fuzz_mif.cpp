// The MIF/MID reader through the public reading sequence: a .mif and its .mid.
#include "read_layer.hpp"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz::writeTwoFiles(data, size, "f.mif", "f.mid");
    fuzz::runOnce([] { fuzz::readWholeLayer("f.mif"); }, [] { gisReset(); });
    return 0;
}
