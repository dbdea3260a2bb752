#include "runtime/units.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/internal.hpp"
#include "runtime/paths.hpp"
#include "runtime/platform.hpp"
#include "text/strings.hpp"
#include "text/support.hpp"

FileUnitSettings fileUnitSettings;
bool setFlagsTable[26];

namespace {

constexpr int kSlots = 8;
constexpr int kPool = 1000;
constexpr int kFiles = kSlots + kPool;
constexpr std::size_t kBufCap = std::size_t{64} * 1024;

// ---------------------------------------------------------------------------
// The tables of the manager.

struct Slot {
    NameText name;
    int32_t nameLen = 0;
    int32_t unit = 0;
    char mode[2] = {' ', ' '};
    bool opened = false;
};

struct PoolEntry {
    int32_t unit = 0;
    bool opened = false;
    int32_t type = 0;
};

Slot slots[kSlots + 1];      // 1..8
PoolEntry pool[kPool + 1];   // 1..1000
int32_t firstUnit = 993;     // unit of slot 1; file object i has unit firstUnit + i
bool tablesReady = false;

// ---------------------------------------------------------------------------
// The file layer: one buffered file object per unit, over a POSIX descriptor.
//
// The buffer holds either read-ahead (bytes [bufStart, bufStart+bufLen) of the
// file, the unit positioned at bufStart+bufPos) or pending output (bytes to be
// written at bufStart, bufPos == bufLen). Units open on the same file share a
// group; before any operation on such a unit, pending output of another unit
// of the group is written out, and this unit's read-ahead is dropped when the
// file changed since it was read. A file used through one unit pays nothing.

enum class Form : uint8_t { text, records, binary };

struct UnitFile {
    int fd = -1;
    Form form = Form::text;
    bool bigEndian = false;
    bool append = false;   // every write goes to the end of the file
    bool dirty = false;    // the buffer holds pending output
    bool failed = false;   // a write failed; later writes fail too
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
};

UnitFile files[kFiles];
Group groups[kFiles];
char buffers[kFiles][kBufCap];

inline int indexOf(int32_t unit) {
    int64_t i = static_cast<int64_t>(unit) - firstUnit;
    if (i < 0 || i >= kFiles) return -1;
    return files[i].fd >= 0 ? static_cast<int>(i) : -1;
}

inline int32_t unitOf(int idx) { return firstUnit + idx; }

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

void dropReadAhead(UnitFile& f) {
    if (f.dirty) return;
    f.bufStart += static_cast<int64_t>(f.bufPos);
    f.bufLen = f.bufPos = 0;
}

void syncGroup(int idx) {
    UnitFile& f = files[idx];
    Group& g = groups[f.group];
    if (g.dirty >= 0 && g.dirty != idx) flushOut(g.dirty);
    if (f.seen != g.version) {
        dropReadAhead(f);
        f.seen = g.version;
    }
}

// Also after the other units of the file have gone: what they wrote on the
// way out may still stand behind this unit's read-ahead.
inline void sync(int idx) {
    const Group& g = groups[files[idx].group];
    if (g.refs > 1 || files[idx].seen != g.version) syncGroup(idx);
}

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

IoStatus writeRaw(int idx, const void* data, std::size_t n) {
    UnitFile& f = files[idx];
    sync(idx);
    if (f.failed) return IoStatus::error;
    if (!f.dirty) startOutput(idx);
    if (n == 0) return IoStatus::ok;
    if (n <= kBufCap - f.bufLen) {
        std::memcpy(buffers[idx] + f.bufLen, data, n);
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

// Reads the next block behind the buffer; false on a read error.
bool refill(int idx) {
    UnitFile& f = files[idx];
    f.bufStart += static_cast<int64_t>(f.bufLen);
    f.bufLen = f.bufPos = 0;
    ssize_t r = readAt(f.fd, buffers[idx], kBufCap, f.bufStart);
    if (r < 0) return false;
    f.bufLen = static_cast<std::size_t>(r);
    return true;
}

inline int64_t positionOf(const UnitFile& f) { return f.bufStart + static_cast<int64_t>(f.bufPos); }

// Exactly n bytes, or `end` when the file ends first.
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
// Modes. Every unit is buffered in the same way, so the block-size setting
// has nothing left to change.

enum class Access : uint8_t { readOnly, readWriteIfAllowed, replace, append, keep };

struct ModeInfo {
    bool known = false;
    bool inputClass = false;
    Form form = Form::text;
    bool bigEndian = false;
    Access access = Access::readOnly;
    char code[2] = {' ', ' '};
};

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

IoStatus closeFile(int idx);

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
        case Access::readOnly:
            fd = ::open(path, O_RDONLY | O_CLOEXEC);
            break;
        case Access::readWriteIfAllowed:
            fd = ::open(path, O_RDWR | O_CLOEXEC);
            if (fd < 0) fd = ::open(path, O_RDONLY | O_CLOEXEC);
            break;
        case Access::replace:
            ::unlink(path);
            fd = ::open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
            break;
        case Access::append:
        case Access::keep:
            fd = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
            break;
    }
    if (fd < 0) return false;
    if (fd <= 2) {
        // Standard input, output or error was closed: keep their numbers free,
        // so that a file never stands in for the console.
        int high = ::fcntl(fd, F_DUPFD_CLOEXEC, 3);
        ::close(fd);
        if (high < 0) return false;
        fd = high;
    }
    struct stat st;
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        ::close(fd);
        return false;
    }
    int g = -1;
    int freeGroup = -1;
    for (int k = 0; k < kFiles; ++k) {
        if (groups[k].refs > 0) {
            if (groups[k].dev == st.st_dev && groups[k].ino == st.st_ino) {
                g = k;
                break;
            }
        } else if (freeGroup < 0) {
            freeGroup = k;
        }
    }
    if (g < 0) {
        g = freeGroup;
        groups[g] = Group{st.st_dev, st.st_ino, 0, -1, 0};
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

// ---------------------------------------------------------------------------
// Tables.

void initTables(int32_t first) {
    closeAllFiles();
    int32_t b = first > 9 ? first : 9;
    firstUnit = b - 7;
    for (int i = 1; i <= kSlots; ++i) {
        Slot& s = slots[i];
        s.name.clear();
        s.nameLen = 0;
        s.unit = b - 8 + i;
        s.mode[0] = s.mode[1] = ' ';
        s.opened = false;
    }
    for (int j = 1; j <= kPool; ++j) pool[j] = PoolEntry{b + j, false, 0};
    tablesReady = true;
}

inline void ensureTables() {
    if (!tablesReady) initTables(1000);
}

// ---------------------------------------------------------------------------
// Reports: to the console and, when a log unit is set, to the log as well.

void report(std::string_view s, bool blankBefore, bool lineEnd) {
    if (blankBefore) conBlank();
    if (lineEnd)
        conLine(s);
    else
        conWrite(s);
    int32_t log = fileUnitSettings.logUnit;
    if (log > 0 && indexOf(log) >= 0) {
        if (blankBefore) unitWriteLine(log, {});
        if (lineEnd)
            unitWriteLine(log, s);
        else
            unitWriteText(log, s);
    }
}

std::string_view title() {
    static LineBuf<210> t;
    t.clear();
    t << fileUnitSettings.applicationName.trimmed() << ' ' << fileUnitSettings.runName.trimmed();
    return t.view();
}

[[noreturn]] void cancelled() { stopRun("Run cancelled."); }

// Length of a text whose padding may be blanks or NULs.
int paddedLength(std::string_view s) {
    std::size_t n = s.size();
    while (n > 0 && (s[n - 1] == ' ' || s[n - 1] == '\0')) --n;
    return static_cast<int>(n);
}

// Up to 1000 bytes of a name into a working text, with its leading blanks gone.
NameText openName;

// ---------------------------------------------------------------------------
// The steps of OPENERCORE.

// Step P: a name from the person (or a dialogue).
void askForName(TextRef name, std::string_view kind) {
    const FileUnitSettings& s = fileUnitSettings;
    if (s.messageBoxMode) {
        LineBuf<256> t;  // dialogue texts are held in 256 bytes
        t << s.applicationName.trimmed() << " FILE and/or path" << '\r' << name.trimmed() << '\r' << "does not exist.";
        if (platformMessageBox(t.view(), title(), BoxButtons::retryCancel, BoxIcon::warning) !=
            BoxAnswer::retry)
            cancelled();
        return;
    }
    if (paddedLength(kind) < 1) {
        report("Check file exists and press enter or enter another file name: ", true, false);
    } else {
        LineBuf<1100> t;
        t << "What is the " << trimmed(kind) << " file name? ";
        conWrite(t.view());
    }
    static NameText line;
    if (!conReadLine(line)) stopNoInput("a file name");
    if (line.blank()) {
        report("No file name entered.  Trying file again...", true, true);
        return;
    }
    TRIMF(name, line);
}

// DRIVEFOLDER followed by the copy root in front: the mirror folder of a path.
void mirrorFolder(TextRef folder, std::string_view path) {
    static NameText f;
    FILEFOLDERPATH(f, path);
    DRIVEFOLDER(f);
    folder.assign(fileUnitSettings.copyRoot.trimmed());
    folder.append(f.trimmed());
}

void makeMirrorFolder(std::string_view folder) {
    if (platformMkdir(folder) != -1) return;
    report("ERROR 0005 - Could not make the folder below while making a copy of the input files.", true, true);
    report("             Check permissions and/or sufficient disk space.", false, true);
    LineBuf<1100> t;
    t << '"' << trimmed(folder) << '"';
    report(t.view(), false, true);
    EXITS();
}

void copyCommand(std::string_view from, std::string_view to, std::string_view nameForReport) {
    if (platformCopy(from, to) != -1) return;
    report("ERROR 0006 - Could not copy the file below while making a copy of the input files.", true, true);
    report("             Check permissions and/or sufficient disk space.", false, true);
    LineBuf<1100> t;
    t << '"' << trimmed(nameForReport) << '"';
    report(t.view(), false, true);
    t.clear();
    t << '"' << trimmed(to) << '"';
    report(t.view(), false, true);
    EXITS();
}

// FILENAME and FILEEXT of a name, one behind the other.
std::string_view leafOf(std::string_view name) {
    static NameText stem, ext;
    static LineBuf<2 * kNameCap> leaf;
    FILENAME(stem, name);
    FILEEXT(ext, name);
    leaf.clear();
    leaf << stem.trimmed() << ext.trimmed();
    return leaf.view();
}

// Copy mode, after an input file is open: mirror it (and, by default, every
// file of its base name) under the copy root.
void copyInput(std::string_view openedName) {
    static NameText folder, source, stem, ext;
    static LineBuf<kNameCap> name;
    static LineBuf<2 * kNameCap + 8> from;
    name.clear();
    name << openedName;
    mirrorFolder(folder, name.view());
    makeMirrorFolder(folder.trimmed());
    if (fileUnitSettings.copyNamedFileOnly) {
        copyCommand(name.view(), folder.trimmed(), name.view());
    } else {
        FILEFOLDERPATH(source, name.view());
        FILEEXT(ext, name.view());
        if (ASAME(ext, ".xf")) {
            platformCopy(name.view(), folder.trimmed());
            // A working copy of the name: the slot keeps the name it was opened by.
            FILENAME(stem, name.view());
            name.clear();
            name << stem.trimmed();
            source.ref().append("..\\");
            mirrorFolder(folder, source);
            makeMirrorFolder(folder.trimmed());
        }
        FILENAME(stem, name.view());
        from.clear();
        from << source.trimmed() << stem.trimmed() << ".*";
        copyCommand(from.view(), folder.trimmed(), name.view());
    }
    ADDFOLDER(fileUnitSettings.lastCopyName, folder.trimmed(), leafOf(name.view()));
}

// Copy mode, output modes: the file is written under the copy root instead.
void redirectOutput(TextRef name) {
    static NameText folder;
    mirrorFolder(folder, name.trimmed());
    makeMirrorFolder(folder.trimmed());
    ADDFOLDER(name, folder.trimmed(), leafOf(name.trimmed()));
    fileUnitSettings.lastCopyName.ref().assign(name.trimmed());
}

// Message-box mode, an output open failed on a file that does not exist:
// offer to make its folder. Returns when the open should be tried again.
void offerFolder(std::string_view name) {
    const FileUnitSettings& s = fileUnitSettings;
    static NameText folder;
    FILEFOLDERPATH(folder, name);
    bool make = s.createFoldersWithoutAsking;
    while (!make) {
        LineBuf<256> t;  // dialogue texts are held in 256 bytes
        t << folder.trimmed() << "\r\r" << "Above folder does not exist!  Create?" << "\r\r"
          << "Either create the folder yourself and press No," << '\r'
          << "or press Yes to have the folder created for you.";
        BoxAnswer a = platformMessageBox(t.view(), title(), BoxButtons::yesNoCancel, BoxIcon::warning);
        if (a == BoxAnswer::cancel) cancelled();
        if (a == BoxAnswer::no) return;
        t.clear();
        t << "Create folder below?" << "\r\r" << folder.trimmed();
        if (platformMessageBox(t.view(), title(), BoxButtons::yesNo, BoxIcon::question) == BoxAnswer::yes)
            make = true;
    }
    while (platformMkdir(folder.trimmed()) == -1) {
        LineBuf<256> t;  // dialogue texts are held in 256 bytes
        t << "Could not create folder:" << "\r\r" << folder.trimmed() << "\r\r"
          << "Check permissions and/or sufficient disk space.";
        if (platformMessageBox(t.view(), title(), BoxButtons::retryCancel, BoxIcon::warning) !=
            BoxAnswer::retry)
            cancelled();
    }
}

// Closes a unit found open on the file, for step 6, and frees its entry.
void closeForReopen(int32_t other) {
    int idx = indexOf(other);
    if (idx >= 0 && closeFile(idx) != IoStatus::ok) stopRun("  Unable to close file.");
    for (int i = 1; i <= kSlots; ++i)
        if (slots[i].unit == other) slots[i].opened = false;
    for (int j = 1; j <= kPool; ++j)
        if (pool[j].unit == other) pool[j].opened = false;
}

void reportUnit(std::string_view words, int32_t unit) {
    LineBuf<64> t;
    t << words;
    t.put(4, unit);
    report(t.view(), false, true);
}

}  // namespace

// ---------------------------------------------------------------------------

void unitCloseAllQuietly() { closeAllFiles(); }

void unitsReset() {
    closeAllFiles();
    for (auto& s : slots) s = Slot{};
    for (auto& p : pool) p = PoolEntry{};
    for (auto& g : groups) g = Group{};
    firstUnit = 993;
    tablesReady = false;
}

void FILEINIT(int32_t first) {
    // A second FILEINIT starts afresh: files still open are closed quietly.
    initTables(first);
    fileUnitSettings = FileUnitSettings{};
}

bool DRIVEFOLDER(TextRef path) {
    static LineBuf<kNameCap + 8> w;
    w.clear();
    std::string_view p = path.trimmed();
    std::size_t a = 0;
    while (a < p.size() && p[a] == ' ') ++a;
    p.remove_prefix(a);
    bool leftAlone = false;
    std::size_t colon = p.find(':');
    if (colon != std::string_view::npos) {
        for (char c : p.substr(0, colon)) w << upperByte(c);
        w << " Drive" << p.substr(colon + 1);
    } else if (p.size() >= 2 && ((p[0] == '\\' && p[1] == '\\') || (p[0] == '/' && p[1] == '/'))) {
        w << "URL\\" << p.substr(2);
    } else {
        w << p;
        leftAlone = true;
    }
    path.assign(w.view());
    return leftAlone;
}

void OPENERCORE(int32_t& unit, TextRef name, std::string_view mode, std::string_view kind) {
    ensureTables();
    const FileUnitSettings& s = fileUnitSettings;
    const ModeInfo m = modeOf(mode);
    bool needName = name.len() == 0;
    for (;;) {
        if (needName) askForName(name, kind);
        needName = false;

        // Steps 1 to 4.
        CLEANPATH(name);
        char drive = m.inputClass ? s.inputDrive : s.outputDrive;
        if (drive != ' ' && name.at(2) == ':') name.set(1, drive);
        {
            LineBuf<1100> t;
            t << "Trying to open file " << name.trimmed() << "...";
            report(t.view(), true, false);
        }

        // Steps 5 to 7.
        bool exists = platformFileExists(name.trimmed());
        int32_t other = unitOpenOn(name.trimmed());
        if (other != 0 && !m.inputClass && m.code[0] != 'A' && m.code[0] != 'S') {
            if (s.messageBoxMode) {
                LineBuf<256> t;  // dialogue texts are held in 256 bytes
                t << s.applicationName.trimmed() << " file " << '\r' << name.trimmed() << '\r'
                  << "is already open.  Close it?";
                if (platformMessageBox(t.view(), title(), BoxButtons::yesNo, BoxIcon::question) !=
                    BoxAnswer::yes)
                    EXITS();
            } else {
                conBlank();
                LineBuf<1100> t;
                t << name.trimmed() << " is already open, close it? ";
                conWrite(t.view());
                static Text<100> answer;
                if (!conReadLine(answer)) stopNoInput("an answer to whether to close the open file");
                char c = answer.at(1);
                if (c != 'Y' && c != 'y') {
                    needName = true;
                    continue;
                }
            }
            closeForReopen(other);
        }

        // Step 8, input class.
        if (m.inputClass) {
            if (!exists) {
                LineBuf<1100> t;
                t << "CHECK 0008 - \"" << name.trimmed() << "\" cannot be found";
                report(t.view(), true, true);
                needName = true;
                continue;
            }
            // The open of an existing input file is not checked: a failure
            // shows up as an error on the first read.
            openFile(unit, m, name.trimmed());
            report("OK.", false, true);
            reportUnit("Opened File Unit:", unit);
            if (s.copyMode) copyInput(name.trimmed());
            return;
        }

        // Step 9, other modes.
        if (!m.known) {
            LineBuf<200> t;
            t << "  Unrecognised file type " << std::string_view(m.code, 2) << " file "
              << name.trimmed().substr(0, 80);
            report(t.view(), false, true);
            return;
        }
        if (m.code[0] == 'I' && m.code[1] == 'O') {
            openFile(unit, m, name.trimmed());
            return;
        }
        if (s.copyMode) redirectOutput(name);

        // Step 10, the open, tried until it works or the run is given up.
        for (;;) {
            bool existed = platformFileExists(name.trimmed());
            bool opened = openFile(unit, m, name.trimmed());
            if (!opened && existed && m.code[0] == 'A' && m.code[1] == ' ') {
                report("FAILED.  No File Unit allocated.", false, true);
                unit = 0;
                return;
            }
            if (opened) {
                reportUnit("OK.  File Unit:", unit);
                return;
            }
            report("Can't Open", false, true);
            if (!s.messageBoxMode) {
                LineBuf<1100> t;
                t << "Can't open: " << name.trimmed();
                report(t.view(), true, true);
                report("Another application or user maybe using it,", true, true);
                report("   or the file's folder does not exist.", false, true);
                report("If so, close the file or create file path.", false, true);
                if (!consolePause("Press Enter to Continue")) stopNoInput("Enter to try the open again");
                continue;
            }
            if (existed) {
                LineBuf<256> t;  // dialogue texts are held in 256 bytes
                t << name.trimmed() << "\r\r" << "Above file is locked by another application." << "\r\r"
                  << "Close the file in the other application and press Retry.";
                if (platformMessageBox(t.view(), title(), BoxButtons::retryCancel, BoxIcon::warning) !=
                    BoxAnswer::retry)
                    cancelled();
                continue;
            }
            offerFolder(name.trimmed());
        }
    }
}

void OPENERFREE(int32_t& unit, std::string_view mode, std::string_view name, int32_t /*ignored*/) {
    ensureTables();
    TRIMF(openName, name);
    if (openName.blank()) {
        static const char text[] = "Empty filename specified.  Bailing out.  Please contact " REACHMAP_SUPPORT ".";
        if (fileUnitSettings.messageBoxMode) {
            platformMessageBox(text, fileUnitSettings.applicationName.trimmed(), BoxButtons::ok, BoxIcon::stop);
        } else {
            report(text, true, true);
            consolePause("Press Enter to Close");
        }
        // Stops at once: no closing of files, only what is written reaches the disk.
        conFlush();
        unitFlushAll();
        endRun();
    }
    int j = 1;
    while (j <= kPool && pool[j].opened) ++j;
    if (j > kPool) stopRun("No free file numbers.");
    unit = pool[j].unit;
    OPENERCORE(unit, openName, mode, {});
    static Text<16> ext;
    FILEEXT(ext, openName);
    std::string_view e = ext.trimmed();
    if (e == ".mif")
        pool[j].type = 101;
    else if (e == ".mid")
        pool[j].type = 102;
    else if (e == ".12da")
        pool[j].type = 111;
    pool[j].opened = unit != 0;
}

void OPENERDERIVED(int32_t& unit, std::string_view mode, std::string_view prefix, std::string_view extension) {
    ensureTables();
    static Text<38> derived;
    derived.clear();
    TextRef d = derived;
    for (char c : prefix.substr(0, 2))
        if (c != ' ') d.append(std::string_view(&c, 1));
    std::string_view first = slots[1].name.trimmed();
    d.append(first.size() >= 2 && first[1] == '_' ? first.substr(2) : first);
    for (char c : extension.substr(0, 4))
        if (c != ' ') d.append(std::string_view(&c, 1));
    OPENERFREE(unit, mode, derived.trimmed(), 0);
}

namespace {

void openSlot(int32_t slot, int32_t& unit, std::string_view mode, std::string_view kind, int32_t askLevel) {
    if (slot > kSlots || slot < 1) stopRun("Incorrect file number - OPENER");
    Slot& s = slots[slot];
    if (s.opened) stopRun("File already opened - OPENER");
    if (askLevel < 1 && s.nameLen == 0) EXITS();
    unit = s.unit;
    s.mode[0] = mode.size() > 0 ? mode[0] : ' ';
    s.mode[1] = mode.size() > 1 ? mode[1] : ' ';
    OPENERCORE(unit, s.name, mode, kind);
    s.nameLen = s.name.len();
    s.opened = true;
}

}  // namespace

void OPENER(int32_t slot, int32_t& unit, std::string_view mode, std::string_view kind, int32_t askLevel) {
    ensureTables();
    openSlot(slot, unit, mode, kind, askLevel);
}

void OPENERNAMED(int32_t slot, int32_t& unit, std::string_view name, std::string_view mode, std::string_view kind,
                 int32_t askLevel) {
    ensureTables();
    if (slot >= 1 && slot <= kSlots) {
        TRIMF(slots[slot].name, name);
        slots[slot].nameLen = slots[slot].name.len();
    }
    openSlot(slot, unit, mode, kind, askLevel);
}

void OPENERDEFAULT(int32_t slot, int32_t& unit, std::string_view mode, std::string_view kind, int32_t askLevel,
                   std::string_view prefix) {
    ensureTables();
    if (slot >= 1 && slot <= kSlots && slots[slot].nameLen == 0) {
        Slot& s = slots[slot];
        std::string_view first = slots[1].name.trimmed();
        bool underscore = first.size() >= 2 && first[1] == '_';
        std::string_view rest = underscore ? first.substr(2) : first;
        char pre[2] = {prefix.size() > 0 ? prefix[0] : ' ', prefix.size() > 1 ? prefix[1] : ' '};
        s.name.clear();
        std::memcpy(s.name.b, pre, 2);
        s.name.ref().touched(2);
        std::size_t k = rest.size() < 78 ? rest.size() : 78;
        std::memcpy(s.name.b + 2, rest.data(), k);
        s.name.ref().touched(static_cast<int>(2 + k));
        int len = slots[1].nameLen + (underscore ? 0 : 2);
        s.nameLen = len < 80 ? len : 80;
    }
    openSlot(slot, unit, mode, kind, askLevel);
}

void OPENERSTANDARD() {
    int32_t unit = 0;
    OPENER(1, unit, "I ", "input", 1);
    OPENER(2, unit, "F ", "output", 1);
}

void CLOSER(int32_t& unit) {
    ensureTables();
    auto closeIt = [&](bool& opened) {
        if (!opened) return;
        int idx = indexOf(unit);
        if (idx >= 0) closeFile(idx);
        reportUnit("...Closed File Unit:", unit);
        unit = 0;
        opened = false;
    };
    for (int i = 1; i <= kSlots; ++i) {
        if (slots[i].unit == unit) {
            closeIt(slots[i].opened);
            return;
        }
    }
    for (int j = 1; j <= kPool; ++j) {
        if (pool[j].unit == unit) {
            closeIt(pool[j].opened);
            return;
        }
    }
}

void CLOSEALL() {
    ensureTables();
    report("Closing all file units...", true, true);
    fileUnitSettings.logUnit = 0;
    closeAllFiles();
}

int32_t FILETYPE(int32_t unit) {
    ensureTables();
    for (int j = 1; j <= kPool; ++j)
        if (pool[j].unit == unit) return pool[j].type;
    return 0;
}

bool NAMED(int32_t slot) {
    ensureTables();
    if (slot < 1 || slot > kSlots) stopRun("Invalid file number - NAMED");
    return slots[slot].nameLen > 0;
}

void GETNAM(int32_t slot, TextRef name) {
    ensureTables();
    if (slot < 1 || slot > kSlots) stopRun("Invalid file number - GETNAM");
    name.assign(slots[slot].name.trimmed().substr(0, 80));
}

void UNNAME(int32_t slot) {
    ensureTables();
    if (slot < 1 || slot > kSlots) return;
    slots[slot].name.clear();
    slots[slot].nameLen = 0;
}

// ---------------------------------------------------------------------------
// Console helpers.

void PRINTCHARS(std::string_view text, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        char c = static_cast<std::size_t>(i) < text.size() ? text[static_cast<std::size_t>(i)] : ' ';
        conWrite(std::string_view(&c, 1));
    }
}

void PRINTTEXT(std::string_view text) { PRINTCHARS(text, paddedLength(text)); }

bool ASKYES(std::string_view text) {
    conWrite(trimmed(text));
    conWrite("? ");
    static Text<100> answer;
    if (!conReadLine(answer)) return false;
    char c = answer.at(1);
    return c == 'Y' || c == 'y';
}

int32_t LENSL(TextRef text, int32_t capacity) {
    int n = capacity < text.cap ? capacity : text.cap;
    if (n < 0) n = 0;
    int len = paddedLength(std::string_view(text.data, static_cast<std::size_t>(n < *text.hi ? n : *text.hi)));
    if (len < n) text.set(len + 1, '\0');
    return len;
}

int32_t LENFIRST(TextRef text, int32_t capacity) {
    int n = capacity < text.cap ? capacity : text.cap;
    for (int p = 1; p <= n; ++p) {
        char c = text.at(p);
        if (c == ' ' || c == '\0') {
            text.set(p, '\0');
            return p - 1;
        }
    }
    return n < 0 ? 0 : n;
}

void SETFLAGS() {
    conWrite("Set flags: ");
    static Text<26> answer;
    if (!conReadLine(answer)) return;
    for (char c : answer.view()) {
        if (isLetter(c)) setFlagsTable[upperByte(c) - 'A'] = true;
    }
}

// ---------------------------------------------------------------------------
// Unit input and output.

int32_t unitOpenOn(std::string_view name) {
    const char* p = nativePath(name);
    struct stat st;
    if (*p == '\0' || ::stat(p, &st) != 0) return 0;
    for (int i = 0; i < kFiles; ++i) {
        const UnitFile& f = files[i];
        if (f.fd >= 0 && groups[f.group].dev == st.st_dev && groups[f.group].ino == st.st_ino) return unitOf(i);
    }
    return 0;
}

bool unitIsOpen(int32_t unit) { return indexOf(unit) >= 0; }

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
    {
        const char* p = b + f.bufPos;
        std::size_t avail = f.bufLen - f.bufPos;
        const char* nl = static_cast<const char*>(std::memchr(p, '\n', avail));
        if (nl != nullptr) {
            std::size_t k = static_cast<std::size_t>(nl - p);
            f.bufPos += k + 1;
            if (k > 0 && p[k - 1] == '\r') --k;
            line.assign(std::string_view(p, k));
            f.lastRecord = start;
            return IoStatus::ok;
        }
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

IoStatus unitWriteLine(int32_t unit, std::string_view s) {
    int idx = indexOf(unit);
    if (idx < 0) return IoStatus::error;
    UnitFile& f = files[idx];
    // The usual case: line and line end fit the buffer of a unit writing alone.
    if (f.dirty && !f.failed && groups[f.group].refs == 1 && s.size() + 2 <= kBufCap - f.bufLen) {
        char* d = buffers[idx] + f.bufLen;
        if (!s.empty()) std::memcpy(d, s.data(), s.size());
        d[s.size()] = '\r';
        d[s.size() + 1] = '\n';
        f.bufLen += s.size() + 2;
        f.bufPos = f.bufLen;
        return IoStatus::ok;
    }
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
