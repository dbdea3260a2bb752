// Pieces shared by the runtime's own sources; not for other subsystems.
#pragma once

#include "text/linebuf.hpp"

// Closes every open file unit (slots first, then the pool) without a report,
// ignoring errors and leaving the opened flags alone. Used by EXITS.
void unitCloseAllQuietly();
