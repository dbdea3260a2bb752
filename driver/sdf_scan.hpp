// Scanning of an SDF file: the state shared by the stream phase and the
// section phase, the section record, the keywords, and the stream phase.
// The section phase is in section_parser.hpp.
//
// The scanner reads one line at a time into one buffer, `textLine`, and looks
// for keywords anywhere in it; lines with no known keyword are skipped. There
// is no look-ahead: a block reader leaves the line that ended its block in
// `textLine` for the next keyword test.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/freeformat.hpp"
#include "text/text.hpp"

constexpr int kSdfMaxRows = 100000;  // rows of a cut line, n table or surface line
constexpr int kSdfMaxLevees = 100;   // rows of a levee block

extern int32_t sdfUnit;      // the open SDF file, read forward once
extern Text<1000> textLine;  // the current line
extern int32_t lineNumber;   // 1-based number of the line in textLine

// The data of the current cross-section; one instance, reused.
struct SectionRecord {
    Text<1000> streamId;  // shared with the stream phase
    Text<1000> reachId;
    Text<1000> stationText;

    bool hasCutLine = false;
    int32_t cutCount = 0;
    double cutX[kSdfMaxRows + 1];
    double cutY[kSdfMaxRows + 1];

    bool hasNValues = false;
    int32_t nValueCount = 0;
    float nValueStation[kSdfMaxRows + 1];
    float nValue[kSdfMaxRows + 1];

    bool hasLevees = false;
    int32_t leveeCount = 0;
    Text<50> leveeName[kSdfMaxLevees + 1];
    float leveeStation[kSdfMaxLevees + 1];
    float leveeElevation[kSdfMaxLevees + 1];

    bool hasSurfaceLine = false;
    int32_t surfCount = 0;
    double surfX[kSdfMaxRows + 1];
    double surfY[kSdfMaxRows + 1];
    float surfZ[kSdfMaxRows + 1];
};
extern SectionRecord sectionRecord;

// The keywords of the scan, found anywhere in a line with FLAGEXISTS.
namespace sdfKey {
constexpr std::string_view beginNetwork = "BEGINSTREAMNETWORK";
constexpr std::string_view reach = "REACH:";
constexpr std::string_view centreline = "CENTERLINE";
constexpr std::string_view endNetwork = "END STREAM NETWORK";
constexpr std::string_view endNetworkJoined = "ENDSTREAMNETWORK";
constexpr std::string_view streamId = "STREAM ID:";
constexpr std::string_view reachId = "REACH ID:";
constexpr std::string_view station = "STATION:";
constexpr std::string_view beginSections = "BEGIN CROSS-SECTIONS:";
constexpr std::string_view section = "CROSS-SECTION:";
constexpr std::string_view cutLine = "CUT LINE";
constexpr std::string_view nValues = "NVALUES";
constexpr std::string_view levees = "LEVEE POSITIONS";
constexpr std::string_view surfaceLine = "SURFACE LINE";
constexpr std::string_view end = "END:";
constexpr std::string_view endSections = "END CROSS-SECTIONS";
}  // namespace sdfKey

// x and y of a vertex or cut line row; `end` when the line runs out first.
ReadResult readXY(std::string_view line, double& x, double& y);

// The scanner's state as in a fresh process: no unit, no line, an empty record.
void sdfScanReset();

// Reads the next line into the scanner's own textLine and counts it in
// lineNumber; the end of the file inside a block stops in order (see
// readLineOrStop).
void readSdfLine(std::string_view where);

// A log line of the scan: an empty line, then `what` and the line number.
void logLine(std::string_view what, int32_t n);

// The value behind the first colon of textLine, trailing blanks cut; leading
// blanks stay part of it.
void takeValue(TextRef out);

// Reads the two id lines that follow REACH: and CROSS-SECTION: (`where`
// names the block): each value is taken when its keyword is there, else the
// old value stays and the line is logged.
void readIdLines(std::string_view where);

// Reads x and y of a vertex line; a bad line ends the run.
void readVertex(double& x, double& y);

// The stream phase: from the first line to the end of the stream network,
// writing one polyline per CENTERLINE to the streams layer.
void runStreamPhase(int32_t streamsLayer);
