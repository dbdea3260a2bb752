// Numbered messages: a caller fills the shared record DMESSAGES with up to
// three lines, then issues it with DMESSAGE. The kind comes from the first
// word of line1 (ERROR, WARNING, CHECK, UNSTABLE); the message goes to the
// console, the log unit, the message database and, for DMESSAGEXY, a pair of
// MIF/MID message layers, as far as their units are set.
#pragma once

#include <cstdint>

#include "text/text.hpp"

struct DMessageRecord {
    double x = -99999.0, y = -99999.0;  // map position of the message
    bool singleLine = false;            // parts run on one line
    int32_t logUnit = 0;
    int32_t mifUnit = 0, midUnit = 0;            // layer for errors, warnings, unstable
    int32_t checkMifUnit = 0, checkMidUnit = 0;  // layer for the others
    Text<kMessageCap> line1, line2, line3;
    Text<kMessageCap> line4;  // working line built from the extras
    Text<4> prefix;
    float textWidth = 0.0f, textOffset = 0.0f;
    int32_t errorCount = 0, warningCount = 0, checkCount = 0;
    int32_t errorMarks = 0, warningMarks = 0, checkMarks = 0;
    int32_t code = 0;  // number of the current message
    int32_t kind = 0;  // 1 error, 2 warning, 3 check, 4 unstable, 0 other
    Text<kMessageCap> extra1, extra2, extra3;
    int32_t databaseUnit = 0;
};

extern DMessageRecord DMESSAGES;

void DMESSAGE(int32_t blankLines);
void DMESSAGEXY(int32_t blankLines, double x, double y);
void DMESSAGECLEAR();
void DMESSAGERESETCOUNTERS();
void DLINE(int32_t unit);
