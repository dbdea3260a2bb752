// Laying the objects of an input layer on a regular, possibly rotated model
// grid: points set the cell they fall in, lines the cells they pass through,
// regions every cell whose sample point lies inside. The value comes from the
// object's first attribute; one progress line per object goes to the console.
#include <cmath>
#include <cstdlib>

#include "geometry/arrays.hpp"
#include "geometry/gridline.hpp"
#include "geometry/plane.hpp"
#include "geometry/polygon.hpp"
#include "gis/gis.hpp"
#include "gis/model/gis_internal.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "text/freeformat.hpp"
#include "text/numbers.hpp"

namespace {

constexpr int32_t kCellLimit = 10000;  // cells of one segment's walk

// Working storage: the object's map coordinates as read, their local copies
// in the grid's frame, and the cell list of one segment.
double g_x[kGisMaxPoints + 1];
double g_y[kGisMaxPoints + 1];
float g_lx[kGisMaxPoints + 1];
float g_ly[kGisMaxPoints + 1];
int32_t g_jCells[kCellLimit + 1];
int32_t g_iCells[kCellLimit + 1];

// The caller's grids and how to address them.
struct Grids {
    int32_t* cellInts;
    int32_t* xSideInts;
    int32_t* ySideInts;
    float* cellReals;
    float* xSideReals;
    float* ySideReals;
    int32_t dimJ, dimI;

    // The element of grid `g` at (j, i), or null. A position outside the
    // caller's arrays is not written: the offsets are there to leave room for
    // the margins, and a caller that gives none loses what falls beyond its
    // arrays rather than memory that is not its own. A grid that the caller
    // passed as null is not written either.
    template <typename T>
    T* at(T* g, int32_t j, int32_t i) const {
        if (g == nullptr || j < 1 || j > dimJ || i < 1 || i > dimI) return nullptr;
        return g + gridIndex(j, i, dimJ);
    }
};

struct Frame {
    int32_t limJ, limI, offJ, offI;
    float dx, dy;
    double ox, oy;
    float angle;
};

struct Modes {
    bool useInteger, countOnly, sidesOnly, allPoints, halveOnSides, accumulate;
};

int32_t roundHalfAway(float v) { return static_cast<int32_t>(std::lround(v)); }

// Sets local cell (j, i) of a point or line object.
void setCell(const Grids& g, const Frame& f, const Modes& m, int32_t j, int32_t i, float value, int32_t& count) {
    const int32_t gj = j + f.offJ, gi = i + f.offI;
    if (m.useInteger) {
        if (int32_t* c = g.at(g.cellInts, gj, gi)) *c = roundHalfAway(value);
        count += 1;
        return;
    }
    if (!m.sidesOnly) {
        if (float* c = g.at(g.cellReals, gj, gi)) *c = value;
        count += 1;
        return;
    }
    // The four sides: upper and lower x-sides, upper and lower y-sides.
    const float part = m.halveOnSides ? value / 2.0f : value / 1.0f;
    auto side = [&](float* grid, int32_t sj, int32_t si) {
        if (float* v = g.at(grid, sj, si)) *v = m.accumulate ? *v + part : value;
    };
    side(g.xSideReals, gj, gi);
    side(g.xSideReals, gj, gi - 1);
    side(g.ySideReals, gj, gi);
    side(g.ySideReals, gj - 1, gi);
    count += 4;
}

// Every cell of the index range of a point or multipoint.
void assignPoints(const Grids& g, const Frame& f, const Modes& m, int32_t jLow, int32_t iLow, int32_t jHigh,
                  int32_t iHigh, float value, int32_t& count) {
    for (int32_t j = jLow; j <= jHigh; ++j)
        for (int32_t i = iLow; i <= iHigh; ++i) setCell(g, f, m, j, i, value, count);
}

// The cells that each segment of a line passes, inside the local grid.
void assignLine(const Grids& g, const Frame& f, const Modes& m, int32_t n, float value, int32_t& count) {
    float x1 = g_lx[1], y1 = g_ly[1];
    for (int32_t v = 2; v <= n; ++v) {
        const float x2 = g_lx[v], y2 = g_ly[v];
        int32_t jFirst = 0, jLast = 0, iFirst = 0, iLast = 0, cells = 0;
        gridline_5(x1, y1, x2, y2, false, f.dx, f.dy, jFirst, jLast, iFirst, iLast, cells, g_jCells, g_iCells,
                   kCellLimit, 0, 0);
        for (int32_t k = 1; k <= cells; ++k) {
            const int32_t j = g_jCells[k], i = g_iCells[k];
            if (j >= 1 && j <= f.limJ && i >= 1 && i <= f.limI) setCell(g, f, m, j, i, value, count);
        }
        x1 = x2;
        y1 = y2;
    }
}

// Moves the local vertices by (sx, sy).
void shiftVertices(int32_t n, float sx, float sy) {
    for (int32_t k = 1; k <= n; ++k) {
        g_lx[k] += sx;
        g_ly[k] += sy;
    }
}

// A region: its vertices are shifted so that grid point (i, j) of the fill
// stands on the sample position of local cell (i - offI, j - offJ), once for
// each sample position that the mode asks for.
void assignRegion(const Grids& g, const Frame& f, const Modes& m, const GisObject& object, int32_t n, float value,
                  int32_t& count) {
    const std::size_t cells = static_cast<std::size_t>(g.dimJ) * static_cast<std::size_t>(g.dimI);
    auto* inside = static_cast<uint8_t*>(std::malloc(cells == 0 ? 1 : cells));
    auto* crossings = static_cast<uint8_t*>(std::malloc(cells == 0 ? 1 : cells));
    if (inside == nullptr || crossings == nullptr) {
        conLine("ERROR - Could not allocate memory (RAM) for Inside Region == Method B.");
        EXITS();
    }
    // One fill at the present sample position; without grids it only counts.
    auto fill = [&](int32_t* ints, float* reals) {
        const bool setValues = m.useInteger ? ints != nullptr : reals != nullptr;
        int32_t jMin = 0, iMin = 0, jMax = 0, iMax = 0, c = 0;
        grid_inside_polygon(inside, crossings, ints, reals, g.dimJ, g.dimI, f.dx, f.dy, f.offJ, f.offI, true, setValues,
                            m.useInteger, true, value, m.accumulate, jMin, iMin, jMax, iMax, c, g_lx, g_ly, nullptr, n,
                            object.ir, object.nr);
        count += c;
    };
    const float halfX = f.dx / 2.0f, halfY = f.dy / 2.0f;
    const float offJ = static_cast<float>(f.offJ), offI = static_cast<float>(f.offI);
    if (m.sidesOnly) {
        shiftVertices(n, offI * f.dx, (offJ + 0.5f) * f.dy);
        fill(g.xSideInts, g.xSideReals);
        shiftVertices(n, halfX, -halfY);
        fill(g.ySideInts, g.ySideReals);
    } else if (m.allPoints) {
        shiftVertices(n, (offI + 0.5f) * f.dx, (offJ + 0.5f) * f.dy);
        fill(g.cellInts, g.cellReals);
        shiftVertices(n, -halfX, 0.0f);
        fill(g.xSideInts, g.xSideReals);
        shiftVertices(n, halfX, -halfY);
        fill(g.ySideInts, g.ySideReals);
    } else if (m.countOnly) {
        // Centre, upper-x side, upper-y side and upper corner, counted only.
        shiftVertices(n, (offI + 0.5f) * f.dx, (offJ + 0.5f) * f.dy);
        fill(nullptr, nullptr);
        shiftVertices(n, -halfX, 0.0f);
        fill(nullptr, nullptr);
        shiftVertices(n, halfX, -halfY);
        fill(nullptr, nullptr);
        shiftVertices(n, -halfX, 0.0f);
        fill(nullptr, nullptr);
    } else {
        shiftVertices(n, (offI + 0.5f) * f.dx, (offJ + 0.5f) * f.dy);
        fill(g.cellInts, g.cellReals);
    }
    // free() cannot fail, so the release has no failure to report.
    std::free(inside);
    std::free(crossings);
}

// The object's value from the start of its record line, or ERROR 2148. A
// line with nothing to read at its start (blank, or an empty first field)
// gives no value either, and so stops as a value that is not a number does.
float valueOfRecord(std::string_view line) {
    FreeFormat ff(line);
    std::string_view token;
    bool quoted = false;
    float v = 0.0f;
    if (ff.next(token, quoted) != FreeFormat::Item::value || quoted || !parseReal4(token, v)) {
        gisSetMessage("ERROR 2148 - Reading attribute data from data line below.");
        GisLine l;
        l << "Data Line = " << trimmed(line);
        gisMessageLine[2] = l.view();
        gisMessageOut(1);
        EXITS();
    }
    return v;
}

// Where the object comes from: the layer, or the caller's prepared object.
struct Source {
    bool readFromLayer;
    bool readValue;
    const GisPreparedObject* prepared;
};

void assign(int32_t gisID, const Frame& f, const Modes& m, const Grids& g, GisObject& object, const Source& src,
            float& value, int32_t& count) {
    count = 0;
    if (src.readFromLayer) {
        if (gisBadId(gisID)) gisStopNoLayer("gisAssignObjectToGrid");
        // The next object; gisObjectType is false only at the end of them.
        if (gisAtEnd[gisID]) return;
        gisClearObject(object);
        if (!gisObjectType(gisID, object)) return;
        gisReadRecord(gisID, object, gisRecordLine);
    }
    if (src.readValue) value = valueOfRecord(gisRecordLine.trimmed());

    if (!(object.isPoint || object.isMultiPoint || object.isLine || object.isPline || object.isPlineMultiple ||
          object.isRegion)) {
        if (src.readFromLayer) {
            for (int32_t k = 1; k <= object.np; ++k) {
                int32_t n = 0;
                double cx = 0.0, cy = 0.0;
                float angle = 0.0f, length = 0.0f;
                gisReadObject(gisID, object, g_x, g_y, kGisMaxPoints, n, cx, cy, angle, length, false);
            }
        }
        gisSetMessage("WARNING 2073 - Object ignored.  Only Points, Lines, Polylines & Regions used.");
        GisLine l;
        l << "GIS Object = " << object.type.trimmed();
        gisMessageLine[2] = l.view();
        gisMessageOut(0);
        return;
    }

    Text<32> valueText;
    if (m.useInteger) AINTEGER(valueText, roundHalfAway(value));
    else AREAL(valueText, value);

    const int32_t parts = object.np;
    for (int32_t sub = 1; sub <= parts; ++sub) {
        count = 0;
        int32_t n = 0;
        if (src.readFromLayer) {
            double cx = 0.0, cy = 0.0;
            float angle = 0.0f, length = 0.0f;
            gisReadObject(gisID, object, g_x, g_y, kGisMaxPoints, n, cx, cy, angle, length, true);
        } else {
            n = src.prepared->N;
            for (int32_t k = 1; k <= n; ++k) {
                g_x[k] = src.prepared->X[k];
                g_y[k] = src.prepared->Y[k];
            }
        }
        GEO_SHIFT(g_x, g_y, n, f.ox, f.oy, f.angle, g_lx, g_ly);

        int32_t jLow = 0, iLow = 0, jHigh = -1, iHigh = -1;
        const bool pointLike = object.isPoint || object.isMultiPoint;
        if (pointLike || object.isRegion) {
            float xmin, ymin, xmax, ymax;
            SET_SUB_GRID_AREA(g_lx, g_ly, n, f.dx, f.limJ, f.limI, jLow, iLow, jHigh, iHigh, xmin, ymin, xmax, ymax);
        }

        GisLine head;
        head << "...GIS " << object.type.trimmed();
        if (object.isRegion) {
            head << " (";
            head.put(6, n);
            head << " vertices /";
            head.put(3, object.nr);
            head << " polygons) assigned " << valueText.trimmed() << " to";
        } else {
            head << " (";
            head.put(6, n);
            head << " vertices) assigned a value of " << valueText.trimmed() << " to";
        }
        conWrite(head.view());

        if (pointLike) assignPoints(g, f, m, jLow, iLow, jHigh, iHigh, value, count);
        else if (object.isRegion) assignRegion(g, f, m, object, n, value, count);
        else assignLine(g, f, m, n, value, count);

        GisLine tail;
        tail.put(6, count);
        tail << ((m.countOnly || m.sidesOnly || m.allPoints) ? " points" : " cells");
        conLine(tail.view());
    }
}

}  // namespace

void SET_SUB_GRID_AREA(const float* X, const float* Y, int32_t N, float d, int32_t limJ, int32_t limI, int32_t& jLow,
                       int32_t& iLow, int32_t& jHigh, int32_t& iHigh, float& xmin, float& ymin, float& xmax,
                       float& ymax) {
    using geometry_detail::truncIndex;
    xmin = xmax = X[1];
    ymin = ymax = Y[1];
    for (int32_t k = 2; k <= N; ++k) {
        xmin = std::min(xmin, X[k]);
        xmax = std::max(xmax, X[k]);
        ymin = std::min(ymin, Y[k]);
        ymax = std::max(ymax, Y[k]);
    }
    jLow = std::max(truncIndex(ymin / d) + 1, 0);
    iLow = std::max(truncIndex(xmin / d) + 1, 0);
    jHigh = std::min(truncIndex(ymax / d) + 1, limJ);
    iHigh = std::min(truncIndex(xmax / d) + 1, limI);
}

void gisAssignObjectToGrid(int32_t gisID, int32_t limJ, int32_t limI, int32_t offJ, int32_t offI, float dx, float dy,
                           double ox, double oy, float angle, bool useInteger, bool countOnly, bool sidesOnly,
                           bool allPoints, bool halveOnSides, int32_t* cellInts, int32_t* xSideInts, int32_t* ySideInts,
                           float* cellReals, float* xSideReals, float* ySideReals, int32_t dimJ, int32_t dimI,
                           bool accumulate, int32_t& count) {
    float value = 0.0f;
    assign(gisID, Frame{limJ, limI, offJ, offI, dx, dy, ox, oy, angle},
           Modes{useInteger, countOnly, sidesOnly, allPoints, halveOnSides, accumulate},
           Grids{cellInts, xSideInts, ySideInts, cellReals, xSideReals, ySideReals, dimJ, dimI}, gisO_,
           Source{true, true, nullptr}, value, count);
}

void gisAssignPreparedObjectToGrid(int32_t gisID, int32_t limJ, int32_t limI, int32_t offJ, int32_t offI, float dx,
                                   float dy, double ox, double oy, float angle, bool useInteger, bool countOnly,
                                   bool sidesOnly, bool allPoints, bool halveOnSides, int32_t* cellInts,
                                   int32_t* xSideInts, int32_t* ySideInts, float* cellReals, float* xSideReals,
                                   float* ySideReals, int32_t dimJ, int32_t dimI, bool accumulate, int32_t& count,
                                   GisObject& object, bool readFromLayer, bool readValue,
                                   const GisPreparedObject& prepared, float& value) {
    assign(gisID, Frame{limJ, limI, offJ, offI, dx, dy, ox, oy, angle},
           Modes{useInteger, countOnly, sidesOnly, allPoints, halveOnSides, accumulate},
           Grids{cellInts, xSideInts, ySideInts, cellReals, xSideReals, ySideReals, dimJ, dimI}, object,
           Source{readFromLayer, readValue, &prepared}, value, count);
}
