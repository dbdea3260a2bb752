#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "geometry/plane.hpp"

namespace {

TEST(PlaneTolerance, WidenedConstant) { EXPECT_EQ(kGeoTolerance8, 9.999999974752427e-07); }

TEST(Distance, ToleranceAndPrecision) {
    EXPECT_EQ(DISTANCE(0.0f, 0.0f, 0.0000005f, 0.0000005f), 0.0f);
    EXPECT_EQ(DISTANCE(0.0f, 0.0f, 0.000001f, 0.0f), 0.000001f);  // not below the tolerance
    EXPECT_EQ(DISTANCE(1.0f, 2.0f, 4.0f, 6.0f), 5.0f);
    EXPECT_EQ(DISTANCE(4.0f, 6.0f, 1.0f, 2.0f), 5.0f);
    EXPECT_EQ(DISTANCE_8(0.0, 0.0, 0.0000005, -0.0000005), 0.0f);
    // Differences are formed in 64 bits: 0.3 apart at 6e6 survives, where a
    // float coordinate (spacing 0.5 there) would not.
    EXPECT_EQ(DISTANCE_8(0.0, 6000000.0, 0.0, 6000000.3), 0.3f);
    EXPECT_EQ(DISTANCE_8(500000.0, 6000000.0, 500003.0, 6000004.0), 5.0f);
}

TEST(SamePoint, StrictComparison) {
    EXPECT_FALSE(SAME_POINT(0.0f, 0.0f, 0.5f, 0.0f, 0.5f));  // difference equal to tol
    EXPECT_FALSE(SAME_POINT(0.0f, 0.0f, 0.0f, -0.5f, 0.5f));
    EXPECT_TRUE(SAME_POINT(0.0f, 0.0f, 0.25f, -0.25f, 0.5f));
    EXPECT_FALSE(SAME_POINT_8(0.0, 0.0, 0.5, 0.0, 0.5));
    EXPECT_TRUE(SAME_POINT_8(0.0, 0.0, 1e-9, 0.0, 2e-9));  // double throughout
    EXPECT_FALSE(SAME_POINT_8(1e8, 0.0, 1e8 + 1.0, 0.0, 0.5));
}

TEST(SameSide, SignOfTheProduct) {
    // P1-P2 is the x axis from (0,0) to (1,0).
    EXPECT_EQ(SAME_SIDE(0, 0, 1, 0, 0, 1, 5, 2), 2.0f);   // both above: 1 * 2
    EXPECT_LT(SAME_SIDE(0, 0, 1, 0, 0, 1, 5, -2), 0.0f);  // opposite sides
    EXPECT_EQ(SAME_SIDE(0, 0, 1, 0, 7, 0, 5, -2), 0.0f);  // P3 on the line
    EXPECT_EQ(SAME_SIDE_8(0, 0, 1, 0, 0, 1, 5, 2), 2.0f);
    // A quarter unit either side of a line at y = 1e7: the 64-bit differences
    // keep the sides apart; single-precision coordinates cannot.
    EXPECT_LT(SAME_SIDE_8(0.0, 1e7, 1.0, 1e7, 0.0, 1e7 + 0.25, 3.0, 1e7 - 0.25), 0.0f);
    EXPECT_GT(SAME_SIDE_8(0.0, 1e7, 1.0, 1e7, 0.0, 1e7 + 0.25, 3.0, 1e7 + 0.25), 0.0f);
    EXPECT_EQ(SAME_SIDE(0.0f, 1e7f, 1.0f, 1e7f, 0.0f, 1e7f + 0.25f, 3.0f, 1e7f - 0.25f), 0.0f);
}

TEST(IntersectPoint, OnTheLineExactly) {
    EXPECT_TRUE(INTERSECT_POINT(0, 0, 2, 1, 4, 2));   // beyond the segment, on the line
    EXPECT_TRUE(INTERSECT_POINT(0, 0, 2, 1, -2, -1));
    EXPECT_FALSE(INTERSECT_POINT(0, 0, 2, 1, 4, 2.0001f));
}

struct LineCase {
    const char* what;
    float x1, y1, x2, y2, x3, y3, x4, y4;
    bool meet;  // INTERSECT_LINE
    int code;   // INTERSECT_LINE_V2
};

TEST(IntersectLine, InclusiveTestAndClassification) {
    const LineCase cases[] = {
        {"proper crossing", 0, 0, 2, 2, 0, 2, 2, 0, true, 3},
        {"crossing at P2 of the first, inside the second", 0, 0, 1, 1, 0, 2, 2, 0, true, 3},
        {"crossing at P1 of the first", 1, 1, 2, 2, 0, 2, 2, 0, true, 2},
        {"crossing at P3 of the second", 0, 0, 2, 2, 1, 1, 2, 0, true, 1},
        {"crossing at P4 of the second", 0, 0, 2, 2, 2, 0, 1, 1, true, 3},
        {"meeting on the first only", 0, 0, 2, 2, 0, 2, 0.5f, 1.5f, false, 1},
        {"meeting on the second only", 0, 2, 0.5f, 1.5f, 0, 0, 2, 2, false, 2},
        {"meeting on neither", 0, 0, 0.5f, 0.5f, 0, 2, 0.5f, 1.5f, false, 4},
        {"collinear, disjoint", 0, 0, 1, 1, 2, 2, 3, 3, true, -1},
        {"collinear, overlapping", 0, 0, 2, 2, 1, 1, 3, 3, true, -1},
        {"parallel", 0, 0, 1, 1, 0, 1, 1, 2, false, 0},
        {"touching end to end at an angle", 0, 0, 1, 0, 1, 0, 2, 1, true, 1},
        {"T junction: P3 on the first", 0, 0, 2, 0, 1, 0, 1, 1, true, 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(INTERSECT_LINE(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.meet) << c.what;
        EXPECT_EQ(INTERSECT_LINE_8(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.meet) << c.what;
        EXPECT_EQ(INTERSECT_LINE_V2(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.code) << c.what;
        EXPECT_EQ(INTERSECT_LINE_V2_8(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.code) << c.what;
    }
}

TEST(IntersectLine, SixtyFourBitForms) {
    // An X of two unit diagonals at 1e8: the _8 forms see it, float
    // coordinates (spacing 8 there) collapse it.
    const double b = 1e8;
    EXPECT_EQ(INTERSECT_LINE_V2_8(b, 0, b + 2, 2, b, 2, b + 2, 0), 3);
    EXPECT_TRUE(INTERSECT_LINE_8(b, 0, b + 2, 2, b, 2, b + 2, 0));
    EXPECT_FALSE(INTERSECT_LINE_8(b, 0, b + 2, 2, b + 3, 2, b + 5, 0));
    const float f = 1e8f;
    EXPECT_EQ(INTERSECT_LINE_V2(f, 0, f + 2, 2, f, 2, f + 2, 0), -1);
}

TEST(IntersectionPoint, InfiniteLines) {
    float xp = 7.0f, yp = 8.0f;
    EXPECT_FALSE(INTERSECTION_POINT(1, 0, 1, 5, 3, 0, 3, 1, xp, yp));  // two verticals
    EXPECT_FALSE(INTERSECTION_POINT(0, 0, 1, 2, 5, 0, 6, 2, xp, yp));  // equal slopes
    EXPECT_EQ(xp, 7.0f);
    EXPECT_EQ(yp, 8.0f);
    // First vertical; the meeting lies outside both segments.
    ASSERT_TRUE(INTERSECTION_POINT(2, 0, 2, 1, 0, 0, 1, 3, xp, yp));
    EXPECT_EQ(xp, 2.0f);
    EXPECT_EQ(yp, 6.0f);
    // Second vertical.
    ASSERT_TRUE(INTERSECTION_POINT(0, 1, 4, 3, -1, 7, -1, 9, xp, yp));
    EXPECT_EQ(xp, -1.0f);
    EXPECT_EQ(yp, 0.5f);
    // General case: y = x and y = 4 - x meet at (2, 2).
    ASSERT_TRUE(INTERSECTION_POINT(0, 0, 1, 1, 0, 4, 1, 3, xp, yp));
    EXPECT_EQ(xp, 2.0f);
    EXPECT_EQ(yp, 2.0f);

    double xd = 0, yd = 0;
    EXPECT_FALSE(INTERSECTION_POINT_8(1, 0, 1, 5, 3, 0, 3, 1, xd, yd));
    ASSERT_TRUE(INTERSECTION_POINT_8(1e8, 1e8, 1e8 + 1, 1e8 + 1, 1e8, 1e8 + 4, 1e8 + 1, 1e8 + 3, xd, yd));
    EXPECT_EQ(xd, 1e8 + 2);
    EXPECT_EQ(yd, 1e8 + 2);
}

TEST(Angle2d, DegreesBetweenLines) {
    auto deg = [](double a) { return a * std::numbers::pi / 180.0; };
    auto dir = [&](double a, double& x, double& y) {
        x = 10.0 * std::cos(deg(a));
        y = 10.0 * std::sin(deg(a));
    };
    double ax, ay, bx, by;
    dir(350.0, ax, ay);
    dir(10.0, bx, by);
    EXPECT_NEAR(ANGLE2D(0, 0, ax, ay, 0, 0, bx, by), 20.0f, 1e-4);
    dir(170.0, ax, ay);
    dir(190.0, bx, by);
    EXPECT_NEAR(ANGLE2D(0, 0, ax, ay, 0, 0, bx, by), 20.0f, 1e-4);  // 340 folds to 20
    EXPECT_NEAR(ANGLE2D(0, 0, 1, 0, 5, 5, 6, 6), 45.0f, 1e-5);
    EXPECT_EQ(ANGLE2D(0, 0, 0, 1, 0, 0, 1, 1), 0.0f);               // first line vertical
    EXPECT_EQ(ANGLE2D(0, 0, 1, 1, 3, 0, 3 + 5e-7, 1), 0.0f);         // second vertical by the tolerance
}

TEST(GeoShift, RotatedFrame) {
    const double X[] = {0, 500001.0, 500000.5, 499999.0};
    const double Y[] = {0, 6000000.0, 6000002.0, 6000000.0};
    float xo[4] = {-1, -1, -1, -1}, yo[4] = {-1, -1, -1, -1};
    GEO_SHIFT(X, Y, 3, 500000.0, 6000000.0, 0.0f, xo, yo);
    EXPECT_EQ(xo[1], 1.0f);
    EXPECT_EQ(yo[1], 0.0f);
    EXPECT_EQ(xo[2], 0.5f);  // 64-bit difference, then float
    EXPECT_EQ(yo[2], 2.0f);
    EXPECT_EQ(xo[0], -1.0f);  // element 0 unused

    // Frame turned by 90 degrees: its x axis points along map y.
    GEO_SHIFT(X, Y, 3, 500000.0, 6000000.0, static_cast<float>(std::numbers::pi / 2), xo, yo);
    EXPECT_NEAR(xo[2], 2.0f, 1e-6);
    EXPECT_NEAR(yo[2], -0.5f, 1e-6);
    EXPECT_NEAR(xo[3], 0.0f, 1e-6);
    EXPECT_NEAR(yo[3], 1.0f, 1e-6);

    float untouched[2] = {9, 9};
    GEO_SHIFT(X, Y, 0, 0.0, 0.0, 0.0f, untouched, untouched);
    EXPECT_EQ(untouched[1], 9.0f);
}

TEST(VectorMagnitude, ToleranceIsExclusive) {
    EXPECT_EQ(VECTOR_MAGNITUDE(0.0000005f, 0.0f), 0.0f);
    EXPECT_EQ(VECTOR_MAGNITUDE(0.000001f, -0.000001f), 0.0f);  // neither strictly exceeds
    EXPECT_EQ(VECTOR_MAGNITUDE(3.0f, -4.0f), 5.0f);
}

TEST(Areas, PolygonAndTriangle) {
    const double X[] = {0, 0, 4, 4, 0};
    const double Y[] = {0, 0, 0, 3, 3};
    EXPECT_EQ(POLYGON_AREA_8(X, Y, 4), 12.0f);
    const double Xc[] = {0, 0, 0, 4, 4, 0};  // clockwise, with the first point repeated
    const double Yc[] = {0, 0, 3, 3, 0, 0};
    EXPECT_EQ(POLYGON_AREA_8(Xc, Yc, 5), 12.0f);
    EXPECT_EQ(POLYGON_AREA_8(X, Y, 0), 0.0f);
    EXPECT_EQ(POLYGON_AREA_8(X, Y, 1), 0.0f);
    const double Xb[] = {0, 1e6, 1e6 + 1, 1e6 + 1, 1e6};
    const double Yb[] = {0, 5e6, 5e6, 5e6 + 1, 5e6 + 1};
    EXPECT_EQ(POLYGON_AREA_8(Xb, Yb, 4), 1.0f);

    EXPECT_EQ(SIGNED_AREA_8(0, 0, 4, 0, 0, 3), 12.0f);
    EXPECT_EQ(SIGNED_AREA_8(0, 0, 0, 3, 4, 0), -12.0f);
    EXPECT_EQ(SIGNED_AREA_8(1e7, 1e7, 1e7 + 1, 1e7, 1e7, 1e7 + 1), 1.0f);
}

}  // namespace
