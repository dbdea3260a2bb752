// Pieces shared by the unit tables (units.cpp), their dialogues and copy mode
// (dialogues.cpp) and the console helpers (console_helpers.cpp); internal to
// the runtime.
#pragma once

#include <string_view>

#include "text/text.hpp"

namespace tables {

// A report: to the console and, when a log unit is set, to the log as well,
// in the same words, with a blank line before it and a line end as asked.
void report(std::string_view s, bool blankBefore, bool lineEnd);
// The title of every dialogue: the application name, a blank, the run name.
std::string_view title();
// A dialogue answered with Cancel stops the run.
[[noreturn]] void cancelled();
// Length of a text whose padding may be blanks or NULs.
int paddedLength(std::string_view s);

// The dialogues of the open loop (OPENERCORE). Each either returns, for the
// loop to go on as its comment says, or ends the run.

// Getting a name: from the person, or a dialogue that offers to try again.
void askForName(TextRef name, std::string_view kind);
// An output file found open on another unit: true when that unit is to be
// closed, false when the person wants another name instead.
bool agreeToClose(std::string_view name);
// The open failed: tells why and waits until the open should be tried again
// (on the console a pause, in message-box mode a retry or a folder made).
void waitToRetryOpen(std::string_view name, bool existed);

// Copy mode: after an input file is open, mirror it (and, by default, every
// file of its base name) under the copy root.
void copyInput(std::string_view openedName);
// Copy mode, output modes: `name` is changed to its place under the copy root.
void redirectOutput(TextRef name);

}  // namespace tables
