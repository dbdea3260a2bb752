// Numbered messages: kinds and codes, the console, log and database copies,
// and the map marks of DMESSAGEXY.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "helpers.hpp"
#include "runtime/messages.hpp"

namespace {

using namespace testutil;

class Messages : public ::testing::Test {
protected:
    void SetUp() override {
        FILEINIT(1000);
        DMESSAGES = DMessageRecord{};
    }
    void TearDown() override { SetUp(); }
    TempDir dir;
};

TEST_F(Messages, KindsCodesAndCounters) {
    const std::tuple<const char*, int32_t, int32_t> cases[] = {
        {"ERROR 0005 - x", 1, 5},      {"ERROR - x", 1, 0},       {"error 0101 - x", 0, 0},
        {"WARNING 2050 - x", 2, 2050}, {"CHECK 0008 - x", 3, 8},  {"UNSTABLE 0012 - x", 4, 12},
        {"Plain text", 0, 0},          {" ERROR 0001 - x", 0, 0}, {"ERROR", 1, 0},
    };
    for (const auto& [line1, kind, code] : cases) {
        DMESSAGES.line1 = line1;
        captureConsole([] { DMESSAGE(0); });
        EXPECT_EQ(DMESSAGES.kind, kind) << line1;
        EXPECT_EQ(DMESSAGES.code, code) << line1;  // both stay after the record is cleared
    }
    EXPECT_EQ(DMESSAGES.errorCount, 3);
    EXPECT_EQ(DMESSAGES.warningCount, 1);
    EXPECT_EQ(DMESSAGES.checkCount, 1);
    DMESSAGERESETCOUNTERS();
    EXPECT_EQ(DMESSAGES.errorCount + DMESSAGES.warningCount + DMESSAGES.checkCount, 0);
}

// One table of messages, each issued with a log and a database unit set.
// Blank lines: -1 keeps a message off the console, -2 off the log too.
TEST_F(Messages, ConsoleLogAndDatabaseCopies) {
    int32_t log = openUnit("O ", dir / "m.log"), db = openUnit("O ", dir / "m.csv");
    DMESSAGES.logUnit = log;
    DMESSAGES.databaseUnit = db;
    // Line 1 to 3, extras 1 and 3, one line or several, blank lines, and what the console shows.
    const std::tuple<const char*, const char*, const char*, const char*, const char*, bool, int32_t, const char*>
        cases[] = {
            {"", "", "", "", "", false, 0, "\n"},  // a blank message: one empty line
            {"ERROR 0001 - first", "second", "third", "", "", true, 1, "\nERROR 0001 - first  second  third\n"},
            {"CHECK 0008 - say \"hi\"", "second", "", "e1", "", false, -1, ""},
            {"ERROR 12345 - wide", "", "", "", "", false, -1, ""},
            {"WARNING 0003 - database only", "", "", "", "", false, -2, ""},
            {"Plain message", "", "", "", "", false, 0, "Plain message\n"},  // kind 0: never in the database
            {"WARNING 0002 - w", "", "three", "e1", "e3", false, 2, "\n\nWARNING 0002 - w\nthree\ne1; e3\n"},
        };
    for (const auto& [line1, line2, line3, extra1, extra3, singleLine, blankLines, console] : cases) {
        DMESSAGES.line1 = line1;
        DMESSAGES.line2 = line2;
        DMESSAGES.line3 = line3;
        DMESSAGES.extra1 = extra1;
        DMESSAGES.extra3 = extra3;
        DMESSAGES.singleLine = singleLine;
        EXPECT_EQ(captureConsole([&] { DMESSAGE(blankLines); }), console) << line1;
    }
    // The record is cleared after each issue.
    EXPECT_TRUE(DMESSAGES.line1.blank() && DMESSAGES.line3.blank() && DMESSAGES.extra1.blank());
    EXPECT_FALSE(DMESSAGES.singleLine);

    closeUnit(log);
    closeUnit(db);
    EXPECT_EQ(readFile(dir / "m.log"),
              "\r\n\r\nERROR 0001 - first  second  third\r\nCHECK 0008 - say \"hi\"\r\nsecond\r\ne1\r\n"
              "ERROR 12345 - wide\r\nPlain message\r\n\r\n\r\nWARNING 0002 - w\r\nthree\r\ne1; e3\r\n");
    EXPECT_EQ(readFile(dir / "m.csv"),
              " 0001, 1,      -99999.000,      -99999.000, \"ERROR 0001 - first  second  third\", \"\", \"\", \"\"\r\n"
              " 0008, 3,      -99999.000,      -99999.000, \"CHECK 0008 - say \"\"hi\"\"  second\", \"e1\", \"\", "
              "\"\"\r\n"
              "12345, 1,      -99999.000,      -99999.000, \"ERROR 12345 - wide\", \"\", \"\", \"\"\r\n"
              " 0003, 2,      -99999.000,      -99999.000, \"WARNING 0003 - database only\", \"\", \"\", \"\"\r\n"
              " 0002, 2,      -99999.000,      -99999.000, \"WARNING 0002 - w    three\", \"e1\", \"\", \"e3\"\r\n");
}

TEST_F(Messages, MapMark) {
    int32_t mif = openUnit("O ", dir / "err.mif"), mid = openUnit("O ", dir / "err.mid");
    DMESSAGES.mifUnit = mif;
    DMESSAGES.midUnit = mid;
    DMESSAGES.textWidth = 10.0f;
    DMESSAGES.textOffset = 2.0f;
    DMESSAGES.line1 = "ERROR 0001 - bad \"q\"";
    DMESSAGES.line2 = "two";
    EXPECT_EQ(captureConsole([] { DMESSAGEXY(0, 100.0, 200.0); }), "XY: ERROR 0001 - bad \"q\"\ntwo\n");
    EXPECT_TRUE(DMESSAGES.prefix.blank());
    EXPECT_EQ(DMESSAGES.x, -99999.0);
    closeUnit(mif);
    closeUnit(mid);
    // Two lines: the box reaches one text offset above and below the point.
    EXPECT_EQ(readFile(dir / "err.mif"),
              "Text\r\n"
              "\"ERROR 0001 - bad \"\"q\"\"\\ntwo\"\r\n"
              "             102.000         198.000         112.000         202.000\r\n"
              "    Font (\"Arial\",257,0,16711935,0)\r\n"
              "    Label Line Arrow          100.000         200.000\r\n");
    EXPECT_EQ(readFile(dir / "err.mid"), "\"ERROR 0001 - bad \"\"q\"\"  two  \"\r\n");
}

}  // namespace
