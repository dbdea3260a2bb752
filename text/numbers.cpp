#include "text/numbers.hpp"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

constexpr uint64_t kPow10[] = {1ull,       10ull,       100ull,       1000ull,       10000ull,      100000ull,
                               1000000ull, 10000000ull, 100000000ull, 1000000000ull, 10000000000ull};

constexpr double kTwo52 = 4503599627370496.0;

// The quick road of a fixed-point field: t = |value| * 10^d (below 2^52),
// rounded once. The exact product lies within t * 2^-53 of t, so when t is
// farther than that from a tie, its nearest integer is the exact product's
// nearest integer; adding 2^52 rounds it (ties to even) and leaves it as the
// low bits of the sum. False near a tie, with nothing set.
bool nearestClearOfTie(double t, uint64_t& n) {
    const double biased = t + kTwo52;
    if (!(std::fabs(t - (biased - kTwo52)) < 0.5 - t * 2.3e-16)) return false;
    n = std::bit_cast<uint64_t>(biased) - std::bit_cast<uint64_t>(kTwo52);
    return true;
}

// Exact fixed-point digits of |value| rounded to `decimals` places, for the
// common case of a value whose scaled magnitude fits 64 bits: value is
// m * 2^e, so value * 10^d = m * 10^d * 2^e is computed exactly in 128 bits
// and rounded to nearest, an exact tie going to the even result. This is what
// to_chars gives, at a fraction of the cost. False when out of its range.
bool scaledFixed(double value, int decimals, uint64_t& scaled) {
    if (decimals > 10) return false;
    const double t = std::fabs(value) * static_cast<double>(kPow10[decimals]);
    if (t < kTwo52 && nearestClearOfTie(t, scaled)) return true;
    const auto bits = std::bit_cast<uint64_t>(value);
    const int biased = static_cast<int>((bits >> 52) & 0x7FF);
    uint64_t m = bits & ((uint64_t{1} << 52) - 1);
    if (biased == 0) {
        if (m == 0) {
            scaled = 0;
            return true;
        }
    } else {
        m |= uint64_t{1} << 52;
    }
    const int e = (biased == 0 ? 1 : biased) - 1075;  // |value| = m * 2^e
    // 10^d < 2^b[d]: keep |value| * 10^d below 2^63 so that it fits the result.
    static const int b[] = {0, 4, 7, 10, 14, 17, 20, 24, 27, 30, 34};
    if (e + 53 + b[decimals] > 63) return false;
    const unsigned __int128 p = static_cast<unsigned __int128>(m) * kPow10[decimals];
    if (e >= 0) {
        scaled = static_cast<uint64_t>(p << e);
        return true;
    }
    const int shift = -e;
    if (shift >= 127) {
        scaled = 0;  // far below half a unit of the last place
        return true;
    }
    const unsigned __int128 q = p >> shift;
    const unsigned __int128 rest = p - (q << shift);
    const unsigned __int128 half = static_cast<unsigned __int128>(1) << (shift - 1);
    uint64_t r = static_cast<uint64_t>(q);
    if (rest > half || (rest == half && (r & 1u) != 0)) ++r;
    scaled = r;
    return true;
}

}  // namespace

namespace {

char* stars(char* out, int width) {
    std::memset(out, '*', static_cast<std::size_t>(width));
    return out + width;
}

constexpr uint64_t kPow10All[] = {1ull,
                                  10ull,
                                  100ull,
                                  1000ull,
                                  10000ull,
                                  100000ull,
                                  1000000ull,
                                  10000000ull,
                                  100000000ull,
                                  1000000000ull,
                                  10000000000ull,
                                  100000000000ull,
                                  1000000000000ull,
                                  10000000000000ull,
                                  100000000000000ull,
                                  1000000000000000ull,
                                  10000000000000000ull,
                                  100000000000000000ull,
                                  1000000000000000000ull,
                                  10000000000000000000ull};

// Decimal digits of x (none for 0).
int digitCount(uint64_t x) {
    const int t = static_cast<int>((std::bit_width(x) * 1233) >> 12);  // about log10(x)
    return t - (x < kPow10All[t] ? 1 : 0) + 1;
}

constexpr char kPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes exactly `count` digits of v (leading zeros as needed) in front of
// p, two at a time; returns the new front. 32-bit arithmetic while it fits.
template <typename U>
char* digitsBefore(char* p, U v, int count) {
    for (; count >= 2; count -= 2) {
        const auto r = static_cast<unsigned>(v % 100);
        v /= 100;
        p -= 2;
        std::memcpy(p, kPairs + 2 * r, 2);
    }
    if (count == 1) *--p = static_cast<char>('0' + v % 10);
    return p;
}

char* digitsBefore64(char* p, uint64_t v, int count) {
    return v <= UINT32_MAX ? digitsBefore(p, static_cast<uint32_t>(v), count) : digitsBefore(p, v, count);
}

// The field from the exact scaled integer, written from the right straight
// into place: the decimals and the whole part do not depend on each other.
char* fixedFromScaled(char* out, int width, int decimals, bool negative, uint64_t scaled) {
    const int nd = digitCount(scaled);
    const int intDigits = nd > decimals ? nd - decimals : 1;  // a zero before the point at least
    int len = (negative ? 1 : 0) + intDigits + 1 + decimals;
    bool dropZero = false;
    if (len == width + 1 && nd <= decimals) {
        // Drop the zero before the point when that alone makes it fit.
        dropZero = true;
        --len;
    }
    if (len > width) return stars(out, width);
    const uint64_t whole = scaled / kPow10All[decimals];
    const uint64_t part = scaled - whole * kPow10All[decimals];
    char* p = digitsBefore64(out + width, part, decimals);
    *--p = '.';
    if (!dropZero) p = digitsBefore64(p, whole, intDigits);
    if (negative) *--p = '-';
    while (p > out) *--p = ' ';
    return out + width;
}

// The two ASCII digits of x (below 100), in memory order.
uint64_t digitPair(uint32_t x) {
    uint16_t p;
    std::memcpy(&p, kPairs + 2 * x, 2);
    return p;
}

// The last four bytes of eightDigits(v) for v below 10^4, the first four zero.
uint64_t lastFourDigits(uint32_t v) { return (digitPair(v / 100) << 32) | (digitPair(v % 100) << 48); }

// Eight decimal digits of v (below 10^8), leading zeros kept, as eight ASCII
// bytes in memory order: split 4 + 4 and then 2 + 2 by multiplications, each
// pair looked up, so no step waits on more than two before it.
uint64_t eightDigits(uint32_t v) {
    const uint32_t high = v / 10000;
    return digitPair(high / 100) | (digitPair(high % 100) << 16) | lastFourDigits(v % 10000);
}

// Eight bytes taken from two words laid one after the other in memory,
// starting `at` bytes (0 to 8) into the first.
uint64_t window(uint64_t first, uint64_t second, int at) {
    if (at == 0) return first;
    if (at == 8) return second;
    return (first >> (8 * at)) | (second << (64 - 8 * at));
}

void store8(char* p, uint64_t w) { std::memcpy(p, &w, 8); }

// The usual field: at most 7 decimals, a magnitude below 10^8, a width of at
// most 40 that the text fits. The scaled value is taken on the quick road
// (nearestClearOfTie); the whole part and the decimals are made by digit
// pairs, and the last 16 bytes of the field put together in two words and
// stored. One instance per count of decimals, so every shift, mask and
// divisor is a constant. False, with nothing written, for any other field.
template <int Decimals>
bool shortFixed(char* out, int width, double value) {
    constexpr uint64_t kBlanks = 0x2020202020202020ull;
    constexpr uint64_t kZeros = 0x3030303030303030ull;
    constexpr uint32_t kScale = static_cast<uint32_t>(kPow10[Decimals]);
    const double a = std::fabs(value);
    if (width > 40 || !(a < 1e8)) return false;
    uint64_t scaled;
    if (!nearestClearOfTie(a * static_cast<double>(kScale), scaled)) return false;  // below 10^15
    const auto whole = static_cast<uint32_t>(scaled / kScale);
    if (whole >= 100000000) return false;
    uint64_t hi = eightDigits(whole);
    // The decimals: only the last Decimals bytes of this word are used.
    const auto part = static_cast<uint32_t>(scaled - uint64_t{whole} * kScale);
    const uint64_t lo = Decimals <= 4 ? lastFourDigits(part) : eightDigits(part);
    const int zeros = hi == kZeros ? 7 : std::countr_zero(hi ^ kZeros) / 8;  // one digit stays
    const int intDigits = 8 - zeros;
    const bool negative = std::signbit(value);
    if ((negative ? 1 : 0) + intDigits + 1 + Decimals > width) return false;
    if (zeros > 0) hi -= 0x1010101010101010ull >> (8 * (8 - zeros));  // '0' - 0x10 is ' '
    // The last word: decimals, point, and the last 7 - Decimals whole digits;
    // the word before it: blanks and the first Decimals + 1 whole digits.
    constexpr int kPointAt = 7 - Decimals;
    constexpr uint64_t kLeftMask = (uint64_t{1} << (8 * kPointAt)) - 1;
    uint64_t w2 = uint64_t{'.'} << (8 * kPointAt);
    if constexpr (Decimals > 0) w2 |= lo & (~uint64_t{0} << (8 * kPointAt + 8));
    if constexpr (Decimals < 7) w2 |= (hi >> (8 * Decimals + 8)) & kLeftMask;
    const uint64_t w1 = (hi << (8 * kPointAt)) | (kBlanks & kLeftMask);
    if (width >= 16) {
        for (int i = 0; i < width - 16; i += 8) store8(out + i, kBlanks);
        store8(out + width - 16, w1);
    } else if (width >= 8) {
        store8(out, window(w1, w2, 16 - width));
    } else {
        for (int k = 0; k < width; ++k) out[k] = static_cast<char>(w2 >> (8 * (8 - width + k)));
    }
    if (width >= 8) store8(out + width - 8, w2);
    if (negative) out[width - 2 - Decimals - intDigits] = '-';
    return true;
}

bool shortFixed(char* out, int width, int decimals, double value) {
    switch (decimals) {
        case 0: return shortFixed<0>(out, width, value);
        case 1: return shortFixed<1>(out, width, value);
        case 2: return shortFixed<2>(out, width, value);
        case 3: return shortFixed<3>(out, width, value);
        case 4: return shortFixed<4>(out, width, value);
        case 5: return shortFixed<5>(out, width, value);
        case 6: return shortFixed<6>(out, width, value);
        case 7: return shortFixed<7>(out, width, value);
        default: return false;
    }
}

}  // namespace

char* putFixed(char* out, int width, int decimals, double value) {
    if (width < 1) return out;
    if (decimals < 0) decimals = 0;
    if (!std::isfinite(value)) return stars(out, width);
    if (shortFixed(out, width, decimals, value)) return out + width;
    uint64_t scaled;
    if (scaledFixed(value, decimals, scaled)) return fixedFromScaled(out, width, decimals, std::signbit(value), scaled);
    // Large values, or many decimals. Anything of 1e60 or more can never fit a
    // field of at most 64 bytes.
    if (std::fabs(value) >= 1e60 || decimals > 60) return stars(out, width);
    char buf[128];
    auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, decimals);
    if (r.ec != std::errc()) return stars(out, width);
    int n = static_cast<int>(r.ptr - buf);
    if (decimals == 0) buf[n++] = '.';  // the text still ends in the point
    if (n > width) return stars(out, width);
    std::memset(out, ' ', static_cast<std::size_t>(width - n));
    std::memcpy(out + (width - n), buf, static_cast<std::size_t>(n));
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
    if (a < 0.01f) d = 6;
    else if (a < 0.1f) d = 5;
    else if (a < 1.0f) d = 4;
    else if (a < 10.0f) d = 3;
    else if (a < 100.0f) d = 2;
    else if (a < 1000.0f) d = 1;
    else d = 0;
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
