// Surface rows read ahead on a second thread. While the main thread works
// through a section, a helper reads on in the SDF file through a handle of
// its own, takes every line that is a plain surface row (three plain
// decimals), reads its values by the very rule the section parser uses and
// makes the texts the row's point will need: x and y as point lines lay
// them out, the elevation as the surface points' record and as the .csv
// row have it. The section parser takes a row from here when one starts
// where its own reading stands, and reads the line itself otherwise; either
// way the values and texts are the same. Nothing the helper does is seen
// outside the process: it reads, and writes nothing.
#pragma once

#include <cstdint>
#include <string_view>

#include "driver/sdf_scan.hpp"

// A row of three plain decimals and nothing else, the common case: the
// surface line goes on, and the row reads as readSurfaceRow reads it. False
// when the row needs the full rules, with the targets untouched.
bool plainSurfaceRow(std::string_view line, double& x, double& y, float& z);

// The .csv row's elevation: 12 columns, 4 decimals.
constexpr int kCsvZWidth = 12;
constexpr int kCsvZDecimals = 4;

// The texts of one row, made ahead; `ready` is false for a row the main
// thread read itself. No member has an initializer: the tables of these
// start as zero bytes and are not written through at start-up.
struct RowTexts {
    bool ready;
    bool xyReady;           // the x and y texts too (only a MIF layer wants them)
    char xy[32];            // x and y in two fields of 16 columns with 6 decimals
    char zRecord[12];       // the elevation as the surface points' record has it
    char zCsv[kCsvZWidth];  // the elevation as the .csv row has it
};

// The texts of the current section's surface rows, by row (from 1).
extern RowTexts surfTexts[kSdfMaxRows + 1];

// One plain surface row made ready: where it lies, its values and its texts.
struct ReadyRow {
    int64_t offset;  // of its first byte in the file
    int64_t next;    // of the line behind it
    double x, y;
    float z;
    RowTexts texts;
};

// Starts reading ahead in the file of input unit `unit` from where that unit
// stands, when the file is a regular file with at least `minBytes` left and
// the process may run on two cores or more; `pointTexts`: whether the x and
// y texts are wanted (a MIF layer writes them). The REACHMAP_THREADS
// environment variable decides first: 1, never (one thread); 2, whatever the
// size and the cores. False when nothing was started (then every row is read
// on the main thread).
bool rowsAheadStart(int32_t unit, int64_t minBytes, bool pointTexts);

// The row made ready that starts at byte `offset`, or nullptr when the line
// there is not a plain surface row or was not read ahead. Rows before
// `offset` are passed over for good; the row given stays valid until the next
// call.
const ReadyRow* rowsAheadAt(int64_t offset);

// Stops the helper and lets its handle go; nothing when none runs.
void rowsAheadStop();

// Stops the helper when the scope ends, however it ends.
struct RowsAheadScope {
    RowsAheadScope() = default;
    RowsAheadScope(const RowsAheadScope&) = delete;
    RowsAheadScope& operator=(const RowsAheadScope&) = delete;
    ~RowsAheadScope() { rowsAheadStop(); }
};
