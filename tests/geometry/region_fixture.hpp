// Regions in the slot layout of the membership routines: each ring's points,
// the first repeated, then a copy of the second; ends[p] is the slot of the
// repeat. Arrays keep element 0 unused.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

using Ring = std::vector<std::pair<double, double>>;  // points without the closing repeat

struct TestRegion {
    std::vector<double> X{0.0}, Y{0.0};
    std::vector<int32_t> ends{0}, starts{0};
    int32_t npoly = 0;

    void add(const Ring& ring) {
        starts.push_back(N() + 1);
        for (const auto& p : ring) push(p);
        push(ring[0]);
        ends.push_back(N());
        push(ring[1]);
        ++npoly;
    }
    int32_t N() const { return static_cast<int32_t>(X.size()) - 1; }
    std::vector<float> Xf() const { return {X.begin(), X.end()}; }
    std::vector<float> Yf() const { return {Y.begin(), Y.end()}; }
    double xmin() const { return *std::min_element(X.begin() + 1, X.end()); }

private:
    void push(const std::pair<double, double>& p) {
        X.push_back(p.first);
        Y.push_back(p.second);
    }
};

inline TestRegion region(std::initializer_list<Ring> rings) {
    TestRegion r;
    for (const auto& ring : rings) r.add(ring);
    return r;
}
