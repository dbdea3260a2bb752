// What one cross-section writes: chainage along the surface line, Manning's n
// per point, levee markers placed and used for trimming, the section's .csv
// profile, and its objects and records in the five section layers.
#include "driver/section_export.hpp"

#include <cstring>

#include "driver/layer_set.hpp"
#include "driver/rows_ahead.hpp"
#include "driver/stops.hpp"
#include "geometry/plane.hpp"
#include "gis/gis.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
#include "text/linebuf.hpp"
#include "text/numbers.hpp"

namespace {

// Working tables, rewritten for each section as far as it uses them.
float chainage[kSdfMaxRows + 1];
float scaledNStation[kSdfMaxRows + 1];
float scaledLevee[kSdfMaxLevees + 1];
float pointN[kSdfMaxRows + 1];  // not cleared between sections
bool dropped[kSdfMaxRows + 1];
double leveeX[kSdfMaxLevees + 1];
double leveeY[kSdfMaxLevees + 1];
Text<1000> csvName;

// Manning's n stays the same over long runs of points: its field is made
// once per value and copied after, for the .csv rows and for the records.
template <int Width, int Decimals>
struct RepeatedField {
    float value = 0.0f;
    bool made = false;
    char text[static_cast<std::size_t>(Width)];

    const char* of(float v) {
        if (!made || std::memcmp(&v, &value, sizeof v) != 0) {
            putFixed(text, Width, Decimals, v);
            value = v;
            made = true;
        }
        return text;
    }
    std::string_view view(float v) { return {of(v), static_cast<std::size_t>(Width)}; }
};

// A record line is built here and then copied into gisRecordLine, which
// cuts it at its capacity.
using Line = LineBuf<4096>;

// "streamId","reachId","stationText" of the section.
void idTexts(Line& l, const SectionRecord& rec) {
    l.quoted(rec.streamId.trimmed());
    l << ",";
    l.quoted(rec.reachId.trimmed());
    l << ",";
    l.quoted(rec.stationText.trimmed());
}

void writeTo(int32_t layer, const Line& l) {
    gisRecordLine = l.view();
    gisWriteObject(layer, gisO_);
    gisWriteRecord(layer, gisO_);
}

void dropBefore(const float* along, bool* drops, int32_t n, float m) {
    for (int32_t i = 1; i <= n; ++i)
        if (along[i] < m) drops[i] = true;
}

void dropBehind(const float* along, bool* drops, int32_t n, float m) {
    for (int32_t i = 1; i <= n; ++i)
        if (along[i] > m) drops[i] = true;
}

// Places the levee markers and drops the points outside the chosen pair.
void placeAndTrim(const SectionRecord& rec) {
    for (int32_t j = 1; j <= rec.leveeCount; ++j) placeMarker(rec, chainage, scaledLevee[j], leveeX[j], leveeY[j]);
    const TrimNote note = trimToMarkers(rec, chainage, scaledLevee, dropped);
    if (note == TrimNote::none) return;
    conBlank();
    conLine("WARNING - More than 2 levee markers found.");
    if (note == TrimNote::noPair) {
        conBlank();
        // Misspelt as the system has always printed it; scripts look for it.
        conLine("ERROR - Determing which two levee markes to use.");
    }
}

void writeCsv(const SectionRecord& rec) {
    static RepeatedField<8, 4> csvN;
    int32_t unit = 0;
    OPENERFREE(unit, "O ", csvName, 0);
    unitWriteLine(unit, rec.hasNValues ? "\"X\",\"Z\",\"N\"" : "\"X\",\"Z\"");
    for (int32_t i = 1; i <= rec.surfCount; ++i) {
        if (dropped[i]) continue;
        char row[40];
        char* p = putFixed(row, 12, 3, chainage[i]);
        *p++ = ',';
        if (surfTexts[i].ready) {
            std::memcpy(p, surfTexts[i].zCsv, sizeof surfTexts[i].zCsv);
            p += sizeof surfTexts[i].zCsv;
        } else {
            p = putFixed(p, kCsvZWidth, kCsvZDecimals, rec.surfZ[i]);
        }
        if (rec.hasNValues) {
            *p++ = ',';
            std::memcpy(p, csvN.of(pointN[i]), 8);
            p += 8;
        }
        unitWriteLine(unit, {row, static_cast<std::size_t>(p - row)});
    }
    CLOSER(unit);
}

// One routine a layer: each writes the section's objects and records to its
// layer, with the numbers laid out as the layer's definition says.

void fixed(Line& l, NumberLayout f, double v) { l.fixed(f.width, f.decimals, v); }

// The surface line as kept, with the .csv name as its source.
void writeSurfaceLine(const SectionRecord& rec, int32_t id) {
    gisO_.isPline = true;
    int32_t kept = 0;
    for (int32_t i = 1; i <= rec.surfCount; ++i) {
        if (dropped[i]) continue;
        ++kept;
        gisX[kept] = rec.surfX[i];
        gisY[kept] = rec.surfY[i];
        if (surfTexts[i].ready && surfTexts[i].xyReady) gisOfferPointText(kept, surfTexts[i].xy);
    }
    gisN = kept;
    Line l;
    l.quoted(csvName.trimmed());
    l << ",\"xz\",";
    l.quoted(rec.hasNValues ? "n" : "");
    l << ",\"\",\"\",\"\",\"\",\"\",\"\",";
    fixed(l, layer::numberLayout(layer::surfLine, "Z_Increment"), 0.0);
    l << ",";
    fixed(l, layer::numberLayout(layer::surfLine, "Z_Maximum"), 0.0);
    l << ",";
    fixed(l, layer::numberLayout(layer::surfLine, "Skew"), 0.0);
    l << ",\"\"";
    if (gisN >= 2) {
        writeTo(id, l);
    } else {
        // The message is kept as the system has always printed it.
        conBlank();
        conLine("Error here.");
    }
    gisO_.isPline = false;
}

// Every point kept, with its elevation and Manning's n; the ids stand in
// front of every record of the section.
void writeSurfacePoints(const SectionRecord& rec, const Line& ids, int32_t id) {
    constexpr NumberLayout kN = layer::numberLayout(layer::surfPts, "Mannings");
    static RepeatedField<kN.width, kN.decimals> mannings;
    gisO_.isPoint = true;
    gisN = 1;
    for (int32_t i = 1; i <= rec.surfCount; ++i) {
        if (dropped[i]) continue;
        Line p;
        p << ids.view();
        p << ",";
        if (surfTexts[i].ready) p << std::string_view(surfTexts[i].zRecord, sizeof surfTexts[i].zRecord);
        else fixed(p, layer::numberLayout(layer::surfPts, "Elevation"), rec.surfZ[i]);
        p << ",";
        p << mannings.view(pointN[i]);
        gisX[1] = rec.surfX[i];
        gisY[1] = rec.surfY[i];
        writeTo(id, p);
    }
    gisO_.isPoint = false;
}

// The first and last points as read, whatever was trimmed.
void writeEndPoints(const SectionRecord& rec, int32_t id) {
    const int32_t n = rec.surfCount;
    if (n < 1) return;
    gisO_.isPoint = true;
    gisN = 1;
    const int32_t ends[] = {1, n};
    for (int32_t k = 0; k < 2; ++k) {
        const int32_t i = ends[k];
        Line e;
        fixed(e, k == 0 ? layer::firstEndZ : layer::lastEndZ, rec.surfZ[i]);
        e << ",";
        fixed(e, layer::numberLayout(layer::endPts, "dZ"), 0.0);
        e << ",";
        fixed(e, layer::numberLayout(layer::endPts, "Shape_Width_or_dMax"), 0.0);
        e << ",\"\"";
        gisX[1] = rec.surfX[i];
        gisY[1] = rec.surfY[i];
        writeTo(id, e);
    }
    gisO_.isPoint = false;
}

// Every levee marker, used for trimming or not; its name stands bare.
void writeLeveePoints(const SectionRecord& rec, const Line& ids, int32_t id) {
    if (!rec.hasLevees || rec.leveeCount <= 0 || rec.surfCount <= 0) return;
    gisO_.isPoint = true;
    gisN = 1;
    for (int32_t j = 1; j <= rec.leveeCount; ++j) {
        Line v;
        v << ids.view();
        v << ",";
        fixed(v, layer::numberLayout(layer::leveePts, "Elevation"), rec.leveeElevation[j]);
        v << ",";
        v << rec.leveeName[j].trimmed();
        gisX[1] = leveeX[j];
        gisY[1] = leveeY[j];
        writeTo(id, v);
    }
    gisO_.isPoint = false;
}

// The cut line as read.
void writeCutLine(const SectionRecord& rec, int32_t id) {
    if (!rec.hasCutLine) return;
    const int32_t m = rec.cutCount < kSdfMaxRows ? rec.cutCount : kSdfMaxRows;
    for (int32_t i = 1; i <= m; ++i) {
        gisX[i] = rec.cutX[i];
        gisY[i] = rec.cutY[i];
    }
    gisN = m;
    gisO_.isPline = true;
    Line c;
    idTexts(c, rec);
    writeTo(id, c);
    gisO_.isPline = false;
}

}  // namespace

void placeMarker(const SectionRecord& rec, const float* along, float scaled, double& x, double& y) {
    const int32_t n = rec.surfCount;
    if (scaled - 0.0001f <= 0.0f) {
        x = rec.surfX[1];
        y = rec.surfY[1];
        return;
    }
    int32_t i = 2;
    while (i <= n && along[i] < scaled) ++i;
    if (i > n) {
        // A marker beyond the end of the section (position above 1) has no
        // point to lie between; it is put on the last point.
        x = rec.surfX[n];
        y = rec.surfY[n];
        return;
    }
    const float f = (scaled - along[i - 1]) / (along[i] - along[i - 1]);
    x = rec.surfX[i - 1] + (rec.surfX[i] - rec.surfX[i - 1]) * static_cast<double>(f);
    y = rec.surfY[i - 1] + (rec.surfY[i] - rec.surfY[i - 1]) * static_cast<double>(f);
}

void surfaceChainage(const SectionRecord& rec, float* along) {
    const int32_t n = rec.surfCount;
    if (n >= 1) along[1] = 0.0f;
    for (int32_t i = 2; i <= n; ++i)
        along[i] = along[i - 1] + DISTANCE_8(rec.surfX[i], rec.surfY[i], rec.surfX[i - 1], rec.surfY[i - 1]);
}

void sectionCsvName(TextRef out, const SectionRecord& rec) {
    out.assign(lineText(rec.streamId.trimmed(), "_", rec.reachId.trimmed(), "_", rec.stationText.trimmed(), ".csv"));
}

TrimNote trimToMarkers(const SectionRecord& rec, const float* along, const float* markers, bool* drops) {
    const int32_t n = rec.surfCount;
    // The lowest point: the first of smallest elevation below 999999.
    int32_t lowest = 0;
    float zmin = 999999.0f;
    for (int32_t i = 1; i <= n; ++i) {
        if (rec.surfZ[i] < zmin) {
            zmin = rec.surfZ[i];
            lowest = i;
        }
    }

    if (rec.leveeCount == 1) {
        // With no usable elevation there is no side to choose: nothing is drops.
        if (lowest == 0) return TrimNote::none;
        const float m = markers[1];
        if (along[lowest] > m) dropBefore(along, drops, n, m);
        else dropBehind(along, drops, n, m);
    } else if (rec.leveeCount == 2) {
        dropBefore(along, drops, n, markers[1]);
        dropBehind(along, drops, n, markers[2]);
    } else {
        int32_t right = 0;
        if (lowest > 0) {
            for (int32_t j = 1; j <= rec.leveeCount; ++j) {
                if (markers[j] >= along[lowest]) {
                    right = j;
                    break;
                }
            }
        }
        if (right < 2) {
            // No pair surrounds the lowest point: the section is kept whole.
            return TrimNote::noPair;
        }
        dropBefore(along, drops, n, markers[right - 1]);
        dropBehind(along, drops, n, markers[right]);
    }
    return rec.leveeCount >= 3 ? TrimNote::moreThanTwo : TrimNote::none;
}

void sectionExportReset() {
    auto zero = [](auto& table) { std::memset(table, 0, sizeof table); };
    zero(chainage);
    zero(scaledNStation);
    zero(scaledLevee);
    zero(pointN);
    zero(dropped);
    zero(leveeX);
    zero(leveeY);
    csvName.clear();
}

void Process_sdf_Sections(SectionRecord& rec, int32_t surfPtsLayer, int32_t surfLineLayer, int32_t cutLineLayer,
                          int32_t leveePtsLayer, int32_t endPtsLayer) {
    const int32_t n = rec.surfCount;
    // Only the entries of this section's points are read, so only they are cleared.
    std::memset(dropped, 0, sizeof(bool) * static_cast<std::size_t>(n + 1));

    sectionCsvName(csvName, rec);

    float stationValue = 0.0f;
    if (readReal4(rec.stationText.view(), stationValue) != ReadResult::ok)
        stopWith("ERROR - converting station to numeric field");

    if (rec.hasSurfaceLine) {
        // Chainage: running distance along the surface line, summed in single precision.
        surfaceChainage(rec, chainage);
        const float length = n >= 1 ? chainage[n] : 0.0f;
        for (int32_t k = 1; k <= rec.nValueCount; ++k) scaledNStation[k] = rec.nValueStation[k] * length;
        for (int32_t j = 1; j <= rec.leveeCount; ++j) scaledLevee[j] = rec.leveeStation[j] * length;

        if (rec.hasNValues) {
            if (rec.nValueCount == 0) {
                // An empty n table gives no value to walk: the points get 0.
                for (int32_t i = 1; i <= n; ++i) pointN[i] = 0.0f;
            } else {
                int32_t k = 1;
                for (int32_t i = 1; i <= n; ++i) {
                    if (k != rec.nValueCount && chainage[i] >= scaledNStation[k + 1]) ++k;
                    pointN[i] = rec.nValue[k];
                }
            }
        }

        if (n == 0) {
            // A surface line block without rows: there is no point to place
            // markers on or to take end points from.
            conBlank();
            conLine(lineText("WARNING - SURFACE LINE without points; no end or levee points written for section ",
                             rec.streamId.trimmed(), rec.reachId.trimmed(), rec.stationText.trimmed()));
        }
        // A levee block without rows leaves nothing to trim by.
        if (rec.hasLevees && rec.leveeCount > 0 && n > 0) placeAndTrim(rec);

        writeCsv(rec);

        writeSurfaceLine(rec, surfLineLayer);
        Line ids;
        idTexts(ids, rec);
        writeSurfacePoints(rec, ids, surfPtsLayer);
        writeEndPoints(rec, endPtsLayer);
        writeLeveePoints(rec, ids, leveePtsLayer);
    } else {
        conBlank();
        // "Warning" in mixed case, and the ids run together on the next line: as printed always.
        conLine("Warning - No surface line for section in sdf, unable to export .csv format section.");
        conLine(lineText(rec.streamId.trimmed(), rec.reachId.trimmed(), rec.stationText.trimmed()));
    }

    writeCutLine(rec, cutLineLayer);
}
