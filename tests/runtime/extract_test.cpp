// Keyword-or-column extraction with conversion, and its two stops.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "runtime/console.hpp"
#include "runtime/extract.hpp"
#include "runtime/units.hpp"
#include "text/strings.hpp"

namespace {

std::string lower(const std::string& s) {
    std::string r = s;
    for (char& c : r) c = lowerByte(c);
    return r;
}

TEST(Extract, Conversions) {
    struct Case {
        const char* line;
        const char* keyword;
        int32_t column;
        int32_t integer;  // EXTRACTINTEGER with default -9
        float real;       // EXTRACTREAL with default -9.5
    } cases[] = {
        {"ID = 7, Name = x", "id", 0, 7, 7.0f},
        {"1,\"2\",4", "none", 2, 2, 2.0f},
        {"1,\"2\",4", "none", 5, -9, -9.5f},
        {"id = , x = 2", "id", 3, -9, -9.5f},
        {"a = ' 12 ', b", "a", 0, 12, 12.0f},
        {"k = 3 4", "k", 0, 3, 3.0f},  // free form: the first value
        {"k = ','", "k", 0, -9, -9.5f},  // a null value keeps the default
    };
    for (const Case& c : cases) {
        const std::string lo = lower(c.line);
        EXPECT_EQ(EXTRACTINTEGER(c.line, lo, c.keyword, c.column, -9), c.integer) << c.line;
        EXPECT_EQ(EXTRACTREAL(c.line, lo, c.keyword, c.column, -9.5f), c.real) << c.line;
    }
    const std::string d = "Depth = 2.5e1, id = 3";
    EXPECT_EQ(EXTRACTREAL(d, lower(d), "DEPTH", 0, 0.0f), 25.0f);
}

TEST(Extract, Strings) {
    const std::string line = "id = 1, note = a, \"b\", c";
    Text<40> out("stale");
    EXTRACTSTRING(out, line, lower(line), "note", 2);
    EXPECT_EQ(out.trimmed(), "a");
    EXTRACTSTRINGREM(out, line, lower(line), "note", 2);
    EXPECT_EQ(out.trimmed(), "a, b, c");
    // By column the remainder form takes one field.
    EXTRACTSTRINGREM(out, line, lower(line), "absent", 2);
    EXPECT_EQ(out.trimmed(), "note = a");
    EXTRACTSTRING(out, line, lower(line), "absent", 0);
    EXPECT_TRUE(out.blank());
    // Cut at the caller's capacity.
    Text<3> small;
    EXTRACTSTRINGREM(small, line, lower(line), "note", 0);
    EXPECT_EQ(small.full(), "a, ");
}

// The statement ends the run through EXITS with `text` on the console.
#define EXPECT_STOP(statement, text)                           \
    do {                                                       \
        conFlush();                                            \
        EXPECT_EXIT(                                           \
            {                                                  \
                fileUnitSettings.pauseOnPrematureExit = false; \
                ::dup2(2, 1);                                  \
                statement;                                     \
            },                                                 \
            ::testing::ExitedWithCode(0), text);               \
    } while (0)

TEST(ExtractDeath, Stops) {
    FILEINIT(1000);
    const std::string l1 = "ID = 7, Name = x";
    EXPECT_STOP(EXTRACTINTEGER(l1, lower(l1), "Name", 0, 0),
                "(^|\n) Could not convert \"x\" in column   0 to an integer value for the Name field\\.\n");
    const std::string l2 = "a,b c";
    EXPECT_STOP(EXTRACTREAL(l2, lower(l2), "depth", 2, 0.0f),
                "(^|\n) Could not convert \"b c\" in column   2 to a real value for the depth field\\.\n");
    const std::string l3 = "Depth = 2.5e1";
    EXPECT_STOP(EXTRACTINTEGER(l3, lower(l3), "depth", 12, 0),
                " Could not convert \"2\\.5e1\" in column  12 to an integer value");
    const std::string l4 = "id 7, name x";
    EXPECT_STOP(EXTRACTSTRING(Text<10>().ref(), l4, lower(l4), "ID", 1),
                "(^|\n)\nERROR 0203 - No \"=\" sign found after keyword \"ID\"\\.\n");
}

}  // namespace
