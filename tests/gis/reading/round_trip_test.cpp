// What the writers write, the readers give back: every kind of object in
// both families, with its parts, its record and the values derived from it.
#include <cmath>

#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;
using reading::Points;
using reading::Want;

namespace {

const Points kSquare = {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}};
const Points kHole = {{2, 2}, {4, 2}, {4, 4}, {2, 4}, {2, 2}};

Points join(Points a, const Points& b) { return a.insert(a.end(), b.begin(), b.end()), a; }
std::string record(const char* kind, int i) { return "\"" + std::string(kind) + "\"," + std::to_string(i) + "," + std::to_string(i * 1.5); }

// The objects as written (kind, points, part starts) and as a MIF layer
// gives them back; region slots hold a copy of each ring's second point.
struct Sample {
    const char* kind;
    Points points;
    std::vector<int> starts;
    Want read;
};

std::vector<Sample> samples() {
    const float l = std::sqrt(2.0f) * 3;
    return {
        {"point", {{300000.5, 6000000.25}}, {}, {"point", {{{300000.5, 6000000.25}}}, record("point", 1)}},
        {"multipoint", {{1, 2}, {3, 4}, {5, 6}}, {}, {"multipoint", {{{1, 2}}, {{3, 4}}, {{5, 6}}}, record("multipoint", 2)}},
        {"line", {{10, 10}, {20, 25}}, {}, {"line", {{{10, 10}, {20, 25}}}, record("line", 3), {{15, 17.5, 56.309932, std::sqrt(325.0)}}}},
        {"pline", {{0, 0}, {1, 1}, {2, 0}, {3, 1}}, {}, {"pline", {{{0, 0}, {1, 1}, {2, 0}, {3, 1}}}, record("pline", 4), {{1.5, 0.5, -45, l}}}},
        {"plinemultiple", {{0, 0}, {1, 1}, {5, 5}, {6, 6}, {7, 5}}, {1, 3},
         {"plinemultiple", {{{0, 0}, {1, 1}}, {{5, 5}, {6, 6}, {7, 5}}}, record("plinemultiple", 5)}},
        {"region", kSquare, {}, {"region", {join(kSquare, {{0, 10}})}, record("region", 6), {{5, 5, 0, 0}}}},
        {"region", join(kSquare, kHole), {1, 6},
         {"region", {join(join(kSquare, {{0, 10}}), join(kHole, {{4, 2}}))}, record("region", 7), {{3.2, 4.2, 0, 0}}}},
        {"text", {{7, 8}, {7, 8}, {9, 9}}, {}, {"text", {{}}, record("text", 8)}},
        {"none", {}, {}, {"none", {{}}, record("none", 9)}},
    };
}

class RoundTrip : public GisTest {
protected:
    void writeLayer(const std::string& name, const char* letters) {
        setAttributes({{"Kind", "Char", 20}, {"Index", "Integer", 0}, {"Value", "Float", 0}});
        int32_t id = openWithHeader(name, letters);
        int index = 0;
        for (const Sample& s : samples()) {
            const std::string k = s.kind;
            gisN = 0;
            for (auto [x, y] : s.points) gisX[++gisN] = x, gisY[gisN] = y;
            gisClearObject(gisO_);
            gisO_.isPoint = k == "point", gisO_.isMultiPoint = k == "multipoint", gisO_.isLine = k == "line";
            gisO_.isPline = k == "pline", gisO_.isPlineMultiple = k == "plinemultiple", gisO_.isRegion = k == "region";
            gisO_.isText = k == "text", gisO_.isNone = k == "none";
            gisO_.nr = s.starts.empty() ? 1 : int32_t(s.starts.size());
            for (std::size_t p = 0; p < s.starts.size(); ++p) gisO_.ir[p + 1] = s.starts[p];
            put(gisRecordLine, k == "text" ? "label" : record(s.kind, ++index));
            gisWriteObject(id, gisO_);
            if (k == "text") put(gisRecordLine, record(s.kind, ++index));
            gisWriteRecord(id, gisO_);
        }
        gisCloseLayer(id);
    }
};

}  // namespace

TEST_F(RoundTrip, MifLayerOfEveryKind) {
    writeLayer("all.mif", "");
    std::vector<Want> want;
    for (const Sample& s : samples()) want.push_back(s.read);
    const auto got = reading::expectLayer(path("all.mif"), want);
    EXPECT_EQ(got.at(6).ir, (std::vector<int32_t>{5, 11}));  // last given point of each part
}

TEST_F(RoundTrip, ShpSetsOfEveryKind) {
    writeLayer("all.shp", "PLR");
    std::vector<Want> w;
    for (const Sample& s : samples()) w.push_back(s.read);
    // A line is a polyline of one part; a text, a point at its first entry.
    Want line = w[2], text = w[7];
    line.kind = "pline";
    text.kind = "point";
    text.subs = {{{7, 8}}};
    reading::expectLayer(path("all_P.shp"), {w[0], w[1], text, w[8]});
    reading::expectLayer(path("all_L.shp"), {line, w[3], w[4], w[8]});
    reading::expectLayer(path("all_R.shp"), {w[5], w[6], w[8]});
}

TEST_F(RoundTrip, HeaderOfEachFamily) {
    writeLayer("all.mif", "");
    writeLayer("all.shp", "PLR");
    struct Case {
        const char* layer;
        int32_t records;
        bool columns;             // the MIF family has attribute lines to go to
        const char* definitions;  // by gisReadAttributeDefinition
        const char* table;        // gisA_ after the header
    };
    const Case cases[] = {
        {"all.mif", 9, true, "Kind Char(20);Index Integer;Value Float;", "Kind Char 20;Index Integer 0;Value Float 0;"},
        {"all_L.shp", 4, false, "Kind Char(20);Index Decimal(8);Value Decimal(16);",
         "Kind Char 20;Index Decimal 8;Value Decimal 16;"},
    };
    for (const Case& c : cases) {
        int32_t id = gisOpenLayer(path(c.layer), false, "I ", "");
        gisReadHeader(id);
        EXPECT_EQ(gisNumberAttributes(id), 3);
        EXPECT_EQ(gisNumberRecords(id), c.records);
        int32_t n = 0;
        EXPECT_EQ(gisGotoBeginningOfAttributes(id, n), c.columns);
        std::string definitions, table;
        for (int i = 1; i <= 3; ++i) {
            Text<256> name;
            Text<24> type;
            gisReadAttributeDefinition(id, name, type);
            definitions += std::string(name.trimmed()) + " " + std::string(type.trimmed()) + ";";
            table += std::string(gisA_.name[i].trimmed()) + " " + std::string(gisA_.type[i].trimmed()) + " " +
                     std::to_string(gisA_.width[i]) + ";";
        }
        EXPECT_EQ(definitions, c.definitions);
        EXPECT_EQ(table, c.table);
        gisCloseLayer(id);
    }
}
