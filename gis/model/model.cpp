// The layer table, the shared buffers and the settings of the GIS layer
// library, with the slot reset, the object reset and the message sink.
#include <algorithm>
#include <cstring>

#include "gis/gis.hpp"
#include "gis/model/gis_internal.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/numbers.hpp"
#include "text/support.hpp"

// ---- The layer table -------------------------------------------------------
int32_t gisFormat[kGisMaxLayers + 1] = {};
bool gisIsOpen[kGisMaxLayers + 1] = {};
Text<1000> gisLayerName[kGisMaxLayers + 1];
bool gisIsOutput[kGisMaxLayers + 1] = {};
bool gisAtEnd[kGisMaxLayers + 1] = {};
int32_t gisInputIndex[kGisMaxLayers + 1] = {};
LazyArray<GisMifState, kGisMaxLayers + 1> gisMif;
GisShpState gisShp[kGisMaxLayers + 1][kShpSetRegions + 1];
LazyArray<LazyRow<GisDbfState, kShpSetRegions + 1>, kGisMaxLayers + 1> gisDbf;

// ---- Shared buffers --------------------------------------------------------
GisObject gisO_;
int32_t gisN = 0;
double gisX[kGisMaxPoints + 1] = {};
double gisY[kGisMaxPoints + 1] = {};
GisAttributes gisA_;
Text<1000> gisRecordLine;
Text<100000> gisRecordLineLarge;
// "Polyline" and "PolyLineZ" differ in the case of the L: the names stand as
// the system prints them.
Text<16> gisShapeTypeNames[33] = {
    "Null Shape",  "Point",      "Unknown",   "Polyline",   "Unknown",     "Polygon", "Unknown",
    "Unknown",     "MultiPoint", "Unknown",   "Unknown",    "PointZ",      "Unknown", "PolyLineZ",
    "Unknown",     "PolygonZ",   "Unknown",   "Unknown",    "MultiPointZ", "Unknown", "Unknown",
    "PointM",      "Unknown",    "PolyLineM", "Unknown",    "PolygonM",    "Unknown", "Unknown",
    "MultiPointM", "Unknown",    "Unknown",   "MultiPatch", "Unknown",
};

// ---- Settings --------------------------------------------------------------
Text<1000> gisCoordSysLine;
Text<1000> gisPrjLine;
Text<1000> gisMifProjection;
Text<1000> gisShpProjection;
bool gisProjectionCheckIsError = false;
bool gisSaveDateCheck = false;
bool gisSaveDateCheckIsError = false;
LazyArray<Text<1000>, kGisMaxInputLayers + 2> gisInputLayers;
int32_t gisInputLayerCount = 0;
int32_t gisLogUnit = 0;
Text<1000> gisMessageLine[5];

// ---- Helpers ---------------------------------------------------------------
void gisReport(int32_t blankLines, std::string_view line) {
    for (int32_t i = 0; i < blankLines; ++i) conBlank();
    conLine(line);
    if (gisLogUnit > 0) {
        for (int32_t i = 0; i < blankLines; ++i) unitWriteLine(gisLogUnit, "");
        unitWriteLine(gisLogUnit, line);
    }
}

void gisStopNoLayer(std::string_view operation) {
    GisLine l;
    l << "Should not be here " << operation << "[gisID=0] - please contact " REACHMAP_SUPPORT ".";
    conLine(l.view());
    EXITS();
}

void gisStopNotHere(std::string_view where) {
    GisLine l;
    l << "Should not be here [" << where << "] - please contact " REACHMAP_SUPPORT ".";
    conBlank();
    conLine(l.view());
    EXITS();
}

void gisStopMessage(std::string_view line) {
    gisSetMessage(line);
    gisMessageOut(1);
    EXITS();
}

// ---- Public operations of the model ----------------------------------------
void gisInitialiseLayer(int32_t gisID) {
    if (gisBadId(gisID)) gisStopNoLayer("gisInitialiseLayer");
    gisFormat[gisID] = kGisFamilyNone;
    gisLayerName[gisID].clear();
    gisAtEnd[gisID] = false;
    gisIsOutput[gisID] = false;

    GisMifState& m = gisMif[gisID];
    m.line.clear();
    m.line2.clear();
    m.mifUnit = 0;
    m.midUnit = 0;
    m.style1.clear();
    m.style2.clear();
    m.attributeCount = 0;
    for (auto& t : m.attributeNames) t.clear();
    for (auto& t : m.attributeTypes) t.clear();

    for (int32_t k = kShpSetPoints; k <= kShpSetRegions; ++k) {
        gisShp[gisID][k] = GisShpState{};  // integers 0, box 0, 0, -1, -1
        GisDbfState& d = gisDbf[gisID][k];
        d.dbfUnit = d.recordCount = d.writtenCount = d.fieldCount = d.recordLength = 0;
        std::fill(std::begin(d.widths), std::end(d.widths), 0);
        std::fill(std::begin(d.decimals), std::end(d.decimals), 0);
        for (auto& t : d.names) t.clear();
        std::fill(std::begin(d.types), std::end(d.types), ' ');
    }
}

void gisClearObject(GisObject& object) {
    object.isNone = object.isPoint = object.isLine = object.isPline = false;
    object.isPlineMultiple = object.isRegion = object.isEllipse = object.isRect = false;
    object.isRoundRect = object.unnamedFlag = object.isArc = object.hasCenter = false;
    object.isText = object.isMultiPoint = false;
    object.np = 1;
    object.nr = 1;
    object.ir[1] = 1;
    object.type.clear();
}

void gisMessageOut(int32_t blankLines) {
    for (int32_t i = 0; i < blankLines; ++i) conBlank();
    conLine(gisMessageLine[1].trimmed());
    for (int i = 2; i <= 4; ++i)
        if (!gisMessageLine[i].blank()) conLine(gisMessageLine[i].trimmed());
    if (gisLogUnit > 0) {
        for (int32_t i = 0; i < blankLines; ++i) unitWriteLine(gisLogUnit, "");
        unitWriteLine(gisLogUnit, gisMessageLine[1].trimmed());
        for (int i = 2; i <= 4; ++i)
            if (!gisMessageLine[i].blank()) unitWriteLine(gisLogUnit, gisMessageLine[i].trimmed());
    }
}

void gisSetMessage(std::string_view line) {
    gisMessageLine[1] = line;
    for (int i = 2; i <= 4; ++i) gisMessageLine[i].clear();
}

void gisStopTooManyNodes(bool shp, int64_t requested, int32_t limit) {
    gisSetMessage(shp ? "ERROR 0310 - Exceeded number of allowable nodes in a single .shp polyline or region."
                      : "ERROR 0310 - Exceeded number of allowable nodes in a single polyline or region.");
    GisLine l;
    l << "             Requested" << intText(8, requested) << "        Limit" << intText(8, limit);
    gisMessageLine[2] = l.view();
    gisMessageOut(1);
    EXITS();
}

void gisReset() {
    runtimeReset();
    for (int32_t id = 0; id <= kGisMaxLayers; ++id) {
        gisFormat[id] = kGisFamilyNone;
        gisIsOpen[id] = false;
        gisLayerName[id].clear();
        gisIsOutput[id] = false;
        gisAtEnd[id] = false;
        gisInputIndex[id] = 0;
        gisMif.reset(id);
        gisDbf.reset(id);
        for (int32_t k = 0; k <= kShpSetRegions; ++k) gisShp[id][k] = GisShpState{};
    }
    gisO_ = GisObject{};
    gisN = 0;
    std::fill(std::begin(gisX), std::end(gisX), 0.0);
    std::fill(std::begin(gisY), std::end(gisY), 0.0);
    gisA_ = GisAttributes{};
    gisRecordLine.clear();
    gisRecordLineLarge.clear();
    gisCoordSysLine.clear();
    gisPrjLine.clear();
    gisMifProjection.clear();
    gisShpProjection.clear();
    gisProjectionCheckIsError = gisSaveDateCheck = gisSaveDateCheckIsError = false;
    gisInputLayers.resetAll();
    gisInputLayerCount = 0;
    gisLogUnit = 0;
    for (auto& t : gisMessageLine) t.clear();
    gisWorkspaceUnit = gisInputLayersMifUnit = gisInputLayersMidUnit = 0;
    dbfWriterReset();
    readCursorsReset();
}
