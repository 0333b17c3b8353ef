// dSet Manual: sets, adds or multiplies the elements of the channels it names
// by up to 64 values typed in, laid over the elements from "Start Index" and
// continued past them as "Out Of Range" says.
#include <array>
#include "data/effect_data.h"
#include "framework/numeric.h"
#include "framework/registration.h"

class KEffectDataSetManual : public KEffectData {
public:
    static constexpr int32_t kValues = 64;

    KEffectDataSetManual()
    {
        DeclareChannelTool("Data Set Manual", &pattern, "*");
        inputList.AddMultiButton(&mode, 0, "Type", "Type"_id, 0, {"Replace", "Add", "Multiply", "[end]"});
        inputList.AddSlider(&start, 0, "Start Index", "Star"_id, 0, 0, 100);
        inputList.AddSlider(&count, 0, "Count", "Coun"_id, kFlagNotify, 0, kValues);
        inputList.AddSeed(&seed, "Random Seed", 0, 0);
        inputList.AddMultiButton(&outOfRange, 0, "Out Of Range", "OutO"_id, 0,
                                 {"Keep", "Extend", "Repeat", "Ping Pong", "Random", "[end]"});
        inputList.AddCheckbox(&randomize, false, "Randomize Within Range", "RanW"_id, 0, 0);
        auto label = [](const char* base, int32_t n) { return std::string(base) + " " + std::to_string(n); };
        const uint32_t at[6] = {"IVal"_id, "FVal"_id, "2Val"_id, "3Val"_id, "CVal"_id, "BVal"_id};
        inputList.BeginNest("Integer", 0, 0);
        for (int32_t n = 0; n < kValues; ++n)
            inputList.AddSlider(&integers[n], 0, label("Integer", n).c_str(), at[0] + n, 0, 0, 100);
        inputList.EndNest();
        inputList.BeginNest("Float", 0, 0);
        for (int32_t n = 0; n < kValues; ++n)
            inputList.AddSlider(&floats[n], 0.0f, label("Float", n).c_str(), at[1] + n, 0, 0.0, 10.0);
        inputList.EndNest();
        inputList.BeginNest("Vector2", 0, 0);
        for (int32_t n = 0; n < kValues; ++n)
            inputList.AddPoint(&vector2s[n], {0.0f, 0.0f}, label("Vector2", n).c_str(), at[2] + n, 0, 0);
        inputList.EndNest();
        inputList.BeginNest("Vector3", 0, 0);
        for (int32_t n = 0; n < kValues; ++n)
            inputList.AddXYZ(&vector3s[n], {}, label("Vector3", n).c_str(), at[3] + n, 0);
        inputList.EndNest();
        inputList.BeginNest("Color", 0, 0);
        for (int32_t n = 0; n < kValues; ++n)
            inputList.AddColor(&colors[n], {}, label("Color", n).c_str(), at[4] + n, 0);
        inputList.EndNest();
        inputList.BeginNest("Boolean", 0, 0);
        for (int32_t n = 0; n < kValues; ++n)
            inputList.AddCheckbox(&booleans[n], false, label("Boolean", n).c_str(), at[5] + n, 0, 0);
        inputList.EndNest();
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        // Only the values in use are shown, group by group.
        KMessageList list;
        if (id != "Coun"_id) return list;
        for (uint32_t base : {"IVal"_id, "FVal"_id, "2Val"_id, "3Val"_id, "CVal"_id, "BVal"_id})
            for (int32_t n = 0; n < kValues; ++n)
                list.Add(kMessageVisible, base + uint32_t(n), n < value.intValue ? 1.0f : 0.0f);
        return list;
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        return KEachChannel(input, pattern, [this](std::unique_ptr<KDataChannel> c) {
            if (count < 1) return c;
            KRandomSeed(seed);
            for (int32_t i = 0; i < c->count; ++i) {
                const int32_t e = Entry(i, c->count);
                if (e >= 0) Set(*c, i, std::min(std::max(e, 0), kValues));
            }
            return c;
        });
    }

private:
    // The value entry for element i of n, or -1 to leave the element alone.
    int32_t Entry(int32_t i, int32_t n) const
    {
        const int32_t s = start, c = count;
        switch (outOfRange) {
        case 0: return i >= s && i < s + c ? (i - s) % c : -1;
        case 1: return i < s ? 0 : i >= s + c ? c - 1 : (i - s) % c;
        case 2: return i >= s ? (i - s) % c : c - (s - i) % c;  // c itself at i = s - c
        case 3: {
            const int32_t d = i - s, p = 2 * c;
            int32_t r = d >= 0 ? d % p : p - (s - i) % p;
            if (r >= c) r = p - r - 1;
            return std::max(r, 0);
        }
        default: return KRandomInt(n) % c;
        }
    }

    // Entry 64 lies past the stored values and stands for zero; a Bool channel keeps its values.
    void Set(KDataChannel& c, int32_t i, int32_t e) const
    {
        const bool past = e >= kValues;
        float* f = c.floats.data() + size_t(i) * c.floatComponents;
        auto apply = [&](const float* v, int32_t n) {
            for (int32_t k = 0; k < n; ++k) f[k] = KApplyMode(mode, f[k], past ? 0.0f : v[k]);
        };
        switch (c.type) {
        case kDataInteger: c.ints[size_t(i)] = KApplyMode(mode, c.ints[size_t(i)], past ? 0 : integers[e]); break;
        case kDataFloat: apply(&floats[std::min(e, kValues - 1)], 1); break;
        case kDataVector2: {
            const KPoint2& p = vector2s[std::min(e, kValues - 1)];
            const float v[2] = {p.x, p.y};
            apply(v, 2);
            break;
        }
        case kDataVector3: {
            const KXYZ& p = vector3s[std::min(e, kValues - 1)];
            const float v[3] = {p.x, p.y, p.z};
            apply(v, 3);
            break;
        }
        case kDataColor: {
            const KColor& p = colors[std::min(e, kValues - 1)];
            const float v[4] = {p.r, p.g, p.b, p.a};
            apply(v, 4);
            break;
        }
        default: break;
        }
    }

    std::string pattern = "*";
    int32_t mode = 0, start = 0, count = 0, seed = 0, outOfRange = 0;
    bool randomize = false;  // has no effect
    std::array<int32_t, kValues> integers{};
    std::array<float, kValues> floats{};
    std::array<KPoint2, kValues> vector2s{};
    std::array<KXYZ, kValues> vector3s{};
    std::array<KColor, kValues> colors{};
    std::array<bool, kValues> booleans{};
};

ZV_TOOL(KEffectDataSetManual, ZV_DataSetManual);
