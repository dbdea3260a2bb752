// The export of one gathered cross-section.
#pragma once

#include <cstdint>

#include "driver/sdf_scan.hpp"

// Writes the section's .csv profile and its objects and records to the five
// section layers. A station that is not a number ends the run.
void Process_sdf_Sections(SectionRecord& rec, int32_t surfPtsLayer, int32_t surfLineLayer, int32_t cutLineLayer,
                          int32_t leveePtsLayer, int32_t endPtsLayer);

// The export's working tables as in a fresh process (the Manning's n of the
// points is kept from one section to the next, so a new run needs this).
void sectionExportReset();
