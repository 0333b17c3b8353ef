// Vector Visualization: draws the vector channels over a copy of the picture,
// as lines from a grid of points, or from the blocks the motion tracker would
// follow, each boxed.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/motion_tracker.h"

class KEffectVectorVisualization : public KEffectThreads {
public:
    enum Type : int32_t { kGrid = 0, kEdges };

    KEffectVectorVisualization()
    {
        inputList.AddPage("Visualization");
        inputList.AddMultiButton(&type, kGrid, "Visualize vector field", "ViTy"_id, 0x80000000u | kFlagNotify,
                                 {"Grid", "Edges", "[end]"});
        inputList.AddSlider(&density, 0.05f, "Density", "ViDe"_id, kFlagHardMax, 0.0, 0.25);
        inputList.AddSlider(&edgeThreshold, 0.1f, "Edge threshold", "VVET"_id, kFlagHardMax, 0.0, 1.0);
        inputList.AddSlider(&separation, 0.02f, "Edge separation", "VVES"_id, kFlagHardMax, 0.0, 0.05);
        inputList.AddSlider(&multiplier, 1.0f, "Length multiplier", "ViMu"_id, kFlagHardMax, 0.0, 5.0);
        inputList.AddMultiButton(&lineColor, 0, "Line Color", "LiCo"_id, 0, {"Solid", "Image", "[end]"});
        inputList.AddColor(&color, KColor{1.0f, 1.0f, 1.0f, 1.0f}, "Color", "ViCR"_id, 0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        if (!input || !input->AuxPlane(kVectorX) || !input->AuxPlane(kVectorY)) return false;
        scale = multiplier / input->ProxyScale();
        return true;
    }

    void ProcessJob(int32_t, int32_t, KImage* source, KImage* target) override
    {
        target->CopyFrom(*source);
        for (int32_t i = 0; i < target->AuxCount(); ++i)
            if (const float* from = source->AuxPlane(target->AuxChannel(i)))
                std::copy_n(from, size_t(width) * height, target->AuxPlane(target->AuxChannel(i)));
        const float W = static_cast<float>(width), H = static_cast<float>(height);
        if (type == kGrid) {
            const float sx = std::max(W * density, 2.0f), sy = std::max(pixelAspect * W * density, 2.0f);
            for (float y = std::fmod(H * 0.5f, sy); y < H; y += sy)
                for (float x = std::fmod(W * 0.5f, sx); x < W; x += sx) Arrow(*source, *target, x, y);
            return;
        }
        KMotionTracker tracker(*source);
        tracker.edgeThreshold = edgeThreshold;
        tracker.borderFraction = tracker.separationFraction = separation;
        tracker.FindCandidates();
        tracker.SelectCandidates();
        for (const KTrackCandidate& c : tracker.candidates) {
            const int32_t b = KMotionTracker::kBlock - 1;
            Line(*target, c.x, c.y, c.x + b, c.y);
            Line(*target, c.x + b, c.y, c.x + b, c.y + b);
            Line(*target, c.x + b, c.y + b, c.x, c.y + b);
            Line(*target, c.x, c.y + b, c.x, c.y);
            Arrow(*source, *target, static_cast<float>(c.x + 2), static_cast<float>(c.y + 2));
        }
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id != "ViTy"_id) return list;
        const float grid = value.intValue == kGrid ? 1.0f : 0.0f;
        list.Add(kMessageVisible, "ViDe"_id, grid);
        list.Add(kMessageVisible, "VVET"_id, 1.0f - grid);
        list.Add(kMessageVisible, "VVES"_id, 1.0f - grid);
        return list;
    }

private:
    static constexpr int32_t kVectorX = 22, kVectorY = 23;

    // A line from (x, y) along the vector there, times the multiplier.
    void Arrow(const KImage& source, KImage& target, float x, float y)
    {
        const int32_t ix = static_cast<int32_t>(x), iy = static_cast<int32_t>(y);
        if (ix < 0 || iy < 0 || ix >= width || iy >= height) return;
        const size_t at = size_t(iy) * width + ix;
        const float vx = source.AuxPlane(kVectorX)[at], vy = source.AuxPlane(kVectorY)[at];
        Line(target, ix, iy, static_cast<int32_t>(std::lround(x + vx * scale)),
             static_cast<int32_t>(std::lround(y + vy * scale)));
    }

    // One pixel wide, both ends drawn; pixels outside are skipped.
    void Line(KImage& target, int32_t x0, int32_t y0, int32_t x1, int32_t y1) const
    {
        const int32_t n = std::max(std::abs(x1 - x0), std::abs(y1 - y0));
        const KPixelF c{color.r, color.g, color.b, color.a};
        KPixel ci;
        KToInt(c, ci);
        for (int32_t i = 0; i <= n; ++i) {
            const float t = n ? static_cast<float>(i) / static_cast<float>(n) : 0.0f;
            const int32_t x = static_cast<int32_t>(std::lround(x0 + (x1 - x0) * t));
            const int32_t y = static_cast<int32_t>(std::lround(y0 + (y1 - y0) * t));
            if (x < 0 || y < 0 || x >= target.width || y >= target.height) continue;
            if (target.IsFloat()) target.SetPixel(x, y, c);
            else target.SetPixel(x, y, ci);
        }
    }

    int32_t type = kGrid;
    float density = 0.05f, edgeThreshold = 0.1f, separation = 0.02f, multiplier = 1.0f;
    int32_t lineColor = 0;
    KColor color{1.0f, 1.0f, 1.0f, 1.0f};
    float scale = 1.0f;
};

ZV_TOOL(KEffectVectorVisualization, ZV_VectorVisualization);
