#include "geometry/interpolate.hpp"

#include <cmath>

#include "geometry/plane.hpp"
#include "geometry/polygon.hpp"

namespace {

// Meeting point I of the line from corner 3 through P with the line through
// corners 1 and 2. With `checked`, false for the parallel cases; without it
// the arithmetic runs on and may give an infinite or undefined point.
template <class T>
bool meetingPoint(T x, T y, const T* X, const T* Y, bool checked, T& ix, T& iy) {
    const T x1 = X[1], y1 = Y[1], x2 = X[2], y2 = Y[2], x3 = X[3], y3 = Y[3];
    if (x1 != x2) {
        if (x3 == x) {
            ix = x3;
            iy = y1 + (y2 - y1) / (x2 - x1) * (x3 - x1);
            return true;
        }
        const T m1 = (y2 - y1) / (x2 - x1);
        const T m2 = (y - y3) / (x - x3);
        if (checked && m1 == m2) return false;
        ix = (y1 - y3 - m1 * x1 + m2 * x3) / (m2 - m1);
        iy = y3 + m2 * (ix - x3);
        return true;
    }
    if (checked && x3 == x) return false;
    ix = x1;
    iy = y3 + (y - y3) / (x - x3) * (x1 - x3);
    return true;
}

// The two interpolation steps from the four lengths.
float alongLines(const float* Z, float d1I, float d12, float d3P, float d3I) {
    const float r1 = d12 < kGeoTolerance ? 0.5f : d1I / d12;
    const float zI = Z[1] + (Z[2] - Z[1]) * r1;
    const float r2 = d3I < kGeoTolerance ? 0.5f : d3P / d3I;
    return Z[3] + (zI - Z[3]) * r2;
}

float plainLength(float x1, float y1, float x2, float y2) {
    const float a = x2 - x1, b = y2 - y1;
    return std::sqrt(a * a + b * b);
}

}  // namespace

bool INTERPOLATE_TRIANGLE(float x, float y, const float* X, const float* Y, const float* Z, float& value) {
    float ix = 0.0f, iy = 0.0f;
    if (!meetingPoint<float>(x, y, X, Y, true, ix, iy)) {
        value = kInterpolationFailed;
        return false;
    }
    value = alongLines(Z, DISTANCE(X[1], Y[1], ix, iy), DISTANCE(X[1], Y[1], X[2], Y[2]), DISTANCE(X[3], Y[3], x, y),
                       DISTANCE(X[3], Y[3], ix, iy));
    return true;
}

bool INTERPOLATE_TRIANGLE_8(double x, double y, const double* X, const double* Y, const float* Z, float& value) {
    double ix = 0.0, iy = 0.0;
    if (!meetingPoint<double>(x, y, X, Y, true, ix, iy)) {
        value = kInterpolationFailed;
        return false;
    }
    value = alongLines(Z, DISTANCE_8(X[1], Y[1], ix, iy), DISTANCE_8(X[1], Y[1], X[2], Y[2]),
                       DISTANCE_8(X[3], Y[3], x, y), DISTANCE_8(X[3], Y[3], ix, iy));
    return true;
}

void INTERPOLATE_TRIANGLE_NO_CHECKS(float x, float y, const float* X, const float* Y, const float* Z, float& value) {
    float ix = 0.0f, iy = 0.0f;
    meetingPoint<float>(x, y, X, Y, false, ix, iy);
    value = alongLines(Z, plainLength(X[1], Y[1], ix, iy), plainLength(X[1], Y[1], X[2], Y[2]),
                       plainLength(X[3], Y[3], x, y), plainLength(X[3], Y[3], ix, iy));
}

// The ring and corner copies are local here (the routine stays re-entrant);
// the membership test is INSIDE_POLYGON_8 itself.
bool INTERPOLATE_ELEMENT_8(double x, double y, const double* X, const double* Y, const float* Z, int32_t n,
                           double limit, float& value) {
    double rx[6], ry[6];
    float rz[4];
    const int32_t ends[2] = {0, 4};
    // Triangle of corners a, b, c as a closed ring in the region slot layout.
    auto ring = [&](int32_t a, int32_t b, int32_t c) {
        const int32_t corner[6] = {0, a, b, c, a, b};
        for (int32_t s = 1; s <= 5; ++s) {
            rx[s] = X[corner[s]];
            ry[s] = Y[corner[s]];
        }
        rz[1] = Z[a];
        rz[2] = Z[b];
        rz[3] = Z[c];
    };
    if (n == 3) {
        ring(1, 2, 3);
        if (!INSIDE_POLYGON_8(x, y, rx, ry, 5, limit, ends, 1)) return false;
        return INTERPOLATE_TRIANGLE_8(x, y, rx, ry, rz, value);
    }
    if (n != 4) return false;
    static constexpr int32_t kTriangles[5][3] = {{0, 0, 0}, {2, 3, 4}, {1, 3, 4}, {1, 2, 4}, {1, 2, 3}};
    float sum = 0.0f;
    int32_t count = 0;
    for (int32_t k = 1; k <= 4; ++k) {
        ring(kTriangles[k][0], kTriangles[k][1], kTriangles[k][2]);
        if (!INSIDE_POLYGON_8(x, y, rx, ry, 5, limit, ends, 1)) continue;
        float v = 0.0f;
        if (INTERPOLATE_TRIANGLE_8(x, y, rx, ry, rz, v)) {
            sum += v;
            ++count;
        }
    }
    if (count > 0) {
        value = sum / static_cast<float>(count);
        return true;
    }
    value = kInterpolationFailed;
    return false;
}
