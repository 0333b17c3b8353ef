// Extend: carries a held pixel along rows or columns, out from a start point
// to both ends of each line. A pixel whose value lies in the working range
// becomes the held pixel; any other is replaced by the held one. With a hold of
// "Minumum" or "Maximum" the range narrows to each pixel taken.
#include <algorithm>
#include <cstring>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectExtend : public KEffectThreads {
public:
    enum Hold : int32_t { kWithin = 0, kMinimum, kMaximum };
    enum Channel : int32_t { kRed = 0, kGreen, kBlue, kAlpha, kLuminance, kEach };

    KEffectExtend()
    {
        KParameterList& in = inputList;
        in.AddPage("Extend");
        // Mode 2: the bridge hands the point over in pixels.
        in.AddPoint(&start, {0.5f, 0.5f}, "Start", "Strt"_id, kFlagPreview, 2);
        in.AddMultiButton(&direction, 0, "Direction", "Dire"_id, 0, {"Horizontal", "Vertical", "[end]"});
        in.AddMultiButton(&channel, 5, "Channel", "ThCh"_id, 0,
                          {"Red", "Green", "Blue", "Alpha", "Lumin.", "Each", "[end]"});
        in.AddRange(&range, 0.0f, 1.0f, "Range low", "High", 1382116936u, 1382116940u, 0, 0.0, 1.0);
        in.AddMultiButton(&hold, 2, "Hold", "Hold"_id, 0, {"Within range", "Minumum", "Maximum", "[end]"});
    }

    int32_t GetJobCount(int32_t pass) override { return direction == 0 ? height : width; }

    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override
    {
        const bool across = direction == 0;
        const int32_t length = across ? target->width : target->height;
        if (job >= (across ? target->height : target->width)) return;
        const int32_t at = std::clamp(static_cast<int32_t>(across ? start.x : start.y), 0, length - 1);
        if (target->IsFloat()) Line<float>(*source, *target, job, across, at, length);
        else Line<uint16_t>(*source, *target, job, across, at, length);
    }

private:
    template <class T> static T* Pixel(const KImage& i, int32_t x, int32_t y)
    {
        if constexpr (std::is_same_v<T, float>) return i.RowF(y) + 4 * size_t(x);
        else return i.RowW(y) + 4 * size_t(x);
    }

    template <class T>
    void Line(const KImage& source, KImage& target, int32_t line, bool across, int32_t at, int32_t length) const
    {
        const float unit = std::is_same_v<T, float> ? 1.0f : kIntToFloat;
        for (int32_t step : {-1, 1}) {
            T held[4] = {};
            KRange2 r = range;
            for (int32_t i = at; i >= 0 && i < length; i += step) {
                const int32_t x = across ? i : line, y = across ? line : i;
                const T* s = Pixel<T>(source, x, y);
                T* d = Pixel<T>(target, x, y);
                float v[4] = {s[0] * unit, s[1] * unit, s[2] * unit, s[3] * unit};
                float low, high;  // of the values tested
                if (channel == kEach) {
                    low = std::min(std::min(v[0], v[1]), std::min(v[2], v[3]));
                    high = std::max(std::max(v[0], v[1]), std::max(v[2], v[3]));
                } else {
                    low = high = channel == kLuminance ? 0.299f * v[0] + 0.587f * v[1] + 0.114f * v[2] : v[channel];
                }
                if (!(low >= r.low && high <= r.high)) {
                    std::memcpy(d, held, sizeof held);
                    continue;
                }
                // With "Each" the range closes on the channels' extremes, so that
                // the pixel taken still lies in it.
                if (hold == kMinimum) r.high = high;
                if (hold == kMaximum) r.low = low;
                std::memcpy(held, s, sizeof held);
                std::memcpy(d, s, sizeof held);
            }
        }
    }

    KPoint2 start{0.5f, 0.5f};
    int32_t direction = 0, channel = 5, hold = 2;
    KRange2 range;
};

ZV_TOOL(KEffectExtend, ZV_Extend);
