#include <gtest/gtest.h>

#include <string>

#include "helpers.hpp"
#include "runtime/messages.hpp"
#include "runtime/units.hpp"

namespace {

using testutil::captureConsole;
using testutil::readFile;
using testutil::TempDir;

class Messages : public ::testing::Test {
protected:
    void SetUp() override {
        FILEINIT(1000);
        DMESSAGES = DMessageRecord{};
    }
    void TearDown() override {
        FILEINIT(1000);
        DMESSAGES = DMessageRecord{};
    }
    int32_t open(const std::string& name) {
        int32_t u = 0;
        captureConsole([&] { OPENERFREE(u, "O ", name, 0); });
        return u;
    }
    void close(int32_t& u) {
        captureConsole([&] { CLOSER(u); });
    }
    TempDir dir;
};

TEST_F(Messages, KindsCodesAndCounters) {
    struct Case {
        const char* line1;
        int32_t kind;
        int32_t code;
    } cases[] = {
        {"ERROR 0005 - x", 1, 5},      {"ERROR - x", 1, 0},        {"error 0101 - x", 0, 0},
        {"WARNING 2050 - x", 2, 2050}, {"CHECK 0008 - x", 3, 8},    {"UNSTABLE 0012 - x", 4, 12},
        {"Plain text", 0, 0},          {" ERROR 0001 - x", 0, 0},  {"ERROR", 1, 0},
    };
    for (const Case& c : cases) {
        DMESSAGES.line1 = c.line1;
        captureConsole([] { DMESSAGE(0); });
        EXPECT_EQ(DMESSAGES.kind, c.kind) << c.line1;
        EXPECT_EQ(DMESSAGES.code, c.code) << c.line1;
    }
    EXPECT_EQ(DMESSAGES.errorCount, 3);
    EXPECT_EQ(DMESSAGES.warningCount, 1);
    EXPECT_EQ(DMESSAGES.checkCount, 1);
    DMESSAGERESETCOUNTERS();
    EXPECT_EQ(DMESSAGES.errorCount + DMESSAGES.warningCount + DMESSAGES.checkCount, 0);
}

TEST_F(Messages, ConsoleLayout) {
    // A blank message: one empty line, and the second issue the same.
    EXPECT_EQ(captureConsole([] {
                  DMESSAGE(0);
                  DMESSAGE(0);
              }),
              "\n\n");
    EXPECT_EQ(DMESSAGES.errorCount + DMESSAGES.warningCount + DMESSAGES.checkCount, 0);

    DMESSAGES.line1 = "ERROR 0001 - first";
    DMESSAGES.line2 = "second";
    DMESSAGES.line3 = "third";
    DMESSAGES.singleLine = true;
    EXPECT_EQ(captureConsole([] { DMESSAGE(1); }), "\nERROR 0001 - first  second  third\n");

    DMESSAGES.line1 = "WARNING 0002 - w";
    DMESSAGES.line3 = "three";
    DMESSAGES.extra1 = "e1";
    DMESSAGES.extra3 = "e3";
    DMESSAGES.x = 5.0;
    EXPECT_EQ(captureConsole([] { DMESSAGE(2); }), "\n\nWARNING 0002 - w\nthree\ne1; e3\n");
    // Cleared after the issue.
    EXPECT_TRUE(DMESSAGES.line1.blank());
    EXPECT_TRUE(DMESSAGES.extra1.blank());
    EXPECT_EQ(DMESSAGES.x, -99999.0);
    EXPECT_FALSE(DMESSAGES.singleLine);
    EXPECT_EQ(DMESSAGES.code, 2);  // code and kind stay

    DMESSAGES.line1 = "CHECK 0003 - quiet";
    EXPECT_EQ(captureConsole([] { DMESSAGE(-1); }), "");
}

TEST_F(Messages, LogAndDatabaseCopies) {
    int32_t log = open(dir / "m.log");
    int32_t db = open(dir / "m.csv");
    DMESSAGES.logUnit = log;
    DMESSAGES.databaseUnit = db;

    DMESSAGES.line1 = "CHECK 0008 - say \"hi\"";
    DMESSAGES.line2 = "second";
    DMESSAGES.extra1 = "e1";
    captureConsole([] { DMESSAGE(1); });
    DMESSAGES.line1 = "ERROR 12345 - wide";
    DMESSAGES.x = 1.5;
    DMESSAGES.y = -2.25;
    captureConsole([] { DMESSAGE(-1); });  // log still gets it, without blank lines
    DMESSAGES.line1 = "WARNING 0003 - database only";
    captureConsole([] { DMESSAGE(-2); });
    DMESSAGES.line1 = "Plain message";  // kind 0: never in the database
    captureConsole([] { DMESSAGE(0); });

    DMESSAGES.logUnit = DMESSAGES.databaseUnit = 0;
    close(log);
    close(db);
    EXPECT_EQ(readFile(dir / "m.log"),
              "\r\nCHECK 0008 - say \"hi\"\r\nsecond\r\ne1\r\nERROR 12345 - wide\r\nPlain message\r\n");
    EXPECT_EQ(readFile(dir / "m.csv"),
              " 0008, 3,      -99999.000,      -99999.000, \"CHECK 0008 - say \"\"hi\"\"  second\", \"e1\", \"\", "
              "\"\"\r\n"
              "12345, 1,           1.500,          -2.250, \"ERROR 12345 - wide\", \"\", \"\", \"\"\r\n"
              " 0003, 2,      -99999.000,      -99999.000, \"WARNING 0003 - database only\", \"\", \"\", \"\"\r\n");
}

TEST_F(Messages, MapMarks) {
    int32_t mif = open(dir / "err.mif"), mid = open(dir / "err.mid");
    int32_t cmif = open(dir / "chk.mif"), cmid = open(dir / "chk.mid");
    DMESSAGES.mifUnit = mif;
    DMESSAGES.midUnit = mid;
    DMESSAGES.checkMifUnit = cmif;
    DMESSAGES.checkMidUnit = cmid;
    DMESSAGES.textWidth = 10.0f;
    DMESSAGES.textOffset = 2.0f;

    DMESSAGES.line1 = "ERROR 0001 - bad \"q\"";
    DMESSAGES.line2 = "two";
    std::string shown = captureConsole([] { DMESSAGEXY(0, 100.0, 200.0); });
    EXPECT_EQ(shown, "XY: ERROR 0001 - bad \"q\"\ntwo\n");
    DMESSAGES.line1 = "CHECK 0004 - look";
    DMESSAGES.singleLine = true;
    DMESSAGES.line2 = "a";
    DMESSAGES.extra1 = "b";
    captureConsole([] { DMESSAGEXY(0, -1.0, 0.5); });
    EXPECT_EQ(DMESSAGES.errorMarks, 1);
    EXPECT_EQ(DMESSAGES.checkMarks, 1);
    EXPECT_EQ(DMESSAGES.errorCount, 1);
    EXPECT_TRUE(DMESSAGES.prefix.blank());
    EXPECT_EQ(DMESSAGES.x, -99999.0);

    for (int32_t* u : {&mif, &mid, &cmif, &cmid}) close(*u);
    EXPECT_EQ(readFile(dir / "err.mif"),
              "Text\r\n"
              "\"ERROR 0001 - bad \"\"q\"\"\\ntwo\"\r\n"
              "             102.000         198.000         112.000         202.000\r\n"
              "    Font (\"Arial\",257,0,16711935,0)\r\n"
              "    Label Line Arrow          100.000         200.000\r\n");
    EXPECT_EQ(readFile(dir / "err.mid"), "\"ERROR 0001 - bad \"\"q\"\"  two  \"\r\n");
    // Three lines on one line: the box is three half-offsets above and below.
    EXPECT_EQ(readFile(dir / "chk.mif"),
              "Text\r\n"
              "\"CHECK 0004 - look  a  b\"\r\n"
              "               1.000          -2.500          11.000           3.500\r\n"
              "    Font (\"Arial\",257,0,255,16777215)\r\n"
              "    Label Line Arrow           -1.000           0.500\r\n");
    EXPECT_EQ(readFile(dir / "chk.mid"), "\"CHECK 0004 - look  a  b  \"\r\n");
}

}  // namespace
