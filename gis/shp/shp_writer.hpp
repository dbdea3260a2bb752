// SHP/SHX family, writing side: file headers, records and index entries, and
// the header rewrite at the end of a set.
//
// Each .shp and .shx is open on two units, one little-endian and one
// big-endian, as the file-unit manager gives them. All bytes of a file go
// through one of its units with the byte order stated for each value: the
// little-endian unit for the .shp, the big-endian unit (the one that stays
// open after the header) for the .shx. The other unit is held open but never
// written, so the file is written as one stream and nothing is cut.
#pragma once

#include <cstdint>

#include "gis/model/gis_model.hpp"

// gisWriteHeader for an SHP layer: .prj, .shp and .shx headers, .dbf header.
void shpWriteHeader(int32_t gisID);
// gisWriteObject for an SHP layer, after the common checks.
void shpWriteObject(int32_t gisID, GisObject& object);
// The .shp and .shx header rewrite of one set at the end; closes its units
// when the set holds a record.
void shpFinishSet(GisShpState& shp);
