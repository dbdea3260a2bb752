// The public write operations shared by both file families: the checks on
// the layer number and the object, then the family's own writer.
#include "gis/dbf/dbf_writer.hpp"
#include "gis/gis.hpp"
#include "gis/mif/mif_writer.hpp"
#include "gis/model/gis_internal.hpp"
#include "gis/shp/shp_writer.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "text/numbers.hpp"
#include "text/support.hpp"

namespace {

// Parts and points must lie inside the shared buffers before a byte of the
// object is written.
void checkObject(int32_t gisID, GisObject& o) {
    if (o.isLine || o.isPline || o.isPlineMultiple || o.isRegion) {
        if (o.nr < 1) o.nr = 1;
        if (o.ir[1] < 1) o.ir[1] = 1;
        if (o.nr > kGisMaxParts) {
            GisLine l;
            // "below of": the words stand as the system prints them.
            l << "ERROR 0304 - Exceeded maximum number of polygons in region below of " << countText(kGisMaxParts);
            gisStopMessage(l.view());
        }
        for (int32_t i = 2; i <= o.nr; ++i) {
            if (o.ir[i] > o.ir[i - 1]) continue;
            conBlank();
            conLine("Should not be here [gisO_%ir(i) <= gisO_%ir(i-1)] - please contact " REACHMAP_SUPPORT ".");
            GisLine a, b, c, d;
            a << "GIS Layer   =" << intText(5, gisID);
            b << "i           =" << intText(5, i);
            c << "gisO_%ir(i) =" << intText(5, o.ir[i]);
            d << "gisO_%nr    =" << intText(5, o.nr);
            conLine(a.view());
            conLine(b.view());
            conLine(c.view());
            conLine(d.view());
            EXITS();
        }
        // A part that starts beyond the buffer would be read from outside it.
        if (o.ir[o.nr] > kGisMaxPoints + 1)
            gisStopTooManyNodes(gisFormat[gisID] == kGisFamilyShp, static_cast<int64_t>(o.ir[o.nr]) - 1, kGisMaxPoints);
    }
    const bool readsAllPoints = o.isMultiPoint || o.isLine || o.isPline || o.isPlineMultiple || o.isRegion;
    if (!o.isPoint && readsAllPoints && gisN > kGisMaxPoints)
        gisStopTooManyNodes(gisFormat[gisID] == kGisFamilyShp, gisN, kGisMaxPoints);
}

}  // namespace

void gisWriteHeader(int32_t gisID) {
    if (gisBadId(gisID)) gisStopNoLayer("gisWriteHeader");
    switch (gisFormat[gisID]) {
        case kGisFamilyMif: mifWriteHeader(gisID); return;
        case kGisFamilyShp: shpWriteHeader(gisID); return;
        default: gisStopNotHere("gisWriteHeader");
    }
}

void gisWriteObject(int32_t gisID, GisObject& object) {
    if (gisBadId(gisID)) gisStopNoLayer("gisWriteObject");
    checkObject(gisID, object);
    switch (gisFormat[gisID]) {
        case kGisFamilyMif: mifWriteObject(gisID, object); return;
        case kGisFamilyShp: shpWriteObject(gisID, object); return;
        default: gisStopNotHere("gisWriteObject");
    }
}

void gisOfferPointText(int32_t k, const char* text) { mifOfferPointText(k, text); }

void gisWriteRecord(int32_t gisID, GisObject& object) {
    if (gisBadId(gisID)) gisStopNoLayer("gisWriteRecord");
    switch (gisFormat[gisID]) {
        case kGisFamilyMif: mifWriteRecord(gisID, object, gisRecordLine, false); return;
        case kGisFamilyShp: dbfWriteRecord(gisID, object, false); return;
        default: gisStopNotHere("gisWriteRecord");
    }
}

void gisWriteRecordLarge(int32_t gisID, GisObject& object) {
    if (gisBadId(gisID)) gisStopNoLayer("gisWriteRecordLarge");
    switch (gisFormat[gisID]) {
        case kGisFamilyMif: mifWriteRecord(gisID, object, gisRecordLineLarge, true); return;
        case kGisFamilyShp: dbfWriteRecord(gisID, object, true); return;
        default: gisStopNotHere("gisWriteRecordLarge");
    }
}
