// Writes two polylines with their records to an SHP layer through the GIS
// library's public calls, reads the layer back through the public reading
// sequence and compares. The library ends a run with status 0 on any error,
// so success is the last line, "consumer: OK"; a mismatch exits 1.
#include <cstdio>
#include <string>
#include <vector>

#include "gis/gis.hpp"
#include "runtime/units.hpp"

namespace {

struct Line {
    std::vector<double> x, y;
    std::string record;
};

const std::vector<Line> kLines = {
    {{300000.5, 300010.25, 300020.0}, {6000000.0, 6000005.5, 6000001.0}, "\"Upper\",12.5"},
    {{300100.0, 300150.75}, {6000100.0, 6000090.125}, "\"Lower\",-3"},
};

int fail(const std::string& what) {
    std::printf("consumer: FAILED: %s\n", what.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : ".";
    FILEINIT(1000);
    gisInitialiseLibrary(0, "", "", "");

    gisA_.n = 2;
    gisA_.name[1] = "Reach";
    gisA_.type[1] = "Char";
    gisA_.width[1] = 10;
    gisA_.name[2] = "Level";
    gisA_.type[2] = "Float";
    gisA_.width[2] = 0;
    int32_t id = gisOpenLayer(folder + "/reaches.shp", false, "O ", "L");
    gisWriteHeader(id);
    for (const Line& line : kLines) {
        gisClearObject(gisO_);
        gisO_.isPline = true;
        gisN = 0;
        for (std::size_t i = 0; i < line.x.size(); ++i) {
            gisX[++gisN] = line.x[i];
            gisY[gisN] = line.y[i];
        }
        gisRecordLine = line.record;
        gisWriteObject(id, gisO_);
        gisWriteRecord(id, gisO_);
    }
    gisCloseLayer(id);

    id = gisOpenLayer(folder + "/reaches_L.shp", false, "I ", "");
    gisReadHeader(id);
    gisGotoBeginningOfData(id);
    std::size_t n = 0;
    for (; gisObjectType(id, gisO_); ++n) {
        if (n >= kLines.size()) return fail("more objects than written");
        const Line& want = kLines[n];
        if (!gisO_.isPline) return fail("object " + std::to_string(n + 1) + " is not a polyline");
        gisReadRecord(id, gisO_, gisRecordLine);
        const std::string record(gisRecordLine.trimmed());
        const std::string name = want.record.substr(1, want.record.find('"', 1) - 1);
        if (record.find(name) == std::string::npos)
            return fail("record " + std::to_string(n + 1) + " is \"" + record + "\"");
        double cx = 0, cy = 0;
        float angle = 0, length = 0;
        gisN = 0;
        gisReadObject(id, gisO_, gisX, gisY, kGisMaxPoints, gisN, cx, cy, angle, length, true);
        if (static_cast<std::size_t>(gisN) != want.x.size()) return fail("object " + std::to_string(n + 1) + " points");
        for (int32_t i = 1; i <= gisN; ++i)
            if (gisX[i] != want.x[i - 1] || gisY[i] != want.y[i - 1])
                return fail("object " + std::to_string(n + 1) + " point " + std::to_string(i));
    }
    gisCloseLayer(id);
    if (n != kLines.size()) return fail(std::to_string(n) + " objects read, 2 written");
    std::printf("consumer: OK\n");
    return 0;
}
