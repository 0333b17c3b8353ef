// dPattern Create: a new table of items laid out on a grid or on rings, with
// their positions, rotations, scales and running indices.
#include <cmath>
#include <vector>
#include "data/effect_data.h"
#include "framework/registration.h"

class KEffectDataPatternCreate : public KEffectData {
public:
    KEffectDataPatternCreate()
    {
        inputList.AddLabel("Data Pattern", 0, 0);
        inputList.AddTextEdit(&names[0], "position", "Channel Name Position (3f out)", "CNPo"_id, 0, 1);
        inputList.AddTextEdit(&names[1], "rotation", "Channel Name Rotation (3f out)", "CNRo"_id, 0, 1);
        inputList.AddTextEdit(&names[2], "scale", "Channel Name Scale (3f out)", "CNRo"_id, 0, 1);
        inputList.AddTextEdit(&names[3], "index", "Channel Name Index (1i out)", "CNIn"_id, 0, 1);
        inputList.AddTextEdit(&names[4], "indexx", "Channel Name Index 1 (1i out)", "CNI2"_id, 0, 1);
        inputList.AddTextEdit(&names[5], "indexy", "Channel Name Index 2 (1i out)", "CNI2"_id, 0, 1);
        inputList.AddTextEdit(&names[6], "indexz", "Channel Name Index 3 (1i out)", "CNI3"_id, 0, 1);
        inputList.AddMultiButton(&type, 0, "Pattern Type", "Type"_id, 0, {"Grid", "Ring", "[end]"});

        inputList.BeginNest("Grid", 0, 0);
        inputList.AddSlider(&gridSize[0], 1.0f, "Grid Size X", "PGSX"_id, 0, 0.1, 10.0);
        inputList.AddSlider(&gridSize[1], 1.0f, "Grid Size Y", "PGSY"_id, 0, 0.1, 10.0);
        inputList.AddSlider(&gridSize[2], 1.0f, "Grid Size Z", "PGSZ"_id, 0, 0.1, 10.0);
        inputList.AddSlider(&gridNumber[0], 10, "Grid Number X", "PGrX"_id, 0, 1, 25);
        inputList.AddSlider(&gridNumber[1], 10, "Grid Number Y", "PGrY"_id, 0, 1, 25);
        inputList.AddSlider(&gridNumber[2], 1, "Grid Number Z", "PGrZ"_id, 0, 1, 25);
        inputList.EndNest();

        inputList.BeginNest("Ring", 0, 0);
        inputList.AddMultiButton(&ringCountType, 0, "Ring Count Type", "RCTy"_id, kFlagNotify,
                                 {"By Number", "By Distance", "By Angle", "[end]"});
        inputList.AddSlider(&ringCount, 3, "Ring Count", "RCou"_id, 0, 1, 25);
        inputList.AddSlider(&radius.low, 0.2f, "Ring Radius Minimum", "RRMi"_id, 0, 0.01, 0.5);
        inputList.AddSlider(&radius.high, 0.5f, "Ring Radius Maximum", "PRMa"_id, 0, 0.01, 0.5);
        inputList.AddAngle(&segment.low, 360.0f, "Ring Segment Angle Minimum", "RSMi"_id, 0, 1);
        inputList.AddAngle(&segment.high, 360.0f, "Ring Segment Angle Maximum", "PSMa"_id, 0, 1);
        inputList.AddAngle(&start.low, 0.0f, "Ring Segment Angle Start Minimum", "RSMi"_id, 0, 1);
        inputList.AddAngle(&start.high, 0.0f, "Ring Segment Angle Start Maximum", "PSMa"_id, 0, 1);
        inputList.AddSlider(&number.low, 8, "Ring Number Minimum", "RNMi"_id, 0, 1, 25);
        inputList.AddSlider(&number.high, 8, "Ring Number Maximum", "RNMa"_id, 0, 1, 25);
        inputList.AddSlider(&distance.low, 0.01f, "Ring Distance Minimum", "RDMi"_id, 0, 0.0, 0.1);
        inputList.AddSlider(&distance.high, 0.01f, "Ring Distance Maximum", "PDMa"_id, 0, 0.0, 0.1);
        inputList.AddAngle(&angle.low, 10.0f, "Ring Angle Minimum", "RAMi"_id, 0, 1);
        inputList.AddAngle(&angle.high, 10.0f, "Ring Angle Maximum", "PAMa"_id, 0, 1);
        inputList.AddCheckbox(&spreadEvenly, false, "Ring Spread Evenly", "RSpE"_id, 0, 0);
        inputList.EndNest();
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id != "RCTy"_id) return list;
        const int32_t t = value.intValue;
        const auto show = [&](uint32_t which, bool on) { list.Add(kMessageVisible, which, on ? 1.0f : 0.0f); };
        for (uint32_t which : {"RNMi"_id, "RNMa"_id}) show(which, t == 0);
        for (uint32_t which : {"RDMi"_id, "PDMa"_id}) show(which, t == 1);
        for (uint32_t which : {"RAMi"_id, "PAMa"_id}) show(which, t == 2);
        show("RSpE"_id, t != 0);
        return list;
    }

    std::unique_ptr<KDataTable> Compute() override
    {
        std::vector<Item> items = type == 0 ? Grid() : Rings();
        const int32_t n = static_cast<int32_t>(items.size());
        auto table = std::make_unique<KDataTable>();
        const int32_t types[7] = {kDataVector3, kDataVector3, kDataVector3, kDataInteger,
                                  kDataInteger, kDataInteger, kDataInteger};
        for (int32_t c = 0; c < 7; ++c) {
            if (!KDataNameUsable(names[c])) continue;
            auto channel = KDataChannel::Create(names[c], types[c], n);
            for (int32_t i = 0; i < n; ++i) {
                if (c < 3) {
                    for (int k = 0; k < 3; ++k) channel->floats[size_t(i) * 3 + k] = items[i].vectors[c][k];
                } else {
                    channel->ints[size_t(i)] = c == 3 ? i : items[i].index[c - 4];
                }
            }
            table->Add(std::move(channel));
        }
        return table;
    }

private:
    struct Item {
        float vectors[3][3];  // position, rotation, scale
        int32_t index[3];
    };
    template <class T>
    struct Pair {
        T low, high;
        T At(float u, float t) const { return u * low + t * high; }
    };

    std::vector<Item> Grid() const
    {
        const auto coordinate = [](int32_t i, int32_t n, float size) {
            return n > 1 ? float(i) * size / float(n - 1) - size * 0.5f : 0.0f;
        };
        std::vector<Item> items;
        items.reserve(size_t(gridNumber[0]) * gridNumber[1] * gridNumber[2]);
        for (int32_t i = 0; i < gridNumber[0]; ++i)
            for (int32_t j = 0; j < gridNumber[1]; ++j)
                for (int32_t k = 0; k < gridNumber[2]; ++k)
                    items.push_back({{{coordinate(i, gridNumber[0], gridSize[0]),
                                       coordinate(j, gridNumber[1], gridSize[1]),
                                       coordinate(k, gridNumber[2], gridSize[2])},
                                      {0, 0, 0},
                                      {1, 1, 1}},
                                     {i, j, k}});
        return items;
    }

    std::vector<Item> Rings() const
    {
        std::vector<Item> items;
        for (int32_t r = 0; r < ringCount; ++r) {
            const float t = ringCount > 1 ? float(r) / float(ringCount - 1) : 0.0f;
            const float u = 1.0f - t;
            const float R = radius.At(u, t), S = segment.At(u, t), A = start.At(u, t);
            int32_t n = 0;
            float step = 0.0f;
            if (ringCountType == 0) {
                n = static_cast<int32_t>(float(number.low) * u + float(number.high) * t + 0.5f);
                step = n > 0 ? S / float(n) : 0.0f;
            } else {
                // A zero distance or angle would divide by nothing: such a ring makes no items.
                const float d = ringCountType == 1 ? distance.At(u, t) : angle.At(u, t);
                if (d == 0.0f) continue;
                const float quotient = ringCountType == 1 ? R * 6.283185307179586f / d : S / d;
                if (!(std::fabs(quotient) < 1e7f)) continue;
                n = static_cast<int32_t>(quotient);
                step = ringCountType == 1 ? S / quotient : d;
                if (spreadEvenly && n > 0) step = S / float(n);
            }
            for (int32_t q = 0; q < n; ++q) {
                const float theta = A + float(q) * step;
                items.push_back({{{R * std::cos(theta), R * std::sin(theta), 0.0f},
                                  {0.0f, 0.0f, theta * 57.29578f},
                                  {1, 1, 1}},
                                 {r, q, 0}});
            }
        }
        return items;
    }

    std::string names[7];
    int32_t type = 0;
    float gridSize[3] = {1.0f, 1.0f, 1.0f};
    int32_t gridNumber[3] = {10, 10, 1};
    int32_t ringCountType = 0, ringCount = 3;
    Pair<float> radius{0.2f, 0.5f}, segment{360.0f, 360.0f}, start{0.0f, 0.0f};
    Pair<int32_t> number{8, 8};
    Pair<float> distance{0.01f, 0.01f}, angle{10.0f, 10.0f};
    bool spreadEvenly = false;
};

ZV_TOOL(KEffectDataPatternCreate, ZV_DataPatternCreate);
