// DBF reading side: the header and field table of an SHP set's .dbf, and its
// records as comma-separated lines (text fields in double quotes).
#pragma once

#include "gis/model/gis_model.hpp"

// Reads the record count and the field table into `dbf` and leaves the file
// at its first record. Nothing when the unit is not open.
void dbfReadHeader(GisDbfState& dbf);

// Reads the next live record into `line` (cut at its capacity), passing over
// deleted ones. At the end of the table `line` is blank and atEnd true; a
// table shorter than its header says ends with a warning, not a stop.
void dbfReadRecord(GisDbfState& dbf, bool& atEnd, TextRef line);
