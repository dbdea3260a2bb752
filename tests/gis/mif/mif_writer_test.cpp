// MIF/MID writer: whole-file bytes worked out by hand for the header and for
// each kind of object, the record lines, and the failures.
#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class MifWriter : public GisTest {
protected:
    // A layer "t" with one Char attribute; the .mif holds the header below.
    int32_t openLayer() {
        setAttributes({{"Name", "Char", 10}});
        return openWithHeader("t.mif");
    }
    static std::string header() {
        return crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "", "Columns 1", "  Name Char(10)",
                     "Data", ""});
    }
    std::string mif() const { return readFile(path("t.mif")); }
};

// A C16.6 pair as the hand would write it.
std::string xy(const char* x, const char* y) {
    std::string a(16 - std::strlen(x), ' '), b(16 - std::strlen(y), ' ');
    return a + x + b + y;
}

}  // namespace

TEST_F(MifWriter, HeaderLinesFollowAttributesAndCoordSys) {
    put(gisCoordSysLine, "CoordSys Earth Projection 1, 104");
    setAttributes({{"Stream_ID", "Char", 100}, {"Level", "Float", 0}, {" Odd", "integer", -3}, {"D", "Decimal", 7}});
    int32_t id = gisOpenLayer(path("h"), false, "O ", "");  // no extension: h.mif and h.mid
    gisWriteHeader(id);
    gisCloseLayer(id);
    EXPECT_EQ(id, 0);
    EXPECT_EQ(readFile(path("h.mif")),
              crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "CoordSys Earth Projection 1, 104",
                    "Columns 4", "  Stream_ID Char(100)", "  Level Float", "   Odd integer", "  D Decimal(7)", "Data",
                    ""}));
    EXPECT_EQ(readFile(path("h.mid")), "");
}

TEST_F(MifWriter, NoAttributesGoStraightToData) {
    setAttributes({});
    int32_t id = openWithHeader("e.mid");  // a .mid name opens the pair too
    gisCloseLayer(id);
    EXPECT_EQ(readFile(path("e.mif")),
              crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", "", "Columns 0", "Data", ""}));
    EXPECT_TRUE(std::filesystem::exists(path("e.mid")));
}

TEST_F(MifWriter, PointIs38BytesBeforeLineEnd) {
    int32_t id = openLayer();
    setPoints({{300000.5, 6000000.25}});
    gisO_.isPoint = true;
    gisWriteObject(id, gisO_);
    gisCloseLayer(id);
    const std::string line = "Point    300000.500000  6000000.250000";
    ASSERT_EQ(line.size(), 38u);
    EXPECT_EQ(mif(), header() + line + "\r\n");
}

TEST_F(MifWriter, EveryObjectKind) {
    struct Case {
        const char* what;
        void (*set)(GisObject&);
        std::string lines;
    };
    // Points 1..10 at (i, 10 i); parts start at 1 and 6 where parts are used.
    auto p = [](int i) { return xy((std::to_string(i) + ".000000").c_str(), (std::to_string(10 * i) + ".000000").c_str()) + "\r\n"; };
    auto run = [&](int from, int to) {
        std::string s;
        for (int i = from; i <= to; ++i) s += p(i);
        return s;
    };
    const Case cases[] = {
        {"multipoint", [](GisObject& o) { o.isMultiPoint = true; }, "MultiPoint 10\r\n" + run(1, 10)},
        {"line", [](GisObject& o) { o.isLine = true; }, "Line " + xy("1.000000", "10.000000") + xy("2.000000", "20.000000") + "\r\n"},
        {"pline", [](GisObject& o) { o.isPline = true; }, "Pline 10\r\n" + run(1, 10)},
        {"pline multiple",
         [](GisObject& o) {
             o.isPlineMultiple = true;
             o.nr = 2;
             o.ir[2] = 6;
         },
         "Pline Multiple 2\r\n 5\r\n" + run(1, 5) + " 5\r\n" + run(6, 10)},
        {"region of one part ignores the part table",
         [](GisObject& o) {
             o.isRegion = true;
             o.ir[1] = 4;
         },
         "Region 1\r\n 10\r\n" + run(1, 10)},
        {"region of two parts",
         [](GisObject& o) {
             o.isRegion = true;
             o.nr = 2;
             o.ir[2] = 6;
         },
         "Region 2\r\n 5\r\n" + run(1, 5) + " 5\r\n" + run(6, 10)},
        {"region whose last part is empty",
         [](GisObject& o) {
             o.isRegion = true;
             o.nr = 2;
             o.ir[2] = 11;
         },
         "Region 2\r\n 10\r\n" + run(1, 10) + " 0\r\n"},
        {"text", [](GisObject& o) { o.isText = true; }, "Text\r\n\"Label, 1\"\r\n" "    " + xy("2.000", "20.000") + xy("3.000", "30.000") + "\r\n"},
        {"none", [](GisObject& o) { o.isNone = true; }, "none\r\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        int32_t id = openLayer();
        gisN = 0;
        for (int i = 1; i <= 10; ++i) {
            gisX[++gisN] = i;
            gisY[gisN] = 10.0 * i;
        }
        put(gisRecordLine, "\"Label, 1\"");
        gisClearObject(gisO_);
        c.set(gisO_);
        gisWriteObject(id, gisO_);
        gisCloseLayer(id);
        EXPECT_EQ(mif(), header() + c.lines);
    }
}

TEST_F(MifWriter, WideValuesAndPartTableNormalised) {
    int32_t id = openLayer();
    setPoints({{1.0e10, -0.5}, {-99999999.25, 0.0}});
    gisO_.isPline = true;
    gisO_.nr = 0;
    gisO_.ir[1] = -4;
    gisWriteObject(id, gisO_);
    EXPECT_EQ(gisO_.nr, 1);
    EXPECT_EQ(gisO_.ir[1], 1);
    gisCloseLayer(id);
    EXPECT_EQ(mif(), header() + "Pline 2\r\n" + std::string(16, '*') + "       -0.500000\r\n" +
                         xy("-99999999.250000", "0.000000") + "\r\n");
}

TEST_F(MifWriter, RecordLinesGoToMidUnchanged) {
    int32_t id = openLayer();
    gisO_.isNone = true;
    gisO_.type = "none";
    for (const char* line : {"\"a\",1.5", "", "  lead and trail  "}) {
        put(gisRecordLine, line);
        gisWriteObject(id, gisO_);
        gisWriteRecord(id, gisO_);
    }
    put(gisRecordLineLarge, std::string(5000, 'x') + ",\"end\"");
    gisWriteRecordLarge(id, gisO_);
    gisCloseLayer(id);
    EXPECT_EQ(readFile(path("t.mid")), "\"a\",1.5\r\n\r\n  lead and trail\r\n" + std::string(5000, 'x') + ",\"end\"\r\n");
}

TEST_F(MifWriter, CsvLayerTakesRecordsOnly) {
    int32_t id = gisOpenLayer(path("a.csv"), true, "O ", "");
    EXPECT_EQ(gisFormat[id], 1);
    EXPECT_EQ(gisMif[id].mifUnit, 0);
    put(gisRecordLine, "1,2,3");
    gisWriteRecord(id, gisO_);
    gisCloseLayer(id);
    EXPECT_EQ(readFile(path("a.csv")), "1,2,3\r\n");
}

TEST_F(MifWriter, PartsNotRisingStopBeforeAnyByte) {
    int32_t id = openLayer();
    setPoints({{1, 1}, {2, 2}, {3, 3}});
    gisO_.isPlineMultiple = true;
    gisO_.nr = 3;
    gisO_.ir[2] = 2;
    gisO_.ir[3] = 2;
    EXPECT_GIS_STOP(gisWriteObject(id, gisO_),
                    "Should not be here [gisO_%ir(i) <= gisO_%ir(i-1)] - please contact the reachmap maintainers.\n"
                    "GIS Layer   =    1\ni           =    3\ngisO_%ir(i) =    2\ngisO_%nr    =    3");
    EXPECT_EQ(mif(), header());
}

TEST_F(MifWriter, Failures) {
    int32_t id = openLayer();
    gisO_.isEllipse = true;
    EXPECT_GIS_STOP(gisWriteObject(id, gisO_),
                    "ERROR 0350 - Trying to write a MIF object that is not yet supported.  Please contact the reachmap maintainers.");
    gisClearObject(gisO_);
    gisO_.isPoint = true;
    gisO_.type = "Point";
    int32_t mifUnit = gisMif[id].mifUnit, midUnit = gisMif[id].midUnit;
    EXPECT_GIS_STOP({ CLOSER(mifUnit); gisWriteObject(id, gisO_); }, "ERROR 0439 - Writing .mif file object coordinates.");
    EXPECT_GIS_STOP({ CLOSER(midUnit); gisWriteRecord(id, gisO_); },
                    "ERROR 0254 - Failed to write attribute data record for a Point object in GIS layer.");
    EXPECT_GIS_STOP({ CLOSER(midUnit); gisWriteRecordLarge(id, gisO_); },
                    "ERROR 0254 - Failed to write large attribute data record for a Point object in GIS layer.");
    gisN = kGisMaxPoints + 1;
    gisClearObject(gisO_);
    gisO_.isPline = true;
    EXPECT_GIS_STOP(gisWriteObject(id, gisO_),
                    "ERROR 0310 - Exceeded number of allowable nodes in a single polyline or region.\n"
                    "             Requested  100001        Limit  100000");
    gisN = 3;
    gisO_.nr = kGisMaxParts + 1;
    EXPECT_GIS_STOP(gisWriteObject(id, gisO_), "ERROR 0304 - Exceeded maximum number of polygons in region below of 10000");
    gisCloseLayer(id);
    EXPECT_EQ(mif(), header());
}
