// Region membership for single points, point lists and grid windows.
//
// A region is held as the GIS object buffer holds it (array conventions in
// geometry/arrays.hpp):
//   X, Y   vertex slots 1..N. Polygon p starting at slot L with c given points
//          (the last repeating the first) fills slots L..L+c-1, then slot L+c
//          holds a copy of its second point; the next polygon starts at L+c+1.
//   ends   ends[p] = L+c-1, the slot of the last given point of polygon p.
//   npoly  number of polygons; N = ends[npoly] + 1.
// A point is inside when an odd number of edges cross the horizontal line
// through it on its left, so polygons within polygons make holes.
//
// Grid routines: grid point (i, j) stands at x = i * dx, y = j * dy. Grids are
// passed as a pointer to element (1, 1) with dimJ, dimI (see gridIndex).
// `inside` and `crossings` are byte grids; `crossings` is the caller's scratch
// (its window holds running parities afterwards).
//
// When ends and npoly do not describe the slots, these routines write their
// report to the console and end the run through EXITS.
#pragma once

#include <cstdint>

#include "geometry/arrays.hpp"

// Point (px, py) inside the region; xmin is any x at or left of the region's
// least x. No tolerance: a point on an edge may go either way.
bool INSIDE_POLYGON(float px, float py, const float* X, const float* Y, int32_t N, float xmin, const int32_t* ends,
                    int32_t npoly);
// The same on 64-bit coordinates (differences rounded to float for the
// crossing test). The element interpolation uses this routine as well.
bool INSIDE_POLYGON_8(double px, double py, const double* X, const double* Y, int32_t N, double xmin,
                      const int32_t* ends, int32_t npoly);
// INSIDE_POLYGON_8, and true also for a point on an edge.
bool inside_polygon_or_edge_8(double px, double py, const double* X, const double* Y, int32_t N, double xmin,
                              const int32_t* ends, int32_t npoly);
// Point inside or on the convex ring of vertices 1..n+1 (vertex n+1 repeats 1).
bool inside_convex_polygon_8(double px, double py, int32_t n, const double* X, const double* Y);

// Marks the grid points of the window (margins offJ, offI kept from the grid's
// ends) that lie inside the region: inside(j, i) = 1, count of them. With
// setValues, writes to ivalues (useInteger, value rounded half away from zero)
// or rvalues (useConstant: value; otherwise, for a triangle region (N = 5),
// the value interpolated from Z). accumulate adds instead of replacing.
// jMin, iMin, jMax, iMax receive the window; count is 0 when it is empty.
void grid_inside_polygon(uint8_t* inside, uint8_t* crossings, int32_t* ivalues, float* rvalues, int32_t dimJ,
                         int32_t dimI, float dx, float dy, int32_t offJ, int32_t offI, bool clearInside, bool setValues,
                         bool useInteger, bool useConstant, float value, bool accumulate, int32_t& jMin, int32_t& iMin,
                         int32_t& jMax, int32_t& iMax, int32_t& count, const float* X, const float* Y, const float* Z,
                         int32_t N, const int32_t* ends, int32_t npoly);
void grid_inside_polygon_8(uint8_t* inside, uint8_t* crossings, int32_t* ivalues, float* rvalues, int32_t dimJ,
                           int32_t dimI, double dx, double dy, int32_t offJ, int32_t offI, bool clearInside,
                           bool setValues, bool useInteger, bool useConstant, float value, bool accumulate,
                           int32_t& jMin, int32_t& iMin, int32_t& jMax, int32_t& iMax, int32_t& count, const double* X,
                           const double* Y, const float* Z, int32_t N, const int32_t* ends, int32_t npoly);

// flags[k] = 1 for each point k (1..npoints) inside the region, 0 otherwise;
// count receives the number of ones.
void grid_inside_polygon_points(int32_t* flags, const float* px, const float* py, int32_t npoints, int32_t& count,
                                const float* X, const float* Y, int32_t N, const int32_t* ends, int32_t npoly);
void grid_inside_polygon_points_8(int32_t* flags, const double* px, const double* py, int32_t npoints, int32_t& count,
                                  const double* X, const double* Y, int32_t N, const int32_t* ends, int32_t npoly);

// Writes the value of every point k with flags[k] = 1 into ivalues[k] or
// rvalues[k], as the grid fill does; a triangle value that cannot be formed
// leaves the point as it was.
void grid_set_inside_points(const int32_t* flags, const double* px, const double* py, int32_t* ivalues, float* rvalues,
                            int32_t npoints, bool useInteger, bool useConstant, float value, bool accumulate,
                            const double* X, const double* Y, const float* Z, int32_t N);
