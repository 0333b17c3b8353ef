// Sub-pixel and area reads of the host image.
//
// Point samples are bilinear at 16.16 fixed point with pixel centres on whole
// numbers. Area samples treat the image as piecewise constant, each pixel
// covering [x - 0.5, x + 0.5], and return the exact mean over a box. Both read
// the other depth's overload through the 0..65535 <-> 0..1 scale.
#include "host/image.h"
#include <algorithm>
#include <cmath>

namespace host {

namespace {

// A pixel index by edge mode; -1 when a black edge puts it outside.
inline int Resolve(int v, int n, Edge edge)
{
    if (v >= 0 && v < n) return v;
    if (edge == EdgeWrap) {
        int r = v % n;
        return r < 0 ? r + n : r;
    }
    if (edge == EdgeDuplicate) return v < 0 ? 0 : n - 1;
    return -1;
}

struct Taps {
    int x0, x1, y0, y1;  // resolved indices, -1 for a black outside
    uint32_t fx, fy;     // 16-bit fractions
};

inline Taps Locate(int32_t x, int32_t y, int w, int h, Edge edge)
{
    const int ix = x >> 16, iy = y >> 16;  // arithmetic shift floors
    return {Resolve(ix, w, edge), Resolve(ix + 1, w, edge), Resolve(iy, h, edge),
            Resolve(iy + 1, h, edge), static_cast<uint32_t>(x) & 0xFFFFu,
            static_cast<uint32_t>(y) & 0xFFFFu};
}

template <typename T>
inline const T* Tap(const T* row, int x)
{
    return row && x >= 0 ? row + static_cast<size_t>(x) * 4 : nullptr;
}

// Bilinear in floats on raw values (floats, or 16-bit codes scaled by `scale`).
template <typename T>
void BilinearFloat(const T* r0, const T* r1, const Taps& t, float scale, float out[4])
{
    static const T zero[4] = {};
    const T* p00 = Tap(r0, t.x0); const T* p10 = Tap(r0, t.x1);
    const T* p01 = Tap(r1, t.x0); const T* p11 = Tap(r1, t.x1);
    if (!p00) p00 = zero;
    if (!p10) p10 = zero;
    if (!p01) p01 = zero;
    if (!p11) p11 = zero;
    const float wx = static_cast<float>(t.fx) * (1.0f / 65536.0f);
    const float wy = static_cast<float>(t.fy) * (1.0f / 65536.0f);
    for (int c = 0; c < 4; ++c) {
        const float top = static_cast<float>(p00[c]) * (1.0f - wx) + static_cast<float>(p10[c]) * wx;
        const float bot = static_cast<float>(p01[c]) * (1.0f - wx) + static_cast<float>(p11[c]) * wx;
        out[c] = (top * (1.0f - wy) + bot * wy) * scale;
    }
}

inline uint32_t ToCode(double v)
{
    v = std::floor(v + 0.5);
    return v <= 0.0 ? 0u : (v >= 65535.0 ? 65535u : static_cast<uint32_t>(v));
}

// One axis of an area box, in pixel-edge units, reduced to spans inside the
// image [0, n], each counted `mult` times. Wrap folds whole periods into one
// span; duplicate turns the parts beyond each edge into the edge pixel.
struct Span {
    double a, b, mult;
};

int Spans(double lo, double hi, int n, Edge edge, Span out[3])
{
    const double size = n;
    int count = 0;
    if (edge == EdgeWrap) {
        const double q0 = std::floor(lo / size), q1 = std::floor(hi / size);
        const double r0 = std::clamp(lo - q0 * size, 0.0, size);
        const double r1 = std::clamp(hi - q1 * size, 0.0, size);
        if (q0 == q1) {
            if (r1 > r0) out[count++] = {r0, r1, 1.0};
            return count;
        }
        if (r0 < size) out[count++] = {r0, size, 1.0};
        if (q1 - q0 > 1.0) out[count++] = {0.0, size, q1 - q0 - 1.0};
        if (r1 > 0.0) out[count++] = {0.0, r1, 1.0};
        return count;
    }
    const double a = std::clamp(lo, 0.0, size), b = std::clamp(hi, 0.0, size);
    if (b > a) out[count++] = {a, b, 1.0};
    if (edge == EdgeDuplicate) {
        if (lo < 0.0) out[count++] = {0.0, 1.0, std::min(hi, 0.0) - lo};
        if (hi > size) out[count++] = {size - 1.0, size, hi - std::max(lo, size)};
    }
    return count;
}

// Sum over [a, b] x [c, d] (inside the image) from the pixels, the end
// columns and rows weighted by their coverage.
template <typename T>
void DirectSum(const Image& img, const T* (Image::*row)(int) const, double a, double b, double c,
               double d, double out[4])
{
    out[0] = out[1] = out[2] = out[3] = 0.0;
    const int w = img.Width(), h = img.Height();
    const int i0 = std::clamp(static_cast<int>(std::floor(a)), 0, w - 1);
    const int i1 = std::clamp(static_cast<int>(std::ceil(b)) - 1, i0, w - 1);
    const int j0 = std::clamp(static_cast<int>(std::floor(c)), 0, h - 1);
    const int j1 = std::clamp(static_cast<int>(std::ceil(d)) - 1, j0, h - 1);
    const double wFirst = i0 == i1 ? b - a : (i0 + 1) - a;
    const double wLast = i0 == i1 ? 0.0 : b - i1;
    for (int j = j0; j <= j1; ++j) {
        const double wy = std::min(d, j + 1.0) - std::max(c, static_cast<double>(j));
        if (wy <= 0.0) continue;
        const T* p = (img.*row)(j);
        double inner[4] = {0.0, 0.0, 0.0, 0.0};
        for (int i = i0 + 1; i < i1; ++i)
            for (int k = 0; k < 4; ++k) inner[k] += p[i * 4 + k];
        for (int k = 0; k < 4; ++k) {
            const double s = inner[k] + wFirst * p[i0 * 4 + k] + wLast * p[i1 * 4 + k];
            out[k] += wy * s;
        }
    }
}

}  // namespace

void Image::SamplePixel(int32_t x, int32_t y, Edge edge, uint32_t out[4]) const
{
    const int w = Width(), h = Height();
    if (w <= 0 || h <= 0) {
        out[0] = out[1] = out[2] = out[3] = 0;
        return;
    }
    const Taps t = Locate(x, y, w, h, edge);
    if (IsFloat()) {
        float f[4];
        BilinearFloat(t.y0 >= 0 ? RowF(t.y0) : nullptr, t.y1 >= 0 ? RowF(t.y1) : nullptr, t, 1.0f, f);
        for (int c = 0; c < 4; ++c) out[c] = ToCode(static_cast<double>(f[c]) * 65535.0);
        return;
    }
    static const uint16_t zero[4] = {};
    const uint16_t* r0 = t.y0 >= 0 ? RowW(t.y0) : nullptr;
    const uint16_t* r1 = t.y1 >= 0 ? RowW(t.y1) : nullptr;
    const uint16_t* p00 = Tap(r0, t.x0); const uint16_t* p10 = Tap(r0, t.x1);
    const uint16_t* p01 = Tap(r1, t.x0); const uint16_t* p11 = Tap(r1, t.x1);
    if (!p00) p00 = zero;
    if (!p10) p10 = zero;
    if (!p01) p01 = zero;
    if (!p11) p11 = zero;
    // 16-bit weights summing to 65536 on each axis: the product has 32
    // fractional bits, rounded once at the end.
    const uint64_t ix = 65536u - t.fx, iy = 65536u - t.fy;
    for (int c = 0; c < 4; ++c) {
        const uint64_t top = p00[c] * ix + p10[c] * uint64_t(t.fx);
        const uint64_t bot = p01[c] * ix + p11[c] * uint64_t(t.fx);
        out[c] = static_cast<uint32_t>((top * iy + bot * t.fy + (uint64_t(1) << 31)) >> 32);
    }
}

void Image::SamplePixel(int32_t x, int32_t y, Edge edge, float out[4]) const
{
    const int w = Width(), h = Height();
    if (w <= 0 || h <= 0) {
        out[0] = out[1] = out[2] = out[3] = 0.0f;
        return;
    }
    const Taps t = Locate(x, y, w, h, edge);
    if (IsFloat())
        BilinearFloat(t.y0 >= 0 ? RowF(t.y0) : nullptr, t.y1 >= 0 ? RowF(t.y1) : nullptr, t, 1.0f, out);
    else
        BilinearFloat(t.y0 >= 0 ? RowW(t.y0) : nullptr, t.y1 >= 0 ? RowW(t.y1) : nullptr, t,
                      1.0f / 65535.0f, out);
}

void Image::UseSAT()
{
    const int w = Width(), h = Height();
    const size_t stride = (static_cast<size_t>(w) + 1) * 4;
    sat_.assign(stride * (static_cast<size_t>(h) + 1), 0.0);
    for (int j = 0; j < h; ++j) {
        const double* above = sat_.data() + static_cast<size_t>(j) * stride + 4;
        double* cur = sat_.data() + static_cast<size_t>(j + 1) * stride + 4;
        double run[4] = {0.0, 0.0, 0.0, 0.0};
        if (IsFloat()) {
            const float* p = RowF(j);
            for (int i = 0; i < w * 4; i += 4)
                for (int c = 0; c < 4; ++c) cur[i + c] = above[i + c] + (run[c] += p[i + c]);
        } else {
            const uint16_t* p = RowW(j);
            for (int i = 0; i < w * 4; i += 4)
                for (int c = 0; c < 4; ++c) cur[i + c] = above[i + c] + (run[c] += p[i + c]);
        }
    }
}

void Image::Integral(double x, double y, double out[4]) const
{
    const int w = Width(), h = Height();
    if (w <= 0 || h <= 0) {
        out[0] = out[1] = out[2] = out[3] = 0.0;
        return;
    }
    x = std::clamp(x, 0.0, static_cast<double>(w));
    y = std::clamp(y, 0.0, static_cast<double>(h));
    if (sat_.empty()) {
        if (IsFloat()) DirectSum<float>(*this, &Image::RowF, 0.0, x, 0.0, y, out);
        else DirectSum<uint16_t>(*this, &Image::RowW, 0.0, x, 0.0, y, out);
        return;
    }
    // Bilinear between table entries is exact for a piecewise-constant image.
    const int i = std::min(static_cast<int>(x), w - 1), j = std::min(static_cast<int>(y), h - 1);
    const double fx = x - i, fy = y - j;
    const size_t stride = (static_cast<size_t>(w) + 1) * 4;
    const double* s00 = sat_.data() + static_cast<size_t>(j) * stride + static_cast<size_t>(i) * 4;
    const double* s10 = s00 + 4;
    const double* s01 = s00 + stride;
    const double* s11 = s01 + 4;
    for (int c = 0; c < 4; ++c)
        out[c] = s00[c] + fx * (s10[c] - s00[c]) + fy * (s01[c] - s00[c]) +
                 fx * fy * (s11[c] - s10[c] - s01[c] + s00[c]);
}

void Image::AreaMean(double x0, double y0, double x1, double y1, Edge edge, double out[4]) const
{
    out[0] = out[1] = out[2] = out[3] = 0.0;
    const int w = Width(), h = Height();
    const double area = (x1 - x0) * (y1 - y0);
    if (w <= 0 || h <= 0 || !(area > 0.0)) return;
    Span xs[3], ys[3];
    const int nx = Spans(x0, x1, w, edge, xs), ny = Spans(y0, y1, h, edge, ys);
    for (int sy = 0; sy < ny; ++sy) {
        for (int sx = 0; sx < nx; ++sx) {
            const Span& a = xs[sx];
            const Span& b = ys[sy];
            double s[4];
            if (!sat_.empty()) {
                double t00[4], t10[4], t01[4], t11[4];
                Integral(a.a, b.a, t00);
                Integral(a.b, b.a, t10);
                Integral(a.a, b.b, t01);
                Integral(a.b, b.b, t11);
                for (int c = 0; c < 4; ++c) s[c] = t11[c] - t10[c] - t01[c] + t00[c];
            } else if (IsFloat()) {
                DirectSum<float>(*this, &Image::RowF, a.a, a.b, b.a, b.b, s);
            } else {
                DirectSum<uint16_t>(*this, &Image::RowW, a.a, a.b, b.a, b.b, s);
            }
            const double m = a.mult * b.mult;
            for (int c = 0; c < 4; ++c) out[c] += m * s[c];
        }
    }
    for (int c = 0; c < 4; ++c) out[c] /= area;
}

namespace {

// The bounding box of a 16.16 quadrilateral in pixel-edge units, at least one
// pixel on each axis about its centre.
void QuadBox(const int32_t q[8], double box[4])
{
    for (int axis = 0; axis < 2; ++axis) {
        double lo = q[axis], hi = q[axis];
        for (int k = 1; k < 4; ++k) {
            lo = std::min(lo, static_cast<double>(q[2 * k + axis]));
            hi = std::max(hi, static_cast<double>(q[2 * k + axis]));
        }
        lo = lo / 65536.0 + 0.5;
        hi = hi / 65536.0 + 0.5;
        if (hi - lo < 1.0) {
            const double mid = 0.5 * (lo + hi);
            lo = mid - 0.5;
            hi = mid + 0.5;
        }
        box[axis] = lo;
        box[axis + 2] = hi;
    }
}

}  // namespace

void Image::SampleArea(const int32_t quad[8], Edge edge, uint32_t out[4]) const
{
    double box[4], m[4];
    QuadBox(quad, box);
    AreaMean(box[0], box[1], box[2], box[3], edge, m);
    const double scale = IsFloat() ? 65535.0 : 1.0;
    for (int c = 0; c < 4; ++c) out[c] = ToCode(m[c] * scale);
}

void Image::SampleArea(const int32_t quad[8], Edge edge, float out[4]) const
{
    double box[4], m[4];
    QuadBox(quad, box);
    AreaMean(box[0], box[1], box[2], box[3], edge, m);
    const double scale = IsFloat() ? 1.0 : 1.0 / 65535.0;
    for (int c = 0; c < 4; ++c) out[c] = static_cast<float>(m[c] * scale);
}

}  // namespace host

namespace host {

namespace {

// Walks n 16.16 positions: those whose four taps lie inside go to `inner`
// with the top-left tap, the others to the image's own SamplePixel, and those
// wholly outside a black edge are zero at once.
template <typename T, typename Out, typename Inner>
void SampleRow(const Image& img, const T* base, const int32_t* xy, int n, Edge edge, Out* out,
               Inner inner)
{
    const int w = img.Width(), h = img.Height();
    const size_t stride = img.RowBytes() / sizeof(T);
    for (int i = 0; i < n; ++i, out += 4) {
        const int32_t x = xy[2 * i], y = xy[2 * i + 1];
        const int ix = x >> 16, iy = y >> 16;
        if (static_cast<unsigned>(ix) < static_cast<unsigned>(w - 1) &&
            static_cast<unsigned>(iy) < static_cast<unsigned>(h - 1)) {
            const T* p0 = base + static_cast<size_t>(iy) * stride + static_cast<size_t>(ix) * 4;
            inner(p0, p0 + stride, static_cast<uint32_t>(x) & 0xFFFFu,
                  static_cast<uint32_t>(y) & 0xFFFFu, out);
        } else if (edge == EdgeBlack && (ix < -1 || iy < -1 || ix >= w || iy >= h)) {
            out[0] = out[1] = out[2] = out[3] = Out{};
        } else {
            img.SamplePixel(x, y, edge, out);
        }
    }
}

}  // namespace

// Same arithmetic, in the same order, as BilinearFloat and the integer SamplePixel.
void Image::SamplePixels(const int32_t* xy, int n, Edge edge, float* out) const
{
    if (!IsFloat()) {
        for (int i = 0; i < n; ++i) SamplePixel(xy[2 * i], xy[2 * i + 1], edge, out + 4 * i);
        return;
    }
    SampleRow(*this, RowF(0), xy, n, edge, out,
              [](const float* p0, const float* p1, uint32_t fx, uint32_t fy, float* o) {
                  const float wx = static_cast<float>(fx) * (1.0f / 65536.0f);
                  const float wy = static_cast<float>(fy) * (1.0f / 65536.0f);
                  const float ax = 1.0f - wx, ay = 1.0f - wy;
                  for (int c = 0; c < 4; ++c) {
                      const float top = p0[c] * ax + p0[4 + c] * wx;
                      const float bot = p1[c] * ax + p1[4 + c] * wx;
                      o[c] = top * ay + bot * wy;
                  }
              });
}

void Image::SamplePixels(const int32_t* xy, int n, Edge edge, uint32_t* out) const
{
    if (IsFloat()) {
        for (int i = 0; i < n; ++i) SamplePixel(xy[2 * i], xy[2 * i + 1], edge, out + 4 * i);
        return;
    }
    SampleRow(*this, RowW(0), xy, n, edge, out,
              [](const uint16_t* p0, const uint16_t* p1, uint32_t fx, uint32_t fy, uint32_t* o) {
                  const uint64_t ix = 65536u - fx, iy = 65536u - fy;
                  for (int c = 0; c < 4; ++c) {
                      const uint64_t top = p0[c] * ix + p0[4 + c] * uint64_t(fx);
                      const uint64_t bot = p1[c] * ix + p1[4 + c] * uint64_t(fx);
                      o[c] = static_cast<uint32_t>((top * iy + bot * fy + (uint64_t(1) << 31)) >> 32);
                  }
              });
}

}  // namespace host
