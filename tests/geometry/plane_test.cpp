#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "geometry/plane.hpp"

namespace {

TEST(Plane, TolerancesAreStrictAndDifferencesSixtyFourBit) {
    EXPECT_EQ(kGeoTolerance8, 9.999999974752427e-07);
    EXPECT_EQ(DISTANCE(0, 0, 0.0000005f, 0.0000005f), 0.0f);
    EXPECT_EQ(DISTANCE(0, 0, 0.000001f, 0), 0.000001f);
    EXPECT_EQ(DISTANCE(4, 6, 1, 2), 5.0f);
    EXPECT_EQ(DISTANCE_8(0.0, 6000000.0, 0.0, 6000000.3), 0.3f);  // float coordinates would lose it
    EXPECT_EQ(VECTOR_MAGNITUDE(0.0000005f, 0), 0.0f);
    EXPECT_EQ(VECTOR_MAGNITUDE(0.000001f, -0.000001f), 0.0f);  // neither strictly exceeds
    EXPECT_EQ(VECTOR_MAGNITUDE(3, -4), 5.0f);
    EXPECT_FALSE(SAME_POINT(0, 0, 0.5f, 0, 0.5f));  // a difference equal to tol
    EXPECT_TRUE(SAME_POINT(0, 0, 0.25f, -0.25f, 0.5f));
    EXPECT_TRUE(SAME_POINT_8(0, 0, 1e-9, 0, 2e-9));
    EXPECT_FALSE(SAME_POINT_8(1e8, 0, 1e8 + 1, 0, 0.5));
}

TEST(Plane, SidesOfALine) {
    EXPECT_EQ(SAME_SIDE(0, 0, 1, 0, 0, 1, 5, 2), 2.0f);  // both above: 1 * 2
    EXPECT_LT(SAME_SIDE(0, 0, 1, 0, 0, 1, 5, -2), 0.0f);
    EXPECT_EQ(SAME_SIDE(0, 0, 1, 0, 7, 0, 5, -2), 0.0f);
    // A quarter either side of y = 1e7: only 64-bit differences keep them apart.
    EXPECT_LT(SAME_SIDE_8(0, 1e7, 1, 1e7, 0, 1e7 + 0.25, 3, 1e7 - 0.25), 0.0f);
    EXPECT_EQ(SAME_SIDE(0, 1e7f, 1, 1e7f, 0, 1e7f + 0.25f, 3, 1e7f - 0.25f), 0.0f);
    EXPECT_TRUE(INTERSECT_POINT(0, 0, 2, 1, -2, -1));
    EXPECT_FALSE(INTERSECT_POINT(0, 0, 2, 1, 4, 2.0001f));
}

TEST(Plane, SegmentMeetingsInclusiveAndClassified) {
    struct C {
        const char* what;
        float x1, y1, x2, y2, x3, y3, x4, y4;
        bool meet;
        int code;
    } cases[] = {
        {"proper crossing", 0, 0, 2, 2, 0, 2, 2, 0, true, 3},
        {"at the first's end", 0, 0, 1, 1, 0, 2, 2, 0, true, 3},
        {"at the first's start", 1, 1, 2, 2, 0, 2, 2, 0, true, 2},
        {"at the second's start", 0, 0, 2, 2, 1, 1, 2, 0, true, 1},
        {"at the second's end", 0, 0, 2, 2, 2, 0, 1, 1, true, 3},
        {"on the first only", 0, 0, 2, 2, 0, 2, 0.5f, 1.5f, false, 1},
        {"on the second only", 0, 2, 0.5f, 1.5f, 0, 0, 2, 2, false, 2},
        {"on neither", 0, 0, 0.5f, 0.5f, 0, 2, 0.5f, 1.5f, false, 4},
        {"collinear, disjoint", 0, 0, 1, 1, 2, 2, 3, 3, true, -1},
        {"parallel", 0, 0, 1, 1, 0, 1, 1, 2, false, 0},
        {"end to start", 0, 0, 1, 0, 1, 0, 2, 1, true, 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(INTERSECT_LINE(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.meet) << c.what;
        EXPECT_EQ(INTERSECT_LINE_8(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.meet) << c.what;
        EXPECT_EQ(INTERSECT_LINE_V2(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.code) << c.what;
        EXPECT_EQ(INTERSECT_LINE_V2_8(c.x1, c.y1, c.x2, c.y2, c.x3, c.y3, c.x4, c.y4), c.code) << c.what;
    }
    // Two unit diagonals at 1e8 cross for the 64-bit forms and collapse in float.
    EXPECT_EQ(INTERSECT_LINE_V2_8(1e8, 0, 1e8 + 2, 2, 1e8, 2, 1e8 + 2, 0), 3);
    EXPECT_FALSE(INTERSECT_LINE_8(1e8, 0, 1e8 + 2, 2, 1e8 + 3, 2, 1e8 + 5, 0));
    EXPECT_EQ(INTERSECT_LINE_V2(1e8f, 0, 1e8f + 2, 2, 1e8f, 2, 1e8f + 2, 0), -1);
}

TEST(Plane, MeetingPointOfInfiniteLines) {
    float xp = 7, yp = 8;
    EXPECT_FALSE(INTERSECTION_POINT(1, 0, 1, 5, 3, 0, 3, 1, xp, yp));  // two verticals
    EXPECT_FALSE(INTERSECTION_POINT(0, 0, 1, 2, 5, 0, 6, 2, xp, yp));  // equal slopes
    EXPECT_EQ(xp, 7.0f);
    EXPECT_EQ(yp, 8.0f);
    ASSERT_TRUE(INTERSECTION_POINT(2, 0, 2, 1, 0, 0, 1, 3, xp, yp));  // outside both segments
    EXPECT_EQ(xp, 2.0f);
    EXPECT_EQ(yp, 6.0f);
    ASSERT_TRUE(INTERSECTION_POINT(0, 1, 4, 3, -1, 7, -1, 9, xp, yp));
    EXPECT_EQ(yp, 0.5f);
    double xd = 0, yd = 0;
    ASSERT_TRUE(INTERSECTION_POINT_8(1e8, 1e8, 1e8 + 1, 1e8 + 1, 1e8, 1e8 + 4, 1e8 + 1, 1e8 + 3, xd, yd));
    EXPECT_EQ(xd, 1e8 + 2);
    EXPECT_EQ(yd, 1e8 + 2);
}

TEST(Plane, AnglesShiftsAndAreas) {
    const double r = 10, d = std::numbers::pi / 180;
    auto angle = [&](double a, double b) {
        return ANGLE2D(0, 0, r * std::cos(a * d), r * std::sin(a * d), 0, 0, r * std::cos(b * d), r * std::sin(b * d));
    };
    EXPECT_NEAR(angle(350, 10), 20.0f, 1e-4);
    EXPECT_NEAR(angle(170, 190), 20.0f, 1e-4);  // 340 folds to 20
    EXPECT_EQ(ANGLE2D(0, 0, 0, 1, 0, 0, 1, 1), 0.0f);
    EXPECT_EQ(ANGLE2D(0, 0, 1, 1, 3, 0, 3 + 5e-7, 1), 0.0f);

    const double X[] = {0, 500001.0, 500000.5};
    const double Y[] = {0, 6000000.0, 6000002.0};
    float xo[3] = {-1, -1, -1}, yo[3] = {-1, -1, -1};
    GEO_SHIFT(X, Y, 2, 500000.0, 6000000.0, 0.0f, xo, yo);
    EXPECT_EQ(xo[2], 0.5f);
    EXPECT_EQ(yo[1], 0.0f);
    EXPECT_EQ(xo[0], -1.0f);
    GEO_SHIFT(X, Y, 2, 500000.0, 6000000.0, static_cast<float>(std::numbers::pi / 2), xo, yo);
    EXPECT_NEAR(xo[2], 2.0f, 1e-6);  // the frame's x axis points along map y
    EXPECT_NEAR(yo[2], -0.5f, 1e-6);

    const double Px[] = {0, 1e6, 1e6 + 4, 1e6 + 4, 1e6};
    const double Py[] = {0, 5e6, 5e6, 5e6 + 3, 5e6 + 3};
    EXPECT_EQ(POLYGON_AREA_8(Px, Py, 4), 12.0f);
    EXPECT_EQ(POLYGON_AREA_8(Px, Py, 0), 0.0f);
    EXPECT_EQ(SIGNED_AREA_8(0, 0, 4, 0, 0, 3), 12.0f);
    EXPECT_EQ(SIGNED_AREA_8(0, 0, 0, 3, 4, 0), -12.0f);
}

}  // namespace
