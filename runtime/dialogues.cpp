// The dialogues of the open loop and the copy mode: asking for a file name,
// the question about a file already open, what follows a failed open (on the
// console a pause, in message-box mode a retry or an offer to make the
// folder), and, in copy mode, the mirror of each input file and the redirect
// of each output under the copy root.
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/paths.hpp"
#include "runtime/platform.hpp"
#include "runtime/units.hpp"
#include "runtime/units_internal.hpp"
#include "text/linebuf.hpp"
#include "text/strings.hpp"

namespace tables {

std::string_view title() {
    static LineBuf<210> t;
    t.clear();
    t << fileUnitSettings.applicationName.trimmed() << ' ' << fileUnitSettings.runName.trimmed();
    return t.view();
}

[[noreturn]] void cancelled() { stopRun("Run cancelled."); }

void askForName(TextRef name, std::string_view kind) {
    const FileUnitSettings& s = fileUnitSettings;
    if (s.messageBoxMode) {
        LineBuf<256> t;  // dialogue texts are held in 256 bytes
        t << s.applicationName.trimmed() << " FILE and/or path" << '\r' << name.trimmed() << '\r' << "does not exist.";
        if (platformMessageBox(t.view(), title(), BoxButtons::retryCancel, BoxIcon::warning) != BoxAnswer::retry)
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

bool agreeToClose(std::string_view name) {
    const FileUnitSettings& s = fileUnitSettings;
    if (s.messageBoxMode) {
        LineBuf<256> t;  // dialogue texts are held in 256 bytes
        t << s.applicationName.trimmed() << " file " << '\r' << name << '\r' << "is already open.  Close it?";
        if (platformMessageBox(t.view(), title(), BoxButtons::yesNo, BoxIcon::question) != BoxAnswer::yes) EXITS();
        return true;
    }
    conBlank();
    LineBuf<1100> t;
    t << name << " is already open, close it? ";
    conWrite(t.view());
    static Text<100> answer;
    if (!conReadLine(answer)) stopNoInput("an answer to whether to close the open file");
    char c = answer.at(1);
    return c == 'Y' || c == 'y';
}

namespace {

// Message-box mode, an output open failed on a file that does not exist:
// offer to make its folder. Returns when the open should be tried again.
void offerFolder(std::string_view name) {
    const FileUnitSettings& s = fileUnitSettings;
    static NameText folder;
    FILEFOLDERPATH(folder, name);
    bool make = s.createFoldersWithoutAsking;
    while (!make) {
        LineBuf<256> t;  // dialogue texts are held in 256 bytes
        t << folder.trimmed() << "\r\r"
          << "Above folder does not exist!  Create?"
          << "\r\r"
          << "Either create the folder yourself and press No," << '\r'
          << "or press Yes to have the folder created for you.";
        BoxAnswer a = platformMessageBox(t.view(), title(), BoxButtons::yesNoCancel, BoxIcon::warning);
        if (a == BoxAnswer::cancel) cancelled();
        if (a == BoxAnswer::no) return;
        t.clear();
        t << "Create folder below?"
          << "\r\r" << folder.trimmed();
        if (platformMessageBox(t.view(), title(), BoxButtons::yesNo, BoxIcon::question) == BoxAnswer::yes) make = true;
    }
    while (platformMkdir(folder.trimmed()) == -1) {
        LineBuf<256> t;  // dialogue texts are held in 256 bytes
        t << "Could not create folder:"
          << "\r\r" << folder.trimmed() << "\r\r"
          << "Check permissions and/or sufficient disk space.";
        if (platformMessageBox(t.view(), title(), BoxButtons::retryCancel, BoxIcon::warning) != BoxAnswer::retry)
            cancelled();
    }
}

}  // namespace

void waitToRetryOpen(std::string_view name, bool existed) {
    if (!fileUnitSettings.messageBoxMode) {
        LineBuf<1100> t;
        t << "Can't open: " << name;
        report(t.view(), true, true);
        // "maybe" for "may be": the words as the system has always printed them.
        report("Another application or user maybe using it,", true, true);
        report("   or the file's folder does not exist.", false, true);
        report("If so, close the file or create file path.", false, true);
        if (!consolePause("Press Enter to Continue")) stopNoInput("Enter to try the open again");
        return;
    }
    if (existed) {
        LineBuf<256> t;  // dialogue texts are held in 256 bytes
        t << name << "\r\r"
          << "Above file is locked by another application."
          << "\r\r"
          << "Close the file in the other application and press Retry.";
        if (platformMessageBox(t.view(), title(), BoxButtons::retryCancel, BoxIcon::warning) != BoxAnswer::retry)
            cancelled();
        return;
    }
    offerFolder(name);
}

// ---------------------------------------------------------------------------
// Copy mode.

namespace {

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

}  // namespace

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

void redirectOutput(TextRef name) {
    static NameText folder;
    mirrorFolder(folder, name.trimmed());
    makeMirrorFolder(folder.trimmed());
    ADDFOLDER(name, folder.trimmed(), leafOf(name.trimmed()));
    fileUnitSettings.lastCopyName.ref().assign(name.trimmed());
}

}  // namespace tables

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
