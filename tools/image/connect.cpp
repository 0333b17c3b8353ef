// Connect: a pen drawn through up to 32 points, straight or as a Catmull-Rom
// spline, over the input.
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>
#include <string>
#include "framework/registration.h"
#include "shape/effect_image_shape.h"

class KEffectConnect : public KEffectImageShape {
public:
    KEffectConnect()
    {
        inputList.AddPage("Connect");
        inputList.AddMultiButton(&type, 0, "Type", "Type"_id, kFlagNotify, {"Linear", "Catmull-Rom", "[end]"});
        inputList.AddSlider(&subdivision, 4, "Subdivision", "Subd"_id, 0, 1, 16);
        inputList.AddSlider(&count, 4, "Number Of Points", "NumP"_id, kFlagNotify, 2, 32);
        inputList.AddCheckbox(&close, false, "Close", "Clos"_id, 0, 0);
        for (int32_t i = 0; i < 32; ++i) {
            // Four corners of a square, then round a circle.
            const float a = 0.7853982f + 1.5707964f * static_cast<float>(i) + 0.19634955f * static_cast<float>(i / 4);
            const KPoint2 at{0.5f + 0.25f * std::cos(a), 0.5f + 0.25f * std::sin(a)};
            const std::string label = "Point " + std::to_string(i + 1);
            inputList.AddPoint(&points[i], at, label.c_str(), "Po/0"_id + static_cast<uint32_t>(i), 0, 1);
        }
        AddShadingControls();
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "NumP"_id)
            for (int32_t i = 0; i < 32; ++i)
                list.Add(kMessageVisible, "Po/0"_id + static_cast<uint32_t>(i), i < value.intValue ? 1.0f : 0.0f);
        if (id == "Type"_id) list.Add(kMessageVisible, "Subd"_id, value.intValue == 1 ? 1.0f : 0.0f);
        return list;
    }

    ShapeListVector* GetShapes() override
    {
        auto* shape = new KShape;
        const int32_t n = std::clamp(count, 2, 32);
        auto p = [&](int32_t i) { return Vector2f{points[i].x, points[i].y}; };
        if (n < 3 || type == 0) {
            shape->MoveTo(p(0));
            for (int32_t i = 1; i < n; ++i) shape->LineTo(p(i));
            if (close) shape->Close();
        } else {
            // The points with one more before and two after, mirrored or wrapped.
            std::vector<Vector2f> x(n + 3);
            for (int32_t i = 0; i < n; ++i) x[i + 1] = p(i);
            if (close) {
                x[0] = p(n - 1);
                x[n + 1] = p(0);
                x[n + 2] = p(1);
            } else {
                x[0] = (p(2) - p(1) * 4.0f + p(0) * 5.0f) * 0.5f;
                x[n + 1] = (p(n - 1) * 5.0f - p(n - 2) * 4.0f + p(n - 3)) * 0.5f;
                x[n + 2] = x[n + 1];
            }
            const int32_t spans = close ? n : n - 1;
            const int32_t sub = std::max(subdivision, 1);
            shape->MoveTo(p(0));
            for (int32_t s = 0; s < spans; ++s)
                for (int32_t k = s == 0 ? 1 : 0; k < sub; ++k) {
                    const float t = static_cast<float>(k) / static_cast<float>(sub), t2 = t * t, t3 = t2 * t;
                    const Vector2f p0 = x[s], p1 = x[s + 1], p2 = x[s + 2], p3 = x[s + 3];
                    shape->LineTo((p1 * 2.0f + (p2 - p0) * t + (p0 * 2.0f - p1 * 5.0f + p2 * 4.0f - p3) * t2 +
                                   (p1 * 3.0f - p0 - p2 * 3.0f + p3) * t3) * 0.5f);
                }
            if (close) shape->Close();
            else shape->LineTo(p(n - 1));
        }
        auto* v = new ShapeListVector;
        auto list = std::make_unique<KShapeList>();
        list->Add(shape);
        v->Push(std::move(list));
        return v;
    }

private:
    int32_t type = 0, subdivision = 4, count = 4;
    bool close = false;
    KPoint2 points[32];
};

ZV_TOOL(KEffectConnect, ZV_Connect);
