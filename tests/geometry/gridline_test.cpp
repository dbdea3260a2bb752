#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>
#include <vector>

#include "geometry/gridline.hpp"

namespace {

using Cells = std::vector<std::pair<int32_t, int32_t>>;  // (j, i)

// The cells of one walk of gridline_5. (A list too short would end the run.)
Cells walk(float x1, float y1, float x2, float y2, float dx, float dy) {
    std::vector<int32_t> jc(1001), ic(jc);
    int32_t jFirst = 0, jLast = 0, iFirst = 0, iLast = 0, n = -1;
    gridline_5(x1, y1, x2, y2, false, dx, dy, jFirst, jLast, iFirst, iLast, n, jc.data(), ic.data(), 1000, 0, 0);
    Cells cells;
    for (int32_t k = 1; k <= n; ++k) cells.emplace_back(jc[std::size_t(k)], ic[std::size_t(k)]);
    return cells;
}

// A plain reference for gridline_5 in double arithmetic on the same float
// inputs (their differences are exact there). u is the dominant axis, v the
// other: one centre line of u after the other; a line is crossed when strictly
// past the start and not past the end, and gives the cell of the crossing; at
// the walk's first and last line, when not crossed, the crossing with the
// first (last) v centre line inside the present u band gives that cell.
//
// What is compared: the whole cell list, exactly, except for segments with a
// decision within float rounding of a tie (no reference list): a crossing within
// 1e-3 of a cell boundary, a line within rounding of the end without being on
// it, a fall-back crossing within 1e-3 of its band's ends, or nearly equal
// extents. Exact ties are compared where the routine's arithmetic is exact:
// lines at the very start or end, axis-parallel segments, and 45-degree
// segments between multiples of 1/256.
std::optional<Cells> referenceWalk(float fx1, float fy1, float fx2, float fy2, float fdx, float fdy) {
    Cells cells;
    bool ambiguous = false;
    if (std::fabs(double(fx1) - fx2) < 1e-4f && std::fabs(double(fy1) - fy2) < 1e-4f) return cells;
    const double ax = std::fabs(double(fx2) - fx1), ay = std::fabs(double(fy2) - fy1);
    const bool steep = ay > ax;
    if (ax != ay && std::fabs(ax - ay) < 1e-6 * std::max(ax, ay)) ambiguous = true;
    auto on256 = [](double v) { return v == std::round(v * 256) / 256 && std::fabs(v) < 1000; };
    const bool exact45 = ax == ay && on256(fx1) && on256(fy1) && on256(fx2) && on256(fy2);
    const double u1 = steep ? fy1 : fx1, u2 = steep ? fy2 : fx2, du = steep ? fdy : fdx;
    const double v1 = steep ? fx1 : fy1, v2 = steep ? fx2 : fy2, dv = steep ? fdx : fdy;
    auto cell = [](double v, double d) { return int32_t(std::trunc(v / d)) + 1; };
    auto nearTie = [&](double q) { return !exact45 && std::round(q) != 0 && std::fabs(q - std::round(q)) < 1e-3; };
    auto crossed = [&](double c, double a, double b) {  // the line at c, walking from a to b
        if (a == b) return false;
        if (c != b && std::fabs(c - b) < 1e-5 * (1 + std::fabs(b - a))) ambiguous = true;
        return c != a && (c > a) == (b > a) && std::fabs(c - a) <= std::fabs(b - a);
    };
    auto meet = [](double c, double a1, double a2, double b1, double b2) {
        return b1 + (c - a1) * (b2 - b1) / (a2 - a1);
    };
    auto add = [&](int32_t cu, int32_t cv) { cells.emplace_back(steep ? cu : cv, steep ? cv : cu); };

    const int32_t cu1 = cell(u1, du), cu2 = cell(u2, du), cv1 = cell(v1, dv), cv2 = cell(v2, dv);
    const int32_t m = std::max(std::abs(cu2 - cu1), std::abs(cv2 - cv1)) + 1, step = cu2 >= cu1 ? 1 : -1;
    for (int32_t k = 1; k <= m; ++k) {
        const double uc = (cu1 + (k - 1) * step - 0.5) * du;
        if (crossed(uc, u1, u2)) {
            const double v = meet(uc, u1, u2, v1, v2);
            if (v1 != v2 && nearTie(v / dv)) ambiguous = true;
            add(cell(uc, du), cell(v, dv));
        } else if (k == 1 || k == m) {
            const double vc = ((k == 1 ? cv1 : cv2) - 0.5) * dv;
            if (!crossed(vc, v1, v2)) continue;
            const double q = (meet(vc, v1, v2, u1, u2) - (uc - 0.5 * du)) / du;  // place in the band, 0 to 1
            if (nearTie(q) || (!exact45 && std::fabs(q) < 1e-3)) ambiguous = true;
            if (q > 0 && q <= 1) add(cell(uc, du), cell(vc, dv));
        }
    }
    return ambiguous ? std::nullopt : std::optional(cells);
}

TEST(Gridline, FiveAgreesWithReferenceWalk) {
    std::mt19937 rng(77031u);
    auto uni = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); };
    auto centre = [](double v, double d) { return (std::floor(v / d) + 0.5) * d; };
    long compared = 0, skipped = 0;
    for (int trial = 0; trial < 60000; ++trial) {
        const float dx = std::ldexp(1.0f, int(std::floor(uni(-2, 2)))),
                    dy = std::ldexp(1.0f, int(std::floor(uni(-2, 2))));
        const double span = trial % 3 == 0 ? 1.5 : 30.0;
        double x1 = uni(-2, 40) * dx, y1 = uni(-2, 40) * dy, x2 = x1 + uni(-span, span) * dx,
               y2 = y1 + uni(-span, span) * dy;
        switch (trial % 8) {  // ends on centre lines, on corners, axis-parallel, 45 degrees
            case 1: y1 = centre(y1, dy), x2 = centre(x2, dx); break;
            case 2: x1 = centre(x1, dx), y1 = centre(y1, dy), x2 = centre(x2, dx), y2 = centre(y2, dy); break;
            case 3: x1 = std::round(x1 / dx) * dx, y1 = std::round(y1 / dy) * dy, x2 = std::round(x2 / dx) * dx; break;
            case 4: (trial & 8 ? y2 : x2) = (trial & 8 ? y1 : x1); break;
            case 5: y1 = y2 = centre(y1, dy); break;
            case 6: {
                const double s = std::round(uni(-20, 20) * 4) / 4;
                x1 = std::round(x1 * 4) / 4, y1 = std::round(y1 * 4) / 4, x2 = x1 + s, y2 = y1 + (trial & 8 ? s : -s);
                break;
            }
            default: break;
        }
        const auto ref = referenceWalk(float(x1), float(y1), float(x2), float(y2), dx, dy);
        if (!ref) {
            ++skipped;
            continue;
        }
        ++compared;
        ASSERT_EQ(walk(float(x1), float(y1), float(x2), float(y2), dx, dy), *ref)
            << float(x1) << "," << float(y1) << " to " << float(x2) << "," << float(y2) << " cells " << dx << "x" << dy;
    }
    // Most skips are centre-to-centre segments, whose crossings fall exactly on
    // cell boundaries through slopes like 1/3.
    EXPECT_GT(compared, 20 * skipped) << skipped;
}

}  // namespace
