// EXITS, PAUSER and the pauses and stops on the console. They stand above
// the buffered file engine, whose units EXITS closes, and below the unit
// tables, whose open loop ends the run through them.
#include "runtime/exits.hpp"

#include "runtime/console.hpp"
#include "runtime/platform.hpp"
#include "runtime/settings.hpp"
#include "runtime/unit_engine.hpp"
#include "runtime/unit_io.hpp"
#include "text/linebuf.hpp"

namespace {

// A few bytes are enough: the answer to a pause is only waited for.
Text<16> answer;

}  // namespace

bool consolePause(std::string_view prompt) {
    conBlank();
    conWrite(prompt);
    return conReadLine(answer);
}

void EXITS() {
    const FileUnitSettings& s = fileUnitSettings;
    if (!s.leaveFilesOpenAtExit) unitCloseAllQuietly();
    if (s.pauseOnPrematureExit) {
        if (s.messageBoxMode) {
            LineBuf<512> text;
            text << "Premature Exit of " << s.applicationName.trimmed() << " Simulation " << s.runName.trimmed()
                 << "\r\r"
                 << "Press OK to Close Simulation Window";
            while (platformMessageBox(text.view(), s.applicationName.trimmed(), BoxButtons::ok, BoxIcon::stop) !=
                   BoxAnswer::ok) {
            }
        } else {
            // At the end of standard input there is nobody to wait for: go on.
            consolePause("Press Enter to Close");
        }
    }
    conFlush();
    unitFlushAll();
    endRun();
}

void PAUSER() {
    const FileUnitSettings& s = fileUnitSettings;
    if (s.messageBoxMode) {
        LineBuf<512> text;
        text << s.applicationName.trimmed() << " Simulation " << s.runName.trimmed() << " paused"
             << "\r\r"
             << "Refer to Simulation Window"
             << "\r\r"
             << "Press OK to Continue";
        while (platformMessageBox(text.view(), s.applicationName.trimmed(), BoxButtons::ok, BoxIcon::warning) !=
               BoxAnswer::ok) {
        }
        return;
    }
    consolePause("Press Enter to Continue");
}

void stopNoInput(std::string_view what) {
    LineBuf<1200> line;
    line << "ERROR - End of standard input while waiting for " << what << "; nobody left to answer.";
    conBlank();
    conLine(line.view());
    EXITS();
}
