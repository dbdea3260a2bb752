// DBF writing side: header from gisA_, records from the record buffers, end
// mark and record count.
#pragma once

#include <cstdint>

#include "gis/model/gis_model.hpp"

// Header and field descriptors; nothing when the unit is not open.
void dbfWriteHeader(const GisAttributes& attributes, GisDbfState& dbf);
// gisWriteRecord / gisWriteRecordLarge for an SHP layer: the record goes to
// the set of the object (shpSetOf), a null object's to every open set.
void dbfWriteRecord(int32_t gisID, const GisObject& object, bool large);
// End mark and final record count; closes the unit. Nothing when not open.
void dbfFinish(GisDbfState& dbf);

// One record from gisRecordLine, and one from gisRecordLineLarge: each value
// of the comma-separated line into its field, a value left out keeping the
// one of the record before (each writer keeps its own).
void dbfdataline(GisDbfState& dbf);
void dbfdatalinelarge(GisDbfState& dbf);

// The value as the byte (i1u) or the 16 bits (i2u) that hold it, in signed
// storage: above 127 (32767) less 256 (65536). A value above 255 (65535)
// stops.
int32_t i1u(int32_t value);
int32_t i2u(int32_t value);
