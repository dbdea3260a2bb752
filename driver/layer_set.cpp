#include "driver/layer_set.hpp"

#include "text/linebuf.hpp"
#include "gis/gis.hpp"

namespace {

struct Attribute {
    const char* name;
    const char* type;
    int32_t width;
};

// Attribute tables of the six layers.
constexpr Attribute kStreams[] = {{"Stream_ID", "Char", 100}, {"Reach_ID", "Char", 100}};
constexpr Attribute kSurfPts[] = {{"Stream_ID", "Char", 100},
                                  {"Reach_ID", "Char", 100},
                                  {"Station", "Char", 100},
                                  {"Elevation", "Float", 0},
                                  {"Mannings", "Float", 0}};
constexpr Attribute kEndPts[] = {
    {"Z", "Float", 0}, {"dZ", "Float", 0}, {"Shape_Width_or_dMax", "Float", 0}, {"Shape_Options", "Char", 20}};
constexpr Attribute kSurfLine[] = {{"Source", "Char", 50},    {"Type", "Char", 2},        {"Flags", "Char", 8},
                                   {"Column_1", "Char", 20},  {"Column_2", "Char", 20},   {"Column_3", "Char", 20},
                                   {"Column_4", "Char", 20},  {"Column_5", "Char", 20},   {"Column_6", "Char", 20},
                                   {"Z_Increment", "Float", 0}, {"Z_Maximum", "Float", 0}, {"Skew", "Float", 0},
                                   {"Comments", "Char", 200}};
constexpr Attribute kCutLine[] = {{"Stream_ID", "Char", 100}, {"Reach_ID", "Char", 100}, {"Station", "Char", 100}};
constexpr Attribute kLeveePts[] = {{"Stream_ID", "Char", 100},
                                   {"Reach_ID", "Char", 100},
                                   {"Station", "Char", 100},
                                   {"Elevation", "Float", 0},
                                   {"Levee_ID", "Char", 100}};

// Fills gisA_, opens the layer, writes its header and empties the object.
template <std::size_t N>
int32_t createLayer(std::string_view name, const char* letter, const Attribute (&table)[N]) {
    gisA_.n = static_cast<int32_t>(N);
    gisA_.nrecords = 0;
    for (std::size_t i = 0; i < N; ++i) {
        gisA_.name[i + 1] = table[i].name;
        gisA_.type[i + 1] = table[i].type;
        gisA_.width[i + 1] = table[i].width;
    }
    const int32_t id = gisOpenLayer(name, false, "O ", letter);
    gisWriteHeader(id);
    gisClearObject(gisO_);
    return id;
}

}  // namespace

void CreateStreamLayer(std::string_view streamLayerName, int32_t& streamsLayer) {
    streamsLayer = createLayer(streamLayerName, "L", kStreams);
}

void CreateSectionLayers(std::string_view baseName, bool useMif, int32_t& surfPtsLayer, int32_t& surfLineLayer,
                         int32_t& cutLineLayer, int32_t& leveePtsLayer, int32_t& endPtsLayer) {
    const std::string_view ext = useMif ? ".mif" : ".shp";
    const std::string_view base = trimmed(baseName);
    // When the base holds a folder, the "2d_zsh_" and "1d_xs_" prefixes go in
    // front of the file's own name, so that all six layers lie beside the SDF
    // file rather than in a folder of a made-up name.
    const std::size_t sep = base.find_last_of("/\\");
    const std::string_view folder = sep == std::string_view::npos ? std::string_view() : base.substr(0, sep + 1);
    const std::string_view stem = base.substr(folder.size());
    // Each name is built in a text of its own: lineText's buffer is reused.
    Text<1000> name;
    name = lineText(base, "_surf_pts", ext);
    surfPtsLayer = createLayer(name, "P", kSurfPts);
    name = lineText(folder, "2d_zsh_", stem, "_end_pts", ext);
    endPtsLayer = createLayer(name, "P", kEndPts);
    name = lineText(folder, "1d_xs_", stem, "_surf_line", ext);
    surfLineLayer = createLayer(name, "L", kSurfLine);
    name = lineText(base, "_cut_line", ext);
    cutLineLayer = createLayer(name, "L", kCutLine);
    name = lineText(base, "_levee_pts", ext);
    leveePtsLayer = createLayer(name, "P", kLeveePts);
}
