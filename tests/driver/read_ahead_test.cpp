// Surface rows read ahead on a second thread (REACHMAP_THREADS=2, whatever
// the file's size and the cores) give the very files and transcript of a run
// on one thread (REACHMAP_THREADS=1), on a file of some megabytes with rows
// the quick road must leave to the full rules mixed in: exponents, a fourth
// value, tabs, CR LF ends, a line longer than the text line, an elevation of
// None, rows in other blocks.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "e2e_support.hpp"

namespace {

using namespace e2e;

std::string sdfWithQuirks(bool badRowHalfWay = false) {
    std::string s =
        "BEGIN HEADER:\n UNITS: METRIC\nEND HEADER:\n\nBEGIN STREAM NETWORK:\n   REACH:\n"
        "      STREAM ID: Big River\n      REACH ID: Reach 1\n      CENTERLINE:\n"
        "         300000.0, 6200000.0, \n         310000.0, 6190000.0, \n   END:\nEND STREAM NETWORK:\n\n"
        "BEGIN CROSS-SECTIONS:\n";
    char b[512];
    const std::string longTail(1100, ' ');
    for (int k = 0; s.size() < (std::size_t{3} << 20); ++k) {
        const char* eol = k % 2 == 0 ? "\n" : "\r\n";
        std::snprintf(b, sizeof b,
                      "   CROSS-SECTION:%s      STREAM ID:Big River%s      REACH ID:Reach %d%s"
                      "      STATION:%d.50%s      CUT LINE:%s         300000.5, 6200000.25%s         300100, 6200100%s"
                      "      NVALUES:%s         0, 0.06%s         0.5, 0.035%s      LEVEE POSITIONS:%s"
                      "         LB, 0.2, 105.00%s         RB, 0.8, 105.20%s      SURFACE LINE:%s",
                      eol, eol, 1 + k % 3, eol, 90000 - k, eol, eol, eol, eol, eol, eol, eol, eol, eol, eol, eol);
        s += b;
        for (int i = 0; i < 120; ++i) {
            const double x = 300000.0 + 0.9137 * i - 0.25 * k, y = 6200000.0 - 0.6304 * i + 0.125 * k;
            const double z = 100.0 + 0.013 * ((i * 37 + k) % 400) - (k % 5 == 0 ? 101.0 : 0.0);
            switch ((i + k) % 29) {
                case 3: std::snprintf(b, sizeof b, "         %.4e, %.4f, %.3f%s", x, y, z, eol); break;
                case 7: std::snprintf(b, sizeof b, "         %.4f, %.4f, %.3f, 9%s", x, y, z, eol); break;
                case 11: std::snprintf(b, sizeof b, "\t%.4f,\t%.4f,\t%.3f%s", x, y, z, eol); break;
                case 13: std::snprintf(b, sizeof b, "         %.4f, %.4f, -0.0%s", x, y, eol); break;
                case 17: std::snprintf(b, sizeof b, "%.4f %.4f %.2f   %s", x, y, z, eol); break;
                default: std::snprintf(b, sizeof b, "         %.4f, %.4f, %.3f%s", x, y, z, eol); break;
            }
            s += b;
            if (i == 60 && k % 7 == 0) s += "         1.0, 2.0, 3.0" + longTail + "x" + eol;
            // A row that cannot be read stops the run there, with the helper far ahead.
            if (badRowHalfWay && k == 300 && i == 1) s += std::string("         300000.0, 6200000.0,") + eol;
        }
        if (k % 11 == 0) s += std::string("         300000.0, 6200000.0, None") + eol;
        s += std::string("   END:") + eol;
    }
    return s + "END CROSS-SECTIONS:\n";
}

// Every file a run leaves in `dir`, and its transcript, by name.
std::map<std::string, std::string> filesOf(const fs::path& dir, const RunResult& r) {
    std::map<std::string, std::string> m;
    for (const auto& e : fs::directory_iterator(dir))
        if (e.is_regular_file() && e.path().filename().string()[0] != '.')
            m[e.path().filename().string()] = readFile(e.path());
    m["(transcript)"] = r.out + r.err;
    return m;
}

TEST(ReadAhead, SameFilesAsOneThread) {
    const char* before = std::getenv("REACHMAP_THREADS");
    const std::string kept = before != nullptr ? before : "";
    for (const std::vector<std::string>& args : {std::vector<std::string>{"-mif", "q.sdf"},
                                                 {"-shp", "q.sdf"},
                                                 {"-shp", "-notrim", "q.sdf"},
                                                 {"-mif", "q.sdf", "stop"}}) {
        const bool stop = args.back() == "stop";
        const std::string sdf = sdfWithQuirks(stop);
        std::map<std::string, std::string> got[2];
        for (int threads : {1, 2}) {
            const fs::path dir = scratch("read_ahead_" + std::to_string(threads));
            writeFile(dir / "q.sdf", sdf);
            writeFile(dir / "Header.prj", "PROJCS[\"x\"]\r\n");
            writeFile(dir / "Header.mif", "Version 300\r\nCoordSys Earth Projection 1, 104\r\n");
            setenv("REACHMAP_THREADS", std::to_string(threads).c_str(), 1);
            const RunResult r = reachmap(dir, stop ? std::vector<std::string>(args.begin(), args.end() - 1) : args);
            if (before != nullptr) setenv("REACHMAP_THREADS", kept.c_str(), 1);
            else unsetenv("REACHMAP_THREADS");
            ASSERT_EQ(r.status, 0);
            got[threads - 1] = filesOf(dir, r);
        }
        SCOPED_TRACE(args[0] + (args.size() > 2 ? " " + args[1] : ""));
        EXPECT_GT(got[0].size(), 100u);  // a .csv per section and the layers
        EXPECT_NE(got[0]["(transcript)"].find(stop ? "ERROR - Reading following line" : "Finished."),
                  std::string::npos);
        ASSERT_EQ(got[0].size(), got[1].size());
        for (const auto& [name, bytes] : got[1]) EXPECT_TRUE(got[0][name] == bytes) << name;
    }
}

}  // namespace
