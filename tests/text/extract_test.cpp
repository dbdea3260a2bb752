// Value extraction by keyword or column, CSV columns and values, and small checks.
#include <gtest/gtest.h>

#include <tuple>

#include "text/extract.hpp"
#include "text/strings.hpp"

namespace {

TEST(ExtractValue, KeywordOrColumn) {
    struct Case {
        const char* line;
        const char* keyword;
        int32_t column;
        bool toEnd;
        ExtractFound found;
        const char* value;
    } cases[] = {
        {"ID = 7, Name = x", "NAME", 0, false, ExtractFound::keyword, "x"},
        {"width = 3, id = 5", "id", 0, false, ExtractFound::keyword, "3"},  // plain search: "id" in "width"
        {"name x, id = 4", "name", 0, false, ExtractFound::keyword, "4"},   // the first "=" behind it counts
        {"Name = \"a,b\", ID = 3", "name", 0, false, ExtractFound::keyword, "a,b"},
        {"Name =   \"  lead\"", "name", 0, false, ExtractFound::keyword, "lead"},
        {"id = 1, note = a, \"b\", c", "note", 0, false, ExtractFound::keyword, "a"},
        {"id = 1, note = a, \"b\", c", "note", 0, true, ExtractFound::keyword, "a, b, c"},
        {"id = , x = 2", "id", 9, false, ExtractFound::keyword, ""},
        {"id 7", "id", 1, false, ExtractFound::noEquals, ""},
        {"1,\"2,3\",4", "id", 2, false, ExtractFound::column, "2,3"},
        {"1,\"2,3\",4", "id", 5, false, ExtractFound::column, ""},
        {"\"it's, ok\", x", "", 1, false, ExtractFound::column, "its"},  // either quote ends the other's text
        {"\"it's, ok\", x", "", 2, false, ExtractFound::column, "ok, x"},
        {"'a''b,c', d", "", 2, false, ExtractFound::column, "d"},  // a doubled quote does not end it
        {"a,b", "zz", -1, false, ExtractFound::nothing, ""},
    };
    for (const Case& c : cases) {
        Text<100> out("stale"), lower;
        LOWERCASE(lower, c.line);
        const ExtractFound f = extractValue(out, c.line, lower, c.keyword, c.column, c.toEnd);
        EXPECT_EQ(f, c.found) << c.line << " / " << c.keyword << " / " << c.column;
        EXPECT_EQ(out.trimmed(), c.value) << c.line << " / " << c.keyword << " / " << c.column;
    }
}

TEST(ExtractValue, CsvColumnAndValue) {
    const std::tuple<const char*, const char*, int32_t> columns[] = {
        {"X,Y,\"Z Value\"", "z value", 3}, {"X,Y,\"Z Value\"", "Q", -4}, {"\tX ,\t Y", "y", 2}, {"x,y,x", "X", 1},
        {"a, 'b c' ,d", "B C", 2},         {"\"A,B\",C", "a,b", -4},     {"\"A,B\",C", "c", 3},  // quotes do not
                                                                                                 // protect commas here
    };
    for (const auto& [header, name, want] : columns) {
        EXPECT_EQ(CSVCOLUMN(header, name, -4), want) << header << " / " << name;
    }

    const std::tuple<const char*, int32_t, bool, int32_t> values[] = {
        {"1,,3", 2, false, 0},        {"1,,3", 3, true, 3},
        {"1,,3", 4, false, 0},        {"5, 12 ,x", 2, true, 12},
        {"5, 12 ,x", 3, false, 0},    {"7,8", 0, true, 7},
        {"\"4\",5", 1, false, 0},     {"1.5", 1, false, 0},
        {"99999999999", 1, false, 0}, {"-2147483648", 1, true, INT32_MIN},
    };
    for (const auto& [line, column, ok, want] : values) {
        int32_t v = 99;
        EXPECT_EQ(CSVVALUE(line, column, v), ok) << line << " / " << column;
        EXPECT_EQ(v, want) << line << " / " << column;
    }
}

TEST(ExtractValue, PositiveIntegerNumberAndNumberOfDays) {
    const std::tuple<const char*, bool, const char*> positives[] = {
        {"12a", false, "12a"}, {"", false, ""},        {"0", true, "0"},    {"  42", true, "42"},
        {"+5", false, "+5"},   {" 1 2", false, "1 2"}, {"-3", false, "-3"}, {"007", true, "007"},
    };
    for (const auto& [text, ok, after] : positives) {
        Text<20> t(text);
        EXPECT_EQ(POSITIVEINTEGERNUMBER(t), ok) << text;
        EXPECT_EQ(t.trimmed(), after) << text;
    }
    const std::pair<const char*, int32_t> days[] = {
        {"20230101", 8396},                                          // 2023 * 365 + 1 + 0 - 730000
        {"20230131", 8426}, {"20230228", 8451}, {"20230230", 8451},  // a February day above 28 counts as 28
        {"20230301", 8455}, {"20231231", 8760}, {"20230401", 8485},  // entry 89, not the calendar's 90
        {"2023 1 5", 8400},                                          // blanks in a field are ignored
        {"20231301", -1},   {"20230001", -1},   {"2023AB01", -1},   {"2023", -1}, {"x0230101", -1},
    };
    for (const auto& [date, want] : days) EXPECT_EQ(NUMBEROFDAYS(date), want) << date;
}

}  // namespace
