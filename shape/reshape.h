// Shape modifiers that walk sub-paths by arc length or hand them to the
// tessellator: resampling, moving a closed path's start, triangles, and the
// write-on range over whole vectors.
#pragma once
#include <cstdint>
#include <memory>
#include "shape/shape.h"

struct KResampleSettings {
    float distance = 0.11f;  // along the path between written points
    float offset = 0.0f;     // where the walk begins
    bool keepEndPoints = false;
    bool keepOriginalPoints = false;
};
// Points every `distance` along the array, from `offset`, plus what the keep
// options ask for; a closed array closes.
void KResampleArray(KShape& out, const KShapeArray& array, const KResampleSettings& settings);

// Each closed sub-path begins `fraction` of its length further on. Unchanged
// (a copy) for 0, an empty shape, or when any sub-path is open.
KShape* KShiftStart(const KShape& shape, float fraction);

// Triangles of the area under the odd winding rule, each a closed sub-path of
// three points; type 1 gives none. Curves count their control points as points.
KShape* KTriangulateShape(const KShape& shape, int32_t type);

struct KWriteOnSettings {
    int32_t precision = 8;  // curve flatten steps
    int32_t level = 0;      // 0 the whole vector, 1 each shape, 2 each sub-path
    float start = 0.0f, end = 1.0f;
    float shift = 0.0f;
    bool wrap = false;
};
// The part of every path between the fractions start and end of the length
// of what the level shares the range over.
std::unique_ptr<ShapeListVector> KWriteOn(const ShapeListVector* shapes, const KWriteOnSettings& settings);
