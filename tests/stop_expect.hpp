// Death-test check of an orderly stop: the statement ends the run through the
// exit routine with status 0 and without the pause, and its console output
// (sent to the error stream, where the check looks) matches `regex`. Pending
// console and file output is flushed first, so that the child starts clean.
#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

#include "runtime/console.hpp"
#include "runtime/units.hpp"

#define EXPECT_STOP(statement, regex)                          \
    do {                                                       \
        conFlush();                                            \
        unitFlushAll();                                        \
        EXPECT_EXIT(                                           \
            {                                                  \
                fileUnitSettings.pauseOnPrematureExit = false; \
                ::dup2(2, 1);                                  \
                statement;                                     \
            },                                                 \
            ::testing::ExitedWithCode(0), regex);              \
    } while (0)
