// The library's full reset, and the record of the input layers that a
// program reads: a workspace with one table line for each layer, and a small
// MIF/MID layer that lists the layers with their numbers.
#include "gis/gis.hpp"
#include "gis/model/gis_internal.hpp"
#include "runtime/paths.hpp"
#include "runtime/platform.hpp"
#include "runtime/units.hpp"
#include "text/strings.hpp"

// Units of the record files: 0 until the library is initialised, -1 when
// the initialisation asked for no such file.
int32_t gisWorkspaceUnit = 0;
int32_t gisInputLayersMifUnit = 0;
int32_t gisInputLayersMidUnit = 0;

namespace {

// Opens `name` (trimmed) with `suffix` behind it for output.
void openRecordFile(int32_t& unit, std::string_view name, std::string_view suffix) {
    Text<1000> file;
    TRIMF(file, name);
    file.ref().append(suffix);
    OPENERFREE(unit, "O ", file, 0);
}

}  // namespace

void gisInitialiseLibrary(int32_t logUnit, std::string_view simulationName, std::string_view workspaceName,
                          std::string_view inputLayersName) {
    gisRecordLine.clear();
    gisRecordLineLarge.clear();
    gisLogUnit = logUnit;
    for (int i = 1; i <= 4; ++i) gisMessageLine[i].clear();

    for (int32_t id = 1; id <= kGisMaxLayers; ++id) {
        gisIsOpen[id] = false;
        gisInputIndex[id] = 0;
        gisInitialiseLayer(id);  // format, name, flags and the family records
    }

    gisMifProjection.clear();
    gisShpProjection.clear();
    gisProjectionCheckIsError = false;
    gisSaveDateCheck = false;
    gisSaveDateCheckIsError = false;
    // The save-date extension is the constant kGisSaveDateExtension.

    if (trimmedLength(workspaceName) > 0) {
        openRecordFile(gisWorkspaceUnit, workspaceName, ".wor");
        unitWriteLine(gisWorkspaceUnit, "!Workspace");
        unitWriteLine(gisWorkspaceUnit, "!Version 600");
        unitWriteLine(gisWorkspaceUnit, "!Charset WindowsLatin1");
        GisLine l;
        l << "!Contains GIS input layers from VARDEN simulation ";
        // The simulation name without its leading or trailing blanks.
        std::string_view sim = trimmed(simulationName);
        while (!sim.empty() && sim.front() == ' ') sim.remove_prefix(1);
        l << sim;
        unitWriteLine(gisWorkspaceUnit, l.view());
    } else {
        gisWorkspaceUnit = -1;
    }

    if (trimmedLength(inputLayersName) > 0) {
        openRecordFile(gisInputLayersMifUnit, inputLayersName, "_input_layers.mif");
        openRecordFile(gisInputLayersMidUnit, inputLayersName, "_input_layers.mid");
        for (std::string_view line : {"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "Columns 3",
                                      "  ID Integer", "  Open_ID Integer", "  Layer Char(254)", "Data", ""})
            unitWriteLine(gisInputLayersMifUnit, line);
    } else {
        gisInputLayersMifUnit = -1;
        gisInputLayersMidUnit = -1;
    }

    gisInputLayerCount = 0;
    gisInputLayers.resetAll();
}

void gisCloseWorkspace() {
    if (gisWorkspaceUnit > 0) CLOSER(gisWorkspaceUnit);
    if (gisInputLayersMifUnit > 0) {
        CLOSER(gisInputLayersMifUnit);
        CLOSER(gisInputLayersMidUnit);
    }
}

void gisRecordInputLayer(int32_t gisID, std::string_view stem, std::string_view name, bool tracked) {
    Text<16> ext;
    FILEEXT(ext, trimmed(name));
    const std::string_view e = ext.trimmed();
    if (gisWorkspaceUnit > 0 && tracked) {
        GisLine l;
        if (e.substr(0, 3) == ".mi") {
            Text<1000> tab(stem);
            tab.ref().append(".tab");
            if (platformFileExists(tab)) l << "Open Table \"" << tab.trimmed() << '"';
            else l << "! .mif/.mid Layer with no .tab Layer \"" << stem << e << '"';
        } else {
            l << "! Non-MapInfo .tab Layer \"" << stem << e << '"';
        }
        unitWriteLine(gisWorkspaceUnit, l.view());
    }
    if (gisInputLayersMifUnit > 0) {
        unitWriteLine(gisInputLayersMifUnit, "none");
        GisLine l;
        l.put(5, gisInputLayerCount);
        l << ',';
        l.put(5, gisID);
        l << ", \"" << stem << e << '"';
        unitWriteLine(gisInputLayersMidUnit, l.view());
    }
}
