// Running the converter as a child process in a scratch folder, reading its
// transcript, and the real samples with a feature count by ogrinfo.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "test_common.hpp"

namespace e2e {

using namespace tc;

namespace fs = std::filesystem;

struct RunResult {
    int status = -1;
    std::string out;  // standard output
    std::string err;  // standard error
};

inline std::string quote(const std::string& s) {
    std::string q = "'";
    for (char c : s) {
        if (c == '\'') q += "'\\''";
        else q += c;
    }
    return q + "'";
}

// A fresh folder for one test under the build tree.
inline fs::path scratch(const std::string& name) {
    fs::path d = fs::path(REACHMAP_BINARY_DIR) / "e2e-scratch" / name;
    fs::remove_all(d);
    fs::create_directories(d);
    return d;
}

// Runs reachmap in `dir` with `args`; standard input is `input` (empty: closed
// at once, as with no person at the console). With `seconds` above 0 a run
// that takes longer is killed (status 124).
inline RunResult reachmap(const fs::path& dir, const std::vector<std::string>& args, const std::string& input = "",
                          int seconds = 0) {
    writeFile(dir / ".stdin", input);
    std::string cmd = "cd " + quote(dir.string()) + " && " +
                      (seconds > 0 ? "timeout " + std::to_string(seconds) + " " : "") + quote(REACHMAP_EXE);
    for (const auto& a : args) cmd += " " + quote(a);
    cmd += " < .stdin > .stdout 2> .stderr";
    RunResult r;
    int rc = std::system(cmd.c_str());
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    r.out = readFile(dir / ".stdout");
    r.err = readFile(dir / ".stderr");
    return r;
}

// The lines of a text split at LF (a CR stays with its line).
inline std::vector<std::string> lines(const std::string& s) {
    std::vector<std::string> v(1);
    for (char c : s) {
        if (c == '\n') v.emplace_back();
        else v.back() += c;
    }
    return v;
}

// True when each of `want` occurs as a whole line of `out`, in this order.
inline bool linesInOrder(const std::string& out, const std::vector<std::string>& want) {
    auto all = lines(out);
    std::size_t k = 0;
    for (const auto& l : all)
        if (k < want.size() && l == want[k]) ++k;
    return k == want.size();
}

// The real SDF samples beside the project, and a test name for each.
inline constexpr const char* kRealSamples[] = {
    "hecras410_export_3reach_52xs_wse.sdf", "rivergis_example1d_19xs_structures.sdf", "rivergis_start_11xs_null_z.sdf",
    "rivergis_network_only_5reach.sdf", "civil3d_geo_elseco_97xs_crlf.sdf"};
inline std::string sampleName(const std::string& file) { return file.substr(0, file.find('.')); }

// Why a test on the real sample `src` cannot run here (the samples or ogrinfo
// are missing), or empty when it can: `if (!why.empty()) GTEST_SKIP() << why;`.
inline std::string realSampleSkip(const fs::path& src) {
    if (!fs::exists(src)) return "real SDF samples not found at " + src.string();
    if (std::system("command -v ogrinfo > /dev/null 2>&1") != 0) return "ogrinfo (gdal-bin) not installed";
    return "";
}

// Features in a layer as ogrinfo, an independent reader, counts them.
inline int featureCount(const fs::path& layer) {
    std::string cmd = "ogrinfo -ro -so -al " + quote(layer.string()) + " 2>&1";
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return -2;
    std::string out;
    char buf[4096];
    while (std::size_t n = fread(buf, 1, sizeof buf, p)) out.append(buf, n);
    pclose(p);
    std::smatch m;
    if (std::regex_search(out, m, std::regex("Feature Count: ([0-9]+)"))) return std::stoi(m[1]);
    ADD_FAILURE() << layer << ":\n" << out;
    return -1;
}

}  // namespace e2e
