// READLINE over a file unit, and the save-date check of a pair of files.
#include <gtest/gtest.h>

#include <chrono>

#include "helpers.hpp"
#include "runtime/readline.hpp"
#include "runtime/savedate.hpp"
#include "runtime/units.hpp"

using namespace testutil;

namespace {

// Runs `body` with standard input read from `input`.
template <typename F>
void withInput(const std::string& input, F body) {
    TempDir d;
    writeFile(d / "in", input);
    const int saved = ::dup(0);
    const int fd = ::open((d / "in").c_str(), O_RDONLY);
    ::dup2(fd, 0);
    ::close(fd);
    body();
    ::dup2(saved, 0);
    ::close(saved);
}

void age(const std::string& name, int seconds) {
    fs::last_write_time(name, fs::file_time_type::clock::now() - std::chrono::seconds(seconds));
}

}  // namespace

TEST(ReadLine, DataCommentsAndEnd) {
    FILEINIT(1000);
    TempDir d;
    writeFile(d / "c.txt", "  data line ! note\r\n\tTab\tbed\r\n# comment\r\n\r\nlast");
    int32_t unit = 0;
    OPENERFREE(unit, "I ", d / "c.txt", 0);
    const std::pair<bool, const char*> expected[] = {
        {true, "data line"}, {true, "Tabbed"}, {false, ""}, {false, ""}, {true, "last"},
    };
    for (const auto& [data, text] : expected) {
        Text<100> line;
        EXPECT_EQ(READLINE(unit, line), data) << text;
        EXPECT_EQ(line.trimmed(), text);
    }
    Text<100> line;
    EXPECT_EXIT(
        {
            fileUnitSettings.pauseOnPrematureExit = false;
            ::dup2(2, 1);
            READLINE(unit, line);
        },
        ::testing::ExitedWithCode(0),
        "\nERROR 0202 - End-of-file encountered reading text line from file unit number 1001\n");
    CLOSER(unit);
    EXPECT_EXIT(
        {
            fileUnitSettings.pauseOnPrematureExit = false;
            ::dup2(2, 1);
            READLINE(1001, line);
        },
        ::testing::ExitedWithCode(0), "\nERROR 0201 - Reading text line from file unit number 1001\n");
}

TEST(SaveDate, Outcomes) {
    FILEINIT(1000);
    TempDir d;
    const std::string a = d / "a.mid", b = d / "b.tab", missing = d / "none.tab";
    writeFile(a, "1\r\n");
    writeFile(b, "2\r\n");
    const std::string head = "Checking save date is later than that of ";
    struct Case {
        int ageOfFirst, ageOfSecond;  // seconds
        std::string second;
        std::string output;
    };
    const Case cases[] = {
        {50, 50, b, head + b + "...OK\n\n"},
        {10, 50, b, head + b + "...OK\n\n"},
        {90, 50, b,
         head + b + "...NOT OK\n\nWARNING 0004 - Save date of \"" + b + "\" file is later than that of \"" + a + "\"\n"},
        {10, 50, missing,
         head + missing + "...NOT OK\n\nWARNING 0004 - Could not access save date of \"" + a + "\" to check with \"" +
             missing + "\"\n"},
    };
    for (const Case& c : cases) {
        age(a, c.ageOfFirst);
        age(b, c.ageOfSecond);
        int32_t u1 = 0, u2 = 0;
        OPENERFREE(u1, "I ", a, 0);
        OPENERFREE(u2, "I ", b, 0);
        bool result = false;
        const std::string out = captureConsole([&] { result = CHECKSAVEDATE(a, c.second, u1, u2, false, 0); });
        EXPECT_TRUE(result);
        EXPECT_EQ(out, c.output);
        EXPECT_TRUE(unitIsOpen(u1) && unitIsOpen(u2));
        CLOSER(u1);
        CLOSER(u2);
    }

    // Held as an error: an older first file closes both units and asks for a
    // new export; a second file without a time ends the run.
    age(a, 90);
    age(b, 50);
    int32_t u1 = 0, u2 = 0;
    OPENERFREE(u1, "I ", a, 0);
    OPENERFREE(u2, "I ", b, 0);
    bool result = true;
    std::string out;
    withInput("\n", [&] { out = captureConsole([&] { result = CHECKSAVEDATE(a, b, u1, u2, true, 0); }); });
    EXPECT_FALSE(result);
    EXPECT_EQ(u1, 0);
    EXPECT_EQ(u2, 0);
    EXPECT_EQ(out, head + b + "...NOT OK\n\n...Closed File Unit:1001\n...Closed File Unit:1002\nERROR 0004 - Save date of \"" +
                       b + "\" file is later than that of \"" + a + "\"\n\nRe-export mif file and press Enter, or close window.");
    EXPECT_EXIT(
        {
            fileUnitSettings.pauseOnPrematureExit = false;
            ::dup2(2, 1);
            CHECKSAVEDATE(a, missing, u1, u2, true, 0);
        },
        ::testing::ExitedWithCode(0),
        "ERROR 0004 - Could not access save date[^\n]*\n\nNOTE - If using VARDEN\\.exe, use CHECK MI SAVE DATE == "
        "WARNING or OFF to suppress check\n");
}
