// READLINE over a file unit, and the save-date check held as an error.
#include <gtest/gtest.h>

#include <chrono>

#include "helpers.hpp"
#include "runtime/readline.hpp"
#include "runtime/savedate.hpp"
#include "runtime/units.hpp"

using namespace testutil;

#define EXPECT_STOP(statement, regex)                           \
    EXPECT_EXIT(                                                \
        {                                                       \
            fileUnitSettings.pauseOnPrematureExit = false;      \
            ::dup2(2, 1);                                       \
            statement;                                          \
        },                                                      \
        ::testing::ExitedWithCode(0), regex)

TEST(ReadLine, DataCommentsAndEnd) {
    FILEINIT(1000);
    TempDir d;
    writeFile(d / "c.txt", "  data line ! note\r\n\tTab\tbed\r\n# comment\r\n\r\nlast");
    int32_t unit = 0;
    OPENERFREE(unit, "I ", d / "c.txt", 0);
    const std::pair<bool, const char*> expected[] = {
        {true, "data line"}, {true, "Tabbed"}, {false, ""}, {false, ""}, {true, "last"}};
    Text<100> line;
    for (const auto& [data, text] : expected) {
        EXPECT_EQ(READLINE(unit, line), data) << text;
        EXPECT_EQ(line.trimmed(), text);
    }
    EXPECT_STOP(READLINE(unit, line), "\nERROR 0202 - End-of-file encountered reading text line from file unit number 1001\n");
    CLOSER(unit);
    EXPECT_STOP(READLINE(1001, line), "\nERROR 0201 - Reading text line from file unit number 1001\n");
}

TEST(SaveDate, HeldAsAnError) {
    FILEINIT(1000);
    TempDir d;
    const std::string a = d / "a.mid", b = d / "b.tab";
    writeFile(a, "1\r\n");
    writeFile(b, "2\r\n");
    const auto now = fs::file_time_type::clock::now();
    fs::last_write_time(a, now - std::chrono::seconds(10));
    fs::last_write_time(b, now - std::chrono::seconds(50));
    int32_t u1 = 0, u2 = 0;
    OPENERFREE(u1, "I ", a, 0);
    OPENERFREE(u2, "I ", b, 0);
    // A newer first file passes and leaves the units open.
    std::string out = captureConsole([&] { EXPECT_TRUE(CHECKSAVEDATE(a, b, u1, u2, true, 0)); });
    EXPECT_EQ(out, "Checking save date is later than that of " + b + "...OK\n\n");
    EXPECT_TRUE(unitIsOpen(u1) && unitIsOpen(u2));

    // An older one closes both and asks for a new export, once for each call.
    fs::last_write_time(a, now - std::chrono::seconds(90));
    writeFile(d / "answer", "\n");
    const int saved = ::dup(0);
    ::dup2(::open((d / "answer").c_str(), O_RDONLY), 0);
    out = captureConsole([&] { EXPECT_FALSE(CHECKSAVEDATE(a, b, u1, u2, true, 0)); });
    ::dup2(saved, 0);
    EXPECT_EQ(u1, 0);
    EXPECT_EQ(u2, 0);
    EXPECT_EQ(out, "Checking save date is later than that of " + b +
                       "...NOT OK\n\n...Closed File Unit:1001\n...Closed File Unit:1002\nERROR 0004 - Save date of \"" +
                       b + "\" file is later than that of \"" + a +
                       "\"\n\nRe-export mif file and press Enter, or close window.");
    // A second file without a time ends the run.
    EXPECT_STOP(CHECKSAVEDATE(a, d / "none.tab", u1, u2, true, 0),
                "ERROR 0004 - Could not access save date[^\n]*\n\nNOTE - If using VARDEN\\.exe, use CHECK MI SAVE "
                "DATE == WARNING or OFF to suppress check\n");
}
