// Blobs: up to 64 round blobs that melt into each other, made from nothing.
// "Type 1" multiplies each blob's distance beyond its radius; "Type 2" sums
// inverse-power fields, as metaballs do.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/numeric.h"
#include "framework/registration.h"

class KEffectBlobs : public KEffectPosition {
public:
    static constexpr int32_t kMaxBlobs = 64;
    static constexpr int32_t kDefaultCount = 3;
    enum Type : int32_t { kType1 = 0, kType2 };
    enum Source : int32_t { kGeneral = 0, kIndividual, kRandom };

    KEffectBlobs()
    {
        inputList.AddPage("General");
        inputList.AddSeed(&seed, "Random Seed", "Seed"_id, 0);
        inputList.AddRange(&levels, 0.0f, 1.0f, "Levels Low", "Levels High", "LevL"_id,
                           "LevH"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&gamma, 1.0f, "Gamma", "Gamm"_id, 0, 0.0, 5.0);
        inputList.AddSlider(&blobiness, 0.002f, "General Blobiness", "Blob"_id, 0, 0.0, 0.01);
        inputList.AddMultiButton(&type, kType1, "Type", "BLST"_id, 0,
                                 {"Type 1", "Type 2", "[end]"});
        inputList.AddSlider(&radius, 0.2f, "General Radius", "Radi"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&randomLow, 0.1f, "Minimum Random Radius", "RaMi"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&randomHigh, 0.3f, "Maximum Random Radius", "RaMa"_id, 0, 0.0, 1.0);
        inputList.AddColor(&color, {1.0f, 1.0f, 1.0f, 1.0f}, "Color", "ColR"_id, 0);
        inputList.AddPage("Blobs");
        inputList.AddSlider(&count, kDefaultCount, "Count", "BlCo"_id, kFlagNotify, 1,
                            kMaxBlobs);
        for (int32_t i = 0; i < kMaxBlobs; ++i) {
            const uint32_t flags = i < kDefaultCount ? 0u : static_cast<uint32_t>(kFlagHidden);
            const std::string n = " " + std::to_string(i + 1);
            Blob& b = blobs[i];
            // Default places wind outwards from the centre by the golden angle.
            const float turn = 2.3999632f * static_cast<float>(i);
            const float reach = 0.15f + 0.25f * std::sqrt(static_cast<float>(i) / (kMaxBlobs - 1));
            const KPoint2 place{0.5f + reach * std::cos(turn), 0.5f + reach * std::sin(turn)};
            inputList.BeginNest(("Blob" + n).c_str(), "BlN0"_id + i, flags);
            inputList.AddPoint(&b.position, place, ("Position" + n).c_str(), "BlP0"_id + i,
                               flags, 1);
            inputList.AddMultiButton(&b.source, kGeneral, ("Radius Source" + n).c_str(),
                                     "BlS0"_id + i, flags,
                                     {"General", "Individual", "Random", "[end]"});
            inputList.AddSlider(&b.radius, 0.1f, ("Radius" + n).c_str(), "BlR0"_id + i, flags,
                                0.0, 1.0);
            inputList.AddSlider(&b.blobiness, 1.0f, ("Blobiness" + n).c_str(), "BlB0"_id + i,
                                flags, 0.0, 2.0);
            inputList.EndNest();
        }
    }

    bool HasFeature(int32_t code) override { return code == kFeatureSource; }

    // Count shows that many blob groups and hides the rest.
    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id != "BlCo"_id) return list;
        for (int32_t i = 0; i < kMaxBlobs; ++i) {
            const float show = i < value.intValue ? 1.0f : 0.0f;
            for (uint32_t base : {"BlN0"_id, "BlP0"_id, "BlS0"_id, "BlR0"_id, "BlB0"_id})
                list.Add(kMessageVisible, base + i, show);
        }
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        used = std::clamp(count, 1, kMaxBlobs);
        // One draw per blob whatever its source, so that a blob keeps its
        // random radius when another blob changes source.
        KRandomSeed(seed);
        for (int32_t i = 0; i < used; ++i) {
            const Blob& b = blobs[i];
            const float drawn = randomLow + KRandom(1.0f) * (randomHigh - randomLow);
            Solid& s = solid[i];
            s.x = b.position.x;
            s.y = b.position.y;
            s.radius = b.source == kIndividual ? b.radius : b.source == kRandom ? drawn : radius;
            s.power = b.blobiness;
        }
        lowLevel = levels.low;
        levelSpan = levels.high - levels.low;
        for (int c = 0; c < 4; ++c) colorI[c] = KFloatToInt((&color.r)[c]);
        return true;
    }

    void ProcessPosition(KPositionPixel& out, const KPositionPixel&,
                         const KPosition& p) override
    {
        const float v = Value(p);
        out.r = color.r * v;
        out.g = color.g * v;
        out.b = color.b * v;
        out.a = color.a * v;
    }

    void ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt&,
                            const KPosition& p) override
    {
        const uint32_t v = static_cast<uint32_t>(Value(p) * 65535.0f + 0.5f);
        for (int c = 0; c < 4; ++c) out[c] = KScaleInt(colorI[c], v);
    }

private:
    struct Blob {
        KPoint2 position;
        int32_t source = kGeneral;
        float radius = 0.1f, blobiness = 1.0f;
    };
    struct Solid {
        float x = 0.0f, y = 0.0f, radius = 0.0f, power = 1.0f;
    };

    // The field after gamma and levels, 0 to 1.
    float Value(const KPosition& p) const
    {
        // How far p lies outside the melted blobs; General Blobiness is the
        // distance over which that fades out.
        float v;
        if (type == kType2) {
            // Each blob's field is 1 at its radius and falls off with the
            // distance to the power 2 x blobiness; inside the sum's unit
            // surface v is 0, outside it grows to 0.004 where the sum is 0,
            // so that the default blobiness fades at half the surface's field.
            float sum = 0.0f;
            for (int32_t i = 0; i < used; ++i) {
                const Solid& s = solid[i];
                const float dx = p.x - s.x, dy = p.y - s.y;
                const float d = std::max(std::sqrt(dx * dx + dy * dy), 1e-06f);
                sum += std::pow(s.radius / d, 2.0f * s.power);
            }
            v = std::max(1.0f - sum, 0.0f) * 0.004f;
        } else {
            v = 1.0f;
            for (int32_t i = 0; i < used; ++i) {
                const Solid& s = solid[i];
                const float dx = p.x - s.x, dy = p.y - s.y;
                const float e = std::sqrt(dx * dx + dy * dy) - s.radius;
                if (e < 0.0f) {
                    v = 0.0f;
                    break;
                }
                v *= s.power == 1.0f ? e : std::pow(e, s.power);
            }
        }
        // No blobiness leaves only the inside of the blobs.
        float r = blobiness > 0.0f ? 1.0f - v / blobiness : (v > 0.0f ? 0.0f : 1.0f);
        // Below 0 is nothing: a fractional gamma must not meet a negative base.
        r = std::max(r, 0.0f);
        if (gamma != 1.0f) r = std::pow(r, gamma);
        if (levelSpan != 0.0f) r = (r - lowLevel) / levelSpan;
        else r = r >= lowLevel ? 1.0f : 0.0f;
        return std::clamp(r, 0.0f, 1.0f);
    }

    int32_t seed = 0;
    KRange2 levels;
    float gamma = 1.0f, blobiness = 0.002f;
    int32_t type = kType1;
    float radius = 0.2f, randomLow = 0.1f, randomHigh = 0.3f;
    KColor color;
    int32_t count = kDefaultCount;
    Blob blobs[kMaxBlobs];

    // Set in Start.
    int32_t used = 0;
    Solid solid[kMaxBlobs];
    float lowLevel = 0.0f, levelSpan = 1.0f;
    uint32_t colorI[4] = {};
};

ZV_TOOL(KEffectBlobs, ZV_Blobs);
