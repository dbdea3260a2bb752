// The file-unit manager: numbering, reports, open modes on real files, line
// and record reading, write failures and a direct stop.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <tuple>

#include "helpers.hpp"

namespace {

using namespace testutil;

class Units : public ::testing::Test {
protected:
    void SetUp() override { FILEINIT(1000); }
    void TearDown() override { FILEINIT(1000); }  // closes whatever a test left open
    TempDir dir;
};

TEST_F(Units, NumberingAndReuse) {
    int32_t ua = openUnit("O ", dir / "a.txt");
    int32_t ub = openUnit("O ", dir / "b.txt");
    EXPECT_EQ(ua, 1001);
    EXPECT_EQ(ub, 1002);
    int32_t kept = ua;
    closeUnit(ua);
    EXPECT_EQ(ua, 0);
    EXPECT_FALSE(unitIsOpen(kept));
    EXPECT_EQ(openUnit("O ", dir / "c.txt"), 1001);  // lowest free entry first

    // CLOSER of 0, of an unknown number and of a unit already closed: nothing
    // happens, nothing is reported, the caller's variable is left alone.
    int32_t zero = 0, unknown = 12345, closedAgain = ub;
    closeUnit(ub);
    std::string shown = captureConsole([&] {
        CLOSER(zero);
        CLOSER(unknown);
        CLOSER(closedAgain);
    });
    EXPECT_EQ(shown, "");
    EXPECT_EQ(zero, 0);
    EXPECT_EQ(unknown, 12345);
    EXPECT_EQ(closedAgain, 1002);
}

TEST_F(Units, ConsoleAndLogReports) {
    std::string out = dir / "r.txt", logName = dir / "run.log";
    int32_t u = 0, v = 0;
    std::string shown = captureConsole([&] {
        OPENERFREE(u, "O ", "  " + out, 0);
        CLOSER(u);
        OPENERFREE(v, "I ", out, 0);
        CLOSER(v);
        CLOSEALL();
    });
    EXPECT_EQ(shown, "\nTrying to open file " + out + "...OK.  File Unit:1001\n" + "...Closed File Unit:1001\n" +
                         "\nTrying to open file " + out + "...OK.\nOpened File Unit:1001\n" +
                         "...Closed File Unit:1001\n" + "\nClosing all file units...\n");
    // Reports go to the log unit too.
    fileUnitSettings.logUnit = openUnit("O ", logName);
    u = openUnit("O ", out);
    closeUnit(u);
    closeUnit(fileUnitSettings.logUnit);
    EXPECT_EQ(readFile(logName),
              "\r\nTrying to open file " + out + "...OK.  File Unit:1002\r\n" + "...Closed File Unit:1002\r\n");
    // A first unit below 9 is raised to 9; a short unit number keeps a width of four.
    FILEINIT(5);
    shown = captureConsole([&] { OPENERFREE(u, "O ", out, 0); });
    EXPECT_NE(shown.find("OK.  File Unit:  10\n"), std::string::npos) << shown;
}

// Each step opens a file in a mode, writes some bytes and closes it again.
TEST_F(Units, KeepAppendAndReplaceModes) {
    writeFile(dir / "keep.bin", "0123456789");
    const std::tuple<const char*, const char*, const char*, const char*> steps[] = {
        {"O ", "t.txt", "a long first line", "a long first line"},
        {"O ", "t.txt", "one", "one"},  // replaces
        {"A ", "t.txt", "two", "onetwo"},
        {"SB", "keep.bin", "ab", "ab23456789"},  // keeps the tail of a longer file
        {"S ", "s.new", "z", "z"},               // created when absent
        {"AB", "ab.new", "z", "z"},
    };
    for (const auto& [mode, name, bytes, want] : steps) {
        int32_t u = openUnit(mode, dir / name);
        unitWriteBytes(u, bytes, std::strlen(bytes));
        closeUnit(u);
        EXPECT_EQ(readFile(dir / name), want) << mode << " " << name;
    }
}

TEST_F(Units, ReplaceDeletesTheNameNotWhatItLeadsTo) {
    // A hard link keeps the old bytes, a dangling link is replaced by a file
    // and its target is never made.
    writeFile(dir / "old.txt", "old");
    ASSERT_EQ(::link((dir / "old.txt").c_str(), (dir / "linked.txt").c_str()), 0);
    ASSERT_EQ(::symlink((dir / "nowhere.txt").c_str(), (dir / "dangling.txt").c_str()), 0);
    for (const char* name : {"linked.txt", "dangling.txt"}) {
        int32_t u = openUnit("O ", dir / name);
        unitWriteBytes(u, "new", 3);
        closeUnit(u);
        struct stat st;
        ASSERT_EQ(::lstat((dir / name).c_str(), &st), 0);
        EXPECT_TRUE(S_ISREG(st.st_mode) && st.st_nlink == 1) << name;
        EXPECT_EQ(readFile(dir / name), "new") << name;
    }
    EXPECT_EQ(readFile(dir / "old.txt"), "old");
    EXPECT_FALSE(std::filesystem::exists(dir / "nowhere.txt"));
}

// Big-endian units, explicit byte order, and the length marks around unformatted records.
TEST_F(Units, BinaryLayouts) {
    std::string f = dir / "be.bin", g = dir / "rec.bin";
    int32_t u = openUnit("BN", f);
    unitWriteI32(u, 0x01020304);
    unitWriteF64(u, 1.0);
    unitWriteI32As(u, 0x01020304, false);
    closeUnit(u);
    EXPECT_EQ(readFile(f), std::string("\x01\x02\x03\x04\x3f\xf0\0\0\0\0\0\0\x04\x03\x02\x01", 16));
    u = openUnit("BE", f);
    int32_t v = 0;
    EXPECT_EQ(unitReadI32(u, v), IoStatus::ok);
    EXPECT_EQ(v, 0x01020304);
    unitSeek(u, 12);
    EXPECT_EQ(unitReadI32As(u, v, false), IoStatus::ok);
    EXPECT_EQ(v, 0x01020304);
    EXPECT_EQ(unitReadI32(u, v), IoStatus::end);

    u = openUnit("UO", g);
    unitWriteRecord(u, "abc", 3);
    unitWriteRecord(u, "0123456789", 10);
    closeUnit(u);
    EXPECT_EQ(readFile(g), std::string("\x03\0\0\0abc\x03\0\0\0\x0a\0\0\0"
                                       "0123456789\x0a\0\0\0",
                                       29));
    u = openUnit("UI", g);
    char buf[16];
    std::size_t n = 0;
    EXPECT_EQ(unitReadRecord(u, buf, sizeof buf, n), IoStatus::ok);
    EXPECT_EQ(std::string(buf, n), "abc");
    EXPECT_EQ(unitReadRecord(u, buf, 4, n), IoStatus::ok);  // the rest of a long record is passed over
    EXPECT_EQ(std::string(buf, n), "0123");
    EXPECT_EQ(unitReadRecord(u, buf, sizeof buf, n), IoStatus::end);
}

TEST_F(Units, TwoUnitsOnOneFileSeeEachOther) {
    // The way a shape file header is updated: one little-endian and one
    // big-endian unit on the same file, each with its own position.
    std::string f = dir / "two.bin";
    writeFile(f, std::string(16, '\0'));
    int32_t le = openUnit("SB", f);
    int32_t be = openUnit("SE", f);
    int32_t rd = openUnit("BI", f);
    int32_t a = 0, b = 0;
    EXPECT_EQ(unitReadI32(rd, a), IoStatus::ok);  // read-ahead of the whole file
    EXPECT_EQ(unitOpenOn(f), le);
    unitWriteI32(le, 7);
    unitSeek(be, 4);
    unitWriteI32(be, 7);
    unitSeek(le, 12);
    unitWriteI32(le, -1);
    unitSeek(rd, 0);
    EXPECT_EQ(unitReadI32(rd, a), IoStatus::ok);
    EXPECT_EQ(unitReadI32(rd, b), IoStatus::ok);
    EXPECT_EQ(a, 7);
    EXPECT_EQ(b, 0x07000000);  // written big-endian, read little-endian
    // What a unit writes on its way out is seen by a reader left alone.
    unitSeek(le, 8);
    unitWriteI32(le, 9);
    closeUnit(le);
    closeUnit(be);
    unitSeek(rd, 8);
    EXPECT_EQ(unitReadI32(rd, a), IoStatus::ok);
    EXPECT_EQ(a, 9);
    closeUnit(rd);
    EXPECT_EQ(readFile(f), std::string("\x07\0\0\0\0\0\0\x07\x09\0\0\0\xff\xff\xff\xff", 16));
    EXPECT_EQ(unitOpenOn(f), 0);
}

TEST_F(Units, AFileJustMadeIsKnownAsOpen) {
    // A file made by a replace open is not looked at until another open is
    // compared with it; it must still be found, and share its pending output.
    std::string f = dir / "made.txt";
    int32_t w = openUnit("O ", f);
    EXPECT_EQ(unitOpenOn(f), w);
    unitWriteLine(w, "abc");
    int32_t r = openUnit("I ", f);
    NameText line;
    EXPECT_EQ(unitReadLine(r, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), "abc");
    closeUnit(r);
    closeUnit(w);
    EXPECT_EQ(unitOpenOn(f), 0);
}

TEST_F(Units, ReadingLines) {
    std::string longLine(200000, 'x');
    writeFile(dir / "in.txt", "\n" + longLine + "\nlast");
    int32_t u = openUnit("I ", dir / "in.txt");
    NameText line("stale");
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_TRUE(line.blank());
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), longLine.substr(0, 1000));  // cut at the capacity
    EXPECT_FALSE(unitAtEnd(u));
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), "last");
    EXPECT_TRUE(unitAtEnd(u));
    EXPECT_EQ(unitReadLine(u, line), IoStatus::end);
    EXPECT_EQ(unitBackspace(u), IoStatus::ok);  // back over the last line read
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), "last");
    EXPECT_EQ(unitBackspace(u), IoStatus::ok);
    EXPECT_EQ(unitBackspace(u), IoStatus::error);  // only one step back
    EXPECT_EQ(unitReadLine(4242, line), IoStatus::error);
}

// A line taken where it lies in the read buffer is taken as unitReadLine
// takes it; one that is longer than asked for, or not yet all in the buffer,
// is left for unitReadLine.
TEST_F(Units, TakingLinesFromTheReadBuffer) {
    const std::string b(100, 'b'), c(70000, 'c');  // c runs past the first buffer
    writeFile(dir / "in.txt", "a\r\n" + b + "\n" + c + "\ntail \r\n");
    int32_t u = openUnit("I ", dir / "in.txt");
    NameText line;
    std::string_view v;
    EXPECT_FALSE(unitTakeBufferedLine(u, 1000, v));  // nothing read yet
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), "a");
    EXPECT_FALSE(unitTakeBufferedLine(u, 99, v));  // longer than asked for: not taken
    ASSERT_TRUE(unitTakeBufferedLine(u, 100, v));
    EXPECT_EQ(v, b);
    EXPECT_EQ(unitBackspace(u), IoStatus::ok);  // back to the start of the line taken
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), b);
    EXPECT_FALSE(unitTakeBufferedLine(u, 100000, v));  // its end is not in the buffer
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), c.substr(0, 1000));
    ASSERT_TRUE(unitTakeBufferedLine(u, 1000, v));
    EXPECT_EQ(v, "tail ");  // the CR goes, a blank stays
    EXPECT_FALSE(unitTakeBufferedLine(u, 1000, v));
    EXPECT_EQ(unitReadLine(u, line), IoStatus::end);
    EXPECT_FALSE(unitTakeBufferedLine(4242, 1000, v));
}

// Bytes laid straight in a unit's buffer: only once the unit is writing and
// only as many as fit; what the caller says it wrote goes to the file, and
// what lies behind it does not.
TEST_F(Units, LayingBytesInTheBuffer) {
    int32_t u = openUnit("O ", dir / "out.txt");
    EXPECT_EQ(unitBytesRoom(u, 4), nullptr);  // nothing written yet
    ASSERT_EQ(unitWriteText(u, "ab"), IoStatus::ok);
    char* p = unitBytesRoom(u, 8);
    ASSERT_NE(p, nullptr);
    std::memcpy(p, "cdefXXXX", 8);
    unitBytesWritten(u, 4);
    EXPECT_EQ(unitWriteLine(u, "g"), IoStatus::ok);
    EXPECT_EQ(unitBytesRoom(u, std::size_t{1} << 30), nullptr);  // more than the buffer holds
    EXPECT_EQ(unitBytesRoom(4242, 1), nullptr);
    closeUnit(u);
    EXPECT_EQ(readFile(dir / "out.txt"), "abcdefg\r\n");
}

TEST_F(Units, WriteFailureComesBack) {
    // /dev/full takes the open and refuses every byte: the failure shows at
    // the latest when the buffer goes out.
    int32_t u = openUnit("S ", "/dev/full");
    ASSERT_TRUE(unitIsOpen(u));
    std::string chunk(1000, 'x');
    bool failed = false;
    for (int i = 0; i < 200 && !failed; ++i) failed = unitWriteLine(u, chunk) == IoStatus::error;
    EXPECT_TRUE(failed);
    EXPECT_EQ(unitFlush(u), IoStatus::error);
    EXPECT_EQ(unitWriteText(u, "x"), IoStatus::error);  // and it stays failed
    EXPECT_EQ(unitBytesRoom(u, 1), nullptr);
}

using UnitsDeath = Units;

TEST_F(UnitsDeath, DirectStopsKeepWrittenData) {
    std::string f = dir / "kept.txt";
    EXPECT_EXIT(
        {
            int32_t u = 0;
            OPENERFREE(u, "O ", f, 0);
            unitWriteLine(u, "written");
            OPENER(9, u, "O ", "x", 1);
        },
        ::testing::ExitedWithCode(0), "Incorrect file number - OPENER");
    EXPECT_EQ(readFile(f), "written\r\n");
}

}  // namespace
