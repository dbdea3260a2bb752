// Reading a whole layer through the public reading sequence into plain
// values, and checking it against the objects a test expects.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gis/gis.hpp"
#include "text/freeformat.hpp"

namespace reading {

using Points = std::vector<std::pair<double, double>>;

struct Sub {  // what one gisReadObject call gave
    Points points;
    std::array<double, 4> derived;  // cx, cy, angle, length
};

struct Object {
    std::string kind;
    std::vector<int32_t> ir;  // entries 1..nr after the read
    std::vector<Sub> subs;
    std::string record;
};

inline std::string kindOf(const GisObject& o) {
    const std::pair<bool, const char*> kinds[] = {{o.isNone, "none"},
                                                  {o.isPoint, "point"},
                                                  {o.isLine, "line"},
                                                  {o.isPline, "pline"},
                                                  {o.isPlineMultiple, "plinemultiple"},
                                                  {o.isRegion, "region"},
                                                  {o.isText, "text"},
                                                  {o.isMultiPoint, "multipoint"},
                                                  {o.isEllipse || o.isRect || o.isArc || o.isRoundRect, "other"}};
    for (const auto& [flag, name] : kinds)
        if (flag) return name;
    return "?";
}

// Header, rewind, then every object with its record and each sub-object
// (the parts of a multiple polyline, the points of a multipoint).
inline std::vector<Object> readLayer(int32_t id) {
    gisReadHeader(id);
    gisGotoBeginningOfData(id);
    std::vector<Object> out;
    while (gisObjectType(id, gisO_)) {
        Object ob{kindOf(gisO_), {}, {}, {}};
        gisReadRecord(id, gisO_, gisRecordLine);
        ob.record = std::string(gisRecordLine.trimmed());
        const int32_t subs = gisO_.isPlineMultiple || gisO_.isMultiPoint ? gisO_.np : 1;
        for (int32_t k = 0; k < subs; ++k) {
            Sub s;
            float angle = 0, length = 0;
            gisN = 0;
            gisReadObject(id, gisO_, gisX, gisY, kGisMaxPoints, gisN, s.derived[0], s.derived[1], angle, length, true);
            s.derived[2] = angle;
            s.derived[3] = length;
            for (int32_t i = 1; i <= gisN; ++i) s.points.push_back({gisX[i], gisY[i]});
            ob.subs.push_back(s);
        }
        for (int32_t p = 1; p <= gisO_.nr; ++p) ob.ir.push_back(gisO_.ir[p]);
        out.push_back(ob);
    }
    return out;
}

// The values of a record line, blanks round them cut, numbers by value.
inline std::vector<std::string> values(const std::string& line) {
    std::vector<std::string> v;
    FreeFormat ff(line);
    for (Text<1000> t; ff.text(t) == ReadResult::ok; t.clear()) {
        std::string s(t.trimmed());
        s.erase(0, std::min(s.find_first_not_of(' '), s.size()));
        char* end = nullptr;
        const double d = std::strtod(s.c_str(), &end);
        if (!s.empty() && end == s.c_str() + s.size()) {
            char b[40];
            std::snprintf(b, sizeof b, "%.10g", d);
            s = b;
        }
        v.push_back(s);
    }
    return v;
}

struct Want {
    std::string kind;
    std::vector<Points> subs;
    std::string record;  // compared by values
    std::optional<std::array<double, 4>> derived = std::nullopt;
};

// Reads the named layer and checks it object by object.
inline std::vector<Object> expectLayer(const std::string& file, const std::vector<Want>& want) {
    int32_t id = gisOpenLayer(file, false, "I ", "");
    EXPECT_GT(id, 0) << file;
    if (id < 1) return {};
    const auto got = readLayer(id);
    EXPECT_TRUE(gisAtEnd[id]);
    gisCloseLayer(id);
    EXPECT_EQ(got.size(), want.size()) << file;
    for (std::size_t i = 0; i < std::min(got.size(), want.size()); ++i) {
        SCOPED_TRACE(file + " object " + std::to_string(i + 1));
        EXPECT_EQ(got[i].kind, want[i].kind);
        EXPECT_EQ(values(got[i].record), values(want[i].record));
        EXPECT_EQ(got[i].subs.size(), want[i].subs.size());
        for (std::size_t k = 0; k < std::min(got[i].subs.size(), want[i].subs.size()); ++k)
            EXPECT_EQ(got[i].subs[k].points, want[i].subs[k]) << "sub-object " << k;
        // The fraction along a segment is single precision.
        for (int d = 0; want[i].derived && d < 4; ++d)
            EXPECT_NEAR(got[i].subs[0].derived[d], (*want[i].derived)[d], 1e-5);
    }
    return got;
}

}  // namespace reading
