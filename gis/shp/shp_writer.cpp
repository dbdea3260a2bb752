// SHP/SHX writer. Lengths and offsets are in 16-bit words. The file code,
// the file length and the record headers are big-endian; all else is
// little-endian.
#include "gis/shp/shp_writer.hpp"

#include <bit>
#include <cstdint>
#include <limits>

#include "gis/dbf/dbf_writer.hpp"
#include "gis/model/gis_internal.hpp"
#include "gis/shp/shp_sets.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/support.hpp"

namespace {

constexpr bool kBig = true;
constexpr bool kLittle = false;

// The box of a header before any record: 9.0e29 held as a 32-bit value, so
// the 64-bit bit patterns are 0x4626B81D20000000 and its negative.
constexpr double kBoxStart = static_cast<double>(9.0e29f);

// Values through one unit in a stated byte order, remembering failure. The
// bytes gather in a small buffer of their own and go to the unit in blocks;
// send() (or seek, rewind, flush) hands over what is pending.
struct BinOut {
    explicit BinOut(int32_t u) : unit(u) {}

    int32_t unit;
    bool ok = true;
    std::size_t n = 0;
    unsigned char buf[4096];

    void room(std::size_t k) {
        if (n + k > sizeof buf) send();
    }
    void i32(int32_t v, bool bigEndian) {
        room(4);
        const auto u = static_cast<uint32_t>(v);
        for (int i = 0; i < 4; ++i)
            buf[n + static_cast<std::size_t>(i)] = static_cast<unsigned char>(u >> (bigEndian ? 24 - 8 * i : 8 * i));
        n += 4;
    }
    void f64(double v, bool bigEndian) {
        room(8);
        const auto u = std::bit_cast<uint64_t>(v);
        for (int i = 0; i < 8; ++i)
            buf[n + static_cast<std::size_t>(i)] = static_cast<unsigned char>(u >> (bigEndian ? 56 - 8 * i : 8 * i));
        n += 8;
    }
    void send() {
        if (n > 0 && unitWriteBytes(unit, buf, n) != IoStatus::ok) ok = false;
        n = 0;
    }
    void seek(int64_t offset) {
        send();
        if (unitSeek(unit, offset) != IoStatus::ok) ok = false;
    }
    void rewind() {
        send();
        if (unitRewind(unit) != IoStatus::ok) ok = false;
    }
    void flush() {
        send();
        if (unitFlush(unit) != IoStatus::ok) ok = false;
    }
};

// The 100-byte file header of a .shp or .shx, through `stream`.
void writeFileHeader(GisShpState& s, int32_t unitLE, int32_t unitBE, int32_t stream) {
    if (unitLE < 1 && unitBE < 1) gisStopNotHere("shpnotopen");
    BinOut out{stream};
    out.rewind();
    s.fileCode = 9994;
    s.fileLength = 50;
    s.version = 1000;
    out.i32(s.fileCode, kBig);
    for (int i = 0; i < 5; ++i) out.i32(0, kBig);
    out.i32(s.fileLength, kBig);
    out.i32(s.version, kLittle);
    out.i32(s.shapeType, kLittle);
    out.f64(s.xmin, kLittle);
    out.f64(s.ymin, kLittle);
    out.f64(s.xmax, kLittle);
    out.f64(s.ymax, kLittle);
    for (int i = 0; i < 4; ++i) out.f64(0.0, kLittle);
    out.send();
    if (!out.ok) gisStopMessage("ERROR 0437 - Writing .shp file header.");
}

// One record in the .shp and its entry in the .shx.
void writeRecord(GisObject& o, GisShpState& s) {
    ++s.recordNumber;
    o.isWritten = false;
    // Negative point counts are written as none, so the record stays whole.
    const int32_t n = gisN > 0 ? gisN : 0;
    int32_t type = kShapeNull, length = 0;
    if (o.isPoint) {
        type = kShapePoint;
        length = 10;
    } else if (o.isMultiPoint) {
        type = kShapeMultiPoint;
        length = (40 + 16 * n) / 2;
    } else if (o.isLine || o.isPline || o.isPlineMultiple) {
        type = kShapePolyline;
        length = (44 + 4 * o.nr + 16 * n) / 2;
    } else if (o.isRegion) {
        type = kShapePolygon;
        length = (44 + 4 * o.nr + 16 * n) / 2;
    } else if (o.isNone) {
        type = kShapeNull;
        length = 2;
    } else {
        gisStopMessage(
            "ERROR 0350 - Trying to write a SHP object that is not yet supported.  Please contact " REACHMAP_SUPPORT
            ".");
    }
    s.recordShapeType = type;

    BinOut shp{s.shpUnitLE};
    BinOut shx{s.shxUnitBE};
    shp.i32(s.recordNumber, kBig);
    shp.i32(length, kBig);
    shp.i32(type, kLittle);
    shx.i32(s.nextOffset, kBig);
    shx.i32(length, kBig);
    s.nextOffset += length + 4;
    s.fileLength += length + 4;
    o.isWritten = true;

    if (type == kShapePoint) {
        shp.f64(gisX[1], kLittle);
        shp.f64(gisY[1], kLittle);
        if (gisX[1] < s.xmin) s.xmin = gisX[1];
        if (gisY[1] < s.ymin) s.ymin = gisY[1];
        if (gisX[1] > s.xmax) s.xmax = gisX[1];
        if (gisY[1] > s.ymax) s.ymax = gisY[1];
    } else if (type != kShapeNull) {
        double xmin = std::numeric_limits<double>::max(), ymin = xmin;
        double xmax = -xmin, ymax = -xmin;
        for (int32_t i = 1; i <= n; ++i) {
            if (gisX[i] < xmin) xmin = gisX[i];
            if (gisY[i] < ymin) ymin = gisY[i];
            if (gisX[i] > xmax) xmax = gisX[i];
            if (gisY[i] > ymax) ymax = gisY[i];
        }
        shp.f64(xmin, kLittle);
        shp.f64(ymin, kLittle);
        shp.f64(xmax, kLittle);
        shp.f64(ymax, kLittle);
        if (type == kShapeMultiPoint) {
            shp.i32(n, kLittle);
        } else {
            shp.i32(o.nr, kLittle);
            shp.i32(n, kLittle);
            for (int32_t p = 1; p <= o.nr; ++p) shp.i32(o.ir[p] - 1, kLittle);
        }
        for (int32_t i = 1; i <= n; ++i) {
            shp.f64(gisX[i], kLittle);
            shp.f64(gisY[i], kLittle);
        }
        if (xmin < s.xmin) s.xmin = xmin;
        if (ymin < s.ymin) s.ymin = ymin;
        if (xmax > s.xmax) s.xmax = xmax;
        if (ymax > s.ymax) s.ymax = ymax;
    }
    shp.send();
    shx.send();
    if (!shp.ok || !shx.ok) gisStopMessage("ERROR 0439 - Writing .shp file object coordinates.");
}

// File length at offset 24 and the box at offset 36 of a header, in place.
bool rewriteHeader(int32_t unit, int32_t fileLength, const GisShpState& s) {
    BinOut out{unit};
    out.seek(24);
    out.i32(fileLength, kBig);
    out.seek(36);
    out.f64(s.xmin, kLittle);
    out.f64(s.ymin, kLittle);
    out.f64(s.xmax, kLittle);
    out.f64(s.ymax, kLittle);
    out.flush();
    return out.ok;
}

// The words name the .dbf; the system gives them for the .shp and .shx
// rewrite too, and they stay so.
constexpr std::string_view kRewriteFailed = "ERROR 0413 - Rewriting .dbf file header with final information.";

}  // namespace

void shpWriteHeader(int32_t gisID) {
    for (int32_t k = kShpSetPoints; k <= kShpSetRegions; ++k) {
        GisShpState& s = gisShp[gisID][k];
        if (s.shpUnitLE <= 0) continue;
        if (s.prjUnit > 0) {
            bool ok = unitWriteLine(s.prjUnit, gisPrjLine.trimmed()) == IoStatus::ok;
            ok = unitFlush(s.prjUnit) == IoStatus::ok && ok;
            if (!ok) gisStopMessage("ERROR 0437 - Writing .shp file header.");
            CLOSER(s.prjUnit);
        }
        writeFileHeader(s, s.shpUnitLE, s.shpUnitBE, s.shpUnitLE);
        writeFileHeader(s, s.shxUnitLE, s.shxUnitBE, s.shxUnitBE);
        // The index records go through the big-endian unit from here on.
        if (s.shxUnitLE > 0) CLOSER(s.shxUnitLE);
        s.xmin = s.ymin = kBoxStart;
        s.xmax = s.ymax = -kBoxStart;
        s.nextOffset = 50;
        dbfWriteHeader(gisA_, gisDbf[gisID][k]);
        gisDbf[gisID][k].writtenCount = 0;
    }
}

void shpWriteObject(int32_t gisID, GisObject& o) {
    const int32_t set = shpSetOf(o);
    if (set == kShpSetNone)
        // Worded unlike the other stops of this kind, as the system prints it.
        gisStopMessage("Should not be here [gisWriteObject-shp].  Please contact " REACHMAP_SUPPORT ".");
    if (set == kShpSetEvery) {
        for (int32_t k = kShpSetPoints; k <= kShpSetRegions; ++k)
            if (gisDbf[gisID][k].dbfUnit > 0) writeRecord(o, gisShp[gisID][k]);
        return;
    }
    if (o.isText && set == kShpSetPoints && !o.isPoint) {
        // A text becomes a point at entry 1; its string and box are lost.
        o.isText = false;
        o.isPoint = true;
    }
    writeRecord(o, gisShp[gisID][set]);
}

void shpFinishSet(GisShpState& s) {
    if (s.shpUnitLE > 0 && s.recordNumber >= 1) {
        if (!rewriteHeader(s.shpUnitLE, s.fileLength, s)) gisStopMessage(kRewriteFailed);
        CLOSER(s.shpUnitLE);
        if (s.shpUnitBE > 0) CLOSER(s.shpUnitBE);
    }
    if (s.shxUnitBE > 0 && s.recordNumber >= 1) {
        if (!rewriteHeader(s.shxUnitBE, 50 + 4 * s.recordNumber, s)) gisStopMessage(kRewriteFailed);
        CLOSER(s.shxUnitBE);
    }
}
