// DBF writer: header, descriptors and records worked out by hand, the
// splitting of record lines and the largest table.
#include "gis_test_util.hpp"
#include "runtime/platform.hpp"

using namespace gistest;

namespace {

// The .dbf of an SHP point layer with the attributes of gisA_ and these
// records, the last through the large-record path when `lastLarge`.
class DbfWriter : public GisTest {
protected:
    std::string dbf(std::initializer_list<const char*> records, bool lastLarge = false) {
        int32_t id = openWithHeader("d.shp", "P");
        gisO_.isPoint = true;
        for (const char* r : records) {
            if (lastLarge && r == *(records.end() - 1)) {
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
    std::string got = dbf({
        "\"ab\",1.5,7,T,12.34567,\"abcd\"",
        "\"x y\",,8",                 // a null value and fewer values: the values before repeat
        ",2*,\"q\"\"r\"/ 9,9,9",      // nulls, a doubled quote, a slash
        "3*z , 'it''s',  1 2,3,4,5",  // a repeat, blanks as separators, extra values; every value given
    }, true);

    const std::string expected =
        std::string("\x03") + "YMD" + le32(4) + le16(225) + le16(40) + zeros(20) + descriptor("Stream_ID", 'C', 6, 0) +
        descriptor("Level", 'N', 16, 5) + descriptor("Count", 'N', 8, 0) + descriptor("Flag", 'C', 1, 0) +
        descriptor("BedLevelm", 'N', 5, 0) + descriptor("Shape_Widt", 'C', 3, 0) + "\r" +
        " ab                 1.5       7T12.34abc" +
        " x y                1.5       8T12.34abc" +
        " x y                1.5       8q12.34abc" +
        " z                    z       zi    12  " + "\x1a";
    ASSERT_EQ(got.size(), expected.size());
    int year = 0, month = 0, day = 0;
    platformLocalDate(year, month, day);
    EXPECT_EQ(static_cast<unsigned char>(got[1]), year - 1900);
    EXPECT_EQ(static_cast<unsigned char>(got[2]), month);
    EXPECT_EQ(static_cast<unsigned char>(got[3]), day);
    got.replace(1, 3, "YMD");
    EXPECT_EQ(got, expected);
}

TEST_F(DbfWriter, OneHundredTwentyEightFieldsAndUnfilledSlots) {
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
    EXPECT_EQ(d[4128], '\r');
    EXPECT_EQ(d.substr(4129, 256), " a" + std::string(254, ' '));
    // Slots that no record has filled yet hold zero bytes.
    EXPECT_EQ(d.substr(4129 + 256 + 30, 97), zeros(97));
}
