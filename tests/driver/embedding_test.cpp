// The exit handler and the reset, in this process: a run ended through a
// handler that throws leaves what a fresh process would leave, a clean run
// after the reset gives what a fresh process gives, and a handler that lets
// the process end changes nothing.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <map>

#include "driver/run.hpp"
#include "e2e_support.hpp"
#include "runtime/exits.hpp"

namespace {

using namespace e2e;

struct Ended {};

using Files = std::map<std::string, std::string>;

// The files a run wrote, the captured console streams left out.
Files filesOf(const fs::path& d) {
    Files m;
    for (const auto& e : fs::directory_iterator(d))
        if (e.is_regular_file() && e.path().filename().string()[0] != '.')
            m[e.path().filename().string()] = readFile(e.path());
    return m;
}

// A folder with the example's projection files and `sdf` as a.sdf.
fs::path folderWith(const std::string& name, const std::string& sdf) {
    const fs::path d = scratch("embed_" + name);
    for (const char* h : {"Header.mif", "Header.prj"})
        fs::copy_file(fs::path(REACHMAP_SOURCE_DIR) / "examples" / h, d / h);
    writeFile(d / "a.sdf", sdf);
    return d;
}

// Runs the converter in `dir`, standard input empty and standard output into
// dir/.stdout. In this process (fork false) the run must end through the
// handler, which throws; the libraries are reset behind it. In a forked
// child the run ends the child. Returns the console output.
std::string runHere(const fs::path& dir, const char* format, bool fork) {
    const pid_t child = fork ? ::fork() : 0;
    if (child > 0) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        return readFile(dir / ".stdout");
    }
    const fs::path here = fs::current_path();
    const int saveIn = ::dup(0), saveOut = ::dup(1);
    fs::current_path(dir);
    ::dup2(::open("/dev/null", O_RDONLY), 0);
    ::dup2(::open(".stdout", O_WRONLY | O_CREAT | O_TRUNC, 0644), 1);
    char prog[] = "reachmap", file[] = "a.sdf";
    std::string f = format;
    char* argv[] = {prog, f.data(), file, nullptr};
    bool ended = false;
    try {
        runReachmap(3, argv);
    } catch (const Ended&) {
        ended = true;
    }
    ::dup2(saveIn, 0);
    ::dup2(saveOut, 1);
    fs::current_path(here);
    EXPECT_TRUE(ended);
    reachmapReset();
    return readFile(dir / ".stdout");
}

// The example with no n table in its first section (whose points then show
// the n values that earlier sections left, none in a fresh process), and the
// example with a bad station in its fourth section, so that the run stops
// with layers open, records written and the tables of the section export
// filled.
const std::string kSource = readFile(fs::path(REACHMAP_SOURCE_DIR) / "examples" / "river.sdf");
const std::string kExample =
    kSource.substr(0, kSource.find("NVALUES:")) + "NO N TABLE:" + kSource.substr(kSource.find("NVALUES:") + 8);
std::string stopsInFourthSection() {
    std::size_t at = 0;
    for (int i = 0; i < 4; ++i) at = kSource.find("STATION:", at + 1);
    return kSource.substr(0, at) + "STATION:abc" + kSource.substr(kSource.find('\r', at));
}
const std::string kStops = stopsInFourthSection();

// A run that read ahead leaves nothing behind that a later run in the same
// process could take up: shapefiles read ahead, then MIF on one thread, of
// the same points, give the MIF files of a fresh process.
TEST(Embedding, ReadAheadLeavesNothingForTheNextRun) {
    setRunEndHandler([] { throw Ended{}; });
    const fs::path fresh = folderWith("ahead_fresh", kExample);
    const RunResult clean = reachmap(fresh, {"-mif", "a.sdf"});
    ASSERT_NE(clean.out.find("Finished."), std::string::npos) << clean.out;
    setenv("REACHMAP_THREADS", "2", 1);
    runHere(folderWith("ahead_shp", kExample), "-shp", false);
    setenv("REACHMAP_THREADS", "1", 1);
    const fs::path mif = folderWith("ahead_mif", kExample);
    EXPECT_EQ(runHere(mif, "-mif", false), clean.out);
    EXPECT_EQ(filesOf(mif), filesOf(fresh));
    unsetenv("REACHMAP_THREADS");
    setRunEndHandler(nullptr);
}

TEST(Embedding, StoppedRunAndCleanRunInProcessMatchFreshProcesses) {
    setRunEndHandler([] { throw Ended{}; });
    for (const char* format : {"-shp", "-mif"}) {
        SCOPED_TRACE(format);
        const fs::path stopFresh = folderWith(std::string("stop_fresh") + format, kStops);
        const fs::path cleanFresh = folderWith(std::string("clean_fresh") + format, kExample);
        const RunResult stopped = reachmap(stopFresh, {format, "a.sdf"});
        const RunResult clean = reachmap(cleanFresh, {format, "a.sdf"});
        ASSERT_NE(stopped.out.find("ERROR - converting station"), std::string::npos) << stopped.out;
        ASSERT_NE(clean.out.find("Finished."), std::string::npos) << clean.out;

        // The handler takes over after the orderly part: the stopped run's
        // files are complete and closed when it throws.
        const fs::path stopHere = folderWith(std::string("stop_here") + format, kStops);
        EXPECT_EQ(runHere(stopHere, format, false), stopped.out);
        EXPECT_EQ(filesOf(stopHere), filesOf(stopFresh));
        const fs::path cleanHere = folderWith(std::string("clean_here") + format, kExample);
        EXPECT_EQ(runHere(cleanHere, format, false), clean.out);
        EXPECT_EQ(filesOf(cleanHere), filesOf(cleanFresh));
    }
    setRunEndHandler(nullptr);
}

TEST(Embedding, HandlerThatReturnsEndsTheProcessAsBefore) {
    // A handler that returns: the process ends as without one.
    setRunEndHandler([] {});
    for (const std::string* sdf : {&kExample, &kStops}) {
        const fs::path fresh = folderWith("returns_fresh", *sdf);
        const fs::path hooked = folderWith("returns_hooked", *sdf);
        const RunResult r = reachmap(fresh, {"-shp", "a.sdf"});
        EXPECT_EQ(runHere(hooked, "-shp", true), r.out);
        EXPECT_EQ(filesOf(hooked), filesOf(fresh));
    }
    setRunEndHandler(nullptr);
}

}  // namespace
