// DBF writer (dBASE III layout, little-endian): a 32-byte header, one
// 32-byte descriptor a field, the byte 13, fixed-width records each led by a
// blank, and the end mark 26.
#include "gis/dbf/dbf_writer.hpp"

#include <algorithm>
#include <cstring>

#include "gis/model/gis_internal.hpp"
#include "gis/shp/shp_sets.hpp"
#include "runtime/platform.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"
#include "text/support.hpp"

namespace {

constexpr int kSlotCap = 256;

// The values of the fields, kept from one record to the next so that a null
// value repeats the value before it. A slot that nothing has filled holds
// zero bytes, which count as text.
struct SlotTable {
    Text<kSlotCap> slot[kDbfMaxFields + 1];
    SlotTable() {
        for (auto& s : slot) {
            std::memset(s.b, 0, kSlotCap);
            s.hi = kSlotCap;
        }
    }
};
SlotTable gSlots;       // for dbfdataline
SlotTable gSlotsLarge;  // for dbfdatalinelarge

// One record: the deletion byte and the fields, written at once. The slack at
// the end takes the overshoot of the 16-byte block copies below.
constexpr std::size_t kCopyBlock = 16;
char gRecord[1 + 65536 + kCopyBlock];

// Copies n bytes in whole 16-byte blocks: up to 15 bytes more are read from
// `from` and written past `to + n`. Fields are short, and a run of small
// blocks costs less than a string instruction's start-up for every field.
void copyBlocks(char* to, const char* from, int n) {
    for (int i = 0; i < n; i += static_cast<int>(kCopyBlock)) std::memcpy(to + i, from + i, kCopyBlock);
}

// Fills n bytes with blanks, in the same blocks and with the same overshoot.
void blankBlocks(char* to, int n) {
    static const char kBlanks[kCopyBlock + 1] = "                ";
    for (int i = 0; i < n; i += static_cast<int>(kCopyBlock)) std::memcpy(to + i, kBlanks, kCopyBlock);
}

void putLE16(unsigned char* p, int32_t v) {
    p[0] = static_cast<unsigned char>(v & 0xFF);
    p[1] = static_cast<unsigned char>((v >> 8) & 0xFF);
}

void putLE32(unsigned char* p, int32_t v) {
    const auto u = static_cast<uint32_t>(v);
    for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>((u >> (8 * i)) & 0xFF);
}

// The value of a quoted token without its quotes, a doubled quote standing
// for one, cut at the slot. A quote that is never closed runs to the end of
// the line, as in every other free-format text the system reads: the end of
// the line is the end of the record. Such a line comes from a text that
// holds a quote of its own, or from a record cut at the capacity of the
// record line inside a quoted value; it is written, not stopped on.
void unquoteInto(std::string_view t, TextRef out) {
    char buf[kSlotCap];
    int n = 0;
    const char q = t[0];
    for (std::size_t i = 1; i < t.size(); ++i) {
        char c = t[i];
        if (c == q) {
            if (i + 1 < t.size() && t[i + 1] == q) {
                ++i;
            } else {
                break;
            }
        }
        if (n < kSlotCap) buf[n++] = c;
    }
    out.assign({buf, static_cast<std::size_t>(n)});
}

// Splits a record line into the first `count` slots by the list rules: a
// value ends at a comma, a blank or the end; quotes may hold both; an empty
// value, a slash or the end of the line leave slots as they were; r*v repeats.
void splitLineFully(std::string_view line, SlotTable& table, int count) {
    FreeFormat ff(line);
    for (int i = 1; i <= count; ++i) {
        std::string_view token;
        bool quoted = false;
        const FreeFormat::Item item = ff.next(token, quoted);
        if (item == FreeFormat::Item::end || item == FreeFormat::Item::slash) break;
        if (item == FreeFormat::Item::null) continue;
        if (quoted) {
            unquoteInto(token, table.slot[i].ref());
        } else {
            table.slot[i].ref().assign(token);
        }
    }
}

// The usual record line, taken in one pass: values that are either plain
// (no slash or star, not led by a quote) or quoted with no quote inside, each
// with blanks round it if any, closed by a comma or the end of the line.
// Anything else, and the line is split again from the start by the full
// rules; the values taken so far are what those rules give them too.
void splitLine(std::string_view line, SlotTable& table, int count) {
    const char* p = line.data();
    const char* const e = p + line.size();
    auto skipBlanks = [&] {
        while (p < e && (*p == ' ' || *p == '\t')) ++p;
    };
    for (int i = 1; i <= count; ++i) {
        skipBlanks();
        if (p == e) return;  // the end: the slots behind keep their values
        const char* start = p;
        std::string_view value;
        if (*p == '"' || *p == '\'') {
            // Quoted values are short: a plain loop finds the closing quote
            // sooner than a library call.
            const char* c = p + 1;
            while (c < e && *c != *p) ++c;
            if (c == e) return splitLineFully(line, table, count);
            value = {start + 1, static_cast<std::size_t>(c - start - 1)};
            p = c + 1;
        } else {
            while (p < e && *p != ',' && *p != ' ' && *p != '\t') {
                if (*p == '/' || *p == '*') return splitLineFully(line, table, count);
                ++p;
            }
            // Nothing before the comma: a null value.
            if (p == start) return splitLineFully(line, table, count);
            value = {start, static_cast<std::size_t>(p - start)};
        }
        skipBlanks();
        // A doubled quote, or a value led by blanks alone: the full rules.
        if (p < e && *p != ',') return splitLineFully(line, table, count);
        // The ids of a section stand in every record: a slot that already
        // holds the value (and blanks behind it) is left as it is.
        Text<kSlotCap>& slot = table.slot[i];
        if (static_cast<std::size_t>(slot.hi) != value.size() || !sameBytes(slot.b, value.data(), value.size()))
            slot.ref().assign(value);
        if (p < e) ++p;  // the comma
    }
}

void writeRecordLine(GisDbfState& dbf, std::string_view line, SlotTable& table, bool large) {
    const std::string_view writeFailed =
        large ? "ERROR 0417 - Writing large .dbf record." : "ERROR 0417 - Writing .dbf record.";
    const int count = std::min(dbf.fieldCount, kDbfMaxFields);
    splitLine(line, table, count);
    std::size_t length = 1;
    for (int f = 1; f <= count; ++f) length += static_cast<std::size_t>(std::clamp(dbf.widths[f], 0, kSlotCap - 1));
    // The record is laid straight into the unit's buffer when it fits there
    // with the slack of the block copies, else here and then written.
    char* const record = [&] {
        char* room = unitBytesRoom(dbf.dbfUnit, length + kCopyBlock);
        return room != nullptr ? room : gRecord;
    }();
    record[0] = ' ';  // not deleted
    // Fields are written left to right, so what a block copy writes past the
    // end of a field is overwritten by the fields after it, or lies past the
    // record.
    std::size_t at = 1;
    for (int f = 1; f <= count; ++f) {
        const int w = std::clamp(dbf.widths[f], 0, kSlotCap - 1);
        const Text<kSlotCap>& slot = table.slot[f];
        char* p = record + at;
        if (dbf.types[f] == 'C' || dbf.types[f] == 'c') {
            // Past its value a slot holds blanks (or, never filled, zero bytes
            // that count as text), so the first w bytes are the field as it is.
            copyBlocks(p, slot.b, w);
        } else {
            // Numbers are right-justified text: the first w bytes without
            // their trailing blanks. The slot's own trimmed length bounds
            // them, so the padding is never scanned.
            const int held = std::min(slot.len(), w);
            const int n = trimmedLength(slot.full().substr(0, static_cast<std::size_t>(held)));
            blankBlocks(p, w - n);
            copyBlocks(p + (w - n), slot.b, n);
        }
        at += static_cast<std::size_t>(w);
    }
    if (record != gRecord) {
        unitBytesWritten(dbf.dbfUnit, at);
    } else if (unitWriteBytes(dbf.dbfUnit, gRecord, at) != IoStatus::ok) {
        gisStopMessage(writeFailed);
    }
}

struct FieldMapping {
    char letter;
    int32_t width;
    int32_t decimals;
};

// The letter, width and decimals of an attribute type word; false when the
// word is not one of the table.
bool mapType(std::string_view typeWord, int32_t width, FieldMapping& m) {
    Text<24> t;
    TRIMF(t, typeWord);
    UPPERCASE(t, t);
    const std::string_view u = t.view();
    if (u.starts_with("CHAR")) m = {'C', width, 0};
    else if (u.starts_with("LOGICAL")) m = {'C', 1, 0};
    else if (u.starts_with("FLOAT")) m = {'N', 16, 5};
    else if (u.starts_with("INTEGER")) m = {'N', 8, 0};
    else if (u.starts_with("DECIMAL")) m = {'N', width, 0};
    else return false;
    return true;
}

constexpr std::string_view kHeaderFailed = "ERROR 0413 - Writing .dbf file header.";

}  // namespace

int32_t i1u(int32_t value) {
    if (value > 255) gisStopNotHere("i1u: i4 outside range");
    return value > 127 ? value - 256 : value;
}

int32_t i2u(int32_t value) {
    if (value > 65535) gisStopNotHere("i2u: i4 outside range");
    return value > 32767 ? value - 65536 : value;
}

void dbfWriteHeader(const GisAttributes& a, GisDbfState& dbf) {
    if (dbf.dbfUnit < 1) return;
    bool ok = unitRewind(dbf.dbfUnit) == IoStatus::ok;
    dbf.recordCount = a.nrecords;
    dbf.fieldCount = a.n;
    if (dbf.fieldCount > kDbfMaxFields)
        gisStopMessage("ERROR 0411 - Exceeded maximum number of dbf Fields trying to write dbf file.");
    if (dbf.fieldCount < 1) gisStopMessage("ERROR 0319 - No attributes specified when writing .dbf file.");

    int64_t total = 0;
    for (int i = 1; i <= dbf.fieldCount; ++i) {
        Text<32> lead, clean;
        TRIMF(lead, a.name[i]);
        CLEANATTRIBUTENAME(clean, lead);
        dbf.names[i] = trimmed(clean.view().substr(0, std::min<std::size_t>(clean.view().size(), 10)));
        FieldMapping m{};
        if (!mapType(a.type[i], a.width[i], m)) gisStopNotHere("Unrecognised DBF field");
        dbf.types[i] = m.letter;
        dbf.widths[i] = m.width;
        dbf.decimals[i] = m.decimals;
        total += m.width;
    }
    // The words say 32767 and the test is 65534: the system prints them so.
    if (total > 65534) gisStopNotHere("dbfTotLen>32767");
    dbf.recordLength = static_cast<int32_t>(total);

    int year = 0, month = 0, day = 0;
    platformLocalDate(year, month, day);
    unsigned char h[32] = {};
    h[0] = 3;
    h[1] = static_cast<unsigned char>(i1u(year - 1900));
    h[2] = static_cast<unsigned char>(i1u(month));
    h[3] = static_cast<unsigned char>(i1u(day));
    putLE32(h + 4, dbf.recordCount);
    putLE16(h + 8, i2u(32 * dbf.fieldCount + 33));
    putLE16(h + 10, i2u(dbf.recordLength + 1));
    ok = unitWriteBytes(dbf.dbfUnit, h, sizeof h) == IoStatus::ok && ok;
    if (!ok) gisStopMessage(kHeaderFailed);

    for (int i = 1; i <= dbf.fieldCount; ++i) {
        const int32_t w = dbf.widths[i];
        if (w < 1 || w > 255) {
            GisLine l;
            l << "ERROR 0412 - dbf field length of " << countText(w)
              << " is outside allowable range of 1 to 255 when writing dbf file.";
            gisStopMessage(l.view());
        }
        unsigned char d[32] = {};
        const std::string_view nm = dbf.names[i].trimmed();
        std::memcpy(d, nm.data(), std::min<std::size_t>(nm.size(), 11));
        d[11] = static_cast<unsigned char>(dbf.types[i]);
        d[16] = static_cast<unsigned char>(i1u(w));
        d[17] = static_cast<unsigned char>(i1u(dbf.decimals[i]));
        if (unitWriteBytes(dbf.dbfUnit, d, sizeof d) != IoStatus::ok) gisStopMessage(kHeaderFailed);
    }
    const unsigned char end = 13;
    if (unitWriteBytes(dbf.dbfUnit, &end, 1) != IoStatus::ok) gisStopMessage(kHeaderFailed);
}

void dbfWriterReset() {
    gSlots = SlotTable{};
    gSlotsLarge = SlotTable{};
}

void dbfdataline(GisDbfState& dbf) { writeRecordLine(dbf, gisRecordLine.view(), gSlots, false); }

void dbfdatalinelarge(GisDbfState& dbf) { writeRecordLine(dbf, gisRecordLineLarge.view(), gSlotsLarge, true); }

void dbfWriteRecord(int32_t gisID, const GisObject& o, bool large) {
    auto one = [&](GisDbfState& dbf) {
        ++dbf.writtenCount;
        if (large) dbfdatalinelarge(dbf);
        else dbfdataline(dbf);
    };
    const int32_t set = shpSetOf(o);
    // Worded unlike the other stops of this kind, as the system prints them.
    if (set == kShpSetNone)
        gisStopMessage(large ? "Should not be here [gisWriteRecordLarge-dbf].  Please contact " REACHMAP_SUPPORT "."
                             : "Should not be here [gisWriteRecord-dbf].  Please contact " REACHMAP_SUPPORT ".");
    if (set == kShpSetEvery) {
        for (int32_t k = kShpSetPoints; k <= kShpSetRegions; ++k)
            if (gisDbf[gisID][k].dbfUnit > 0) one(gisDbf[gisID][k]);
        return;
    }
    one(gisDbf[gisID][set]);
}

void dbfFinish(GisDbfState& dbf) {
    if (dbf.dbfUnit < 1) return;
    const unsigned char endMark = 26;
    unsigned char count[4];
    putLE32(count, dbf.writtenCount);
    bool ok = unitWriteBytes(dbf.dbfUnit, &endMark, 1) == IoStatus::ok;
    ok = unitSeek(dbf.dbfUnit, 4) == IoStatus::ok && ok;
    ok = unitWriteBytes(dbf.dbfUnit, count, sizeof count) == IoStatus::ok && ok;
    ok = unitFlush(dbf.dbfUnit) == IoStatus::ok && ok;
    if (!ok) gisStopMessage("ERROR 0413 - Rewriting .dbf file header with final information.");
    dbf.recordCount = dbf.writtenCount;
    CLOSER(dbf.dbfUnit);
}
