// Value extraction by keyword or column, words, CSV columns and values, and
// the small checks of the text toolkit, table-driven against worked values.
#include <gtest/gtest.h>

#include <string>

#include "text/extract.hpp"
#include "text/strings.hpp"

namespace {

std::string lower(const std::string& s) {
    std::string r = s;
    for (char& c : r) c = lowerByte(c);
    return r;
}

TEST(ExtractValue, KeywordOrColumn) {
    struct Case {
        const char* line;
        const char* keyword;
        int32_t column;
        bool toEnd;
        ExtractFound found;
        const char* value;
    } cases[] = {
        {"ID = 7, Name = x", "id", 0, false, ExtractFound::keyword, "7"},
        {"ID = 7, Name = x", "NAME", 0, false, ExtractFound::keyword, "x"},
        // The search is plain: "id" inside "width" is found first.
        {"width = 3, id = 5", "id", 0, false, ExtractFound::keyword, "3"},
        // The first "=" anywhere behind the keyword counts.
        {"name x, id = 4", "name", 0, false, ExtractFound::keyword, "4"},
        {"Name = \"a,b\", ID = 3", "name", 0, false, ExtractFound::keyword, "a,b"},
        {"Name =   \"  lead\"", "name", 0, false, ExtractFound::keyword, "lead"},
        {"id = 1, note = a, \"b\", c", "note", 0, false, ExtractFound::keyword, "a"},
        {"id = 1, note = a, \"b\", c", "note", 0, true, ExtractFound::keyword, "a, b, c"},
        {"id = , x = 2", "id", 9, false, ExtractFound::keyword, ""},
        {"id 7", "id", 1, false, ExtractFound::noEquals, ""},
        {"1,\"2,3\",4", "id", 2, false, ExtractFound::column, "2,3"},
        {"1,\"2,3\",4", "id", 3, false, ExtractFound::column, "4"},
        {"1,\"2,3\",4", "id", 5, false, ExtractFound::column, ""},
        {"1,,3", "", 2, false, ExtractFound::column, ""},
        // Quotes of either kind end each other; a doubled one does not.
        {"\"it's, ok\", x", "", 1, false, ExtractFound::column, "its"},
        {"\"it's, ok\", x", "", 2, false, ExtractFound::column, "ok, x"},
        {"'a''b,c', d", "", 2, false, ExtractFound::column, "d"},
        {"a,b", "", 0, false, ExtractFound::nothing, ""},
        {"a,b", "zz", -1, false, ExtractFound::nothing, ""},
    };
    for (const Case& c : cases) {
        Text<100> out("stale");
        const ExtractFound f = extractValue(out, c.line, lower(c.line), c.keyword, c.column, c.toEnd);
        EXPECT_EQ(f, c.found) << c.line << " / " << c.keyword << " / " << c.column;
        EXPECT_EQ(out.trimmed(), c.value) << c.line << " / " << c.keyword << " / " << c.column;
    }
}

TEST(ExtractValue, NextWord) {
    struct Case {
        const char* line;
        const char* word;
        const char* rest;
    } cases[] = {
        {"abc def  ghi", "abc", "def  ghi"},
        {"\"a b\" c", "a b", "c"},
        {"'x y'z   w", "x yz", "w"},
        {"single", "single", ""},
        {"", "", ""},
        {"  lead x", "", "lead x"},
    };
    for (const Case& c : cases) {
        Text<100> line(c.line);
        Text<100> word("stale");
        NEXTWORD(word, line);
        EXPECT_EQ(word.trimmed(), c.word) << c.line;
        EXPECT_EQ(line.trimmed(), c.rest) << c.line;
    }
    // The word is held to 1000 bytes.
    Text<3000> line(std::string(1500, 'w') + " z");
    Text<3000> word;
    NEXTWORD(word, line);
    EXPECT_EQ(word.len(), 1000);
    EXPECT_EQ(line.trimmed(), "z");
}

TEST(ExtractValue, CsvColumn) {
    struct Case {
        const char* header;
        const char* name;
        int32_t expected;
    } cases[] = {
        {"X,Y,\"Z Value\"", "z value", 3},
        {"X,Y,\"Z Value\"", "Q", -4},
        {"\tX ,\t Y", "y", 2},
        {"x,y,x", "X", 1},
        // Quotes do not protect commas here.
        {"\"A,B\",C", "c", 3},
        {"\"A,B\",C", "a,b", -4},
        {"a, 'b c' ,d", "B C", 2},
    };
    for (const Case& c : cases) EXPECT_EQ(CSVCOLUMN(c.header, c.name, -4), c.expected) << c.header << " / " << c.name;
}

TEST(ExtractValue, CsvValue) {
    struct Case {
        const char* line;
        int32_t column;
        bool ok;
        int32_t value;
    } cases[] = {
        {"1,,3", 2, false, 0},    {"1,,3", 3, true, 3},          {"1,,3", 4, false, 0},
        {"5, 12 ,x", 2, true, 12}, {"5, 12 ,x", 3, false, 0},    {"7,8", 0, true, 7},
        {"\"4\",5", 1, false, 0},  {"1.5", 1, false, 0},         {"99999999999", 1, false, 0},
        {"-2147483648", 1, true, INT32_MIN},
    };
    for (const Case& c : cases) {
        int32_t v = 99;
        EXPECT_EQ(CSVVALUE(c.line, c.column, v), c.ok) << c.line << " / " << c.column;
        EXPECT_EQ(v, c.value) << c.line << " / " << c.column;
    }
}

TEST(ExtractValue, PositiveIntegerNumber) {
    struct Case {
        const char* text;
        bool ok;
        const char* after;
    } cases[] = {
        {"12a", false, "12a"}, {"", false, ""},   {"0", true, "0"},     {"  42", true, "42"},
        {"+5", false, "+5"},   {" 1 2", false, "1 2"}, {"-3", false, "-3"}, {"007", true, "007"},
    };
    for (const Case& c : cases) {
        Text<20> t(c.text);
        EXPECT_EQ(POSITIVEINTEGERNUMBER(t), c.ok) << c.text;
        EXPECT_EQ(t.trimmed(), c.after) << c.text;
    }
}

TEST(ExtractValue, CheckInt) {
    struct Case {
        const char* text;
        bool int4;
        bool int8;
    } cases[] = {
        {"7", true, true},        {" -7 ", true, true},     {"12 apples", true, true},
        {"3*4", true, true},      {"1.5", false, false},    {"", false, false},
        {"abc", false, false},    {",5", false, false},     {"'5'", false, false},
        {"2147483647", true, true}, {"2147483648", false, true}, {"-2147483649", false, true},
        {"9223372036854775808", false, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CHECKINT(c.text), c.int4) << c.text;
        EXPECT_EQ(CHECKINT4(c.text), c.int4) << c.text;
        EXPECT_EQ(CHECKINT8(c.text), c.int8) << c.text;
    }
}

TEST(ExtractValue, NumberOfDays) {
    struct Case {
        const char* date;
        int32_t days;
    } cases[] = {
        {"20230101", 8396},  // 2023 * 365 + 1 + 0 - 730000
        {"20230131", 8426}, {"20230228", 8451},
        {"20230230", 8451},  // a February day above 28 counts as 28
        {"20230301", 8455}, {"20231231", 8760},
        {"20230401", 8485},  // entry 89, not the calendar's 90
        {"2023 1 5", 8400},  // blanks in a field are ignored
        {"20231301", -1},   {"20230001", -1}, {"2023AB01", -1}, {"2023", -1}, {"x0230101", -1},
    };
    for (const Case& c : cases) EXPECT_EQ(NUMBEROFDAYS(c.date), c.days) << c.date;
    EXPECT_EQ(NUMBEROFDAYS("20230131") - NUMBEROFDAYS("20230101"), 30);
}

TEST(ExtractValue, SameSign) {
    struct Case {
        float a, b;
        bool same;
    } cases[] = {
        {-1.0f, -2.0f, true}, {1.0f, 2.0f, true},  {0.0f, 0.0f, true},   {-1.0f, 0.0f, false},
        {0.0f, -1.0f, false}, {1.0f, -1.0f, false}, {-0.0f, 1.0f, true}, {-1e-30f, 1e-30f, false},
    };
    for (const Case& c : cases) EXPECT_EQ(SAMESIGN(c.a, c.b), c.same) << c.a << " " << c.b;
}

}  // namespace
