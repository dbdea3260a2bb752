// Value extraction from attribute lines, CSV columns and small checks.
//
// Attribute lines come in two shapes: named, with "keyword = value" pairs
// separated by commas, and positional, a comma-separated record under a
// header line. A line may mix them. Fields are separated by commas except
// inside quotes: quoted text starts with ' or " and ends at the next quote of
// either kind, where a doubled quote ('' or "") stands for itself and does
// not end it. Extracted values have all their quotes deleted and their
// leading blanks dropped.
//
// Everything here is pure. The EXTRACT routines that report and stop live in
// runtime/extract.hpp and are built on extractValue.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/text.hpp"

// How extractValue found its value.
enum class ExtractFound {
    keyword,   // behind "=" after the keyword
    column,    // field number `column` (blank when the line has fewer fields)
    nothing,   // keyword absent and column below 1: blank
    noEquals,  // keyword found without any "=" behind it: `out` is blank
};

// The value of `keyword` in `line` (searched, plainly, in `lowerLine`, the
// same line in lower case), else field `column` of the line, counted from 1.
// In the keyword case the value runs from behind the first "=" after the
// keyword to the next comma outside quotes, or to the end of the line when
// `toEnd` is true. The value goes to `out` with its quotes deleted and its
// leading blanks dropped. A blank keyword is never searched for: it selects
// the column.
ExtractFound extractValue(TextRef out, std::string_view line, std::string_view lowerLine, std::string_view keyword,
                          int32_t column, bool toEnd);

// The first word of `line` (ended by a blank outside quotes), quotes deleted
// and leading blanks dropped, held to 1000 bytes; `line` keeps what follows,
// without its leading blanks. The scan starts at the first byte, so a line
// that begins with a blank gives a blank word and loses its leading blanks.
void NEXTWORD(TextRef word, TextRef line);

// Number (from 1) of the first comma-separated field of `header` that equals
// `name` ignoring case; quotes, tabs and surrounding blanks of the fields do
// not count, and quotes do not protect commas. `defaultColumn` when none does.
int32_t CSVCOLUMN(std::string_view header, std::string_view name, int32_t defaultColumn);

// Field `column` of a comma-separated line (quotes not regarded) read as an
// integer: true and the number in `value`, or false with `value` 0.
bool CSVVALUE(std::string_view line, int32_t column, int32_t& value);

// Drops the leading blanks of `s` in place; true when what is left is not
// blank and holds digits only.
bool POSITIVEINTEGERNUMBER(TextRef s);

// The text begins with a whole number in free form that fits 32 bits
// (CHECKINT, CHECKINT4) or 64 bits (CHECKINT8). Nothing to read is false.
bool CHECKINT(std::string_view s);
bool CHECKINT4(std::string_view s);
bool CHECKINT8(std::string_view s);

// Day count of a date "YYYYMMDD" without leap years: year * 365 + day + the
// month's table entry - 730000, a February day above 28 counting as 28.
// -1 when a field cannot be read or the month is outside 1 to 12.
int32_t NUMBEROFDAYS(std::string_view date);

// Both negative, or neither (zero counts as positive).
bool SAMESIGN(float a, float b);
