#include "runtime/readline.hpp"

#include "runtime/exits.hpp"
#include "runtime/messages.hpp"
#include "runtime/units.hpp"
#include "text/linebuf.hpp"
#include "text/lines.hpp"
#include "text/strings.hpp"

namespace {

[[noreturn]] void stopReading(std::string_view words, int32_t unit) {
    LineBuf<160> l;
    l << words;
    l.put(5, unit);
    DMESSAGES.line1 = l.view();
    DMESSAGE(1);
    EXITS();
}

}  // namespace

bool READLINE(int32_t unit, TextRef line) {
    switch (unitReadLine(unit, line)) {
        case IoStatus::ok: break;
        case IoStatus::error: stopReading("ERROR 0201 - Reading text line from file unit number", unit);
        case IoStatus::end:
            stopReading("ERROR 0202 - End-of-file encountered reading text line from file unit number", unit);
    }
    BLANK(line);
    return !COMMENTLINE(line);
}
