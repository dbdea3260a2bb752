// The save-date check of a pair of files that a reader has just opened: the
// first must be as new as the second or newer, else the person is warned or
// asked to export the first again.
#pragma once

#include <cstdint>
#include <string_view>

// True: go on with the files as they are. False (only when `fatal`): both
// units have been closed and set to 0; the caller opens the files again and
// repeats the check. With `fatal` and a second file whose time cannot be read,
// the run ends through EXITS. Reports go to the console and, when `logUnit`
// is above 0, the warning lines to that unit too.
bool CHECKSAVEDATE(std::string_view first, std::string_view second, int32_t& firstUnit, int32_t& secondUnit, bool fatal,
                   int32_t logUnit);
