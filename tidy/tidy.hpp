// sdftidy's model of the converter: it walks an SDF file with the
// converter's own keyword tests, block rules, id and station rules, predicts
// what a run makes of it, and, where the file's structure shows what was
// meant, repairs it so that the converter reads all of it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tidy/sdf_lines.hpp"

// Kinds of findings, in the order the README groups them.
enum class Kind {
    strayKeyword,   // a line that holds a keyword it is not labelled with
    headLines,      // blank, extra or missing lines in a reach or section head
    swallowedLine,  // a block's rows run on into a keyword or text line
    lostBlock,      // a block the scanner passes over because of the order of blocks
    noElevation,    // a surface row without a usable elevation
    missingEnd,     // a section without its END: line
    badRow,         // a row or vertex the converter cannot read, with no repair
    unsafeName,     // an id that makes an unsafe .csv name
    quoteInId,      // an id with a double quote or a comma
    longIds,        // ids that run past the 1000-byte record line
    asterisks,      // a value that fills a fixed-width field with asterisks
    nameCollision,  // two sections with the same .csv name
};
const char* kindName(Kind k);

struct Finding {
    int32_t line = 0;  // line number in the input
    Kind kind = Kind::badRow;
    std::string effect;  // what the converter does with the line
    std::string repair;  // what the repaired copy changes; empty when nothing
};

// What a run writes: objects or points per layer, .csv files, and how many
// reaches and sections it goes through.
struct LayerCounts {
    int64_t reaches = 0;   // centrelines written
    int64_t sections = 0;  // sections processed at their END: line
    int64_t csv = 0;
    int64_t surfPts = 0;
    int64_t endPts = 0;
    int64_t surfLine = 0;
    int64_t cutLine = 0;
    int64_t leveePts = 0;
};

struct Outcome {
    bool finished = true;
    int32_t line = 0;     // the line the run stops at
    std::string message;  // the converter's first line of the stop
    std::string quoted;   // the line it quotes behind the message, if any
};

struct TidyOptions {
    bool safeNames = false;  // also repair ids that make unsafe names or shift attribute values
    bool trim = true;        // count points as a run without -notrim does
};

struct TidyResult {
    Outcome before;           // the converter on the file as it is
    Outcome after;            // and on the repaired copy
    LayerCounts counts;       // what the repaired copy gives
    int64_t findings = 0;     // findings passed to the report
    int64_t droppedRows = 0;  // surface rows without an elevation left out
    bool changed = false;     // the repaired copy differs from the input
};

// Checks the SDF file at `path` (see checkSdfFile) in one forward walk that
// repairs as it goes: each finding goes to `report` as it is found, and the
// repaired copy to `copy`, when there is one, as it is produced. The walk
// reads the repaired lines as the converter reads the copy, so the outcome
// and counts on the copy come from the walk itself; only when a repair
// changed the file is it read a second time, for the outcome on the file as
// it is. Throws TidyIoError when a read or write fails part-way.
TidyResult tidySdf(const std::string& path, const TidyOptions& options, CopyWriter* copy,
                   const std::function<void(const Finding&)>& report);
