// DBF writer: header, descriptors and records worked out by hand, the
// splitting of record lines, the limits of the table, and failures.
#include "gis_test_util.hpp"
#include "runtime/platform.hpp"

using namespace gistest;

namespace {

class DbfWriter : public GisTest {
protected:
    // An SHP point layer with the attributes already in gisA_.
    int32_t openLayer() { return openWithHeader("d.shp", "P"); }
    void record(const char* line) {
        put(gisRecordLine, line);
        gisWriteRecord(layer_, gisO_);
    }
    std::string dbf() const { return readFile(path("d_P.dbf")); }
    int32_t layer_ = 0;
};

std::string descriptor(const std::string& name, char letter, int width, int decimals) {
    return name + zeros(11 - name.size()) + letter + zeros(4) + static_cast<char>(width) + static_cast<char>(decimals) +
           zeros(14);
}

}  // namespace

TEST_F(DbfWriter, HeaderRecordsAndEndMark) {
    setAttributes({{"Stream_ID", "Char", 6},
                   {"Level", "Float", 0},
                   {"Count", "Integer", 99},
                   {"Flag", "logical", 9},
                   {" Bed Level (m)", "decimal", 5},
                   {"Shape_Width_or_dMax", "  CHARACTER", 3}});
    gisA_.nrecords = 77;  // replaced by the count really written
    layer_ = openLayer();
    gisO_.isPoint = true;
    record("\"ab\",1.5,7,T,12.34567,\"abcd\"");
    record("\"x y\",,8");                      // fewer values: the rest repeat
    record(",2*,\"q\"\"r\"/ 9,9,9");           // nulls, a doubled quote, a slash
    record("3*z , 'it''s',  1 2,3,4,5");       // a repeat, blanks as separators, extra values
    gisCloseLayer(layer_);

    const std::string expected =
        std::string("\x03") + "YMD" + le32(4) + le16(225) + le16(40) + zeros(20) + descriptor("Stream_ID", 'C', 6, 0) +
        descriptor("Level", 'N', 16, 5) + descriptor("Count", 'N', 8, 0) + descriptor("Flag", 'C', 1, 0) +
        descriptor("BedLevelm", 'N', 5, 0) + descriptor("Shape_Widt", 'C', 3, 0) + "\r" +
        " ab                 1.5       7T12.34abc" +
        " x y                1.5       8T12.34abc" +
        " x y                1.5       8q12.34abc" +
        " z                    z       zi    12  " + "\x1a";
    std::string got = dbf();
    ASSERT_EQ(got.size(), expected.size());
    int year = 0, month = 0, day = 0;
    platformLocalDate(year, month, day);
    EXPECT_EQ(static_cast<unsigned char>(got[1]), year - 1900);
    EXPECT_EQ(static_cast<unsigned char>(got[2]), month);
    EXPECT_EQ(static_cast<unsigned char>(got[3]), day);
    got.replace(1, 3, "YMD");
    EXPECT_EQ(got, expected);
    EXPECT_EQ(gisDbf[1][1].recordLength, 39);
}

TEST_F(DbfWriter, LargeRecordsUseTheirOwnSlots) {
    setAttributes({{"A", "Char", 3}, {"B", "Char", 200}});
    layer_ = openLayer();
    gisO_.isPoint = true;
    put(gisRecordLineLarge, "abc,\"" + std::string(300, 'w') + "\"");
    gisWriteRecordLarge(layer_, gisO_);
    put(gisRecordLineLarge, ",x");
    gisWriteRecordLarge(layer_, gisO_);
    gisCloseLayer(layer_);
    const std::string d = dbf();
    EXPECT_EQ(d.substr(97), " abc" + std::string(200, 'w') + " abcx" + std::string(199, ' ') + "\x1a");
}

TEST_F(DbfWriter, OneHundredTwentyEightFieldsAndUnfilledSlots) {
    gisA_.n = kDbfMaxFields;
    for (int i = 1; i <= kDbfMaxFields; ++i) {
        put(gisA_.name[i], "F" + std::to_string(i));
        put(gisA_.type[i], "Char");
        gisA_.width[i] = i == 1 ? 255 : 1;
    }
    layer_ = openLayer();
    gisO_.isPoint = true;
    record("a");
    gisCloseLayer(layer_);
    const std::string d = dbf();
    ASSERT_EQ(d.size(), 4129u + 1 + 255 + 127 + 1);
    EXPECT_EQ(d.substr(8, 4), le16(4129) + le16(255 + 127 + 1));
    EXPECT_EQ(d.substr(32 + 16, 1), "\xff");  // a width of 255 is the byte 255
    EXPECT_EQ(d[4128], '\r');
    EXPECT_EQ(d.substr(4129, 256), " a" + std::string(254, ' '));
    // Slots that no record has filled yet hold zero bytes.
    EXPECT_EQ(d.substr(4129 + 256 + 30, 97), zeros(97));
}

TEST_F(DbfWriter, TableLimitsStop) {
    struct Case {
        int n;
        int width;
        const char* type;
        std::string message;
        std::size_t bytesLeft;  // what the .dbf holds after the stop
    };
    const Case cases[] = {
        {129, 1, "Char", "ERROR 0411 - Exceeded maximum number of dbf Fields trying to write dbf file.", 0},
        {0, 1, "Char", "ERROR 0319 - No attributes specified when writing .dbf file.", 0},
        {3, 256, "Char", "ERROR 0412 - dbf field length of 256 is outside allowable range of 1 to 255 when writing dbf file.", 64},
        {3, 0, "Decimal", "ERROR 0412 - dbf field length of 0 is outside allowable range of 1 to 255 when writing dbf file.", 64},
        {3, 1, "Date", "Should not be here [Unrecognised DBF field] - please contact the reachmap maintainers.", 0},
        {66, 1000, "Char", "Should not be here [dbfTotLen>32767] - please contact the reachmap maintainers.", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        gisA_.n = c.n;
        for (int i = 1; i <= c.n; ++i) {
            put(gisA_.name[i], "F");
            put(gisA_.type[i], i == 2 || c.n > 3 ? c.type : "Float");
            gisA_.width[i] = i == 2 || c.n > 3 ? c.width : 0;
        }
        EXPECT_GIS_STOP(openLayer(), c.message);
        // Descriptors before a bad one stay in the file.
        EXPECT_EQ(std::filesystem::file_size(path("d_P.dbf")), c.bytesLeft);
    }
}

TEST_F(DbfWriter, RecordLineThatCannotBeSplit) {
    setAttributes({{"A", "Char", 3}, {"B", "Char", 3}});
    layer_ = openLayer();
    gisO_.isPoint = true;
    EXPECT_GIS_STOP(record("ok,\"open"), "Should not be here [dbfdataline] - please contact the reachmap maintainers.\nok,\"open");
    put(gisRecordLineLarge, "'x");
    EXPECT_GIS_STOP(gisWriteRecordLarge(layer_, gisO_),
                    "Should not be here [dbfdatalinelarge] - please contact the reachmap maintainers.\n'x");
    int32_t unit = gisDbf[layer_][1].dbfUnit;
    EXPECT_GIS_STOP(
        {
            CLOSER(unit);
            gisCloseLayer(layer_);
        },
        "ERROR 0413 - Rewriting .dbf file header with final information.");
    EXPECT_GIS_STOP(
        {
            CLOSER(unit);
            gisWriteHeader(layer_);
        },
        "ERROR 0413 - Writing .dbf file header.");
    gisCloseLayer(layer_);
}

TEST_F(DbfWriter, ByteHelpers) {
    for (auto [in, out] : {std::pair{0, 0}, {127, 127}, {128, -128}, {255, -1}}) EXPECT_EQ(i1u(in), out) << in;
    for (auto [in, out] : {std::pair{0, 0}, {32767, 32767}, {32768, -32768}, {65535, -1}}) EXPECT_EQ(i2u(in), out) << in;
    EXPECT_GIS_STOP(i1u(256), "Should not be here [i1u: i4 outside range] - please contact the reachmap maintainers.");
    EXPECT_GIS_STOP(i2u(65536), "Should not be here [i2u: i4 outside range] - please contact the reachmap maintainers.");
}
