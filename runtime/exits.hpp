// Exit and pause: the one way out of the program, and the pause that holds
// the console open so that a person can read what happened.
#pragma once

#include <string_view>

// The end of a run itself (endRun) and the hook for embedding programs
// (setRunEndHandler) stand below the console, which ends direct stops there.
#include "runtime/runend.hpp"

// Closes every open file unit (unless the settings say to leave them open),
// pauses at "Press Enter to Close" (when pausing on premature exit is on),
// and ends the run through endRun. Never returns.
[[noreturn]] void EXITS();

// "Press Enter to Continue" pause (a dialogue in message-box mode).
void PAUSER();

// Writes a blank line, then `prompt` with no line end, and waits for Enter.
// Returns false when standard input is at its end (nobody left to answer).
// A single pause just goes on in that case; a loop that would ask again must
// instead end the run with an "ERROR - " line through EXITS.
bool consolePause(std::string_view prompt);

// Ends the run because standard input ran out inside a prompt or retry loop:
// one "ERROR - " line naming `what`, then EXITS.
[[noreturn]] void stopNoInput(std::string_view what);
