// Invert: alpha always becomes its complement; colour by type, either each
// channel, the brightness about the channels' mean, or the hue about it.
// The float path does not clip; the integer path clips and its divisions by
// three truncate.
#include <algorithm>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/pixel_store.h"

class KEffectInvert : public KEffectColor {
public:
    enum Type : int32_t { kColor = 0, kLuminance, kHue };

    KEffectInvert()
    {
        inputList.AddPage("Invert");
        inputList.AddMultiButton(&type, 0, "Type", "InTy"_id, 0,
                                 {"Color", "Luminance", "Hue", "[end]"});
    }

    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        const float a = 1.0f - in.a;
        switch (type) {
        case kColor:
#if defined(__SSE2__)
            // Alpha inverts as the colours do: one subtraction of four lanes.
            _mm_storeu_ps(&out.r, _mm_sub_ps(_mm_set1_ps(1.0f), _mm_loadu_ps(&in.r)));
#else
            KStorePixel(out, 1.0f - in.r, 1.0f - in.g, 1.0f - in.b, a);
#endif
            break;
        case kLuminance: {
            const float m2 = 2.0f * ((in.r + in.g + in.b) * 0.33333334f);
            KStorePixel(out, in.r + 1.0f - m2, in.g + 1.0f - m2, in.b + 1.0f - m2, a);
            break;
        }
        case kHue: {
            const float s = (in.r + in.g + in.b) * 0.6666667f;
#if defined(__SSE2__)
            _mm_storeu_ps(&out.r, _mm_sub_ps(_mm_setr_ps(s, s, s, 1.0f), _mm_loadu_ps(&in.r)));
#else
            KStorePixel(out, s - in.r, s - in.g, s - in.b, a);
#endif
            break;
        }
        default:
            KStorePixel(out, in.r, in.g, in.b, a);
            break;
        }
    }

    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        const int32_t r = static_cast<int32_t>(in.r), g = static_cast<int32_t>(in.g),
                      b = static_cast<int32_t>(in.b);
        const uint32_t a = 65535u - in.a;
        switch (type) {
        case kColor: {
#if defined(__SSE2__)
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&in.r));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(&out.r),
                             _mm_sub_epi32(_mm_set1_epi32(65535), v));
#else
            KStorePixel(out, 65535u - in.r, 65535u - in.g, 65535u - in.b, a);
#endif
            break;
        }
        case kLuminance: {
            const int32_t base = 65535 - 2 * ((r + g + b) / 3);
            KStorePixel(out, Clip(r + base), Clip(g + base), Clip(b + base), a);
            break;
        }
        case kHue: {
            const int32_t s = (2 * (r + g + b)) / 3;
            KStorePixel(out, Clip(s - r), Clip(s - g), Clip(s - b), a);
            break;
        }
        default:
            KStorePixel(out, in.r, in.g, in.b, a);
            break;
        }
    }

private:
    static uint32_t Clip(int32_t v) { return static_cast<uint32_t>(std::clamp(v, 0, 65535)); }

    int32_t type = 0;
};

ZV_TOOL(KEffectInvert, ZV_Invert);
