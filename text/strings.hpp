// Core string primitives: tests, comparison, cleaning, counting and cutting.
//
// Pure functions over the text model of text.hpp. They touch no file, hold no
// state and never fail: every input gives a defined result. A routine that
// returns text writes it into the caller's TextRef (its first argument), cut
// at the caller's capacity and padded with blanks. Input and output may be the
// same text.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/text.hpp"

// True when nothing is left but blanks. Deletes every tab from `s` in place.
bool BLANK(TextRef s);

// Same text, ignoring case, quotes, tabs, leading and trailing blanks.
bool ASAME(std::string_view a, std::string_view b);
// As ASAME, but upper and lower case differ.
bool ASAMECS(std::string_view a, std::string_view b);

// `flag` (trailing blanks cut) occurs anywhere in `line`, in any case.
bool FLAGEXISTS(std::string_view line, std::string_view flag);
// As FLAGEXISTS; `rest` receives what follows the match, case kept.
bool FLAGEXISTSRET(std::string_view line, std::string_view flag, TextRef rest);

void TRIMF(TextRef out, std::string_view s);
void UPPERCASE(TextRef out, std::string_view s);
void LOWERCASE(TextRef out, std::string_view s);
void REMOVEQUOTES(TextRef out, std::string_view s);
void REMOVESPACES(TextRef out, std::string_view s);
void REMOVETABS(TextRef out, std::string_view s);
// Letters and digits kept; every other byte becomes `replacement`, or is
// dropped when `replacement` is the zero byte. "X" when nothing is left.
void ALPHANUMERICONLY(TextRef out, std::string_view s, char replacement);
// Letters, digits and '_' kept, all else dropped; "X" when nothing is left.
void CLEANATTRIBUTENAME(TextRef out, std::string_view s);
// Each double quote written twice.
void DOUBLEQUOTE(TextRef out, std::string_view s);

// Number of pieces of `s` separated by `delimiter` (used at its full length).
// Deletes tabs from `s` in place, as BLANK does.
int32_t NUMBEROFSUBSTRINGS(TextRef s, std::string_view delimiter);
// Piece `n` (from 1) of `s`, without its leading blanks.
void SUBSTRING(TextRef out, std::string_view s, std::string_view delimiter, int32_t n);
// How many values the line holds; negative when it holds something else.
int32_t NUMBEROFNUMBERS(std::string_view s);

// ASCII case helpers used by the routines above and their callers.
inline char upperByte(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; }
inline char lowerByte(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }
inline bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

// 0-based index of the first occurrence of `needle` in `hay` from `from`,
// comparing case-insensitively; -1 when absent. An empty needle matches at `from`.
long findNoCase(std::string_view hay, std::string_view needle, std::size_t from = 0);
