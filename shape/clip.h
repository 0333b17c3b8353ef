// Boolean and offset through polyclipping, on integer coordinates of shape
// space times 1000000; and the operations beside them that need no library.
#pragma once
#include <polyclipping/clipper.hpp>
#include "shape/shape.h"

constexpr float kClipScale = 1000000.0f;

// Each sub-path as a closed path, coordinates truncated after scaling.
ClipperLib::Paths KToPaths(const KShape& shape, float scale = kClipScale);
// One shape, a closed sub-path per path; the header is empty.
KShape* KFromPaths(const ClipperLib::Paths& paths, float scale = kClipScale);

// Steps per curve when a curved shape enters a boolean.
constexpr int32_t kBooleanCurveSteps = 16;
// clipType: 0 intersection, 1 union, 2 difference, 3 xor; fillType: 0 even/odd, 1 non-zero.
KShape* KBooleanShape(const KShape& subject, const KShape* clip, int32_t clipType, int32_t fillType);

struct KOffsetSettings {
    int32_t precision = 8;  // curve flatten steps
    int32_t joinType = 0;   // 0 miter, 1 bevel, 2 round
    float offset = 0.0f;
    int32_t joinPrecision = 8;
};
// Closed shapes grow by polyclipping, open ones move to one side.
KShape* KOffsetShape(const KShape& shape, const KOffsetSettings& settings);

// The polygon half of a stroke: the band of an open or closed shape, from its
// outer and inner half-widths.
KShape* KStrokeByClipper(const KShape& flat, const KShapePen& pen, float outer, float inner);

struct KKillSettings {
    int32_t precision = 16;
    bool byAngle = false;
    float angleMin = 0.0f, angleMax = 0.0f, angleOffset = 0.0f;  // radians
    bool byLength = false;
    float lengthMin = 0.0f, lengthMax = 0.1f;
};
// Drops the segments outside an angle window or a length range.
KShape* KKillSegments(const KShape& shape, const KKillSettings& settings);
