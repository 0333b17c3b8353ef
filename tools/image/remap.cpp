// Remap: converts between a light probe (mirror ball) and a spherical
// (latitude-longitude) picture. The input type names what comes in; equal
// types leave the picture alone.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"

class KEffectRemap : public KEffectWarp {
public:
    KEffectRemap()
    {
        inputList.AddPage("Shuffle");
        inputList.AddMultiButton(&typeInput, 0, "Type Input", "Inpu"_id, 0,
                                 {"Probe", "Spherical", "[end]"});
        inputList.AddMultiButton(&typeOutput, 1, "Type Output", "Outp"_id, 0,
                                 {"Probe", "Spherical", "[end]"});
        inputList.AddMultiButton(&rotationOrder, 0, "Rotation Order", "RotO"_id, 0,
                                 {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX", "[end]"});
        inputList.AddAngle(&angleX, 0.0f, "Angle X", "AngX"_id, 0, 1);
        inputList.AddAngle(&angleY, 0.0f, "Angle Y", "AngY"_id, 0, 1);
        inputList.AddAngle(&angleZ, 0.0f, "Angle Z", "AngZ"_id, 0, 1);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectWarp::Start(input, output, extras);
        aspect = pictureAspect;  // rows run to 1 / picture aspect
        fromProbe = typeInput == 0;
        // The turn of the spherical input, one axis after the other in the
        // listed order, each by the angle as it arrives.
        static const int kOrders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2},
                                          {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
        const int* order = kOrders[std::clamp(rotationOrder, 0, 5)];
        const float angles[3] = {angleX, angleY, angleZ};
        Identity(turn);
        for (int i = 0; i < 3; ++i) {
            float step[3][3];
            AxisTurn(order[i], angles[order[i]], step);
            float next[3][3];
            for (int r = 0; r < 3; ++r)
                for (int c = 0; c < 3; ++c)
                    next[r][c] = step[r][0] * turn[0][c] + step[r][1] * turn[1][c] +
                                 step[r][2] * turn[2][c];
            std::copy(&next[0][0], &next[0][0] + 9, &turn[0][0]);
        }
        return typeInput != typeOutput;
    }

    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        if (typeInput == typeOutput) {
            out = in;
            return true;
        }
        constexpr float kPi = 3.14159265f;
        float x, y;
        if (fromProbe) {
            // Direction of the latitude-longitude position, then its place on the ball.
            const float lat = std::sin((2.0f * in.y * aspect - 1.0f) * 0.5f * kPi);
            float lon = 2.0f * in.x - 1.5f;
            while (lon < 1.0f) lon += 2.0f;
            const float r = std::sqrt(std::max(0.0f, 1.0f - lat * lat));
            const float vx = std::cos(-lon * kPi) * r, vy = lat, vz = std::sin(-lon * kPi) * r;
            const float angle = std::acos(std::clamp(vz, -1.0f, 1.0f));
            const float flat = std::sqrt(vx * vx + vy * vy);
            float dir = flat > 0.0f ? std::acos(std::clamp(vx / flat, -1.0f, 1.0f)) : 0.0f;
            if (!(vy > 0.0f)) dir = -dir;
            const float radius = std::sin(angle * 0.5f);
            x = radius * std::cos(dir);
            y = radius * std::sin(dir);
        } else {
            // Direction of the ball position (radius sin(angle / 2)), then its
            // longitude and latitude.
            const float bx = 2.0f * in.x - 1.0f, by = 2.0f * in.y * aspect - 1.0f;
            const float r2 = bx * bx + by * by;
            if (r2 > 1.0f) return false;
            // sin(2 asin r) / r and cos(2 asin r), without the division.
            const float k = 2.0f * std::sqrt(1.0f - r2);
            const float dx = bx * k, dy = by * k, dz = 1.0f - 2.0f * r2;
            const float vx = turn[0][0] * dx + turn[0][1] * dy + turn[0][2] * dz;
            const float vy = turn[1][0] * dx + turn[1][1] * dy + turn[1][2] * dz;
            const float vz = turn[2][0] * dx + turn[2][1] * dy + turn[2][2] * dz;
            x = 0.5f - std::atan2(vz, vx) / kPi;
            while (x > 1.0f) x -= 2.0f;
            y = 2.0f * std::asin(std::clamp(vy, -1.0f, 1.0f)) / kPi;
        }
        // Written whole: the process reads the pair back as one value.
        out = KPosition{(x + 1.0f) * 0.5f, (y + 1.0f) * 0.5f / aspect};
        return true;
    }

private:
    static void Identity(float m[3][3])
    {
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c) m[r][c] = r == c ? 1.0f : 0.0f;
    }
    // A turn about axis 0 (x), 1 (y) or 2 (z), right-handed.
    static void AxisTurn(int axisIndex, float a, float m[3][3])
    {
        Identity(m);
        const float c = std::cos(a), s = std::sin(a);
        const int i = (axisIndex + 1) % 3, j = (axisIndex + 2) % 3;
        m[i][i] = c;
        m[i][j] = -s;
        m[j][i] = s;
        m[j][j] = c;
    }

    int32_t typeInput = 0, typeOutput = 1, rotationOrder = 0;
    float angleX = 0.0f, angleY = 0.0f, angleZ = 0.0f;
    float aspect = 1.0f;
    bool fromProbe = true;
    float turn[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
};

ZV_TOOL(KEffectRemap, ZV_Remap);
