// Pieces shared by the runtime's own sources at its lowest level; not for
// other subsystems. The console and the unit input read lines with it.
#pragma once

#include <cstddef>

#include "text/text.hpp"

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
