// Region membership on many random regions: convex, concave, with holes,
// self-crossing, with vertices and edges on grid lines.
//
// What is compared. Coordinates are multiples of 1/8 within [-16, 112] and
// cells are 0.5, 1 or 2, so a reference in exact integers (coordinates times
// 8) decides every grid point by the grid rule: an edge crosses the row line
// through a point when one end is below it and the other at or above it; the
// crossing counts when strictly left of the point; odd means inside. A "tie"
// is a point with such a crossing exactly on it (a point on a non-horizontal
// edge): its side depends on how a routine rounds the crossing abscissa.
//  - 64-bit fill and 64-bit point list: equal to the reference at every grid
//    point but ties. (Their abscissa errs by ~1e-13; a non-tie crossing lies
//    at least 1/8192 from the point.)
//  - 32-bit fill and point list: their abscissa errs by up to ~0.015 on flat
//    edges here, so they are compared at points farther than 0.05 along the
//    row from every crossing.
//  - INSIDE_POLYGON_8 and INSIDE_POLYGON, whose arithmetic is exact on these
//    coordinates and whose ray rules differ only on the boundary: equal at
//    every point on no edge, except on rows through a polygon's second vertex
//    (the walk starts there with no history of the path; see its own test) and
//    at x = xmin - 10, where the ray shrinks to the point itself.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "geometry/polygon.hpp"
#include "region_fixture.hpp"

namespace {

int64_t scaled(double v) { return std::llround(v * 8); }

enum class Ref { outside, inside, tie };

struct Reference {
    Ref ref = Ref::outside;
    double gap = 1e300;  // distance along the row to the nearest crossing
    bool onEdge = false;
};

Reference classify(const TestRegion& r, double x, double y) {
    const int64_t px = scaled(x), py = scaled(y);
    Reference out;
    int crossings = 0;
    for (int32_t p = 1; p <= r.npoly; ++p) {
        for (int32_t s = r.starts[p]; s < r.ends[p]; ++s) {
            const int64_t xA = scaled(r.X[s]), yA = scaled(r.Y[s]), xB = scaled(r.X[s + 1]), yB = scaled(r.Y[s + 1]);
            if ((xB - xA) * (py - yA) == (yB - yA) * (px - xA) && px >= std::min(xA, xB) && px <= std::max(xA, xB) &&
                py >= std::min(yA, yB) && py <= std::max(yA, yB)) {
                out.onEdge = true;
            }
            if ((yA < py) == (yB < py)) continue;
            const int64_t num = (xA - px) * (yB - yA) + (py - yA) * (xB - xA), den = yB - yA;  // x - px = num / den
            out.gap = std::min(out.gap, std::fabs(double(num) / double(den)) / 8);
            if (num == 0) out.ref = Ref::tie;
            crossings += num != 0 && (num < 0) != (den < 0);
        }
    }
    if (out.ref != Ref::tie) out.ref = (crossings & 1) ? Ref::inside : Ref::outside;
    return out;
}

struct Maker {
    std::mt19937 rng{20240611u};
    double dx = 1, dy = 1;
    double uni(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); }
    int irand(int a, int b) { return std::uniform_int_distribution<int>(a, b)(rng); }
    // To 1/8, or now and then onto a grid line.
    double snap(double v, double cell) {
        v = std::clamp(v, -16.0, 112.0);
        return uni(0, 1) < 0.3 ? std::clamp(std::round(v / cell) * cell, -16.0, 112.0) : std::round(v * 8) / 8;
    }
    Ring star(double cx, double cy, double rmin, double rmax, int nv) {
        std::vector<double> a(static_cast<std::size_t>(nv));
        for (auto& v : a) v = uni(0, 2 * std::numbers::pi);
        std::sort(a.begin(), a.end());
        Ring ring;
        for (double t : a) {
            const double rad = uni(rmin, rmax);
            ring.emplace_back(snap(cx + rad * std::cos(t), dx), snap(cy + rad * std::sin(t), dy));
        }
        return ring;
    }
    TestRegion make() {
        TestRegion r;
        for (int parts = irand(1, 3); parts > 0; --parts) {
            const double cx = uni(-5, 90), cy = uni(-5, 90), R = uni(2, 45);
            switch (irand(0, 4)) {
                case 0: r.add(star(cx, cy, R, R, irand(3, 24))); break;         // convex
                case 1: r.add(star(cx, cy, 0.3 * R, R, irand(3, 60))); break;   // concave
                case 2:                                                         // with a hole
                    r.add(star(cx, cy, 0.7 * R, R, irand(5, 50)));
                    r.add(star(cx, cy, 0.1 * R, 0.5 * R, irand(3, 30)));
                    break;
                case 3: {  // rectangle on grid lines
                    const double x0 = dx * irand(-3, 40), y0 = dy * irand(-3, 40);
                    const double x1 = std::min(x0 + dx * irand(1, 30), 112.0), y1 = std::min(y0 + dy * irand(1, 30), 112.0);
                    r.add({{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
                    break;
                }
                default: {  // self-crossing soup
                    Ring ring;
                    for (int k = irand(3, 25); k > 0; --k) ring.emplace_back(snap(cx + uni(-R, R), dx), snap(cy + uni(-R, R), dy));
                    r.add(ring);
                }
            }
        }
        return r;
    }
};

TEST(PolygonProperty, FillsListsAndSinglePointsAgreeWithExactReference) {
    Maker mk;
    long compared[3] = {}, skipped[3] = {}, insideSeen = 0;  // exact forms, 32-bit forms, single-point forms
    for (int trial = 0; trial < 400 && !::testing::Test::HasFailure(); ++trial) {
        mk.dx = std::ldexp(1.0, mk.irand(-1, 1));
        mk.dy = std::ldexp(1.0, mk.irand(-1, 1));
        const double dx = mk.dx, dy = mk.dy;
        const TestRegion r = mk.make();
        const auto xf = r.Xf(), yf = r.Yf();
        const int32_t dimJ = mk.irand(5, 60), dimI = mk.irand(5, 60), offJ = mk.irand(0, 3), offI = mk.irand(0, 3);
        const bool accumulate = mk.irand(0, 1);
        const std::size_t size = std::size_t(dimJ * dimI);
        SCOPED_TRACE(::testing::Message() << "trial " << trial);

        std::vector<uint8_t> in8(size, 2), in4(size, 2), scratch(size);
        std::vector<float> values(size, 10.0f);
        int32_t jMin, iMin, jMax, iMax, count8, count4, w[4];
        grid_inside_polygon_8(in8.data(), scratch.data(), nullptr, values.data(), dimJ, dimI, dx, dy, offJ, offI, true,
                              true, false, true, 0.5f, accumulate, jMin, iMin, jMax, iMax, count8, r.X.data(),
                              r.Y.data(), nullptr, r.N(), r.ends.data(), r.npoly);
        grid_inside_polygon(in4.data(), scratch.data(), nullptr, nullptr, dimJ, dimI, float(dx), float(dy), offJ, offI,
                            true, false, false, true, 0, false, w[0], w[1], w[2], w[3], count4, xf.data(), yf.data(),
                            nullptr, r.N(), r.ends.data(), r.npoly);
        EXPECT_TRUE(w[0] == jMin && w[1] == iMin && w[2] == jMax && w[3] == iMax);

        // Every grid point as a point list, in grid order.
        std::vector<double> px(1), py(1);
        for (int32_t i = 1; i <= dimI; ++i) {
            for (int32_t j = 1; j <= dimJ; ++j) {
                px.push_back(i * dx);
                py.push_back(j * dy);
            }
        }
        const std::vector<float> pxf(px.begin(), px.end()), pyf(py.begin(), py.end());
        std::vector<int32_t> flags8(size + 1), flags4(size + 1);
        int32_t listCount8, listCount4;
        grid_inside_polygon_points_8(flags8.data(), px.data(), py.data(), int32_t(size), listCount8, r.X.data(),
                                     r.Y.data(), r.N(), r.ends.data(), r.npoly);
        grid_inside_polygon_points(flags4.data(), pxf.data(), pyf.data(), int32_t(size), listCount4, xf.data(),
                                   yf.data(), r.N(), r.ends.data(), r.npoly);

        int32_t marked8 = 0, marked4 = 0, ones8 = 0, ones4 = 0;
        for (int32_t i = 1; i <= dimI; ++i) {
            for (int32_t j = 1; j <= dimJ; ++j) {
                const std::size_t at = gridIndex(j, i, dimJ), k = at + 1;
                const bool inWindow = j >= jMin && j <= jMax && i >= iMin && i <= iMax;
                const bool inMargins = j >= std::max(1, offJ) && j <= dimJ - offJ && i >= std::max(1, offI) &&
                                       i <= dimI - offI;
                ASSERT_TRUE(inWindow ? in8[at] <= 1 && in4[at] <= 1 : in8[at] == 2 && in4[at] == 2 && values[at] == 10)
                    << j << "," << i;
                ASSERT_TRUE(!inWindow || inMargins);
                marked8 += in8[at] == 1;
                marked4 += in4[at] == 1;
                ones8 += flags8[k];
                ones4 += flags4[k];

                const Reference ref = classify(r, i * dx, j * dy);
                const bool want = ref.ref == Ref::inside;
                if (ref.ref == Ref::tie) {
                    ++skipped[0];
                } else {
                    ++compared[0];
                    insideSeen += want;
                    EXPECT_EQ(flags8[k], want ? 1 : 0) << "points_8 at " << j << "," << i;
                    if (inMargins) {
                        EXPECT_EQ(in8[at] == 1, want) << "fill_8 at " << j << "," << i;
                        EXPECT_EQ(values[at], want ? (accumulate ? 10.5f : 0.5f) : 10.0f) << j << "," << i;
                    }
                }
                if (ref.gap <= 0.05) {
                    ++skipped[1];
                } else {
                    ++compared[1];
                    EXPECT_EQ(flags4[k], want ? 1 : 0) << "points at " << j << "," << i;
                    EXPECT_TRUE(!inMargins || (in4[at] == 1) == want) << "fill at " << j << "," << i;
                }
                bool secondVertexRow = false;
                for (int32_t p = 1; p <= r.npoly; ++p) secondVertexRow |= r.Y[r.starts[p] + 1] == j * dy;
                if (ref.onEdge || secondVertexRow || i * dx == r.xmin() - 10) {
                    ++skipped[2];
                    continue;
                }
                ++compared[2];
                EXPECT_EQ(INSIDE_POLYGON_8(i * dx, j * dy, r.X.data(), r.Y.data(), r.N(), r.xmin(), r.ends.data(),
                                           r.npoly),
                          want)
                    << "INSIDE_POLYGON_8 at " << j << "," << i;
                EXPECT_EQ(INSIDE_POLYGON(float(i * dx), float(j * dy), xf.data(), yf.data(), r.N(), float(r.xmin()),
                                         r.ends.data(), r.npoly),
                          want)
                    << "INSIDE_POLYGON at " << j << "," << i;
            }
        }
        EXPECT_EQ(count8, marked8);
        EXPECT_EQ(count4, marked4);
        EXPECT_EQ(listCount8, ones8);
        EXPECT_EQ(listCount4, ones4);
    }
    EXPECT_GT(insideSeen, 30000);
    for (int c = 0; c < 3; ++c) EXPECT_GT(compared[c], 20 * skipped[c]) << c;
}

}  // namespace
