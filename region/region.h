// Regions in space: how much a point lies inside, from 0 to 1. A region is a
// tree of nodes, each of which transforms the query point and finds its value
// from its kind and its children. Trees are immutable once a tool has made
// them, so a tool that builds on its input shares the input's nodes instead of
// copying them, and any number of threads may ask the same tree at once.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>
#include "framework/geometry.h"

class KImage;
struct KTransformValue;

enum KRegionKind : uint32_t {
    kRegionEmpty = 0, kRegionMerge = 1, kRegionTransform = 2, kRegionModify = 3, kRegionPlane = 4,
    kRegionCube = 5, kRegionImage = 6, kRegionShape = 8, kRegionSphere = 9, kRegionNoise = 10,
};

enum KRegionCombine : int32_t {
    kCombineUnion = 0, kCombineIntersect = 1, kCombineAdd = 2, kCombineSubtract = 3, kCombineExclusive = 4,
};

// A curve the final value goes through: entry i of `entries` over `maximum`.
struct KRegionLookup {
    int32_t count = 0;
    float maximum = 0.0f;
    std::vector<uint16_t> entries;
};

// Fractal gradient noise: `octaves` layers, each of half the size and half the
// weight of the one before, the first of features `size` across, placed by the seed.
struct KRegionNoise {
    float size = 1.0f;
    int32_t octaves = 1;
    Vector3f offset;
};

struct KRegion3DNode {
    uint32_t kind = kRegionEmpty;
    std::shared_ptr<const KRegion3DNode> child1, child2;  // null: absent
    int32_t combine = kCombineUnion;
    bool invert = false;
    Matrix4f transform;         // the tool's forward transform
    Matrix4f inverseTransform;  // every query point goes through this first
    Vector3f softness;
    int32_t seed = 1234;
    KRegionNoise noise;
    float brightness = 0.0f;
    float contrast = 1.0f;
    float edge = 0.0f;
    std::shared_ptr<const KRegionLookup> lookup;  // may be null
    std::shared_ptr<const KImage> image;          // holds a use of the picture
    int32_t channel = 4;                          // 0 red .. 3 alpha, 4 luminance
    int32_t outside = 0;                          // 0 "Empty", 1 "Duplicate", 2 "Wrap"
    int32_t resolution = 0;                       // 0 "Full", 1 "Sampled"
    int32_t sampledWidth = 0, sampledHeight = 0;
    int32_t mapping = 0;                          // kept; no kind reads it
    bool interpolate = false;                     // kept; no kind reads it
    std::vector<float> sampled;                   // sampledWidth x sampledHeight, row 0 at the bottom
    // Shape node: the sub-paths of its shapes, curves flattened, tested even/odd each.
    std::shared_ptr<const std::vector<std::vector<Vector2f>>> shape;
};

// The value of the tree at p: 0 outside, 1 inside.
float KRegionValue(const KRegion3DNode& node, Vector3f p);

// The edge at 1.0 of width s: 1 inside 1 - s/2, 0 from 1 + s/2 on.
float KRegionFalloff(float x, float s);

// The sampled grid of an Image node: sampledWidth x sampledHeight nearest
// reads of the picture's channel.
void KRegionSampleGrid(KRegion3DNode& node);

// The forward matrix of a transform value: scale (X for all three with Scale
// Lock on), turn about the axes in the rotation order, then move.

// The value that travels between tools: a tree, or nothing.
class KRegion3D {
public:
    KRegion3D() = default;
    explicit KRegion3D(std::shared_ptr<const KRegion3DNode> r) : root(std::move(r)) {}
    // A region without a tree is empty everywhere.
    float Value(Vector3f p) const { return root ? KRegionValue(*root, p) : 0.0f; }
    // The tree in words: "Merge Union (Sphere, Transform (Cube))".
    std::string Describe() const;

    std::shared_ptr<const KRegion3DNode> root;
};

// A plane through the region, sampled at pixel centres into a float picture
// with the value in red, green and blue and an opaque alpha. `axis` is the
// axis the plane stands across (0 x, 1 y, 2 z) at `offset`; the other two run
// across and up, in x, y, z order, over the picture's normalised space:
// -0.5 to 0.5 across and as far up as the picture's shape gives, centred on 0.
// Rows are spread over the host's workers.
KImage* KRegionSlice(const KRegion3D& region, int32_t axis, float offset, int32_t width, int32_t height);
// The point in space of pixel (x, y) of such a slice.
Vector3f KRegionSlicePoint(int32_t axis, float offset, int32_t width, int32_t height, int32_t x, int32_t y);
