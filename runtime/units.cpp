// The unit tables of the file-unit manager and the routines that work on
// them: FILEINIT, the OPENER family with the open loop OPENERCORE, CLOSER and
// CLOSEALL, the slot queries, and the resets. The files themselves are held
// by the buffered file engine (unit_engine.cpp); the dialogues and the copy
// mode of the open loop are in dialogues.cpp.
#include "runtime/units.hpp"

#include <cstring>

#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/messages.hpp"
#include "runtime/paths.hpp"
#include "runtime/platform.hpp"
#include "runtime/unit_engine.hpp"
#include "runtime/units_internal.hpp"
#include "text/linebuf.hpp"
#include "text/strings.hpp"
#include "text/support.hpp"

using engine::kPool;
using engine::kSlots;
using namespace tables;

namespace {

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

Slot slots[kSlots + 1];     // 1..8
PoolEntry pool[kPool + 1];  // 1..1000
bool tablesReady = false;

void initTables(int32_t first) {
    int32_t b = first > 9 ? first : 9;
    engine::renumber(b - 7);
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

void reportUnit(std::string_view words, int32_t unit) {
    LineBuf<64> t;
    t << words;
    t.put(4, unit);
    report(t.view(), false, true);
}

// Closes a unit found open on the file to be opened, and frees its entry. The
// stop's two leading blanks are the system's own.
void closeForReopen(int32_t other) {
    int idx = engine::indexOf(other);
    if (idx >= 0 && engine::closeFile(idx) != IoStatus::ok) stopRun("  Unable to close file.");
    for (int i = 1; i <= kSlots; ++i)
        if (slots[i].unit == other) slots[i].opened = false;
    for (int j = 1; j <= kPool; ++j)
        if (pool[j].unit == other) pool[j].opened = false;
}

// Up to 1000 bytes of a name into a working text, with its leading blanks gone.
NameText openName;

}  // namespace

void tables::report(std::string_view s, bool blankBefore, bool lineEnd) {
    if (blankBefore) conBlank();
    if (lineEnd) conLine(s);
    else conWrite(s);
    int32_t log = fileUnitSettings.logUnit;
    if (log > 0 && unitIsOpen(log)) {
        if (blankBefore) unitWriteLine(log, {});
        if (lineEnd) unitWriteLine(log, s);
        else unitWriteText(log, s);
    }
}

// ---------------------------------------------------------------------------
// Starting afresh.

namespace {

// Every unit closed (pending output written) and the tables as in a fresh
// process.
void unitsReset() {
    engine::reset();
    for (auto& s : slots) s = Slot{};
    for (auto& p : pool) p = PoolEntry{};
    tablesReady = false;
}

}  // namespace

void runtimeReset() {
    conFlush();
    unitsReset();
    consoleReset();
    fileUnitSettings = FileUnitSettings{};
    for (bool& f : setFlagsTable) f = false;
    DMESSAGES = DMessageRecord{};
}

void FILEINIT(int32_t first) {
    // A second FILEINIT starts afresh: files still open are closed quietly.
    initTables(first);
    fileUnitSettings = FileUnitSettings{};
}

// ---------------------------------------------------------------------------
// Opening.

void OPENERCORE(int32_t& unit, TextRef name, std::string_view mode, std::string_view kind) {
    ensureTables();
    const FileUnitSettings& s = fileUnitSettings;
    const engine::ModeInfo m = engine::modeOf(mode);
    bool needName = name.len() == 0;
    for (;;) {
        // Getting a name, when there is none or the last one did not do.
        if (needName) askForName(name, kind);
        needName = false;

        // Cleaning the name, with the drive letter of the settings.
        CLEANPATH(name);
        char drive = m.inputClass ? s.inputDrive : s.outputDrive;
        if (drive != ' ' && name.at(2) == ':') name.set(1, drive);
        {
            LineBuf<1100> t;
            t << "Trying to open file " << name.trimmed() << "...";
            report(t.view(), true, false);
        }

        // The replace modes on a free name: nothing to find open, nothing to
        // delete, so the file is made in one call. A taken name goes the full way.
        bool firstFailed = false;
        if (m.known && !m.inputClass && !s.copyMode) {
            engine::NewFile made = engine::createNewFile(unit, m, name.trimmed());
            if (made == engine::NewFile::opened) {
                reportUnit("OK.  File Unit:", unit);
                return;
            }
            firstFailed = made == engine::NewFile::unusable;
        }

        // A file open on another unit: input and the append and keep modes
        // share it, the other modes close that unit first if the person agrees.
        bool exists = false;
        int32_t other = unitOpenOn(name.trimmed(), exists);
        bool asked = false;
        if (other != 0 && !m.inputClass && m.code[0] != 'A' && m.code[0] != 'S') {
            if (!agreeToClose(name.trimmed())) {
                needName = true;
                continue;
            }
            closeForReopen(other);
            asked = true;
        }

        // Input files: asked for again until one exists.
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
            engine::openFile(unit, m, name.trimmed());
            report("OK.", false, true);
            reportUnit("Opened File Unit:", unit);
            if (s.copyMode) copyInput(name.trimmed());
            return;
        }

        // Other modes: an unknown one is reported (the two leading blanks are
        // the system's own), "IO" opens without a word.
        if (!m.known) {
            LineBuf<200> t;
            t << "  Unrecognised file type " << std::string_view(m.code, 2) << " file " << name.trimmed().substr(0, 80);
            report(t.view(), false, true);
            return;
        }
        if (m.code[0] == 'I' && m.code[1] == 'O') {
            engine::openFile(unit, m, name.trimmed());
            return;
        }
        if (s.copyMode) redirectOutput(name);

        // The open, tried until it works or the run is given up. The look
        // above still holds for the first try when nothing came in between.
        bool known = !asked && !s.copyMode;
        if (firstFailed) {
            report("Can't Open", false, true);
            waitToRetryOpen(name.trimmed(), false);
            known = false;
        }
        for (;;) {
            bool existed = known ? exists : platformFileExists(name.trimmed());
            known = false;
            bool opened = engine::openFile(unit, m, name.trimmed());
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
            waitToRetryOpen(name.trimmed(), existed);
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
    if (e == ".mif") pool[j].type = 101;
    else if (e == ".mid") pool[j].type = 102;
    else if (e == ".12da") pool[j].type = 111;
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

// Every OPENER entry stops with the words of OPENER itself, whichever entry
// was called: the messages are kept as the system prints them.
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
        int idx = engine::indexOf(unit);
        if (idx >= 0) engine::closeFile(idx);
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
    engine::closeAllFiles();
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
