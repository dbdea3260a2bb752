// Failure reports: the exact line on the console, then the orderly exit with
// status 0. Each statement first sends standard output to the error stream,
// which a death test reads, and turns the exit pause off.
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

// A regular expression matching `text` literally as a whole line.
std::string line(const std::string& text) {
    std::string re = "(^|\n)";
    for (char c : text) re += (std::string(".[]{}()*+?^$|\\").find(c) != std::string::npos ? "\\" : "") + std::string(1, c);
    return re + "\n";
}

std::string polygons(const char* routine, int n) {
    return "Invalid number of polygons in region sent to " + std::string(routine) + " routine [" + std::to_string(n) +
           "] - contact the reachmap maintainers";
}

TEST(GeometryFailureDeathTest, RegionNotDescribedByEnds) {
    // Two squares in the slots, but npoly = 1: ends describes only the first.
    const TestRegion r = region({{{0, 0}, {4, 0}, {4, 4}, {0, 4}}, {{6, 0}, {8, 0}, {8, 4}, {6, 4}}});
    const auto xf = r.Xf(), yf = r.Yf();
    const double *X = r.X.data(), *Y = r.Y.data();
    const int32_t N = r.N(), *ends = r.ends.data();
    EXPECT_TRUE(INSIDE_POLYGON_8(7, 2, X, Y, N, -1, ends, 2));  // described fully, it is fine
    const auto exit0 = ::testing::ExitedWithCode(0);
    EXPECT_EXIT((consoleToStderr(), INSIDE_POLYGON(7, 2, xf.data(), yf.data(), N, -1, ends, 1)), exit0,
                line(polygons("inside_polygon", 1)));
    EXPECT_EXIT((consoleToStderr(), inside_polygon_or_edge_8(7, 2, X, Y, N, -1, ends, 1)), exit0,
                line(polygons("inside_polygon", 1)));
    EXPECT_EXIT((consoleToStderr(), INSIDE_POLYGON_8(7, 2, X, Y, N, -1, ends, 1)), exit0,
                line(polygons("inside_polygon", 2)));

    std::vector<uint8_t> in(100), cr(100);
    int32_t a, b, c, d, n, flags[2];
    EXPECT_EXIT((consoleToStderr(), grid_inside_polygon_8(in.data(), cr.data(), nullptr, nullptr, 10, 10, 1.0, 1.0, 0,
                                                          0, true, false, false, true, 0, false, a, b, c, d, n, X, Y,
                                                          nullptr, N, ends, 1)),
                exit0, line(polygons("grid_inside_polygon", 1)));
    EXPECT_EXIT((consoleToStderr(), grid_inside_polygon(in.data(), cr.data(), nullptr, nullptr, 10, 10, 1.0f, 1.0f, 0,
                                                        0, true, false, false, true, 0, false, a, b, c, d, n,
                                                        xf.data(), yf.data(), nullptr, N, ends, 1)),
                exit0, line(polygons("grid_inside_polygon", 1)));
    const float pf[] = {0, 7}, qf[] = {0, 2};
    const double pd[] = {0, 7}, qd[] = {0, 2};
    EXPECT_EXIT((consoleToStderr(), grid_inside_polygon_points(flags, pf, qf, 1, n, xf.data(), yf.data(), N, ends, 1)),
                exit0, line(polygons("grid_inside_polygon", 4)));
    EXPECT_EXIT((consoleToStderr(), grid_inside_polygon_points_8(flags, pd, qd, 1, n, X, Y, N, ends, 1)), exit0,
                line(polygons("grid_inside_polygon", 5)));
}

TEST(GeometryFailureDeathTest, CellLimit) {
    const std::string nine =
        "SORRY - Exceeded limit of        9 HX cells per HX polyline segment.  Contact the reachmap maintainers.";
    std::vector<int32_t> jc(11), ic(11);
    int32_t a, b, c, d, n;
    const auto exit0 = ::testing::ExitedWithCode(0);
    // Ten cells along row 1 against a limit of nine.
    EXPECT_EXIT((consoleToStderr(), gridline_5(0.2f, 0.3f, 9.7f, 0.3f, false, 1, 1, a, b, c, d, n, jc.data(),
                                               ic.data(), 9, 0, 0)),
                exit0, line(nine));
    EXPECT_EXIT((consoleToStderr(), gridline_v2(0.2f, 0.3f, 9.7f, 0.3f, false, 1, 1, a, b, c, d, n, jc.data(),
                                                ic.data(), 9, 0, 0)),
                exit0, line(nine));
    EXPECT_EXIT((consoleToStderr(), gridline(0.2f, 0.3f, 9.7f, 0.3f, 1, 1, a, b, c, d, n, jc.data(), ic.data(), 9)),
                exit0, line(nine));
    // A limit of 0 cannot hold even the start cell of a segment without length.
    EXPECT_EXIT((consoleToStderr(), gridline(1, 1, 1, 1, 1, 1, a, b, c, d, n, jc.data(), ic.data(), 0)), exit0,
                line("SORRY - Exceeded limit of        0 HX cells per HX polyline segment.  Contact the reachmap maintainers."));
}

}  // namespace
