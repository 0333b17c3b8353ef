// sPrimitive Create: a cross, polygon, rectangle or star around the origin;
// with a table, one per row, each row overriding type, size, steps, angle,
// place and colour.
#include <algorithm>
#include "data/table.h"
#include "framework/registration.h"
#include "shape/create.h"
#include "shape/effect_shape.h"

class KEffectShapePrimitiveCreate : public KEffectShapeTool {
public:
    KEffectShapePrimitiveCreate()
    {
        KParameterList& in = inputList;
        in.AddPage("Shape Primitive Create");
        in.AddCombo(&type, 0, "Type", "Type"_id, kFlagNotify, {"Cross", "Polygon", "Rectangle", "Star", "[end]"});
        in.AddSlider(&sizeX, 0.5f, "Size X", "SizX"_id, 0, 0.0, 1.0);
        in.AddSlider(&sizeY, 0.25f, "Size Y", "SizY"_id, 0, 0.0, 1.0);
        in.AddSlider(&steps, 4, "Steps", "Step"_id, 0, 3, 16);
        in.AddAngle(&angle, 0.5f, "Angle Start", "Angl"_id, 0, 1);
        in.AddPage("Data");
        in.AddDataInput(&data, "Data", 2, 0);
        in.AddCheckbox(&dataEnable, false, "Data Enable", "DEna"_id, 0, 0);
        in.AddTextEdit(&positionName, "position", "Channel Name Position (3f in)", "DNPo"_id, 0, 1);
        in.AddTextEdit(&typeName, "type", "Channel Name Type (1i in)", "DNTy"_id, 0, 1);
        in.AddTextEdit(&scaleName, "scale", "Channel Name Scale (1f/2f in)", "DNSc"_id, 0, 1);
        in.AddTextEdit(&stepsName, "steps", "Channel Name Steps (1i in)", "DNSt"_id, 0, 1);
        in.AddTextEdit(&angleName, "angle", "Channel Name Angle (1f in)", "DNAn"_id, 0, 1);
        in.AddTextEdit(&colorName, "color", "Channel Name Color Fill (4f in)", "DNCo"_id, 0, 1);
        in.AddTextEdit(&outlineName, "coloroutline", "Channel Name Color Outline (4f in)", "DNCo"_id, 0, 1);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "Type"_id) {
            const int32_t t = value.intValue;
            list.Add(kMessageVisible, "Step"_id, t == 1 || t == 3 ? 1.0f : 0.0f);
            list.Add(kMessageVisible, "Angl"_id, t == 2 || t >= 4 ? 0.0f : 1.0f);
        }
        return list;
    }

    std::unique_ptr<ShapeListVector> Compute() override
    {
        auto out = std::make_unique<ShapeListVector>();
        // Angles arrive negated: a positive start angle turns counter-clockwise.
        const float start = -angle;
        const int32_t rows = data && dataEnable ? data->maximumCount : 0;
        if (rows <= 0) {
            out->Push(Primitive(type, {sizeX, sizeY}, steps, start));
            return out;
        }
        const KDataChannel* position = Find(positionName);
        const KDataChannel* types = Find(typeName);
        const KDataChannel* scale = Find(scaleName);
        const KDataChannel* stepCounts = Find(stepsName);
        const KDataChannel* angles = Find(angleName);
        const KDataChannel* fill = Find(colorName);
        const KDataChannel* outline = Find(outlineName);
        for (int32_t i = 0; i < rows; ++i) {
            const int32_t t = std::clamp(static_cast<int32_t>(KDataNumber(types, i, 0, float(type))), 0, 3);
            Vector2f size{sizeX, sizeY};
            if (scale && i < scale->count) {
                size.x = KDataNumber(scale, i, 0, sizeX);
                size.y = KDataNumber(scale, i, 1, size.x);
            }
            const int32_t n = std::max(static_cast<int32_t>(KDataNumber(stepCounts, i, 0, float(steps))), 3);
            const float a = angles && i < angles->count ? KDataNumber(angles, i, 0, 0.0f) * 0.017453292f : start;
            std::unique_ptr<KShapeList> list = Primitive(t, size, n, a);
            KShape* shape = list->First();
            // The outline colour lands in the fill as well, replacing the row's fill colour.
            for (const KDataChannel* c : {fill, outline})
                if (c && i < c->count) {
                    shape->hasFill = true;
                    shape->fillColor = {KDataNumber(c, i, 0, 1.0f), KDataNumber(c, i, 1, 1.0f), KDataNumber(c, i, 2, 1.0f),
                                        KDataNumber(c, i, 3, 1.0f)};
                }
            if (position && i < position->count)
                list->ApplyMatrix(Matrix4f::Translation(KDataNumber(position, i, 0, 0.0f), KDataNumber(position, i, 1, 0.0f),
                                                        KDataNumber(position, i, 2, 0.0f)));
            out->Push(std::move(list));
        }
        return out;
    }

private:
    const KDataChannel* Find(const std::string& name) const
    {
        return KDataNameUsable(name) ? data->FindAny(name, kDataAny) : nullptr;
    }

    // One list of one primitive at the origin; its transform keeps where a
    // picture of the primitive's own size would place it.
    static std::unique_ptr<KShapeList> Primitive(int32_t listType, Vector2f size, int32_t n, float a)
    {
        static const int32_t kShapeType[4] = {0, 1, 2, 4};
        auto shape = new KShape;
        KAddPrimitive(*shape, kShapeType[listType], size, n, a);
        auto list = std::make_unique<KShapeList>();
        list->Add(shape);
        const bool square = listType == 0 || listType == 3;
        const float sx = size.x, sy = square ? size.x : size.y;
        list->transform = Matrix4f::Translation(0.5f, 0.5f, 0.0f);
        list->transform.Scale(sx != 0.0f ? 1.0f / sx : 1.0f, sy != 0.0f ? 1.0f / sy : 1.0f, 1.0f);
        return list;
    }

    int32_t type = 0, steps = 4;
    float sizeX = 0.5f, sizeY = 0.25f, angle = 0.0f;
    KDataTable* data = nullptr;
    bool dataEnable = false;
    std::string positionName = "position", typeName = "type", scaleName = "scale", stepsName = "steps",
                angleName = "angle", colorName = "color", outlineName = "coloroutline";
};

ZV_TOOL(KEffectShapePrimitiveCreate, ZV_ShapePrimitiveCreate);
