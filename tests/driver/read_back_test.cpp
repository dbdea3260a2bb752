// The six layers that the converter writes read back through the library's
// own reading sequence: the MIF and the SHP family of one conversion give the
// same objects and the same attribute values, and each input layer passes
// the projection checks against the projection it was written with.
#include <gtest/gtest.h>

#include <cmath>

#include "e2e_support.hpp"
#include "gis/mif/mif_reader.hpp"
#include "gis/reading/reading_util.hpp"
#include "gis/shp/shp_reader.hpp"
#include "runtime/console.hpp"
#include "runtime/units.hpp"

namespace {

using namespace e2e;

struct LayerName {
    const char* prefix;  // before the SDF file's stem
    const char* suffix;  // behind it
    const char* letter;  // the SHP set
};

const LayerName kLayers[] = {
    {"", ".sdf_streams", "L"},   {"", "_surf_pts", "P"},     {"2d_zsh_", "_end_pts", "P"},
    {"1d_xs_", "_surf_line", "L"}, {"", "_cut_line", "L"}, {"", "_levee_pts", "P"},
};

// Reads one layer with the projection references set; the console shows
// whether a check complained.
std::vector<reading::Object> readBack(const fs::path& file, std::vector<int32_t>* widths, std::string& console) {
    conFlush();
    ::testing::internal::CaptureStdout();
    int32_t id = gisOpenLayer(file.string(), false, "I ", "");
    const bool opened = id > 0;
    std::vector<reading::Object> objects;
    if (id > 0) objects = reading::readLayer(id);
    if (widths != nullptr && id > 0)
        for (int i = 1; i <= gisDbf[id][1].fieldCount; ++i) widths->push_back(gisDbf[id][1].widths[i]);
    if (id > 0) gisCloseLayer(id);
    conFlush();
    console = ::testing::internal::GetCapturedStdout();
    EXPECT_TRUE(opened) << file << console;
    return objects;
}

void convertAndCompare(const fs::path& sdf, const std::string& tag) {
    const std::string stem = sdf.stem().string();
    fs::path dirs[2];
    for (int f = 0; f < 2; ++f) {
        dirs[f] = scratch("read_back_" + tag + (f ? "_shp" : "_mif"));
        fs::copy_file(sdf, dirs[f] / sdf.filename());
        for (const char* h : {"Header.mif", "Header.prj"})
            fs::copy_file(fs::path(REACHMAP_SOURCE_DIR) / "examples" / h, dirs[f] / h);
        const RunResult r = reachmap(dirs[f], {f ? "-shp" : "-mif", sdf.filename().string()});
        ASSERT_EQ(r.status, 0) << r.out;
    }
    // The projections the layers were written with, as the checks compare them.
    Text<1000> coordSys;
    mifReadCoordSysLine(coordSys, (dirs[0] / "Header.mif").string());
    mifNormalCoordSys(gisMifProjection, coordSys.view());
    Text<1000> prj(lines(readFile(dirs[1] / "Header.prj"))[0]);
    prjProjectionName(gisShpProjection, prj);

    for (const LayerName& l : kLayers) {
        const std::string base = l.prefix + stem + l.suffix;
        SCOPED_TRACE(tag + ": " + base);
        // A run that stops early leaves the later layers out in both families.
        const bool written = fs::exists(dirs[0] / (base + ".mif"));
        ASSERT_EQ(fs::exists(dirs[1] / (base + "_" + l.letter + ".shp")), written);
        if (!written) continue;
        std::string mifConsole, shpConsole;
        std::vector<int32_t> widths;
        const auto mif = readBack(dirs[0] / (base + ".mif"), nullptr, mifConsole);
        const auto shp = readBack(dirs[1] / (base + "_" + l.letter + ".shp"), &widths, shpConsole);
        EXPECT_EQ(mifConsole.find("0305"), std::string::npos) << mifConsole;
        EXPECT_EQ(shpConsole.find("0305"), std::string::npos) << shpConsole;
        ASSERT_EQ(mif.size(), shp.size());
        // Every record line of the .mid is read as it stands.
        const auto midLines = lines(readFile(dirs[0] / (base + ".mid")));
        for (std::size_t i = 0; i < mif.size(); ++i) {
            SCOPED_TRACE("object " + std::to_string(i + 1));
            const reading::Object &a = mif[i], &b = shp[i];
            EXPECT_EQ(a.record + "\r", midLines[i]);
            EXPECT_EQ(a.kind, b.kind);
            ASSERT_EQ(a.subs.size(), b.subs.size());
            for (std::size_t k = 0; k < a.subs.size(); ++k) {
                const reading::Points &pa = a.subs[k].points, &pb = b.subs[k].points;
                ASSERT_EQ(pa.size(), pb.size());
                // The .mif holds six decimals, the .shp the full value.
                for (std::size_t j = 0; j < pa.size(); ++j) {
                    EXPECT_NEAR(pa[j].first, pb[j].first, 5.1e-7);
                    EXPECT_NEAR(pa[j].second, pb[j].second, 5.1e-7);
                }
            }
            // The same values, as the .dbf writer splits the line: one a
            // field, values beyond the fields dropped, each field holding
            // no more than its width.
            const auto va = reading::values(a.record), vb = reading::values(b.record);
            ASSERT_EQ(vb.size(), widths.size());
            ASSERT_GE(va.size(), vb.size());
            for (std::size_t v = 0; v < vb.size(); ++v) {
                std::string want = va[v].substr(0, std::size_t(widths[v]));
                want.erase(want.find_last_not_of(' ') + 1);
                EXPECT_EQ(vb[v], want) << "value " << v + 1;
            }
        }
    }
    gisMifProjection.clear();
    gisShpProjection.clear();
}

}  // namespace

TEST(ReadBack, ConverterLayersInBothFamilies) {
    FILEINIT(1000);
    fileUnitSettings.pauseOnPrematureExit = false;
    convertAndCompare(fs::path(REACHMAP_SOURCE_DIR) / "examples" / "river.sdf", "example");
    const fs::path shared(REACHMAP_SHARED_SDF);
    if (!fs::exists(shared)) GTEST_SKIP() << "no real SDF samples at " << shared;
    int n = 0;
    for (const auto& e : fs::directory_iterator(shared))
        if (e.path().extension() == ".sdf") convertAndCompare(e.path(), "real" + std::to_string(++n));
    EXPECT_GT(n, 0);
}
