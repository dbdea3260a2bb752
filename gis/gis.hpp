// The GIS layer library's public operations. A caller opens a layer, gets a
// small integer gisID, fills the shared buffers of gis_model.hpp and calls the
// library with gisID. Every failure reports its own message and ends the run
// through EXITS; no error reaches the caller.
#pragma once

#include <cstdint>
#include <string_view>

#include "gis/model/gis_model.hpp"

// ---- Opening and closing ---------------------------------------------------
// Format from the extension: .mif, .mid or none -> MIF family; .shp -> SHP
// family (one set for each letter of shapeLetters: P points, L lines, R
// polygons); .dbf / .csv only with attributesOnly. Mode "O " or "I ".
// Returns the gisID; 0 only for an input SHP set whose file does not exist.
int32_t gisOpenLayer(std::string_view name, bool attributesOnly, std::string_view mode, std::string_view shapeLetters);
bool OpenshpFile(std::string_view name, std::string_view letter, GisDbfState& dbf, GisShpState& shp,
                 std::string_view mode, bool attributesOnly);
// The GisFamily of a name: kGisFamilyMif, kGisFamilyShp or kGisFamilyCsv (1, 2,
// -1); stops with ERROR 0252 otherwise.
int32_t gisFormatOfFile(std::string_view name, bool attributesOnly);
// Finishes and closes the layer; sets gisID to 0.
void gisCloseLayer(int32_t& gisID);
void gisCloseAllLayers(bool& anyOpen);
// Brings .dbf, .shp and .shx headers up to date and closes those units.
void gisWriteEoF(int32_t gisID);

// ---- Writing ---------------------------------------------------------------
void gisWriteHeader(int32_t gisID);
void gisWriteObject(int32_t gisID, GisObject& object);
// The point line of point k (from 1) of the next object, made by the caller:
// gisX[k] and gisY[k] in two fields of 16 columns with 6 decimals, 32 bytes.
// A MIF layer writes it instead of formatting the point again, as long as
// the point's coordinates are still those, bit for bit; others ignore it.
void gisOfferPointText(int32_t k, const char* text);
void gisWriteRecord(int32_t gisID, GisObject& object);
void gisWriteRecordLarge(int32_t gisID, GisObject& object);

// ---- Reading ---------------------------------------------------------------
// A layer opened in mode "I " is read in this order: gisReadHeader; then
// gisGotoBeginningOfData; then for each object until gisObjectType gives
// false: gisObjectType, gisReadRecord, and gisReadObject once for each
// sub-object (np times: the parts of a multiple polyline, the points of a
// multipoint; once for any other object).

// MIF family: the attribute definitions of the .mif. SHP family: the .shp
// header and the .dbf field table. Either way gisA_ describes the layer after.
void gisReadHeader(int32_t gisID);
int32_t gisNumberAttributes(int32_t gisID);
// Lines of the .mid (which is left at its start), or the .dbf record count.
int32_t gisNumberRecords(int32_t gisID);
// Back to the first object and the first record.
void gisGotoBeginningOfData(int32_t gisID);
// MIF family: to the attribute definitions, with their count; false after a
// warning, and for the SHP family, whose fields gisReadHeader has read.
bool gisGotoBeginningOfAttributes(int32_t gisID, int32_t& count);
// The next attribute definition: name and type word.
void gisReadAttributeDefinition(int32_t gisID, TextRef name, TextRef type);
// The next object's kind, counts and type name; false at the end of the
// objects (gisAtEnd is then true).
bool gisObjectType(int32_t gisID, GisObject& object);
// The object's attribute record as one comma-separated line, cut at the
// capacity of `line`.
void gisReadRecord(int32_t gisID, GisObject& object, TextRef line);
// Coordinates into X, Y from entry 1 (at most maxN entries are written), and
// what consumers of lines and regions want: for a point its position (and a
// copy in entry 2); for a line, rectangle or polyline the centre (midpoint,
// or the point at half the length), the angle in degrees of that segment and
// the length; for a region the centre from a "Center" clause or the mean of
// its slots. Region slots: each part's points, then a copy of its second
// point; ir[p] is the last given point of part p.
void gisReadObject(int32_t gisID, GisObject& object, double* X, double* Y, int32_t maxN, int32_t& N, double& cx,
                   double& cy, float& angle, float& length, bool wantCoordinates);

// ---- Library reset and the record of input layers ---------------------------
// Resets all library state. A workspaceName that is not blank opens
// "{workspaceName}.wor", an inputLayersName that is not blank the pair
// "{inputLayersName}_input_layers.mif/.mid"; each input layer that
// gisOpenLayer meets for the first time then gets a line in them.
void gisInitialiseLibrary(int32_t logUnit, std::string_view simulationName, std::string_view workspaceName,
                          std::string_view inputLayersName);
// Closes the files that gisInitialiseLibrary opened.
void gisCloseWorkspace();
// Brings the library and the runtime below it back to the state of a fresh
// process (runtimeReset, then every table, buffer and setting of the
// library), for a program that goes on after a run ended through the exit
// handler of runtime/exits.hpp.
void gisReset();

// ---- Laying objects on a grid ----------------------------------------------
// Cell range of local points 1..N (the first point alone when N is below 2)
// on square cells of size d: j from trunc(ymin / d) + 1, i from
// trunc(xmin / d) + 1, each at least 0, to trunc(max / d) + 1 held to limJ,
// limI. The extents go to xmin .. ymax.
void SET_SUB_GRID_AREA(const float* X, const float* Y, int32_t N, float d, int32_t limJ, int32_t limI, int32_t& jLow,
                       int32_t& iLow, int32_t& jHigh, int32_t& iHigh, float& xmin, float& ymin, float& xmax,
                       float& ymax);

// Lays the next object of known type of an input layer, all its sub-objects,
// on the caller's grids, with one progress line on the console for each; the
// value is the object's first attribute. Call until gisAtEnd[gisID].
//
// The grid: origin (ox, oy), x axis along `angle` (radians); local cell
// (i, j), 1 <= j <= limJ, 1 <= i <= limI, of size dx by dy, is element
// (j + offJ, i + offI) of the caller's grids (dimJ by dimI, element (1, 1)
// first, j fastest: see geometry/arrays.hpp). Cell grids are sampled at the
// cell centre, x-side grids at the middle of the cell's upper-x side, y-side
// grids at the middle of its upper-y side.
//
// Modes: useInteger writes the value rounded (halves away from zero) to the
// integer grids instead of the float to the real grids; sidesOnly writes the
// side grids only; allPoints has regions fill the cell and side grids;
// countOnly has regions counted at four sample positions and written
// nowhere; accumulate adds instead of replacing; halveOnSides adds half the
// value to each side of a point or line cell in sidesOnly with accumulate.
// `count` receives the points or cells set for the (last) sub-object.
void gisAssignObjectToGrid(int32_t gisID, int32_t limJ, int32_t limI, int32_t offJ, int32_t offI, float dx, float dy,
                           double ox, double oy, float angle, bool useInteger, bool countOnly, bool sidesOnly,
                           bool allPoints, bool halveOnSides, int32_t* cellInts, int32_t* xSideInts, int32_t* ySideInts,
                           float* cellReals, float* xSideReals, float* ySideReals, int32_t dimJ, int32_t dimI,
                           bool accumulate, int32_t& count);

// An object that the caller has read and prepared itself (X, Y 1-based).
struct GisPreparedObject {
    const double* X = nullptr;
    const double* Y = nullptr;
    int32_t N = 0;
    double cx = 0.0, cy = 0.0;
    float length = 0.0f;
};

// gisAssignObjectToGrid on the caller's object buffer. readFromLayer true:
// as gisAssignObjectToGrid. False: nothing is read from the layer; the
// prepared object is laid once for each of object.np sub-objects. readValue
// true: `value` is read from the start of gisRecordLine (filled from the
// layer when readFromLayer is true); false: `value` is used as it stands.
void gisAssignPreparedObjectToGrid(int32_t gisID, int32_t limJ, int32_t limI, int32_t offJ, int32_t offI, float dx,
                                   float dy, double ox, double oy, float angle, bool useInteger, bool countOnly,
                                   bool sidesOnly, bool allPoints, bool halveOnSides, int32_t* cellInts,
                                   int32_t* xSideInts, int32_t* ySideInts, float* cellReals, float* xSideReals,
                                   float* ySideReals, int32_t dimJ, int32_t dimI, bool accumulate, int32_t& count,
                                   GisObject& object, bool readFromLayer, bool readValue,
                                   const GisPreparedObject& prepared, float& value);
