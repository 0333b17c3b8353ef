#include "region/region.h"
#include <algorithm>
#include <cmath>
#include "framework/parameter.h"
#include "raster/image.h"

namespace {

float Adjust(const KRegion3DNode& n, float a)
{
    return std::clamp((a - 0.5f) * n.contrast + 0.5f + n.brightness, 0.0f, 1.0f);
}

float ChannelOf(const KPixelF& p, int32_t channel)
{
    if (channel >= 0 && channel < 4) return p[channel];
    return 0.299f * p.r + 0.587f * p.g + 0.114f * p.b;
}

// The picture spans the unit square centred on the origin, row 0 at the bottom.
float ImageValue(const KRegion3DNode& n, Vector3f q)
{
    if (n.resolution == 0) {
        if (!n.image) return 0.0f;
        const KImage& image = *n.image;
        // Outside "Empty", "Duplicate", "Wrap" as the sampler's edge modes.
        static constexpr int32_t kEdges[3] = {kEdgeBlack, kEdgeDuplicate, kEdgeWrap};
        KPixelF p;
        image.SamplePixel((q.x + 0.5f) * static_cast<float>(image.width) - 0.5f,
                          (q.y + 0.5f) * static_cast<float>(image.height) - 0.5f, p,
                          kEdges[std::clamp(n.outside, 0, 2)]);
        return ChannelOf(p, n.channel);
    }
    if (n.sampled.empty()) return 0.0f;
    float u = q.x + 0.5f, w = q.y + 0.5f;
    switch (n.outside) {
    case 1:
        u = std::clamp(u, 0.0f, 1.0f);
        w = std::clamp(w, 0.0f, 1.0f);
        break;
    case 2:
        u = std::fmod(u, 1.0f);
        w = std::fmod(w, 1.0f);
        if (u < 0.0f) u += 1.0f;
        if (w < 0.0f) w += 1.0f;
        break;
    default:
        if (!(u >= 0.0f && u <= 1.0f && w >= 0.0f && w <= 1.0f)) return 0.0f;
        break;
    }
    const auto row = static_cast<int32_t>(static_cast<float>(n.sampledHeight - 1) * w);
    const auto column = static_cast<int32_t>(static_cast<float>(n.sampledWidth - 1) * u);
    return n.sampled[static_cast<size_t>(row) * n.sampledWidth + column];
}

// Gradient noise over the integer lattice, in about -1..1: a gradient per
// lattice point from a hash of its coordinates, blended with a curve whose
// first and second derivatives vanish at the points, so the value and its
// slopes run on smoothly across cells.
uint32_t LatticeHash(int32_t x, int32_t y, int32_t z)
{
    uint32_t h = static_cast<uint32_t>(x) * 0x8DA6B343u ^ static_cast<uint32_t>(y) * 0xD8163841u ^
                 static_cast<uint32_t>(z) * 0xCB1AB31Fu;
    h ^= h >> 16;
    h *= 0x7FEB352Du;
    h ^= h >> 15;
    return h;
}

// The dot of (x, y, z) with one of twelve edge directions of a cube.
float Gradient(uint32_t h, float x, float y, float z)
{
    const uint32_t k = h % 12u;
    const float u = k < 8u ? x : y, v = k < 4u ? y : z;
    return ((k & 1u) ? -u : u) + ((k & 2u) ? -v : v);
}

float Fade(float t) { return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f); }

float GradientNoise(float x, float y, float z)
{
    const float fx = std::floor(x), fy = std::floor(y), fz = std::floor(z);
    const auto ix = static_cast<int32_t>(fx), iy = static_cast<int32_t>(fy), iz = static_cast<int32_t>(fz);
    x -= fx;
    y -= fy;
    z -= fz;
    const float u = Fade(x), v = Fade(y), w = Fade(z);
    auto corner = [&](int32_t dx, int32_t dy, int32_t dz) {
        return Gradient(LatticeHash(ix + dx, iy + dy, iz + dz), x - static_cast<float>(dx),
                        y - static_cast<float>(dy), z - static_cast<float>(dz));
    };
    auto lerp = [](float a, float b, float t) { return a + (b - a) * t; };
    return lerp(lerp(lerp(corner(0, 0, 0), corner(1, 0, 0), u), lerp(corner(0, 1, 0), corner(1, 1, 0), u), v),
                lerp(lerp(corner(0, 0, 1), corner(1, 0, 1), u), lerp(corner(0, 1, 1), corner(1, 1, 1), u), v), w);
}

float NoiseValue(const KRegionNoise& noise, Vector3f q)
{
    float scale = 1.0f / std::max(noise.size, 1e-6f), weight = 1.0f, sum = 0.0f, total = 0.0f;
    for (int32_t i = 0; i < noise.octaves; ++i) {
        sum += weight * GradientNoise(q.x * scale + noise.offset.x, q.y * scale + noise.offset.y,
                                      q.z * scale + noise.offset.z);
        total += weight;
        scale *= 2.0f;
        weight *= 0.5f;
    }
    return total > 0.0f ? std::clamp(0.5f + 0.5f * sum / total, 0.0f, 1.0f) : 0.5f;
}

// Inside when any sub-path holds the point by the even/odd rule, as a shape's own test has it.
bool ShapeHolds(const std::vector<std::vector<Vector2f>>& paths, float x, float y)
{
    for (const std::vector<Vector2f>& path : paths) {
        bool inside = false;
        const size_t n = path.size();
        for (size_t i = 0, j = n - 1; i < n; j = i++) {
            const Vector2f u = path[i], v = path[j];
            if ((u.y > y) != (v.y > y) && x < (v.x - u.x) * (y - u.y) / (v.y - u.y) + u.x) inside = !inside;
        }
        if (inside) return true;
    }
    return false;
}

const char* KindName(uint32_t kind)
{
    switch (kind) {
    case kRegionMerge: return "Merge";
    case kRegionTransform: return "Transform";
    case kRegionModify: return "Modify";
    case kRegionPlane: return "Plane";
    case kRegionCube: return "Cube";
    case kRegionImage: return "Image";
    case kRegionShape: return "Shape";
    case kRegionSphere: return "Sphere";
    case kRegionNoise: return "Noise";
    default: return "Empty";
    }
}

std::string Describe(const KRegion3DNode* n)
{
    if (!n) return "none";
    static const char* combines[5] = {"Union", "Intersect", "Add", "Subtract", "Exclusive"};
    std::string s = KindName(n->kind);
    if (n->kind == kRegionMerge) s += std::string(" ") + combines[std::clamp(n->combine, 0, 4)];
    if (n->invert) s += " inverted";
    if (n->kind == kRegionMerge) s += " (" + Describe(n->child1.get()) + ", " + Describe(n->child2.get()) + ")";
    else if (n->kind == kRegionTransform || n->kind == kRegionModify) s += " (" + Describe(n->child1.get()) + ")";
    return s;
}

}  // namespace

float KRegionFalloff(float x, float s)
{
    if (x >= 1.0f + s / 2.0f) return 0.0f;
    if (x <= 1.0f - s / 2.0f) return 1.0f;
    return 1.0f - (x - (1.0f - s / 2.0f)) / s;
}

float KRegionValue(const KRegion3DNode& n, Vector3f p)
{
    const Vector3f q = n.inverseTransform.Apply(p);
    auto child = [&q](const std::shared_ptr<const KRegion3DNode>& c) { return c ? KRegionValue(*c, q) : 0.0f; };
    float v;
    switch (n.kind) {
    case kRegionMerge: {
        const float a = child(n.child1), b = child(n.child2);
        switch (n.combine) {
        case kCombineIntersect: v = b * a; break;
        case kCombineAdd: v = std::min(b + a, 1.0f); break;
        case kCombineSubtract: v = std::max(a - b, 0.0f); break;
        case kCombineExclusive: {
            const float s = b + a;
            v = s <= 1.0f ? s : 2.0f - s;
            break;
        }
        default: v = 1.0f - (1.0f - b) * (1.0f - a); break;
        }
        break;
    }
    case kRegionTransform: v = child(n.child1); break;
    case kRegionModify: {
        const float c = Adjust(n, child(n.child1));
        float e = 2.0f * c;
        if (e > 1.0f) e = 2.0f - e;
        v = (1.0f - n.edge) * c + n.edge * e;
        break;
    }
    case kRegionPlane: {
        const float s = n.softness.z;
        if (q.z >= s * 0.5f) v = 1.0f;
        else if (q.z <= s * -0.5f) v = 0.0f;
        else v = (s * 0.5f + q.z) / s;
        break;
    }
    case kRegionCube:
        v = KRegionFalloff(std::fabs(q.x), n.softness.x) * KRegionFalloff(std::fabs(q.y), n.softness.y) *
            KRegionFalloff(std::fabs(q.z), n.softness.z);
        break;
    case kRegionSphere:
        v = KRegionFalloff(std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z), n.softness.x);
        break;
    case kRegionImage: v = Adjust(n, ImageValue(n, q)); break;
    case kRegionNoise: v = Adjust(n, NoiseValue(n.noise, q)); break;
    // The point as it came in: a shape region does not move with its own transform.
    case kRegionShape: v = n.shape && ShapeHolds(*n.shape, p.x, p.y) ? 1.0f : 0.0f; break;
    default: v = 1.0f; break;
    }
    if (const KRegionLookup* l = n.lookup.get(); l && l->count > 0) {
        const auto i = std::clamp(static_cast<int32_t>((l->maximum - 0.5001f) * v), 0, l->count - 1);
        v = static_cast<float>(l->entries[i]) / l->maximum;
    }
    return n.invert ? 1.0f - v : v;
}

void KRegionSampleGrid(KRegion3DNode& n)
{
    n.sampled.clear();
    if (!n.image || n.sampledWidth < 1 || n.sampledHeight < 1) return;
    const KImage& image = *n.image;
    n.sampled.resize(static_cast<size_t>(n.sampledWidth) * n.sampledHeight);
    for (int32_t j = 0; j < n.sampledHeight; ++j)
        for (int32_t i = 0; i < n.sampledWidth; ++i) {
            KPixelF p;
            image.GetPixel(i * image.width / n.sampledWidth, j * image.height / n.sampledHeight, p, kEdgeDuplicate);
            n.sampled[static_cast<size_t>(j) * n.sampledWidth + i] = ChannelOf(p, n.channel);
        }
}

std::string KRegion3D::Describe() const { return ::Describe(root.get()); }

Vector3f KRegionSlicePoint(int32_t axis, float offset, int32_t width, int32_t height, int32_t x, int32_t y)
{
    const float aspect = static_cast<float>(width) / static_cast<float>(height);
    const float across = (static_cast<float>(x) + 0.5f) / static_cast<float>(width) - 0.5f;
    const float up = ((static_cast<float>(y) + 0.5f) / static_cast<float>(height) - 0.5f) / aspect;
    switch (axis) {
    case 0: return {offset, across, up};
    case 1: return {across, offset, up};
    default: return {across, up, offset};
    }
}

KImage* KRegionSlice(const KRegion3D& region, int32_t axis, float offset, int32_t width, int32_t height)
{
    KImage* slice = KImage::Create(width, height, true);
    slice->EachRow([&](int32_t y, const uint16_t*, const float*) {
        float* row = slice->RowF(y);
        for (int32_t x = 0; x < width; ++x, row += 4) {
            const float v = region.Value(KRegionSlicePoint(axis, offset, width, height, x, y));
            row[0] = row[1] = row[2] = v;
            row[3] = 1.0f;
        }
    });
    return slice;
}
