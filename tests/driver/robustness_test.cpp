// Malformed input never makes the converter crash, hang or touch memory it
// should not: many corrupted variants of valid SDF files each end in order
// (status 0, the closing pause, nothing on the error stream, where a
// sanitizer would report). In the sanitizer build this runs sanitized.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

#include "e2e_support.hpp"

namespace {

using namespace e2e;

struct Rng {
    uint64_t s;
    uint64_t next() {
        s ^= s << 13;
        s ^= s >> 7;
        s ^= s << 17;
        return s;
    }
    std::size_t below(std::size_t n) { return n == 0 ? 0 : static_cast<std::size_t>(next() % n); }
};

// Pieces that matter to the scanner, for splicing into the text.
const char* const kPieces[] = {
    "CROSS-SECTION:",
    "CUT LINE:",
    "NVALUES:",
    "LEVEE POSITIONS:",
    "SURFACE LINE:",
    "END:",
    "REACH:",
    "CENTERLINE:",
    "STATION:",
    "STREAM ID:",
    "REACH ID:",
    "END CROSS-SECTIONS:",
    "ENDSTREAMNETWORK",
    "1e999",
    "-0.0",
    "3*",
    "/",
    ",,",
    "\"",
    "'",
    "*",
    "\t",
    "\r",
    "\n\n",
    "99999999999999999999",
    "1.5+3",
    "nan",
    ":::",
    "0, 0",
    "1, 2, 3",
};

std::string mutate(const std::string& base, Rng& rng) {
    std::string s = base;
    const int edits = 1 + static_cast<int>(rng.below(8));
    for (int e = 0; e < edits && !s.empty(); ++e) {
        const std::size_t at = rng.below(s.size());
        switch (rng.below(6)) {
            case 0:  // drop a stretch
                s.erase(at, 1 + rng.below(40));
                break;
            case 1:  // splice in a keyword or an odd value
                s.insert(at, kPieces[rng.below(std::size(kPieces))]);
                break;
            case 2:  // one byte replaced by any byte
                s[at] = static_cast<char>(rng.below(256));
                break;
            case 3:  // duplicate a stretch
                s.insert(at, s.substr(rng.below(s.size()), 1 + rng.below(200)));
                break;
            case 4:  // cut the file short
                s.resize(at);
                break;
            default:  // a very long line
                s.insert(at, std::string(1500 + rng.below(2000), static_cast<char>('0' + rng.below(10))));
                break;
        }
    }
    return s;
}

TEST(Robustness, CorruptedFilesEndInOrder) {
    std::vector<std::string> bases = {readFile(fs::path(REACHMAP_SOURCE_DIR) / "examples" / "river.sdf")};
    const fs::path real = fs::path(REACHMAP_SHARED_SDF) / "rivergis_start_11xs_null_z.sdf";
    if (fs::exists(real)) bases.push_back(readFile(real).substr(0, 40000));
    ASSERT_FALSE(bases[0].empty());

    fs::path d = scratch("robustness");
    writeFile(d / "Header.prj", "PROJCS[\"x\"]\r\n");
    writeFile(d / "Header.mif", "CoordSys NonEarth Units \"m\"\r\n");
    Rng rng{0x9E3779B97F4A7C15ull};
    const char* formats[] = {"-shp", "-mif"};
    // REACHMAP_MUTATIONS runs a longer campaign by hand; 120 keep CI quick.
    const char* env = std::getenv("REACHMAP_MUTATIONS");
    const int cases = env ? std::atoi(env) : 120;
    int runs = 0;
    for (int i = 0; i < cases; ++i) {
        const std::string input = mutate(bases[static_cast<std::size_t>(i) % bases.size()], rng);
        writeFile(d / "m.sdf", input);
        RunResult r = reachmap(d, {formats[i % 2], "m.sdf"}, "", 20);
        ++runs;
        const bool inOrder = r.status == 0 && r.err.empty() && r.out.size() >= 20 &&
                             r.out.compare(r.out.size() - 20, 20, "Press Enter to Close") == 0;
        if (!inOrder) {
            writeFile(d / ("failing_" + std::to_string(i) + ".sdf"), input);
            ADD_FAILURE() << "case " << i << " status " << r.status << "\nstderr: " << r.err.substr(0, 2000)
                          << "\nstdout tail: " << r.out.substr(r.out.size() > 600 ? r.out.size() - 600 : 0);
        }
    }
    EXPECT_EQ(runs, cases);
}

}  // namespace
