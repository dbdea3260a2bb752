#include "runtime/savedate.hpp"

#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/platform.hpp"
#include "runtime/units.hpp"
#include "text/linebuf.hpp"

namespace {

void labelLine(std::string_view line, int32_t logUnit) {
    conLine(line);
    if (logUnit > 0) unitWriteLine(logUnit, line);
}

}  // namespace

bool CHECKSAVEDATE(std::string_view first, std::string_view second, int32_t& firstUnit, int32_t& secondUnit, bool fatal,
                   int32_t logUnit) {
    first = trimmed(first);
    second = trimmed(second);
    int64_t firstTime = 0, secondTime = 0;
    platformModTime(first, firstTime);  // an unreadable first file counts as the oldest
    {
        LineBuf<2200> l;
        l << "Checking save date is later than that of " << second << "...";
        conWrite(l.view());
    }
    const bool secondKnown = platformModTime(second, secondTime);
    const std::string_view label = fatal ? "ERROR 0004" : "WARNING 0004";

    if (!secondKnown) {
        conLine("NOT OK");
        conBlank();
        LineBuf<2200> l;
        l << label << " - Could not access save date of \"" << first << "\" to check with \"" << second << "\"";
        labelLine(l.view(), logUnit);
        if (!fatal) return true;
        conBlank();
        conLine("NOTE - If using VARDEN.exe, use CHECK MI SAVE DATE == WARNING or OFF to suppress check");
        EXITS();
    }
    if (firstTime >= secondTime) {
        conLine("OK");
        conBlank();
        return true;
    }
    conLine("NOT OK");
    conBlank();
    LineBuf<2200> l;
    l << label << " - Save date of \"" << second << "\" file is later than that of \"" << first << "\"";
    if (!fatal) {
        labelLine(l.view(), logUnit);
        return true;
    }

    if (firstUnit >= 1) CLOSER(firstUnit);
    if (secondUnit >= 1) CLOSER(secondUnit);
    const FileUnitSettings& s = fileUnitSettings;
    if (!s.messageBoxMode) {
        labelLine(l.view(), logUnit);
        // Asked again on every round of the caller's loop: nobody at the
        // console means nobody will ever re-export the file.
        if (!consolePause("Re-export mif file and press Enter, or close window."))
            stopNoInput("the mif file to be exported again");
        return false;
    }
    labelLine(l.view(), logUnit);
    conLine("Re-export mif file, or use CHECK MI SAVE DATE == WARNING or OFF to suppress check.");
    LineBuf<2400> text;
    text << label << " - Save date of " << '\r' << '"' << second << '"' << '\r' << "is later than that of " << '\r'
         << '"' << first << '"';
    LineBuf<220> title;
    title << s.applicationName.trimmed() << ' ' << s.runName.trimmed();
    if (platformMessageBox(text.view(), title.view(), BoxButtons::retryCancel, BoxIcon::stop) == BoxAnswer::cancel)
        EXITS();
    return false;
}
