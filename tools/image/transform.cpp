// Transform: moves, turns and sizes the picture about an axis point.
// Center is an offset from the middle of the picture, Axis the pivot.
#include <algorithm>
#include "framework/effect.h"
#include "framework/geometry.h"
#include "framework/registration.h"

class KEffectTransform : public KEffectWarp {
public:
    KEffectTransform()
    {
        inputList.AddPage("Transform");
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 3);
        inputList.AddAngle(&axisAngle, 0.0f, "Axis angle", "Angl"_id, 0, 1);
        inputList.AddPoint(&axis, {0.5f, 0.5f}, "Axis", "Axis"_id, 0, 0);
        inputList.AddMultiButton(&sizeType, 0, "Size Type", "SizT"_id, 0,
                                 {"Size X and Size Y", "Size and Aspect", "[end]"});
        inputList.AddSlider(&sizeX, 1.0f, "Size X", "SizX"_id, 0, 0.0, 5.0);
        inputList.AddSlider(&sizeY, 1.0f, "Size Y", "SizY"_id, 0, 0.0, 5.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        const float sx = std::max(sizeX, 1e-7f);
        const float sy = std::max(sizeType == 1 ? sizeY * sizeX : sizeY, 1e-7f);
        // Rows are normalised by the pixel aspect; host points span 0..1 on both axes.
        const float aspect = pictureAspect;
        // Angles arrive negated; turning by the arriving value makes a
        // positive angle turn the picture counter-clockwise, rows running upward.
        Matrix3f m;
        m.Translate(-center.x, -center.y / aspect)
            .Translate(-axis.x, -axis.y / aspect)
            .Rotate(axisAngle)
            .Scale(1.0f / sx, 1.0f / sy)
            .Translate(axis.x, axis.y / aspect);
        for (int r = 0; r < 2; ++r)
            for (int c = 0; c < 3; ++c) affine[r][c] = m.m[r][c];
        return true;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        // Written whole: the process reads the pair back as one value, which
        // two separate stores in front of it would stall.
        out = KPosition{affine[0][0] * in.x + affine[0][1] * in.y + affine[0][2],
                        affine[1][0] * in.x + affine[1][1] * in.y + affine[1][2]};
        return true;
    }

private:
    KPoint2 center, axis;
    float axisAngle = 0.0f;
    int32_t sizeType = 0;
    float sizeX = 1.0f, sizeY = 1.0f;
    float affine[2][3] = {{1, 0, 0}, {0, 1, 0}};  // the matrix is affine: no divide
};

ZV_TOOL(KEffectTransform, ZV_Transform);
