// Shade By Sample: looks up each pixel's surface normal in a shading map (a
// lit sphere, or a latitude-longitude environment) and multiplies the colour
// by what it finds there.
#include <algorithm>
#include <cmath>
#include <cstring>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectShadeBySample : public KEffectPosition {
public:
    enum MapType : int32_t { kSphere = 0, kSpherical };

    KEffectShadeBySample()
    {
        inputList.AddPage("Shade By Sample");
        inputList.AddMultiButton(&mapType, kSphere, "Map Type", "TiAd"_id, 0,
                                 {"Sphere", "Spherical Map", "[end]"});
        inputList.AddTransform(&rotation, KTransformValue{}, "Rotation", "Rota"_id, 0, 4);
        inputList.AddImageInput(&map, "Shading Map", 2, kFlagMain);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        if (!input || !map || map->width < 1 || map->height < 1) return false;
        // The process hands the auxiliary channels over in the image's own order.
        normalAt[0] = normalAt[1] = normalAt[2] = -1;
        const int32_t n = std::min(input->AuxCount(), kPositionExtraFloats);
        for (int32_t i = 0; i < n; ++i) {
            const int32_t channel = input->AuxChannel(i);
            if (channel >= kNormalX && channel <= kNormalZ) normalAt[channel - kNormalX] = i;
        }
        if (normalAt[0] < 0 || normalAt[1] < 0 || normalAt[2] < 0) return false;
        extraCount = n;
        BuildInverseRotation();
        mapWidth = static_cast<float>(map->width);
        mapHeight = static_cast<float>(map->height);
        return true;
    }

    void ProcessPosition(KPositionPixel& out, const KPositionPixel& in,
                         const KPosition&) override
    {
        KPixelF m;
        Lookup(in, m);
        CopyExtras(out, in);
        out.r = in.r * m.r;
        out.g = in.g * m.g;
        out.b = in.b * m.b;
        out.a = in.a;
    }

    void ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt& in,
                            const KPosition&) override
    {
        KPixel m;
        Lookup(in, m);
        CopyExtras(out, in);
        out.r = KScaleInt(in.r, m.r);
        out.g = KScaleInt(in.g, m.g);
        out.b = KScaleInt(in.b, m.b);
        out.a = in.a;
    }

private:
    static constexpr int32_t kNormalX = 7, kNormalZ = 9;  // the image's normal channels

    template <class P> void CopyExtras(P& out, const P& in) const
    {
        std::memcpy(out.extra, in.extra, sizeof(float) * extraCount);
    }

    // The rotation as the transform orders it; its inverse (the transpose)
    // turns the normals.
    void BuildInverseRotation()
    {
        double m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        auto apply = [&m](int axis, double angle) {
            const double c = std::cos(angle), s = std::sin(angle);
            const int a = (axis + 1) % 3, b = (axis + 2) % 3;
            double r[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
            r[a][a] = c;
            r[a][b] = -s;
            r[b][a] = s;
            r[b][b] = c;
            double t[3][3];
            for (int i = 0; i < 3; ++i)
                for (int j = 0; j < 3; ++j)
                    t[i][j] = r[i][0] * m[0][j] + r[i][1] * m[1][j] + r[i][2] * m[2][j];
            std::memcpy(m, t, sizeof m);
        };
        static const int orders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2},
                                         {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
        const float angles[3] = {rotation.rotateX, rotation.rotateY, rotation.rotateZ};
        const int* order = orders[std::clamp(rotation.rotationOrder, 0, 5)];
        for (int i = 0; i < 3; ++i) apply(order[i], angles[order[i]]);
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) inverse[i][j] = static_cast<float>(m[j][i]);
    }

    // Sphere: the normal's x and y address the map, up at the top row.
    // Spherical Map: longitude around y from +z across, latitude down from the top.
    template <class P, class Pixel> void Lookup(const P& in, Pixel& m) const
    {
        const float x = in.extra[normalAt[0]], y = in.extra[normalAt[1]],
                    z = in.extra[normalAt[2]];
        float nx = inverse[0][0] * x + inverse[0][1] * y + inverse[0][2] * z;
        float ny = inverse[1][0] * x + inverse[1][1] * y + inverse[1][2] * z;
        float nz = inverse[2][0] * x + inverse[2][1] * y + inverse[2][2] * z;
        const float length = std::sqrt(nx * nx + ny * ny + nz * nz);
        if (length > 0.0f) {
            nx /= length;
            ny /= length;
            nz /= length;
        }
        if (mapType == kSpherical) {
            const float u = std::atan2(nx, nz) * 0.15915494f + 0.5f;
            const float v = 0.5f - std::asin(std::clamp(ny, -1.0f, 1.0f)) * 0.31830987f;
            map->SamplePixel(u * mapWidth - 0.5f, v * (mapHeight - 1.0f), m, kEdgeWrap);
        } else {
            const float u = (nx + 1.0f) * 0.5f, v = (1.0f - ny) * 0.5f;
            map->SamplePixel(u * (mapWidth - 1.0f), v * (mapHeight - 1.0f), m, kEdgeDuplicate);
        }
    }

    int32_t mapType = kSphere;
    KTransformValue rotation;
    KImage* map = nullptr;

    // Set in Start.
    int32_t normalAt[3] = {-1, -1, -1};
    int32_t extraCount = 0;
    float inverse[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    float mapWidth = 1.0f, mapHeight = 1.0f;
};

ZV_TOOL(KEffectShadeBySample, ZV_ShadeBySample);
