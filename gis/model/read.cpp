// The public read operations shared by both file families: the checks on the
// layer number, the family's own reader, and what gisReadObject derives from
// the coordinates.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "geometry/plane.hpp"
#include "gis/dbf/dbf_reader.hpp"
#include "gis/gis.hpp"
#include "gis/mif/mif_reader.hpp"
#include "gis/model/gis_internal.hpp"
#include "gis/shp/shp_reader.hpp"
#include "gis/shp/shp_sets.hpp"
#include "runtime/console.hpp"
#include "runtime/units.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace {

// Next field of an SHP layer for gisReadAttributeDefinition.
int32_t gFieldCursor[kGisMaxLayers + 1];

// The family of the layer: the stop of the operation for a layer number
// outside the table or a slot of no family.
int32_t familyOf(int32_t gisID, std::string_view operation) {
    if (gisBadId(gisID)) gisStopNoLayer(operation);
    const int32_t family = gisFormat[gisID];
    if (family != kGisFamilyMif && family != kGisFamilyShp) gisStopNotHere(operation);
    return family;
}

// The width in a type word such as "Char(100)" or "Decimal(10,2)"; 0 when it
// has none.
int32_t widthOf(std::string_view word) {
    const std::size_t open = word.find('(');
    if (open == std::string_view::npos) return 0;
    int32_t w = 0;
    std::size_t i = open + 1;
    while (i < word.size() && word[i] == ' ') ++i;
    for (; i < word.size() && isDigit(word[i]) && w < 100000; ++i) w = w * 10 + (word[i] - '0');
    return w;
}

// gisA_ from the header just read, so that it describes this layer.
void attributesFromMif(const GisMifState& m) {
    gisA_.n = m.attributeCount;
    gisA_.nrecords = 0;
    for (int32_t i = 1; i <= m.attributeCount; ++i) {
        const std::string_view word = m.attributeTypes[i].trimmed();
        gisA_.name[i] = m.attributeNames[i].trimmed();
        gisA_.type[i] = trimmed(word.substr(0, std::min(word.find('('), word.size())));
        gisA_.width[i] = widthOf(word);
    }
}

// The type word of a .dbf field as the writer would map it back: numbers
// with their width become Decimal, since decimals are not kept on reading.
std::string_view dbfTypeWord(char letter) {
    switch (upperByte(letter)) {
        case 'N': return "Decimal";
        case 'F': return "Float";
        case 'L': return "Logical";
        default: return "Char";
    }
}

void attributesFromDbf(const GisDbfState& d) {
    gisA_.n = d.fieldCount;
    gisA_.nrecords = d.recordCount;
    for (int32_t i = 1; i <= d.fieldCount; ++i) {
        gisA_.name[i] = d.names[i].trimmed();
        gisA_.type[i] = dbfTypeWord(d.types[i]);
        gisA_.width[i] = d.widths[i];
    }
}

void readShpHeader(GisShpState& s, bool bothUnits) {
    if (bothUnits && s.shpUnitBE > 0) {
        int32_t version = 0, type = 0;
        double box[4];
        shpReadHeader(s.shpUnitBE, s.fileCode, s.fileLength, version, type, box[0], box[1], box[2], box[3]);
        GisLine l;
        l << "Shapefile Code: " << countText(s.fileCode) << "  Length: " << countText(s.fileLength);
        conLine(l.view());
    }
    if (s.shpUnitLE > 0) {
        shpReadHeader(s.shpUnitLE, s.fileCode, s.fileLength, s.version, s.shapeType, s.xmin, s.ymin, s.xmax, s.ymax);
        if (bothUnits) {
            GisLine l;
            l << "Shapefile Version: " << countText(s.version) << "  Type: " << countText(s.shapeType);
            conLine(l.view());
        }
    }
    // Records are read through the little-endian unit alone.
    if (s.shpUnitBE > 0) CLOSER(s.shpUnitBE);
    s.nextOffset = 50;
    s.recordNumber = 0;
}

float degrees(double dy, double dx) { return static_cast<float>(std::atan2(dy, dx) * (180.0 / std::numbers::pi)); }

// Centre, angle and length of a polyline: the point at half its length, on
// the segment that holds it.
void plineCentre(const double* X, const double* Y, int32_t N, double& cx, double& cy, float& angle, float& length) {
    if (N < 1) return;
    float total = 0.0f;
    for (int32_t i = 1; i < N; ++i) total += DISTANCE_8(X[i], Y[i], X[i + 1], Y[i + 1]);
    length = total;
    // A line of no length has no half-way point: its first point stands in.
    cx = X[1];
    cy = Y[1];
    if (total <= 0.0f) return;
    const float half = total * 0.5f;
    float s = 0.0f;
    for (int32_t i = 1; i < N; ++i) {
        const float d = DISTANCE_8(X[i], Y[i], X[i + 1], Y[i + 1]);
        if (s + d >= half) {
            const float f = (half - s) / d;
            const double dx = X[i + 1] - X[i];
            const double dy = Y[i + 1] - Y[i];
            cx = X[i] + static_cast<double>(f) * dx;
            cy = Y[i] + static_cast<double>(f) * dy;
            angle = degrees(dy, dx);
            return;
        }
        s += d;
    }
}

}  // namespace

void readCursorsReset() {
    for (int32_t& c : gFieldCursor) c = 0;
}

void gisReadHeader(int32_t gisID) {
    if (familyOf(gisID, "gisReadHeader") == kGisFamilyMif) {
        GisMifState& m = gisMif[gisID];
        mifReadHeader(m);
        if (m.mifUnit > 0) attributesFromMif(m);
        gisAtEnd[gisID] = m.mifUnit < 1 || unitAtEnd(m.mifUnit);
    } else {
        GisShpState& s = gisShp[gisID][kShpInputSet];
        readShpHeader(s, true);
        GisDbfState& d = gisDbf[gisID][kShpInputSet];
        dbfReadHeader(d);
        d.writtenCount = 0;
        if (d.dbfUnit > 0) attributesFromDbf(d);
        gisAtEnd[gisID] = shpAtEnd(s);
    }
    gFieldCursor[gisID] = 0;
}

int32_t gisNumberAttributes(int32_t gisID) {
    return familyOf(gisID, "gisNumberAttributes") == kGisFamilyMif ? gisMif[gisID].attributeCount
                                                                   : gisDbf[gisID][kShpInputSet].fieldCount;
}

int32_t gisNumberRecords(int32_t gisID) {
    if (familyOf(gisID, "gisNumberRecords") == kGisFamilyShp) return gisDbf[gisID][kShpInputSet].recordCount;
    const int32_t mid = gisMif[gisID].midUnit;
    if (mid < 1) return 0;
    static Text<kNameCap> line;
    int32_t n = 0;
    unitRewind(mid);
    while (unitReadLine(mid, line) == IoStatus::ok) ++n;
    unitRewind(mid);
    return n;
}

void gisGotoBeginningOfData(int32_t gisID) {
    const int32_t family = familyOf(gisID, "gisGotoBeginningOfData");
    {
        GisLine l;
        l << "Rewinding GIS Layer " << countText(gisID) << "...";
        conLine(l.view());
    }
    gisAtEnd[gisID] = false;
    if (family == kGisFamilyMif) {
        const GisMifState& m = gisMif[gisID];
        if (m.mifUnit > 0) mifFindData(m.mifUnit);
        if (m.midUnit > 0) unitRewind(m.midUnit);
    } else {
        readShpHeader(gisShp[gisID][kShpInputSet], false);
        GisDbfState& d = gisDbf[gisID][kShpInputSet];
        dbfReadHeader(d);
        d.writtenCount = 0;
    }
}

bool gisGotoBeginningOfAttributes(int32_t gisID, int32_t& count) {
    const int32_t family = familyOf(gisID, "gisGotoBeginningOfAttributes");
    gFieldCursor[gisID] = 0;
    if (family == kGisFamilyShp || gisMif[gisID].mifUnit < 1) return false;
    return mifFindColumns(gisMif[gisID].mifUnit, gisMif[gisID].line, count, true);
}

void gisReadAttributeDefinition(int32_t gisID, TextRef name, TextRef type) {
    if (familyOf(gisID, "gisReadAttributeDefinition") == kGisFamilyMif) {
        GisMifState& m = gisMif[gisID];
        if (m.mifUnit < 1 || unitReadLine(m.mifUnit, m.line) != IoStatus::ok)
            gisStopMessage("ERROR 0316 - Could not read attribute definitions in .mif file");
        mifSplitAttribute(m.line.view(), name, type);
        return;
    }
    // An SHP layer gives its .dbf fields in turn, in the words of a .mif
    // header; blanks beyond the last.
    const GisDbfState& d = gisDbf[gisID][kShpInputSet];
    const int32_t i = ++gFieldCursor[gisID];
    if (i > d.fieldCount || i > kDbfMaxFields) {
        gFieldCursor[gisID] = d.fieldCount;
        name.clear();
        type.clear();
        return;
    }
    name.assign(d.names[i].trimmed());
    GisLine l;
    l << dbfTypeWord(d.types[i]) << "(" << countText(d.widths[i]) << ")";
    type.assign(l.view());
}

bool gisObjectType(int32_t gisID, GisObject& object) {
    bool found = false;
    if (familyOf(gisID, "gisObjectType") == kGisFamilyMif) {
        GisMifState& m = gisMif[gisID];
        found = m.mifUnit > 0 && mifObjectType(m.mifUnit, m.line, m.line2, object);
    } else {
        found = shpObjectType(gisShp[gisID][kShpInputSet], object);
    }
    if (!found) gisAtEnd[gisID] = true;
    return found;
}

void gisReadRecord(int32_t gisID, GisObject& object, TextRef line) {
    if (familyOf(gisID, "gisReadRecord") == kGisFamilyShp) {
        bool atEnd = false;
        dbfReadRecord(gisDbf[gisID][kShpInputSet], atEnd, line);
        return;
    }
    const int32_t mid = gisMif[gisID].midUnit;
    if (mid > 0 && unitReadLine(mid, line) == IoStatus::ok) return;
    GisLine l;
    l << "ERROR 0254 - Failed to read object attribute data record for a " << object.type.trimmed();
    gisStopMessage(l.view());
}

void gisReadObject(int32_t gisID, GisObject& o, double* X, double* Y, int32_t maxN, int32_t& N, double& cx, double& cy,
                   float& angle, float& length, bool wantCoordinates) {
    const int32_t family = familyOf(gisID, "gisReadObject");
    angle = 0.0f;
    length = 0.0f;
    bool needsCentre = true;
    bool ok = false;
    if (family == kGisFamilyMif) {
        const GisMifState& m = gisMif[gisID];
        ok = mifObject(m.mifUnit, m.line2.view(), o, X, Y, maxN, N, needsCentre, cx, cy, wantCoordinates);
        gisAtEnd[gisID] = m.mifUnit < 1 || unitAtEnd(m.mifUnit);
    } else {
        GisShpState& s = gisShp[gisID][kShpInputSet];
        ok = shpReadObject(s.shpUnitLE, s.recordShapeType, o, X, Y, maxN, N, wantCoordinates);
        gisAtEnd[gisID] = shpAtEnd(s);
    }
    if (!ok) {
        GisLine l;
        l << "ERROR 0253 - Failed to read coordinates for a " << o.type.trimmed();
        gisStopMessage(l.view());
    }
    if (!wantCoordinates) return;

    if (o.isPoint || o.isMultiPoint) {
        cx = X[1];
        cy = Y[1];
        if (maxN >= 2) {
            X[2] = X[1];
            Y[2] = Y[1];
        }
    } else if (o.isLine || o.isRect || o.isRoundRect) {
        cx = (X[1] + X[2]) * 0.5;
        cy = (Y[1] + Y[2]) * 0.5;
        angle = degrees(Y[2] - Y[1], X[2] - X[1]);
        length = DISTANCE_8(X[1], Y[1], X[2], Y[2]);
    } else if (o.isArc || o.isEllipse) {
        N = 0;
    } else if (o.isPline || o.isPlineMultiple) {
        plineCentre(X, Y, N, cx, cy, angle, length);
    } else if (o.isRegion && needsCentre && N > 2) {
        // The mean of the slots but the last two: the ring with its closing
        // point, and the other parts with their copies. A region of no part
        // has no centre.
        const int32_t n = N - 2;
        double sx = 0.0, sy = 0.0;
        for (int32_t i = 1; i <= n; ++i) {
            sx += X[i];
            sy += Y[i];
        }
        cx = sx / n;
        cy = sy / n;
    }
}
