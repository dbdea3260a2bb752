// Independent readers accept what the writers produce: layers holding every
// kind of object are read back with GDAL's ogrinfo, shapelib's shpdump and
// dbfdump, and pyshp, and their counts, coordinates and values checked.
#include <regex>
#include <sstream>
#include <vector>

#include "gis_test_util.hpp"

using namespace gistest;

namespace {

// The objects written, in order: kind, points, part starts (from 1; empty
// for one part), and the geometry as a reader gives it in WKT.
struct Sample {
    const char* kind;
    std::vector<std::pair<double, double>> points;
    std::vector<int> starts;
    const char* wkt;
    int set;  // SHP set: 1 points, 2 lines, 3 polygons, 0 every set
};

const std::vector<Sample>& samples() {
    static const std::vector<Sample> s = {
        {"point", {{300000.5, 6000000.25}}, {}, "POINT (300000.5 6000000.25)", 1},
        {"multipoint", {{1, 2}, {3, 4}, {5, 6}}, {}, "MULTIPOINT ((1 2),(3 4),(5 6))", 1},
        {"line", {{10, 10}, {20, 25}}, {}, "LINESTRING (10 10,20 25)", 2},
        {"pline", {{0, 0}, {1, 1}, {2, 0}, {3, 1}}, {}, "LINESTRING (0 0,1 1,2 0,3 1)", 2},
        {"plinemultiple", {{0, 0}, {1, 1}, {5, 5}, {6, 6}, {7, 5}}, {1, 3}, "MULTILINESTRING ((0 0,1 1),(5 5,6 6,7 5))", 2},
        {"region1", {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}}, {}, "POLYGON ((0 0,0 10,10 10,10 0,0 0))", 3},
        {"region2",
         {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}, {2, 2}, {4, 2}, {4, 4}, {2, 4}, {2, 2}},
         {1, 6},
         "POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,4 2,4 4,2 4,2 2))",
         3},
        {"text", {{7, 8}, {7, 8}, {9, 9}}, {}, "POINT (7 8)", 1},
        {"none", {}, {}, "", 0},
    };
    return s;
}

std::string g17(double v) {
    char b[40];
    std::snprintf(b, sizeof b, "%.17g", v);
    return b;
}

// The samples of one SHP set (0 for the MIF layer, which holds all), each
// with its 1-based index in the order written.
std::vector<std::pair<int, const Sample*>> samplesOf(int set) {
    std::vector<std::pair<int, const Sample*>> out;
    int index = 0;
    for (const Sample& s : samples()) {
        ++index;
        if (set == 0 || s.set == 0 || s.set == set) out.push_back({index, &s});
    }
    return out;
}

// Feature blocks of `ogrinfo -al` as "kind|index|value|wkt" lines.
std::string ogrFeatures(const std::string& out) {
    std::string result;
    std::istringstream in(out);
    std::string line, kind, index, value, wkt;
    bool inFeature = false;
    auto flush = [&] {
        if (inFeature) result += kind + "|" + index + "|" + g17(std::stod(value)) + "|" + wkt + "\n";
        kind = index = value = wkt = "";
    };
    const std::regex field(R"(^  (\w+) \((String|Integer|Real)\) = (.*)$)");
    const std::regex geometry(R"(^  ([A-Z]+ \(.*\))$)");
    std::smatch m;
    while (std::getline(in, line)) {
        if (line.starts_with("OGRFeature(")) {
            flush();
            inFeature = true;
        } else if (inFeature && std::regex_match(line, m, field)) {
            (m[1] == "Kind" ? kind : m[1] == "Index" ? index : value) = m[3];
        } else if (inFeature && std::regex_match(line, m, geometry)) {
            wkt = m[1];
        }
    }
    flush();
    return result;
}

std::string expectedFeatures(int set) {
    std::string s;
    for (auto [index, sample] : samplesOf(set))
        s += std::string(sample->kind) + "|" + std::to_string(index) + "|" + g17(index * 1.5) + "|" + sample->wkt + "\n";
    return s;
}

void setKind(GisObject& o, const std::string& k) {
    o.isPoint = k == "point";
    o.isMultiPoint = k == "multipoint";
    o.isLine = k == "line";
    o.isPline = k == "pline";
    o.isPlineMultiple = k == "plinemultiple";
    o.isRegion = k.starts_with("region");
    o.isText = k == "text";
    o.isNone = k == "none";
}

class Readers : public GisTest {
protected:
    // Writes every sample with the record "kind",index,index*1.5.
    void writeLayer(const std::string& name, const char* letters) {
        setAttributes({{"Kind", "Char", 20}, {"Index", "Integer", 0}, {"Value", "Float", 0}});
        put(gisCoordSysLine, "CoordSys NonEarth Units \"m\" Bounds (-1000, -1000) (10000000, 10000000)");
        put(gisPrjLine, "LOCAL_CS[\"metres\"]");
        int32_t id = openWithHeader(name, letters);
        int index = 0;
        for (const Sample& s : samples()) {
            ++index;
            gisN = 0;
            for (auto [x, y] : s.points) {
                gisX[++gisN] = x;
                gisY[gisN] = y;
            }
            gisClearObject(gisO_);
            setKind(gisO_, s.kind);
            gisO_.nr = s.starts.empty() ? 1 : static_cast<int32_t>(s.starts.size());
            for (std::size_t p = 0; p < s.starts.size(); ++p) gisO_.ir[p + 1] = s.starts[p];
            put(gisRecordLine, "\"" + std::string(s.kind) + "\"," + std::to_string(index) + "," +
                                   std::to_string(index * 1.5));
            gisWriteObject(id, gisO_);
            gisWriteRecord(id, gisO_);
        }
        gisCloseLayer(id);
    }
    // Output of a tool, or a skip when it is missing.
    std::string tool(const std::string& exe, const std::string& args) {
        int status = 0;
        std::string out = run(exe + " " + args + " 2>&1", status);
        EXPECT_EQ(status, 0) << exe << " " << args << "\n" << out;
        return out;
    }
};

}  // namespace

TEST_F(Readers, OgrinfoReadsMif) {
    if (!haveTool("/usr/bin/ogrinfo")) GTEST_SKIP() << "ogrinfo (gdal-bin) is not installed";
    writeLayer("all.mif", "");
    const std::string out = tool("/usr/bin/ogrinfo", "-al " + path("all.mif"));
    EXPECT_NE(out.find("Feature Count: 9\n"), std::string::npos) << out;
    EXPECT_EQ(ogrFeatures(out), expectedFeatures(0)) << out;
}

TEST_F(Readers, OgrinfoReadsShp) {
    if (!haveTool("/usr/bin/ogrinfo")) GTEST_SKIP() << "ogrinfo (gdal-bin) is not installed";
    writeLayer("all.shp", "PLR");
    for (int set = 1; set <= 3; ++set) {
        const std::string name = std::string("all_") + "PLR"[set - 1] + ".shp";
        const std::string out = tool("/usr/bin/ogrinfo", "-al " + path(name));
        EXPECT_NE(out.find("Feature Count: " + std::to_string(samplesOf(set).size()) + "\n"), std::string::npos) << out;
        EXPECT_EQ(ogrFeatures(out), expectedFeatures(set)) << out;
    }
}

TEST_F(Readers, ShapelibReadsShpAndDbf) {
    if (!haveTool("/usr/bin/shpdump") || !haveTool("/usr/bin/dbfdump"))
        GTEST_SKIP() << "shpdump / dbfdump (shapelib) are not installed";
    writeLayer("all.shp", "PLR");
    const char* typeName[] = {"", "Point", "Arc", "Polygon"};
    const std::regex shapeRe(R"(^Shape:\d+ \((\w+)\)  nVertices=(\d+), nParts=(\d+))");
    const std::regex vertexRe(R"(^ +(\+?) *\(([-\d.e+]+),([-\d.e+]+), 0\))");
    for (int set = 1; set <= 3; ++set) {
        const std::string stem = path(std::string("all_") + "PLR"[set - 1]);
        // Shapes: type, counts, vertices with their part marks.
        std::string got, want;
        std::istringstream in(tool("/usr/bin/shpdump", stem + ".shp"));
        std::string line;
        std::smatch m;
        bool inShape = false;
        while (std::getline(in, line)) {
            if (std::regex_search(line, m, shapeRe)) {
                got += "\n" + m[1].str() + " " + m[2].str() + " " + m[3].str() + ":";
                inShape = true;
            } else if (inShape && !line.starts_with("  Bounds") && !line.starts_with("      to") &&
                       std::regex_search(line, m, vertexRe)) {
                got += " " + m[1].str() + g17(std::stod(m[2])) + "," + g17(std::stod(m[3]));
            }
        }
        for (auto [index, s] : samplesOf(set)) {
            const std::string k = s->kind;
            const bool none = k == "none", text = k == "text";
            const std::size_t n = text ? 1 : s->points.size();
            const std::string type = none ? "NullShape" : k == "multipoint" ? "MultiPoint" : typeName[set];
            const std::size_t parts = set == 1 || none ? 0 : s->starts.empty() ? 1 : s->starts.size();
            want += "\n" + type + " " + std::to_string(n) + " " + std::to_string(parts) + ":";
            for (std::size_t i = 0; i < n; ++i) {
                bool partStart = i > 0 && std::find(s->starts.begin(), s->starts.end(), int(i + 1)) != s->starts.end();
                want += std::string(" ") + (partStart ? "+" : "") + g17(s->points[i].first) + "," + g17(s->points[i].second);
            }
        }
        EXPECT_EQ(got, want) << stem;
        // Records: kind, index and value in the order written.
        std::istringstream rows(tool("/usr/bin/dbfdump", stem + ".dbf"));
        std::getline(rows, line);  // field names
        std::string gotRows, wantRows;
        std::string kind, index, value;
        while (rows >> kind >> index >> value) gotRows += kind + " " + index + " " + g17(std::stod(value)) + "\n";
        for (auto [i, s] : samplesOf(set)) wantRows += std::string(s->kind) + " " + std::to_string(i) + " " + g17(i * 1.5) + "\n";
        EXPECT_EQ(gotRows, wantRows) << stem;
    }
}

TEST_F(Readers, PyshpReadsShp) {
    int status = 0;
    run("/usr/bin/python3 -c 'import shapefile' 2>/dev/null", status);
    if (status != 0) GTEST_SKIP() << "pyshp for /usr/bin/python3 is not installed";
    writeLayer("all.shp", "PLR");
    const std::string script = path("read.py");
    writeFile(script,
              "import shapefile, sys\n"
              "r = shapefile.Reader(sys.argv[1])\n"
              "g = lambda v: '%.17g' % v\n"
              "print(r.shapeType, len(r), ' '.join(g(v) for v in r.bbox))\n"
              "for sr in r.iterShapeRecords():\n"
              "    s = sr.shape\n"
              "    parts = list(getattr(s, 'parts', []))\n"
              "    pts = ' '.join(g(p[0]) + ',' + g(p[1]) for p in s.points)\n"
              "    rec = sr.record\n"
              "    print(s.shapeType, parts, pts, '|', rec[0], rec[1], g(rec[2]))\n");
    const int fileType[] = {0, 1, 3, 5};
    const char* bbox[] = {"", "1 2 300000.5 6000000.25", "0 0 20 25", "0 0 10 10"};
    for (int set = 1; set <= 3; ++set) {
        const std::string shp = path(std::string("all_") + "PLR"[set - 1] + ".shp");
        const std::string got = run("/usr/bin/python3 " + script + " " + shp + " 2>&1", status);
        ASSERT_EQ(status, 0) << got;
        std::string want = std::to_string(fileType[set]) + " " + std::to_string(samplesOf(set).size()) + " " + bbox[set] + "\n";
        for (auto [index, s] : samplesOf(set)) {
            const std::string k = s->kind;
            const int type = k == "none" ? 0 : k == "multipoint" ? 8 : fileType[set];
            std::string parts = "[]";
            if (type == 3 || type == 5) {
                parts = "[0";
                for (std::size_t p = 1; p < s->starts.size(); ++p) parts += ", " + std::to_string(s->starts[p] - 1);
                parts += "]";
            }
            std::string pts;
            const std::size_t n = k == "text" ? 1 : s->points.size();
            for (std::size_t i = 0; i < n; ++i)
                pts += (i ? " " : "") + g17(s->points[i].first) + "," + g17(s->points[i].second);
            want += std::to_string(type) + " " + parts + " " + pts + " | " + k + " " + std::to_string(index) + " " +
                    g17(index * 1.5) + "\n";
        }
        EXPECT_EQ(got, want) << shp;
    }
}
