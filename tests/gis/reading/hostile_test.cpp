// Files cut short or corrupted at every stage end the run in order with the
// message of that stage; the tolerant cases read on.
#include <functional>

#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;

namespace {

void setLE32(std::string& b, std::size_t at, int32_t v) { b.replace(at, 4, le32(v)); }
void setBE32(std::string& b, std::size_t at, int32_t v) { b.replace(at, 4, be32(v)); }

struct Corruption {
    const char* what;
    const char* file;  // of the written layer
    std::function<void(std::string&)> change;
    const char* message;
};

// The base layer: a polyline of three points, a two-part polyline, a point
// and a square, in both families. Records: Kind Char(10), Value Float.
class Hostile : public GisTest {
protected:
    void writeBase() {
        for (const char* name : {"base.shp", "base.mif"}) {
            setAttributes({{"Kind", "Char", 10}, {"Value", "Float", 0}});
            int32_t id = openWithHeader(name, "PLR");
            auto object = [&](auto set, std::initializer_list<std::pair<double, double>> pts) {
                gisClearObject(gisO_);
                set(gisO_);
                setPoints(pts);
                put(gisRecordLine, "\"thing\",1.5");
                gisWriteObject(id, gisO_);
                gisWriteRecord(id, gisO_);
            };
            object([](GisObject& o) { o.isPline = true; }, {{0, 0}, {1, 1}, {2, 0}});
            object(
                [](GisObject& o) {
                    o.isPlineMultiple = true;
                    o.nr = 2;
                    o.ir[2] = 3;
                },
                {{0, 0}, {1, 1}, {5, 5}});
            object([](GisObject& o) { o.isPoint = true; }, {{7, 8}});
            object([](GisObject& o) { o.isRegion = true; }, {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}});
            gisCloseLayer(id);
        }
    }
    // Each corruption of a freshly written layer stops the reading of it.
    void expectStops(const std::vector<Corruption>& cases, const char* layer) {
        for (const Corruption& c : cases) {
            SCOPED_TRACE(c.what);
            writeBase();
            std::string bytes = readFile(path(c.file));
            c.change(bytes);
            writeFile(path(c.file), bytes);
            const std::string name = path(layer);
            EXPECT_GIS_STOP(reading::readLayer(gisOpenLayer(name, false, "I ", "")), c.message);
        }
    }
};

const char* const kMifHead = "Version 300\r\nCharset \"WindowsLatin1\"\r\nDelimiter \",\"\r\nColumns 1\r\n  ID Integer\r\n"
                             "Data\r\n\r\n";

}  // namespace

TEST_F(Hostile, ShapefileStops) {
    // Offsets in the line set: record header at 100, type 108, box 112,
    // part count 144, point count 148, first part start 152, points 156.
    const auto cut = [](std::size_t n) { return [n](std::string& b) { b.resize(n); }; };
    expectStops(
        {
            {"header cut", "base_L.shp", cut(50), "ERROR 0428 - End of .shp file encountered whilst reading header."},
            {"record header cut", "base_L.shp", cut(106),
             "ERROR 0425 - End of .shp file encountered whilst reading object type."},
            {"counts cut", "base_L.shp", cut(130),
             "ERROR 0425 - End of .shp file encountered whilst reading object type."},
            {"coordinates cut", "base_L.shp", cut(170),
             "ERROR 0430 - End of .shp file encountered whilst reading object coordinates."},
            {"length shorter than the counts", "base_L.shp", [](std::string& b) { setBE32(b, 104, 20); },
             "ERROR 0424 - Reading .shp file object type."},
            {"length of nothing", "base_L.shp", [](std::string& b) { setBE32(b, 104, 0); },
             "ERROR 0424 - Reading .shp file object type."},
            {"parts beyond the table", "base_L.shp", [](std::string& b) { setLE32(b, 144, 10000); },
             "ERROR 0421 - Exceeded maximum number of parts in a .shp polyline.  Limit is 10000"},
            {"negative parts", "base_L.shp", [](std::string& b) { setLE32(b, 144, -2); },
             "ERROR 0424 - Reading .shp file object type."},
            {"points beyond the buffer", "base_L.shp",
             [](std::string& b) {
                 setLE32(b, 148, 200000);
                 setBE32(b, 104, 24 + 8 * 200000);
             },
             "ERROR 0310 - Exceeded number of allowable nodes in a single .shp polyline or region."},
            {"part start that lies", "base_L.shp", [](std::string& b) { setLE32(b, 152, 7); },
             "ERROR 0424 - Reading .shp file object type."},
            {"type with z", "base_L.shp", [](std::string& b) { setLE32(b, 108, 13); },
             "ERROR 0423 - Unsupported .shp object type PolyLineZ [13]"},
            {"type beyond the table", "base_L.shp", [](std::string& b) { setLE32(b, 108, 99); },
             "ERROR 0423 - Unsupported .shp object type Unknown [99]"},
            {"negative type", "base_L.shp", [](std::string& b) { setLE32(b, 108, -7); },
             "ERROR 0423 - Unsupported .shp object type Unknown [-7]"},
        },
        "base_L.shp");
    expectStops({{"rings beyond the table", "base_R.shp", [](std::string& b) { setLE32(b, 144, 10000); },
                  "ERROR 0422 - Exceeded maximum number of regions within a .shp region.  Limit is 10000"},
                 {"ring of one point", "base_R.shp",
                  [](std::string& b) {
                      setLE32(b, 144, 2);
                      setBE32(b, 104, 106);
                      b.insert(156, le32(4));
                  },
                  "ERROR 0424 - Reading .shp file object type."}},
                "base_R.shp");
}

TEST_F(Hostile, DbfStops) {
    // Header 32 bytes, two descriptors, the byte 13: records from 97, 27 bytes each.
    const auto cut = [](std::size_t n) { return [n](std::string& b) { b.resize(n); }; };
    const auto fields = [](int n) {
        return [n](std::string& b) {
            b = b.substr(0, 32);
            for (int i = 0; i < n; ++i) b += "F" + zeros(10) + "C" + zeros(4) + "\x01" + zeros(15);
            if (n <= 128) b += "\x0D";
        };
    };
    expectStops(
        {
            {"header cut", "base_L.dbf", cut(20), "ERROR 0404 - End of .dbf file encountered whilst reading header."},
            {"field table cut", "base_L.dbf", cut(60),
             "ERROR 0404 - End of .dbf file encountered whilst reading header."},
            {"no field", "base_L.dbf", fields(0), "ERROR 0319 - No attributes specified in .dbf file."},
            {"fields beyond the table", "base_L.dbf", fields(129),
             "ERROR 0401 - Exceeded maximum number of dbf Fields."},
            {"field of no width", "base_L.dbf", [](std::string& b) { b[32 + 16] = 0; },
             "ERROR 0402 - dbf field length of 0 is outside allowable range of 1 to 255."},
            {"record identifier", "base_L.dbf", [](std::string& b) { b[97] = 'X'; },
             "ERROR 0406 - Unrecognised record identifier found in .dbf file."},
            {"record cut", "base_L.dbf", cut(97 + 10),
             "ERROR 0408 - End of .dbf file encountered whilst reading record."},
        },
        "base_L.shp");
}

TEST_F(Hostile, MifStops) {
    struct Case {
        std::string mif;
        const char* message;
    };
    const std::string h = kMifHead;
    const Case cases[] = {
        {"Version 300\r\nData\r\n", "ERROR 0315 - Could not find start of attribute definitions in .mif file"},
        {"Columns 0\r\nData\r\n", "ERROR 0319 - No attributes specified in .mif file."},
        {"Columns many\r\nData\r\n", "ERROR 0314 - Could not read number of attributes in .mif file"},
        {"Columns 2\r\n  A Char(3)\r\n", "ERROR 0316 - Could not read attribute definitions in .mif file"},
        {"Columns 1\r\n  A Char(3)\r\nPline 2\r\n", "ERROR 0313 - Could not find start of \"Data\" block in .mif file."},
        {h + "Pline 3\r\n1 2\r\n", "ERROR 0309 - Unexpected end of .mif file encountered."},
        {h + "Pline 2\r\n1 2\r\nabc def\r\n", "ERROR 0308 - Reading .mif file.  Check file format is not corrupted."},
        {h + "Pline -4\r\n", "ERROR 0308 - Reading .mif file.  Check file format is not corrupted."},
        {h + "Pline 200000\r\n", "ERROR 0310 - Exceeded number of allowable nodes in a single polyline or region."},
        {h + "Pline Multiple x\r\n", "ERROR 0321 - Reading .mif file object type."},
        {h + "Region 20000\r\n", "ERROR 0304 - Exceeded maximum number of polygons in region below of 10000"},
        {h + "Region 1\r\n 3\r\n0 0\r\n1 0\r\n0 0\r\n", "ERROR 0318 - Less than 5 points for Region object in mif file."},
        {h + "Region 2\r\n 1\r\n0 0\r\n", "ERROR 0318 - Less than 5 points for Region object in mif file."},
        {h + "  collection 2\r\n", "ERROR 0303 - MIF \"Collection\" objects not supported.  Delete or disaggregate object."},
        {h + "Point 1 2\r\nPoint 3 4\r\nPoint 5 6\r\n", "ERROR 0254 - Failed to read object attribute data record for a POINT"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mif);
        writeFile(path("x.mif"), c.mif);
        writeFile(path("x.mid"), "1\r\n2\r\n");
        EXPECT_GIS_STOP(reading::readLayer(gisOpenLayer(path("x.mif"), false, "I ", "")), c.message);
    }
}

TEST_F(Hostile, LayerNumberAndFamilyStops) {
    const std::pair<std::function<void(int32_t)>, const char*> calls[] = {
        {[](int32_t id) { gisReadHeader(id); }, "gisReadHeader"},
        {[](int32_t id) { gisNumberAttributes(id); }, "gisNumberAttributes"},
        {[](int32_t id) { gisNumberRecords(id); }, "gisNumberRecords"},
        {[](int32_t id) { gisGotoBeginningOfData(id); }, "gisGotoBeginningOfData"},
        {[](int32_t id) { int32_t n; gisGotoBeginningOfAttributes(id, n); }, "gisGotoBeginningOfAttributes"},
        {[](int32_t id) { Text<8> a, b; gisReadAttributeDefinition(id, a, b); }, "gisReadAttributeDefinition"},
        {[](int32_t id) { gisObjectType(id, gisO_); }, "gisObjectType"},
        {[](int32_t id) { gisReadRecord(id, gisO_, gisRecordLine); }, "gisReadRecord"},
        {[](int32_t id) { double c; float f; gisReadObject(id, gisO_, gisX, gisY, 9, gisN, c, c, f, f, true); },
         "gisReadObject"},
    };
    for (const auto& [call, name] : calls) {
        EXPECT_GIS_STOP(call(0), std::string("Should not be here ") + name + "[gisID=0] - please contact SUPPORTDESK.");
        // A slot that is not open has no family.
        EXPECT_GIS_STOP(call(7), std::string("Should not be here [") + name + "] - please contact SUPPORTDESK.");
    }
}

TEST_F(Hostile, TolerantCases) {
    writeBase();
    // A number that did not fit its field reads as 0; a table cut at a record
    // boundary, its end mark lost, ends with a warning and blank records.
    std::string dbf = readFile(path("base_L.dbf"));
    dbf.replace(97 + 11, 16, std::string(16, '*'));
    dbf.resize(97 + 27);
    writeFile(path("base_L.dbf"), dbf);
    // Bytes behind the length the header states are not records.
    std::string shp = readFile(path("base_L.shp"));
    writeFile(path("base_L.shp"), shp + std::string(40, '\x07'));
    int32_t id = gisOpenLayer(path("base_L.shp"), false, "I ", "");
    conFlush();
    ::testing::internal::CaptureStdout();
    const auto objects = reading::readLayer(id);
    conFlush();
    const std::string out = ::testing::internal::GetCapturedStdout();
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(objects[0].record, "\"thing     \",0");
    EXPECT_EQ(objects[1].record, "");
    EXPECT_EQ(objects[1].kind, "plinemultiple");
    EXPECT_NE(out.find("WARNING 0405 - Insufficient number of records found in .dbf file.\n"
                       "               Found 1, expecting 2\n"),
              std::string::npos)
        << out;
    gisCloseLayer(id);
}
