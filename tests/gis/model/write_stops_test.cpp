// The stops of opening and writing layers: each ends the run through EXITS
// with its own exact message.
#include <functional>

#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class WriteStops : public GisTest {};

}  // namespace

TEST_F(WriteStops, ExactMessages) {
    // A MIF layer "t" with one Char attribute, an SHP layer "s" of points only.
    auto mif = [this] {
        setAttributes({{"Name", "Char", 10}});
        return openWithHeader("t.mif");
    };
    auto shp = [this] {
        setAttributes({{"Name", "Char", 4}});
        return openWithHeader("s.shp", "P");
    };
    // n fields F of this type and width, the first Float when n is 3.
    auto dbf = [this](int n, const char* type, int width) {
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
        {[&] { write(mif(), &GisObject::isEllipse); },
         "ERROR 0350 - Trying to write a MIF object that is not yet supported.  Please contact the reachmap maintainers."},
        {[&] { write(closed(mif(), gisMif[1].mifUnit), &GisObject::isPoint); },
         "ERROR 0439 - Writing .mif file object coordinates."},
        {[&] { record(closed(mif(), gisMif[1].midUnit), ""); },
         "ERROR 0254 - Failed to write attribute data record for a Point object in GIS layer."},
        {[&] { write(mif(), &GisObject::isPline, kGisMaxPoints + 1); },
         "ERROR 0310 - Exceeded number of allowable nodes in a single polyline or region.\n"
         "             Requested  100001        Limit  100000"},
        {[&] { write(mif(), &GisObject::isRegion, 3, kGisMaxParts + 1); },
         "ERROR 0304 - Exceeded maximum number of polygons in region below of 10000"},
        {[&] { write(mif(), &GisObject::isPlineMultiple, 3, 3); },
         "Should not be here [gisO_%ir(i) <= gisO_%ir(i-1)]" + contact +
             "\nGIS Layer   =    1\ni           =    3\ngisO_%ir(i) =    2\ngisO_%nr    =    3"},
        {[&] { write(shp(), &GisObject::isPline, 2); }, "ERROR 0439 - Writing .shp file object coordinates."},
        {[&] { gisWriteObject(shp(), gisO_); },  // no kind
         "Should not be here [gisWriteObject-shp].  Please contact the reachmap maintainers."},
        {[&] { write(shp(), &GisObject::isMultiPoint, kGisMaxPoints + 5); },
         "ERROR 0310 - Exceeded number of allowable nodes in a single .shp polyline or region.\n"
         "             Requested  100005        Limit  100000"},
        {[&] { gisWriteRecord(shp(), gisO_); },
         "Should not be here [gisWriteRecord-dbf].  Please contact the reachmap maintainers."},
        {[&] {
             write(shp(), &GisObject::isPoint);
             int32_t id = closed(1, gisShp[1][1].shpUnitLE);
             gisCloseLayer(id);
         },
         "ERROR 0413 - Rewriting .dbf file header with final information."},
        {[&] { gisWriteHeader(closed(gisOpenLayer(path("h.shp"), false, "O ", "P"), gisShp[1][1].shxUnitBE)); },
         "ERROR 0437 - Writing .shp file header."},
        {[&] { dbf(kDbfMaxFields + 1, "Char", 1); },
         "ERROR 0411 - Exceeded maximum number of dbf Fields trying to write dbf file."},
        {[&] { dbf(0, "Char", 1); }, "ERROR 0319 - No attributes specified when writing .dbf file."},
        {[&] { dbf(3, "Char", 256); },
         "ERROR 0412 - dbf field length of 256 is outside allowable range of 1 to 255 when writing dbf file."},
        {[&] { dbf(3, "Decimal", 0); },
         "ERROR 0412 - dbf field length of 0 is outside allowable range of 1 to 255 when writing dbf file."},
        {[&] { dbf(3, "Date", 1); }, "Should not be here [Unrecognised DBF field]" + contact},
        {[&] { dbf(66, "Char", 1000); }, "Should not be here [dbfTotLen>32767]" + contact},
        {[&] { record(dbf(2, "Char", 3), "ok,\"open"); }, "Should not be here [dbfdataline]" + contact + "\nok,\"open"},
        {[&] { gisWriteHeader(closed(dbf(2, "Char", 3), gisDbf[1][1].dbfUnit)); }, "ERROR 0413 - Writing .dbf file header."},
        {[] { i2u(65536); }, "Should not be here [i2u: i4 outside range]" + contact},
        {[] { gisWriteObject(0, gisO_); }, "Should not be here gisWriteObject[gisID=0]" + contact},
        {[] { gisWriteEoF(5); }, "Should not be here [gisWriteHeader]" + contact},  // a slot that is not open
        {[&] {
             for (int i = 0; i <= kGisMaxLayers; ++i) gisOpenLayer(path("m" + std::to_string(i)), false, "O ", "");
         },
         "ERROR 0251 - Cannot have more than 100 GIS layers open at once."},
        {[&] { gisOpenLayer(path("a.txt"), false, "O ", ""); }, "ERROR 0252 - .txt is not a supported GIS file format."},
        {[&] { gisOpenLayer(path("a.mif"), false, "X ", ""); }, "Should not be here [OpenGIS]" + contact},
        {[&] { gisOpenLayer(path("a.shp"), false, "O ", "PQ"); }, "Should not be here [OpenshpFileType]" + contact},
        {[&] { OpenshpFile(path("a.shp"), "P", gisDbf[1][1], gisShp[1][1], "O ", true); },
         "ERROR 0426 - .dbf file not specified."},
    };
    for (const auto& [statement, message] : cases) {
        SCOPED_TRACE(message);
        EXPECT_GIS_STOP(statement(), message);
    }
}
