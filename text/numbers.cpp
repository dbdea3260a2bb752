#include "text/numbers.hpp"

#include <charconv>
#include <cmath>
#include <cstring>

char* putFixed(char* out, int width, int decimals, double value) {
    if (width < 1) return out;
    if (decimals < 0) decimals = 0;
    char buf[128];
    int n = -1;
    // Anything of 1e60 or more can never fit a field of at most 64 bytes.
    if (std::isfinite(value) && std::fabs(value) < 1e60 && decimals <= 60) {
        auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, decimals);
        if (r.ec == std::errc()) n = static_cast<int>(r.ptr - buf);
    }
    if (n < 0) {
        std::memset(out, '*', static_cast<std::size_t>(width));
        return out + width;
    }
    const char* s = buf;
    // With decimals 0 the text still ends in the point.
    if (decimals == 0) buf[n++] = '.';
    if (n == width + 1) {
        // Drop the zero before the point when that alone makes it fit.
        if (s[0] == '0' && s[1] == '.') {
            ++s;
            --n;
        } else if (s[0] == '-' && s[1] == '0' && s[2] == '.') {
            buf[1] = '-';
            ++s;
            --n;
        }
    }
    if (n > width) {
        std::memset(out, '*', static_cast<std::size_t>(width));
        return out + width;
    }
    std::memset(out, ' ', static_cast<std::size_t>(width - n));
    std::memcpy(out + (width - n), s, static_cast<std::size_t>(n));
    return out + width;
}

char* putInt(char* out, int width, int64_t value) {
    if (width < 1) return out;
    char buf[24];
    auto r = std::to_chars(buf, buf + sizeof buf, value);
    int n = static_cast<int>(r.ptr - buf);
    if (n > width) {
        std::memset(out, '*', static_cast<std::size_t>(width));
        return out + width;
    }
    std::memset(out, ' ', static_cast<std::size_t>(width - n));
    std::memcpy(out + (width - n), buf, static_cast<std::size_t>(n));
    return out + width;
}

char* putCount(char* out, int64_t value) {
    auto r = std::to_chars(out, out + 20, value);
    return r.ptr;
}

namespace {
char g_field[64];
}

std::string_view fixedText(int width, int decimals, double value) {
    if (width > 64) width = 64;
    return {g_field, static_cast<std::size_t>(putFixed(g_field, width, decimals, value) - g_field)};
}

std::string_view intText(int width, int64_t value) {
    if (width > 64) width = 64;
    return {g_field, static_cast<std::size_t>(putInt(g_field, width, value) - g_field)};
}

std::string_view countText(int64_t value) {
    return {g_field, static_cast<std::size_t>(putCount(g_field, value) - g_field)};
}

namespace {

// The family rule: right-justify in 20, then move to the left.
void leftOfField(TextRef out, const char* field) {
    int i = 0;
    while (i < 20 && field[i] == ' ') ++i;
    out.assign({field + i, static_cast<std::size_t>(20 - i)});
}

void precZero(TextRef out, int64_t value, int32_t digits) {
    char f[20];
    putInt(f, 20, value);
    if (value >= 0 && digits >= 1 && digits <= 20 && f[20 - digits] == ' ') {
        for (int i = 20 - digits; i < 20 && f[i] == ' '; ++i) f[i] = '0';
    }
    leftOfField(out, f);
}

// Decimals chosen by size, trailing zeros removed; the point always stays.
void realBySize(TextRef out, double value, int decimals) {
    char f[20];
    putFixed(f, 20, decimals, value);
    int end = 20;
    if (f[0] != '*') {
        while (end > 0 && f[end - 1] == '0') --end;
    }
    int i = 0;
    while (i < end && f[i] == ' ') ++i;
    out.assign({f + i, static_cast<std::size_t>(end - i)});
}

}  // namespace

void AINTEGER(TextRef out, int32_t value) {
    char f[20];
    putInt(f, 20, value);
    leftOfField(out, f);
}

void AINTEGER8(TextRef out, int64_t value) {
    char f[20];
    putInt(f, 20, value);
    leftOfField(out, f);
}

void AINTEGERPREC0(TextRef out, int32_t value, int32_t digits) { precZero(out, value, digits); }

void AINTEGER8PREC0(TextRef out, int64_t value, int32_t digits) { precZero(out, value, digits); }

void AREAL(TextRef out, float value) {
    const float a = std::fabs(value);
    int d;
    if (a < 0.01f)
        d = 6;
    else if (a < 0.1f)
        d = 5;
    else if (a < 1.0f)
        d = 4;
    else if (a < 10.0f)
        d = 3;
    else if (a < 100.0f)
        d = 2;
    else if (a < 1000.0f)
        d = 1;
    else
        d = 0;
    realBySize(out, value, d);
}

void AREAL8(TextRef out, double value) {
    const double a = std::fabs(value);
    static const double limits[] = {1.0, 10.0, 100.0, 1000.0, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    int d = 0;
    for (int k = 0; k < 10; ++k) {
        if (a < limits[k]) {
            d = 10 - k;
            break;
        }
    }
    realBySize(out, value, d);
}

void AREALD(TextRef out, float value, int32_t decimals) {
    char f[20];
    putFixed(f, 20, decimals, value);
    leftOfField(out, f);
}

void AREALD8(TextRef out, double value, int32_t decimals) {
    char f[20];
    putFixed(f, 20, decimals, value);
    leftOfField(out, f);
}
