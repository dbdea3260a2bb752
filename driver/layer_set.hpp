// The converter's six output layers, each defined once: how its name is made,
// its shapefile set, its attribute table and the layout of the numbers in its
// record line. The section export writes records by these definitions.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

// Width and decimals of a fixed-point number in a record line.
struct NumberLayout {
    int width;
    int decimals;
};

struct Attribute {
    const char* name;
    const char* type;     // "Char" or "Float"
    int32_t width;        // of a Char attribute; 0 for a Float
    NumberLayout layout;  // of a Float attribute's value in the record line
};

struct LayerDef {
    std::string_view prefix;  // in front of the file's own name, behind its folder
    std::string_view suffix;  // behind the name
    const char* letter;       // shapefile set: P points, L lines
    std::span<const Attribute> attributes;
};

namespace layer {

// The end points' Z has one more decimal for the first point than for the
// last: 12.4 and 12.3. Intended, and kept.
inline constexpr NumberLayout firstEndZ{12, 4};
inline constexpr NumberLayout lastEndZ{12, 3};

inline constexpr Attribute streamsAttributes[] = {{"Stream_ID", "Char", 100, {}}, {"Reach_ID", "Char", 100, {}}};
inline constexpr Attribute surfPtsAttributes[] = {{"Stream_ID", "Char", 100, {}},
                                                  {"Reach_ID", "Char", 100, {}},
                                                  {"Station", "Char", 100, {}},
                                                  {"Elevation", "Float", 0, {12, 3}},
                                                  {"Mannings", "Float", 0, {8, 4}}};
inline constexpr Attribute endPtsAttributes[] = {{"Z", "Float", 0, firstEndZ},
                                                 {"dZ", "Float", 0, {8, 4}},
                                                 {"Shape_Width_or_dMax", "Float", 0, {10, 3}},
                                                 {"Shape_Options", "Char", 20, {}}};
inline constexpr Attribute surfLineAttributes[] = {
    {"Source", "Char", 50, {}},           {"Type", "Char", 2, {}},           {"Flags", "Char", 8, {}},
    {"Column_1", "Char", 20, {}},         {"Column_2", "Char", 20, {}},      {"Column_3", "Char", 20, {}},
    {"Column_4", "Char", 20, {}},         {"Column_5", "Char", 20, {}},      {"Column_6", "Char", 20, {}},
    {"Z_Increment", "Float", 0, {12, 3}}, {"Z_Maximum", "Float", 0, {8, 3}}, {"Skew", "Float", 0, {8, 3}},
    {"Comments", "Char", 200, {}}};
inline constexpr Attribute cutLineAttributes[] = {
    {"Stream_ID", "Char", 100, {}}, {"Reach_ID", "Char", 100, {}}, {"Station", "Char", 100, {}}};
inline constexpr Attribute leveePtsAttributes[] = {{"Stream_ID", "Char", 100, {}},
                                                   {"Reach_ID", "Char", 100, {}},
                                                   {"Station", "Char", 100, {}},
                                                   {"Elevation", "Float", 0, {12, 3}},
                                                   {"Levee_ID", "Char", 100, {}}};

// The streams layer takes the whole SDF file name; the section layers take
// its base name (up to the first dot), and two of them a prefix as well.
inline constexpr LayerDef streams{"", "_streams", "L", streamsAttributes};
inline constexpr LayerDef surfPts{"", "_surf_pts", "P", surfPtsAttributes};
inline constexpr LayerDef endPts{"2d_zsh_", "_end_pts", "P", endPtsAttributes};
inline constexpr LayerDef surfLine{"1d_xs_", "_surf_line", "L", surfLineAttributes};
inline constexpr LayerDef cutLine{"", "_cut_line", "L", cutLineAttributes};
inline constexpr LayerDef leveePts{"", "_levee_pts", "P", leveePtsAttributes};

// The layout of a layer's Float attribute `name`, for the record writers.
consteval NumberLayout numberLayout(const LayerDef& def, std::string_view name) {
    for (const Attribute& a : def.attributes)
        if (std::string_view(a.name) == name) return a.layout;
    throw "no such attribute";  // a compile-time error
}

}  // namespace layer

// Defines, opens and heads the streams layer (polylines, Stream_ID and Reach_ID).
void CreateStreamLayer(std::string_view streamLayerName, int32_t& streamsLayer);

// Defines, opens and heads the five section layers, in the order surface
// points, end points, surface line, cut line, levee points.
void CreateSectionLayers(std::string_view baseName, bool useMif, int32_t& surfPtsLayer, int32_t& surfLineLayer,
                         int32_t& cutLineLayer, int32_t& leveePtsLayer, int32_t& endPtsLayer);
