// rImage: a picture as a region, standing on the unit square about the origin
// and reaching through all depths; one channel, or the luminance, is the value.
// "Full" samples the picture between pixels, "Sampled" reads a coarse grid of it.
#include "framework/registration.h"
#include "raster/image.h"
#include "region/effect_region.h"

class KEffectRegion3DImage : public KEffectRegion3DCreate {
public:
    KEffectRegion3DImage()
    {
        inputList.AddImageInput(&image, "Image", 1, kFlagMain);
        inputList.AddLabel("Region Image", 0, 0);
        inputList.AddCombo(&channel, 4, "Channel", "Chan"_id, 0,
                           {"Red", "Green", "Blue", "Alpha", "Lumin.", "[end]"});
        AddInvert();
        inputList.AddCombo(&resolution, 0, "Resolution", "Reso"_id, 0, {"Full", "Sampled", "[end]"});
        inputList.AddSlider(&sampledWidth, 32, "Sampling Horizontal", "ResX"_id, 0, 2, 100);
        inputList.AddSlider(&sampledHeight, 32, "Sampling Vertical", "ResY"_id, 0, 2, 100);
        inputList.AddCheckbox(&interpolate, false, "Do Interpolation", "SaIn"_id, 0, 0);
        inputList.AddCombo(&mapping, 0, "Mapping", "Mapp"_id, 0, {"Planar", "Spherical", "Cylindrical", "[end]"});
        inputList.AddCombo(&outside, 0, "Outside", "Outs"_id, 0, {"Empty", "Duplicate", "Wrap", "[end]"});
        AddTransformGroup();
    }

    std::shared_ptr<KRegion3DNode> Compute() override
    {
        auto node = std::make_shared<KRegion3DNode>();
        node->kind = kRegionImage;
        node->channel = channel;
        node->resolution = resolution;
        node->sampledWidth = sampledWidth;
        node->sampledHeight = sampledHeight;
        node->interpolate = interpolate;
        node->mapping = mapping;
        node->outside = outside;
        if (image) node->image.reset(image->Share());
        // The grid is all a sampled region reads: the picture need not be held.
        if (resolution == 1) {
            KRegionSampleGrid(*node);
            node->image.reset();
        }
        return node;
    }

private:
    KImage* image = nullptr;
    int32_t channel = 4, resolution = 0, sampledWidth = 32, sampledHeight = 32, mapping = 0, outside = 0;
    bool interpolate = false;
};

ZV_TOOL(KEffectRegion3DImage, ZV_Region3DImage);
