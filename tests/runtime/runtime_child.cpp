// A small program that the runtime tests start as a child process, to see
// what the console shows and how the process ends. The first argument names
// the scenario; the rest are its arguments.
#include <cstdio>
#include <cstring>
#include <string>

#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"

namespace {

void say(const std::string& s) { conLine(s); }

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    std::string what = argv[1];
    std::string arg = argc > 2 ? argv[2] : "";
    FILEINIT(1000);
    int32_t unit = 0;

    if (what == "open-input") {  // open an input file, asking as needed
        OPENERFREE(unit, "I ", arg, 0);
        say("unit " + std::to_string(unit));
        CLOSER(unit);
    } else if (what == "open-output") {  // open an output file, retrying as needed
        OPENERFREE(unit, "O ", arg, 0);
        say("unit " + std::to_string(unit));
    } else if (what == "reopen-output") {  // an output file already open in this process
        int32_t first = 0;
        OPENERFREE(first, "O ", arg, 0);
        unitWriteLine(first, "old");
        OPENERFREE(unit, "O ", arg, 0);
        unitWriteLine(unit, "new");
        say("units " + std::to_string(first) + " " + std::to_string(unit) + " open " +
            std::to_string(unitIsOpen(first)));
        CLOSER(unit);
    } else if (what == "write-then-exit") {  // EXITS with data still buffered
        OPENERFREE(unit, "O ", arg, 0);
        for (int i = 1; i <= 5000; ++i) unitWriteLine(unit, "line " + std::to_string(i));
        EXITS();
    } else if (what == "box-missing") {  // message-box mode, an input file that is missing
        fileUnitSettings.messageBoxMode = true;
        fileUnitSettings.applicationName = "App";
        fileUnitSettings.runName = "Run1";
        OPENERFREE(unit, "I ", arg, 0);
        say("not reached");
    } else if (what == "box-exit") {
        fileUnitSettings.messageBoxMode = true;
        fileUnitSettings.applicationName = "App";
        fileUnitSettings.runName = "Run1";
    } else if (what == "blank-name") {
        OPENERFREE(unit, "O ", "   ", 0);
        say("not reached");
    } else if (what == "read-lines") {  // echo standard input, one bracketed line each
        Text<8> line;
        while (conReadLine(line)) say("[" + std::string(line.trimmed()) + "]");
        say("end");
    } else if (what == "askyes") {
        say(ASKYES("Go on") ? "yes" : "no");
    } else if (what == "pauser") {
        PAUSER();
        say("after pause");
    } else {
        return 2;
    }
    EXITS();
}
