#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "geometry/polygon.hpp"
#include "region_fixture.hpp"

namespace {

using Ring = std::vector<std::pair<double, double>>;

TestRegion region(std::initializer_list<Ring> rings) {
    TestRegion r;
    for (const auto& ring : rings) r.add(ring);
    return r;
}

const Ring kSquare = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
const Ring kOuter = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
const Ring kHole = {{3, 3}, {7, 3}, {7, 7}, {3, 7}};
// Diamond between x = 2 and x = 6 whose side vertices lie on y = 0; its walk
// starts at (4, -2), not at a vertex on that line.
const Ring kDiamond = {{2, 0}, {4, -2}, {6, 0}, {4, 2}};
// Triangle whose lowest vertex (2, 0) touches y = 0 from above.
const Ring kTouch = {{2, 0}, {4, 3}, {0, 3}};
// Lower boundary rises to a horizontal edge on y = 1 and falls back.
const Ring kBump = {{8, -1}, {8, 4}, {-1, 4}, {-1, -1}, {2, 1}, {4, 1}, {5, -1}};
// Boundary comes up from below, runs along y = 1, and goes on upward.
const Ring kStep = {{-2, -2}, {8, -2}, {8, 4}, {4, 4}, {4, 1}, {1, 1}, {1, -1}, {-2, -1}};

struct PointCase {
    const char* what;
    TestRegion r;
    double px, py;
    bool inside;
};

TEST(InsidePolygon, SinglePointCases) {
    const PointCase cases[] = {
        {"square, centre", region({kSquare}), 2, 2, true},
        {"square, right of it", region({kSquare}), 5, 2, false},
        {"square, left of it", region({kSquare}), -1, 2, false},
        {"ring, in the hole", region({kOuter, kHole}), 5, 5, false},
        {"ring, left of the hole", region({kOuter, kHole}), 1, 5, true},
        {"ring, right of the hole", region({kOuter, kHole}), 8, 5, true},
        {"ring, hole given first", region({kHole, kOuter}), 5, 5, false},
        {"two squares, between them", region({kSquare, {{6, 0}, {8, 0}, {8, 4}, {6, 4}}}), 5, 2, false},
        {"two squares, in the second", region({kSquare, {{6, 0}, {8, 0}, {8, 4}, {6, 4}}}), 7, 2, true},
        {"ray through a vertex, once", region({kDiamond}), 4, 0, true},
        {"ray through two vertices", region({kDiamond}), 7, 0, false},
        {"ray on a vertex line, left of all", region({kDiamond}), 1, 0, false},
        {"vertex touching the ray", region({kTouch}), 5, 0, false},
        {"above the touching vertex", region({kTouch}), 2, 2, true},
        {"horizontal edge on the ray, path turns back", region({kBump}), 6, 1, true},
        {"under the bump", region({kBump}), 3, 0.5, false},
        {"over the bump", region({kBump}), 3, 1.5, true},
        {"left of the bump region", region({kBump}), -2, 1, false},
        {"horizontal edge on the ray, path goes on", region({kStep}), 6, 1, true},
        {"step, lower part", region({kStep}), 3, 0, true},
        {"step, above the horizontal edge", region({kStep}), 3, 2, false},
        {"step, left of the horizontal edge", region({kStep}), 0, 1, false},
    };
    for (const auto& c : cases) {
        const TestRegion& r = c.r;
        const double xmin = r.xmin();
        EXPECT_EQ(INSIDE_POLYGON_8(c.px, c.py, r.X.data(), r.Y.data(), r.N(), xmin, r.ends.data(), r.npoly), c.inside)
            << c.what;
        EXPECT_EQ(inside_polygon_or_edge_8(c.px, c.py, r.X.data(), r.Y.data(), r.N(), xmin, r.ends.data(), r.npoly),
                  c.inside)
            << c.what;
        const auto xf = r.Xf(), yf = r.Yf();
        EXPECT_EQ(INSIDE_POLYGON(static_cast<float>(c.px), static_cast<float>(c.py), xf.data(), yf.data(), r.N(),
                                 static_cast<float>(xmin), r.ends.data(), r.npoly),
                  c.inside)
            << c.what;
    }
}

TEST(InsidePolygon, FirstWalkedVertexOnTheRayMeetsAStalePrev) {
    // The same diamond, listed from (4, -2): the walk begins with the edge that
    // leaves (6, 0), before any edge has set prev, so at (7, 0) that vertex is
    // not counted and the far one is: one crossing, inside. The grid fill has
    // no such case (see the property tests).
    const TestRegion r = region({{{4, -2}, {6, 0}, {4, 2}, {2, 0}}});
    EXPECT_TRUE(INSIDE_POLYGON_8(7, 0, r.X.data(), r.Y.data(), r.N(), 2, r.ends.data(), r.npoly));
    EXPECT_TRUE(INSIDE_POLYGON_8(5, 0, r.X.data(), r.Y.data(), r.N(), 2, r.ends.data(), r.npoly));
    EXPECT_FALSE(INSIDE_POLYGON_8(1, 0, r.X.data(), r.Y.data(), r.N(), 2, r.ends.data(), r.npoly));
}

TEST(InsidePolygon, FewerThanThreeSlots) {
    const double X[] = {0, 0, 1};
    const double Y[] = {0, 0, 1};
    const float Xf[] = {0, 0, 1};
    const float Yf[] = {0, 0, 1};
    const int32_t ends[] = {0, 2};
    EXPECT_FALSE(INSIDE_POLYGON_8(0.5, 0.5, X, Y, 2, -1, ends, 1));
    EXPECT_FALSE(inside_polygon_or_edge_8(0, 0, X, Y, 2, -1, ends, 1));
    EXPECT_FALSE(INSIDE_POLYGON(0.5f, 0.5f, Xf, Yf, 2, -1, ends, 1));
}

TEST(InsidePolygonOrEdge, PointsOnTheBoundary) {
    const TestRegion r = region({kSquare});
    struct C {
        double px, py;
        bool want;
    } cases[] = {
        {4, 2, true},      {0, 2, true},     {2, 4, true},  {2, 0, true},  {0, 0, true}, {4, 4, true},
        {4.0001, 2, false}, {2, 4.0001, false}, {-0.0001, 2, false}, {2, 2, true},
        // On the top edge's line beyond its end: the test measures |AP| from the
        // edge's first point (4, 4) only, so within |AB| = 4 of it counts.
        {6, 4, true},      {9, 4, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(inside_polygon_or_edge_8(c.px, c.py, r.X.data(), r.Y.data(), r.N(), -1, r.ends.data(), r.npoly),
                  c.want)
            << c.px << "," << c.py;
    }
}

TEST(InsideConvexPolygon, SidesAndEdges) {
    const double X[] = {0, 0, 4, 4, 0, 0};
    const double Y[] = {0, 0, 0, 3, 3, 0};
    struct C {
        double px, py;
        bool want;
    } cases[] = {
        {2, 1, true},  {5, 1, false}, {2, -1, false}, {4, 1.5, true}, {0, 0, true},
        {2, 3, true},  {6, 0, false},  // on the first edge's line, beyond it
        {-1, 3, false},
    };
    for (const auto& c : cases) EXPECT_EQ(inside_convex_polygon_8(c.px, c.py, 4, X, Y), c.want) << c.px << "," << c.py;
    // Clockwise order works the same.
    const double Xc[] = {0, 0, 0, 4, 4, 0};
    const double Yc[] = {0, 0, 3, 3, 0, 0};
    EXPECT_TRUE(inside_convex_polygon_8(2, 1, 4, Xc, Yc));
    EXPECT_FALSE(inside_convex_polygon_8(5, 1, 4, Xc, Yc));
    EXPECT_FALSE(inside_convex_polygon_8(2, 1, 0, X, Y));
    // One edge: only a point on it is inside.
    EXPECT_TRUE(inside_convex_polygon_8(2, 0, 1, X, Y));
    EXPECT_FALSE(inside_convex_polygon_8(2, 1, 1, X, Y));
}

// ---------------------------------------------------------------------------
// Grid fill.

struct Grid {
    int32_t dimJ, dimI;
    std::vector<uint8_t> inside, crossings;
    std::vector<int32_t> ivalues;
    std::vector<float> rvalues;
    int32_t jMin = -7, iMin = -7, jMax = -7, iMax = -7, count = -7;
    Grid(int32_t j, int32_t i, uint8_t insideFill = 0, float rFill = 0.0f)
        : dimJ(j), dimI(i), inside(size(), insideFill), crossings(size(), 0), ivalues(size(), 0),
          rvalues(size(), rFill) {}
    std::size_t size() const { return static_cast<std::size_t>(dimJ) * static_cast<std::size_t>(dimI); }
    std::size_t at(int32_t j, int32_t i) const { return gridIndex(j, i, dimJ); }
    void fill(const TestRegion& r, double dx, double dy, int32_t offJ = 0, int32_t offI = 0, bool clear = true,
              bool setValues = false, bool useInteger = false, bool useConstant = true, float value = 0.0f,
              bool accumulate = false, const float* Z = nullptr) {
        grid_inside_polygon_8(inside.data(), crossings.data(), ivalues.data(), rvalues.data(), dimJ, dimI, dx, dy,
                              offJ, offI, clear, setValues, useInteger, useConstant, value, accumulate, jMin, iMin,
                              jMax, iMax, count, r.X.data(), r.Y.data(), Z, r.N(), r.ends.data(), r.npoly);
    }
    // Rows from the top (j = dimJ) down, '#' for inside, '.' for 0, '?' else.
    std::string picture() const {
        std::string s;
        for (int32_t j = dimJ; j >= 1; --j) {
            for (int32_t i = 1; i <= dimI; ++i) {
                const uint8_t v = inside[at(j, i)];
                s += v == 1 ? '#' : v == 0 ? '.' : '?';
            }
            s += '\n';
        }
        return s;
    }
};

TEST(GridInsidePolygon, RegionOutsideTheWindowTouchesNothing) {
    Grid g(20, 20, 5, 3.0f);
    const TestRegion r = region({{{100, 2}, {110, 2}, {110, 8}, {100, 8}}});
    g.fill(r, 1, 1, 0, 0, true, true, false, true, 9.0f);
    EXPECT_EQ(g.count, 0);
    EXPECT_GT(g.iMin, g.iMax);
    for (std::size_t k = 0; k < g.size(); ++k) {
        ASSERT_EQ(g.inside[k], 5);
        ASSERT_EQ(g.rvalues[k], 3.0f);
    }
}

TEST(GridInsidePolygon, RingWithAHole) {
    Grid g(10, 10);
    const TestRegion r = region({{{0.5, 0.5}, {9.5, 0.5}, {9.5, 9.5}, {0.5, 9.5}},
                                 {{3.5, 3.5}, {6.5, 3.5}, {6.5, 6.5}, {3.5, 6.5}}});
    g.fill(r, 1, 1);
    EXPECT_EQ(g.count, 72);
    EXPECT_EQ(g.picture(),
              "..........\n"
              "#########.\n"
              "#########.\n"
              "#########.\n"
              "###...###.\n"
              "###...###.\n"
              "###...###.\n"
              "#########.\n"
              "#########.\n"
              "#########.\n");
}

TEST(GridInsidePolygon, EdgesOnGridLinesBelongToTheRightAndTop) {
    // Crossings at exactly x = c * dx count for column c + 1; a vertex on a row
    // line counts as above it. So the left and bottom edges' points are out,
    // the right and top edges' points in.
    Grid g(6, 7);
    const TestRegion r = region({{{2, 2}, {5, 2}, {5, 4}, {2, 4}}});
    g.fill(r, 1, 1);
    EXPECT_EQ(g.count, 6);
    EXPECT_EQ(g.picture(),
              ".......\n"
              ".......\n"
              "..###..\n"
              "..###..\n"
              ".......\n"
              ".......\n");
    // With cells of 2 by 0.5 the same square covers grid x = 2, 4 (i = 1, 2),
    // left edge at x = 2 excluded: only i = 2; rows y = 2.5 .. 4 (j = 5 .. 8).
    Grid h(10, 4);
    h.fill(r, 2, 0.5);
    EXPECT_EQ(h.count, 4);
    for (int32_t j = 5; j <= 8; ++j) EXPECT_EQ(h.inside[h.at(j, 2)], 1) << j;
}

TEST(GridInsidePolygon, WindowKeepsItsMarginsAndFillsAcrossBothSides) {
    Grid g(10, 12, 7);
    const TestRegion r = region({{{-5, -5}, {100, -5}, {100, 100}, {-5, 100}}});
    g.fill(r, 1, 1, 2, 3);
    EXPECT_EQ(g.jMin, 2);
    EXPECT_EQ(g.jMax, 8);
    EXPECT_EQ(g.iMin, 3);
    EXPECT_EQ(g.iMax, 9);
    EXPECT_EQ(g.count, 49);
    for (int32_t i = 1; i <= 12; ++i) {
        for (int32_t j = 1; j <= 10; ++j) {
            const bool inWindow = j >= 2 && j <= 8 && i >= 3 && i <= 9;
            EXPECT_EQ(g.inside[g.at(j, i)], inWindow ? 1 : 7) << j << "," << i;
        }
    }
    // Edges wholly above the window's last row clamp both ends to the same
    // row and cross nothing; the slanted top does not disturb the window.
    Grid h(10, 10, 0);
    h.fill(region({{{0.5, 0.5}, {9.5, 0.5}, {9.5, 40}, {5, 60}, {0.5, 40}}}), 1, 1);
    EXPECT_EQ(h.count, 90);
    for (int32_t j = 1; j <= 10; ++j) EXPECT_EQ(h.inside[h.at(j, 10)], 0) << j;
}

TEST(GridInsidePolygon, ValuesIntegerConstantAccumulated) {
    const TestRegion r = region({{{0.5, 0.5}, {2.5, 0.5}, {2.5, 2.5}, {0.5, 2.5}}});  // points (1..2, 1..2)
    Grid g(4, 4);
    g.fill(r, 1, 1, 0, 0, true, true, true, true, 2.5f);
    EXPECT_EQ(g.count, 4);
    EXPECT_EQ(g.ivalues[g.at(1, 1)], 3);
    g.fill(r, 1, 1, 0, 0, true, true, true, true, -2.5f, true);
    EXPECT_EQ(g.ivalues[g.at(2, 2)], 0);  // 3 + (-3)
    EXPECT_EQ(g.ivalues[g.at(3, 3)], 0);
    g.fill(r, 1, 1, 0, 0, true, true, false, true, 1.25f);
    g.fill(r, 1, 1, 0, 0, true, true, false, true, 1.25f, true);
    EXPECT_EQ(g.rvalues[g.at(2, 1)], 2.5f);
    EXPECT_EQ(g.rvalues[g.at(3, 1)], 0.0f);
    // setValues false: marked and counted, nothing written.
    g.fill(r, 1, 1, 0, 0, true, false, false, true, 100.0f);
    EXPECT_EQ(g.count, 4);
    EXPECT_EQ(g.rvalues[g.at(2, 1)], 2.5f);
    // Not a triangle and no constant: marked, no value.
    g.fill(r, 1, 1, 0, 0, true, true, false, false, 100.0f);
    EXPECT_EQ(g.count, 4);
    EXPECT_EQ(g.rvalues[g.at(2, 1)], 2.5f);
}

TEST(GridInsidePolygon, ClearInsideFalseKeepsEarlierMarks) {
    Grid g(6, 6);
    g.fill(region({{{0.5, 0.5}, {2.5, 0.5}, {2.5, 5.5}, {0.5, 5.5}}}), 1, 1);
    g.fill(region({{{0.5, 0.5}, {5.5, 0.5}, {5.5, 2.5}, {0.5, 2.5}}}), 1, 1, 0, 0, false);
    EXPECT_EQ(g.count, 10);
    EXPECT_EQ(g.picture(),
              "......\n"
              "##....\n"
              "##....\n"
              "##....\n"
              "#####.\n"
              "#####.\n");
}

TEST(GridInsidePolygon, TriangleValuesFollowThePlane) {
    // z = 1 + 2x + 3y at the corners; inside points get the plane's value.
    const TestRegion r = region({{{0.3, 0.2}, {9.6, 1.1}, {4.2, 8.7}}});
    ASSERT_EQ(r.N(), 5);
    auto plane = [](double x, double y) { return static_cast<float>(1 + 2 * x + 3 * y); };
    const float Z[] = {0, plane(0.3, 0.2), plane(9.6, 1.1), plane(4.2, 8.7)};
    Grid g(10, 10, 0, -1.0f);
    g.fill(r, 1, 1, 0, 0, true, true, false, false, 0.0f, false, Z);
    EXPECT_GT(g.count, 20);
    int32_t seen = 0;
    for (int32_t i = 1; i <= 10; ++i) {
        for (int32_t j = 1; j <= 10; ++j) {
            if (g.inside[g.at(j, i)] != 1) {
                EXPECT_EQ(g.rvalues[g.at(j, i)], -1.0f);
                continue;
            }
            ++seen;
            EXPECT_NEAR(g.rvalues[g.at(j, i)], plane(i, j), 1e-4 * plane(i, j)) << i << "," << j;
        }
    }
    EXPECT_EQ(seen, g.count);

    // The float form on the same triangle.
    const auto xf = r.Xf(), yf = r.Yf();
    std::vector<float> rv(100, -1.0f);
    std::vector<uint8_t> in(100, 0), cr(100, 0);
    int32_t a, b, c, d, n;
    grid_inside_polygon(in.data(), cr.data(), nullptr, rv.data(), 10, 10, 1.0f, 1.0f, 0, 0, true, true, false, false,
                        0.0f, false, a, b, c, d, n, xf.data(), yf.data(), Z, 5, r.ends.data(), 1);
    EXPECT_EQ(n, g.count);
    for (int32_t i = 1; i <= 10; ++i) {
        for (int32_t j = 1; j <= 10; ++j) {
            if (in[gridIndex(j, i, 10)] == 1) {
                EXPECT_NEAR(rv[gridIndex(j, i, 10)], plane(i, j), 1e-3 * plane(i, j));
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Point lists.

TEST(GridInsidePolygonPoints, FlagsCountAndTheBoundingBox) {
    const TestRegion r = region({kOuter, kHole});
    const double px[] = {0, 1, 5, 8, -1e-9, 5, 10, 0, 5};
    const double py[] = {0, 5, 5, 5, 5, -1e-9, 5, 0, 10};
    // in, hole, in, left of the box by a hair, below it by a hair, right edge
    // (its crossing is at px, not strictly left: three crossings), bottom-left
    // corner (no edge has an end below it), top edge (the vertical edges end at
    // or above py: one crossing on the left)
    const int32_t want[] = {0, 1, 0, 1, 0, 0, 1, 0, 1};
    std::vector<int32_t> flags(9, 77);
    int32_t count = -1;
    grid_inside_polygon_points_8(flags.data(), px, py, 8, count, r.X.data(), r.Y.data(), r.N(), r.ends.data(),
                                 r.npoly);
    for (int k = 1; k <= 8; ++k) EXPECT_EQ(flags[k], want[k]) << k;
    EXPECT_EQ(count, 4);
    EXPECT_EQ(flags[0], 77);

    const auto xf = r.Xf(), yf = r.Yf();
    const std::vector<float> pxf(px, px + 9), pyf(py, py + 9);
    grid_inside_polygon_points(flags.data(), pxf.data(), pyf.data(), 8, count, xf.data(), yf.data(), r.N(),
                               r.ends.data(), r.npoly);
    for (int k = 1; k <= 8; ++k) EXPECT_EQ(flags[k], want[k]) << k;
    EXPECT_EQ(count, 4);
    grid_inside_polygon_points_8(flags.data(), px, py, 0, count, r.X.data(), r.Y.data(), r.N(), r.ends.data(),
                                 r.npoly);
    EXPECT_EQ(count, 0);
}

TEST(GridSetInsidePoints, ValuesForFlaggedPoints) {
    const int32_t flags[] = {0, 1, 0, 1};
    const double px[] = {0, 1, 2, 3};
    const double py[] = {0, 1, 1, 1};
    std::vector<int32_t> iv = {0, 10, 10, 10};
    std::vector<float> rv = {0, 10, 10, 10};
    grid_set_inside_points(flags, px, py, iv.data(), rv.data(), 3, true, false, 1.5f, true, nullptr, nullptr, nullptr,
                           0);
    EXPECT_EQ(iv, (std::vector<int32_t>{0, 12, 10, 12}));
    grid_set_inside_points(flags, px, py, iv.data(), rv.data(), 3, false, true, 0.25f, false, nullptr, nullptr,
                           nullptr, 0);
    EXPECT_EQ(rv, (std::vector<float>{0, 0.25f, 10, 0.25f}));

    // Triangle values; a point that lies on the line from corner 3 parallel to
    // edge 1-2 gives no value and keeps its own.
    const TestRegion t = region({{{0, 0}, {4, 0}, {0, 4}}});
    const float Z[] = {0, 0, 4, 4};  // z = x + y
    const int32_t all[] = {0, 1, 1, 1};
    const double qx[] = {0, 1, 2, 3};
    const double qy[] = {0, 1, 1, 4};
    std::vector<float> tv = {0, -5, -5, -5};
    grid_set_inside_points(all, qx, qy, nullptr, tv.data(), 3, false, false, 0.0f, false, t.X.data(), t.Y.data(), Z,
                           t.N());
    EXPECT_NEAR(tv[1], 2.0f, 1e-6);
    EXPECT_NEAR(tv[2], 3.0f, 1e-6);
    EXPECT_EQ(tv[3], -5.0f);
}

}  // namespace
