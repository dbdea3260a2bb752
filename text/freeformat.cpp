#include "text/freeformat.hpp"

#include <charconv>
#include <cmath>
#include <cstring>

namespace {

bool isBlankOrTab(char c) { return c == ' ' || c == '\t'; }
bool isDigitByte(char c) { return c >= '0' && c <= '9'; }

// Bring a number token to the form that from_chars takes: no leading plus,
// exponent letter 'e'. False when the token is not a number.
bool normalise(std::string_view t, char* buf, std::size_t cap, std::size_t& n) {
    n = 0;
    std::size_t i = 0;
    if (t.empty() || t.size() + 2 > cap) return false;
    if (t[i] == '+' || t[i] == '-') {
        if (t[i] == '-') buf[n++] = '-';
        ++i;
    }
    bool digits = false, point = false;
    for (; i < t.size(); ++i) {
        char c = t[i];
        if (isDigitByte(c)) {
            digits = true;
            buf[n++] = c;
        } else if (c == '.' && !point) {
            point = true;
            buf[n++] = c;
        } else {
            break;
        }
    }
    if (!digits) return false;
    if (i == t.size()) return true;
    // Exponent: a letter with an optional sign, or a bare sign.
    char c = t[i];
    if (c == 'e' || c == 'E' || c == 'd' || c == 'D' || c == 'q' || c == 'Q') {
        ++i;
    } else if (c != '+' && c != '-') {
        return false;
    }
    buf[n++] = 'e';
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) {
        if (t[i] == '-') buf[n++] = '-';
        ++i;
    }
    bool expDigits = false;
    for (; i < t.size(); ++i) {
        if (!isDigitByte(t[i])) return false;
        expDigits = true;
        buf[n++] = t[i];
    }
    return expDigits;
}

// Remove the quotes of a quoted token; a doubled quote of the same kind
// stands for one. An unterminated quote runs to the end of the token.
std::size_t unquote(std::string_view t, char* out) {
    std::size_t n = 0;
    const char q = t[0];
    for (std::size_t i = 1; i < t.size(); ++i) {
        if (t[i] == q) {
            if (i + 1 < t.size() && t[i + 1] == q) {
                out[n++] = q;
                ++i;
                continue;
            }
            break;
        }
        out[n++] = t[i];
    }
    return n;
}

char g_unquoted[kWorkCap + 8];

}  // namespace

namespace {

constexpr double kExact10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                               1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// A plain decimal's value when its digits and 10^scale are both exact in R
// (below 2^bits, at most 10^maxScale), so that one division rounds it
// correctly. False otherwise.
template <typename R, int bits, int maxScale>
bool exactQuotient(uint64_t digits, int scale, bool negative, R& v) {
    if (digits >= (uint64_t{1} << bits) || scale > maxScale) return false;
    const R r = static_cast<R>(digits) / static_cast<R>(kExact10[scale]);
    v = negative ? -r : r;
    return true;
}

// A plain decimal, [-]digits[.digits], as its digits without the point, the
// number of digits behind the point and the sign. False for anything else or
// for more than 19 digits.
bool plainDecimal(std::string_view t, uint64_t& digits, int& scale, bool& negative) {
    std::size_t i = 0;
    negative = false;
    if (i < t.size() && t[i] == '-') {
        negative = true;
        ++i;
    }
    digits = 0;
    scale = 0;
    int count = 0;
    bool point = false;
    for (; i < t.size(); ++i) {
        const char c = t[i];
        if (c >= '0' && c <= '9') {
            if (++count > 19) return false;
            digits = digits * 10 + static_cast<uint64_t>(c - '0');
            if (point) ++scale;
        } else if (c == '.' && !point) {
            point = true;
        } else {
            return false;
        }
    }
    return count > 0;
}

}  // namespace

bool parseReal8(std::string_view token, double& v) {
    // Exact fast path: an integer below 2^53 and a power of ten up to 10^22 are
    // both exact doubles, so one division is the correctly rounded value.
    uint64_t digits;
    int scale;
    bool negative;
    if (plainDecimal(token, digits, scale, negative) && exactQuotient<double, 53, 22>(digits, scale, negative, v))
        return true;
    // Most other tokens are numbers that from_chars takes as they stand.
    if (!token.empty() && token[0] != '+') {
        double r;
        auto res = std::from_chars(token.data(), token.data() + token.size(), r, std::chars_format::general);
        if (res.ec == std::errc() && res.ptr == token.data() + token.size() && std::isfinite(r)) {
            v = r;
            return true;
        }
    }
    char buf[1100];
    std::size_t n;
    if (!normalise(token, buf, sizeof buf, n)) return false;
    double r;
    auto res = std::from_chars(buf, buf + n, r, std::chars_format::general);
    if (res.ec != std::errc() || res.ptr != buf + n || !std::isfinite(r)) return false;
    v = r;
    return true;
}

bool parseReal4(std::string_view token, float& v) {
    // The same for single precision: below 2^24 and up to 10^10 both are exact floats.
    uint64_t digits;
    int scale;
    bool negative;
    if (plainDecimal(token, digits, scale, negative) && exactQuotient<float, 24, 10>(digits, scale, negative, v))
        return true;
    if (!token.empty() && token[0] != '+') {
        float r;
        auto res = std::from_chars(token.data(), token.data() + token.size(), r, std::chars_format::general);
        if (res.ec == std::errc() && res.ptr == token.data() + token.size() && std::isfinite(r)) {
            v = r;
            return true;
        }
    }
    char buf[1100];
    std::size_t n;
    if (!normalise(token, buf, sizeof buf, n)) return false;
    float r;
    auto res = std::from_chars(buf, buf + n, r, std::chars_format::general);
    if (res.ec != std::errc() || res.ptr != buf + n || !std::isfinite(r)) return false;
    v = r;
    return true;
}

bool parseInt8(std::string_view token, int64_t& v) {
    std::size_t i = 0;
    bool neg = false;
    if (!token.empty() && (token[0] == '+' || token[0] == '-')) {
        neg = token[0] == '-';
        i = 1;
    }
    if (i >= token.size()) return false;
    // Parse the magnitude as unsigned so that the most negative value fits.
    uint64_t m = 0;
    for (; i < token.size(); ++i) {
        if (!isDigitByte(token[i])) return false;
        uint64_t d = static_cast<uint64_t>(token[i] - '0');
        if (m > (UINT64_MAX - d) / 10) return false;
        m = m * 10 + d;
    }
    if (neg) {
        if (m > static_cast<uint64_t>(INT64_MAX) + 1) return false;
        v = m == static_cast<uint64_t>(INT64_MAX) + 1 ? INT64_MIN : -static_cast<int64_t>(m);
    } else {
        if (m > static_cast<uint64_t>(INT64_MAX)) return false;
        v = static_cast<int64_t>(m);
    }
    return true;
}

FreeFormat::Item FreeFormat::next(std::string_view& token, bool& quoted) {
    if (stopped) return Item::slash;
    if (repeatLeft > 0) {
        --repeatLeft;
        token = repeatToken;
        quoted = repeatQuoted;
        return repeatNull ? Item::null : Item::value;
    }
    while (pos < s.size() && isBlankOrTab(s[pos])) ++pos;
    if (pos >= s.size()) return Item::end;
    const char c = s[pos];
    if (c == '/') {
        stopped = true;
        return Item::slash;
    }
    if (c == ',') {
        ++pos;  // this comma closes a null value
        return Item::null;
    }
    std::size_t start = pos;
    quoted = false;
    auto scanQuoted = [&](std::size_t from) {
        const char q = s[from];
        std::size_t i = from + 1;
        while (i < s.size()) {
            if (s[i] == q) {
                if (i + 1 < s.size() && s[i + 1] == q) {
                    i += 2;
                    continue;
                }
                ++i;
                break;
            }
            ++i;
        }
        return i;
    };
    if (c == '\'' || c == '"') {
        quoted = true;
        pos = scanQuoted(pos);
    }
    std::size_t star = std::string_view::npos;
    if (!quoted) {
        for (; pos < s.size(); ++pos) {
            const char b = s[pos];
            if (b == ' ' || b == ',' || b == '\t' || b == '/') break;
            if (b == '*' && star == std::string_view::npos) star = pos - start;
        }
    }
    token = s.substr(start, pos - start);
    // A repeat count: digits, a star, then the value (or nothing for nulls).
    if (!quoted) {
        if (star != std::string_view::npos && star > 0) {
            int64_t r = 0;
            if (parseInt8(token.substr(0, star), r) && r > 0 && isDigitByte(token[0]) && r < (1 << 30)) {
                std::string_view rest = token.substr(star + 1);
                if (rest.empty() && pos < s.size() && (s[pos] == '\'' || s[pos] == '"')) {
                    // r*'text': the quoted value follows the star directly.
                    std::size_t qs = pos;
                    pos = scanQuoted(pos);
                    rest = s.substr(qs, pos - qs);
                    repeatQuoted = true;
                } else {
                    repeatQuoted = false;
                }
                repeatNull = rest.empty();
                repeatToken = rest;
                repeatLeft = static_cast<int>(r);
                // The separator behind the whole item.
                while (pos < s.size() && isBlankOrTab(s[pos])) ++pos;
                if (pos < s.size() && s[pos] == ',') ++pos;
                return next(token, quoted);
            }
        }
    }
    // The separator behind a value: blanks and at most one comma.
    while (pos < s.size() && isBlankOrTab(s[pos])) ++pos;
    if (pos < s.size() && s[pos] == ',') ++pos;
    return Item::value;
}

bool FreeFormat::quickDecimal(uint64_t& digits, int& scale, bool& negative, std::size_t& end) const {
    if (stopped || repeatLeft > 0) return false;
    const char* p = s.data() + pos;
    const char* const e = s.data() + s.size();
    while (p < e && (*p == ' ' || *p == '\t')) ++p;
    negative = p < e && *p == '-';
    if (negative) ++p;
    uint64_t d = 0;
    const char* const first = p;
    while (p < e && static_cast<unsigned char>(*p - '0') < 10) d = d * 10 + static_cast<uint64_t>(*p++ - '0');
    int count = static_cast<int>(p - first);
    scale = 0;
    if (p < e && *p == '.') {
        const char* const frac = ++p;
        while (p < e && static_cast<unsigned char>(*p - '0') < 10) d = d * 10 + static_cast<uint64_t>(*p++ - '0');
        scale = static_cast<int>(p - frac);
        count += scale;
    }
    // More than 19 digits may have overflowed: leave those to the general road.
    if (count == 0 || count > 19) return false;
    // It must end at a separator, which is taken as next() would take it.
    if (p < e && *p != ' ' && *p != '\t' && *p != ',') return false;
    while (p < e && (*p == ' ' || *p == '\t')) ++p;
    if (p < e && *p == ',') ++p;
    digits = d;
    end = static_cast<std::size_t>(p - s.data());
    return true;
}

template <typename R, int bits, int maxScale>
bool FreeFormat::quickReal(R& v) {
    uint64_t digits;
    int scale;
    bool negative;
    std::size_t end;
    if (!quickDecimal(digits, scale, negative, end) || !exactQuotient<R, bits, maxScale>(digits, scale, negative, v))
        return false;
    pos = end;
    return true;
}

bool FreeFormat::quickReal8(double& v) { return quickReal<double, 53, 22>(v); }
bool FreeFormat::quickReal4(float& v) { return quickReal<float, 24, 10>(v); }

ReadResult FreeFormat::real8(double& v) {
    if (quickReal8(v)) return ReadResult::ok;
    std::string_view t;
    bool q = false;
    switch (next(t, q)) {
        case Item::end: return ReadResult::end;
        case Item::null:
        case Item::slash: return ReadResult::ok;
        case Item::value: break;
    }
    if (q || !parseReal8(t, v)) return ReadResult::bad;
    return ReadResult::ok;
}

ReadResult FreeFormat::real4(float& v) {
    if (quickReal4(v)) return ReadResult::ok;
    std::string_view t;
    bool q = false;
    switch (next(t, q)) {
        case Item::end: return ReadResult::end;
        case Item::null:
        case Item::slash: return ReadResult::ok;
        case Item::value: break;
    }
    if (q || !parseReal4(t, v)) return ReadResult::bad;
    return ReadResult::ok;
}

ReadResult FreeFormat::int8(int64_t& v) {
    std::string_view t;
    bool q = false;
    switch (next(t, q)) {
        case Item::end: return ReadResult::end;
        case Item::null:
        case Item::slash: return ReadResult::ok;
        case Item::value: break;
    }
    if (q || !parseInt8(t, v)) return ReadResult::bad;
    return ReadResult::ok;
}

ReadResult FreeFormat::int4(int32_t& v) {
    int64_t w = v;
    ReadResult r = int8(w);
    if (r != ReadResult::ok) return r;
    if (w < INT32_MIN || w > INT32_MAX) return ReadResult::bad;
    v = static_cast<int32_t>(w);
    return ReadResult::ok;
}

ReadResult FreeFormat::text(TextRef v) {
    std::string_view t;
    bool q = false;
    switch (next(t, q)) {
        case Item::end: return ReadResult::end;
        case Item::null:
        case Item::slash: return ReadResult::ok;
        case Item::value: break;
    }
    if (q) {
        if (t.size() > static_cast<std::size_t>(kWorkCap)) t = t.substr(0, kWorkCap);
        std::size_t n = unquote(t, g_unquoted);
        v.assign({g_unquoted, n});
    } else {
        v.assign(t);
    }
    return ReadResult::ok;
}

ReadResult readReal8(std::string_view line, double& v) { return FreeFormat(line).real8(v); }
ReadResult readReal4(std::string_view line, float& v) { return FreeFormat(line).real4(v); }
ReadResult readInt4(std::string_view line, int32_t& v) { return FreeFormat(line).int4(v); }
