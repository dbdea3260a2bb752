// SHP family, reading side: the .shp file header, the record headers with the
// counts that tell an object's kind, and the coordinates; the .prj
// projection name and its check.
//
// All bytes are read through the little-endian unit with the byte order of
// each field stated. Records are found by their stated lengths, so a record
// that holds more than its counts need is passed over whole.
#pragma once

#include <cstdint>
#include <string_view>

#include "gis/model/gis_model.hpp"

// The 100-byte file header through `unit`; nothing when the unit is not open.
void shpReadHeader(int32_t unit, int32_t& fileCode, int32_t& fileLength, int32_t& version, int32_t& shapeType,
                   double& xmin, double& ymin, double& xmax, double& ymax);

// Reads the next record's header and the counts before its coordinates and
// sets the object's flags; false when no record is left.
//  - polyline (3): np parts, ir[1..np] their starts from 0, ir[np+1] the
//    point count; nr is raised by each part that shpReadObject reads;
//  - polygon (5): nr parts, ir[1..nr] their starts, ir[nr+1] the point count;
//  - multipoint (8): np points.
bool shpObjectType(GisShpState& shp, GisObject& object);

// Reads the coordinates of one point, one multipoint member, one polyline
// part or a whole polygon (in the slot layout with a copy of each ring's
// second point behind it). False when the unit is not open.
bool shpReadObject(int32_t unit, int32_t shapeType, GisObject& object, double* X, double* Y, int32_t maxN, int32_t& N,
                   bool wantCoordinates);

// True when the records of the set are all read: the position has reached
// the length the header states, or the end of the file.
bool shpAtEnd(const GisShpState& shp);

// The name of the projected system in a .prj line, upper case, from behind
// "PROJCS[" (blank when there is none). Upper-cases `line` in place.
void prjProjectionName(TextRef out, TextRef line);

// The projection check of the named .prj against gisShpProjection.
void prjProjectionCheck(std::string_view prjName);
