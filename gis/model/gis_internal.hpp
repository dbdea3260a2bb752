// Helpers shared by the parts of the GIS layer library: report lines, the
// stops of states that calling code should never reach, and the check of a
// layer number. Not part of the public interface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "gis/model/gis_model.hpp"
#include "text/linebuf.hpp"
#include "text/support.hpp"

// A report line built from pieces, cut at its capacity.
using GisLine = LineBuf<2048>;

// True when gisID names no slot of the table.
inline bool gisBadId(int32_t gisID) { return gisID < 1 || gisID > kGisMaxLayers; }

// `blankLines` empty lines and `line` on the console and, when gisLogUnit is
// above 0, in the log.
void gisReport(int32_t blankLines, std::string_view line);

// "Should not be here {operation}[gisID=0] - please contact REACHMAP_SUPPORT."
// on the console, then EXITS.
[[noreturn]] void gisStopNoLayer(std::string_view operation);

// A blank line and "Should not be here [{where}] - please contact
// REACHMAP_SUPPORT." on the console, then EXITS.
[[noreturn]] void gisStopNotHere(std::string_view where);

// `line` as the message, through gisMessageOut with one blank line, then EXITS.
[[noreturn]] void gisStopMessage(std::string_view line);

// ERROR 0310, more points than the buffers hold, in the words of the family
// (shp true for the SHP family), with the requested count and the limit.
[[noreturn]] void gisStopTooManyNodes(bool shp, int64_t requested, int32_t limit);

// The workspace and input-layer list lines for an input layer that is new to
// gisInputLayers (its stem as tracked, `name` as given); `tracked` is false
// beyond the tracking limit, where only the list gets a line.
void gisRecordInputLayer(int32_t gisID, std::string_view stem, std::string_view name, bool tracked);

// The parts of gisReset kept beside the state they clear: the value slots of
// the .dbf writer and the field cursors of the reading sequence.
void dbfWriterReset();
void readCursorsReset();
