// Offset: displaces each pixel by a channel of the "Deformation map": black
// moves the picture by the Offset Black values, white by Offset White, and the
// shades between in proportion. Without a map the picture passes unchanged.
#include <algorithm>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectOffset : public KEffectWarp {
public:
    KEffectOffset()
    {
        inputList.AddPage("Offset");
        inputList.AddSlider(&scale, 1.0f, "Scale", "sGlo"_id, 0, 0.0, 1.0);
        inputList.AddMultiButton(&sourceX, 4, "Horizontal source", "cSoX"_id, 0,
                                 {"Red", "Green", "Blue", "Alpha", "Lumin.", "[end]"});
        inputList.AddSlider(&blackX, 0.0f, "Horizontal Offset Black", "sOXB"_id, 0, -1.0, 1.0);
        inputList.AddSlider(&whiteX, 0.0f, "Horizontal Offset White", "sOXW"_id, 0, -1.0, 1.0);
        inputList.AddMultiButton(&sourceY, 4, "Vertical source", "cCoY"_id, 0,
                                 {"Red", "Green", "Blue", "Alpha", "Lumin.", "[end]"});
        inputList.AddSlider(&blackY, 0.0f, "Vertical Offset Black", "sOYB"_id, 0, -1.0, 1.0);
        inputList.AddSlider(&whiteY, 0.0f, "Vertical Offset White", "sOYW"_id, 0, -1.0, 1.0);
        // The second image link of the tool.
        inputList.AddImageInput(&map, "Deformation map", 2, kFlagMain);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        if (!map) return false;
        baseX = -scale * blackX;
        baseY = -scale * blackY;
        factorX = (blackX - whiteX) * scale * 1.5259022e-5f;
        factorY = (blackY - whiteY) * scale * 1.5259022e-5f;
        // Positions run to 1 across and 1 / aspect down: this takes them to map pixels.
        mapWidth = static_cast<float>(map->width);
        mapHeight = static_cast<float>(map->height) * pictureAspect;
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        KPixel p;
        map->SamplePixel(in.x * mapWidth, in.y * mapHeight, p, kEdgeDuplicate);
        out.x = in.x + Channel(p, sourceX) * factorX + baseX;
        out.y = in.y + Channel(p, sourceY) * factorY + baseY;
        return true;
    }

private:
    // Red, green, blue, alpha, or the mean of the largest and smallest of red, green and blue.
    static float Channel(const KPixel& p, int32_t which)
    {
        if (which >= 0 && which < 4) return static_cast<float>(p[which]);
        const uint32_t hi = std::max({p.r, p.g, p.b}), lo = std::min({p.r, p.g, p.b});
        return static_cast<float>(hi + lo) * 0.5f;
    }

    float scale = 1.0f;
    int32_t sourceX = 4, sourceY = 4;
    float blackX = 0.0f, whiteX = 0.0f, blackY = 0.0f, whiteY = 0.0f;
    KImage* map = nullptr;

    float baseX = 0.0f, baseY = 0.0f, factorX = 0.0f, factorY = 0.0f;
    float mapWidth = 0.0f, mapHeight = 0.0f;
};

ZV_TOOL(KEffectOffset, ZV_Offset);
