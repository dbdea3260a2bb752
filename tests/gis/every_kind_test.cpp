// A layer holding every kind of object, written in both families, read back
// by independent readers (GDAL's ogrinfo, shapelib's shpdump and dbfdump,
// pyshp: see independent_readers.py) and through our own reading sequence.
#include <cmath>

#include "gis/shp/shp_sets.hpp"
#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;
using reading::Want;

namespace {

const Points kSquare = {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}};
const Points kHole = {{2, 2}, {4, 2}, {4, 4}, {2, 4}, {2, 2}};

Points join(Points a, const Points& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

struct Sample {
    const char* kind;  // as our reader names it, and the Kind attribute
    bool GisObject::*flag;
    Points points;
    std::vector<int32_t> starts;  // of the parts
    int set;                      // SHP set: 1 points, 2 lines, 3 polygons, 0 every set
    const char* wkt;              // as an independent reader gives it
    std::vector<Points> read;     // as our reader gives the MIF object back: region slots hold
                                  // a copy of each ring's second point
    std::optional<std::array<double, 4>> derived = std::nullopt;  // centre, angle, length
};

const std::vector<Sample>& samples() {
    static const float l = std::sqrt(2.0f) * 3;
    static const std::vector<Sample> s = {
        {"point",
         &GisObject::isPoint,
         {{300000.5, 6000000.25}},
         {},
         1,
         "POINT (300000.5 6000000.25)",
         {{{300000.5, 6000000.25}}}},
        {"multipoint",
         &GisObject::isMultiPoint,
         {{1, 2}, {3, 4}, {5, 6}},
         {},
         1,
         "MULTIPOINT ((1 2),(3 4),(5 6))",
         {{{1, 2}}, {{3, 4}}, {{5, 6}}}},
        {"line",
         &GisObject::isLine,
         {{10, 10}, {20, 25}},
         {},
         2,
         "LINESTRING (10 10,20 25)",
         {{{10, 10}, {20, 25}}},
         {{15, 17.5, 56.309932, std::sqrt(325.0)}}},
        {"pline",
         &GisObject::isPline,
         {{0, 0}, {1, 1}, {2, 0}, {3, 1}},
         {},
         2,
         "LINESTRING (0 0,1 1,2 0,3 1)",
         {{{0, 0}, {1, 1}, {2, 0}, {3, 1}}},
         {{1.5, 0.5, -45, l}}},
        {"plinemultiple",
         &GisObject::isPlineMultiple,
         {{0, 0}, {1, 1}, {5, 5}, {6, 6}, {7, 5}},
         {1, 3},
         2,
         "MULTILINESTRING ((0 0,1 1),(5 5,6 6,7 5))",
         {{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}, {7, 5}}}},
        {"region",
         &GisObject::isRegion,
         kSquare,
         {},
         3,
         "POLYGON ((0 0,0 10,10 10,10 0,0 0))",
         {join(kSquare, {{0, 10}})},
         {{5, 5, 0, 0}}},
        {"region",
         &GisObject::isRegion,
         join(kSquare, kHole),
         {1, 6},
         3,
         "POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 4,2 2))",
         {join(join(kSquare, {{0, 10}}), join(kHole, {{4, 2}}))},
         {{3.2, 4.2, 0, 0}}},
        {"text", &GisObject::isText, {{7, 8}, {7, 8}, {9, 9}}, {}, 1, "POINT (7 8)", {{}}},
        {"none", &GisObject::isNone, {}, {}, 0, "", {{}}},
    };
    return s;
}

std::string record(int index) {
    return "\"" + std::string(samples()[index - 1].kind) + "\"," + std::to_string(index) + "," +
           std::to_string(index * 1.5);
}

// The samples of one SHP set (0: the MIF layer, which holds all) as the
// readers give them, a line each: kind, index, value and WKT.
std::string expected(int set) {
    std::string lines;
    for (std::size_t i = 0; i < samples().size(); ++i) {
        const Sample& s = samples()[i];
        char value[40];
        std::snprintf(value, sizeof value, "%.17g", (i + 1) * 1.5);
        if (set == 0 || s.set == 0 || s.set == set)
            lines += std::string(s.kind) + " " + std::to_string(i + 1) + " " + value + " " + s.wkt + "\n";
    }
    return lines;
}

class EveryKind : public GisTest {
protected:
    // Writes every sample with the record "kind",index,index*1.5.
    void writeLayer(const std::string& name, const char* letters) {
        setAttributes({{"Kind", "Char", 20}, {"Index", "Integer", 0}, {"Value", "Float", 0}});
        put(gisCoordSysLine, "CoordSys NonEarth Units \"m\" Bounds (-1000, -1000) (10000000, 10000000)");
        put(gisPrjLine, "LOCAL_CS[\"metres\"]");
        int32_t id = openWithHeader(name, letters);
        for (std::size_t i = 0; i < samples().size(); ++i)
            writeObject(id, samples()[i].flag, samples()[i].points, record(int(i + 1)), samples()[i].starts);
        gisCloseLayer(id);
    }
};

}  // namespace

TEST_F(EveryKind, IndependentReadersAcceptIt) {
    writeLayer("all.mif", "");
    writeLayer("all.shp", "PLR");
    int pyshp = 0;
    run("/usr/bin/python3 -c 'import shapefile' 2>/dev/null", pyshp);
    // Each reader: its name for the script, whether it is installed, whether it reads MIF too.
    const std::tuple<const char*, bool, bool> readers[] = {
        {"ogrinfo", haveTool("/usr/bin/ogrinfo"), true},
        {"shapelib", haveTool("/usr/bin/shpdump") && haveTool("/usr/bin/dbfdump"), false},
        {"pyshp", pyshp == 0, false},
    };
    const std::string script = std::string(REACHMAP_SOURCE_DIR) + "/tests/gis/independent_readers.py";
    std::string missing;
    for (const auto& [tool, installed, readsMif] : readers) {
        if (!installed) {
            missing += std::string(" ") + tool;
            continue;
        }
        for (int set = readsMif ? 0 : 1; set <= 3; ++set) {
            const std::string file = path(set == 0 ? "all.mif" : std::string("all_") + "PLR"[set - 1] + ".shp");
            int status = 0;  // a failure shows in the output, which holds the error stream too
            EXPECT_EQ(run("/usr/bin/python3 " + script + " " + tool + " " + file + " 2>&1", status), expected(set))
                << tool << " " << file;
        }
    }
    if (!missing.empty()) GTEST_SKIP() << "not installed:" << missing;
}

TEST_F(EveryKind, OurReadersGiveItBack) {
    writeLayer("all.mif", "");
    writeLayer("all.shp", "PLR");
    std::vector<Want> w;
    for (std::size_t i = 0; i < samples().size(); ++i)
        w.push_back({samples()[i].kind, samples()[i].read, record(int(i + 1)), samples()[i].derived});
    const auto mif = reading::expectLayer(path("all.mif"), w);
    EXPECT_EQ(mif.at(6).ir, (std::vector<int32_t>{5, 11}));  // the last given point of each part
    // In the SHP family a line is a polyline of one part; a text, a point at its first entry.
    Want line = w[2], text = w[7];
    line.kind = "pline";
    text.kind = "point";
    text.subs = {{{7, 8}}};
    reading::expectLayer(path("all_P.shp"), {w[0], w[1], text, w[8]});
    reading::expectLayer(path("all_L.shp"), {line, w[3], w[4], w[8]});
    reading::expectLayer(path("all_R.shp"), {w[5], w[6], w[8]});
}

// The set of each kind is one choice: its object goes to the .shp and its
// record to the .dbf of the same set, and that set's files carry its letter
// (as the caller spelt it) and shape type: P points 1, L lines 3, R regions 5.
TEST_F(EveryKind, ObjectAndRecordLandInTheSameSet) {
    setAttributes({{"Kind", "Char", 20}, {"Index", "Integer", 0}, {"Value", "Float", 0}});
    int32_t id = openWithHeader("sets.shp", "RpL");
    int32_t count[4] = {};
    for (std::size_t i = 0; i < samples().size(); ++i) {
        const Sample& s = samples()[i];
        gisClearObject(gisO_);
        gisO_.*s.flag = true;
        EXPECT_EQ(shpSetOf(gisO_), s.set) << s.kind;
        writeObject(id, s.flag, s.points, record(int(i + 1)), s.starts);
        for (int k = 1; k <= 3; ++k) {
            count[k] += s.set == k || s.set == 0 ? 1 : 0;
            EXPECT_EQ(gisShp[id][k].recordNumber, count[k]) << s.kind << " in the .shp of set " << k;
            EXPECT_EQ(gisDbf[id][k].writtenCount, count[k]) << s.kind << " in the .dbf of set " << k;
        }
    }
    gisCloseLayer(id);
    const std::tuple<const char*, int, int32_t> sets[] = {{"p", 1, 1}, {"L", 2, 3}, {"R", 3, 5}};
    for (const auto& [letter, set, type] : sets) {
        const std::string stem = path(std::string("sets_") + letter);
        EXPECT_EQ(readFile(stem + ".shp").substr(32, 4), le32(type)) << letter;
        EXPECT_EQ(readFile(stem + ".shx").size(), 100u + 8u * static_cast<unsigned>(count[set])) << letter;
        EXPECT_EQ(readFile(stem + ".dbf").substr(4, 4), le32(count[set])) << letter;
    }
    // The kinds that are only ever read belong to no set.
    for (bool GisObject::*readOnly :
         {&GisObject::isEllipse, &GisObject::isRect, &GisObject::isRoundRect, &GisObject::isArc}) {
        gisClearObject(gisO_);
        gisO_.*readOnly = true;
        EXPECT_EQ(shpSetOf(gisO_), kShpSetNone);
    }
}
