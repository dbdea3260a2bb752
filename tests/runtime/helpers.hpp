// Test helpers: a temporary folder, capture of the console, the child program.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "runtime/console.hpp"

extern char** environ;

namespace testutil {

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

inline std::string readFile(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

inline void writeFile(const std::string& name, const std::string& bytes) {
    std::ofstream out(name, std::ios::binary);
    out << bytes;
}

// Everything the console shows while `body` runs.
template <typename F>
std::string captureConsole(F body) {
    conFlush();
    char name[] = "/tmp/rt_console_XXXXXX";
    int fd = ::mkstemp(name);
    int saved = ::dup(1);
    ::dup2(fd, 1);
    body();
    conFlush();
    ::dup2(saved, 1);
    ::close(saved);
    ::close(fd);
    std::string s = readFile(name);
    ::unlink(name);
    return s;
}

struct ChildRun {
    int status = -1;  // exit status, -1 when it did not end normally
    std::string out;
    std::string err;
};

// Runs the child program. `input` null: standard input closed; otherwise a
// file with that content. Waits for the end.
inline ChildRun runChild(const std::vector<std::string>& args, const std::string* input) {
    TempDir io;
    std::string inName = io / "in", outName = io / "out", errName = io / "err";
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    if (input != nullptr) {
        writeFile(inName, *input);
        posix_spawn_file_actions_addopen(&fa, 0, inName.c_str(), O_RDONLY, 0);
    } else {
        posix_spawn_file_actions_addclose(&fa, 0);
    }
    posix_spawn_file_actions_addopen(&fa, 1, outName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&fa, 2, errName.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::vector<std::string> all{RUNTIME_CHILD};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : all) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    ChildRun r;
    if (posix_spawn(&pid, RUNTIME_CHILD, &fa, nullptr, argv.data(), environ) != 0) return r;
    posix_spawn_file_actions_destroy(&fa);
    int st = 0;
    ::waitpid(pid, &st, 0);
    if (WIFEXITED(st)) r.status = WEXITSTATUS(st);
    r.out = readFile(outName);
    r.err = readFile(errName);
    return r;
}

inline int count(const std::string& s, const std::string& part) {
    int n = 0;
    for (std::size_t p = s.find(part); p != std::string::npos; p = s.find(part, p + 1)) ++n;
    return n;
}

}  // namespace testutil
