// The console side of the runtime, seen from outside: a child program runs a
// scenario, and its standard output and exit status are checked.
#include <gtest/gtest.h>
#include <signal.h>

#include <string>

#include "helpers.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"

namespace {

using testutil::count;
using testutil::readFile;
using testutil::runChild;
using testutil::TempDir;

TEST(ConsoleChild, MissingInputWithClosedInputEndsOnce) {
    TempDir dir;
    std::string missing = dir / "nothere.sdf";
    testutil::ChildRun r = runChild({"open-input", missing}, nullptr);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "\nTrying to open file " + missing + "...\n" + "CHECK 0008 - \"" + missing +
                         "\" cannot be found\n" +
                         "\nCheck file exists and press enter or enter another file name: \n" +
                         "ERROR - End of standard input while waiting for a file name; nobody left to answer.\n" +
                         "\nPress Enter to Close");
    EXPECT_EQ(count(r.out, "ERROR - "), 1);
}

TEST(ConsoleChild, MissingInputPromptRetriesAndTakesANewName) {
    TempDir dir;
    std::string missing = dir / "nothere.sdf", good = dir / "good.sdf";
    testutil::writeFile(good, "x\n");
    std::string input = "\n  " + good + "\n";  // Enter alone tries the same name again
    testutil::ChildRun r = runChild({"open-input", missing}, &input);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(count(r.out, "CHECK 0008 - \"" + missing + "\" cannot be found"), 2) << r.out;
    EXPECT_NE(r.out.find("\nNo file name entered.  Trying file again...\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Trying to open file " + good + "...OK.\nOpened File Unit:1001\nunit 1001\n"),
              std::string::npos)
        << r.out;
    EXPECT_EQ(count(r.out, "ERROR - "), 0);
}

TEST(ConsoleChild, CantOpenRetryLoopStopsAtEndOfInput) {
    TempDir dir;
    std::string name = dir / "no_such_folder/out.txt";
    testutil::ChildRun r = runChild({"open-output", name}, nullptr);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "\nTrying to open file " + name + "...Can't Open\n" + "\nCan't open: " + name + "\n" +
                         "\nAnother application or user maybe using it,\n" +
                         "   or the file's folder does not exist.\n" +
                         "If so, close the file or create file path.\n" + "\nPress Enter to Continue\n" +
                         "ERROR - End of standard input while waiting for Enter to try the open again; nobody "
                         "left to answer.\n" +
                         "\nPress Enter to Close");
}

TEST(ConsoleChild, AlreadyOpenOutputIsClosedOnYes) {
    TempDir dir;
    std::string name = dir / "twice.txt";
    std::string yes = "y\n";
    testutil::ChildRun r = runChild({"reopen-output", name}, &yes);
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("\n" + name + " is already open, close it? OK.  File Unit:1002\n"), std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("units 1001 1002 open 0"), std::string::npos) << r.out;
    EXPECT_EQ(readFile(name), "new\r\n");  // closed, then replaced

    std::string no = "n\n";
    r = runChild({"reopen-output", name}, &no);
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("close it? \nCheck file exists and press enter or enter another file name: "),
              std::string::npos)
        << r.out;
    EXPECT_EQ(count(r.out, "ERROR - "), 1);
}

TEST(ConsoleChild, BlankNameBailsOut) {
    testutil::ChildRun r = runChild({"blank-name"}, nullptr);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "\nEmpty filename specified.  Bailing out.  Please contact the reachmap maintainers.\n\nPress Enter to Close");
}

TEST(ConsoleChild, ReadLinesStripsLineEnds) {
    std::string input = "a\r\nbb\n\nlonger than eight\nlast";
    testutil::ChildRun r = runChild({"read-lines"}, &input);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "[a]\n[bb]\n[]\n[longer t]\n[last]\nend\n\nPress Enter to Close");
}

TEST(ConsoleChild, SinglePausesGoOnAtEndOfInput) {
    testutil::ChildRun r = runChild({"pauser"}, nullptr);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "\nPress Enter to Continueafter pause\n\nPress Enter to Close");
    std::string answer = "yes\n";
    r = runChild({"askyes"}, &answer);
    EXPECT_EQ(r.out.substr(0, 12), "Go on? yes\n\n");
    r = runChild({"askyes"}, nullptr);
    EXPECT_EQ(r.out.substr(0, 10), "Go on? no\n");
}

TEST(ConsoleChild, MessageBoxesOnTheConsole) {
    TempDir dir;
    std::string missing = dir / "gone.sdf";
    testutil::ChildRun r = runChild({"box-missing", missing}, nullptr);
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("[WARNING] App Run1\nApp FILE and/or path\n" + missing + "\ndoes not exist.\n"),
              std::string::npos)
        << r.out;
    EXPECT_EQ(count(r.out, "ERROR - "), 1);  // input ended: Cancel, said once
    EXPECT_EQ(r.err, "Run cancelled.\n");

    std::string retry = "x\nr\n";  // an answer that is no button asks again
    r = runChild({"box-missing", missing}, &retry);
    EXPECT_EQ(count(r.out, "Retry or Cancel? (R/C): "), 3);
    EXPECT_EQ(count(r.out, "CHECK 0008"), 2);

    r = runChild({"box-exit"}, nullptr);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "\n[STOP] App\nPremature Exit of App Simulation Run1\n\nPress OK to Close Simulation Window\n"
                     "Press Enter for OK: ");
}

// EXITS closes the files before it waits: while the child sits at "Press
// Enter to Close" with standard input open, its output file is complete.
TEST(ConsoleChild, ExitsClosesFilesBeforeThePause) {
    TempDir dir;
    std::string name = dir / "data.txt";
    std::string outName = dir / "stdout";
    int toChild[2];
    ASSERT_EQ(::pipe(toChild), 0);
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_adddup2(&fa, toChild[0], 0);
    posix_spawn_file_actions_addclose(&fa, toChild[1]);
    posix_spawn_file_actions_addopen(&fa, 1, outName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::string prog = RUNTIME_CHILD, what = "write-then-exit";
    char* argv[] = {prog.data(), what.data(), name.data(), nullptr};
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, RUNTIME_CHILD, &fa, nullptr, argv, environ), 0);
    posix_spawn_file_actions_destroy(&fa);
    ::close(toChild[0]);

    std::string shown;
    for (int i = 0; i < 1000 && shown.find("Press Enter to Close") == std::string::npos; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        shown = readFile(outName);
    }
    ASSERT_NE(shown.find("Press Enter to Close"), std::string::npos) << shown;
    int st = 0;
    EXPECT_EQ(::waitpid(pid, &st, WNOHANG), 0);  // still waiting for Enter
    std::string data = readFile(name);
    // "line N" and CR LF for N = 1..5000: 9 lines of 8 bytes, 90 of 9, 900 of 10, 4001 of 11.
    EXPECT_EQ(data.size(), 9u * 8 + 90 * 9 + 900 * 10 + 4001 * 11) << "file incomplete while paused";
    EXPECT_EQ(data.substr(data.size() - 11), "line 5000\r\n");
    // "...Closed" reports belong to CLOSER only: EXITS closes silently.
    EXPECT_EQ(shown.find("Closed File Unit"), std::string::npos);

    ASSERT_EQ(::write(toChild[1], "\n", 1), 1);
    ::close(toChild[1]);
    ASSERT_EQ(::waitpid(pid, &st, 0), pid);
    EXPECT_TRUE(WIFEXITED(st));
    EXPECT_EQ(WEXITSTATUS(st), 0);
}

TEST(ExitsDeath, WithoutPauseEndsAtOnce) {
    FILEINIT(1000);
    EXPECT_EXIT(
        {
            fileUnitSettings.pauseOnPrematureExit = false;
            EXITS();
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
