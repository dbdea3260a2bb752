// The driver's orderly stops. Each writes its message, with an empty line
// in front, and ends the run through EXITS.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/text.hpp"

// `message`; and `message` with the offending line quoted between empty
// lines behind it.
[[noreturn]] void stopWith(std::string_view message);
[[noreturn]] void stopOnLine(std::string_view message, std::string_view line);

// Reads the next line into `line` and counts it in `lineNo`. The end of the
// file (or a failed read) inside a block is an orderly stop that names `where`.
void readLineOrStop(int32_t unit, int32_t& lineNo, TextRef line, std::string_view where);
