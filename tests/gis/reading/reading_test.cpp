// Reading layers made by another program (GDAL's ogr2ogr, at test time);
// files cut short or corrupted, each ending the run with the message of its
// stage, and the tolerant cases; the projection and save-date checks.
#include <fcntl.h>

#include <chrono>
#include <functional>

#include "gis/mif/mif_reader.hpp"
#include "gis/shp/shp_reader.hpp"
#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;

namespace {

const Points kHoled = {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}, {0, 10},  // outer ring and its copy slot
                       {2, 2}, {4, 2},  {4, 4},   {2, 4},  {2, 2}, {4, 2}};
const Points kIslands = {{20, 20}, {20, 21}, {21, 21}, {20, 20}, {20, 21},
                         {30, 30}, {30, 31}, {31, 31}, {30, 30}, {30, 31}};
const std::vector<Points> kTwoParts = {{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}, {7, 5}}};
const char* const kMultiLine = "\"MULTILINESTRING ((0 0,1 1),(5 5,6 6,7 5))\"";
const char* const kPolygon = "\"POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 4,2 2))\"";
const char* const kMultiPolygon = "\"MULTIPOLYGON (((20 20,20 21,21 21,20 20)),((30 30,30 31,31 31,30 30)))\"";

using Change = std::function<void(std::string&)>;
Change cut(std::size_t n) {
    return [n](std::string& b) { b.resize(n); };
}

const char* const kCoordSys = "CoordSys Earth Projection 8, 116, \"m\", 147, 0, 0.9996, 500000, 10000000";

class Reading : public GisTest {
protected:
    // Rows of id, name, val and WKT into `out` through ogr2ogr.
    void make(const std::string& rows, const std::string& out, const std::string& format) {
        ASSERT_EQ(ogr2ogr("id,name,val,WKT\n" + rows, path(out), format), "");
    }
    // The base layer, written afresh for each case: a polyline of three points
    // and a two-part polyline (set L), a point (P), a square (R). Records: Kind
    // Char(10), Value Float.
    void writeBase() {
        setAttributes({{"Kind", "Char", 10}, {"Value", "Float", 0}});
        int32_t id = openWithHeader("base.shp", "PLR");
        writeObject(id, &GisObject::isPline, {{0, 0}, {1, 1}, {2, 0}}, "\"thing\",1.5");
        writeObject(id, &GisObject::isPlineMultiple, {{0, 0}, {1, 1}, {5, 5}}, "\"thing\",1.5", {1, 3});
        writeObject(id, &GisObject::isPoint, {{7, 8}}, "\"thing\",1.5");
        writeObject(id, &GisObject::isRegion, {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}}, "\"thing\",1.5");
        gisCloseLayer(id);
    }
    // One point in m.mif with this CoordSys line, and in s_P.shp with this .prj line.
    void layers(const std::string& coordSys, const std::string& prj) {
        writeFile(path("m.mif"), crlf({"Version 300", coordSys, "Columns 1", "  ID Integer", "Data", "Point 1 2"}));
        writeFile(path("m.mid"), "1\r\n");
        setAttributes({{"ID", "Integer", 0}});
        int32_t id = openWithHeader("s.shp", "P");
        writeObject(id, &GisObject::isPoint, {{1, 2}}, "1");
        gisCloseLayer(id);
        writeFile(path("s_P.prj"), prj + "\r\n");
    }
    // Reads the layer, which must give its point.
    void readAll(const std::string& name) {
        int32_t id = gisOpenLayer(path(name), false, "I ", "");
        EXPECT_EQ(reading::readLayer(id).size(), 1u);
        gisCloseLayer(id);
    }
};

}  // namespace

TEST_F(Reading, Ogr2ogrShapefilesOfEachKind) {
    if (!haveTool("/usr/bin/ogr2ogr")) GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed";
    make("1,alpha,1.5,POINT (1 2)\n2,\"be\"\"ta\",-3,\n3,\"ga,mma\",2,POINT (3 4)\n", "points.shp", "ESRI Shapefile");
    reading::expectLayer(
        path("points.shp"),
        {{"point", {{{1, 2}}}, "1,alpha,1.5"}, {"none", {{}}, "2,'be\"ta',-3"}, {"point", {{{3, 4}}}, "3,'ga,mma',2"}});
    make(std::string("1,a,1,") + kMultiLine + "\n2,b,2,\"LINESTRING (0 0,3 4)\"\n3,c,3,\n", "lines.shp",
         "ESRI Shapefile");
    reading::expectLayer(path("lines.shp"), {{"plinemultiple", kTwoParts, "1,a,1"},
                                             {"pline", {{{0, 0}, {3, 4}}}, "2,b,2", {{1.5, 2, 53.130102, 5}}},
                                             {"none", {{}}, "3,c,3"}});
    make(std::string("1,a,1,") + kPolygon + "\n2,b,2,\n3,c,3," + kMultiPolygon + "\n", "polygons.shp",
         "ESRI Shapefile");
    reading::expectLayer(path("polygons.shp"), {{"region", {kHoled}, "1,a,1", {{3.2, 4.2, 0, 0}}},
                                                {"none", {{}}, "2,b,2"},
                                                {"region", {kIslands}, "3,c,3", {{24, 24.375, 0, 0}}}});
}

TEST_F(Reading, Ogr2ogrMifWithStyleLinesAndCentre) {
    if (!haveTool("/usr/bin/ogr2ogr")) GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed";
    make(std::string("1,a,1.5,POINT (1 2)\n2,b,2,") + kMultiLine + "\n3,c,3," + kPolygon +
             "\n4,d,4,\"LINESTRING (0 0,3 4)\"\n5,e,5,\n6,f,6," + kMultiPolygon + "\n",
         "made.mif", "MapInfo File");
    // A Center clause behind the first region's style lines, as MapInfo
    // writes it; the last region meets the end of the file instead.
    std::string mif = readFile(path("made.mif"));
    const std::size_t brush = mif.find("Brush");
    ASSERT_TRUE(brush != std::string::npos && mif.find("Pen") != std::string::npos) << mif;
    writeFile(path("made.mif"), mif.insert(mif.find('\n', brush) + 1, "    Center 3 4\n"));
    reading::expectLayer(path("made.mif"), {{"point", {{{1, 2}}}, "1,a,1.5"},
                                            {"plinemultiple", kTwoParts, "2,b,2"},
                                            {"region", {kHoled}, "3,c,3", {{3, 4, 0, 0}}},
                                            {"line", {{{0, 0}, {3, 4}}}, "4,d,4", {{1.5, 2, 53.130102, 5}}},
                                            {"none", {{}}, "5,e,5"},
                                            {"region", {kIslands}, "6,f,6", {{24, 24.375, 0, 0}}}});
}

TEST_F(Reading, Ogr2ogrDbfWithDeletedRecord) {
    if (!haveTool("/usr/bin/ogr2ogr")) GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed";
    make("1,a,1,POINT (1 2)\n2,b,2,POINT (3 4)\n3,c,3,POINT (5 6)\n", "del.shp", "ESRI Shapefile");
    int status = 0;
    const std::string log = run("/usr/bin/ogrinfo '" + path("del.shp") +
                                    "' -oo AUTO_REPACK=NO -dialect SQLite -sql \"DELETE FROM del WHERE id = 2\" 2>&1",
                                status);
    if (status != 0 || readFile(path("del.dbf")).find('*') == std::string::npos)
        GTEST_SKIP() << "this GDAL cannot mark a record deleted: " << log;
    int32_t id = gisOpenLayer(path("del.dbf"), true, "I ", "");
    gisReadHeader(id);
    EXPECT_EQ(gisNumberRecords(id), 3);  // the header counts the deleted record
    std::string rows;
    for (int i = 0; i < 3; ++i) {  // the last, not there, blank after a warning
        gisReadRecord(id, gisO_, gisRecordLine);
        for (const std::string& v : reading::values(std::string(gisRecordLine.trimmed()))) rows += v + " ";
        rows += "/";
    }
    EXPECT_EQ(rows, "1 a 1 /3 c 3 //");
    gisCloseLayer(id);
}

TEST_F(Reading, ShapefileAndDbfStops) {
    // Set L: record header at 100, type 108, box 112, part count 144, point
    // count 148, first part start 152, points from 156. Its .dbf: header 32,
    // two descriptors, the byte 13; records from 97, 27 bytes each.
    const struct {
        const char* file;
        Change change;
        const char* message;
    } cases[] = {
        {"base_L.shp", cut(50), "ERROR 0428 - End of .shp file encountered whilst reading header."},
        {"base_L.shp", cut(106), "ERROR 0425 - End of .shp file encountered whilst reading object type."},
        {"base_L.shp", cut(170), "ERROR 0430 - End of .shp file encountered whilst reading object coordinates."},
        {"base_L.shp", [](std::string& b) { b.replace(104, 4, be32(20)); },  // shorter than its counts
         "ERROR 0424 - Reading .shp file object type."},
        {"base_L.shp", [](std::string& b) { b.replace(108, 4, le32(13)); },
         "ERROR 0423 - Unsupported .shp object type PolyLineZ [13]"},
        {"base_L.dbf", cut(20), "ERROR 0404 - End of .dbf file encountered whilst reading header."},
        {"base_L.dbf", [](std::string& b) { b[48] = 0; },
         "ERROR 0402 - dbf field length of 0 is outside allowable range of 1 to 255."},
        {"base_L.dbf", cut(107), "ERROR 0408 - End of .dbf file encountered whilst reading record."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        writeBase();
        std::string bytes = readFile(path(c.file));
        c.change(bytes);
        writeFile(path(c.file), bytes);
        const std::string name = path(std::string(c.file).substr(0, 6) + ".shp");
        EXPECT_GIS_STOP(reading::readLayer(gisOpenLayer(name, false, "I ", "")), c.message);
    }
}

TEST_F(Reading, ShpPolylineOfNoPartsReadsEmpty) {
    // The first record of set L, its part count (at byte 144) set to 0: no
    // polyline flag, and one read that gives no point.
    writeBase();
    std::string shp = readFile(path("base_L.shp"));
    shp.replace(144, 4, le32(0));
    writeFile(path("base_L.shp"), shp);
    reading::expectLayer(path("base_L.shp"),
                         {{"?", {{}}, "thing,1.5"}, {"plinemultiple", {{{0, 0}, {1, 1}}, {{5, 5}}}, "thing,1.5"}});
}

TEST_F(Reading, MifStops) {
    const std::string h = "Version 300\r\nColumns 1\r\n  ID Integer\r\nData\r\n\r\n";
    const std::pair<std::string, std::string> cases[] = {
        {"Version 300\r\nData\r\n", "ERROR 0315 - Could not find start of attribute definitions in .mif file"},
        {"Columns 1\r\n  A Char(3)\r\nPline 2\r\n",
         "ERROR 0313 - Could not find start of \"Data\" block in .mif file."},
        {h + "Pline 3\r\n1 2\r\n", "ERROR 0309 - Unexpected end of .mif file encountered."},
        {h + "Pline 2\r\n1 2\r\nabc def\r\n", "ERROR 0308 - Reading .mif file.  Check file format is not corrupted."},
        {h + "Point 1 2\r\nPoint 3 4\r\nPoint 5 6\r\n",
         "ERROR 0254 - Failed to read object attribute data record for a POINT"},
    };
    for (const auto& [mif, message] : cases) {
        SCOPED_TRACE(mif);
        writeFile(path("x.mif"), mif);
        writeFile(path("x.mid"), "1\r\n2\r\n");
        EXPECT_GIS_STOP(reading::readLayer(gisOpenLayer(path("x.mif"), false, "I ", "")), message);
    }
}

TEST_F(Reading, TolerantCasesAndMissingSet) {
    // An input SHP set that is not there gives layer 0 and keeps no unit.
    EXPECT_EQ(gisOpenLayer(path("base.shp"), false, "I ", "L"), 0);
    int32_t probe = 0;
    OPENERFREE(probe, "O ", path("probe.txt"), 0);
    EXPECT_EQ(probe, 1001);
    writeBase();
    // A number that did not fit its field reads as 0; a table cut at a record
    // boundary, its end mark lost, ends with a warning and blank records;
    // bytes behind the length the .shp header states are not records.
    writeFile(path("base_L.dbf"), readFile(path("base_L.dbf")).substr(0, 97 + 11) + std::string(16, '*'));
    writeFile(path("base_L.shp"), readFile(path("base_L.shp")) + std::string(40, '\x07'));
    const std::string out = captureConsole([&] {
        reading::expectLayer(path("base_L.shp"), {{"pline", {{{0, 0}, {1, 1}, {2, 0}}}, "thing,0"},
                                                  {"plinemultiple", {{{0, 0}, {1, 1}}, {{5, 5}}}, ""}});
    });
    EXPECT_NE(out.find("WARNING 0405 - Insufficient number of records found in .dbf file.\n"
                       "               Found 1, expecting 2\n"),
              std::string::npos)
        << out;
}

TEST_F(Reading, Projections) {
    // A projection different to the project's warns in either family; held as an error it stops.
    mifNormalCoordSys(gisMifProjection, kCoordSys);
    Text<1000> prj("PROJCS[\"GDA_1994_MGA_Zone_55\",GEOGCS[\"GCS_GDA_1994\"],UNIT[\"Meter\",1.0]]");
    prjProjectionName(gisShpProjection, prj);
    const std::string mif = "Projection of .mif file is different to that specified by the MI Projection == command.";
    const std::string shp = "Projection of .shp file is different to that specified by the SHP Projection == command.";
    const std::tuple<const char*, const char*, std::vector<std::string>> cases[] = {
        {"m.mif",
         "CoordSys Earth Projection 8, 116, \"m\", 149, 0, 0.9996, 500000, 10000000",
         {"WARNING 0305 - " + mif}},
        {"s_P.shp", "PROJCS[\"GDA_1994_MGA_Zone_56\",GEOGCS[\"GCS_GDA_1994\"]]", {"WARNING 0305 - " + shp}},
        {"s_P.shp",
         "GEOGCS[\"GCS_WGS_1984\"]",
         {"WARNING 0420 - Could not find PROJCS definition.  Projection of .shp file might not be cartesian.",
          "WARNING 0305 - " + shp}},
    };
    for (const auto& [file, projection, warnings] : cases) {
        SCOPED_TRACE(projection);
        layers(file[0] == 'm' ? projection : kCoordSys, file[0] == 'm' ? "" : projection);
        const std::string out = captureConsole([&] { readAll(file); });
        for (const std::string& w : warnings) EXPECT_NE(out.find("\n" + w + "\n"), std::string::npos) << out;
    }
    gisProjectionCheckIsError = true;
    const std::string use = "\nUse \"GIS Projection Check == WARNING\" to change message to a WARNING.";
    EXPECT_GIS_STOP(readAll("s_P.shp"), "ERROR 0305 - " + shp + use);
}

TEST_F(Reading, SaveDatesOfMifPair) {
    // A .mid older than its .tab, the check held as an error: both files are
    // closed and opened again after each answer; with nobody left to answer
    // the run ends.
    layers(kCoordSys, "");
    writeFile(path("m.tab"), "!table\r\n");
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(path("m.mid"), now - std::chrono::seconds(100));
    gisSaveDateCheck = gisSaveDateCheckIsError = true;
    const std::string answers = path("answers");
    writeFile(answers, "\n");
    const std::string round = literal("Checking save date is later than that of " + path("m.tab") + "...") +
                              "NOT OK\n\n\\.\\.\\.Closed File Unit:1001\n"
                              "\\.\\.\\.Closed File Unit:1002\nERROR 0004 - Save date of [^\n]*\n";
    EXPECT_STOP(
        {
            ::dup2(::open(answers.c_str(), O_RDONLY), 0);
            readAll("m.mif");
        },
        round + ".*" + round +
            ".*\nERROR - End of standard input while waiting for the mif file to be exported "
            "again; nobody left to answer\\.\n");
}
