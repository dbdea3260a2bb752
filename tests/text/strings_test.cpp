#include <gtest/gtest.h>

#include <string>

#include "text/strings.hpp"

namespace {

std::string str(std::string_view v) { return std::string(trimmed(v)); }

TEST(TextModel, AssignCutsAtCapacityAndPadsWithBlanks) {
    Text<5> t("abcdefg");
    EXPECT_EQ(std::string(t.full()), "abcde");
    t = "xy";
    EXPECT_EQ(std::string(t.full()), "xy   ");
    EXPECT_EQ(t.len(), 2);
    Text<6> u("a\t ");  // a trailing tab is text, not padding
    EXPECT_EQ(u.len(), 2);
    Text<8> w("ab");
    w.ref().append("cd  ef");
    EXPECT_EQ(str(w), "abcd  ef");
    EXPECT_FALSE(w.ref().append("x"));  // full: cut
}

TEST(Blank, DeletesTabsInPlace) {
    Text<20> t("A\tB");
    EXPECT_FALSE(BLANK(t));
    EXPECT_EQ(str(t), "AB");
    Text<20> tabs("\t\t\t");
    EXPECT_TRUE(BLANK(tabs));
    EXPECT_EQ(tabs.len(), 0);
    Text<20> empty;
    EXPECT_TRUE(BLANK(empty));
}

TEST(Asame, NormalForms) {
    struct Case {
        const char* a;
        const char* b;
        bool same;
        bool sameCs;
    } cases[] = {
        {"Shp", "SHP", true, false},
        {"  MIF", "MIF  ", true, true},
        {"\"mif\"", "mif", true, true},
        {"A B", "AB", false, false},
        {"", "", true, true},
        {"", "'\"\"'", true, true},
        {"m'i'f", "MIF", true, false},  // a quote inside a word vanishes
        {"\t x", "x", true, true},      // tab deleted, then leading blank dropped
        {"x\ty", "xy", true, true},
        {"abc", "abd", false, false},
        {"abc", "abcd", false, false},
        {"-shp", "shp", false, false},
        {"\xE9", "\xC9", false, false},  // bytes above 0x7F are never letters
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ASAME(c.a, c.b), c.same) << c.a << " | " << c.b;
        EXPECT_EQ(ASAME(c.b, c.a), c.same) << c.b << " | " << c.a;
        EXPECT_EQ(ASAMECS(c.a, c.b), c.sameCs) << c.a << " | " << c.b;
    }
}

TEST(FlagExists, SubstringAnyCase) {
    EXPECT_TRUE(FLAGEXISTS("read gis z line == a.shp", "READ GIS Z LINE"));
    EXPECT_TRUE(FLAGEXISTS("xREACH:y", "REACH:"));
    EXPECT_FALSE(FLAGEXISTS(" REACH ID: 3", "REACH:"));
    EXPECT_TRUE(FLAGEXISTS("anything", ""));
    EXPECT_TRUE(FLAGEXISTS("", "   "));
    EXPECT_FALSE(FLAGEXISTS("", "x"));
    EXPECT_TRUE(FLAGEXISTS("  CoordSys Earth", "coordsys   "));  // flag's trailing blanks cut
    EXPECT_FALSE(FLAGEXISTS("END", "END:"));
    Text<40> rest("junk");
    EXPECT_TRUE(FLAGEXISTSRET("Read GIS Z Shape == File.SHP", "read gis z shape", rest));
    EXPECT_EQ(str(rest), " == File.SHP");
    EXPECT_FALSE(FLAGEXISTSRET("abc", "x", rest));
    EXPECT_EQ(rest.len(), 0);
}

TEST(Cleaning, Routines) {
    Text<100> out;
    TRIMF(out, "   ab c  ");
    EXPECT_EQ(str(out), "ab c");
    TRIMF(out, "");
    EXPECT_EQ(out.len(), 0);
    TRIMF(out, "\t x");
    EXPECT_EQ(str(out), "\t x");  // a leading tab stops the trimming

    UPPERCASE(out, "aZ\xe9q1");
    EXPECT_EQ(str(out), "AZ\xe9Q1");
    LOWERCASE(out, "aZ\xc9Q1");
    EXPECT_EQ(str(out), "az\xc9q1");
    REMOVEQUOTES(out, "'a\"b'c");
    EXPECT_EQ(str(out), "abc");
    REMOVESPACES(out, " a b  c ");
    EXPECT_EQ(str(out), "abc");
    REMOVETABS(out, "a\tb\t");
    EXPECT_EQ(str(out), "ab");

    ALPHANUMERICONLY(out, "a b-c", '_');
    EXPECT_EQ(str(out), "a_b_c");
    ALPHANUMERICONLY(out, "a b-c", '\0');
    EXPECT_EQ(str(out), "abc");
    ALPHANUMERICONLY(out, "", '_');
    EXPECT_EQ(str(out), "X");
    ALPHANUMERICONLY(out, "--!!", '\0');
    EXPECT_EQ(str(out), "X");

    CLEANATTRIBUTENAME(out, "Bed Level (m)");
    EXPECT_EQ(str(out), "BedLevelm");
    CLEANATTRIBUTENAME(out, "Stream_ID");
    EXPECT_EQ(str(out), "Stream_ID");
    CLEANATTRIBUTENAME(out, "(%)");
    EXPECT_EQ(str(out), "X");
    Text<4> small;
    CLEANATTRIBUTENAME(small, "abcdefg");  // the caller's capacity cuts
    EXPECT_EQ(std::string(small.full()), "abcd");

    DOUBLEQUOTE(out, "no quotes 'here'");
    EXPECT_EQ(str(out), "no quotes 'here'");
    DOUBLEQUOTE(out, "\"\"\"");
    EXPECT_EQ(str(out), "\"\"\"\"\"\"");
    DOUBLEQUOTE(out, "a\"b");
    EXPECT_EQ(str(out), "a\"\"b");
}

TEST(Cleaning, ResultMayBeTheInput) {
    Text<20> t("  'Ab' ");
    TRIMF(t, t);
    EXPECT_EQ(str(t), "'Ab'");
    REMOVEQUOTES(t, t);
    EXPECT_EQ(str(t), "Ab");
    DOUBLEQUOTE(t, "x\"");
    DOUBLEQUOTE(t, t);
    EXPECT_EQ(str(t), "x\"\"\"\"");
}

TEST(Substrings, CountAndCut) {
    struct Count {
        const char* s;
        const char* d;
        int n;
    } counts[] = {
        {"a,b,", ",", 3}, {"", ",", 0}, {"abc", ",", 1}, {",,", ",", 3}, {"\t\t", ",", 0}, {"a--b", "--", 2},
        {"a---b", "--", 3},  // the next search starts one byte behind a hit
    };
    for (const auto& c : counts) {
        Text<50> t(c.s);
        EXPECT_EQ(NUMBEROFSUBSTRINGS(t, c.d), c.n) << c.s;
    }
    Text<20> t("a\t,b");
    NUMBEROFSUBSTRINGS(t, ",");
    EXPECT_EQ(str(t), "a,b");  // tabs deleted in place

    struct Piece {
        int n;
        const char* want;
    } pieces[] = {{0, ""}, {1, "a"}, {2, "b"}, {3, ""}, {4, "c"}, {5, ""}, {-1, ""}};
    for (const auto& p : pieces) {
        Text<20> out("junk");
        SUBSTRING(out, "a, b,,c", ",", p.n);
        EXPECT_EQ(str(out), p.want) << p.n;
    }
}

TEST(NumberOfNumbers, ByteClasses) {
    struct Case {
        const char* s;
        int n;
    } cases[] = {
        {"1 2 3", 3},  {"1,2,3", 3},    {"1,,3", 3}, {",3", 1},  {"1 2 ! 3", 2}, {"1 # x", 1},
        {"", 0},       {"abc", 0},      {"1 2 x", -2}, {"1.5e+3", -1}, {"e", 1}, {"-", 1},
        {"1 ,, 2", 3}, {"1, ,2", 3},    {"1,", 1},   {"1 ,2", 2}, {"\t7\t8", 2}, {"   END:", -1},
        {"  LEVEE POSITIONS:", 0},      {"1;2", -1},
    };
    for (const auto& c : cases) EXPECT_EQ(NUMBEROFNUMBERS(c.s), c.n) << "[" << c.s << "]";
}

}  // namespace
