// Triangle and element interpolation; section hydraulic parameters.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry/hydraulics.hpp"
#include "geometry/interpolate.hpp"

namespace {

TEST(InterpolateTriangle, CornersEdgesAndFailures) {
    const float X[] = {0, 0, 2, 0}, Y[] = {0, 0, 0, 2}, Z[] = {0, 0, 2, 2};
    const double Xd[] = {0, 0, 2, 0}, Yd[] = {0, 0, 0, 2};
    const struct {
        float x, y, want;
    } cases[] = {{0.5f, 0.5f, 1}, {0, 2, 2}, {1, 0, 1}, {0, 0, 0}, {0, 1, 1}};  // inside, corner 3, edge 1-2, ...
    for (const auto& c : cases) {
        float v = -1, v8 = -1, vn = -1;
        EXPECT_TRUE(INTERPOLATE_TRIANGLE(c.x, c.y, X, Y, Z, v));
        EXPECT_TRUE(INTERPOLATE_TRIANGLE_8(c.x, c.y, Xd, Yd, Z, v8));
        INTERPOLATE_TRIANGLE_NO_CHECKS(c.x, c.y, X, Y, Z, vn);
        EXPECT_TRUE(std::fabs(v - c.want) < 1e-6 && std::fabs(v8 - c.want) < 1e-6 && std::fabs(vn - c.want) < 1e-6)
            << c.x << "," << c.y << ": " << v << " " << v8 << " " << vn;
    }
    // Corners 1 and 2 share x and P stands straight above corner 3; then the
    // line from corner 3 through P parallel to edge 1-2.
    const float Xv[] = {0, 0, 0, 1}, Yv[] = {0, 0, 2, 1}, Xp[] = {0, 0, 2, 1}, Yp[] = {0, 0, 0, 1};
    float v = 5;
    EXPECT_FALSE(INTERPOLATE_TRIANGLE(1, 1.5f, Xv, Yv, Z, v));
    EXPECT_EQ(v, kInterpolationFailed);
    const double Xvd[] = {0, 0, 0, 1}, Yvd[] = {0, 0, 2, 1};
    EXPECT_FALSE(INTERPOLATE_TRIANGLE_8(1, 1.5, Xvd, Yvd, Z, v));
    v = 5;
    EXPECT_FALSE(INTERPOLATE_TRIANGLE(3, 1, Xp, Yp, Z, v));
    EXPECT_EQ(v, kInterpolationFailed);
    v = 5;
    INTERPOLATE_TRIANGLE_NO_CHECKS(3, 1, Xp, Yp, Z, v);  // writes whatever the arithmetic gives
    EXPECT_NE(v, 5.0f);
    // Within 1e-6 of corner 3 on both axes: with checks d(3, P) is 0 and the
    // value z3 exactly; without them the tiny length moves it.
    const float Zc[] = {0, 0, 0, 1000};
    ASSERT_TRUE(INTERPOLATE_TRIANGLE(5e-7f, 2.0f - 4.7e-7f, X, Y, Zc, v));
    EXPECT_EQ(v, 1000.0f);
    INTERPOLATE_TRIANGLE_NO_CHECKS(5e-7f, 2.0f - 4.7e-7f, X, Y, Zc, v);
    EXPECT_TRUE(v < 1000.0f && v > 999.99f) << v;
}

TEST(InterpolateElement, SquareAndTriangle) {
    const double X[] = {0, 0, 2, 2, 0}, Y[] = {0, 0, 0, 2, 2};
    const float Z[] = {0, 1, 5, 11, 7};  // z = 1 + 2x + 3y
    const struct {
        double x, y;
        int32_t n;
        bool ok;
        float want;
    } cases[] = {
        {1, 1, 4, true, 6},       // the centre lies on edges of all four triangles
        {0.5, 1.2, 4, true, 5.6f}, {1.7, 0.2, 4, true, 5},
        {2.5, 1, 4, false, kInterpolationFailed},
        {1.5, 0.5, 3, true, 5.5f}, {1, 1.5, 3, false, 3},  // outside the triangle: value kept
        {1, 1, 5, false, 3},                                // other corner counts: refused
    };
    for (const auto& c : cases) {
        float v = 3;
        EXPECT_EQ(INTERPOLATE_ELEMENT_8(c.x, c.y, X, Y, Z, c.n, -1, v), c.ok) << c.x << "," << c.y;
        EXPECT_NEAR(v, c.want, 1e-5) << c.x << "," << c.y;
    }
}

TEST(HydParam, StretchesAndHalves) {
    const float r2 = std::sqrt(2.0f);
    const struct {
        const char* what;
        float x1, z1, x2, z2, level, active, area, width, perimeter;
    } cases[] = {
        {"under water", 0, 1, 2, 1, 2, 1, 2, 2, 2},
        {"level at the bed", 0, 1, 2, 1, 1, 1, 0, 2, 2},
        {"wet at the z1 end", 0, 0, 2, 2, 1, 1, 0.5f, 1, r2},
        {"wet at the z2 end", 0, 2, 2, 0, 1, 1, 0.5f, 1, r2},
        {"level at z1, z2 below", 0, 2, 2, 0, 2, 1, 2, 2, 2 * r2},
        {"dry", 0, 2, 2, 3, 1, 1, 0, 0, 0},
        {"inactive", 0, 0, 2, 0, 5, 0, 0, 0, 0},
        {"right to left", 2, 0, 0, 2, 1, 1, -0.5f, -1, r2},
        {"two equal points", 3, 1, 3, 1, 2, 1, 0, 0, 0},
    };
    for (const auto& c : cases) {
        float a = 9, w = 9, p = 9;
        HYD_PARAM(c.x1, c.z1, c.x2, c.z2, c.level, c.active, a, w, p);
        EXPECT_TRUE(a == c.area && w == c.width && std::fabs(p - c.perimeter) < 1e-6) << c.what << ": " << a << " "
                                                                                        << w << " " << p;
    }
    float a1, a2, w1, w2, p1, p2;
    HYD_PARAM2(0, 0, 0, 4, 2, 1, 1, a1, a2, w1, w2, p1, p2);  // first half off
    EXPECT_TRUE(a1 == 0 && w1 == 0 && p1 == 0 && a2 == 0 && w2 == 0 && p2 == 0);
    HYD_PARAM2(0, 0, 1, 4, 2, 1, 1, a1, a2, w1, w2, p1, p2);  // lower half under water, upper half dry above its start
    EXPECT_TRUE(a1 == 1 && w1 == 2 && std::fabs(p1 - std::sqrt(5.0f)) < 1e-6 && a2 == 0 && w2 == 0 && p2 == 0);
    HYD_PARAM2(0, 0, 0, 4, 0, 1, 1, a1, a2, w1, w2, p1, p2);
    EXPECT_TRUE(a1 == 0 && a2 == 2 && w2 == 2 && p2 == 2);
}

TEST(CircleWidth, EmptyToFull) {
    EXPECT_FLOAT_EQ(CIRCLE_WIDTH(1, 1), 2.0f);
    EXPECT_FLOAT_EQ(CIRCLE_WIDTH(2, 1), 2.0f * std::sqrt(3.0f));
    for (float depth : {0.0f, 0.000005f, 1.999995f, 2.0f}) EXPECT_EQ(CIRCLE_WIDTH(1, depth), 0.0f) << depth;
    EXPECT_GT(CIRCLE_WIDTH(1, 1.9999f), 0.0f);
}

}  // namespace
