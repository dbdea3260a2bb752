#include "tidy/sdf_doc.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "runtime/console.hpp"
#include "runtime/units.hpp"
#include "text/text.hpp"

namespace fs = std::filesystem;

namespace {

// The unit manager reports each open and close on the console; sdftidy's
// standard output is its report, so those lines go to /dev/null.
struct QuietConsole {
    int saved = -1;
    QuietConsole() {
        std::cout.flush();
        std::fflush(stdout);
        conFlush();
        const int null = ::open("/dev/null", O_WRONLY);
        if (null < 0) return;
        saved = ::dup(1);
        ::dup2(null, 1);
        ::close(null);
    }
    ~QuietConsole() {
        conFlush();
        if (saved < 0) return;
        ::dup2(saved, 1);
        ::close(saved);
    }
};

}  // namespace

std::string_view lineEnd(std::string_view raw) {
    if (raw.ends_with("\r\n")) return "\r\n";
    if (raw.ends_with("\n")) return "\n";
    return {};
}

bool loadSdf(const std::string& path, SdfDoc& doc, std::string& error) {
    std::error_code ec;
    const auto status = fs::status(path, ec);
    if (ec || !fs::exists(status)) {
        error = "cannot open " + path + ": no such file";
        return false;
    }
    if (fs::is_directory(status)) {
        error = path + " is a folder, not an SDF file";
        return false;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot open " + path + " for reading";
        return false;
    }
    doc.bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (in.bad()) {
        error = "cannot read " + path;
        return false;
    }
    if (doc.bytes.empty()) {
        error = path + " is empty: there is nothing to convert";
        return false;
    }
    if (doc.bytes.find('\0') != std::string::npos) {
        error = path + " holds NUL bytes: a binary file, not an SDF text file";
        return false;
    }

    // The lines are split by the converter's own reading of a unit, so that
    // line numbers and line contents are the ones it sees.
    static bool started = false;
    if (!started) {
        FILEINIT(1000);
        fileUnitSettings.pauseOnPrematureExit = false;
        started = true;
    }
    QuietConsole quiet;
    int32_t unit = 0;
    OPENERFREE(unit, "I ", path, 0);
    doc.seen.clear();
    doc.seen.reserve(doc.bytes.size());  // never more than the file: views stay valid
    doc.lines.clear();
    Text<kNameCap> line;
    int64_t start = 0;
    for (int32_t n = 1;; ++n) {
        const IoStatus st = unitReadLine(unit, line);
        if (st == IoStatus::end) break;
        if (st == IoStatus::error) {
            CLOSER(unit);
            error = "cannot read line " + std::to_string(n) + " of " + path;
            return false;
        }
        const int64_t stop = unitTell(unit);
        const std::string_view raw(doc.bytes.data() + start, static_cast<std::size_t>(stop - start));
        if (raw.size() - lineEnd(raw).size() > static_cast<std::size_t>(kNameCap)) {
            CLOSER(unit);
            error = path + ": line " + std::to_string(n) + " is " + std::to_string(raw.size() - lineEnd(raw).size()) +
                    " bytes long; the converter reads only the first " + std::to_string(kNameCap) +
                    " bytes of a line, so this is no SDF file it can read";
            return false;
        }
        const std::string_view s = line.trimmed();
        const std::size_t at = doc.seen.size();
        doc.seen.append(s);
        doc.lines.push_back({std::string_view(doc.seen.data() + at, s.size()), raw, n});
        start = stop;
    }
    CLOSER(unit);
    for (const SdfLine& l : doc.lines) {
        if (!lineEnd(l.raw).empty()) {
            doc.eol = lineEnd(l.raw);
            break;
        }
    }
    return true;
}
