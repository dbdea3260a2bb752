// How the geometry library takes arrays and grids.
//
// Vectors (coordinates X, Y, Z, polygon ends, point lists, flags, cell lists):
//   a pointer to an array whose element 0 is unused; element k of the vector
//   is p[k], k counted from 1. The shared GIS buffers gisX, gisY (100001
//   entries) and gisO_.ir are declared this way and can be passed as they are.
//
// Grids (inside, crossings, ivalues, rvalues): two-dimensional, addressed
//   (j, i), j varying fastest, first dimension dimJ, second dimension dimI,
//   both from 1. The caller passes a pointer to element (1, 1) of a plain
//   block of dimJ * dimI values together with dimJ and dimI; element (j, i) is
//   g[gridIndex(j, i, dimJ)] = g[(i - 1) * dimJ + (j - 1)].
//
// Plain inputs go by value, results by reference.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr std::size_t gridIndex(int32_t j, int32_t i, int32_t dimJ) {
    return static_cast<std::size_t>(i - 1) * static_cast<std::size_t>(dimJ) + static_cast<std::size_t>(j - 1);
}

namespace geometry_detail {

// trunc toward zero as a grid index. Values far outside any grid (and NaN)
// are held at +-2^30 so that the "+ 1" of an index and the comparisons that
// follow stay defined; within that range the result is the plain truncation.
inline int32_t truncIndex(double v) {
    constexpr double kBig = 1073741824.0;
    if (!(v > -kBig)) return -1073741824;
    if (!(v < kBig)) return 1073741824;
    return static_cast<int32_t>(v);
}
inline int32_t truncIndex(float v) {
    constexpr float kBig = 1073741824.0f;
    if (!(v > -kBig)) return -1073741824;
    if (!(v < kBig)) return 1073741824;
    return static_cast<int32_t>(v);
}

}  // namespace geometry_detail
