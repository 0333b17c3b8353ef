// rNoise: fractal gradient noise through space, adjusted by brightness and
// contrast. The seed moves the pattern, "Size" is the width of its largest
// features and "Detail" the number of finer layers laid over them.
#include "framework/registration.h"
#include "region/effect_region.h"

class KEffectRegion3DNoise : public KEffectRegion3DCreate {
public:
    KEffectRegion3DNoise()
    {
        AddInvert();
        inputList.AddSlider(&brightness, 0.0f, "Brightness", "SofX"_id, 0, -1.0, 1.0);
        inputList.AddSlider(&contrast, 1.0f, "Contrast", "SofY"_id, 0, 0.0, 5.0);
        inputList.AddSlider(&seed, 1234, "Seed", "Seed"_id, 0, 0, 32768);
        inputList.AddSlider(&size, 0.5f, "Size", "NSiz"_id, kFlagHardMin, 0.01, 5.0);
        inputList.AddSlider(&detail, 3, "Detail", "NDet"_id, kFlagHardMin | kFlagHardMax, 1, 8);
        AddTransformGroup();
    }

    std::shared_ptr<KRegion3DNode> Compute() override
    {
        auto node = std::make_shared<KRegion3DNode>();
        node->kind = kRegionNoise;
        node->seed = seed;
        node->brightness = brightness;
        node->contrast = contrast;
        node->noise.size = size;
        node->noise.octaves = detail;
        // Each seed its own place in the noise, far from the others.
        uint32_t h = static_cast<uint32_t>(seed) * 2654435761u + 0x9E3779B9u;
        float* offsets[3] = {&node->noise.offset.x, &node->noise.offset.y, &node->noise.offset.z};
        for (float* o : offsets) {
            h ^= h >> 15;
            h *= 0x2C1B3C6Du;
            h ^= h >> 12;
            *o = static_cast<float>(h & 0xFFFFu) / 256.0f;
        }
        return node;
    }

private:
    float brightness = 0.0f, contrast = 1.0f, size = 0.5f;
    int32_t seed = 1234, detail = 3;
};

ZV_TOOL(KEffectRegion3DNoise, ZV_Region3DNoise);
