// Shared helpers of the tests: pattern images, comparison, the two runners.
#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <stdexcept>
#include "framework/process.h"
#include "host/registry.h"
#include "host/threads.h"
#include "raster/image.h"

namespace zvtest {

// A registered tool's registration; the tests name tools by class.
inline const host::Registration& Registered(const char* className)
{
    const host::Registration* r = host::Registry::Get().FindClass(className);
    if (!r) throw std::runtime_error(std::string("not registered: ") + className);
    return *r;
}

// A deterministic pattern with every channel distinct and alpha varying.
inline KPixel PatternPixel(int32_t x, int32_t y)
{
    uint32_t r = (x * 977u + y * 131u) % 65536u;
    uint32_t g = (x * 313u + y * 1709u + 1000u) % 65536u;
    uint32_t b = (x * 59u * y + 40000u) % 65536u;
    uint32_t a = 65535u - (x * 29u + y * 257u) % 40000u;
    return {r, g, b, a};
}

inline KImage* Pattern(int32_t w, int32_t h, bool isFloat)
{
    KImage* img = KImage::Create(w, h, isFloat);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            KPixel p = PatternPixel(x, y);
            if (isFloat) {
                KPixelF f;
                KToFloat(p, f);
                img->SetPixel(x, y, f);
            } else {
                img->SetPixel(x, y, p);
            }
        }
    return img;
}

// Exact comparison of the stored pixels; returns a description of the first difference.
inline std::string Differ(const KImage& a, const KImage& b)
{
    if (a.width != b.width || a.height != b.height || a.IsFloat() != b.IsFloat())
        return "geometry or depth differs";
    for (int32_t y = 0; y < a.height; ++y)
        for (int32_t x = 0; x < a.width; ++x)
            for (int c = 0; c < 4; ++c) {
                bool same = a.IsFloat() ? a.RowF(y)[4 * x + c] == b.RowF(y)[4 * x + c]
                                        : a.RowW(y)[4 * x + c] == b.RowW(y)[4 * x + c];
                if (!same)
                    return "pixel " + std::to_string(x) + "," + std::to_string(y) + " channel " +
                           std::to_string(c);
            }
    return "";
}

inline void Threaded(int32_t jobs, const std::function<void(int32_t)>& job)
{
    host::DoMultiProcess(jobs, job);
}

// Runs an effect of an image family over source into a new target like it.
inline KImage* RunEffect(KEffectImage& effect, KImage* source, const KRenderSettings& s,
                         bool threaded)
{
    KImage* target = source->CreateLike();
    effect.settings = s;
    KProcessImage* process = KCreateProcess(&effect, source, &target, s);
    if (threaded) KRunPasses(*process, Threaded);
    else process->Run();
    delete process;
    return target;
}

inline KRenderSettings Settings(bool isFloat)
{
    KRenderSettings s;
    s.depth = isFloat ? 2 : 1;
    return s;
}

}  // namespace zvtest
