// dFrom Image Create: samples an image on a grid of items, giving each a
// position and up to five values read from the pixel under it.
#include <algorithm>
#include "data/effect_data.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectDataFromImageCreate : public KEffectData {
public:
    KEffectDataFromImageCreate()
    {
        AddDataInput();
        inputList.AddImageInput(&image, "Image", 2, kFlagMain);
        inputList.AddLabel("Data Image Create", 0, 0);
        inputList.AddMultiButton(&resolutionType, 0, "Resolution Type", "Type"_id, 0,
                                 {"By Number", "By Distance", "[end]"});
        inputList.AddSlider(&numberX, 160, "Number X", "ResX"_id, 0, 1, 400);
        inputList.AddSlider(&numberY, 90, "Number Y", "ResY"_id, 0, 1, 400);
        inputList.AddSlider(&distanceX, 0.05f, "Distance X", "RDiX"_id, 0, 0.0001, 1.0);
        inputList.AddSlider(&distanceY, 0.05f, "Distance Y", "RDiY"_id, 0, 0.0001, 1.0);
        inputList.AddMultiButton(&positionType, 0, "Position Type Export", "PTyp"_id, 0,
                                 {"Correct Aspect", "Normalized", "In Pixels", "[end]"});
        inputList.AddTextEdit(&positionName, "position", "Channel Position Name (3f out)", "CNPo"_id, 0, 1);
        inputList.AddCheckbox(&colorEnable, false, "Channel Color Enable", "CEnC"_id, 0, 0);
        inputList.AddTextEdit(&colorName, "color", "Channel Name Color (4f out)", "CVNC"_id, 0, 1);
        static const char* const kNames[5] = {"red", "green", "blue", "alpha", "luminance"};
        for (int32_t k = 0; k < 5; ++k) {
            const std::string n = " " + std::to_string(k);
            values[k].name = kNames[k];
            inputList.AddCheckbox(&values[k].on, false, ("Channel Value Enable" + n).c_str(), "CEn0"_id + k, 0, 0);
            inputList.AddChannelSelect(&values[k].channel, k, ("Image Channel Value" + n).c_str(),
                                       "CIC0"_id + k, 0);
            inputList.AddTextEdit(&values[k].name, kNames[k], ("Channel Name Value" + n + " (1f out)").c_str(),
                                  "CVN0"_id + k, 0, 1);
            inputList.AddSlider(&values[k].minimum, 0.0f, ("Numbers Minimum" + n).c_str(), "CMi0"_id + k, 0,
                                0.0, 1.0);
            inputList.AddSlider(&values[k].maximum, 1.0f, ("Numbers Maximum" + n).c_str(), "CMa0"_id + k, 0,
                                0.0, 1.0);
        }
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        std::unique_ptr<KDataTable> table = input ? input->Clone() : std::make_unique<KDataTable>();
        if (!image) return table;
        // The grid is always Number X by Number Y: the distances are offered but
        // do not change the count.
        const int32_t n = numberX * numberY;
        const float aspect = image->PictureAspect();
        auto position = KDataNameUsable(positionName) ? KDataChannel::Create(positionName, kDataVector3, n) : nullptr;
        // Filled for the sake of the switch, but never handed on: the table carries no colours.
        auto color = colorEnable && KDataNameUsable(colorName) ? KDataChannel::Create(colorName, kDataColor, n)
                                                               : nullptr;
        std::unique_ptr<KDataChannel> made[5];
        for (int32_t k = 0; k < 5; ++k)
            if (values[k].on && KDataNameUsable(values[k].name))
                made[k] = KDataChannel::Create(values[k].name, kDataFloat, n);

        const int32_t w = image->width, h = image->height;
        int32_t index = 0;
        for (int32_t x = 0; x < numberX; ++x) {
            const float u = numberX < 2 ? 0.5f : (float(x) + 0.5f) / float(numberX);
            for (int32_t y = 0; y < numberY; ++y, ++index) {
                const float v = numberY < 2 ? 0.5f : (float(y) + 0.5f) / float(numberY);
                if (position) {
                    float* p = &position->floats[size_t(index) * 3];
                    if (positionType == 0) {
                        p[0] = u - 0.5f, p[1] = (v - 0.5f) * (1.0f / aspect);
                    } else if (positionType == 1) {
                        p[0] = u, p[1] = v;
                    } else {
                        p[0] = u * float(w), p[1] = v * float(h);
                    }
                }
                KPixelF pixel;
                image->GetPixel(std::clamp(int32_t(float(w) * u), 0, w - 1),
                                std::clamp(int32_t(float(h) * v), 0, h - 1), pixel, 0);
                if (color)
                    for (int c = 0; c < 4; ++c) color->floats[size_t(index) * 4 + c] = pixel[c];
                for (int32_t k = 0; k < 5; ++k) {
                    if (!made[k]) continue;
                    const int32_t ch = values[k].channel;
                    const float c = ch >= 0 && ch < 4 ? pixel[ch]
                                                      : 0.299f * pixel.r + 0.587f * pixel.g + 0.114f * pixel.b;
                    made[k]->floats[size_t(index)] = (values[k].maximum - values[k].minimum) * c + values[k].minimum;
                }
            }
        }
        table->Add(std::move(position));
        for (auto& m : made) table->Add(std::move(m));
        return table;
    }

private:
    struct Value {
        bool on = false;
        int32_t channel = 0;
        std::string name;
        float minimum = 0.0f, maximum = 1.0f;
    };
    KImage* image = nullptr;
    int32_t resolutionType = 0, numberX = 160, numberY = 90, positionType = 0;
    float distanceX = 0.05f, distanceY = 0.05f;
    std::string positionName = "position", colorName = "color";
    bool colorEnable = false;
    Value values[5];
};

ZV_TOOL(KEffectDataFromImageCreate, ZV_DataFromImageCreate);
