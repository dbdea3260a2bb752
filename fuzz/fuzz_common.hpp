// What every fuzz target shares: a scratch folder to work in, standard input
// closed, the console caught in a file so that an internal-error message
// can be told, and one run of library code ended through the exit handler
// instead of ending the process.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

#include "runtime/console.hpp"
#include "runtime/exits.hpp"

namespace fuzz {

namespace fs = std::filesystem;

struct RunEnded {};

inline int consoleFd = -1;

// Makes a fresh scratch folder and works in it; standard input is empty and
// standard output goes to a file that each run starts afresh.
inline void setUp() {
    static char dir[] = "/tmp/reachmap-fuzz-XXXXXX";
    if (::mkdtemp(dir) == nullptr || ::chdir(dir) != 0) std::abort();
    // Gone at a normal end; kept after a crash, for a look at what was written.
    std::atexit([] {
        std::error_code ec;
        fs::remove_all(dir, ec);
    });
    const int in = ::open("/dev/null", O_RDONLY);
    consoleFd = ::open("console.out", O_RDWR | O_CREAT | O_TRUNC, 0644);
    if (in < 0 || consoleFd < 0 || ::dup2(in, 0) < 0 || ::dup2(consoleFd, 1) < 0) std::abort();
    setRunEndHandler([] { throw RunEnded{}; });
}

inline void writeFile(const char* name, const uint8_t* data, std::size_t size) {
    const int fd = ::open(name, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) std::abort();
    while (size > 0) {
        const ssize_t w = ::write(fd, data, size);
        if (w <= 0) std::abort();
        data += w;
        size -= static_cast<std::size_t>(w);
    }
    ::close(fd);
}

inline void writeFile(const char* name, std::string_view text) {
    writeFile(name, reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

// The words of the internal stop. An input that holds them is not run: the
// messages that quote a line of the input would bring them to the console.
inline bool holdsStopWords(const uint8_t* data, std::size_t size) {
    constexpr std::string_view words = "Should not be here";
    return std::string_view(reinterpret_cast<const char*>(data), size).find(words) != std::string_view::npos;
}

// Runs `body`, which may end through the exit handler; then fails loudly when
// the console shows an internal-error message, and resets with `reset`.
template <typename Body, typename Reset>
void runOnce(Body body, Reset reset) {
    try {
        body();
    } catch (const RunEnded&) {
    }
    conFlush();
    const off_t n = ::lseek(1, 0, SEEK_CUR);
    std::string out(static_cast<std::size_t>(n > 0 ? n : 0), '\0');
    if (n > 0 && ::pread(1, out.data(), out.size(), 0) != n) std::abort();
    if (out.find("Should not be here") != std::string::npos) {
        std::fprintf(stderr, "internal stop reached:\n%s\n", out.c_str());
        std::abort();
    }
    reset();
    if (::ftruncate(1, 0) != 0 || ::lseek(1, 0, SEEK_SET) != 0) std::abort();
}

// Removes every file of the scratch folder but those named in `keep`.
template <typename Keep>
void clearFolder(Keep keep) {
    std::error_code ec;
    for (const auto& e : fs::directory_iterator(".", ec)) {
        const std::string name = e.path().filename().string();
        if (name != "console.out" && !keep(name)) fs::remove_all(e.path(), ec);
    }
}

}  // namespace fuzz
