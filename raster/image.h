// KImage: the framework's only face of a raster. It wraps a host image and
// caches its geometry and row layout so pixel loops never touch the host.
#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include "raster/pixel.h"

namespace host { class Image; }

enum KEdges : int32_t { kEdgeBlack = 0, kEdgeWrap = 1, kEdgeDuplicate = 2 };

struct KRect {
    float x0 = 0.0f, y0 = 0.0f, x1 = 0.0f, y1 = 0.0f;
};

class KImage {
public:
    // A new zeroed image: integer (16-bit) or float.
    static KImage* Create(int32_t width, int32_t height, bool isFloat, float xAspect = 1.0f,
                          float yAspect = 1.0f);
    static KImage* Wrap(host::Image* image, bool owned);
    virtual ~KImage();
    KImage(const KImage&) = delete;
    KImage& operator=(const KImage&) = delete;

    KImage* Clone() const;
    // A wrapper of the same picture that holds a use of it of its own.
    KImage* Share() const;
    KImage* CreateLike(int32_t w = 0, int32_t h = 0, float xAspect = 0.0f,
                       float yAspect = 0.0f) const;
    KImage* CreateVectorLike() const;
    void Release() { owned = false; }
    static void ReplaceIn(KImage** slot, KImage* image);
    host::Image* HostImage() const { return image; }

    // Geometry.
    bool IsFloat() const { return depth > 6; }
    float PixelAspect() const { return xAspect / yAspect; }
    float PictureAspect() const
    {
        return PixelAspect() * static_cast<float>(width) / static_cast<float>(height);
    }
    int32_t FullWidth() const;
    int32_t FullHeight() const;
    float ProxyScale() const;

    // Rows: interleaved R, G, B, A, 16-bit or float by depth.
    uint16_t* RowW(int32_t y) const { return reinterpret_cast<uint16_t*>(pixels + y * rowBytes); }
    float* RowF(int32_t y) const { return reinterpret_cast<float*>(pixels + y * rowBytes); }
    size_t RowBytes() const { return rowBytes; }
    float* AuxPlane(int32_t channel) const;  // null when the image lacks the channel
    int32_t AuxCount() const;
    int32_t AuxChannel(int32_t i) const;

    // Pixel access; x, y outside read by `edges` (0 zero, 1 wrap, 2 clamp).
    void GetPixel(int32_t x, int32_t y, KPixel& out, int32_t edges) const;
    void GetPixel(int32_t x, int32_t y, KPixelF& out, int32_t edges) const;
    void SetPixel(int32_t x, int32_t y, const KPixel& in);
    void SetPixel(int32_t x, int32_t y, const KPixelF& in);
    // Sub-pixel reads, the coordinates taken to 16.16 fixed point by truncation.
    void SamplePixel(float x, float y, KPixel& out, int32_t edges) const;
    void SamplePixel(float x, float y, KPixelF& out, int32_t edges) const;
    // Sub-pixel reads of n positions given as 16.16 pairs, one call per row.
    void SamplePixels(const int32_t* xy, int32_t n, KPixel* out, int32_t edges) const;
    void SamplePixels(const int32_t* xy, int32_t n, KPixelF* out, int32_t edges) const;
    // Area read over the quadrilateral (x0,y0)..(x3,y3), corners given as 8 floats.
    void SampleArea(const float corners[8], KPixel& out, int32_t edges) const;
    void SampleArea(const float corners[8], KPixelF& out, int32_t edges) const;
    void UseSAT();

    void CopyFrom(const KImage& other);
    void CopyRowFrom(const KImage& other, int32_t y);

    // Whole-image operations, each with an integer and a float loop.
    void MergeOver(const KImage& other);
    void Blend(const KImage& other, float amount);
    void Fade(float amount);
    KImage* Blur(float xSize, float ySize, int32_t filterType, int32_t channels, float xBlend,
                 float yBlend) const;
    KImage* Resize(int32_t w, int32_t h) const;
    KImage* Transform(float cx, float cy, float sx, float sy, float angle, float pivotX = 0.5f,
                      float pivotY = 0.5f, int32_t edges = kEdgeBlack) const;
    KRect FindBounds() const;
    bool FindChannelBounds(int32_t channel, float low, float high, float outMin[2],
                           float outMax[2]) const;
    // Calls fn for every row, rows spread over the host's workers, with the
    // row's integer or float pixels (the other pointer is null). fn writes
    // only what belongs to its row: results come out the same on any thread count.
    void EachRow(const std::function<void(int32_t y, const uint16_t* w, const float* f)>& fn) const;
    // Calls fn(job) for jobs 0..n-1 on the host's workers and returns when all are done.
    static void RunJobs(int32_t n, const std::function<void(int32_t job)>& fn);
    // Pixel x of such a row as a channel selector reads it, in integer codes:
    // 0 to 3 a channel, any other the luminance 0.299, 0.587, 0.114.
    static uint32_t ChannelValue(const uint16_t* w, const float* f, int32_t x, int32_t channel);
    void ColorSpaceConvert(int32_t from, int32_t to);
    KImage* Copy() const { return Clone(); }
    void Clear();
    // Copy of other shifted by (dx, dy) pixels; uncovered pixels are zero.
    void CopyOffset(const KImage& other, int32_t dx, int32_t dy);
    // Colour set to `color` times each pixel's own alpha; alpha stays.
    void FillKeepAlpha(const KPixelF& color);
    // Every channel multiplied by the alpha of `mask` (same size).
    void MaskByAlpha(const KImage& mask);
    // Every channel multiplied by one minus the alpha of `mask`.
    void MaskByInverseAlpha(const KImage& mask);
    // A new image of the Sobel gradient's length in every channel, a quarter
    // of it so that a step from 0 to 1 gives 1; border pixels repeat outward.
    KImage* SobelEdges() const;

    bool owned = false;
    host::Image* image = nullptr;
    int32_t depth = 0;
    int32_t width = 0, height = 0;
    float xAspect = 1.0f, yAspect = 1.0f;

private:
    KImage() = default;
    uint8_t* pixels = nullptr;
    size_t rowBytes = 0;
};

// A row cursor: set on a row at x 0, then read and write pixel by pixel.
class KRowCursor {
public:
    KRowCursor(const KImage& img, int32_t y) : image(&img) { Set(y); }
    void Set(int32_t y)
    {
        w = image->RowW(y);
        f = image->RowF(y);
    }
    void Read(KPixel& p)
    {
        p.r = w[0]; p.g = w[1]; p.b = w[2]; p.a = w[3];
        w += 4;
    }
    void Read(KPixelF& p)
    {
        p.r = f[0]; p.g = f[1]; p.b = f[2]; p.a = f[3];
        f += 4;
    }
    void Write(const KPixel& p)
    {
        w[0] = static_cast<uint16_t>(p.r); w[1] = static_cast<uint16_t>(p.g);
        w[2] = static_cast<uint16_t>(p.b); w[3] = static_cast<uint16_t>(p.a);
        w += 4;
    }
    void Write(const KPixelF& p)
    {
        f[0] = p.r; f[1] = p.g; f[2] = p.b; f[3] = p.a;
        f += 4;
    }

private:
    const KImage* image;
    uint16_t* w = nullptr;
    float* f = nullptr;
};
