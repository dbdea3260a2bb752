// Value interpolation in a triangle or a four-cornered element: the line from
// corner 3 through the point meets the line through corners 1 and 2; the value
// is interpolated along that edge, then along the line. Corners and their
// values are 1-based arrays (element 0 unused, see geometry/arrays.hpp).
// Values are 32-bit floats; a failed interpolation gives kInterpolationFailed.
#pragma once

#include <cstdint>

inline constexpr float kInterpolationFailed = -99999.0f;

// False (value kInterpolationFailed) when the line from corner 3 through the
// point is parallel to the line 1-2. No membership test: a point outside the
// triangle gets a value all the same.
bool INTERPOLATE_TRIANGLE(float x, float y, const float* X, const float* Y, const float* Z, float& value);
// 64-bit coordinates: slopes and the meeting point in 64 bits, lengths and
// the value in 32 bits.
bool INTERPOLATE_TRIANGLE_8(double x, double y, const double* X, const double* Y, const float* Z, float& value);
// No parallel test and no tolerance on the lengths' components: for triangles
// known to be sound. Always writes a value.
void INTERPOLATE_TRIANGLE_NO_CHECKS(float x, float y, const float* X, const float* Y, const float* Z, float& value);

// n = 3: the point must lie in the triangle (INSIDE_POLYGON_8 with `limit` as
// the ray's left bound, at or left of the least corner x), then the triangle
// value. n = 4: the mean of the values from the four triangles that leave out
// one corner each and hold the point. False when the point lies in none; the
// value is then kInterpolationFailed for n = 4 and left unchanged for n = 3.
// Other n: false, value unchanged.
bool INTERPOLATE_ELEMENT_8(double x, double y, const double* X, const double* Y, const float* Z, int32_t n,
                           double limit, float& value);
