#include "geometry/polygon.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

#include "geometry/plane.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "text/support.hpp"

using geometry_detail::truncIndex;

namespace {

constexpr std::string_view kInsideFail1 =
    "Invalid number of polygons in region sent to inside_polygon routine [1] - contact " REACHMAP_SUPPORT;
constexpr std::string_view kInsideFail2 =
    "Invalid number of polygons in region sent to inside_polygon routine [2] - contact " REACHMAP_SUPPORT;
constexpr std::string_view kGridFail1 =
    "Invalid number of polygons in region sent to grid_inside_polygon routine [1] - contact " REACHMAP_SUPPORT;
constexpr std::string_view kGridFail4 =
    "Invalid number of polygons in region sent to grid_inside_polygon routine [4] - contact " REACHMAP_SUPPORT;
constexpr std::string_view kGridFail5 =
    "Invalid number of polygons in region sent to grid_inside_polygon routine [5] - contact " REACHMAP_SUPPORT;

[[noreturn]] void regionFailure(std::string_view text) {
    conLine(text);
    EXITS();
}

// Walks the edges of a region in slot order, skipping the copy slot after
// each polygon: edge e runs from slot e to slot e + 1, for e from 1 to N - 2.
// A region whose ends and npoly do not account for the slots is reported.
// (npoly below 1 with edges to walk is reported too, rather than reading
// ends[1] of a region that has no polygon.)
template <class Visit>
void forEachEdge(int32_t N, const int32_t* ends, int32_t npoly, std::string_view failText, Visit visit) {
    if (N < 3) return;
    if (npoly < 1) regionFailure(failText);
    int32_t p = 1;
    int32_t e = 1;
    while (e <= N - 2) {
        visit(e);
        if (e + 1 == ends[p]) {
            ++p;
            if (p > npoly && e + 2 < N) regionFailure(failText);
            e += 3;
        } else {
            ++e;
        }
    }
}

// ---------------------------------------------------------------------------
// Single-point test.

bool crossTest(float fx, float py, float px, float xA, float yA, float xB, float yB) {
    return INTERSECT_LINE(fx, py, px, py, xA, yA, xB, yB);
}
bool crossTest(double fx, double py, double px, double xA, double yA, double xB, double yB) {
    return INTERSECT_LINE_8(fx, py, px, py, xA, yA, xB, yB);
}

template <class T, bool kEdge>
bool insideWalk(T px, T py, const T* X, const T* Y, int32_t N, T xmin, const int32_t* ends, int32_t npoly,
                std::string_view failText) {
    if (N < 3) return false;
    if (npoly < 1) regionFailure(failText);
    const T fx = xmin - T(10);
    int32_t crossings = 0;
    T prev = T(0);  // not reset between polygons
    int32_t p = 1;
    int32_t i = 2;  // a polygon's walk starts at its second point; its first edge comes last
    for (;;) {
        const T xA = X[i], yA = Y[i], xB = X[i + 1], yB = Y[i + 1];
        if constexpr (kEdge) {
            // Point on this edge (horizontal ones included): inside at once.
            const float c = static_cast<float>((xA - xB) * (yA - py) - (yA - yB) * (xA - px));
            if (std::fabs(c) < kGeoTolerance && DISTANCE_8(xA, yA, xB, yB) >= DISTANCE_8(xA, yA, px, py)) {
                return true;
            }
        }
        if (yA == yB) {
            // horizontal edge: ignored, prev kept
        } else if (yB == py) {
            prev = yA;  // edge ends on the ray's line; the next edge decides
        } else if (yA == py && px >= xA) {
            if ((prev - py) * (yB - py) < T(0)) ++crossings;  // passed through, not touched
        } else if (crossTest(fx, py, px, xA, yA, xB, yB)) {
            ++crossings;
        }
        if (i == ends[p]) {
            ++p;
            i += 2;
            if (p > npoly && i < N - 1) regionFailure(failText);
        }
        if (!(i < N - 1)) break;
        ++i;
    }
    return (crossings & 1) != 0;
}

// ---------------------------------------------------------------------------
// Triangle value at P from corners 1, 2, 3 (slots 1..3) and their Z: the line
// from corner 3 through P meets the line 1-2 at Q; interpolate along 1-2, then
// along 3-Q. Lengths in the coordinates' precision, values in 32 bits.
// `strict` refuses the parallel cases instead of producing a value.

template <class T>
bool triangleValue(T px, T py, const T* X, const T* Y, const float* Z, bool strict, float& out) {
    const T X1 = X[1], Y1 = Y[1], X2 = X[2], Y2 = Y[2], X3 = X[3], Y3 = Y[3];
    T qx, qy;
    if (X1 == X2) {
        qx = X1;
        if (X3 == px) {
            if (strict) return false;
            qy = Y1;
        } else {
            qy = Y3 + (X1 - X3) * (py - Y3) / (px - X3);
        }
    } else if (X3 == px) {
        qx = X3;
        qy = Y1 + (X3 - X1) * (Y2 - Y1) / (X2 - X1);
    } else {
        const T m1 = (Y2 - Y1) / (X2 - X1);
        const T m2 = (py - Y3) / (px - X3);
        if (strict && m1 == m2) return false;
        qx = (X3 * m2 - X1 * m1 + Y1 - Y3) / (m2 - m1);
        qy = m2 * (qx - X3) + Y3;
    }
    const T tol = static_cast<T>(kGeoTolerance);
    auto len = [](T ax, T ay, T bx, T by) { return std::sqrt((bx - ax) * (bx - ax) + (by - ay) * (by - ay)); };
    const T d12 = len(X1, Y1, X2, Y2);
    const T dQ1 = len(X1, Y1, qx, qy);
    const float zQ =
        d12 < tol ? Z[1] + (Z[2] - Z[1]) * 0.5f : static_cast<float>(Z[1] + static_cast<T>(Z[2] - Z[1]) * dQ1 / d12);
    const T dQ3 = len(X3, Y3, qx, qy);
    const T dP3 = len(X3, Y3, px, py);
    out = dQ3 < tol ? Z[3] + (zQ - Z[3]) * 0.5f : static_cast<float>(Z[3] + static_cast<T>(zQ - Z[3]) * dP3 / dQ3);
    return true;
}

// ---------------------------------------------------------------------------
// Grid fill.

template <class T>
void gridFill(uint8_t* inside, uint8_t* crossings, int32_t* ivalues, float* rvalues, int32_t dimJ, int32_t dimI, T dx,
              T dy, int32_t offJ, int32_t offI, bool clearInside, bool setValues, bool useInteger, bool useConstant,
              float value, bool accumulate, int32_t& jMin, int32_t& iMin, int32_t& jMax, int32_t& iMax, int32_t& count,
              const T* X, const T* Y, const float* Z, int32_t N, const int32_t* ends, int32_t npoly) {
    count = 0;
    if (N < 1) {  // no slots: an empty window
        jMin = iMin = 1;
        jMax = iMax = 0;
        return;
    }
    T xmin = X[1], xmax = X[1], ymin = Y[1], ymax = Y[1];
    for (int32_t k = 2; k <= N; ++k) {
        xmin = std::min(xmin, X[k]);
        xmax = std::max(xmax, X[k]);
        ymin = std::min(ymin, Y[k]);
        ymax = std::max(ymax, Y[k]);
    }
    jMin = std::max(truncIndex(ymin / dy) + 1, std::max(1, offJ));
    jMax = std::min(truncIndex(ymax / dy) + 1, dimJ - offJ);
    iMin = std::max(truncIndex(xmin / dx) + 1, std::max(1, offI));
    iMax = std::min(truncIndex(xmax / dx) + 1, dimI - offI);
    if (iMin > iMax || jMin > jMax) return;

    const int32_t j0 = jMin, j1 = jMax, i0 = iMin, i1 = iMax;
    const std::size_t rows = static_cast<std::size_t>(j1 - j0 + 1);
    for (int32_t i = i0; i <= i1; ++i) {
        std::memset(crossings + gridIndex(j0, i, dimJ), 0, rows);
        if (clearInside) std::memset(inside + gridIndex(j0, i, dimJ), 0, rows);
    }

    // Rasterise the edges: an edge crosses row line j (y = j * dy) when one end
    // lies below it and the other at or above it; the crossing goes to the
    // column c = trunc(x / dx) + 1, so that it counts for the points strictly
    // right of it. Crossings left of the window gather in its first column.
    auto rowOf = [&](T y) { return std::clamp(truncIndex(y / dy) + 1, j0, j1 + 1); };
    forEachEdge(N, ends, npoly, kGridFail1, [&](int32_t e) {
        const T xA = X[e], yA = Y[e], xB = X[e + 1], yB = Y[e + 1];
        const int32_t rA = rowOf(yA);
        const int32_t rB = rowOf(yB);
        if (rA == rB) return;
        const int32_t lo = rA < rB ? rA : rB;  // rows lo .. hi - 1 are crossed
        const int32_t hi = rA < rB ? rB : rA;
        const bool vertical = xA == xB;
        const T m = vertical ? T(0) : (yB - yA) / (xB - xA);
        for (int32_t j = lo; j < hi; ++j) {
            const T yl = static_cast<T>(j) * dy;
            const T x = vertical ? xA : (xA * m - yA + yl) / m;
            int32_t c = truncIndex(x / dx) + 1;
            if (c > i1) continue;
            if (c < i0) c = i0;
            ++crossings[gridIndex(j, c, dimJ)];
        }
    });

    // Sweep: running parity along each row, kept in `crossings` itself column
    // by column (the order in which points are set does not matter).
    for (int32_t i = i0; i <= i1; ++i) {
        uint8_t* col = crossings + gridIndex(j0, i, dimJ);
        if (i == i0) {
            for (std::size_t r = 0; r < rows; ++r) col[r] &= 1;
        } else {
            const uint8_t* left = col - dimJ;
            for (std::size_t r = 0; r < rows; ++r) col[r] = static_cast<uint8_t>((col[r] & 1) ^ left[r]);
        }
    }

    const int32_t rounded = static_cast<int32_t>(std::lround(value));
    const bool triangle = N == 5;
    for (int32_t i = i0; i <= i1; ++i) {
        const std::size_t base = gridIndex(j0, i, dimJ);
        const uint8_t* state = crossings + base;
        uint8_t* in = inside + base;
        int32_t n = 0;
        for (std::size_t r = 0; r < rows; ++r) {
            if (state[r]) {
                in[r] = 1;
                ++n;
            }
        }
        count += n;
        if (!setValues || n == 0) continue;
        if (useInteger) {
            int32_t* v = ivalues + base;
            for (std::size_t r = 0; r < rows; ++r) {
                if (state[r]) v[r] = accumulate ? v[r] + rounded : rounded;
            }
        } else if (useConstant) {
            float* v = rvalues + base;
            for (std::size_t r = 0; r < rows; ++r) {
                if (state[r]) v[r] = accumulate ? v[r] + value : value;
            }
        } else if (triangle) {
            float* v = rvalues + base;
            const T px = static_cast<T>(i) * dx;
            for (std::size_t r = 0; r < rows; ++r) {
                if (!state[r]) continue;
                const T py = static_cast<T>(j0 + static_cast<int32_t>(r)) * dy;
                float z = 0.0f;
                triangleValue<T>(px, py, X, Y, Z, false, z);
                v[r] = accumulate ? v[r] + z : z;
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Point-list test.

template <class T>
void pointsTest(int32_t* flags, const T* px, const T* py, int32_t npoints, int32_t& count, const T* X, const T* Y,
                int32_t N, const int32_t* ends, int32_t npoly, std::string_view failText) {
    count = 0;
    if (npoints < 1) return;
    for (int32_t k = 1; k <= npoints; ++k) flags[k] = 0;
    if (N < 1) return;
    T xo = X[1], yo = Y[1];
    for (int32_t s = 2; s <= N; ++s) {
        xo = std::min(xo, X[s]);
        yo = std::min(yo, Y[s]);
    }
    xo = xo - T(1);
    yo = yo - T(1);
    for (int32_t k = 1; k <= npoints; ++k) {
        const T pyk = py[k], pxk = px[k];
        // Left of or below the region's box: outside without looking at an edge.
        if (!(pyk >= yo + T(1) && pxk >= xo + T(1))) continue;
        const T d = pyk - yo;
        int32_t hits = 0;
        forEachEdge(N, ends, npoly, failText, [&](int32_t e) {
            const T xA = X[e], yA = Y[e], xB = X[e + 1], yB = Y[e + 1];
            const int32_t a = truncIndex((yA - yo) / d);
            const int32_t b = truncIndex((yB - yo) / d);
            if (a == b || (a != 0 && b != 0)) return;  // not one end below py and the other at or above
            T x;
            if (xA == xB) {
                x = xA;
            } else {
                const T m = (yB - yA) / (xB - xA);
                x = (pyk - yA + xA * m) / m;
            }
            if (truncIndex((x - xo) / (pxk - xo)) < 1) ++hits;  // strictly left of the point
        });
        flags[k] = hits;
    }
    for (int32_t k = 1; k <= npoints; ++k) {
        flags[k] = (flags[k] & 1) ? 1 : 0;
        count += flags[k];
    }
}

}  // namespace

bool INSIDE_POLYGON(float px, float py, const float* X, const float* Y, int32_t N, float xmin, const int32_t* ends,
                    int32_t npoly) {
    return insideWalk<float, false>(px, py, X, Y, N, xmin, ends, npoly, kInsideFail1);
}

// The element interpolation calls this routine too, rather than a second copy
// of it; both uses report with the same text.
bool INSIDE_POLYGON_8(double px, double py, const double* X, const double* Y, int32_t N, double xmin,
                      const int32_t* ends, int32_t npoly) {
    return insideWalk<double, false>(px, py, X, Y, N, xmin, ends, npoly, kInsideFail2);
}

bool inside_polygon_or_edge_8(double px, double py, const double* X, const double* Y, int32_t N, double xmin,
                              const int32_t* ends, int32_t npoly) {
    return insideWalk<double, true>(px, py, X, Y, N, xmin, ends, npoly, kInsideFail1);
}

bool inside_convex_polygon_8(double px, double py, int32_t n, const double* X, const double* Y) {
    if (n < 1) return false;
    float c1 = 0.0f;
    for (int32_t k = 1; k <= n; ++k) {
        const double xA = X[k], yA = Y[k], xB = X[k + 1], yB = Y[k + 1];
        const float c = static_cast<float>((xB - xA) * (py - yA) - (px - xA) * (yB - yA));
        const double d = (xA - px) * (xB - px) + (yA - py) * (yB - py);
        if (std::fabs(c) < kGeoTolerance && d <= 0.0) return true;  // on this edge
        if (k == 1) {
            c1 = c;
        } else if (c * c1 <= 0.0f) {
            return false;
        }
    }
    // A single edge gives no side to agree with: only its on-edge test says true.
    return n >= 2;
}

void grid_inside_polygon(uint8_t* inside, uint8_t* crossings, int32_t* ivalues, float* rvalues, int32_t dimJ,
                         int32_t dimI, float dx, float dy, int32_t offJ, int32_t offI, bool clearInside, bool setValues,
                         bool useInteger, bool useConstant, float value, bool accumulate, int32_t& jMin, int32_t& iMin,
                         int32_t& jMax, int32_t& iMax, int32_t& count, const float* X, const float* Y, const float* Z,
                         int32_t N, const int32_t* ends, int32_t npoly) {
    gridFill<float>(inside, crossings, ivalues, rvalues, dimJ, dimI, dx, dy, offJ, offI, clearInside, setValues,
                    useInteger, useConstant, value, accumulate, jMin, iMin, jMax, iMax, count, X, Y, Z, N, ends, npoly);
}

void grid_inside_polygon_8(uint8_t* inside, uint8_t* crossings, int32_t* ivalues, float* rvalues, int32_t dimJ,
                           int32_t dimI, double dx, double dy, int32_t offJ, int32_t offI, bool clearInside,
                           bool setValues, bool useInteger, bool useConstant, float value, bool accumulate,
                           int32_t& jMin, int32_t& iMin, int32_t& jMax, int32_t& iMax, int32_t& count, const double* X,
                           const double* Y, const float* Z, int32_t N, const int32_t* ends, int32_t npoly) {
    gridFill<double>(inside, crossings, ivalues, rvalues, dimJ, dimI, dx, dy, offJ, offI, clearInside, setValues,
                     useInteger, useConstant, value, accumulate, jMin, iMin, jMax, iMax, count, X, Y, Z, N, ends,
                     npoly);
}

void grid_inside_polygon_points(int32_t* flags, const float* px, const float* py, int32_t npoints, int32_t& count,
                                const float* X, const float* Y, int32_t N, const int32_t* ends, int32_t npoly) {
    pointsTest<float>(flags, px, py, npoints, count, X, Y, N, ends, npoly, kGridFail4);
}

void grid_inside_polygon_points_8(int32_t* flags, const double* px, const double* py, int32_t npoints, int32_t& count,
                                  const double* X, const double* Y, int32_t N, const int32_t* ends, int32_t npoly) {
    pointsTest<double>(flags, px, py, npoints, count, X, Y, N, ends, npoly, kGridFail5);
}

void grid_set_inside_points(const int32_t* flags, const double* px, const double* py, int32_t* ivalues, float* rvalues,
                            int32_t npoints, bool useInteger, bool useConstant, float value, bool accumulate,
                            const double* X, const double* Y, const float* Z, int32_t N) {
    const int32_t rounded = static_cast<int32_t>(std::lround(value));
    for (int32_t k = 1; k <= npoints; ++k) {
        if (flags[k] != 1) continue;
        if (useInteger) {
            ivalues[k] = accumulate ? ivalues[k] + rounded : rounded;
        } else if (useConstant) {
            rvalues[k] = accumulate ? rvalues[k] + value : value;
        } else if (N == 5) {
            float z = 0.0f;
            if (triangleValue<double>(px[k], py[k], X, Y, Z, true, z)) rvalues[k] = accumulate ? rvalues[k] + z : z;
        }
    }
}
