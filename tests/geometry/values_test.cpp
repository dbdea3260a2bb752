// Triangle and element interpolation; section hydraulic parameters.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "geometry/hydraulics.hpp"
#include "geometry/interpolate.hpp"

namespace {

TEST(InterpolateTriangle, DocumentedCases) {
    const float X[] = {0, 0, 2, 0};
    const float Y[] = {0, 0, 0, 2};
    const float Z[] = {0, 0, 2, 2};
    const double Xd[] = {0, 0, 2, 0};
    const double Yd[] = {0, 0, 0, 2};
    struct C {
        const char* what;
        float x, y, want;
    } cases[] = {
        {"inside", 0.5f, 0.5f, 1.0f},
        {"at corner 3", 0.0f, 2.0f, 2.0f},
        {"on edge 1-2", 1.0f, 0.0f, 1.0f},
        {"at corner 1", 0.0f, 0.0f, 0.0f},
        {"straight below corner 3", 0.0f, 1.0f, 1.0f},
    };
    for (const auto& c : cases) {
        float v = -1.0f;
        EXPECT_TRUE(INTERPOLATE_TRIANGLE(c.x, c.y, X, Y, Z, v)) << c.what;
        EXPECT_NEAR(v, c.want, 1e-6) << c.what;
        v = -1.0f;
        EXPECT_TRUE(INTERPOLATE_TRIANGLE_8(c.x, c.y, Xd, Yd, Z, v)) << c.what;
        EXPECT_NEAR(v, c.want, 1e-6) << c.what;
        v = -1.0f;
        INTERPOLATE_TRIANGLE_NO_CHECKS(c.x, c.y, X, Y, Z, v);
        EXPECT_NEAR(v, c.want, 1e-6) << c.what;
    }
}

TEST(InterpolateTriangle, ParallelLinesFail) {
    // Corners 1 and 2 share x, and P lies straight above corner 3.
    const float X[] = {0, 0, 0, 1};
    const float Y[] = {0, 0, 2, 1};
    const float Z[] = {0, 1, 2, 3};
    float v = 5.0f;
    EXPECT_FALSE(INTERPOLATE_TRIANGLE(1.0f, 1.5f, X, Y, Z, v));
    EXPECT_EQ(v, kInterpolationFailed);
    const double Xd[] = {0, 0, 0, 1};
    const double Yd[] = {0, 0, 2, 1};
    v = 5.0f;
    EXPECT_FALSE(INTERPOLATE_TRIANGLE_8(1.0, 1.5, Xd, Yd, Z, v));
    EXPECT_EQ(v, kInterpolationFailed);
    // Equal slopes: the line from corner 3 through P runs parallel to 1-2.
    const float X2[] = {0, 0, 2, 1};
    const float Y2[] = {0, 0, 0, 1};
    v = 5.0f;
    EXPECT_FALSE(INTERPOLATE_TRIANGLE(3.0f, 1.0f, X2, Y2, Z, v));
    EXPECT_EQ(v, kInterpolationFailed);
    // Without checks a value is written all the same.
    v = 5.0f;
    INTERPOLATE_TRIANGLE_NO_CHECKS(3.0f, 1.0f, X2, Y2, Z, v);
    EXPECT_NE(v, 5.0f);
}

TEST(InterpolateTriangle, LengthToleranceOnlyWithChecks) {
    // P within 1e-6 of corner 3 on both axes: with checks d(3, P) is 0 and the
    // value is z3 exactly; without them the tiny length moves it.
    const float X[] = {0, 0, 2, 0};
    const float Y[] = {0, 0, 0, 2};
    const float Z[] = {0, 0, 0, 1000};
    const float px = 5e-7f, py = 2.0f - 4.7e-7f;
    float v = 0;
    ASSERT_TRUE(INTERPOLATE_TRIANGLE(px, py, X, Y, Z, v));
    EXPECT_EQ(v, 1000.0f);
    INTERPOLATE_TRIANGLE_NO_CHECKS(px, py, X, Y, Z, v);
    EXPECT_LT(v, 1000.0f);
    EXPECT_GT(v, 999.99f);
}

TEST(InterpolateTriangle, AgreesWithThePlaneThroughTheCorners) {
    std::mt19937 rng(4711u);
    std::uniform_real_distribution<double> u(-50, 50), w(0.02, 1);
    int tested = 0;
    for (int t = 0; t < 2000; ++t) {
        const double Xd[] = {0, u(rng), u(rng), u(rng)};
        const double Yd[] = {0, u(rng), u(rng), u(rng)};
        const double area = (Xd[2] - Xd[1]) * (Yd[3] - Yd[1]) - (Xd[3] - Xd[1]) * (Yd[2] - Yd[1]);
        if (std::fabs(area) < 100) continue;  // keep to well-shaped triangles
        const double a = u(rng), b = u(rng) / 10, c = u(rng) / 10;
        auto plane = [&](double x, double y) { return a + b * x + c * y; };
        const float Z[] = {0, static_cast<float>(plane(Xd[1], Yd[1])), static_cast<float>(plane(Xd[2], Yd[2])),
                           static_cast<float>(plane(Xd[3], Yd[3]))};
        // A point inside by barycentric weights.
        const double w1 = w(rng), w2 = w(rng), w3 = w(rng), s = w1 + w2 + w3;
        const double x = (w1 * Xd[1] + w2 * Xd[2] + w3 * Xd[3]) / s;
        const double y = (w1 * Yd[1] + w2 * Yd[2] + w3 * Yd[3]) / s;
        const double tol = 2e-4 * (1 + std::max({std::fabs(Z[1]), std::fabs(Z[2]), std::fabs(Z[3])}));
        float v = 0;
        ASSERT_TRUE(INTERPOLATE_TRIANGLE_8(x, y, Xd, Yd, Z, v));
        EXPECT_NEAR(v, plane(x, y), tol);
        const float Xf[] = {0, static_cast<float>(Xd[1]), static_cast<float>(Xd[2]), static_cast<float>(Xd[3])};
        const float Yf[] = {0, static_cast<float>(Yd[1]), static_cast<float>(Yd[2]), static_cast<float>(Yd[3])};
        ASSERT_TRUE(INTERPOLATE_TRIANGLE(static_cast<float>(x), static_cast<float>(y), Xf, Yf, Z, v));
        EXPECT_NEAR(v, plane(x, y), tol);
        ++tested;
    }
    EXPECT_GT(tested, 500);
}

TEST(InterpolateElement, TrianglesAndSquares) {
    // z = 1 + 2x + 3y on a square 0..2.
    const double X[] = {0, 0, 2, 2, 0};
    const double Y[] = {0, 0, 0, 2, 2};
    const float Z[] = {0, 1, 5, 11, 7};
    float v = 0;
    ASSERT_TRUE(INTERPOLATE_ELEMENT_8(1, 1, X, Y, Z, 4, -1, v));
    EXPECT_NEAR(v, 6.0f, 1e-5);
    ASSERT_TRUE(INTERPOLATE_ELEMENT_8(0.5, 1.2, X, Y, Z, 4, -1, v));
    EXPECT_NEAR(v, 1 + 1 + 3.6f, 1e-5);
    ASSERT_TRUE(INTERPOLATE_ELEMENT_8(1.7, 0.2, X, Y, Z, 4, -1, v));
    EXPECT_NEAR(v, 1 + 3.4f + 0.6f, 1e-5);
    v = 3.0f;
    EXPECT_FALSE(INTERPOLATE_ELEMENT_8(2.5, 1, X, Y, Z, 4, -1, v));
    EXPECT_EQ(v, kInterpolationFailed);

    // Three corners: outside leaves the value alone, inside interpolates.
    v = 3.0f;
    EXPECT_FALSE(INTERPOLATE_ELEMENT_8(1, 1.5, X, Y, Z, 3, -1, v));
    EXPECT_EQ(v, 3.0f);
    ASSERT_TRUE(INTERPOLATE_ELEMENT_8(1.5, 0.5, X, Y, Z, 3, -1, v));
    EXPECT_NEAR(v, 1 + 3 + 1.5f, 1e-5);
    // Other corner counts are refused without a value.
    v = 3.0f;
    EXPECT_FALSE(INTERPOLATE_ELEMENT_8(1, 1, X, Y, Z, 5, -1, v));
    EXPECT_EQ(v, 3.0f);
}

// ---------------------------------------------------------------------------

struct Hyd {
    const char* what;
    float x1, z1, x2, z2, level, active;
    float area, width, perimeter;
};

TEST(HydParam, StretchUnderALevel) {
    const float r2 = std::sqrt(2.0f);
    const Hyd cases[] = {
        {"under water", 0, 1, 2, 1, 2, 1, 2, 2, 2},
        {"level at the bed", 0, 1, 2, 1, 1, 1, 0, 2, 2},
        {"wet at the z1 end", 0, 0, 2, 2, 1, 1, 0.5f, 1, r2},
        {"wet at the z2 end", 0, 2, 2, 0, 1, 1, 0.5f, 1, r2},
        {"dry", 0, 2, 2, 3, 1, 1, 0, 0, 0},
        {"inactive", 0, 0, 2, 0, 5, 0, 0, 0, 0},
        {"negative active", 0, 0, 2, 0, 5, -1, 0, 0, 0},
        {"written right to left", 2, 1, 0, 1, 2, 1, -2, -2, 2},
        {"right to left, wet at z1", 2, 0, 0, 2, 1, 1, -0.5f, -1, r2},
        {"two equal points", 3, 1, 3, 1, 2, 1, 0, 0, 0},
        {"level at z1, z2 below", 0, 2, 2, 0, 2, 1, 2, 2, 2 * r2},
    };
    for (const auto& c : cases) {
        float a = 9, w = 9, p = 9;
        HYD_PARAM(c.x1, c.z1, c.x2, c.z2, c.level, c.active, a, w, p);
        EXPECT_FLOAT_EQ(a, c.area) << c.what;
        EXPECT_FLOAT_EQ(w, c.width) << c.what;
        EXPECT_FLOAT_EQ(p, c.perimeter) << c.what;
    }
}

TEST(HydParam2, HalvesWorkedSeparately) {
    float a1 = 9, a2 = 9, w1 = 9, w2 = 9, p1 = 9, p2 = 9;
    HYD_PARAM2(0, 0, 0, 4, 0, 1, 1, a1, a2, w1, w2, p1, p2);
    EXPECT_EQ(a1, 0.0f);
    EXPECT_EQ(w1, 0.0f);
    EXPECT_EQ(p1, 0.0f);
    EXPECT_EQ(a2, 2.0f);
    EXPECT_EQ(w2, 2.0f);
    EXPECT_EQ(p2, 2.0f);
    // A sloping stretch: the lower half lies under water, the upper half's
    // water edge is at its start.
    HYD_PARAM2(0, 0, 1, 4, 2, 1, 1, a1, a2, w1, w2, p1, p2);
    EXPECT_EQ(a1, 1.0f);
    EXPECT_EQ(w1, 2.0f);
    EXPECT_FLOAT_EQ(p1, std::sqrt(5.0f));
    EXPECT_EQ(a2, 0.0f);
    EXPECT_EQ(w2, 0.0f);
    EXPECT_EQ(p2, 0.0f);
}

TEST(CircleWidth, EmptyToFull) {
    EXPECT_FLOAT_EQ(CIRCLE_WIDTH(1, 1), 2.0f);
    EXPECT_EQ(CIRCLE_WIDTH(1, 2), 0.0f);
    EXPECT_EQ(CIRCLE_WIDTH(1, 0), 0.0f);
    EXPECT_EQ(CIRCLE_WIDTH(1, 0.000005f), 0.0f);
    EXPECT_EQ(CIRCLE_WIDTH(1, 1.999995f), 0.0f);
    EXPECT_FLOAT_EQ(CIRCLE_WIDTH(2, 1), 2.0f * std::sqrt(3.0f));
    EXPECT_GT(CIRCLE_WIDTH(1, 1.9999f), 0.0f);
}

}  // namespace
