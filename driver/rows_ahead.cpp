#include "driver/rows_ahead.hpp"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <system_error>
#include <thread>

#include "driver/layer_set.hpp"
#include "runtime/platform.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
#include "text/numbers.hpp"

RowTexts surfTexts[kSdfMaxRows + 1];

bool plainSurfaceRow(std::string_view line, double& x, double& y, float& z) {
    FreeFormat f(line);
    double a, b;
    float c;
    if (!(f.quickReal8(a) && f.quickReal8(b) && f.quickReal4(c) && f.atEnd())) return false;
    x = a;
    y = b;
    z = c;
    return true;
}

namespace {

// The layouts of the texts made ahead; the section export writes the same.
constexpr NumberLayout kZRecord = layer::numberLayout(layer::surfPts, "Elevation");
static_assert(kZRecord.width == sizeof(RowTexts::zRecord), "the record's elevation field");

// A line longer than the text line holds is cut when read, so it is left to
// the main thread, as is a line longer than the helper's buffer.
constexpr auto kLongestRow = static_cast<std::size_t>(decltype(textLine)::capacity);
constexpr std::size_t kChunk = std::size_t{1} << 20;
constexpr uint64_t kRing = 8192;                 // rows ready at most: a few sections' worth
constexpr uint64_t kClosed = uint64_t{1} << 63;  // set in a counter: that side has stopped
constexpr uint64_t kMadeEvery = 32;              // rows made between two hand-overs: the main thread seldom waits
constexpr uint64_t kTakenEvery = 256;            // rows taken between two hand-overs

// One producer (the helper) and one consumer (the main thread). `made` counts
// the rows put in the ring, `taken` the rows passed; each side tells the
// other its count now and then, and always before it waits.
struct Ring {
    ReadyRow rows[kRing];
    std::atomic<uint64_t> made{0};
    std::atomic<uint64_t> taken{0};
};

Ring ring;
char chunk[kChunk];
std::thread helper;
int handle = -1;
int64_t startAt = 0;
bool running = false;
bool wantPointTexts = false;
uint64_t takenHere = 0;  // the consumer's own count
uint64_t madeSeen = 0;   // what it last saw of `made`

// A run that ends through the orderly exit ends the process with the helper
// still reading: it is stopped before the thread object is destroyed.
struct StopAtExit {
    ~StopAtExit() { rowsAheadStop(); }
} stopAtExit;

void publishTaken() {
    ring.taken.store(takenHere, std::memory_order_release);
    ring.taken.notify_one();
}

// Puts one row in the ring; false when the consumer has stopped.
bool put(uint64_t& madeHere, uint64_t& takenSeen, const ReadyRow& row) {
    while (madeHere - (takenSeen & ~kClosed) == kRing) {
        ring.made.store(madeHere, std::memory_order_release);
        ring.made.notify_one();
        takenSeen = ring.taken.load(std::memory_order_acquire);
        if (takenSeen & kClosed) return false;
        if (madeHere - takenSeen == kRing) {
            ring.taken.wait(takenSeen, std::memory_order_acquire);
            takenSeen = ring.taken.load(std::memory_order_acquire);
            if (takenSeen & kClosed) return false;
        }
    }
    ring.rows[madeHere % kRing] = row;
    if (++madeHere % kMadeEvery == 0) {
        ring.made.store(madeHere, std::memory_order_release);
        ring.made.notify_one();
    }
    return true;
}

// The helper: reads the file on from startAt in large blocks and puts every
// plain surface row in the ring, in file order.
void readAhead() {
    uint64_t madeHere = 0, takenSeen = 0;
    int64_t base = startAt;  // file offset of chunk[0]
    std::size_t have = 0;
    bool go = true;
    while (go) {
        const ssize_t n = ::pread(handle, chunk + have, kChunk - have, base + static_cast<int64_t>(have));
        if (n <= 0) break;  // the end, or a read error that the main thread meets itself
        have += static_cast<std::size_t>(n);
        std::size_t at = 0;
        while (go) {
            const char* p = chunk + at;
            const char* nl = static_cast<const char*>(std::memchr(p, '\n', have - at));
            if (nl == nullptr) break;
            std::size_t k = static_cast<std::size_t>(nl - p);
            const std::size_t next = at + k + 1;
            if (k > 0 && p[k - 1] == '\r') --k;
            ReadyRow row;
            if (k <= kLongestRow && plainSurfaceRow(trimmed({p, k}), row.x, row.y, row.z)) {
                row.offset = base + static_cast<int64_t>(at);
                row.next = base + static_cast<int64_t>(next);
                row.texts.ready = true;
                row.texts.xyReady = wantPointTexts;
                if (wantPointTexts) {
                    putFixed(row.texts.xy, 16, 6, row.x);
                    putFixed(row.texts.xy + 16, 16, 6, row.y);
                }
                putFixed(row.texts.zRecord, kZRecord.width, kZRecord.decimals, row.z);
                putFixed(row.texts.zCsv, kCsvZWidth, kCsvZDecimals, row.z);
                go = put(madeHere, takenSeen, row);
            }
            at = next;
        }
        // A line that fills the whole buffer is more than any row: stop there.
        if (at == 0 && have == kChunk) break;
        std::memmove(chunk, chunk + at, have - at);
        base += static_cast<int64_t>(at);
        have -= at;
    }
    ring.made.store(madeHere | kClosed, std::memory_order_release);
    ring.made.notify_one();
}

// REACHMAP_THREADS: "1" for one thread, "2" to read ahead in any file; 0
// when unset or anything else.
int threadsAsked() {
    const char* v = std::getenv("REACHMAP_THREADS");
    if (v == nullptr) return 0;
    const std::string_view s(v);
    return s == "1" ? 1 : s == "2" ? 2 : 0;
}

}  // namespace

bool rowsAheadStart(int32_t unit, int64_t minBytes, bool pointTexts) {
    rowsAheadStop();
    // A second thread only where a second core can run it, unless asked for.
    const int asked = threadsAsked();
    if (asked == 1 || (asked == 0 && platformCores() < 2)) return false;
    if (asked == 2) minBytes = 0;
    wantPointTexts = pointTexts;
    int64_t size = 0;
    handle = unitReadHandle(unit, size);
    if (handle < 0) return false;
    startAt = unitTell(unit);
    if (startAt < 0 || size - startAt < minBytes) {
        ::close(handle);
        handle = -1;
        return false;
    }
    ring.made.store(0, std::memory_order_relaxed);
    ring.taken.store(0, std::memory_order_relaxed);
    takenHere = madeSeen = 0;
    try {
        helper = std::thread(readAhead);
    } catch (const std::system_error&) {
        ::close(handle);
        handle = -1;
        return false;
    }
    running = true;
    return true;
}

const ReadyRow* rowsAheadAt(int64_t offset) {
    if (!running) return nullptr;
    for (;;) {
        while (takenHere == (madeSeen & ~kClosed)) {
            madeSeen = ring.made.load(std::memory_order_acquire);
            if (takenHere != (madeSeen & ~kClosed)) break;
            if (madeSeen & kClosed) return nullptr;  // all made, all passed
            publishTaken();                          // before waiting: the helper may wait for room
            ring.made.wait(madeSeen, std::memory_order_acquire);
        }
        const ReadyRow& row = ring.rows[takenHere % kRing];
        if (row.offset >= offset) return row.offset == offset ? &row : nullptr;
        if (++takenHere % kTakenEvery == 0) publishTaken();
    }
}

void rowsAheadStop() {
    if (!running) return;
    running = false;
    ring.taken.store(takenHere | kClosed, std::memory_order_release);
    ring.taken.notify_one();
    helper.join();
    ::close(handle);
    handle = -1;
}
