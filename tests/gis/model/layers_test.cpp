// Opening layers: the family and file names from the extension and the set
// letters, and an input set that is not there.
#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class Layers : public GisTest {
protected:
    bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }
};

}  // namespace

TEST_F(Layers, FormatsAndNames) {
    for (auto [name, attributesOnly, format] : {std::tuple{"a.MIF", false, 1}, {"a.mid", true, 1}, {"a", false, 1},
                                                 {"a.shp", false, 2}, {"a.dbf", true, 2}, {"a.csv", true, -1}})
        EXPECT_EQ(gisFormatOfFile(name, attributesOnly), format) << name;
    int32_t id = gisOpenLayer(path("x.shp"), false, "O ", "PlR");
    gisCloseLayer(id);
    for (const char* stem : {"x_P", "x_l", "x_R"})
        for (const char* ext : {".shp", ".shx", ".prj", ".dbf"}) EXPECT_TRUE(exists(std::string(stem) + ext)) << stem << ext;
    EXPECT_FALSE(exists("x_L.shp"));
    // Attributes only: one .dbf under the given name; a .mid name opens the pair.
    id = gisOpenLayer(path("t.dbf"), true, "O ", "P");
    gisCloseLayer(id);
    id = gisOpenLayer(path("e.mid"), false, "O ", "");
    gisCloseLayer(id);
    EXPECT_TRUE(exists("t.dbf") && !exists("t_P.shp") && exists("e.mif") && exists("e.mid"));
}

TEST_F(Layers, MissingInputSetGivesZeroAndKeepsNoUnit) {
    EXPECT_EQ(gisOpenLayer(path("in.shp"), false, "I ", "L"), 0);
    EXPECT_FALSE(gisIsOpen[1]);
    int32_t probe = 0;
    OPENERFREE(probe, "O ", path("probe.txt"), 0);
    EXPECT_EQ(probe, 1001);
    CLOSER(probe);
}
