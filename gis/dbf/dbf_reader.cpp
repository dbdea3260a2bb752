// DBF reader (dBASE III layout, little-endian). Tolerant of a table that
// ends early and of deleted records; strict about the field table.
#include "gis/dbf/dbf_reader.hpp"

#include <cstring>

#include "gis/model/gis_internal.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace {

constexpr std::string_view k0403 = "ERROR 0403 - Reading .dbf file header.";
constexpr std::string_view k0404 = "ERROR 0404 - End of .dbf file encountered whilst reading header.";
constexpr std::string_view k0407 = "ERROR 0407 - Reading .dbf record.";

unsigned char gRecord[kDbfMaxFields * 255];
LineBuf<kDbfMaxFields * 513> gLine;

void headerBytes(int32_t unit, void* b, std::size_t n) {
    switch (unitReadBytes(unit, b, n)) {
        case IoStatus::ok: return;
        case IoStatus::end: gisStopMessage(k0404);
        case IoStatus::error: gisStopMessage(k0403);
    }
}

// The end of the table, by its end mark or by the end of the file.
void endOfTable(const GisDbfState& d, bool& atEnd) {
    atEnd = true;
    if (d.writtenCount == d.recordCount) return;
    gisSetMessage("WARNING 0405 - Insufficient number of records found in .dbf file.");
    GisLine l;
    l << "               Found " << countText(d.writtenCount) << ", expecting " << countText(d.recordCount);
    gisMessageLine[2] = l.view();
    gisMessageOut(1);
}

}  // namespace

void dbfReadHeader(GisDbfState& d) {
    const int32_t u = d.dbfUnit;
    if (u < 1) return;
    unsigned char h[32];
    if (unitRewind(u) != IoStatus::ok) gisStopMessage(k0403);
    headerBytes(u, h, sizeof h);
    d.recordCount =
        static_cast<int32_t>(uint32_t{h[4]} | uint32_t{h[5]} << 8 | uint32_t{h[6]} << 16 | uint32_t{h[7]} << 24);
    const int32_t headerLength = h[8] | h[9] << 8;
    {
        GisLine l;
        l << "DBF file contains " << countText(d.recordCount) << " records.";
        conLine(l.view());
    }
    d.fieldCount = 0;
    d.recordLength = 0;
    for (;;) {
        unsigned char f[32];
        headerBytes(u, f, 1);
        if (f[0] == 0x0D) break;
        if (d.fieldCount >= kDbfMaxFields) gisStopMessage("ERROR 0401 - Exceeded maximum number of dbf Fields.");
        headerBytes(u, f + 1, 31);
        const int i = ++d.fieldCount;
        // The name ends at its first zero byte.
        const auto* nul = static_cast<const unsigned char*>(std::memchr(f, 0, 11));
        const std::size_t nameLength = nul != nullptr ? static_cast<std::size_t>(nul - f) : 11;
        CLEANATTRIBUTENAME(d.names[i], {reinterpret_cast<const char*>(f), nameLength});
        d.types[i] = static_cast<char>(f[11]);
        d.widths[i] = f[16];
        d.decimals[i] = 0;  // not kept on reading
        if (d.widths[i] < 1) {
            GisLine l;
            l << "ERROR 0402 - dbf field length of " << countText(d.widths[i])
              << " is outside allowable range of 1 to 255.";
            gisStopMessage(l.view());
        }
        d.recordLength += d.widths[i];
    }
    if (d.fieldCount < 1) gisStopMessage("ERROR 0319 - No attributes specified in .dbf file.");
    // Some writers leave bytes between the field table and the first record;
    // the header length says where the records start.
    if (headerLength > unitTell(u) && unitSeek(u, headerLength) != IoStatus::ok) gisStopMessage(k0403);
    {
        GisLine l;
        l << countText(d.fieldCount) << " DBF Fields (Name [#/Type/Length]): ";
        gisReport(0, l.view());
    }
    for (int i = 1; i <= d.fieldCount; ++i) {
        GisLine l;
        l << "   " << d.names[i].trimmed() << " [" << countText(i) << "/" << d.types[i] << "/" << countText(d.widths[i])
          << "]";
        gisReport(0, l.view());
    }
}

void dbfReadRecord(GisDbfState& d, bool& atEnd, TextRef line) {
    line.clear();
    atEnd = false;
    const int32_t u = d.dbfUnit;
    if (u < 1 || d.fieldCount < 1) {
        atEnd = true;
        return;
    }
    unsigned char first = 0;
    for (;;) {
        const IoStatus st = unitReadBytes(u, &first, 1);
        // A table cut short ends as at its end mark.
        if (st == IoStatus::end) return endOfTable(d, atEnd);
        if (st != IoStatus::ok) gisStopMessage(k0407);
        if (first != '*') break;
        // A deleted record is passed over whole.
        if (unitSeek(u, unitTell(u) + d.recordLength) != IoStatus::ok) gisStopMessage(k0407);
    }
    if (first != 0 && first != ' ') {
        if (first == 26) return endOfTable(d, atEnd);
        gisSetMessage("ERROR 0406 - Unrecognised record identifier found in .dbf file.");
        GisLine c, l;
        c << "Character = " << static_cast<char>(first) << " [" << countText(first) << "]";
        l << "Data line thus far = " << line.trimmed();
        gisMessageLine[2] = c.view();
        gisMessageLine[3] = l.view();
        gisMessageOut(1);
        EXITS();
    }
    ++d.writtenCount;
    switch (unitReadBytes(u, gRecord, static_cast<std::size_t>(d.recordLength))) {
        case IoStatus::ok: break;
        case IoStatus::end: gisStopMessage("ERROR 0408 - End of .dbf file encountered whilst reading record.");
        case IoStatus::error: gisStopMessage(k0407);
    }
    gLine.clear();
    const unsigned char* p = gRecord;
    for (int i = 1; i <= d.fieldCount; ++i) {
        const int w = d.widths[i];
        if (i > 1) gLine << ',';
        if (d.types[i] == 'C' || d.types[i] == 'c') {
            // Full width, no trimming; a quote inside is doubled and a zero
            // byte of padding reads as a blank, so the line splits as written.
            gLine << '"';
            for (int k = 0; k < w; ++k) {
                const char ch = p[k] == 0 ? ' ' : static_cast<char>(p[k]);
                gLine << ch;
                if (ch == '"') gLine << '"';
            }
            gLine << '"';
        } else if (p[0] == '*') {
            gLine << '0';  // a number that did not fit its field
        } else {
            gLine << std::string_view(reinterpret_cast<const char*>(p), static_cast<std::size_t>(w));
        }
        p += w;
    }
    line.assign(gLine.view());
}
