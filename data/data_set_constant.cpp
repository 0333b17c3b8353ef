// dSet Constant: sets, adds or multiplies every element of the channels it
// names by the constant of the channel's type, component by component;
// integers in integer arithmetic.
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataSetConstant : public KEffectData {
public:
    KEffectDataSetConstant()
    {
        DeclareChannelTool("Data Set Constant", &pattern, "*");
        inputList.AddMultiButton(&mode, 0, "Type", "Type"_id, 0, {"Replace", "Add", "Multiply", "[end]"});
        inputList.BeginNest("Integer", 0, 0);
        inputList.AddSlider(&integer, 0, "Integer", "Inti"_id, 0, 1, 100);
        inputList.EndNest();
        inputList.BeginNest("Float", 0, 0);
        inputList.AddSlider(&number, 0.0f, "Float", "Floa"_id, 0, 0.0, 10.0);
        inputList.EndNest();
        inputList.BeginNest("Vector 2", 0, 0);
        inputList.AddPoint(&vector2, {0.0f, 0.0f}, "Vector2", "Vec2"_id, 0, 0);
        inputList.EndNest();
        inputList.BeginNest("Vector 3", 0, 0);
        inputList.AddXYZ(&vector3, {}, "Vector3", "Vec3"_id, 0);
        inputList.EndNest();
        inputList.BeginNest("Color", 0, 0);
        inputList.AddColor(&color, {}, "Color", "Colo"_id, 0);
        inputList.EndNest();
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [this](std::unique_ptr<KDataChannel> c) {
            const float v2[2] = {vector2.x, vector2.y};
            const float v3[3] = {vector3.x, vector3.y, vector3.z};
            const float v4[4] = {color.r, color.g, color.b, color.a};
            switch (c->type) {
            case kDataBool: std::fill(c->ints.begin(), c->ints.end(), boolean ? 1 : 0); break;
            case kDataInteger: for (int32_t& x : c->ints) x = Apply(x, integer); break;
            case kDataFloat: Each(*c, &number); break;
            case kDataVector2: Each(*c, v2); break;
            case kDataVector3: Each(*c, v3); break;
            case kDataColor: Each(*c, v4); break;
            default: break;
            }
            return c;
        });
    }

private:
    template <class T> T Apply(T x, T v) const { return mode == 0 ? v : mode == 1 ? x + v : x * v; }
    void Each(KDataChannel& c, const float* v) const
    {
        for (size_t i = 0; i < c.floats.size(); ++i)
            c.floats[i] = Apply(c.floats[i], v[i % c.floatComponents]);
    }

    std::string pattern = "*";
    int32_t mode = 0, integer = 0;
    float number = 0.0f;
    KPoint2 vector2;
    KXYZ vector3;
    KColor color;
    bool boolean = false;  // never declared: Bool channels are set to false
};

ZV_TOOL(KEffectDataSetConstant, ZV_DataSetConstant);
