// Property tests of region membership on many random regions: convex,
// concave, with holes, self-crossing, with vertices and edges on grid lines.
//
// What is compared. All coordinates are multiples of 1/8 within [-16, 112]
// and the cell sizes are 0.5, 1 or 2, so a reference in exact integer
// arithmetic (coordinates times 8) can decide every grid point:
//  - the grid rule: an edge crosses the row line through a point when one end
//    is below it and the other at or above it; the crossing counts when it lies
//    strictly left of the point; inside means an odd count;
//  - a "tie" is a point at which such a crossing lies exactly: a point on a
//    non-horizontal edge. Its side depends on how the routine rounds the
//    crossing's abscissa and is not compared.
// The 64-bit grid fill and the 64-bit point list must agree with the reference
// at every other point of the grid, exactly. (Their crossing abscissa is off
// by ~1e-13 at most, while a non-tie crossing lies at least 1/8192 away.)
// The single-precision forms compute that abscissa with errors up to ~0.015
// for flat edges in this range, so they are compared at points farther than
// 0.05 along the row from every crossing.
// INSIDE_POLYGON_8 and INSIDE_POLYGON handle vertices on the ray by their own
// rule; with these coordinates their arithmetic is exact, so they must agree
// with the reference at every point that lies on no edge at all, except on
// rows through a polygon's second vertex, where the walk starts with no
// history of the path (covered by its own test), and at points exactly 10 left
// of the least x, where the ray from xmin - 10 shrinks to the point itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "geometry/polygon.hpp"
#include "region_fixture.hpp"

namespace {

using Ring = std::vector<std::pair<double, double>>;

constexpr double kRes = 8.0;  // coordinates are multiples of 1 / kRes

int64_t scaled(double v) { return std::llround(v * kRes); }

enum class Ref { outside, inside, tie };

struct Reference {
    const TestRegion& r;

    template <class Visit>
    void edges(Visit visit) const {
        for (int32_t p = 1; p <= r.npoly; ++p) {
            for (int32_t s = r.starts[p]; s < r.ends[p]; ++s) {
                visit(scaled(r.X[s]), scaled(r.Y[s]), scaled(r.X[s + 1]), scaled(r.Y[s + 1]));
            }
        }
    }

    // Grid rule at (px, py), scaled coordinates.
    Ref classify(int64_t px, int64_t py) const {
        int crossings = 0;
        bool tie = false;
        edges([&](int64_t xA, int64_t yA, int64_t xB, int64_t yB) {
            if ((yA < py) == (yB < py)) return;
            // crossing x - px = num / den
            const int64_t num = (xA - px) * (yB - yA) + (py - yA) * (xB - xA);
            const int64_t den = yB - yA;
            if (num == 0) {
                tie = true;
            } else if ((num < 0) != (den < 0)) {
                ++crossings;
            }
        });
        if (tie) return Ref::tie;
        return (crossings & 1) ? Ref::inside : Ref::outside;
    }

    // Least distance (real units) along the row from (px, py) to a crossing.
    double nearestCrossing(int64_t px, int64_t py) const {
        double best = 1e300;
        edges([&](int64_t xA, int64_t yA, int64_t xB, int64_t yB) {
            if ((yA < py) == (yB < py)) return;
            const double num = static_cast<double>((xA - px) * (yB - yA) + (py - yA) * (xB - xA));
            best = std::min(best, std::fabs(num / static_cast<double>(yB - yA)) / kRes);
        });
        return best;
    }

    bool onAnyEdge(int64_t px, int64_t py) const {
        bool on = false;
        edges([&](int64_t xA, int64_t yA, int64_t xB, int64_t yB) {
            const int64_t cross = (xB - xA) * (py - yA) - (yB - yA) * (px - xA);
            if (cross == 0 && px >= std::min(xA, xB) && px <= std::max(xA, xB) && py >= std::min(yA, yB) &&
                py <= std::max(yA, yB)) {
                on = true;
            }
        });
        return on;
    }

    bool onSecondVertexRow(int64_t py) const {
        for (int32_t p = 1; p <= r.npoly; ++p) {
            if (scaled(r.Y[r.starts[p] + 1]) == py) return true;
        }
        return false;
    }
};

// ---------------------------------------------------------------------------
// Random regions.

struct Maker {
    std::mt19937 rng;
    double dx = 1, dy = 1;

    explicit Maker(uint32_t seed) : rng(seed) {}

    double uni(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); }
    int irand(int a, int b) { return std::uniform_int_distribution<int>(a, b)(rng); }
    bool chance(double p) { return uni(0, 1) < p; }

    // Snap to 1/8, or now and then onto a grid line (a multiple of the cell size).
    double snap(double v, double cell) {
        v = std::clamp(v, -16.0, 112.0);
        if (chance(0.3)) return std::clamp(std::round(v / cell) * cell, -16.0, 112.0);
        return std::round(v * kRes) / kRes;
    }
    std::pair<double, double> point(double x, double y) { return {snap(x, dx), snap(y, dy)}; }

    Ring star(double cx, double cy, double rmin, double rmax, int nv) {
        std::vector<double> a(static_cast<std::size_t>(nv));
        for (auto& v : a) v = uni(0, 2 * std::numbers::pi);
        std::sort(a.begin(), a.end());
        Ring ring;
        for (double t : a) {
            const double rad = uni(rmin, rmax);
            ring.push_back(point(cx + rad * std::cos(t), cy + rad * std::sin(t)));
        }
        return ring;
    }
    Ring rectangle() {
        const double x0 = dx * irand(-3, 40), y0 = dy * irand(-3, 40);
        const double x1 = std::min(x0 + dx * irand(1, 30), 112.0), y1 = std::min(y0 + dy * irand(1, 30), 112.0);
        return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
    }
    Ring soup(int nv) {
        const double cx = uni(0, 80), cy = uni(0, 80), s = uni(3, 40);
        Ring ring;
        for (int k = 0; k < nv; ++k) ring.push_back(point(cx + uni(-s, s), cy + uni(-s, s)));
        return ring;
    }

    TestRegion region() {
        TestRegion r;
        const int parts = irand(1, 3);
        for (int p = 0; p < parts; ++p) {
            const double cx = uni(-5, 90), cy = uni(-5, 90), R = uni(2, 45);
            switch (irand(0, 4)) {
                case 0:  // convex: one radius
                    r.add(star(cx, cy, R, R, irand(3, 24)));
                    break;
                case 1:  // concave star
                    r.add(star(cx, cy, 0.3 * R, R, irand(3, 60)));
                    break;
                case 2:  // star with a hole inside it
                    r.add(star(cx, cy, 0.7 * R, R, irand(5, 50)));
                    r.add(star(cx, cy, 0.1 * R, 0.5 * R, irand(3, 30)));
                    break;
                case 3:  // rectangle on grid lines
                    r.add(rectangle());
                    break;
                default:  // self-crossing vertex soup
                    r.add(soup(irand(3, 25)));
                    break;
            }
        }
        return r;
    }
};

struct Checked {
    long compared = 0, skipped = 0;
};

TEST(PolygonProperty, GridFillAndPointTestsAgreeWithExactReference) {
    Maker mk(20240611u);
    const double cells[] = {0.5, 1.0, 2.0};
    Checked fill8, fill4, list8, list4, single8, single4;
    long insideSeen = 0;

    for (int trial = 0; trial < 400; ++trial) {
        mk.dx = cells[mk.irand(0, 2)];
        mk.dy = cells[mk.irand(0, 2)];
        const double dx = mk.dx, dy = mk.dy;
        const TestRegion r = mk.region();
        const Reference ref{r};
        const int32_t dimJ = mk.irand(5, 60), dimI = mk.irand(5, 60);
        const int32_t offJ = mk.irand(0, 3), offI = mk.irand(0, 3);
        const bool accumulate = mk.chance(0.5);
        const std::size_t size = static_cast<std::size_t>(dimJ) * static_cast<std::size_t>(dimI);
        SCOPED_TRACE(::testing::Message() << "trial " << trial << " dx " << dx << " dy " << dy << " grid " << dimJ
                                          << "x" << dimI << " off " << offJ << "," << offI);

        // 64-bit fill, with constant values added onto a background of 10.
        std::vector<uint8_t> inside(size, 2), crossings(size, 0);
        std::vector<float> rvalues(size, 10.0f);
        int32_t jMin, iMin, jMax, iMax, count;
        grid_inside_polygon_8(inside.data(), crossings.data(), nullptr, rvalues.data(), dimJ, dimI, dx, dy, offJ,
                              offI, true, true, false, true, 0.5f, accumulate, jMin, iMin, jMax, iMax, count,
                              r.X.data(), r.Y.data(), nullptr, r.N(), r.ends.data(), r.npoly);

        // 32-bit fill of the same region.
        const auto xf = r.Xf(), yf = r.Yf();
        std::vector<uint8_t> inside4(size, 2), crossings4(size, 0);
        int32_t jMin4, iMin4, jMax4, iMax4, count4;
        grid_inside_polygon(inside4.data(), crossings4.data(), nullptr, nullptr, dimJ, dimI, static_cast<float>(dx),
                            static_cast<float>(dy), offJ, offI, true, false, false, true, 0.0f, false, jMin4, iMin4,
                            jMax4, iMax4, count4, xf.data(), yf.data(), nullptr, r.N(), r.ends.data(), r.npoly);
        EXPECT_EQ(jMin4, jMin);
        EXPECT_EQ(jMax4, jMax);
        EXPECT_EQ(iMin4, iMin);
        EXPECT_EQ(iMax4, iMax);

        // Every grid point as a point list, for the list forms.
        std::vector<double> px(1, 0.0), py(1, 0.0);
        std::vector<float> pxf(1, 0.0f), pyf(1, 0.0f);
        for (int32_t i = 1; i <= dimI; ++i) {
            for (int32_t j = 1; j <= dimJ; ++j) {
                px.push_back(i * dx);
                py.push_back(j * dy);
                pxf.push_back(static_cast<float>(i * dx));
                pyf.push_back(static_cast<float>(j * dy));
            }
        }
        const int32_t npoints = static_cast<int32_t>(size);
        std::vector<int32_t> flags(size + 1, -1), flags4(size + 1, -1);
        int32_t listCount = -1, listCount4 = -1;
        grid_inside_polygon_points_8(flags.data(), px.data(), py.data(), npoints, listCount, r.X.data(), r.Y.data(),
                                     r.N(), r.ends.data(), r.npoly);
        grid_inside_polygon_points(flags4.data(), pxf.data(), pyf.data(), npoints, listCount4, xf.data(), yf.data(),
                                   r.N(), r.ends.data(), r.npoly);

        const bool windowEmpty = iMin > iMax || jMin > jMax;
        if (!windowEmpty) {
            EXPECT_GE(jMin, std::max(1, offJ));
            EXPECT_LE(jMax, dimJ - offJ);
            EXPECT_GE(iMin, std::max(1, offI));
            EXPECT_LE(iMax, dimI - offI);
        }
        int32_t marked = 0, marked4 = 0, listOnes = 0, listOnes4 = 0;
        const double xmin = r.xmin();
        for (int32_t i = 1; i <= dimI; ++i) {
            for (int32_t j = 1; j <= dimJ; ++j) {
                const std::size_t at = gridIndex(j, i, dimJ);
                const int32_t k = static_cast<int32_t>(at) + 1;  // list index of this point
                const bool inWindow = !windowEmpty && j >= jMin && j <= jMax && i >= iMin && i <= iMax;
                const bool valid = j >= std::max(1, offJ) && j <= dimJ - offJ && i >= std::max(1, offI) &&
                                   i <= dimI - offI;
                // Outside the window nothing is touched; inside it only 0 or 1.
                if (!inWindow) {
                    ASSERT_EQ(inside[at], 2) << j << "," << i;
                    ASSERT_EQ(rvalues[at], 10.0f);
                    ASSERT_EQ(inside4[at], 2) << j << "," << i;
                } else {
                    ASSERT_LE(inside[at], 1);
                    ASSERT_LE(inside4[at], 1);
                }
                marked += inside[at] == 1;
                marked4 += inside4[at] == 1;
                listOnes += flags[k];
                listOnes4 += flags4[k];
                ASSERT_TRUE(flags[k] == 0 || flags[k] == 1);

                const int64_t sx = scaled(i * dx), sy = scaled(j * dy);
                const Ref want = ref.classify(sx, sy);
                const double gap = ref.nearestCrossing(sx, sy);

                // List forms: every grid point.
                if (want == Ref::tie) {
                    ++list8.skipped;
                } else {
                    ++list8.compared;
                    EXPECT_EQ(flags[k], want == Ref::inside ? 1 : 0) << "points_8 at " << j << "," << i;
                }
                if (gap <= 0.05) {
                    ++list4.skipped;
                } else {
                    ++list4.compared;
                    EXPECT_EQ(flags4[k], want == Ref::inside ? 1 : 0) << "points at " << j << "," << i;
                }

                // Fills: every point the window may hold.
                if (valid) {
                    if (want == Ref::tie) {
                        ++fill8.skipped;
                    } else {
                        ++fill8.compared;
                        insideSeen += want == Ref::inside;
                        EXPECT_EQ(inside[at] == 1, want == Ref::inside) << "fill_8 at " << j << "," << i;
                        const float wantValue = want == Ref::inside ? (accumulate ? 10.5f : 0.5f) : 10.0f;
                        EXPECT_EQ(rvalues[at], wantValue) << j << "," << i;
                    }
                    if (gap <= 0.05) {
                        ++fill4.skipped;
                    } else {
                        ++fill4.compared;
                        EXPECT_EQ(inside4[at] == 1, want == Ref::inside) << "fill at " << j << "," << i;
                    }
                }

                // Single-point tests at points on no edge.
                if (ref.onAnyEdge(sx, sy) || ref.onSecondVertexRow(sy) || i * dx == xmin - 10) {
                    ++single8.skipped;
                    ++single4.skipped;
                    continue;
                }
                ASSERT_NE(want, Ref::tie);
                ++single8.compared;
                ++single4.compared;
                EXPECT_EQ(INSIDE_POLYGON_8(i * dx, j * dy, r.X.data(), r.Y.data(), r.N(), xmin, r.ends.data(),
                                           r.npoly),
                          want == Ref::inside)
                    << "INSIDE_POLYGON_8 at " << j << "," << i;
                EXPECT_EQ(INSIDE_POLYGON(static_cast<float>(i * dx), static_cast<float>(j * dy), xf.data(), yf.data(),
                                         r.N(), static_cast<float>(xmin), r.ends.data(), r.npoly),
                          want == Ref::inside)
                    << "INSIDE_POLYGON at " << j << "," << i;
            }
        }
        EXPECT_EQ(count, marked);
        EXPECT_EQ(count4, marked4);
        EXPECT_EQ(listCount, listOnes);
        EXPECT_EQ(listCount4, listOnes4);
        if (::testing::Test::HasFailure()) break;  // one trial's report is enough to read
    }

    // The comparisons must have had something to compare.
    EXPECT_GT(insideSeen, 30000);
    for (const Checked* c : {&fill8, &list8, &single8, &fill4, &list4, &single4}) {
        EXPECT_GT(c->compared, 20 * c->skipped) << "compared " << c->compared << " skipped " << c->skipped;
    }
}

}  // namespace
