// Runs one member of the grid-line family and collects its cell list, with
// guard entries behind the list's capacity.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "geometry/gridline.hpp"

enum class Member { first, v2, five };

struct Walk {
    int32_t jFirst = 77, jLast = 77, iFirst = 77, iLast = 77, n = -1;
    std::vector<std::pair<int32_t, int32_t>> cells;  // (j, i)
};

inline Walk walk(Member m, float x1, float y1, float x2, float y2, float dx = 1.0f, float dy = 1.0f,
                 int32_t jOffset = 0, int32_t iOffset = 0, int32_t limit = 10000, bool single = false) {
    constexpr int32_t kGuard = -555;
    std::vector<int32_t> jc(static_cast<std::size_t>(limit) + 3, kGuard), ic(jc);
    Walk w;
    switch (m) {
        case Member::first:
            gridline(x1, y1, x2, y2, dx, dy, w.jFirst, w.jLast, w.iFirst, w.iLast, w.n, jc.data(), ic.data(), limit);
            break;
        case Member::v2:
            gridline_v2(x1, y1, x2, y2, single, dx, dy, w.jFirst, w.jLast, w.iFirst, w.iLast, w.n, jc.data(),
                        ic.data(), limit, jOffset, iOffset);
            break;
        case Member::five:
            gridline_5(x1, y1, x2, y2, single, dx, dy, w.jFirst, w.jLast, w.iFirst, w.iLast, w.n, jc.data(),
                       ic.data(), limit, jOffset, iOffset);
            break;
    }
    EXPECT_LE(w.n, limit);
    EXPECT_EQ(jc[0], kGuard);
    EXPECT_EQ(jc[static_cast<std::size_t>(limit) + 1], kGuard);
    EXPECT_EQ(ic[static_cast<std::size_t>(limit) + 1], kGuard);
    for (int32_t k = 1; k <= w.n; ++k) w.cells.emplace_back(jc[static_cast<std::size_t>(k)], ic[static_cast<std::size_t>(k)]);
    return w;
}

using Cells = std::vector<std::pair<int32_t, int32_t>>;
