// Unit input and output: text lines, unformatted records, binary bytes and
// numbers in either byte order, and positions, each by unit number, over the
// buffered file engine.
#include "runtime/unit_io.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <bit>
#include <cstring>

#include "runtime/internal.hpp"
#include "runtime/paths.hpp"
#include "runtime/unit_engine.hpp"
#include "text/text.hpp"

using namespace engine;

int32_t unitOpenOn(std::string_view name) {
    bool exists = false;
    return unitOpenOn(name, exists);
}

int32_t unitOpenOn(std::string_view name, bool& exists) {
    const char* p = nativePath(name);
    struct stat st;
    exists = false;
    if (*p == '\0' || ::stat(p, &st) != 0) return 0;
    exists = !S_ISDIR(st.st_mode);
    for (int i = 0; i < kFiles; ++i) {
        const UnitFile& f = files[i];
        if (f.fd >= 0 && identify(f.group) && groups[f.group].dev == st.st_dev && groups[f.group].ino == st.st_ino)
            return unitOf(i);
    }
    return 0;
}

bool unitIsOpen(int32_t unit) { return indexOf(unit) >= 0; }

int unitReadHandle(int32_t unit, int64_t& size) {
    int idx = indexOf(unit);
    if (idx < 0) return -1;
    struct stat st {};
    if (::fstat(files[idx].fd, &st) != 0 || !S_ISREG(st.st_mode)) return -1;
    size = static_cast<int64_t>(st.st_size);
    return ::fcntl(files[idx].fd, F_DUPFD_CLOEXEC, 3);
}

namespace {

// The next line of input unit idx when its read buffer holds all of it and
// it is no longer than maxLength: taken, and viewed without its line end.
bool takeWholeLine(int idx, std::size_t maxLength, std::string_view& line) {
    UnitFile& f = files[idx];
    const char* p = buffers[idx] + f.bufPos;
    const char* nl = static_cast<const char*>(std::memchr(p, '\n', f.bufLen - f.bufPos));
    if (nl == nullptr) return false;
    std::size_t k = static_cast<std::size_t>(nl - p);
    const std::size_t next = f.bufPos + k + 1;
    if (k > 0 && p[k - 1] == '\r') --k;
    if (k > maxLength) return false;
    f.lastRecord = positionOf(f);
    f.bufPos = next;
    line = {p, k};
    return true;
}

}  // namespace

bool unitTakeBufferedLine(int32_t unit, std::size_t maxLength, std::string_view& line) {
    int idx = indexOf(unit);
    if (idx < 0) return false;
    UnitFile& f = files[idx];
    // A unit with output pending goes the whole way through unitReadLine.
    if (f.dirty || startInput(idx) != IoStatus::ok || f.bufPos >= f.bufLen) return false;
    return takeWholeLine(idx, maxLength, line);
}

IoStatus unitReadLine(int32_t unit, TextRef line) {
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    UnitFile& f = files[idx];
    if (startInput(idx) != IoStatus::ok) return IoStatus::error;
    const int64_t start = positionOf(f);
    char* b = buffers[idx];
    if (f.bufPos == f.bufLen) {
        if (!refill(idx)) return IoStatus::error;
        if (f.bufLen == 0) {
            line.clear();
            return IoStatus::end;
        }
    }
    // The usual case: the whole line is in the buffer.
    if (std::string_view whole; takeWholeLine(idx, f.bufLen, whole)) {
        line.assign(whole);
        return IoStatus::ok;
    }
    // A line that runs on past the buffer, or the last line with no line end.
    LineGatherer g(line);
    for (;;) {
        bool ended = false;
        f.bufPos += g.take(b + f.bufPos, f.bufLen - f.bufPos, ended);
        if (ended) break;
        if (!refill(idx)) return IoStatus::error;
        if (f.bufLen == 0) break;
    }
    g.finish();
    f.lastRecord = start;
    return IoStatus::ok;
}

char* unitBytesRoom(int32_t unit, std::size_t n) {
    int idx = indexOf(unit);
    if (idx < 0) return nullptr;
    UnitFile& f = files[idx];
    // The usual case: the bytes fit the buffer of a unit writing alone.
    if (f.dirty && !f.failed && groups[f.group].refs == 1 && n <= kBufCap - f.bufLen) return buffers[idx] + f.bufLen;
    return nullptr;
}

void unitBytesWritten(int32_t unit, std::size_t n) {
    int idx = indexOf(unit);
    if (idx < 0) return;
    UnitFile& f = files[idx];
    f.bufLen += n;
    f.bufPos = f.bufLen;
}

IoStatus unitWriteLine(int32_t unit, std::string_view s) {
    if (char* d = unitBytesRoom(unit, s.size() + 2)) {
        copyBytes(d, s.data(), s.size());
        d[s.size()] = '\r';
        d[s.size() + 1] = '\n';
        unitBytesWritten(unit, s.size() + 2);
        return IoStatus::ok;
    }
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    if (writeRaw(idx, s.data(), s.size()) != IoStatus::ok) return IoStatus::error;
    return writeRaw(idx, "\r\n", 2);
}

IoStatus unitWriteText(int32_t unit, std::string_view s) {
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    return writeRaw(idx, s.data(), s.size());
}

bool unitAtEnd(int32_t unit) {
    int idx = indexOf(unit);
    if (idx < 0) return true;
    UnitFile& f = files[idx];
    if (startInput(idx) != IoStatus::ok) return true;
    if (f.bufPos < f.bufLen) return false;
    if (!refill(idx)) return true;
    return f.bufLen == 0;
}

IoStatus unitBackspace(int32_t unit) {
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    UnitFile& f = files[idx];
    if (f.lastRecord < 0) return IoStatus::error;
    if (startInput(idx) != IoStatus::ok) return IoStatus::error;
    seekTo(idx, f.lastRecord);
    f.lastRecord = -1;
    return IoStatus::ok;
}

IoStatus unitWriteRecord(int32_t unit, const void* bytes, std::size_t n) {
    int idx = indexOf(unit);
    if (idx < 0 || n > 0x7fffffffu) return IoStatus::error;
    uint32_t mark = static_cast<uint32_t>(n);
    if constexpr (std::endian::native == std::endian::big) mark = __builtin_bswap32(mark);
    if (writeRaw(idx, &mark, 4) != IoStatus::ok) return IoStatus::error;
    if (n > 0 && writeRaw(idx, bytes, n) != IoStatus::ok) return IoStatus::error;
    return writeRaw(idx, &mark, 4);
}

IoStatus unitReadRecord(int32_t unit, void* bytes, std::size_t capacity, std::size_t& n) {
    n = 0;
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    UnitFile& f = files[idx];
    if (startInput(idx) != IoStatus::ok) return IoStatus::error;
    const int64_t start = positionOf(f);
    uint32_t mark = 0;
    IoStatus st = readRaw(idx, &mark, 4);
    if (st != IoStatus::ok) return st == IoStatus::end && positionOf(f) == start ? IoStatus::end : IoStatus::error;
    if constexpr (std::endian::native == std::endian::big) mark = __builtin_bswap32(mark);
    std::size_t len = mark;
    std::size_t take = len < capacity ? len : capacity;
    if (take > 0 && readRaw(idx, bytes, take) != IoStatus::ok) return IoStatus::error;
    // The part of a longer record that does not fit is passed over.
    if (len > take) seekTo(idx, positionOf(f) + static_cast<int64_t>(len - take));
    uint32_t tail = 0;
    if (readRaw(idx, &tail, 4) != IoStatus::ok) return IoStatus::error;
    if constexpr (std::endian::native == std::endian::big) tail = __builtin_bswap32(tail);
    if (tail != mark) return IoStatus::error;
    n = take;
    f.lastRecord = start;
    return IoStatus::ok;
}

IoStatus unitWriteBytes(int32_t unit, const void* bytes, std::size_t n) {
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    return writeRaw(idx, bytes, n);
}

IoStatus unitReadBytes(int32_t unit, void* bytes, std::size_t n) {
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    return readRaw(idx, bytes, n);
}

namespace {

inline bool swapFor(bool bigEndian) { return bigEndian != (std::endian::native == std::endian::big); }

IoStatus write32(int32_t unit, uint32_t u, bool bigEndian) {
    if (swapFor(bigEndian)) u = __builtin_bswap32(u);
    return unitWriteBytes(unit, &u, 4);
}

IoStatus write64(int32_t unit, uint64_t u, bool bigEndian) {
    if (swapFor(bigEndian)) u = __builtin_bswap64(u);
    return unitWriteBytes(unit, &u, 8);
}

bool unitBigEndian(int32_t unit) {
    int idx = indexOf(unit);
    return idx >= 0 && files[idx].bigEndian;
}

}  // namespace

IoStatus unitWriteI32As(int32_t unit, int32_t v, bool bigEndian) {
    return write32(unit, static_cast<uint32_t>(v), bigEndian);
}

IoStatus unitWriteF64As(int32_t unit, double v, bool bigEndian) {
    uint64_t u;
    std::memcpy(&u, &v, 8);
    return write64(unit, u, bigEndian);
}

IoStatus unitReadI32As(int32_t unit, int32_t& v, bool bigEndian) {
    uint32_t u;
    IoStatus st = unitReadBytes(unit, &u, 4);
    if (st != IoStatus::ok) return st;
    if (swapFor(bigEndian)) u = __builtin_bswap32(u);
    v = static_cast<int32_t>(u);
    return IoStatus::ok;
}

IoStatus unitReadF64As(int32_t unit, double& v, bool bigEndian) {
    uint64_t u;
    IoStatus st = unitReadBytes(unit, &u, 8);
    if (st != IoStatus::ok) return st;
    if (swapFor(bigEndian)) u = __builtin_bswap64(u);
    std::memcpy(&v, &u, 8);
    return IoStatus::ok;
}

IoStatus unitWriteI32(int32_t unit, int32_t v) { return unitWriteI32As(unit, v, unitBigEndian(unit)); }
IoStatus unitWriteF64(int32_t unit, double v) { return unitWriteF64As(unit, v, unitBigEndian(unit)); }
IoStatus unitReadI32(int32_t unit, int32_t& v) { return unitReadI32As(unit, v, unitBigEndian(unit)); }
IoStatus unitReadF64(int32_t unit, double& v) { return unitReadF64As(unit, v, unitBigEndian(unit)); }

IoStatus unitRewind(int32_t unit) { return unitSeek(unit, 0); }

IoStatus unitSeek(int32_t unit, int64_t offset) {
    int idx = indexOf(unit);
    if (idx < 0 || offset < 0) return IoStatus::error;
    sync(idx);
    IoStatus st = flushOut(idx);
    seekTo(idx, offset);
    files[idx].lastRecord = -1;
    return st;
}

int64_t unitTell(int32_t unit) {
    int idx = indexOf(unit);
    if (idx < 0) return -1;
    return positionOf(files[idx]);
}

IoStatus unitFlush(int32_t unit) {
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    IoStatus st = flushOut(idx);
    return files[idx].failed ? IoStatus::error : st;
}

void unitFlushAll() {
    for (int i = 0; i < kFiles; ++i)
        if (files[i].fd >= 0) flushOut(i);
}
