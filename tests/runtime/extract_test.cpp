// Keyword-or-column extraction with conversion, and its two stops.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "helpers.hpp"
#include "runtime/extract.hpp"
#include "text/strings.hpp"

namespace {

std::string lower(std::string_view s) {
    Text<200> t;
    LOWERCASE(t, s);
    return std::string(t.trimmed());
}

TEST(Extract, Conversions) {
    // Line, keyword, column, and the values of EXTRACTINTEGER (default -9) and EXTRACTREAL (default -9.5).
    const std::tuple<const char*, const char*, int32_t, int32_t, float> cases[] = {
        {"ID = 7, Name = x", "id", 0, 7, 7.0f}, {"1,\"2\",4", "none", 2, 2, 2.0f},
        {"1,\"2\",4", "none", 5, -9, -9.5f},    {"id = , x = 2", "id", 3, -9, -9.5f},
        {"a = ' 12 ', b", "a", 0, 12, 12.0f},   {"k = 3 4", "k", 0, 3, 3.0f},  // free form: the first value
        {"k = ','", "k", 0, -9, -9.5f},                                        // a null value keeps the default
    };
    for (const auto& [line, keyword, column, integer, real] : cases) {
        EXPECT_EQ(EXTRACTINTEGER(line, lower(line), keyword, column, -9), integer) << line;
        EXPECT_EQ(EXTRACTREAL(line, lower(line), keyword, column, -9.5f), real) << line;
    }
}

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
