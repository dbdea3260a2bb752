// Reading a layer through the public reading sequence, as a program that
// uses the library would: header, attribute definitions, rewind, then each
// object with its record and its sub-objects.
#pragma once

#include "fuzz_common.hpp"
#include "gis/gis.hpp"

namespace fuzz {

inline void readWholeLayer(std::string_view name) {
    int32_t id = gisOpenLayer(name, false, "I ", "");
    if (id < 1) return;
    gisReadHeader(id);
    const int32_t n = gisNumberAttributes(id);
    gisNumberRecords(id);
    int32_t count = 0;
    if (gisGotoBeginningOfAttributes(id, count)) {
        Text<256> attribute;
        Text<24> type;
        for (int32_t i = 1; i <= n && i <= count; ++i) gisReadAttributeDefinition(id, attribute, type);
    }
    gisGotoBeginningOfData(id);
    while (gisObjectType(id, gisO_)) {
        gisReadRecord(id, gisO_, gisRecordLine);
        // One read for an object, one for each part or point of a multiple one.
        const int32_t subs = gisO_.isPlineMultiple || gisO_.isMultiPoint ? gisO_.np : 1;
        for (int32_t k = 0; k < subs; ++k) {
            double cx = 0.0, cy = 0.0;
            float angle = 0.0f, length = 0.0f;
            gisReadObject(id, gisO_, gisX, gisY, kGisMaxPoints, gisN, cx, cy, angle, length, (k & 1) == 0);
        }
    }
    gisCloseLayer(id);
}

// The input split in two files: a 4-byte little-endian length, that many
// bytes of the first file (fewer when the input is shorter), the rest the
// second.
inline void writeTwoFiles(const uint8_t* data, std::size_t size, const char* first, const char* second) {
    uint32_t n = 0;
    for (std::size_t i = 0; i < 4 && i < size; ++i) n |= uint32_t{data[i]} << (8 * i);
    const std::size_t body = size > 4 ? size - 4 : 0;
    const std::size_t a = n < body ? n : body;
    writeFile(first, data + (size - body), a);
    writeFile(second, data + (size - body) + a, body - a);
}

}  // namespace fuzz
