#include "data/range.h"
#include <algorithm>
#include <cfloat>
#include <utility>
#include "framework/numeric.h"

void KRange::Declare(KParameterList& list)
{
    list.BeginNest("Range", 0, 0);
    list.AddRange(&span, 0.0f, 1.0f, "Range Min", "Range Max", "RTRL"_id, "RTRH"_id, 0, 0.0, 1.0);
    list.AddSeed(&seed, "Range Random Seed", 0, 0);
    list.AddCheckbox(&oneByOne, false, "Range Random One By One", "RROO"_id, 0, 0);
    list.AddMultiButton(&type, 0, "Range Type", "RTTy"_id, 0, {"Forward", "Outside In", "Random", "[end]"});
    list.AddSlider(&seeds, 1, "Range Seeds", "RTSe"_id, 0, 1, 10);
    list.AddSlider(&seedsJitter, 0.0f, "Range Seeds Jitter", "RTSJ"_id, 0, 0.0, 1.0);
    list.AddSlider(&overlap, 0.0f, "Range Overlap", "RTOv"_id, 0, 0.0, 1.0);
    list.AddSlider(&length, 1.0f, "Range Length", "RTLe"_id, 0, 0.0, 5.0);
    list.AddMultiButton(&curve, 0, "Range Curve", "RTCu"_id, 0,
                        {"Linear", "Ease In", "Ease Out", "Ease In/Out", "[end]"});
    list.EndNest();
}

float KRangeEase(float x, float a, float b, int32_t curve) { return KRamp(x, a, b, curve); }

std::vector<KRangeItem> KRange::Generate(int32_t n) const
{
    std::vector<KRangeItem> items;
    if (n <= 0) return items;
    KRandomSeed(seed);
    std::vector<int32_t> order(size_t(n), -1);
    if (type == 2)
        for (int32_t i = 0; i < n; ++i) order[size_t(i)] = i;

    // Where each seed starts; a grown range spreads from these.
    std::vector<int32_t> positions;
    const int32_t jitter = static_cast<int32_t>(float(n) * seedsJitter);
    if (type < 2)
        for (int32_t k = 0; k < seeds; ++k) {
            int32_t p = int32_t(int64_t(k) * n / seeds);
            if (jitter > 1) p += KRandomInt(jitter);
            positions.push_back(int32_t((int64_t(n - 1) * offset + p) % n));
        }

    int32_t remaining = n;
    for (int32_t i = 0; i < n; ++i) {
        auto claim = [&](int64_t at) {
            int32_t& o = order[size_t(at % n)];
            if (o < 0) o = i;
        };
        if (type == 0) {
            for (int32_t p : positions) claim(int64_t(p) + i);
        } else if (type == 1) {
            for (int32_t p : positions) {
                claim(int64_t(p) + i);
                claim(int64_t(n) + p - i);
            }
        } else if (!oneByOne) {
            order[size_t(i)] = KRandomInt(n * 10) % n;
        } else {
            std::swap(order[size_t(KRandomInt(remaining) + i)], order[size_t(i)]);
            --remaining;
        }
    }

    items.resize(size_t(n));
    float lowest = FLT_MAX, highest = FLT_MIN;
    for (int32_t i = 0; i < n; ++i) {
        KRangeItem& it = items[size_t(i)];
        it.start = (1.0f - overlap) * float(order[size_t(i)]);
        it.length = std::max(0.0f, KRandomRange(-lengthJitter, lengthJitter) + length);
        lowest = std::min(lowest, it.start);
        highest = std::max(highest, it.start + it.length);
    }
    const float a = (highest - lowest) * span.low + lowest;
    const float b = (highest - lowest) * span.high + lowest;
    for (KRangeItem& it : items) {
        it.c = KRangeEase(a, it.start, it.start + it.length, curve);
        it.d = KRangeEase(b, it.start, it.start + it.length, curve);
    }
    return items;
}
