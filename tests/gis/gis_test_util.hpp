// Shared pieces of the GIS library tests: a fixture with a clean library and
// file-unit state and a folder of its own, byte builders for hand-worked file
// contents, console capture, and a check for the stops that end the run.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>
#include "stop_expect.hpp"
#include "test_common.hpp"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <regex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "gis/gis.hpp"
#include "runtime/console.hpp"
#include "runtime/units.hpp"

namespace gistest {

using namespace tc;

// The literal as a POSIX extended regular expression.
inline std::string literal(const std::string& text) {
    return std::regex_replace(text, std::regex(R"([.[\](){}*+?|^$\\])"), R"(\$&)");
}

// Runs a command and gives its standard output; -1 in status when it could
// not be started.
inline std::string run(const std::string& command, int& status) {
    std::string out;
    FILE* p = ::popen(command.c_str(), "r");
    if (p == nullptr) {
        status = -1;
        return out;
    }
    char buf[4096];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    status = ::pclose(p);
    return out;
}

inline bool haveTool(const std::string& path) { return ::access(path.c_str(), X_OK) == 0; }

// CSV text, the geometry in its column WKT, made into the layer `out` of the
// format by GDAL's ogr2ogr; empty, or what went wrong.
inline std::string ogr2ogr(const std::string& csv, const std::string& out, const std::string& format) {
    writeFile(out + ".csv", csv);
    int status = 0;
    const std::string options = " -oo GEOM_POSSIBLE_NAMES=WKT -oo KEEP_GEOM_COLUMNS=NO -oo AUTODETECT_TYPE=YES";
    const std::string log =
        run("/usr/bin/ogr2ogr -f \"" + format + "\" '" + out + "' '" + out + ".csv'" + options + " 2>&1", status);
    return status == 0 ? "" : "ogr2ogr failed: " + log;
}

// Assigns a text out of line: g++ 12 sees the inlined assignment of a
// global text as a possible overrun and warns.
[[gnu::noinline]] inline void put(TextRef t, std::string_view s) { t.assign(s); }

// Attributes of gisA_: name, type word, width.
inline void setAttributes(std::initializer_list<std::tuple<const char*, const char*, int>> list) {
    gisA_.n = 0;
    for (const auto& [name, type, width] : list) {
        gisA_.name[++gisA_.n] = name;
        gisA_.type[gisA_.n] = type;
        gisA_.width[gisA_.n] = width;
    }
}

using Points = std::vector<std::pair<double, double>>;

// One object of the kind, its points from entry 1, with its record; part p
// starts at point starts[p - 1].
inline void writeObject(int32_t id, bool GisObject::*kind, const Points& pts, std::string_view record,
                        const std::vector<int32_t>& starts = {}) {
    gisClearObject(gisO_);
    gisO_.*kind = true;
    for (std::size_t p = 0; p < starts.size(); ++p) gisO_.ir[p + 1] = starts[p];
    gisO_.nr = starts.empty() ? 1 : static_cast<int32_t>(starts.size());
    gisN = 0;
    for (const auto& [x, y] : pts) {
        gisX[++gisN] = x;
        gisY[gisN] = y;
    }
    put(gisRecordLine, record);
    gisWriteObject(id, gisO_);
    gisWriteRecord(id, gisO_);
}

class GisTest : public ::testing::Test {
protected:
    // A stop that a test does not expect ends its process with status 0; the
    // test run counts that as a failure, as GoogleTest never reports the test passed.
    void SetUp() override {
        FILEINIT(1000);
        gisInitialiseLibrary(0, "", "", "");  // every slot free, checks off, no record of input layers
        gisClearObject(gisO_);
        gisCoordSysLine.clear();
        gisPrjLine.clear();
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ = std::filesystem::current_path() / "gis_out" / info->test_suite_name();
        dir_ += std::string(".") + info->name();
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
    }

    std::string path(const std::string& name) const { return (dir_ / name).string(); }

    // A layer opened for output with its header written.
    int32_t openWithHeader(const std::string& name, const char* letters = "") {
        int32_t id = gisOpenLayer(path(name), false, "O ", letters);
        gisWriteHeader(id);
        gisClearObject(gisO_);
        return id;
    }

    std::filesystem::path dir_;
};

}  // namespace gistest

// The statement stops the run (see stop_expect.hpp) with `text` as whole
// lines of its output.
#define EXPECT_GIS_STOP(statement, text) EXPECT_STOP(statement, "(^|\n)" + ::gistest::literal(text) + "\n")
