// Plane primitives, triangle and element interpolation, section hydraulics.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry/hydraulics.hpp"
#include "geometry/interpolate.hpp"
#include "geometry/plane.hpp"

namespace {

TEST(Plane, EdgeRules) {
    EXPECT_EQ(DISTANCE(0, 0, 0.0000005f, 0.0000005f), 0.0f);
    EXPECT_EQ(DISTANCE(0, 0, 0.000001f, 0), 0.000001f);
    EXPECT_EQ(DISTANCE_8(0.0, 6000000.0, 0.0, 6000000.3), 0.3f);  // float coordinates would lose it
    EXPECT_EQ(VECTOR_MAGNITUDE(0.000001f, -0.000001f), 0.0f);     // neither strictly exceeds
    EXPECT_FALSE(SAME_POINT(0, 0, 0.5f, 0, 0.5f));                // a difference equal to tol
    EXPECT_TRUE(SAME_POINT(0, 0, 0.25f, -0.25f, 0.5f));
    EXPECT_LT(SAME_SIDE_8(0, 1e7, 1, 1e7, 0, 1e7 + 0.25, 3, 1e7 - 0.25), 0.0f);  // lost in float differences

    // Segment meetings: inclusive, and classified (each start excluded, each end included).
    struct C {
        const char* what;
        float x1, y1, x2, y2, x3, y3, x4, y4;
        bool meet;
        int code;
    } cases[] = {{"proper crossing", 0, 0, 2, 2, 0, 2, 2, 0, true, 3},
                 {"at the first's end", 0, 0, 1, 1, 0, 2, 2, 0, true, 3},
                 {"at the first's start", 1, 1, 2, 2, 0, 2, 2, 0, true, 2},
                 {"at the second's start", 0, 0, 2, 2, 1, 1, 2, 0, true, 1},
                 {"at the second's end", 0, 0, 2, 2, 2, 0, 1, 1, true, 3},
                 {"on the first only", 0, 0, 2, 2, 0, 2, 0.5f, 1.5f, false, 1},
                 {"on the second only", 0, 2, 0.5f, 1.5f, 0, 0, 2, 2, false, 2},
                 {"on neither", 0, 0, 0.5f, 0.5f, 0, 2, 0.5f, 1.5f, false, 4},
                 {"collinear, disjoint", 0, 0, 1, 1, 2, 2, 3, 3, true, -1},
                 {"parallel", 0, 0, 1, 1, 0, 1, 1, 2, false, 0},
                 {"end to start", 0, 0, 1, 0, 1, 0, 2, 1, true, 1}};
    for (const auto& c : cases) {
        EXPECT_EQ(INTERSECT_LINE(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.meet) << c.what;
        EXPECT_EQ(INTERSECT_LINE_8(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.meet) << c.what;
        EXPECT_EQ(INTERSECT_LINE_V2(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.code) << c.what;
        EXPECT_EQ(INTERSECT_LINE_V2_8(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.code) << c.what;
    }
    // Two unit diagonals at 1e8 cross for the 64-bit form and collapse in float.
    EXPECT_EQ(INTERSECT_LINE_V2_8(1e8, 0, 1e8 + 2, 2, 1e8, 2, 1e8 + 2, 0), 3);
    EXPECT_EQ(INTERSECT_LINE_V2(1e8f, 0, 1e8f + 2, 2, 1e8f, 2, 1e8f + 2, 0), -1);
    // Meeting points of infinite lines, and angles between lines.
    float xp = 7, yp = 8;
    EXPECT_FALSE(INTERSECTION_POINT(1, 0, 1, 5, 3, 0, 3, 1, xp, yp));  // two verticals
    EXPECT_FALSE(INTERSECTION_POINT(0, 0, 1, 2, 5, 0, 6, 2, xp, yp));  // equal slopes
    EXPECT_TRUE(xp == 7 && yp == 8);
    ASSERT_TRUE(INTERSECTION_POINT(2, 0, 2, 1, 0, 0, 1, 3, xp, yp));  // outside both segments
    EXPECT_TRUE(xp == 2 && yp == 6);
    ASSERT_TRUE(INTERSECTION_POINT(0, 1, 4, 3, -1, 7, -1, 9, xp, yp));
    EXPECT_TRUE(xp == -1 && yp == 0.5f);

    EXPECT_NEAR(ANGLE2D(0, 0, 10, -1, 0, 0, 10, 1), 11.4212f, 1e-4);    // across 0 degrees
    EXPECT_NEAR(ANGLE2D(0, 0, -10, 1, 0, 0, -10, -1), 11.4212f, 1e-4);  // 348.58 folds to 11.42
    EXPECT_EQ(ANGLE2D(0, 0, 1, 1, 3, 0, 3 + 5e-7, 1), 0.0f);            // vertical by the tolerance
}

TEST(Interpolate, TrianglesAndElements) {
    const float X[] = {0, 0, 2, 0}, Y[] = {0, 0, 0, 2}, Z[] = {0, 0, 2, 2};  // z = x + y
    const double Xd[] = {0, 0, 2, 0}, Yd[] = {0, 0, 0, 2};
    for (const auto& [x, y, want] : {std::tuple{0.5f, 0.5f, 1.0f}, {0.0f, 2.0f, 2.0f}, {1.0f, 0.0f, 1.0f}}) {
        float v = -1, v8 = -1, vn = -1;  // inside, corner 3, edge 1-2
        EXPECT_TRUE(INTERPOLATE_TRIANGLE(x, y, X, Y, Z, v) && INTERPOLATE_TRIANGLE_8(x, y, Xd, Yd, Z, v8));
        INTERPOLATE_TRIANGLE_NO_CHECKS(x, y, X, Y, Z, vn);
        EXPECT_TRUE(std::fabs(v - want) < 1e-6 && std::fabs(v8 - want) < 1e-6 && std::fabs(vn - want) < 1e-6)
            << x << "," << y << ": " << v << " " << v8 << " " << vn;
    }
    // Corners 1 and 2 share x and P stands straight above corner 3; then the
    // line from corner 3 through P parallel to edge 1-2.
    const float Xv[] = {0, 0, 0, 1}, Yv[] = {0, 0, 2, 1}, Xp[] = {0, 0, 2, 1}, Yp[] = {0, 0, 0, 1};
    const double Xvd[] = {0, 0, 0, 1}, Yvd[] = {0, 0, 2, 1};
    float v = 5, v8 = 5, vp = 5;
    EXPECT_FALSE(INTERPOLATE_TRIANGLE(1, 1.5f, Xv, Yv, Z, v) || INTERPOLATE_TRIANGLE_8(1, 1.5, Xvd, Yvd, Z, v8) ||
                 INTERPOLATE_TRIANGLE(3, 1, Xp, Yp, Z, vp));
    EXPECT_TRUE(v == kInterpolationFailed && v8 == kInterpolationFailed && vp == kInterpolationFailed);
    const float Zc[] = {0, 0, 0, 1000};  // within 1e-6 of corner 3 on both axes, d(3, P) counts as 0: z3 exactly
    EXPECT_TRUE(INTERPOLATE_TRIANGLE(5e-7f, 2.0f - 4.7e-7f, X, Y, Zc, v) && v == 1000.0f) << v;

    // An element's value: the centre lies on edges of all four triangles; a
    // point outside a triangle keeps the value; other corner counts are refused.
    const double Xe[] = {0, 0, 2, 2, 0}, Ye[] = {0, 0, 0, 2, 2};
    const float Ze[] = {0, 1, 5, 11, 7};  // z = 1 + 2x + 3y
    for (const auto& [x, y, n, ok, want] : {std::tuple{1.0, 1.0, 4, true, 6.0f},
                                            {0.5, 1.2, 4, true, 5.6f},
                                            {2.5, 1.0, 4, false, kInterpolationFailed},
                                            {1.5, 0.5, 3, true, 5.5f},
                                            {1.0, 1.5, 3, false, 3.0f},
                                            {1.0, 1.0, 5, false, 3.0f}}) {
        v = 3;
        EXPECT_EQ(INTERPOLATE_ELEMENT_8(x, y, Xe, Ye, Ze, n, -1, v), ok) << x << "," << y;
        EXPECT_NEAR(v, want, 1e-5) << x << "," << y;
    }
}

TEST(Hydraulics, StretchesHalvesAndPipes) {
    const float r2 = std::sqrt(2.0f);
    const struct {
        const char* what;
        float x1, z1, x2, z2, level, active, area, width, perimeter;
    } cases[] = {{"under water", 0, 1, 2, 1, 2, 1, 2, 2, 2},
                 {"level at the bed", 0, 1, 2, 1, 1, 1, 0, 2, 2},
                 {"wet at the z1 end", 0, 0, 2, 2, 1, 1, 0.5f, 1, r2},
                 {"wet at the z2 end", 0, 2, 2, 0, 1, 1, 0.5f, 1, r2},
                 {"level at z1, z2 below", 0, 2, 2, 0, 2, 1, 2, 2, 2 * r2},
                 {"dry", 0, 2, 2, 3, 1, 1, 0, 0, 0},
                 {"inactive", 0, 0, 2, 0, 5, 0, 0, 0, 0},
                 {"right to left", 2, 0, 0, 2, 1, 1, -0.5f, -1, r2}};
    for (const auto& c : cases) {
        float a = 9, w = 9, p = 9;
        HYD_PARAM(c.x1, c.z1, c.x2, c.z2, c.level, c.active, a, w, p);
        EXPECT_TRUE(a == c.area && w == c.width && std::fabs(p - c.perimeter) < 1e-6)
            << c.what << ": " << a << " " << w << " " << p;
    }
    float a1, a2, w1, w2, p1, p2;
    HYD_PARAM2(0, 0, 1, 4, 2, 1, 1, a1, a2, w1, w2, p1, p2);  // lower half under water, upper half dry above its start
    EXPECT_TRUE(a1 == 1 && w1 == 2 && std::fabs(p1 - std::sqrt(5.0f)) < 1e-6 && a2 == 0 && w2 == 0 && p2 == 0);
    HYD_PARAM2(0, 0, 0, 4, 0, 1, 1, a1, a2, w1, w2, p1, p2);  // first half off
    EXPECT_TRUE(a1 == 0 && w1 == 0 && p1 == 0 && a2 == 2 && w2 == 2 && p2 == 2);

    EXPECT_FLOAT_EQ(CIRCLE_WIDTH(2, 1), 2.0f * std::sqrt(3.0f));
    EXPECT_TRUE(CIRCLE_WIDTH(1, 0.000005f) == 0 && CIRCLE_WIDTH(1, 1.999995f) == 0 && CIRCLE_WIDTH(1, 1.9999f) > 0);
}

}  // namespace
