// Colour-space conversion in place, always through RGB; alpha is untouched.
// Channels hold the components in order (H, L, S for HLS; H, S, V for HSV).
//
// Values as float images store them, signed where the space is; RGB values
// go in as they are (no gamma):
//   HLS, HSV  hue 0..1 (red 0, green 1/3, blue 2/3), the other two 0..1
//   YUV       Y 0..1, U +-0.436, V +-0.615 (the analogue PAL/NTSC matrix)
//   YIQ       Y 0..1, I +-0.5959, Q +-0.5227
//   CMY       1 - R, 1 - G, 1 - B
//   XYZ       the linear sRGB matrix, D65: white is 0.9505, 1, 1.0888
//   LAB       from that XYZ and white: L / 100, a / 256, b / 256, so the
//             RGB cube's a and b stay within +-0.43
// Integer images hold every space in 0..65535, rounded to nearest and
// clipped: a component v is stored as (v - low) / (high - low) * 65535, with
// low..high its range over the RGB unit cube. Y, L, hue, HLS and HSV thus
// store as they are; U, V, I and Q span the ranges above with neutral at
// mid-code; X and Z are divided by the white's X and Z; a and b (as scaled
// above) are offset by 0.5.
#include "host/image.h"
#include "host/threads.h"
#include <algorithm>
#include <cmath>

namespace host {

namespace {

using Convert = void (*)(const double in[3], double out[3]);

struct Matrix {
    double m[3][3];
    void Apply(const double in[3], double out[3]) const
    {
        for (int r = 0; r < 3; ++r) out[r] = m[r][0] * in[0] + m[r][1] * in[1] + m[r][2] * in[2];
    }
    Matrix Inverse() const
    {
        const auto& a = m;
        const double det = a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) -
                           a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
                           a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
        Matrix r;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                // Cofactor of (j, i) over the determinant.
                const int r0 = (j + 1) % 3, r1 = (j + 2) % 3, c0 = (i + 1) % 3, c1 = (i + 2) % 3;
                r.m[i][j] = (a[r0][c0] * a[r1][c1] - a[r0][c1] * a[r1][c0]) / det;
            }
        return r;
    }
};

constexpr Matrix kYUV{{{0.299, 0.587, 0.114}, {-0.14713, -0.28886, 0.436}, {0.615, -0.51499, -0.10001}}};
constexpr Matrix kYIQ{{{0.299, 0.587, 0.114}, {0.5959, -0.2746, -0.3213}, {0.2115, -0.5227, 0.3112}}};
constexpr Matrix kXYZ{{{0.4124564, 0.3575761, 0.1804375},
                       {0.2126729, 0.7151522, 0.0721750},
                       {0.0193339, 0.1191920, 0.9503041}}};

// The exact inverses keep round trips at double precision, which the
// published four-digit inverse coefficients would not.
const Matrix& InvYUV() { static const Matrix m = kYUV.Inverse(); return m; }
const Matrix& InvYIQ() { static const Matrix m = kYIQ.Inverse(); return m; }
const Matrix& InvXYZ() { static const Matrix m = kXYZ.Inverse(); return m; }

double White(int row) { return kXYZ.m[row][0] + kXYZ.m[row][1] + kXYZ.m[row][2]; }

void Identity(const double in[3], double out[3]) { out[0] = in[0]; out[1] = in[1]; out[2] = in[2]; }

// Hue 0..1 of a colour with chroma c above 0.
double Hue(const double p[3], double mx, double c)
{
    double h;
    if (mx == p[0]) h = (p[1] - p[2]) / c;
    else if (mx == p[1]) h = (p[2] - p[0]) / c + 2.0;
    else h = (p[0] - p[1]) / c + 4.0;
    h /= 6.0;
    return h < 0.0 ? h + 1.0 : h;
}

void RGBToHSV(const double p[3], double out[3])
{
    const double mx = std::max({p[0], p[1], p[2]}), mn = std::min({p[0], p[1], p[2]});
    const double c = mx - mn;
    out[0] = c > 0.0 ? Hue(p, mx, c) : 0.0;
    out[1] = mx > 0.0 ? c / mx : 0.0;
    out[2] = mx;
}

void HSVToRGB(const double p[3], double out[3])
{
    const double h = (p[0] - std::floor(p[0])) * 6.0, s = p[1], v = p[2];
    const int sector = std::min(static_cast<int>(h), 5);
    const double f = h - sector;
    const double a = v * (1.0 - s), b = v * (1.0 - s * f), c = v * (1.0 - s * (1.0 - f));
    switch (sector) {
    case 0: out[0] = v; out[1] = c; out[2] = a; break;
    case 1: out[0] = b; out[1] = v; out[2] = a; break;
    case 2: out[0] = a; out[1] = v; out[2] = c; break;
    case 3: out[0] = a; out[1] = b; out[2] = v; break;
    case 4: out[0] = c; out[1] = a; out[2] = v; break;
    default: out[0] = v; out[1] = a; out[2] = b; break;
    }
}

void RGBToHLS(const double p[3], double out[3])
{
    const double mx = std::max({p[0], p[1], p[2]}), mn = std::min({p[0], p[1], p[2]});
    const double c = mx - mn, l = 0.5 * (mx + mn);
    const double den = l <= 0.5 ? mx + mn : 2.0 - mx - mn;
    out[0] = c > 0.0 ? Hue(p, mx, c) : 0.0;
    out[1] = l;
    out[2] = c > 0.0 && den > 0.0 ? c / den : 0.0;
}

double HLSChannel(double m1, double m2, double h)
{
    h -= std::floor(h);
    if (h < 1.0 / 6.0) return m1 + (m2 - m1) * h * 6.0;
    if (h < 0.5) return m2;
    if (h < 2.0 / 3.0) return m1 + (m2 - m1) * (2.0 / 3.0 - h) * 6.0;
    return m1;
}

void HLSToRGB(const double p[3], double out[3])
{
    const double h = p[0], l = p[1], s = p[2];
    const double m2 = l <= 0.5 ? l * (1.0 + s) : l + s - l * s, m1 = 2.0 * l - m2;
    out[0] = HLSChannel(m1, m2, h + 1.0 / 3.0);
    out[1] = HLSChannel(m1, m2, h);
    out[2] = HLSChannel(m1, m2, h - 1.0 / 3.0);
}

void RGBToYUV(const double p[3], double out[3]) { kYUV.Apply(p, out); }
void YUVToRGB(const double p[3], double out[3]) { InvYUV().Apply(p, out); }
void RGBToYIQ(const double p[3], double out[3]) { kYIQ.Apply(p, out); }
void YIQToRGB(const double p[3], double out[3]) { InvYIQ().Apply(p, out); }
void RGBToXYZ(const double p[3], double out[3]) { kXYZ.Apply(p, out); }
void XYZToRGB(const double p[3], double out[3]) { InvXYZ().Apply(p, out); }

void CMYSwap(const double p[3], double out[3])
{
    out[0] = 1.0 - p[0]; out[1] = 1.0 - p[1]; out[2] = 1.0 - p[2];
}

constexpr double kDelta = 6.0 / 29.0;
constexpr double kLabScale = 1.0 / 256.0;

double LabF(double t)
{
    return t > kDelta * kDelta * kDelta ? std::cbrt(t) : t / (3.0 * kDelta * kDelta) + 4.0 / 29.0;
}

double LabFInverse(double f)
{
    return f > kDelta ? f * f * f : 3.0 * kDelta * kDelta * (f - 4.0 / 29.0);
}

void RGBToLAB(const double p[3], double out[3])
{
    double xyz[3];
    kXYZ.Apply(p, xyz);
    const double fx = LabF(xyz[0] / White(0)), fy = LabF(xyz[1] / White(1)), fz = LabF(xyz[2] / White(2));
    out[0] = (116.0 * fy - 16.0) / 100.0;
    out[1] = 500.0 * (fx - fy) * kLabScale;
    out[2] = 200.0 * (fy - fz) * kLabScale;
}

void LABToRGB(const double p[3], double out[3])
{
    const double fy = (p[0] * 100.0 + 16.0) / 116.0;
    const double fx = fy + p[1] / kLabScale / 500.0, fz = fy - p[2] / kLabScale / 200.0;
    const double xyz[3] = {LabFInverse(fx) * White(0), LabFInverse(fy) * White(1), LabFInverse(fz) * White(2)};
    InvXYZ().Apply(xyz, out);
}

struct Space {
    Convert toRGB, fromRGB;
    double low[3], range[3];  // the integer encoding: v = low + range * code / 65535
};

// The range of each row of a matrix over the RGB unit cube.
Space MatrixSpace(Convert to, Convert from, const Matrix& m)
{
    Space s{to, from, {}, {}};
    for (int r = 0; r < 3; ++r) {
        double lo = 0.0, hi = 0.0;
        for (int c = 0; c < 3; ++c) (m.m[r][c] < 0.0 ? lo : hi) += m.m[r][c];
        s.low[r] = lo;
        s.range[r] = hi - lo;
    }
    return s;
}

const Space& SpaceOf(ColorSpace cs)
{
    static const Space spaces[8] = {
        {Identity, Identity, {0, 0, 0}, {1, 1, 1}},
        {HLSToRGB, RGBToHLS, {0, 0, 0}, {1, 1, 1}},
        MatrixSpace(YUVToRGB, RGBToYUV, kYUV),
        MatrixSpace(YIQToRGB, RGBToYIQ, kYIQ),
        {CMYSwap, CMYSwap, {0, 0, 0}, {1, 1, 1}},
        {HSVToRGB, RGBToHSV, {0, 0, 0}, {1, 1, 1}},
        MatrixSpace(XYZToRGB, RGBToXYZ, kXYZ),
        {LABToRGB, RGBToLAB, {0, -0.5, -0.5}, {1, 1, 1}},
    };
    return spaces[cs >= CS_RGB && cs <= CS_LAB ? cs : CS_RGB];
}

}  // namespace

void Image::CSConvert(ColorSpace from, ColorSpace to)
{
    if (from == to || Width() <= 0 || Height() <= 0) return;
    const Space& a = SpaceOf(from);
    const Space& b = SpaceOf(to);
    const int w = Width();
    if (IsFloat()) {
        DoMultiProcess(Height(), [&](int y) {
            float* p = RowF(y);
            for (int x = 0; x < w; ++x, p += 4) {
                const double in[3] = {p[0], p[1], p[2]};
                double rgb[3], out[3];
                a.toRGB(in, rgb);
                b.fromRGB(rgb, out);
                p[0] = static_cast<float>(out[0]);
                p[1] = static_cast<float>(out[1]);
                p[2] = static_cast<float>(out[2]);
            }
        });
        return;
    }
    double decode[3], encode[3];
    for (int c = 0; c < 3; ++c) {
        decode[c] = a.range[c] / 65535.0;
        encode[c] = 65535.0 / b.range[c];
    }
    DoMultiProcess(Height(), [&](int y) {
        uint16_t* p = RowW(y);
        for (int x = 0; x < w; ++x, p += 4) {
            double in[3], rgb[3], out[3];
            for (int c = 0; c < 3; ++c) in[c] = a.low[c] + p[c] * decode[c];
            a.toRGB(in, rgb);
            // Integer RGB is 0..1: codes outside the gamut clip here.
            for (int c = 0; c < 3; ++c) rgb[c] = rgb[c] < 0.0 ? 0.0 : (rgb[c] > 1.0 ? 1.0 : rgb[c]);
            b.fromRGB(rgb, out);
            for (int c = 0; c < 3; ++c) {
                // Truncation after the clip is the rounding: the value is not negative.
                const double v = (out[c] - b.low[c]) * encode[c] + 0.5;
                p[c] = static_cast<uint16_t>(v < 0.0 ? 0.0 : (v > 65535.0 ? 65535.0 : v));
            }
        }
    });
}

}  // namespace host
