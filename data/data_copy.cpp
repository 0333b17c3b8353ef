// dCopy: converts the channels it names from one type to another, in place
// of the source and under its name; a channel whose type is not "Type In"
// comes through as it is.
#include "data/effect_data.h"
#include "framework/registration.h"

namespace {

// Channel types by their index in the pickers' list.
constexpr int32_t kTypeOfIndex[7] = {kDataAny, kDataBool, kDataInteger, kDataFloat,
                                     kDataVector2, kDataVector3, kDataColor};

// Element i of `from` as the four floats a conversion reads, and how many of
// them the element has: an integer v reads as one component, (v, v, v, v).
int32_t Components(const KDataChannel& from, int32_t i, float v[4])
{
    v[0] = v[1] = v[2] = v[3] = 0.0f;
    if (from.intComponents) {
        v[0] = float(from.ints[size_t(i)]);
        return 1;
    }
    for (int32_t c = 0; c < from.floatComponents && c < 4; ++c) v[c] = from.floats[size_t(i) * from.floatComponents + c];
    return from.floatComponents;
}

}  // namespace

class KEffectDataCopy : public KEffectData {
public:
    KEffectDataCopy()
    {
        DeclareChannelTool("Data Copy", &pattern, "*");
        const KItems types = {"Any", "Bool", "Integer", "Float", "Vector2", "Vector3", "Color", "[end]"};
        inputList.AddMultiButton(&typeIn, 0, "Type In", "TypI"_id, 0, types);
        inputList.AddMultiButton(&action, 0, "Do", "DoTy"_id, 0, {"Replace", "Copy", "[end]"});
        inputList.AddTextEdit(&copyName, "copy", "Channel Name Copy (out)", "CNaC"_id, 0, 1);
        inputList.AddMultiButton(&typeOut, 0, "Type Out", "TypO"_id, 0, types);
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [this](std::unique_ptr<KDataChannel> c) {
            if (typeOut <= 0 || typeOut > 6 || typeOut == typeIn) return c;
            if (typeIn != 0 && typeIn != KDataTypeIndex(c->type)) return c;
            return Converted(*c, kTypeOfIndex[typeOut]);
        });
    }

private:
    static std::unique_ptr<KDataChannel> Converted(const KDataChannel& from, int32_t type)
    {
        auto to = KDataChannel::Create(from.name, type, from.count);
        const bool integer = from.intComponents > 0;
        for (int32_t i = 0; i < from.count; ++i) {
            float v[4];
            const int32_t n = Components(from, i, v);
            float* out = to->floats.data() + size_t(i) * to->floatComponents;
            switch (type) {
            case kDataBool: to->ints[size_t(i)] = integer ? v[0] != 0.0f : !(0.5f >= v[0]); break;
            case kDataInteger:
                to->ints[size_t(i)] = integer ? from.ints[size_t(i)] : static_cast<int32_t>(v[0] + 0.5f);
                break;
            case kDataFloat: out[0] = v[0]; break;
            case kDataVector2:
                out[0] = v[0];
                out[1] = n == 1 ? v[0] : v[1];
                break;
            case kDataVector3:
                out[0] = v[0];
                out[1] = n == 1 ? v[0] : v[1];
                out[2] = n == 1 ? v[0] : v[2];
                break;
            case kDataColor:
                // A colour read as a colour stays zero: the conversion knows no four-component source.
                if (n == 1) out[0] = out[1] = out[2] = out[3] = v[0];
                if (n == 2) out[0] = v[0], out[1] = v[1];
                if (n == 3) out[0] = v[0], out[1] = v[1], out[2] = v[2], out[3] = 1.0f;
                break;
            default: break;
            }
        }
        return to;
    }

    std::string pattern = "*", copyName = "copy";
    int32_t typeIn = 0, action = 0, typeOut = 0;  // "Do" and the copy's name have no effect
};

ZV_TOOL(KEffectDataCopy, ZV_DataCopy);
