#include "driver/layer_set.hpp"

#include "gis/gis.hpp"
#include "text/linebuf.hpp"

namespace {

// Fills gisA_ from the layer's attribute table, opens the layer, writes its
// header and empties the object.
int32_t createLayer(std::string_view name, const LayerDef& def) {
    gisA_.n = static_cast<int32_t>(def.attributes.size());
    gisA_.nrecords = 0;
    int32_t i = 0;
    for (const Attribute& a : def.attributes) {
        ++i;
        gisA_.name[i] = a.name;
        gisA_.type[i] = a.type;
        gisA_.width[i] = a.width;
    }
    const int32_t id = gisOpenLayer(name, false, "O ", def.letter);
    gisWriteHeader(id);
    gisClearObject(gisO_);
    return id;
}

}  // namespace

void CreateStreamLayer(std::string_view streamLayerName, int32_t& streamsLayer) {
    streamsLayer = createLayer(streamLayerName, layer::streams);
}

void CreateSectionLayers(std::string_view baseName, bool useMif, int32_t& surfPtsLayer, int32_t& surfLineLayer,
                         int32_t& cutLineLayer, int32_t& leveePtsLayer, int32_t& endPtsLayer) {
    const std::string_view ext = useMif ? ".mif" : ".shp";
    const std::string_view base = trimmed(baseName);
    // When the base holds a folder, a prefix goes in front of the file's own
    // name, so that all six layers lie beside the SDF file rather than in a
    // folder of a made-up name.
    const std::size_t sep = base.find_last_of("/\\");
    const std::string_view folder = sep == std::string_view::npos ? std::string_view() : base.substr(0, sep + 1);
    const std::string_view stem = base.substr(folder.size());
    // Each name is built in a text of its own: lineText's buffer is reused.
    auto create = [&](const LayerDef& def) {
        Text<1000> name;
        name = lineText(folder, def.prefix, stem, def.suffix, ext);
        return createLayer(name, def);
    };
    surfPtsLayer = create(layer::surfPts);
    endPtsLayer = create(layer::endPts);
    surfLineLayer = create(layer::surfLine);
    cutLineLayer = create(layer::cutLine);
    leveePtsLayer = create(layer::leveePts);
}
