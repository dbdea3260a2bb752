// Reading values from a free-format list, the way the system reads every
// number list in its input files.
//
// Values are separated by blanks, tabs, or one comma with optional blanks
// round it. Further rules:
//  - two commas with nothing but blanks between them (or a comma at the start)
//    give a null value: the target keeps what it held;
//  - a slash ends the list: this and all further targets keep what they held;
//  - r*v stands for r copies of v, and r* for r null values;
//  - numbers take an optional sign, digits with an optional point, and an
//    optional exponent written with e, E, d, D, q or Q, or as a bare sign
//    (1.5+3 is 1500); "inf" and "nan" are not numbers here, so that no
//    coordinate or level can become one;
//  - a text value is either quoted (' or ", a doubled quote inside stands for
//    one) or runs to the next blank, comma or slash.
// Reading past the last value gives `end`; a value that is not of the wanted
// kind gives `bad`. Values behind the last one read are never looked at.
#pragma once

#include <cstdint>
#include <string_view>

#include "text/text.hpp"

enum class ReadResult { ok, end, bad };

struct FreeFormat {
    explicit FreeFormat(std::string_view line) : s(line) {}

    ReadResult real8(double& v);
    ReadResult real4(float& v);
    ReadResult int4(int32_t& v);
    ReadResult int8(int64_t& v);
    ReadResult text(TextRef v);

    // The next value when it is a plain decimal, [-]digits[.digits], that
    // real8 / real4 read on their quick road; false, and nothing taken,
    // otherwise. A caller that reads rows of such values checks them here
    // first and leaves anything else to the full rules.
    bool quickReal8(double& v);
    bool quickReal4(float& v);
    // Every byte of the text has been taken.
    bool atEnd() const { return pos >= s.size() && !stopped && repeatLeft == 0; }

    // The bytes that make up the next value, or a null / end / slash state.
    enum class Item { value, null, end, slash };
    Item next(std::string_view& token, bool& quoted);

private:
    // A plain decimal at the current position, read in one pass with its
    // separator; `end` is where the next value starts. False for anything else.
    bool quickDecimal(uint64_t& digits, int& scale, bool& negative, std::size_t& end) const;
    // quickReal8 and quickReal4: R exact below 2^bits, 10^scale up to maxScale.
    template <typename R, int bits, int maxScale>
    bool quickReal(R& v);

    std::string_view s;
    std::size_t pos = 0;
    bool stopped = false;  // a slash was met
    int repeatLeft = 0;
    bool repeatNull = false;
    std::string_view repeatToken;
    bool repeatQuoted = false;
};

// One number alone, from the start of a text, by the rules above.
ReadResult readReal8(std::string_view line, double& v);
ReadResult readReal4(std::string_view line, float& v);
ReadResult readInt4(std::string_view line, int32_t& v);

// Parse one complete number token (no separators). False when it is not one.
bool parseReal8(std::string_view token, double& v);
bool parseReal4(std::string_view token, float& v);
bool parseInt8(std::string_view token, int64_t& v);
