// Shape makers and modifiers the image shape tools share: the spiral, the
// zig-zag, the smoothing into cubics and the write-on range.
#pragma once
#include "shape/shape.h"

struct KSpiralSettings {
    float radiusStart = 0.1f, radiusEnd = 0.3f;
    float angleStart = 0.0f, angleEnd = 12.566371f;  // radians, counter-clockwise
    float angleStep = 0.34906585f;                     // radians, its sign is taken from the ends
    int32_t endType = 1;                               // 0 none, 1 at RadiusEnd, 2 one step on
};
// A spiral around the origin from angleStart to angleEnd.
KShape* KSpiralShape(const KSpiralSettings& settings);

// Points pushed alternately to either side of each segment, `steps` per
// segment; type 1 only, any other type copies the array.
void KZigZagArray(KShape& out, const KShapeArray& array, int32_t type, float offset, int32_t steps);
// The array as cubics through its points.
void KSmoothArray(KShape& out, const KShapeArray& array, float smooth, float curvature);
// The part of the shape between the fractions start and end of its length,
// shared among its sub-paths by their lengths.
KShape* KWriteOnShape(const KShape& shape, float start, float end, int32_t precision);
