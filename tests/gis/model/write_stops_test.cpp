// The stops of opening and writing layers: each ends the run through EXITS
// with its own exact message.
#include <functional>

#include "gis_test_util.hpp"

using namespace gistest;

namespace {

class WriteStops : public GisTest {};

}  // namespace

TEST_F(WriteStops, ExactMessages) {
    auto mif = [this] {
        setAttributes({{"Name", "Char", 10}});
        return openWithHeader("t.mif");
    };
    auto shp = [this] {
        setAttributes({{"Name", "Char", 4}});
        return openWithHeader("s.shp", "P");
    };
    // n points of the kind, as one part.
    auto object = [](int32_t id, bool GisObject::*kind, int32_t n) {
        gisO_.*kind = true;
        gisN = n;
        gisWriteObject(id, gisO_);
    };
    // n fields named F, each of this type and width; with n 3 only the
    // second, the others Float.
    auto fields = [this](int n, const char* type, int width) {
        gisA_.n = n;
        for (int i = 1; i <= n; ++i) {
            put(gisA_.name[i], "F");
            put(gisA_.type[i], i == 2 || n != 3 ? type : "Float");
            gisA_.width[i] = i == 2 || n != 3 ? width : 0;
        }
        return openWithHeader("d.shp", "P");
    };
    // A copy of a unit, closed behind the library's back.
    auto closeCopy = [](int32_t unit) { CLOSER(unit); };
    const std::string contact = " - please contact the reachmap maintainers.";
    const std::pair<std::function<void()>, std::string> cases[] = {
        // MIF family.
        {[&] { object(mif(), &GisObject::isEllipse, 1); },
         "ERROR 0350 - Trying to write a MIF object that is not yet supported.  Please contact the reachmap maintainers."},
        {[&] {
             const int32_t id = mif();
             closeCopy(gisMif[id].mifUnit);
             object(id, &GisObject::isPoint, 1);
         },
         "ERROR 0439 - Writing .mif file object coordinates."},
        {[&] {
             const int32_t id = mif();
             closeCopy(gisMif[id].midUnit);
             put(gisO_.type, "Point");
             gisWriteRecord(id, gisO_);
         },
         "ERROR 0254 - Failed to write attribute data record for a Point object in GIS layer."},
        {[&] { object(mif(), &GisObject::isPline, kGisMaxPoints + 1); },
         "ERROR 0310 - Exceeded number of allowable nodes in a single polyline or region.\n"
         "             Requested  100001        Limit  100000"},
        {[&] {
             const int32_t id = mif();
             gisO_.nr = kGisMaxParts + 1;
             object(id, &GisObject::isRegion, 3);
         },
         "ERROR 0304 - Exceeded maximum number of polygons in region below of 10000"},
        {[&] {
             const int32_t id = mif();
             gisO_.nr = 3;
             gisO_.ir[2] = gisO_.ir[3] = 2;
             object(id, &GisObject::isPlineMultiple, 3);
         },
         "Should not be here [gisO_%ir(i) <= gisO_%ir(i-1)]" + contact +
             "\nGIS Layer   =    1\ni           =    3\ngisO_%ir(i) =    2\ngisO_%nr    =    3"},
        // SHP family: the layer has only its point set.
        {[&] { object(shp(), &GisObject::isPline, 2); }, "ERROR 0439 - Writing .shp file object coordinates."},
        {[&] {
             const int32_t id = shp();
             gisO_.isPline = true;
             gisWriteRecord(id, gisO_);
         },
         "ERROR 0417 - Writing .dbf record."},
        {[&] { gisWriteObject(shp(), gisO_); },
         "Should not be here [gisWriteObject-shp].  Please contact the reachmap maintainers."},
        {[&] { gisWriteRecord(shp(), gisO_); },
         "Should not be here [gisWriteRecord-dbf].  Please contact the reachmap maintainers."},
        {[&] { object(shp(), &GisObject::isMultiPoint, kGisMaxPoints + 5); },
         "ERROR 0310 - Exceeded number of allowable nodes in a single .shp polyline or region.\n"
         "             Requested  100005        Limit  100000"},
        {[&] {
             int32_t id = shp();
             object(id, &GisObject::isPoint, 1);
             closeCopy(gisShp[id][1].shpUnitLE);
             gisCloseLayer(id);
         },
         "ERROR 0413 - Rewriting .dbf file header with final information."},
        {[&] {
             const int32_t id = gisOpenLayer(path("h.shp"), false, "O ", "P");
             closeCopy(gisShp[id][1].shxUnitBE);
             gisWriteHeader(id);
         },
         "ERROR 0437 - Writing .shp file header."},
        // The .dbf field table and records.
        {[&] { fields(kDbfMaxFields + 1, "Char", 1); },
         "ERROR 0411 - Exceeded maximum number of dbf Fields trying to write dbf file."},
        {[&] { fields(0, "Char", 1); }, "ERROR 0319 - No attributes specified when writing .dbf file."},
        {[&] { fields(3, "Char", 256); },
         "ERROR 0412 - dbf field length of 256 is outside allowable range of 1 to 255 when writing dbf file."},
        {[&] { fields(3, "Decimal", 0); },
         "ERROR 0412 - dbf field length of 0 is outside allowable range of 1 to 255 when writing dbf file."},
        {[&] { fields(3, "Date", 1); }, "Should not be here [Unrecognised DBF field]" + contact},
        {[&] { fields(66, "Char", 1000); }, "Should not be here [dbfTotLen>32767]" + contact},
        {[&] {
             const int32_t id = fields(2, "Char", 3);
             gisO_.isPoint = true;
             put(gisRecordLine, "ok,\"open");
             gisWriteRecord(id, gisO_);
         },
         "Should not be here [dbfdataline]" + contact + "\nok,\"open"},
        {[&] {
             const int32_t id = fields(2, "Char", 3);
             closeCopy(gisDbf[id][1].dbfUnit);
             gisWriteHeader(id);
         },
         "ERROR 0413 - Writing .dbf file header."},
        {[] { i1u(256); }, "Should not be here [i1u: i4 outside range]" + contact},
        {[] { i2u(65536); }, "Should not be here [i2u: i4 outside range]" + contact},
        // The layer table and opening.
        {[] { gisWriteObject(0, gisO_); }, "Should not be here gisWriteObject[gisID=0]" + contact},
        {[] { gisWriteEoF(5); }, "Should not be here [gisWriteHeader]" + contact},  // a slot that is not open
        {[] {
             int32_t id = 5;
             gisCloseLayer(id);
         },
         "Should not be here [gisCloseLayer]" + contact},
        {[&] {
             for (int i = 0; i <= kGisMaxLayers; ++i) gisOpenLayer(path("m" + std::to_string(i)), false, "O ", "");
         },
         "ERROR 0251 - Cannot have more than 100 GIS layers open at once."},
        {[&] { gisOpenLayer(path("a.txt"), false, "O ", ""); }, "ERROR 0252 - .txt is not a supported GIS file format."},
        {[] { gisFormatOfFile("a.dbf", false); }, "ERROR 0252 - .dbf is not a supported GIS file format."},
        {[&] { gisOpenLayer(path("a.mif"), false, "X ", ""); }, "Should not be here [OpenGIS]" + contact},
        {[&] { gisOpenLayer(path("a.shp"), false, "O ", "PQ"); }, "Should not be here [OpenshpFileType]" + contact},
        {[&] { OpenshpFile(path("a.mif"), "P", gisDbf[1][1], gisShp[1][1], "O ", false); },
         "ERROR 0426 - .shp file not specified."},
        {[&] { OpenshpFile(path("a.shp"), "P", gisDbf[1][1], gisShp[1][1], "O ", true); },
         "ERROR 0426 - .dbf file not specified."},
    };
    for (const auto& [statement, message] : cases) {
        SCOPED_TRACE(message);
        EXPECT_GIS_STOP(statement(), message);
    }
}
