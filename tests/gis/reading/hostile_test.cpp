// Files cut short or corrupted at each stage end the run in order with the
// message of that stage; the tolerant cases read on; a missing set is no layer.
#include <functional>

#include "gis_test_util.hpp"
#include "reading/reading_util.hpp"

using namespace gistest;

namespace {

using Change = std::function<void(std::string&)>;
Change cut(std::size_t n) {
    return [n](std::string& b) { b.resize(n); };
}
Change le(std::size_t at, int32_t v) {
    return [=](std::string& b) { b.replace(at, 4, le32(v)); };
}

// The base layer, written afresh for each case: a polyline of three points
// and a two-part polyline (set L), a point (P), a square (R). Records: Kind
// Char(10), Value Float.
class Hostile : public GisTest {
protected:
    void writeBase() {
        setAttributes({{"Kind", "Char", 10}, {"Value", "Float", 0}});
        int32_t id = openWithHeader("base.shp", "PLR");
        writeObject(id, &GisObject::isPline, {{0, 0}, {1, 1}, {2, 0}}, "\"thing\",1.5");
        writeObject(id, &GisObject::isPlineMultiple, {{0, 0}, {1, 1}, {5, 5}}, "\"thing\",1.5", {1, 3});
        writeObject(id, &GisObject::isPoint, {{7, 8}}, "\"thing\",1.5");
        writeObject(id, &GisObject::isRegion, {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}}, "\"thing\",1.5");
        gisCloseLayer(id);
    }
};

}  // namespace

TEST_F(Hostile, ShapefileAndDbfStops) {
    // Set L: record header at 100, type 108, box 112, part count 144, point
    // count 148, first part start 152, points from 156. Its .dbf: header 32,
    // two descriptors, the byte 13; records from 97, 27 bytes each.
    const struct {
        const char* file;
        Change change;
        const char* message;
    } cases[] = {
        {"base_L.shp", cut(50), "ERROR 0428 - End of .shp file encountered whilst reading header."},
        {"base_L.shp", cut(106), "ERROR 0425 - End of .shp file encountered whilst reading object type."},
        {"base_L.shp", cut(170), "ERROR 0430 - End of .shp file encountered whilst reading object coordinates."},
        {"base_L.shp", [](std::string& b) { b.replace(104, 4, be32(20)); },  // shorter than its counts
         "ERROR 0424 - Reading .shp file object type."},
        {"base_L.shp", le(144, 10000), "ERROR 0421 - Exceeded maximum number of parts in a .shp polyline.  Limit is 10000"},
        {"base_L.shp", le(108, 13), "ERROR 0423 - Unsupported .shp object type PolyLineZ [13]"},
        {"base_L.dbf", cut(20), "ERROR 0404 - End of .dbf file encountered whilst reading header."},
        {"base_L.dbf",
         [](std::string& b) {  // 129 one-byte text fields
             b.resize(32);
             for (int i = 0; i < 129; ++i) b += "F" + zeros(10) + "C" + zeros(4) + "\x01" + zeros(15);
         },
         "ERROR 0401 - Exceeded maximum number of dbf Fields."},
        {"base_L.dbf", [](std::string& b) { b[48] = 0; },
         "ERROR 0402 - dbf field length of 0 is outside allowable range of 1 to 255."},
        {"base_L.dbf", [](std::string& b) { b[97] = 'X'; },
         "ERROR 0406 - Unrecognised record identifier found in .dbf file.\nCharacter = X [88]"},
        {"base_L.dbf", cut(107), "ERROR 0408 - End of .dbf file encountered whilst reading record."},
    };
    for (const auto& c : cases) {
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
    const std::pair<std::string, std::string> cases[] = {
        {"Version 300\r\nData\r\n", "ERROR 0315 - Could not find start of attribute definitions in .mif file"},
        {"Columns many\r\nData\r\n", "ERROR 0314 - Could not read number of attributes in .mif file"},
        {"Columns 1\r\n  A Char(3)\r\nPline 2\r\n", "ERROR 0313 - Could not find start of \"Data\" block in .mif file."},
        {h + "Pline 3\r\n1 2\r\n", "ERROR 0309 - Unexpected end of .mif file encountered."},
        {h + "Pline 2\r\n1 2\r\nabc def\r\n", "ERROR 0308 - Reading .mif file.  Check file format is not corrupted."},
        {h + "Region 1\r\n 3\r\n0 0\r\n1 0\r\n0 0\r\n", "ERROR 0318 - Less than 5 points for Region object in mif file."},
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

TEST_F(Hostile, TolerantCasesAndMissingSet) {
    // An input SHP set that is not there gives layer 0 and keeps no unit.
    EXPECT_EQ(gisOpenLayer(path("base.shp"), false, "I ", "L"), 0);
    int32_t probe = 0;
    OPENERFREE(probe, "O ", path("probe.txt"), 0);
    EXPECT_EQ(probe, 1001);
    writeBase();
    // A number that did not fit its field reads as 0; a table cut at a record
    // boundary, its end mark lost, ends with a warning and blank records;
    // bytes behind the length the .shp header states are not records.
    std::string dbf = readFile(path("base_L.dbf"));
    writeFile(path("base_L.dbf"), dbf.replace(97 + 11, 16, std::string(16, '*')).substr(0, 97 + 27));
    writeFile(path("base_L.shp"), readFile(path("base_L.shp")) + std::string(40, '\x07'));
    const std::string out = console([&] {
        reading::expectLayer(path("base_L.shp"), {{"pline", {{{0, 0}, {1, 1}, {2, 0}}}, "thing,0"},
                                                  {"plinemultiple", {{{0, 0}, {1, 1}}, {{5, 5}}}, ""}});
    });
    EXPECT_NE(out.find("WARNING 0405 - Insufficient number of records found in .dbf file.\n"
                       "               Found 1, expecting 2\n"),
              std::string::npos)
        << out;
}
