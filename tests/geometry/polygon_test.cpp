// Region membership on many random regions: convex, concave, self-crossing,
// with holes, with vertices and edges on grid lines; then the failure reports.
//
// What is compared. Coordinates are multiples of 1/8 and cells 0.5, 1 or 2, so
// an exact integer reference decides every grid point by the grid rule: an edge
// crosses the row line through a point when one end is below it and the other
// at or above it (a vertex on the row counts as above, a horizontal edge never
// crosses); a crossing counts when strictly left of the point (one at exactly
// x = c * dx belongs to column c + 1); odd means inside. The 64-bit fill (marks
// and values) equals it at every grid point but ties, points on a sloping edge,
// whose side depends on the rounding of the crossing (its error is ~1e-13;
// other crossings lie 1/8192 or more away). Vertical edges cross exactly.
// INSIDE_POLYGON_8 equals it at every point on no edge, except on rows through
// a polygon's second vertex (its walk starts there with no history of the path)
// and at x = xmin - 10, where the ray shrinks to the point itself.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "geometry/gridline.hpp"
#include "geometry/polygon.hpp"
#include "runtime/units.hpp"

namespace {

using Ring = std::vector<std::pair<double, double>>;  // points without the closing repeat

// A region in the slot layout of the membership routines: each ring's points,
// the first repeated, then a copy of the second; ends[p] is the slot of the
// repeat. Element 0 of each array is unused.
struct Region {
    std::vector<double> X{0.0}, Y{0.0};
    std::vector<int32_t> ends{0}, starts{0};
    int32_t npoly = 0;

    void add(const Ring& ring) {
        starts.push_back(N() + 1);
        for (std::size_t k = 0; k <= ring.size() + 1; ++k) {  // the first point again, then the second
            X.push_back(ring[k % ring.size()].first);
            Y.push_back(ring[k % ring.size()].second);
        }
        ends.push_back(N() - 1);
        ++npoly;
    }
    int32_t N() const { return static_cast<int32_t>(X.size()) - 1; }
};

int64_t scaled(double v) { return std::llround(v * 8); }

struct Reference {
    bool inside = false, tie = false, onEdge = false;  // tie: on a sloping edge
};

Reference classify(const Region& r, double x, double y) {
    const int64_t px = scaled(x), py = scaled(y);
    Reference out;
    int crossings = 0;
    for (int32_t p = 1; p <= r.npoly; ++p) {
        for (int32_t s = r.starts[p]; s < r.ends[p]; ++s) {
            const int64_t xA = scaled(r.X[s]), yA = scaled(r.Y[s]), xB = scaled(r.X[s + 1]), yB = scaled(r.Y[s + 1]);
            out.onEdge |= (xB - xA) * (py - yA) == (yB - yA) * (px - xA) && px >= std::min(xA, xB) &&
                          px <= std::max(xA, xB) && py >= std::min(yA, yB) && py <= std::max(yA, yB);
            if ((yA < py) == (yB < py)) continue;
            const int64_t num = (xA - px) * (yB - yA) + (py - yA) * (xB - xA), den = yB - yA;  // x - px = num / den
            out.tie |= num == 0 && xA != xB;
            crossings += (num < 0) != (den < 0) && num != 0;
        }
    }
    out.inside = crossings & 1;
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
    // Points round a centre; in random order the ring crosses itself.
    Ring star(double cx, double cy, double rmin, double rmax, int nv, bool sorted = true) {
        std::vector<double> a(static_cast<std::size_t>(nv));
        for (auto& v : a) v = uni(0, 2 * std::numbers::pi);
        if (sorted) std::sort(a.begin(), a.end());
        Ring ring;
        for (double t : a) {
            const double rad = uni(rmin, rmax);
            ring.emplace_back(snap(cx + rad * std::cos(t), dx), snap(cy + rad * std::sin(t), dy));
        }
        return ring;
    }
    Region make() {
        Region r;
        for (int parts = irand(1, 3); parts > 0; --parts) {
            const double cx = uni(-5, 90), cy = uni(-5, 90), R = uni(2, 45);
            switch (irand(0, 4)) {
                case 0: r.add(star(cx, cy, R, R, irand(3, 24))); break;               // convex
                case 1: r.add(star(cx, cy, 0.3 * R, R, irand(3, 60))); break;         // concave
                case 2: r.add(star(cx, cy, 0.1 * R, R, irand(3, 25), false)); break;  // self-crossing
                case 3:                                                               // with a hole
                    r.add(star(cx, cy, 0.7 * R, R, irand(5, 50)));
                    r.add(star(cx, cy, 0.1 * R, 0.5 * R, irand(3, 30)));
                    break;
                default: {  // rectangle on grid lines
                    const double x0 = dx * irand(-3, 40), y0 = dy * irand(-3, 40);
                    const double x1 = x0 + dx * irand(1, 30), y1 = y0 + dy * irand(1, 30);
                    r.add({{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
                }
            }
        }
        return r;
    }
};

TEST(PolygonProperty, FillAndSinglePointAgreeWithExactReference) {
    Maker mk;
    long compared[2] = {}, skipped[2] = {}, insideSeen = 0;  // fill, single point
    for (int trial = 0; trial < 400 && !::testing::Test::HasFailure(); ++trial) {
        const double dx = mk.dx = std::ldexp(1.0, mk.irand(-1, 1)), dy = mk.dy = std::ldexp(1.0, mk.irand(-1, 1));
        const Region r = mk.make();
        const double xmin = *std::min_element(r.X.begin() + 1, r.X.end());
        const int32_t dimJ = mk.irand(5, 60), dimI = mk.irand(5, 60), offJ = mk.irand(0, 3), offI = mk.irand(0, 3);
        const bool accumulate = mk.irand(0, 1);
        const std::size_t size = std::size_t(dimJ * dimI);
        SCOPED_TRACE(::testing::Message() << "trial " << trial);

        std::vector<uint8_t> in(size, 2), scratch(size);
        std::vector<float> values(size, 10.0f);
        int32_t jMin, iMin, jMax, iMax, count;
        grid_inside_polygon_8(in.data(), scratch.data(), nullptr, values.data(), dimJ, dimI, dx, dy, offJ, offI, true,
                              true, false, true, 0.5f, accumulate, jMin, iMin, jMax, iMax, count, r.X.data(),
                              r.Y.data(), nullptr, r.N(), r.ends.data(), r.npoly);

        int32_t marked = 0;
        for (int32_t i = 1; i <= dimI; ++i) {
            for (int32_t j = 1; j <= dimJ; ++j) {
                const std::size_t at = gridIndex(j, i, dimJ);
                const bool inWindow = j >= jMin && j <= jMax && i >= iMin && i <= iMax;
                const bool inMargins =
                    j >= std::max(1, offJ) && j <= dimJ - offJ && i >= std::max(1, offI) && i <= dimI - offI;
                ASSERT_TRUE(inWindow ? in[at] <= 1 : in[at] == 2 && values[at] == 10) << j << "," << i;
                ASSERT_TRUE(!inWindow || inMargins);
                marked += in[at] == 1;

                const Reference ref = classify(r, i * dx, j * dy);
                if (ref.tie) {
                    ++skipped[0];
                } else {
                    ++compared[0];
                    insideSeen += ref.inside;
                    if (inMargins) {
                        EXPECT_EQ(in[at] == 1, ref.inside) << "fill at " << j << "," << i;
                        EXPECT_EQ(values[at], ref.inside ? (accumulate ? 10.5f : 0.5f) : 10.0f) << j << "," << i;
                    }
                }
                bool secondVertexRow = false;
                for (int32_t p = 1; p <= r.npoly; ++p) secondVertexRow |= r.Y[r.starts[p] + 1] == j * dy;
                if (ref.onEdge || secondVertexRow || i * dx == xmin - 10) {
                    ++skipped[1];
                    continue;
                }
                ++compared[1];
                EXPECT_EQ(INSIDE_POLYGON_8(i * dx, j * dy, r.X.data(), r.Y.data(), r.N(), xmin, r.ends.data(), r.npoly),
                          ref.inside)
                    << "INSIDE_POLYGON_8 at " << j << "," << i;
            }
        }
        EXPECT_EQ(count, marked);
    }
    EXPECT_GT(insideSeen, 30000);
    for (int c = 0; c < 2; ++c) EXPECT_GT(compared[c], 20 * skipped[c]) << c;
}

// The library's failure reports: exactly one line on the console, then the
// orderly exit with status 0. Each statement sends standard output to the
// error stream, which a death test reads, and turns the exit pause off. Of the
// routines that share their failing code, one stands for all.
TEST(GeometryFailureDeathTest, ReportsAndExits) {
    auto sent = [](const char* to) {
        return "Invalid number of polygons in region sent to " + std::string(to) +
               " - contact the reachmap maintainers\n";
    };
    const std::string cells = " HX cells per HX polyline segment.  Contact the reachmap maintainers.\n";
    // Two squares in the slots, but npoly = 1: ends describes only the first.
    const double X[] = {0, 0, 4, 4, 0, 0, 4, 6, 8, 8, 6, 6, 8}, Y[] = {0, 0, 0, 4, 4, 0, 0, 0, 0, 4, 4, 0, 0};
    const float xf[] = {0, 0, 4, 4, 0, 0, 4, 6, 8, 8, 6, 6, 8}, yf[] = {0, 0, 0, 4, 4, 0, 0, 0, 0, 4, 4, 0, 0};
    const int32_t N = 12, ends[] = {0, 5, 11};
    ASSERT_TRUE(INSIDE_POLYGON_8(7, 2, X, Y, N, -1, ends, 2));  // described fully, it is fine
    uint8_t in[100], cr[100];
    int32_t a, b, c, d, n, flags[2], jc[11], ic[11];
    const struct {
        std::function<void()> run;
        std::string report;
    } cases[] = {
        {[&] { INSIDE_POLYGON(7, 2, xf, yf, N, -1, ends, 1); }, sent("inside_polygon routine [1]")},
        {[&] { inside_polygon_or_edge_8(7, 2, X, Y, N, -1, ends, 1); }, sent("inside_polygon routine [1]")},
        {[&] { INSIDE_POLYGON_8(7, 2, X, Y, N, -1, ends, 1); }, sent("inside_polygon routine [2]")},
        {[&] {
             grid_inside_polygon(in, cr, nullptr, nullptr, 10, 10, 1.0f, 1.0f, 0, 0, true, false, false, true, 0, false,
                                 a, b, c, d, n, xf, yf, nullptr, N, ends, 1);
         },
         sent("grid_inside_polygon routine [1]")},
        {[&] { grid_inside_polygon_points(flags, xf, yf, 1, n, xf, yf, N, ends, 1); },
         sent("grid_inside_polygon routine [4]")},
        {[&] { grid_inside_polygon_points_8(flags, X, Y, 1, n, X, Y, N, ends, 1); },
         sent("grid_inside_polygon routine [5]")},
        // Ten cells along row 1 exceed a limit of nine; they fill one of ten, and the run goes on.
        {[&] { gridline_5(0.2f, 0.3f, 9.7f, 0.3f, false, 1, 1, a, b, c, d, n, jc, ic, 9, 0, 0); },
         "SORRY - Exceeded limit of        9" + cells},
        {[&] { gridline_5(0.2f, 0.3f, 9.7f, 0.3f, false, 1, 1, a, b, c, d, n, jc, ic, 10, 0, 0), std::exit(0); }, ""},
        // A limit of 0 cannot hold even the start cell of a segment without length.
        {[&] { gridline(1, 1, 1, 1, 1, 1, a, b, c, d, n, jc, ic, 0); }, "SORRY - Exceeded limit of        0" + cells},
    };
    for (const auto& k : cases) {
        EXPECT_EXIT((::dup2(STDERR_FILENO, STDOUT_FILENO), fileUnitSettings.pauseOnPrematureExit = false, k.run()),
                    ::testing::ExitedWithCode(0), ::testing::Eq(k.report));
    }
}

}  // namespace
