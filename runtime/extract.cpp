#include "runtime/extract.hpp"

#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/messages.hpp"
#include "text/freeformat.hpp"
#include "text/linebuf.hpp"

namespace {

Text<kWorkCap> g_value;

// extractValue, stopping with ERROR 0203 when the keyword has no "=".
void findValue(TextRef out, std::string_view line, std::string_view lowerLine, std::string_view keyword, int32_t column,
               bool toEnd) {
    if (extractValue(out, line, lowerLine, keyword, column, toEnd) != ExtractFound::noEquals) return;
    static LineBuf<kMessageCap> l;
    l.clear();
    l << "ERROR 0203 - No \"=\" sign found after keyword \"" << trimmed(keyword) << "\".";
    DMESSAGES.line1 = l.view();
    DMESSAGE(1);
    EXITS();
}

[[noreturn]] void cannotConvert(std::string_view kind, int32_t column, std::string_view keyword) {
    static LineBuf<2 * kWorkCap> l;
    l.clear();
    l << " Could not convert \"" << g_value.trimmed() << "\" in column ";
    l.put(3, column);
    l << " to " << kind << " value for the " << trimmed(keyword) << " field.";
    conLine(l.view());
    EXITS();
}

}  // namespace

// A value that the free-form read finds empty (a lone comma or slash after
// the quotes went) leaves the default, as a blank value does.
int32_t EXTRACTINTEGER(std::string_view line, std::string_view lowerLine, std::string_view keyword, int32_t column,
                       int32_t defaultValue) {
    findValue(g_value, line, lowerLine, keyword, column, false);
    if (g_value.blank()) return defaultValue;
    int32_t v = defaultValue;
    if (readInt4(g_value.trimmed(), v) != ReadResult::ok) cannotConvert("an integer", column, keyword);
    return v;
}

float EXTRACTREAL(std::string_view line, std::string_view lowerLine, std::string_view keyword, int32_t column,
                  float defaultValue) {
    findValue(g_value, line, lowerLine, keyword, column, false);
    if (g_value.blank()) return defaultValue;
    float v = defaultValue;
    if (readReal4(g_value.trimmed(), v) != ReadResult::ok) cannotConvert("a real", column, keyword);
    return v;
}

void EXTRACTSTRING(TextRef out, std::string_view line, std::string_view lowerLine, std::string_view keyword,
                   int32_t column) {
    findValue(out, line, lowerLine, keyword, column, false);
}

void EXTRACTSTRINGREM(TextRef out, std::string_view line, std::string_view lowerLine, std::string_view keyword,
                      int32_t column) {
    findValue(out, line, lowerLine, keyword, column, true);
}
