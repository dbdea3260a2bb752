// What the writers write, the readers give back: every kind of object in
// both families, with its parts, its record and the values derived from it.
#include <cmath>

#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;
using reading::Points;

namespace {

struct Sample {
    const char* kind;
    Points points;
    std::vector<int> starts;  // first point of each part, from 1; empty for one part
    const char* mifKind;      // as read back from each family
    const char* shpKind;
    int set;  // SHP set: 1 points, 2 lines, 3 polygons, 0 every set
};

const std::vector<Sample>& samples() {
    static const std::vector<Sample> s = {
        {"point", {{300000.5, 6000000.25}}, {}, "point", "point", 1},
        {"multipoint", {{1, 2}, {3, 4}, {5, 6}}, {}, "multipoint", "multipoint", 1},
        {"line", {{10, 10}, {20, 25}}, {}, "line", "pline", 2},
        {"pline", {{0, 0}, {1, 1}, {2, 0}, {3, 1}}, {}, "pline", "pline", 2},
        {"plinemultiple", {{0, 0}, {1, 1}, {5, 5}, {6, 6}, {7, 5}}, {1, 3}, "plinemultiple", "plinemultiple", 2},
        {"region", {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}}, {}, "region", "region", 3},
        {"region",
         {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}, {2, 2}, {4, 2}, {4, 4}, {2, 4}, {2, 2}},
         {1, 6},
         "region",
         "region",
         3},
        {"text", {{7, 8}, {7, 8}, {9, 9}}, {}, "text", "point", 1},
        {"none", {}, {}, "none", "none", 0},
    };
    return s;
}

std::vector<Points> partsOf(const Sample& s) {
    std::vector<int> starts = s.starts.empty() ? std::vector<int>{1} : s.starts;
    std::vector<Points> parts;
    for (std::size_t p = 0; p < starts.size(); ++p) {
        const std::size_t end = p + 1 < starts.size() ? std::size_t(starts[p + 1] - 1) : s.points.size();
        parts.emplace_back(s.points.begin() + (starts[p] - 1), s.points.begin() + end);
    }
    return parts;
}

// The points of each gisReadObject call, and for a region the part ends.
std::vector<Points> expectedSubs(const Sample& s, const std::string& kind, std::vector<int32_t>& ends) {
    if (kind == "none" || kind == "text") return {{}};
    if (kind == "point") return {{s.points[0]}};
    if (kind == "multipoint") {
        std::vector<Points> subs;
        for (const auto& p : s.points) subs.push_back({p});
        return subs;
    }
    if (kind == "plinemultiple") return partsOf(s);
    if (kind != "region") return {s.points};
    Points slots;
    for (const Points& ring : partsOf(s)) {
        slots.insert(slots.end(), ring.begin(), ring.end());
        ends.push_back(int32_t(slots.size()));
        slots.push_back(ring[1]);
    }
    return {slots};
}

class RoundTrip : public GisTest {
protected:
    void writeLayer(const std::string& name, const char* letters) {
        setAttributes({{"Kind", "Char", 20}, {"Index", "Integer", 0}, {"Value", "Float", 0}});
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
            const std::string k = s.kind;
            gisO_.isPoint = k == "point";
            gisO_.isMultiPoint = k == "multipoint";
            gisO_.isLine = k == "line";
            gisO_.isPline = k == "pline";
            gisO_.isPlineMultiple = k == "plinemultiple";
            gisO_.isRegion = k == "region";
            gisO_.isText = k == "text";
            gisO_.isNone = k == "none";
            gisO_.nr = s.starts.empty() ? 1 : int32_t(s.starts.size());
            for (std::size_t p = 0; p < s.starts.size(); ++p) gisO_.ir[p + 1] = s.starts[p];
            put(gisRecordLine, "\"" + k + "\"," + std::to_string(index) + "," + std::to_string(index * 1.5));
            if (k == "text") put(gisRecordLine, "label " + std::to_string(index));
            gisWriteObject(id, gisO_);
            if (k == "text") put(gisRecordLine, "\"text\"," + std::to_string(index) + "," + std::to_string(index * 1.5));
            gisWriteRecord(id, gisO_);
        }
        gisCloseLayer(id);
    }

    // Reads the layer twice (the second time after a rewind) and checks
    // each object of the set against the samples.
    void check(const std::string& name, int set, bool shp) {
        int32_t id = gisOpenLayer(path(name), false, "I ", "");
        ASSERT_GT(id, 0);
        const auto first = reading::readLayer(id);
        const auto again = reading::readLayer(id);
        EXPECT_EQ(again.size(), first.size());
        std::size_t at = 0;
        int index = 0;
        for (const Sample& s : samples()) {
            ++index;
            if (shp && s.set != 0 && s.set != set) continue;
            SCOPED_TRACE(name + " object " + std::to_string(index) + " " + s.kind);
            ASSERT_LT(at, first.size());
            const reading::Object& o = first[at++];
            const std::string kind = shp ? s.shpKind : s.mifKind;
            std::vector<int32_t> ends;
            const std::vector<Points> subs = expectedSubs(s, kind, ends);
            EXPECT_EQ(o.kind, kind);
            ASSERT_EQ(o.subs.size(), subs.size());
            for (std::size_t k = 0; k < subs.size(); ++k) EXPECT_EQ(o.subs[k].points, subs[k]) << "call " << k;
            if (kind == "region") {
                EXPECT_EQ(o.ir, ends);
            }
            const std::string written = "\"" + std::string(s.kind) + "\"," + std::to_string(index) + "," +
                                        std::to_string(index * 1.5);
            if (shp) {
                EXPECT_EQ(reading::values(o.record), reading::values(written));
            } else {
                EXPECT_EQ(o.record, written);
            }
        }
        EXPECT_EQ(at, first.size());
        EXPECT_TRUE(gisAtEnd[id]);
        gisCloseLayer(id);
    }
};

}  // namespace

TEST_F(RoundTrip, MifLayerOfEveryKind) {
    writeLayer("all.mif", "");
    check("all.mif", 0, false);
}

TEST_F(RoundTrip, ShpSetsOfEveryKind) {
    writeLayer("all.shp", "PLR");
    for (int set = 1; set <= 3; ++set) check(std::string("all_") + "PLR"[set - 1] + ".shp", set, true);
}

TEST_F(RoundTrip, DerivedValuesAndAttributeTables) {
    writeLayer("all.mif", "");
    writeLayer("all.shp", "PLR");
    struct Case {
        const char* layer;
        std::size_t object;
        double cx, cy;
        float angle, length;
    };
    const float diagonal = std::sqrt(2.0f);
    const Case cases[] = {
        {"all.mif", 2, 15, 17.5, 56.309932f, std::sqrt(325.0f)},  // midpoint of a line
        {"all.mif", 3, 1.5, 0.5, -45.0f, 3 * diagonal},           // half-way along a polyline
        {"all_L.shp", 1, 1.5, 0.5, -45.0f, 3 * diagonal},
        {"all.mif", 5, 5, 5, 0, 0},  // mean of a ring, its closing point left out
        {"all_R.shp", 0, 5, 5, 0, 0},
        {"all.mif", 0, 300000.5, 6000000.25, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.layer) + " object " + std::to_string(c.object));
        int32_t id = gisOpenLayer(path(c.layer), false, "I ", "");
        const reading::Sub s = reading::readLayer(id).at(c.object).subs.at(0);
        EXPECT_NEAR(s.cx, c.cx, 1e-6);  // the fraction along a segment is single precision
        EXPECT_NEAR(s.cy, c.cy, 1e-6);
        EXPECT_FLOAT_EQ(s.angle, c.angle);
        EXPECT_FLOAT_EQ(s.length, c.length);
        gisCloseLayer(id);
    }

    // The header describes the layer in gisA_ and through the attribute calls.
    int32_t mif = gisOpenLayer(path("all.mif"), false, "I ", "");
    gisReadHeader(mif);
    EXPECT_EQ(gisNumberAttributes(mif), 3);
    EXPECT_EQ(gisNumberRecords(mif), 9);
    int32_t count = 0;
    ASSERT_TRUE(gisGotoBeginningOfAttributes(mif, count));
    EXPECT_EQ(count, 3);
    std::string mifDefinitions;
    for (int i = 0; i < count; ++i) {
        Text<256> name;
        Text<24> type;
        gisReadAttributeDefinition(mif, name, type);
        mifDefinitions += std::string(name.trimmed()) + " " + std::string(type.trimmed()) + ";";
    }
    EXPECT_EQ(mifDefinitions, "Kind Char(20);Index Integer;Value Float;");
    EXPECT_EQ(std::string(gisA_.type[1].trimmed()) + std::to_string(gisA_.width[1]), "Char20");
    gisCloseLayer(mif);

    int32_t shp = gisOpenLayer(path("all_L.shp"), false, "I ", "");
    gisReadHeader(shp);
    EXPECT_EQ(gisNumberAttributes(shp), 3);
    EXPECT_EQ(gisNumberRecords(shp), 4);
    EXPECT_FALSE(gisGotoBeginningOfAttributes(shp, count));
    std::string shpDefinitions, table;
    for (int i = 1; i <= 4; ++i) {
        Text<256> name;
        Text<24> type;
        gisReadAttributeDefinition(shp, name, type);
        shpDefinitions += std::string(name.trimmed()) + " " + std::string(type.trimmed()) + ";";
    }
    for (int i = 1; i <= gisA_.n; ++i)
        table += std::string(gisA_.name[i].trimmed()) + " " + std::string(gisA_.type[i].trimmed()) + " " +
                 std::to_string(gisA_.width[i]) + ";";
    EXPECT_EQ(shpDefinitions, "Kind Char(20);Index Decimal(8);Value Decimal(16); ;");
    EXPECT_EQ(table, "Kind Char 20;Index Decimal 8;Value Decimal 16;");
    gisCloseLayer(shp);
}
