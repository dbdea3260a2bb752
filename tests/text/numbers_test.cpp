#include <gtest/gtest.h>

#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>

#include "text/numbers.hpp"

namespace {

std::string str(std::string_view v) { return std::string(trimmed(v)); }

TEST(Integers, LeftJustifiedDecimal) {
    Text<20> t;
    AINTEGER(t, 0);
    EXPECT_EQ(str(t), "0");
    AINTEGER(t, -17);
    EXPECT_EQ(str(t), "-17");
    AINTEGER(t, INT32_MAX);
    EXPECT_EQ(str(t), "2147483647");
    AINTEGER(t, INT32_MIN);
    EXPECT_EQ(str(t), "-2147483648");
    AINTEGER8(t, INT64_MIN);
    EXPECT_EQ(str(t), "-9223372036854775808");
    Text<3> small;
    AINTEGER(small, 12345);
    EXPECT_EQ(std::string(small.full()), "123");

    struct P {
        int v, d;
        const char* want;
    } prec[] = {{7, 3, "007"}, {1234, 3, "1234"}, {-7, 3, "-7"}, {0, 1, "0"}, {5, 20, "00000000000000000005"}};
    for (const auto& p : prec) {
        AINTEGERPREC0(t, p.v, p.d);
        EXPECT_EQ(str(t), p.want) << p.v << " " << p.d;
    }
    AINTEGER8PREC0(t, 42, 5);
    EXPECT_EQ(str(t), "00042");
}

TEST(Reals, DecimalsBySize) {
    struct C {
        float v;
        const char* want;
    } cases[] = {
        {1.5f, "1.5"},     {2.0f, "2."},        {1234.7f, "1235."}, {0.25f, "0.25"}, {0.0f, "0."},
        {100.0f, "100."},  {0.01f, "0.01"},     {1000.0f, "1000."}, {-0.005f, "-0.005"},
        {999.96f, "1000."},  // 999.96 takes one decimal by size, then rounds up
        {-2.5f, "-2.5"},   {1e25f, "********************"},
    };
    Text<20> t;
    for (const auto& c : cases) {
        AREAL(t, c.v);
        EXPECT_EQ(str(t), c.want) << c.v;
    }
    AREAL8(t, 1.0e10);
    EXPECT_EQ(str(t), "10000000000.");
    AREAL8(t, 0.5);
    EXPECT_EQ(str(t), "0.5");
    AREAL8(t, 123456.789);
    EXPECT_EQ(str(t), "123456.789");
    AREALD(t, 1.5f, 3);
    EXPECT_EQ(str(t), "1.500");
    AREALD(t, 7.0f, 0);
    EXPECT_EQ(str(t), "7.");
    AREALD8(t, -0.125, 2);
    EXPECT_EQ(str(t), "-0.12");  // exact tie: to the even digit
}

TEST(Fields, FixedWidthLayouts) {
    struct C {
        int w, d;
        double v;
        const char* want;
    } cases[] = {
        {16, 6, 1234.5, "     1234.500000"},
        {16, 6, 0.5, "        0.500000"},
        {16, 6, 300000.5, "   300000.500000"},
        {16, 6, 1.0e10, "****************"},
        {16, 6, 999999999.0, "999999999.000000"},
        {16, 6, -99999999.0, "-99999999.000000"},
        {16, 6, -123456789.0, "****************"},
        {12, 3, 1234.5, "    1234.500"},
        {12, 3, 0.5, "       0.500"},
        {4, 3, 0.5, ".500"},    // no room for the zero
        {5, 3, -0.5, "-.500"},  // nor here
        {4, 3, 0.9996, "****"},
        {8, 3, -0.0001, "  -0.000"},
        {5, 2, 0.125, " 0.12"},
        {5, 2, 0.375, " 0.38"},
        {8, 4, static_cast<float>(0.035), "  0.0350"},
        {12, 4, static_cast<float>(101.25), "    101.2500"},
        {3, 0, 7.0, " 7."},
    };
    for (const auto& c : cases) {
        char buf[70];
        std::memset(buf, '#', sizeof buf);
        char* e = putFixed(buf, c.w, c.d, c.v);
        EXPECT_EQ(e - buf, c.w);
        EXPECT_EQ(std::string(buf, static_cast<std::size_t>(c.w)), c.want) << c.v << " F" << c.w << "." << c.d;
        EXPECT_EQ(buf[c.w], '#');  // nothing behind the field
    }
    EXPECT_EQ(std::string(intText(4, 1001)), "1001");
    EXPECT_EQ(std::string(intText(5, 7)), "    7");
    EXPECT_EQ(std::string(intText(3, 12345)), "***");
    EXPECT_EQ(std::string(countText(-42)), "-42");
}

}  // namespace

namespace {

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
                v = static_cast<double>(static_cast<float>(static_cast<int64_t>(next() % 20000000) - 10000000) / 4096.0f);
                break;
        }
        const int d = static_cast<int>(next() % 11);
        char want[400];
        auto r = std::to_chars(want, want + sizeof want, v, std::chars_format::fixed, d);
        ASSERT_EQ(r.ec, std::errc());
        std::string w(want, r.ptr);
        if (d == 0) w += '.';
        const int width = 40;
        char got[64];
        putFixed(got, width, d, v);
        std::string g(got, width);
        std::string expect = w.size() > static_cast<std::size_t>(width) ? std::string(width, '*')
                                                                         : std::string(width - w.size(), ' ') + w;
        ASSERT_EQ(g, expect) << v << " with " << d << " decimals";
        ++checked;
    }
    EXPECT_GT(checked, 150000);
}

}  // namespace
