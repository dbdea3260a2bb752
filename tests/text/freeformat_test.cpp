// The free-format list reader: separators, nulls, slash, repeat counts, end
// and bad values, singles, integers and texts.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "text/freeformat.hpp"

namespace {

TEST(FreeFormat, TwoDoubles) {
    struct C {
        const char* line;
        ReadResult r;
        double x, y;
    } cases[] = {
        {"100.5,200.25,7", ReadResult::ok, 100.5, 200.25},
        {"1.5+3 2", ReadResult::ok, 1500, 2},
        {"1d2 .5", ReadResult::ok, 100, 0.5},
        {"+5 -6.", ReadResult::ok, 5, -6},
        {"\t3\t4", ReadResult::ok, 3, 4},
        {"2*3.5", ReadResult::ok, 3.5, 3.5},
        {"324539, 392790, None", ReadResult::ok, 324539, 392790},  // values behind are never looked at
        {" , 2", ReadResult::ok, -1, 2},
        {"1,,2", ReadResult::ok, 1, -1},  // nulls keep old values
        {"1 / 2", ReadResult::ok, 1, -1},
        {"1/ 2", ReadResult::ok, 1, -1},  // a slash ends the list
        {"2* 9", ReadResult::ok, -1, -1},
        {"5", ReadResult::end, 5, -1},
        {"", ReadResult::end, -1, -1},
        {"5 abc", ReadResult::bad, 5, -1},
        {"1.5x 3", ReadResult::bad, -1, -1},
        {"nan 1", ReadResult::bad, -1, -1},
        {"inf 1", ReadResult::bad, -1, -1},
        {"1e999 1", ReadResult::bad, -1, -1},
        {"'1' 2", ReadResult::bad, -1, -1},
    };
    for (const auto& c : cases) {
        double x = -1, y = -1;
        FreeFormat f(c.line);
        ReadResult r = f.real8(x);
        if (r == ReadResult::ok) r = f.real8(y);
        EXPECT_EQ(r, c.r) << c.line;
        EXPECT_EQ(x, c.x) << c.line;
        EXPECT_EQ(y, c.y) << c.line;
    }
}

TEST(FreeFormat, SinglesAndIntegers) {
    float v = 0;
    // 16777217 lies between two floats; read directly it rounds to even.
    EXPECT_EQ(readReal4("16777217", v), ReadResult::ok);
    EXPECT_EQ(v, 16777216.0f);
    int32_t i = 9;
    EXPECT_EQ(readInt4("-2147483648", i), ReadResult::ok);
    EXPECT_EQ(i, INT32_MIN);
    EXPECT_EQ(readInt4("1.5", i), ReadResult::bad);
    EXPECT_EQ(readInt4("3000000000", i), ReadResult::bad);
}

TEST(FreeFormat, TextValues) {
    const std::pair<const char*, const char*> cases[] = {
        {"  \"My Levee\" ", "My Levee"},
        {" Left Levee", "Left"},
        {"'it''s'", "it's"},
        {"\"unclosed", "unclosed"},
        {"a,b", "a"},
        {"x/y", "x"},
    };
    for (const auto& [line, want] : cases) {
        Text<50> t;
        EXPECT_EQ(FreeFormat(line).text(t), ReadResult::ok) << line;
        EXPECT_EQ(t.trimmed(), want) << line;
    }
    Text<50> t;
    EXPECT_EQ(FreeFormat("   ").text(t), ReadResult::end);
}

// Plain decimals take a quicker road than other numbers; both must read the
// same values, and a value the quick road declines must not be skipped.
TEST(FreeFormat, QuickAndGeneralRoadsAgree) {
    const char* lines[] = {"16777217 2",           "0.1 0.2", "-0.0 5",
                           "123456789012345678 1", "1.5e3 7", "12345678901234567890123 1",
                           "00.000100 9",          "7. 8",    "352025.4900 6254930.4680",
                           "-1.25,  3 , 4"};
    for (const char* l : lines) {
        double a = 0, b = 0;
        FreeFormat f(l);
        ASSERT_EQ(f.real8(a), ReadResult::ok) << l;
        ASSERT_EQ(f.real8(b), ReadResult::ok) << l;
        std::string_view sv(l);
        std::size_t cut = sv.find_first_of(" ,");
        double wa = 0;
        ASSERT_TRUE(parseReal8(sv.substr(0, cut), wa)) << l;
        EXPECT_EQ(std::signbit(a), std::signbit(wa)) << l;
        EXPECT_EQ(a, wa) << l;
        float fa = 0, fb = 0, wf = 0;
        FreeFormat g(l);
        ASSERT_EQ(g.real4(fa), ReadResult::ok) << l;
        ASSERT_EQ(g.real4(fb), ReadResult::ok) << l;
        ASSERT_TRUE(parseReal4(sv.substr(0, cut), wf)) << l;
        EXPECT_EQ(fa, wf) << l;
        EXPECT_EQ(static_cast<double>(fb), static_cast<double>(static_cast<float>(b))) << l;
    }
}

// The quick road for plain decimals against the general one: every length of
// whole and decimal part, each followed by the end of the text, a separator,
// or a byte that spoils the number. The token read alone is the reference.
TEST(FreeFormat, DigitRunsOfEveryLength) {
    const std::string digits = "9876543210123456789";
    const char* tails[] = {"", ",", "  4", "x9", "e2", "-1"};
    for (int whole = 0; whole <= 12; ++whole) {
        for (int frac = -1; frac <= 12; ++frac) {  // -1: no point at all
            std::string number = digits.substr(0, static_cast<std::size_t>(whole));
            if (frac >= 0) number += "." + digits.substr(7, static_cast<std::size_t>(frac));
            if (number.empty()) continue;
            for (const char* tail : tails) {
                for (const char* sign : {"", "-"}) {
                    const std::string line = sign + number + tail;
                    const std::string_view token = std::string_view(line).substr(0, line.find_first_of(" ,"));
                    double want = -1, got = -1;
                    const bool valid = parseReal8(token, want);
                    const ReadResult r = FreeFormat(line).real8(got);
                    if (!valid) {
                        EXPECT_NE(r, ReadResult::ok) << line;
                        continue;
                    }
                    ASSERT_EQ(r, ReadResult::ok) << line;
                    EXPECT_EQ(got, want) << line;
                    float wantF = -1, gotF = -1;
                    ASSERT_TRUE(parseReal4(token, wantF)) << line;
                    ASSERT_EQ(FreeFormat(line).real4(gotF), ReadResult::ok) << line;
                    EXPECT_EQ(gotF, wantF) << line;
                }
            }
        }
    }
}

}  // namespace
