// MIF/MID writer: text files, every line ending in CR LF, coordinates as
// fixed-point fields of 16 columns with 6 decimals (3 for a text box).
#include "gis/mif/mif_writer.hpp"

#include <cstring>

#include "gis/model/gis_internal.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/numbers.hpp"
#include "text/support.hpp"

namespace {

constexpr std::string_view kObjectWriteFailed = "ERROR 0439 - Writing .mif file object coordinates.";

bool sameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// The point lines of the last run of points written, by coordinates, and
// of points offered by the caller for the next run. The converter writes a
// section's surface line and then each of its points as a point object:
// those reuse the text instead of formatting it again. Equal bits give equal
// text, so a stale entry can never give a wrong line.
struct PairMemo {  // no initializers: the table starts as zero bytes, untouched
    bool made;
    double x, y;
    char text[32];

    bool holds(double px, double py) const { return made && sameBits(x, px) && sameBits(y, py); }
    void set(double px, double py) {
        made = true;
        x = px;
        y = py;
    }
};
constexpr int kMemoCap = 4096;
PairMemo memo[kMemoCap];
int memoCount = 0;
int memoNext = 0;

// Writes the lines of one object and remembers whether any write failed.
struct MifOut {
    int32_t unit;
    bool ok = true;

    void line(std::string_view s) {
        if (unitWriteLine(unit, s) != IoStatus::ok) ok = false;
    }
    // A statement word followed by a count: "Pline 25".
    void counted(std::string_view word, int64_t n) {
        char b[64];
        std::size_t k = word.size();
        for (std::size_t i = 0; i < k; ++i) b[i] = word[i];
        char* e = putCount(b + k, n);
        line({b, static_cast<std::size_t>(e - b)});
    }
    // The point lines of points first to first + count - 1, remembered.
    void points(int32_t first, int32_t count) {
        memoCount = 0;
        memoNext = 0;
        for (int32_t i = first; i < first + count; ++i) {
            if (memoCount < kMemoCap) {
                PairMemo& m = memo[memoCount++];
                if (!m.holds(gisX[i], gisY[i])) {
                    m.set(gisX[i], gisY[i]);
                    putFixed(m.text, 16, 6, m.x);
                    putFixed(m.text + 16, 16, 6, m.y);
                }
                line({m.text, 32});
            } else {
                char b[32];
                putFixed(b, 16, 6, gisX[i]);
                putFixed(b + 16, 16, 6, gisY[i]);
                line({b, 32});
            }
        }
    }
};

// Parts as "Pline Multiple" and "Region" write them: for each part a count
// line and its points. The last part runs to gisN.
void writeParts(MifOut& out, const GisObject& o) {
    for (int32_t p = 1; p <= o.nr; ++p) {
        const int32_t first = o.ir[p];
        const int64_t count =
            p < o.nr ? static_cast<int64_t>(o.ir[p + 1]) - first : static_cast<int64_t>(gisN) - first + 1;
        out.counted(" ", count);
        if (count > 0) out.points(first, static_cast<int32_t>(count));
    }
}

}  // namespace

void mifWriteHeader(int32_t gisID) {
    MifOut out{gisMif[gisID].mifUnit};
    const int32_t n = gisA_.n;
    // The attribute table holds no more than its capacity.
    if (n > kGisMaxAttributes) gisStopNotHere("mifColumns>256");
    out.line("Version 300");
    out.line("Charset \"WindowsLatin1\"");
    out.line("Delimiter \",\"");
    out.line(gisCoordSysLine.trimmed());
    out.counted("Columns ", n);
    for (int32_t i = 1; i <= n; ++i) {
        GisLine l;
        l << "  " << gisA_.name[i].trimmed() << " " << gisA_.type[i].trimmed();
        if (gisA_.width[i] > 0) l << "(" << countText(gisA_.width[i]) << ")";
        out.line(l.view());
    }
    out.line("Data");
    out.line("");
    // A header that cannot be written ends the run; no number is given to it.
    if (!out.ok) gisStopMessage("ERROR - Writing .mif file header.");
}

void mifOfferPointText(int32_t k, const char* text) {
    if (k < 1 || k > kMemoCap) return;
    PairMemo& m = memo[k - 1];
    m.set(gisX[k], gisY[k]);
    std::memcpy(m.text, text, 32);
}

void mifWriteObject(int32_t gisID, const GisObject& o) {
    const GisMifState& m = gisMif[gisID];
    MifOut out{m.mifUnit};
    char b[80];
    if (o.isPoint) {
        std::memcpy(b, "Point ", 6);
        if (memoNext < memoCount && memo[memoNext].holds(gisX[1], gisY[1])) {
            std::memcpy(b + 6, memo[memoNext++].text, 32);
        } else {
            putFixed(b + 6, 16, 6, gisX[1]);
            putFixed(b + 22, 16, 6, gisY[1]);
        }
        out.line({b, 38});
    } else if (o.isMultiPoint) {
        out.counted("MultiPoint ", gisN);
        out.points(1, gisN);
    } else if (o.isLine) {
        std::memcpy(b, "Line ", 5);
        putFixed(b + 5, 16, 6, gisX[1]);
        putFixed(b + 21, 16, 6, gisY[1]);
        putFixed(b + 37, 16, 6, gisX[2]);
        putFixed(b + 53, 16, 6, gisY[2]);
        out.line({b, 69});
    } else if (o.isPline) {
        out.counted("Pline ", gisN);
        out.points(1, gisN);
    } else if (o.isPlineMultiple) {
        out.counted("Pline Multiple ", o.nr);
        writeParts(out, o);
    } else if (o.isRegion) {
        if (o.nr < 2) {
            // One ring of all points, whatever the part table says.
            out.line("Region 1");
            out.counted(" ", gisN);
            out.points(1, gisN);
        } else {
            out.counted("Region ", o.nr);
            writeParts(out, o);
        }
    } else if (o.isText) {
        out.line("Text");
        out.line(gisRecordLine.trimmed());
        std::memcpy(b, "    ", 4);
        putFixed(b + 4, 16, 3, gisX[2]);
        putFixed(b + 20, 16, 3, gisY[2]);
        putFixed(b + 36, 16, 3, gisX[3]);
        putFixed(b + 52, 16, 3, gisY[3]);
        out.line({b, 68});
    } else if (o.isNone) {
        out.line("none");
    } else {
        gisStopMessage(
            "ERROR 0350 - Trying to write a MIF object that is not yet supported.  Please contact " REACHMAP_SUPPORT
            ".");
    }
    if (!o.isNone && !m.style1.blank()) {
        out.line(m.style1.trimmed());
        if (!m.style2.blank()) out.line(m.style2.trimmed());
    }
    if (!out.ok) gisStopMessage(kObjectWriteFailed);
}

void mifWriteRecord(int32_t gisID, const GisObject& object, std::string_view line, bool large) {
    if (unitWriteLine(gisMif[gisID].midUnit, trimmed(line)) == IoStatus::ok) return;
    GisLine l;
    l << (large ? "ERROR 0254 - Failed to write large attribute data record for a "
                : "ERROR 0254 - Failed to write attribute data record for a ")
      << object.type.trimmed() << " object in GIS layer.";
    gisStopMessage(l.view());
}
