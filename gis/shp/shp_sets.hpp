// The sets of an SHP layer: which set an object belongs to, and the letter
// and shape type of each set. The .shp writer, the .dbf writer and the
// opening of a layer all follow this one choice, so that object n and record
// n of a layer always land in the same set.
#pragma once

#include <cstdint>

#include "gis/model/gis_model.hpp"

// The letter that names a set's files (x.shp gives x_P.shp, ...) and the
// shape type of its header, by ShpSet.
struct ShpSetInfo {
    char letter;
    int32_t shapeType;
};
inline constexpr ShpSetInfo kShpSets[kShpSetRegions + 1] = {
    {' ', kShapeNull},
    {'P', kShapePoint},
    {'L', kShapePolyline},
    {'R', kShapePolygon},
};

// An input layer is opened and read as the first set, whatever its letter.
inline constexpr int32_t kShpInputSet = kShpSetPoints;

// The set of an object, the kinds tested in this order: a point, the three
// line kinds, a region, a text (kept as a point at its first entry), a
// multipoint; kShpSetEvery for a null object, which goes to every open set;
// kShpSetNone for any other.
constexpr int32_t shpSetOf(const GisObject& o) {
    if (o.isPoint) return kShpSetPoints;
    if (o.isLine || o.isPline || o.isPlineMultiple) return kShpSetLines;
    if (o.isRegion) return kShpSetRegions;
    if (o.isText || o.isMultiPoint) return kShpSetPoints;
    if (o.isNone) return kShpSetEvery;
    return kShpSetNone;
}

// The set named by a letter in either case; kShpSetNone for another.
constexpr int32_t shpSetOfLetter(char letter) {
    for (int32_t k = kShpSetPoints; k <= kShpSetRegions; ++k)
        if (letter == kShpSets[k].letter || letter == kShpSets[k].letter - 'A' + 'a') return k;
    return kShpSetNone;
}
