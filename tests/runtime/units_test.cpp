#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstring>
#include <string>

#include "helpers.hpp"
#include "runtime/units.hpp"

namespace {

using testutil::captureConsole;
using testutil::readFile;
using testutil::TempDir;
using testutil::writeFile;

class Units : public ::testing::Test {
protected:
    void SetUp() override { FILEINIT(1000); }
    void TearDown() override { FILEINIT(1000); }  // closes whatever a test left open

    int32_t open(const char* mode, const std::string& name) {
        int32_t u = 0;
        captureConsole([&] { OPENERFREE(u, mode, name, 0); });
        return u;
    }
    void close(int32_t& u) {
        captureConsole([&] { CLOSER(u); });
    }
    TempDir dir;
};

TEST_F(Units, NumberingAndReuse) {
    std::string a = dir / "a.txt", b = dir / "b.txt", c = dir / "c.txt";
    int32_t ua = open("O ", a);
    int32_t ub = open("O ", b);
    EXPECT_EQ(ua, 1001);
    EXPECT_EQ(ub, 1002);
    int32_t kept = ua;
    close(ua);
    EXPECT_EQ(ua, 0);
    EXPECT_FALSE(unitIsOpen(kept));
    EXPECT_EQ(open("O ", c), 1001);  // lowest free entry first

    // CLOSER of 0, of an unknown number and of a unit already closed: nothing
    // happens, nothing is reported, the caller's variable is left alone.
    int32_t zero = 0, unknown = 12345, closedAgain = ub;
    close(ub);
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

TEST_F(Units, SmallFirstUnitIsRaisedToNine) {
    FILEINIT(5);
    EXPECT_EQ(open("O ", dir / "a.txt"), 10);
    int32_t u = 0;
    captureConsole([&] { OPENERNAMED(8, u, dir / "s.txt", "O ", "output", 1); });
    EXPECT_EQ(u, 9);  // slot 8 has unit B
}

TEST_F(Units, ConsoleReports) {
    std::string out = dir / "r.txt";
    int32_t u = 0, v = 0;
    std::string shown = captureConsole([&] {
        OPENERFREE(u, "O ", "  " + out, 0);
        CLOSER(u);
        OPENERFREE(v, "I ", out, 0);
        CLOSER(v);
        CLOSEALL();
    });
    EXPECT_EQ(shown, "\nTrying to open file " + out + "...OK.  File Unit:1001\n" +
                         "...Closed File Unit:1001\n" +
                         "\nTrying to open file " + out + "...OK.\nOpened File Unit:1001\n" +
                         "...Closed File Unit:1001\n" + "\nClosing all file units...\n");
    FILEINIT(9);
    shown = captureConsole([&] { OPENERFREE(u, "O ", out, 0); });
    EXPECT_NE(shown.find("OK.  File Unit:  10\n"), std::string::npos) << shown;
}

TEST_F(Units, ReportsGoToTheLogUnitToo) {
    int32_t log = open("O ", dir / "run.log");
    fileUnitSettings.logUnit = log;
    int32_t u = open("O ", dir / "x.txt");
    close(u);
    fileUnitSettings.logUnit = 0;
    close(log);
    std::string x = dir / "x.txt";
    EXPECT_EQ(readFile(dir / "run.log"), "\r\nTrying to open file " + x + "...OK.  File Unit:1002\r\n" +
                                             "...Closed File Unit:1002\r\n");
}

TEST_F(Units, FileTypeFromExtension) {
    int32_t m = open("O ", dir / "a.MIF");
    int32_t d = open("O ", dir / "a.mid");
    int32_t t = open("O ", dir / "a.12da");
    EXPECT_EQ(FILETYPE(m), 101);
    EXPECT_EQ(FILETYPE(d), 102);
    EXPECT_EQ(FILETYPE(t), 111);
    EXPECT_EQ(FILETYPE(4242), 0);
    int32_t mUnit = m;
    close(m);
    EXPECT_EQ(open("O ", dir / "a.txt"), mUnit);
    EXPECT_EQ(FILETYPE(mUnit), 101);  // another extension leaves the type alone
}

TEST_F(Units, KeepModesDoNotCutAndCreate) {
    std::string f = dir / "keep.bin";
    writeFile(f, "0123456789");
    int32_t u = open("SB", f);
    unitWriteBytes(u, "ab", 2);
    close(u);
    EXPECT_EQ(readFile(f), "ab23456789");

    std::string g = dir / "new.txt";
    u = open("S ", g);  // created when absent
    unitWriteLine(u, "x");
    close(u);
    EXPECT_EQ(readFile(g), "x\r\n");
}

TEST_F(Units, AppendReplaceAndTextLines) {
    std::string f = dir / "t.txt";
    int32_t u = open("O ", f);
    unitWriteLine(u, "a long first line");
    close(u);
    u = open("O ", f);  // replaces
    unitWriteLine(u, "one");
    close(u);
    u = open("A ", f);
    unitWriteText(u, "tw");
    unitWriteLine(u, "o");
    close(u);
    u = open("AB", dir / "fresh.bin");  // created when absent
    unitWriteBytes(u, "z", 1);
    close(u);
    EXPECT_EQ(readFile(f), "one\r\ntwo\r\n");
    EXPECT_EQ(readFile(dir / "fresh.bin"), "z");
}

TEST_F(Units, BigEndianUnitsAndExplicitOrder) {
    std::string f = dir / "be.bin";
    int32_t u = open("BN", f);
    unitWriteI32(u, 0x01020304);
    unitWriteF64(u, 1.0);
    unitWriteI32As(u, 0x01020304, false);
    close(u);
    EXPECT_EQ(readFile(f), std::string("\x01\x02\x03\x04\x3f\xf0\0\0\0\0\0\0\x04\x03\x02\x01", 16));

    int32_t be = open("BE", f);
    int32_t v = 0;
    double d = 0;
    EXPECT_EQ(unitReadI32(be, v), IoStatus::ok);
    EXPECT_EQ(v, 0x01020304);
    EXPECT_EQ(unitReadF64(be, d), IoStatus::ok);
    EXPECT_EQ(d, 1.0);
    EXPECT_EQ(unitReadI32As(be, v, false), IoStatus::ok);
    EXPECT_EQ(v, 0x01020304);
    EXPECT_EQ(unitReadI32(be, v), IoStatus::end);
}

TEST_F(Units, TwoUnitsOnOneFileSeeEachOther) {
    // The way a shape file header is updated: one little-endian and one
    // big-endian unit on the same file, each with its own position.
    std::string f = dir / "two.bin";
    writeFile(f, std::string(16, '\0'));
    int32_t le = open("SB", f);
    int32_t be = open("SE", f);
    int32_t rd = open("BI", f);
    int32_t probe = 0;
    EXPECT_EQ(unitReadI32(rd, probe), IoStatus::ok);  // read-ahead of the whole file
    EXPECT_EQ(unitOpenOn(f), le);
    unitWriteI32(le, 7);
    unitSeek(be, 4);
    unitWriteI32(be, 7);
    unitSeek(le, 12);
    unitWriteI32(le, -1);
    int32_t a = 0, b = 0;
    unitSeek(rd, 0);
    EXPECT_EQ(unitReadI32(rd, a), IoStatus::ok);
    EXPECT_EQ(unitReadI32(rd, b), IoStatus::ok);
    EXPECT_EQ(a, 7);
    EXPECT_EQ(b, 0x07000000);  // written big-endian, read little-endian
    unitSeek(rd, 12);
    EXPECT_EQ(unitReadI32(rd, a), IoStatus::ok);
    EXPECT_EQ(a, -1);
    // What a unit writes on its way out is seen by a reader left alone.
    unitSeek(rd, 0);
    EXPECT_EQ(unitReadI32(rd, a), IoStatus::ok);
    unitSeek(le, 8);
    unitWriteI32(le, 9);
    close(le);
    close(be);
    unitSeek(rd, 8);
    EXPECT_EQ(unitReadI32(rd, a), IoStatus::ok);
    EXPECT_EQ(a, 9);
    close(rd);
    EXPECT_EQ(readFile(f), std::string("\x07\0\0\0\0\0\0\x07\x09\0\0\0\xff\xff\xff\xff", 16));
    EXPECT_EQ(unitOpenOn(f), 0);
}

TEST_F(Units, ReadingLines) {
    std::string f = dir / "in.txt";
    std::string longLine(200000, 'x');
    writeFile(f, "crlf\r\nlf\n\n" + longLine + "\nlast");
    int32_t u = open("I ", f);
    NameText line;
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), "crlf");
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), "lf");
    EXPECT_EQ(unitBackspace(u), IoStatus::ok);  // one line of look-ahead
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), "lf");
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_TRUE(line.blank());
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);  // cut at the capacity
    EXPECT_EQ(line.trimmed(), longLine.substr(0, 1000));
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
    unitRewind(u);
    EXPECT_EQ(unitReadLine(u, line), IoStatus::ok);
    EXPECT_EQ(line.trimmed(), "crlf");
    EXPECT_EQ(unitReadLine(4242, line), IoStatus::error);
}

TEST_F(Units, UnformattedRecords) {
    std::string f = dir / "rec.bin";
    int32_t u = open("UO", f);
    unitWriteRecord(u, "abc", 3);
    unitWriteRecord(u, "0123456789", 10);
    close(u);
    EXPECT_EQ(readFile(f), std::string("\x03\0\0\0abc\x03\0\0\0\x0a\0\0\0" "0123456789\x0a\0\0\0", 29));
    u = open("UI", f);
    char buf[16];
    std::size_t n = 0;
    EXPECT_EQ(unitReadRecord(u, buf, sizeof buf, n), IoStatus::ok);
    EXPECT_EQ(std::string(buf, n), "abc");
    EXPECT_EQ(unitReadRecord(u, buf, 4, n), IoStatus::ok);  // the rest of a long record is passed over
    EXPECT_EQ(std::string(buf, n), "0123");
    EXPECT_EQ(unitReadRecord(u, buf, sizeof buf, n), IoStatus::end);
}

TEST_F(Units, WriteFailureComesBack) {
    // /dev/full takes the open and refuses every byte: the failure shows at
    // the latest when the buffer goes out.
    int32_t u = open("S ", "/dev/full");
    ASSERT_TRUE(unitIsOpen(u));
    std::string chunk(1000, 'x');
    bool failed = false;
    for (int i = 0; i < 200 && !failed; ++i) failed = unitWriteLine(u, chunk) == IoStatus::error;
    EXPECT_TRUE(failed);
    EXPECT_EQ(unitFlush(u), IoStatus::error);
    EXPECT_EQ(unitWriteText(u, "x"), IoStatus::error);  // and it stays failed
}

TEST_F(Units, SlotsAndTheirNames) {
    int32_t u = 0;
    std::string in = dir / "ab_main.dat";
    writeFile(in, "x\n");
    captureConsole([&] { OPENERNAMED(1, u, "  " + in, "I ", "input", 0); });
    EXPECT_EQ(u, 993);
    EXPECT_TRUE(NAMED(1));
    EXPECT_FALSE(NAMED(2));
    NameText name;
    GETNAM(1, name);
    EXPECT_EQ(name.trimmed(), std::string_view(in).substr(0, 80));
    UNNAME(1);
    EXPECT_FALSE(NAMED(1));
    UNNAME(9);  // ignored

    // A name derived from slot 1 ("x_rest" loses its first two bytes).
    FILEINIT(1000);
    captureConsole([&] { OPENERNAMED(1, u, "r_" + std::string("base"), "S ", "", 1); });
    int32_t d = 0;
    std::string shown = captureConsole([&] { OPENERDERIVED(d, "O ", "q ", ".t  "); });
    EXPECT_NE(shown.find("Trying to open file qbase.t..."), std::string::npos) << shown;
    captureConsole([&] { OPENERDEFAULT(3, u, "O ", "other", 1, "zz"); });
    GETNAM(3, name);
    EXPECT_EQ(name.trimmed(), "zzbase");
    EXPECT_EQ(u, 995);
    ::unlink("qbase.t");
    ::unlink("zzbase");
    ::unlink("r_base");
}

TEST_F(Units, CopyModeMirrorsInputsAndRedirectsOutputs) {
    std::string src = dir / "src";
    testutil::fs::create_directories(src);
    writeFile(src + "/reach.sdf", "data");
    writeFile(src + "/reach.prj", "proj");
    writeFile(src + "/other.sdf", "no");
    fileUnitSettings.copyMode = true;
    fileUnitSettings.copyRoot = (dir / "mirror") + "/";
    int32_t u = open("I ", src + "/reach.sdf");
    EXPECT_TRUE(unitIsOpen(u));
    std::string mirrored = dir / ("mirror/" + src);
    EXPECT_EQ(readFile(mirrored + "/reach.sdf"), "data");
    EXPECT_EQ(readFile(mirrored + "/reach.prj"), "proj");  // all files of that base name
    EXPECT_FALSE(testutil::fs::exists(mirrored + "/other.sdf"));

    int32_t o = open("O ", dir / "out/result.txt");
    unitWriteLine(o, "r");
    close(o);
    EXPECT_FALSE(testutil::fs::exists(dir / "out/result.txt"));
    EXPECT_EQ(readFile(dir / ("mirror/" + (dir / "out/result.txt"))), "r\r\n");
    EXPECT_NE(std::string(fileUnitSettings.lastCopyName.trimmed()).find("out/result.txt"), std::string::npos);
}

TEST_F(Units, LengthHelpers) {
    Text<10> t("ab");
    EXPECT_EQ(LENSL(t, 10), 2);
    EXPECT_EQ(t.at(3), '\0');  // marked behind the last byte
    Text<10> u("ab cd");
    EXPECT_EQ(LENFIRST(u, 10), 2);
    EXPECT_EQ(u.at(3), '\0');
    Text<4> full("abcd");
    EXPECT_EQ(LENSL(full, 4), 4);
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
    EXPECT_EXIT(NAMED(0), ::testing::ExitedWithCode(0), "Invalid file number - NAMED");
}

TEST_F(UnitsDeath, NoFreeFileNumbers) {
    struct rlimit lim;
    ::getrlimit(RLIMIT_NOFILE, &lim);
    if (lim.rlim_max != RLIM_INFINITY && lim.rlim_max < 1100) GTEST_SKIP() << "too few file descriptors allowed";
    std::string f = dir / "many.txt";
    EXPECT_EXIT(
        {
            struct rlimit l = lim;
            l.rlim_cur = l.rlim_max == RLIM_INFINITY ? 4096 : std::min<rlim_t>(l.rlim_max, 4096);
            ::setrlimit(RLIMIT_NOFILE, &l);
            int32_t u = 0;
            for (int i = 0; i < 1000; ++i) OPENERFREE(u, "A ", f, 0);
            OPENERFREE(u, "A ", f, 0);
        },
        ::testing::ExitedWithCode(0), "No free file numbers.");
}

}  // namespace
