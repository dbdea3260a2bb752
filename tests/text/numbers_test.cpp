// Number texts by size, fixed-width fields, and the fields against std::to_chars.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string>
#include <tuple>

#include "text/numbers.hpp"

namespace {

// Decimals by the size of the value, trailing zeros trimmed but the point kept.
TEST(Reals, DecimalsBySize) {
    const std::tuple<double, bool, const char*> cases[] = {
        {1.5, true, "1.5"},
        {2.0, true, "2."},
        {1234.7, true, "1235."},
        {0.25, true, "0.25"},
        {0.0, true, "0."},
        {100.0, true, "100."},
        {0.01, true, "0.01"},
        {-0.005, true, "-0.005"},
        {999.96, true, "1000."},  // one decimal by size, then rounds up
        {1e25, true, "********************"},
        {1.0e10, false, "10000000000."},
        {0.5, false, "0.5"},
        {123456.789, false, "123456.789"},
    };
    Text<20> t;
    for (const auto& [v, single, want] : cases) {
        if (single) AREAL(t, static_cast<float>(v));
        else AREAL8(t, v);
        EXPECT_EQ(t.trimmed(), want) << v;
    }
}

TEST(Fields, FixedWidthLayouts) {
    struct C {
        int w, d;
        double v;
        const char* want;
    } cases[] = {
        {16, 6, 999999999.0, "999999999.000000"},
        {16, 6, -99999999.0, "-99999999.000000"},
        {16, 6, 1.0e10, "****************"},
        {16, 6, -123456789.0, "****************"},
        {4, 3, 0.9996, "****"},
        {8, 3, -0.0001, "  -0.000"},
        {4, 3, 0.5, ".500"},  // no room for the zero
        {5, 3, -0.5, "-.500"},
    };
    for (const auto& c : cases) {
        char buf[70];
        std::memset(buf, '#', sizeof buf);
        char* e = putFixed(buf, c.w, c.d, c.v);
        EXPECT_EQ(e - buf, c.w);
        EXPECT_EQ(std::string(buf, static_cast<std::size_t>(c.w)), c.want) << c.v << " F" << c.w << "." << c.d;
        EXPECT_EQ(buf[c.w], '#');  // nothing behind the field
    }
    EXPECT_EQ(intText(3, 12345), "***");
}

// The fixed-point fields must give to_chars' digits for every value: random
// magnitudes across the whole range, exact binary ties, and values right at
// the edges of the fields.
TEST(Fields, FixedAgreesWithToCharsEverywhere) {
    uint64_t state = 88172645463325252ull;
    auto next = [&] {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state;
    };
    int checked = 0;
    for (int i = 0; i < 200000; ++i) {
        double v;
        switch (i % 4) {
            case 0: {  // any bit pattern of a finite double
                uint64_t bits = next();
                std::memcpy(&v, &bits, 8);
                if (!std::isfinite(v)) continue;
                break;
            }
            case 1:  // map-sized coordinates with few decimals
                v = static_cast<double>(static_cast<int64_t>(next() % 2000000000000ull) - 1000000000000LL) / 1000.0;
                break;
            case 2:  // exact binary ties at some decimal place
                v = static_cast<double>(static_cast<int64_t>(next() % 2000001) - 1000000) / 1024.0;
                break;
            default:  // single precision values, widened
                v = static_cast<double>(static_cast<float>(static_cast<int64_t>(next() % 20000000) - 10000000) /
                                        4096.0f);
                break;
        }
        const int d = static_cast<int>(next() % 11);
        char want[400];
        auto r = std::to_chars(want, want + sizeof want, v, std::chars_format::fixed, d);
        ASSERT_EQ(r.ec, std::errc());
        std::string w(want, r.ptr);
        if (d == 0) w += '.';
        // Widths on both sides of each road of the writer (1 to 40 bytes).
        static constexpr int kWidths[] = {1, 3, 5, 7, 8, 12, 15, 16, 17, 24, 32, 40};
        const int width = kWidths[next() % std::size(kWidths)];
        // A zero before the point goes when that alone makes the text fit.
        if (w.size() == static_cast<std::size_t>(width) + 1) {
            if (w.starts_with("0.")) w.erase(0, 1);
            else if (w.starts_with("-0.")) w.erase(1, 1);
        }
        char got[64];
        putFixed(got, width, d, v);
        std::string g(got, static_cast<std::size_t>(width));
        std::string expect = w.size() > static_cast<std::size_t>(width)
                                 ? std::string(static_cast<std::size_t>(width), '*')
                                 : std::string(static_cast<std::size_t>(width) - w.size(), ' ') + w;
        ASSERT_EQ(g, expect) << v << " with " << d << " decimals in " << width;
        ++checked;
    }
    EXPECT_GT(checked, 150000);
}

}  // namespace
