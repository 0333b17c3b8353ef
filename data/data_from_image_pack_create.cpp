// dFrom Image Pack Create and dFrom Image Analyzer Create: one item per piece
// of the picture's packing (the Pack tool's), with its centre, its size and
// its mean colour. The two are the same tool under two names.
#include "data/effect_data.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/packing.h"

class KEffectDataFromImagePackCreate : public KEffectData {
public:
    KEffectDataFromImagePackCreate()
    {
        AddDataInput();
        inputList.AddImageInput(&image, "Image", 2, kFlagMain);
        inputList.AddLabel("Data Image Pack Create", 0, 0);
        inputList.AddTextEdit(&positionName, "position", "Channel Name Position (3f out)", "CNPo"_id, 0, 1);
        inputList.AddTextEdit(&scaleName, "scale", "Channel Name Scale (3f out)", "CNSc"_id, 0, 1);
        inputList.AddTextEdit(&colorName, "color", "Channel Name Color (4f out)", "CVNC"_id, 0, 1);
        settings.Declare(inputList);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        std::unique_ptr<KDataTable> table = input ? input->Clone() : std::make_unique<KDataTable>();
        if (!image) return table;
        const std::vector<KPackItem> items = KPack(*image, settings, 1.0f);
        if (items.empty()) return table;
        const int32_t n = static_cast<int32_t>(items.size());
        const float aspect = image->PictureAspect();
        const auto make = [&](const std::string& name, int32_t type) {
            return KDataNameUsable(name) ? KDataChannel::Create(name, type, n) : nullptr;
        };
        auto position = make(positionName, kDataVector3), scale = make(scaleName, kDataVector3);
        auto color = make(colorName, kDataColor);
        for (int32_t i = 0; i < n; ++i) {
            const KPackItem& it = items[size_t(i)];
            const size_t e = size_t(i);
            if (position) {
                position->floats[e * 3] = it.x - 0.5f;
                position->floats[e * 3 + 1] = (it.y - 0.5f) / aspect;
            }
            if (scale) {
                scale->floats[e * 3] = it.w;
                scale->floats[e * 3 + 1] = it.h;
                scale->floats[e * 3 + 2] = it.w;
            }
            if (color)
                for (int c = 0; c < 4; ++c) color->floats[e * 4 + c] = it.color[c];
        }
        table->Add(std::move(position));
        table->Add(std::move(scale));
        table->Add(std::move(color));
        return table;
    }

private:
    KImage* image = nullptr;
    std::string positionName = "position", scaleName = "scale", colorName = "color";
    KPackSettings settings;
};

class KEffectDataFromImageHistogramCreate : public KEffectDataFromImagePackCreate {};

ZV_TOOL(KEffectDataFromImagePackCreate, ZV_DataFromImagePackCreate);
ZV_TOOL(KEffectDataFromImageHistogramCreate, ZV_DataFromImageHistogramCreate);
