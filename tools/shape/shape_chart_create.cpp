// sChart Create: bars or pie rings from up to eight value channels of a
// table, a group of bars or a ring per channel, coloured by row.
#include <algorithm>
#include <cmath>
#include <vector>
#include "data/table.h"
#include "framework/registration.h"
#include "shape/create.h"
#include "shape/effect_shape.h"

class KEffectShapeChartCreate : public KEffectShapeTool {
public:
    KEffectShapeChartCreate()
    {
        KParameterList& in = inputList;
        in.AddPage("Shape Chart Create");
        in.AddCombo(&type, 0, "Type", "Type"_id, kFlagNotify, {"Bar", "Pie", "[end]"});
        in.AddSlider(&scale, 0.9f, "Scale", "Scal"_id, 0, 0.0, 1.0);
        in.AddSlider(&align, -1.0f, "Align", "Alig"_id, 0, -1.0, 1.0);
        in.AddSlider(&radiusInner, 0.0f, "Radius Inner", "RaIn"_id, 0, 0.0, 1.0);
        in.AddSlider(&radiusOuter, 0.0f, "Radius Outer", "RaOu"_id, 0, 0.0, 1.0);
        in.AddSlider(&spacing, 0.05f, "Spacing", "Spac"_id, 0, 0.0, 1.0);
        in.AddSlider(&subSpacing, 0.05f, "Sub Spacing", "Spac"_id, 0, 0.0, 1.0);
        in.AddSlider(&precision, 8, "Curve Precision", "Prec"_id, 0, 2, 16);
        in.AddPage("Data");
        in.AddDataInput(&data, "Data", 2, 0);
        in.AddCheckbox(&dataEnable, false, "Data Enable", "DEna"_id, 0, 0);
        static const char* kValueLabels[8] = {
            "Channel Name Value 0 (1f in)", "Channel Name Value 1 (1f in)", "Channel Name Value 2 (1f in)",
            "Channel Name Value 3 (1f in)", "Channel Name Value 4 (1f in)", "Channel Name Value 5 (1f in)",
            "Channel Name Value 6 (1f in)", "Channel Name Value 7 (1f in)"};
        for (int i = 0; i < 8; ++i) {
            valueNames[i] = "value" + std::to_string(i + 1);
            in.AddTextEdit(&valueNames[i], valueNames[i].c_str(), kValueLabels[i], "DNV1"_id + uint32_t(i), 0, 1);
        }
        in.AddTextEdit(&colorName, "color", "Channel Name Color (4f in)", "DNCo"_id, 0, 1);
        in.AddTextEdit(&penName, "colorpen", "Channel Name Color Pen (4f in)", "DNCo"_id, 0, 1);
        in.AddTextEdit(&offsetName, "offset", "Channel Name Offset (1f in)", "DNCo"_id, 0, 1);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "Type"_id) {
            const float bar = value.intValue == 0 ? 1.0f : 0.0f;
            list.Add(kMessageVisible, "Scal"_id, bar);
            list.Add(kMessageVisible, "Alig"_id, bar);
            list.Add(kMessageVisible, "RaIn"_id, 1.0f - bar);
            list.Add(kMessageVisible, "RaOu"_id, 1.0f - bar);
        }
        return list;
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        auto out = std::make_unique<ShapeListVector>();
        if (!dataEnable || !data || data->maximumCount <= 0) return out;
        std::vector<const KDataChannel*> groups;
        int32_t rows = 0;
        for (const std::string& name : valueNames)
            if (const KDataChannel* c = Find(name)) {
                groups.push_back(c);
                rows = std::max(rows, c->count);
            }
        if (groups.empty() || rows == 0) return out;
        const KDataChannel* color = Find(colorName);
        const KDataChannel* pen = Find(penName);
        if (color && color->count == 0) color = nullptr;
        if (pen && pen->count == 0) pen = nullptr;
        auto list = std::make_unique<KShapeList>();
        if (type == 0) Bars(*list, groups, rows, color, pen);
        else Pie(*list, groups, color, pen);
        out->Push(std::move(list));
        return out;
    }

private:
    const KDataChannel* Find(const std::string& name) const
    {
        return KDataNameUsable(name) ? data->FindAny(name, kDataAny) : nullptr;
    }
    static KColor ColorAt(const KDataChannel* c, int32_t i)
    {
        i = std::clamp(i, 0, c->count - 1);
        return {KDataNumber(c, i, 0, 1.0f), KDataNumber(c, i, 1, 1.0f), KDataNumber(c, i, 2, 1.0f), KDataNumber(c, i, 3, 1.0f)};
    }
    static void Paint(KShape& shape, const KDataChannel* color, const KDataChannel* pen, int32_t i)
    {
        if (color) shape.hasFill = true, shape.fillColor = ColorAt(color, i);
        if (pen) shape.hasPen = true, shape.penColor = ColorAt(pen, i);
    }

    void Bars(KShapeList& list, const std::vector<const KDataChannel*>& groups, int32_t rows, const KDataChannel* color,
              const KDataChannel* pen) const
    {
        const float count = static_cast<float>(groups.size());
        const float barWidth = 1.0f / static_cast<float>(rows);
        const float groupStep = (1.0f - spacing) * barWidth / count;
        const float subWidth = (1.0f - subSpacing) * groupStep;
        for (size_t g = 0; g < groups.size(); ++g)
            for (int32_t i = 0; i < groups[g]->count; ++i) {
                const float h = KDataNumber(groups[g], i, 0, 0.0f) * scale;
                const float base = (-0.5f - align * 0.5f) * h;
                const float left = (float(i) * barWidth + float(rows - 1) * -0.5f * barWidth -
                                    (count - 1.0f) * 0.5f * groupStep + float(g) * groupStep) - subWidth / 2.0f;
                auto* bar = new KShape;
                KAddRoundRect(*bar, left, left + subWidth, base, base + h, 0.0f, 8);
                // Colours go by group, wrapping over the colour rows.
                if (color) bar->hasFill = true, bar->fillColor = ColorAt(color, int32_t(g) % color->count);
                if (pen) bar->hasPen = true, bar->penColor = ColorAt(pen, int32_t(g) % pen->count);
                list.Add(bar);
            }
    }

    void Pie(KShapeList& list, const std::vector<const KDataChannel*>& groups, const KDataChannel* color,
             const KDataChannel* pen) const
    {
        const float turn = 6.2831855f;
        const float ringWidth = (radiusOuter - radiusInner) / static_cast<float>(groups.size());
        const float gap = spacing * turn;
        float r = radiusInner;
        for (const KDataChannel* ring : groups) {
            float sum = 0.0f;
            for (int32_t i = 0; i < ring->count; ++i) sum += KDataNumber(ring, i, 0, 0.0f);
            if (sum == 0.0f) sum = 1.0f;
            // The gap is a length: nearer the middle it takes a larger angle.
            const float divisor = 50.0f * ringWidth + 100.0f * r;
            const float gapAngle = divisor != 0.0f ? gap / divisor : gap;
            const float s = subSpacing * ringWidth;
            float start = 0.0f;
            for (int32_t i = 0; i < ring->count; ++i) {
                const float sweep = KDataNumber(ring, i, 0, 0.0f) * turn / sum;
                if (sweep > 2.0f * gapAngle) {
                    auto* wedge = new KShape;
                    KAddPieSlice(*wedge, start, start + sweep - gapAngle, r + s, r + ringWidth - s, precision);
                    Paint(*wedge, color, pen, i);
                    list.Add(wedge);
                }
                start += sweep;
            }
            r += ringWidth;
        }
    }

    int32_t type = 0, precision = 8;
    float scale = 0.9f, align = -1.0f, radiusInner = 0.0f, radiusOuter = 0.0f, spacing = 0.05f, subSpacing = 0.05f;
    KDataTable* data = nullptr;
    bool dataEnable = false;
    std::string valueNames[8];
    std::string colorName = "color", penName = "colorpen", offsetName = "offset";
};

ZV_TOOL(KEffectShapeChartCreate, ZV_ShapeChartCreate);
