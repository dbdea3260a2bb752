// Number formatting.
//
// The exported family (AINTEGER ... AREALD8) turns one number into a short,
// left-justified text: the number is first written right-justified in a field
// of 20 bytes, then moved to the left; a number that does not fit shows as 20
// asterisks. The result is cut or padded to the caller's capacity.
//
// The field writers below (putFixed, putInt, putCount) are what every file
// writer of the system uses for its fixed-width number layouts. They write
// into a caller's byte buffer and return the end of what they wrote.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/text.hpp"

void AINTEGER(TextRef out, int32_t value);
void AINTEGER8(TextRef out, int64_t value);
void AINTEGERPREC0(TextRef out, int32_t value, int32_t digits);
void AINTEGER8PREC0(TextRef out, int64_t value, int32_t digits);
void AREAL(TextRef out, float value);
void AREAL8(TextRef out, double value);
void AREALD(TextRef out, float value, int32_t decimals);
void AREALD8(TextRef out, double value, int32_t decimals);

// Fixed-point field of exactly `width` bytes with exactly `decimals` digits
// behind the point, right-justified, rounded to nearest (an exact tie goes to
// the even digit). A zero stands before the point when the field has room for
// it. A value that does not fit, or is not finite, fills the field with '*'.
// A 32-bit value passed here keeps its own digits: widening is exact.
// width must lie in 1..64.
char* putFixed(char* out, int width, int decimals, double value);

// Integer right-justified in exactly `width` bytes; '*' when it does not fit.
char* putInt(char* out, int width, int64_t value);

// Plain decimal, no blanks (the "count" form). Writes at most 20 bytes.
char* putCount(char* out, int64_t value);

// Convenience: the same layouts as text, for messages.
std::string_view fixedText(int width, int decimals, double value);  // one static buffer
std::string_view intText(int width, int64_t value);                 // one static buffer
std::string_view countText(int64_t value);                          // one static buffer
