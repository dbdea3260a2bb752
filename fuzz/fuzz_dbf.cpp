// The DBF reader through the public reading sequence, as an attribute-only
// layer: the header, the count, then every record and one read past the end.
#include "read_layer.hpp"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (fuzz::holdsStopWords(data, size)) return -1;
    fuzz::writeFile("f.dbf", data, size);
    fuzz::runOnce(
        [] {
            int32_t id = gisOpenLayer("f.dbf", true, "I ", "");
            gisReadHeader(id);
            // A record takes at least one byte, so the file bounds the reads.
            const int32_t records = gisNumberRecords(id);
            for (int32_t i = 0; i <= records && i < 100000; ++i) gisReadRecord(id, gisO_, gisRecordLine);
            gisCloseLayer(id);
        },
        [] { gisReset(); });
    return 0;
}
