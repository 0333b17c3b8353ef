// Whole-image operations on KImage. Each has an integer loop in 16-bit fixed
// point and a float loop, so results differ between depths only in rounding.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <vector>
#include "host/image.h"
#include "host/threads.h"
#include "raster/image.h"

namespace {

// Weight of an amount in 0..1 as the integer loops use it. The product is
// taken in double: in single precision a product just below a whole number
// can round up to it and give a weight one too large.
inline uint32_t IntWeight(float amount)
{
    int32_t a = static_cast<int32_t>(static_cast<double>(amount) * 65535.5);
    return static_cast<uint32_t>(std::clamp(a, 0, 65535));
}

}  // namespace

void KImage::MergeOver(const KImage& other)
{
    const int32_t w = std::min(width, other.width), h = std::min(height, other.height);
    for (int32_t y = 0; y < h; ++y) {
        if (IsFloat()) {
            float* d = RowF(y);
            const float* s = other.RowF(y);
            for (int32_t x = 0; x < w; ++x, d += 4, s += 4) {
                const float k = 1.0f - s[3];
                for (int c = 0; c < 4; ++c) d[c] = d[c] * k + s[c];
            }
        } else {
            uint16_t* d = RowW(y);
            const uint16_t* s = other.RowW(y);
            for (int32_t x = 0; x < w; ++x, d += 4, s += 4) {
                const uint32_t k = 65535u - s[3];
                for (int c = 0; c < 4; ++c) {
                    uint32_t v = KDiv65535(s[c] * 65535u) + KDiv65535(d[c] * k);
                    d[c] = static_cast<uint16_t>(std::min(v, 65535u));
                }
            }
        }
    }
}

void KImage::Blend(const KImage& other, float amount)
{
    if (!(amount > 0.0f)) return;
    const int32_t w = std::min(width, other.width), h = std::min(height, other.height);
    const uint32_t a = IntWeight(amount), b = 65535u - a;
    const float fa = amount, fb = 1.0f - amount;
    for (int32_t y = 0; y < h; ++y) {
        if (IsFloat()) {
            float* d = RowF(y);
            const float* s = other.RowF(y);
            for (int32_t i = 0; i < 4 * w; ++i) d[i] = s[i] * fa + d[i] * fb;
        } else {
            uint16_t* d = RowW(y);
            const uint16_t* s = other.RowW(y);
            for (int32_t i = 0; i < 4 * w; ++i)
                d[i] = static_cast<uint16_t>(std::min(KScaleInt(s[i], a) + KScaleInt(d[i], b), 65535u));
        }
    }
}

void KImage::Fade(float amount)
{
    if (amount >= 1.0f) return;
    const uint32_t a = IntWeight(amount);
    for (int32_t y = 0; y < height; ++y) {
        if (IsFloat()) {
            float* d = RowF(y);
            for (int32_t i = 0; i < 4 * width; ++i) d[i] *= amount;
        } else {
            uint16_t* d = RowW(y);
            for (int32_t i = 0; i < 4 * width; ++i) d[i] = static_cast<uint16_t>(KScaleInt(d[i], a));
        }
    }
}

KImage* KImage::Blur(float xSize, float ySize, int32_t filterType, int32_t channels, float xBlend,
                     float yBlend) const
{
    if (ySize < 0.0f) ySize = xSize;
    host::BlurSpec spec;
    spec.filter = filterType;
    spec.red = channels & 1;
    spec.green = channels & 2;
    spec.blue = channels & 4;
    spec.alpha = channels & 8;
    spec.xSize = xSize * 0.001388888888888889;
    spec.ySize = ySize * 0.001388888888888889;
    spec.xBlend = xBlend;
    spec.yBlend = yBlend;
    return Wrap(image->BlurOfImage(spec), true);
}

KImage* KImage::Resize(int32_t w, int32_t h) const { return Wrap(image->ResizeOfImage(w, h), true); }

KImage* KImage::Transform(float cx, float cy, float sx, float sy, float angle, float pivotX,
                          float pivotY, int32_t edges) const
{
    constexpr float eps = 1.1920928955078125e-07f;
    auto near = [](float v, float to) { return std::fabs(v - to) <= eps; };
    if (near(cx, 0.5f) && near(cy, 0.5f) && near(sx, 1.0f) && near(sy, 1.0f) && angle == 0.0f &&
        near(pivotX, 0.5f) && near(pivotY, 0.5f))
        return Clone();
    host::TransformSpec spec;
    spec.centerX = cx;
    spec.centerY = cy;
    spec.pivotX = pivotX;
    spec.pivotY = pivotY;
    spec.sizeX = sx;
    spec.sizeY = sy;
    spec.angle = angle;
    spec.edges = edges;
    return Wrap(image->TransformOf(spec), true);
}

KRect KImage::FindBounds() const
{
    // The lower corner starts at 0, 0 and so never moves above it.
    KRect r{0.0f, 0.0f, -100000.0f, -100000.0f};
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            KPixel p;
            GetPixel(x, y, p, kEdgeBlack);
            if (p.a == 0) continue;
            const float fx = static_cast<float>(x), fy = static_cast<float>(y);
            r.x0 = std::min(r.x0, fx);
            r.y0 = std::min(r.y0, fy);
            r.x1 = std::max(r.x1, fx);
            r.y1 = std::max(r.y1, fy);
        }
    }
    return r;
}

uint32_t KImage::ChannelValue(const uint16_t* w, const float* f, int32_t x, int32_t channel)
{
    uint32_t c[4];
    for (int k = 0; k < 4; ++k) c[k] = w ? w[4 * x + k] : KFloatToInt(f[4 * x + k]);
    if (channel >= 0 && channel <= 3) return c[channel];
    return static_cast<uint32_t>(0.299f * c[0] + 0.587f * c[1] + 0.114f * c[2]);
}

void KImage::EachRow(const std::function<void(int32_t y, const uint16_t* w, const float* f)>& fn) const
{
    host::DoMultiProcess(height, [&](int y) {
        fn(y, IsFloat() ? nullptr : RowW(y), IsFloat() ? RowF(y) : nullptr);
    });
}

void KImage::RunJobs(int32_t n, const std::function<void(int32_t)>& fn)
{
    host::DoMultiProcess(n, [&](int job) { fn(job); });
}

bool KImage::FindChannelBounds(int32_t channel, float low, float high, float outMin[2],
                               float outMax[2]) const
{
    // Each row finds its own bounds on the pool; minima and maxima merge the
    // same in any order.
    struct Bounds {
        float minX = FLT_MAX, minY = FLT_MAX, maxX = FLT_MIN, maxY = FLT_MIN;
        bool found = false;
    };
    std::vector<Bounds> rows(std::max(height, 0));
    const float span = std::fabs(high - low);
    EachRow([&](int32_t y, const uint16_t* w, const float* f) {
        Bounds& b = rows[y];
        const float fy = static_cast<float>(y);
        for (int32_t x = 0; x < width; ++x) {
            const float v = static_cast<float>(ChannelValue(w, f, x, channel)) * 1.5259022e-05f;
            if (!(v > low && v <= high)) continue;
            const float t = (v - low) / span;
            const float fx = static_cast<float>(x);
            b.minX = std::min(fx + 1.0f - t, b.minX);
            b.minY = std::min(fy + 1.0f - t, b.minY);
            b.maxX = std::max(fx + t, b.maxX);
            b.maxY = std::max(fy + t, b.maxY);
            b.found = true;
        }
    });
    Bounds all;
    for (const Bounds& b : rows) {
        if (!b.found) continue;
        all.minX = std::min(all.minX, b.minX);
        all.minY = std::min(all.minY, b.minY);
        all.maxX = std::max(all.maxX, b.maxX);
        all.maxY = std::max(all.maxY, b.maxY);
        all.found = true;
    }
    if (!all.found) return false;
    if (all.minX > all.maxX) all.minX = all.maxX = (all.minX + all.maxX) * 0.5f;
    if (all.minY > all.maxY) all.minY = all.maxY = (all.minY + all.maxY) * 0.5f;
    outMin[0] = all.minX;
    outMin[1] = all.minY;
    outMax[0] = all.maxX;
    outMax[1] = all.maxY;
    return true;
}

void KImage::ColorSpaceConvert(int32_t from, int32_t to)
{
    if (from == to) return;
    auto space = [](int32_t v) {
        return static_cast<host::ColorSpace>(v >= 1 && v <= 7 ? v : 0);
    };
    image->CSConvert(space(from), space(to));
}

void KImage::Clear()
{
    for (int32_t y = 0; y < height; ++y) std::memset(RowW(y), 0, rowBytes);
    for (int32_t i = 0; i < AuxCount(); ++i)
        std::memset(AuxPlane(AuxChannel(i)), 0, size_t(width) * height * sizeof(float));
}

void KImage::CopyOffset(const KImage& other, int32_t dx, int32_t dy)
{
    KImage* shifted = CreateLike();
    for (int32_t y = 0; y < height; ++y) {
        const int32_t sy = y - dy;
        if (sy < 0 || sy >= other.height) continue;
        const int32_t x0 = std::max(0, dx), x1 = std::min(width, other.width + dx);
        for (int32_t x = x0; x < x1; ++x) {
            if (IsFloat()) {
                KPixelF p;
                other.GetPixel(x - dx, sy, p, kEdgeBlack);
                shifted->SetPixel(x, y, p);
            } else {
                KPixel p;
                other.GetPixel(x - dx, sy, p, kEdgeBlack);
                shifted->SetPixel(x, y, p);
            }
        }
    }
    // Through a scratch image so that `other` may be this image.
    for (int32_t y = 0; y < height; ++y) std::memcpy(RowW(y), shifted->RowW(y), rowBytes);
    delete shifted;
}

void KImage::FillKeepAlpha(const KPixelF& color)
{
    const uint32_t ci[3] = {KFloatToInt(color.r), KFloatToInt(color.g), KFloatToInt(color.b)};
    for (int32_t y = 0; y < height; ++y) {
        if (IsFloat()) {
            float* d = RowF(y);
            for (int32_t x = 0; x < width; ++x, d += 4)
                for (int c = 0; c < 3; ++c) d[c] = color[c] * d[3];
        } else {
            uint16_t* d = RowW(y);
            for (int32_t x = 0; x < width; ++x, d += 4)
                for (int c = 0; c < 3; ++c) d[c] = static_cast<uint16_t>(KScaleInt(ci[c], d[3]));
        }
    }
}

namespace {

template <bool Inverse> void MaskBy(KImage& img, const KImage& mask)
{
    const int32_t h = std::min(img.height, mask.height), w = std::min(img.width, mask.width);
    // The mask's alphas of one row, in this image's form; beyond the mask they are 0.
    std::vector<float> af(img.IsFloat() ? img.width : 0, 0.0f);
    std::vector<uint32_t> aw(img.IsFloat() ? 0 : img.width, 0u);
    for (int32_t y = 0; y < img.height; ++y) {
        if (y >= h) {
            if (!Inverse) std::memset(img.RowW(y), 0, img.RowBytes());
            continue;
        }
        for (int32_t x = 0; x < w; ++x) {
            if (img.IsFloat()) {
                KPixelF p;
                mask.GetPixel(x, y, p, kEdgeBlack);
                af[x] = p.a;
            } else {
                KPixel p;
                mask.GetPixel(x, y, p, kEdgeBlack);
                aw[x] = p.a;
            }
        }
        if (img.IsFloat()) {
            float* d = img.RowF(y);
            for (int32_t x = 0; x < img.width; ++x, d += 4) {
                const float m = Inverse ? 1.0f - af[x] : af[x];
                for (int c = 0; c < 4; ++c) d[c] *= m;
            }
        } else {
            uint16_t* d = img.RowW(y);
            for (int32_t x = 0; x < img.width; ++x, d += 4) {
                const uint32_t m = Inverse ? 65535u - aw[x] : aw[x];
                for (int c = 0; c < 4; ++c) d[c] = static_cast<uint16_t>(KScaleInt(d[c], m));
            }
        }
    }
}

}  // namespace

void KImage::MaskByAlpha(const KImage& mask) { MaskBy<false>(*this, mask); }

void KImage::MaskByInverseAlpha(const KImage& mask) { MaskBy<true>(*this, mask); }

KImage* KImage::SobelEdges() const
{
    KImage* out = CreateLike();
    const int32_t w = width, h = height;
    EachRow([&](int32_t y, const uint16_t*, const float*) {
        const int32_t rows[3] = {std::max(y - 1, 0), y, std::min(y + 1, h - 1)};
        for (int32_t x = 0; x < w; ++x) {
            const int32_t cols[3] = {std::max(x - 1, 0), x, std::min(x + 1, w - 1)};
            for (int c = 0; c < 4; ++c) {
                float p[3][3];
                for (int j = 0; j < 3; ++j)
                    for (int i = 0; i < 3; ++i) {
                        const size_t at = 4 * static_cast<size_t>(cols[i]) + c;
                        p[j][i] = IsFloat() ? RowF(rows[j])[at] : static_cast<float>(RowW(rows[j])[at]);
                    }
                const float gx = (p[0][2] + 2.0f * p[1][2] + p[2][2]) - (p[0][0] + 2.0f * p[1][0] + p[2][0]);
                const float gy = (p[2][0] + 2.0f * p[2][1] + p[2][2]) - (p[0][0] + 2.0f * p[0][1] + p[0][2]);
                const float v = std::sqrt(gx * gx + gy * gy) * 0.25f;
                if (IsFloat()) out->RowF(y)[4 * x + c] = v;
                else out->RowW(y)[4 * x + c] = static_cast<uint16_t>(std::min(v, 65535.0f));
            }
        }
    });
    return out;
}
