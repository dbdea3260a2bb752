// READLINE over a file unit, and the save-date check of a pair of files.
#include <gtest/gtest.h>

#include <chrono>

#include "helpers.hpp"
#include "runtime/readline.hpp"
#include "runtime/savedate.hpp"

using namespace testutil;

TEST(ReadLine, DataCommentsAndEnd) {
    FILEINIT(1000);
    TempDir d;
    writeFile(d / "c.txt", "  data line ! note\r\n\tTab\tbed\r\n# comment\r\n\r\nlast");
    int32_t unit = openUnit("I ", d / "c.txt");
    const std::pair<bool, const char*> expected[] = {
        {true, "data line"}, {true, "Tabbed"}, {false, ""}, {false, ""}, {true, "last"}};
    Text<100> line;
    for (const auto& [data, text] : expected) {
        EXPECT_EQ(READLINE(unit, line), data) << text;
        EXPECT_EQ(line.trimmed(), text);
    }
    EXPECT_STOP(READLINE(unit, line),
                "\nERROR 0202 - End-of-file encountered reading text line from file unit number 1001\n");
    closeUnit(unit);
    EXPECT_STOP(READLINE(1001, line), "\nERROR 0201 - Reading text line from file unit number 1001\n");
}

TEST(SaveDate, PassWarnAndFatal) {
    FILEINIT(1000);
    TempDir d;
    const std::string a = d / "a.mid", b = d / "b.tab";
    writeFile(a, "1\r\n");
    writeFile(b, "2\r\n");
    const auto now = fs::file_time_type::clock::now();
    fs::last_write_time(a, now - std::chrono::seconds(10));
    fs::last_write_time(b, now - std::chrono::seconds(50));
    int32_t u1 = openUnit("I ", a), u2 = openUnit("I ", b);
    const std::string checking = "Checking save date is later than that of " + b + "...";
    // A newer first file passes and leaves the units open.
    std::string out = captureConsole([&] { EXPECT_TRUE(CHECKSAVEDATE(a, b, u1, u2, true, 0)); });
    EXPECT_EQ(out, checking + "OK\n\n");
    EXPECT_TRUE(unitIsOpen(u1) && unitIsOpen(u2));

    // An older one: a warning that lets the run go on with the units open...
    fs::last_write_time(a, now - std::chrono::seconds(90));
    const std::string later = " - Save date of \"" + b + "\" file is later than that of \"" + a + "\"\n";
    out = captureConsole([&] { EXPECT_TRUE(CHECKSAVEDATE(a, b, u1, u2, false, 0)); });
    EXPECT_EQ(out, checking + "NOT OK\n\nWARNING 0004" + later);
    EXPECT_TRUE(unitIsOpen(u1) && unitIsOpen(u2));

    // ...or, held as an error, both units closed and a new export asked for.
    writeFile(d / "answer", "\n");
    const int saved = ::dup(0);
    ::dup2(::open((d / "answer").c_str(), O_RDONLY), 0);
    out = captureConsole([&] { EXPECT_FALSE(CHECKSAVEDATE(a, b, u1, u2, true, 0)); });
    ::dup2(saved, 0);
    EXPECT_EQ(u1, 0);
    EXPECT_EQ(u2, 0);
    EXPECT_EQ(out, checking + "NOT OK\n\n...Closed File Unit:1001\n...Closed File Unit:1002\nERROR 0004" + later +
                       "\nRe-export mif file and press Enter, or close window.");
    // A second file without a time ends the run.
    EXPECT_STOP(CHECKSAVEDATE(a, d / "none.tab", u1, u2, true, 0),
                "ERROR 0004 - Could not access save date[^\n]*\n\nNOTE - If using VARDEN\\.exe, use CHECK MI SAVE "
                "DATE == WARNING or OFF to suppress check\n");
}
