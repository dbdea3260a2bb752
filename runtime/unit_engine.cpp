// The buffered file engine: the file object of each unit over a POSIX
// descriptor, the groups of units open on one file, read-ahead and pending
// output, and the open modes. The unit tables above give out the unit
// numbers; the unit input and output calls (unit_io.cpp) work through here.
#include "runtime/unit_engine.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "runtime/paths.hpp"
#include "text/strings.hpp"

namespace engine {

UnitFile files[kFiles];
Group groups[kFiles];
char buffers[kFiles][kBufCap];
int32_t firstUnit = 993;

namespace {

bool writeAllAt(int fd, const char* p, std::size_t n, int64_t at) {
    while (n > 0) {
        ssize_t w = ::pwrite(fd, p, n, static_cast<off_t>(at));
        if (w < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (w == 0) return false;
        p += w;
        at += w;
        n -= static_cast<std::size_t>(w);
    }
    return true;
}

// Bytes read at `at`, fewer only at the end of the file; -1 on error.
ssize_t readAt(int fd, char* p, std::size_t n, int64_t at) {
    std::size_t got = 0;
    while (got < n) {
        ssize_t r = ::pread(fd, p + got, n - got, static_cast<off_t>(at + static_cast<int64_t>(got)));
        if (r < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (r == 0) break;
        got += static_cast<std::size_t>(r);
    }
    return static_cast<ssize_t>(got);
}

void changed(int idx) {
    Group& g = groups[files[idx].group];
    ++g.version;
    files[idx].seen = g.version;
}

}  // namespace

IoStatus flushOut(int idx) {
    UnitFile& f = files[idx];
    if (!f.dirty) return IoStatus::ok;
    Group& g = groups[f.group];
    if (g.dirty == idx) g.dirty = -1;
    f.dirty = false;
    bool ok = true;
    if (f.bufLen > 0) {
        ok = writeAllAt(f.fd, buffers[idx], f.bufLen, f.bufStart);
        f.bufStart += static_cast<int64_t>(f.bufLen);
        changed(idx);
    }
    f.bufLen = f.bufPos = 0;
    if (!ok) {
        f.failed = true;
        return IoStatus::error;
    }
    return IoStatus::ok;
}

namespace {

void dropReadAhead(UnitFile& f) {
    if (f.dirty) return;
    f.bufStart += static_cast<int64_t>(f.bufPos);
    f.bufLen = f.bufPos = 0;
}

}  // namespace

void syncGroup(int idx) {
    UnitFile& f = files[idx];
    Group& g = groups[f.group];
    if (g.dirty >= 0 && g.dirty != idx) flushOut(g.dirty);
    if (f.seen != g.version) {
        dropReadAhead(f);
        f.seen = g.version;
    }
}

namespace {

void startOutput(int idx) {
    UnitFile& f = files[idx];
    dropReadAhead(f);
    if (f.append) {
        struct stat st;
        if (::fstat(f.fd, &st) == 0) f.bufStart = static_cast<int64_t>(st.st_size);
    }
    f.dirty = true;
    groups[f.group].dirty = idx;
}

}  // namespace

IoStatus writeRaw(int idx, const void* data, std::size_t n) {
    UnitFile& f = files[idx];
    sync(idx);
    if (f.failed) return IoStatus::error;
    if (!f.dirty) startOutput(idx);
    if (n == 0) return IoStatus::ok;
    if (n <= kBufCap - f.bufLen) {
        copyBytes(buffers[idx] + f.bufLen, static_cast<const char*>(data), n);
        f.bufLen += n;
        f.bufPos = f.bufLen;
        return IoStatus::ok;
    }
    if (flushOut(idx) != IoStatus::ok) return IoStatus::error;
    startOutput(idx);
    if (n >= kBufCap) {
        if (!writeAllAt(f.fd, static_cast<const char*>(data), n, f.bufStart)) {
            f.failed = true;
            return IoStatus::error;
        }
        f.bufStart += static_cast<int64_t>(n);
        changed(idx);
        return IoStatus::ok;
    }
    std::memcpy(buffers[idx], data, n);
    f.bufLen = f.bufPos = n;
    return IoStatus::ok;
}

IoStatus startInput(int idx) {
    sync(idx);
    if (files[idx].dirty) return flushOut(idx);
    return IoStatus::ok;
}

bool refill(int idx) {
    UnitFile& f = files[idx];
    f.bufStart += static_cast<int64_t>(f.bufLen);
    f.bufLen = f.bufPos = 0;
    ssize_t r = readAt(f.fd, buffers[idx], kBufCap, f.bufStart);
    if (r < 0) return false;
    f.bufLen = static_cast<std::size_t>(r);
    return true;
}

IoStatus readRaw(int idx, void* out, std::size_t n) {
    UnitFile& f = files[idx];
    if (startInput(idx) != IoStatus::ok) return IoStatus::error;
    char* dst = static_cast<char*>(out);
    while (n > 0) {
        std::size_t avail = f.bufLen - f.bufPos;
        if (avail == 0) {
            if (n >= kBufCap) {
                f.bufStart += static_cast<int64_t>(f.bufLen);
                f.bufLen = f.bufPos = 0;
                ssize_t r = readAt(f.fd, dst, n, f.bufStart);
                if (r < 0) return IoStatus::error;
                f.bufStart += r;
                return static_cast<std::size_t>(r) == n ? IoStatus::ok : IoStatus::end;
            }
            if (!refill(idx)) return IoStatus::error;
            if (f.bufLen == 0) return IoStatus::end;
            continue;
        }
        std::size_t k = avail < n ? avail : n;
        std::memcpy(dst, buffers[idx] + f.bufPos, k);
        f.bufPos += k;
        dst += k;
        n -= k;
    }
    return IoStatus::ok;
}

void seekTo(int idx, int64_t offset) {
    UnitFile& f = files[idx];
    if (!f.dirty && offset >= f.bufStart && offset <= f.bufStart + static_cast<int64_t>(f.bufLen)) {
        f.bufPos = static_cast<std::size_t>(offset - f.bufStart);
        return;
    }
    f.bufStart = offset;
    f.bufLen = f.bufPos = 0;
}

// ---------------------------------------------------------------------------
// Modes.

ModeInfo modeOf(std::string_view mode) {
    ModeInfo m;
    m.code[0] = upperByte(mode.size() > 0 ? mode[0] : ' ');
    m.code[1] = upperByte(mode.size() > 1 ? mode[1] : ' ');
    struct Row {
        const char* code;
        bool input;
        Form form;
        bool big;
        Access access;
    };
    static const Row rows[] = {
        {"I ", true, Form::text, false, Access::readOnly},
        {"UI", true, Form::records, false, Access::readWriteIfAllowed},
        {"BI", true, Form::binary, false, Access::readWriteIfAllowed},
        {"BE", true, Form::binary, true, Access::readWriteIfAllowed},
        {"O ", false, Form::text, false, Access::replace},
        {"F ", false, Form::text, false, Access::replace},
        {"UO", false, Form::records, false, Access::replace},
        {"BO", false, Form::binary, false, Access::replace},
        {"BN", false, Form::binary, true, Access::replace},
        {"A ", false, Form::text, false, Access::append},
        {"AB", false, Form::binary, false, Access::append},
        {"S ", false, Form::text, false, Access::keep},
        {"SB", false, Form::binary, false, Access::keep},
        {"SE", false, Form::binary, true, Access::keep},
        {"IO", false, Form::text, false, Access::keep},
    };
    for (const Row& r : rows) {
        if (r.code[0] == m.code[0] && r.code[1] == m.code[1]) {
            m.known = true;
            m.inputClass = r.input;
            m.form = r.form;
            m.bigEndian = r.big;
            m.access = r.access;
            break;
        }
    }
    return m;
}

namespace {

// Takes `fd` as the file object `idx` in mode `m`: the descriptor moved above
// the console's numbers, checked not to be a folder, and joined to the group
// of its file. A `fresh` file was made by this open (O_EXCL): not a folder,
// empty, and in no group yet, so the stat of it is left until some other
// file is compared with it. False, with `fd` closed, when it cannot be used.
bool adopt(int idx, const ModeInfo& m, int fd, bool fresh = false) {
    if (fd <= 2) {
        // Standard input, output or error was closed: keep their numbers free,
        // so that a file never stands in for the console.
        int high = ::fcntl(fd, F_DUPFD_CLOEXEC, 3);
        ::close(fd);
        if (high < 0) return false;
        fd = high;
    }
    struct stat st {};
    if (!fresh && (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode))) {
        ::close(fd);
        return false;
    }
    int g = -1;
    int freeGroup = -1;
    for (int k = 0; k < kFiles; ++k) {
        if (groups[k].refs > 0) {
            if (!fresh && identify(k) && groups[k].dev == st.st_dev && groups[k].ino == st.st_ino) {
                g = k;
                break;
            }
        } else if (freeGroup < 0) {
            freeGroup = k;
        }
    }
    if (g < 0) {
        g = freeGroup;
        groups[g] = Group{st.st_dev, st.st_ino, 0, -1, 0, !fresh};
    }
    ++groups[g].refs;
    UnitFile& f = files[idx];
    f = UnitFile{};
    f.fd = fd;
    f.form = m.form;
    f.bigEndian = m.bigEndian;
    f.append = m.access == Access::append;
    f.group = g;
    f.seen = groups[g].version;
    if (f.append) f.bufStart = static_cast<int64_t>(st.st_size);
    return true;
}

}  // namespace

bool identify(int group) {
    Group& g = groups[group];
    if (g.known) return true;
    for (int k = 0; k < kFiles; ++k) {
        struct stat st;
        if (files[k].fd >= 0 && files[k].group == group && ::fstat(files[k].fd, &st) == 0) {
            g.dev = st.st_dev;
            g.ino = st.st_ino;
            g.known = true;
            return true;
        }
    }
    return false;
}

NewFile createNewFile(int32_t unit, const ModeInfo& m, std::string_view name) {
    int64_t i = static_cast<int64_t>(unit) - firstUnit;
    if (i < 0 || i >= kFiles || files[i].fd >= 0 || m.access != Access::replace) return NewFile::taken;
    const char* path = nativePath(name);
    if (*path == '\0') return NewFile::taken;
    // O_EXCL: nothing of that name, not even a dangling link, so there was
    // nothing to delete and the replace comes to the same file.
    int fd = ::open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) return NewFile::taken;
    return adopt(static_cast<int>(i), m, fd, true) ? NewFile::opened : NewFile::unusable;
}

// Opens the file object of `unit` in mode `m`. True when it is open.
bool openFile(int32_t unit, const ModeInfo& m, std::string_view name) {
    int64_t i = static_cast<int64_t>(unit) - firstUnit;
    if (i < 0 || i >= kFiles) return false;
    int idx = static_cast<int>(i);
    if (files[idx].fd >= 0) closeFile(idx);  // a unit is opened afresh
    const char* path = nativePath(name);
    if (*path == '\0') return false;
    int fd = -1;
    switch (m.access) {
        case Access::readOnly: fd = ::open(path, O_RDONLY | O_CLOEXEC); break;
        case Access::readWriteIfAllowed:
            fd = ::open(path, O_RDWR | O_CLOEXEC);
            if (fd < 0) fd = ::open(path, O_RDONLY | O_CLOEXEC);
            break;
        case Access::replace:
            ::unlink(path);
            fd = ::open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
            break;
        case Access::append:
        case Access::keep: fd = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666); break;
    }
    if (fd < 0) return false;
    return adopt(idx, m, fd);
}

IoStatus closeFile(int idx) {
    UnitFile& f = files[idx];
    if (f.fd < 0) return IoStatus::ok;
    IoStatus st = flushOut(idx);
    if (f.failed) st = IoStatus::error;
    if (::close(f.fd) != 0) st = IoStatus::error;
    Group& g = groups[f.group];
    if (g.dirty == idx) g.dirty = -1;
    --g.refs;
    f = UnitFile{};
    return st;
}

void closeAllFiles() {
    for (int i = 0; i < kFiles; ++i)
        if (files[i].fd >= 0) closeFile(i);
}

void renumber(int32_t first) {
    closeAllFiles();
    firstUnit = first;
}

void reset() {
    closeAllFiles();
    for (auto& g : groups) g = Group{};
    firstUnit = 993;
}

}  // namespace engine

void unitCloseAllQuietly() { engine::closeAllFiles(); }
