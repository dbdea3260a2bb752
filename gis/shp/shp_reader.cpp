// SHP reader. Lengths and offsets are in 16-bit words. Every count that the
// file gives is checked against the tables and against the record's stated
// length before anything is stored.
#include "gis/shp/shp_reader.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "gis/model/gis_internal.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"
#include "text/support.hpp"

namespace {

constexpr std::string_view k0424 = "ERROR 0424 - Reading .shp file object type.";
constexpr std::string_view k0425 = "ERROR 0425 - End of .shp file encountered whilst reading object type.";
constexpr std::string_view k0429 = "ERROR 0429 - Reading .shp file object coordinates.";
constexpr std::string_view k0430 = "ERROR 0430 - End of .shp file encountered whilst reading object coordinates.";
constexpr std::string_view kNotHere = "Should not be here [shpReadObject].  Please contact " REACHMAP_SUPPORT ".";

int32_t be32(const unsigned char* p) {
    return static_cast<int32_t>((uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | p[3]);
}
int32_t le32(const unsigned char* p) {
    return static_cast<int32_t>((uint32_t{p[3]} << 24) | (uint32_t{p[2]} << 16) | (uint32_t{p[1]} << 8) | p[0]);
}
double le64(const unsigned char* p) {
    uint64_t u = 0;
    for (int i = 7; i >= 0; --i) u = (u << 8) | p[i];
    return std::bit_cast<double>(u);
}

// Bytes of a record header and its counts; then bytes of coordinates.
void recordBytes(int32_t unit, void* b, std::size_t n) {
    switch (unitReadBytes(unit, b, n)) {
        case IoStatus::ok: return;
        case IoStatus::end: gisStopMessage(k0425);
        case IoStatus::error: gisStopMessage(k0424);
    }
}
void coordinateBytes(int32_t unit, void* b, std::size_t n) {
    switch (unitReadBytes(unit, b, n)) {
        case IoStatus::ok: return;
        case IoStatus::end: gisStopMessage(k0430);
        case IoStatus::error: gisStopMessage(k0429);
    }
}

// A record whose counts cannot be true: the words of a failed read, and
// where and why.
[[noreturn]] void stopCorrupt(int64_t at, std::string_view why) {
    gisSetMessage(k0424);
    GisLine l;
    l << "               Record at byte " << countText(at) << ": " << why;
    gisMessageLine[2] = l.view();
    gisMessageOut(1);
    EXITS();
}

void needSlots(int64_t n, int32_t maxN) {
    if (n > maxN) gisStopTooManyNodes(true, n, maxN);
}

constexpr int32_t kBlockPoints = 512;
unsigned char gBlock[16 * kBlockPoints];
unsigned char gStarts[4 * kGisMaxParts];

// `count` points into X, Y from slot `first`; with X null they are read past.
void readPoints(int32_t unit, double* X, double* Y, int64_t first, int64_t count) {
    while (count > 0) {
        const auto k = static_cast<int32_t>(std::min<int64_t>(count, kBlockPoints));
        coordinateBytes(unit, gBlock, static_cast<std::size_t>(16 * k));
        if (X != nullptr) {
            for (int32_t i = 0; i < k; ++i) {
                X[first + i] = le64(gBlock + 16 * i);
                Y[first + i] = le64(gBlock + 16 * i + 8);
            }
        }
        first += k;
        count -= k;
    }
}

// The part starts of a polyline or polygon into ir[1..parts], the point
// count behind them, each start checked to rise within the points.
void readParts(int32_t unit, GisObject& o, int32_t parts, int32_t points, bool polygon, int64_t at) {
    if (parts > 0) recordBytes(unit, gStarts, static_cast<std::size_t>(4 * parts));
    for (int32_t p = 1; p <= parts; ++p) o.ir[p] = le32(gStarts + 4 * (p - 1));
    o.ir[parts + 1] = points;
    if (parts > 0 && o.ir[1] != 0) stopCorrupt(at, "its first part does not start at its first point");
    for (int32_t p = 1; p <= parts; ++p) {
        const int64_t c = static_cast<int64_t>(o.ir[p + 1]) - o.ir[p];
        if (c < 0) stopCorrupt(at, "its part starts do not rise within its points");
        // The slot behind a ring copies its second point: a ring needs two.
        if (polygon && c < 2) stopCorrupt(at, "it has a ring of fewer than two points");
    }
}

// The set's records end where the header says, or at the end of the file.
int64_t declaredEnd(const GisShpState& s) {
    const int64_t end = static_cast<int64_t>(s.fileLength) * 2;
    return end >= 100 ? end : -1;
}

}  // namespace

void shpReadHeader(int32_t unit, int32_t& fileCode, int32_t& fileLength, int32_t& version, int32_t& shapeType,
                   double& xmin, double& ymin, double& xmax, double& ymax) {
    if (unit < 1) return;
    unsigned char h[100];
    IoStatus st = unitRewind(unit);
    if (st == IoStatus::ok) st = unitReadBytes(unit, h, sizeof h);
    if (st == IoStatus::end) gisStopMessage("ERROR 0428 - End of .shp file encountered whilst reading header.");
    if (st != IoStatus::ok) gisStopMessage("ERROR 0427 - Reading .shp file header.");
    fileCode = be32(h);
    fileLength = be32(h + 24);
    version = le32(h + 28);
    shapeType = le32(h + 32);
    xmin = le64(h + 36);
    ymin = le64(h + 44);
    xmax = le64(h + 52);
    ymax = le64(h + 60);
}

bool shpAtEnd(const GisShpState& s) {
    const int32_t u = s.shpUnitLE;
    if (u < 1) return true;
    const int64_t end = declaredEnd(s);
    if (end > 0 && unitTell(u) >= end) return true;
    return unitAtEnd(u);
}

bool shpObjectType(GisShpState& s, GisObject& o) {
    const int32_t u = s.shpUnitLE;
    if (u < 1) return false;
    if (s.nextOffset < 50) s.nextOffset = 50;
    const int64_t at = static_cast<int64_t>(s.nextOffset) * 2;
    const int64_t end = declaredEnd(s);
    if (end > 0 && at >= end) return false;
    if (unitSeek(u, at) != IoStatus::ok) gisStopMessage(k0424);
    if (unitAtEnd(u)) return false;

    unsigned char h[12];
    recordBytes(u, h, sizeof h);
    gisClearObject(o);
    o.nr = 0;
    o.isWritten = false;
    s.recordNumber = be32(h);
    const int32_t length = be32(h + 4);
    const int32_t type = le32(h + 8);
    s.recordShapeType = type;
    const int64_t next = static_cast<int64_t>(s.nextOffset) + 4 + length;
    if (length < 2 || next > INT32_MAX) stopCorrupt(at, "its stated length cannot be true");

    int64_t needed = 2;  // words of content that the counts call for
    switch (type) {
        case kShapeNull: o.isNone = true; break;
        case kShapePoint:
            o.isPoint = true;
            needed = 10;
            break;
        case kShapePolyline:
        case kShapePolygon: {
            unsigned char b[40];
            recordBytes(u, b, sizeof b);
            const int32_t parts = le32(b + 32);
            const int32_t points = le32(b + 36);
            if (parts >= kGisMaxParts) {
                GisLine l;
                l << (type == kShapePolyline
                          ? "ERROR 0421 - Exceeded maximum number of parts in a .shp polyline.  Limit is "
                          : "ERROR 0422 - Exceeded maximum number of regions within a .shp region.  Limit is ")
                  << countText(kGisMaxParts);
                gisStopMessage(l.view());
            }
            if (parts < 0 || points < 0) stopCorrupt(at, "its part or point count is negative");
            needed = 22 + 2 * static_cast<int64_t>(parts) + 8 * static_cast<int64_t>(points);
            if (length < needed) stopCorrupt(at, "its stated length is shorter than its counts need");
            readParts(u, o, parts, points, type == kShapePolygon, at);
            if (type == kShapePolyline) {
                o.np = parts;
                o.isPline = parts == 1;
                o.isPlineMultiple = parts > 1;
            } else {
                o.nr = parts;
                o.isRegion = true;
            }
            break;
        }
        case kShapeMultiPoint: {
            unsigned char b[36];
            recordBytes(u, b, sizeof b);
            const int32_t points = le32(b + 32);
            if (points < 0) stopCorrupt(at, "its point count is negative");
            o.np = points;
            o.isMultiPoint = true;
            needed = 20 + 8 * static_cast<int64_t>(points);
            break;
        }
        default: {
            GisLine l;
            const int32_t name = type >= 0 && type < 32 ? type : 32;
            l << "ERROR 0423 - Unsupported .shp object type " << gisShapeTypeNames[name].trimmed() << " ["
              << countText(type) << "]";
            gisStopMessage(l.view());
        }
    }
    if (length < needed) stopCorrupt(at, "its stated length is shorter than its counts need");
    s.nextOffset = static_cast<int32_t>(next);
    o.type = gisShapeTypeNames[type].trimmed();
    return true;
}

bool shpReadObject(int32_t unit, int32_t shapeType, GisObject& o, double* X, double* Y, int32_t maxN, int32_t& N,
                   bool wantCoordinates) {
    if (unit < 1) return false;
    switch (shapeType) {
        case kShapeNull: break;
        case kShapePoint:
        case kShapeMultiPoint:
            needSlots(1, maxN);
            readPoints(unit, X, Y, 1, 1);
            N = 1;
            break;
        case kShapePolyline: {
            // A polyline record of no part is valid (its flags stay clear):
            // it reads as an empty polyline, with no point, however often
            // it is read.
            if (o.np == 0) {
                N = 0;
                break;
            }
            // One part a call, no more than the record holds.
            if (o.nr < 0 || o.nr >= o.np || o.np >= kGisMaxParts) gisStopMessage(kNotHere);
            ++o.nr;
            const int32_t c = o.ir[o.nr + 1] - o.ir[o.nr];
            if (c < 0) gisStopMessage(kNotHere);
            if (wantCoordinates) {
                needSlots(c, maxN);
                readPoints(unit, X, Y, 1, c);
            } else {
                readPoints(unit, nullptr, nullptr, 1, c);
            }
            N = c;
            break;
        }
        case kShapePolygon: {
            // A polygon is read whole, once.
            if (o.isWritten || o.nr < 0 || o.nr >= kGisMaxParts) gisStopMessage(kNotHere);
            const int32_t points = o.ir[o.nr + 1];
            const int64_t slots = static_cast<int64_t>(o.nr) + points;
            if (!wantCoordinates) {
                readPoints(unit, nullptr, nullptr, 1, points);
                N = static_cast<int32_t>(std::min<int64_t>(slots, INT32_MAX));
                break;
            }
            needSlots(slots, maxN);
            int64_t n = 0;
            int64_t first = 1;
            for (int32_t p = 1; p <= o.nr; ++p) {
                const int64_t c = static_cast<int64_t>(o.ir[p + 1]) - o.ir[p];
                if (c < 2 || n + c + 1 > slots) gisStopMessage(kNotHere);
                n += c + 1;
                readPoints(unit, X, Y, first, c);
                X[n] = X[first + 1];
                Y[n] = Y[first + 1];
                o.ir[p] = static_cast<int32_t>(n - 1);
                first = n + 1;
            }
            N = static_cast<int32_t>(n);
            break;
        }
        default: gisStopMessage(kNotHere);
    }
    o.isWritten = true;
    return true;
}

void prjProjectionName(TextRef out, TextRef line) {
    UPPERCASE(line, line.view());
    Text<kNameCap> rest;
    out.clear();
    if (!FLAGEXISTSRET(line.view(), "PROJCS[", rest)) return;
    FreeFormat(rest.view()).text(out);
}

void prjProjectionCheck(std::string_view prjName) {
    int32_t unit = 0;
    OPENERFREE(unit, "I ", prjName, 0);
    static Text<kNameCap> line;
    if (unitReadLine(unit, line) != IoStatus::ok)
        gisStopMessage("ERROR 0420 - Could not read projection line in .prj file.");
    CLOSER(unit);
    static Text<kNameCap> name, reference;
    prjProjectionName(name, line);
    if (!FLAGEXISTS(line.view(), "PROJCS["))
        gisReport(1,
                  "WARNING 0420 - Could not find PROJCS definition.  Projection of .shp file might not be cartesian.");
    TRIMF(name, name);
    // The reference is kept in this form already; forming it again costs
    // nothing and forgives a caller that set it as the file spells it.
    UPPERCASE(reference, gisShpProjection.view());
    TRIMF(reference, reference);
    if (name.trimmed() == reference.trimmed()) return;
    if (gisProjectionCheckIsError) {
        gisSetMessage(
            "ERROR 0305 - Projection of .shp file is different to that specified by the SHP Projection == command.");
        gisMessageLine[2] = "Use \"GIS Projection Check == WARNING\" to change message to a WARNING.";
        gisMessageOut(1);
        EXITS();
    }
    gisSetMessage(
        "WARNING 0305 - Projection of .shp file is different to that specified by the SHP Projection == command.");
    gisMessageOut(0);
}
