// The file-unit manager: every file of the system is opened and closed here
// and is named by its unit number from then on.
//
// Fixed slots 1 to 8 and a free pool of 1000 entries; FILEINIT(first) gives
// the slots units B-7 .. B and the pool units B+1 .. B+1000, B being the larger
// of `first` and 9. Sixteen open modes, each two bytes:
//   "I " input text (shared)            "O ", "F " output text, replace
//   "UI" input unformatted records      "UO" output unformatted, replace
//   "BI" input binary                   "BO" output binary, replace
//   "BE" input binary, big-endian       "BN" output binary big-endian, replace
//   "A " append text, create            "AB" append binary, create
//   "S " keep text, create (no cut)     "SB" keep binary, create (no cut)
//   "SE" keep binary big-endian, create "IO" read and write text, keep, create
//
// The settings of the manager are in settings.hpp, the reading and writing
// of open units in unit_io.hpp; both come with this header.
//
// Inside the runtime this is the header of the unit tables (units.cpp), the
// dialogues of the open loop (dialogues.cpp) and the console helpers
// (console_helpers.cpp). The layers of the runtime are listed in
// runtime/CMakeLists.txt.
#pragma once

#include <cstdint>
#include <string_view>

#include "runtime/settings.hpp"
#include "runtime/unit_io.hpp"
#include "text/text.hpp"

void FILEINIT(int32_t first);

// Opening. `ignored` has no effect.
void OPENERFREE(int32_t& unit, std::string_view mode, std::string_view name, int32_t ignored);
void OPENERDERIVED(int32_t& unit, std::string_view mode, std::string_view prefix, std::string_view extension);
void OPENER(int32_t slot, int32_t& unit, std::string_view mode, std::string_view kind, int32_t askLevel);
void OPENERNAMED(int32_t slot, int32_t& unit, std::string_view name, std::string_view mode, std::string_view kind,
                 int32_t askLevel);
void OPENERDEFAULT(int32_t slot, int32_t& unit, std::string_view mode, std::string_view kind, int32_t askLevel,
                   std::string_view prefix);
void OPENERSTANDARD();
// The open loop behind all of the above; `name` is changed in place.
void OPENERCORE(int32_t& unit, TextRef name, std::string_view mode, std::string_view kind);
// Turns an absolute path into a relative one in place ("C:\x" -> "C Drive\x",
// "\\srv\x" -> "URL\srv\x"), as the copy mode mirrors folders. True when the
// path had neither form and was left alone.
bool DRIVEFOLDER(TextRef path);

// Closing and queries.
void CLOSER(int32_t& unit);
void CLOSEALL();
int32_t FILETYPE(int32_t unit);
bool NAMED(int32_t slot);
void GETNAM(int32_t slot, TextRef name);
void UNNAME(int32_t slot);

// Console helpers.
void PRINTCHARS(std::string_view text, int32_t count);
void PRINTTEXT(std::string_view text);
bool ASKYES(std::string_view text);
int32_t LENSL(TextRef text, int32_t capacity);
int32_t LENFIRST(TextRef text, int32_t capacity);
void SETFLAGS();
extern bool setFlagsTable[26];

// Brings the runtime back to the state of a fresh process: every file unit
// closed (pending output written first) and the tables and settings as
// before FILEINIT, the console's buffers emptied (pending output written
// first) and standard input read afresh, the flags and the message record
// cleared. The installed run-end handler stays.
void runtimeReset();
