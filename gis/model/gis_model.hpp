// The GIS data model: the layer table and the shared buffers through which
// objects and records travel between a program and the layer library.
//
// All state is static storage of fixed capacity. Arrays that the library
// indexes from 1 are declared one entry larger and entry 0 is not used.
#pragma once

#include <cstdint>
#include <string_view>

#include "gis/model/lazy_array.hpp"
#include "text/text.hpp"

constexpr int kGisMaxLayers = 100;       // layer slots, gisID 1..100
constexpr int kGisMaxParts = 10000;      // parts of one object
constexpr int kGisMaxPoints = 100000;    // points of one object
constexpr int kGisMaxAttributes = 256;   // attributes of gisA_
constexpr int kDbfMaxFields = 128;       // fields of one .dbf
constexpr int kGisMaxInputLayers = 999;  // tracked input layers

// File families, the values of gisFormat and of gisFormatOfFile. A .csv
// opened for its attributes alone is a family of its own only while it is
// being opened; once open it is held as the MIF family.
enum GisFamily : int32_t { kGisFamilyCsv = -1, kGisFamilyNone = 0, kGisFamilyMif = 1, kGisFamilyShp = 2 };

// The sets of an SHP layer, the index of gisShp and gisDbf; each set is a
// .shp, .shx, .prj and .dbf of one kind of shape. shpSetOf (gis/shp/shp_sets.hpp)
// gives the set of an object: every open set for a null object, none for a
// kind the writers do not know.
enum ShpSet : int32_t {
    kShpSetNone = -1,
    kShpSetEvery = 0,
    kShpSetPoints = 1,
    kShpSetLines = 2,
    kShpSetRegions = 3,
};

// Shape type codes of a .shp header and record, those this library writes
// and reads; gisShapeTypeNames names the others.
enum ShpShapeType : int32_t {
    kShapeNull = 0,
    kShapePoint = 1,
    kShapePolyline = 3,
    kShapePolygon = 5,
    kShapeMultiPoint = 8,
};

// The object in flight: kind flags, parts and type name.
struct GisObject {
    bool isNone = false;           // object without geometry
    bool isPoint = false;          // point
    bool isLine = false;           // two-point line
    bool isPline = false;          // single-part polyline
    bool isPlineMultiple = false;  // multi-part polyline
    bool isRegion = false;         // polygon of one or more parts
    bool isEllipse = false;        // read side only
    bool isRect = false;           // read side only
    bool isRoundRect = false;      // read side only
    bool unnamedFlag = false;      // never set
    bool isArc = false;            // read side only
    bool hasCenter = false;        // read side only: a Center clause followed
    bool isText = false;           // text object
    bool isMultiPoint = false;     // multipoint
    bool isWritten = false;        // the SHP record header is out
    int32_t np = 1;                // count from a Pline Multiple or MultiPoint statement
    int32_t nr = 1;                // number of parts
    // On writing, ir[p] is the position in gisX/gisY (from 1) of the first point
    // of part p; on reading it is the last given point of part p.
    int32_t ir[kGisMaxParts + 2] = {0, 1};
    Text<24> type;  // object type name in words
};

// Attribute table of the layer being written or read last.
struct GisAttributes {
    int32_t n = 0;                              // number of attributes
    int32_t width[kGisMaxAttributes + 1] = {};  // 0 or less: the type takes no width
    Text<32> name[kGisMaxAttributes + 1];
    Text<24> type[kGisMaxAttributes + 1];  // Char, Float, Integer, Decimal, Logical
    int32_t nrecords = 0;                  // record count for a .dbf header
};

// MIF family state of one layer.
struct GisMifState {
    Text<1000> line;   // current .mif line when reading
    Text<1000> line2;  // reader's working copy
    int32_t mifUnit = 0;
    int32_t midUnit = 0;  // the .csv where a .csv is the layer
    Text<256> style1;     // written behind each object when not blank
    Text<256> style2;
    int32_t attributeCount = 0;
    Text<32> attributeNames[kGisMaxAttributes + 1];
    Text<24> attributeTypes[kGisMaxAttributes + 1];
};

// SHP sub-file state of one set (ShpSet).
struct GisShpState {
    int32_t shpUnitLE = 0, shpUnitBE = 0;
    int32_t shxUnitLE = 0, shxUnitBE = 0;
    int32_t prjUnit = 0;
    int32_t fileCode = 0;
    int32_t fileLength = 0;  // in 16-bit words
    int32_t version = 0;
    int32_t shapeType = 0;
    int32_t recordShapeType = 0;
    int32_t recordNumber = 0;
    int32_t nextOffset = 0;  // in 16-bit words
    double xmin = 0.0, ymin = 0.0, xmax = -1.0, ymax = -1.0;
};

// DBF table state, one for each SHP set.
struct GisDbfState {
    int32_t dbfUnit = 0;
    int32_t recordCount = 0;
    int32_t writtenCount = 0;  // records written (or read) so far
    int32_t fieldCount = 0;
    int32_t recordLength = 0;  // sum of widths, deletion byte not counted
    int32_t widths[kDbfMaxFields + 1] = {};
    int32_t decimals[kDbfMaxFields + 1] = {};
    Text<11> names[kDbfMaxFields + 1];
    char types[kDbfMaxFields + 1] = {};
};

// ---- The layer table, indexed by gisID 1..100 -----------------------------
extern int32_t gisFormat[kGisMaxLayers + 1];  // GisFamily: none (unusable), MIF or SHP
extern bool gisIsOpen[kGisMaxLayers + 1];
extern Text<1000> gisLayerName[kGisMaxLayers + 1];
extern bool gisIsOutput[kGisMaxLayers + 1];
extern bool gisAtEnd[kGisMaxLayers + 1];
extern int32_t gisInputIndex[kGisMaxLayers + 1];
extern LazyArray<GisMifState, kGisMaxLayers + 1> gisMif;
extern GisShpState gisShp[kGisMaxLayers + 1][kShpSetRegions + 1];                      // by ShpSet, points .. regions
extern LazyArray<LazyRow<GisDbfState, kShpSetRegions + 1>, kGisMaxLayers + 1> gisDbf;  // by ShpSet, points .. regions

// ---- Shared buffers --------------------------------------------------------
extern GisObject gisO_;
extern int32_t gisN;
extern double gisX[kGisMaxPoints + 1];
extern double gisY[kGisMaxPoints + 1];
extern GisAttributes gisA_;
extern Text<1000> gisRecordLine;
extern Text<100000> gisRecordLineLarge;
extern Text<16> gisShapeTypeNames[33];  // by shape type 0..32

// ---- Settings shared by the library ----------------------------------------
extern Text<1000> gisCoordSysLine;   // CoordSys line of every .mif written
extern Text<1000> gisPrjLine;        // line of every .prj written
extern Text<1000> gisMifProjection;  // reference for the .mif projection check
extern Text<1000> gisShpProjection;  // reference for the .prj projection check
extern bool gisProjectionCheckIsError;
extern bool gisSaveDateCheck;
extern bool gisSaveDateCheckIsError;  // a failed save-date check holds the run (else warns)
// Extension of the file that an input .mif/.mid pair is held against by the
// save-date check.
inline constexpr std::string_view kGisSaveDateExtension = ".tab";
extern LazyArray<Text<1000>, kGisMaxInputLayers + 2> gisInputLayers;
extern int32_t gisInputLayerCount;
extern int32_t gisLogUnit;
extern Text<1000> gisMessageLine[5];  // lines 1..4
// Record files of the input layers: 0 until gisInitialiseLibrary, -1 when it
// asked for none.
extern int32_t gisWorkspaceUnit;
extern int32_t gisInputLayersMifUnit;
extern int32_t gisInputLayersMidUnit;

// Puts a slot back to its reset state (gisIsOpen is not touched).
void gisInitialiseLayer(int32_t gisID);
// Empties an object: kind flags false (isWritten stays), np, nr and ir[1] 1,
// type blank. gisN, gisX and gisY stay.
void gisClearObject(GisObject& object);
// Writes `blankLines` empty lines, then the non-blank message lines, to the
// console and, when gisLogUnit is above 0, to the log. Does not stop or clear.
void gisMessageOut(int32_t blankLines);
// Sets gisMessageLine(1) to `line` and lines 2..4 blank.
void gisSetMessage(std::string_view line);
