#include "runtime/messages.hpp"

#include <string_view>

#include "runtime/console.hpp"
#include "runtime/unit_io.hpp"
#include "text/freeformat.hpp"
#include "text/linebuf.hpp"
#include "text/strings.hpp"

DMessageRecord DMESSAGES;

namespace {

constexpr int kQuotedCap = 1000;

struct KindRule {
    std::string_view word;
    int32_t kind;
    int numberFrom;  // 1-based position of the six bytes holding the number
};

// Tested in this order; the first word must stand at position 1, in upper case.
constexpr KindRule kRules[] = {
    {"ERROR", 1, 6},
    {"WARNING", 2, 8},
    {"CHECK", 3, 6},
    {"UNSTABLE", 4, 9},
};

const KindRule* ruleOf(std::string_view line1) {
    for (const KindRule& r : kRules)
        if (line1.substr(0, r.word.size()) == r.word) return &r;
    return nullptr;
}

// The first whole number in the six bytes from `from`; 0 when there is none.
int32_t codeOf(std::string_view line1, int from) {
    char six[6];
    for (int i = 0; i < 6; ++i) {
        std::size_t at = static_cast<std::size_t>(from - 1 + i);
        six[i] = at < line1.size() ? line1[at] : ' ';
    }
    int32_t v = 0;
    if (FreeFormat(std::string_view(six, 6)).int4(v) != ReadResult::ok) return 0;
    return v;
}

void buildLine4() {
    DMessageRecord& m = DMESSAGES;
    static LineBuf<3 * kMessageCap + 4> w;
    w.clear();
    w << m.extra1.trimmed();
    if (!m.extra2.blank()) w << "; " << m.extra2.trimmed();
    if (!m.extra3.blank()) w << "; " << m.extra3.trimmed();
    m.line4 = w.view();
}

// One quoted, doubled-quote copy of a text, cut at 1000 bytes.
template <std::size_t N>
void putQuoted(LineBuf<N>& out, std::string_view s) {
    static Text<kQuotedCap> q;
    DOUBLEQUOTE(q, s);
    out << '"' << q.trimmed() << '"';
}

// The code in width 5 with at least four digits, zeros in front.
template <std::size_t N>
void putCode(LineBuf<N>& out, int32_t code) {
    char digits[16];
    int64_t a = code < 0 ? -static_cast<int64_t>(code) : code;
    int n = static_cast<int>(putCount(digits, a) - digits);
    int width = (n < 4 ? 4 : n) + (code < 0 ? 1 : 0);
    if (width > 5) {
        out << "*****";
        return;
    }
    for (int i = width; i < 5; ++i) out << ' ';
    if (code < 0) out << '-';
    for (int i = n; i < 4; ++i) out << '0';
    out << std::string_view(digits, static_cast<std::size_t>(n));
}

void writeDatabaseLine() {
    DMessageRecord& m = DMESSAGES;
    static LineBuf<6000> out;
    static LineBuf<3 * kMessageCap + 4> joined;
    out.clear();
    putCode(out, m.code);
    out << ',';
    out.put(2, m.kind);
    out << ',';
    out.fixed(16, 3, m.x);
    out << ',';
    out.fixed(16, 3, m.y);
    joined.clear();
    joined << m.line1.trimmed() << "  " << m.line2.trimmed() << "  " << m.line3.trimmed();
    out << ", ";
    putQuoted(out, joined.view());
    for (const auto* e : {&m.extra1, &m.extra2, &m.extra3}) {
        out << ", ";
        putQuoted(out, e->trimmed());
    }
    unitWriteLine(m.databaseUnit, out.view());
}

// The message as it stands on the console or in the log.
template <typename Write, typename End>
void writeMessage(Write write, End end) {
    DMessageRecord& m = DMESSAGES;
    if (!m.prefix.blank()) {
        write(m.prefix.trimmed());
        write(" ");
    }
    write(m.line1.trimmed());
    for (const auto* part : {&m.line2, &m.line3, &m.line4}) {
        if (part->blank()) continue;
        if (m.singleLine) {
            write("  ");
        } else {
            end();
        }
        write(part->trimmed());
    }
    end();
}

}  // namespace

void DMESSAGECLEAR() {
    DMessageRecord& m = DMESSAGES;
    m.line1.clear();
    m.line2.clear();
    m.line3.clear();
    m.line4.clear();
    m.prefix.clear();
    m.extra1.clear();
    m.extra2.clear();
    m.extra3.clear();
    m.x = -99999.0;
    m.y = -99999.0;
    m.singleLine = false;
}

void DMESSAGERESETCOUNTERS() {
    DMessageRecord& m = DMESSAGES;
    m.errorCount = m.warningCount = m.checkCount = 0;
    m.errorMarks = m.warningMarks = m.checkMarks = 0;
}

void DMESSAGE(int32_t blankLines) {
    DMessageRecord& m = DMESSAGES;
    m.code = 0;
    m.kind = 0;
    if (const KindRule* r = ruleOf(m.line1.view())) {
        m.kind = r->kind;
        m.code = codeOf(m.line1.view(), r->numberFrom);
        if (r->kind == 1) ++m.errorCount;
        if (r->kind == 2) ++m.warningCount;
        if (r->kind == 3) ++m.checkCount;
    }
    if (m.databaseUnit > 0 && m.kind != 0) writeDatabaseLine();
    buildLine4();
    if (blankLines >= 0) {
        for (int32_t i = 0; i < blankLines; ++i) conBlank();
        writeMessage([](std::string_view s) { conWrite(s); }, [] { conLine({}); });
    }
    if (blankLines > -2 && m.logUnit > 0) {
        const int32_t log = m.logUnit;
        for (int32_t i = 0; i < blankLines; ++i) unitWriteLine(log, {});
        writeMessage([log](std::string_view s) { unitWriteText(log, s); }, [log] { unitWriteLine(log, {}); });
    }
    DMESSAGECLEAR();
}

void DMESSAGEXY(int32_t blankLines, double x, double y) {
    DMessageRecord& m = DMESSAGES;
    m.prefix = "XY: ";
    std::string_view l1 = m.line1.view();
    int32_t mif = m.checkMifUnit;
    int32_t mid = m.checkMidUnit;
    std::string_view font = "Font (\"Arial\",257,0,53248,16777215)";
    if (l1.substr(0, 5) == "ERROR") {
        mif = m.mifUnit;
        mid = m.midUnit;
        ++m.errorMarks;
        font = "Font (\"Arial\",257,0,16711935,0)";
    } else if (l1.substr(0, 7) == "WARNING") {
        mif = m.mifUnit;
        mid = m.midUnit;
        ++m.warningMarks;
        font = "Font (\"Arial\",257,0,16776960,0)";
    } else if (l1.substr(0, 8) == "UNSTABLE") {
        mif = m.mifUnit;
        mid = m.midUnit;
        font = "Font (\"Arial\",257,0,16711935,0)";
    } else if (l1.substr(0, 5) == "CHECK") {
        ++m.checkMarks;
        font = "Font (\"Arial\",257,0,255,16777215)";
    }
    buildLine4();

    static Text<kQuotedCap> q;
    static LineBuf<4 * (kQuotedCap + 2) + 8> out;
    unitWriteLine(mif, "Text");
    out.clear();
    DOUBLEQUOTE(q, m.line1.trimmed());
    out << '"' << q.trimmed();
    int n = 1;
    for (const auto* part : {&m.line2, &m.line3, &m.line4}) {
        if (part->blank()) continue;
        DOUBLEQUOTE(q, part->trimmed());
        out << (m.singleLine ? std::string_view("  ") : std::string_view("\\n")) << q.trimmed();
        ++n;
    }
    out << '"';
    unitWriteLine(mif, out.view());
    // Half the box height above and below the point; n/2 taken as a real
    // number, so that a one-line mark has a box of the height of one line.
    const float half = static_cast<float>(n) / 2.0f * m.textOffset;
    const double left = x + static_cast<double>(m.textOffset);
    out.clear();
    out << "    ";
    out.fixed(16, 3, left);
    out.fixed(16, 3, y - static_cast<double>(half));
    out.fixed(16, 3, left + static_cast<double>(m.textWidth));
    out.fixed(16, 3, y + static_cast<double>(half));
    unitWriteLine(mif, out.view());
    out.clear();
    out << "    " << font;
    unitWriteLine(mif, out.view());
    out.clear();
    out << "    Label Line Arrow ";
    out.fixed(16, 3, x);
    out.fixed(16, 3, y);
    unitWriteLine(mif, out.view());

    out.clear();
    out << '"';
    for (const auto* part : {&m.line1, &m.line2, &m.line3, &m.line4}) {
        if (part->blank()) continue;
        DOUBLEQUOTE(q, part->trimmed());
        out << q.trimmed() << "  ";
    }
    out << '"';
    unitWriteLine(mid, out.view());

    m.x = x;
    m.y = y;
    DMESSAGE(blankLines);
}

void DLINE(int32_t unit) {
    static const std::string_view line =
        "________________________________________________________________________________";
    conLine(line);
    if (unit > 0) unitWriteLine(unit, line);
}
