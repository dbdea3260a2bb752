// The console side of the runtime, seen from outside: a child program runs a
// scenario, and its standard output and exit status are checked.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <tuple>

#include "helpers.hpp"

namespace {

using namespace testutil;

// Every scenario ends with status 0. With standard input closed a single
// pause goes on, and a prompt or retry loop says "ERROR - " once instead of
// asking again.
TEST(ConsoleChild, Scenarios) {
    TempDir dir;
    const std::string missing = dir / "nothere.sdf", good = dir / "good.sdf", twice = dir / "twice.txt";
    const std::string folderless = dir / "no_such_folder/out.txt";
    writeFile(good, "x\n");
    const std::string trying = "\nTrying to open file ", close = "\nPress Enter to Close";
    const std::string notFound = trying + missing + "...\nCHECK 0008 - \"" + missing + "\" cannot be found\n";
    const std::string ask = "\nCheck file exists and press enter or enter another file name: \n";
    const std::string end = "ERROR - End of standard input while waiting for ";
    // Arguments, standard input (none: closed), and the output expected.
    const std::tuple<std::vector<std::string>, std::optional<std::string>, std::string> cases[] = {
        {{"open-input", missing}, {}, notFound + ask + end + "a file name; nobody left to answer.\n" + close},
        {{"open-output", folderless},
         {},
         trying + folderless + "...Can't Open\n\nCan't open: " + folderless + "\n" +
             "\nAnother application or user maybe using it,\n   or the file's folder does not exist.\n" +
             "If so, close the file or create file path.\n\nPress Enter to Continue\n" + end +
             "Enter to try the open again; nobody left to answer.\n" + close},
        {{"blank-name"},
         {},
         "\nEmpty filename specified.  Bailing out.  Please contact the reachmap maintainers.\n" + close},
        {{"pauser"}, {}, "\nPress Enter to Continueafter pause\n" + close},
        // Enter alone tries the same name again; line ends may carry a CR.
        {{"open-input", missing},
         "\r\n  " + good + "\r\n",
         notFound + ask + "No file name entered.  Trying file again...\n" + notFound + ask + "Trying to open file " +
             good + "...OK.\nOpened File Unit:1001\nunit 1001\n...Closed File Unit:1001\n" + close},
        // An output file open already in this process is closed on "y", then replaced.
        {{"reopen-output", twice},
         "y\n",
         trying + twice + "...OK.  File Unit:1001\n" + trying + twice + "...\n" + twice +
             " is already open, close it? OK.  File Unit:1002\nunits 1001 1002 open 0\n...Closed File Unit:1002\n" +
             close},
    };
    for (const auto& [args, input, out] : cases) {
        ChildRun r = runChild(args, input);
        EXPECT_EQ(r.status, 0) << args[0];
        EXPECT_EQ(r.out, out) << args[0];
    }
    EXPECT_EQ(readFile(twice), "new\r\n");
}

// EXITS closes the files before it waits: while the child sits at "Press
// Enter to Close" with standard input open, its output file is complete.
TEST(ConsoleChild, ExitsClosesFilesBeforeThePause) {
    TempDir dir;
    const std::string name = dir / "data.txt", outName = dir / "stdout";
    int toChild[2];
    ASSERT_EQ(::pipe2(toChild, O_CLOEXEC), 0);
    pid_t pid = spawnChild({"write-then-exit", name}, toChild[0], outName);
    ASSERT_GT(pid, 0);
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
    EXPECT_EQ(shown.find("Closed File Unit"), std::string::npos);  // EXITS closes silently

    ::close(toChild[1]);  // the pause meets the end of its input and goes on
    ASSERT_EQ(::waitpid(pid, &st, 0), pid);
    EXPECT_TRUE(WIFEXITED(st) && WEXITSTATUS(st) == 0);
}

}  // namespace
