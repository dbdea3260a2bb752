// MIF/MID family, reading side: the attribute definitions of a .mif header,
// the object statements and their coordinates, the CoordSys line and its
// comparison form, and the copy of a header to another file.
//
// On reading, entry p of a region's ir is the position of the last given
// point of part p, and each part is followed by one slot that copies its
// second point (the layout the region-membership routines expect); N counts
// those slots too.
#pragma once

#include <cstdint>
#include <string_view>

#include "gis/model/gis_model.hpp"

// Reads the attribute definitions into `m` and leaves the .mif behind its
// "Data" line. Nothing when the .mif is not open.
void mifReadHeader(GisMifState& m);

// Moves to the next object statement, sets the object's flags, type and
// counts, and gives the rest of the statement line in `lineRest`. False at
// the end of the file. With `centreEnds` a "Center" line also ends the
// search (the look-ahead behind a region); otherwise it is passed over.
bool mifObjectType(int32_t unit, TextRef line, TextRef lineRest, GisObject& object, bool centreEnds = false);

// Reads the coordinates of the object that mifObjectType found (one part of
// a Pline Multiple, one point of a MultiPoint) into X, Y from entry 1.
// `needsCentre` comes back false when a "Center" clause gave cx, cy.
// False when the layer has no .mif to read.
bool mifObject(int32_t unit, std::string_view lineRest, GisObject& object, double* X, double* Y, int32_t maxN,
               int32_t& N, bool& needsCentre, double& cx, double& cy, bool wantCoordinates);

// Moves the .mif to the line behind "Data".
void mifFindData(int32_t unit);

// Finds the "Columns" line from the start of the .mif and reads the count
// behind it. With `warnOnly` a failure gives WARNING 0315 or 0314, pauses and
// returns false; otherwise it gives ERROR 0315 or 0314 and stops.
bool mifFindColumns(int32_t unit, TextRef line, int32_t& count, bool warnOnly);

// Splits an attribute line at its first blank into name and type word.
void mifSplitAttribute(std::string_view line, TextRef name, TextRef type);

// The CoordSys line of the named file, or the non-earth default with a
// warning when the file or its line is missing.
void mifReadCoordSysLine(TextRef result, std::string_view name);

// Comparison form of a CoordSys line: upper case, without blanks, tabs and
// quotes.
void mifNormalCoordSys(TextRef out, std::string_view line);

// Copies the header lines of the .mif on `from`, up to its "Columns" line,
// to the unit `to`.
void mifCopyHeader(int32_t from, int32_t to);

// The projection check of an input .mif against gisMifProjection; leaves the
// unit at the start of the file.
void mifProjectionCheck(int32_t unit);
