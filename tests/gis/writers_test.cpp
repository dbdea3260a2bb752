// The writers: whole MIF/MID, SHP/SHX and DBF files worked out by hand, the
// rewrite over an older file, and the exact message of each stop.
#include <cstdio>
#include <functional>

#include "gis_test_util.hpp"
#include "runtime/platform.hpp"

using namespace gistest;

namespace {

class Writers : public GisTest {
protected:
    std::string file(const char* name) const { return readFile(path(name)); }
    // A MIF layer "t" (no extension: t.mif and t.mid) with a CoordSys line and
    // attributes of each width rule.
    int32_t mifLayer() {
        put(gisCoordSysLine, "CoordSys Earth Projection 1, 104");
        setAttributes(
            {{"Stream_ID", "Char", 100}, {"Level", "Float", 0}, {" Odd", "integer", -3}, {"D", "Decimal", 7}});
        return openWithHeader("t");
    }
    // An SHP layer "s" of these sets with one Char attribute and a .prj line.
    int32_t shpLayer(const char* letters) {
        setAttributes({{"Name", "Char", 4}});
        put(gisPrjLine, "PROJCS[\"x\"]");
        return openWithHeader("s.shp", letters);
    }
    // The .dbf of an SHP point layer with the attributes of gisA_ and these
    // records, the last through the large-record path.
    std::string dbf(std::initializer_list<const char*> records) {
        int32_t id = openWithHeader("d.shp", "P");
        gisO_.isPoint = true;
        for (const char* r : records) {
            if (r == *(records.end() - 1)) {
                put(gisRecordLineLarge, r);
                gisWriteRecordLarge(id, gisO_);
            } else {
                put(gisRecordLine, r);
                gisWriteRecord(id, gisO_);
            }
        }
        gisCloseLayer(id);
        return readFile(path("d_P.dbf"));
    }
};

// A C16.6 pair as the hand would write it.
std::string xy(const std::string& x, const std::string& y) {
    return std::string(16 - x.size(), ' ') + x + std::string(16 - y.size(), ' ') + y;
}

// The 100-byte header of a .shp or .shx.
std::string header(int32_t words, int32_t type, double x0, double y0, double x1, double y1) {
    return be32(9994) + zeros(20) + be32(words) + le32(1000) + le32(type) + le64(x0) + le64(y0) + le64(x1) + le64(y1) +
           zeros(32);
}

const std::string kPointShp = header(64, 1, 1.5, 2.5, 1.5, 2.5) + be32(1) + be32(10) + le32(1) + le64(1.5) + le64(2.5);
const std::string kPointShx = header(54, 1, 1.5, 2.5, 1.5, 2.5) + be32(50) + be32(10);

std::string descriptor(const std::string& name, char letter, int width, int decimals) {
    return name + zeros(11 - name.size()) + letter + zeros(4) + static_cast<char>(width) + static_cast<char>(decimals) +
           zeros(14);
}

}  // namespace

TEST_F(Writers, MifHeaderAndEveryObjectKind) {
    Points ten;
    for (int i = 1; i <= 10; ++i) ten.push_back({i, 10.0 * i});
    auto p = [](int from, int to) {
        std::string s;
        for (int i = from; i <= to; ++i)
            s += xy(std::to_string(i) + ".000000", std::to_string(10 * i) + ".000000") + "\r\n";
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
        {&GisObject::isPline,
         {-4},
         "Pline 2\r\n" + std::string(16, '*') + "       -0.500000\r\n" + xy("-99999999.250000", "0.000000") + "\r\n",
         {{1.0e10, -0.5}, {-99999999.25, 0.0}}},
        {&GisObject::isPlineMultiple, {1, 6}, "Pline Multiple 2\r\n 5\r\n" + p(1, 5) + " 5\r\n" + p(6, 10), ten},
        {&GisObject::isRegion, {4}, "Region 1\r\n 10\r\n" + p(1, 10), ten},  // one part: all points
        {&GisObject::isRegion, {1, 6}, "Region 2\r\n 5\r\n" + p(1, 5) + " 5\r\n" + p(6, 10), ten},
        {&GisObject::isRegion, {1, 11}, "Region 2\r\n 10\r\n" + p(1, 10) + " 0\r\n", ten},
        {&GisObject::isText,
         {},
         "Text\r\n\"Label, 1\"\r\n    " + xy("2.000", "20.000") + xy("3.000", "30.000") + "\r\n",
         ten},
        {&GisObject::isNone, {}, "none\r\n", ten},
    };
    const std::string header =
        crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "CoordSys Earth Projection 1, 104",
              "Columns 4", "  Stream_ID Char(100)", "  Level Float", "   Odd integer", "  D Decimal(7)", "Data", ""});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.lines);
        int32_t id = mifLayer();
        writeObject(id, c.kind, c.points, "\"Label, 1\"", c.starts);
        gisCloseLayer(id);
        EXPECT_EQ(file("t.mif"), header + c.lines);
    }
}

// Points written after a polyline, as the converter writes a section's line
// and then its points: those at the line's coordinates, in order or not, and
// those elsewhere (one differs from a line point in its sign only) each give
// their own point line.
TEST_F(Writers, MifPointsAfterAPolylineAtAndOffItsCoordinates) {
    const Points line = {{1.25, 2.5}, {0.0, 3.0}, {4.0, 5.0}};
    const Points points = {{1.25, 2.5}, {-0.0, 3.0}, {4.0, 5.0}, {4.0, 5.0}, {1.25, 2.5}, {7.0, 8.0}};
    int32_t id = mifLayer();
    writeObject(id, &GisObject::isPline, line, "a");
    std::string want = "Pline 3\r\n" + xy("1.250000", "2.500000") + "\r\n" + xy("0.000000", "3.000000") + "\r\n" +
                       xy("4.000000", "5.000000") + "\r\n";
    for (const auto& pt : points) {
        writeObject(id, &GisObject::isPoint, {pt}, "p");
        char x[32];
        std::snprintf(x, sizeof x, "%.6f", pt.first);
        char y[32];
        std::snprintf(y, sizeof y, "%.6f", pt.second);
        want += "Point " + xy(x, y) + "\r\n";
    }
    gisCloseLayer(id);
    const std::string mif = file("t.mif");
    EXPECT_EQ(mif.substr(mif.find("Pline")), want);
}

TEST_F(Writers, MifRecordLinesGoToMid) {
    int32_t id = mifLayer();
    for (const char* line : {"\"a\",1.5", "", "  lead and trail  "}) {
        put(gisRecordLine, line);
        gisWriteRecord(id, gisO_);
    }
    put(gisRecordLineLarge, std::string(5000, 'x') + ",\"end\"");
    gisWriteRecordLarge(id, gisO_);
    gisCloseLayer(id);
    EXPECT_EQ(file("t.mid"), "\"a\",1.5\r\n\r\n  lead and trail\r\n" + std::string(5000, 'x') + ",\"end\"\r\n");
}

TEST_F(Writers, ShpOnePoint) {
    int32_t id = shpLayer("P");
    writeObject(id, &GisObject::isPoint, {{1.5, 2.5}}, "\"ab\"");
    gisWriteEoF(id);  // finishes the set before the layer is closed
    EXPECT_EQ(file("s_P.shp").size(), 128u);
    gisCloseLayer(id);
    EXPECT_EQ(file("s_P.shp"), kPointShp);
    EXPECT_EQ(file("s_P.shx"), kPointShx);
    EXPECT_EQ(file("s_P.prj"), "PROJCS[\"x\"]\r\n");
}

TEST_F(Writers, ShpEmptySetKeepsResetBox) {
    int32_t id = shpLayer("L");
    gisCloseLayer(id);
    EXPECT_EQ(file("s_L.shp"), header(50, 3, 0, 0, -1, -1));
    EXPECT_EQ(file("s_L.shx"), header(50, 3, 0, 0, -1, -1));
    EXPECT_EQ(file("s_L.dbf").substr(4, 4), le32(0));  // no records
}

TEST_F(Writers, ShpRegionOfTwoParts) {
    int32_t id = shpLayer("R");
    Points ten;
    for (int i = 1; i <= 10; ++i) ten.push_back({i, -i});
    writeObject(id, &GisObject::isRegion, ten, "b", {1, 6});  // rings not closed: written as given
    gisCloseLayer(id);
    std::string region = be32(1) + be32(106) + le32(5) + le64(1) + le64(-10) + le64(10) + le64(-1) + le32(2) +
                         le32(10) + le32(0) + le32(5);
    for (int i = 1; i <= 10; ++i) region += le64(i) + le64(-i);
    EXPECT_EQ(file("s_R.shp"), header(50 + 110, 5, 1, -10, 10, -1) + region);
    EXPECT_EQ(file("s_R.shx"), header(54, 5, 1, -10, 10, -1) + be32(50) + be32(106));
}

TEST_F(Writers, ShpRewriteOverLongerFileKeepsTail) {
    const std::string oldShp(300, '\xab'), oldShx(200, '\xcd');
    writeFile(path("s_P.shp"), oldShp);
    writeFile(path("s_P.shx"), oldShx);
    writeFile(path("s_P.dbf"), std::string(500, '\xef'));
    int32_t id = shpLayer("P");
    writeObject(id, &GisObject::isPoint, {{1.5, 2.5}}, "");
    gisCloseLayer(id);
    EXPECT_EQ(file("s_P.shp"), kPointShp + oldShp.substr(128));
    EXPECT_EQ(file("s_P.shx"), kPointShx + oldShx.substr(108));
    EXPECT_EQ(file("s_P.dbf").size(), 32u + 32 + 1 + 5 + 1);  // a .dbf is replaced
}

TEST_F(Writers, DbfHeaderRecordsAndEndMark) {
    setAttributes({{"Stream_ID", "Char", 6},
                   {"Level", "Float", 0},
                   {"Count", "Integer", 99},
                   {"Flag", "logical", 9},
                   {" Bed Level (m)", "decimal", 5},
                   {"Shape_Width_or_dMax", "  CHARACTER", 3}});
    gisA_.nrecords = 77;  // replaced by the count really written
    std::string got = dbf({
        "\"ab\",1.5,7,T,12.34567,\"abcd\"",
        "\"x y\",,8",                 // a null value and fewer values: the values before repeat
        ",2*,\"q\"\"r\"/ 9,9,9",      // nulls, a doubled quote, a slash
        "3*z , 'it''s',  1 2,3,4,5",  // a repeat, blanks as separators, extra values; every value given
    });

    const std::string expected =
        std::string("\x03") + "YMD" + le32(4) + le16(225) + le16(40) + zeros(20) + descriptor("Stream_ID", 'C', 6, 0) +
        descriptor("Level", 'N', 16, 5) + descriptor("Count", 'N', 8, 0) + descriptor("Flag", 'C', 1, 0) +
        descriptor("BedLevelm", 'N', 5, 0) + descriptor("Shape_Widt", 'C', 3, 0) + "\r" +
        " ab                 1.5       7T12.34abc" + " x y                1.5       8T12.34abc" +
        " x y                1.5       8q12.34abc" + " z                    z       zi    12  " + "\x1a";
    ASSERT_EQ(got.size(), expected.size());
    int year = 0, month = 0, day = 0;
    platformLocalDate(year, month, day);
    EXPECT_EQ(got.substr(1, 3), (std::string{char(year - 1900), char(month), char(day)}));
    got.replace(1, 3, "YMD");
    EXPECT_EQ(got, expected);
}

TEST_F(Writers, DbfOneHundredTwentyEightFieldsAndUnfilledSlots) {
    gisA_.n = kDbfMaxFields;
    for (int i = 1; i <= kDbfMaxFields; ++i) {
        put(gisA_.name[i], "F" + std::to_string(i));
        put(gisA_.type[i], "Char");
        gisA_.width[i] = i == 1 ? 255 : 1;
    }
    const std::string d = dbf({"a"});
    ASSERT_EQ(d.size(), 4129u + 1 + 255 + 127 + 1);
    EXPECT_EQ(d.substr(8, 4), le16(4129) + le16(255 + 127 + 1));
    EXPECT_EQ(d.substr(32 + 16, 1), "\xff");  // a width of 255 is the byte 255
    EXPECT_EQ(d.substr(4129, 256), " a" + std::string(254, ' '));
    // Slots that no record has filled yet hold zero bytes.
    EXPECT_EQ(d.substr(4129 + 256 + 30, 97), zeros(97));
}

TEST_F(Writers, DbfQuoteNeverClosedRunsToLineEnd) {
    // A quote left open, by a text ending in a quote or by a line cut inside
    // a quoted value, runs to the end of the line; the values behind keep
    // what they held (the large way has slots of its own, not yet filled).
    setAttributes({{"A", "Char", 3}, {"B", "Char", 4}});
    const std::string cut = "\"lo" + std::string(300, 'n');  // the last record goes the large way
    const std::string d = dbf({"ok,\"open", "\"x\",\"y\"\"", cut.c_str()});
    EXPECT_EQ(d.substr(32 + 2 * 32 + 1), std::string(" ok open") + " x  y\"  " + " lon" + zeros(4) + "\x1a");
}

TEST_F(Writers, ExactMessages) {
    // n fields F of this type and width, the first Float when n is 3.
    auto fields = [this](int n, const char* type, int width) {
        gisA_.n = n;
        for (int i = 1; i <= n; ++i) {
            put(gisA_.name[i], "F");
            put(gisA_.type[i], n == 3 && i == 1 ? "Float" : type);
            gisA_.width[i] = width;
        }
        return openWithHeader("d.shp", "P");
    };
    // The layer with one of its units closed behind the library's back.
    auto closed = [](int32_t id, int32_t& unit) {
        int32_t copy = unit;
        CLOSER(copy);
        return id;
    };
    // An object of n points in nr parts starting at points 1, 2, 2, 2, ...
    auto write = [](int32_t id, bool GisObject::*kind, int32_t n = 1, int32_t nr = 1) {
        gisO_.*kind = true;
        gisN = n;
        gisO_.nr = nr;
        for (int32_t p = 2; p <= nr && p <= kGisMaxParts; ++p) gisO_.ir[p] = 2;
        gisWriteObject(id, gisO_);
    };
    auto record = [](int32_t id, const char* line) {
        gisO_.isPoint = true;
        put(gisO_.type, "Point");
        put(gisRecordLine, line);
        gisWriteRecord(id, gisO_);
    };
    const std::string contact = " - please contact the reachmap maintainers.";
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[&] { write(mifLayer(), &GisObject::isEllipse); },
         "ERROR 0350 - Trying to write a MIF object that is not yet supported.  Please contact the reachmap "
         "maintainers."},
        {[&] { write(closed(mifLayer(), gisMif[1].mifUnit), &GisObject::isPoint); },
         "ERROR 0439 - Writing .mif file object coordinates."},
        {[&] { record(closed(mifLayer(), gisMif[1].midUnit), ""); },
         "ERROR 0254 - Failed to write attribute data record for a Point object in GIS layer."},
        {[&] { write(mifLayer(), &GisObject::isPline, kGisMaxPoints + 1); },
         "ERROR 0310 - Exceeded number of allowable nodes in a single polyline or region.\n"
         "             Requested  100001        Limit  100000"},
        {[&] { write(mifLayer(), &GisObject::isRegion, 3, kGisMaxParts + 1); },
         "ERROR 0304 - Exceeded maximum number of polygons in region below of 10000"},
        {[&] { write(mifLayer(), &GisObject::isPlineMultiple, 3, 3); },
         "Should not be here [gisO_%ir(i) <= gisO_%ir(i-1)]" + contact +
             "\nGIS Layer   =    1\ni           =    3\ngisO_%ir(i) =    2\ngisO_%nr    =    3"},
        {[&] { write(shpLayer("P"), &GisObject::isPline, 2); }, "ERROR 0439 - Writing .shp file object coordinates."},
        {[&] { write(shpLayer("P"), &GisObject::isMultiPoint, kGisMaxPoints + 5); },
         "ERROR 0310 - Exceeded number of allowable nodes in a single .shp polyline or region.\n"
         "             Requested  100005        Limit  100000"},
        {[&] {
             write(shpLayer("P"), &GisObject::isPoint);
             int32_t id = closed(1, gisShp[1][1].shpUnitLE);
             gisCloseLayer(id);
         },
         "ERROR 0413 - Rewriting .dbf file header with final information."},
        {[&] { fields(kDbfMaxFields + 1, "Char", 1); },
         "ERROR 0411 - Exceeded maximum number of dbf Fields trying to write dbf file."},
        {[&] { fields(0, "Char", 1); }, "ERROR 0319 - No attributes specified when writing .dbf file."},
        {[&] { fields(3, "Char", 256); },
         "ERROR 0412 - dbf field length of 256 is outside allowable range of 1 to 255 when writing dbf file."},
        {[&] { fields(3, "Decimal", 0); },
         "ERROR 0412 - dbf field length of 0 is outside allowable range of 1 to 255 when writing dbf file."},
        {[] { gisWriteObject(0, gisO_); }, "Should not be here gisWriteObject[gisID=0]" + contact},
        {[&] {
             for (int i = 0; i <= kGisMaxLayers; ++i) gisOpenLayer(path("m" + std::to_string(i)), false, "O ", "");
         },
         "ERROR 0251 - Cannot have more than 100 GIS layers open at once."},
    };
    for (const auto& [statement, message] : cases) {
        SCOPED_TRACE(message);
        EXPECT_GIS_STOP(statement(), message);
    }
}
