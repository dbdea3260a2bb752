#include "runtime/console.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "runtime/units.hpp"

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
    int stored = 0;
    bool any = false;
    bool lastCR = false;
    std::size_t raw = 0;
    const int oldHi = *line.hi;
    for (;;) {
        if (inPos == inLen && !fillInput()) break;
        any = true;
        const char* p = inBuf + inPos;
        std::size_t avail = inLen - inPos;
        const char* nl = static_cast<const char*>(std::memchr(p, '\n', avail));
        std::size_t k = nl ? static_cast<std::size_t>(nl - p) : avail;
        if (k > 0) {
            std::size_t room = static_cast<std::size_t>(line.cap - stored);
            std::size_t c = k < room ? k : room;
            std::memcpy(line.data + stored, p, c);
            stored += static_cast<int>(c);
            raw += k;
            lastCR = p[k - 1] == '\r';
        }
        inPos += k;
        if (nl) {
            ++inPos;
            break;
        }
    }
    if (lastCR && static_cast<std::size_t>(stored) == raw) --stored;
    if (oldHi > stored) std::memset(line.data + stored, ' ', static_cast<std::size_t>(oldHi - stored));
    *line.hi = stored;
    line.len();
    return any;
}

void stopRun(std::string_view text) {
    conFlush();
    unitFlushAll();
    writeAll(2, text.data(), text.size());
    writeAll(2, "\n", 1);
    std::exit(0);
}
