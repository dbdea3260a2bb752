// Control lines: comments, lines that start like a number, the Read/Write
// phrases of GIS commands, the split of a line into command and value, and
// case-insensitive replacement.
//
// A comment starts at '#' or '!' wherever it stands. Letters compare through
// ASCII upper-casing. Routines that take a TextRef change that text in place;
// routines that give text write it into their first argument, cut at its
// capacity.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/text.hpp"

// Drops leading blanks and cuts the line before its first '#' or '!'. True
// when the line is blank or was a comment from its first byte.
bool COMMENTLINE(TextRef line);

// Drops leading blanks. True when the line is blank or starts with a digit,
// '-' or '.'.
bool NUMBERLINE(TextRef line);

// The line holds "Read MI {keyword}" or "Read GIS {keyword}" (any case).
bool READGIS(std::string_view line, std::string_view keyword);
// The line holds "Write MI {keyword}" or "Write GIS {keyword}".
bool WRITEGIS(std::string_view line, std::string_view keyword);
// The line holds "Read MID {keyword}" or "Read RowCol {keyword}".
bool READROWCOL(std::string_view line, std::string_view keyword);

// Splits `line` at `separator` (case kept, at its full length) or, failing
// that, behind position `column`, into `command` and `value`, and tells
// whether the command is the one for `key` ("*" for any command).
bool CHECKLINE(std::string_view line, std::string_view key, std::string_view separator, int32_t column, TextRef value,
               TextRef command);

// `string` with its first (REPLACE) or every (REPLACEALL) occurrence of the
// trimmed `old`, found in any case, replaced by the trimmed `replacement`.
void REPLACE(TextRef out, std::string_view string, std::string_view old, std::string_view replacement);
void REPLACEALL(TextRef out, std::string_view string, std::string_view old, std::string_view replacement);
