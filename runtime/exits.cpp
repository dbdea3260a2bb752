#include "runtime/exits.hpp"

#include <cstdlib>

#include "runtime/console.hpp"
#include "runtime/internal.hpp"
#include "runtime/messages.hpp"
#include "runtime/platform.hpp"
#include "runtime/units.hpp"

namespace {

// A few bytes are enough: the answer to a pause is only waited for.
Text<16> answer;

RunEndHandler runEndHandler = nullptr;

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
                 << "\r\r" << "Press OK to Close Simulation Window";
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

RunEndHandler setRunEndHandler(RunEndHandler handler) {
    RunEndHandler before = runEndHandler;
    runEndHandler = handler;
    return before;
}

void endRun() {
    if (runEndHandler != nullptr) runEndHandler();
    std::exit(0);
}

void runtimeReset() {
    conFlush();
    unitsReset();
    consoleReset();
    fileUnitSettings = FileUnitSettings{};
    for (bool& f : setFlagsTable) f = false;
    DMESSAGES = DMessageRecord{};
}

void PAUSER() {
    const FileUnitSettings& s = fileUnitSettings;
    if (s.messageBoxMode) {
        LineBuf<512> text;
        text << s.applicationName.trimmed() << " Simulation " << s.runName.trimmed() << " paused" << "\r\r"
             << "Refer to Simulation Window" << "\r\r" << "Press OK to Continue";
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
