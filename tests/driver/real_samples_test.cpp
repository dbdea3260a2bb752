// Conversions read back. The bundled example and the real SDF samples beside
// the project are converted in both formats. An independent reader (ogrinfo)
// finds in each layer as many features as the file's blocks call for, and
// the library's own reading sequence gives the same objects and values from
// the MIF and the SHP family, each passing the projection checks against the
// projection it was written with.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <regex>

#include "e2e_support.hpp"
#include "gis/mif/mif_reader.hpp"
#include "gis/reading/reading_util.hpp"
#include "gis/shp/shp_reader.hpp"
#include "runtime/console.hpp"
#include "runtime/units.hpp"

namespace {

using namespace e2e;

struct Expected {
    int centrelines = 0;       // CENTERLINE blocks of the stream network
    int cutLines = 0;          // sections with a CUT LINE block
    int surfaceLines = 0;      // sections whose SURFACE LINE has two points or more
    bool headsInPlace = true;  // every section head has its three id lines right behind it
};

bool has(const std::string& line, const char* word) {
    std::string u = line;
    for (auto& c : u) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return u.find(word) != std::string::npos;
}

bool numericRow(const std::string& line) {
    std::size_t i = line.find_first_not_of(" \t\r");
    return i != std::string::npos &&
           (std::isdigit(static_cast<unsigned char>(line[i])) || line[i] == '-' || line[i] == '.');
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

// Prefix, suffix round the SDF file's stem, and the SHP set letter.
const char* const kLayers[][3] = {{"", ".sdf_streams", "L"},     {"", "_surf_pts", "P"}, {"2d_zsh_", "_end_pts", "P"},
                                  {"1d_xs_", "_surf_line", "L"}, {"", "_cut_line", "L"}, {"", "_levee_pts", "P"}};

// One layer's objects, the widths of its .dbf fields, and what the console showed.
std::vector<reading::Object> readBack(const fs::path& file, std::vector<int32_t>& widths, std::string& console) {
    conFlush();
    ::testing::internal::CaptureStdout();
    int32_t id = gisOpenLayer(file.string(), false, "I ", "");
    const auto objects = reading::readLayer(id);
    for (int i = 1; i <= gisDbf[id][1].fieldCount; ++i) widths.push_back(gisDbf[id][1].widths[i]);
    gisCloseLayer(id);
    conFlush();
    console = ::testing::internal::GetCapturedStdout();
    return objects;
}

// Converts `sdf` with -mif and with -shp, each in a folder of its own with the
// example's projection files; gives the two folders.
std::array<fs::path, 2> convertBoth(const fs::path& sdf, const std::string& tag, std::array<RunResult, 2>& runs) {
    std::array<fs::path, 2> dirs;
    for (int f = 0; f < 2; ++f) {
        dirs[f] = scratch("real_" + tag + (f ? "_shp" : "_mif"));
        fs::copy_file(sdf, dirs[f] / sdf.filename());
        for (const char* h : {"Header.mif", "Header.prj"})
            fs::copy_file(fs::path(REACHMAP_SOURCE_DIR) / "examples" / h, dirs[f] / h);
        runs[f] = reachmap(dirs[f], {f ? "-shp" : "-mif", sdf.filename().string()});
        EXPECT_EQ(runs[f].status, 0);
    }
    return dirs;
}

// The six layers of both folders read back through the library and compared.
void compareFamilies(const std::array<fs::path, 2>& dirs, const fs::path& sdf, const std::string& tag) {
    FILEINIT(1000);
    fileUnitSettings.pauseOnPrematureExit = false;
    Text<1000> coordSys, prj(lines(readFile(dirs[1] / "Header.prj"))[0]);
    mifReadCoordSysLine(coordSys, (dirs[0] / "Header.mif").string());
    mifNormalCoordSys(gisMifProjection, coordSys.view());
    prjProjectionName(gisShpProjection, prj);

    for (const auto& [prefix, suffix, letter] : kLayers) {
        const std::string base = prefix + sdf.stem().string() + suffix;
        SCOPED_TRACE(tag + ": " + base);
        // A run that stops early leaves the later layers out in both families.
        const bool written = fs::exists(dirs[0] / (base + ".mif"));
        ASSERT_EQ(fs::exists(dirs[1] / (base + "_" + letter + ".shp")), written);
        if (!written) continue;
        std::string mifConsole, shpConsole;
        std::vector<int32_t> none, widths;
        const auto mif = readBack(dirs[0] / (base + ".mif"), none, mifConsole);
        const auto shp = readBack(dirs[1] / (base + "_" + letter + ".shp"), widths, shpConsole);
        EXPECT_EQ((mifConsole + shpConsole).find("WARNING"), std::string::npos) << mifConsole << shpConsole;
        const auto midLines = lines(readFile(dirs[0] / (base + ".mid")));
        ASSERT_EQ(mif.size(), shp.size());
        for (std::size_t i = 0; i < mif.size(); ++i) {
            SCOPED_TRACE("object " + std::to_string(i + 1));
            const reading::Object &a = mif[i], &b = shp[i];
            EXPECT_EQ(a.record + "\r", midLines[i]);  // each .mid line as it stands
            EXPECT_EQ(a.kind, b.kind);
            ASSERT_EQ(a.subs.size(), b.subs.size());
            for (std::size_t k = 0; k < a.subs.size(); ++k) {
                ASSERT_EQ(a.subs[k].points.size(), b.subs[k].points.size());
                for (std::size_t j = 0; j < a.subs[k].points.size(); ++j) {  // the .mif holds six decimals
                    EXPECT_NEAR(a.subs[k].points[j].first, b.subs[k].points[j].first, 5.1e-7);
                    EXPECT_NEAR(a.subs[k].points[j].second, b.subs[k].points[j].second, 5.1e-7);
                }
            }
            // The same values as the .dbf writer splits the line: one a field,
            // values beyond the fields dropped, each cut at its field's width.
            const auto va = reading::values(a.record), vb = reading::values(b.record);
            ASSERT_EQ(vb.size(), widths.size());
            ASSERT_GE(va.size(), vb.size());
            for (std::size_t v = 0; v < vb.size(); ++v) {
                std::string want = va[v].substr(0, std::size_t(widths[v]));
                EXPECT_EQ(vb[v], want.erase(want.find_last_not_of(' ') + 1)) << "value " << v + 1;
            }
        }
    }
    gisMifProjection.clear();
    gisShpProjection.clear();
}

}  // namespace

TEST(ReadBack, ExampleInBothFamilies) {
    const fs::path sdf = fs::path(REACHMAP_SOURCE_DIR) / "examples" / "river.sdf";
    std::array<RunResult, 2> runs;
    compareFamilies(convertBoth(sdf, "example", runs), sdf, "example");
}

namespace {

class RealFiles : public ::testing::TestWithParam<const char*> {};

TEST_P(RealFiles, ConvertInBothFormatsAndReadBack) {
    const fs::path src = fs::path(REACHMAP_SHARED_SDF) / GetParam();
    if (const std::string why = realSampleSkip(src); !why.empty()) GTEST_SKIP() << why;
    const std::string text = readFile(src);
    const Expected want = countBlocks(text);
    std::string badVertex;
    const int stray = strayCentreline(text, badVertex);
    std::array<RunResult, 2> runs;
    const auto dirs = convertBoth(src, src.stem().string(), runs);

    for (int f = 0; f < 2; ++f) {
        const bool mif = f == 0;
        const RunResult& r = runs[f];
        // Layer k of kLayers: 0 streams, 1 surface points, 2 end points,
        // 3 surface lines, 4 cut lines, 5 levee points.
        auto layer = [&](int k) {
            const auto& [prefix, suffix, letter] = kLayers[k];
            const std::string stem = prefix + src.stem().string() + suffix;
            return dirs[f] / (mif ? stem + ".mif" : stem + "_" + letter + ".shp");
        };
        const std::string where = std::string(GetParam()) + (mif ? " -mif" : " -shp");

        if (stray > 0) {
            EXPECT_TRUE(linesInOrder(r.out, {"Found CENTERLINE on line " + std::to_string(stray),
                                             "ERROR - Reading following line in file:", "", badVertex}))
                << where << "\n"
                << r.out;
            EXPECT_EQ(featureCount(layer(0)), 0) << where;
            EXPECT_FALSE(fs::exists(layer(4))) << where;
            continue;
        }

        EXPECT_EQ(featureCount(layer(0)), want.centrelines) << where;
        // A section head reads the three lines behind CROSS-SECTION: whatever
        // they hold; with a blank line among them no station is ever set, and
        // the first END: stops the run in order, the section layers empty.
        const int sections = want.headsInPlace ? 1 : 0;
        if (want.headsInPlace)
            EXPECT_TRUE(linesInOrder(r.out, {"Finished."})) << where << "\n" << r.out.substr(0, 3000);
        else EXPECT_TRUE(linesInOrder(r.out, {"ERROR - converting station to numeric field"})) << where;
        EXPECT_EQ(featureCount(layer(4)), sections * want.cutLines) << where;
        EXPECT_EQ(featureCount(layer(3)), sections * want.surfaceLines) << where;
        EXPECT_EQ(featureCount(layer(2)), sections * 2 * want.surfaceLines) << where;
        EXPECT_GE(featureCount(layer(1)), sections * 2 * want.surfaceLines) << where;
        EXPECT_EQ(featureCount(layer(5)), 0) << where;
    }
    compareFamilies(dirs, src, src.stem().string());
}

INSTANTIATE_TEST_SUITE_P(Samples, RealFiles, ::testing::ValuesIn(kRealSamples),
                         [](const auto& info) { return sampleName(info.param); });

}  // namespace
