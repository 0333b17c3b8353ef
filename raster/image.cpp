// KImage over the embedded host's image: construction, geometry, pixel access.
#include "raster/image.h"
#include <algorithm>
#include <cstring>
#include "host/image.h"

namespace {

inline int32_t Wrapped(int32_t v, int32_t n)
{
    int32_t r = v % n;
    return r < 0 ? r + n : r;
}

// Resolves x, y by the edge mode; false means the zero pixel.
inline bool Resolve(int32_t& x, int32_t& y, int32_t w, int32_t h, int32_t edges)
{
    if (x >= 0 && y >= 0 && x < w && y < h) return true;
    if (w <= 0 || h <= 0) return false;
    switch (edges) {
    case kEdgeWrap:
        x = Wrapped(x, w);
        y = Wrapped(y, h);
        return true;
    case kEdgeDuplicate:
        x = std::clamp(x, 0, w - 1);
        y = std::clamp(y, 0, h - 1);
        return true;
    default:
        return false;
    }
}

inline host::Edge HostEdge(int32_t edges)
{
    return edges == kEdgeWrap ? host::EdgeWrap
         : edges == kEdgeDuplicate ? host::EdgeDuplicate : host::EdgeBlack;
}


}  // namespace

KImage* KImage::Create(int32_t w, int32_t h, bool isFloat, float xa, float ya)
{
    host::ImageSpec spec;
    spec.width = w;
    spec.height = h;
    spec.depth = isFloat ? host::DepthFloat32 : host::DepthInt16;
    spec.xAspect = xa;
    spec.yAspect = ya;
    return Wrap(host::Image::New(spec), true);
}

KImage* KImage::Wrap(host::Image* img, bool own)
{
    if (!img) return nullptr;
    auto* k = new KImage;
    k->owned = own;
    k->image = img;
    k->depth = img->DepthNumber();
    k->width = img->Width();
    k->height = img->Height();
    k->xAspect = static_cast<float>(img->XAspect());
    k->yAspect = static_cast<float>(img->YAspect());
    k->pixels = img->Row(0);
    k->rowBytes = img->RowBytes();
    return k;
}

KImage::~KImage()
{
    if (owned && image) image->Recycle();
}

KImage* KImage::Clone() const { return Wrap(image->CopyOfImage(), true); }

KImage* KImage::Share() const
{
    image->Use();
    return Wrap(image, true);
}

KImage* KImage::CreateLike(int32_t w, int32_t h, float xa, float ya) const
{
    host::Image* img = host::Image::NewLike(*image, w < 1 ? width : w, h < 1 ? height : h);
    if (xa > 0.0f && ya > 0.0f) img->SetAspect(xa, ya);
    return Wrap(img, true);
}

KImage* KImage::CreateVectorLike() const
{
    host::ImageSpec spec = image->Spec();
    spec.aux.push_back(host::ChanVectorX);
    spec.aux.push_back(host::ChanVectorY);
    return Wrap(host::Image::New(spec), true);
}

void KImage::ReplaceIn(KImage** slot, KImage* img)
{
    KImage* old = *slot;
    *slot = img;
    if (old != img) delete old;
}

int32_t KImage::FullWidth() const
{
    int32_t w = image->FullWidth();
    return w > 0 ? w : width;
}

int32_t KImage::FullHeight() const
{
    int32_t h = image->FullHeight();
    return h > 0 ? h : height;
}

float KImage::ProxyScale() const
{
    float s = static_cast<float>(FullWidth()) / static_cast<float>(width);
    return s < 1.0f ? 1.0f : s;
}

float* KImage::AuxPlane(int32_t channel) const { return image->AuxPlane(channel); }

int32_t KImage::AuxCount() const { return static_cast<int32_t>(image->AuxChannels().size()); }

int32_t KImage::AuxChannel(int32_t i) const { return image->AuxChannels()[i]; }

void KImage::GetPixel(int32_t x, int32_t y, KPixel& out, int32_t edges) const
{
    if (!Resolve(x, y, width, height, edges)) {
        out = KPixel{};
        return;
    }
    if (IsFloat()) {
        const float* s = RowF(y) + 4 * x;
        out = {KFloatToInt(s[0]), KFloatToInt(s[1]), KFloatToInt(s[2]), KFloatToInt(s[3])};
    } else {
        const uint16_t* s = RowW(y) + 4 * x;
        out = {s[0], s[1], s[2], s[3]};
    }
}

void KImage::GetPixel(int32_t x, int32_t y, KPixelF& out, int32_t edges) const
{
    if (!Resolve(x, y, width, height, edges)) {
        out = KPixelF{};
        return;
    }
    if (IsFloat()) {
        const float* s = RowF(y) + 4 * x;
        out = {s[0], s[1], s[2], s[3]};
    } else {
        const uint16_t* s = RowW(y) + 4 * x;
        out = {KIntToFloat(s[0]), KIntToFloat(s[1]), KIntToFloat(s[2]), KIntToFloat(s[3])};
    }
}

void KImage::SetPixel(int32_t x, int32_t y, const KPixel& in)
{
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    if (IsFloat()) {
        float* d = RowF(y) + 4 * x;
        for (int c = 0; c < 4; ++c) d[c] = KIntToFloat(in[c]);
    } else {
        uint16_t* d = RowW(y) + 4 * x;
        for (int c = 0; c < 4; ++c) d[c] = static_cast<uint16_t>(std::min(in[c], 65535u));
    }
}

void KImage::SetPixel(int32_t x, int32_t y, const KPixelF& in)
{
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    if (IsFloat()) {
        float* d = RowF(y) + 4 * x;
        for (int c = 0; c < 4; ++c) d[c] = in[c];
    } else {
        uint16_t* d = RowW(y) + 4 * x;
        for (int c = 0; c < 4; ++c) d[c] = static_cast<uint16_t>(KFloatToInt(in[c]));
    }
}

void KImage::SamplePixel(float x, float y, KPixel& out, int32_t edges) const
{
    if (IsFloat()) {
        KPixelF f;
        SamplePixel(x, y, f, edges);
        KToInt(f, out);
        return;
    }
    image->SamplePixel(KFixed(x), KFixed(y), HostEdge(edges), &out.r);
}

void KImage::SamplePixel(float x, float y, KPixelF& out, int32_t edges) const
{
    if (!IsFloat()) {
        KPixel p;
        SamplePixel(x, y, p, edges);
        KToFloat(p, out);
        return;
    }
    image->SamplePixel(KFixed(x), KFixed(y), HostEdge(edges), &out.r);
}

void KImage::SamplePixels(const int32_t* xy, int32_t n, KPixel* out, int32_t edges) const
{
    if (IsFloat()) {
        for (int32_t i = 0; i < n; ++i)
            SamplePixel(xy[2 * i] / 65536.0f, xy[2 * i + 1] / 65536.0f, out[i], edges);
        return;
    }
    static_assert(sizeof(KPixel) == 4 * sizeof(uint32_t));
    image->SamplePixels(xy, n, HostEdge(edges), &out[0].r);
}

void KImage::SamplePixels(const int32_t* xy, int32_t n, KPixelF* out, int32_t edges) const
{
    if (!IsFloat()) {
        for (int32_t i = 0; i < n; ++i)
            SamplePixel(xy[2 * i] / 65536.0f, xy[2 * i + 1] / 65536.0f, out[i], edges);
        return;
    }
    static_assert(sizeof(KPixelF) == 4 * sizeof(float));
    image->SamplePixels(xy, n, HostEdge(edges), &out[0].r);
}

void KImage::SampleArea(const float c[8], KPixel& out, int32_t edges) const
{
    if (IsFloat()) {
        KPixelF f;
        SampleArea(c, f, edges);
        KToInt(f, out);
        return;
    }
    int32_t q[8];
    for (int i = 0; i < 8; ++i) q[i] = KFixed(c[i]);
    image->SampleArea(q, HostEdge(edges), &out.r);
}

void KImage::SampleArea(const float c[8], KPixelF& out, int32_t edges) const
{
    if (!IsFloat()) {
        KPixel p;
        SampleArea(c, p, edges);
        KToFloat(p, out);
        return;
    }
    int32_t q[8];
    for (int i = 0; i < 8; ++i) q[i] = KFixed(c[i]);
    image->SampleArea(q, HostEdge(edges), &out.r);
}

void KImage::UseSAT()
{
    if (!image->HasSAT()) image->UseSAT();
}

void KImage::CopyFrom(const KImage& other)
{
    for (int32_t y = 0; y < height; ++y) CopyRowFrom(other, y);
}

void KImage::CopyRowFrom(const KImage& other, int32_t y)
{
    if (y < 0 || y >= height) return;
    const int32_t n = std::min(width, other.width);
    if (y >= other.height) {
        std::memset(RowW(y), 0, rowBytes);
        return;
    }
    if (IsFloat()) {
        float* d = RowF(y);
        if (other.IsFloat()) std::memcpy(d, other.RowF(y), size_t(n) * 16);
        else {
            const uint16_t* s = other.RowW(y);
            for (int32_t i = 0; i < 4 * n; ++i) d[i] = KIntToFloat(s[i]);
        }
    } else {
        uint16_t* d = RowW(y);
        if (!other.IsFloat()) std::memcpy(d, other.RowW(y), size_t(n) * 8);
        else {
            const float* s = other.RowF(y);
            for (int32_t i = 0; i < 4 * n; ++i) d[i] = static_cast<uint16_t>(KFloatToInt(s[i]));
        }
    }
}
