// Vector Field: writes a vector into every pixel, its angle and length each
// constant, radial about "Center", or read from a map (its vectors or one of
// its channels).
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

// Gives an angle (radians) and a length (a fraction of the width) for a pixel.
struct KVectorFieldSampler {
    enum Type : int32_t { kLinear = 0, kRadial, kBitmap };
    enum Channel : int32_t { kVelocity = 0, kLuminance, kHeight, kRed, kGreen, kBlue, kAlpha };
    static constexpr int32_t kVectorX = 22, kVectorY = 23;

    float pictureAspect = 1.0f, pixelAspect = 1.0f;
    int32_t angleType = kLinear, angleChannel = kVelocity, lengthType = kLinear, lengthChannel = kVelocity;
    float angle = 0.0f, angleWhite = 0.0f, length = 0.01f, lengthWhite = 0.05f, multiplier = 1.0f;
    bool swap = false, invertX = false, invertY = false;
    KPoint2 center;
    const KImage* orientationMap = nullptr;
    const KImage* lengthMap = nullptr;

    // A map channel as 0..1; "Velocity" reads the vector pair instead.
    static float Value(const KImage& map, int32_t x, int32_t y, int32_t channel)
    {
        KPixel p;
        map.GetPixel(x, y, p, kEdgeBlack);
        switch (channel) {
        case kLuminance: return static_cast<float>((p.r + 2 * p.g + p.b) >> 2) * 1.5258789e-05f;
        case kGreen: return static_cast<float>(p.g) * 1.5259022e-05f;
        case kBlue: return static_cast<float>(p.b) * 1.5259022e-05f;
        case kAlpha: return static_cast<float>(p.a) * 1.5259022e-05f;
        default: return static_cast<float>(p.r) * 1.5259022e-05f;  // "Height" and "Red"
        }
    }
    void Pair(const KImage& map, int32_t x, int32_t y, float& first, float& second) const
    {
        const size_t at = size_t(y) * map.width + x;
        first = map.AuxPlane(kVectorX)[at];
        second = map.AuxPlane(kVectorY)[at];
        if (swap) std::swap(first, second);
        if (invertX) first = -first;
        if (invertY) second = -second;
    }
    static bool Inside(const KImage& map, int32_t x, int32_t y)
    {
        return x >= 0 && y >= 0 && x < map.width && y < map.height;
    }
    void Offset(int32_t x, int32_t y, int32_t W, int32_t H, float& u, float& v) const
    {
        u = static_cast<float>(x) / static_cast<float>(W) - center.x;
        v = static_cast<float>(y) / (static_cast<float>(H) * pictureAspect) - center.y;
    }

    float AngleAt(int32_t x, int32_t y, int32_t W, int32_t H) const
    {
        if (angleType == kRadial) {
            float u, v;
            Offset(x, y, W, H, u, v);
            const float d = std::sqrt(u * u + v * v);
            if (d > 0.0f) u /= d;
            float a = std::acos(std::clamp(u, -1.0f, 1.0f));
            if (v <= 0.0f) a = -a;
            return a - angle;
        }
        if (angleType != kBitmap) return -angle;
        if (!Inside(*orientationMap, x, y)) return 0.0f;
        if (angleChannel == kVelocity) {
            float first, second;
            Pair(*orientationMap, x, y, first, second);
            // The other way round from Vector Blur's, as maps made for this tool expect.
            return first == 0.0f ? 0.0f : second == 0.0f ? 1.5707964f : std::atan(first / second);
        }
        const float v = Value(*orientationMap, x, y, angleChannel);
        return -(v * angleWhite) - (1.0f - v) * angle;
    }

    float LengthAt(int32_t x, int32_t y, int32_t W, int32_t H) const
    {
        if (lengthType == kRadial) {
            float u, v;
            Offset(x, y, W, H, u, v);
            return std::sqrt(u * u + v * v) * length;
        }
        if (lengthType != kBitmap) return length;
        if (!Inside(*lengthMap, x, y)) return 0.0f;
        if (lengthChannel == kVelocity) {
            const size_t at = size_t(y) * lengthMap->width + x;
            const float vx = lengthMap->AuxPlane(kVectorX)[at], vy = lengthMap->AuxPlane(kVectorY)[at];
            return std::sqrt(vx * vx + vy * vy) * multiplier;
        }
        const float v = Value(*lengthMap, x, y, lengthChannel);
        return (1.0f - v) * length + v * lengthWhite;
    }
};

class KEffectVectorField : public KEffectPixel {
public:
    using S = KVectorFieldSampler;

    KEffectVectorField()
    {
        const KItems channels = {"Velocity", "Luminance", "Height", "Red", "Green", "Blue", "Alpha", "[end]"};
        inputList.AddPage("Vector Field");
        inputList.AddMultiButton(&angleType, S::kLinear, "Angle type", "VeAT"_id, kFlagNotify,
                                 {"Linear", "Radial", "Bitmap", "[end]"});
        inputList.AddCombo(&angleChannel, S::kVelocity, "Angle channel", "VeAC"_id, kFlagNotify, channels);
        inputList.AddPoint(&center, KPoint2{0.5f, 0.5f}, "Center", "VeCe"_id, kFlagPreview, 1);
        inputList.AddAngle(&angle, 0.0f, "Angle", "VeAn"_id, kFlagPreviewAngle | kFlagPreview, 1);
        inputList.AddAngle(&angleWhite, 360.0f, "Angle white", "VeAW"_id, 0, 1);
        inputList.AddCheckbox(&swap, false, "Swap X/Y", "VeSw"_id, 0, 0);
        inputList.AddMultiButton(&lengthType, S::kLinear, "Length type", "VeLT"_id, kFlagNotify,
                                 {"Constant", "Radial", "Bitmap", "[end]"});
        inputList.AddCombo(&lengthChannel, S::kVelocity, "Length channel", "VeLC"_id, kFlagNotify, channels);
        inputList.AddSlider(&length, 0.01f, "Length", "VeLe"_id, kFlagHardMax, 0.0, 0.1);
        inputList.AddSlider(&lengthWhite, 0.05f, "Length white", "VeLW"_id, kFlagHardMax, 0.0, 0.1);
        inputList.AddSlider(&multiplier, 1.0f, "Length multiplier", "VeLM"_id, kFlagHardMax | kFlagHidden, 0.0, 10.0);
        inputList.AddImageInput(&orientationMap, "Vector orientation map", 2, kFlagMain);
        inputList.AddImageInput(&lengthMap, "Vector length map", 3, kFlagMain);
    }

    bool HasFeature(int32_t code) override { return code == kFeatureVectors; }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        if (!input || !output || !*output || !(*output)->AuxPlane(S::kVectorX)) return false;
        target = *output;
        s = S{};
        s.pictureAspect = pictureAspect;
        s.pixelAspect = pixelAspect;
        s.angleType = angleType;
        s.angleChannel = angleChannel;
        s.lengthType = lengthType;
        s.lengthChannel = lengthChannel;
        s.angle = angle;
        s.angleWhite = angleWhite;
        s.length = length;
        s.lengthWhite = lengthWhite;
        s.swap = swap;
        s.center = center;
        scale = static_cast<float>(input->FullWidth());
        s.orientationMap = orientationMap ? orientationMap : input;
        s.lengthMap = lengthMap ? lengthMap : input;
        auto vectors = [](const KImage* m) { return m->AuxPlane(S::kVectorX) && m->AuxPlane(S::kVectorY); };
        if (!vectors(s.orientationMap) && s.angleType == S::kBitmap && s.angleChannel == S::kVelocity) {
            s.angleType = S::kLinear;
            s.angle = 0.0f;
        }
        s.multiplier = multiplier / input->ProxyScale();
        if (!vectors(s.lengthMap) && s.lengthType == S::kBitmap && s.lengthChannel == S::kVelocity) {
            s.lengthType = S::kLinear;
            s.length = 0.0f;
        }
        // The source's other planes come along; the jobs write only the vectors.
        for (int32_t i = 0; i < target->AuxCount(); ++i) {
            const int32_t c = target->AuxChannel(i);
            if (c == S::kVectorX || c == S::kVectorY) continue;
            if (const float* from = input->AuxPlane(c)) std::copy_n(from, size_t(width) * height, target->AuxPlane(c));
        }
        return true;
    }

    void ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage* image) override
    {
        image->GetPixel(x, y, out, kEdgeBlack);
        Write(x, y);
    }
    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        image->GetPixel(x, y, out, kEdgeBlack);
        Write(x, y);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        auto show = [&](uint32_t target, bool on) { list.Add(kMessageVisible, target, on ? 1.0f : 0.0f); };
        const bool angleChange = id == "VeAT"_id || id == "VeAC"_id;
        const bool lengthChange = id == "VeLT"_id || id == "VeLC"_id;
        if (id == "VeAT"_id) shownAngleType = value.intValue;
        if (id == "VeAC"_id) shownAngleChannel = value.intValue;
        if (id == "VeLT"_id) shownLengthType = value.intValue;
        if (id == "VeLC"_id) shownLengthChannel = value.intValue;
        const bool radial = shownAngleType == S::kRadial || shownLengthType == S::kRadial;
        if (angleChange) {
            const bool bitmap = shownAngleType == S::kBitmap;
            const bool byChannel = bitmap && shownAngleChannel != S::kVelocity;
            show("VeAC"_id, bitmap);
            show("VeSw"_id, bitmap);
            show("VeAn"_id, !byChannel);
            show("VeAW"_id, byChannel);
            show("VeCe"_id, radial);
            show("VePa"_id, shownAngleType == 3);
            list.Add(kMessageLabel, "VeAn"_id, std::string(bitmap ? "Angle black" : "Angle"));
        }
        if (lengthChange) {
            const bool bitmap = shownLengthType == S::kBitmap;
            const bool byChannel = bitmap && shownLengthChannel != S::kVelocity;
            show("VeLC"_id, bitmap);
            show("VeQu"_id, shownLengthType == S::kLinear);
            show("VeLe"_id, shownLengthType == S::kLinear || shownLengthType == S::kRadial || byChannel);
            show("VeLW"_id, byChannel);
            show("VeCe"_id, radial);
            show("VeLM"_id, bitmap && shownLengthChannel == S::kVelocity);
            list.Add(kMessageLabel, "VeLe"_id, std::string(bitmap ? "Length black" : "Length"));
        }
        return list;
    }

private:
    void Write(int32_t x, int32_t y)
    {
        const float a = s.AngleAt(x, y, width, height);
        const float l = s.LengthAt(x, y, width, height);
        const size_t at = size_t(y) * width + x;
        target->AuxPlane(S::kVectorX)[at] = std::cos(a) * l * scale;
        target->AuxPlane(S::kVectorY)[at] = std::sin(a) * l * scale;
    }

    int32_t angleType = S::kLinear, angleChannel = S::kVelocity;
    KPoint2 center{0.5f, 0.5f};
    float angle = 0.0f, angleWhite = 360.0f;
    bool swap = false;
    int32_t lengthType = S::kLinear, lengthChannel = S::kVelocity;
    float length = 0.01f, lengthWhite = 0.05f, multiplier = 1.0f;
    KImage* orientationMap = nullptr;
    KImage* lengthMap = nullptr;

    int32_t shownAngleType = 0, shownAngleChannel = 0, shownLengthType = 0, shownLengthChannel = 0;
    S s;
    KImage* target = nullptr;
    float scale = 1.0f;
};

ZV_TOOL(KEffectVectorField, ZV_VectorField);
