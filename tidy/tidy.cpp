#include "tidy/tidy.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <unordered_map>

#include "driver/sdf_scan.hpp"
#include "driver/section_export.hpp"
#include "driver/section_parser.hpp"
#include "gis/gis.hpp"
#include "text/freeformat.hpp"
#include "text/linebuf.hpp"
#include "text/numbers.hpp"
#include "text/strings.hpp"

namespace {

// The keywords each phase acts on; a line that holds one of them without
// starting with it is taken for a keyword line it is not.
constexpr std::string_view kStreamKeys[] = {sdfKey::reach, sdfKey::centreline, sdfKey::endNetwork,
                                            sdfKey::endNetworkJoined};
constexpr std::string_view kSectionKeys[] = {sdfKey::section,     sdfKey::cutLine,         sdfKey::nValues,
                                             sdfKey::levees,      sdfKey::surfaceLine,     sdfKey::end,
                                             sdfKey::endSections, sdfKey::endNetworkJoined};

// The section phase's tests in their order; a block's rows end at a line whose
// keyword test comes no later than the block's own, that keyword is lost.
enum Test { tSection = 2, tCut = 3, tNValues = 4, tLevees = 5, tSurface = 6 };
constexpr std::string_view kBlockKey[] = {
    {}, {}, sdfKey::section, sdfKey::cutLine, sdfKey::nValues, sdfKey::levees, sdfKey::surfaceLine};
constexpr const char* kBlockName[] = {
    "", "", "CROSS-SECTION:", "CUT LINE", "NVALUES", "LEVEE POSITIONS", "SURFACE LINE"};
constexpr const char* kSub[] = {"", "", "", "GetSdfCutline", "GetSdfnVals", "GetSdfLevees", "GetSdfSurfaceLine"};

bool has(std::string_view line, std::string_view key) { return FLAGEXISTS(line, key); }

std::string_view leading(std::string_view s) {
    std::size_t i = 0;
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
    return s.substr(i);
}

// The line, leading blanks dropped, starts with `key`.
bool labelled(std::string_view line, std::string_view key) { return findNoCase(leading(line), key) == 0; }

bool blankLine(std::string_view line) { return leading(line).empty(); }

// A value that does not fit `width` columns with `decimals` decimals shows as
// asterisks; the field writer itself decides, small values skip the call.
bool stars(int width, int decimals, double v) {
    if (std::isfinite(v) && std::fabs(v) < std::pow(10.0, width - decimals - 3)) return false;
    char b[64];
    putFixed(b, width, decimals, v);
    return b[0] == '*';
}

// Built by appending: g++ 12 warns wrongly (-Wrestrict) about "\"" + s + "\"".
std::string quoteText(std::string_view s) {
    std::string q;
    q.reserve(s.size() + 2);
    q += '"';
    q += s;
    q += '"';
    return q;
}

// The converter's run over a file, fed one line at a time. Predicting, it
// stops where the converter stops. Repairing, it reports each finding, changes
// the lines it can repair and walks on; the lines it then reads are the
// repaired copy's, so its first stop is the converter's stop on the copy.
class Sim {
public:
    Sim(SdfReader& in, bool repair, const TidyOptions& opt, CopyWriter* copy,
        const std::function<void(const Finding&)>* report)
        : in_(in), repair_(repair), opt_(opt), copy_(copy), report_(report) {}

    void run() {
        streamPhase();
        if (!stopped_) sectionPhase();
        if (repair_) {
            while (!atEnd()) {
                takeInto(cur_);
                keep();
            }
            if (holding_ && copy_ != nullptr) copy_->write(held_, in_.eol());
            if (!outcome.finished) counts = stopCounts_;
        }
    }

    Outcome outcome;     // the first stop; repairing, the one on the repaired copy
    LayerCounts counts;  // what the run writes up to its stop
    int64_t findings = 0;
    int64_t droppedRows = 0;
    bool changed = false;

private:
    SdfReader& in_;
    // Lines read ahead of the current one, and lines that repairs put back in
    // front of the rest: a ring whose slots keep their storage. It holds at
    // most a section head's look-ahead.
    std::vector<SdfLine> ring_ = std::vector<SdfLine>(16);
    std::size_t head_ = 0, size_ = 0;
    bool inDone_ = false;
    bool repair_;
    TidyOptions opt_;
    CopyWriter* copy_;
    const std::function<void(const Finding&)>* report_;
    int32_t lineNo_ = 0;  // lines read, as the converter counts them
    SdfLine cur_;
    SdfLine held_;  // the copy's last line, which a repair may still drop or change
    bool holding_ = false;
    bool stopped_ = false;
    LayerCounts stopCounts_;
    // One entry per section with a .csv (its name, not its lines): the only
    // memory that grows with the file, and only with its number of sections.
    std::unordered_map<std::string, int32_t> csvNames_;
    float chainage_[kSdfMaxRows + 1];
    float scaled_[kSdfMaxLevees + 1];
    bool dropped_[kSdfMaxRows + 1];
    int32_t sectionLine_ = 0;  // input line of the current section head

    // ---- the line source: the file, with what repairs put in front of it
    SdfLine& slot(std::size_t k) { return ring_[(head_ + k) % ring_.size()]; }
    void grow() {
        std::vector<SdfLine> r(ring_.size() * 2);
        for (std::size_t k = 0; k < size_; ++k) std::swap(r[k], slot(k));
        ring_.swap(r);
        head_ = 0;
    }
    const SdfLine* peek(std::size_t k) {
        while (size_ <= k && !inDone_) {
            if (size_ == ring_.size()) grow();
            if (!in_.next(slot(size_))) {
                inDone_ = true;
                break;
            }
            ++size_;
        }
        return k < size_ ? &slot(k) : nullptr;
    }
    bool atEnd() { return peek(0) == nullptr; }
    // The next line into `l`; the slot keeps the storage `l` had.
    void takeInto(SdfLine& l) {
        peek(0);
        std::swap(l, slot(0));
        head_ = (head_ + 1) % ring_.size();
        --size_;
    }
    SdfLine take() {
        SdfLine l;
        takeInto(l);
        return l;
    }
    void putBack(const SdfLine& l) {
        if (size_ == ring_.size()) grow();
        head_ = (head_ + ring_.size() - 1) % ring_.size();
        slot(0) = l;
        ++size_;
    }
    // The current line goes into the copy; the one before it is final now.
    void keep() {
        if (copy_ == nullptr) return;
        if (holding_) copy_->write(held_, in_.eol());
        held_ = cur_;
        holding_ = true;
    }

    // The converter's read of the next line into textLine; false (and the
    // run stopped) at the end of the file inside a block.
    bool read(std::string_view where) {
        ++lineNo_;
        if (atEnd()) {
            stop(lineText("ERROR - Unexpected end of file inside ", where, " (after line ", lineNo_ - 1, ")."), "", "");
            stopped_ = true;  // nothing is left to read in either mode
            return false;
        }
        takeInto(cur_);
        textLine = cur_.seen;
        if (repair_) keep();
        return true;
    }
    // Repairs: the line just read leaves the copy, or goes back to be read
    // again behind a blank line.
    void dropCurrent() {
        holding_ = false;
        --lineNo_;
        changed = true;
    }
    void blankBeforeCurrent() {
        dropCurrent();
        putBack(cur_);
        const std::string_view e = lineEnd(cur_.raw);
        putBack({{}, std::string(e.empty() ? std::string_view("\n") : e), 0});
    }

    void finding(Kind k, std::string effect, std::string repair = {}, int32_t line = -1) {
        ++findings;
        if (report_ != nullptr) (*report_)({line >= 0 ? line : cur_.number, k, std::move(effect), std::move(repair)});
    }

    // A stop of the converter. Predicting, the run ends here; repairing, it
    // is a finding and the walk goes on.
    void stop(std::string_view message, std::string_view quoted, std::string_view what) {
        if (!repair_) {
            if (stopped_) return;
            outcome = {false, lineNo_, std::string(message), std::string(quoted)};
            stopped_ = true;
            return;
        }
        if (outcome.finished) {
            outcome = {false, lineNo_, std::string(message), std::string(quoted)};
            stopCounts_ = counts;
        }
        finding(Kind::badRow,
                std::string(what.empty() ? "" : std::string(what) + ": ") + "stops the run with " + quoteText(message));
    }

    // ---- stray keywords
    bool stray(const std::string_view* keys, std::size_t n) {
        std::string_view hit;
        for (std::size_t i = 0; i < n; ++i) {
            if (!has(cur_.seen, keys[i])) continue;
            if (labelled(cur_.seen, keys[i])) return false;
            if (hit.empty()) hit = keys[i];
        }
        if (hit.empty()) return false;
        finding(Kind::strayKeyword, "holds " + std::string(hit) + ", " + strayEffect(hit), "remove the line");
        dropCurrent();
        return true;
    }
    std::string strayEffect(std::string_view key) {
        if (key == sdfKey::centreline) {
            const SdfLine* n = peek(0);
            if (n == nullptr) return "which opens a vertex list that the end of the file cuts off";
            if (has(n->seen, sdfKey::end)) return "which writes an empty centreline";
            double x, y;
            const ReadResult r = readXY(n->seen, x, y);
            if (r == ReadResult::ok) return "which opens a vertex list: the lines behind it are read as vertices";
            return "which opens a vertex list; line " + std::to_string(n->number) + " then stops the run with " +
                   quoteText(r == ReadResult::end ? "ERROR reading data" : "ERROR - Reading following line in file:");
        }
        if (key == sdfKey::reach) return "which opens a reach block and takes the next two lines as its ids";
        if (key == sdfKey::section) return "which opens a section head and takes the next three lines as its ids";
        if (key == sdfKey::end) return "which ends a section here";
        if (key == sdfKey::endNetwork || key == sdfKey::endNetworkJoined || key == sdfKey::endSections)
            return "which ends the scan: what stands behind it is never read";
        return "which opens a " + std::string(key) + " block: the lines behind it are read as its rows";
    }

    // ---- reach and section heads
    // The converter takes the lines right behind the head keyword as its id
    // lines. When they are not there in order, but stand further on before
    // the head's first block, the repair puts them there: blank lines among
    // them go, other lines move behind them.
    void fixHead(const std::string_view* ids, std::size_t n, const std::string_view* enders, std::size_t nEnders,
                 const char* what) {
        std::size_t region = 0;
        std::vector<int> at(n, -1);
        for (;; ++region) {
            const SdfLine* l = peek(region);
            if (l == nullptr || region >= 64) break;
            bool ends = false;
            for (std::size_t e = 0; e < nEnders; ++e) ends = ends || has(l->seen, enders[e]);
            if (ends) break;
            for (std::size_t k = 0; k < n; ++k)
                if (at[k] < 0 && has(l->seen, ids[k])) {
                    at[k] = static_cast<int>(region);
                    break;
                }
        }
        bool inPlace = true;
        for (std::size_t k = 0; k < n; ++k) inPlace = inPlace && at[k] == static_cast<int>(k);
        if (inPlace) return;

        // What the converter makes of the lines as they stand: the lines
        // right behind the keyword are its id lines, whatever they hold.
        std::string missed;
        bool stationLost = false;
        for (std::size_t k = 0; k < n; ++k) {
            const SdfLine* l = peek(k);
            if (l != nullptr && has(l->seen, ids[k])) continue;
            missed += std::string(missed.empty() ? "" : ", ") + std::string(ids[k]) + " (line " +
                      (l ? std::to_string(l->number) : std::string("past the end")) + ")";
            if (ids[k] == sdfKey::station) stationLost = true;
        }
        std::string effect = "takes the " + std::to_string(n) + " lines behind it as its id lines; it misses " +
                             missed + " and keeps the value of the one before";
        if (stationLost) {
            float v = 0;
            if (readReal4(sectionRecord.stationText.view(), v) != ReadResult::ok)
                effect +=
                    ": no station is set, and the run stops at its END: with "
                    "\"ERROR - converting station to numeric field\"";
        }

        int last = -1;
        for (std::size_t k = 0; k < n; ++k) last = std::max(last, at[k]);
        if (*std::min_element(at.begin(), at.end()) < 0) {
            finding(Kind::headLines, std::string(what) + " head " + effect);
            return;
        }
        std::vector<SdfLine> taken;
        for (int i = 0; i <= last; ++i) taken.push_back(take());
        std::vector<SdfLine> order;
        for (std::size_t k = 0; k < n; ++k) order.push_back(taken[static_cast<std::size_t>(at[k])]);
        int blanks = 0, moved = 0;
        for (int i = 0; i <= last; ++i) {
            bool isId = false;
            for (std::size_t k = 0; k < n; ++k) isId = isId || at[k] == i;
            if (isId) continue;
            if (blankLine(taken[static_cast<std::size_t>(i)].seen)) {
                ++blanks;
            } else {
                order.push_back(taken[static_cast<std::size_t>(i)]);
                ++moved;
            }
        }
        for (auto it = order.rbegin(); it != order.rend(); ++it) putBack(*it);
        changed = true;
        std::string repair;
        if (blanks > 0) repair = "remove " + std::to_string(blanks) + " blank line" + (blanks > 1 ? "s" : "");
        if (moved > 0)
            repair += (repair.empty() ? "move " : " and move ") + std::to_string(moved) + " line" +
                      (moved > 1 ? "s" : "") + " behind the id lines";
        if (repair.empty()) repair = "put the id lines in order";
        finding(Kind::headLines, std::string(what) + " head " + effect, repair);
    }

    // An id value as taken: checks of what it does to names and attribute texts.
    void takeId(TextRef value, bool station) {
        if (station) takeStation(value);
        else takeValue(value);
        std::string_view v = value.trimmed();
        bool unsafe = v.find('/') != std::string_view::npos || v.find('\\') != std::string_view::npos ||
                      v.find("..") != std::string_view::npos;
        for (char c : v) unsafe = unsafe || static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
        const bool shifts = v.find('"') != std::string_view::npos || v.find(',') != std::string_view::npos;
        if (!unsafe && !shifts) return;
        if (repair_ && opt_.safeNames) {
            // Each such byte becomes '_' behind the line's first colon, and so
            // does each dot of a run of dots; the line keeps its length and its
            // line end.
            const std::string src = cur_.raw;
            const std::size_t colon = src.find(':');
            const std::size_t endAt = src.size() - lineEnd(src).size();
            for (std::size_t i = colon + 1; i < endAt; ++i) {
                const unsigned char c = static_cast<unsigned char>(src[i]);
                const bool dots =
                    c == '.' && ((i + 1 < endAt && src[i + 1] == '.') || (i > colon + 1 && src[i - 1] == '.'));
                if (c < 0x20 || c == 0x7f || c == '/' || c == '\\' || c == '"' || c == ',' || dots) cur_.raw[i] = '_';
            }
            cur_.seen = cur_.raw.substr(0, cur_.seen.size());
            if (copy_ != nullptr) held_ = cur_;
            textLine = cur_.seen;
            changed = true;
            finding(unsafe ? Kind::unsafeName : Kind::quoteInId, idEffect(v, unsafe),
                    "replace those bytes by '_' (--safe-names)");
            if (station) takeStation(value);
            else takeValue(value);
            return;
        }
        finding(unsafe ? Kind::unsafeName : Kind::quoteInId, idEffect(v, unsafe));
    }
    static std::string idEffect(std::string_view v, bool unsafe) {
        if (unsafe)
            return "the id " + quoteText(v) +
                   " puts a folder part, \"..\" or a control byte into the section's .csv name";
        return "the id " + quoteText(v) + " holds a double quote or a comma, which shifts the attribute values";
    }

    // ---- the stream phase
    void streamPhase() {
        if (atEnd()) return;
        read("the first line");  // never interpreted
        bool finished = false;
        while (!finished && !stopped_ && !atEnd()) {
            read("the stream network");
            if (repair_ && stray(kStreamKeys, std::size(kStreamKeys))) continue;
            if (has(textLine, sdfKey::reach)) {
                static constexpr std::string_view ids[] = {sdfKey::streamId, sdfKey::reachId};
                static constexpr std::string_view enders[] = {sdfKey::reach, sdfKey::centreline, sdfKey::end,
                                                              sdfKey::endNetwork, sdfKey::endNetworkJoined};
                if (repair_) fixHead(ids, 2, enders, std::size(enders), "the reach");
                if (!read("a reach block")) return;
                if (has(textLine, sdfKey::streamId)) takeId(sectionRecord.streamId, false);
                if (!read("a reach block")) return;
                if (has(textLine, sdfKey::reachId)) takeId(sectionRecord.reachId, false);
            }
            if (has(textLine, sdfKey::centreline)) {
                centreline();
                if (stopped_) return;
            }
            if (has(textLine, sdfKey::endNetwork) || has(textLine, sdfKey::endNetworkJoined)) finished = true;
        }
    }

    void centreline() {
        int32_t count = 0;
        for (;;) {
            if (!read("a CENTERLINE vertex list")) return;
            if (has(textLine, sdfKey::end)) break;
            ++count;
            if (count > kGisMaxPoints) {
                stop(lineText("ERROR - More than ", kGisMaxPoints,
                              " vertices in one CENTERLINE, more than a layer object holds. Line number: ", lineNo_),
                     "", "a vertex");
                if (stopped_) return;
                continue;
            }
            double x = 0, y = 0;
            const ReadResult r = readXY(textLine.view(), x, y);
            if (r != ReadResult::ok) {
                const bool end = r == ReadResult::end;
                stop(end ? "ERROR reading data" : "ERROR - Reading following line in file:",
                     end ? "" : textLine.trimmed(), "read as a vertex");
                if (stopped_) return;
                continue;
            }
            if (repair_ && (stars(16, 6, x) || stars(16, 6, y)))
                finding(Kind::asterisks,
                        "a vertex coordinate fills its 16-column field with asterisks in the "
                        "streams layer (.mif)");
        }
        ++counts.reaches;
        const std::size_t record = sectionRecord.streamId.trimmed().size() + sectionRecord.reachId.trimmed().size() + 5;
        if (repair_ && record > static_cast<std::size_t>(kNameCap))
            finding(Kind::longIds, "the stream and reach ids make an attribute text of " + std::to_string(record) +
                                       " bytes, past the 1000-byte record line: the streams layer gets it cut");
    }

    // ---- the section phase
    void sectionPhase() {
        SectionRecord& rec = sectionRecord;
        bool finished = false;
        while (!finished && !stopped_ && !atEnd()) {
            read("the cross-sections");
            if (repair_ && stray(kSectionKeys, std::size(kSectionKeys))) continue;
            if (has(textLine, sdfKey::section)) {
                if (repair_ && (rec.hasCutLine || rec.hasNValues || rec.hasLevees || rec.hasSurfaceLine))
                    finding(Kind::missingEnd, "the section before (line " + std::to_string(sectionLine_) +
                                                  ") has no END: line: its blocks pass on to this section");
                sectionLine_ = cur_.number;
                static constexpr std::string_view ids[] = {sdfKey::streamId, sdfKey::reachId, sdfKey::station};
                static constexpr std::string_view enders[] = {
                    sdfKey::section,     sdfKey::cutLine, sdfKey::nValues,     sdfKey::levees,
                    sdfKey::surfaceLine, sdfKey::end,     sdfKey::endSections, sdfKey::endNetworkJoined};
                if (repair_) fixHead(ids, 3, enders, std::size(enders), "the section");
                if (!read("a cross-section head")) return;
                if (has(textLine, sdfKey::streamId)) takeId(rec.streamId, false);
                if (!read("a cross-section head")) return;
                if (has(textLine, sdfKey::reachId)) takeId(rec.reachId, false);
                if (!read("a cross-section head")) return;
                if (has(textLine, sdfKey::station)) takeId(rec.stationText, true);
            }
            if (has(textLine, sdfKey::cutLine)) {
                rec.hasCutLine = true;
                block(tCut);
            }
            if (!stopped_ && has(textLine, sdfKey::nValues)) {
                rec.hasNValues = true;
                block(tNValues);
            }
            if (!stopped_ && has(textLine, sdfKey::levees)) {
                rec.hasLevees = true;
                block(tLevees);
                if (!opt_.trim) rec.hasLevees = false;
            }
            if (!stopped_ && has(textLine, sdfKey::surfaceLine)) {
                rec.hasSurfaceLine = true;
                block(tSurface);
            }
            if (stopped_) return;
            if (has(textLine, sdfKey::end)) {
                process();
                rec.hasCutLine = rec.hasNValues = rec.hasLevees = rec.hasSurfaceLine = false;
                if (stopped_) return;
            }
            if (has(textLine, sdfKey::endSections) || has(textLine, sdfKey::endNetworkJoined)) finished = true;
        }
        if (repair_ && (rec.hasCutLine || rec.hasNValues || rec.hasLevees || rec.hasSurfaceLine))
            finding(Kind::missingEnd, "the section has no END: line: the converter never writes it", "", sectionLine_);
    }

    // A keyword in the line that ended a block whose test this pass has
    // already made: its block is passed over.
    std::string_view lostKeyword(int test) const {
        for (int t = tSection; t <= test; ++t)
            if (has(textLine, kBlockKey[t])) return kBlockKey[t];
        return {};
    }

    // A row the surface line block cannot use, x and y without an
    // elevation: repairing, it is dropped and counted.
    bool noElevation(bool ends) {
        double x, y;
        if (readXY(textLine.view(), x, y) != ReadResult::ok) return false;
        for (std::string_view k : kSectionKeys)
            if (has(textLine, k)) return false;
        finding(Kind::noElevation,
                "a surface row without a usable elevation: " +
                    std::string(ends ? "the converter ends the block here and skips the rows behind it"
                                     : "the converter stops with \"ERROR - Reading following line in file in sub "
                                       "GetSdfSurfaceLine\""),
                "drop the row");
        dropCurrent();
        ++droppedRows;
        return true;
    }

    void block(int test) {
        int32_t count = 0;
        const std::string where = std::string(test == tCut       ? "a "
                                              : test == tNValues ? "an "
                                                                 : "a ") +
                                  kBlockName[test] + " block";
        for (;;) {
            if (!read(where)) return;
            const std::string_view line = textLine.view();
            const bool ends = test == tSurface  ? endsSurfaceBlock(line)
                              : test == tLevees ? endsLeveeBlock(line)
                                                : endsValueBlock(line);
            if (ends) {
                if (repair_ && test == tSurface && noElevation(true)) continue;
                const std::string_view lost = lostKeyword(test);
                if (repair_ && !lost.empty()) {
                    const std::string effect = "its " + std::string(lost) + " directly behind the " + kBlockName[test] +
                                               " block is passed over: that block is lost";
                    if (test == tLevees) {
                        finding(Kind::lostBlock, effect);
                    } else {
                        finding(Kind::lostBlock, effect, "put a blank line in front of it");
                        blankBeforeCurrent();
                        continue;
                    }
                }
                finishBlock(test, count);
                return;
            }
            if (!row(test, count)) return;
        }
    }

    // A keyword or text line that a block's rows run on into.
    bool textLineNow() const {
        const std::string_view t = leading(textLine.view());
        return (!t.empty() && isLetter(t[0])) || !lostKeyword(tSurface).empty() || has(t, sdfKey::end) ||
               has(t, sdfKey::endSections) || has(t, sdfKey::endNetworkJoined);
    }

    // One row of a block; false when the run stops here.
    bool row(int test, int32_t& count) {
        SectionRecord& rec = sectionRecord;
        const std::string_view line = textLine.view();
        bool ok = true;
        if (test == tCut) {
            ++count;
            if (count <= kSdfMaxRows) {
                ok = readXY(line, rec.cutX[count], rec.cutY[count]) == ReadResult::ok;
                if (ok && repair_ && (stars(16, 6, rec.cutX[count]) || stars(16, 6, rec.cutY[count])))
                    finding(
                        Kind::asterisks,
                        "a cut line coordinate fills its 16-column field with asterisks in the cut_line layer (.mif)");
            }
        } else {
            const int32_t limit = test == tLevees ? kSdfMaxLevees : kSdfMaxRows;
            if (count == limit) {
                stop(lineText("ERROR - More than ", limit, " rows in a ", kBlockName[test],
                              " block, more than the section tables hold. Line number: ", lineNo_),
                     "", "a row");
                return false;
            }
            ++count;
            if (test == tNValues) {
                ok = readNValueRow(line, rec.nValueStation[count], rec.nValue[count]);
                if (ok && repair_ && stars(8, 4, rec.nValue[count]))
                    finding(Kind::asterisks,
                            "Manning's n fills its 8-column field with asterisks in the surf_pts layer and the .csv");
            } else if (test == tSurface) {
                ok = readSurfaceRow(line, rec.surfX[count], rec.surfY[count], rec.surfZ[count]);
                if (ok && repair_) {
                    std::string where;
                    if (stars(16, 6, rec.surfX[count]) || stars(16, 6, rec.surfY[count]))
                        where =
                            "a coordinate fills its 16-column field with asterisks in the surf_pts, surf_line "
                            "and end_pts layers (.mif)";
                    if (stars(12, 3, rec.surfZ[count]))
                        where += std::string(where.empty() ? "" : "; ") +
                                 "the elevation fills its 12-column field with asterisks in the surf_pts and "
                                 "end_pts layers and the .csv";
                    if (!where.empty()) finding(Kind::asterisks, where);
                }
            } else {
                bool noHeight = false;
                ok = readLeveeRow(line, rec.leveeName[count], rec.leveeStation[count], rec.leveeElevation[count],
                                  noHeight);
                if (ok && repair_ && stars(12, 3, rec.leveeElevation[count]))
                    finding(Kind::asterisks,
                            "the levee elevation fills its 12-column field with asterisks in the levee_pts layer");
            }
        }
        if (ok) return true;
        if (repair_ && test == tSurface && noElevation(false)) {
            --count;
            return true;
        }
        if (repair_ && test != tLevees && textLineNow()) {
            finding(Kind::swallowedLine,
                    std::string("read as a row of the ") + kBlockName[test] +
                        " block before it: stops the run with \"ERROR - Reading following line in file in sub " +
                        kSub[test] + "\"",
                    "put a blank line in front of it");
            --count;
            blankBeforeCurrent();
            return true;
        }
        stop(lineText("ERROR - Reading following line in file in sub ", kSub[test]), textLine.trimmed(),
             std::string("read as a row of the ") + kBlockName[test] + " block");
        if (!repair_) return false;
        --count;  // walking on: the row is left out
        return true;
    }

    void finishBlock(int test, int32_t count) {
        SectionRecord& rec = sectionRecord;
        if (test == tCut) rec.cutCount = count;
        if (test == tNValues) rec.nValueCount = count;
        if (test == tLevees) rec.leveeCount = count;
        if (test == tSurface) rec.surfCount = count;
    }

    // What the section's END: line makes the converter write.
    void process() {
        SectionRecord& rec = sectionRecord;
        float station = 0;
        if (readReal4(rec.stationText.view(), station) != ReadResult::ok) {
            stop("ERROR - converting station to numeric field", "", "ends a section without a station");
            if (!repair_) return;
        }
        ++counts.sections;
        const std::size_t ids =
            rec.streamId.trimmed().size() + rec.reachId.trimmed().size() + rec.stationText.trimmed().size();
        if (rec.hasCutLine) ++counts.cutLine;
        if (!rec.hasSurfaceLine) {
            if (repair_ && ids + 8 > static_cast<std::size_t>(kNameCap))
                finding(Kind::longIds, "the section's ids run past the 1000-byte record line of its cut line", "",
                        sectionLine_);
            return;
        }
        const int32_t n = rec.surfCount;
        ++counts.csv;
        surfaceChainage(rec, chainage_);
        const float length = n >= 1 ? chainage_[n] : 0.0f;
        for (int32_t j = 1; j <= rec.leveeCount; ++j) scaled_[j] = rec.leveeStation[j] * length;
        for (int32_t i = 1; i <= n; ++i) dropped_[i] = false;
        const bool levees = rec.hasLevees && rec.leveeCount > 0 && n > 0;
        if (levees) trimToMarkers(rec, chainage_, scaled_, dropped_);
        int64_t kept = 0;
        for (int32_t i = 1; i <= n; ++i) kept += dropped_[i] ? 0 : 1;
        counts.surfPts += kept;
        if (kept >= 2) ++counts.surfLine;
        if (n >= 1) counts.endPts += 2;
        if (levees) counts.leveePts += rec.leveeCount;
        if (!repair_) return;

        Text<kNameCap> name;
        sectionCsvName(name, rec);
        const std::string key(name.trimmed());
        auto [it, fresh] = csvNames_.emplace(key, sectionLine_);
        if (!fresh)
            finding(Kind::nameCollision,
                    "its .csv name " + quoteText(key) + " is the one of the section at line " +
                        std::to_string(it->second) + ": this section's file replaces that one",
                    "", sectionLine_);
        if (ids + 30 > static_cast<std::size_t>(kNameCap))
            finding(Kind::longIds, "the section's ids run past the 1000-byte record line of its points", "",
                    sectionLine_);
        if (n >= 1 && stars(12, 3, chainage_[n]))
            finding(Kind::asterisks, "the chainage fills its 12-column field with asterisks in the .csv", "",
                    sectionLine_);
        if (levees) {
            for (int32_t j = 1; j <= rec.leveeCount; ++j) {
                double x = 0, y = 0;
                placeMarker(rec, chainage_, scaled_[j], x, y);
                if (stars(16, 6, x) || stars(16, 6, y)) {
                    finding(Kind::asterisks,
                            std::string("levee marker ") + std::to_string(j) + " lands on " +
                                (std::isnan(x) || std::isnan(y) ? "no number (its fraction is not a number)"
                                                                : "a coordinate too large") +
                                ": asterisks in the levee_pts layer (.mif)",
                            "", sectionLine_);
                    break;
                }
            }
        }
    }
};

}  // namespace

const char* kindName(Kind k) {
    switch (k) {
        case Kind::strayKeyword: return "stray-keyword";
        case Kind::headLines: return "head-lines";
        case Kind::swallowedLine: return "swallowed-line";
        case Kind::lostBlock: return "lost-block";
        case Kind::noElevation: return "no-elevation";
        case Kind::missingEnd: return "missing-end";
        case Kind::badRow: return "bad-row";
        case Kind::unsafeName: return "unsafe-name";
        case Kind::quoteInId: return "quote-in-id";
        case Kind::longIds: return "long-ids";
        case Kind::asterisks: return "asterisks";
        case Kind::nameCollision: return "name-collision";
    }
    return "?";
}

TidyResult tidySdf(const std::string& path, const TidyOptions& options, CopyWriter* copy,
                   const std::function<void(const Finding&)>& report) {
    TidyResult r;
    {
        SdfReader in(path);
        sdfScanReset();  // the scan starts from the state of a fresh run of the converter
        auto sim = std::make_unique<Sim>(in, true, options, copy, &report);
        sim->run();
        r.findings = sim->findings;
        r.droppedRows = sim->droppedRows;
        r.changed = sim->changed;
        r.counts = sim->counts;
        r.after = sim->outcome;
    }
    // Unchanged, the copy is the file; changed, the file is read once more,
    // as it is, up to where the converter stops on it.
    r.before = r.after;
    if (r.changed) {
        SdfReader in(path);
        sdfScanReset();
        auto sim = std::make_unique<Sim>(in, false, options, nullptr, nullptr);
        sim->run();
        r.before = sim->outcome;
    }
    return r;
}
