#include "text/strings.hpp"

#include <cstring>

namespace {

// One scratch area for the routines that build a new text; results are
// copied out before returning, so input and output may be the same text.
// Inputs beyond the working limit are cut there.
char g_scratch[2 * kWorkCap + 8];

std::string_view limited(std::string_view s) {
    s = trimmed(s);
    if (s.size() > static_cast<std::size_t>(kWorkCap)) s = s.substr(0, kWorkCap);
    return s;
}

bool isQuote(char c) { return c == '"' || c == '\''; }

// Walks a text in the normal form of ASAME/ASAMECS: quotes and tabs deleted,
// leading blanks dropped, optionally upper-cased. next() gives 0 at the end.
struct NormalForm {
    std::string_view s;
    std::size_t i = 0;
    bool upper;
    NormalForm(std::string_view t, bool up) : s(t), upper(up) {
        // Quotes and tabs go first, so blanks behind them are still leading.
        while (i < s.size() && (s[i] == ' ' || isQuote(s[i]) || s[i] == '\t')) ++i;
    }
    // Next byte of the normal form; `more` false at the end.
    char next(bool& more) {
        while (i < s.size() && (isQuote(s[i]) || s[i] == '\t')) ++i;
        if (i >= s.size()) {
            more = false;
            return ' ';
        }
        more = true;
        char c = s[i++];
        return upper ? upperByte(c) : c;
    }
};

bool sameNormal(std::string_view a, std::string_view b, bool upper) {
    NormalForm na(a, upper), nb(b, upper);
    for (;;) {
        bool ma, mb;
        char ca = na.next(ma);
        char cb = nb.next(mb);
        if (!ma && !mb) return true;
        // Trailing blanks are ignored: a shorter side reads as blanks.
        if (ca != cb) return false;
    }
}

}  // namespace

long findNoCase(std::string_view hay, std::string_view needle, std::size_t from) {
    if (needle.empty()) return from <= hay.size() ? static_cast<long>(from) : -1;
    if (needle.size() > hay.size()) return -1;
    const char first = upperByte(needle[0]);
    const std::size_t last = hay.size() - needle.size();
    for (std::size_t p = from; p <= last; ++p) {
        if (upperByte(hay[p]) != first) continue;
        std::size_t k = 1;
        while (k < needle.size() && upperByte(hay[p + k]) == upperByte(needle[k])) ++k;
        if (k == needle.size()) return static_cast<long>(p);
    }
    return -1;
}

bool BLANK(TextRef s) {
    const int n = s.len();
    int w = 0;
    for (int r = 0; r < n; ++r) {
        if (s.data[r] != '\t') s.data[w++] = s.data[r];
    }
    if (w < n) std::memset(s.data + w, ' ', static_cast<std::size_t>(n - w));
    *s.hi = w;
    return s.len() == 0;
}

bool ASAME(std::string_view a, std::string_view b) { return sameNormal(a, b, true); }

bool ASAMECS(std::string_view a, std::string_view b) { return sameNormal(a, b, false); }

bool FLAGEXISTS(std::string_view line, std::string_view flag) {
    flag = trimmed(flag);
    if (flag.empty()) return true;
    return findNoCase(trimmed(line), flag) >= 0;
}

bool FLAGEXISTSRET(std::string_view line, std::string_view flag, TextRef rest) {
    flag = trimmed(flag);
    std::string_view t = trimmed(line);
    long p = flag.empty() ? 0 : findNoCase(t, flag);
    if (p < 0) {
        rest.clear();
        return false;
    }
    rest.assign(t.substr(static_cast<std::size_t>(p) + flag.size()));
    return true;
}

void TRIMF(TextRef out, std::string_view s) {
    s = limited(s);
    std::size_t i = 0;
    while (i < s.size() && s[i] == ' ') ++i;
    out.assign(s.substr(i));
}

void UPPERCASE(TextRef out, std::string_view s) {
    s = limited(s);
    out.assign(s);
    const int n = out.len();
    for (int i = 0; i < n; ++i) out.data[i] = upperByte(out.data[i]);
}

void LOWERCASE(TextRef out, std::string_view s) {
    s = limited(s);
    out.assign(s);
    const int n = out.len();
    for (int i = 0; i < n; ++i) out.data[i] = lowerByte(out.data[i]);
}

namespace {
template <typename Keep>
void filterInto(TextRef out, std::string_view s, Keep keep) {
    s = limited(s);
    std::size_t w = 0;
    for (char c : s)
        if (keep(c)) g_scratch[w++] = c;
    out.assign({g_scratch, w});
}
}  // namespace

void REMOVEQUOTES(TextRef out, std::string_view s) {
    filterInto(out, s, [](char c) { return !isQuote(c); });
}

void REMOVESPACES(TextRef out, std::string_view s) {
    filterInto(out, s, [](char c) { return c != ' '; });
}

void REMOVETABS(TextRef out, std::string_view s) {
    filterInto(out, s, [](char c) { return c != '\t'; });
}

void ALPHANUMERICONLY(TextRef out, std::string_view s, char replacement) {
    s = limited(s);
    std::size_t w = 0;
    for (char c : s) {
        if (isLetter(c) || isDigit(c)) g_scratch[w++] = c;
        else if (replacement != '\0') g_scratch[w++] = replacement;
    }
    if (trimmedLength({g_scratch, w}) == 0) {
        out.assign("X");
        return;
    }
    out.assign({g_scratch, w});
}

void CLEANATTRIBUTENAME(TextRef out, std::string_view s) {
    filterInto(out, s, [](char c) { return isLetter(c) || isDigit(c) || c == '_'; });
    if (out.len() == 0) out.assign("X");
}

void DOUBLEQUOTE(TextRef out, std::string_view s) {
    s = limited(s);
    std::size_t w = 0;
    for (char c : s) {
        g_scratch[w++] = c;
        if (c == '"') g_scratch[w++] = '"';
    }
    out.assign({g_scratch, w});
}

int32_t NUMBEROFSUBSTRINGS(TextRef s, std::string_view delimiter) {
    if (BLANK(s)) return 0;
    std::string_view t = limited(s.view());
    // An empty delimiter cannot split anything: one piece.
    if (delimiter.empty()) return 1;
    int32_t count = 1;
    std::size_t from = 0;
    for (;;) {
        std::size_t p = t.find(delimiter, from);
        if (p == std::string_view::npos) break;
        ++count;
        from = p + 1;  // the next search starts one byte behind the hit's first byte
    }
    return count;
}

void SUBSTRING(TextRef out, std::string_view s, std::string_view delimiter, int32_t n) {
    std::string_view t = limited(s);
    if (n < 1 || delimiter.empty()) {
        // An empty delimiter has no pieces to tell apart: piece 1 is the text.
        if (n == 1 && delimiter.empty()) {
            TRIMF(out, t);
        } else {
            out.clear();
        }
        return;
    }
    // Positions below are 0-based; `cursor` is where the next search starts.
    std::size_t cursor = 0;
    for (int32_t piece = 1; piece < n; ++piece) {
        std::size_t p = t.find(delimiter, cursor);
        if (p == std::string_view::npos) {
            out.clear();
            return;
        }
        cursor = p + 1;
    }
    // End (exclusive) of the piece: the hit less the delimiter's length beyond
    // its first byte, or the trimmed end.
    long end;
    std::size_t p = t.find(delimiter, cursor);
    if (p == std::string_view::npos) end = static_cast<long>(t.size());
    else end = static_cast<long>(p) + 1 - static_cast<long>(delimiter.size());
    if (end <= static_cast<long>(cursor)) {
        out.clear();
        return;
    }
    TRIMF(out, t.substr(cursor, static_cast<std::size_t>(end) - cursor));
}

namespace {

// Byte classes of NUMBEROFNUMBERS.
enum : unsigned char { kOther, kNumber, kComment, kSpace, kComma };

struct ByteClasses {
    unsigned char c[256] = {};
    constexpr ByteClasses() {
        for (int i = '0'; i <= '9'; ++i) c[i] = kNumber;
        for (char b : {'.', '-', 'e', 'E'}) c[static_cast<unsigned char>(b)] = kNumber;
        for (char b : {'!', '#'}) c[static_cast<unsigned char>(b)] = kComment;
        for (char b : {' ', '\t'}) c[static_cast<unsigned char>(b)] = kSpace;
        c[static_cast<unsigned char>(',')] = kComma;
    }
};
constexpr ByteClasses kClasses;

}  // namespace

int32_t NUMBEROFNUMBERS(std::string_view s) {
    s = trimmed(s);
    int32_t count = 0;
    bool inNumber = false, afterComma = false;
    const std::size_t n = s.size();
    for (std::size_t i = 0; i < n; ++i) {
        switch (kClasses.c[static_cast<unsigned char>(s[i])]) {
            case kNumber:
                if (!inNumber) {
                    ++count;
                    inNumber = true;
                    afterComma = false;
                }
                // The rest of the value changes nothing.
                while (i + 1 < n && kClasses.c[static_cast<unsigned char>(s[i + 1])] == kNumber) ++i;
                break;
            case kComment: return count;
            case kSpace: inNumber = false; break;
            case kComma:
                if (inNumber) {
                    inNumber = false;
                } else if (afterComma) {
                    ++count;
                }
                afterComma = true;
                break;
            default: return -count;
        }
    }
    return count;
}
