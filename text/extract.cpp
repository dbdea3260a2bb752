#include "text/extract.hpp"

#include "text/freeformat.hpp"
#include "text/strings.hpp"

namespace {

bool isQuote(char c) { return c == '"' || c == '\''; }

// 0-based index of the first `stop` byte of `s` outside quotes; s.size() when
// there is none. A quote opens with either kind and closes at the next quote
// of either kind unless that quote is doubled.
std::size_t findOutsideQuotes(std::string_view s, char stop) {
    bool quoted = false;
    for (std::size_t i = 0; i < s.size(); ++i) {
        const char c = s[i];
        if (quoted) {
            if (!isQuote(c)) continue;
            if (i + 1 < s.size() && s[i + 1] == c) {
                ++i;  // a doubled quote stands for itself
                continue;
            }
            quoted = false;
        } else if (isQuote(c)) {
            quoted = true;
        } else if (c == stop) {
            return i;
        }
    }
    return s.size();
}

// Field `column` (from 1) of `s`, commas inside quotes not counting; empty
// when the line has fewer fields.
std::string_view quotedField(std::string_view s, int32_t column) {
    for (int32_t k = 1;; ++k) {
        const std::size_t end = findOutsideQuotes(s, ',');
        if (k == column) return s.substr(0, end);
        if (end >= s.size()) return {};
        s.remove_prefix(end + 1);
    }
}

Text<kWorkCap> g_work;     // quotes deleted, before the leading blanks go
Text<kWorkCap> g_keyword;  // the keyword in lower case

// `raw` with all quotes deleted and its leading blanks dropped, into `out`.
void cleanValue(TextRef out, std::string_view raw) {
    REMOVEQUOTES(g_work, raw);
    TRIMF(out, g_work);
}

// Reads a whole number from the start of `s` in free form, within lo..hi.
// Nothing to read (end, a null value, a slash) is false.
bool readWhole(std::string_view s, int64_t lo, int64_t hi, int64_t& v) {
    FreeFormat f(s);
    std::string_view token;
    bool quoted = false;
    if (f.next(token, quoted) != FreeFormat::Item::value || quoted) return false;
    int64_t r = 0;
    if (!parseInt8(token, r) || r < lo || r > hi) return false;
    v = r;
    return true;
}

// A fixed-width integer field in the way a formatted read takes it: blanks
// are ignored, a sign may stand before the digits, an all-blank field is 0.
bool fixedDigits(std::string_view f, int32_t& v) {
    int32_t r = 0;
    bool negative = false, started = false;
    for (char c : f) {
        if (c == ' ') continue;
        if (!started && (c == '+' || c == '-')) {
            negative = c == '-';
            started = true;
            continue;
        }
        if (!isDigit(c)) return false;
        started = true;
        r = r * 10 + (c - '0');
    }
    v = negative ? -r : r;
    return true;
}

}  // namespace

ExtractFound extractValue(TextRef out, std::string_view line, std::string_view lowerLine, std::string_view keyword,
                          int32_t column, bool toEnd) {
    keyword = trimmed(keyword);
    line = trimmed(line);
    if (!keyword.empty()) {
        LOWERCASE(g_keyword, keyword);
        const std::size_t p = trimmed(lowerLine).find(g_keyword.trimmed());
        if (p != std::string_view::npos) {
            const std::size_t behind = p + g_keyword.trimmed().size();
            std::string_view rest = behind < line.size() ? line.substr(behind) : std::string_view{};
            const std::size_t eq = rest.find('=');
            if (eq == std::string_view::npos) {
                out.clear();
                return ExtractFound::noEquals;
            }
            rest.remove_prefix(eq + 1);
            cleanValue(out, toEnd ? rest : rest.substr(0, findOutsideQuotes(rest, ',')));
            return ExtractFound::keyword;
        }
    }
    if (column < 1) {
        out.clear();
        return ExtractFound::nothing;
    }
    cleanValue(out, quotedField(line, column));
    return ExtractFound::column;
}

void NEXTWORD(TextRef word, TextRef line) {
    const std::string_view s = line.trimmed();
    const std::size_t end = findOutsideQuotes(s, ' ');
    cleanValue(g_work, s.substr(0, end));
    word.assign(g_work.trimmed().substr(0, kNameCap));
    std::string_view rest = s.substr(end);
    while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
    line.assign(rest);
}

int32_t CSVCOLUMN(std::string_view header, std::string_view name, int32_t defaultColumn) {
    static char field[kWorkCap];
    std::string_view s = trimmed(header);
    if (s.size() > static_cast<std::size_t>(kWorkCap)) s = s.substr(0, kWorkCap);
    name = trimmed(name);
    for (int32_t k = 1;; ++k) {
        const std::size_t comma = s.find(',');
        // Quotes and tabs go, then the blanks on both sides.
        std::size_t w = 0;
        for (char c : s.substr(0, comma))
            if (!isQuote(c) && c != '\t') field[w++] = c;
        std::string_view f = trimmed({field, w});
        while (!f.empty() && f.front() == ' ') f.remove_prefix(1);
        if (f.size() == name.size()) {
            std::size_t i = 0;
            while (i < f.size() && upperByte(f[i]) == upperByte(name[i])) ++i;
            if (i == f.size()) return k;
        }
        if (comma == std::string_view::npos) return defaultColumn;
        s.remove_prefix(comma + 1);
    }
}

bool CSVVALUE(std::string_view line, int32_t column, int32_t& value) {
    std::string_view s = trimmed(line);
    for (int32_t k = 1; k < column; ++k) {
        const std::size_t comma = s.find(',');
        if (comma == std::string_view::npos) {
            value = 0;
            return false;
        }
        s.remove_prefix(comma + 1);
    }
    s = s.substr(0, s.find(','));
    int64_t v = 0;
    if (trimmedLength(s) > 0 && readWhole(s, INT32_MIN, INT32_MAX, v)) {
        value = static_cast<int32_t>(v);
        return true;
    }
    value = 0;
    return false;
}

bool POSITIVEINTEGERNUMBER(TextRef s) {
    TRIMF(s, s.view());
    const std::string_view t = s.trimmed();
    if (t.empty()) return false;
    for (char c : t)
        if (!isDigit(c)) return false;
    return true;
}

bool CHECKINT(std::string_view s) { return CHECKINT4(s); }

bool CHECKINT4(std::string_view s) {
    int64_t v;
    return readWhole(s, INT32_MIN, INT32_MAX, v);
}

bool CHECKINT8(std::string_view s) {
    int64_t v;
    return readWhole(s, INT64_MIN, INT64_MAX, v);
}

int32_t NUMBEROFDAYS(std::string_view date) {
    // The month table as the day counts have always been made; it is not the
    // calendar's (February 28 where 31 would be due, and so on), and it must
    // stay as it is so that counts compare with those already stored.
    static constexpr int32_t kMonthEntry[13] = {0, 0, 28, 59, 89, 120, 150, 181, 212, 242, 273, 303, 334};
    char d[8];
    for (std::size_t i = 0; i < 8; ++i) d[i] = i < date.size() ? date[i] : ' ';
    int32_t year, month, day;
    if (!fixedDigits({d, 4}, year) || !fixedDigits({d + 4, 2}, month) || !fixedDigits({d + 6, 2}, day)) return -1;
    // A month outside the table has no entry: read as a field that failed.
    if (month < 1 || month > 12) return -1;
    if (month == 2 && day > 28) day = 28;
    return year * 365 + day + kMonthEntry[month] - 730000;
}

bool SAMESIGN(float a, float b) { return (a < 0.0f) == (b < 0.0f); }
