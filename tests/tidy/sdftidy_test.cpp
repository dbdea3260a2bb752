// sdftidy against the converter itself. For the real samples and for small
// generated files with the quirks of real exports: the outcome sdftidy
// predicts is the one reachmap shows on the file as it is; the repaired copy
// converts to the end in both formats, with as many features in each layer
// as the summary announced (counted by ogrinfo); a second check of the copy
// finds nothing left to repair; a clean file is copied byte for byte.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <map>
#include <regex>
#include <set>

#include "driver/e2e_support.hpp"

namespace {

using namespace e2e;

RunResult sdftidy(const fs::path& dir, const std::vector<std::string>& args) {
    std::string cmd = "cd " + quote(dir.string()) + " && " + quote(SDFTIDY_EXE);
    for (const auto& a : args) cmd += " " + quote(a);
    cmd += " < /dev/null > .tidy_out 2> .tidy_err";
    RunResult r;
    const int rc = std::system(cmd.c_str());
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    r.out = readFile(dir / ".tidy_out");
    r.err = readFile(dir / ".tidy_err");
    return r;
}

std::string unescape(const std::string& s) {
    std::string o;
    for (std::size_t i = 0; i < s.size(); ++i) o += (s[i] == '\\' && i + 1 < s.size()) ? s[++i] : s[i];
    return o;
}

// The --json report: finding kinds and the summary's numbers and outcomes.
struct Report {
    std::multiset<std::string> kinds;
    std::map<std::string, long> n;
    bool finished = true;
    int line = 0;
    std::string message, quoted;
};

Report parse(const std::string& out) {
    Report r;
    const std::regex kind(R"re("kind":"([a-z-]+)")re"), num(R"re("([a-z_]+)":([0-9]+))re");
    for (const auto& l : lines(out)) {
        std::smatch m;
        if (std::regex_search(l, m, kind)) r.kinds.insert(m[1]);
        if (l.find("\"summary\"") == std::string::npos) continue;
        for (std::sregex_iterator it(l.begin(), l.end(), num), e; it != e; ++it) r.n[(*it)[1]] = std::stol((*it)[2]);
        const std::regex before(
            R"re("before":\{"finished":(true|false)(,"line":([0-9]+),"message":"((?:[^"\\]|\\.)*)"(,"quoted":"((?:[^"\\]|\\.)*)")?)?\})re");
        EXPECT_TRUE(std::regex_search(l, m, before)) << l;
        r.finished = m[1] == "true";
        if (!r.finished) {
            r.line = std::stoi(m[3]);
            r.message = unescape(m[4]);
            r.quoted = unescape(m[6]);
        }
    }
    return r;
}

std::string trimmedLine(const std::string& text, int n) {
    std::string l = lines(text)[static_cast<std::size_t>(n - 1)];
    while (!l.empty() && (l.back() == '\r' || l.back() == ' ')) l.pop_back();
    return l;
}

// Converts `sdf` (in `dir`) with one format in a folder of its own.
RunResult convert(const fs::path& dir, const std::string& name, const std::string& text, bool shp) {
    const fs::path d = dir / (shp ? "shp" : "mif");
    fs::create_directories(d);
    writeFile(d / name, text);
    for (const char* h : {"Header.mif", "Header.prj"})
        fs::copy_file(fs::path(REACHMAP_SOURCE_DIR) / "examples" / h, d / h, fs::copy_options::overwrite_existing);
    return reachmap(d, {shp ? "-shp" : "-mif", name});
}

// The whole check of one file: prediction, repair, conversion, counts,
// second check. Gives the report on the file as it is.
Report checkFile(const std::string& tag, const std::string& text, const std::vector<std::string>& extra = {}) {
    SCOPED_TRACE(tag);
    const fs::path dir = scratch("tidy_" + tag);
    writeFile(dir / "in.sdf", text);
    std::vector<std::string> args = {"--json"};
    args.insert(args.end(), extra.begin(), extra.end());
    args.insert(args.end(), {"in.sdf", "-o", "fixed.sdf"});
    const RunResult t = sdftidy(dir, args);
    EXPECT_TRUE(t.err.empty()) << t.err;
    const Report rep = parse(t.out);
    EXPECT_EQ(t.status, rep.kinds.empty() && rep.finished ? 0 : 1) << t.out;

    // The prediction on the file as it is.
    const RunResult before = convert(dir / "before", "in.sdf", text, false);
    if (rep.finished) {
        EXPECT_TRUE(linesInOrder(before.out, {"Finished."})) << before.out;
    } else {
        EXPECT_TRUE(linesInOrder(before.out, {rep.message})) << rep.message << "\n" << before.out;
        EXPECT_FALSE(linesInOrder(before.out, {"Finished."}));
        if (!rep.quoted.empty()) {
            EXPECT_TRUE(linesInOrder(before.out, {rep.message, "", rep.quoted}));
            EXPECT_EQ(trimmedLine(text, rep.line), rep.quoted);
        } else if (rep.message.find("station") != std::string::npos) {
            EXPECT_NE(trimmedLine(text, rep.line).find("END:"), std::string::npos);
        }
    }

    // The repaired copy converts to the end, with the counts announced.
    const std::string fixed = readFile(dir / "fixed.sdf");
    const char* const layers[][4] = {
        {"", "in.sdf_streams", "L", "streams"},    {"", "in_surf_pts", "P", "surf_pts"},
        {"2d_zsh_", "in_end_pts", "P", "end_pts"}, {"1d_xs_", "in_surf_line", "L", "surf_line"},
        {"", "in_cut_line", "L", "cut_line"},      {"", "in_levee_pts", "P", "levee_pts"}};
    for (bool shp : {false, true}) {
        const RunResult after = convert(dir / "after", "in.sdf", fixed, shp);
        EXPECT_TRUE(linesInOrder(after.out, {"Finished."})) << (shp ? "-shp\n" : "-mif\n") << after.out;
        for (const auto& [prefix, stem, letter, key] : layers) {
            const std::string base = std::string(prefix) + stem;
            const fs::path f =
                dir / "after" / (shp ? "shp" : "mif") / (shp ? base + "_" + letter + ".shp" : base + ".mif");
            EXPECT_EQ(featureCount(f), rep.n.at(key)) << f;
        }
    }

    // Checked again, the copy needs no repair and is copied unchanged.
    const RunResult again = sdftidy(dir, {"--json", "fixed.sdf", "-o", "again.sdf"});
    const Report second = parse(again.out);
    EXPECT_TRUE(second.finished);
    for (const char* k : {"stray-keyword", "head-lines", "swallowed-line", "lost-block", "no-elevation"})
        EXPECT_EQ(second.kinds.count(k), 0u) << k << "\n" << again.out;
    EXPECT_EQ(readFile(dir / "again.sdf"), fixed);
    return rep;
}

// ---- generated files

std::vector<std::string> section(const std::string& station, const std::vector<std::string>& blocks) {
    std::vector<std::string> v = {"   CROSS-SECTION:", "      STREAM ID: Creek", "      REACH ID: Upper",
                                  "      STATION: " + station};
    v.insert(v.end(), blocks.begin(), blocks.end());
    v.push_back("   END:");
    v.push_back("");
    return v;
}

const std::vector<std::string> kCut = {"      CUT LINE:", "         50, -10", "         50, 10"};
const std::vector<std::string> kN = {"      NVALUES:", "         0, 0.03", "         0.5, 0.04"};
const std::vector<std::string> kLevees = {"      LEVEE POSITIONS:", "         L1, 0.2, 12.5", "         L2, 0.8, 12.5"};
std::vector<std::string> surface(const std::vector<std::string>& rows) {
    std::vector<std::string> v = {"      SURFACE LINE:"};
    for (const auto& r : rows) v.push_back("         " + r);
    return v;
}
const std::vector<std::string> kRows = {"50, -10, 12", "50, -5, 10", "50, 0, 9", "50, 5, 10", "50, 10, 12"};

std::vector<std::string> cat(std::initializer_list<std::vector<std::string>> parts) {
    std::vector<std::string> v;
    for (const auto& p : parts) v.insert(v.end(), p.begin(), p.end());
    return v;
}

std::string sdf(const std::vector<std::string>& header, const std::vector<std::string>& reach,
                const std::vector<std::vector<std::string>>& sections, const std::string& eol = "\n") {
    std::vector<std::string> all = {"# generated", "BEGIN HEADER:"};
    all.insert(all.end(), header.begin(), header.end());
    all.insert(all.end(), {"END HEADER:", "", "BEGIN STREAM NETWORK:"});
    all.insert(all.end(), reach.begin(), reach.end());
    all.insert(all.end(), {"      CENTERLINE:", "         50, -100", "         50, 100",
                           "      END:", "END STREAM NETWORK:", "", "BEGIN CROSS-SECTIONS:", ""});
    for (const auto& s : sections) all.insert(all.end(), s.begin(), s.end());
    all.push_back("END CROSS-SECTIONS:");
    std::string t;
    for (const auto& l : all) t += l + eol;
    return t;
}

const std::vector<std::string> kReach = {"   REACH:", "      STREAM ID: Creek", "      REACH ID: Upper"};
const std::vector<std::string> kFull = cat({kCut, kN, kLevees, surface(kRows)});

struct Quirk {
    const char* name;
    std::string text;
    std::multiset<std::string> kinds;
    std::vector<std::string> extra = {};
};

std::vector<Quirk> quirks() {
    const std::string latin = "R\xEDo";  // an id in Latin-1
    return {
        {"clean", sdf({"  UNITS: METRIC"}, kReach, {section("100", kFull), section("200", kFull)}), {}},
        {"stray_header",
         sdf({"  STREAM LAYER: db/StreamCenterlines"}, kReach, {section("100", kFull)}),
         {"stray-keyword"}},
        {"stray_end_network",
         sdf({"  NOTE: no ENDSTREAMNETWORK here"}, kReach, {section("100", kFull)}),
         {"stray-keyword"}},
        {"blank_heads",
         sdf({}, {"   REACH:", "", "      STREAM ID: Creek", "      REACH ID: Upper"},
             {{"   CROSS-SECTION:", "", "      STREAM ID: Creek", "      NODE NAME: n1", "      REACH ID: Upper",
               "      STATION: 100", "      CUT LINE:", "         50, -10", "         50, 10",
               "      SURFACE LINE:", "         50, -10, 12", "         50, 10, 12", "   END:"},
              section("200", kFull)}),
         {"head-lines", "head-lines"}},
        {"crlf_latin1",
         sdf({}, {"   REACH:", "      STREAM ID: " + latin, "      REACH ID: Upper"},
             {{"   CROSS-SECTION:", "", "", "      STREAM ID: " + latin, "      REACH ID: Upper", "      STATION: 100",
               "      CUT LINE:", "         50, -10", "         50, 10", "      SURFACE LINE:", "         50, -10, 12",
               "         50, 10, 12", "   END:"}},
             "\r\n"),
         {"head-lines"}},
        {"swallowed_end",
         sdf({}, kReach, {section("100", kCut), section("200", cat({kN, surface(kRows)}))}),
         {"swallowed-line"}},
        {"lost_block", sdf({}, kReach, {section("100", cat({kN, kCut, surface(kRows)}))}), {"lost-block"}},
        {"no_elevation",
         sdf({}, kReach,
             {section("100", cat({kCut, surface({"50, -10, 12", "50, -5,", "50, 0, 9", "50, 5, None", "50, 10, 12"})})),
              section("200", cat({kCut, surface({"50, -10, None", "50, 10, None"})}))}),
         {"no-elevation", "no-elevation", "no-elevation", "no-elevation"}},
        {"unsafe_ids",
         sdf({}, kReach,
             {{"   CROSS-SECTION:", "      STREAM ID: ../up", "      REACH ID: a\"b", "      STATION: 100",
               "   END:"}}),
         {"unsafe-name", "quote-in-id"}},
        {"safe_names",
         sdf({}, kReach,
             {{"   CROSS-SECTION:", "      STREAM ID: ../up", "      REACH ID: a,b", "      STATION: 100", "   END:"}}),
         {"unsafe-name", "quote-in-id"},
         {"--safe-names"}},
        {"asterisks",
         sdf({}, kReach,
             {section("100", cat({{"      CUT LINE:", "         5e10, 0", "         50, 10"},
                                  surface({"50, -10, 12", "50, 10, 1e12"})}))}),
         {"asterisks", "asterisks"}},
        {"collision", sdf({}, kReach, {section("100", kFull), section("100", kFull)}), {"name-collision"}},
    };
}

class Generated : public ::testing::TestWithParam<std::size_t> {};

TEST_P(Generated, PredictsRepairsAndConverts) {
    const Quirk q = quirks()[GetParam()];
    if (std::system("command -v ogrinfo > /dev/null 2>&1") != 0) GTEST_SKIP() << "ogrinfo (gdal-bin) not installed";
    const Report r = checkFile(q.name, q.text, q.extra);
    EXPECT_EQ(r.kinds, q.kinds);
    const fs::path dir = fs::path(REACHMAP_BINARY_DIR) / "e2e-scratch" / (std::string("tidy_") + q.name);
    const std::string fixed = readFile(dir / "fixed.sdf");
    const std::string name = q.name;
    // Line ends and Latin-1 bytes stay as they were; only the blank lines go.
    std::string want = name == "crlf_latin1" ? std::regex_replace(q.text, std::regex("\r\n\r\n\r\n"), "\r\n")
                       : name == "safe_names"
                           ? std::regex_replace(q.text, std::regex("\\.\\./up\n(.*)a,b"), "___up\n$1a_b")
                           : q.text;
    if (q.kinds.empty() || name == "crlf_latin1" || name == "safe_names") {
        EXPECT_EQ(fixed, want);
    }
}

INSTANTIATE_TEST_SUITE_P(Quirks, Generated, ::testing::Range<std::size_t>(0, quirks().size()),
                         [](const auto& info) { return std::string(quirks()[info.param].name); });

class RealFiles : public ::testing::TestWithParam<const char*> {};

TEST_P(RealFiles, PredictsRepairsAndConverts) {
    const fs::path src = fs::path(REACHMAP_SHARED_SDF) / GetParam();
    if (const std::string why = realSampleSkip(src); !why.empty()) GTEST_SKIP() << why;
    const std::string text = readFile(src);
    const Report r = checkFile(src.stem().string(), text);
    const fs::path dir = fs::path(REACHMAP_BINARY_DIR) / "e2e-scratch" / ("tidy_" + src.stem().string());
    if (r.kinds.empty()) {
        EXPECT_EQ(readFile(dir / "fixed.sdf"), text);
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, RealFiles, ::testing::ValuesIn(kRealSamples),
                         [](const auto& info) { return sampleName(info.param); });

TEST(Example, NothingToReportAndAByteIdenticalCopy) {
    const fs::path dir = scratch("tidy_example");
    const std::string text = readFile(fs::path(REACHMAP_SOURCE_DIR) / "examples" / "river.sdf");
    writeFile(dir / "river.sdf", text);
    const RunResult r = sdftidy(dir, {"river.sdf", "-o", "copy.sdf"});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(linesInOrder(r.out, {"river.sdf: 0 findings; as it is, the converter finishes"})) << r.out;
    EXPECT_EQ(readFile(dir / "copy.sdf"), text);
}

// sdftidy streams: its peak memory on a file of 24 MB, with a repair in every
// section and a copy written, is about the one on a small file (held in
// memory, the file took five times its size). The file is written a section
// at a time: a child's peak counts the test's own from before its exec.
TEST(Memory, DoesNotGrowWithTheFile) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers keep memory of their own; measured in the plain build";
#endif
    const fs::path dir = scratch("tidy_memory");
    std::vector<std::string> rows;
    for (int i = 0; i < 100; ++i) rows.push_back("50, " + std::to_string(i) + ", 12");
    const auto write = [&](const char* name, int sections) {
        std::ofstream out(dir / name, std::ios::binary);
        const std::string frame = sdf({}, kReach, {});
        const std::size_t end = frame.rfind("END CROSS-SECTIONS:");
        out << frame.substr(0, end);
        for (int i = 1; i <= sections; ++i) {
            std::vector<std::string> s = section(std::to_string(i), cat({kCut, surface(rows)}));
            s.insert(s.begin() + 1, "");
            for (const auto& l : s) out << l << "\n";
        }
        out << frame.substr(end);
    };
    write("small.sdf", 10);
    write("big.sdf", 12000);
    const auto peakKb = [&](const char* file) {
        EXPECT_EQ(sdftidy(dir, {file, "-o", "fixed.sdf"}).status, 1);
        rusage u{};
        getrusage(RUSAGE_CHILDREN, &u);  // the largest child so far
        return u.ru_maxrss;
    };
    const long before = peakKb("small.sdf");
    const long after = peakKb("big.sdf");
    EXPECT_GT(fs::file_size(dir / "fixed.sdf"), 24u << 20);
    EXPECT_LT(after - before, 8 * 1024) << before << " KB on the small file, " << after << " KB on the big one";
    for (const char* f : {"big.sdf", "fixed.sdf", ".tidy_out"}) fs::remove(dir / f);
}

// What cannot be checked: one message on standard error, status 2, nothing else.
TEST(Hostile, OneMessageAndStatusTwo) {
    const fs::path dir = scratch("tidy_hostile");
    writeFile(dir / "empty.sdf", "");
    writeFile(dir / "binary.sdf", std::string("BEGIN\0\x01\x02", 8));
    // A finding comes first: the long line is still found before anything is reported.
    writeFile(dir / "long.sdf", "# x\n  db/StreamCenterlines\n" + std::string(1001, '1') + "\n");
    writeFile(dir / "ok.sdf", sdf({}, kReach, {section("100", kFull)}));
    fs::create_directories(dir / "folder.sdf");
    fs::create_directories(dir / "sub");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"missing.sdf"}, "no such file"},
        {{"folder.sdf"}, "is a folder"},
        {{"empty.sdf"}, "is empty"},
        {{"binary.sdf"}, "binary file"},
        {{"long.sdf"}, "line 3 is 1001 bytes long"},
        {{"ok.sdf", "-o", "ok.sdf"}, "is the input file"},
        {{"ok.sdf", "-o", "sub/../ok.sdf"}, "is the input file"},
        {{"ok.sdf", "-o", "nowhere/fixed.sdf"}, "cannot write nowhere/fixed.sdf"},
        {{}, "no SDF file given"},
        {{"--bogus", "ok.sdf"}, "unknown option --bogus"},
        {{"ok.sdf", "-o"}, "-o needs"},
    };
    for (const auto& [args, message] : cases) {
        const RunResult r = sdftidy(dir, args);
        EXPECT_EQ(r.status, 2) << message;
        EXPECT_TRUE(r.out.empty()) << message << "\n" << r.out;
        EXPECT_EQ(r.err.rfind("sdftidy: ", 0), 0u) << r.err;
        EXPECT_NE(r.err.find(message), std::string::npos) << r.err;
    }
    EXPECT_EQ(readFile(dir / "ok.sdf"), sdf({}, kReach, {section("100", kFull)}));
}

}  // namespace
