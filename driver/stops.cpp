#include "driver/stops.hpp"

#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/linebuf.hpp"

void stopWith(std::string_view message) {
    conBlank();
    conLine(message);
    EXITS();
}

void stopOnLine(std::string_view message, std::string_view line) {
    conBlank();
    conLine(message);
    conBlank();
    conLine(line);
    conBlank();
    EXITS();
}

void readLineOrStop(int32_t unit, int32_t& lineNo, TextRef line, std::string_view where) {
    ++lineNo;
    IoStatus st = unitReadLine(unit, line);
    if (st == IoStatus::ok) return;
    // The file ended (or could not be read) where the block still needs lines:
    // nothing sound can be made of the rest, so stop in order.
    line.clear();
    if (st == IoStatus::end)
        stopWith(lineText("ERROR - Unexpected end of file inside ", where, " (after line ", lineNo - 1, ")."));
    stopWith(lineText("ERROR - Could not read line ", lineNo, " of the SDF file inside ", where, "."));
}
