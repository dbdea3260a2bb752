// Pieces shared by the runtime's own sources; not for other subsystems.
#pragma once

#include "text/linebuf.hpp"

// Closes every open file unit (slots first, then the pool) without a report,
// ignoring errors and leaving the opened flags alone. Used by EXITS.
void unitCloseAllQuietly();

// The parts of runtimeReset: every unit closed (pending output written) and
// the tables as in a fresh process; the console's buffers emptied and
// standard input read afresh.
void unitsReset();
void consoleReset();

// One line gathered from buffered input that may arrive in pieces: the bytes
// up to the line end, cut at the text's capacity, a CR in front of the LF
// dropped, the rest of the text blanked.
struct LineGatherer {
    explicit LineGatherer(TextRef l) : line(l), oldHi(*l.hi) {}
    // Takes bytes from [p, p + avail); returns how many it used, LF included,
    // and sets `ended` when the line end was among them.
    std::size_t take(const char* p, std::size_t avail, bool& ended);
    // Puts the gathered line in place.
    void finish();

    TextRef line;
    int oldHi;
    int stored = 0;
    std::size_t raw = 0;
    bool lastCR = false;
};
