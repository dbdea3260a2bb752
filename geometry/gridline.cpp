#include "geometry/gridline.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "geometry/arrays.hpp"
#include "geometry/plane.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "text/numbers.hpp"
#include "text/support.hpp"

using geometry_detail::truncIndex;

namespace {

constexpr std::string_view kRowsFail = "should not be here - gridline - intersection point - contact " REACHMAP_SUPPORT;
constexpr std::string_view kColumnsFail =
    "should not be here - gridline - intersection point 2 - contact " REACHMAP_SUPPORT;
constexpr std::string_view kV2Fail1 =
    "should not be here - gridline - intersection point 1 - contact " REACHMAP_SUPPORT;
constexpr std::string_view kV2Fail2 =
    "should not be here - gridline - intersection point 2 - contact " REACHMAP_SUPPORT;
constexpr std::string_view kV2Fail3 =
    "should not be here - gridline - intersection point 3 - contact " REACHMAP_SUPPORT;
constexpr std::string_view kV2Fail4 =
    "should not be here - gridline - intersection point 4 - contact " REACHMAP_SUPPORT;
constexpr std::string_view kFiveFail1 =
    "should not be here - gridline_5 - intersection point 1 - contact " REACHMAP_SUPPORT;
constexpr std::string_view kFiveFail3 =
    "should not be here - gridline_5 - intersection point 3 - contact " REACHMAP_SUPPORT;

[[noreturn]] void walkFailure(std::string_view text) {
    conLine(text);
    EXITS();
}

[[noreturn]] void limitFailure(int32_t limit) {
    constexpr std::string_view head = "SORRY - Exceeded limit of";
    constexpr std::string_view tail = " HX cells per HX polyline segment.  Contact " REACHMAP_SUPPORT ".";
    char line[128];
    char* out = line;
    std::memcpy(out, head.data(), head.size());
    out = putInt(out + head.size(), 9, limit);
    std::memcpy(out, tail.data(), tail.size());
    out += tail.size();
    walkFailure(std::string_view(line, static_cast<std::size_t>(out - line)));
}

inline int32_t cellOf(float v, float d) { return truncIndex(v / d) + 1; }
inline float centre(int32_t k, float d) { return (static_cast<float>(k) - 0.5f) * d; }

// The start cell without a walk (zero-length segment or `single`). The list
// entry is stored only where the list has room for it.
void startCell(int32_t j1, int32_t i1, int32_t j2, int32_t i2, int32_t& jFirst, int32_t& jLast, int32_t& iFirst,
               int32_t& iLast, int32_t* jCells, int32_t* iCells, int32_t limit) {
    if (limit >= 1) {
        jCells[1] = j1;
        iCells[1] = i1;
    }
    jFirst = j1;
    jLast = j2;
    iFirst = i1;
    iLast = i2;
}

// gridline_v2 (kFive false) and gridline_5 (kFive true).
template <bool kFive>
void dominantWalk(float x1, float y1, float x2, float y2, bool single, float dx, float dy, int32_t& jFirst,
                  int32_t& jLast, int32_t& iFirst, int32_t& iLast, int32_t& n, int32_t* jCells, int32_t* iCells,
                  int32_t limit, int32_t jOffset, int32_t iOffset) {
    const int32_t i1 = cellOf(x1, dx), j1 = cellOf(y1, dy);
    const int32_t i2 = cellOf(x2, dx), j2 = cellOf(y2, dy);
    if (single) {
        if (limit < 1) limitFailure(limit);
        startCell(j1, i1, j2, i2, jFirst, jLast, iFirst, iLast, jCells, iCells, limit);
        n = 1;
        return;
    }
    if (SAME_POINT(x1, y1, x2, y2, kGridlineTolerance)) {
        startCell(j1, i1, j2, i2, jFirst, jLast, iFirst, iLast, jCells, iCells, limit);
        n = 0;
        return;
    }
    const float xlo = std::min(x1, x2) - dx, xhi = std::max(x1, x2) + dx;
    const float ylo = std::min(y1, y2) - dy, yhi = std::max(y1, y2) + dy;

    n = 0;
    auto append = [&](float xp, float yp) {
        ++n;
        if (n > limit) limitFailure(limit);
        jCells[n] = cellOf(yp, dy);
        iCells[n] = cellOf(xp, dx);
    };
    const int32_t m = std::max(std::abs(j2 - j1), std::abs(i2 - i1)) + 1;
    // Decided on the coordinates; an equal extent counts as flat.
    const bool steep = std::fabs(y2 - y1) > std::fabs(x2 - x1);
    float xp = 0.0f, yp = 0.0f;

    if (steep) {
        const int32_t step = j2 >= j1 ? 1 : -1;
        for (int32_t k = 1; k <= m; ++k) {
            const int32_t j = j1 + (k - 1) * step;
            const float yc = centre(j, dy);
            if (INTERSECT_LINE_V2(x1, y1, x2, y2, xlo, yc, xhi, yc) == 3) {
                if (!INTERSECTION_POINT(x1, y1, x2, y2, xlo, yc, xhi, yc, xp, yp)) {
                    walkFailure(kFive ? kFiveFail1 : kV2Fail1);
                }
                append(xp, yp);
            } else if (k == 1 || k == m) {
                const float xc = dx * (static_cast<float>(k == 1 ? i1 : i2) - 0.5f);
                if constexpr (kFive) {
                    // Only the piece of the column's centre line inside this row.
                    if (INTERSECT_LINE_V2(x1, y1, x2, y2, xc, yc - dy * 0.5f, xc, yc + dy * 0.5f) == 3) {
                        append(xc, yc);
                    }
                } else if (INTERSECT_LINE_V2(x1, y1, x2, y2, xc, ylo, xc, yhi) == 3) {
                    if (!INTERSECTION_POINT(x1, y1, x2, y2, xc, ylo, xc, yhi, xp, yp)) walkFailure(kV2Fail2);
                    append(xp, yp);
                }
            }
        }
    } else {
        const int32_t step = i2 >= i1 ? 1 : -1;
        for (int32_t k = 1; k <= m; ++k) {
            const int32_t i = i1 + (k - 1) * step;
            const float xc = centre(i, dx);
            if (INTERSECT_LINE_V2(x1, y1, x2, y2, xc, ylo, xc, yhi) == 3) {
                if (!INTERSECTION_POINT(x1, y1, x2, y2, xc, ylo, xc, yhi, xp, yp)) {
                    walkFailure(kFive ? kFiveFail3 : kV2Fail3);
                }
                append(xp, yp);
            } else if (k == 1 || k == m) {
                const float yc = dy * (static_cast<float>(k == 1 ? j1 : j2) - 0.5f);
                if constexpr (kFive) {
                    // Only the piece of the row's centre line inside this column.
                    if (INTERSECT_LINE_V2(x1, y1, x2, y2, xc - dx * 0.5f, yc, xc + dx * 0.5f, yc) == 3) {
                        append(xc, yc);
                    }
                } else if (INTERSECT_LINE_V2(x1, y1, x2, y2, xlo, yc, xhi, yc) == 3) {
                    if (!INTERSECTION_POINT(x1, y1, x2, y2, xlo, yc, xhi, yc, xp, yp)) walkFailure(kV2Fail4);
                    append(xp, yp);
                }
            }
        }
    }

    if (n < 1) return;
    for (int32_t k = 1; k <= n; ++k) {
        jCells[k] += jOffset;
        iCells[k] += iOffset;
    }
    jFirst = jCells[1];
    jLast = jCells[n];
    iFirst = iCells[1];
    iLast = iCells[n];
}

}  // namespace

void gridline(float x1, float y1, float x2, float y2, float dx, float dy, int32_t& jFirst, int32_t& jLast,
              int32_t& iFirst, int32_t& iLast, int32_t& n, int32_t* jCells, int32_t* iCells, int32_t limit) {
    const int32_t i1 = cellOf(x1, dx), j1 = cellOf(y1, dy);
    const int32_t i2 = cellOf(x2, dx), j2 = cellOf(y2, dy);
    if (SAME_POINT(x1, y1, x2, y2, kGridlineTolerance)) {
        if (limit < 1) limitFailure(limit);
        startCell(j1, i1, j2, i2, jFirst, jLast, iFirst, iLast, jCells, iCells, limit);
        n = 1;
        return;
    }
    const float xlo = std::min(x1, x2) - dx, xhi = std::max(x1, x2) + dx;
    const float ylo = std::min(y1, y2) - dy, yhi = std::max(y1, y2) + dy;

    // First and last row, then column, whose centre line the segment meets;
    // a line that the segment lies in is not counted.
    jFirst = jLast = 0;
    for (int32_t j = j1, step = j2 >= j1 ? 1 : -1;; j += step) {
        const float yc = centre(j, dy);
        if (!(yc == y1 && yc == y2) && INTERSECT_LINE(x1, y1, x2, y2, xlo, yc, xhi, yc)) {
            if (jFirst == 0) jFirst = j;
            jLast = j;
        }
        if (j == j2) break;
    }
    iFirst = iLast = 0;
    for (int32_t i = i1, step = i2 >= i1 ? 1 : -1;; i += step) {
        const float xc = centre(i, dx);
        if (!(xc == x1 && xc == x2) && INTERSECT_LINE(x1, y1, x2, y2, xc, ylo, xc, yhi)) {
            if (iFirst == 0) iFirst = i;
            iLast = i;
        }
        if (i == i2) break;
    }
    if (jFirst == 0 && iFirst == 0) {
        n = 0;
        jLast = iLast = 0;
        return;
    }

    const int32_t jSpan = std::abs(jLast - jFirst), iSpan = std::abs(iLast - iFirst);
    bool byRows;
    if (iFirst == 0) {
        byRows = true;
    } else if (jFirst == 0) {
        byRows = false;
    } else {
        byRows = jSpan > iSpan;  // a tie walks by columns
    }
    n = std::max(jSpan, iSpan) + 1;
    if (n > limit) limitFailure(limit);

    float xp = 0.0f, yp = 0.0f;
    if (byRows) {
        const int32_t step = jLast >= jFirst ? 1 : -1;
        for (int32_t k = 1; k <= n; ++k) {
            const int32_t j = jFirst + (k - 1) * step;
            const float yc = centre(j, dy);
            jCells[k] = j;
            if (!INTERSECTION_POINT(x1, y1, x2, y2, xlo, yc, xhi, yc, xp, yp)) walkFailure(kRowsFail);
            iCells[k] = cellOf(xp, dx);
        }
    } else {
        const int32_t step = iLast >= iFirst ? 1 : -1;
        for (int32_t k = 1; k <= n; ++k) {
            const int32_t i = iFirst + (k - 1) * step;
            const float xc = centre(i, dx);
            iCells[k] = i;
            if (!INTERSECTION_POINT(x1, y1, x2, y2, xc, ylo, xc, yhi, xp, yp)) walkFailure(kColumnsFail);
            jCells[k] = cellOf(yp, dy);
        }
    }
    jFirst = jCells[1];
    iFirst = iCells[1];
    jLast = jCells[n];
    iLast = iCells[n];
}

void gridline_v2(float x1, float y1, float x2, float y2, bool single, float dx, float dy, int32_t& jFirst,
                 int32_t& jLast, int32_t& iFirst, int32_t& iLast, int32_t& n, int32_t* jCells, int32_t* iCells,
                 int32_t limit, int32_t jOffset, int32_t iOffset) {
    dominantWalk<false>(x1, y1, x2, y2, single, dx, dy, jFirst, jLast, iFirst, iLast, n, jCells, iCells, limit, jOffset,
                        iOffset);
}

void gridline_5(float x1, float y1, float x2, float y2, bool single, float dx, float dy, int32_t& jFirst,
                int32_t& jLast, int32_t& iFirst, int32_t& iLast, int32_t& n, int32_t* jCells, int32_t* iCells,
                int32_t limit, int32_t jOffset, int32_t iOffset) {
    dominantWalk<true>(x1, y1, x2, y2, single, dx, dy, jFirst, jLast, iFirst, iLast, n, jCells, iCells, limit, jOffset,
                       iOffset);
}

void gridline_steps(int32_t& i1, int32_t& j1, int32_t& i2, int32_t& j2, int32_t& steps, float& stepI, float& stepJ) {
    if (i1 < 1) i1 = i2;
    if (i2 < 1) i2 = i1;
    if (j1 < 1) j1 = j2;
    if (j2 < 1) j2 = j1;
    const int32_t di = i2 - i1, dj = j2 - j1;
    const float d = static_cast<float>(std::max(std::abs(di), std::abs(dj)));
    if (d > 0.5f) {
        stepI = (di < 0 ? -1.0f : 1.0f) * static_cast<float>(std::abs(di)) / d;
        stepJ = (dj < 0 ? -1.0f : 1.0f) * static_cast<float>(std::abs(dj)) / d;
    } else {
        stepI = 0.0f;
        stepJ = 0.0f;
    }
    steps = static_cast<int32_t>(1.5f + d);
}

void gridline_increments(int32_t i1, int32_t j1, int32_t i2, int32_t j2, int32_t& count, float& stepA, float& stepB,
                         float spanB, float spanA) {
    const int32_t d = std::max(std::abs(i2 - i1), std::abs(j2 - j1));
    if (static_cast<float>(d) > 0.5f) {
        stepA = spanA / static_cast<float>(d);
        stepB = spanB / static_cast<float>(d);
    } else {
        stepA = 0.0f;
        stepB = 0.0f;
    }
    count = d + 1;
}
