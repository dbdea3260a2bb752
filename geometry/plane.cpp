#include "geometry/plane.hpp"

#include <cmath>
#include <numbers>

namespace {

// A difference of two 64-bit coordinates, rounded to single precision.
inline float d32(double a, double b) { return static_cast<float>(a - b); }

}  // namespace

float DISTANCE(float x1, float y1, float x2, float y2) {
    const float a = std::fabs(x2 - x1);
    const float b = std::fabs(y2 - y1);
    if (a < kGeoTolerance && b < kGeoTolerance) return 0.0f;
    return std::sqrt(a * a + b * b);
}

float DISTANCE_8(double x1, double y1, double x2, double y2) {
    const float a = std::fabs(d32(x2, x1));
    const float b = std::fabs(d32(y2, y1));
    if (a < kGeoTolerance && b < kGeoTolerance) return 0.0f;
    return std::sqrt(a * a + b * b);
}

bool SAME_POINT(float x1, float y1, float x2, float y2, float tol) {
    return std::fabs(x1 - x2) < tol && std::fabs(y1 - y2) < tol;
}

bool SAME_POINT_8(double x1, double y1, double x2, double y2, double tol) {
    return std::fabs(x1 - x2) < tol && std::fabs(y1 - y2) < tol;
}

float SAME_SIDE(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4) {
    const float dx = x2 - x1;
    const float dy = y2 - y1;
    return ((y3 - y1) * dx - (x3 - x1) * dy) * (dx * (y4 - y2) - dy * (x4 - x2));
}

float SAME_SIDE_8(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4) {
    const float dx = d32(x2, x1);
    const float dy = d32(y2, y1);
    return (d32(y3, y1) * dx - d32(x3, x1) * dy) * (dx * d32(y4, y2) - dy * d32(x4, x2));
}

bool INTERSECT_POINT(float x1, float y1, float x2, float y2, float x3, float y3) {
    return SAME_SIDE(x1, y1, x2, y2, x3, y3, x3, y3) == 0.0f;
}

bool INTERSECT_LINE(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4) {
    const float dx = x2 - x1;
    const float dy = y2 - y1;
    const float first = (dy * (x1 - x3) - dx * (y1 - y3)) * (dy * (x2 - x4) - dx * (y2 - y4));
    if (!(first <= 0.0f)) return false;
    const float ex = x4 - x3;
    const float ey = y4 - y3;
    const float second = ((y1 - y3) * ex - (x1 - x3) * ey) * (ex * (y2 - y4) - ey * (x2 - x4));
    return second <= 0.0f;
}

bool INTERSECT_LINE_8(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4) {
    const float dx = d32(x2, x1);
    const float dy = d32(y2, y1);
    const float x13 = d32(x1, x3), y13 = d32(y1, y3);
    const float x24 = d32(x2, x4), y24 = d32(y2, y4);
    const float first = (dy * x13 - dx * y13) * (dy * x24 - dx * y24);
    if (!(first <= 0.0f)) return false;
    const float ex = d32(x4, x3);
    const float ey = d32(y4, y3);
    const float second = (y13 * ex - x13 * ey) * (ex * y24 - ey * x24);
    return second <= 0.0f;
}

namespace {

template <class T>
int32_t classifyMeeting(T x1, T y1, T x2, T y2, T x3, T y3, T x4, T y4) {
    const T dx = x2 - x1, dy = y2 - y1;
    const T ex = x4 - x3, ey = y4 - y3;
    const T den = ey * dx - ex * dy;
    T ua = ex * (y1 - y3) - ey * (x1 - x3);
    T ub = dx * (y1 - y3) - (x1 - x3) * dy;
    if (den == T(0)) return (ua == T(0) && ub == T(0)) ? -1 : 0;
    ua = ua / den;
    ub = ub / den;
    const bool onA = ua > T(0) && ua <= T(1);
    const bool onB = ub > T(0) && ub <= T(1);
    if (onA && onB) return 3;
    if (onA) return 1;
    if (onB) return 2;
    return 4;
}

template <class T>
bool meetingPoint(T x1, T y1, T x2, T y2, T x3, T y3, T x4, T y4, T& xp, T& yp) {
    if (x1 == x2) {
        if (x3 == x4) return false;
        xp = x1;
        yp = y3 + ((y4 - y3) / (x4 - x3)) * (x1 - x3);
        return true;
    }
    if (x3 == x4) {
        xp = x3;
        yp = y1 + ((y2 - y1) / (x2 - x1)) * (x3 - x1);
        return true;
    }
    const T m1 = (y2 - y1) / (x2 - x1);
    const T m2 = (y4 - y3) / (x4 - x3);
    if (m1 == m2) return false;
    const T x = (y1 - y3 - x1 * m1 + m2 * x3) / (m2 - m1);
    xp = x;
    yp = y3 + m2 * (x - x3);
    return true;
}

}  // namespace

int32_t INTERSECT_LINE_V2(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4) {
    return classifyMeeting<float>(x1, y1, x2, y2, x3, y3, x4, y4);
}

int32_t INTERSECT_LINE_V2_8(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4) {
    return classifyMeeting<double>(x1, y1, x2, y2, x3, y3, x4, y4);
}

bool INTERSECTION_POINT(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4, float& xp,
                        float& yp) {
    return meetingPoint<float>(x1, y1, x2, y2, x3, y3, x4, y4, xp, yp);
}

bool INTERSECTION_POINT_8(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4,
                          double& xp, double& yp) {
    return meetingPoint<double>(x1, y1, x2, y2, x3, y3, x4, y4, xp, yp);
}

float ANGLE2D(double x1, double y1, double x2, double y2, double x3, double y3, double x4, double y4) {
    if (std::fabs(x2 - x1) < kGeoTolerance8 || std::fabs(x4 - x3) < kGeoTolerance8) return 0.0f;
    constexpr double kDegrees = 180.0 / std::numbers::pi;
    const float a1 = static_cast<float>(std::atan2(y2 - y1, x2 - x1) * kDegrees);
    const float a2 = static_cast<float>(std::atan2(y4 - y3, x4 - x3) * kDegrees);
    const float d = std::fabs(a2 - a1);
    return d > 180.0f ? 360.0f - d : d;
}

void GEO_SHIFT(const double* X, const double* Y, int32_t n, double ox, double oy, float angle, float* xout,
               float* yout) {
    if (n < 1) return;
    const double a = static_cast<double>(angle);
    const double s = std::sin(a);
    const double c = std::cos(a);
    for (int32_t k = 1; k <= n; ++k) {
        const double dxk = X[k] - ox;
        const double dyk = Y[k] - oy;
        xout[k] = static_cast<float>(c * dxk + s * dyk);
        yout[k] = static_cast<float>(c * dyk - s * dxk);
    }
}

float VECTOR_MAGNITUDE(float a, float b) {
    if (!(std::fabs(a) > kGeoTolerance) && !(std::fabs(b) > kGeoTolerance)) return 0.0f;
    return std::sqrt(a * a + b * b);
}

float POLYGON_AREA_8(const double* X, const double* Y, int32_t n) {
    if (n < 1) return 0.0f;
    double sum = 0.0;
    for (int32_t k = 1; k < n; ++k) sum += (X[k] + X[k + 1]) * (Y[k] - Y[k + 1]);
    sum += (X[n] + X[1]) * (Y[n] - Y[1]);
    return static_cast<float>(std::fabs(sum) * 0.5);
}

float SIGNED_AREA_8(double x0, double y0, double x1, double y1, double x2, double y2) {
    return static_cast<float>((x1 - x0) * (y2 - y0) - (x2 - x0) * (y1 - y0));
}
