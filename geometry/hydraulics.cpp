#include "geometry/hydraulics.hpp"

#include <cmath>

namespace {

// Length from two legs; 0 when both are below 1e-6 in size.
float legLength(float legA, float legB) {
    const float a = std::fabs(legA), b = std::fabs(legB);
    if (a < 0.000001f && b < 0.000001f) return 0.0f;
    return std::sqrt(a * a + b * b);
}

}  // namespace

void HYD_PARAM(float x1, float z1, float x2, float z2, float level, float active, float& area, float& width,
               float& perimeter) {
    area = width = perimeter = 0.0f;
    if (active <= 0.0f) return;
    const float dx = x2 - x1;
    if (level >= z1 && level >= z2) {  // wholly under water
        area = (level - (z1 + z2) * 0.5f) * dx;
        width = dx;
        perimeter = legLength(dx, z2 - z1);
    } else if (z1 > level && z2 > level) {  // wholly dry
        return;
    } else if (level >= z1) {  // wet at the z1 end; z1 differs from z2 here
        const float w = dx * (level - z1) / (z2 - z1);
        area = (level - z1) * w * 0.5f;
        width = w;
        perimeter = legLength(w, level - z1);
    } else {  // wet at the z2 end
        const float w = dx * (level - z2) / (z1 - z2);
        area = (level - z2) * w * 0.5f;
        width = w;
        perimeter = legLength(w, level - z2);
    }
}

void HYD_PARAM2(float x1, float z1, float active1, float x2, float z2, float active2, float level, float& area1,
                float& area2, float& width1, float& width2, float& perimeter1, float& perimeter2) {
    const float xm = (x1 + x2) * 0.5f;
    const float zm = (z1 + z2) * 0.5f;
    HYD_PARAM(x1, z1, xm, zm, level, active1, area1, width1, perimeter1);
    HYD_PARAM(xm, zm, x2, z2, level, active2, area2, width2, perimeter2);
}

float CIRCLE_WIDTH(float radius, float depth) {
    if (depth > 2.0f * radius - 0.00001f || depth < 0.00001f) return 0.0f;
    const float h = depth - radius;
    return 2.0f * std::sqrt(radius * radius - h * h);
}
