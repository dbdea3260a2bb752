// The converter's six output layers: names, kinds and attribute tables.
#pragma once

#include <cstdint>
#include <string_view>

// Defines, opens and heads the streams layer (polylines, Stream_ID and Reach_ID).
void CreateStreamLayer(std::string_view streamLayerName, int32_t& streamsLayer);

// Defines, opens and heads the five section layers, in the order surface
// points, end points, surface line, cut line, levee points.
void CreateSectionLayers(std::string_view baseName, bool useMif, int32_t& surfPtsLayer, int32_t& surfLineLayer,
                         int32_t& cutLineLayer, int32_t& leveePtsLayer, int32_t& endPtsLayer);
