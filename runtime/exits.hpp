// Exit and pause: the one way out of the program, and the pause that holds
// the console open so that a person can read what happened.
#pragma once

#include <string_view>

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

// ---------------------------------------------------------------------------
// Embedding: taking control where a run ends.
//
// Every end of a run comes to endRun: EXITS after its orderly part (files
// closed, pause, console and file units flushed), and each direct stop after
// its text and flush. With no handler installed, endRun ends the process with
// status 0, as the converter does. A program that embeds the libraries and
// must not end with a bad file installs a handler; endRun calls it in place of
// ending the process. The handler may throw an exception or long-jump back
// into the embedding program (the stack between is left without cleanup,
// which the libraries do not need: all their state is static). If the handler
// returns, the process ends as without it. Before the next run the embedding
// program calls the reset of the libraries it uses (runtimeReset here,
// gisReset, reachmapReset), which brings back the state of a fresh process.
//
//     setRunEndHandler([] { throw RunEnded{}; });
//     try { ...library calls... } catch (const RunEnded&) { gisReset(); }
using RunEndHandler = void (*)();

// Installs `handler` (nullptr: the default, ending the process) and returns
// the one installed before.
RunEndHandler setRunEndHandler(RunEndHandler handler);

// The end of a run: the handler, or the end of the process with status 0.
[[noreturn]] void endRun();

// Brings the runtime back to the state of a fresh process: every file unit
// closed (pending output written first) and the tables and settings as
// before FILEINIT, the console's buffers emptied (pending output written
// first) and standard input read afresh, the flags and the message record
// cleared. The installed handler stays.
void runtimeReset();
