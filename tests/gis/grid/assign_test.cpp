// Laying layer objects on a grid, checked against grids worked out by hand.
//
// The grid of every test: 6 cells along x (limI) by 5 along y (limJ), cells
// of 10 by 10, origin (1000, 2000), held in arrays of 8 by 7 with an offset
// of 1 on both axes, so that one margin column and row lie on each side.
// The layer, in local coordinates of the grid (map = origin + local):
//   1. point (15, 25), value 7: cell j 3, i 2;
//   2. polyline (2, 12) (58, 12) (58, 68), value 2.5: row 2 from i 1 to 6,
//      then column 6 from j 2 up; j 6 and 7 lie beyond limJ (though within
//      the arrays) and are not set;
//   3. region, the rectangle (12, 22) - (38, 38), value -2.5: cell centres
//      j 3..4, i 2..4; upper-x sides (x = 20, 30) j 3..4, i 2..3; upper-y
//      sides (y = 30) j 3, i 2..4; corners (20, 30), (30, 30);
//   4. point (-25, 15), value 9: left of the grid, sets nothing.
// The grids are shown as pictures of local rows j 5 (top) to 1 and local
// columns i 0 (the margin that x-sides reach) to 6, "." for 0; whatever else
// of the arrays is not 0 is listed behind the picture.
#include <cmath>
#include <regex>
#include <sstream>
#include <vector>

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

struct Grids {
    std::vector<int32_t> ci = std::vector<int32_t>(kDimJ * kDimI), xi = ci, yi = ci;
    std::vector<float> cr = std::vector<float>(kDimJ * kDimI), xr = cr, yr = cr;
};

// (j, i) of local points to map coordinates for a grid turned by `angle`.
std::pair<double, double> toMap(double lx, double ly, bool turned) {
    if (turned) return {kOx - ly, kOy + lx};  // x axis along map north
    return {kOx + lx, kOy + ly};
}

class Assign : public GisTest {
protected:
    // Writes the layer of the header comment, in map coordinates.
    void writeLayer(const std::string& name, bool turned = false) {
        setAttributes({{"Value", "Float", 0}, {"Name", "Char", 10}});
        int32_t id = openWithHeader(name, name.ends_with(".shp") ? "PLR" : "");
        auto put = [&](std::initializer_list<std::pair<double, double>> local, const char* record, auto kind) {
            gisN = 0;
            for (auto [lx, ly] : local) {
                auto [x, y] = toMap(lx, ly, turned);
                gisX[++gisN] = x;
                gisY[gisN] = y;
            }
            gisClearObject(gisO_);
            kind(gisO_);
            gistest::put(gisRecordLine, record);
            gisWriteObject(id, gisO_);
            gisWriteRecord(id, gisO_);
        };
        put({{15, 25}}, "7,\"pt\"", [](GisObject& o) { o.isPoint = true; });
        put({{2, 12}, {58, 12}, {58, 68}}, "2.5,\"ln\"", [](GisObject& o) { o.isPline = true; });
        put({{12, 22}, {38, 22}, {38, 38}, {12, 38}, {12, 22}}, "-2.5,\"rg\"", [](GisObject& o) { o.isRegion = true; });
        put({{-25, 15}}, "9,\"out\"", [](GisObject& o) { o.isPoint = true; });
        gisCloseLayer(id);
    }

    // Lays every object of the layer `file` on the grids; the console is
    // kept unless `capture` is false.
    void layAll(const std::string& file, const Mode& m, float angle = 0.0f, bool capture = true) {
        conFlush();
        if (capture) ::testing::internal::CaptureStdout();
        int32_t id = gisOpenLayer(path(file), false, "I ", "");
        gisReadHeader(id);
        gisGotoBeginningOfData(id);
        for (int guard = 0; !gisAtEnd[id] && guard < 100; ++guard) {
            int32_t count = -1;
            gisAssignObjectToGrid(id, kLimJ, kLimI, kOff, kOff, kD, kD, kOx, kOy, angle, m.useInteger, m.countOnly,
                                  m.sidesOnly, m.allPoints, m.halveOnSides, g.ci.data(), g.xi.data(), g.yi.data(),
                                  g.cr.data(), g.xr.data(), g.yr.data(), kDimJ, kDimI, m.accumulate, count);
            lastCount = count;
        }
        EXPECT_TRUE(gisAtEnd[id]);
        gisCloseLayer(id);
        conFlush();
        if (capture) console += ::testing::internal::GetCapturedStdout();
    }

    // The progress lines of the console so far.
    std::vector<std::string> progress() const {
        std::vector<std::string> r;
        std::istringstream in(console);
        std::string line;
        while (std::getline(in, line))
            if (line.starts_with("...GIS ")) r.push_back(line);
        return r;
    }

    // The count and word at the end of each progress line.
    std::vector<std::string> counts() const {
        std::vector<std::string> r;
        const std::regex tail(R"( to +(-?\d+ (cells|points))$)");
        for (const std::string& l : progress()) {
            std::smatch m;
            r.push_back(std::regex_search(l, m, tail) ? m[1].str() : "?" + l);
        }
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
    std::string console;
    int32_t lastCount = -1;
};

// The layer in the cells mode.
const char* const kCells = R"(
        .   .    .    .    .   . 2.5
        .   . -2.5 -2.5 -2.5   . 2.5
        .   . -2.5 -2.5 -2.5   . 2.5
        . 2.5  2.5  2.5  2.5 2.5 2.5
        .   .    .    .    .   .   .)";

const std::vector<std::string> kCellCounts = {"1 cells", "10 cells", "6 cells", "0 cells"};

TEST_F(Assign, EveryModeOnAWrittenLayer) {
    struct Case {
        const char* name;
        Mode mode;
        int passes;
        const char *cells, *xSides, *ySides;
        std::vector<std::string> counts;  // of one pass
    } cases[] = {
        {"cells", {}, 1, kCells, nullptr, nullptr, kCellCounts},
        {"accumulate, two passes: only the region adds; the point cell is replaced, then added to",
         {.accumulate = true}, 2,
         R"(
        .   .   .   .   .   . 2.5
        .   .  -5  -5  -5   . 2.5
        .   . 4.5  -5  -5   . 2.5
        . 2.5 2.5 2.5 2.5 2.5 2.5
        .   .   .   .   .   .   .)",
         nullptr, nullptr, kCellCounts},
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
    writeLayer("layer.mif");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        g = Grids{};
        console.clear();
        for (int p = 0; p < c.passes; ++p) layAll("layer.mif", c.mode);
        expectGrids(c.cells, c.xSides, c.ySides, c.mode.useInteger);
        std::vector<std::string> expected;
        for (int p = 0; p < c.passes; ++p) expected.insert(expected.end(), c.counts.begin(), c.counts.end());
        EXPECT_EQ(counts(), expected);
    }
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
    console.clear();
    setAttributes({{"Value", "Float", 0}});
    int32_t id = openWithHeader("ring.mif");
    gisClearObject(gisO_);
    gisO_.isRegion = true;
    gisO_.nr = 2;
    gisO_.ir[1] = 1;
    gisO_.ir[2] = 6;
    setPoints({{1002, 2002}, {1058, 2002}, {1058, 2048}, {1002, 2048}, {1002, 2002},
               {1022, 2022}, {1038, 2022}, {1038, 2038}, {1022, 2038}, {1022, 2022}});
    put(gisRecordLine, "1");
    gisWriteObject(id, gisO_);
    gisWriteRecord(id, gisO_);
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

TEST_F(Assign, LayersMadeByOgr2ogr) {
    const std::string ogr = "/usr/bin/ogr2ogr";
    if (!haveTool(ogr)) GTEST_SKIP() << "ogr2ogr is not installed";
    // One CSV of WKT for each shapefile, and one for a MIF layer of all.
    const std::pair<const char*, std::vector<const char*>> layers[] = {
        {"POINT", {"\"POINT (1015 2025)\",7", "\"POINT (975 2015)\",9"}},
        {"LINESTRING", {"\"LINESTRING (1002 2012,1058 2012,1058 2068)\",2.5"}},
        {"POLYGON", {"\"POLYGON ((1012 2022,1038 2022,1038 2038,1012 2038,1012 2022))\",-2.5"}},
        {"MULTIPOINT", {"\"MULTIPOINT ((1005 2005),(1055 2045))\",4"}},
    };
    const std::string options = " -oo GEOM_POSSIBLE_NAMES=WKT -oo KEEP_GEOM_COLUMNS=NO -oo AUTODETECT_TYPE=YES ";
    std::string all = "WKT,value\n";
    for (const auto& [type, rows] : layers) {
        std::string csv = "WKT,value\n";
        for (const char* r : rows) csv += std::string(r) + "\n";
        all += csv.substr(10);
        const std::string stem = path(type);
        writeFile(stem + ".csv", csv);
        int status = 0;
        const std::string out =
            run(ogr + " -f \"ESRI Shapefile\" -nlt " + type + options + stem + ".shp " + stem + ".csv 2>&1", status);
        ASSERT_EQ(status, 0) << out;
    }
    writeFile(path("all.csv"), all);
    int status = 0;
    const std::string out =
        run(ogr + " -f \"MapInfo File\"" + options + path("all.mif") + " " + path("all.csv") + " 2>&1", status);
    ASSERT_EQ(status, 0) << out;

    // The multipoint sets the cells of its two points, (1, 1) and (5, 6),
    // the second over the polyline's.
    const char* expected = R"(
        .   .    .    .    .   .   4
        .   . -2.5 -2.5 -2.5   . 2.5
        .   . -2.5 -2.5 -2.5   . 2.5
        . 2.5  2.5  2.5  2.5 2.5 2.5
        .   4    .    .    .   .   .)";
    for (const auto& [type, rows] : layers) layAll(std::string(type) + ".shp", {});
    EXPECT_EQ(picture(g.cr), tidy(expected));
    EXPECT_EQ(counts(), (std::vector<std::string>{"1 cells", "0 cells", "10 cells", "6 cells", "1 cells", "1 cells"}));
    EXPECT_EQ(progress()[4], "...GIS MultiPoint (     1 vertices) assigned a value of 4. to     1 cells");

    g = Grids{};
    console.clear();
    layAll("all.mif", {});
    EXPECT_EQ(picture(g.cr), tidy(expected));
}

TEST_F(Assign, PreparedObjects) {
    // A multipoint of three points sets the rectangle round them: j 1..4,
    // i 1..5, on each of the two sub-objects that %np announces.
    const double X[] = {0, 1005, 1025, 1045}, Y[] = {0, 2005, 2015, 2035};
    GisPreparedObject prepared;
    prepared.X = X;
    prepared.Y = Y;
    prepared.N = 3;
    GisObject object;
    object.isMultiPoint = true;
    object.np = 2;
    put(object.type, "MULTIPOINT");
    float value = 4.0f;
    int32_t count = -1;
    auto lay = [&](bool readValue) {
        conFlush();
        ::testing::internal::CaptureStdout();
        gisAssignPreparedObjectToGrid(0, kLimJ, kLimI, kOff, kOff, kD, kD, kOx, kOy, 0.0f, false, false, false, false,
                                      false, g.ci.data(), g.xi.data(), g.yi.data(), g.cr.data(), g.xr.data(),
                                      g.yr.data(), kDimJ, kDimI, false, count, object, false, readValue, prepared,
                                      value);
        conFlush();
        console += ::testing::internal::GetCapturedStdout();
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

    // The value read from the record line; a polyline whose first segment
    // has no length and whose second crosses no centre line sets only the
    // cells of its third, which starts where the second ended.
    const double PX[] = {0, 1002, 1002, 1003, 1058}, PY[] = {0, 2012, 2012, 2012, 2012};
    prepared.X = PX;
    prepared.Y = PY;
    prepared.N = 4;
    gisClearObject(object);
    object.isPline = true;
    put(gisRecordLine, "6.5,\"x\"");
    g = Grids{};
    lay(true);
    EXPECT_EQ(value, 6.5f);
    EXPECT_EQ(count, 6);
    EXPECT_EQ(picture(g.cr), tidy(R"(
        .   .   .   .   .   .   .
        .   .   .   .   .   .   .
        .   .   .   .   .   .   .
        . 6.5 6.5 6.5 6.5 6.5 6.5
        .   .   .   .   .   .   .)"));
}

TEST_F(Assign, SubGridArea) {
    struct Case {
        std::vector<std::pair<float, float>> points;
        int32_t n;
        int32_t jLow, iLow, jHigh, iHigh;
    } cases[] = {
        {{{15, 25}}, 1, 3, 2, 3, 2},
        {{{15, 25}, {99, 99}}, 0, 3, 2, 3, 2},  // below 2: the first point alone
        {{{5, 5}, {25, 15}, {45, 35}}, 3, 1, 1, 4, 5},
        {{{-25, 15}}, 1, 2, 0, 2, -1},           // left of the grid: empty
        {{{-15, -15}}, 1, 0, 0, 0, 0},           // index 0: the margin cell
        {{{100, 100}}, 1, 11, 11, 5, 6},         // beyond: empty
        {{{-5, 59}, {61, 61}}, 2, 6, 1, 5, 6},  // held to limJ, limI
    };
    for (const Case& c : cases) {
        float X[4] = {}, Y[4] = {};
        for (std::size_t k = 0; k < c.points.size(); ++k) {
            X[k + 1] = c.points[k].first;
            Y[k + 1] = c.points[k].second;
        }
        int32_t jLow, iLow, jHigh, iHigh;
        float xmin, ymin, xmax, ymax;
        SET_SUB_GRID_AREA(X, Y, c.n, kD, kLimJ, kLimI, jLow, iLow, jHigh, iHigh, xmin, ymin, xmax, ymax);
        EXPECT_EQ((std::vector<int32_t>{jLow, iLow, jHigh, iHigh}),
                  (std::vector<int32_t>{c.jLow, c.iLow, c.jHigh, c.iHigh}))
            << c.points[0].first << " " << c.n;
        EXPECT_EQ(xmin, X[1]);
        EXPECT_EQ(ymax, c.n < 2 ? Y[1] : std::max(Y[1], Y[c.n]));
    }
}

TEST_F(Assign, SkippedObjectsAndBadValues) {
    // A text object first: one warning, nothing set; the next call takes the point.
    setAttributes({{"Value", "Float", 0}});
    int32_t id = openWithHeader("text.mif");
    gisClearObject(gisO_);
    gisO_.isText = true;
    setPoints({{1015, 2025}, {1015, 2025}, {1020, 2030}});
    put(gisRecordLine, "\"label\"");
    gisWriteObject(id, gisO_);
    put(gisRecordLine, "3");
    gisWriteRecord(id, gisO_);
    gisClearObject(gisO_);
    gisO_.isPoint = true;
    setPoints({{1015, 2025}});
    put(gisRecordLine, "5");
    gisWriteObject(id, gisO_);
    gisWriteRecord(id, gisO_);
    gisCloseLayer(id);
    layAll("text.mif", {});
    EXPECT_NE(console.find("WARNING 2073 - Object ignored.  Only Points, Lines, Polylines & Regions used.\n"
                           "GIS Object = TEXT\n"),
              std::string::npos)
        << console;
    EXPECT_EQ(counts(), std::vector<std::string>{"1 cells"});
    EXPECT_EQ(g.cr[gridIndex(3 + kOff, 2 + kOff, kDimJ)], 5.0f);

    // A first attribute that is not a number stops the run.
    setAttributes({{"Name", "Char", 10}, {"Value", "Float", 0}});
    id = openWithHeader("bad.mif");
    gisClearObject(gisO_);
    gisO_.isPoint = true;
    put(gisRecordLine, "\"abc\",1");
    gisWriteObject(id, gisO_);
    gisWriteRecord(id, gisO_);
    gisCloseLayer(id);
    EXPECT_GIS_STOP(layAll("bad.mif", {}, 0.0f, false),
                    "ERROR 2148 - Reading attribute data from data line below.\nData Line = \"abc\",1");
}

}  // namespace
