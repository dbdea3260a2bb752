// The buffered file engine behind the file units; internal to the runtime.
//
// One buffered file object per unit, over a POSIX descriptor. The buffer
// holds either read-ahead (bytes [bufStart, bufStart+bufLen) of the file, the
// unit positioned at bufStart+bufPos) or pending output (bytes to be written
// at bufStart, bufPos == bufLen). Units open on the same file share a group;
// before any operation on such a unit, pending output of another unit of the
// group is written out, and this unit's read-ahead is dropped when the file
// changed since it was read. A file used through one unit pays nothing.
//
// Every unit is buffered in the same way, so the block-size setting has
// nothing left to change.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "runtime/io_status.hpp"

namespace engine {

// Fixed slots 1 to 8 and a free pool of 1000 entries: one file object each.
constexpr int kSlots = 8;
constexpr int kPool = 1000;
constexpr int kFiles = kSlots + kPool;
constexpr std::size_t kBufCap = std::size_t{64} * 1024;

enum class Form : uint8_t { text, records, binary };

struct UnitFile {
    int fd = -1;
    Form form = Form::text;
    bool bigEndian = false;
    bool append = false;  // every write goes to the end of the file
    bool dirty = false;   // the buffer holds pending output
    bool failed = false;  // a write failed; later writes fail too
    int group = -1;
    int64_t bufStart = 0;
    std::size_t bufLen = 0;
    std::size_t bufPos = 0;
    int64_t lastRecord = -1;  // start of the last line or record read
    uint64_t seen = 0;        // group version this unit's read-ahead belongs to
};

struct Group {
    dev_t dev = 0;
    ino_t ino = 0;
    int refs = 0;
    int dirty = -1;  // file object with pending output, -1 for none
    uint64_t version = 0;
    // dev and ino are read. A file the run has just made is a new inode that
    // no open file can share, so its identity is only read (identify) when
    // another file is compared with it.
    bool known = true;
};

extern UnitFile files[kFiles];
extern Group groups[kFiles];
// The group's dev and ino, read now if they were left for later; false when
// they cannot be read.
bool identify(int group);
extern char buffers[kFiles][kBufCap];
extern int32_t firstUnit;  // unit of slot 1; file object i has unit firstUnit + i

// The file object of an open unit, -1 when the unit is not open.
inline int indexOf(int32_t unit) {
    int64_t i = static_cast<int64_t>(unit) - firstUnit;
    if (i < 0 || i >= kFiles) return -1;
    return files[i].fd >= 0 ? static_cast<int>(i) : -1;
}

inline int32_t unitOf(int idx) { return firstUnit + idx; }

inline int64_t positionOf(const UnitFile& f) { return f.bufStart + static_cast<int64_t>(f.bufPos); }

// Writes out the pending output of file object `idx`.
IoStatus flushOut(int idx);

// Brings file object `idx` in line with the other units of its file.
void syncGroup(int idx);
// Also after the other units of the file have gone: what they wrote on the
// way out may still stand behind this unit's read-ahead.
inline void sync(int idx) {
    const Group& g = groups[files[idx].group];
    if (g.refs > 1 || files[idx].seen != g.version) syncGroup(idx);
}

IoStatus writeRaw(int idx, const void* data, std::size_t n);
// Makes the unit ready to read: in line with its group, its own output written.
IoStatus startInput(int idx);
// Reads the next block behind the buffer; false on a read error.
bool refill(int idx);
// Exactly n bytes, or `end` when the file ends first.
IoStatus readRaw(int idx, void* out, std::size_t n);
void seekTo(int idx, int64_t offset);

// ---------------------------------------------------------------------------
// Modes.

enum class Access : uint8_t { readOnly, readWriteIfAllowed, replace, append, keep };

struct ModeInfo {
    bool known = false;
    bool inputClass = false;
    Form form = Form::text;
    bool bigEndian = false;
    Access access = Access::readOnly;
    char code[2] = {' ', ' '};
};

ModeInfo modeOf(std::string_view mode);

// Opens the file object of `unit` in mode `m`. True when it is open.
bool openFile(int32_t unit, const ModeInfo& m, std::string_view name);
// The replace modes on a name with nothing behind it: the file created in one
// call. `taken`, with nothing done, when the name is in use (or the unit is);
// the full openFile is the way then. `unusable`: created, but the descriptor
// could not be kept (no numbers left), as a failed open after its create.
enum class NewFile { opened, taken, unusable };
NewFile createNewFile(int32_t unit, const ModeInfo& m, std::string_view name);
IoStatus closeFile(int idx);
void closeAllFiles();

// Every file closed, then units numbered from `first` (the unit of slot 1).
void renumber(int32_t first);
// Every file closed and the engine as in a fresh process.
void reset();

}  // namespace engine

// Closes every open file unit (slots first, then the pool) without a report,
// ignoring errors and leaving the opened flags alone. Used by EXITS.
void unitCloseAllQuietly();
