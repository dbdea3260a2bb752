// Reading one line of a control or data file. It sits with the runtime, not
// the text toolkit, because it reads a file unit and stops through DMESSAGE
// and EXITS.
#pragma once

#include <cstdint>

#include "text/text.hpp"

// Reads the next line of `unit` into `line` (cut at its capacity), deletes
// its tabs, drops leading blanks and any comment behind '#' or '!'. True when
// something is left. A read error or the end of the file ends the run with
// ERROR 0201 or ERROR 0202.
bool READLINE(int32_t unit, TextRef line);
