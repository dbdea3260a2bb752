// MIF/MID reader. Object statements are recognised by their first word in
// any case; lines that match no statement (Pen, Brush, Symbol and the other
// style lines) are passed over. Coordinates are free-format numbers, one
// point a line.
#include "gis/mif/mif_reader.hpp"

#include <cstring>

#include "gis/model/gis_internal.hpp"
#include "runtime/exits.hpp"
#include "runtime/messages.hpp"
#include "runtime/platform.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace {

constexpr std::string_view k0308 = "ERROR 0308 - Reading .mif file.  Check file format is not corrupted.";
constexpr std::string_view k0309 = "ERROR 0309 - Unexpected end of .mif file encountered.";
constexpr std::string_view k0313 = "ERROR 0313 - Could not find start of \"Data\" block in .mif file.";
constexpr std::string_view k0318 = "ERROR 0318 - Less than 5 points for Region object in mif file.";
constexpr std::string_view k0321 = "ERROR 0321 - Reading .mif file object type.";

// Lines of the reader's own: a coordinate line and the look-ahead behind a
// region, which must not disturb the layer's statement line.
Text<1000> gPointLine;
Text<1000> gAheadLine;
Text<1000> gAheadRest;
GisObject gAhead;

struct Keyword {
    std::string_view word;
    bool GisObject::*flag;
};

// Tested in this order; the first whose letters begin the statement wins.
constexpr Keyword kKeywords[] = {
    {"POINT", &GisObject::isPoint},
    {"PLINE MULTIPLE", &GisObject::isPlineMultiple},
    {"PLINE", &GisObject::isPline},
    {"LINE", &GisObject::isLine},
    {"REGION", &GisObject::isRegion},
    {"MULTIPOINT", &GisObject::isMultiPoint},
    {"NONE", &GisObject::isNone},
    {"RECT", &GisObject::isRect},
    {"ROUNDRECT", &GisObject::isRoundRect},
    {"TEXT", &GisObject::isText},
    {"ARC", &GisObject::isArc},
    {"ELLIPSE", &GisObject::isEllipse},
    {"COLLECTION", nullptr},
};

std::string_view tail(std::string_view s, std::size_t at) { return at < s.size() ? s.substr(at) : std::string_view(); }

// The next line of an object's coordinates.
void objectLine(int32_t unit, TextRef line) {
    switch (unitReadLine(unit, line)) {
        case IoStatus::ok: return;
        case IoStatus::end: gisStopMessage(k0309);
        case IoStatus::error: gisStopMessage(k0308);
    }
}

// `n` numbers from a text; a value that is missing or not a number is a
// corrupt file.
void numbersFrom(std::string_view s, double* v, int n) {
    FreeFormat ff(s);
    for (int i = 0; i < n; ++i) {
        v[i] = 0.0;
        if (ff.real8(v[i]) != ReadResult::ok) gisStopMessage(k0308);
    }
}

// Numbers from the statement's rest, or from the next line when the rest
// holds nothing.
void numbersFromRest(int32_t unit, std::string_view rest, double* v, int n) {
    if (trimmedLength(rest) == 0) {
        objectLine(unit, gPointLine);
        rest = gPointLine.view();
    }
    numbersFrom(rest, v, n);
}

// A count that may not be negative.
int32_t countFrom(std::string_view s, std::string_view failure) {
    int32_t n = 0;
    if (readInt4(s, n) != ReadResult::ok || n < 0) gisStopMessage(failure);
    return n;
}

void needSlots(int64_t n, int32_t maxN) {
    if (n > maxN) gisStopTooManyNodes(false, n, maxN);
}

// What becomes of the points that are read.
enum class Keep { all, first, none };

// `count` point lines into slots first.. of X, Y, or only the first of
// them, or none; the others are read past.
void readPoints(int32_t unit, int32_t count, double* X, double* Y, int32_t first, Keep keep) {
    double v[2];
    for (int32_t i = 0; i < count; ++i) {
        objectLine(unit, gPointLine);
        numbersFrom(gPointLine.view(), v, 2);
        if (keep == Keep::all || (keep == Keep::first && i == 0)) {
            X[first + i] = v[0];
            Y[first + i] = v[1];
        }
    }
}

// A line or polyline part of `n` points: all of them, or with
// wantCoordinates false only the first.
void readPart(int32_t unit, int32_t n, double* X, double* Y, int32_t maxN, int32_t& N, bool wantCoordinates) {
    if (wantCoordinates) needSlots(n, maxN);
    else if (n > 0) needSlots(1, maxN);
    readPoints(unit, n, X, Y, 1, wantCoordinates ? Keep::all : Keep::first);
    N = n;
}

void readRegion(int32_t unit, GisObject& o, double* X, double* Y, int32_t maxN, int32_t& N, bool& needsCentre,
                double& cx, double& cy, bool wantCoordinates) {
    int64_t n = 0;
    int32_t first = 1;  // slot of the part's first point
    for (int32_t p = 1; p <= o.nr; ++p) {
        objectLine(unit, gPointLine);
        const int32_t c = countFrom(gPointLine.view(), k0308);
        // The slot behind a part copies its second point: a part needs two.
        if (c < 2) gisStopMessage(k0318);
        n += static_cast<int64_t>(c) + 1;
        if (wantCoordinates) {
            needSlots(n, maxN);
            readPoints(unit, c, X, Y, first, Keep::all);
            X[n] = X[first + 1];
            Y[n] = Y[first + 1];
        } else {
            // Only the first point of the first part is kept.
            if (p == 1) needSlots(1, maxN);
            readPoints(unit, c, X, Y, 1, p == 1 ? Keep::first : Keep::none);
        }
        if (n > INT32_MAX - 2) gisStopTooManyNodes(false, n, maxN);
        o.ir[p] = static_cast<int32_t>(n - 1);
        first = static_cast<int32_t>(n + 1);
    }
    N = static_cast<int32_t>(n);
    if (o.nr < 1 || n < 5) gisStopMessage(k0318);

    // A "Center" clause may follow, behind style lines; any other statement
    // is left for the next call.
    if (!mifObjectType(unit, gAheadLine, gAheadRest, gAhead, true)) return;
    if (gAhead.hasCenter) {
        double v[2];
        numbersFrom(gAheadRest.view(), v, 2);
        cx = v[0];
        cy = v[1];
        o.hasCenter = true;
        needsCentre = false;
    } else {
        unitBackspace(unit);
    }
}

// Reads on to a line that holds `word` (any case); false when the file ends
// or cannot be read first.
bool findLine(int32_t unit, TextRef line, std::string_view word) {
    for (;;) {
        if (unitReadLine(unit, line) != IoStatus::ok) return false;
        if (FLAGEXISTS(line.view(), word)) return true;
    }
}

void warnAndPause(std::string_view line) {
    gisSetMessage(line);
    gisMessageOut(1);
    PAUSER();
}

}  // namespace

bool mifFindColumns(int32_t unit, TextRef line, int32_t& count, bool warnOnly) {
    unitRewind(unit);
    if (!findLine(unit, line, "Columns")) {
        if (!warnOnly) gisStopMessage("ERROR 0315 - Could not find start of attribute definitions in .mif file");
        warnAndPause("WARNING 0315 - Problems finding start of attribute definitions in .mif file");
        return false;
    }
    // The count stands behind the word (from position 8 when the word
    // starts the line, as it does in every .mif).
    Text<1000> rest;
    FLAGEXISTSRET(line.view(), "Columns", rest);
    int32_t n = 0;
    if (readInt4(rest.view(), n) != ReadResult::ok) {
        if (!warnOnly) gisStopMessage("ERROR 0314 - Could not read number of attributes in .mif file");
        warnAndPause("WARNING 0314 - Problems reading number of attributes in .mif file");
        return false;
    }
    count = n;
    return true;
}

void mifSplitAttribute(std::string_view line, TextRef name, TextRef type) {
    Text<1000> t;
    TRIMF(t, line);
    std::string_view s = t.trimmed();
    std::size_t cut = 0;
    while (cut < s.size() && s[cut] != ' ' && s[cut] != '\t') ++cut;
    name.assign(s.substr(0, cut));
    std::string_view rest = tail(s, cut);
    while (!rest.empty() && (rest[0] == ' ' || rest[0] == '\t')) rest.remove_prefix(1);
    type.assign(rest);
}

void mifReadHeader(GisMifState& m) {
    if (m.mifUnit < 1) return;
    int32_t n = 0;
    mifFindColumns(m.mifUnit, m.line, n, false);
    if (n < 1) gisStopMessage("ERROR 0319 - No attributes specified in .mif file.");
    if (n > kGisMaxAttributes) {
        gisSetMessage("ERROR 0314 - Could not read number of attributes in .mif file");
        GisLine l;
        l << "               " << countText(n) << " attributes are more than the limit of "
          << countText(kGisMaxAttributes);
        gisMessageLine[2] = l.view();
        gisMessageOut(1);
        EXITS();
    }
    for (int32_t i = 1; i <= n; ++i) {
        if (unitReadLine(m.mifUnit, m.line) != IoStatus::ok)
            gisStopMessage("ERROR 0316 - Could not read attribute definitions in .mif file");
        mifSplitAttribute(m.line.view(), m.attributeNames[i], m.attributeTypes[i]);
    }
    m.attributeCount = n;
    {
        GisLine l;
        l << countText(n) << " MIF Fields: Name [#/Type]: ";
        gisReport(0, l.view());
    }
    for (int32_t i = 1; i <= n; ++i) {
        GisLine l;
        l << "   " << m.attributeNames[i].trimmed() << " [" << countText(i) << "/" << m.attributeTypes[i].trimmed()
          << "]";
        gisReport(0, l.view());
    }
    if (!findLine(m.mifUnit, m.line, "Data")) gisStopMessage(k0313);
}

void mifFindData(int32_t unit) {
    // The attribute lines are passed by their count, so that an attribute
    // whose name holds "Data" is not taken for the start of the data.
    static Text<1000> line;
    int32_t n = 0;
    unitRewind(unit);
    if (!findLine(unit, line, "Columns")) gisStopMessage(k0313);
    Text<1000> rest;
    FLAGEXISTSRET(line.view(), "Columns", rest);
    if (readInt4(rest.view(), n) != ReadResult::ok) n = 0;
    for (int32_t i = 0; i < n; ++i)
        if (unitReadLine(unit, line) != IoStatus::ok) gisStopMessage(k0313);
    if (!findLine(unit, line, "Data")) gisStopMessage(k0313);
}

bool mifObjectType(int32_t unit, TextRef line, TextRef lineRest, GisObject& o, bool centreEnds) {
    for (;;) {
        if (unitAtEnd(unit)) return false;
        switch (unitReadLine(unit, line)) {
            case IoStatus::ok: break;
            case IoStatus::end: gisStopMessage("ERROR 0322 - End of .mif file encountered whilst reading object type.");
            case IoStatus::error: gisStopMessage(k0321);
        }
        gisClearObject(o);
        const std::string_view t = line.view();
        std::size_t at = 0;
        while (at < t.size() && (t[at] == ' ' || t[at] == '\t')) ++at;
        char head[16];
        for (std::size_t i = 0; i < sizeof head; ++i) head[i] = at + i < t.size() ? upperByte(t[at + i]) : ' ';
        const std::string_view h(head, sizeof head);

        for (const Keyword& k : kKeywords) {
            if (!h.starts_with(k.word)) continue;
            if (k.flag == nullptr)
                gisStopMessage(
                    "ERROR 0303 - MIF \"Collection\" objects not supported.  Delete or disaggregate object.");
            o.*k.flag = true;
            o.type = k.word;
            const std::string_view rest = tail(t, at + k.word.size());
            if (o.isPlineMultiple) {
                o.np = countFrom(rest, k0321);
                o.nr = 0;  // raised by each part read, as the .shp reader does
            } else if (o.isMultiPoint) {
                o.np = countFrom(rest, k0321);
            } else if (o.isRegion) {
                o.nr = countFrom(rest, k0321);
                if (o.nr > kGisMaxParts) {
                    GisLine l;
                    // "below of": the words stand as the system prints them.
                    l << "ERROR 0304 - Exceeded maximum number of polygons in region below of "
                      << countText(kGisMaxParts);
                    gisSetMessage(l.view());
                    gisMessageLine[2] = t;
                    gisMessageOut(1);
                    EXITS();
                }
            }
            lineRest.assign(rest);
            return true;
        }
        if (h.starts_with("CENTER")) {
            o.hasCenter = true;
            o.type = "CENTER";
            if (centreEnds) {
                lineRest.assign(tail(t, at + 6));
                return true;
            }
        }
    }
}

bool mifObject(int32_t unit, std::string_view lineRest, GisObject& o, double* X, double* Y, int32_t maxN, int32_t& N,
               bool& needsCentre, double& cx, double& cy, bool wantCoordinates) {
    if (unit < 1) return false;
    double v[4];
    if (o.isPoint) {
        needSlots(1, maxN);
        numbersFromRest(unit, lineRest, v, 2);
        X[1] = v[0];
        Y[1] = v[1];
        N = 1;
    } else if (o.isMultiPoint) {
        needSlots(1, maxN);
        objectLine(unit, gPointLine);
        numbersFrom(gPointLine.view(), v, 2);
        X[1] = v[0];
        Y[1] = v[1];
        N = 1;
    } else if (o.isLine || o.isRect || o.isRoundRect) {
        needSlots(2, maxN);
        numbersFromRest(unit, lineRest, v, 4);
        X[1] = v[0];
        Y[1] = v[1];
        X[2] = v[2];
        Y[2] = v[3];
        N = 2;
    } else if (o.isArc || o.isEllipse) {
        N = 0;
    } else if (o.isPline) {
        // The count stands on the statement line; a bare "Pline" has it on
        // the next line.
        std::string_view counted = lineRest;
        if (trimmedLength(counted) == 0) {
            objectLine(unit, gPointLine);
            counted = gPointLine.view();
        }
        readPart(unit, countFrom(counted, k0308), X, Y, maxN, N, wantCoordinates);
    } else if (o.isPlineMultiple) {
        objectLine(unit, gPointLine);
        const int32_t n = countFrom(gPointLine.view(), k0308);
        ++o.nr;
        readPart(unit, n, X, Y, maxN, N, wantCoordinates);
    } else if (o.isRegion) {
        readRegion(unit, o, X, Y, maxN, N, needsCentre, cx, cy, wantCoordinates);
    }
    return true;
}

void mifNormalCoordSys(TextRef out, std::string_view line) {
    static Text<kNameCap> t;
    UPPERCASE(t, line);
    REMOVESPACES(t, t);
    REMOVETABS(t, t);
    REMOVEQUOTES(t, t);
    TRIMF(out, t);
}

void mifReadCoordSysLine(TextRef result, std::string_view name) {
    result.assign("CoordSys NonEarth Units \"m\" Bounds(-9999999, -9999999) (9999999, 9999999)");
    Text<kNameCap> file;
    TRIMF(file, name);
    if (!platformFileExists(file)) {
        GisLine l;
        l << "WARNING 0307 - No MapInfo Projection or mif header file " << file.trimmed();
        gisSetMessage(l.view());
        gisMessageLine[2] = "               Non-Earth Coordinates will be used.  [mifReadCoordSysLine]";
        gisMessageOut(1);
        PAUSER();
        return;
    }
    int32_t unit = 0;
    OPENERFREE(unit, "I ", file, 0);
    static Text<kNameCap> line;
    if (findLine(unit, line, "CoordSys")) result.assign(line.view());
    else warnAndPause("WARNING 0312 - Problems finding CoordSys line in .mif file");
    CLOSER(unit);
}

void mifCopyHeader(int32_t from, int32_t to) {
    {
        GisLine l;
        l << "Copying header info from file unit " << countText(from);
        gisReport(0, l.view());
    }
    // The whole header is wanted, wherever the source stood.
    unitRewind(from);
    static Text<kNameCap> line;
    for (;;) {
        switch (unitReadLine(from, line)) {
            case IoStatus::ok: break;
            case IoStatus::end: gisStopMessage("ERROR 0302 - End of File encountered (mifCopyHeader)");
            case IoStatus::error: gisStopMessage("ERROR 0301 - Reading data (mifCopyHeader)");
        }
        if (FLAGEXISTS(line.view(), "Columns")) return;
        if (unitWriteLine(to, line.trimmed()) != IoStatus::ok) gisStopMessage("ERROR - Writing .mif file header.");
    }
}

void mifProjectionCheck(int32_t unit) {
    static Text<kNameCap> line;
    line = "XXX";
    const bool found = findLine(unit, line, "CoordSys");
    unitRewind(unit);
    if (!found) {
        // A file without a CoordSys line says nothing about its projection:
        // the warning is all there is to report.
        gisSetMessage("WARNING 0306 - Problems finding CoordSys line in .mif file.");
        gisMessageOut(1);
        return;
    }
    static Text<kNameCap> normal, reference;
    mifNormalCoordSys(normal, line.view());
    mifNormalCoordSys(reference, gisMifProjection.view());
    if (normal.trimmed() == reference.trimmed()) return;
    if (gisProjectionCheckIsError) {
        DMESSAGES.line1 =
            "ERROR 0305 - Projection of .mif file is different to that specified by the MI Projection == command.";
        DMESSAGES.line2 = "Use \"MI Projection Check == WARNING\" to change message to a WARNING.";
        DMESSAGE(1);
        EXITS();
    }
    DMESSAGES.line1 =
        "WARNING 0305 - Projection of .mif file is different to that specified by the MI Projection == command.";
    DMESSAGE(0);
}
