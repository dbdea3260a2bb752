// The layer table, opening and closing: slot reuse, file names from the
// extension and the set letters, input layers, the console transcript and
// the stops.
#include <functional>
#include <regex>

#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class Layers : public GisTest {
protected:
    // Console output of `f`.
    template <class F>
    std::string console(F f) {
        conFlush();
        ::testing::internal::CaptureStdout();
        f();
        conFlush();
        return ::testing::internal::GetCapturedStdout();
    }
    bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }
};

}  // namespace

TEST_F(Layers, StopsForLayerNumberZero) {
    int32_t zero = 0;
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[] { gisInitialiseLayer(0); }, "gisInitialiseLayer"},
        {[] { gisWriteHeader(0); }, "gisWriteHeader"},
        {[] { gisWriteObject(0, gisO_); }, "gisWriteObject"},
        {[] { gisWriteRecord(-3, gisO_); }, "gisWriteRecord"},
        {[] { gisWriteRecordLarge(0, gisO_); }, "gisWriteRecordLarge"},
        {[] { gisWriteEoF(0); }, "gisWriteEoF"},
    };
    for (const auto& [call, name] : cases)
        EXPECT_GIS_STOP(call(), std::string("Should not be here ") + name + "[gisID=0] - please contact the reachmap maintainers.");
    // A slot that is not open has no family.
    for (const auto& [call, where] : std::initializer_list<std::pair<std::function<void()>, const char*>>{
             {[] { gisWriteHeader(5); }, "gisWriteHeader"},
             {[] { gisWriteObject(5, gisO_); }, "gisWriteObject"},
             {[] { gisWriteRecord(5, gisO_); }, "gisWriteRecord"},
             {[] { gisWriteRecordLarge(5, gisO_); }, "gisWriteRecordLarge"},
             {[] { gisWriteEoF(5); }, "gisWriteHeader"},
             {[] { int32_t id = 5; gisCloseLayer(id); }, "gisCloseLayer"},
         })
        EXPECT_GIS_STOP(call(), std::string("Should not be here [") + where + "] - please contact the reachmap maintainers.");
    // Closing layer 0 is only reported.
    const std::string out = console([&] { gisCloseLayer(zero); });
    EXPECT_EQ(out, "SOFTWARE CHECK - Trying to close a GIS Layer that's not open.  Please contact the reachmap maintainers.\n");
}

TEST_F(Layers, ResetsAndMessageSink) {
    gisShp[7][2].xmax = 5;
    gisShp[7][2].recordNumber = 9;
    gisDbf[7][3].widths[4] = 12;
    gisFormat[7] = 2;
    gisIsOpen[7] = true;
    gisInitialiseLayer(7);
    EXPECT_EQ(gisShp[7][2].xmax, -1.0);
    EXPECT_EQ(gisShp[7][2].recordNumber, 0);
    EXPECT_EQ(gisDbf[7][3].widths[4], 0);
    EXPECT_EQ(gisFormat[7], 0);
    EXPECT_TRUE(gisIsOpen[7]);  // not the reset's business

    setPoints({{1, 2}, {3, 4}});
    gisO_.isRegion = gisO_.isArc = gisO_.isWritten = true;
    gisO_.nr = gisO_.np = 4;
    gisO_.ir[1] = 3;
    put(gisO_.type, "Region");
    gisClearObject(gisO_);
    EXPECT_FALSE(gisO_.isRegion || gisO_.isArc);
    EXPECT_TRUE(gisO_.isWritten);
    EXPECT_EQ(gisO_.nr + gisO_.np + gisO_.ir[1], 3);
    EXPECT_TRUE(gisO_.type.blank());
    EXPECT_EQ(gisN, 2);
    EXPECT_EQ(gisX[2], 3.0);

    gisSetMessage("first   ");
    put(gisMessageLine[3], "third");
    EXPECT_EQ(console([] { gisMessageOut(2); }), "\n\nfirst\nthird\n");
    EXPECT_EQ(gisShapeTypeNames[3].trimmed(), "Polyline");
    EXPECT_EQ(gisShapeTypeNames[13].trimmed(), "PolyLineZ");
    EXPECT_EQ(gisShapeTypeNames[2].trimmed(), "Unknown");
}

TEST_F(Layers, HundredLayersAndReuse) {
    int32_t ids[kGisMaxLayers + 1];
    for (int i = 1; i <= kGisMaxLayers; ++i) {
        ids[i] = gisOpenLayer(path("m" + std::to_string(i)), false, "O ", "");
        ASSERT_EQ(ids[i], i);
    }
    EXPECT_GIS_STOP(gisOpenLayer(path("x"), false, "O ", ""),
                    "ERROR 0251 - Cannot have more than 100 GIS layers open at once.");
    gisCloseLayer(ids[37]);
    EXPECT_EQ(ids[37], 0);
    EXPECT_EQ(gisOpenLayer(path("again"), false, "O ", ""), 37);
    bool any = false;
    gisCloseAllLayers(any);
    EXPECT_TRUE(any);
    gisCloseAllLayers(any);
    EXPECT_FALSE(any);
    EXPECT_TRUE(exists("again.mif") && exists("m100.mid"));
}

TEST_F(Layers, FormatsAndNames) {
    for (auto [name, attributesOnly, format] : {std::tuple{"a.MIF", false, 1}, {"a.mid", true, 1}, {"a", false, 1},
                                                 {"a.shp", false, 2}, {"a.dbf", true, 2}, {"a.csv", true, -1}})
        EXPECT_EQ(gisFormatOfFile(name, attributesOnly), format) << name;
    EXPECT_GIS_STOP(gisFormatOfFile("a.dbf", false), "ERROR 0252 - .dbf is not a supported GIS file format.");
    EXPECT_GIS_STOP(gisOpenLayer(path("a.txt"), false, "O ", ""), "ERROR 0252 - .txt is not a supported GIS file format.");

    int32_t id = gisOpenLayer(path("x.shp"), false, "O ", "PlR");
    gisCloseLayer(id);
    for (const char* stem : {"x_P", "x_l", "x_R"})
        for (const char* ext : {".shp", ".shx", ".prj", ".dbf"}) EXPECT_TRUE(exists(std::string(stem) + ext)) << stem << ext;
    EXPECT_FALSE(exists("x_L.shp"));
    // Attributes only: one .dbf under the given name.
    id = gisOpenLayer(path("t.dbf"), true, "O ", "P");
    EXPECT_GT(gisDbf[id][1].dbfUnit, 0);
    EXPECT_EQ(gisShp[id][1].shpUnitLE, 0);
    gisCloseLayer(id);
    EXPECT_TRUE(exists("t.dbf"));
}

TEST_F(Layers, OpenStops) {
    EXPECT_GIS_STOP(gisOpenLayer(path("a.mif"), false, "X ", ""), "Should not be here [OpenGIS] - please contact the reachmap maintainers.");
    EXPECT_GIS_STOP(gisOpenLayer(path("a.shp"), false, "O ", "PQ"),
                    "Should not be here [OpenshpFileType] - please contact the reachmap maintainers.");
    GisDbfState dbf;
    GisShpState shp;
    EXPECT_GIS_STOP(OpenshpFile(path("a.mif"), "P", dbf, shp, "O ", false), "ERROR 0426 - .shp file not specified.");
    EXPECT_GIS_STOP(OpenshpFile(path("a.shp"), "P", dbf, shp, "O ", true), "ERROR 0426 - .dbf file not specified.");
    EXPECT_GIS_STOP(OpenshpFile(path("a.shp"), " ", dbf, shp, "O ", false),
                    "Should not be here [OpenshpFileO] - please contact the reachmap maintainers.");
    EXPECT_GIS_STOP(OpenshpFile(path("a.shp"), "P", dbf, shp, "BO", false),
                    "Should not be here [OpenshpFile] - please contact the reachmap maintainers.");
}

TEST_F(Layers, InputLayers) {
    // A missing set gives 0 and opens nothing.
    EXPECT_EQ(gisOpenLayer(path("in.shp"), false, "I ", "L"), 0);
    EXPECT_EQ(gisFormat[1], 0);
    EXPECT_FALSE(gisIsOpen[1]);
    int32_t probe = 0;
    OPENERFREE(probe, "O ", path("probe.txt"), 0);
    EXPECT_EQ(probe, 1001);
    CLOSER(probe);

    int32_t out = gisOpenLayer(path("in.shp"), false, "O ", "L");
    setAttributes({{"A", "Char", 1}});
    gisWriteHeader(out);
    gisCloseLayer(out);
    int32_t a = gisOpenLayer(path("in.shp"), false, "I ", "L");
    ASSERT_GT(a, 0);
    EXPECT_FALSE(gisIsOutput[a]);
    EXPECT_GT(gisShp[a][1].shpUnitLE, 0);
    EXPECT_GT(gisShp[a][1].shpUnitBE, 0);
    EXPECT_GT(gisDbf[a][1].dbfUnit, 0);
    // The same layer under another extension is the same input layer.
    out = gisOpenLayer(path("pair.mif"), false, "O ", "");
    gisWriteHeader(out);
    gisCloseLayer(out);
    int32_t b = gisOpenLayer(path("pair.mid"), false, "I ", "");
    int32_t c = gisOpenLayer(path("pair"), false, "I ", "");
    EXPECT_EQ(gisInputLayerCount, 2);
    EXPECT_EQ(gisInputIndex[a], 1);
    EXPECT_EQ(gisInputIndex[b], 2);
    EXPECT_EQ(gisInputIndex[c], 2);
    EXPECT_GT(gisMif[c].mifUnit, 0);
    EXPECT_GT(gisMif[c].midUnit, 0);
    // Beyond the tracking limit: a warning, and the count stays at 1000.
    gisInputLayerCount = 999;
    int32_t d = 0;
    const std::string said = console([&] { d = gisOpenLayer(path("in_L.dbf"), true, "I ", ""); });
    EXPECT_NE(said.find("\nWARNING 0317 - Exceeded limit of input GIS layers that can be tracked (layer referencing "
                        "may not be complete).\n"),
              std::string::npos);
    EXPECT_EQ(gisInputLayerCount, 1000);
    EXPECT_EQ(gisInputIndex[d], 1000);
    for (int32_t id : {a, b, c, d}) gisCloseLayer(id);
}

TEST_F(Layers, TranscriptOfAnShpLayer) {
    setAttributes({{"A", "Char", 1}});
    const std::string said = console([&] {
        int32_t id = gisOpenLayer(path("t.shp"), false, "O ", "P");
        gisWriteHeader(id);
        gisClearObject(gisO_);
        setPoints({{1, 1}});
        gisO_.isPoint = true;
        gisWriteObject(id, gisO_);
        gisWriteRecord(id, gisO_);
        gisCloseLayer(id);
    });
    // Units as the two-unit scheme opens and closes them, in that order.
    std::string units;
    const std::regex unitRe("(File Unit:|Closed File Unit:)(\\d+)");
    for (auto it = std::sregex_iterator(said.begin(), said.end(), unitRe); it != std::sregex_iterator(); ++it)
        units += ((*it)[1] == "File Unit:" ? "+" : "-") + (*it)[2].str() + " ";
    EXPECT_EQ(units, "+1001 +1002 +1003 +1004 +1005 +1006 -1005 -1003 -1006 -1001 -1002 -1004 ");
    EXPECT_EQ(said.rfind("Opening GIS Layer: " + path("t.shp") + "\nGIS Layer assigned ID of 1\n", 0), 0u);
    EXPECT_NE(said.find("\n\nClosing GIS Layer 1 [" + path("t.shp") + "]...\n"), std::string::npos);
}
