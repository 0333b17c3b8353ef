// Pattern: a grid, triangle or honeycomb lattice of lines and fills, made
// from nothing. Each pixel is told which of four colours it takes.
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"

class KEffectPattern : public KEffectPosition {
public:
    enum Type : int32_t { kTriangles = 0, kGrid, kHoneycomb };
    enum Repeat : int32_t { kInfinite = 0, kNumbered };
    enum Fill : int32_t { kSolid = 0, kCheckers };
    enum Paint : int32_t { kClear = 0, kLine, kFill1, kFill2 };

    KEffectPattern()
    {
        inputList.AddPage("Pattern");
        inputList.AddMultiButton(&type, kGrid, "Type", "Type"_id, 0,
                                 {"Triangles", "Grid", "Honeycomb", "[end]"});
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 1);
        inputList.AddSlider(&size, 0.1f, "Size", "Size"_id, 0, 0.0, 1.0);
        inputList.AddAngle(&angleX, 0.0f, "Rotation X", "AngX"_id, 0, 1);
        inputList.AddAngle(&angleY, 0.0f, "Rotation Y", "AngY"_id, 0, 1);
        inputList.AddAngle(&angleZ, 0.0f, "Rotation", "AngZ"_id, 0, 1);
        inputList.AddSlider(&aspect, 1.0f, "Aspect", "Aspt"_id, 0, 0.001, 5.0);
        inputList.AddSlider(&thickness, 0.1f, "Thickness", "Thic"_id, 0, 0.0, 1.0);
        inputList.AddScrew(&offset, 0.0f, "Offset", "Offs"_id, 0, 0.0, 1.0);
        inputList.AddColor(&color, {1.0f, 1.0f, 1.0f, 1.0f}, "Color", "Colo"_id, 0);
        inputList.AddMultiButton(&repeat, kInfinite, "Repeat", "Rept"_id, kFlagNotify,
                                 {"Ad infinitum", "Numbered", "[end]"});
        inputList.AddSlider(&count, 2, "Count", "RepC"_id, kFlagHidden, 1, 16);
        inputList.AddMultiButton(&fill, kSolid, "Fill", "Fill"_id, 0,
                                 {"Solid", "Checkers", "[end]"});
        inputList.AddColor(&fill1, {0.2f, 0.4f, 0.6f, 1.0f}, "Color Fill 1", "Cl00"_id, 0);
        inputList.AddColor(&fill2, {0.2f, 0.6f, 0.4f, 1.0f}, "Color Fill 2", "Cl10"_id, 0);
    }

    bool HasFeature(int32_t code) override { return code == kFeatureSource; }

    // Count only means something for a numbered block.
    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "Rept"_id)
            list.Add(kMessageVisible, "RepC"_id,
                                   value.intValue == kNumbered ? 1.0f : 0.0f);
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        halfThickness = thickness * 0.5f;
        const float s = std::max(size, 1e-06f);
        // scale(1/Size, Aspect/Size) . rotate(X, then Y, then Z) . translate(-Center),
        // the plane taken at z 0 and seen along z.
        const double cx = std::cos(angleX), sx = std::sin(angleX);
        const double cy = std::cos(angleY), sy = std::sin(angleY);
        const double cz = std::cos(angleZ), sz = std::sin(angleZ);
        const double r00 = cz * cy, r01 = cz * sy * sx - sz * cx;
        const double r10 = sz * cy, r11 = sz * sy * sx + cz * cx;
        const double kx = 1.0 / s, ky = static_cast<double>(aspect) / s;
        m00 = static_cast<float>(kx * r00);
        m01 = static_cast<float>(kx * r01);
        m10 = static_cast<float>(ky * r10);
        m11 = static_cast<float>(ky * r11);
        m02 = -(m00 * center.x + m01 * center.y);
        m12 = -(m10 * center.x + m11 * center.y);
        const KColor* colours[4] = {nullptr, &color, &fill1, &fill2};
        for (int i = 1; i < 4; ++i)
            for (int c = 0; c < 4; ++c) {
                paintF[i][c] = (&colours[i]->r)[c];
                paintI[i][c] = KFloatToInt(paintF[i][c]);
            }
        return true;
    }

    void ProcessPosition(KPositionPixel& out, const KPositionPixel&,
                         const KPosition& p) override
    {
        const float* c = paintF[PaintAt(p)];
        out.r = c[0];
        out.g = c[1];
        out.b = c[2];
        out.a = c[3];
    }

    void ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt&,
                            const KPosition& p) override
    {
        const uint32_t* c = paintI[PaintAt(p)];
        out.r = c[0];
        out.g = c[1];
        out.b = c[2];
        out.a = c[3];
    }

private:
    // Lattice directions of the triangular patterns and their perpendiculars.
    static constexpr float kDir[3][2] = {{0.0f, -1.0f}, {0.8660254f, 0.5f}, {-0.8660254f, 0.5f}};
    static constexpr float kPerp[3][2] = {{1.0f, 0.0f}, {-0.5f, 0.8660254f}, {-0.5f, -0.8660254f}};

    // Whole part and the fraction in [0, 1).
    static int64_t Cell(float c, float& fraction)
    {
        const float f = std::floor(c);
        fraction = c - f;
        return static_cast<int64_t>(f);
    }

    bool Inside(float fraction) const
    {
        return fraction > halfThickness && fraction < 1.0f - halfThickness;
    }

    // Offset slides the lattice along its own x by that part of a cell.
    int PaintAt(const KPosition& p) const
    {
        const float qx = m00 * p.x + m01 * p.y + m02 + offset;
        const float qy = m10 * p.x + m11 * p.y + m12;
        switch (type) {
        case kGrid: {
            float fx, fy;
            const int64_t ix = Cell(qx, fx), iy = Cell(qy, fy);
            if (repeat == kNumbered && (ix < 0 || iy < 0 || ix >= count || iy >= count))
                return kClear;
            if (!Inside(fx) || !Inside(fy)) return kLine;
            return fill == kCheckers && ((ix + iy) & 1) ? kFill2 : kFill1;
        }
        case kTriangles: {
            int64_t parity = 0;
            bool inside = true;
            for (const auto& d : kDir) {
                float f;
                parity += Cell(d[0] * qx + d[1] * qy - 0.33333334f, f);
                inside = inside && Inside(f);
            }
            if (!inside) return kLine;
            return fill == kCheckers && (parity & 1) ? kFill2 : kFill1;
        }
        case kHoneycomb: {
            // Edges lie on the lattice lines, one edge's length (2/sqrt 3 of the
            // line spacing) of every three along a line. The lattice origin is
            // a cell's centre, so even lines start their edges half a period
            // later than odd ones.
            for (int i = 0; i < 3; ++i) {
                float f;
                const float c = kDir[i][0] * qx + kDir[i][1] * qy;
                const int64_t n = Cell(c, f);
                if (Inside(f)) continue;
                const int64_t row = f < 0.5f ? n : n + 1;
                const float along = std::fabs((kPerp[i][0] * qx + kPerp[i][1] * qy) * 0.8660254f);
                const float perpendicular = along + ((row & 1) ? 0.5f : 2.0f);
                if (static_cast<int64_t>(perpendicular) % 3 == 0) return kLine;
            }
            return kFill2;
        }
        default:
            return kClear;
        }
    }

    int32_t type = kGrid;
    KPoint2 center;
    float size = 0.1f, angleX = 0.0f, angleY = 0.0f, angleZ = 0.0f, aspect = 1.0f;
    float thickness = 0.1f, offset = 0.0f;
    KColor color;
    int32_t repeat = kInfinite, count = 2, fill = kSolid;
    KColor fill1, fill2;

    // Set in Start.
    float halfThickness = 0.05f;
    float m00 = 1.0f, m01 = 0.0f, m02 = 0.0f, m10 = 0.0f, m11 = 1.0f, m12 = 0.0f;
    float paintF[4][4] = {};
    uint32_t paintI[4][4] = {};
};

ZV_TOOL(KEffectPattern, ZV_Pattern);
