#include "driver/sdf_scan.hpp"

#include <cstring>

#include "driver/stops.hpp"

#include "gis/gis.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
#include "text/linebuf.hpp"
#include "text/strings.hpp"

int32_t sdfUnit = 0;
Text<1000> textLine;
int32_t lineNumber = 0;
SectionRecord sectionRecord;

void sdfScanReset() {
    sdfUnit = 0;
    textLine.clear();
    lineNumber = 0;
    // In place: the record is too large for a temporary.
    SectionRecord& r = sectionRecord;
    r.streamId.clear();
    r.reachId.clear();
    r.stationText.clear();
    r.hasCutLine = r.hasNValues = r.hasLevees = r.hasSurfaceLine = false;
    r.cutCount = r.nValueCount = r.leveeCount = r.surfCount = 0;
    for (auto& t : r.leveeName) t.clear();
    auto zero = [](auto& table) { std::memset(table, 0, sizeof table); };
    zero(r.cutX);
    zero(r.cutY);
    zero(r.nValueStation);
    zero(r.nValue);
    zero(r.leveeStation);
    zero(r.leveeElevation);
    zero(r.surfX);
    zero(r.surfY);
    zero(r.surfZ);
}

void readSdfLine(std::string_view where) { readLineOrStop(sdfUnit, lineNumber, textLine, where); }

void takeValue(TextRef out) {
    std::string_view t = textLine.trimmed();
    std::size_t colon = t.find(':');
    if (colon == std::string_view::npos) {
        out.clear();
        return;
    }
    out.assign(t.substr(colon + 1));
}

void logLine(std::string_view what, int32_t n) {
    conBlank();
    conLine(lineText(what, n));
}

namespace {

[[noreturn]] void badVertexLine(ReadResult r) {
    if (r != ReadResult::end) stopOnLine("ERROR - Reading following line in file:", textLine.trimmed());
    conBlank();
    conLine("ERROR reading data");
    conBlank();
    EXITS();
}

// x, y of one centreline vertex straight into the coordinate buffer.
void readCentreline() {
    int32_t count = 0;
    for (;;) {
        readSdfLine("a CENTERLINE vertex list");
        if (FLAGEXISTS(textLine, sdfKey::end)) break;
        ++count;
        if (count > kGisMaxPoints)
            stopWith(
                lineText("ERROR - More than ", kGisMaxPoints,
                         " vertices in one CENTERLINE, more than a layer object holds. Line number: ", lineNumber));
        readVertex(gisX[count], gisY[count]);
    }
    gisN = count;
}

}  // namespace

ReadResult readXY(std::string_view line, double& x, double& y) {
    FreeFormat f(line);
    ReadResult r = f.real8(x);
    if (r == ReadResult::ok) r = f.real8(y);
    return r;
}

void readVertex(double& x, double& y) {
    ReadResult r = readXY(textLine.view(), x, y);
    if (r != ReadResult::ok) badVertexLine(r);
}

void readIdLines(std::string_view where) {
    SectionRecord& rec = sectionRecord;
    readSdfLine(where);
    if (FLAGEXISTS(textLine, sdfKey::streamId)) takeValue(rec.streamId);
    else logLine("Error Expecting Stream ID: on ", lineNumber);
    readSdfLine(where);
    if (FLAGEXISTS(textLine, sdfKey::reachId)) takeValue(rec.reachId);
    else logLine("Error Expecting REACH ID: on ", lineNumber);
}

void runStreamPhase(int32_t streamsLayer) {
    const SectionRecord& rec = sectionRecord;
    bool finished = false;
    // The first line is read but never interpreted.
    if (unitAtEnd(sdfUnit)) return;
    readSdfLine("the first line");
    while (!finished && !unitAtEnd(sdfUnit)) {
        readSdfLine("the stream network");
        if (FLAGEXISTS(textLine, sdfKey::beginNetwork)) logLine("Found BEGINSTREAMNETWORK on line ", lineNumber);
        if (FLAGEXISTS(textLine, sdfKey::reach)) {
            logLine("Found start of reach block on line ", lineNumber);
            readIdLines("a reach block");
        }
        if (FLAGEXISTS(textLine, sdfKey::centreline)) {
            logLine("Found CENTERLINE on line ", lineNumber);
            readCentreline();
            // An attribute text longer than the record line is cut there.
            gisRecordLine = lineText("\"", rec.streamId.trimmed(), "\",\"", rec.reachId.trimmed(), "\"");
            gisWriteObject(streamsLayer, gisO_);
            gisWriteRecord(streamsLayer, gisO_);
        }
        if (FLAGEXISTS(textLine, sdfKey::endNetwork) || FLAGEXISTS(textLine, sdfKey::endNetworkJoined)) {
            logLine("Found ENDSTREAMNETWORK on line ", lineNumber);
            finished = true;
        }
    }
}
