// Geometry on shapes: flattening, the built-in stroker, dashing and the scan
// edges the rasteriser walks. Every operation returns a new shape that copies
// its source's header; the caller owns it.
#pragma once
#include <vector>
#include "shape/shape.h"

// Every curve replaced by `steps` straight segments; other nodes copied.
KShape* KFlatten(const KShape& shape, int32_t steps);

// The outline of the pen's stroke: flattened, dashed if the pen asks, then
// stroked by the built-in stroker or by polyclipping (pen.style 0).
KShape* KStroke(const KShape& shape, const KShapePen& pen);

// The built-in stroker on one sub-path, with outer and inner half-widths.
void KStrokeArray(KShape& out, const KShapeArray& array, const KShapePen& pen, float outer, float inner);

// The on runs of a dash pattern along one sub-path, as open sub-paths.
KShape* KDash(const KShapeArray& array, const KShapeDash& dash, float thickness);

// Edges for the rasteriser, in sample space: x = sx p.x + ox, y = sy p.y + oy.
// Every sub-path closes back to its first point; curves are flattened with `steps`.
struct KScanEdge {
    double x0, y0, x1, y1;  // y0 < y1
    int8_t direction;       // +1 when the path runs up, -1 down
    uint8_t attribute;
};
std::vector<KScanEdge> KToScanEdges(const KShape& shape, double sx, double sy, double ox, double oy,
                                    int32_t steps);
