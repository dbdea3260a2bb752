// Layers made by another program (GDAL's ogr2ogr, at test time) read through
// our readers: points with null shapes, multipart lines, polygons with holes,
// a MIF with style lines and a Center clause, a .dbf with a deleted record.
#include <cstdio>
#include <optional>
#include <regex>

#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;
using reading::Points;

namespace {

const char* const kOgr2ogr = "/usr/bin/ogr2ogr";

struct Want {
    std::string kind;
    std::vector<Points> subs;
    std::vector<std::string> values;
    std::optional<std::pair<double, double>> centre = std::nullopt;
};

// Numbers compared by value, whatever width and decimals a writer chose.
std::vector<std::string> normal(std::vector<std::string> v) {
    for (std::string& s : v) {
        char* end = nullptr;
        const double d = std::strtod(s.c_str(), &end);
        if (!s.empty() && end == s.c_str() + s.size()) {
            char b[40];
            std::snprintf(b, sizeof b, "%.10g", d);
            s = b;
        }
    }
    return v;
}

const char* const kCsvHead = "id,name,val,WKT\n";

class Foreign : public GisTest {
protected:
    void SetUp() override {
        GisTest::SetUp();
        if (!haveTool(kOgr2ogr)) GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed";
    }
    // Converts CSV rows (id, name, val, WKT) into `out` with ogr2ogr.
    void make(const std::string& rows, const std::string& out, const std::string& format) {
        writeFile(path("in.csv"), kCsvHead + rows);
        int status = 0;
        const std::string log = run(std::string(kOgr2ogr) + " -f \"" + format + "\" '" + path(out) + "' '" +
                                        path("in.csv") + "' -oo GEOM_POSSIBLE_NAMES=WKT -oo KEEP_GEOM_COLUMNS=NO" +
                                        " -oo AUTODETECT_TYPE=YES 2>&1",
                                    status);
        ASSERT_EQ(status, 0) << log;
    }
    void expectLayer(const std::string& name, const std::vector<Want>& want) {
        int32_t id = gisOpenLayer(path(name), false, "I ", "");
        ASSERT_GT(id, 0);
        const auto got = reading::readLayer(id);
        gisCloseLayer(id);
        ASSERT_EQ(got.size(), want.size());
        for (std::size_t i = 0; i < want.size(); ++i) {
            SCOPED_TRACE(name + " object " + std::to_string(i + 1));
            EXPECT_EQ(got[i].kind, want[i].kind);
            ASSERT_EQ(got[i].subs.size(), want[i].subs.size());
            for (std::size_t k = 0; k < want[i].subs.size(); ++k) EXPECT_EQ(got[i].subs[k].points, want[i].subs[k]);
            EXPECT_EQ(normal(reading::values(got[i].record)), normal(want[i].values));
            if (want[i].centre) {
                EXPECT_DOUBLE_EQ(got[i].subs[0].cx, want[i].centre->first);
                EXPECT_DOUBLE_EQ(got[i].subs[0].cy, want[i].centre->second);
            }
        }
    }
};

const Points kHoled = {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}, {0, 10},  // outer ring and its copy slot
                       {2, 2}, {4, 2},   {4, 4},   {2, 4},  {2, 2}, {4, 2}};
const Points kTwoIslands = {{20, 20}, {20, 21}, {21, 21}, {20, 20}, {20, 21},
                            {30, 30}, {30, 31}, {31, 31}, {30, 30}, {30, 31}};

}  // namespace

TEST_F(Foreign, ShapefilesOfEachKind) {
    make("1,alpha,1.5,POINT (1 2)\n2,\"be\"\"ta\",-3,\n3,\"ga,mma\",2,POINT (3 4)\n", "points.shp", "ESRI Shapefile");
    expectLayer("points.shp", {{"point", {{{1, 2}}}, {"1", "alpha", "1.5"}},
                               {"none", {{}}, {"2", "be\"ta", "-3"}},
                               {"point", {{{3, 4}}}, {"3", "ga,mma", "2"}}});

    make("1,a,1,\"MULTILINESTRING ((0 0,1 1),(5 5,6 6,7 5))\"\n2,b,2,\"LINESTRING (0 0,3 4)\"\n3,c,3,\n",
         "lines.shp", "ESRI Shapefile");
    expectLayer("lines.shp", {{"plinemultiple", {{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}, {7, 5}}}, {"1", "a", "1"}},
                              {"pline", {{{0, 0}, {3, 4}}}, {"2", "b", "2"}, std::pair(1.5, 2.0)},
                              {"none", {{}}, {"3", "c", "3"}}});

    make("1,a,1,\"POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 4,2 2))\"\n2,b,2,\n"
         "3,c,3,\"MULTIPOLYGON (((20 20,20 21,21 21,20 20)),((30 30,30 31,31 31,30 30)))\"\n",
         "polygons.shp", "ESRI Shapefile");
    expectLayer("polygons.shp", {{"region", {kHoled}, {"1", "a", "1"}, std::pair(3.2, 4.2)},
                                 {"none", {{}}, {"2", "b", "2"}},
                                 {"region", {kTwoIslands}, {"3", "c", "3"}, std::pair(24.0, 24.375)}});
}

TEST_F(Foreign, MifWithStyleLinesAndCentre) {
    make("1,a,1.5,POINT (1 2)\n2,b,2,\"MULTILINESTRING ((0 0,1 1),(5 5,6 6,7 5))\"\n"
         "3,c,3,\"POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 4,2 2))\"\n4,d,4,\"LINESTRING (0 0,3 4)\"\n5,e,5,\n"
         "6,f,6,\"MULTIPOLYGON (((20 20,20 21,21 21,20 20)),((30 30,30 31,31 31,30 30)))\"\n",
         "made.mif", "MapInfo File");
    // A Center clause behind the first region's style lines, as MapInfo
    // writes it; the last region meets the end of the file instead.
    std::string mif = readFile(path("made.mif"));
    const std::size_t brush = mif.find("Brush");
    ASSERT_NE(brush, std::string::npos) << mif;
    mif.insert(mif.find('\n', brush) + 1, "    Center 3 4\n");
    ASSERT_NE(mif.find("Pen"), std::string::npos) << mif;
    writeFile(path("made.mif"), mif);
    expectLayer("made.mif", {{"point", {{{1, 2}}}, {"1", "a", "1.5"}},
                             {"plinemultiple", {{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}, {7, 5}}}, {"2", "b", "2"}},
                             {"region", {kHoled}, {"3", "c", "3"}, std::pair(3.0, 4.0)},
                             {"line", {{{0, 0}, {3, 4}}}, {"4", "d", "4"}, std::pair(1.5, 2.0)},
                             {"none", {{}}, {"5", "e", "5"}},
                             {"region", {kTwoIslands}, {"6", "f", "6"}, std::pair(24.0, 24.375)}});
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
    ASSERT_GT(id, 0);
    gisReadHeader(id);
    EXPECT_EQ(gisNumberRecords(id), 3);  // the header counts the deleted record
    std::vector<std::vector<std::string>> rows;
    conFlush();
    ::testing::internal::CaptureStdout();
    for (int i = 0; i < 3; ++i) {
        gisReadRecord(id, gisO_, gisRecordLine);
        rows.push_back(normal(reading::values(std::string(gisRecordLine.trimmed()))));
    }
    conFlush();
    const std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(rows, (std::vector<std::vector<std::string>>{{"1", "a", "1"}, {"3", "c", "3"}, {}}));
    EXPECT_NE(out.find("WARNING 0405 - Insufficient number of records found in .dbf file.\n"
                       "               Found 2, expecting 3\n"),
              std::string::npos)
        << out;
    gisCloseLayer(id);
}
