// Laying layer objects on a grid, checked against grids worked out by hand.
//
// The grid: 6 cells along x (limI) by 5 along y (limJ), cells of 10 by 10,
// origin (1000, 2000), held in arrays of 8 by 7 with an offset of 1 on both
// axes, so that one margin column and row lie on each side. The layer, in
// local coordinates of the grid (map = origin + local):
//   1. point (15, 25), value 7: cell j 3, i 2;
//   2. polyline (2, 12) (58, 12) (58, 68), value 2.5: row 2 from i 1 to 6,
//      then column 6 from j 2 up; j 6 and 7 lie beyond limJ (though within
//      the arrays) and are not set;
//   3. region, the rectangle (12, 22) - (38, 38), value -2.5: cell centres
//      j 3..4, i 2..4; upper-x sides (x = 20, 30) j 3..4, i 2..3; upper-y
//      sides (y = 30) j 3, i 2..4; corners (20, 30), (30, 30);
//   4. point (-25, 15), value 9: left of the grid, sets nothing.
// Grids are shown as pictures of local rows j 5 (top) to 1 and local columns
// i 0 (the margin that x-sides reach) to 6, "." for 0; whatever else of the
// arrays is not 0 is listed behind the picture.
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

// A hand-written picture in the same form, blanks collapsed; null: all 0.
std::string tidy(const char* p) {
    const char* zero = ". . . . . . .\n. . . . . . .\n. . . . . . .\n. . . . . . .\n. . . . . . .";
    std::istringstream in(p != nullptr ? p : zero);
    std::string line, out;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string w, l;
        while (words >> w) l += (l.empty() ? "" : " ") + w;
        if (!l.empty()) out += l + "\n";
    }
    return out;
}

// The layer of the header comment.
struct Object {
    bool GisObject::*flag;
    Points local;
    const char* value;
};
const Object kLayer[] = {
    {&GisObject::isPoint, {{15, 25}}, "7"},
    {&GisObject::isPline, {{2, 12}, {58, 12}, {58, 68}}, "2.5"},
    {&GisObject::isRegion, {{12, 22}, {38, 22}, {38, 38}, {12, 38}, {12, 22}}, "-2.5"},
    {&GisObject::isPoint, {{-25, 15}}, "9"},
};

// Map coordinates of local points, for a grid whose x axis runs east or north.
Points toMap(const Points& local, bool turned = false) {
    Points map;
    for (auto [x, y] : local) map.push_back(turned ? std::pair{kOx - y, kOy + x} : std::pair{kOx + x, kOy + y});
    return map;
}

// The layer as a CSV row of WKT and value for ogr2ogr.
std::string csvRow(const Object& o) {
    std::string points;
    for (auto [x, y] : toMap(o.local)) points += (points.empty() ? "" : ",") + std::to_string(x) + " " + std::to_string(y);
    const char* shape = o.flag == &GisObject::isPoint ? "POINT (" : o.flag == &GisObject::isPline ? "LINESTRING (" : "POLYGON ((";
    return "\"" + std::string(shape) + points + (o.flag == &GisObject::isRegion ? "))" : ")") + "\"," + o.value + "\n";
}

class Assign : public GisTest {
protected:
    void writeLayer(const std::string& name, bool turned = false) {
        setAttributes({{"Value", "Float", 0}});
        int32_t id = openWithHeader(name, name.ends_with(".shp") ? "PLR" : "");
        for (const Object& o : kLayer) writeObject(id, o.flag, toMap(o.local, turned), o.value);
        gisCloseLayer(id);
    }

    // Through ogr2ogr: the layer as one MIF, and as one shapefile of each type.
    void ogrLayers() {
        const std::string options = " -oo GEOM_POSSIBLE_NAMES=WKT -oo KEEP_GEOM_COLUMNS=NO -oo AUTODETECT_TYPE=YES ";
        std::string all = "WKT,value\n";
        for (const Object& o : kLayer) all += csvRow(o);
        writeFile(path("ogr.csv"), all);
        for (const char* type : {"POINT", "LINESTRING", "POLYGON"}) {
            std::string csv = "WKT,value\n";
            for (const Object& o : kLayer)
                if (csvRow(o).starts_with("\"" + std::string(type) + " ")) csv += csvRow(o);
            writeFile(path(type) + ".csv", csv);
        }
        for (const std::string& command : {"-f \"MapInfo File\"" + options + path("ogr.mif") + " " + path("ogr.csv"),
                                           "-f \"ESRI Shapefile\"" + options + path("POINT.shp") + " " + path("POINT.csv"),
                                           "-f \"ESRI Shapefile\"" + options + path("LINESTRING.shp") + " " +
                                               path("LINESTRING.csv"),
                                           "-f \"ESRI Shapefile\"" + options + path("POLYGON.shp") + " " +
                                               path("POLYGON.csv")}) {
            int status = 0;
            const std::string out = run("/usr/bin/ogr2ogr " + command + " 2>&1", status);
            ASSERT_EQ(status, 0) << out;
        }
    }

    // Lays every object of the layer `file` on the grids, the console kept
    // unless `capture` is false.
    void layAll(const std::string& file, const Mode& m, float angle = 0.0f, bool capture = true) {
        auto lay = [&] {
            int32_t id = gisOpenLayer(path(file), false, "I ", "");
            gisReadHeader(id);
            gisGotoBeginningOfData(id);
            for (int guard = 0; !gisAtEnd[id] && guard < 100; ++guard) {
                gisAssignObjectToGrid(id, kLimJ, kLimI, kOff, kOff, kD, kD, kOx, kOy, angle, m.useInteger, m.countOnly,
                                      m.sidesOnly, m.allPoints, m.halveOnSides, g.ci.data(), g.xi.data(), g.yi.data(),
                                      g.cr.data(), g.xr.data(), g.yr.data(), kDimJ, kDimI, m.accumulate, lastCount);
            }
            EXPECT_TRUE(gisAtEnd[id]);
            gisCloseLayer(id);
        };
        if (capture)
            console_ += console(lay);
        else
            lay();
    }

    // The progress lines of the console so far.
    std::vector<std::string> progress() const {
        std::vector<std::string> r;
        std::istringstream in(console_);
        for (std::string line; std::getline(in, line);)
            if (line.starts_with("...GIS ")) r.push_back(line);
        return r;
    }

    // The count and word at the end of each progress line.
    std::vector<std::string> counts() const {
        std::vector<std::string> r;
        const std::regex tail(R"( to +(-?\d+ (cells|points))$)");
        std::smatch m;
        for (const std::string& l : progress()) r.push_back(std::regex_search(l, m, tail) ? m[1].str() : "?" + l);
        return r;
    }

    void expectGrids(const char* cells, const char* xSides, const char* ySides, bool integer) {
        const std::string c[3] = {picture(g.ci), picture(g.xi), picture(g.yi)};
        const std::string r[3] = {picture(g.cr), picture(g.xr), picture(g.yr)};
        const std::string* written = integer ? c : r;
        const std::string* untouched = integer ? r : c;
        EXPECT_EQ(written[0], tidy(cells)) << "cell grid";
        EXPECT_EQ(written[1], tidy(xSides)) << "x-side grid";
        EXPECT_EQ(written[2], tidy(ySides)) << "y-side grid";
        // The other family of grids stays all 0.
        for (int k = 0; k < 3; ++k) EXPECT_EQ(untouched[k], tidy(nullptr)) << "grid " << k;
    }

    Grids g;
    std::string console_;
    int32_t lastCount = -1;
};

// The layer in the cells mode.
const char* const kCells = R"(
        .   .    .    .    .   . 2.5
        .   . -2.5 -2.5 -2.5   . 2.5
        .   . -2.5 -2.5 -2.5   . 2.5
        . 2.5  2.5  2.5  2.5 2.5 2.5
        .   .    .    .    .   .   .)";

}  // namespace

TEST_F(Assign, EveryModeOnWrittenAndOgr2ogrLayers) {
    struct Case {
        const char* name;
        Mode mode;
        int passes;
        const char *cells, *xSides, *ySides;
        std::vector<std::string> counts;  // of one pass, objects in the order of the header comment
    } cases[] = {
        {"cells", {}, 1, kCells, nullptr, nullptr, {"1 cells", "10 cells", "6 cells", "0 cells"}},
        {"accumulate, two passes: only the region adds; the point cell is replaced, then added to",
         {.accumulate = true}, 2,
         R"(
        .   .   .   .   .   . 2.5
        .   .  -5  -5  -5   . 2.5
        .   . 4.5  -5  -5   . 2.5
        . 2.5 2.5 2.5 2.5 2.5 2.5
        .   .   .   .   .   .   .)",
         nullptr, nullptr, {"1 cells", "10 cells", "6 cells", "0 cells"}},
        {"sides only: each point and line cell writes its four sides",
         {.sidesOnly = true}, 1,
         nullptr,
         R"(
          .   .    .    .   . 2.5 2.5
          .   . -2.5 -2.5   . 2.5 2.5
          .   7 -2.5 -2.5   . 2.5 2.5
        2.5 2.5  2.5  2.5 2.5 2.5 2.5
          .   .    .    .   .   .   .)",
         R"(
        .   .    .    .    .   . 2.5
        .   .    .    .    .   . 2.5
        .   . -2.5 -2.5 -2.5   . 2.5
        . 2.5  2.5  2.5  2.5 2.5 2.5
        . 2.5  2.5  2.5  2.5 2.5 2.5)",
         {"4 points", "40 points", "7 points", "0 points"}},
        {"sides only, accumulated, points and lines halved on each side",
         {.sidesOnly = true, .halveOnSides = true, .accumulate = true}, 1,
         nullptr,
         R"(
           .   .    .    .   . 1.25 1.25
           .   . -2.5 -2.5   . 1.25 1.25
           . 3.5    1 -2.5   . 1.25 1.25
        1.25 2.5  2.5  2.5 2.5 3.75  2.5
           .   .    .    .   .    .    .)",
         R"(
        .    .    .    .    .    . 1.25
        .    .    .    .    .    .  2.5
        .    .    1 -2.5 -2.5    .  2.5
        . 1.25 4.75 1.25 1.25 1.25 3.75
        . 1.25 1.25 1.25 1.25 1.25  2.5)",
         {"4 points", "40 points", "7 points", "0 points"}},
        {"all points: regions fill the cells and both sides; points and lines the cells",
         {.allPoints = true}, 1,
         kCells,
         R"(
        . .    .    . . . .
        . . -2.5 -2.5 . . .
        . . -2.5 -2.5 . . .
        . .    .    . . . .
        . .    .    . . . .)",
         R"(
        . .    .    .    . . .
        . .    .    .    . . .
        . . -2.5 -2.5 -2.5 . .
        . .    .    .    . . .
        . .    .    .    . . .)",
         {"1 points", "10 points", "13 points", "0 points"}},
        {"count only: regions are counted at centre, sides and corner; points and lines still set cells",
         {.countOnly = true}, 1,
         R"(
        .   .   .   .   .   . 2.5
        .   .   .   .   .   . 2.5
        .   .   7   .   .   . 2.5
        . 2.5 2.5 2.5 2.5 2.5 2.5
        .   .   .   .   .   .   .)",
         nullptr, nullptr, {"1 points", "10 points", "15 points", "0 points"}},
        {"integer sides: 2.5 gives 3, -2.5 gives -3; points and lines still go to the cell integers",
         {.useInteger = true, .sidesOnly = true}, 1,
         R"(
        . . . . . . 3
        . . . . . . 3
        . . 7 . . . 3
        . 3 3 3 3 3 3
        . . . . . . .)",
         R"(
        . .  .  . . . .
        . . -3 -3 . . .
        . . -3 -3 . . .
        . .  .  . . . .
        . .  .  . . . .)",
         R"(
        . .  .  .  . . .
        . .  .  .  . . .
        . . -3 -3 -3 . .
        . .  .  .  . . .
        . .  .  .  . . .)",
         {"1 points", "10 points", "7 points", "0 points"}},
    };
    // Layers with the order in which they hold the objects.
    writeLayer("layer.mif");
    std::vector<std::pair<std::vector<std::string>, std::vector<int>>> layers = {{{"layer.mif"}, {0, 1, 2, 3}}};
    const bool ogr = haveTool("/usr/bin/ogr2ogr");
    if (ogr) {
        ogrLayers();
        layers.push_back({{"ogr.mif"}, {0, 1, 2, 3}});
        layers.push_back({{"POINT.shp", "LINESTRING.shp", "POLYGON.shp"}, {0, 3, 1, 2}});
    }
    for (const auto& [files, order] : layers) {
        for (const Case& c : cases) {
            SCOPED_TRACE(files[0] + ": " + c.name);
            g = Grids{};
            console_.clear();
            std::vector<std::string> expected;
            for (int p = 0; p < c.passes; ++p) {
                for (const std::string& file : files) layAll(file, c.mode);
                for (int k : order) expected.push_back(c.counts[std::size_t(k)]);
            }
            expectGrids(c.cells, c.xSides, c.ySides, c.mode.useInteger);
            EXPECT_EQ(counts(), expected);
        }
    }
    if (!ogr) GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed: only the layer of our own writer was laid";
}

TEST_F(Assign, ProgressLinesTurnedGridAndHoles) {
    // The MIF family names the objects by their keywords, the SHP family by
    // its shape type names.
    writeLayer("layer.mif");
    layAll("layer.mif", {});
    EXPECT_EQ(lastCount, 0);
    writeLayer("layer.shp");
    for (const char* set : {"layer_P.shp", "layer_L.shp", "layer_R.shp"}) layAll(set, {.useInteger = true});
    EXPECT_EQ(progress(), (std::vector<std::string>{
                              "...GIS POINT (     1 vertices) assigned a value of 7. to     1 cells",
                              "...GIS PLINE (     3 vertices) assigned a value of 2.5 to    10 cells",
                              "...GIS REGION (     6 vertices /  1 polygons) assigned -2.5 to     6 cells",
                              "...GIS POINT (     1 vertices) assigned a value of 9. to     0 cells",
                              "...GIS Point (     1 vertices) assigned a value of 7 to     1 cells",
                              "...GIS Point (     1 vertices) assigned a value of 9 to     0 cells",
                              "...GIS Polyline (     3 vertices) assigned a value of 3 to    10 cells",
                              "...GIS Polygon (     6 vertices /  1 polygons) assigned -3 to     6 cells",
                          }));
    EXPECT_EQ(picture(g.cr), tidy(kCells));

    // The same objects on a grid whose x axis runs north give the same cells.
    g = Grids{};
    writeLayer("turned.mif", true);
    layAll("turned.mif", {}, static_cast<float>(std::acos(0.0)));
    EXPECT_EQ(picture(g.cr), tidy(kCells));

    // A region of two rings, the second a hole: centres i 3..4, j 3..4 stay out.
    g = Grids{};
    console_.clear();
    int32_t id = openWithHeader("ring.mif");
    const Points outer = {{2, 2}, {58, 2}, {58, 48}, {2, 48}, {2, 2}}, hole = {{22, 22}, {38, 22}, {38, 38}, {22, 38}, {22, 22}};
    Points both = toMap(outer);
    for (auto p : toMap(hole)) both.push_back(p);
    writeObject(id, &GisObject::isRegion, both, "1", {1, 6});
    gisCloseLayer(id);
    layAll("ring.mif", {});
    EXPECT_EQ(picture(g.cr), tidy(R"(
        . 1 1 1 1 1 1
        . 1 1 . . 1 1
        . 1 1 . . 1 1
        . 1 1 1 1 1 1
        . 1 1 1 1 1 1)"));
    EXPECT_EQ(progress(), std::vector<std::string>{
                              "...GIS REGION (    12 vertices /  2 polygons) assigned 1. to    26 cells"});
}

TEST_F(Assign, SkippedObjectsMultipointsAndBadValues) {
    // A text object first: one warning, nothing set. A multipoint is laid one
    // point at a time.
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
    EXPECT_EQ(progress(), std::vector<std::string>(
                              2, "...GIS MULTIPOINT (     1 vertices) assigned a value of 5. to     1 cells"));
    EXPECT_EQ(picture(g.cr), tidy(R"(
        . . . . . . 5
        . . . . . . .
        . . 5 . . . .
        . . . . . . .
        . . . . . . .)"));

    // A first attribute that is not a number stops the run.
    setAttributes({{"Name", "Char", 10}, {"Value", "Float", 0}});
    id = openWithHeader("bad.mif");
    writeObject(id, &GisObject::isPoint, {{1015, 2025}}, "\"abc\",1");
    gisCloseLayer(id);
    EXPECT_GIS_STOP(layAll("bad.mif", {}, 0.0f, false), "ERROR 2148 - Reading attribute data from data line below.\nData Line = \"abc\",1");
}

TEST_F(Assign, PreparedObjects) {
    // A multipoint of three points sets the rectangle round them: j 1..4,
    // i 1..5, on each of the two sub-objects that np announces.
    const double X[] = {0, 1005, 1025, 1045}, Y[] = {0, 2005, 2015, 2035};
    GisPreparedObject prepared{X, Y, 3};
    GisObject object;
    object.isMultiPoint = true;
    object.np = 2;
    put(object.type, "MULTIPOINT");
    float value = 4.0f;
    int32_t count = -1;
    auto lay = [&](bool readValue) {
        console_ += console([&] {
            gisAssignPreparedObjectToGrid(0, kLimJ, kLimI, kOff, kOff, kD, kD, kOx, kOy, 0.0f, false, false, false,
                                          false, false, g.ci.data(), g.xi.data(), g.yi.data(), g.cr.data(), g.xr.data(),
                                          g.yr.data(), kDimJ, kDimI, false, count, object, false, readValue, prepared,
                                          value);
        });
    };
    lay(false);
    EXPECT_EQ(count, 20);
    EXPECT_EQ(picture(g.cr), tidy(R"(
        . . . . . . .
        . 4 4 4 4 4 .
        . 4 4 4 4 4 .
        . 4 4 4 4 4 .
        . 4 4 4 4 4 .)"));
    EXPECT_EQ(progress(), std::vector<std::string>(
                              2, "...GIS MULTIPOINT (     3 vertices) assigned a value of 4. to    20 cells"));
    // The value read from the start of the record line.
    put(gisRecordLine, "6.5,\"x\"");
    lay(true);
    EXPECT_EQ(value, 6.5f);
    EXPECT_EQ(g.cr[gridIndex(4 + kOff, 5 + kOff, kDimJ)], 6.5f);
}

TEST_F(Assign, SubGridArea) {
    struct Case {
        Points points;
        int32_t n;
        std::vector<int32_t> range;  // jLow, iLow, jHigh, iHigh
    } cases[] = {
        {{{15, 25}, {99, 99}}, 0, {3, 2, 3, 2}},  // below 2: the first point alone
        {{{5, 5}, {25, 15}, {45, 35}}, 3, {1, 1, 4, 5}},
        {{{-25, 15}}, 1, {2, 0, 2, -1}},   // left of the grid: empty
        {{{-15, -15}}, 1, {0, 0, 0, 0}},   // index 0: the margin cell
        {{{100, 100}}, 1, {11, 11, 5, 6}},  // beyond: empty
        {{{-5, 59}, {61, 61}}, 2, {6, 1, 5, 6}},  // held to limJ, limI
    };
    for (const Case& c : cases) {
        float X[4] = {}, Y[4] = {};
        for (std::size_t k = 0; k < c.points.size(); ++k) {
            X[k + 1] = static_cast<float>(c.points[k].first);
            Y[k + 1] = static_cast<float>(c.points[k].second);
        }
        std::vector<int32_t> range(4);
        float xmin, ymin, xmax, ymax;
        SET_SUB_GRID_AREA(X, Y, c.n, kD, kLimJ, kLimI, range[0], range[1], range[2], range[3], xmin, ymin, xmax, ymax);
        EXPECT_EQ(range, c.range) << c.points[0].first << " " << c.n;
        EXPECT_EQ(xmin, X[1]);
        EXPECT_EQ(ymax, c.n < 2 ? Y[1] : std::max(Y[1], Y[c.n]));
    }
}
