#include <gtest/gtest.h>

#include <string>

#include "text/freeformat.hpp"

namespace {

TEST(FreeFormat, TwoDoubles) {
    struct C {
        const char* line;
        ReadResult r;
        double x, y;
    } cases[] = {
        {"100.5 200.25", ReadResult::ok, 100.5, 200.25},
        {"100.5,200.25,7", ReadResult::ok, 100.5, 200.25},
        {"  1601875.34964631 , 16534318.1006899 ", ReadResult::ok, 1601875.34964631, 16534318.1006899},
        {"324539, 392790, None", ReadResult::ok, 324539, 392790},
        {"1.5e+3 2", ReadResult::ok, 1500, 2},
        {"1.5+3 2", ReadResult::ok, 1500, 2},
        {"1d2 .5", ReadResult::ok, 100, 0.5},
        {"+5 -6.", ReadResult::ok, 5, -6},
        {"\t3\t4", ReadResult::ok, 3, 4},
        {"2*3.5", ReadResult::ok, 3.5, 3.5},
        {" , 2", ReadResult::ok, -1, 2},  // null keeps the old value
        {"1,,2", ReadResult::ok, 1, -1},
        {"1 / 2", ReadResult::ok, 1, -1},  // a slash ends the list
        {"2* 9", ReadResult::ok, -1, -1},
        {"5", ReadResult::end, 5, -1},
        {"", ReadResult::end, -1, -1},
        {"5 abc", ReadResult::bad, 5, -1},
        {"1.5x 3", ReadResult::bad, -1, -1},
        {"e 1", ReadResult::bad, -1, -1},
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

TEST(FreeFormat, SinglesAreRoundedOnceFromTheDecimal) {
    float v = 0;
    // 16777217 lies between two floats; read directly it rounds to even.
    EXPECT_EQ(readReal4("16777217", v), ReadResult::ok);
    EXPECT_EQ(v, 16777216.0f);
    EXPECT_EQ(readReal4("0.035 x", v), ReadResult::ok);
    EXPECT_EQ(v, 0.035f);
    EXPECT_EQ(readReal4("1000.5 abc", v), ReadResult::ok);
    EXPECT_EQ(v, 1000.5f);
}

TEST(FreeFormat, Integers) {
    int32_t v = 9;
    EXPECT_EQ(readInt4(" -42 ", v), ReadResult::ok);
    EXPECT_EQ(v, -42);
    EXPECT_EQ(readInt4("1.5", v), ReadResult::bad);
    EXPECT_EQ(readInt4("3000000000", v), ReadResult::bad);
    EXPECT_EQ(readInt4("-2147483648", v), ReadResult::ok);
    EXPECT_EQ(v, INT32_MIN);
}

TEST(FreeFormat, TextValues) {
    struct C {
        const char* line;
        const char* want;
    } cases[] = {
        {"  \"My Levee\" ", "My Levee"}, {" Left Levee", "Left"}, {"'it''s'", "it's"},
        {"\"unclosed", "unclosed"},      {"a,b", "a"},            {"x/y", "x"},
    };
    for (const auto& c : cases) {
        Text<50> t;
        EXPECT_EQ(FreeFormat(c.line).text(t), ReadResult::ok) << c.line;
        EXPECT_EQ(std::string(t.trimmed()), c.want) << c.line;
    }
    Text<50> t;
    EXPECT_EQ(FreeFormat("   ").text(t), ReadResult::end);
}

}  // namespace
