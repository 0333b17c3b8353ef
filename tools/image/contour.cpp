// Contour: draws, per channel, the lines where the image crosses its
// threshold and the level steps around it, as a topographic map does.
#include <algorithm>
#include <cmath>
#include <cstring>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectContour : public KEffectPosition {
public:
    KEffectContour()
    {
        inputList.AddPage("Contour");
        inputList.AddCheckbox(&lockWidth, false, "Lock horizontal and vertical width", "CoWL"_id,
                              kFlagNotify, 0);
        inputList.AddSlider(&widthH, 0.01f, "Width", "CoWH"_id, 0, 0.0, 0.1);
        inputList.AddSlider(&widthV, 0.01f, "Width Vertical", "CoWV"_id, 0, 0.0, 0.1);
        inputList.AddCheckbox(&lockThreshold, false, "Lock threshold for all channels",
                              "CoTL"_id, kFlagNotify, 0);
        inputList.AddScrew(&threshold[0], 0.5f, "Threshold", "CoTR"_id, 0, 0.0, 1.0);
        inputList.AddScrew(&threshold[1], 0.5f, "Threshold Green", "CoTG"_id, 0, 0.0, 1.0);
        inputList.AddScrew(&threshold[2], 0.5f, "Threshold Blue", "CoTB"_id, 0, 0.0, 1.0);
        inputList.AddScrew(&threshold[3], 0.5f, "Threshold Alpha", "CoTA"_id, 0, 0.0, 1.0);
        inputList.AddCheckbox(&lockLevels, false, "Lock levels for all channels", "CoLL"_id,
                              kFlagNotify, 0);
        inputList.AddSlider(&levels[0], 5.0f, "Levels", "CoLR"_id, 0, 0.0, 20.0);
        inputList.AddSlider(&levels[1], 5.0f, "Levels Green", "CoLG"_id, 0, 0.0, 20.0);
        inputList.AddSlider(&levels[2], 5.0f, "Levels Blue", "CoLB"_id, 0, 0.0, 20.0);
        inputList.AddSlider(&levels[3], 5.0f, "Levels Alpha", "CoLA"_id, 0, 0.0, 20.0);
    }

    // A lock hides the controls that then follow the first one.
    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        const float show = value.intValue > 0 ? 0.0f : 1.0f;
        if (id == "CoWL"_id) {
            list.Add(kMessageVisible, "CoWV"_id, show);
        } else if (id == "CoTL"_id) {
            for (uint32_t t : {"CoTG"_id, "CoTB"_id, "CoTA"_id})
                list.Add(kMessageVisible, t, show);
        } else if (id == "CoLL"_id) {
            for (uint32_t l : {"CoLG"_id, "CoLB"_id, "CoLA"_id})
                list.Add(kMessageVisible, l, show);
        }
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        if (!input) return false;
        // Jobs only read the input, and the target is a different image: the
        // input itself serves for sampling.
        source = input;
        extraCount = std::min(input->AuxCount(), kPositionExtraFloats);
        for (int c = 0; c < 4; ++c) {
            const float t = lockThreshold ? threshold[0] : threshold[c];
            const float l = lockLevels ? levels[0] : levels[c];
            thresholdF[c] = t;
            thresholdI[c] = static_cast<float>(static_cast<int32_t>(t * 65535.0f));
            stepF[c] = l != 0.0f ? 1.0f / l : 0.0f;
            stepI[c] = stepF[c] * 65535.0f;
        }
        xScale = static_cast<float>(width);
        yScale = static_cast<float>(height) * pictureAspect;
        halfX = widthH * 0.5f * xScale;
        halfY = (lockWidth ? widthH : widthV) * 0.5f * yScale;
        return true;
    }

    void Stop(KImage** output) override
    {
        source = nullptr;
        KEffectImage::Stop(output);
    }

    void ProcessPosition(KPositionPixel& out, const KPositionPixel& in,
                         const KPosition& p) override
    {
        KPixelF s[4];
        Samples(p, s);
        CopyExtras(out, in);
        for (int c = 0; c < 4; ++c)
            out[c] = Crosses(s, c, thresholdF[c], stepF[c]) ? 1.0f : 0.0f;
    }

    void ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt& in,
                            const KPosition& p) override
    {
        KPixel s[4];
        Samples(p, s);
        CopyExtras(out, in);
        for (int c = 0; c < 4; ++c)
            out[c] = Crosses(s, c, thresholdI[c], stepI[c]) ? 65535u : 0u;
    }

private:
    // The triangle wave of v - t with step l, period 4 l, whose sign tells the
    // side of the nearest contour. Past the first period the second and third
    // step of each period keep the first period's offsets, which moves their
    // contours; that is the tool's behaviour and is kept.
    static float Fold(float v, float t, float l)
    {
        const float d = v - t;
        const float s = d < 0.0f ? -1.0f : 1.0f;
        if (l == 0.0f) return (2.0f * l - d) * s;
        const float a = std::fabs(d);
        const float n = std::floor(a / l);
        switch (static_cast<int64_t>(n) & 3) {
        case 0: return (a - n * l) * s;
        case 1: return ((3.0f - n) * l - a) * s;
        case 2: return ((4.0f - n) * l - a) * s;
        default: return (a - (n + 1.0f) * l) * s;
        }
    }

    template <class P> void CopyExtras(P& out, const P& in) const
    {
        if (extraCount > 0) std::memcpy(out.extra, in.extra, sizeof(float) * extraCount);
    }

    // Left, right, up, down of p by the half widths, clamped at the edges.
    template <class Pixel> void Samples(const KPosition& p, Pixel s[4]) const
    {
        const float x = p.x * xScale, y = p.y * yScale;
        source->SamplePixel(x - halfX, y, s[0], kEdgeDuplicate);
        source->SamplePixel(x + halfX, y, s[1], kEdgeDuplicate);
        source->SamplePixel(x, y - halfY, s[2], kEdgeDuplicate);
        source->SamplePixel(x, y + halfY, s[3], kEdgeDuplicate);
    }

    template <class Pixel> static bool Crosses(const Pixel s[4], int c, float t, float l)
    {
        const bool left = Fold(static_cast<float>(s[0][c]), t, l) > 0.0f;
        const bool right = Fold(static_cast<float>(s[1][c]), t, l) > 0.0f;
        const bool up = Fold(static_cast<float>(s[2][c]), t, l) > 0.0f;
        const bool down = Fold(static_cast<float>(s[3][c]), t, l) > 0.0f;
        return up != down || left != right;
    }

    bool lockWidth = false, lockThreshold = false, lockLevels = false;
    float widthH = 0.01f, widthV = 0.01f;
    float threshold[4] = {0.5f, 0.5f, 0.5f, 0.5f};
    float levels[4] = {5.0f, 5.0f, 5.0f, 5.0f};

    // Set in Start.
    KImage* source = nullptr;
    int32_t extraCount = 0;
    float thresholdF[4] = {}, thresholdI[4] = {}, stepF[4] = {}, stepI[4] = {};
    float xScale = 1.0f, yScale = 1.0f, halfX = 0.0f, halfY = 0.0f;
};

ZV_TOOL(KEffectContour, ZV_Contour);
