// Extraction of one value from an attribute line by keyword, falling back to
// a column number, converted to a number or kept as text (the finding itself
// is extractValue of text/extract.hpp).
//
// These sit in the runtime, not the text toolkit, because their failures are
// reported through DMESSAGE or the console and end the run through EXITS:
//  - a keyword found without any "=" behind it: ERROR 0203;
//  - a value that does not read as a number: the "Could not convert" line.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/extract.hpp"

// The value as a 32-bit integer or float; `defaultValue` when it is blank.
int32_t EXTRACTINTEGER(std::string_view line, std::string_view lowerLine, std::string_view keyword, int32_t column,
                       int32_t defaultValue);
float EXTRACTREAL(std::string_view line, std::string_view lowerLine, std::string_view keyword, int32_t column,
                  float defaultValue);
// The value as text, blank when nothing was found.
void EXTRACTSTRING(TextRef out, std::string_view line, std::string_view lowerLine, std::string_view keyword,
                   int32_t column);
// As EXTRACTSTRING, for the last value of a line: found by keyword, the value
// runs to the end of the line, commas included. By column it is one field.
void EXTRACTSTRINGREM(TextRef out, std::string_view line, std::string_view lowerLine, std::string_view keyword,
                      int32_t column);
