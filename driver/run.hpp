// The converter's run sequence, from the command line to the last message.
#pragma once

// Runs the whole conversion and ends the process through EXITS.
[[noreturn]] void runReachmap(int argc, char** argv);

// Brings the converter and the libraries below it back to the state of a
// fresh process, so that a program that ran a conversion through the exit
// handler of runtime/exits.hpp can run the next one in the same process and
// get the same files and messages as a fresh process would.
void reachmapReset();
