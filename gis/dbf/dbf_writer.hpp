// DBF writing side: header from gisA_, records from the record buffers
// (dbfdataline and dbfdatalinelarge of gis.hpp), end mark and record count.
#pragma once

#include <cstdint>

#include "gis/model/gis_model.hpp"

// Header and field descriptors; nothing when the unit is not open.
void dbfWriteHeader(const GisAttributes& attributes, GisDbfState& dbf);
// gisWriteRecord / gisWriteRecordLarge for an SHP layer: the record goes to
// the set of the object's kind, a null object's to every open set.
void dbfWriteRecord(int32_t gisID, const GisObject& object, bool large);
// End mark and final record count; closes the unit. Nothing when not open.
void dbfFinish(GisDbfState& dbf);
