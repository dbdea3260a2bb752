// The console helpers of the toolkit: writing a fixed number of bytes, a
// yes/no question, the lengths of texts padded with blanks or NULs, and the
// table of 26 letter flags set from the console.
#include "runtime/console.hpp"
#include "runtime/units.hpp"
#include "runtime/units_internal.hpp"
#include "text/strings.hpp"

bool setFlagsTable[26];

int tables::paddedLength(std::string_view s) {
    std::size_t n = s.size();
    while (n > 0 && (s[n - 1] == ' ' || s[n - 1] == '\0')) --n;
    return static_cast<int>(n);
}

using tables::paddedLength;

void PRINTCHARS(std::string_view text, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        char c = static_cast<std::size_t>(i) < text.size() ? text[static_cast<std::size_t>(i)] : ' ';
        conWrite(std::string_view(&c, 1));
    }
}

void PRINTTEXT(std::string_view text) { PRINTCHARS(text, paddedLength(text)); }

bool ASKYES(std::string_view text) {
    conWrite(trimmed(text));
    conWrite("? ");
    static Text<100> answer;
    if (!conReadLine(answer)) return false;
    char c = answer.at(1);
    return c == 'Y' || c == 'y';
}

int32_t LENSL(TextRef text, int32_t capacity) {
    int n = capacity < text.cap ? capacity : text.cap;
    if (n < 0) n = 0;
    int len = paddedLength(std::string_view(text.data, static_cast<std::size_t>(n < *text.hi ? n : *text.hi)));
    if (len < n) text.set(len + 1, '\0');
    return len;
}

int32_t LENFIRST(TextRef text, int32_t capacity) {
    int n = capacity < text.cap ? capacity : text.cap;
    for (int p = 1; p <= n; ++p) {
        char c = text.at(p);
        if (c == ' ' || c == '\0') {
            text.set(p, '\0');
            return p - 1;
        }
    }
    return n < 0 ? 0 : n;
}

void SETFLAGS() {
    conWrite("Set flags: ");
    static Text<26> answer;
    if (!conReadLine(answer)) return;
    for (char c : answer.view()) {
        if (isLetter(c)) setFlagsTable[upperByte(c) - 'A'] = true;
    }
}
