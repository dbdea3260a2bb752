// The section phase: gathers the blocks of each cross-section into
// sectionRecord and hands it over at the section's END: line.
#include "text/linebuf.hpp"
#include "driver/sdf_scan.hpp"
#include "driver/section_export.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
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

}  // namespace

void GetSdfCutline(int32_t unit, double* cutX, double* cutY, int32_t& cutCount, int32_t& lineNo, TextRef line) {
    cutCount = 0;
    for (;;) {
        readLineOrStop(unit, lineNo, line, "a CUT LINE block");
        if (NUMBEROFNUMBERS(line) == 0) return;
        ++cutCount;
        if (cutCount <= kSdfMaxRows) {
            FreeFormat f(line.view());
            ReadResult r = f.real8(cutX[cutCount]);
            if (r == ReadResult::ok) r = f.real8(cutY[cutCount]);
            if (r != ReadResult::ok) badRow("GetSdfCutline", line);
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
        if (NUMBEROFNUMBERS(line) == 0) return;
        if (nValueCount == kSdfMaxRows) tooManyRows("NVALUES", kSdfMaxRows, lineNo);
        ++nValueCount;
        FreeFormat f(line.view());
        ReadResult r = f.real4(nValueStation[nValueCount]);
        if (r == ReadResult::ok) r = f.real4(nValue[nValueCount]);
        if (r != ReadResult::ok) badRow("GetSdfnVals", line);
    }
}

void GetSdfSurfaceLine(int32_t unit, int32_t& surfCount, double* surfX, double* surfY, float* surfZ, int32_t& lineNo,
                       TextRef line) {
    surfCount = 0;
    for (;;) {
        readLineOrStop(unit, lineNo, line, "a SURFACE LINE block");
        if (NUMBEROFNUMBERS(line) <= 0) return;
        if (surfCount == kSdfMaxRows) tooManyRows("SURFACE LINE", kSdfMaxRows, lineNo);
        ++surfCount;
        FreeFormat f(line.view());
        ReadResult r = f.real8(surfX[surfCount]);
        if (r == ReadResult::ok) r = f.real8(surfY[surfCount]);
        if (r == ReadResult::ok) r = f.real4(surfZ[surfCount]);
        if (r != ReadResult::ok) badRow("GetSdfSurfaceLine", line);
    }
}

void GetSdfLevees(int32_t unit, int32_t& leveeCount, Text<50>* leveeName, float* leveeStation, float* leveeElevation,
                  int32_t& lineNo, TextRef line) {
    leveeCount = 0;
    for (;;) {
        readLineOrStop(unit, lineNo, line, "a LEVEE POSITIONS block");
        std::string_view t = line.trimmed();
        // A colon ends the block: the next keyword line normally does.
        if (t.find(':') != std::string_view::npos) break;
        if (leveeCount == kSdfMaxLevees) tooManyRows("LEVEE POSITIONS", kSdfMaxLevees, lineNo);
        ++leveeCount;
        const std::size_t c1 = t.find(',');
        const std::size_t c2 = c1 == std::string_view::npos ? c1 : t.find(',', c1 + 1);
        // No comma or one comma only: a piece to be read is missing.
        if (c2 == std::string_view::npos) badRow("GetSdfLevees", line);
        if (FreeFormat(t.substr(0, c1)).text(leveeName[leveeCount]) != ReadResult::ok) badRow("GetSdfLevees", line);
        if (FreeFormat(t.substr(c1 + 1, c2 - c1 - 1)).real4(leveeStation[leveeCount]) != ReadResult::ok)
            badRow("GetSdfLevees", line);
        std::string_view rest = t.substr(c2 + 1);
        if (NUMBEROFNUMBERS(rest) > 0) {
            if (FreeFormat(rest).real4(leveeElevation[leveeCount]) != ReadResult::ok) badRow("GetSdfLevees", line);
        } else {
            conBlank();
            conLine(lineText("WARNING - No levee height specified.  Line number: ", lineNo));
            leveeElevation[leveeCount] = 9999.0f;
        }
    }
    if (leveeCount == 0) {
        logLine("WARNING - No levee points detected. Line number: ", lineNo);
    } else if (leveeCount == 1) {
        logLine("WARNING - Only one levee points detected for section. Line number: ", lineNo);
    } else if (leveeCount >= 3) {
        logLine("WARNING - More than two levee points detected for section. Line number: ", lineNo);
    }
}

void runSectionPhase(bool trimToLevees, const SectionLayers& layers) {
    SectionRecord& rec = sectionRecord;
    bool finished = false;
    while (!finished && !unitAtEnd(sdfUnit)) {
        readSdfLine("the cross-sections");
        if (FLAGEXISTS(textLine, "BEGIN CROSS-SECTIONS:")) logLine("Found BEGIN CROSS-SECTIONS: on line ", lineNumber);
        if (FLAGEXISTS(textLine, "CROSS-SECTION:")) {
            logLine("Found new cross-section on line ", lineNumber);
            readIdLines("a cross-section head");
            readSdfLine("a cross-section head");
            if (FLAGEXISTS(textLine, "STATION:")) {
                // A star marks the station; the line is cut in front of it.
                std::string_view t = textLine.view();
                std::size_t star = t.find('*');
                if (star != std::string_view::npos) textLine = t.substr(0, star);
                takeValue(rec.stationText);
            } else {
                logLine("Error Expecting STATION: on ", lineNumber);
            }
        }
        if (FLAGEXISTS(textLine, "CUT LINE")) {
            rec.hasCutLine = true;
            GetSdfCutline(sdfUnit, rec.cutX, rec.cutY, rec.cutCount, lineNumber, textLine);
        }
        if (FLAGEXISTS(textLine, "NVALUES")) {
            rec.hasNValues = true;
            GetSdfnVals(sdfUnit, rec.nValue, rec.nValueStation, rec.nValueCount, lineNumber, textLine);
        }
        if (FLAGEXISTS(textLine, "LEVEE POSITIONS")) {
            logLine("Found LEVEE POSITIONS on line ", lineNumber);
            rec.hasLevees = true;
            GetSdfLevees(sdfUnit, rec.leveeCount, rec.leveeName, rec.leveeStation, rec.leveeElevation, lineNumber,
                         textLine);
            if (!trimToLevees) rec.hasLevees = false;
        }
        if (FLAGEXISTS(textLine, "SURFACE LINE")) {
            logLine("Found SURFACE LINE on line ", lineNumber);
            rec.hasSurfaceLine = true;
            GetSdfSurfaceLine(sdfUnit, rec.surfCount, rec.surfX, rec.surfY, rec.surfZ, lineNumber, textLine);
        }
        if (FLAGEXISTS(textLine, "END:")) {
            conBlank();
            conLine("End of section processing... ");
            Process_sdf_Sections(rec, layers.surfPts, layers.surfLine, layers.cutLine, layers.leveePts, layers.endPts);
            rec.hasCutLine = rec.hasNValues = rec.hasLevees = rec.hasSurfaceLine = false;
        }
        if (FLAGEXISTS(textLine, "END CROSS-SECTIONS")) {
            logLine("Found END CROSS-SECTIONS on line ", lineNumber);
            finished = true;
        }
        if (FLAGEXISTS(textLine, "ENDSTREAMNETWORK")) {
            logLine("Found ENDSTREAMNETWORK on line ", lineNumber);
            finished = true;
        }
    }
}
