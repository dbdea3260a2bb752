// The real SDF samples beside the project convert in both formats, and an
// independent reader (ogrinfo) finds in each layer as many features as the
// file's blocks call for.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>

#include "e2e_support.hpp"

namespace {

using namespace e2e;

struct Expected {
    int centrelines = 0;    // CENTERLINE blocks of the stream network
    int cutLines = 0;       // sections with a CUT LINE block
    int surfaceLines = 0;   // sections whose SURFACE LINE has two points or more
    bool headsInPlace = true;  // every section head has its three id lines right behind it
};

bool has(const std::string& line, const char* word) {
    std::string u = line;
    for (auto& c : u) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return u.find(word) != std::string::npos;
}

bool numericRow(const std::string& line) {
    std::size_t i = line.find_first_not_of(" \t\r");
    return i != std::string::npos && (std::isdigit(static_cast<unsigned char>(line[i])) || line[i] == '-' || line[i] == '.');
}

// Counts the blocks of a file from its structure alone.
Expected countBlocks(const std::string& text) {
    Expected e;
    auto ls = lines(text);
    bool inSections = false, inSection = false, cut = false, inSurface = false;
    int surfRows = 0;
    for (std::size_t i = 0; i < ls.size(); ++i) {
        const std::string& l = ls[i];
        if (!inSections) {
            if (has(l, "CENTERLINE")) ++e.centrelines;
            if (has(l, "BEGIN CROSS-SECTIONS")) inSections = true;
            continue;
        }
        if (has(l, "END CROSS-SECTIONS")) break;
        if (has(l, "CROSS-SECTION:")) {
            inSection = true;
            cut = inSurface = false;
            surfRows = 0;
            if (i + 3 >= ls.size() || !has(ls[i + 1], "STREAM ID:") || !has(ls[i + 2], "REACH ID:") ||
                !has(ls[i + 3], "STATION:"))
                e.headsInPlace = false;
            continue;
        }
        if (!inSection) continue;
        if (has(l, "CUT LINE")) cut = true;
        if (has(l, "SURFACE LINE")) {
            inSurface = true;
            surfRows = 0;
            continue;
        }
        if (inSurface && numericRow(l)) ++surfRows;
        if (inSurface && !numericRow(l)) inSurface = false;  // the rows are over
        if (has(l, "END:")) {
            if (cut) ++e.cutLines;
            if (surfRows >= 2) ++e.surfaceLines;
            inSection = false;
        }
    }
    return e;
}

int featureCount(const fs::path& layer) {
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

// Keywords are found anywhere in a line, in any case, from line 2 on. The
// first line that holds "CENTERLINE" opens a vertex list; when the line behind
// it is no vertex (a header naming a layer "StreamCenterlines" does this), the
// run stops there in order, with only the streams layer written.
int strayCentreline(const std::string& text, std::string& nextLine) {
    auto ls = lines(text);
    for (std::size_t i = 1; i + 1 < ls.size(); ++i) {
        if (!has(ls[i], "CENTERLINE")) continue;
        if (numericRow(ls[i + 1]) || has(ls[i + 1], "END:")) return 0;
        nextLine = ls[i + 1];
        while (!nextLine.empty() && (nextLine.back() == '\r' || nextLine.back() == ' ')) nextLine.pop_back();
        return static_cast<int>(i) + 1;
    }
    return 0;
}

class RealFiles : public ::testing::TestWithParam<const char*> {};

TEST_P(RealFiles, ConvertInBothFormats) {
    const fs::path src = fs::path(REACHMAP_SHARED_SDF) / GetParam();
    if (!fs::exists(src)) GTEST_SKIP() << "real SDF samples not found at " << src;
    if (std::system("command -v ogrinfo > /dev/null 2>&1") != 0) GTEST_SKIP() << "ogrinfo (gdal-bin) not installed";
    const std::string text = readFile(src);
    const Expected want = countBlocks(text);
    std::string badVertex;
    const int stray = strayCentreline(text, badVertex);

    for (const char* format : {"-mif", "-shp"}) {
        const bool mif = std::string(format) == "-mif";
        fs::path d = scratch(std::string("real_") + (mif ? "mif_" : "shp_") + GetParam());
        fs::copy_file(src, d / "river.sdf");
        writeFile(d / "Header.prj", "PROJCS[\"Local\",GEOGCS[\"GCS_WGS_1984\"]]\r\n");
        writeFile(d / "Header.mif", "CoordSys NonEarth Units \"m\" Bounds (-1e8, -1e8) (1e8, 1e8)\r\n");
        RunResult r = reachmap(d, {format, "river.sdf"});
        EXPECT_EQ(r.status, 0);
        auto layer = [&](const std::string& stem, const char* letter) {
            return d / (mif ? stem + ".mif" : stem + "_" + letter + ".shp");
        };
        const std::string where = std::string(GetParam()) + " " + format;

        if (stray > 0) {
            EXPECT_TRUE(linesInOrder(r.out, {"Found CENTERLINE on line " + std::to_string(stray),
                                             "ERROR - Reading following line in file:", "", badVertex}))
                << where << "\n" << r.out;
            EXPECT_EQ(featureCount(layer("river.sdf_streams", "L")), 0) << where;
            EXPECT_FALSE(fs::exists(layer("river_cut_line", "L"))) << where;
            continue;
        }

        EXPECT_EQ(featureCount(layer("river.sdf_streams", "L")), want.centrelines) << where;
        // A section head reads the three lines behind CROSS-SECTION: whatever
        // they hold; with a blank line among them no station is ever set, and
        // the first END: stops the run in order, the section layers empty.
        const int sections = want.headsInPlace ? 1 : 0;
        if (want.headsInPlace)
            EXPECT_TRUE(linesInOrder(r.out, {"Finished."})) << where << "\n" << r.out.substr(0, 3000);
        else
            EXPECT_TRUE(linesInOrder(r.out, {"ERROR - converting station to numeric field"})) << where;
        EXPECT_EQ(featureCount(layer("river_cut_line", "L")), sections * want.cutLines) << where;
        EXPECT_EQ(featureCount(layer("1d_xs_river_surf_line", "L")), sections * want.surfaceLines) << where;
        EXPECT_EQ(featureCount(layer("2d_zsh_river_end_pts", "P")), sections * 2 * want.surfaceLines) << where;
        EXPECT_GE(featureCount(layer("river_surf_pts", "P")), sections * 2 * want.surfaceLines) << where;
        EXPECT_EQ(featureCount(layer("river_levee_pts", "P")), 0) << where;
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, RealFiles,
                         ::testing::Values("hecras410_export_3reach_52xs_wse.sdf",
                                           "rivergis_example1d_19xs_structures.sdf",
                                           "rivergis_start_11xs_null_z.sdf", "rivergis_network_only_5reach.sdf",
                                           "civil3d_geo_elseco_97xs_crlf.sdf"),
                         [](const auto& info) {
                             std::string n = info.param;
                             return n.substr(0, n.find('.'));
                         });

}  // namespace
