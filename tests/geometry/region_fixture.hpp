// Builds regions in the slot layout of the membership routines: each ring's
// points, the first repeated, then a copy of the second; ends[p] is the slot
// of the repeat. Arrays keep element 0 unused.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

struct TestRegion {
    std::vector<double> X{0.0}, Y{0.0};
    std::vector<int32_t> ends{0};
    std::vector<int32_t> starts{0};  // first slot of each polygon
    int32_t npoly = 0;

    // `ring` holds the polygon's points without the closing repeat.
    void add(const std::vector<std::pair<double, double>>& ring) {
        starts.push_back(N() + 1);
        for (const auto& p : ring) push(p);
        push(ring[0]);
        ends.push_back(N());
        push(ring[1]);
        ++npoly;
    }
    int32_t N() const { return static_cast<int32_t>(X.size()) - 1; }
    std::vector<float> Xf() const { return std::vector<float>(X.begin(), X.end()); }
    std::vector<float> Yf() const { return std::vector<float>(Y.begin(), Y.end()); }
    double xmin() const {
        double m = X[1];
        for (int32_t k = 2; k <= N(); ++k) m = X[k] < m ? X[k] : m;
        return m;
    }

private:
    void push(const std::pair<double, double>& p) {
        X.push_back(p.first);
        Y.push_back(p.second);
    }
};
