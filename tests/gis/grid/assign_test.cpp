// Laying layer objects on a grid, checked against grids worked out by hand.
//
// The grid: 6 cells along x (limI) by 5 along y (limJ), cells of 10 by 10,
// origin (1000, 2000), held in arrays of 8 by 7 with an offset of 1 on both
// axes: one margin column and row on each side. The layer, in local
// coordinates (map = origin + local; also laid on a grid turned north):
//   1. point (15, 25), value 7: cell j 3, i 2;
//   2. polyline (2, 12) (58, 12) (58, 68), value 2.5: row 2 from i 1 to 6,
//      then column 6 from j 2 up; j 6 and 7 lie beyond limJ and are not set;
//   3. region, the rectangle (12, 22) - (38, 38) with a hole (22, 32) -
//      (28, 36), value -2.5: cell centres j 3..4, i 2..4 but for the centre
//      (25, 35) of j 4, i 3 in the hole; upper-x sides (x = 20, 30) j 3..4,
//      i 2..3; upper-y sides (y = 30) j 3, i 2..4; corners (20, 30), (30, 30);
//   4. point (-25, 15), value 9: left of the grid, sets nothing.
// Pictures show local rows j 5 (top) to 1 and columns i 0 (the margin that
// x-sides reach) to 6, "." for 0; whatever else of the arrays is not 0 is
// listed behind the picture.
#include <cmath>
#include <regex>
#include <sstream>

#include "geometry/arrays.hpp"
#include "gis_test_util.hpp"

using namespace gistest;

namespace {

constexpr int32_t kLimJ = 5, kLimI = 6, kOff = 1, kDimJ = 7, kDimI = 8;
constexpr float kD = 10.0f;
constexpr double kOx = 1000.0, kOy = 2000.0;

struct Mode {
    bool useInteger = false, countOnly = false, sidesOnly = false, allPoints = false, halveOnSides = false,
         accumulate = false;
};

struct Grids {
    std::vector<int32_t> ci = std::vector<int32_t>(kDimJ * kDimI), xi = ci, yi = ci;
    std::vector<float> cr = std::vector<float>(kDimJ * kDimI), xr = cr, yr = cr;
};

template <typename T>
std::string picture(const std::vector<T>& g) {
    std::ostringstream s, rest;
    for (int32_t j = kLimJ; j >= 1; --j) {
        for (int32_t i = 0; i <= kLimI; ++i) {
            const T v = g[gridIndex(j + kOff, i + kOff, kDimJ)];
            s << (i > 0 ? " " : "");
            (v == 0 ? s << '.' : s << v);
        }
        s << '\n';
    }
    for (int32_t i = 1; i <= kDimI; ++i)
        for (int32_t j = 1; j <= kDimJ; ++j)
            if (g[gridIndex(j, i, kDimJ)] != 0 && (j == 1 || j == kDimJ || i == kDimI))
                rest << " (" << j - kOff << "," << i - kOff << ")=" << g[gridIndex(j, i, kDimJ)];
    if (!rest.str().empty()) s << "outside:" << rest.str() << '\n';
    return s.str();
}

// Panel `panel` of hand-written pictures side by side, parted by "|", in the
// same form, blanks collapsed; null: all 0.
std::string tidy(const char* p, int panel = 0) {
    const char* zero = ". . . . . . .\n. . . . . . .\n. . . . . . .\n. . . . . . .\n. . . . . . .";
    std::istringstream in(p != nullptr ? p : zero);
    std::string line, out;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string w, l;
        for (int at = 0; words >> w;) {
            if (w == "|") ++at;
            else if (at == panel) l += (l.empty() ? "" : " ") + w;
        }
        if (!l.empty()) out += l + "\n";
    }
    return out;
}

// The layer of the header comment.
struct Object {
    bool GisObject::*flag;
    std::string wkt;  // its geometry type in WKT
    Points local;
    const char* value;
    std::vector<int32_t> starts = {};  // of the parts
};
const Object kLayer[] = {
    {&GisObject::isPoint, "POINT", {{15, 25}}, "7"},
    {&GisObject::isPline, "LINESTRING", {{2, 12}, {58, 12}, {58, 68}}, "2.5"},
    {&GisObject::isRegion,
     "POLYGON",
     {{12, 22}, {38, 22}, {38, 38}, {12, 38}, {12, 22}, {22, 32}, {28, 32}, {28, 36}, {22, 36}, {22, 32}},
     "-2.5",
     {1, 6}},
    {&GisObject::isPoint, "POINT", {{-25, 15}}, "9"},
};

// Map coordinates of local points, for a grid whose x axis runs east or north.
Points toMap(const Points& local, bool turned = false) {
    Points map;
    for (auto [x, y] : local) map.push_back(turned ? std::pair{kOx - y, kOy + x} : std::pair{kOx + x, kOy + y});
    return map;
}

// The object as a CSV row of WKT and value for ogr2ogr.
std::string csvRow(const Object& o) {
    std::string points;
    const Points map = toMap(o.local);
    for (std::size_t k = 0; k < map.size(); ++k) {
        const bool start = std::find(o.starts.begin(), o.starts.end(), int32_t(k + 1)) != o.starts.end();
        points += std::string(k == 0  ? ""
                              : start ? "),("
                                      : ",") +
                  std::to_string(map[k].first) + " " + std::to_string(map[k].second);
    }
    const bool ring = o.wkt == "POLYGON";
    return "\"" + o.wkt + (ring ? " ((" : " (") + points + (ring ? "))" : ")") + "\"," + o.value + "\n";
}

class Assign : public GisTest {
protected:
    void writeLayer(const std::string& name, bool turned = false) {
        setAttributes({{"Value", "Float", 0}});
        int32_t id = openWithHeader(name, name.ends_with(".shp") ? "PLR" : "");
        for (const Object& o : kLayer) writeObject(id, o.flag, toMap(o.local, turned), o.value, o.starts);
        gisCloseLayer(id);
    }

    // Through ogr2ogr: the layer as one MIF, ogr.mif, and as one shapefile of each type.
    void ogrLayers() {
        for (const std::string type : {"", "POINT", "LINESTRING", "POLYGON"}) {
            std::string csv = "WKT,value\n";
            for (const Object& o : kLayer)
                if (type.empty() || o.wkt == type) csv += csvRow(o);
            ASSERT_EQ(ogr2ogr(csv, path(type.empty() ? "ogr.mif" : type + ".shp"),
                              type.empty() ? "MapInfo File" : "ESRI Shapefile"),
                      "");
        }
    }

    // Lays every object of the layer `file` on the grids, the console kept.
    void layAll(const std::string& file, const Mode& m, float angle = 0.0f) {
        console_ += captureConsole([&] {
            int32_t id = gisOpenLayer(path(file), false, "I ", "");
            gisReadHeader(id);
            gisGotoBeginningOfData(id);
            for (int32_t guard = 0, count = 0; !gisAtEnd[id] && guard < 100; ++guard) {
                gisAssignObjectToGrid(id, kLimJ, kLimI, kOff, kOff, kD, kD, kOx, kOy, angle, m.useInteger, m.countOnly,
                                      m.sidesOnly, m.allPoints, m.halveOnSides, g.ci.data(), g.xi.data(), g.yi.data(),
                                      g.cr.data(), g.xr.data(), g.yr.data(), kDimJ, kDimI, m.accumulate, count);
            }
            EXPECT_TRUE(gisAtEnd[id]);
            gisCloseLayer(id);
        });
    }

    // The progress lines of the console so far, or only the count and word
    // at their end.
    std::vector<std::string> progress(bool countsOnly = false) const {
        std::vector<std::string> r;
        std::istringstream in(console_);
        const std::regex tail(R"( to +(-?\d+ (cells|points))$)");
        std::smatch m;
        for (std::string line; std::getline(in, line);) {
            if (!line.starts_with("...GIS ")) continue;
            r.push_back(!countsOnly ? line : std::regex_search(line, m, tail) ? m[1].str() : "?" + line);
        }
        return r;
    }

    Grids g;
    std::string console_;
};

}  // namespace

TEST_F(Assign, EveryModeOnWrittenAndOgr2ogrLayers) {
    // Each case: the cell, x-side and y-side grids side by side, and the
    // counts of one pass, objects in the order of the header comment.
    const struct {
        const char* name;
        Mode mode;
        int passes;
        std::vector<std::string> counts;
        const char* grids;
    } cases[] = {
        {"cells", {}, 1, {"1 cells", "10 cells", "5 cells", "0 cells"}, R"(
        .   .    .    .    .   . 2.5 | . . . . . . . | . . . . . . .
        .   . -2.5    . -2.5   . 2.5 | . . . . . . . | . . . . . . .
        .   . -2.5 -2.5 -2.5   . 2.5 | . . . . . . . | . . . . . . .
        . 2.5  2.5  2.5  2.5 2.5 2.5 | . . . . . . . | . . . . . . .
        .   .    .    .    .   .   . | . . . . . . . | . . . . . . .)"},
        {"accumulate, two passes: only the region adds; the point cell is replaced, then added to",
         {.accumulate = true},
         2,
         {"1 cells", "10 cells", "5 cells", "0 cells"},
         R"(
        .   .   .   .   .   . 2.5 | . . . . . . . | . . . . . . .
        .   .  -5   .  -5   . 2.5 | . . . . . . . | . . . . . . .
        .   . 4.5  -5  -5   . 2.5 | . . . . . . . | . . . . . . .
        . 2.5 2.5 2.5 2.5 2.5 2.5 | . . . . . . . | . . . . . . .
        .   .   .   .   .   .   . | . . . . . . . | . . . . . . .)"},
        {"sides only: each point and line cell writes its four sides",
         {.sidesOnly = true},
         1,
         {"4 points", "40 points", "7 points", "0 points"},
         R"(
        . . . . . . . |   .   .    .    .   . 2.5 2.5 | .   .    .    .    .   . 2.5
        . . . . . . . |   .   . -2.5 -2.5   . 2.5 2.5 | .   .    .    .    .   . 2.5
        . . . . . . . |   .   7 -2.5 -2.5   . 2.5 2.5 | .   . -2.5 -2.5 -2.5   . 2.5
        . . . . . . . | 2.5 2.5  2.5  2.5 2.5 2.5 2.5 | . 2.5  2.5  2.5  2.5 2.5 2.5
        . . . . . . . |   .   .    .    .   .   .   . | . 2.5  2.5  2.5  2.5 2.5 2.5)"},
        {"sides only, accumulated, points and lines halved on each side",
         {.sidesOnly = true, .halveOnSides = true, .accumulate = true},
         1,
         {"4 points", "40 points", "7 points", "0 points"},
         R"(
        . . . . . . . |    .   .    .    .   . 1.25 1.25 | .    .    .    .    .    . 1.25
        . . . . . . . |    .   . -2.5 -2.5   . 1.25 1.25 | .    .    .    .    .    .  2.5
        . . . . . . . |    . 3.5    1 -2.5   . 1.25 1.25 | .    .    1 -2.5 -2.5    .  2.5
        . . . . . . . | 1.25 2.5  2.5  2.5 2.5 3.75  2.5 | . 1.25 4.75 1.25 1.25 1.25 3.75
        . . . . . . . |    .   .    .    .   .    .    . | . 1.25 1.25 1.25 1.25 1.25  2.5)"},
        {"all points: regions fill the cells and both sides; points and lines the cells",
         {.allPoints = true},
         1,
         {"1 points", "10 points", "12 points", "0 points"},
         R"(
        .   .    .    .    .   . 2.5 | . .    .    . . . . | . .    .    .    . . .
        .   . -2.5    . -2.5   . 2.5 | . . -2.5 -2.5 . . . | . .    .    .    . . .
        .   . -2.5 -2.5 -2.5   . 2.5 | . . -2.5 -2.5 . . . | . . -2.5 -2.5 -2.5 . .
        . 2.5  2.5  2.5  2.5 2.5 2.5 | . .    .    . . . . | . .    .    .    . . .
        .   .    .    .    .   .   . | . .    .    . . . . | . .    .    .    . . .)"},
        {"count only: regions are counted at centre, sides and corner; points and lines still set cells",
         {.countOnly = true},
         1,
         {"1 points", "10 points", "14 points", "0 points"},
         R"(
        .   .   .   .   .   . 2.5 | . . . . . . . | . . . . . . .
        .   .   .   .   .   . 2.5 | . . . . . . . | . . . . . . .
        .   .   7   .   .   . 2.5 | . . . . . . . | . . . . . . .
        . 2.5 2.5 2.5 2.5 2.5 2.5 | . . . . . . . | . . . . . . .
        .   .   .   .   .   .   . | . . . . . . . | . . . . . . .)"},
        {"integer sides: 2.5 gives 3, -2.5 gives -3; points and lines still go to the cell integers",
         {.useInteger = true, .sidesOnly = true},
         1,
         {"1 points", "10 points", "7 points", "0 points"},
         R"(
        . . . . . . 3 | . .  .  . . . . | . .  .  .  . . .
        . . . . . . 3 | . . -3 -3 . . . | . .  .  .  . . .
        . . 7 . . . 3 | . . -3 -3 . . . | . . -3 -3 -3 . .
        . 3 3 3 3 3 3 | . .  .  . . . . | . .  .  .  . . .
        . . . . . . . | . .  .  . . . . | . .  .  .  . . .)"},
    };
    // The layers, each as its files and the grid angle.
    writeLayer("layer.mif");
    writeLayer("layer.shp");
    writeLayer("north.mif", true);
    std::vector<std::pair<std::vector<std::string>, float>> layers = {
        {{"layer.mif"}, 0.0f}, {{"north.mif"}, std::acos(0.0f)}, {{"layer_P.shp", "layer_L.shp", "layer_R.shp"}, 0.0f}};
    const bool ogr = haveTool("/usr/bin/ogr2ogr");
    if (ogr) {
        ogrLayers();
        layers.push_back({{"ogr.mif"}, 0.0f});
        layers.push_back({{"POINT.shp", "LINESTRING.shp", "POLYGON.shp"}, 0.0f});
    }
    for (const auto& [files, angle] : layers) {
        // The shapefiles hold the points, objects 1 and 4, first.
        const std::vector<int> order = files.size() == 1 ? std::vector{0, 1, 2, 3} : std::vector{0, 3, 1, 2};
        for (const auto& c : cases) {
            SCOPED_TRACE(files[0] + ": " + c.name);
            g = Grids{};
            console_.clear();
            std::vector<std::string> expected;
            for (int p = 0; p < c.passes; ++p) {
                for (const std::string& file : files) layAll(file, c.mode, angle);
                for (int k : order) expected.push_back(c.counts[std::size_t(k)]);
            }
            EXPECT_EQ(progress(true), expected);
            // The cell, x-side and y-side grids of integers, then of reals; those of the other type stay all 0.
            const std::string got[2][3] = {{picture(g.ci), picture(g.xi), picture(g.yi)},
                                           {picture(g.cr), picture(g.xr), picture(g.yr)}};
            for (int type = 0; type < 2; ++type)
                for (int k = 0; k < 3; ++k)
                    EXPECT_EQ(got[type][k], (type == 0) == c.mode.useInteger ? tidy(c.grids, k) : tidy(nullptr))
                        << (type == 0 ? "integer" : "real") << " grid " << k;
        }
    }
    if (!ogr) GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed: only the layers of our own writer were laid";
}

TEST_F(Assign, SkippedObjectsMultipointsAndBadValues) {
    // A text object: one warning, nothing set. A multipoint is laid one point
    // at a time: cells j 3, i 2 and j 5, i 6.
    setAttributes({{"Value", "Float", 0}});
    int32_t id = openWithHeader("text.mif");
    writeObject(id, &GisObject::isText, toMap({{15, 25}, {15, 25}, {20, 30}}), "3");
    writeObject(id, &GisObject::isMultiPoint, toMap({{15, 25}, {55, 45}}), "5");
    gisCloseLayer(id);
    layAll("text.mif", {});
    EXPECT_NE(console_.find("WARNING 2073 - Object ignored.  Only Points, Lines, Polylines & Regions used.\n"
                            "GIS Object = TEXT\n"),
              std::string::npos)
        << console_;
    EXPECT_EQ(progress(),
              std::vector<std::string>(2, "...GIS MULTIPOINT (     1 vertices) assigned a value of 5. to     1 cells"));
    EXPECT_EQ(picture(g.cr), tidy(". . . . . . 5\n. . . . . . .\n. . 5 . . . .\n. . . . . . .\n. . . . . . ."));

    // A record whose first value is not a number stops the run (here an object the caller prepared).
    GisObject point;
    point.isPoint = true;
    put(gisRecordLine, "\"abc\",1");
    float value = 0.0f;
    int32_t count = 0;
    EXPECT_GIS_STOP(gisAssignPreparedObjectToGrid(0, kLimJ, kLimI, kOff, kOff, kD, kD, kOx, kOy, 0.0f, false, false,
                                                  false, false, false, nullptr, nullptr, nullptr, g.cr.data(), nullptr,
                                                  nullptr, kDimJ, kDimI, false, count, point, false, true, {}, value),
                    "ERROR 2148 - Reading attribute data from data line below.\nData Line = \"abc\",1");
}
