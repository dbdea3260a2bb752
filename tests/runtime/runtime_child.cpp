// A small program that the runtime tests start as a child process, to see
// what the console shows and how the process ends. The first argument names
// the scenario; the second is its file name.
#include <string>

#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const std::string what = argv[1];
    const std::string arg = argc > 2 ? argv[2] : "";
    FILEINIT(1000);
    int32_t unit = 0;

    if (what == "open-input") {  // an input file, asking again while it is missing
        OPENERFREE(unit, "I ", arg, 0);
        conLine("unit " + std::to_string(unit));
        CLOSER(unit);
    } else if (what == "open-output" || what == "blank-name") {  // an output file, retrying while it fails
        OPENERFREE(unit, "O ", what == "blank-name" ? "   " : arg, 0);
        conLine("unit " + std::to_string(unit));
    } else if (what == "reopen-output") {  // an output file already open in this process
        int32_t first = 0;
        OPENERFREE(first, "O ", arg, 0);
        unitWriteLine(first, "old");
        OPENERFREE(unit, "O ", arg, 0);
        unitWriteLine(unit, "new");
        conLine("units " + std::to_string(first) + " " + std::to_string(unit) + " open " +
                std::to_string(unitIsOpen(first)));
        CLOSER(unit);
    } else if (what == "write-then-exit") {  // EXITS with data still buffered
        OPENERFREE(unit, "O ", arg, 0);
        for (int i = 1; i <= 5000; ++i) unitWriteLine(unit, "line " + std::to_string(i));
    } else if (what == "pauser") {
        PAUSER();
        conLine("after pause");
    } else {
        return 2;
    }
    EXITS();
}
