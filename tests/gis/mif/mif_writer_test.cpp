// MIF/MID writer: whole files worked out by hand for the header, for each kind
// of object and for the record lines.
#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class MifWriter : public GisTest {};

// A C16.6 pair as the hand would write it.
std::string xy(const std::string& x, const std::string& y) {
    return std::string(16 - x.size(), ' ') + x + std::string(16 - y.size(), ' ') + y;
}

}  // namespace

TEST_F(MifWriter, HeaderLinesFollowAttributesAndCoordSys) {
    put(gisCoordSysLine, "CoordSys Earth Projection 1, 104");
    setAttributes({{"Stream_ID", "Char", 100}, {"Level", "Float", 0}, {" Odd", "integer", -3}, {"D", "Decimal", 7}});
    int32_t id = openWithHeader("h");  // no extension: h.mif and h.mid
    gisCloseLayer(id);
    EXPECT_EQ(readFile(path("h.mif")),
              crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "CoordSys Earth Projection 1, 104",
                    "Columns 4", "  Stream_ID Char(100)", "  Level Float", "   Odd integer", "  D Decimal(7)", "Data",
                    ""}));
    EXPECT_EQ(readFile(path("h.mid")), "");
}

TEST_F(MifWriter, EveryObjectKind) {
    Points ten;
    for (int i = 1; i <= 10; ++i) ten.push_back({i, 10.0 * i});
    auto p = [](int from, int to) {
        std::string s;
        for (int i = from; i <= to; ++i) s += xy(std::to_string(i) + ".000000", std::to_string(10 * i) + ".000000") + "\r\n";
        return s;
    };
    struct Case {
        bool GisObject::*kind;
        std::vector<int32_t> starts;  // of the parts
        std::string lines;
        Points points;
    };
    const Case cases[] = {
        {&GisObject::isPoint, {}, "Point    300000.500000  6000000.250000\r\n", {{300000.5, 6000000.25}}},
        {&GisObject::isMultiPoint, {}, "MultiPoint 10\r\n" + p(1, 10), ten},
        {&GisObject::isLine, {}, "Line " + xy("1.000000", "10.000000") + xy("2.000000", "20.000000") + "\r\n", ten},
        // The first part starts at the first point, and a value too wide for its field shows as stars.
        {&GisObject::isPline, {-4}, "Pline 2\r\n" + std::string(16, '*') + "       -0.500000\r\n" +
                                        xy("-99999999.250000", "0.000000") + "\r\n",
         {{1.0e10, -0.5}, {-99999999.25, 0.0}}},
        {&GisObject::isPlineMultiple, {1, 6}, "Pline Multiple 2\r\n 5\r\n" + p(1, 5) + " 5\r\n" + p(6, 10), ten},
        {&GisObject::isRegion, {4}, "Region 1\r\n 10\r\n" + p(1, 10), ten},  // one part: all points
        {&GisObject::isRegion, {1, 6}, "Region 2\r\n 5\r\n" + p(1, 5) + " 5\r\n" + p(6, 10), ten},
        {&GisObject::isRegion, {1, 11}, "Region 2\r\n 10\r\n" + p(1, 10) + " 0\r\n", ten},
        {&GisObject::isText, {}, "Text\r\n\"Label, 1\"\r\n    " + xy("2.000", "20.000") + xy("3.000", "30.000") + "\r\n", ten},
        {&GisObject::isNone, {}, "none\r\n", ten},
    };
    const std::string header = crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "", "Columns 1",
                                     "  Name Char(10)", "Data", ""});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.lines);
        setAttributes({{"Name", "Char", 10}});
        int32_t id = openWithHeader("t.mif");
        writeObject(id, c.kind, c.points, "\"Label, 1\"", c.starts);
        gisCloseLayer(id);
        EXPECT_EQ(readFile(path("t.mif")), header + c.lines);
    }
}

TEST_F(MifWriter, RecordLinesGoToMidAndCsv) {
    setAttributes({{"Name", "Char", 10}});
    int32_t id = openWithHeader("t.mif");
    gisO_.isNone = true;
    for (const char* line : {"\"a\",1.5", "", "  lead and trail  "}) {
        put(gisRecordLine, line);
        gisWriteObject(id, gisO_);
        gisWriteRecord(id, gisO_);
    }
    put(gisRecordLineLarge, std::string(5000, 'x') + ",\"end\"");
    gisWriteRecordLarge(id, gisO_);
    gisCloseLayer(id);
    EXPECT_EQ(readFile(path("t.mid")), "\"a\",1.5\r\n\r\n  lead and trail\r\n" + std::string(5000, 'x') + ",\"end\"\r\n");
    // A .csv layer takes the record lines only.
    id = gisOpenLayer(path("a.csv"), true, "O ", "");
    put(gisRecordLine, "1,2,3");
    gisWriteRecord(id, gisO_);
    gisCloseLayer(id);
    EXPECT_EQ(readFile(path("a.csv")), "1,2,3\r\n");
}
