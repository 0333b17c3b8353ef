// Spread: grows colour into transparent pixels one pixel a turn. A pixel with
// no alpha takes the mean of its neighbours that have some, weighted by their
// alpha, and so comes out opaque; turns end when one changes nothing.
#include <cstring>
#include <vector>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectSpread : public KEffectThreads {
public:
    KEffectSpread()
    {
        inputList.AddPage("Spread");
        inputList.AddSlider(&iterations, 128, "Iterations", "SofS"_id, kFlagHardMax, 0, 1024);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectThreads::Start(input, output, extras)) return false;
        // Two float copies of the source, used in turn.
        for (auto& b : buffers) b.assign(size_t(width) * height * 4, 0.0f);
        input->EachRow([&](int32_t y, const uint16_t* w, const float* f) {
            float* d = buffers[0].data() + size_t(y) * width * 4;
            for (int32_t i = 0; i < 4 * width; ++i) d[i] = f ? f[i] : KIntToFloat(w[i]);
            std::memcpy(buffers[1].data() + size_t(y) * width * 4, d, size_t(width) * 16);
        });
        return true;
    }

    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override
    {
        const int32_t w = width, h = height;
        // The pixels still empty; once one is filled it is copied into the other
        // buffer on the next turn and leaves the list, so that a turn costs what
        // is left to fill rather than the whole picture.
        std::vector<int32_t> empty;
        for (int32_t i = 0; i < w * h; ++i)
            if (!(buffers[0][4 * size_t(i) + 3] > 0.0f)) empty.push_back(i);
        int32_t result = 0;
        for (int32_t turn = 0; turn < iterations; ++turn) {
            const float* from = buffers[turn % 2].data();
            float* to = buffers[1 - turn % 2].data();
            result = 1 - turn % 2;
            bool changed = false;
            size_t kept = 0;
            for (int32_t i : empty) {
                const float* p = from + 4 * size_t(i);
                if (p[3] > 0.0f) {  // filled on the turn before
                    std::memcpy(to + 4 * size_t(i), p, 16);
                    continue;
                }
                empty[kept++] = i;
                const int32_t x = i % w, y = i / w;
                float sum[4] = {0.0f, 0.0f, 0.0f, 0.0f};
                bool found = false;
                for (int32_t dy = -1; dy <= 1; ++dy)
                    for (int32_t dx = -1; dx <= 1; ++dx) {
                        const int32_t nx = x + dx, ny = y + dy;
                        if ((dx == 0 && dy == 0) || nx < 0 || ny < 0 || nx >= w || ny >= h) continue;
                        const float* q = from + 4 * (size_t(ny) * w + nx);
                        if (!(q[3] > 0.0f)) continue;
                        for (int c = 0; c < 4; ++c) sum[c] += q[c];
                        found = true;
                    }
                if (!found) continue;
                const float k = 1.0f / sum[3];
                for (int c = 0; c < 4; ++c) to[4 * size_t(i) + c] = sum[c] * k;
                changed = true;
            }
            empty.resize(kept);
            if (!changed) break;
        }
        const std::vector<float>& out = buffers[result];
        target->EachRow([&](int32_t y, const uint16_t*, const float*) {
            const float* s = out.data() + size_t(y) * w * 4;
            if (target->IsFloat()) return void(std::memcpy(target->RowF(y), s, size_t(w) * 16));
            // Only the filled pixels are converted: the others keep their codes exactly.
            uint16_t* d = target->RowW(y);
            const uint16_t* in = source->RowW(y);
            for (int32_t i = 0; i < 4 * w; i += 4)
                for (int c = 0; c < 4; ++c) d[i + c] = in[i + 3] == 0 && s[i + 3] > 0.0f ? uint16_t(KFloatToInt(s[i + c])) : in[i + c];
        });
    }

    void Stop(KImage** output) override
    {
        for (auto& b : buffers) std::vector<float>().swap(b);
        KEffectThreads::Stop(output);
    }

private:
    int32_t iterations = 128;
    std::vector<float> buffers[2];
};

ZV_TOOL(KEffectSpread, ZV_Spread);
