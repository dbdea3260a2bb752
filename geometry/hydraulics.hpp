// Wetted geometry of a channel section under a water level: flow area, top
// width and wetted perimeter of one straight stretch from (x1, z1) to (x2, z2)
// (x across the section, z the bed), and the surface width in a circular
// pipe. Single precision; summing along a section is the caller's work.
#pragma once

// With active at or below 0 all three results are 0. Width and area keep the
// sign of x2 - x1; the perimeter is never negative.
void HYD_PARAM(float x1, float z1, float x2, float z2, float level, float active, float& area, float& width,
               float& perimeter);

// The stretch taken as two halves about its midpoint, each switched on or off
// by its own active value and worked out independently.
void HYD_PARAM2(float x1, float z1, float active1, float x2, float z2, float active2, float level, float& area1,
                float& area2, float& width1, float& width2, float& perimeter1, float& perimeter2);

// Water-surface width at `depth` in a pipe of `radius`; 0 within 1e-5 of
// empty or full.
float CIRCLE_WIDTH(float radius, float depth);
