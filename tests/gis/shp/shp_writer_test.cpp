// SHP/SHX writer: whole .shp and .shx files worked out by hand, the set each
// kind of object goes to, and the rewrite over an older file.
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

const std::string kPointShp = header(64, 1, 1.5, 2.5, 1.5, 2.5) + be32(1) + be32(10) + le32(1) + le64(1.5) + le64(2.5);
const std::string kPointShx = header(54, 1, 1.5, 2.5, 1.5, 2.5) + be32(50) + be32(10);

}  // namespace

TEST_F(ShpWriter, OnePoint) {
    int32_t id = openLayer("P");
    writeObject(id, &GisObject::isPoint, {{1.5, 2.5}}, "\"ab\"");
    gisWriteEoF(id);  // finishes the set before the layer is closed
    EXPECT_EQ(file("s_P.shp").size(), 128u);
    gisCloseLayer(id);
    EXPECT_EQ(file("s_P.shp"), kPointShp);
    EXPECT_EQ(file("s_P.shx"), kPointShx);
    EXPECT_EQ(file("s_P.shx").size(), 108u);
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
    writeObject(id, &GisObject::isPlineMultiple, {{0, 0}, {1, 1}, {2, 0}, {5, 5}, {6, 4}}, "a", {1, 4});
    Points ten;
    for (int i = 1; i <= 10; ++i) ten.push_back({i, -i});
    writeObject(id, &GisObject::isRegion, ten, "b", {1, 6});  // rings not closed: written as given
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

TEST_F(ShpWriter, RewriteOverLongerFileKeepsTail) {
    const std::string oldShp(300, '\xab'), oldShx(200, '\xcd');
    writeFile(path("s_P.shp"), oldShp);
    writeFile(path("s_P.shx"), oldShx);
    writeFile(path("s_P.dbf"), std::string(500, '\xef'));
    int32_t id = openLayer("P");
    writeObject(id, &GisObject::isPoint, {{1.5, 2.5}}, "");
    gisCloseLayer(id);
    EXPECT_EQ(file("s_P.shp"), kPointShp + oldShp.substr(128));
    EXPECT_EQ(file("s_P.shx"), kPointShx + oldShx.substr(108));
    EXPECT_EQ(file("s_P.dbf").size(), 32u + 32 + 1 + 5 + 1);  // a .dbf is replaced
}
