// Mirror: reflects the picture across the line through Mirror Left and Mirror
// Right. Unless "Mirror all" is on, the side that the line's normal (-dy, dx)
// points away from is kept, and the other side shows its reflection.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectMirror : public KEffectWarp {
public:
    KEffectMirror()
    {
        inputList.AddPage("Mirror");
        inputList.AddCheckbox(&mirrorAll, false, "Mirror all", "MAll"_id, 0, 0);
        inputList.AddPoint(&left, {0.25f, 0.5f}, "Mirror Left", "MirL"_id, 0, 0);
        inputList.AddPoint(&right, {0.75f, 0.5f}, "Mirror Right", "MirR"_id, 0, 0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        // Rows run to 1 / picture aspect; host points span 0..1 on both axes.
        l = {left.x, left.y / pictureAspect};
        const Vector2f r{right.x, right.y / pictureAspect};
        const Vector2f d = r - l;
        const float len = d.Length();
        float a = 0.0f;
        if (len > 0.0f) {
            a = std::acos(std::clamp(d.x / len, -1.0f, 1.0f));
            if (!(d.y > 0.0f)) a = -a;
        }
        // Turned by -a the line lies on x, where the reflection flips y.
        map.matrix = Matrix3f();
        map.matrix.Translate(-l.x, -l.y).Rotate(-a).Scale(1.0f, -1.0f).Rotate(a).Translate(l.x, l.y);
        map.origin = l;
        map.everywhere = mirrorAll;
        map.normal = {-d.y, d.x};
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        const Vector2f q = map.Apply({in.x, in.y});
        out = {q.x, q.y};
        return true;
    }

private:
    bool mirrorAll = false;
    KPoint2 left, right;

    Vector2f l;
    HalfPlaneMap map;
};

ZV_TOOL(KEffectMirror, ZV_Mirror);
