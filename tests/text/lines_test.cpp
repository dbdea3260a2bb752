// Control-line scanning: comments, number lines, the split into command and
// value, and replacement in any case.
#include <gtest/gtest.h>

#include <tuple>

#include "text/lines.hpp"

TEST(Lines, CommentAndNumberLines) {
    // The routine, the line, its result, and the line afterwards (trailing blanks cut).
    const std::tuple<bool (*)(TextRef), const char*, bool, const char*> cases[] = {
        {COMMENTLINE, "abc ! d", false, "abc"}, {COMMENTLINE, "a # b ! c", false, "a"},
        {COMMENTLINE, "a ! b # c", false, "a"}, {COMMENTLINE, "      ", true, ""},
        {COMMENTLINE, "  # note", true, ""},    {COMMENTLINE, "  keep this", false, "keep this"},
        {NUMBERLINE, ".5", true, ".5"},         {NUMBERLINE, "+1", false, "+1"},
        {NUMBERLINE, "x7", false, "x7"},        {NUMBERLINE, "   -3 4", true, "-3 4"},
    };
    for (const auto& [test, line, result, after] : cases) {
        Text<100> t(line);
        EXPECT_EQ(test(t), result) << line;
        EXPECT_EQ(t.trimmed(), after) << line;
    }
}

TEST(Lines, CheckLine) {
    struct Case {
        const char* line;
        const char* key;
        const char* separator;
        int32_t column;
        bool result;
        const char* value;    // leading blanks kept
        const char* command;  // trailing blanks cut
    };
    const Case cases[] = {
        {"Read GIS Z Shape == file.shp", "read gis z shape", "==", 0, true, " file.shp", "Read GIS Z Shape"},
        {"Anything == 1", "*", "==", 0, true, " 1", "Anything"},
        {"Set Code == 3", "Zone", "==", 0, false, " 3", "Set Code"},
        {"== 5", "x", "==", 0, false, " 5", ""},
        {"Just words", "words", "==", 0, true, "", "Just words"},
        {"abcdefgh", "ABC", "==", 4, true, "efgh", "abcd"},
        {"A EQ b", "a", "eq", 0, true, "", "A EQ b"},  // the separator keeps its case
        {"value only", "*", "", 0, true, "value only", ""},
        {"xyzabc", "XYZ", " ", 3, true, "abc", "xyz"},
    };
    for (const Case& c : cases) {
        Text<100> value("old"), command("old");
        EXPECT_EQ(CHECKLINE(c.line, c.key, c.separator, c.column, value, command), c.result) << c.line;
        EXPECT_EQ(value.view(), c.value) << c.line;
        EXPECT_EQ(command.trimmed(), c.command) << c.line;
    }
}

TEST(Lines, Replace) {
    struct Case {
        void (*replace)(TextRef, std::string_view, std::string_view, std::string_view);
        const char* string;
        const char* old;
        const char* replacement;
        const char* result;
    };
    const Case cases[] = {
        {REPLACE, "Set Code 1", "code", "Zone", "Set Zone 1"},
        {REPLACE, "aXa aXa", " x ", " yy ", "ayya aXa"},
        {REPLACE, "nothing", "zz", "q", "nothing"},
        {REPLACE, "nothing", "   ", "q", "nothing"},
        {REPLACEALL, "a-b-C-d", "-", "+", "a+b+C+d"},
        {REPLACEALL, "aabb", "AB", "", ""},       // each removal makes the next hit
        {REPLACEALL, "x.x", "x", "xx", "xx.xx"},  // a replacement that holds the old text
    };
    for (const Case& c : cases) {
        Text<100> out;
        c.replace(out, c.string, c.old, c.replacement);
        EXPECT_EQ(out.trimmed(), c.result) << c.string;
    }
    // The result is cut at the caller's capacity; the text may be its own source.
    Text<6> small("ab ab");
    REPLACEALL(small, small, "b", "bcd");
    EXPECT_EQ(small.trimmed(), "abcd a");
}
