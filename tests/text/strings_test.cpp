// Comparison, flags, cleaning, substrings and number counting of the text toolkit.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "text/strings.hpp"

namespace {

TEST(TextModel, CapacityPaddingAndTrailingTab) {
    Text<5> t("abcdefg");
    EXPECT_EQ(t.full(), "abcde");
    t = "xy";
    EXPECT_EQ(t.full(), "xy   ");
    EXPECT_FALSE(t.ref().append("1234"));  // cut at the capacity
    EXPECT_EQ(t.full(), "xy123");
    EXPECT_EQ(Text<6>("a\t ").len(), 2);  // a trailing tab is text, not padding
}

// The short copies and comparisons, at every length each road takes and a
// little past it: a copy moves exactly n bytes, also onto an overlapping
// range either way, and a comparison sees a difference at any position.
TEST(TextModel, ShortCopiesAndComparisons) {
    std::string src(100, ' ');
    for (std::size_t i = 0; i < src.size(); ++i) src[i] = static_cast<char>('!' + i % 90);
    for (std::size_t n = 0; n <= 80; ++n) {
        std::string dst(100, '#');
        copyBytes(dst.data() + 5, src.data(), n);
        EXPECT_EQ(dst, std::string(5, '#') + src.substr(0, n) + std::string(95 - n, '#')) << n;
        for (int shift : {-3, 3}) {
            std::string both = src;
            copyBytes(both.data() + 10 + shift, both.data() + 10, n);
            std::string want = src;
            want.replace(static_cast<std::size_t>(10 + shift), n, src.substr(10, n));
            EXPECT_EQ(both, want) << n << " shifted by " << shift;
        }
        std::string other = src;
        EXPECT_TRUE(sameBytes(src.data(), other.data(), n)) << n;
        for (std::size_t at = 0; at < n; ++at) {
            other[at] = '~';
            EXPECT_FALSE(sameBytes(src.data(), other.data(), n)) << n << " at " << at;
            other[at] = src[at];
        }
    }
}

TEST(Asame, NormalForms) {
    const std::tuple<const char*, const char*, bool, bool> cases[] = {
        {"Shp", "SHP", true, false},   {"  MIF", "MIF  ", true, true}, {"\"mif\"", "mif", true, true},
        {"A B", "AB", false, false},   {"", "", true, true},           {"", "'\"\"'", true, true},
        {"x\ty", "xy", true, true},    {"abc", "abd", false, false},   {"abc", "abcd", false, false},
        {"-shp", "shp", false, false}, {"\xE9", "\xC9", false, false},  // bytes above 0x7F are never letters
        {"m'i'f", "MIF", true, false},                                  // a quote inside a word vanishes
        {"\t x", "x", true, true},                                      // tab deleted, then leading blank dropped
    };
    for (const auto& [a, b, same, sameCs] : cases) {
        EXPECT_EQ(ASAME(a, b), same) << a << " | " << b;
        EXPECT_EQ(ASAME(b, a), same) << b << " | " << a;
        EXPECT_EQ(ASAMECS(a, b), sameCs) << a << " | " << b;
    }
}

TEST(FlagExists, SubstringAnyCase) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"read gis z line == a.shp", "READ GIS Z LINE", true},
        {"xREACH:y", "REACH:", true},
        {" REACH ID: 3", "REACH:", false},
        {"anything", "", true},
        {"", "   ", true},
        {"", "x", false},
        {"END", "END:", false},
        {"  CoordSys Earth", "coordsys   ", true},
    };
    for (const auto& [line, flag, found] : cases) EXPECT_EQ(FLAGEXISTS(line, flag), found) << line << " | " << flag;
    Text<40> rest("junk");
    EXPECT_TRUE(FLAGEXISTSRET("Read GIS Z Shape == File.SHP", "read gis z shape", rest));
    EXPECT_EQ(rest.trimmed(), " == File.SHP");
    EXPECT_FALSE(FLAGEXISTSRET("abc", "x", rest));
    EXPECT_TRUE(rest.blank());
}

TEST(Cleaning, Routines) {
    const std::tuple<void (*)(TextRef, std::string_view), const char*, const char*> cases[] = {
        {TRIMF, "\t x", "\t x"},  // a leading tab stops the trimming
        {UPPERCASE, "aZ\xe9q1", "AZ\xe9Q1"},
        {REMOVEQUOTES, "'a\"b'c", "abc"},
        {CLEANATTRIBUTENAME, "Bed Level (m)", "BedLevelm"},
        {CLEANATTRIBUTENAME, "(%)", "X"},
    };
    for (const auto& [fn, in, want] : cases) {
        Text<100> out("stale");
        fn(out, in);
        EXPECT_EQ(out.trimmed(), want) << in;
    }
    Text<4> small;
    CLEANATTRIBUTENAME(small, "abcdefg");  // the caller's capacity cuts
    EXPECT_EQ(small.full(), "abcd");
    Text<20> t("x\"");
    DOUBLEQUOTE(t, t);  // the result may be the input, and grow
    DOUBLEQUOTE(t, t);
    EXPECT_EQ(t.trimmed(), "x\"\"\"\"");
}

TEST(Substrings, CountAndCut) {
    const std::tuple<const char*, const char*, int> counts[] = {
        {"a,b,", ",", 3}, {"", ",", 0}, {"\t\t", ",", 0}, {"a---b", "--", 3},  // hits may overlap
    };
    for (const auto& [s, delimiter, n] : counts) {
        Text<50> t(s);
        EXPECT_EQ(NUMBEROFSUBSTRINGS(t, delimiter), n) << s;
    }
    Text<20> t("a\t,b");
    NUMBEROFSUBSTRINGS(t, ",");
    EXPECT_EQ(t.trimmed(), "a,b");  // tabs deleted in place, as BLANK does

    const char* pieces[] = {"", "a", "b", "", "c", ""};  // pieces 0 to 5 of "a, b,,c"
    for (int n = -1; n <= 5; ++n) {
        Text<20> out("junk");
        SUBSTRING(out, "a, b,,c", ",", n);
        EXPECT_EQ(out.trimmed(), pieces[n < 0 ? 0 : n]) << n;
    }
}

TEST(NumberOfNumbers, ByteClasses) {
    const std::pair<const char*, int> cases[] = {
        {"1 2 3", 3},   {"1,2,3", 3},  {"1,,3", 3},   {",3", 1},       {"1 2 ! 3", 2},
        {"1 # x", 1},   {"", 0},       {"abc", 0},    {"e", 1},        {"1 2 x", -2},
        {"1.5e+3", -1}, {"-", 1},      {"1 ,, 2", 3}, {"1, ,2", 3},    {"1,", 1},
        {"1 ,2", 2},    {"\t7\t8", 2}, {"1;2", -1},   {"   END:", -1}, {"  LEVEE POSITIONS:", 0},
    };
    for (const auto& [s, n] : cases) EXPECT_EQ(NUMBEROFNUMBERS(s), n) << "[" << s << "]";
}

}  // namespace
