// Shapes made from nothing or from an image: the primitive outlines, the
// rounded rectangle and pie slice the charts build on, and tracing.
#pragma once
#include <cstdint>
#include "shape/shape.h"

class KImage;

// Primitive outlines around the origin, of full extent `size`:
// 0 cross, 1 and 3 polygon of `steps` points on an ellipse, 2 rectangle,
// 4 star of 2 x `steps` points on two radii. `angle` turns where the
// polygon and the star begin, in radians.
void KAddPrimitive(KShape& shape, int32_t type, Vector2f size, int32_t steps, float angle);

// A closed rectangle; with a radius, corners of quarter arcs of `steps` steps,
// lower-left first, the radius at most half the smaller side.
void KAddRoundRect(KShape& shape, float x0, float x1, float y0, float y1, float radius, int32_t steps);

// A closed ring piece from angle0 to angle1 (radians) at rOuter, back along
// rInner, or to the origin when rInner is not above 0.
void KAddPieSlice(KShape& shape, float angle0, float angle1, float rInner, float rOuter, int32_t steps);

// The outlines of the pixels whose channel (0 red .. 3 alpha, any other the
// luminance) lies above `threshold`, traced into curves, one closed sub-path
// per outline, in pixel units over the width: column x lands at x / width, row
// y at y / width. Null when the bitmap cannot be had or the trace fails.
KShape* KTraceShape(const KImage& image, int32_t channel, float threshold);

class KDataChannel;
// Component c of a data channel's element i as a number, from float or
// integer storage; `fallback` when there is no channel, no such element or
// component. The creation tools read their per-row overrides through it.
float KDataNumber(const KDataChannel* channel, int32_t i, int32_t c, float fallback);
