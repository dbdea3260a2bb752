// The section phase: gathers the blocks of each cross-section into
// sectionRecord and hands it over at the section's END: line.
#include "driver/section_parser.hpp"

#include "driver/rows_ahead.hpp"
#include "driver/sdf_scan.hpp"
#include "driver/section_export.hpp"
#include "driver/stops.hpp"
#include "gis/model/gis_model.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
#include "text/linebuf.hpp"
#include "text/strings.hpp"
#include "text/support.hpp"

namespace {

[[noreturn]] void badRow(std::string_view routine, TextRef line) {
    stopOnLine(lineText("ERROR - Reading following line in file in sub ", routine), line.trimmed());
}

// The tables hold a fixed number of rows; a block with more stops in order
// rather than write past them.
[[noreturn]] void tooManyRows(std::string_view block, int limit, int32_t lineNo) {
    stopWith(lineText("ERROR - More than ", limit, " rows in a ", block,
                      " block, more than the section tables hold. Line number: ", lineNo));
}

// Below this many bytes the second thread costs about what it saves: a
// model of a few megabytes converts in some 20 ms either way.
constexpr int64_t kReadAheadFrom = int64_t{16} << 20;

}  // namespace

bool endsValueBlock(std::string_view line) { return NUMBEROFNUMBERS(line) == 0; }
bool endsSurfaceBlock(std::string_view line) { return NUMBEROFNUMBERS(line) <= 0; }
// A colon ends the block: the next keyword line normally does.
bool endsLeveeBlock(std::string_view line) { return trimmed(line).find(':') != std::string_view::npos; }

bool readNValueRow(std::string_view line, float& station, float& n) {
    FreeFormat f(line);
    ReadResult r = f.real4(station);
    if (r == ReadResult::ok) r = f.real4(n);
    return r == ReadResult::ok;
}

bool readSurfaceRow(std::string_view line, double& x, double& y, float& z) {
    FreeFormat f(line);
    ReadResult r = f.real8(x);
    if (r == ReadResult::ok) r = f.real8(y);
    if (r == ReadResult::ok) r = f.real4(z);
    return r == ReadResult::ok;
}

bool readLeveeRow(std::string_view line, TextRef name, float& station, float& elevation, bool& noHeight) {
    const std::string_view t = trimmed(line);
    const std::size_t c1 = t.find(',');
    const std::size_t c2 = c1 == std::string_view::npos ? c1 : t.find(',', c1 + 1);
    // No comma or one comma only: a piece to be read is missing.
    if (c2 == std::string_view::npos) return false;
    if (FreeFormat(t.substr(0, c1)).text(name) != ReadResult::ok) return false;
    if (FreeFormat(t.substr(c1 + 1, c2 - c1 - 1)).real4(station) != ReadResult::ok) return false;
    const std::string_view rest = t.substr(c2 + 1);
    noHeight = NUMBEROFNUMBERS(rest) <= 0;
    if (noHeight) {
        elevation = 9999.0f;
        return true;
    }
    return FreeFormat(rest).real4(elevation) == ReadResult::ok;
}

void takeStation(TextRef out) {
    // A star marks the station; the line is cut in front of it.
    std::string_view t = textLine.view();
    std::size_t star = t.find('*');
    if (star != std::string_view::npos) textLine = t.substr(0, star);
    takeValue(out);
}

void GetSdfCutline(int32_t unit, double* cutX, double* cutY, int32_t& cutCount, int32_t& lineNo, TextRef line) {
    cutCount = 0;
    for (;;) {
        readLineOrStop(unit, lineNo, line, "a CUT LINE block");
        if (endsValueBlock(line)) return;
        ++cutCount;
        if (cutCount <= kSdfMaxRows) {
            if (readXY(line.view(), cutX[cutCount], cutY[cutCount]) != ReadResult::ok) badRow("GetSdfCutline", line);
        } else {
            // The count goes on; the section export uses no more points than the table holds.
            conBlank();
            conLine("ERROR - Exceeeded limit of 100,000 cut lines. Contact " REACHMAP_SUPPORT);
        }
    }
}

void GetSdfnVals(int32_t unit, float* nValue, float* nValueStation, int32_t& nValueCount, int32_t& lineNo,
                 TextRef line) {
    nValueCount = 0;
    for (;;) {
        readLineOrStop(unit, lineNo, line, "an NVALUES block");
        if (endsValueBlock(line)) return;
        if (nValueCount == kSdfMaxRows) tooManyRows("NVALUES", kSdfMaxRows, lineNo);
        ++nValueCount;
        if (!readNValueRow(line.view(), nValueStation[nValueCount], nValue[nValueCount])) badRow("GetSdfnVals", line);
    }
}

void GetSdfSurfaceLine(int32_t unit, int32_t& surfCount, double* surfX, double* surfY, float* surfZ, int32_t& lineNo,
                       TextRef line) {
    surfCount = 0;
    for (;;) {
        // Rows made ready ahead, as long as one starts where the reading stands.
        if (const ReadyRow* r = rowsAheadAt(unitTell(unit)); r != nullptr) {
            int64_t next = 0;
            for (; r != nullptr; r = rowsAheadAt(next)) {
                ++lineNo;
                if (surfCount == kSdfMaxRows) tooManyRows("SURFACE LINE", kSdfMaxRows, lineNo);
                ++surfCount;
                surfX[surfCount] = r->x;
                surfY[surfCount] = r->y;
                surfZ[surfCount] = r->z;
                surfTexts[surfCount] = r->texts;
                next = r->next;
            }
            unitSeek(unit, next);
        }
        double x, y;
        float z;
        bool plain;
        std::string_view row;
        if (unitTakeBufferedLine(unit, static_cast<std::size_t>(line.capacity()), row)) {
            // The usual row is read where it lies in the read buffer; only a
            // row that needs more than that is copied into the line.
            ++lineNo;
            plain = plainSurfaceRow(trimmed(row), x, y, z);
            if (!plain) line.assign(row);
        } else {
            readLineOrStop(unit, lineNo, line, "a SURFACE LINE block");
            plain = plainSurfaceRow(line.view(), x, y, z);
        }
        if (!plain && endsSurfaceBlock(line)) return;
        if (surfCount == kSdfMaxRows) tooManyRows("SURFACE LINE", kSdfMaxRows, lineNo);
        ++surfCount;
        surfTexts[surfCount].ready = false;
        if (plain) {
            surfX[surfCount] = x;
            surfY[surfCount] = y;
            surfZ[surfCount] = z;
        } else if (!readSurfaceRow(line.view(), surfX[surfCount], surfY[surfCount], surfZ[surfCount])) {
            badRow("GetSdfSurfaceLine", line);
        }
    }
}

void GetSdfLevees(int32_t unit, int32_t& leveeCount, Text<50>* leveeName, float* leveeStation, float* leveeElevation,
                  int32_t& lineNo, TextRef line) {
    leveeCount = 0;
    for (;;) {
        readLineOrStop(unit, lineNo, line, "a LEVEE POSITIONS block");
        if (endsLeveeBlock(line)) break;
        if (leveeCount == kSdfMaxLevees) tooManyRows("LEVEE POSITIONS", kSdfMaxLevees, lineNo);
        ++leveeCount;
        bool noHeight = false;
        if (!readLeveeRow(line.view(), leveeName[leveeCount], leveeStation[leveeCount], leveeElevation[leveeCount],
                          noHeight))
            badRow("GetSdfLevees", line);
        if (noHeight) {
            conBlank();
            conLine(lineText("WARNING - No levee height specified.  Line number: ", lineNo));
        }
    }
    if (leveeCount == 0) {
        logLine("WARNING - No levee points detected. Line number: ", lineNo);
    } else if (leveeCount == 1) {
        // "points" with one point: the wording is kept as printed always.
        logLine("WARNING - Only one levee points detected for section. Line number: ", lineNo);
    } else if (leveeCount >= 3) {
        logLine("WARNING - More than two levee points detected for section. Line number: ", lineNo);
    }
}

void runSectionPhase(bool trimToLevees, const SectionLayers& layers) {
    SectionRecord& rec = sectionRecord;
    // Large files have their surface rows read ahead on a second core.
    RowsAheadScope ahead;
    rowsAheadStart(sdfUnit, kReadAheadFrom, gisFormat[layers.surfLine] == kGisFamilyMif);
    bool finished = false;
    while (!finished && !unitAtEnd(sdfUnit)) {
        readSdfLine("the cross-sections");
        if (FLAGEXISTS(textLine, sdfKey::beginSections)) logLine("Found BEGIN CROSS-SECTIONS: on line ", lineNumber);
        if (FLAGEXISTS(textLine, sdfKey::section)) {
            logLine("Found new cross-section on line ", lineNumber);
            readIdLines("a cross-section head");
            readSdfLine("a cross-section head");
            if (FLAGEXISTS(textLine, sdfKey::station)) {
                takeStation(rec.stationText);
            } else {
                logLine("Error Expecting STATION: on ", lineNumber);
            }
        }
        if (FLAGEXISTS(textLine, sdfKey::cutLine)) {
            rec.hasCutLine = true;
            GetSdfCutline(sdfUnit, rec.cutX, rec.cutY, rec.cutCount, lineNumber, textLine);
        }
        if (FLAGEXISTS(textLine, sdfKey::nValues)) {
            rec.hasNValues = true;
            GetSdfnVals(sdfUnit, rec.nValue, rec.nValueStation, rec.nValueCount, lineNumber, textLine);
        }
        if (FLAGEXISTS(textLine, sdfKey::levees)) {
            logLine("Found LEVEE POSITIONS on line ", lineNumber);
            rec.hasLevees = true;
            GetSdfLevees(sdfUnit, rec.leveeCount, rec.leveeName, rec.leveeStation, rec.leveeElevation, lineNumber,
                         textLine);
            if (!trimToLevees) rec.hasLevees = false;
        }
        if (FLAGEXISTS(textLine, sdfKey::surfaceLine)) {
            logLine("Found SURFACE LINE on line ", lineNumber);
            rec.hasSurfaceLine = true;
            GetSdfSurfaceLine(sdfUnit, rec.surfCount, rec.surfX, rec.surfY, rec.surfZ, lineNumber, textLine);
        }
        if (FLAGEXISTS(textLine, sdfKey::end)) {
            conBlank();
            conLine("End of section processing... ");
            Process_sdf_Sections(rec, layers.surfPts, layers.surfLine, layers.cutLine, layers.leveePts, layers.endPts);
            rec.hasCutLine = rec.hasNValues = rec.hasLevees = rec.hasSurfaceLine = false;
        }
        if (FLAGEXISTS(textLine, sdfKey::endSections)) {
            logLine("Found END CROSS-SECTIONS on line ", lineNumber);
            finished = true;
        }
        if (FLAGEXISTS(textLine, sdfKey::endNetworkJoined)) {
            logLine("Found ENDSTREAMNETWORK on line ", lineNumber);
            finished = true;
        }
    }
}
