// Opening and closing of layers: the file family from the extension, the
// files of each family with the checks of an input layer, the tracking of
// input layers and the end-of-file step of an output layer.
#include "gis/dbf/dbf_writer.hpp"
#include "gis/gis.hpp"
#include "gis/mif/mif_reader.hpp"
#include "gis/model/gis_internal.hpp"
#include "gis/shp/shp_reader.hpp"
#include "gis/shp/shp_sets.hpp"
#include "gis/shp/shp_writer.hpp"
#include "runtime/exits.hpp"
#include "runtime/paths.hpp"
#include "runtime/platform.hpp"
#include "runtime/savedate.hpp"
#include "runtime/units.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"
#include "text/support.hpp"

namespace {

// The two modes of a layer, as the caller may spell them ("O " or "O").
enum class LayerMode { input, output, other };

LayerMode modeOf(std::string_view mode) {
    std::string_view m = trimmed(mode);
    if (m == "I") return LayerMode::input;
    if (m == "O") return LayerMode::output;
    return LayerMode::other;
}

// Records an input layer by the folder and stem of its full path.
void trackInputLayer(int32_t gisID, std::string_view name) {
    Text<1000> full;
    if (!platformFullPath(trimmed(name), full)) TRIMF(full, name);
    Text<1000> stem;
    FILENAMEPATH(stem, full);
    for (int32_t i = 1; i <= gisInputLayerCount && i <= kGisMaxInputLayers; ++i) {
        if (ASAME(gisInputLayers[i], stem)) {
            gisInputIndex[gisID] = i;
            return;
        }
    }
    ++gisInputLayerCount;
    const bool tracked = gisInputLayerCount < 1000;
    if (tracked) {
        gisInputLayers[gisInputLayerCount] = stem;
    } else {
        gisSetMessage(
            "WARNING 0317 - Exceeded limit of input GIS layers that can be tracked (layer referencing may not be "
            "complete).");
        gisMessageOut(0);
        gisInputLayerCount = 1000;
    }
    gisInputIndex[gisID] = gisInputLayerCount;
    gisRecordInputLayer(gisID, stem.trimmed(), name, tracked);
}

// The .mif and .mid of a MIF layer, or the one attribute file of an
// attributes-only layer. An input pair is compared with the project's
// projection, and with the save-date check on it is held against its .tab
// and opened again for as long as the check asks for it.
void openMifLayer(int32_t gisID, std::string_view name, bool attributesOnly, std::string_view mode) {
    GisMifState& m = gisMif[gisID];
    const bool input = modeOf(mode) == LayerMode::input;
    m.mifUnit = 0;
    m.midUnit = 0;
    for (;;) {
        Text<1000> work;
        TRIMF(work, name);
        Text<16> ext;
        FILEEXT(ext, work);
        bool pair = false;
        if (attributesOnly) {
            pair = ext.trimmed() == ".mid";
        } else {
            if (ext.trimmed() == ".mif" || ext.trimmed() == ".mid") FILENAMEPATH(work, work);
            Text<1000> mifName(work);
            mifName.ref().append(".mif");
            OPENERFREE(m.mifUnit, mode, mifName, 0);
            if (input && !gisMifProjection.blank()) mifProjectionCheck(m.mifUnit);
            work.ref().append(".mid");
            pair = true;
        }
        OPENERFREE(m.midUnit, mode, work, 0);
        if (!input || !gisSaveDateCheck || !pair) return;
        Text<1000> tab;
        FILENAMEPATH(tab, work);
        tab.ref().append(kGisSaveDateExtension);
        if (CHECKSAVEDATE(work, tab, m.mifUnit, m.midUnit, gisSaveDateCheckIsError, gisLogUnit)) return;
    }
}

// The sets of an SHP layer: for output one set for each letter, for input
// the one set that the letter names; false when that input file is missing.
bool openShpLayer(int32_t gisID, std::string_view name, bool attributesOnly, LayerMode lm,
                  std::string_view shapeLetters) {
    if (lm == LayerMode::input)
        return OpenshpFile(name, shapeLetters, gisDbf[gisID][kShpInputSet], gisShp[gisID][kShpInputSet], "I ",
                           attributesOnly);
    for (char c : trimmed(shapeLetters)) {
        const int32_t set = shpSetOfLetter(c);
        // The stop names the routine that opens a set, as the system prints
        // it, though it is raised here.
        if (set == kShpSetNone) gisStopNotHere("OpenshpFileType");
        gisShp[gisID][set].shapeType = kShpSets[set].shapeType;
        OpenshpFile(name, std::string_view(&c, 1), gisDbf[gisID][set], gisShp[gisID][set], "O ", attributesOnly);
    }
    return true;
}

// The end-of-file work of an output layer.
void finishLayer(int32_t gisID) {
    switch (gisFormat[gisID]) {
        case kGisFamilyMif: return;
        case kGisFamilyShp:
            for (int32_t k = kShpSetPoints; k <= kShpSetRegions; ++k) {
                dbfFinish(gisDbf[gisID][k]);
                shpFinishSet(gisShp[gisID][k]);
            }
            return;
        // The stop names the header operation, in the end-of-file step too:
        // the system prints it so.
        default: gisStopNotHere("gisWriteHeader");
    }
}

}  // namespace

int32_t gisFormatOfFile(std::string_view name, bool attributesOnly) {
    Text<16> ext;
    FILEEXT(ext, trimmed(name));
    std::string_view e = ext.trimmed();
    if (e.empty() || e == ".mif" || e == ".mid") return kGisFamilyMif;
    if (e == ".shp") return kGisFamilyShp;
    if (attributesOnly && e == ".dbf") return kGisFamilyShp;
    if (attributesOnly && e == ".csv") return kGisFamilyCsv;
    GisLine l;
    l << "ERROR 0252 - " << e << " is not a supported GIS file format.";
    gisStopMessage(l.view());
}

bool OpenshpFile(std::string_view name, std::string_view letter, GisDbfState& dbf, GisShpState& shp,
                 std::string_view mode, bool attributesOnly) {
    shp.shpUnitLE = shp.shpUnitBE = shp.shxUnitLE = shp.shxUnitBE = 0;
    dbf.dbfUnit = 0;
    Text<8> let;
    TRIMF(let, letter);
    const LayerMode lm = modeOf(mode);
    if (lm == LayerMode::other) gisStopNotHere("OpenshpFile");

    const std::string_view required = attributesOnly ? ".dbf" : ".shp";
    Text<16> ext;
    FILEEXT(ext, trimmed(name));
    if (ext.trimmed() != required) {
        GisLine l;
        l << "ERROR 0426 - " << required << " file not specified.";
        gisStopMessage(l.view());
    }

    Text<1000> shpName;
    TRIMF(shpName, name);
    if (!attributesOnly) {
        if (lm == LayerMode::output && let.blank()) gisStopNotHere("OpenshpFileO");
        if (!let.blank()) {
            FILENAMEPATH(shpName, trimmed(name));
            shpName.ref().append("_");
            shpName.ref().append(let.trimmed());
            shpName.ref().append(".shp");
            if (lm == LayerMode::input && !platformFileExists(shpName)) return false;
        }
        Text<1000> stem;
        FILENAMEPATH(stem, shpName);
        Text<1000> prjName(stem);
        prjName.ref().append(".prj");
        if (lm == LayerMode::input) {
            if (!gisShpProjection.blank() && platformFileExists(prjName)) prjProjectionCheck(prjName);
            OPENERFREE(shp.shpUnitLE, "BI", shpName, 0);
            OPENERFREE(shp.shpUnitBE, "BE", shpName, 0);
        } else {
            Text<1000> shxName(stem);
            shxName.ref().append(".shx");
            OPENERFREE(shp.shpUnitLE, "SB", shpName, 0);
            OPENERFREE(shp.shpUnitBE, "SE", shpName, 0);
            OPENERFREE(shp.shxUnitLE, "SB", shxName, 0);
            OPENERFREE(shp.shxUnitBE, "SE", shxName, 0);
            OPENERFREE(shp.prjUnit, "O ", prjName, 0);
        }
    }
    Text<1000> dbfName;
    FILENAMEPATH(dbfName, shpName);
    dbfName.ref().append(".dbf");
    OPENERFREE(dbf.dbfUnit, lm == LayerMode::input ? "BI" : "BO", dbfName, 0);
    return true;
}

int32_t gisOpenLayer(std::string_view name, bool attributesOnly, std::string_view mode, std::string_view shapeLetters) {
    {
        GisLine l;
        l << "Opening GIS Layer: " << trimmed(name);
        gisReport(0, l.view());
    }
    int32_t id = 0;
    for (int32_t i = 1; i <= kGisMaxLayers; ++i) {
        if (!gisIsOpen[i]) {
            id = i;
            break;
        }
    }
    if (id == 0) gisStopMessage("ERROR 0251 - Cannot have more than 100 GIS layers open at once.");
    {
        GisLine l;
        l << "GIS Layer assigned ID of " << countText(id);
        gisReport(0, l.view());
    }
    gisInitialiseLayer(id);

    const int32_t format = gisFormatOfFile(name, attributesOnly);
    gisFormat[id] = format;
    if (format != kGisFamilyMif && format != kGisFamilyShp && format != kGisFamilyCsv) gisStopNotHere("gisOpenLayer");

    const LayerMode lm = modeOf(mode);
    // The stop names a routine of its own, as the system prints it.
    if (lm == LayerMode::other) gisStopNotHere("OpenGIS");
    gisIsOutput[id] = lm == LayerMode::output;
    if (lm == LayerMode::input) trackInputLayer(id, name);
    const std::string_view unitMode = lm == LayerMode::input ? "I " : "O ";

    bool opened = true;
    if (format == kGisFamilyMif) {
        openMifLayer(id, name, attributesOnly, unitMode);
    } else if (format == kGisFamilyCsv) {
        gisMif[id].mifUnit = 0;
        OPENERFREE(gisMif[id].midUnit, unitMode, trimmed(name), 0);
        gisFormat[id] = kGisFamilyMif;
    } else {
        opened = openShpLayer(id, name, attributesOnly, lm, shapeLetters);
    }
    if (!opened) {
        gisFormat[id] = kGisFamilyNone;
        return 0;
    }
    gisIsOpen[id] = true;
    gisLayerName[id] = name;
    return id;
}

void gisWriteEoF(int32_t gisID) {
    if (gisBadId(gisID)) gisStopNoLayer("gisWriteEoF");
    finishLayer(gisID);
}

void gisCloseLayer(int32_t& gisID) {
    if (gisBadId(gisID)) {
        gisReport(
            0, "SOFTWARE CHECK - Trying to close a GIS Layer that's not open.  Please contact " REACHMAP_SUPPORT ".");
        return;
    }
    const int32_t id = gisID;
    {
        GisLine l;
        l << "Closing GIS Layer " << countText(id) << " [" << gisLayerName[id].trimmed() << "]...";
        gisReport(1, l.view());
    }
    if (gisIsOutput[id]) finishLayer(id);
    if (gisFormat[id] == kGisFamilyMif) {
        if (gisMif[id].mifUnit > 0) CLOSER(gisMif[id].mifUnit);
        if (gisMif[id].midUnit > 0) CLOSER(gisMif[id].midUnit);
    } else if (gisFormat[id] == kGisFamilyShp) {
        for (int32_t k = kShpSetPoints; k <= kShpSetRegions; ++k) {
            GisShpState& s = gisShp[id][k];
            for (int32_t* u : {&s.shpUnitLE, &s.shpUnitBE, &s.shxUnitLE, &s.shxUnitBE, &s.prjUnit})
                if (*u > 0) CLOSER(*u);
            if (gisDbf[id][k].dbfUnit > 0) CLOSER(gisDbf[id][k].dbfUnit);
        }
    } else {
        gisStopNotHere("gisCloseLayer");
    }
    gisIsOpen[id] = false;
    gisAtEnd[id] = true;
    gisIsOutput[id] = false;
    gisFormat[id] = kGisFamilyNone;
    gisID = 0;
}

void gisCloseAllLayers(bool& anyOpen) {
    gisReport(1, "Closing any unclosed GIS layers...");
    anyOpen = false;
    for (int32_t i = 1; i <= kGisMaxLayers; ++i) {
        if (!gisIsOpen[i]) continue;
        anyOpen = true;
        int32_t id = i;
        gisCloseLayer(id);
    }
}
