// The line gatherer shared by the console and the unit input.
#include "runtime/internal.hpp"

#include <cstring>

std::size_t LineGatherer::take(const char* p, std::size_t avail, bool& ended) {
    const char* nl = static_cast<const char*>(std::memchr(p, '\n', avail));
    const std::size_t k = nl ? static_cast<std::size_t>(nl - p) : avail;
    if (k > 0) {
        const std::size_t room = static_cast<std::size_t>(line.cap - stored);
        const std::size_t c = k < room ? k : room;
        std::memcpy(line.data + stored, p, c);
        stored += static_cast<int>(c);
        raw += k;
        lastCR = p[k - 1] == '\r';
    }
    ended = nl != nullptr;
    return ended ? k + 1 : k;
}

void LineGatherer::finish() {
    if (lastCR && static_cast<std::size_t>(stored) == raw) --stored;
    if (oldHi > stored) std::memset(line.data + stored, ' ', static_cast<std::size_t>(oldHi - stored));
    *line.hi = stored;
    line.len();
}
