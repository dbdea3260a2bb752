// Test helpers: a temporary folder, files, the console captured, units opened
// quietly, the child program, and stops through the orderly exit.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "runtime/console.hpp"
#include "runtime/units.hpp"
#include "test_common.hpp"

extern char** environ;

namespace testutil {

using namespace tc;

namespace fs = std::filesystem;

struct TempDir {
    fs::path path;
    TempDir() {
        std::string t = (fs::temp_directory_path() / "rt_XXXXXX").string();
        path = ::mkdtemp(t.data());
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    std::string operator/(const std::string& leaf) const { return (path / leaf).string(); }
};

// Opening and closing without the reports on the test's console.
inline int32_t openUnit(const char* mode, const std::string& name) {
    int32_t u = 0;
    captureConsole([&] { OPENERFREE(u, mode, name, 0); });
    return u;
}
inline void closeUnit(int32_t& u) {
    captureConsole([&] { CLOSER(u); });
}

// Starts the child program with `stdinFd` as its standard input (closed when
// -1) and its standard output going to the named file.
inline pid_t spawnChild(const std::vector<std::string>& args, int stdinFd, const std::string& outName) {
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    if (stdinFd >= 0) {
        posix_spawn_file_actions_adddup2(&fa, stdinFd, 0);
    } else {
        posix_spawn_file_actions_addclose(&fa, 0);
    }
    posix_spawn_file_actions_addopen(&fa, 1, outName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
    std::vector<std::string> all{RUNTIME_CHILD};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : all) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawn(&pid, RUNTIME_CHILD, &fa, nullptr, argv.data(), environ) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&fa);
    return pid;
}

struct ChildRun {
    int status = -1;  // exit status, -1 when it did not end normally
    std::string out;
};

// Runs the child program to its end; standard input closed when there is no `input`.
inline ChildRun runChild(const std::vector<std::string>& args, const std::optional<std::string>& input) {
    TempDir io;
    if (input) writeFile(io / "in", *input);
    const int in = input ? ::open((io / "in").c_str(), O_RDONLY | O_CLOEXEC) : -1;
    const pid_t pid = spawnChild(args, in, io / "out");
    if (in >= 0) ::close(in);
    ChildRun r;
    int st = 0;
    if (pid > 0 && ::waitpid(pid, &st, 0) == pid && WIFEXITED(st)) r.status = WEXITSTATUS(st);
    r.out = readFile(io / "out");
    return r;
}

}  // namespace testutil

#include "stop_expect.hpp"
