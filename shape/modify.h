// Shape makers and modifiers the image shape tools share: the spiral, the
// zig-zag, the smoothing into cubics and the write-on range.
#pragma once
#include "framework/parameter.h"
#include "shape/shape.h"

struct KSpiralSettings {
    float radiusStart = 0.1f, radiusEnd = 0.3f;
    float angleStart = 0.0f, angleEnd = 12.566371f;  // radians, counter-clockwise
    float angleStep = 0.34906585f;                     // radians, its sign is taken from the ends
    int32_t endType = 1;                               // 0 none, 1 at RadiusEnd, 2 one step on
};
// A spiral around the origin from angleStart to angleEnd.
KShape* KSpiralShape(const KSpiralSettings& settings);

// The spiral controls that Spiral and sSpiral Create share, as the host
// leaves them: angles negated, in radians, the step in degrees.
struct KSpiralControls {
    float radiusStart = 0.1f, radiusEnd = 0.3f, angleStart = 0.0f, angleEnd = 0.0f, angleStep = 20.0f;
    int32_t endType = 1;

    void Declare(KParameterList& in);
    // Counter-clockwise from start to end.
    KSpiralSettings Settings() const
    {
        return {radiusStart, radiusEnd, -angleStart, -angleEnd, angleStep * 0.017453292f, endType};
    }
};

// Points pushed alternately to either side of each segment, `steps` per
// segment; type 1 only, any other type copies the array.
void KZigZagArray(KShape& out, const KShapeArray& array, int32_t type, float offset, int32_t steps);
// The array as cubics through its points.
void KSmoothArray(KShape& out, const KShapeArray& array, float smooth, float curvature);
// The part of the shape between the fractions start and end of its length,
// shared among its sub-paths by their lengths.
KShape* KWriteOnShape(const KShape& shape, float start, float end, int32_t precision);
