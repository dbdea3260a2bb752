// The converter's run sequence, from the command line to the last message.
#pragma once

// Runs the whole conversion and ends the process through EXITS.
[[noreturn]] void runReachmap(int argc, char** argv);
