// Runs an effect over a generated image and writes the result, until the
// command line and flow files take this role.
#include <cstdio>
#include <string>
#include "framework/process.h"
#include "host/threads.h"
#include "raster/image.h"

namespace {

// Warms the picture: a colour effect with one slider of its own.
class KEffectWarm : public KEffectColor {
public:
    KEffectWarm() { inputList.AddSlider(&amount, 0.3f, "Amount", "Amnt"_id, 0, 0.0, 1.0); }
    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        out.r = in.r * (1.0f + amount);
        out.g = in.g;
        out.b = in.b * (1.0f - amount);
        out.a = in.a;
    }
    float amount = 0.0f;
};

bool WritePPM(const KImage& img, const std::string& path)
{
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    std::fprintf(f, "P6\n%d %d\n65535\n", img.width, img.height);
    for (int32_t y = 0; y < img.height; ++y)
        for (int32_t x = 0; x < img.width; ++x) {
            KPixel p;
            img.GetPixel(x, y, p, kEdgeBlack);
            unsigned char bytes[6] = {
                static_cast<unsigned char>(p.r >> 8), static_cast<unsigned char>(p.r),
                static_cast<unsigned char>(p.g >> 8), static_cast<unsigned char>(p.g),
                static_cast<unsigned char>(p.b >> 8), static_cast<unsigned char>(p.b)};
            std::fwrite(bytes, 1, 6, f);
        }
    return std::fclose(f) == 0;
}

}  // namespace

int main(int argc, char** argv)
{
    std::string dir = argc > 1 ? argv[1] : ".";
    const int32_t w = 640, h = 360;
    KImage* source = KImage::Create(w, h, false);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            KPixelF p{x / float(w - 1), y / float(h - 1), 0.5f, 1.0f};
            source->SetPixel(x, y, p);
        }
    KImage* target = source->CreateLike();
    KEffectWarm effect;
    KRenderSettings settings;
    effect.settings = settings;
    KProcessImage* process = KCreateProcess(&effect, source, &target, settings);
    KRunPasses(*process, [](int32_t jobs, const std::function<void(int32_t)>& job) {
        host::DoMultiProcess(jobs, job);
    });
    delete process;

    const std::string in = dir + "/demo_source.ppm", out = dir + "/demo_warm.ppm";
    if (!WritePPM(*source, in) || !WritePPM(*target, out)) {
        std::fprintf(stderr, "demo: cannot write into %s\n", dir.c_str());
        return 2;
    }
    std::printf("demo: wrote %s and %s\n", in.c_str(), out.c_str());
    delete target;
    delete source;
    return 0;
}
