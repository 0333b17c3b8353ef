// Small vectors and matrices shared by warps, shapes and 3D tools.
// Matrix3f is row-major and maps (x, y, 1); its building steps apply in the
// order they are called: m.Translate(a).Rotate(b) moves a point by a, then turns it.
#pragma once
#include <cmath>
#include <utility>
#include "framework/parameter.h"

struct Vector2f {
    float x = 0.0f, y = 0.0f;
    Vector2f operator+(Vector2f o) const { return {x + o.x, y + o.y}; }
    Vector2f operator-(Vector2f o) const { return {x - o.x, y - o.y}; }
    Vector2f operator*(float k) const { return {x * k, y * k}; }
    float Dot(Vector2f o) const { return x * o.x + y * o.y; }
    float Length() const { return std::sqrt(x * x + y * y); }
};

struct Vector3f {
    float x = 0.0f, y = 0.0f, z = 0.0f;
};

struct Matrix3f {
    float m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

    static Matrix3f Identity() { return {}; }

    // this = a * b: b applies first.
    static Matrix3f Product(const Matrix3f& a, const Matrix3f& b)
    {
        Matrix3f r;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                r.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j];
        return r;
    }
    // Applies `step` after what the matrix already does.
    Matrix3f& Then(const Matrix3f& step)
    {
        *this = Product(step, *this);
        return *this;
    }
    Matrix3f& Translate(float tx, float ty)
    {
        Matrix3f t;
        t.m[0][2] = tx;
        t.m[1][2] = ty;
        return Then(t);
    }
    // Rows (cos a, -sin a), (sin a, cos a).
    Matrix3f& Rotate(float a)
    {
        Matrix3f r;
        const float c = std::cos(a), s = std::sin(a);
        r.m[0][0] = c;
        r.m[0][1] = -s;
        r.m[1][0] = s;
        r.m[1][1] = c;
        return Then(r);
    }
    Matrix3f& Scale(float sx, float sy)
    {
        Matrix3f s;
        s.m[0][0] = sx;
        s.m[1][1] = sy;
        return Then(s);
    }
    // The inverse; a singular matrix gives the identity.
    Matrix3f Inverted() const
    {
        const float (&a)[3][3] = m;
        const float c00 = a[1][1] * a[2][2] - a[1][2] * a[2][1];
        const float c01 = a[1][2] * a[2][0] - a[1][0] * a[2][2];
        const float c02 = a[1][0] * a[2][1] - a[1][1] * a[2][0];
        const float det = a[0][0] * c00 + a[0][1] * c01 + a[0][2] * c02;
        if (det == 0.0f) return {};
        const float k = 1.0f / det;
        Matrix3f r;
        r.m[0][0] = c00 * k;
        r.m[0][1] = (a[0][2] * a[2][1] - a[0][1] * a[2][2]) * k;
        r.m[0][2] = (a[0][1] * a[1][2] - a[0][2] * a[1][1]) * k;
        r.m[1][0] = c01 * k;
        r.m[1][1] = (a[0][0] * a[2][2] - a[0][2] * a[2][0]) * k;
        r.m[1][2] = (a[0][2] * a[1][0] - a[0][0] * a[1][2]) * k;
        r.m[2][0] = c02 * k;
        r.m[2][1] = (a[0][1] * a[2][0] - a[0][0] * a[2][1]) * k;
        r.m[2][2] = (a[0][0] * a[1][1] - a[0][1] * a[1][0]) * k;
        return r;
    }
    // Maps a point, dividing by the third component when it is not 0.
    Vector2f Apply(Vector2f p) const
    {
        const float x = m[0][0] * p.x + m[0][1] * p.y + m[0][2];
        const float y = m[1][0] * p.x + m[1][1] * p.y + m[1][2];
        const float w = m[2][0] * p.x + m[2][1] * p.y + m[2][2];
        if (w != 0.0f && w != 1.0f) return {x / w, y / w};
        return {x, y};
    }
};

// A matrix that acts only on the side of a line where its normal points, or
// everywhere; the other side stays where it is.
struct HalfPlaneMap {
    Matrix3f matrix;
    Vector2f origin, normal;
    bool everywhere = false;

    Vector2f Apply(Vector2f p) const
    {
        if (!everywhere && (p - origin).Dot(normal) <= 0.0f) return p;
        return matrix.Apply(p);
    }
};

// Row-major 4 by 4, its translation in the last column, applied to (x, y, z, 1).
// As with Matrix3f, building steps apply in the order they are called.
struct Matrix4f {
    float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    static Matrix4f Identity() { return {}; }
    static Matrix4f Translation(float tx, float ty, float tz)
    {
        Matrix4f t;
        t.m[0][3] = tx;
        t.m[1][3] = ty;
        t.m[2][3] = tz;
        return t;
    }

    // a * b: b applies first.
    static Matrix4f Product(const Matrix4f& a, const Matrix4f& b)
    {
        Matrix4f r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                r.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j] +
                            a.m[i][3] * b.m[3][j];
        return r;
    }
    Matrix4f& Then(const Matrix4f& step)
    {
        *this = Product(step, *this);
        return *this;
    }
    Matrix4f& Translate(float tx, float ty, float tz) { return Then(Translation(tx, ty, tz)); }
    Matrix4f& Scale(float sx, float sy, float sz)
    {
        Matrix4f s;
        s.m[0][0] = sx;
        s.m[1][1] = sy;
        s.m[2][2] = sz;
        return Then(s);
    }
    // A turn about axis 0 (x), 1 (y) or 2 (z), counter-clockwise as seen from
    // the positive end of the axis.
    Matrix4f& Rotate(int axis, float angle)
    {
        Matrix4f r;
        const int a = (axis + 1) % 3, b = (axis + 2) % 3;
        const float c = std::cos(angle), s = std::sin(angle);
        r.m[a][a] = c;
        r.m[a][b] = -s;
        r.m[b][a] = s;
        r.m[b][b] = c;
        return Then(r);
    }
    // The inverse, by elimination in double; a singular matrix gives the identity.
    Matrix4f Inverted() const
    {
        double a[4][8];
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 8; ++j) a[i][j] = j < 4 ? m[i][j] : (j - 4 == i ? 1.0 : 0.0);
        for (int c = 0; c < 4; ++c) {
            int pivot = c;
            for (int r = c + 1; r < 4; ++r)
                if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) pivot = r;
            if (a[pivot][c] == 0.0) return {};
            for (int j = 0; j < 8; ++j) std::swap(a[c][j], a[pivot][j]);
            const double k = 1.0 / a[c][c];
            for (int j = 0; j < 8; ++j) a[c][j] *= k;
            for (int r = 0; r < 4; ++r)
                if (r != c && a[r][c] != 0.0) {
                    const double f = a[r][c];
                    for (int j = 0; j < 8; ++j) a[r][j] -= f * a[c][j];
                }
        }
        Matrix4f r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) r.m[i][j] = static_cast<float>(a[i][j + 4]);
        return r;
    }
    bool IsIdentity() const
    {
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                if (m[i][j] != (i == j ? 1.0f : 0.0f)) return false;
        return true;
    }
    // Maps a point of the plane z = 0, ignoring perspective.
    Vector2f Apply(Vector2f p) const
    {
        return {m[0][0] * p.x + m[0][1] * p.y + m[0][3], m[1][0] * p.x + m[1][1] * p.y + m[1][3]};
    }
    Vector3f Apply(Vector3f p) const
    {
        return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
                m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
                m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
    }

    // A transform control's matrix: scale, then the three turns in its
    // rotation order ("XYZ" turns about x first), then the move. `amount`
    // weakens or strengthens all three, 0 giving the identity; with the scale
    // locked, x scale stands for all three axes.
    static Matrix4f Of(const KTransformValue& t, float amount = 1.0f)
    {
        static const int kOrders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
        const float sx = t.scaleX, sy = t.scaleLock ? t.scaleX : t.scaleY, sz = t.scaleLock ? t.scaleX : t.scaleZ;
        const float turn[3] = {t.rotateX * amount, t.rotateY * amount, t.rotateZ * amount};
        Matrix4f r;
        r.Scale(1.0f + (sx - 1.0f) * amount, 1.0f + (sy - 1.0f) * amount, 1.0f + (sz - 1.0f) * amount);
        const int(&order)[3] = kOrders[t.rotationOrder >= 0 && t.rotationOrder < 6 ? t.rotationOrder : 0];
        for (int axis : order)
            if (turn[axis] != 0.0f) r.Rotate(axis, turn[axis]);
        return r.Translate(t.translateX * amount, t.translateY * amount, t.translateZ * amount);
    }
};
