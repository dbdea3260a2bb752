// The section phase: gathers the blocks of each cross-section into
// sectionRecord and hands it to the export at the section's END: line.
#pragma once

#include <cstdint>
#include <string_view>

#include "driver/sdf_scan.hpp"

// How the block readers take one line. The CUT LINE and NVALUES blocks end
// at a line that holds no value at all, the SURFACE LINE block at one that
// does not start with values, the LEVEE POSITIONS block at any line with a
// colon. Every other line is a row, and a row that cannot be read is bad.
bool endsValueBlock(std::string_view line);
bool endsSurfaceBlock(std::string_view line);
bool endsLeveeBlock(std::string_view line);
bool readNValueRow(std::string_view line, float& station, float& n);
bool readSurfaceRow(std::string_view line, double& x, double& y, float& z);
// name, station[, elevation]; `noHeight` when the elevation is missing (it is then 9999).
bool readLeveeRow(std::string_view line, TextRef name, float& station, float& elevation, bool& noHeight);

// The station of the STATION: line in textLine: a star and all behind it are
// cut from textLine itself, then the value is taken.
void takeStation(TextRef out);

// Block readers of the section phase. Each reads until its block ends and
// leaves the ending line in textLine.
void GetSdfCutline(int32_t unit, double* cutX, double* cutY, int32_t& cutCount, int32_t& lineNo, TextRef line);
void GetSdfnVals(int32_t unit, float* nValue, float* nValueStation, int32_t& nValueCount, int32_t& lineNo,
                 TextRef line);
void GetSdfLevees(int32_t unit, int32_t& leveeCount, Text<50>* leveeName, float* leveeStation, float* leveeElevation,
                  int32_t& lineNo, TextRef line);
void GetSdfSurfaceLine(int32_t unit, int32_t& surfCount, double* surfX, double* surfY, float* surfZ, int32_t& lineNo,
                       TextRef line);

// The five section layers, as CreateSectionLayers gives them.
struct SectionLayers {
    int32_t surfPts = 0;
    int32_t surfLine = 0;
    int32_t cutLine = 0;
    int32_t leveePts = 0;
    int32_t endPts = 0;
};

// The section phase: carries on from the line where the stream phase stopped.
void runSectionPhase(bool trimToLevees, const SectionLayers& layers);
