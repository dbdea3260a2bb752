#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "geometry/gridline.hpp"

namespace {

enum class Member { first, v2, five };
using Cells = std::vector<std::pair<int32_t, int32_t>>;  // (j, i)

struct Walk {
    int32_t jFirst = 77, jLast = 77, iFirst = 77, iLast = 77, n = -1;
    Cells cells;
};

// One walk, with guard entries around the list's `limit` places.
Walk walk(Member m, float x1, float y1, float x2, float y2, float dx = 1, float dy = 1, int32_t jOff = 0,
          int32_t iOff = 0, int32_t limit = 10000, bool single = false) {
    std::vector<int32_t> jc(std::size_t(limit) + 2, -555), ic(jc);
    Walk w;
    if (m == Member::first) {
        gridline(x1, y1, x2, y2, dx, dy, w.jFirst, w.jLast, w.iFirst, w.iLast, w.n, jc.data(), ic.data(), limit);
    } else {
        (m == Member::v2 ? gridline_v2 : gridline_5)(x1, y1, x2, y2, single, dx, dy, w.jFirst, w.jLast, w.iFirst,
                                                     w.iLast, w.n, jc.data(), ic.data(), limit, jOff, iOff);
    }
    EXPECT_TRUE(jc[0] == -555 && jc[std::size_t(limit) + 1] == -555 && ic[std::size_t(limit) + 1] == -555);
    for (int32_t k = 1; k <= w.n; ++k) w.cells.emplace_back(jc[std::size_t(k)], ic[std::size_t(k)]);
    return w;
}

void expectEnds(const Walk& w, int32_t jFirst, int32_t jLast, int32_t iFirst, int32_t iLast) {
    EXPECT_TRUE(w.jFirst == jFirst && w.jLast == jLast && w.iFirst == iFirst && w.iLast == iLast)
        << w.jFirst << " " << w.jLast << " " << w.iFirst << " " << w.iLast;
}

TEST(Gridline, CellListsOfTheThreeMembers) {
    const struct {
        const char* what;
        float x1, y1, x2, y2;
        Cells first, v2, five;
    } cases[] = {
        {"on a row centre line inside one cell", 0.2f, 0.5f, 0.4f, 0.5f, {}, {}, {}},
        {"inside one cell, crossing no centre line", 0.6f, 0.6f, 0.9f, 0.8f, {}, {}, {}},
        {"along a row centre line", 0.2f, 0.5f, 2.7f, 0.5f, {{1, 1}, {1, 2}, {1, 3}}, {{1, 1}, {1, 2}, {1, 3}},
         {{1, 1}, {1, 2}, {1, 3}}},
        // Starting past the first row centre: the end fall-backs differ.
        {"steep end fall-backs", 0.45f, 0.7f, 0.95f, 2.2f, {{1, 1}}, {{1, 1}, {2, 1}, {1, 1}}, {{1, 1}, {2, 1}}},
        // The mirror image; gridline's spans tie and a tie walks by columns.
        {"flat end fall-backs", 0.7f, 0.45f, 2.2f, 0.95f, {{1, 2}}, {{1, 1}, {1, 2}, {1, 1}}, {{1, 1}, {1, 2}}},
        {"from centre line to centre line", 0.3f, 0.5f, 0.3f, 2.5f, {{1, 1}, {2, 1}, {3, 1}}, {{2, 1}, {3, 1}},
         {{2, 1}, {3, 1}}},
        {"the same downward", 0.3f, 2.5f, 0.3f, 0.5f, {{3, 1}, {2, 1}, {1, 1}}, {{2, 1}, {1, 1}}, {{2, 1}, {1, 1}}},
        {"45 degrees is flat", 0.2f, 0.2f, 2.7f, 2.7f, {{1, 1}, {2, 2}, {3, 3}}, {{1, 1}, {2, 2}, {3, 3}},
         {{1, 1}, {2, 2}, {3, 3}}},
        // Cell centre to cell centre; the middle crossing is at y = 1.0 exactly.
        {"centre to centre", 0.5f, 0.5f, 2.5f, 1.5f, {{1, 1}, {2, 2}, {2, 3}}, {{2, 2}, {2, 3}}, {{2, 2}, {2, 3}}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(walk(Member::first, c.x1, c.y1, c.x2, c.y2).cells, c.first) << c.what;
        EXPECT_EQ(walk(Member::v2, c.x1, c.y1, c.x2, c.y2).cells, c.v2) << c.what;
        EXPECT_EQ(walk(Member::five, c.x1, c.y1, c.x2, c.y2).cells, c.five) << c.what;
    }
    // dx = 2, dy = 0.5, and negative coordinates truncating toward zero.
    EXPECT_EQ(walk(Member::five, 0.5f, 0.1f, 1.5f, 1.4f, 2, 0.5f).cells, (Cells{{1, 1}, {2, 1}, {3, 1}}));
    EXPECT_EQ(walk(Member::first, -0.5f, -1.5f, -0.5f, -1.5f).cells, (Cells{{0, 1}}));
}

TEST(Gridline, EndIndicesOffsetsAndLimits) {
    // No length (below 0.0001 on both axes): one cell, or none with the ends filled in.
    expectEnds(walk(Member::first, 2.3f, 1.2f, 2.30005f, 1.20005f), 2, 2, 3, 3);
    expectEnds(walk(Member::first, 0.0f, 0.0f, 0.0001f, 0.0f), 0, 0, 0, 0);  // a real walk meeting nothing
    expectEnds(walk(Member::first, 0.3f, 2.5f, 0.3f, 0.5f), 3, 1, 1, 1);
    for (Member m : {Member::v2, Member::five}) {
        Walk w = walk(m, 2.3f, 1.2f, 2.30005f, 1.20005f, 1, 1, 10, 20);
        EXPECT_EQ(w.n, 0);
        expectEnds(w, 2, 2, 3, 3);  // no offsets
        w = walk(m, 0.3f, 0.5f, 0.3f, 2.5f, 1, 1, 10, 20);
        EXPECT_EQ(w.cells, (Cells{{12, 21}, {13, 21}}));
        expectEnds(w, 12, 13, 21, 21);
        expectEnds(walk(m, 0.6f, 0.6f, 0.9f, 0.8f, 1, 1, 10, 20), 77, 77, 77, 77);  // no cell: entry values kept
        w = walk(m, 0.3f, 0.5f, 5.3f, 2.5f, 1, 1, 10, 20, 10000, true);           // `single`
        EXPECT_EQ(w.cells, (Cells{{1, 1}}));
        expectEnds(w, 1, 3, 1, 6);
    }
    for (Member m : {Member::first, Member::v2, Member::five}) {  // ten cells fill a limit of ten
        EXPECT_EQ(walk(m, 0.2f, 0.3f, 9.7f, 0.3f, 1, 1, 0, 0, 10).cells.size(), 10u);
    }
}

TEST(Gridline, StepHelpers) {
    int32_t i1 = 0, j1 = 3, i2 = 5, j2 = 1, steps = -1, count = -1;  // i1 below 1 takes i2
    float si = 9, sj = 9, a = 9, b = 9;
    gridline_steps(i1, j1, i2, j2, steps, si, sj);
    EXPECT_TRUE(i1 == 5 && steps == 3 && si == 0 && sj == -1) << i1 << " " << steps << " " << si << " " << sj;
    i1 = 1, j1 = 1, i2 = 4, j2 = 3;
    gridline_steps(i1, j1, i2, j2, steps, si, sj);
    EXPECT_TRUE(steps == 4 && si == 1 && sj == 2.0f / 3.0f);
    i1 = 3, j1 = 7, i2 = 0, j2 = -2;  // both second indices take the first ones
    gridline_steps(i1, j1, i2, j2, steps, si, sj);
    EXPECT_TRUE(i2 == 3 && j2 == 7 && steps == 1 && si == 0 && sj == 0);
    gridline_increments(1, 1, 4, 3, count, a, b, 6, 9);
    EXPECT_TRUE(count == 4 && a == 3 && b == 2);
    gridline_increments(5, 5, 5, 5, count, a, b, 6, 9);
    EXPECT_TRUE(count == 1 && a == 0 && b == 0);
}

// A plain reference for gridline_5 in double arithmetic on the same float
// inputs (their differences are exact there). u is the dominant axis, v the
// other: one centre line of u after the other; a line is crossed when strictly
// past the start and not past the end, and gives the cell of the crossing; at
// the walk's first and last line, when not crossed, the crossing with the
// first (last) v centre line inside the present u band gives that cell.
//
// What is compared: the whole cell list, exactly, except for segments with a
// decision within float rounding of a tie (`ambiguous`): a crossing within
// 1e-3 of a cell boundary, a line within rounding of the end without being on
// it, a fall-back crossing within 1e-3 of its band's ends, or nearly equal
// extents. Exact ties are compared where the routine's arithmetic is exact:
// lines at the very start or end, axis-parallel segments, and 45-degree
// segments between multiples of 1/256.
struct Reference {
    Cells cells;
    bool ambiguous = false;
};

Reference referenceWalk(float fx1, float fy1, float fx2, float fy2, float fdx, float fdy) {
    Reference ref;
    if (std::fabs(double(fx1) - fx2) < 1e-4f && std::fabs(double(fy1) - fy2) < 1e-4f) return ref;
    const double ax = std::fabs(double(fx2) - fx1), ay = std::fabs(double(fy2) - fy1);
    const bool steep = ay > ax;
    if (ax != ay && std::fabs(ax - ay) < 1e-6 * std::max(ax, ay)) ref.ambiguous = true;
    auto on256 = [](double v) { return v == std::round(v * 256) / 256 && std::fabs(v) < 1000; };
    const bool exact45 = ax == ay && on256(fx1) && on256(fy1) && on256(fx2) && on256(fy2);
    const double u1 = steep ? fy1 : fx1, u2 = steep ? fy2 : fx2, du = steep ? fdy : fdx;
    const double v1 = steep ? fx1 : fy1, v2 = steep ? fx2 : fy2, dv = steep ? fdx : fdy;
    auto cell = [](double v, double d) { return int32_t(std::trunc(v / d)) + 1; };
    auto nearTie = [&](double q) { return !exact45 && std::round(q) != 0 && std::fabs(q - std::round(q)) < 1e-3; };
    auto crossed = [&](double c, double a, double b) {  // the line at c, walking from a to b
        if (a == b) return false;
        if (c != b && std::fabs(c - b) < 1e-5 * (1 + std::fabs(b - a))) ref.ambiguous = true;
        return c != a && (c > a) == (b > a) && std::fabs(c - a) <= std::fabs(b - a);
    };
    auto meet = [](double c, double a1, double a2, double b1, double b2) { return b1 + (c - a1) * (b2 - b1) / (a2 - a1); };
    auto add = [&](int32_t cu, int32_t cv) { ref.cells.emplace_back(steep ? cu : cv, steep ? cv : cu); };

    const int32_t cu1 = cell(u1, du), cu2 = cell(u2, du), cv1 = cell(v1, dv), cv2 = cell(v2, dv);
    const int32_t m = std::max(std::abs(cu2 - cu1), std::abs(cv2 - cv1)) + 1, step = cu2 >= cu1 ? 1 : -1;
    for (int32_t k = 1; k <= m; ++k) {
        const double uc = (cu1 + (k - 1) * step - 0.5) * du;
        if (crossed(uc, u1, u2)) {
            const double v = meet(uc, u1, u2, v1, v2);
            if (v1 != v2 && nearTie(v / dv)) ref.ambiguous = true;
            add(cell(uc, du), cell(v, dv));
        } else if (k == 1 || k == m) {
            const double vc = ((k == 1 ? cv1 : cv2) - 0.5) * dv;
            if (!crossed(vc, v1, v2)) continue;
            const double q = (meet(vc, v1, v2, u1, u2) - (uc - 0.5 * du)) / du;  // place in the band, 0 to 1
            if (nearTie(q) || (!exact45 && std::fabs(q) < 1e-3)) ref.ambiguous = true;
            if (q > 0 && q <= 1) add(cell(uc, du), cell(vc, dv));
        }
    }
    return ref;
}

TEST(Gridline, FiveAgreesWithReferenceWalk) {
    std::mt19937 rng(77031u);
    auto uni = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); };
    auto centre = [](double v, double d) { return (std::floor(v / d) + 0.5) * d; };
    long compared = 0, skipped = 0, nonEmpty = 0;
    for (int trial = 0; trial < 60000; ++trial) {
        const float dx = std::ldexp(1.0f, int(std::floor(uni(-2, 2)))), dy = std::ldexp(1.0f, int(std::floor(uni(-2, 2))));
        const double span = trial % 3 == 0 ? 1.5 : 30.0;
        double x1 = uni(-2, 40) * dx, y1 = uni(-2, 40) * dy, x2 = x1 + uni(-span, span) * dx,
               y2 = y1 + uni(-span, span) * dy;
        switch (trial % 8) {  // ends on centre lines, on corners, axis-parallel, 45 degrees
            case 1: y1 = centre(y1, dy); x2 = centre(x2, dx); break;
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
        const Reference ref = referenceWalk(float(x1), float(y1), float(x2), float(y2), dx, dy);
        if (ref.ambiguous) {
            ++skipped;
            continue;
        }
        ++compared;
        const Walk w = walk(Member::five, float(x1), float(y1), float(x2), float(y2), dx, dy);
        ASSERT_EQ(w.cells, ref.cells) << "(" << float(x1) << "," << float(y1) << ")-(" << float(x2) << ","
                                      << float(y2) << ") dx " << dx << " dy " << dy;
        if (w.n > 0) {
            ++nonEmpty;
            expectEnds(w, w.cells.front().first, w.cells.back().first, w.cells.front().second, w.cells.back().second);
        }
    }
    // Most skips are centre-to-centre segments, whose crossings fall exactly on
    // cell boundaries through slopes like 1/3.
    EXPECT_GT(compared, 20 * skipped) << skipped;
    EXPECT_GT(nonEmpty, compared / 2);
}

}  // namespace
