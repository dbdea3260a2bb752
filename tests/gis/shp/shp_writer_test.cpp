// SHP/SHX writer: whole .shp and .shx files worked out by hand, the choice
// of set for each kind of object, the rewrite over an older file, failures.
#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class ShpWriter : public GisTest {
protected:
    int32_t openLayer(const char* letters) {
        setAttributes({{"Name", "Char", 4}});
        put(gisPrjLine, "PROJCS[\"x\"]");
        return openWithHeader("s.shp", letters);
    }
    std::string file(const char* name) const { return readFile(path(name)); }
};

// The 100-byte header of a .shp or .shx.
std::string header(int32_t words, int32_t type, double x0, double y0, double x1, double y1) {
    return be32(9994) + zeros(20) + be32(words) + le32(1000) + le32(type) + le64(x0) + le64(y0) + le64(x1) + le64(y1) +
           zeros(32);
}

const double kStart = static_cast<double>(9.0e29f);

}  // namespace

TEST_F(ShpWriter, OnePoint) {
    int32_t id = openLayer("P");
    EXPECT_EQ(std::bit_cast<uint64_t>(gisShp[id][1].xmin), 0x4626B81D20000000u);
    EXPECT_EQ(std::bit_cast<uint64_t>(gisShp[id][1].ymax), 0xC626B81D20000000u);
    setPoints({{1.5, 2.5}});
    gisO_.isPoint = true;
    gisWriteObject(id, gisO_);
    EXPECT_TRUE(gisO_.isWritten);
    put(gisRecordLine, "\"ab\"");
    gisWriteRecord(id, gisO_);
    gisCloseLayer(id);
    const std::string shp = file("s_P.shp"), shx = file("s_P.shx");
    EXPECT_EQ(shp.size(), 128u);
    EXPECT_EQ(shx.size(), 108u);
    EXPECT_EQ(shp, header(64, 1, 1.5, 2.5, 1.5, 2.5) + be32(1) + be32(10) + le32(1) + le64(1.5) + le64(2.5));
    EXPECT_EQ(shx, header(54, 1, 1.5, 2.5, 1.5, 2.5) + be32(50) + be32(10));
    EXPECT_EQ(file("s_P.prj"), "PROJCS[\"x\"]\r\n");
}

TEST_F(ShpWriter, EmptySetKeepsResetBox) {
    int32_t id = openLayer("L");
    gisCloseLayer(id);
    EXPECT_EQ(file("s_L.shp"), header(50, 3, 0, 0, -1, -1));
    EXPECT_EQ(file("s_L.shx"), header(50, 3, 0, 0, -1, -1));
    const std::string dbf = file("s_L.dbf");
    ASSERT_EQ(dbf.size(), 32u + 32 + 1 + 1);
    EXPECT_EQ(dbf.substr(4, 4), le32(0));
    EXPECT_EQ(dbf.back(), '\x1a');
}

TEST_F(ShpWriter, PolylineAndRegionParts) {
    int32_t id = openLayer("LR");
    // A polyline of two parts starting at points 1 and 4.
    setPoints({{0, 0}, {1, 1}, {2, 0}, {5, 5}, {6, 4}});
    gisO_.isPlineMultiple = true;
    gisO_.nr = 2;
    gisO_.ir[2] = 4;
    gisWriteObject(id, gisO_);
    // An open region of two parts starting at points 1 and 6.
    gisN = 0;
    for (int i = 1; i <= 10; ++i) {
        gisX[++gisN] = i;
        gisY[gisN] = -i;
    }
    gisClearObject(gisO_);
    gisO_.isRegion = true;
    gisO_.nr = 2;
    gisO_.ir[2] = 6;
    gisWriteObject(id, gisO_);
    gisCloseLayer(id);

    std::string line = be32(1) + be32(66) + le32(3) + le64(0) + le64(0) + le64(6) + le64(5) + le32(2) + le32(5) +
                       le32(0) + le32(3);
    for (auto [x, y] : {std::pair{0, 0}, {1, 1}, {2, 0}, {5, 5}, {6, 4}}) line += le64(x) + le64(y);
    EXPECT_EQ(file("s_L.shp"), header(50 + 70, 3, 0, 0, 6, 5) + line);
    EXPECT_EQ(file("s_L.shx"), header(54, 3, 0, 0, 6, 5) + be32(50) + be32(66));

    std::string region = be32(1) + be32(106) + le32(5) + le64(1) + le64(-10) + le64(10) + le64(-1) + le32(2) +
                         le32(10) + le32(0) + le32(5);
    for (int i = 1; i <= 10; ++i) region += le64(i) + le64(-i);
    EXPECT_EQ(file("s_R.shp"), header(50 + 110, 5, 1, -10, 10, -1) + region);
}

TEST_F(ShpWriter, KindsAndSets) {
    int32_t id = openLayer("plr");
    // A text is stored as a point of set 1, and the buffer says so.
    setPoints({{3, 4}, {10, 10}, {20, 20}});
    gisO_.isText = true;
    gisWriteObject(id, gisO_);
    EXPECT_TRUE(gisO_.isPoint);
    EXPECT_FALSE(gisO_.isText);
    put(gisRecordLine, "t");
    gisWriteRecord(id, gisO_);
    // A multipoint goes to set 1 as type 8.
    setPoints({{1, 2}, {-1, 7}});
    gisClearObject(gisO_);
    gisO_.isMultiPoint = true;
    gisWriteObject(id, gisO_);
    gisWriteRecord(id, gisO_);
    // A null object is one record in every set.
    gisClearObject(gisO_);
    gisO_.isNone = true;
    gisWriteObject(id, gisO_);
    gisWriteRecord(id, gisO_);
    gisCloseLayer(id);

    const std::string point = be32(1) + be32(10) + le32(1) + le64(3) + le64(4);
    const std::string multi = be32(2) + be32(36) + le32(8) + le64(-1) + le64(2) + le64(1) + le64(7) + le32(2) +
                              le64(1) + le64(2) + le64(-1) + le64(7);
    EXPECT_EQ(file("s_p.shp"),
              header(50 + 14 + 40 + 6, 1, -1, 2, 3, 7) + point + multi + be32(3) + be32(2) + le32(0));
    EXPECT_EQ(file("s_p.shx"), header(50 + 12, 1, -1, 2, 3, 7) + be32(50) + be32(10) + be32(64) + be32(36) +
                                   be32(104) + be32(2));
    // Sets holding only a null record keep the box that the header step set.
    for (const char* name : {"s_l.shp", "s_r.shp"}) {
        const std::string s = file(name);
        EXPECT_EQ(s.substr(24, 4), be32(56)) << name;
        EXPECT_EQ(s.substr(36, 32), le64(kStart) + le64(kStart) + le64(-kStart) + le64(-kStart)) << name;
        EXPECT_EQ(s.substr(100), be32(1) + be32(2) + le32(0)) << name;
    }
    EXPECT_EQ(file("s_p.dbf").substr(4, 4), le32(3));
    EXPECT_EQ(file("s_l.dbf").substr(4, 4), le32(1));
    EXPECT_EQ(file("s_r.dbf").substr(4, 4), le32(1));
}

TEST_F(ShpWriter, RewriteOverLongerFileKeepsTail) {
    const std::string oldShp(300, '\xab'), oldShx(200, '\xcd'), oldDbf(500, '\xef');
    writeFile(path("s_P.shp"), oldShp);
    writeFile(path("s_P.shx"), oldShx);
    writeFile(path("s_P.dbf"), oldDbf);
    int32_t id = openLayer("P");
    setPoints({{1.5, 2.5}});
    gisO_.isPoint = true;
    gisWriteObject(id, gisO_);
    gisWriteRecord(id, gisO_);
    gisCloseLayer(id);
    EXPECT_EQ(file("s_P.shp"),
              header(64, 1, 1.5, 2.5, 1.5, 2.5) + be32(1) + be32(10) + le32(1) + le64(1.5) + le64(2.5) + oldShp.substr(128));
    EXPECT_EQ(file("s_P.shx"), header(54, 1, 1.5, 2.5, 1.5, 2.5) + be32(50) + be32(10) + oldShx.substr(108));
    EXPECT_EQ(file("s_P.dbf").size(), 32u + 32 + 1 + 5 + 1);  // a .dbf is replaced
}

TEST_F(ShpWriter, WriteEoFAloneFinishesSetsWithRecords) {
    int32_t id = openLayer("PL");
    setPoints({{1.5, 2.5}});
    gisO_.isPoint = true;
    gisWriteObject(id, gisO_);
    gisWriteRecord(id, gisO_);
    gisWriteEoF(id);
    EXPECT_EQ(gisShp[id][1].shpUnitLE, 0);
    EXPECT_EQ(gisShp[id][1].shxUnitBE, 0);
    EXPECT_EQ(gisDbf[id][1].dbfUnit, 0);
    EXPECT_GT(gisShp[id][2].shpUnitLE, 0);  // no record: closed with the layer
    EXPECT_EQ(gisDbf[id][2].dbfUnit, 0);
    EXPECT_EQ(file("s_P.shp").size(), 128u);
    gisCloseLayer(id);
    EXPECT_EQ(file("s_P.shp").size(), 128u);
    EXPECT_EQ(file("s_L.shp"), header(50, 3, 0, 0, -1, -1));
}

TEST_F(ShpWriter, Failures) {
    int32_t id = openLayer("P");
    setPoints({{1, 1}, {2, 2}});
    gisO_.isPline = true;  // the line set was not opened
    EXPECT_GIS_STOP(gisWriteObject(id, gisO_), "ERROR 0439 - Writing .shp file object coordinates.");
    EXPECT_GIS_STOP(gisWriteRecord(id, gisO_), "ERROR 0417 - Writing .dbf record.");
    EXPECT_GIS_STOP(gisWriteRecordLarge(id, gisO_), "ERROR 0417 - Writing large .dbf record.");
    gisClearObject(gisO_);
    EXPECT_GIS_STOP(gisWriteObject(id, gisO_), "Should not be here [gisWriteObject-shp].  Please contact the reachmap maintainers.");
    EXPECT_GIS_STOP(gisWriteRecord(id, gisO_), "Should not be here [gisWriteRecord-dbf].  Please contact the reachmap maintainers.");
    EXPECT_GIS_STOP(gisWriteRecordLarge(id, gisO_),
                    "Should not be here [gisWriteRecordLarge-dbf].  Please contact the reachmap maintainers.");
    gisN = kGisMaxPoints + 5;
    gisO_.isMultiPoint = true;
    EXPECT_GIS_STOP(gisWriteObject(id, gisO_),
                    "ERROR 0310 - Exceeded number of allowable nodes in a single .shp polyline or region.\n"
                    "             Requested  100005        Limit  100000");
    gisClearObject(gisO_);
    gisO_.isPoint = true;
    int32_t shpUnit = gisShp[id][1].shpUnitLE;
    EXPECT_GIS_STOP(
        {
            gisWriteObject(id, gisO_);
            CLOSER(shpUnit);
            gisCloseLayer(id);
        },
        "ERROR 0413 - Rewriting .dbf file header with final information.");
    gisCloseLayer(id);

    id = gisOpenLayer(path("h.shp"), false, "O ", "P");
    int32_t shxUnit = gisShp[id][1].shxUnitBE;
    EXPECT_GIS_STOP({ CLOSER(shxUnit); gisWriteHeader(id); }, "ERROR 0437 - Writing .shp file header.");
    EXPECT_GIS_STOP(
        {
            CLOSER(gisShp[id][1].shxUnitLE);
            CLOSER(gisShp[id][1].shxUnitBE);
            gisWriteHeader(id);
        },
        "Should not be here [shpnotopen] - please contact the reachmap maintainers.");
    gisCloseLayer(id);
}
