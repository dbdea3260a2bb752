// gridline_5 against a plain reference walk on many random segments.
//
// The reference works on the same float inputs in double arithmetic, where
// the differences of the inputs are exact, and follows the documented walk:
// along the dominant axis, one centre line after the other; a centre line is
// crossed when it lies strictly past the segment's start and not past its
// end; the cell is that of the crossing point; at the first and last line of
// the walk, when the line is not crossed, the segment's crossing with the
// other axis's centre line inside the present row (column) gives that cell.
//
// What is compared: the whole cell list, exactly. The routine computes in
// single precision, so a segment is left out when one of its decisions lies
// within rounding of a tie in the reference: a crossing coordinate within
// 1e-3 of a cell boundary, a centre line within rounding of the segment's end
// without being on it, a fall-back crossing within 1e-3 of the end of its
// piece of centre line, or extents that nearly tie for the steep/flat choice.
// Where the routine's arithmetic is exact, ties are compared too: segments
// parallel to an axis, and segments at exactly 45 degrees between multiples
// of 1/256. Centre lines exactly at the start or end are not ties:
// the routine decides them exactly, and many segments are built that way.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "gridline_walk.hpp"

namespace {

struct Reference {
    Cells cells;
    bool ambiguous = false;
};

int32_t cellOf(double v, double d) { return static_cast<int32_t>(std::trunc(v / d)) + 1; }

bool nearCellBoundary(double v, double d) {
    const double q = v / d;
    const double nearest = std::round(q);
    return nearest != 0.0 && std::fabs(q - nearest) < 1e-3;
}

Reference referenceWalk(float fx1, float fy1, float fx2, float fy2, float fdx, float fdy) {
    Reference ref;
    const double x1 = fx1, y1 = fy1, x2 = fx2, y2 = fy2, dx = fdx, dy = fdy;
    if (std::fabs(x1 - x2) < 1e-4f && std::fabs(y1 - y2) < 1e-4f) return ref;  // no length

    const int32_t i1 = cellOf(x1, dx), j1 = cellOf(y1, dy), i2 = cellOf(x2, dx), j2 = cellOf(y2, dy);
    const double ax = std::fabs(x2 - x1), ay = std::fabs(y2 - y1);
    auto on256 = [](double v) { return v == std::round(v * 256) / 256 && std::fabs(v) < 1000; };
    const bool exactDiagonal = ax == ay && on256(x1) && on256(y1) && on256(x2) && on256(y2);
    if (ax != ay && std::fabs(ax - ay) < 1e-6 * std::max(ax, ay)) ref.ambiguous = true;
    const bool steep = ay > ax;
    const int32_t m = std::max(std::abs(j2 - j1), std::abs(i2 - i1)) + 1;

    // Crossing of the line u = c by the segment running from u1 to u2: strictly
    // past the start, not past the end.
    auto crossed = [&](double c, double u1, double u2) {
        if (u1 == u2) return false;
        if (c != u2 && std::fabs(c - u2) < 1e-5 * (1.0 + std::fabs(u2 - u1))) ref.ambiguous = true;
        const double from = c - u1, span = u2 - u1;
        return from != 0.0 && (from > 0) == (span > 0) && std::fabs(from) <= std::fabs(span);
    };
    // The other coordinate where the segment meets u = c.
    auto along = [](double c, double u1, double u2, double v1, double v2) { return v1 + (c - u1) * (v2 - v1) / (u2 - u1); };

    if (steep) {
        const int32_t step = j2 >= j1 ? 1 : -1;
        for (int32_t k = 1; k <= m; ++k) {
            const int32_t j = j1 + (k - 1) * step;
            const double yc = (j - 0.5) * dy;
            if (crossed(yc, y1, y2)) {
                const double xp = along(yc, y1, y2, x1, x2);
                if (x1 != x2 && !exactDiagonal && nearCellBoundary(xp, dx)) ref.ambiguous = true;
                ref.cells.emplace_back(cellOf(yc, dy), cellOf(xp, dx));
            } else if (k == 1 || k == m) {
                const double xc = ((k == 1 ? i1 : i2) - 0.5) * dx;
                if (crossed(xc, x1, x2)) {
                    const double y = along(xc, x1, x2, y1, y2);
                    const double lo = yc - 0.5 * dy, hi = yc + 0.5 * dy;
                    if (!exactDiagonal && (std::fabs(y - lo) < 1e-3 * dy || std::fabs(y - hi) < 1e-3 * dy)) {
                        ref.ambiguous = true;
                    }
                    if (y > lo && y <= hi) ref.cells.emplace_back(cellOf(yc, dy), cellOf(xc, dx));
                }
            }
        }
    } else {
        const int32_t step = i2 >= i1 ? 1 : -1;
        for (int32_t k = 1; k <= m; ++k) {
            const int32_t i = i1 + (k - 1) * step;
            const double xc = (i - 0.5) * dx;
            if (crossed(xc, x1, x2)) {
                const double yp = along(xc, x1, x2, y1, y2);
                if (y1 != y2 && !exactDiagonal && nearCellBoundary(yp, dy)) ref.ambiguous = true;
                ref.cells.emplace_back(cellOf(yp, dy), cellOf(xc, dx));
            } else if (k == 1 || k == m) {
                const double yc = ((k == 1 ? j1 : j2) - 0.5) * dy;
                if (crossed(yc, y1, y2)) {
                    const double x = along(yc, y1, y2, x1, x2);
                    const double lo = xc - 0.5 * dx, hi = xc + 0.5 * dx;
                    if (!exactDiagonal && (std::fabs(x - lo) < 1e-3 * dx || std::fabs(x - hi) < 1e-3 * dx)) {
                        ref.ambiguous = true;
                    }
                    if (x > lo && x <= hi) ref.cells.emplace_back(cellOf(yc, dy), cellOf(xc, dx));
                }
            }
        }
    }
    return ref;
}

TEST(GridlineProperty, Gridline5AgreesWithReferenceWalk) {
    std::mt19937 rng(77031u);
    auto uni = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); };
    auto irand = [&](int a, int b) { return std::uniform_int_distribution<int>(a, b)(rng); };
    const float sizes[] = {0.5f, 1.0f, 2.0f, 0.25f};

    long compared = 0, skipped = 0, nonEmpty = 0, fromCentre = 0;
    for (int trial = 0; trial < 60000; ++trial) {
        const float dx = sizes[irand(0, 3)], dy = sizes[irand(0, 3)];
        const double span = trial % 3 == 0 ? 1.5 : 30.0;  // short and long segments
        double x1 = uni(-2, 40) * dx, y1 = uni(-2, 40) * dy;
        double x2 = x1 + uni(-span, span) * dx, y2 = y1 + uni(-span, span) * dy;
        // Ends on centre lines (one axis or both), on cell corners, axis-parallel
        // and 45-degree segments.
        auto centre = [](double v, double d) { return (std::floor(v / d) + 0.5) * d; };
        auto corner = [](double v, double d) { return std::round(v / d) * d; };
        switch (trial % 10) {
            case 1: y1 = centre(y1, dy); break;
            case 2: x2 = centre(x2, dx); break;
            case 3:
                x1 = centre(x1, dx);
                y1 = centre(y1, dy);
                x2 = centre(x2, dx);
                y2 = centre(y2, dy);
                break;
            case 4:
                y2 = centre(y2, dy);
                x1 = centre(x1, dx);
                break;
            case 5:
                x1 = corner(x1, dx);
                y1 = corner(y1, dy);
                x2 = corner(x2, dx);
                break;
            case 6:  // axis-parallel
                if (irand(0, 1)) {
                    y2 = y1;
                } else {
                    x2 = x1;
                }
                break;
            case 7: y1 = y2 = centre(y1, dy); break;                            // along a row centre line
            case 8: {
                const double s = std::round(uni(-20, 20) * 4) / 4;  // exact 45 degrees
                x1 = std::round(x1 * 4) / 4;
                y1 = std::round(y1 * 4) / 4;
                x2 = x1 + s;
                y2 = y1 + (irand(0, 1) ? s : -s);
                break;
            }
            default: break;
        }
        const float fx1 = static_cast<float>(x1), fy1 = static_cast<float>(y1);
        const float fx2 = static_cast<float>(x2), fy2 = static_cast<float>(y2);
        const Reference ref = referenceWalk(fx1, fy1, fx2, fy2, dx, dy);
        if (ref.ambiguous) {
            ++skipped;
            continue;
        }
        ++compared;
        const Walk w = walk(Member::five, fx1, fy1, fx2, fy2, dx, dy);
        ASSERT_EQ(w.cells, ref.cells) << "segment (" << fx1 << "," << fy1 << ")-(" << fx2 << "," << fy2 << ") dx "
                                      << dx << " dy " << dy << " trial " << trial;
        if (!w.cells.empty()) {
            ++nonEmpty;
            EXPECT_EQ(w.jFirst, w.cells.front().first);
            EXPECT_EQ(w.iLast, w.cells.back().second);
            if (trial % 10 == 3) ++fromCentre;
        }
    }
    // Most skips come from centre-to-centre segments, whose crossings often
    // fall exactly on cell boundaries through slopes like 1/3.
    EXPECT_GT(compared, 20 * skipped) << "skipped " << skipped;
    EXPECT_GT(nonEmpty, compared / 2);
    EXPECT_GT(fromCentre, 3000);
}

}  // namespace
