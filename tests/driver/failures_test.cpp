// Every failure of the converter ends in order: its message, the closing
// pause (which meets closed standard input and goes on), status 0, and what
// was written stays on disk.
#include <gtest/gtest.h>

#include "e2e_support.hpp"

namespace {

using namespace e2e;

bool endsInOrder(const RunResult& r) {
    const std::string tail = "\nPress Enter to Close";
    return r.status == 0 && r.out.size() >= tail.size() &&
           r.out.compare(r.out.size() - tail.size(), tail.size(), tail) == 0;
}

int errorLines(const std::string& out) {
    int n = 0;
    for (const auto& l : lines(out))
        if (l.rfind("ERROR - ", 0) == 0) ++n;
    return n;
}

std::string network(const std::string& rows) {
    return "title\r\nBEGIN STREAM NETWORK:\r\nREACH:\r\nSTREAM ID: S\r\nREACH ID: R\r\nCENTERLINE:\r\n" + rows;
}

std::string oneSection(const std::string& body) {
    return "title\r\nEND STREAM NETWORK:\r\nCROSS-SECTION:\r\nSTREAM ID:S\r\nREACH ID:R\r\n" + body;
}

struct Case {
    const char* name;
    std::string sdf;
    std::vector<std::string> args;
    std::vector<std::string> expect;  // lines, in this order
};

TEST(Failures, EachStopsInOrderWithItsMessage) {
    const std::string surface = "SURFACE LINE:\r\n0, 0, 1\r\n10, 0, 2\r\n";
    const std::vector<Case> cases = {
        {"unknown_option",
         "",
         {"-xyz", "a.sdf"},
         {"ERROR - Unrecognised option -xyz, use -shp, -mif or -notrim (run with no arguments for help)."}},
        {"both_formats",
         "",
         {"-mif", "-shp", "-mif", "a.sdf"},
         {"ERROR - Both mif and shp outputs specified, please use only one."}},
        {"no_prj",
         "x\r\n",
         {"-shp", "a.sdf"},
         {"ERROR - A Header.prj or Projection.prj file does not exist in folder."}},
        {"no_mif",
         "x\r\n",
         {"-mif", "a.sdf"},
         {"ERROR - A Header.mif or Projection.mif file does not exist in folder."}},
        {"bad_vertex",
         network("1, abc\r\nEND:\r\n"),
         {"a.sdf"},
         {"ERROR - Reading following line in file:", "", "1, abc", ""}},
        {"short_vertex", network("5\r\nEND:\r\n"), {"a.sdf"}, {"", "ERROR reading data", ""}},
        {"blank_vertex", network("\r\nEND:\r\n"), {"a.sdf"}, {"", "ERROR reading data", ""}},
        {"bad_cut_row",
         oneSection("STATION:1\r\nCUT LINE:\r\n1, x\r\nEND:\r\n"),
         {"a.sdf"},
         {"ERROR - Reading following line in file in sub GetSdfCutline", "", "1, x", ""}},
        // "END:" begins with a number byte, so it counts as a row of the cut line.
        {"cut_line_then_end",
         oneSection("STATION:1\r\nCUT LINE:\r\n1, 2\r\nEND:\r\n"),
         {"a.sdf"},
         {"ERROR - Reading following line in file in sub GetSdfCutline", "", "END:", ""}},
        {"bad_n_row",
         oneSection("STATION:1\r\nNVALUES:\r\n0.5\r\nEND:\r\n"),
         {"a.sdf"},
         {"ERROR - Reading following line in file in sub GetSdfnVals", "", "0.5", ""}},
        {"levee_row_without_comma",
         oneSection("STATION:1\r\nLEVEE POSITIONS:\r\nL 0.5\r\nEND:\r\n"),
         {"a.sdf"},
         {"ERROR - Reading following line in file in sub GetSdfLevees", "", "L 0.5", ""}},
        {"levee_row_one_comma",
         oneSection("STATION:1\r\nLEVEE POSITIONS:\r\nL, 0.5\r\nEND:\r\n"),
         {"a.sdf"},
         {"ERROR - Reading following line in file in sub GetSdfLevees"}},
        {"levee_blank_row",
         oneSection("STATION:1\r\nLEVEE POSITIONS:\r\n\r\nEND:\r\n"),
         {"a.sdf"},
         {"ERROR - Reading following line in file in sub GetSdfLevees"}},
        {"bad_surface_row",
         oneSection("STATION:1\r\nSURFACE LINE:\r\n1, 2\r\nEND:\r\n"),
         {"a.sdf"},
         {"ERROR - Reading following line in file in sub GetSdfSurfaceLine", "", "1, 2", ""}},
        {"bad_station",
         oneSection("STATION:abc\r\n" + surface + "END:\r\n"),
         {"a.sdf"},
         {"ERROR - converting station to numeric field"}},
        {"end_before_any_station",
         "title\r\nEND STREAM NETWORK:\r\nEND:\r\n",
         {"a.sdf"},
         {"ERROR - converting station to numeric field"}},
        {"eof_in_reach_block",
         "title\r\nREACH:\r\nSTREAM ID: S\r\n",
         {"a.sdf"},
         {"ERROR - Unexpected end of file inside a reach block (after line 3)."}},
        {"eof_in_vertex_list",
         network("1, 2\r\n"),
         {"a.sdf"},
         {"ERROR - Unexpected end of file inside a CENTERLINE vertex list (after line 7)."}},
        {"eof_in_section_head",
         "title\r\nEND STREAM NETWORK:\r\nCROSS-SECTION:\r\nSTREAM ID:S\r\n",
         {"a.sdf"},
         {"ERROR - Unexpected end of file inside a cross-section head (after line 4)."}},
        {"eof_in_cut_line",
         oneSection("STATION:1\r\nCUT LINE:\r\n1, 2\r\n"),
         {"a.sdf"},
         {"ERROR - Unexpected end of file inside a CUT LINE block (after line 8)."}},
    };
    for (const auto& c : cases) {
        fs::path d = scratch(std::string("fail_") + c.name);
        if (!c.sdf.empty()) writeFile(d / "a.sdf", c.sdf);
        RunResult r = reachmap(d, c.args);
        EXPECT_TRUE(endsInOrder(r)) << c.name << "\n" << r.out;
        EXPECT_TRUE(linesInOrder(r.out, c.expect)) << c.name << "\n" << r.out;
        EXPECT_FALSE(linesInOrder(r.out, {"Finished."})) << c.name;
    }
}

TEST(Failures, BothFormatsStopBeforeAnyFileIsLookedFor) {
    fs::path d = scratch("fail_both_early");
    RunResult r = reachmap(d, {"-shp", "-MIF", "missing.sdf"});
    EXPECT_TRUE(endsInOrder(r));
    EXPECT_EQ(r.out.find("Trying to open"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("Please enter"), std::string::npos) << r.out;
}

TEST(Failures, ProjectionFiles) {
    fs::path d = scratch("fail_projection");
    writeFile(d / "a.sdf", "x\r\n");
    // Only the first file that exists is tried.
    writeFile(d / "Header.mif", "Version 300\r\nColumns 1\r\n");
    writeFile(d / "Projection.mif", "CoordSys Earth Projection 1, 104\r\n");
    RunResult r = reachmap(d, {"-mif", "a.sdf"});
    EXPECT_TRUE(endsInOrder(r));
    EXPECT_TRUE(linesInOrder(
        r.out, {"Using Header.mif for setting projection.", "", "ERROR - Unable to find CoordSys line in Header.mif"}))
        << r.out;

    writeFile(d / "Header.prj", "");
    r = reachmap(d, {"-shp", "a.sdf"});
    EXPECT_TRUE(endsInOrder(r));
    EXPECT_TRUE(
        linesInOrder(r.out, {"GIS Projection being extracted from Header.prj", "",
                             "ERROR - Projection line could not be found in \"GIS Projection\" .prj file.Header.prj"}))
        << r.out;
}

TEST(Failures, WhatWasWrittenStaysOnDisk) {
    // The streams layer is complete when a bad station stops the section phase.
    fs::path d = scratch("fail_keeps_streams");
    writeFile(d / "a.sdf",
              "t\r\nREACH:\r\nSTREAM ID: S\r\nREACH ID: R\r\nCENTERLINE:\r\n0, 0\r\n3, 4\r\nEND:\r\n"
              "END STREAM NETWORK:\r\nCROSS-SECTION:\r\nSTREAM ID:S\r\nREACH ID:R\r\nSTATION:x1\r\nEND:\r\n");
    RunResult r = reachmap(d, {"a.sdf"});
    EXPECT_TRUE(endsInOrder(r));
    EXPECT_TRUE(linesInOrder(r.out, {"ERROR - converting station to numeric field"}));
    EXPECT_EQ(fs::file_size(d / "a.sdf_streams_L.shp"), 100u + 8u + 4u + 32u + 4u + 4u + 4u + 32u);
    EXPECT_EQ(fs::file_size(d / "a.sdf_streams_L.shx"), 108u);
    // The section layers stay as far as they were written: their headers.
    EXPECT_EQ(fs::file_size(d / "a_surf_pts_P.shp"), 100u);
}

TEST(Prompt, MissingFileWithNobodyToAnswer) {
    fs::path d = scratch("prompt_eof");
    RunResult r = reachmap(d, {"nofile.sdf"});
    EXPECT_TRUE(endsInOrder(r)) << r.out;
    EXPECT_NE(r.out.find(" Please enter the .sdf file (blank to exit)-> "), std::string::npos);
    EXPECT_EQ(errorLines(r.out), 1) << r.out;
}

TEST(Prompt, TypedNamesGetTheirExtensionAndAreAskedAgain) {
    fs::path d = scratch("prompt_typed");
    RunResult r = reachmap(d, {"nofile.sdf"}, "other\nriver.txt\n");
    EXPECT_TRUE(endsInOrder(r)) << r.out;
    EXPECT_NE(r.out.find(" WARNING - Can''t find file other.sdf, try again"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find(" WARNING - Can''t find file river.txt.sdf, try again"), std::string::npos) << r.out;
    EXPECT_EQ(errorLines(r.out), 1) << r.out;

    // A blank answer ends the run with no further message.
    r = reachmap(d, {"nofile.sdf"}, "\n");
    EXPECT_TRUE(endsInOrder(r)) << r.out;
    EXPECT_EQ(errorLines(r.out), 0) << r.out;

    // A typed name that exists is converted; RIVER.SDF keeps its own extension.
    writeFile(d / "RIVER.SDF", "t\r\nEND STREAM NETWORK:\r\n");
    r = reachmap(d, {"nofile.sdf"}, "RIVER.SDF\n");
    EXPECT_TRUE(linesInOrder(r.out, {"Finished."})) << r.out;
    EXPECT_TRUE(fs::exists(d / "RIVER.SDF_streams_L.shp"));
}

TEST(CommandLine, HelpAndOptionForms) {
    fs::path d = scratch("help");
    RunResult r = reachmap(d, {});
    EXPECT_TRUE(endsInOrder(r));
    EXPECT_TRUE(linesInOrder(r.out, {"",
                                     "Build 2023-01-AA",
                                     "",
                                     "",
                                     "Found  1 arguments",
                                     "",
                                     " reachmap description",
                                     "",
                                     " Converts HECRAS SDF (export format) to GIS format",
                                     " Outlines Centreline, cross-section locations and cross section in .csv format",
                                     " Options:",
                                     "",
                                     " GIS FORMAT:",
                                     "    -shp for shapefile format",
                                     "    -mif for MapInfo format",
                                     "    Note: Only one can be specified.",
                                     "",
                                     " LEVEE MARKERS:",
                                     "    -notrim, do not trim cross-sections to levee markers.",
                                     " EXAMPLES:",
                                     "    reachmap.exe -shp hecras.sdf"}))
        << r.out;
    // The banner has a blank line before and after it; the Found line one before.
    EXPECT_EQ(r.out.substr(0, 39), "\nBuild 2023-01-AA\n\n\nFound  1 arguments\n") << r.out;

    // -SHPfile counts as -shp, /notrim and the en dash form as -notrim; the last file name wins.
    writeFile(d / "b.sdf", "t\r\nEND STREAM NETWORK:\r\n");
    writeFile(d / "Header.prj", "PROJCS[\"x\"]\r\n");
    r = reachmap(d, {"a.sdf", "-SHPfile", "/notrimmed", "\x96notrim", "b.sdf"});
    EXPECT_TRUE(linesInOrder(r.out, {"Found  6 arguments", "shp Projection: PROJCS[\"x\"]", "Finished."})) << r.out;
    EXPECT_TRUE(fs::exists(d / "b.sdf_streams_L.shp"));
    EXPECT_FALSE(fs::exists(d / "a.sdf_streams_L.shp"));
}

}  // namespace
