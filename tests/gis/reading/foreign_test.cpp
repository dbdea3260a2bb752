// Layers made by another program (GDAL's ogr2ogr, at test time) read through
// our readers: points with null shapes, multipart lines, polygons with holes,
// a MIF with style lines and a Center clause, a .dbf with a deleted record.
#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;

namespace {

const Points kHoled = {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}, {0, 10},  // outer ring and its copy slot
                       {2, 2}, {4, 2},   {4, 4},   {2, 4},  {2, 2}, {4, 2}};
const Points kIslands = {{20, 20}, {20, 21}, {21, 21}, {20, 20}, {20, 21}, {30, 30}, {30, 31}, {31, 31}, {30, 30}, {30, 31}};
const std::vector<Points> kTwoParts = {{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}, {7, 5}}};
const char* const kMultiLine = "\"MULTILINESTRING ((0 0,1 1),(5 5,6 6,7 5))\"";
const char* const kPolygon = "\"POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 4,2 2))\"";
const char* const kMultiPolygon = "\"MULTIPOLYGON (((20 20,20 21,21 21,20 20)),((30 30,30 31,31 31,30 30)))\"";

class Foreign : public GisTest {
protected:
    void SetUp() override {
        GisTest::SetUp();
        if (!haveTool("/usr/bin/ogr2ogr")) GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed";
    }
    // Rows of id, name, val and WKT into `out` through ogr2ogr.
    void make(const std::string& rows, const std::string& out, const std::string& format) {
        writeFile(path("in.csv"), "id,name,val,WKT\n" + rows);
        int status = 0;
        const std::string log = run("/usr/bin/ogr2ogr -f \"" + format + "\" '" + path(out) + "' '" + path("in.csv") +
                                        "' -oo GEOM_POSSIBLE_NAMES=WKT -oo KEEP_GEOM_COLUMNS=NO -oo AUTODETECT_TYPE=YES 2>&1",
                                    status);
        ASSERT_EQ(status, 0) << log;
    }
};

}  // namespace

TEST_F(Foreign, ShapefilesOfEachKind) {
    make("1,alpha,1.5,POINT (1 2)\n2,\"be\"\"ta\",-3,\n3,\"ga,mma\",2,POINT (3 4)\n", "points.shp", "ESRI Shapefile");
    reading::expectLayer(path("points.shp"), {{"point", {{{1, 2}}}, "1,alpha,1.5"},
                                              {"none", {{}}, "2,'be\"ta',-3"},
                                              {"point", {{{3, 4}}}, "3,'ga,mma',2"}});
    make(std::string("1,a,1,") + kMultiLine + "\n2,b,2,\"LINESTRING (0 0,3 4)\"\n3,c,3,\n", "lines.shp", "ESRI Shapefile");
    reading::expectLayer(path("lines.shp"), {{"plinemultiple", kTwoParts, "1,a,1"},
                                             {"pline", {{{0, 0}, {3, 4}}}, "2,b,2", {{1.5, 2, 53.130102, 5}}},
                                             {"none", {{}}, "3,c,3"}});
    make(std::string("1,a,1,") + kPolygon + "\n2,b,2,\n3,c,3," + kMultiPolygon + "\n", "polygons.shp", "ESRI Shapefile");
    reading::expectLayer(path("polygons.shp"), {{"region", {kHoled}, "1,a,1", {{3.2, 4.2, 0, 0}}},
                                                {"none", {{}}, "2,b,2"},
                                                {"region", {kIslands}, "3,c,3", {{24, 24.375, 0, 0}}}});
}

TEST_F(Foreign, MifWithStyleLinesAndCentre) {
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

TEST_F(Foreign, DbfWithDeletedRecord) {
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
    const std::string out = console([&] {
        for (int i = 0; i < 3; ++i) {
            gisReadRecord(id, gisO_, gisRecordLine);
            for (const std::string& v : reading::values(std::string(gisRecordLine.trimmed()))) rows += v + " ";
            rows += "/";
        }
    });
    EXPECT_EQ(rows, "1 a 1 /3 c 3 //");
    EXPECT_NE(out.find("WARNING 0405 - Insufficient number of records found in .dbf file.\n"
                       "               Found 2, expecting 3\n"),
              std::string::npos)
        << out;
    gisCloseLayer(id);
}
