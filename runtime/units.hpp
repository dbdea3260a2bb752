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
// Formatted text lines are written with CR LF and read without their line
// end. Unformatted records carry a 4-byte length before and after them.
// Big-endian units store every number of unitWrite*/unitRead* big-endian.
// One file may be open on several units at once; each has its own position,
// and what one unit writes is seen by the others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "text/text.hpp"

// Settings of the manager, with the values that FILEINIT gives them.
struct FileUnitSettings {
    bool messageBoxMode = false;      // talk through dialogue boxes
    Text<100> applicationName;        // first word of every dialogue
    Text<100> runName;                // second word of dialogue titles
    int32_t logUnit = 0;              // reports go here too when above 0
    char inputDrive = ' ';            // replaces the drive letter of input files
    char outputDrive = ' ';           // replaces the drive letter of output files
    bool createFoldersWithoutAsking = false;
    bool pauseOnPrematureExit = true;
    bool leaveFilesOpenAtExit = false;
    bool copyMode = false;            // mirror inputs, redirect outputs
    Text<1000> copyRoot;
    bool copyNamedFileOnly = false;
    Text<1000> lastCopyName;
    int32_t blockSize = 0;
};
extern FileUnitSettings fileUnitSettings;

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

// ---------------------------------------------------------------------------
// Unit input and output. Every routine takes a unit given out above. A unit
// that is not open gives IoStatus::error.

enum class IoStatus { ok, end, error };

// The unit on which the named file is open in this process, 0 when none.
int32_t unitOpenOn(std::string_view name);
bool unitIsOpen(int32_t unit);

// Formatted text.
IoStatus unitReadLine(int32_t unit, TextRef line);        // one record, cut to capacity
IoStatus unitWriteLine(int32_t unit, std::string_view s);  // s and CR LF
IoStatus unitWriteText(int32_t unit, std::string_view s);  // s alone, no line end
bool unitAtEnd(int32_t unit);                              // nothing left to read
IoStatus unitBackspace(int32_t unit);                      // back to the start of the last record read

// Unformatted records.
IoStatus unitWriteRecord(int32_t unit, const void* bytes, std::size_t n);
IoStatus unitReadRecord(int32_t unit, void* bytes, std::size_t capacity, std::size_t& n);

// Binary bytes and numbers. The plain forms use the unit's own byte order;
// the "As" forms state it.
IoStatus unitWriteBytes(int32_t unit, const void* bytes, std::size_t n);
IoStatus unitReadBytes(int32_t unit, void* bytes, std::size_t n);
IoStatus unitWriteI32(int32_t unit, int32_t v);
IoStatus unitWriteF64(int32_t unit, double v);
IoStatus unitReadI32(int32_t unit, int32_t& v);
IoStatus unitReadF64(int32_t unit, double& v);
IoStatus unitWriteI32As(int32_t unit, int32_t v, bool bigEndian);
IoStatus unitWriteF64As(int32_t unit, double v, bool bigEndian);
IoStatus unitReadI32As(int32_t unit, int32_t& v, bool bigEndian);
IoStatus unitReadF64As(int32_t unit, double& v, bool bigEndian);

// Position, in bytes from the start of the file.
IoStatus unitRewind(int32_t unit);
IoStatus unitSeek(int32_t unit, int64_t offset);
int64_t unitTell(int32_t unit);
IoStatus unitFlush(int32_t unit);

// Flushes the pending output of every open unit (used by direct stops).
void unitFlushAll();
