// The end of a run, and the hook for programs that embed the libraries.
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
// program calls the reset of the libraries it uses (runtimeReset in units.hpp,
// gisReset, reachmapReset), which brings back the state of a fresh process.
//
//     setRunEndHandler([] { throw RunEnded{}; });
//     try { ...library calls... } catch (const RunEnded&) { gisReset(); }
#pragma once

using RunEndHandler = void (*)();

// Installs `handler` (nullptr: the default, ending the process) and returns
// the one installed before.
RunEndHandler setRunEndHandler(RunEndHandler handler);

// The end of a run: the handler, or the end of the process with status 0.
[[noreturn]] void endRun();
