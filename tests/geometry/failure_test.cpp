// Failure reports: the exact text on the console, then the orderly exit with
// status 0. The statement sends standard output to the error stream, which is
// what a death test can read, and turns the exit pause off.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "geometry/gridline.hpp"
#include "geometry/polygon.hpp"
#include "region_fixture.hpp"
#include "runtime/units.hpp"

namespace {

void consoleToStderr() {
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    fileUnitSettings.pauseOnPrematureExit = false;
}

// The text as a regular expression that matches it literally, on a line of its own.
std::string line(const std::string& text) {
    std::string re = "(^|\n)";
    for (char c : text) {
        if (std::string(".[]{}()*+?^$|\\").find(c) != std::string::npos) re += '\\';
        re += c;
    }
    return re + "\n";
}

// Two squares in the slots, but ends and npoly describe only the first.
struct BadRegion {
    TestRegion r;
    std::vector<float> xf, yf;
    BadRegion() {
        r.add({{0, 0}, {4, 0}, {4, 4}, {0, 4}});
        r.add({{6, 0}, {8, 0}, {8, 4}, {6, 4}});
        r.npoly = 1;
        xf = r.Xf();
        yf = r.Yf();
    }
};

const std::string kInside1 =
    "Invalid number of polygons in region sent to inside_polygon routine [1] - contact SUPPORTDESK";
const std::string kInside2 =
    "Invalid number of polygons in region sent to inside_polygon routine [2] - contact SUPPORTDESK";
const std::string kGrid1 =
    "Invalid number of polygons in region sent to grid_inside_polygon routine [1] - contact SUPPORTDESK";

TEST(GeometryFailureDeathTest, SinglePointRoutines) {
    BadRegion b;
    const TestRegion& r = b.r;
    EXPECT_EXIT((consoleToStderr(), INSIDE_POLYGON(7, 2, b.xf.data(), b.yf.data(), r.N(), -1, r.ends.data(), 1)),
                ::testing::ExitedWithCode(0), line(kInside1));
    EXPECT_EXIT((consoleToStderr(), INSIDE_POLYGON_8(7, 2, r.X.data(), r.Y.data(), r.N(), -1, r.ends.data(), 1)),
                ::testing::ExitedWithCode(0), line(kInside2));
    EXPECT_EXIT(
        (consoleToStderr(), inside_polygon_or_edge_8(7, 2, r.X.data(), r.Y.data(), r.N(), -1, r.ends.data(), 1)),
        ::testing::ExitedWithCode(0), line(kInside1));
}

TEST(GeometryFailureDeathTest, GridAndListRoutines) {
    BadRegion b;
    const TestRegion& r = b.r;
    std::vector<uint8_t> in(100), cr(100);
    std::vector<float> rv(100);
    int32_t a, c, d, e, n;
    EXPECT_EXIT((consoleToStderr(),
                 grid_inside_polygon_8(in.data(), cr.data(), nullptr, rv.data(), 10, 10, 1.0, 1.0, 0, 0, true, false,
                                       false, true, 0.0f, false, a, c, d, e, n, r.X.data(), r.Y.data(), nullptr, r.N(),
                                       r.ends.data(), 1)),
                ::testing::ExitedWithCode(0), line(kGrid1));
    EXPECT_EXIT((consoleToStderr(),
                 grid_inside_polygon(in.data(), cr.data(), nullptr, rv.data(), 10, 10, 1.0f, 1.0f, 0, 0, true, false,
                                     false, true, 0.0f, false, a, c, d, e, n, b.xf.data(), b.yf.data(), nullptr, r.N(),
                                     r.ends.data(), 1)),
                ::testing::ExitedWithCode(0), line(kGrid1));

    const double px[] = {0, 7}, py[] = {0, 2};
    const float pxf[] = {0, 7}, pyf[] = {0, 2};
    int32_t flags[2];
    EXPECT_EXIT((consoleToStderr(), grid_inside_polygon_points(flags, pxf, pyf, 1, n, b.xf.data(), b.yf.data(), r.N(),
                                                               r.ends.data(), 1)),
                ::testing::ExitedWithCode(0),
                line("Invalid number of polygons in region sent to grid_inside_polygon routine [4] - contact "
                     "SUPPORTDESK"));
    EXPECT_EXIT((consoleToStderr(),
                 grid_inside_polygon_points_8(flags, px, py, 1, n, r.X.data(), r.Y.data(), r.N(), r.ends.data(), 1)),
                ::testing::ExitedWithCode(0),
                line("Invalid number of polygons in region sent to grid_inside_polygon routine [5] - contact "
                     "SUPPORTDESK"));
}

TEST(GeometryFailureDeathTest, ConsistentRegionsPass) {
    // The same slots with both polygons described do not fail.
    BadRegion b;
    b.r.npoly = 2;
    EXPECT_TRUE(INSIDE_POLYGON_8(7, 2, b.r.X.data(), b.r.Y.data(), b.r.N(), -1, b.r.ends.data(), 2));
}

TEST(GeometryFailureDeathTest, CellLimit) {
    const std::string text = "SORRY - Exceeded limit of        9 HX cells per HX polyline segment.  Contact SUPPORTDESK.";
    std::vector<int32_t> jc(11, 0), ic(11, 0);
    int32_t a, b, c, d, n;
    // Ten cells along row 1 against a limit of nine.
    EXPECT_EXIT((consoleToStderr(), gridline_5(0.2f, 0.3f, 9.7f, 0.3f, false, 1.0f, 1.0f, a, b, c, d, n, jc.data(),
                                               ic.data(), 9, 0, 0)),
                ::testing::ExitedWithCode(0), line(text));
    EXPECT_EXIT((consoleToStderr(), gridline_v2(0.2f, 0.3f, 9.7f, 0.3f, false, 1.0f, 1.0f, a, b, c, d, n, jc.data(),
                                                ic.data(), 9, 0, 0)),
                ::testing::ExitedWithCode(0), line(text));
    EXPECT_EXIT((consoleToStderr(),
                 gridline(0.2f, 0.3f, 9.7f, 0.3f, 1.0f, 1.0f, a, b, c, d, n, jc.data(), ic.data(), 9)),
                ::testing::ExitedWithCode(0), line(text));
    // A limit of 0 cannot hold even the start cell.
    EXPECT_EXIT((consoleToStderr(), gridline(1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f, a, b, c, d, n, jc.data(), ic.data(), 0)),
                ::testing::ExitedWithCode(0),
                line("SORRY - Exceeded limit of        0 HX cells per HX polyline segment.  Contact SUPPORTDESK."));
}

}  // namespace
