// Curve pairs of a morph and the line-pair warps they drive. Each output
// position is measured against the lines of the second curve of a pair and
// moved to the matching place on the first: the picture on the first curves
// comes to lie on the second.
#pragma once
#include <cmath>
#include <cstdint>
#include <vector>
#include "framework/effect.h"
#include "framework/geometry.h"

// One control point of a pair: its place on the first curve and on the
// second, 0 to 1 across the picture and 0 to 1 up it.
struct WarpPoint {
    float x1 = 0.0f, y1 = 0.0f, x2 = 0.0f, y2 = 0.0f;
    bool operator==(const WarpPoint&) const = default;
};

struct WarpSegment {
    bool isPoint = false;     // the second line has no length
    Vector2f a, b, ab;        // first line
    Vector2f abNormal;        // its unit normal, (-ab.y, ab.x) / |ab|
    Vector2f c, d;            // second line
    Vector2f cdScaled;        // (d - c) / |d - c|^2
    Vector2f cdNormal;        // unit normal of the second line
    float length = 0.0f;      // of the second line
    float weight = 0.0f;      // share of the curve's length; 1 for a point before the share
    float lengthPower = 1.0f; // length ^ Length Influence, set by the field warp

    // Where output position `p` reads from by this segment, and how far p lies
    // from the second line.
    void Evaluate(Vector2f p, Vector2f& source, float& distance) const
    {
        const Vector2f q = p - c;
        if (isPoint) {
            source = a + q;
            distance = q.Length();
            return;
        }
        const float u = q.Dot(cdScaled), v = q.Dot(cdNormal);
        distance = u < 0.0f ? q.Length() : u > 1.0f ? (p - d).Length() : std::fabs(v);
        source = a + ab * u + abNormal * v;
    }
};

struct WarpCurve {
    std::vector<WarpPoint> points;
    bool spline = false;
    std::vector<WarpSegment> segments;  // rebuilt on each Start

    int32_t Count() const { return static_cast<int32_t>(points.size()); }
    // Lines between the points (refined by Catmull-Rom to `subdivisions`
    // points a span for a spline of three points or more), y divided by the
    // picture aspect; weights are shares of the second curve's length.
    void BuildSegments(int32_t subdivisions, float aspect);
};

class MW_WarpData {
public:
    std::vector<WarpCurve> curves;
    int32_t subdivisions = 4;

    // The curves for one side of a morph at `warp`: the first line is the
    // side's own curve (position 0 the first curves, 1 the second), the
    // second line lies `warp` of the way from the first curves to the second.
    MW_WarpData At(int32_t position, float warp) const;
    // Every point `f` of the way from this to `other`; false when the two
    // differ in curves, points or spline, and cannot be blended.
    bool Blend(const MW_WarpData& other, float f, MW_WarpData& out) const;
    int32_t PointCount() const;
};

// A warp by curve pairs; the two mappings differ in how segments combine.
class KWarpByCurves : public KEffectWarp {
public:
    explicit KWarpByCurves(const MW_WarpData& d) : data(d) {}
    bool Start(KImage* input, KImage** output, void* extras) override;

    MW_WarpData data;
    float adherence = 0.0001f, locality = 1.5f, lengthInfluence = 0.0f, radius = 0.0f;

protected:
    std::vector<WarpSegment> all;  // every curve's segments, in order, for the per-pixel walk
};

// Every segment pulls with 1 / (distance + Adherence), raised to Locality and
// scaled by its weight; the pulls are normalised. With no segment the weight
// sum is zero and there is nothing to read.
class KWarpField : public KWarpByCurves {
public:
    using KWarpByCurves::KWarpByCurves;
    bool Start(KImage* input, KImage** output, void* extras) override;
    bool InverseMap(KPosition& out, const KPosition& in) override;
};

// Every segment pulls by a Gaussian of its distance over Radius, unnormalised:
// far from every curve, and with no curves, the picture stays.
class KWarpRadial : public KWarpByCurves {
public:
    using KWarpByCurves::KWarpByCurves;
    bool Start(KImage* input, KImage** output, void* extras) override;
    bool InverseMap(KPosition& out, const KPosition& in) override;

private:
    float k = 0.0f;  // -1 / Radius^2
};
