// The console: buffered standard output, standard input read in blocks, and
// the direct stop on the error stream.
#include "runtime/console.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "runtime/internal.hpp"
#include "runtime/runend.hpp"
#include "runtime/unit_io.hpp"

namespace {

constexpr std::size_t kOutCap = std::size_t{64} * 1024;
constexpr std::size_t kInCap = std::size_t{64} * 1024;

char outBuf[kOutCap];
std::size_t outLen = 0;
bool outReady = false;
bool outIsTerminal = false;

char inBuf[kInCap];
std::size_t inPos = 0;
std::size_t inLen = 0;
bool inEnded = false;  // once standard input has ended, it stays ended

void writeAll(int fd, const char* p, std::size_t n) {
    while (n > 0) {
        ssize_t w = ::write(fd, p, n);
        if (w < 0) {
            if (errno == EINTR) continue;
            return;  // nowhere left to report a console failure
        }
        p += w;
        n -= static_cast<std::size_t>(w);
    }
}

void flushAtExit() { conFlush(); }

void ready() {
    if (outReady) return;
    outReady = true;
    // On a terminal each line is shown as it is finished, as a person expects;
    // into a pipe or file the output goes in large blocks.
    outIsTerminal = ::isatty(1) == 1;
    std::atexit(flushAtExit);
}

// Refills the input buffer; false at the end of standard input.
bool fillInput() {
    if (inEnded) return false;
    for (;;) {
        ssize_t r = ::read(0, inBuf, kInCap);
        if (r < 0 && errno == EINTR) continue;
        if (r <= 0) {
            inEnded = true;
            return false;
        }
        inPos = 0;
        inLen = static_cast<std::size_t>(r);
        return true;
    }
}

}  // namespace

void conWrite(std::string_view s) {
    ready();
    if (s.empty()) return;
    if (s.size() > kOutCap - outLen) {
        conFlush();
        if (s.size() >= kOutCap) {
            writeAll(1, s.data(), s.size());
            return;
        }
    }
    std::memcpy(outBuf + outLen, s.data(), s.size());
    outLen += s.size();
}

void conLine(std::string_view s) {
    conWrite(s);
    conWrite("\n");
    if (outIsTerminal) conFlush();
}

void conBlank() { conLine({}); }

void conFlush() {
    if (outLen == 0) return;
    std::size_t n = outLen;
    outLen = 0;
    writeAll(1, outBuf, n);
}

bool conReadLine(TextRef line) {
    conFlush();
    LineGatherer g(line);
    bool any = false;
    for (;;) {
        if (inPos == inLen && !fillInput()) break;
        any = true;
        bool ended = false;
        inPos += g.take(inBuf + inPos, inLen - inPos, ended);
        if (ended) break;
    }
    g.finish();
    return any;
}

void stopRun(std::string_view text) {
    conFlush();
    unitFlushAll();
    writeAll(2, text.data(), text.size());
    writeAll(2, "\n", 1);
    endRun();
}

void consoleReset() {
    outLen = 0;
    inPos = inLen = 0;
    inEnded = false;
}
