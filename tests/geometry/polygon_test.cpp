#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "geometry/polygon.hpp"
#include "region_fixture.hpp"

namespace {

const Ring kSquare = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
const Ring kOuter = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
const Ring kHole = {{3, 3}, {7, 3}, {7, 7}, {3, 7}};
const Ring kDiamond = {{2, 0}, {4, -2}, {6, 0}, {4, 2}};  // side vertices on y = 0
const Ring kTouch = {{2, 0}, {4, 3}, {0, 3}};             // lowest vertex touches y = 0
// Lower boundary rises to a horizontal edge on y = 1, then falls back.
const Ring kBump = {{8, -1}, {8, 4}, {-1, 4}, {-1, -1}, {2, 1}, {4, 1}, {5, -1}};
// Boundary comes up from below, runs along y = 1, and goes on upward.
const Ring kStep = {{-2, -2}, {8, -2}, {8, 4}, {4, 4}, {4, 1}, {1, 1}, {1, -1}, {-2, -1}};

TEST(InsidePolygon, VerticesAndHorizontalEdgesOnTheRay) {
    const struct {
        const char* what;
        TestRegion r;
        double px, py;
        bool inside;
    } cases[] = {
        {"square", region({kSquare}), 2, 2, true},
        {"right of the square", region({kSquare}), 5, 2, false},
        {"in the hole", region({kOuter, kHole}), 5, 5, false},
        {"right of the hole", region({kOuter, kHole}), 8, 5, true},
        {"hole listed first", region({kHole, kOuter}), 5, 5, false},
        {"ray through one vertex", region({kDiamond}), 4, 0, true},
        {"ray through two vertices", region({kDiamond}), 7, 0, false},
        {"vertex touching the ray", region({kTouch}), 5, 0, false},
        {"horizontal edge on the ray, path turns back", region({kBump}), 6, 1, true},
        {"under the bump", region({kBump}), 3, 0.5, false},
        {"horizontal edge on the ray, path goes on", region({kStep}), 6, 1, true},
        {"above the step's horizontal edge", region({kStep}), 3, 2, false},
        {"left of the step's horizontal edge", region({kStep}), 0, 1, false},
        // Listed from (4, -2), the diamond's walk starts with the edge leaving
        // (6, 0) before any edge has set prev: at (7, 0) only the far vertex
        // counts, and the point comes out inside.
        {"first walked vertex on the ray meets a stale prev", region({{{4, -2}, {6, 0}, {4, 2}, {2, 0}}}), 7, 0,
         true},
    };
    for (const auto& c : cases) {
        const TestRegion& r = c.r;
        const auto xf = r.Xf(), yf = r.Yf();
        EXPECT_EQ(INSIDE_POLYGON_8(c.px, c.py, r.X.data(), r.Y.data(), r.N(), r.xmin(), r.ends.data(), r.npoly),
                  c.inside)
            << c.what;
        EXPECT_EQ(INSIDE_POLYGON(float(c.px), float(c.py), xf.data(), yf.data(), r.N(), float(r.xmin()),
                                 r.ends.data(), r.npoly),
                  c.inside)
            << c.what;
        EXPECT_EQ(inside_polygon_or_edge_8(c.px, c.py, r.X.data(), r.Y.data(), r.N(), -5, r.ends.data(), r.npoly),
                  c.inside)
            << c.what;
    }
    // Fewer than three slots: never inside.
    const double X[] = {0, 0, 1}, Y[] = {0, 0, 1};
    const int32_t ends[] = {0, 2};
    EXPECT_FALSE(INSIDE_POLYGON_8(0.5, 0.5, X, Y, 2, -1, ends, 1));
}

TEST(InsidePolygon, EdgeAndConvexForms) {
    const TestRegion r = region({kSquare});
    // On the top edge's line beyond its end: |AP| is measured from the edge's
    // first point (4, 4) only, so within |AB| = 4 of it counts as on the edge.
    const struct {
        double px, py;
        bool onEdge, convex;
    } cases[] = {{4, 2, true, true},        {2, 4, true, true},         {0, 0, true, true},
                 {2, 2, true, true},        {4.0001, 2, false, false},  {2, -0.0001, false, false},
                 {6, 4, true, false},       {9, 4, false, false},       {6, 0, false, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(inside_polygon_or_edge_8(c.px, c.py, r.X.data(), r.Y.data(), r.N(), -1, r.ends.data(), 1), c.onEdge)
            << c.px << "," << c.py;
        EXPECT_EQ(inside_convex_polygon_8(c.px, c.py, 4, r.X.data(), r.Y.data()), c.convex) << c.px << "," << c.py;
    }
    const double Xc[] = {0, 0, 0, 4, 4, 0}, Yc[] = {0, 0, 4, 4, 0, 0};  // clockwise
    EXPECT_TRUE(inside_convex_polygon_8(2, 1, 4, Xc, Yc));
    EXPECT_FALSE(inside_convex_polygon_8(5, 1, 4, Xc, Yc));
    EXPECT_FALSE(inside_convex_polygon_8(2, 1, 0, Xc, Yc));
    EXPECT_TRUE(inside_convex_polygon_8(0, 2, 1, Xc, Yc));  // one edge: only a point on it
    EXPECT_FALSE(inside_convex_polygon_8(1, 2, 1, Xc, Yc));
}

// Fills a dimJ x dimI grid (unit cells unless told) and draws it, top row first.
struct Grid {
    int32_t dimJ, dimI;
    std::vector<uint8_t> inside, crossings;
    std::vector<int32_t> ivalues;
    std::vector<float> rvalues;
    int32_t jMin = 0, iMin = 0, jMax = 0, iMax = 0, count = -1;
    Grid(int32_t j, int32_t i, uint8_t background = 0)
        : dimJ(j), dimI(i), inside(std::size_t(j * i), background), crossings(inside.size()),
          ivalues(inside.size()), rvalues(inside.size()) {}
    std::size_t at(int32_t j, int32_t i) const { return gridIndex(j, i, dimJ); }
    void fill(const TestRegion& r, double dx = 1, double dy = 1, int32_t offJ = 0, int32_t offI = 0,
              bool setValues = false, bool useInteger = false, bool useConstant = true, float value = 0,
              bool accumulate = false, const float* Z = nullptr) {
        grid_inside_polygon_8(inside.data(), crossings.data(), ivalues.data(), rvalues.data(), dimJ, dimI, dx, dy,
                              offJ, offI, true, setValues, useInteger, useConstant, value, accumulate, jMin, iMin,
                              jMax, iMax, count, r.X.data(), r.Y.data(), Z, r.N(), r.ends.data(), r.npoly);
    }
    std::string picture() const {
        std::string s;
        for (int32_t j = dimJ; j >= 1; --j) {
            for (int32_t i = 1; i <= dimI; ++i) s += ".#23456789"[inside[at(j, i)]];
            s += '\n';
        }
        return s;
    }
};

TEST(GridInsidePolygon, HolesTieRuleAndWindow) {
    Grid ring(8, 8);
    ring.fill(region({{{0.5, 0.5}, {7.5, 0.5}, {7.5, 7.5}, {0.5, 7.5}}, {{2.5, 2.5}, {4.5, 2.5}, {4.5, 5.5}, {2.5, 5.5}}}));
    EXPECT_EQ(ring.count, 43);
    EXPECT_EQ(ring.picture(), "........\n#######.\n#######.\n##..###.\n##..###.\n##..###.\n#######.\n#######.\n");
    // Edges on grid lines: a crossing at x = c * dx counts for column c + 1 and
    // a vertex on a row line counts as above it, so the right and top edges'
    // points are in, the left and bottom ones' out.
    Grid tie(6, 7);
    tie.fill(region({{{2, 2}, {5, 2}, {5, 4}, {2, 4}}}));
    EXPECT_EQ(tie.picture(), ".......\n.......\n..###..\n..###..\n.......\n.......\n");
    Grid cells(10, 4);  // cells of 2 by 0.5: x = 2, 4 and y = 2.5 .. 4
    cells.fill(region({{{2, 2}, {5, 2}, {5, 4}, {2, 4}}}), 2, 0.5);
    EXPECT_EQ(cells.count, 4);
    EXPECT_EQ(cells.inside[cells.at(5, 2)], 1);
    // A region past both sides and above the grid: the margins stay untouched,
    // crossings left of the window gather in its first column, those right of
    // it and edges above it drop out.
    Grid wide(10, 12, 7);
    wide.fill(region({{{-5, -5}, {100, -5}, {100, 40}, {50, 60}, {-5, 40}}}), 1, 1, 2, 3);
    EXPECT_EQ(wide.jMin, 2);
    EXPECT_EQ(wide.jMax, 8);
    EXPECT_EQ(wide.iMin, 3);
    EXPECT_EQ(wide.iMax, 9);
    EXPECT_EQ(wide.count, 49);
    for (int32_t i = 1; i <= 12; ++i) {
        for (int32_t j = 1; j <= 10; ++j) {
            EXPECT_EQ(wide.inside[wide.at(j, i)], (j >= 2 && j <= 8 && i >= 3 && i <= 9) ? 1 : 7) << j << "," << i;
        }
    }
    // A region beyond the grid: count 0, nothing touched.
    Grid none(5, 5, 7);
    none.fill(region({{{100, 2}, {110, 2}, {110, 4}}}), 1, 1, 0, 0, true, false, true, 9);
    EXPECT_EQ(none.count, 0);
    for (std::size_t k = 0; k < none.inside.size(); ++k) EXPECT_TRUE(none.inside[k] == 7 && none.rvalues[k] == 0);
}

TEST(GridInsidePolygon, Values) {
    const TestRegion r = region({{{0.5, 0.5}, {2.5, 0.5}, {2.5, 2.5}, {0.5, 2.5}}});  // points (1..2, 1..2)
    Grid g(3, 3);
    g.fill(r, 1, 1, 0, 0, true, true, true, 2.5f);  // rounded half away from zero
    EXPECT_EQ(g.ivalues[g.at(1, 1)], 3);
    g.fill(r, 1, 1, 0, 0, true, true, true, -2.5f, true);
    EXPECT_EQ(g.ivalues[g.at(2, 2)], 0);
    g.fill(r, 1, 1, 0, 0, true, false, true, 1.25f);
    g.fill(r, 1, 1, 0, 0, true, false, true, 1.25f, true);
    EXPECT_EQ(g.rvalues[g.at(2, 1)], 2.5f);
    EXPECT_EQ(g.rvalues[g.at(3, 1)], 0.0f);
    g.fill(r, 1, 1, 0, 0, false, false, true, 100);  // no values asked
    g.fill(r, 1, 1, 0, 0, true, false, false, 100);  // no triangle, no constant
    EXPECT_EQ(g.count, 4);
    EXPECT_EQ(g.rvalues[g.at(2, 1)], 2.5f);

    // A triangle interpolates from its corners' Z: a plane stays a plane.
    const TestRegion t = region({{{0.3, 0.2}, {9.6, 1.1}, {4.2, 8.7}}});
    auto plane = [](double x, double y) { return float(1 + 2 * x + 3 * y); };
    const float Z[] = {0, plane(0.3, 0.2), plane(9.6, 1.1), plane(4.2, 8.7)};
    Grid p(10, 10);
    p.fill(t, 1, 1, 0, 0, true, false, false, 0, false, Z);
    EXPECT_GT(p.count, 30);
    for (int32_t i = 1; i <= 10; ++i) {
        for (int32_t j = 1; j <= 10; ++j) {
            const float want = p.inside[p.at(j, i)] ? plane(i, j) : 0.0f;
            EXPECT_NEAR(p.rvalues[p.at(j, i)], want, 1e-4 * want) << i << "," << j;
        }
    }
}

TEST(GridInsidePolygonPoints, FlagsAndValues) {
    const TestRegion r = region({kOuter, kHole});
    // in, hole, left of the box by a hair, below it by a hair, on the right
    // edge (its crossing is not strictly left: three crossings), bottom-left
    // corner, on the top edge (the vertical edges end at or above py)
    const double px[] = {0, 1, 5, -1e-9, 5, 10, 0, 5};
    const double py[] = {0, 5, 5, 5, -1e-9, 5, 0, 10};
    const std::vector<int32_t> want = {7, 1, 0, 0, 0, 1, 0, 1};
    std::vector<int32_t> flags(8, 7);
    int32_t count = -1;
    grid_inside_polygon_points_8(flags.data(), px, py, 7, count, r.X.data(), r.Y.data(), r.N(), r.ends.data(), 2);
    EXPECT_EQ(flags, want);
    EXPECT_EQ(count, 3);
    const std::vector<float> pxf(px, px + 8), pyf(py, py + 8), xf = r.Xf(), yf = r.Yf();
    grid_inside_polygon_points(flags.data(), pxf.data(), pyf.data(), 7, count, xf.data(), yf.data(), r.N(),
                               r.ends.data(), 2);
    EXPECT_EQ(flags, want);

    // Values for flagged points; a triangle value that cannot be formed (the
    // point on the line from corner 3 parallel to 1-2) leaves the point alone.
    const TestRegion t = region({{{0, 0}, {4, 0}, {0, 4}}});
    const float Z[] = {0, 0, 4, 4};  // z = x + y
    const int32_t set[] = {0, 1, 0, 1};
    const double qx[] = {0, 1, 2, 3}, qy[] = {0, 1, 1, 4};
    std::vector<float> rv = {0, -5, -5, -5};
    grid_set_inside_points(set, qx, qy, nullptr, rv.data(), 3, false, false, 0, false, t.X.data(), t.Y.data(), Z, 5);
    EXPECT_NEAR(rv[1], 2.0f, 1e-6);
    EXPECT_EQ(rv[2], -5.0f);
    EXPECT_EQ(rv[3], -5.0f);
    std::vector<int32_t> iv = {0, 10, 10, 10};
    grid_set_inside_points(set, qx, qy, iv.data(), rv.data(), 3, true, false, 1.5f, true, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(iv, (std::vector<int32_t>{0, 12, 10, 12}));
}

}  // namespace
