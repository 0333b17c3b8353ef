// Vector Blur: spreads each pixel along its own motion vector, over a stroke
// as long as the vector (times "Length multiplier") and centred on the pixel,
// then divides the gathered colour by the gathered weight.
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "raster/offsets.h"

class KEffectVectorBlur : public KEffectPixel {
public:
    enum Apply : int32_t { kVectorBlur = 0, kLIC };

    KEffectVectorBlur()
    {
        inputList.AddPage("Vector Blur");
        inputList.AddSlider(&multiplier, 1.0f, "Length multiplier", "VeLM"_id, kFlagHardMax, 0.0, 10.0);
        inputList.AddCheckbox(&swap, false, "Swap X/Y", "Swap"_id, 0, 0);
        inputList.AddCheckbox(&invertX, false, "Invert X", "InvX"_id, 0, 0);
        inputList.AddCheckbox(&invertY, false, "Invert Y", "InvY"_id, 0, 0);
        inputList.AddSlider(&quality, 10.0f, "Quality", "VeQu"_id, kFlagHardMax, 1.0, 50.0);
        inputList.AddMultiButton(&apply, kVectorBlur, "Apply", "ViSh"_id, 0x80000000u | kFlagNotify,
                                 {"Vector blur", "LIC", "[end]"});
        inputList.AddCheckbox(&normalize, true, "Normalize values", "ViNo"_id, kFlagNotify, 0);
        inputList.AddCheckbox(&premultiplied, true, "Image is pre-multiplied", "ViPM"_id, 0, 0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        ready = false;
        if (!input || !input->AuxPlane(kVectorX) || !input->AuxPlane(kVectorY)) return false;
        // "LIC" has no way of its own yet: the source passes unchanged.
        if (apply != kVectorBlur) return false;
        source = input;
        lengthScale = multiplier / static_cast<float>(input->FullWidth());
        const size_t n = size_t(width) * height;
        weights.assign(n, 0.0f);
        if (input->IsFloat()) sumsF.assign(4 * n, 0.0f);
        else sumsI.assign(4 * n, 0);
        // The furthest any stroke reaches across rows sets the bands worked at once.
        float longest = 0.0f;
        const float* vx = input->AuxPlane(kVectorX);
        const float* vy = input->AuxPlane(kVectorY);
        for (size_t i = 0; i < n; ++i) longest = std::max(longest, vx[i] * vx[i] + vy[i] * vy[i]);
        reach = static_cast<int32_t>(std::ceil(std::sqrt(longest) * lengthScale * 0.5f * width)) + 2;
        ready = true;
        return true;
    }

    // The pixel stays as it is here; Stop spreads every pixel at once.
    void ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage* image) override
    {
        image->GetPixel(x, y, out, kEdgeBlack);
    }
    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        image->GetPixel(x, y, out, kEdgeBlack);
    }

    void Stop(KImage** output) override
    {
        if (ready && output && *output) {
            Spread();
            Resolve(**output);
        }
        ready = false;
        source = nullptr;
        std::vector<float>().swap(weights);
        std::vector<float>().swap(sumsF);
        std::vector<int64_t>().swap(sumsI);
        KEffectImage::Stop(output);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "ViNo"_id) list.Add(kMessageVisible, "ViPM"_id, value.intValue ? 1.0f : 0.0f);
        if (id == "ViSh"_id) list.Add(kMessageVisible, "ViNo"_id, value.intValue == kVectorBlur ? 1.0f : 0.0f);
        return list;
    }

private:
    static constexpr int32_t kVectorX = 22, kVectorY = 23;

    // Every pixel's stroke goes into the shared sums. Rows are worked in bands
    // at least twice the longest reach: bands of one parity never write the
    // same place, and each band walks its rows in order, so the sums come out
    // the same on any number of threads.
    void Spread()
    {
        const int32_t band = std::max(2 * reach, 8);
        const int32_t bands = (height + band - 1) / band;
        for (int32_t parity = 0; parity < 2; ++parity) {
            const int32_t jobs = (bands - parity + 1) / 2;
            KImage::RunJobs(jobs, [&](int32_t job) {
                const int32_t b = 2 * job + parity;
                std::vector<KOffsetsEntry> stroke;
                for (int32_t y = b * band; y < std::min((b + 1) * band, height); ++y)
                    for (int32_t x = 0; x < width; ++x) SpreadPixel(x, y, stroke);
            });
        }
    }

    void SpreadPixel(int32_t x, int32_t y, std::vector<KOffsetsEntry>& stroke)
    {
        const size_t at = size_t(y) * width + x;
        float v1 = source->AuxPlane(kVectorX)[at], v2 = source->AuxPlane(kVectorY)[at];
        if (swap) std::swap(v1, v2);
        if (invertX) v1 = -v1;
        if (invertY) v2 = -v2;
        const float angle = v2 == 0.0f ? 0.0f : v1 == 0.0f ? 1.5707964f : std::atan(v2 / v1);
        const float length = std::sqrt(v1 * v1 + v2 * v2) * lengthScale;
        const float W = static_cast<float>(width);
        KOffsetsTable::BuildStraightInto(stroke, 3.1415927f - angle, length * 0.5f * W, pixelAspect, false);
        // The pixel's weight spreads over the whole stroke and adds up to one,
        // whatever the stroke's slant: a picture moving as one stays opaque.
        float cover = 0.0f;
        for (size_t i = 1; i < stroke.size(); ++i) cover += static_cast<float>(stroke[i].weight) * 1.5259022e-05f;
        float w = 1.0f / (1.0f + 2.0f * cover);
        const bool divide = normalize && premultiplied;
        float c[4];
        if (source->IsFloat()) {
            const float* p = source->RowF(y) + 4 * x;
            if (p[3] == 0.0f && normalize) return;
            std::copy_n(p, 4, c);
            // Alpha is divided with the colours: the weight carries it instead,
            // so a pixel that does not move keeps its alpha.
            if (divide) {
                for (int k = 0; k < 4; ++k) c[k] = c[k] / p[3];
                w *= p[3];
            }
        } else {
            const uint16_t* p = source->RowW(y) + 4 * x;
            if (p[3] == 0 && normalize) return;
            for (int k = 0; k < 4; ++k) c[k] = p[k];
            if (divide) {
                for (int k = 0; k < 4; ++k) c[k] = p[3] ? std::min<uint32_t>(p[k] * 65535u / p[3], 65535u) : 0u;
                w *= static_cast<float>(p[3]) * 1.5259022e-05f;
            }
        }
        if (source->IsFloat()) {
            float v[4];
            for (int k = 0; k < 4; ++k) v[k] = c[k] * w;
            AddF(x, y, w, v);
            for (size_t i = 1; i < stroke.size(); ++i) {
                const float cover = static_cast<float>(stroke[i].weight) * 1.5259022e-05f;
                const float s[4] = {v[0] * cover, v[1] * cover, v[2] * cover, v[3] * cover};
                AddF(x + stroke[i].x, y + stroke[i].y, cover * w, s);
                AddF(x - stroke[i].x, y - stroke[i].y, cover * w, s);
            }
        } else {
            uint32_t v[4];
            for (int k = 0; k < 4; ++k) v[k] = static_cast<uint32_t>(c[k] * w);
            AddI(x, y, w, v);
            for (size_t i = 1; i < stroke.size(); ++i) {
                const uint32_t cover = static_cast<uint32_t>(stroke[i].weight);
                uint32_t s[4];
                for (int k = 0; k < 4; ++k) s[k] = KScaleInt(v[k], cover);
                const float cw = static_cast<float>(cover) * w * 1.5259022e-05f;
                AddI(x + stroke[i].x, y + stroke[i].y, cw, s);
                AddI(x - stroke[i].x, y - stroke[i].y, cw, s);
            }
        }
    }

    void AddF(int32_t x, int32_t y, float w, const float v[4])
    {
        if (x < 0 || y < 0 || x >= width || y >= height) return;
        const size_t at = size_t(y) * width + x;
        weights[at] += w;
        for (int k = 0; k < 4; ++k) sumsF[4 * at + k] += v[k];
    }
    void AddI(int32_t x, int32_t y, float w, const uint32_t v[4])
    {
        if (x < 0 || y < 0 || x >= width || y >= height) return;
        const size_t at = size_t(y) * width + x;
        weights[at] += w;
        for (int k = 0; k < 4; ++k) sumsI[4 * at + k] += v[k];
    }

    // The sums become the picture; the source's other planes (the vectors) stay.
    void Resolve(KImage& out)
    {
        for (int32_t i = 0; i < out.AuxCount(); ++i)
            if (const float* from = source->AuxPlane(out.AuxChannel(i)))
                std::copy_n(from, size_t(width) * height, out.AuxPlane(out.AuxChannel(i)));
        KImage::RunJobs(height, [&](int32_t y) {
            for (int32_t x = 0; x < width; ++x) {
                const size_t at = size_t(y) * width + x;
                const float w = weights[at];
                if (out.IsFloat()) {
                    const float* s = &sumsF[4 * at];
                    float* o = out.RowF(y) + 4 * x;
                    if (!normalize) {
                        std::copy_n(s, 4, o);
                    } else if (!premultiplied) {
                        for (int k = 0; k < 4; ++k) o[k] = w > 0.0f ? s[k] / w : 0.0f;
                    } else {
                        const float a = std::min(s[3], 1.0f);
                        for (int k = 0; k < 3; ++k) o[k] = a == 0.0f || !(w > 0.0f) ? 0.0f : s[k] / w * a;
                        o[3] = a;
                    }
                } else {
                    const int64_t* s = &sumsI[4 * at];
                    uint16_t* o = out.RowW(y) + 4 * x;
                    auto clip = [](double v) { return static_cast<uint16_t>(v <= 0.0 ? 0.0 : v >= 65535.0 ? 65535.0 : v); };
                    if (!normalize) {
                        for (int k = 0; k < 4; ++k) o[k] = clip(static_cast<double>(s[k]));
                    } else if (!premultiplied) {
                        for (int k = 0; k < 4; ++k) o[k] = w > 0.0f ? clip(static_cast<double>(s[k]) / w) : 0;
                    } else {
                        const int64_t a = std::min<int64_t>(s[3], 65535);
                        for (int k = 0; k < 3; ++k)
                            o[k] = a == 0 || !(w > 0.0f) ? 0 : clip(static_cast<double>(s[k]) / w * static_cast<double>(a) / 65535.0);
                        o[3] = static_cast<uint16_t>(a);
                    }
                }
            }
        });
    }

    float multiplier = 1.0f;
    bool swap = false, invertX = false, invertY = false;
    float quality = 10.0f;
    int32_t apply = kVectorBlur;
    bool normalize = true, premultiplied = true;

    bool ready = false;
    KImage* source = nullptr;
    float lengthScale = 0.0f;
    int32_t reach = 0;
    std::vector<float> weights;
    std::vector<float> sumsF;
    std::vector<int64_t> sumsI;
};

ZV_TOOL(KEffectVectorBlur, ZV_VectorBlur);
