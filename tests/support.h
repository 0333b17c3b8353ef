// Shared helpers of the tests: pattern images, comparison, the two runners.
#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <stdexcept>
#include <memory>
#include "bridge/operator.h"
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

// The effect inside a registered tool's operator.
inline KEffect* EffectOf(host::Operator* op)
{
    if (auto* t = dynamic_cast<ZV_ThreadedOperator*>(op)) return t->Effect();
    if (auto* s = dynamic_cast<ZV_SourceOperator*>(op)) return s->Effect();
    return nullptr;
}

// A registered tool's effect driven without a request: fields are written
// through its declarations, as the bridge leaves them.
template <class E = KEffect> class EffectDriver {
public:
    explicit EffectDriver(const char* className) : op(Registered(className).creator())
    {
        effect = dynamic_cast<E*>(EffectOf(op.get()));
        if (!effect) throw std::runtime_error(std::string("not of the expected family: ") + className);
    }

    // The control with this label; pages are passed over.
    KParameter& Param(const std::string& label) const
    {
        for (KParameter* p = effect->inputs(); p; p = p->Next())
            if (p->name == label && p->controlKind != kControlPage) return *p;
        throw std::runtime_error("no parameter " + label);
    }
    template <class T> T& Field(const std::string& label, int32_t kind) const
    {
        KParameter& p = Param(label);
        if (p.valueKind != kind) throw std::runtime_error("another kind of value: " + label);
        return *static_cast<T*>(p.field);
    }
    // The field of the declaration with this id.
    template <class T> T& Field(uint32_t id) const
    {
        KParameter* p = effect->inputList.Find(id);
        if (!p) throw std::runtime_error("no declaration with that id");
        return *static_cast<T*>(p->field);
    }
    // The host input with this id.
    const host::Input& In(const char* id) const
    {
        const host::Input* in = op->FindInput(id);
        if (!in) throw std::runtime_error(std::string("no input ") + id);
        return *in;
    }
    void SetFloat(const std::string& label, float v) { Field<float>(label, kValueFloat) = v; }
    void SetInt(const std::string& label, int32_t v) { Field<int32_t>(label, kValueInteger) = v; }
    void SetBool(const std::string& label, bool v) { Field<bool>(label, kValueBoolean) = v; }
    void SetText(const std::string& label, const std::string& v)
    {
        Field<std::string>(label, kValueText) = v;
    }
    void SetPoint(const std::string& label, float x, float y)
    {
        Field<KPoint2>(label, kValuePoint) = {x, y};
    }
    void SetColor(const std::string& label, KColor c) { Field<KColor>(label, kValueColor) = c; }
    // An angle control's value in degrees, as the bridge hands it over.
    void SetDegrees(const std::string& label, float degrees)
    {
        Field<float>(label, kValueFloat) = -degrees * 0.017453292f;
    }

    std::unique_ptr<host::Operator> op;
    E* effect = nullptr;
};

}  // namespace zvtest
