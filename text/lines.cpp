#include "text/lines.hpp"

#include <algorithm>
#include <cstring>

#include "text/strings.hpp"

namespace {

// Working space of the routines below; every input is copied in before an
// output is written, so inputs and outputs may be the same text.
Text<kWorkCap> gLine;
Text<kWorkCap> gKey;
Text<kWorkCap> gOld;
Text<kWorkCap> gNew;
char gBuild[kWorkCap];

std::string_view trimBoth(std::string_view s) {
    s = trimmed(s);
    std::size_t i = 0;
    while (i < s.size() && s[i] == ' ') ++i;
    return s.substr(i);
}

// The bytes of `s` from 0-based index `from`; nothing beyond its end.
std::string_view from(std::string_view s, std::size_t at) { return at < s.size() ? s.substr(at) : std::string_view(); }

void dropLeadingBlanks(TextRef line) {
    const int n = line.len();
    int i = 0;
    while (i < n && line.data[i] == ' ') ++i;
    if (i == 0) return;
    std::memmove(line.data, line.data + i, static_cast<std::size_t>(n - i));
    std::memset(line.data + (n - i), ' ', static_cast<std::size_t>(i));
    *line.hi = n - i;
}

// FLAGEXISTS of "{prefix}{keyword}" with the keyword trimmed.
bool hasPhrase(std::string_view line, std::string_view prefix, std::string_view keyword) {
    gKey.clear();
    gKey.ref().assign(prefix);
    // The prefix ends in a blank, which append would not keep: write behind it.
    const std::string_view k = trimBoth(keyword);
    const std::size_t room = static_cast<std::size_t>(kWorkCap) - prefix.size();
    const std::size_t n = k.size() < room ? k.size() : room;
    std::memcpy(gKey.b + prefix.size(), k.data(), n);
    gKey.ref().touched(static_cast<int>(prefix.size() + n));
    return FLAGEXISTS(line, gKey.view());
}

// Replaces `oldLen` bytes at `p` of gBuild[0, len) by `rep`, cut at the
// working capacity; gives the new length.
std::size_t replaceAt(std::size_t len, std::size_t p, std::size_t oldLen, std::string_view rep) {
    const std::size_t cap = static_cast<std::size_t>(kWorkCap);
    const std::size_t tailFrom = p + oldLen;
    const std::size_t tailLen = len - tailFrom;
    const std::size_t repLen = rep.size() < cap - p ? rep.size() : cap - p;
    const std::size_t tailTo = p + repLen;
    const std::size_t keep = tailLen < cap - tailTo ? tailLen : cap - tailTo;
    if (keep > 0) std::memmove(gBuild + tailTo, gBuild + tailFrom, keep);
    if (repLen > 0) std::memcpy(gBuild + p, rep.data(), repLen);
    return tailTo + keep;
}

std::size_t loadBuild(std::string_view s) {
    s = trimmed(s);
    const std::size_t n = s.size() < static_cast<std::size_t>(kWorkCap) ? s.size() : kWorkCap;
    std::memmove(gBuild, s.data(), n);
    return n;
}

}  // namespace

bool COMMENTLINE(TextRef line) {
    dropLeadingBlanks(line);
    const int n = line.len();
    const bool comment = n == 0 || line.data[0] == '#' || line.data[0] == '!';
    for (int k = 0; k < n; ++k) {
        if (line.data[k] == '#' || line.data[k] == '!') {
            std::memset(line.data + k, ' ', static_cast<std::size_t>(n - k));
            *line.hi = k;
            line.len();
            break;
        }
    }
    return comment;
}

bool NUMBERLINE(TextRef line) {
    dropLeadingBlanks(line);
    if (line.len() == 0) return true;
    const char c = line.data[0];
    return isDigit(c) || c == '-' || c == '.';
}

bool READGIS(std::string_view line, std::string_view keyword) {
    return hasPhrase(line, "Read MI ", keyword) || hasPhrase(line, "Read GIS ", keyword);
}

bool WRITEGIS(std::string_view line, std::string_view keyword) {
    return hasPhrase(line, "Write MI ", keyword) || hasPhrase(line, "Write GIS ", keyword);
}

bool READROWCOL(std::string_view line, std::string_view keyword) {
    return hasPhrase(line, "Read MID ", keyword) || hasPhrase(line, "Read RowCol ", keyword);
}

bool CHECKLINE(std::string_view line, std::string_view key, std::string_view separator, int32_t column, TextRef value,
               TextRef command) {
    gLine = line;
    gKey = trimBoth(key);
    const std::string_view t = gLine.view();
    const std::size_t col = column > 0 ? static_cast<std::size_t>(column) : 0;
    bool found = false;
    if (trimmedLength(separator) > 0) {
        // Bytes behind the mark are blanks, so a separator that ends in
        // blanks may end there too.
        const std::size_t reach = std::min<std::size_t>(t.size() + separator.size(), kWorkCap);
        const std::size_t p = gLine.full().substr(0, reach).find(separator);
        if (p != std::string_view::npos) {
            found = true;
            value.assign(from(t, p + separator.size()));
            command.assign(t.substr(0, std::min(p, t.size())));
        } else if (col > 0) {
            value.assign(from(t, col));
            command.assign(t.substr(0, std::min(col, t.size())));
        } else {
            value.clear();
            command.assign(t);
        }
    } else {
        value.assign(from(t, col));
        command.assign(t.substr(0, std::min(col, t.size())));
    }
    const std::string_view k = gKey.trimmed();
    const bool keyMatches = k == "*" || findNoCase(command.trimmed(), k) >= 0;
    return keyMatches && (command.len() > 0 || (column == 0 && !found));
}

void REPLACE(TextRef out, std::string_view string, std::string_view old, std::string_view replacement) {
    gOld = trimBoth(old);
    gNew = trimBoth(replacement);
    std::size_t len = loadBuild(string);
    const std::string_view o = gOld.trimmed();
    // An empty `old` has no place to be found.
    const long p = o.empty() ? -1 : findNoCase({gBuild, len}, o);
    if (p >= 0) len = replaceAt(len, static_cast<std::size_t>(p), o.size(), gNew.trimmed());
    out.assign({gBuild, len});
}

void REPLACEALL(TextRef out, std::string_view string, std::string_view old, std::string_view replacement) {
    gOld = trimBoth(old);
    gNew = trimBoth(replacement);
    std::size_t len = loadBuild(string);
    const std::string_view o = gOld.trimmed();
    const std::string_view n = gNew.trimmed();
    if (!o.empty()) {
        // A replacement that holds `old` would be found again without end:
        // then each hit is replaced once and the search goes on behind it.
        const bool holdsOld = findNoCase(n, o) >= 0;
        std::size_t at = 0;
        // Each pass removes a hit of the text as it stood; the bound only
        // matters for pathological pairs that keep making new hits.
        for (int guard = 0; guard < kWorkCap; ++guard) {
            const long p = findNoCase({gBuild, len}, o, at);
            if (p < 0) break;
            const auto hit = static_cast<std::size_t>(p);
            len = replaceAt(len, hit, o.size(), n);
            // The text before the hit held no hit, so a new one can only
            // start where it reaches into the replacement.
            at = holdsOld ? hit + n.size() : (hit + 1 > o.size() ? hit + 1 - o.size() : 0);
            if (at > len) break;
        }
    }
    out.assign({gBuild, len});
}
