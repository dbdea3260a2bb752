// Files cut short or corrupted at every stage end the run in order with the
// message of that stage; the tolerant cases read on.
#include <functional>

#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;

namespace {

using Change = std::function<void(std::string&)>;
Change cut(std::size_t n) { return [n](std::string& b) { b.resize(n); }; }
Change le(std::size_t at, int32_t v) { return [=](std::string& b) { b.replace(at, 4, le32(v)); }; }
Change be(std::size_t at, int32_t v) { return [=](std::string& b) { b.replace(at, 4, be32(v)); }; }
Change both(Change a, Change b) { return [=](std::string& s) { a(s), b(s); }; }
// A .dbf header followed by n one-byte text fields.
Change fields(int n) {
    return [n](std::string& b) {
        b = b.substr(0, 32);
        for (int i = 0; i < n; ++i) b += "F" + zeros(10) + "C" + zeros(4) + "\x01" + zeros(15);
        if (n <= 128) b += "\x0D";
    };
}

struct Corruption {
    const char* file;  // of the base layer
    Change change;
    const char* message;
};

// The base layer, written afresh for each case: a polyline of three points
// and a two-part polyline (set L), a point (P), a square (R). Records: Kind
// Char(10), Value Float.
class Hostile : public GisTest {
protected:
    void writeBase() {
        setAttributes({{"Kind", "Char", 10}, {"Value", "Float", 0}});
        int32_t id = openWithHeader("base.shp", "PLR");
        auto object = [&](bool GisObject::*kind, std::initializer_list<std::pair<double, double>> pts, int parts) {
            gisClearObject(gisO_);
            gisO_.*kind = true;
            gisO_.nr = parts;
            gisO_.ir[2] = 3;
            setPoints(pts);
            put(gisRecordLine, "\"thing\",1.5");
            gisWriteObject(id, gisO_);
            gisWriteRecord(id, gisO_);
        };
        object(&GisObject::isPline, {{0, 0}, {1, 1}, {2, 0}}, 1);
        object(&GisObject::isPlineMultiple, {{0, 0}, {1, 1}, {5, 5}}, 2);
        object(&GisObject::isPoint, {{7, 8}}, 1);
        object(&GisObject::isRegion, {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}}, 1);
        gisCloseLayer(id);
    }
};

}  // namespace

TEST_F(Hostile, ShapefileAndDbfStops) {
    // Set L: record header at 100, type 108, box 112, part count 144, point
    // count 148, first part start 152, points from 156. Its .dbf: header 32,
    // two descriptors, the byte 13; records from 97, 27 bytes each.
    const std::string endObject = "ERROR 0425 - End of .shp file encountered whilst reading object type.";
    const std::string badRecord = "ERROR 0424 - Reading .shp file object type.";
    const std::string endHeader = "ERROR 0404 - End of .dbf file encountered whilst reading header.";
    const Corruption cases[] = {
        {"base_L.shp", cut(50), "ERROR 0428 - End of .shp file encountered whilst reading header."},
        {"base_L.shp", cut(106), endObject.c_str()},
        {"base_L.shp", cut(130), endObject.c_str()},
        {"base_L.shp", cut(170), "ERROR 0430 - End of .shp file encountered whilst reading object coordinates."},
        {"base_L.shp", be(104, 20), badRecord.c_str()},  // length shorter than the counts
        {"base_L.shp", be(104, 0), badRecord.c_str()},
        {"base_L.shp", le(144, 10000), "ERROR 0421 - Exceeded maximum number of parts in a .shp polyline.  Limit is 10000"},
        {"base_L.shp", le(144, -2), badRecord.c_str()},
        {"base_L.shp", both(le(148, 200000), be(104, 24 + 8 * 200000)),
         "ERROR 0310 - Exceeded number of allowable nodes in a single .shp polyline or region."},
        {"base_L.shp", le(152, 7), badRecord.c_str()},  // first part not at the first point
        {"base_L.shp", le(108, 13), "ERROR 0423 - Unsupported .shp object type PolyLineZ [13]"},
        {"base_L.shp", le(108, 99), "ERROR 0423 - Unsupported .shp object type Unknown [99]"},
        {"base_L.shp", le(108, -7), "ERROR 0423 - Unsupported .shp object type Unknown [-7]"},
        {"base_R.shp", le(144, 10000), "ERROR 0422 - Exceeded maximum number of regions within a .shp region.  Limit is 10000"},
        {"base_R.shp", both(both(le(144, 2), be(104, 106)), [](std::string& b) { b.insert(156, le32(4)); }),
         badRecord.c_str()},  // a ring of one point
        {"base_L.dbf", cut(20), endHeader.c_str()},
        {"base_L.dbf", cut(60), endHeader.c_str()},
        {"base_L.dbf", fields(0), "ERROR 0319 - No attributes specified in .dbf file."},
        {"base_L.dbf", fields(129), "ERROR 0401 - Exceeded maximum number of dbf Fields."},
        {"base_L.dbf", [](std::string& b) { b[48] = 0; },
         "ERROR 0402 - dbf field length of 0 is outside allowable range of 1 to 255."},
        {"base_L.dbf", [](std::string& b) { b[97] = 'X'; },
         "ERROR 0406 - Unrecognised record identifier found in .dbf file.\nCharacter = X [88]"},
        {"base_L.dbf", cut(107), "ERROR 0408 - End of .dbf file encountered whilst reading record."},
    };
    for (const Corruption& c : cases) {
        SCOPED_TRACE(c.message);
        writeBase();
        std::string bytes = readFile(path(c.file));
        c.change(bytes);
        writeFile(path(c.file), bytes);
        const std::string name = path(std::string(c.file).substr(0, 6) + ".shp");
        EXPECT_GIS_STOP(reading::readLayer(gisOpenLayer(name, false, "I ", "")), c.message);
    }
}

TEST_F(Hostile, MifStops) {
    const std::string h = "Version 300\r\nColumns 1\r\n  ID Integer\r\nData\r\n\r\n";
    const std::string corrupt = "ERROR 0308 - Reading .mif file.  Check file format is not corrupted.";
    const std::string small = "ERROR 0318 - Less than 5 points for Region object in mif file.";
    const std::pair<std::string, std::string> cases[] = {
        {"Version 300\r\nData\r\n", "ERROR 0315 - Could not find start of attribute definitions in .mif file"},
        {"Columns 0\r\nData\r\n", "ERROR 0319 - No attributes specified in .mif file."},
        {"Columns many\r\nData\r\n", "ERROR 0314 - Could not read number of attributes in .mif file"},
        {"Columns 2\r\n  A Char(3)\r\n", "ERROR 0316 - Could not read attribute definitions in .mif file"},
        {"Columns 1\r\n  A Char(3)\r\nPline 2\r\n", "ERROR 0313 - Could not find start of \"Data\" block in .mif file."},
        {h + "Pline 3\r\n1 2\r\n", "ERROR 0309 - Unexpected end of .mif file encountered."},
        {h + "Pline 2\r\n1 2\r\nabc def\r\n", corrupt},
        {h + "Pline -4\r\n", corrupt},
        {h + "Pline 200000\r\n", "ERROR 0310 - Exceeded number of allowable nodes in a single polyline or region."},
        {h + "Pline Multiple x\r\n", "ERROR 0321 - Reading .mif file object type."},
        {h + "Region 20000\r\n", "ERROR 0304 - Exceeded maximum number of polygons in region below of 10000"},
        {h + "Region 1\r\n 3\r\n0 0\r\n1 0\r\n0 0\r\n", small},
        {h + "Region 2\r\n 1\r\n0 0\r\n", small},
        {h + "  collection 2\r\n", "ERROR 0303 - MIF \"Collection\" objects not supported.  Delete or disaggregate object."},
        {h + "Point 1 2\r\nPoint 3 4\r\nPoint 5 6\r\n", "ERROR 0254 - Failed to read object attribute data record for a POINT"},
    };
    for (const auto& [mif, message] : cases) {
        SCOPED_TRACE(mif);
        writeFile(path("x.mif"), mif);
        writeFile(path("x.mid"), "1\r\n2\r\n");
        EXPECT_GIS_STOP(reading::readLayer(gisOpenLayer(path("x.mif"), false, "I ", "")), message);
    }
}

TEST_F(Hostile, LayerNumberAndFamilyStops) {
    double c = 0;
    float f = 0;
    EXPECT_GIS_STOP(gisReadHeader(0), "Should not be here gisReadHeader[gisID=0] - please contact the reachmap maintainers.");
    EXPECT_GIS_STOP(gisReadObject(0, gisO_, gisX, gisY, 9, gisN, c, c, f, f, true),
                    "Should not be here gisReadObject[gisID=0] - please contact the reachmap maintainers.");
    // A slot that is not open has no family.
    EXPECT_GIS_STOP(gisObjectType(7, gisO_), "Should not be here [gisObjectType] - please contact the reachmap maintainers.");
}

TEST_F(Hostile, TolerantCases) {
    writeBase();
    // A number that did not fit its field reads as 0; a table cut at a record
    // boundary, its end mark lost, ends with a warning and blank records;
    // bytes behind the length the .shp header states are not records.
    std::string dbf = readFile(path("base_L.dbf"));
    writeFile(path("base_L.dbf"), dbf.replace(97 + 11, 16, std::string(16, '*')).substr(0, 97 + 27));
    writeFile(path("base_L.shp"), readFile(path("base_L.shp")) + std::string(40, '\x07'));
    conFlush();
    ::testing::internal::CaptureStdout();
    reading::expectLayer(path("base_L.shp"), {{"pline", {{{0, 0}, {1, 1}, {2, 0}}}, "thing,0"},
                                              {"plinemultiple", {{{0, 0}, {1, 1}}, {{5, 5}}}, ""}});
    conFlush();
    const std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("WARNING 0405 - Insufficient number of records found in .dbf file.\n"
                       "               Found 1, expecting 2\n"),
              std::string::npos)
        << out;
}
