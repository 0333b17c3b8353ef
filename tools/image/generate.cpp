// Generate: fills the image with one of nine procedural patterns, sampled at
// the pixel's position, its red and green, or both, through a position matrix
// of centre, rotation and scale. Items that begin with "- " name patterns
// without an algorithm of their own; they draw Concrete.
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/noise_functions.h"

namespace {

enum GenerateBranch : int32_t {
    kConcrete, kFluid, kFBM, kPerlin, kPlasma, kSimplex, kSlabrie, kWater, kWorley,
};

constexpr int32_t kTypeCount = 20;

// The pattern each Type item draws.
constexpr GenerateBranch kTypeBranch[kTypeCount] = {
    kConcrete, kConcrete, kConcrete, kConcrete, kConcrete, kFluid,    kFBM,
    kConcrete, kConcrete, kConcrete, kConcrete, kPerlin,   kPlasma,   kConcrete,
    kSimplex,  kSlabrie,  kConcrete, kWater,    kWorley,   kConcrete,
};

// Controls that a Type shows beside the general ones; a map goes with its value.
enum ShownControls : uint32_t {
    kShowIterations = 1, kShowAmplitude = 2, kShowDetail = 4, kShowNoise = 8,
    kShowSmoothness = 16, kShowOutputType = 32,
};
constexpr uint32_t kTypeShows[kTypeCount] = {
    0, kShowIterations | kShowDetail, 0, 0, 0, kShowDetail | kShowNoise, 0, 0, 0, 0, 0,
    kShowIterations | kShowDetail, kShowIterations | kShowDetail, 0, 0,
    kShowIterations | kShowAmplitude, 0, kShowDetail | kShowNoise,
    kShowSmoothness | kShowOutputType, 0,
};

constexpr float kMinimumScale = 1.1920929e-07f;

// A map's first channel at the pixel itself: 1 with no map, 0 beyond its bounds.
inline float MapAt(const KImage* map, int32_t x, int32_t y)
{
    if (!map) return 1.0f;
    if (static_cast<uint32_t>(x) >= static_cast<uint32_t>(map->width) ||
        static_cast<uint32_t>(y) >= static_cast<uint32_t>(map->height))
        return 0.0f;
    return map->IsFloat() ? map->RowF(y)[4 * x] : KIntToFloat(map->RowW(y)[4 * x]);
}

inline KPixelF ReadPixel(const KImage* image, int32_t x, int32_t y)
{
    if (image->IsFloat()) {
        const float* s = image->RowF(y) + 4 * x;
        return {s[0], s[1], s[2], s[3]};
    }
    const uint16_t* s = image->RowW(y) + 4 * x;
    return {KIntToFloat(s[0]), KIntToFloat(s[1]), KIntToFloat(s[2]), KIntToFloat(s[3])};
}

// 4x4 product r = a * b.
void Multiply(float r[4][4], const float a[4][4], const float b[4][4])
{
    float t[4][4];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            t[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j] + a[i][3] * b[3][j];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) r[i][j] = t[i][j];
}

void Identity(float m[4][4])
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) m[i][j] = i == j ? 1.0f : 0.0f;
}

}  // namespace

class KEffectGenerate : public KEffectPixel {
public:
    KEffectGenerate()
    {
        KParameterList& in = inputList;
        in.AddMultiButton(&base, 0, "Base", "Base"_id, kFlagNotify,
                          {"Position", "Pixel Value (RG is UV)", "Both", "[end]"});
        in.AddCombo(&type, 0, "Type", "Type"_id, kFlagNotify,
                    {"- Cells", "Concrete", "- Clouds", "- Crawling", "- Flow", "Fluid", "FBM",
                     "- Fractal", "- Francis", "- Frederic", "- Marble", "Perlin", "Plasma",
                     "- Ridged", "Simplex", "Slabrie", "- Value", "Water", "Worley", "- Wood",
                     "[end]"});
        in.AddButton("Set default values", "Defa"_id, 0);
        in.AddSlider(&scale, 16.0f, "Scale", "Scal"_id, kFlagHardMax, 0.0, 100.0);
        in.AddImageInput(&scaleMap, "Scale Map", "ScaM"_id, 0);
        in.AddSlider(&iterations, 4, "Iterations", "Iter"_id, kFlagHardMax, 1, 10);
        in.AddImageInput(&iterationsMap, "Iterations Map", "IteM"_id, 0);
        in.AddSlider(&amplitude, 0.679f, "Amplitude", "Ampl"_id, kFlagHardMin | kFlagHardMax,
                     -1.0, 1.0);
        in.AddImageInput(&amplitudeMap, "Amplitude Map", "AmpM"_id, 0);
        // The default of 4 lies beyond the limits, and stays so.
        in.AddSlider(&detail, 4.0f, "Detail", "Deta"_id, kFlagHardMin | kFlagHardMax, -1.0, 1.0);
        in.AddImageInput(&detailMap, "Detail Map", "DetM"_id, 0);
        in.AddSlider(&noise, 1.0f, "Noise", "Nois"_id, kFlagHardMin | kFlagHardMax, -1.0, 1.0);
        in.AddImageInput(&noiseMap, "Noise Map", "NoiM"_id, 0);
        in.AddSlider(&smoothness, 0.679f, "Smoothness", "Smoo"_id, kFlagHardMin | kFlagHardMax,
                     -1.0, 1.0);
        in.AddImageInput(&smoothnessMap, "Smoothness Map", "SmoM"_id, 0);
        in.AddCheckbox(&postMultiply, true, "Post Multiply Alpha", "PMBA"_id, kFlagNotify, 0);
        in.AddMultiButton(&outputType, 0, "Output Type", "OutT"_id, 0, {"Mono", "Color", "[end]"});

        in.BeginNest("Timing", "Timi"_id, 0);
        in.AddSlider(&time, 0.0f, "Time", "Time"_id, kFlagHardMin | kFlagHardMax, -5.0, 5.0);
        in.AddSlider(&speed, 1.0f, "Speed", "TSpe"_id, kFlagHardMin | kFlagHardMax, 0.0, 5.0);
        in.AddImageInput(&speedMap, "Speed Map", "TSpM"_id, 0);
        in.AddSlider(&offset, 0.0f, "Offset", "TOff"_id, kFlagHardMin | kFlagHardMax, -1.0, 1.0);
        in.EndNest();

        in.BeginNest("Position", "Posi"_id, 0);
        // Unit 1 takes the centre into position space, where y runs to 1 / aspect.
        in.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, kFlagPreview, 1);
        in.AddSlider(&size, 1.0f, "Size", "Size"_id, kFlagHardMax, 0.0, 10.0);
        in.AddAngle(&rotation, 0.0f, "Rotation", "AngZ"_id,
                    0x2000000u | kFlagPreviewAngle | kFlagPreview, 1);
        in.AddSlider(&aspect, 1.0f, "Aspect", "Aspt"_id, kFlagHardMax, 0.001, 5.0);
        in.EndNest();
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectImage::Start(input, output, extras)) return false;
        Identity(matrix);
        const float s = scale / size;
        const float sx = std::fmax(s, kMinimumScale);
        const float sy = std::fmax(s / aspect, kMinimumScale);
        const float c = cosf(rotation), n = sinf(rotation);
        float step[4][4];
        Identity(step);
        step[0][0] = sx;
        step[1][1] = sy;
        Multiply(matrix, matrix, step);
        Identity(step);
        step[0][0] = c;
        step[0][1] = -n;
        step[1][0] = n;
        step[1][1] = c;
        Multiply(matrix, matrix, step);
        Identity(step);
        step[0][3] = -center.x;
        step[1][3] = -center.y;
        Multiply(matrix, matrix, step);

        branch = type >= 0 && type < kTypeCount ? kTypeBranch[type] : kConcrete;
        imageWidth = static_cast<float>(width);
        positionHeight = static_cast<float>(height) * pictureAspect;
        return true;
    }

    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        const KPixelF source = ReadPixel(image, x, y);
        float ux = static_cast<float>(x) / imageWidth;
        float uy = static_cast<float>(y) / positionHeight;
        if (base == 1) {
            ux = source.r;
            uy = source.g;
        } else if (base == 2) {
            ux += source.r;
            uy += source.g;
        }
        const KNoise2 p{matrix[0][0] * ux + matrix[0][1] * uy + matrix[0][3],
                        matrix[1][0] * ux + matrix[1][1] * uy + matrix[1][3]};
        const float t = speed * MapAt(speedMap, x, y) * time + offset;

        out = {1.0f, 1.0f, 1.0f, 1.0f};
        if (branch == kWorley && outputType == 1) {
            const KNoise4 v = KSmoothVoronoi(p, t, smoothness * MapAt(smoothnessMap, x, y));
            out.r = v.v[1];
            out.g = v.v[2];
            out.b = v.v[3];
        } else {
            const float grey = Grey(p, t, x, y);
            out.r = out.g = out.b = grey;
        }
        if (postMultiply) {
            out.a = source.a;
            out.r *= source.a;
            out.g *= source.a;
            out.b *= source.a;
        }
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id != "Type"_id) return list;
        shownType = value.intValue;
        const uint32_t shows =
            shownType >= 0 && shownType < kTypeCount ? kTypeShows[shownType] : 0u;
        const struct {
            uint32_t id;
            uint32_t control;
        } rows[] = {
            {"Iter"_id, kShowIterations}, {"IteM"_id, kShowIterations},
            {"Ampl"_id, kShowAmplitude},  {"AmpM"_id, kShowAmplitude},
            {"Deta"_id, kShowDetail},     {"DetM"_id, kShowDetail},
            {"Nois"_id, kShowNoise},      {"NoiM"_id, kShowNoise},
            {"Smoo"_id, kShowSmoothness}, {"SmoM"_id, kShowSmoothness},
            {"OutT"_id, kShowOutputType},
        };
        for (const auto& row : rows)
            list.Add(kMessageVisible, row.id, (shows & row.control) ? 1.0f : 0.0f);
        return list;
    }

private:
    float Grey(KNoise2 p, float t, int32_t x, int32_t y) const
    {
        switch (branch) {
        case kFluid: return Fluid(p, t, x, y);
        case kFBM: return FBM(p, t);
        case kPerlin: return Perlin(p, t, x, y);
        case kPlasma: return Plasma(p, t, x, y);
        case kSimplex: return (KSimplex3({t, p.x, p.y}) + 1.0f) * 0.5f;
        case kSlabrie: return Slabrie(p, t, x, y);
        case kWater: return Water(p, t, x, y);
        case kWorley: return KSmoothVoronoi(p, t, smoothness * MapAt(smoothnessMap, x, y)).v[0];
        default: return Concrete(p, t, x, y);
        }
    }

    float Concrete(KNoise2 p, float t, int32_t x, int32_t y) const
    {
        const int32_t rounds =
            static_cast<int32_t>(static_cast<float>(iterations) * MapAt(iterationsMap, x, y));
        const float d = detail * MapAt(detailMap, x, y);
        KNoise2 q = p;
        float w = 1.0f;
        for (int32_t i = 0; i < rounds; ++i) {
            const float k = 1.0f / w;
            const KNoise2 a = KVectorNoise2({w * q.x, w * q.y});
            q = {q.x + k * a.x, q.y + k * a.y};
            const float c = w + t;
            const KNoise2 b = KVectorNoise2({q.x * w + c, q.y * w + c});
            q = {q.x + b.x, q.y + b.y};
            // The weight is set, not compounded: every later round uses Detail itself.
            w = d;
        }
        const float m = sqrtf(w);
        const float e = (q.x - p.x) * m + 2.0f;
        const float f = (q.y - p.y) * m + 2.0f;
        return sqrtf(e * e + f * f) * f * 0.06666667f;
    }

    float Fluid(KNoise2 p, float t, int32_t x, int32_t y) const
    {
        const float n = noise * MapAt(noiseMap, x, y);
        const float d = detail * MapAt(detailMap, x, y);
        const KNoiseTime turns(t);
        KNoise2 q{p.x * 0.25f + 12.625f, p.y * 0.25f};
        // A fractional Detail rounds up; none or less runs no round.
        for (int32_t i = 0; static_cast<float>(i) < d; ++i) {
            const float a = n * q.x, b = n * q.y;
            const float f0 = KFluidField(a, b, turns);
            const float f1 = KFluidField(a + 0.1f, b, turns);
            const float f2 = KFluidField(a, b + 0.1f, turns);
            q.x += (f2 - f0) * -0.041249998f;
            q.y += (f1 - f0) * 0.041249998f;
        }
        return (KSimplex2(q, turns) + 1.0f) * 0.5f;
    }

    static float FBM(KNoise2 p, float t)
    {
        const KNoise3 v{0.2f * t, p.x, p.y};
        auto at = [&v](float k) { return KSimplex3({k * v.x, k * v.y, k * v.z}); };
        const float sum = 0.5f * KSimplex3(v) + 0.25f * at(2.01f) + 0.125f * at(2.01f * 2.02f) +
                          0.0625f * at(2.01f * 4.1006f) + 0.03125f * at(2.01f * 8.365223f);
        return (sum + 1.0f) * 0.5f;
    }

    float Perlin(KNoise2 p, float t, int32_t x, int32_t y) const
    {
        const float rounds = static_cast<float>(iterations) * MapAt(iterationsMap, x, y);
        float d = detail * MapAt(detailMap, x, y);
        const float a = 0.3f * p.x, b = 0.3f * p.y;
        float m = 5.0f, sum = 0.0f;
        for (int32_t i = 0; static_cast<float>(i) < rounds; ++i) {
            const float ma = m * a, mb = m * b;
            const float n1 =
                KSignedValueNoise2({0.8f * ma + 0.6f * mb + t, 0.8f * mb - 0.6f * ma + t});
            const float n2 = KSignedValueNoise2({ma - t, mb - t});
            sum += fabsf(0.5f * n1 + 0.5f * n2) * d;
            d *= 0.5f;
            m *= 2.0f;
        }
        const float v = sum * 2.25f - 1.0f;
        return v * v;
    }

    float Plasma(KNoise2 p, float t, int32_t x, int32_t y) const
    {
        const int32_t octaves =
            static_cast<int32_t>(static_cast<float>(iterations) * MapAt(iterationsMap, x, y));
        const float d = detail * MapAt(detailMap, x, y);
        const float r = KPeriodicTurbulence({200.0f * p.x, 200.0f * p.y}, t, 128.0f * d, 4, octaves,
                                            {imageWidth, imageWidth});
        return static_cast<float>(1.0 - 0.75 * std::fabs(std::sin(3.14159265358979323846 * r)));
    }

    float Slabrie(KNoise2 p, float t, int32_t x, int32_t y) const
    {
        const int32_t rounds =
            static_cast<int32_t>(static_cast<float>(iterations) * MapAt(iterationsMap, x, y));
        const float a = amplitude * MapAt(amplitudeMap, x, y) * 0.58f;
        auto sum = [rounds, a](KNoise2 z) {
            float amp = a, total = 0.0f;
            for (int32_t i = 0; i < rounds; ++i) {
                total += KValueNoise2(z) * amp;
                z = {z.x * 2.0f, z.y * 2.0f};
                amp *= 0.5f;
            }
            return total;
        };
        const float d = KValueNoise2({p.x + t, p.y + t});
        const float s1 = sum({p.x - 2.0f * d, p.y});
        const float s2 = sum({p.x + 2.0f * s1, p.y + 2.0f * s1});
        const float s3 = sum({p.x + s2, p.y + s2});
        const float s4 = sum({p.x + t + s3, p.y + s3});
        return 1.0f - s4;
    }

    float Water(KNoise2 p, float t, int32_t x, int32_t y) const
    {
        const float d = detail * MapAt(detailMap, x, y);
        const float z = noise * MapAt(noiseMap, x, y);
        const float py = p.y + 0.1f * t;
        const float px = p.x + 0.1f * (0.1f * t);
        return (1.0f - KWaterField(px, py, t, z, d)) * 0.8f + 0.25f;
    }

    int32_t base = 0;
    int32_t type = 0;
    float scale = 16.0f;
    KImage* scaleMap = nullptr;  // declared for the host; no pattern reads it
    int32_t iterations = 4;
    KImage* iterationsMap = nullptr;
    float amplitude = 0.679f;
    KImage* amplitudeMap = nullptr;
    float detail = 4.0f;
    KImage* detailMap = nullptr;
    float noise = 1.0f;
    KImage* noiseMap = nullptr;
    float smoothness = 0.679f;
    KImage* smoothnessMap = nullptr;
    bool postMultiply = true;
    int32_t outputType = 0;
    float time = 0.0f;
    float speed = 1.0f;
    KImage* speedMap = nullptr;
    float offset = 0.0f;
    KPoint2 center{0.5f, 0.5f};
    float size = 1.0f;
    float rotation = 0.0f;
    float aspect = 1.0f;

    // Built in Start.
    float matrix[4][4] = {};
    GenerateBranch branch = kConcrete;
    float imageWidth = 1.0f;
    float positionHeight = 1.0f;

    // The Type last announced to OnChange; the UI's, never read by a render.
    int32_t shownType = 0;
};

ZV_TOOL(KEffectGenerate, ZV_Generate);
