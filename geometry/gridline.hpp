// Walk of one straight segment along a regular, axis-aligned grid with its
// origin at (0, 0): the ordered list of cells the segment passes, start to end.
//
// Cell (i, j) covers x from (i - 1) * dx to i * dx and y from (j - 1) * dy to
// j * dy; i = trunc(x / dx) + 1, j = trunc(y / dy) + 1 (toward zero). A cell is
// entered where the segment crosses the centre line of a row, y = (j - 0.5) * dy,
// or of a column, x = (i - 0.5) * dx, along its dominant direction.
//
// jCells, iCells: the caller's cell lists, 1-based (element 0 unused) with
// room for `limit` entries; n receives the number of cells. A walk that would
// need more than `limit` cells, or an internal failure, is reported on the
// console and ends the run through EXITS. All arithmetic is single precision.
#pragma once

#include <cstdint>

// Segment shorter than this on both axes has no length.
inline constexpr float kGridlineTolerance = 0.0001f;

// First-and-last scan with the inclusive crossing test. A segment without
// length gives its start cell (n = 1); one that meets no centre line gives
// n = 0 and all four end indices 0.
void gridline(float x1, float y1, float x2, float y2, float dx, float dy, int32_t& jFirst, int32_t& jLast,
              int32_t& iFirst, int32_t& iLast, int32_t& n, int32_t* jCells, int32_t* iCells, int32_t limit);

// Walk along the dominant direction with the strict crossing test (a crossing
// at the segment's start does not count, one at its end does), with fall-backs
// at the first and last centre line. `single` gives the start cell without a
// walk. A segment without length gives n = 0 with the end indices filled in.
// When n > 0 the offsets are added to the end indices and to every listed
// cell; with n = 0 after a walk the end indices keep their values on entry.
void gridline_v2(float x1, float y1, float x2, float y2, bool single, float dx, float dy, int32_t& jFirst,
                 int32_t& jLast, int32_t& iFirst, int32_t& iLast, int32_t& n, int32_t* jCells, int32_t* iCells,
                 int32_t limit, int32_t jOffset, int32_t iOffset);

// gridline_v2 whose end fall-back takes a cell only when the segment crosses
// the other axis's centre line inside that cell.
void gridline_5(float x1, float y1, float x2, float y2, bool single, float dx, float dy, int32_t& jFirst,
                int32_t& jLast, int32_t& iFirst, int32_t& iLast, int32_t& n, int32_t* jCells, int32_t* iCells,
                int32_t limit, int32_t jOffset, int32_t iOffset);

// Integer walk between two cells: an index below 1 takes its partner's value
// (the arguments are rewritten); steps = trunc(1.5 + d) with d the larger span,
// stepI, stepJ the per-step increments (0 when d is 0).
void gridline_steps(int32_t& i1, int32_t& j1, int32_t& i2, int32_t& j2, int32_t& steps, float& stepI, float& stepJ);

// Increments of two running values over the cells from (i1, j1) to (i2, j2):
// count = d + 1, stepA = spanA / d, stepB = spanB / d (0 when d is 0).
void gridline_increments(int32_t i1, int32_t j1, int32_t i2, int32_t j2, int32_t& count, float& stepA, float& stepB,
                         float spanB, float spanA);
