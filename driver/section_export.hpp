// The export of one gathered cross-section.
#pragma once

#include <cstdint>

#include "driver/sdf_scan.hpp"

// Writes the section's .csv profile and its objects and records to the five
// section layers. A station that is not a number ends the run.
void Process_sdf_Sections(SectionRecord& rec, int32_t surfPtsLayer, int32_t surfLineLayer, int32_t cutLineLayer,
                          int32_t leveePtsLayer, int32_t endPtsLayer);

// The rules of the export that a check of the input needs as well.
// The .csv name: stream, reach and station, trailing blanks cut, joined by "_".
void sectionCsvName(TextRef out, const SectionRecord& rec);
// Running distance of each surface line point from point 1, summed in single precision.
void surfaceChainage(const SectionRecord& rec, float* along);
// Map position of a levee marker at `scaled` (its position times the section length).
void placeMarker(const SectionRecord& rec, const float* along, float scaled, double& x, double& y);
// Marks in `drops` the points that trimming to the levee markers drops (a
// section with a marker and a point), and tells what the converter reports.
enum class TrimNote { none, moreThanTwo, noPair };
TrimNote trimToMarkers(const SectionRecord& rec, const float* along, const float* markers, bool* drops);

// The export's working tables as in a fresh process (the Manning's n of the
// points is kept from one section to the next, so a new run needs this).
void sectionExportReset();
