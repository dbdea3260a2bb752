// The main program: command line, banner and help text, the projection file,
// the input file (asked for when missing), and the run sequence of the two
// scanning phases with their layers.
#include "driver/run.hpp"

#include "driver/layer_set.hpp"
#include "driver/sdf_scan.hpp"
#include "driver/section_export.hpp"
#include "driver/section_parser.hpp"
#include "driver/stops.hpp"
#include "gis/gis.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/paths.hpp"
#include "runtime/platform.hpp"
#include "runtime/units.hpp"
#include "text/linebuf.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace {

struct RunSettings {
    Text<1000> sdfFile;
    bool useShp = false;
    bool useMif = false;
    bool trimToLevees = true;
    bool helpWanted = true;
};
RunSettings run;

constexpr const char* kHelp[] = {
    "",
    "reachmap description",
    "",
    "Converts HECRAS SDF (export format) to GIS format",
    "Outlines Centreline, cross-section locations and cross section in .csv format",
    "Options:",
    "",
    "GIS FORMAT:",
    "   -shp for shapefile format",
    "   -mif for MapInfo format",
    "   Note: Only one can be specified.",
    "",
    "LEVEE MARKERS:",
    "   -notrim, do not trim cross-sections to levee markers.",
    "EXAMPLES:",
    "   reachmap.exe -shp hecras.sdf",
};

// The option's name is matched over its own length only, behind the prefix.
bool optionIs(const Text<1000>& word, std::string_view option) {
    return ASAME(word.full().substr(1, option.size()), option);
}

void readCommandWords(int argc, char** argv) {
    for (int k = 1; k < argc; ++k) {
        Text<1000> word(argv[k]);  // a longer word is cut
        run.helpWanted = false;
        const char first = word.at(1);
        if (first == '-' || first == '/' || first == '\x96') {
            if (optionIs(word, "shp")) {
                run.useShp = true;
            } else if (optionIs(word, "mif")) {
                run.useMif = true;
            } else if (optionIs(word, "notrim")) {
                run.trimToLevees = false;
            } else {
                stopWith(lineText("ERROR - Unrecognised option ", word.trimmed(),
                                  ", use -shp, -mif or -notrim (run with no arguments for help)."));
            }
        } else {
            run.sdfFile = word;
        }
    }
}

// Header{ext} in the folder, else Projection{ext}; the run stops when neither exists.
void projectionFile(TextRef file, std::string_view folder, std::string_view ext) {
    ADDFOLDER(file, folder, lineText("Header", ext));
    if (!platformFileExists(file)) ADDFOLDER(file, folder, lineText("Projection", ext));
    if (!platformFileExists(file))
        stopWith(lineText("ERROR - A Header", ext, " or Projection", ext, " file does not exist in folder."));
}

// The first line of the .mif header file that holds "CoordSys".
void projectionFromMif(std::string_view folder) {
    Text<1000> file;
    projectionFile(file, folder, ".mif");
    int32_t unit = 0;
    OPENERFREE(unit, "I ", file, 0);
    conBlank();
    conLine(lineText("Using ", file.trimmed(), " for setting projection."));
    unitRewind(unit);
    Text<1000> line;
    for (;;) {
        IoStatus st = unitReadLine(unit, line);
        if (st == IoStatus::end) stopWith(lineText("ERROR - Unable to find CoordSys line in ", file.trimmed()));
        if (st == IoStatus::error) stopOnLine("ERROR - Reading following line in file:", line.trimmed());
        if (FLAGEXISTS(line, "CoordSys")) break;
    }
    gisCoordSysLine = line.trimmed();
    conBlank();
    conLine(lineText("mif Projection: ", gisCoordSysLine.trimmed()));
}

// The first line of the .prj file, whole.
void projectionFromPrj(std::string_view folder) {
    Text<1000> file;
    projectionFile(file, folder, ".prj");
    conLine(lineText("GIS Projection being extracted from ", file.trimmed()));
    int32_t unit = 0;
    OPENERFREE(unit, "I ", file, 0);
    Text<1000> line;
    if (unitReadLine(unit, line) != IoStatus::ok)
        stopWith(
            lineText("ERROR - Projection line could not be found in \"GIS Projection\" .prj file.", file.trimmed()));
    conBlank();
    conLine(lineText("shp Projection: ", line.trimmed()));
    gisPrjLine = line;
}

// Makes sure sdfFile names an existing file, asking for one when it does not.
void findInputFile() {
    if (int32_t open = unitOpenOn(run.sdfFile); open > 0) CLOSER(open);
    if (platformFileExists(run.sdfFile)) return;
    for (;;) {
        conWrite(" Please enter the .sdf file (blank to exit)-> ");
        if (!conReadLine(run.sdfFile)) stopNoInput("the name of the .sdf file");
        if (BLANK(run.sdfFile)) EXITS();
        Text<16> ext;
        FILEEXT(ext, run.sdfFile);
        if (ext.trimmed() != ".sdf") run.sdfFile.ref().append(".sdf");
        if (platformFileExists(run.sdfFile)) return;
        conLine(lineText(" WARNING - Can''t find file ", run.sdfFile.trimmed(), ", try again"));
    }
}

// sdfFile up to its first dot; blank with no dot or a dot in position 1.
void makeBaseName(TextRef baseName) {
    std::string_view f = run.sdfFile.trimmed();
    std::size_t dot = f.find('.');
    if (dot == std::string_view::npos || dot == 0) baseName.clear();
    else baseName.assign(f.substr(0, dot));
}

}  // namespace

void reachmapReset() {
    gisReset();
    sdfScanReset();
    sectionExportReset();
    run = RunSettings{};
}

[[noreturn]] void runReachmap(int argc, char** argv) {
    FILEINIT(1000);

    conBlank();
    conLine("Build 2023-01-AA");
    conBlank();

    conBlank();
    conLine(lineText("Found", intText(3, argc), " arguments"));

    readCommandWords(argc, argv);

    if (run.helpWanted)
        for (const char* line : kHelp) conLine(*line ? lineText(" ", line) : std::string_view());

    if (run.useMif && run.useShp) stopWith("ERROR - Both mif and shp outputs specified, please use only one.");

    // The projection is looked for beside the named file, before that file is
    // checked; it is not looked for again after the prompt.
    Text<1000> folder;
    FILEFOLDERPATH(folder, run.sdfFile);
    if (run.useMif) projectionFromMif(folder);
    else if (run.useShp) projectionFromPrj(folder);

    findInputFile();
    OPENERFREE(sdfUnit, "I ", run.sdfFile, 0);

    Text<1000> streamLayerName;
    streamLayerName = lineText(run.sdfFile.trimmed(), layer::streams.suffix, run.useMif ? ".mif" : ".shp");
    int32_t streamsLayer = 0;
    CreateStreamLayer(streamLayerName, streamsLayer);
    gisO_.isPline = true;

    conBlank();
    conLine("Processing Stream Centrelines");
    conBlank();
    runStreamPhase(streamsLayer);

    gisCloseLayer(streamsLayer);
    gisO_.isPline = false;

    Text<1000> baseName;
    makeBaseName(baseName);
    SectionLayers layers;
    CreateSectionLayers(baseName, run.useMif, layers.surfPts, layers.surfLine, layers.cutLine, layers.leveePts,
                        layers.endPts);

    runSectionPhase(run.trimToLevees, layers);

    gisCloseLayer(layers.surfPts);
    gisCloseLayer(layers.endPts);
    gisCloseLayer(layers.surfLine);
    gisCloseLayer(layers.cutLine);
    gisCloseLayer(layers.leveePts);

    conBlank();
    conLine("Finished.");
    EXITS();
}
