// The console: standard output for every message, standard input for the
// few answers a person gives, the error stream for direct stops.
//
// Output is buffered; it is flushed before any read of standard input, before
// a stop, and when the process ends through the exit routines.
#pragma once

#include <string_view>

#include "text/text.hpp"

void conWrite(std::string_view s);  // no line end
void conLine(std::string_view s);   // text and a line end
void conBlank();                    // an empty line
void conFlush();

// One line of standard input, line end (and a CR before it) removed, cut to
// the capacity. False at the end of standard input; `line` is then blank.
bool conReadLine(TextRef line);

// A direct stop: writes `text` as a line on the error stream, flushes what
// the file units hold so that written data stays on disk, and ends the
// process with status 0. It closes nothing else and does not pause.
[[noreturn]] void stopRun(std::string_view text);

// Part of runtimeReset, after a conFlush: the buffers emptied (pending output
// dropped) and standard input read afresh.
void consoleReset();
