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
int32_t gisOpenLayer(std::string_view name, bool attributesOnly, std::string_view mode,
                     std::string_view shapeLetters);
bool OpenshpFile(std::string_view name, std::string_view letter, GisDbfState& dbf, GisShpState& shp,
                 std::string_view mode, bool attributesOnly);
// 1 MIF family, 2 SHP family, -1 a .csv; stops with ERROR 0252 otherwise.
int32_t gisFormatOfFile(std::string_view name, bool attributesOnly);
// Finishes and closes the layer; sets gisID to 0.
void gisCloseLayer(int32_t& gisID);
void gisCloseAllLayers(bool& anyOpen);
// Brings .dbf, .shp and .shx headers up to date and closes those units.
void gisWriteEoF(int32_t gisID);

// ---- Writing ---------------------------------------------------------------
void gisWriteHeader(int32_t gisID);
void gisWriteObject(int32_t gisID, GisObject& object);
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

// DBF record writers and byte helpers.
void dbfdataline(GisDbfState& dbf);
void dbfdatalinelarge(GisDbfState& dbf);
int32_t i1u(int32_t value);
int32_t i2u(int32_t value);

// ---- Library reset and the record of input layers ---------------------------
// Resets all library state. A workspaceName that is not blank opens
// "{workspaceName}.wor", an inputLayersName that is not blank the pair
// "{inputLayersName}_input_layers.mif/.mid"; each input layer that
// gisOpenLayer meets for the first time then gets a line in them.
void gisInitialiseLibrary(int32_t logUnit, std::string_view simulationName, std::string_view workspaceName,
                          std::string_view inputLayersName);
// Closes the files that gisInitialiseLibrary opened.
void gisCloseWorkspace();
