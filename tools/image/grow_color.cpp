// Grow Color: fills the transparent parts of a picture from their edges. Each
// round blurs what is there, wider every round, and lays the blur under what
// is still transparent; the rounds stop early once every pixel has enough
// alpha. At the end colour is divided by alpha, so the fill comes out opaque
// and the picture's own opaque pixels come out as they went in.
//
// The blur is a box, across then down, in running sums of doubles. It only
// matters where it lands on a pixel that is not yet opaque and where something
// non-zero lies within its reach; everywhere else it adds nothing. So the
// picture is cut into strips of columns, and each strip keeps per row whether
// its part holds anything non-zero, anything not opaque and anything under the
// interrupt. A round blurs only the rows of a strip that can take something,
// from only the rows that can give it; on a mostly empty frame that is a small
// part of it, and the cost of a box does not depend on its width.
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

namespace {

typedef float V4 __attribute__((vector_size(16)));
typedef double D2 __attribute__((vector_size(16)));

inline V4 Load(const float* p)
{
    V4 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline V4 Load(const uint16_t* p) { return V4{float(p[0]), float(p[1]), float(p[2]), float(p[3])}; }
inline void Store(float* p, V4 v) { std::memcpy(p, &v, sizeof v); }
// Rounded to the nearest code and clipped.
inline void Store(uint16_t* p, V4 v)
{
    for (int c = 0; c < 4; ++c) p[c] = static_cast<uint16_t>(std::clamp(v[c] + 0.5f, 0.0f, 65535.0f));
}

// A box `width` pixels wide centred on pixel i covers [i + 0.5 - width / 2,
// i + 0.5 + width / 2]: the pixels first + i .. last + i, the two ends by
// fractions that are the same for every i. Positions clamp to the picture.
struct Box {
    int64_t first = 0, last = 0;
    double fFirst = 0.0, fLast = 0.0, scale = 1.0;
    explicit Box(double width)
    {
        const double a = 0.5 - 0.5 * width, b = 0.5 + 0.5 * width;
        first = static_cast<int64_t>(std::floor(a));
        last = static_cast<int64_t>(std::floor(b));
        fFirst = a - static_cast<double>(first);
        fLast = b - static_cast<double>(last);
        scale = 1.0 / width;
    }
};

// A running sum of one pixel's four channels.
struct Sum {
    D2 lo{0.0, 0.0}, hi{0.0, 0.0};
    void Add(V4 v, double times)
    {
        lo += D2{v[0], v[1]} * times;
        hi += D2{v[2], v[3]} * times;
    }
    // The box ending at `b` and starting at `a`; then slides one on.
    V4 Take(V4 a, V4 b, const Box& box)
    {
        const D2 al{a[0], a[1]}, ah{a[2], a[3]}, bl{b[0], b[1]}, bh{b[2], b[3]};
        const D2 l = (lo - al * box.fFirst + bl * box.fLast) * box.scale;
        const D2 h = (hi - ah * box.fFirst + bh * box.fLast) * box.scale;
        lo += bl - al;
        hi += bh - ah;
        return V4{float(l[0]), float(l[1]), float(h[0]), float(h[1])};
    }
};

// Calls add(index, times) for the indices of [lo, hi) clamped into 0..n-1.
template <class Add> void Clamped(int64_t lo, int64_t hi, int64_t n, Add&& add)
{
    if (hi <= lo) return;
    if (const int64_t left = std::min<int64_t>(hi, 0) - lo; left > 0) add(0, left);
    for (int64_t i = std::max<int64_t>(lo, 0); i < std::min(hi, n); ++i) add(i, 1);
    if (const int64_t right = hi - std::max(lo, n); right > 0) add(n - 1, right);
}

inline int64_t Clamp(int64_t i, int64_t n) { return std::clamp<int64_t>(i, 0, n - 1); }

// What a strip's part of a row holds.
enum : uint8_t { kLit = 1, kOpen = 2, kThin = 4 };

}  // namespace

class KEffectGrowColor : public KEffectThreads {
public:
    KEffectGrowColor()
    {
        KParameterList& in = inputList;
        in.AddPage("Grow Color");
        in.AddSlider(&iterations, 8, "Iterations", "Iter"_id, kFlagHardMax, 1, 16);
        in.AddSlider(&interrupt, 0.05f, "Iteration Interrupt", "ItIn"_id, 0, 0.0, 1.0);
        in.AddCheckbox(&lock, true, "Lock X/Y", "ReLo"_id, kFlagNotify, 0);
        in.AddSlider(&resolution, 1.5f, "Resolution", "Reso"_id, kFlagHardMax, 0.5, 5.0);
        in.AddSlider(&resolutionY, 1.5f, "Resolution Y", "ResY"_id, kFlagHardMax, 0.5, 5.0);
        in.AddSlider(&exponent, 2.0f, "Iteration Exponent", "Expo"_id, kFlagHardMax, 1.0, 5.0);
        in.AddSlider(&threshold, 0.005f, "Threshold", "Thre"_id, 0, 0.001, 0.1);
        in.AddSlider(&softness, 0.005f, "Threshold Softness", "ThSo"_id, 0, 0.001, 0.1);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "ReLo"_id) list.Add(kMessageVisible, "ResY"_id, value.intValue ? 0.0f : 1.0f);
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectThreads::Start(input, output, extras)) return false;
        // Strips wide enough that a box's start-up is small beside its run,
        // and no more of them than there are jobs in a pass.
        strips = std::clamp((width + 511) / 512, 1, std::max(height, 1));
        stripWidth = (width + strips - 1) / strips;
        const size_t pixels = size_t(width) * size_t(height);
        if (capacity < pixels) {
            // Left unset: only the rows a round blurs are ever touched.
            mid.reset(new V4[pixels]);
            blurred.reset(new float[4 * pixels]);
            capacity = pixels;
        }
        flags.assign(size_t(strips) * height, 0);
        scheduled.assign(size_t(strips) * height, 0);
        needed.reset(new std::atomic<bool>[iterations + 1]);
        for (int32_t i = 0; i <= iterations; ++i) needed[i] = i == 0;
        return true;
    }

    int32_t GetPassCount() override { return 2 * iterations; }
    // Every pass answers the row count, because a serial run asks pass 0's
    // count for every pass; an even pass blurs one strip a job.
    int32_t GetJobCount(int32_t pass) override { return height; }

    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override
    {
        const int32_t round = pass / 2;
        if (!needed[round]) return;  // done: a round left nothing under the interrupt
        if (target->IsFloat()) Run<float>(pass, job, source, target);
        else Run<uint16_t>(pass, job, source, target);
    }

    void Stop(KImage** output) override
    {
        KImage* target = output ? *output : nullptr;
        if (target) {
            // Rows with nothing in them stay nothing.
            target->EachRow([&](int32_t y, const uint16_t*, const float*) {
                bool lit = flags.empty();
                for (int32_t j = 0; j < strips && !lit; ++j) lit = Flag(j, y) & kLit;
                if (!lit) return;
                for (int32_t x = 0; x < target->width; ++x) {
                    if (target->IsFloat()) {
                        float* p = target->RowF(y) + 4 * x;
                        const float k = Scale(p[3], p[3]);
                        for (int c = 0; c < 3; ++c) p[c] = k == 0.0f ? 0.0f : p[c] * k;
                    } else {
                        uint16_t* p = target->RowW(y) + 4 * x;
                        float alpha;
                        const float k = Scale(KIntToFloat(p[3]), alpha);
                        for (int c = 0; c < 3; ++c) {
                            const float v = static_cast<float>(p[c]) * k;
                            p[c] = static_cast<uint16_t>(!(v > 0.0f) ? 0.0f : std::min(v, 65535.0f));
                        }
                        p[3] = alpha == 1.0f ? 65535 : static_cast<uint16_t>(KFloatToInt(alpha));
                    }
                }
            });
        }
        KEffectThreads::Stop(output);
    }

private:
    uint8_t& Flag(int32_t strip, int32_t y) { return flags[size_t(strip) * height + y]; }
    int32_t StripStart(int32_t j) const { return std::min(j * stripWidth, width); }

    // Round `round`'s boxes across and down, in pixels.
    std::pair<Box, Box> Boxes(int32_t round) const
    {
        const float s = std::pow(exponent, static_cast<float>(round));
        const float x = s * resolution, y = lock ? x : s * resolutionY;
        // A size travels as a fraction of the 720-pixel reference width.
        auto pixels = [](float v) { return std::max(0.0, double(v) * 0.001388888888888889 * 720.0); };
        return {Box(pixels(x)), Box(pixels(y))};
    }

    template <class T> static T* Row(KImage* image, int32_t y)
    {
        if constexpr (std::is_same_v<T, float>) return image->RowF(y);
        else return image->RowW(y);
    }

    // What pixels x0..x1-1 of a row hold; any set bit is something, a
    // negative zero too.
    template <class T> uint8_t Holds(const T* row, int32_t x0, int32_t x1) const
    {
        using Bits = std::conditional_t<std::is_same_v<T, float>, uint32_t, uint16_t>;
        const T one = std::is_same_v<T, float> ? T(1) : T(65535);
        const float thinAt = std::is_same_v<T, float> ? interrupt : interrupt * 65535.0f;
        Bits bits = 0;
        bool open = false, thin = false;
        for (int32_t x = x0; x < x1; ++x) {
            const T* p = row + 4 * x;
            Bits b[4];
            std::memcpy(b, p, sizeof b);
            bits |= b[0] | b[1] | b[2] | b[3];
            open |= p[3] < one;
            thin |= static_cast<float>(p[3]) < thinAt;
        }
        return (bits ? kLit : 0) | (open ? kOpen : 0) | (thin ? kThin : 0);
    }

    template <class T> void Run(int32_t pass, int32_t job, KImage* source, KImage* target)
    {
        if (pass % 2 == 0) {
            if (job < strips) Blur<T>(pass / 2, job, source, target);
            return;
        }
        if (job >= target->height) return;
        T* t = Row<T>(target, job);
        const T* b = reinterpret_cast<const T*>(blurred.get()) + size_t(4) * width * job;
        bool thin = false;
        for (int32_t j = 0; j < strips; ++j) {
            uint8_t& f = Flag(j, job);
            const int32_t x0 = StripStart(j), x1 = StripStart(j + 1);
            if (scheduled[size_t(j) * height + job]) {
                for (int32_t x = 4 * x0; x < 4 * x1; x += 4) {
                    if constexpr (std::is_same_v<T, float>) {
                        if (!(t[x + 3] < 1.0f)) continue;
                        const float k = 1.0f - t[x + 3];
                        for (int c = 0; c < 4; ++c) t[x + c] += b[x + c] * k;
                    } else {
                        if (t[x + 3] == 65535) continue;
                        const uint32_t k = 65535u - t[x + 3];
                        for (int c = 0; c < 4; ++c)
                            t[x + c] = static_cast<uint16_t>(std::min(t[x + c] + KScaleInt(b[x + c], k), 65535u));
                    }
                }
                f = Holds(t, x0, x1);
            }
            thin |= f & kThin;
        }
        // Rows only ever raise the flag within a pass.
        if (thin) needed[pass / 2 + 1].store(true, std::memory_order_relaxed);
    }

    // One strip of one round's blur, into `blurred` for the rows that will take it.
    template <class T> void Blur(int32_t round, int32_t j, KImage* source, KImage* target)
    {
        const int32_t w = width, h = height, x0 = StripStart(j), x1 = StripStart(j + 1);
        const auto [across, down] = Boxes(round);
        // The pixels the strip's boxes read across, clamped.
        const int32_t r0 = int32_t(Clamp(x0 + across.first, w)), r1 = int32_t(Clamp(x1 - 1 + across.last, w));

        // Which rows give: anything non-zero within the reach across.
        std::vector<uint8_t> gives(h);
        if (round == 0) {
            for (int32_t y = 0; y < h; ++y) {
                const T* s = Row<T>(source, y);
                std::memcpy(Row<T>(target, y) + 4 * x0, s + 4 * x0, sizeof(T) * 4 * size_t(x1 - x0));
                Flag(j, y) = Holds(s, x0, x1);
                gives[y] = (Flag(j, y) | Holds(s, r0, x0) | Holds(s, x1, r1 + 1)) & kLit;
            }
        } else {
            const int32_t j0 = r0 / stripWidth, j1 = r1 / stripWidth;
            for (int32_t y = 0; y < h; ++y)
                for (int32_t k = j0; k <= j1 && !gives[y]; ++k) gives[y] = Flag(k, y) & kLit;
        }

        // Which rows take: not opaque, with a giving row within the reach down.
        std::vector<int32_t> given(h + 1, 0);
        for (int32_t y = 0; y < h; ++y) given[y + 1] = given[y] + gives[y];
        std::vector<int32_t> reads(h + 1, 0);  // how many taking rows read each row, as differences
        for (int32_t y = 0; y < h; ++y) {
            const int32_t lo = int32_t(Clamp(y + down.first, h)), hi = int32_t(Clamp(y + down.last, h));
            const bool takes = (Flag(j, y) & kOpen) && given[hi + 1] > given[lo];
            scheduled[size_t(j) * h + y] = takes;
            if (takes) ++reads[lo], --reads[hi + 1];
        }

        // Across, for the giving rows that some taking row reads. The first round
        // reads the source: the other strips may not have copied theirs yet.
        const int32_t n = x1 - x0;
        KImage* from = round == 0 ? source : target;
        std::vector<uint8_t> inMid(h);
        for (int32_t y = 0, count = 0; y < h; ++y) {
            count += reads[y];
            if (!count || !gives[y]) continue;
            inMid[y] = 1;
            const T* in = Row<T>(from, y);
            V4* out = mid.get() + size_t(y) * w;
            Sum s;
            Clamped(x0 + across.first, x0 + across.last, w, [&](int64_t i, int64_t times) {
                s.Add(Load(in + 4 * i), double(times));
            });
            for (int32_t x = x0; x < x1; ++x)
                out[x] = s.Take(Load(in + 4 * Clamp(x + across.first, w)), Load(in + 4 * Clamp(x + across.last, w)), across);
        }

        // Down, over each run of taking rows.
        const V4 zero{0.0f, 0.0f, 0.0f, 0.0f};
        auto midAt = [&](int64_t y, int32_t x) { return inMid[y] ? mid[size_t(y) * w + x] : zero; };
        std::vector<Sum> sums(n);
        T* const into = reinterpret_cast<T*>(blurred.get());
        for (int32_t y = 0; y < h;) {
            if (!scheduled[size_t(j) * h + y]) {
                ++y;
                continue;
            }
            std::fill(sums.begin(), sums.end(), Sum{});
            Clamped(y + down.first, y + down.last, h, [&](int64_t r, int64_t times) {
                if (!inMid[r]) return;
                for (int32_t i = 0; i < n; ++i) sums[i].Add(mid[size_t(r) * w + x0 + i], double(times));
            });
            for (; y < h && scheduled[size_t(j) * h + y]; ++y) {
                const int64_t a = Clamp(y + down.first, h), b = Clamp(y + down.last, h);
                T* out = into + 4 * (size_t(y) * w + x0);
                for (int32_t i = 0; i < n; ++i) Store(out + 4 * i, sums[i].Take(midAt(a, x0 + i), midAt(b, x0 + i), down));
            }
        }
    }

    // The factor for colour at alpha a, and the alpha that goes out: opaque at
    // from threshold plus softness up, nothing below the threshold, a ramp between. An opaque pixel's
    // factor is exactly 1, so it leaves unchanged.
    float Scale(float a, float& alpha) const
    {
        if (a >= threshold + softness) {
            alpha = 1.0f;
            return 1.0f / a;
        }
        if (a < threshold) {
            alpha = 0.0f;
            return 0.0f;
        }
        alpha = (a - threshold) / softness;
        return alpha / a;
    }

    int32_t iterations = 8;
    float interrupt = 0.05f;
    bool lock = true;
    float resolution = 1.5f, resolutionY = 1.5f, exponent = 2.0f, threshold = 0.005f, softness = 0.005f;

    // The rounds' state, from Start: needed[r] says round r runs (a round
    // that finds nothing under the interrupt marks the rest done).
    std::unique_ptr<std::atomic<bool>[]> needed;
    int32_t strips = 1, stripWidth = 1;
    std::vector<uint8_t> flags;      // kLit, kOpen, kThin per strip and row
    std::vector<uint8_t> scheduled;  // the rows of each strip this round blurs into
    // Scratch kept from render to render: the blur across, and the blur itself
    // in the target's depth.
    std::unique_ptr<V4[]> mid;
    std::unique_ptr<float[]> blurred;
    size_t capacity = 0;
};

ZV_TOOL(KEffectGrowColor, ZV_GrowColor);
