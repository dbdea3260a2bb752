// Reading a whole layer through the public reading sequence into plain
// values that tests can compare: each object's kind, counts and record, and
// for each gisReadObject call the points and derived values it gave.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "gis/gis.hpp"
#include "text/freeformat.hpp"

namespace reading {

using Points = std::vector<std::pair<double, double>>;

struct Sub {
    Points points;  // entries 1..N of the coordinate buffer
    double cx = 0, cy = 0;
    float angle = 0, length = 0;
};

struct Object {
    std::string kind;
    int32_t np = 0, nr = 0;
    std::vector<int32_t> ir;  // entries 1..nr after the read (regions)
    std::vector<Sub> subs;    // one for each gisReadObject call
    std::string record;
};

inline std::string kindOf(const GisObject& o) {
    const std::pair<bool, const char*> kinds[] = {
        {o.isNone, "none"},       {o.isPoint, "point"},   {o.isLine, "line"},
        {o.isPline, "pline"},     {o.isPlineMultiple, "plinemultiple"},
        {o.isRegion, "region"},   {o.isEllipse, "ellipse"}, {o.isRect, "rect"},
        {o.isRoundRect, "roundrect"}, {o.isArc, "arc"},   {o.isText, "text"},
        {o.isMultiPoint, "multipoint"},
    };
    for (const auto& [flag, name] : kinds)
        if (flag) return name;
    return "?";
}

// The sub-objects a caller reads: the parts of a multiple polyline, the
// points of a multipoint, otherwise one.
inline int32_t subCount(const GisObject& o) { return o.isPlineMultiple || o.isMultiPoint ? o.np : 1; }

// Header, rewind, then every object with its record.
inline std::vector<Object> readLayer(int32_t id) {
    gisReadHeader(id);
    gisGotoBeginningOfData(id);
    std::vector<Object> out;
    for (int guard = 0; guard < 100000 && gisObjectType(id, gisO_); ++guard) {
        Object ob;
        ob.kind = kindOf(gisO_);
        ob.np = gisO_.np;
        ob.nr = gisO_.nr;
        gisReadRecord(id, gisO_, gisRecordLine);
        ob.record = std::string(gisRecordLine.trimmed());
        for (int32_t k = 0; k < subCount(gisO_); ++k) {
            Sub s;
            gisN = 0;
            gisReadObject(id, gisO_, gisX, gisY, kGisMaxPoints, gisN, s.cx, s.cy, s.angle, s.length, true);
            for (int32_t i = 1; i <= gisN; ++i) s.points.push_back({gisX[i], gisY[i]});
            ob.subs.push_back(s);
        }
        if (gisO_.isRegion)
            for (int32_t p = 1; p <= gisO_.nr; ++p) ob.ir.push_back(gisO_.ir[p]);
        out.push_back(ob);
    }
    return out;
}

// The values of a record line, each without its blanks round it.
inline std::vector<std::string> values(const std::string& line) {
    std::vector<std::string> v;
    FreeFormat ff(line);
    for (;;) {
        Text<1000> t;
        if (ff.text(t) != ReadResult::ok) break;
        std::string s(t.trimmed());
        s.erase(0, s.find_first_not_of(' ') == std::string::npos ? s.size() : s.find_first_not_of(' '));
        v.push_back(s);
    }
    return v;
}

}  // namespace reading
