// Plane primitives: lengths, coincidence, sides, segment meetings, line
// meetings, angles and areas, in single precision and, with the suffix _8,
// on 64-bit coordinates.
//
// A plain _8 routine forms coordinate differences in 64 bits, rounds them to
// float and does the rest in single precision; the routines marked "double
// throughout" stay in 64 bits. Array conventions: geometry/arrays.hpp.
#pragma once

#include <cstdint>

// Length, coordinate or component below which a quantity counts as zero.
inline constexpr float kGeoTolerance = 0.000001f;
// The same 32-bit constant widened, for tests on 64-bit values
// (9.999999974752427e-07).
inline constexpr double kGeoTolerance8 = static_cast<double>(kGeoTolerance);

// Length between two points; 0.0 when both |dx| and |dy| are below the
// tolerance.
float DISTANCE(float x1, float y1, float x2, float y2);
float DISTANCE_8(double x1, double y1, double x2, double y2);

// Both |x1 - x2| and |y1 - y2| strictly below tol.
bool SAME_POINT(float x1, float y1, float x2, float y2, float tol);
bool SAME_POINT_8(double x1, double y1, double x2, double y2, double tol);  // double throughout

// Product of the side values of P3 and P4 against the line P1-P2: positive
// same side, negative opposite sides, 0 when one of them lies on the line.
float SAME_SIDE(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4);
float SAME_SIDE_8(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4);

// P3 lies on the line through P1 and P2 (exact test).
bool INTERSECT_POINT(float x1, float y1, float x2, float y2, float x3, float y3);

// Segments P1-P2 and P3-P4 meet or touch (inclusive; collinear segments
// always pass).
bool INTERSECT_LINE(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4);
bool INTERSECT_LINE_8(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4);

// Classification of the meeting of segments P1-P2 and P3-P4; each segment
// excludes its start and includes its end:
//   3 crossing on both, 1 on the first only, 2 on the second only, 4 neither,
//   0 parallel, -1 collinear.
int32_t INTERSECT_LINE_V2(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4);
int32_t INTERSECT_LINE_V2_8(double x1, double y1, double x2, double y2, double x3, double y3, double x4,
                            double y4);  // double throughout

// Meeting point of the infinite lines through P1, P2 and P3, P4. False for
// two vertical lines or equal slopes; xp, yp are then left unchanged.
bool INTERSECTION_POINT(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4, float& xp,
                        float& yp);
bool INTERSECTION_POINT_8(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4,
                          double& xp, double& yp);  // double throughout

// Angle in degrees, 0 to 180, between the lines P1-P2 and P3-P4; 0.0 when
// either line is vertical by the tolerance. Computed in double (a float
// argument widens exactly), result single.
float ANGLE2D(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4);

// Moves points 1..n of X, Y into the frame with origin (ox, oy) whose x axis
// runs along `angle` (radians); results rounded to float into xout, yout.
void GEO_SHIFT(const double* X, const double* Y, int32_t n, double ox, double oy, float angle, float* xout,
               float* yout);

// sqrt(a * a + b * b); 0.0 when neither |a| nor |b| exceeds the tolerance.
float VECTOR_MAGNITUDE(float a, float b);

// Area of the ring of points 1..n (closed implicitly), 64-bit sum.
float POLYGON_AREA_8(const double* X, const double* Y, int32_t n);

// Twice the signed area of the triangle P0, P1, P2.
float SIGNED_AREA_8(double x0, double y0, double x1, double y1, double x2, double y2);
