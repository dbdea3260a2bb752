// sdftidy: checks an SDF file against the converter's reading rules before a
// conversion, reports what a run would do with it, and writes a repaired copy.
//
//   sdftidy [--json] [--safe-names] [--notrim] file.sdf [...] [-o fixed.sdf]
//
// Exit status: 0 when the converter finishes and uses all of every file; 1
// when something was found (with -o the copy is written); 2 for a usage or
// I/O error, with one message on standard error. The status is the point of
// the program, so it returns from main rather than through the converter's
// exit routine, which always ends with 0.
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "tidy/tidy.hpp"

namespace fs = std::filesystem;

namespace {

constexpr const char* kUsage =
    "usage: sdftidy [--json] [--safe-names] [--notrim] file.sdf [...] [-o fixed.sdf]\n"
    "  checks SDF files before conversion; with -o (one file only) writes a repaired copy";

int fail(const std::string& message) {
    std::cerr << "sdftidy: " << message << "\n";
    return 2;
}

std::string json(std::string_view s) {
    std::string o = "\"";
    for (char ch : s) {
        const unsigned char c = static_cast<unsigned char>(ch);
        if (c == '"' || c == '\\') {
            o += '\\';
            o += ch;
        } else if (c < 0x20 || c >= 0x7f) {
            // Bytes above 127 are read as Latin-1, the code page of the ids.
            char b[8];
            std::snprintf(b, sizeof b, "\\u%04x", c);
            o += b;
        } else {
            o += ch;
        }
    }
    return o + "\"";
}

std::string outcomeText(const Outcome& o) {
    if (o.finished) return "the converter finishes";
    std::string t = "the converter stops at line " + std::to_string(o.line) + " with \"" + o.message + "\"";
    if (!o.quoted.empty()) t += " (quoting \"" + o.quoted + "\")";
    return t;
}

std::string outcomeJson(const Outcome& o) {
    if (o.finished) return "{\"finished\":true}";
    return "{\"finished\":false,\"line\":" + std::to_string(o.line) + ",\"message\":" + json(o.message) +
           (o.quoted.empty() ? "" : ",\"quoted\":" + json(o.quoted)) + "}";
}

}  // namespace

int main(int argc, char** argv) {
    bool asJson = false;
    TidyOptions options;
    std::string output;
    std::vector<std::string> files;
    for (int k = 1; k < argc; ++k) {
        const std::string a = argv[k];
        if (a == "--json") {
            asJson = true;
        } else if (a == "--safe-names") {
            options.safeNames = true;
        } else if (a == "--notrim") {
            options.trim = false;
        } else if (a == "-o") {
            if (k + 1 >= argc) return fail("-o needs the name of the repaired copy\n" + std::string(kUsage));
            output = argv[++k];
        } else if (a == "-h" || a == "--help") {
            std::cout << kUsage << "\n";
            return 0;
        } else if (a.size() > 1 && a[0] == '-') {
            return fail("unknown option " + a + "\n" + kUsage);
        } else {
            files.push_back(a);
        }
    }
    if (files.empty()) return fail(std::string("no SDF file given\n") + kUsage);
    if (!output.empty() && files.size() != 1) return fail("-o takes exactly one SDF file");
    if (!output.empty()) {
        std::error_code ec;
        if (fs::exists(output, ec) && fs::equivalent(files[0], output, ec))
            return fail("-o " + output + " is the input file; sdftidy never writes its input");
        if (fs::is_directory(output, ec)) return fail("-o " + output + " is a folder");
    }

    int status = 0;
    for (const std::string& file : files) {
        std::string error;
        if (!checkSdfFile(file, error)) return fail(error);
        CopyWriter copy;
        if (!output.empty() && !copy.open(output, error)) return fail(error);
        // Findings are printed as the walk finds them, ahead of the summary.
        const auto report = [&](const Finding& f) {
            if (asJson)
                std::cout << "{\"file\":" << json(file) << ",\"line\":" << f.line
                          << ",\"kind\":" << json(kindName(f.kind)) << ",\"effect\":" << json(f.effect)
                          << ",\"repair\":" << (f.repair.empty() ? "null" : json(f.repair)) << "}\n";
            else
                std::cout << file << ":" << f.line << ": " << kindName(f.kind) << ": " << f.effect
                          << (f.repair.empty() ? "; no repair" : "; repair: " + f.repair) << "\n";
        };
        TidyResult r;
        try {
            r = tidySdf(file, options, output.empty() ? nullptr : &copy, report);
        } catch (const TidyIoError& e) {
            return fail(e.what());
        }
        if (!output.empty() && !copy.commit(error)) return fail(error);
        if (r.findings > 0 || !r.before.finished) status = 1;

        const LayerCounts& c = r.counts;
        if (asJson) {
            std::cout << "{\"file\":" << json(file) << ",\"summary\":{\"findings\":" << r.findings
                      << ",\"before\":" << outcomeJson(r.before) << ",\"after\":" << outcomeJson(r.after)
                      << ",\"reaches\":" << c.reaches << ",\"sections\":" << c.sections << ",\"streams\":" << c.reaches
                      << ",\"surf_pts\":" << c.surfPts << ",\"end_pts\":" << c.endPts << ",\"surf_line\":" << c.surfLine
                      << ",\"cut_line\":" << c.cutLine << ",\"levee_pts\":" << c.leveePts << ",\"csv\":" << c.csv
                      << ",\"dropped_rows\":" << r.droppedRows
                      << ",\"written\":" << (output.empty() ? "null" : json(output)) << "}}\n";
            continue;
        }
        std::cout << file << ": " << r.findings << " finding" << (r.findings == 1 ? "" : "s") << "; as it is, "
                  << outcomeText(r.before) << "\n";
        std::cout << file << ": " << (r.changed ? "after repair, " : "") << outcomeText(r.after) << ": " << c.reaches
                  << " reaches, " << c.sections << " sections; streams " << c.reaches << ", surf_pts " << c.surfPts
                  << ", end_pts " << c.endPts << ", surf_line " << c.surfLine << ", cut_line " << c.cutLine
                  << ", levee_pts " << c.leveePts << ", .csv " << c.csv;
        if (r.droppedRows > 0) std::cout << "; " << r.droppedRows << " surface rows without elevation dropped";
        if (!output.empty()) std::cout << "; written to " << output;
        std::cout << "\n";
    }
    return status;
}
