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

class Checks : public GisTest {
protected:
    void TearDown() override {
        gisMifProjection.clear();
        gisShpProjection.clear();
        gisProjectionCheckIsError = false;
        gisSaveDateCheck = gisSaveDateCheckIsError = false;
    }
    // A point layer of either family, its projection given by `coordSys`
    // (the .mif) or `prj` (the .prj; none when empty).
    void layer(const std::string& coordSys, const std::string& prj) {
        writeFile(path("m.mif"), crlf({"Version 300", coordSys, "Columns 1", "  ID Integer", "Data", "Point 1 2"}));
        writeFile(path("m.mid"), "1\r\n");
        setAttributes({{"ID", "Integer", 0}});
        int32_t id = openWithHeader("s.shp", "P");
        setPoints({{1, 2}});
        gisO_.isPoint = true;
        put(gisRecordLine, "1");
        gisWriteObject(id, gisO_);
        gisWriteRecord(id, gisO_);
        gisCloseLayer(id);
        std::filesystem::remove(path("s_P.prj"));
        if (!prj.empty()) writeFile(path("s_P.prj"), prj + "\r\n");
    }
    std::size_t readAll(const std::string& name) {
        int32_t id = gisOpenLayer(path(name), false, "I ", "");
        const std::size_t n = reading::readLayer(id).size();
        gisCloseLayer(id);
        return n;
    }
    // Console output of opening and reading a layer, which must give its point.
    std::string readOutput(const std::string& name) {
        conFlush();
        ::testing::internal::CaptureStdout();
        const std::size_t n = readAll(name);
        conFlush();
        const std::string out = ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(n, 1u) << out;
        return out;
    }
    void touch(const std::string& name, int secondsAgo) {
        std::filesystem::last_write_time(path(name),
                                         std::filesystem::file_time_type::clock::now() - std::chrono::seconds(secondsAgo));
    }
};

const char* const kProjection = "CoordSys Earth Projection 8, 116, \"m\", 147, 0, 0.9996, 500000, 10000000";
const char* const kPrj = "PROJCS[\"GDA_1994_MGA_Zone_55\",GEOGCS[\"GCS_GDA_1994\"],UNIT[\"Meter\",1.0]]";
const char* const kMifWarning =
    "WARNING 0305 - Projection of .mif file is different to that specified by the MI Projection == command.";
const char* const kShpWarning =
    "WARNING 0305 - Projection of .shp file is different to that specified by the SHP Projection == command.";

}  // namespace

TEST_F(Checks, ProjectionOfMif) {
    mifNormalCoordSys(gisMifProjection, kProjection);
    struct Case {
        std::string coordSys;
        std::string expected;  // a line of the output, or "" for no message
    };
    const Case cases[] = {
        {"  coordsys earth projection 8,116,'m',147,0,0.9996,500000,10000000", ""},
        {"CoordSys Earth Projection 8, 116, \"m\", 149, 0, 0.9996, 500000, 10000000", kMifWarning},
        {"CoordSys NonEarth Units \"m\"", kMifWarning},
        {"Charset \"WindowsLatin1\"", "WARNING 0306 - Problems finding CoordSys line in .mif file."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.coordSys);
        layer(c.coordSys, "");
        const std::string out = readOutput("m.mif");
        if (c.expected.empty()) {
            EXPECT_EQ(out.find("WARNING"), std::string::npos) << out;
        } else {
            EXPECT_NE(out.find("\n" + c.expected + "\n"), std::string::npos) << out;
        }
    }
    gisProjectionCheckIsError = true;
    layer(cases[1].coordSys, "");
    EXPECT_GIS_STOP(readAll("m.mif"),
                    "ERROR 0305 - Projection of .mif file is different to that specified by the MI Projection == "
                    "command.\nUse \"MI Projection Check == WARNING\" to change message to a WARNING.");
}

TEST_F(Checks, ProjectionOfPrj) {
    Text<1000> line(kPrj);
    prjProjectionName(gisShpProjection, line);
    EXPECT_EQ(gisShpProjection.trimmed(), "GDA_1994_MGA_ZONE_55");
    struct Case {
        std::string prj;
        std::vector<std::string> expected;  // lines of the output
    };
    const Case cases[] = {
        {"projcs[\"GDA_1994_MGA_Zone_55\",GEOGCS[\"other\"],PARAMETER[\"False_Easting\",1.0]]", {}},
        {"", {}},  // no .prj: no check
        {"PROJCS[\"GDA_1994_MGA_Zone_56\",GEOGCS[\"GCS_GDA_1994\"]]", {kShpWarning}},
        {"GEOGCS[\"GCS_WGS_1984\"]",
         {"WARNING 0420 - Could not find PROJCS definition.  Projection of .shp file might not be cartesian.",
          kShpWarning}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.prj);
        layer(kProjection, c.prj);
        const std::string out = readOutput("s_P.shp");
        EXPECT_EQ(out.find("WARNING") == std::string::npos, c.expected.empty()) << out;
        for (const std::string& e : c.expected) EXPECT_NE(out.find("\n" + e + "\n"), std::string::npos) << out;
    }
    // An empty .prj cannot be read, unless no check is asked for.
    layer(kProjection, "x");
    writeFile(path("s_P.prj"), "");
    EXPECT_GIS_STOP(readAll("s_P.shp"), "ERROR 0420 - Could not read projection line in .prj file.");
    gisShpProjection.clear();
    EXPECT_EQ(readOutput("s_P.shp").find("0420"), std::string::npos);

    prjProjectionName(gisShpProjection, line);
    gisProjectionCheckIsError = true;
    writeFile(path("s_P.prj"), "PROJCS[\"Other\"]\r\n");
    EXPECT_GIS_STOP(readAll("s_P.shp"),
                    "ERROR 0305 - Projection of .shp file is different to that specified by the SHP Projection == "
                    "command.\nUse \"GIS Projection Check == WARNING\" to change message to a WARNING.");
}

TEST_F(Checks, SaveDatesOfMifPair) {
    layer(kProjection, "");
    gisSaveDateCheck = true;
    const std::string checking = "Checking save date is later than that of " + path("m.tab") + "...";
    // No .tab: a warning, and the layer is read.
    std::string out = readOutput("m.mif");
    EXPECT_NE(out.find(checking + "NOT OK\n\nWARNING 0004 - Could not access save date of \"" + path("m.mid") +
                       "\" to check with \"" + path("m.tab") + "\"\n"),
              std::string::npos)
        << out;
    // A .tab as old as the pair passes; a newer one is warned about.
    writeFile(path("m.tab"), "!table\r\n");
    touch("m.tab", 100);
    touch("m.mid", 100);
    EXPECT_NE(readOutput("m.mif").find(checking + "OK\n"), std::string::npos);
    touch("m.mid", 200);
    out = readOutput("m.mif");
    EXPECT_NE(out.find("WARNING 0004 - Save date of \"" + path("m.tab") + "\" file is later than that of \"" +
                       path("m.mid") + "\""),
              std::string::npos)
        << out;

    // Held as an error: both files are closed and opened again after each
    // answer; with nobody left to answer the run ends.
    gisSaveDateCheckIsError = true;
    writeFile(path("answers"), "\n");
    const std::string answers = path("answers");
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
