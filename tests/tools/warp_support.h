// Helpers of the warp tools' tests: a registered warp driven directly (fields
// written through its declarations, Start on an image, then InverseMap), and
// steps of settings with the points each must map.
#pragma once
#include "support.h"

namespace zvtest {

class Warp : public Tool<KEffectWarp> {
public:
    explicit Warp(const char* className) : Tool(className), image(KImage::Create(11, 11, false)) {}
    ~Warp() { Stop(); }

    // Starts on `image` (11 x 11 unless replaced), or on a new image of this
    // geometry; only a relative tool reads its pixels.
    bool Start()
    {
        Stop();
        started = true;
        KImage* slot = nullptr;
        return effect->Start(image.get(), &slot, effect);
    }
    bool Start(int32_t w, int32_t h, float pixelAspect = 1.0f)
    {
        image.reset(KImage::Create(w, h, true, pixelAspect, 1.0f));
        return Start();
    }
    void Stop()
    {
        KImage* slot = nullptr;
        if (started) effect->Stop(&slot);
        started = false;
    }
    bool Map(float x, float y, KPosition& out) const { return effect->InverseMap(out, {x, y}); }

    Img image;
    bool started = false;
};

// An output point and the source point it must read.
struct MapRow { float x, y, ex, ey; };

// Every row within `tol`; a tolerance of 0 asks for the exact point.
inline void ExpectMaps(const Warp& w, const std::vector<MapRow>& rows, float tol)
{
    for (const MapRow& r : rows) {
        KPosition out;
        ASSERT_TRUE(w.Map(r.x, r.y, out)) << r.x << "," << r.y;
        EXPECT_NEAR(out.x, r.ex, tol) << "x of " << r.x << "," << r.y;
        EXPECT_NEAR(out.y, r.ey, tol) << "y of " << r.x << "," << r.y;
    }
}

// Each step's settings, a new Start, and the points it must map.
struct Step { std::vector<Setting> set; std::vector<MapRow> maps; };
inline void ExpectSteps(Warp& w, float tol, std::initializer_list<Step> steps)
{
    int n = 0;
    for (const Step& s : steps) {
        w.Apply(s.set);
        w.Start();
        SCOPED_TRACE("step " + std::to_string(n++));
        ExpectMaps(w, s.maps, tol);
    }
}

}  // namespace zvtest
