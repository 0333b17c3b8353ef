// The noise functions of the generator tools. The order of every sum and
// product is part of the result: the hashes magnify the last bit of a sine.
#include "tools/image/noise_functions.h"
#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;

inline float Mix(float a, float b, float s) { return a * (1.0f - s) + b * s; }

// Bilinear blend of four corner values by the smoothed fractions.
inline float Blend(float c00, float c10, float c01, float c11, float sx, float sy)
{
    return Mix(Mix(c00, c10, sx), Mix(c01, c11, sx), sy);
}

// Turns (x, y) by the angle whose cosine and sine are given.
inline KNoise2 Turn(float x, float y, float cs, float sn)
{
    return {x * cs + y * sn, y * cs - x * sn};
}

inline float Dot3(KNoise3 a, KNoise3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline float Fourth(float w)
{
    const float w2 = w * w;
    return w2 * w2;
}

// The offset pair of a lattice point of the vector noise. `split` evaluates
// the second sum with its constant split in two, as the corners beside the
// cell's own do.
inline KNoise2 VectorHash(float cx, float cy, bool split)
{
    const float first = KNoiseFract(sinf(11.55128f * cx + 26.978119f * cy) * 43758.23f) - 0.5f;
    const float sum = split ? (56.328453f * cx + 164.19798f) + (24.118277f * cy + 70.30501f)
                            : 56.328453f * cx + 24.118277f * cy + 234.503f;
    return {first, KNoiseFract(sinf(sum) * 43758.23f) - 0.5f};
}

inline float ValueHash(float cx, float cy)
{
    const double v = static_cast<double>(sinf(12.9898f * cx + 78.233f * cy)) * 43758.5453;
    return KNoiseFract(static_cast<float>(v));
}

inline float SignedValueHash(float cx, float cy)
{
    return KNoiseFract(sinf(15.32f * cx + 35.78f * cy) * 43758.23f);
}

template <class Hash> float SmoothLattice(KNoise2 p, Hash hash)
{
    const float ix = floorf(p.x), iy = floorf(p.y);
    const float sx = KNoiseSmooth(p.x - ix), sy = KNoiseSmooth(p.y - iy);
    return Blend(hash(ix, iy), hash(ix + 1.0f, iy), hash(ix, iy + 1.0f),
                 hash(ix + 1.0f, iy + 1.0f), sx, sy);
}

// One gradient component of a corner of the classic simplex noise.
inline float GradientPart(KNoise3 c, float k)
{
    const KNoise3 s{k * c.x, k * c.y, k * c.z};
    return 2.0f * KNoiseFract(sinf(Dot3(s, {12.9898f, 78.233f, 128.852f})) * 43758.547f) - 1.0f;
}

inline float Simplex3Corner(KNoise3 c, KNoise3 x)
{
    const float r = 0.5f - Dot3(x, x);
    if (!(r >= 0.0f)) return 0.0f;
    float gx = GradientPart(c, 1.0f), gy = GradientPart(c, 2.01f), gz = GradientPart(c, 2.02f);
    const float length = sqrtf(gx * gx + gy * gy + gz * gz);
    if (length > 0.0f) {
        gx /= length;
        gy /= length;
        gz /= length;
    }
    return Fourth(r) * (gx * x.x + gy * x.y + gz * x.z);
}

// Lattice value of the periodic turbulence: the sine of the reduced sum in double.
inline float PeriodicHash(float a, float b)
{
    const double reduced = std::fmod(static_cast<double>(12.9898f * a + 78.233f * b), kPi / 2.0);
    return KNoiseFract(static_cast<float>(std::sin(reduced) * 43758.546875));
}

// Wraps a lattice coordinate into 0..period by subtracting whole periods.
inline float Wrap(float v, float period)
{
    return v - truncf((1.0f / period) * v) * period;
}

}  // namespace

KNoiseTime::KNoiseTime(float time) : t(time)
{
    const float hash = -0.7f * time, offset = 0.5f * time, flow = -0.5f * time;
    hashCos = cosf(hash);
    hashSin = sinf(hash);
    offsetCos = cosf(offset);
    offsetSin = sinf(offset);
    flowCos = cosf(flow);
    flowSin = sinf(flow);
}

float KNoiseFract(float v) { return v - floorf(v); }

float KNoiseSmooth(float a)
{
    a = a > 0.0f ? (a < 1.0f ? a : 1.0f) : 0.0f;
    return (3.0f - 2.0f * a) * a * a;
}

KNoise2 KSimplexHash2(KNoise2 c, const KNoiseTime& t)
{
    const float a = sinf(127.1f * c.x + 311.7f * c.y) * 43758.547f;
    const float b = sinf(269.5f * c.x + 183.3f * c.y) * 43758.547f;
    const float gx = 2.0f * KNoiseFract(a) - 1.0f, gy = 2.0f * KNoiseFract(b) - 1.0f;
    return Turn(gx, gy, t.hashCos, t.hashSin);
}

float KSimplex2(KNoise2 p, const KNoiseTime& t)
{
    const float f = (p.x + p.y) * 0.36602542f;
    const KNoise2 i{floorf(p.x + f), floorf(p.y + f)};
    const float g = (i.x + i.y) * 0.21132487f;
    const float x0 = p.x - i.x + g, y0 = p.y - i.y + g;
    // A tie goes to (0, 1).
    const KNoise2 o = x0 > y0 ? KNoise2{1.0f, 0.0f} : KNoise2{0.0f, 1.0f};

    const float cs = t.offsetCos, sn = t.offsetSin;
    const KNoise2 d[3] = {
        Turn(x0, y0, cs, sn),
        Turn(x0 - o.x + 0.21132487f, y0 - o.y + 0.21132487f, cs, sn),
        // The third corner's offset is 1.4226497 on both axes, not 1 - 2G.
        Turn(x0 - 1.4226497f, y0 - 1.4226497f, cs, sn),
    };
    const KNoise2 corner[3] = {i, {i.x + o.x, i.y + o.y}, {i.x + 1.0f, i.y + 1.0f}};

    float s = 0.0f, n = 0.0f;
    for (int k = 0; k < 3; ++k) {
        const float h = std::fmax(0.5f - (d[k].x * d[k].x + d[k].y * d[k].y), 0.0f);
        s += h * h;
        const KNoise2 grad = KSimplexHash2(corner[k], t);
        n += d[k].x * grad.x + d[k].y * grad.y;
    }
    // One weight for all three corners: a corner out of reach still counts.
    return 100.0f * s * s * n;
}

KNoise3 KSimplexFlowHash(KNoise3 c, const KNoiseTime& t)
{
    const float j = sinf(17.0f * c.x + 59.4f * c.y + 15.0f * c.z);
    const float rz = KNoiseFract(2097152.0f * j) - 0.5f;
    const float rx = KNoiseFract(262144.0f * j) - 0.5f;
    const float ry = KNoiseFract(32768.0f * j) - 0.5f;
    const KNoise2 r = Turn(rx, ry, t.flowCos, t.flowSin);
    return {r.x, r.y, rz};
}

float KSimplexFlow3(KNoise3 v, const KNoiseTime& t)
{
    const float skew = Dot3(v, {0.3333333f, 0.3333333f, 0.3333333f});
    const KNoise3 s{floorf(v.x + skew), floorf(v.y + skew), floorf(v.z + skew)};
    const float g = Dot3(s, {0.1666667f, 0.1666667f, 0.1666667f});
    const KNoise3 x{v.x - s.x + g, v.y - s.y + g, v.z - s.z + g};

    const KNoise3 e{x.x - x.y >= 0.0f ? 1.0f : 0.0f, x.y - x.z >= 0.0f ? 1.0f : 0.0f, 1.0f};
    const KNoise3 ez{e.z, e.x, e.y};
    // The middle corners collapse to one step on all three axes.
    const float d1 = Dot3(e, {1.0f - ez.x, 1.0f - ez.y, 1.0f - ez.z});
    const float d2 = 1.0f - Dot3({1.0f - e.x, 1.0f - e.y, 1.0f - e.z}, ez);

    const KNoise3 xs[4] = {
        x,
        {x.x - d1 + 0.1666667f, x.y - d1 + 0.1666667f, x.z - d1 + 0.1666667f},
        {x.x - d2 + 0.3333334f, x.y - d2 + 0.3333334f, x.z - d2 + 0.3333334f},
        {x.x - 1.5000001f, x.y - 1.5000001f, x.z - 1.5000001f},
    };
    const float shift[4] = {0.0f, d1, d2, 1.0f};

    float sum = 0.0f;
    for (int k = 0; k < 4; ++k) {
        const float w = std::fmax(0.6f - Dot3(xs[k], xs[k]), 0.0f);
        const KNoise3 h = KSimplexFlowHash({s.x + shift[k], s.y + shift[k], s.z + shift[k]}, t);
        sum += Fourth(w) * Dot3(xs[k], h);
    }
    return 52.0f * sum;
}

float KFluidField(float x, float y, const KNoiseTime& t)
{
    return KSimplexFlow3({x, y, 1.0f}, t) + 0.5f * KSimplexFlow3({2.13f * x, 2.13f * y, 2.13f}, t) +
           3.0f * KSimplex2({0.333f * x, 0.333f * y}, t);
}

KNoise2 KVectorNoise2(KNoise2 p)
{
    const float ix = floorf(p.x), iy = floorf(p.y);
    const float sx = KNoiseSmooth(p.x - ix), sy = KNoiseSmooth(p.y - iy);
    const KNoise2 c00 = VectorHash(ix, iy, false);
    const KNoise2 c10 = VectorHash(ix + 1.0f, iy, true);
    const KNoise2 c01 = VectorHash(ix, iy + 1.0f, true);
    const KNoise2 c11 = VectorHash(ix + 1.0f, iy + 1.0f, true);
    return {Blend(c00.x, c10.x, c01.x, c11.x, sx, sy), Blend(c00.y, c10.y, c01.y, c11.y, sx, sy)};
}

float KValueNoise2(KNoise2 p) { return SmoothLattice(p, ValueHash); }

float KSignedValueNoise2(KNoise2 p) { return 2.0f * SmoothLattice(p, SignedValueHash) - 1.0f; }

float KSimplex3(KNoise3 v)
{
    const float s = (v.x + v.y + v.z) * 0.33333334f;
    const int32_t ix = static_cast<int32_t>(floorf(v.x + s));
    const int32_t iy = static_cast<int32_t>(floorf(v.y + s));
    const int32_t iz = static_cast<int32_t>(floorf(v.z + s));
    const float g = static_cast<float>(ix + iy + iz) * 0.16666667f;
    const KNoise3 i{static_cast<float>(ix), static_cast<float>(iy), static_cast<float>(iz)};
    const KNoise3 x0{v.x - i.x + g, v.y - i.y + g, v.z - i.z + g};

    KNoise3 first, second;
    if (x0.x < x0.y) {
        if (x0.z <= x0.y) {
            first = {0, 1, 0};
            second = x0.z <= x0.x ? KNoise3{1, 1, 0} : KNoise3{0, 1, 1};
        } else {
            first = {0, 0, 1};
            second = {0, 1, 1};
        }
    } else if (x0.y < x0.z) {
        first = x0.x < x0.z ? KNoise3{0, 0, 1} : KNoise3{1, 0, 0};
        second = {1, 0, 1};
    } else {
        first = {1, 0, 0};
        second = {1, 1, 0};
    }

    const KNoise3 x1{x0.x - first.x + 0.16666667f, x0.y - first.y + 0.16666667f,
                     x0.z - first.z + 0.16666667f};
    const KNoise3 x2{x0.x - second.x + 0.33333334f, x0.y - second.y + 0.33333334f,
                     x0.z - second.z + 0.33333334f};
    const KNoise3 x3{x0.x - 0.5f, x0.y - 0.5f, x0.z - 0.5f};

    const float sum = Simplex3Corner(i, x0) +
                      Simplex3Corner({i.x + first.x, i.y + first.y, i.z + first.z}, x1) +
                      Simplex3Corner({i.x + second.x, i.y + second.y, i.z + second.z}, x2) +
                      Simplex3Corner({i.x + 1.0f, i.y + 1.0f, i.z + 1.0f}, x3);
    return 96.0f * sum;
}

float KPeriodicTurbulence(KNoise2 p, float t, float size, int32_t mode, int32_t octaves,
                          KNoise2 period)
{
    if (octaves <= 0) return 0.0f;
    const float base = size;
    const float drift = static_cast<float>(mode) * 50.0f * t;
    const bool drifts = mode == 1 || mode == 4;
    float value = 0.0f;
    for (int32_t i = 1; i - 1 < octaves; ++i) {
        const float inv = 1.0f / size;
        KNoise2 q = p;
        if (drifts) {
            const float shift = drift / static_cast<float>(i);
            q = {p.x + shift, p.y + shift};
        }
        q = {q.x * inv, q.y * inv};
        const float lx = floorf(q.x), ly = floorf(q.y);
        const float fx = q.x - lx, fy = q.y - ly;
        const float ix = Wrap(lx + period.x, period.x), iy = Wrap(ly + period.y, period.y);
        const float ix1 = Wrap(ix + period.x - 1.0f, period.x);
        const float iy1 = Wrap(iy + period.y - 1.0f, period.y);
        const float sample = fx * fy * PeriodicHash(ix, iy) +
                             fx * (1.0f - fy) * PeriodicHash(ix, iy1) +
                             (1.0f - fx) * fy * PeriodicHash(ix1, iy) +
                             (1.0f - fx) * (1.0f - fy) * PeriodicHash(ix1, iy1);
        value += sample / (inv * base);
        size *= 0.5f;
    }
    return value;
}

float KWaterField(float x, float y, float t, float noise, float detail)
{
    const float tt = 0.2f * t;
    const float wave = static_cast<float>(static_cast<double>(noise + 0.5f) * kPi);
    float a = 1.0f, acc = 0.0f;
    for (int round = 0; round < 5; ++round) {
        const float sx = x * a, sy = y * a;
        const float ix = floorf(sx), iy = floorf(sy);
        const float fx = sx - ix, fy = sy - iy;
        float sum = 0.0f, total = 0.0f;
        for (int j = -2; j <= 1; ++j)
            for (int k = -2; k <= 1; ++k) {
                // The lattice point lies at minus the offset, the distance at plus
                // it, and the second hash swaps x and y.
                const float cx = ix - static_cast<float>(j), cy = iy - static_cast<float>(k);
                const float o1 =
                    KNoiseFract(sinf(11.55128f * cx + 26.978119f * cy) * 43758.23f) - 0.5f;
                const float o2 = KNoiseFract(sinf((56.328453f * cy + 164.19798f) +
                                                  (24.118277f * cx + 70.30501f)) *
                                             43758.23f) -
                                 0.5f;
                const float dx = static_cast<float>(j) + fx - o1;
                const float dy = static_cast<float>(k) + fy - o2;
                const float weight = expf(-2.0f * dx * dx - 2.0f * dy * dy);
                total += weight;
                sum += weight * cosf(((o1 * detail + 0.1f) * dx + (o2 * detail + 1.0f) * dy) * wave);
            }
        acc += fabsf(sum / total) / a;
        a *= 2.2f;
        const float m = tt / (0.1f - a);
        x += -0.01f * acc * acc + 0.1f * m;
        y += 0.07f * acc * acc + m;
    }
    return acc;
}

KNoise4 KSmoothVoronoi(KNoise2 p, float t, float smoothness)
{
    const float ix = floorf(p.x), iy = floorf(p.y);
    const float fx = p.x - ix, fy = p.y - iy;
    KNoise4 r;
    float* v = r.v;
    v[0] = 8.0f;
    const float inv = 1.0f / smoothness;
    const float c3 = 1.0f / (3.0f * smoothness + 1.0f);
    for (int j = -2; j <= 2; ++j)
        for (int k = -2; k <= 2; ++k) {
            const float cx = ix + static_cast<float>(k), cy = iy + static_cast<float>(j);
            const float ox = KNoiseFract(sinf(127.1f * cx + 311.7f * cy) * 43758.547f);
            const float oy = KNoiseFract(sinf(269.5f * cx + 183.3f * cy) * 43758.547f);
            const float rx =
                0.5f * sinf(12.5662f * ox + t - 6.2831f) + (static_cast<float>(k) - fx) + 0.5f;
            const float ry =
                0.5f * sinf(12.5662f * oy + t - 6.2831f) + (static_cast<float>(j) - fy) + 0.5f;
            const float d = sqrtf(rx * rx + ry * ry);
            const float hue =
                KNoiseFract(sinf(19.123f * cosf(84.91f * cx + 1370.6901f * cy)) * 17.321f) * 2.5f +
                3.5f;
            const float h = KNoiseSmooth(0.5f * (v[0] - d) * inv + 0.5f);
            const float corr = (1.0f - h) * h * c3 * smoothness;
            const float target[4] = {d, (sinf(hue + 2.0f) + 1.0f) / 2.0f,
                                     (sinf(hue + 3.0f) + 1.0f) / 2.0f, (sinf(hue) + 1.0f) / 2.0f};
            for (int c = 0; c < 4; ++c) v[c] = v[c] + (target[c] - v[c]) * h - corr;
        }
    return r;
}
