// End-to-end conversions of small SDF files whose outputs were worked out by
// hand: file names, .mif/.mid text, .shp/.shx/.dbf bytes, .csv rows.
#include <gtest/gtest.h>

#include <cstdio>

#include "e2e_support.hpp"

namespace {

using namespace e2e;

const std::string kPrj =
    "PROJCS[\"GDA_1994_MGA_Zone_55\",GEOGCS[\"GCS_GDA_1994\"],PROJECTION[\"Transverse_Mercator\"]]";
const std::string kCoordSys = "CoordSys Earth Projection 8, 116, \"m\", 147, 0, 0.9996, 500000, 10000000";

void projectionFiles(const fs::path& d) {
    writeFile(d / "Header.prj", kPrj + "\r\n");
    writeFile(d / "Header.mif", crlf({"Version 300", kCoordSys, "Columns 1", "  ID Integer", "Data"}));
}

// One reach, one section with a cut line, an n table, two levee markers and a
// five-point surface line across a straight reach.
std::string sectionA() {
    return crlf({"SDF for tests", "BEGIN STREAM NETWORK:", "   REACH:", "      STREAM ID: S1", "      REACH ID: R1",
                 "      CENTERLINE:", "         0, 0", "         100, 0", "   END:", "END STREAM NETWORK:",
                 "BEGIN CROSS-SECTIONS:", "   CROSS-SECTION:", "      STREAM ID:S1", "      REACH ID:R1",
                 "      STATION:50", "      CUT LINE:", "         50, -50", "         50, 50", "      NVALUES:",
                 "         0, 0.05", "         0.5, 0.03", "      LEVEE POSITIONS:", "         L, 0.25, 12",
                 "         R, 0.75, 13", "      SURFACE LINE:", "         50, -50, 15", "         50, -25, 12",
                 "         50, 0, 10", "         50, 25, 12.5", "         50, 50, 16", "   END:",
                 "END CROSS-SECTIONS:"});
}

std::string mifHeader(std::initializer_list<std::string> columns) {
    std::string h = crlf({"Version 300", "Charset \"WindowsLatin1\"", "Delimiter \",\"", kCoordSys});
    h += "Columns " + std::to_string(columns.size()) + "\r\n";
    for (const auto& c : columns) h += "  " + c + "\r\n";
    return h + "Data\r\n\r\n";
}

std::string p16(double x, double y) {
    char b[40];
    std::snprintf(b, sizeof b, "%16.6f%16.6f", x, y);
    return b;
}

const std::string kCsvA = crlf({"\"X\",\"Z\",\"N\"", "      25.000,     12.0000,  0.0500",
                                "      50.000,     10.0000,  0.0300", "      75.000,     12.5000,  0.0300"});

// One run of the small section: every MIF layer and the .csv, and below, the
// whole console transcript.
TEST(Conversion, MifLayersAndTranscriptOfOneSection) {
    fs::path d = scratch("mif_a");
    projectionFiles(d);
    writeFile(d / "tiny.sdf", sectionA());
    RunResult r = reachmap(d, {"-mif", "tiny.sdf"});
    const std::string pt = "Point ";
    const std::vector<std::pair<std::string, std::string>> files = {
        {"tiny.sdf_streams.mif", mifHeader({"Stream_ID Char(100)", "Reach_ID Char(100)"}) +
                                     crlf({"Pline 2", p16(0, 0), p16(100, 0)})},
        {"tiny.sdf_streams.mid", "\" S1\",\" R1\"\r\n"},
        // Trimmed to the markers at 0.25 and 0.75: chainage 25 to 75, both ends kept.
        {"tiny_surf_pts.mif", mifHeader({"Stream_ID Char(100)", "Reach_ID Char(100)", "Station Char(100)",
                                         "Elevation Float", "Mannings Float"}) +
                                  crlf({pt + p16(50, -25), pt + p16(50, 0), pt + p16(50, 25)})},
        {"tiny_surf_pts.mid", crlf({"\"S1\",\"R1\",\"50\",      12.000,  0.0500", "\"S1\",\"R1\",\"50\",      10.000,  0.0300",
                                    "\"S1\",\"R1\",\"50\",      12.500,  0.0300"})},
        // End points: the first and last points as read, whatever was trimmed.
        {"2d_zsh_tiny_end_pts.mif",
         mifHeader({"Z Float", "dZ Float", "Shape_Width_or_dMax Float", "Shape_Options Char(20)"}) +
             crlf({pt + p16(50, -50), pt + p16(50, 50)})},
        {"2d_zsh_tiny_end_pts.mid", crlf({"     15.0000,  0.0000,     0.000,\"\"", "      16.000,  0.0000,     0.000,\"\""})},
        {"1d_xs_tiny_surf_line.mif",
         mifHeader({"Source Char(50)", "Type Char(2)", "Flags Char(8)", "Column_1 Char(20)", "Column_2 Char(20)",
                    "Column_3 Char(20)", "Column_4 Char(20)", "Column_5 Char(20)", "Column_6 Char(20)",
                    "Z_Increment Float", "Z_Maximum Float", "Skew Float", "Comments Char(200)"}) +
             crlf({"Pline 3", p16(50, -25), p16(50, 0), p16(50, 25)})},
        {"1d_xs_tiny_surf_line.mid",
         "\"S1_R1_50.csv\",\"xz\",\"n\",\"\",\"\",\"\",\"\",\"\",\"\",       0.000,   0.000,   0.000,\"\"\r\n"},
        {"tiny_cut_line.mif", mifHeader({"Stream_ID Char(100)", "Reach_ID Char(100)", "Station Char(100)"}) +
                                  crlf({"Pline 2", p16(50, -50), p16(50, 50)})},
        {"tiny_cut_line.mid", "\"S1\",\"R1\",\"50\"\r\n"},
        // The markers lie on points 2 and 4; their names stand bare.
        {"tiny_levee_pts.mif", mifHeader({"Stream_ID Char(100)", "Reach_ID Char(100)", "Station Char(100)",
                                          "Elevation Float", "Levee_ID Char(100)"}) +
                                   crlf({pt + p16(50, -25), pt + p16(50, 25)})},
        {"tiny_levee_pts.mid", crlf({"\"S1\",\"R1\",\"50\",      12.000,L", "\"S1\",\"R1\",\"50\",      13.000,R"})},
        // N from the row at 0.5 on, for the point at exactly 50.
        {"S1_R1_50.csv", kCsvA},
    };
    for (const auto& [name, want] : files) EXPECT_EQ(readFile(d / name), want) << name;

    // The transcript: banner, projection and input files with their units,
    // each layer with its files, the scanning log, the .csv, closes, pause.
    std::vector<std::string> t = {
        "", "Build 2023-01-AA", "", "", "Found  3 arguments", "", "Trying to open file Header.mif...OK.",
        "Opened File Unit:1001", "", "Using Header.mif for setting projection.", "", "mif Projection: " + kCoordSys,
        "", "Trying to open file tiny.sdf...OK.", "Opened File Unit:1002", "Opening GIS Layer: tiny.sdf_streams.mif",
        "GIS Layer assigned ID of 1", "", "Trying to open file tiny.sdf_streams.mif...OK.  File Unit:1003", "",
        "Trying to open file tiny.sdf_streams.mid...OK.  File Unit:1004", "", "Processing Stream Centrelines", "", "",
        "Found start of reach block on line 3", "", "Found CENTERLINE on line 6", "",
        "Found ENDSTREAMNETWORK on line 10", "", "Closing GIS Layer 1 [tiny.sdf_streams.mif]...",
        "...Closed File Unit:1003", "...Closed File Unit:1004"};
    // The five section layers take ids 1 to 5 and units from 1003 on, two each.
    const char* layers[] = {"tiny_surf_pts", "2d_zsh_tiny_end_pts", "1d_xs_tiny_surf_line", "tiny_cut_line",
                            "tiny_levee_pts"};
    for (int i = 0; i < 5; ++i) {
        t.push_back(std::string("Opening GIS Layer: ") + layers[i] + ".mif");
        t.push_back("GIS Layer assigned ID of " + std::to_string(i + 1));
        for (int k = 0; k < 2; ++k) {
            t.push_back("");
            t.push_back(std::string("Trying to open file ") + layers[i] + (k ? ".mid" : ".mif") +
                        "...OK.  File Unit:" + std::to_string(1003 + 2 * i + k));
        }
    }
    for (const char* l : {"", "Found BEGIN CROSS-SECTIONS: on line 11", "", "Found new cross-section on line 12", "",
                          "Found LEVEE POSITIONS on line 22", "", "Found SURFACE LINE on line 25", "",
                          "End of section processing... ", "", "Trying to open file S1_R1_50.csv...OK.  File Unit:1013",
                          "...Closed File Unit:1013", "", "Found END CROSS-SECTIONS on line 32"})
        t.push_back(l);
    for (int i = 0; i < 5; ++i) {
        t.push_back("");
        t.push_back("Closing GIS Layer " + std::to_string(i + 1) + " [" + layers[i] + ".mif]...");
        t.push_back("...Closed File Unit:" + std::to_string(1003 + 2 * i));
        t.push_back("...Closed File Unit:" + std::to_string(1004 + 2 * i));
    }
    for (const char* l : {"", "Finished.", "", "Press Enter to Close"}) t.push_back(l);
    EXPECT_EQ(lines(r.out), t) << r.out;
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "");
}

// The layouts that the converter decides in the shapefile family: a polyline
// record, point records with their index, the .dbf field mapping (Float as
// N 16.5, names cut to ten bytes) and values as the record lines give them.
TEST(Conversion, ShapefileBytesOfOneSection) {
    fs::path d = scratch("shp_a");
    projectionFiles(d);
    writeFile(d / "tiny.sdf", sectionA());
    RunResult r = reachmap(d, {"-shp", "tiny.sdf"});
    EXPECT_TRUE(linesInOrder(r.out, {"Finished."})) << r.out;
    EXPECT_EQ(readFile(d / "tiny_cut_line_L.prj"), kPrj + "\r\n");
    EXPECT_EQ(readFile(d / "S1_R1_50.csv"), kCsvA);

    // Streams: one polyline of two points, content (44 + 4 + 32) / 2 = 40 words.
    const std::string line = be32(1) + be32(40) + le32(3) + le64(0) + le64(0) + le64(100) + le64(0) + le32(1) +
                             le32(2) + le32(0) + le64(0) + le64(0) + le64(100) + le64(0);
    EXPECT_EQ(readFile(d / "tiny.sdf_streams_L.shp"), shpHeader(94, 3, 0, 0, 100, 0) + line);

    // Surface points: three point records of 10 words each.
    std::string pts, index, rec;
    const double ys[] = {-25, 0, 25};
    const char* z[] = {"12.000", "10.000", "12.500"};
    const char* n[] = {"0.0500", "0.0300", "0.0300"};
    for (int i = 0; i < 3; ++i) {
        pts += be32(i + 1) + be32(10) + le32(1) + le64(50) + le64(ys[i]);
        index += be32(50 + 14 * i) + be32(10);
        rec += " " + padded("S1", 100) + padded("R1", 100) + padded("50", 100) + padded(z[i], 16, ' ', true) +
               padded(n[i], 16, ' ', true);
    }
    EXPECT_EQ(readFile(d / "tiny_surf_pts_P.shp"), shpHeader(92, 1, 50, -25, 50, 25) + pts);
    EXPECT_EQ(readFile(d / "tiny_surf_pts_P.shx"), shpHeader(62, 1, 50, -25, 50, 25) + index);
    EXPECT_EQ(withoutDate(readFile(d / "tiny_surf_pts_P.dbf")),
              dbfHeader(3, {{"Stream_ID", 'C', 100, 0}, {"Reach_ID", 'C', 100, 0}, {"Station", 'C', 100, 0},
                            {"Elevation", 'N', 16, 5}, {"Mannings", 'N', 16, 5}}) +
                  rec + '\x1A');

    std::string ends;
    for (const char* first : {"15.0000", "16.000"})
        ends += " " + padded(first, 16, ' ', true) + padded("0.0000", 16, ' ', true) + padded("0.000", 16, ' ', true) +
                padded("", 20);
    EXPECT_EQ(withoutDate(readFile(d / "2d_zsh_tiny_end_pts_P.dbf")),
              dbfHeader(2, {{"Z", 'N', 16, 5}, {"dZ", 'N', 16, 5}, {"Shape_Widt", 'N', 16, 5},
                            {"Shape_Opti", 'C', 20, 0}}) +
                  ends + '\x1A');
}

// Sections along the x axis, points every 10 units; `z` gives the profile.
std::string section(const std::string& station, const std::vector<double>& z, const std::vector<std::string>& levees,
                    bool leveeBlock = true, const std::string& nvalues = "") {
    std::string s = crlf({"   CROSS-SECTION:", "      STREAM ID:T", "      REACH ID:R", "      STATION:" + station});
    s += nvalues;
    if (leveeBlock) {
        s += "      LEVEE POSITIONS:\r\n";
        for (const auto& l : levees) s += "         " + l + "\r\n";
    }
    s += "      SURFACE LINE:\r\n";
    for (std::size_t i = 0; i < z.size(); ++i) {
        char b[80];
        std::snprintf(b, sizeof b, "         %g, 0, %g", 10.0 * static_cast<double>(i), z[i]);
        s += std::string(b) + "\r\n";
    }
    return s + "   END:\r\n";
}

std::string csvRows(const std::vector<std::pair<double, double>>& rows) {
    std::string s = "\"X\",\"Z\"\r\n";
    for (const auto& [x, z] : rows) {
        char b[40];
        std::snprintf(b, sizeof b, "%12.3f,%12.4f\r\n", x, z);
        s += b;
    }
    return s;
}

std::string trimFile() {
    std::string s = crlf({"trim cases", "END STREAM NETWORK:", "BEGIN CROSS-SECTIONS:"});
    const std::vector<double> v5 = {5, 3, 1, 4, 6};
    s += section("1", v5, {"A, 0.25, 7"});          // one marker left of the lowest point
    s += section("2", v5, {"A, 0.75, 7"});          // one marker right of it
    s += section("3", v5, {"A, 0.5, 7"});           // one marker exactly at it
    const std::vector<double> v9 = {9, 8, 7, 6, 1, 6, 7, 8, 9};
    s += section("4", v9, {"a, 0.125, 9", "b, 0.375, 9", "c, 0.625, 9", "d, 0.875, 9"});
    s += section("5", v9, {"a, 0.125, 9", "b, 0.25, 9", "c, 0.375, 9"});  // all left of the lowest point
    s += section("6", v5, {"L, 0.25,", "R, 0.625, 8"});                     // one without a height
    s += section("7", v5, {});                                               // a block with no rows
    s += section("8", v5, {"L, 0.5, 1", "R, 0.5, 2"});                       // leaves one point
    s += crlf({"   CROSS-SECTION:", "      STREAM ID:T", "      REACH ID:R", "      STATION:9", "      CUT LINE:",
               "         1, 2", "         3, 4", "      BANK POSITIONS: 0.1, 0.9", "   END:"});
    return s + "END CROSS-SECTIONS:\r\n";
}

TEST(Conversion, TrimmingToLeveeMarkers) {
    fs::path d = scratch("trim");
    projectionFiles(d);
    writeFile(d / "trim.sdf", trimFile());
    RunResult r = reachmap(d, {"-mif", "trim.sdf"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(readFile(d / "T_R_1.csv"), csvRows({{10, 3}, {20, 1}, {30, 4}, {40, 6}}));
    EXPECT_EQ(readFile(d / "T_R_2.csv"), csvRows({{0, 5}, {10, 3}, {20, 1}, {30, 4}}));
    EXPECT_EQ(readFile(d / "T_R_3.csv"), csvRows({{0, 5}, {10, 3}, {20, 1}}));
    EXPECT_EQ(readFile(d / "T_R_4.csv"), csvRows({{30, 6}, {40, 1}, {50, 6}}));
    EXPECT_EQ(readFile(d / "T_R_5.csv"),
              csvRows({{0, 9}, {10, 8}, {20, 7}, {30, 6}, {40, 1}, {50, 6}, {60, 7}, {70, 8}, {80, 9}}));
    EXPECT_EQ(readFile(d / "T_R_6.csv"), csvRows({{10, 3}, {20, 1}}));
    EXPECT_EQ(readFile(d / "T_R_7.csv"), csvRows({{0, 5}, {10, 3}, {20, 1}, {30, 4}, {40, 6}}));
    EXPECT_EQ(readFile(d / "T_R_8.csv"), csvRows({{20, 1}}));
    EXPECT_FALSE(fs::exists(d / "T_R_9.csv"));

    // Line numbers are those of the lines that ended the levee blocks, or of the row.
    EXPECT_TRUE(linesInOrder(r.out, {"WARNING - Only one levee points detected for section. Line number: 10",
                                     "WARNING - Only one levee points detected for section. Line number: 23",
                                     "WARNING - Only one levee points detected for section. Line number: 36",
                                     "WARNING - More than two levee points detected for section. Line number: 52",
                                     "WARNING - More than 2 levee markers found.",
                                     "WARNING - More than two levee points detected for section. Line number: 71",
                                     "WARNING - More than 2 levee markers found.",
                                     "ERROR - Determing which two levee markes to use.",
                                     "WARNING - No levee height specified.  Line number: 87",
                                     "WARNING - No levee points detected. Line number: 101"}))
        << r.out;
    EXPECT_EQ(countLine(r.out, "Error here."), 1);
    EXPECT_TRUE(linesInOrder(r.out, {"Warning - No surface line for section in sdf, unable to export .csv format section.",
                                     "TR9"}));

    // Surface lines: sections 1 to 7 (section 8 keeps one point, 9 has none).
    const std::string lineMif = readFile(d / "1d_xs_trim_surf_line.mif");
    std::size_t plines = 0;
    for (std::size_t p = lineMif.find("Pline "); p != std::string::npos; p = lineMif.find("Pline ", p + 1)) ++plines;
    EXPECT_EQ(plines, 7u);
    // End points: two for every section with a surface line, whatever was trimmed.
    EXPECT_EQ(lines(readFile(d / "2d_zsh_trim_end_pts.mid")).size(), 2u * 8u + 1u);
    // Levee points: every marker of the sections that have them, used or not;
    // a missing height is 9999.
    const auto levees = lines(readFile(d / "trim_levee_pts.mid"));
    EXPECT_EQ(levees.size(), 14u + 1u);
    EXPECT_EQ(levees[3], "\"T\",\"R\",\"4\",       9.000,a\r");
    EXPECT_EQ(levees[10], "\"T\",\"R\",\"6\",    9999.000,L\r");
    // Marker positions: 0.25 of 40 is point 2; 0.625 of 40 is half way from 20 to 30.
    const std::string leveeMif = readFile(d / "trim_levee_pts.mif");
    EXPECT_NE(leveeMif.find("Point " + p16(10, 0) + "\r\nPoint " + p16(30, 0) + "\r\nPoint " + p16(20, 0)), std::string::npos);
    EXPECT_NE(leveeMif.find("Point " + p16(25, 0) + "\r\n"), std::string::npos);
    // The cut line of the section without a surface line is still written.
    EXPECT_EQ(readFile(d / "trim_cut_line.mid"), "\"T\",\"R\",\"9\"\r\n");
}

TEST(Conversion, NoTrimKeepsWholeSectionsAndWritesNoLeveePoints) {
    fs::path d = scratch("notrim");
    projectionFiles(d);
    writeFile(d / "trim.sdf", trimFile());
    RunResult r = reachmap(d, {"-mif", "-NoTrim", "trim.sdf"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(readFile(d / "T_R_1.csv"), csvRows({{0, 5}, {10, 3}, {20, 1}, {30, 4}, {40, 6}}));
    EXPECT_EQ(readFile(d / "T_R_8.csv"), csvRows({{0, 5}, {10, 3}, {20, 1}, {30, 4}, {40, 6}}));
    EXPECT_EQ(readFile(d / "trim_levee_pts.mid"), "");
    // The rows are still read and warned about; the trimming step does not run.
    EXPECT_EQ(countLine(r.out, "WARNING - More than two levee points detected for section. Line number: 52"), 1);
    EXPECT_EQ(countLine(r.out, "WARNING - More than 2 levee markers found."), 0);
    EXPECT_EQ(countLine(r.out, "Error here."), 0);
}

TEST(Conversion, ManningsWalkAndLostBlock) {
    fs::path d = scratch("nvalues");
    projectionFiles(d);
    // Rows at 0.4 and 0.5 of 30 both lie between the points at 10 and 20: the
    // second is reached one point late. The CUT LINE standing right behind the
    // n rows is lost: its keyword line ended the n block.
    std::string s = crlf({"n walk", "END STREAM NETWORK:"});
    s += section("1", {1, 2, 3, 4}, {}, false,
                 crlf({"      NVALUES:", "         0, 0.01", "         0.4, 0.02", "         0.5, 0.03", "      CUT LINE:",
                       "         1, 2", "         3, 4"}));
    writeFile(d / "n.sdf", s);
    RunResult r = reachmap(d, {"-mif", "n.sdf"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(readFile(d / "T_R_1.csv"), crlf({"\"X\",\"Z\",\"N\"", "       0.000,      1.0000,  0.0100",
                                               "      10.000,      2.0000,  0.0100",
                                               "      20.000,      3.0000,  0.0200",
                                               "      30.000,      4.0000,  0.0300"}));
    EXPECT_EQ(readFile(d / "n_cut_line.mid"), "");
    EXPECT_EQ(readFile(d / "n_surf_pts.mid"),
              crlf({"\"T\",\"R\",\"1\",       1.000,  0.0100", "\"T\",\"R\",\"1\",       2.000,  0.0100",
                    "\"T\",\"R\",\"1\",       3.000,  0.0200", "\"T\",\"R\",\"1\",       4.000,  0.0300"}));
}

TEST(Conversion, NamesAndEmptyLayers) {
    // With no format option the layers are shapefiles without a projection;
    // a file without sections still gets its five empty section layers.
    fs::path d = scratch("names");
    writeFile(d / "hecras.sdf", crlf({"title", "BEGIN STREAM NETWORK:", "END STREAM NETWORK:"}));
    RunResult r = reachmap(d, {"hecras.sdf"});
    EXPECT_EQ(r.status, 0);
    for (const char* stem : {"hecras.sdf_streams_L", "hecras_surf_pts_P", "2d_zsh_hecras_end_pts_P",
                             "1d_xs_hecras_surf_line_L", "hecras_cut_line_L", "hecras_levee_pts_P"}) {
        for (const char* ext : {".shp", ".shx", ".dbf", ".prj"})
            EXPECT_TRUE(fs::exists(d / (std::string(stem) + ext))) << stem << ext;
        EXPECT_EQ(fs::file_size(d / (std::string(stem) + ".shp")), 100u) << stem;
        EXPECT_EQ(readFile(d / (std::string(stem) + ".prj")), "\r\n") << stem;
    }
    EXPECT_EQ(readFile(d / "hecras_surf_pts_P.shp"), shpHeader(50, 1, 0, 0, -1, -1));
}

}  // namespace

namespace {

// With a folder in the name, all six layers lie beside the SDF file (the
// "2d_zsh_" and "1d_xs_" prefixes go in front of the file's own name), the
// projection comes from that folder and the .csv files from the current one.
// A Windows-style separator works as well.
TEST(Conversion, FileInAFolder) {
    for (const char* name : {"data/river.sdf", "data\\river.sdf"}) {
        fs::path d = scratch(std::string("folder_") + (name[4] == '/' ? "slash" : "backslash"));
        fs::create_directories(d / "data");
        projectionFiles(d / "data");
        writeFile(d / "data" / "river.sdf", sectionA());
        RunResult r = reachmap(d, {"-shp", name});
        EXPECT_TRUE(linesInOrder(r.out, {"GIS Projection being extracted from " + std::string(name).substr(0, 5) + "Header.prj",
                                         "Finished."}))
            << r.out;
        for (const char* stem : {"river.sdf_streams_L", "river_surf_pts_P", "2d_zsh_river_end_pts_P",
                                 "1d_xs_river_surf_line_L", "river_cut_line_L", "river_levee_pts_P"})
            EXPECT_TRUE(fs::exists(d / "data" / (std::string(stem) + ".shp"))) << name << " " << stem;
        EXPECT_TRUE(fs::exists(d / "S1_R1_50.csv")) << name;
    }
}

}  // namespace
