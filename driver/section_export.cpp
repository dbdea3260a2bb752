// What one cross-section writes: chainage along the surface line, Manning's n
// per point, levee markers placed and used for trimming, the section's .csv
// profile, and its objects and records in the five section layers.
#include "driver/section_export.hpp"

#include <cstring>

#include "text/linebuf.hpp"
#include "geometry/plane.hpp"
#include "gis/gis.hpp"
#include "runtime/console.hpp"
#include "runtime/exits.hpp"
#include "runtime/units.hpp"
#include "text/freeformat.hpp"
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

void dropBefore(const float* chainage, bool* dropped, int32_t n, float m) {
    for (int32_t i = 1; i <= n; ++i)
        if (chainage[i] < m) dropped[i] = true;
}

void dropBehind(const float* chainage, bool* dropped, int32_t n, float m) {
    for (int32_t i = 1; i <= n; ++i)
        if (chainage[i] > m) dropped[i] = true;
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
        conLine("ERROR - Determing which two levee markes to use.");
    }
}

void writeCsv(const SectionRecord& rec) {
    int32_t unit = 0;
    OPENERFREE(unit, "O ", csvName, 0);
    unitWriteLine(unit, rec.hasNValues ? "\"X\",\"Z\",\"N\"" : "\"X\",\"Z\"");
    for (int32_t i = 1; i <= rec.surfCount; ++i) {
        if (dropped[i]) continue;
        char row[40];
        char* p = putFixed(row, 12, 3, chainage[i]);
        *p++ = ',';
        p = putFixed(p, 12, 4, rec.surfZ[i]);
        if (rec.hasNValues) {
            *p++ = ',';
            p = putFixed(p, 8, 4, pointN[i]);
        }
        unitWriteLine(unit, {row, static_cast<std::size_t>(p - row)});
    }
    CLOSER(unit);
}

}  // namespace

void placeMarker(const SectionRecord& rec, const float* chainage, float scaled, double& x, double& y) {
    const int32_t n = rec.surfCount;
    if (scaled - 0.0001f <= 0.0f) {
        x = rec.surfX[1];
        y = rec.surfY[1];
        return;
    }
    int32_t i = 2;
    while (i <= n && chainage[i] < scaled) ++i;
    if (i > n) {
        // A marker beyond the end of the section (position above 1) has no
        // point to lie between; it is put on the last point.
        x = rec.surfX[n];
        y = rec.surfY[n];
        return;
    }
    const float f = (scaled - chainage[i - 1]) / (chainage[i] - chainage[i - 1]);
    x = rec.surfX[i - 1] + (rec.surfX[i] - rec.surfX[i - 1]) * static_cast<double>(f);
    y = rec.surfY[i - 1] + (rec.surfY[i] - rec.surfY[i - 1]) * static_cast<double>(f);
}

void surfaceChainage(const SectionRecord& rec, float* chainage) {
    const int32_t n = rec.surfCount;
    if (n >= 1) chainage[1] = 0.0f;
    for (int32_t i = 2; i <= n; ++i)
        chainage[i] = chainage[i - 1] + DISTANCE_8(rec.surfX[i], rec.surfY[i], rec.surfX[i - 1], rec.surfY[i - 1]);
}

void sectionCsvName(TextRef out, const SectionRecord& rec) {
    out.assign(lineText(rec.streamId.trimmed(), "_", rec.reachId.trimmed(), "_", rec.stationText.trimmed(), ".csv"));
}

TrimNote trimToMarkers(const SectionRecord& rec, const float* chainage, const float* scaledLevee, bool* dropped) {
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
        // With no usable elevation there is no side to choose: nothing is dropped.
        if (lowest == 0) return TrimNote::none;
        const float m = scaledLevee[1];
        if (chainage[lowest] > m)
            dropBefore(chainage, dropped, n, m);
        else
            dropBehind(chainage, dropped, n, m);
    } else if (rec.leveeCount == 2) {
        dropBefore(chainage, dropped, n, scaledLevee[1]);
        dropBehind(chainage, dropped, n, scaledLevee[2]);
    } else {
        int32_t right = 0;
        if (lowest > 0) {
            for (int32_t j = 1; j <= rec.leveeCount; ++j) {
                if (scaledLevee[j] >= chainage[lowest]) {
                    right = j;
                    break;
                }
            }
        }
        if (right < 2) {
            // No pair surrounds the lowest point: the section is kept whole.
            return TrimNote::noPair;
        }
        dropBefore(chainage, dropped, n, scaledLevee[right - 1]);
        dropBehind(chainage, dropped, n, scaledLevee[right]);
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

        // Surface line.
        gisO_.isPline = true;
        int32_t kept = 0;
        for (int32_t i = 1; i <= n; ++i) {
            if (dropped[i]) continue;
            ++kept;
            gisX[kept] = rec.surfX[i];
            gisY[kept] = rec.surfY[i];
        }
        gisN = kept;
        Line l;
        l.quoted(csvName.trimmed());
        l << ",\"xz\",";
        l.quoted(rec.hasNValues ? "n" : "");
        l << ",\"\",\"\",\"\",\"\",\"\",\"\",";
        l.fixed(12, 3, 0.0);
        l << ",";
        l.fixed(8, 3, 0.0);
        l << ",";
        l.fixed(8, 3, 0.0);
        l << ",\"\"";
        if (gisN >= 2) {
            writeTo(surfLineLayer, l);
        } else {
            conBlank();
            conLine("Error here.");
        }
        gisO_.isPline = false;

        // Surface points. The ids stand in front of every record of the section.
        Line ids;
        idTexts(ids, rec);
        gisO_.isPoint = true;
        gisN = 1;
        for (int32_t i = 1; i <= n; ++i) {
            if (dropped[i]) continue;
            Line p;
            p << ids.view();
            p << ",";
            p.fixed(12, 3, rec.surfZ[i]);
            p << ",";
            p.fixed(8, 4, pointN[i]);
            gisX[1] = rec.surfX[i];
            gisY[1] = rec.surfY[i];
            writeTo(surfPtsLayer, p);
        }

        // End points: the first and last points as read.
        if (n >= 1) {
            Line e;
            e.fixed(12, 4, rec.surfZ[1]);
            e << ",";
            e.fixed(8, 4, 0.0);
            e << ",";
            e.fixed(10, 3, 0.0);
            e << ",\"\"";
            gisX[1] = rec.surfX[1];
            gisY[1] = rec.surfY[1];
            writeTo(endPtsLayer, e);
            Line f;
            f.fixed(12, 3, rec.surfZ[n]);
            f << ",";
            f.fixed(8, 4, 0.0);
            f << ",";
            f.fixed(10, 3, 0.0);
            f << ",\"\"";
            gisX[1] = rec.surfX[n];
            gisY[1] = rec.surfY[n];
            writeTo(endPtsLayer, f);
        }

        // Levee points, used for trimming or not.
        if (rec.hasLevees && rec.leveeCount > 0 && n > 0) {
            for (int32_t j = 1; j <= rec.leveeCount; ++j) {
                Line v;
                v << ids.view();
                v << ",";
                v.fixed(12, 3, rec.leveeElevation[j]);
                v << ",";
                v << rec.leveeName[j].trimmed();
                gisX[1] = leveeX[j];
                gisY[1] = leveeY[j];
                writeTo(leveePtsLayer, v);
            }
        }
        gisO_.isPoint = false;
    } else {
        conBlank();
        conLine("Warning - No surface line for section in sdf, unable to export .csv format section.");
        conLine(lineText(rec.streamId.trimmed(), rec.reachId.trimmed(), rec.stationText.trimmed()));
    }

    // Cut line, as read.
    if (rec.hasCutLine) {
        const int32_t m = rec.cutCount < kSdfMaxRows ? rec.cutCount : kSdfMaxRows;
        for (int32_t i = 1; i <= m; ++i) {
            gisX[i] = rec.cutX[i];
            gisY[i] = rec.cutY[i];
        }
        gisN = m;
        gisO_.isPline = true;
        Line c;
        idTexts(c, rec);
        writeTo(cutLineLayer, c);
        gisO_.isPline = false;
    }
}
