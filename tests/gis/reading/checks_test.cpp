// The checks that opening an input layer runs: its projection against the
// project's, in both families, and the save dates of a .mif/.mid pair
// against its .tab.
#include <fcntl.h>

#include <chrono>

#include "gis/mif/mif_reader.hpp"
#include "gis/shp/shp_reader.hpp"
#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;

namespace {

const char* const kCoordSys = "CoordSys Earth Projection 8, 116, \"m\", 147, 0, 0.9996, 500000, 10000000";
const std::string kDifferent = "Projection of .mif file is different to that specified by the MI Projection == command.";

class Checks : public GisTest {
protected:
    // One point in m.mif with this CoordSys line, and in s_P.shp with this
    // .prj line (no .prj when empty).
    void layers(const std::string& coordSys, const std::string& prj) {
        writeFile(path("m.mif"), crlf({"Version 300", coordSys, "Columns 1", "  ID Integer", "Data", "Point 1 2"}));
        writeFile(path("m.mid"), "1\r\n");
        setAttributes({{"ID", "Integer", 0}});
        int32_t id = openWithHeader("s.shp", "P");
        writeObject(id, &GisObject::isPoint, {{1, 2}}, "1");
        gisCloseLayer(id);
        std::filesystem::remove(path("s_P.prj"));
        if (!prj.empty()) writeFile(path("s_P.prj"), prj + "\r\n");
    }
    // Reads the layer, which must give its point.
    void readAll(const std::string& name) {
        int32_t id = gisOpenLayer(path(name), false, "I ", "");
        EXPECT_EQ(reading::readLayer(id).size(), 1u);
        gisCloseLayer(id);
    }
};

}  // namespace

TEST_F(Checks, Projections) {
    mifNormalCoordSys(gisMifProjection, kCoordSys);
    Text<1000> prj("PROJCS[\"GDA_1994_MGA_Zone_55\",GEOGCS[\"GCS_GDA_1994\"],UNIT[\"Meter\",1.0]]");
    prjProjectionName(gisShpProjection, prj);
    EXPECT_EQ(gisShpProjection.trimmed(), "GDA_1994_MGA_ZONE_55");
    const std::string shpWarning =
        "WARNING 0305 - Projection of .shp file is different to that specified by the SHP Projection == command.";
    const struct {
        const char* file;
        std::string projection;             // the CoordSys or .prj line
        std::vector<std::string> warnings;  // lines of the output
    } cases[] = {
        {"m.mif", "  coordsys earth projection 8,116,'m',147,0,0.9996,500000,10000000", {}},
        {"m.mif", "CoordSys Earth Projection 8, 116, \"m\", 149, 0, 0.9996, 500000, 10000000", {"WARNING 0305 - " + kDifferent}},
        {"m.mif", "Charset \"WindowsLatin1\"", {"WARNING 0306 - Problems finding CoordSys line in .mif file."}},
        {"s_P.shp", "projcs[\"GDA_1994_MGA_Zone_55\",GEOGCS[\"other\"],PARAMETER[\"False_Easting\",1.0]]", {}},
        {"s_P.shp", "PROJCS[\"GDA_1994_MGA_Zone_56\",GEOGCS[\"GCS_GDA_1994\"]]", {shpWarning}},
        {"s_P.shp", "GEOGCS[\"GCS_WGS_1984\"]",
         {"WARNING 0420 - Could not find PROJCS definition.  Projection of .shp file might not be cartesian.", shpWarning}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.projection);
        const bool mif = std::string(c.file) == "m.mif";
        layers(mif ? c.projection : kCoordSys, mif ? "" : c.projection);
        const std::string out = console([&] { readAll(c.file); });
        EXPECT_EQ(out.find("WARNING") == std::string::npos, c.warnings.empty()) << out;
        for (const std::string& w : c.warnings) EXPECT_NE(out.find("\n" + w + "\n"), std::string::npos) << out;
    }
    // A different projection held as an error stops.
    gisProjectionCheckIsError = true;
    layers(cases[1].projection, "");
    EXPECT_GIS_STOP(readAll("m.mif"), "ERROR 0305 - " + kDifferent +
                                          "\nUse \"MI Projection Check == WARNING\" to change message to a WARNING.");
}

TEST_F(Checks, SaveDatesOfMifPair) {
    layers(kCoordSys, "");
    gisSaveDateCheck = true;
    const std::string checking = "Checking save date is later than that of " + path("m.tab") + "...";
    // No .tab: a warning, and the layer is read.
    const std::string out = console([&] { readAll("m.mif"); });
    EXPECT_NE(out.find(checking + "NOT OK\n\nWARNING 0004 - Could not access save date of \"" + path("m.mid") +
                       "\" to check with \"" + path("m.tab") + "\"\n"),
              std::string::npos)
        << out;
    writeFile(path("m.tab"), "!table\r\n");
    std::filesystem::last_write_time(path("m.mid"), std::filesystem::file_time_type::clock::now() - std::chrono::seconds(100));

    // Held as an error: both files are closed and opened again after each
    // answer; with nobody left to answer the run ends.
    gisSaveDateCheckIsError = true;
    const std::string answers = path("answers");
    writeFile(answers, "\n");
    const std::string round = literal(checking) + "NOT OK\n\n\\.\\.\\.Closed File Unit:1001\n"
                              "\\.\\.\\.Closed File Unit:1002\nERROR 0004 - Save date of [^\n]*\n";
    conFlush();
    EXPECT_EXIT(
        {
            fileUnitSettings.pauseOnPrematureExit = false;
            ::dup2(2, 1);
            ::dup2(::open(answers.c_str(), O_RDONLY), 0);
            readAll("m.mif");
        },
        ::testing::ExitedWithCode(0),
        round + ".*" + round + ".*\nERROR - End of standard input while waiting for the mif file to be exported "
                               "again; nobody left to answer\\.\n");
}
