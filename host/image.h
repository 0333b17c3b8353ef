// The embedded host's raster: 16-bit integer or 32-bit float, four interleaved
// colour channels (R, G, B, A in memory) plus optional float planes for
// auxiliary channels. Host objects are counted with Use/Recycle.
#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace host {

// Channel numbers as the host counts them.
enum Channel : int {
    ChanBlue = 0, ChanGreen = 1, ChanRed = 2, ChanAlpha = 3,
    ChanZ = 4, ChanU = 5, ChanV = 6, ChanNormalX = 7, ChanNormalY = 8, ChanNormalZ = 9,
    ChanVectorX = 22, ChanVectorY = 23,
};

// Depth numbers; anything above 6 is floating point.
enum Depth : int { DepthInt16 = 5, DepthFloat32 = 8 };

enum Edge : int { EdgeBlack = 0, EdgeWrap = 1, EdgeDuplicate = 2 };

// Colour spaces, numbered as the "Color space" input lists them.
enum ColorSpace : int {
    CS_RGB = 0, CS_HLS = 1, CS_YUV = 2, CS_YIQ = 3, CS_CMY = 4, CS_HSV = 5, CS_XYZ = 6, CS_LAB = 7,
};

struct ImageSpec {
    int width = 0;
    int height = 0;
    int depth = DepthInt16;
    double xAspect = 1.0, yAspect = 1.0;
    int fullWidth = 0, fullHeight = 0;  // unscaled size of a proxy render; 0 when not set
    int field = 0;                      // 0 frame, 1 or 2 for a field
    double yOffset = 0.0;
    std::vector<int> aux;               // auxiliary channel numbers (4 and above)
    int fileBits = 0;                   // bits per channel of the file it came from; 0 if made
};

enum BlurFilter : int { BlurBox = 0, BlurGaussian = 4 };

struct BlurSpec {
    int filter = BlurBox;
    bool red = true, green = true, blue = true, alpha = true;
    double xSize = 0.0, ySize = 0.0;  // fraction of a 720-pixel reference width
    double xBlend = 1.0, yBlend = 1.0;
};

// Affine transform about a centre: the result pixel at p takes the source at
// the inverse of (translate to centre, rotate by angle, scale) about the pivot.
struct TransformSpec {
    double centerX = 0.5, centerY = 0.5;  // where the pivot lands, normalised (x 0..1, y 0..1)
    double pivotX = 0.5, pivotY = 0.5;
    double sizeX = 1.0, sizeY = 1.0;
    double angle = 0.0;  // degrees, counter-clockwise
    int edges = EdgeBlack;
};

class Image {
public:
    static Image* New(const ImageSpec& spec);  // pixels zeroed; use count 1
    // An image with the template's format, aspect, field and channels.
    static Image* NewLike(const Image& tmpl, int width = 0, int height = 0);

    void Use() const { ++uses_; }
    void Recycle() const;  // drops one use; the last one frees the image

    const ImageSpec& Spec() const { return spec_; }
    int Width() const { return spec_.width; }
    int Height() const { return spec_.height; }
    int DepthNumber() const { return spec_.depth; }
    bool IsFloat() const { return spec_.depth > 6; }
    double XAspect() const { return spec_.xAspect; }
    double YAspect() const { return spec_.yAspect; }
    int FullWidth() const { return spec_.fullWidth; }
    int FullHeight() const { return spec_.fullHeight; }
    int FileBits() const { return spec_.fileBits; }
    void SetFullSize(int w, int h) { spec_.fullWidth = w; spec_.fullHeight = h; }
    void SetAspect(double xa, double ya) { spec_.xAspect = xa; spec_.yAspect = ya; }
    void SetField(int f, double yOffset) { spec_.field = f; spec_.yOffset = yOffset; }

    // Interleaved R, G, B, A rows.
    size_t PixelBytes() const { return IsFloat() ? 16 : 8; }
    size_t RowBytes() const { return rowBytes_; }
    uint8_t* Row(int y) { return data_.get() + static_cast<size_t>(y) * rowBytes_; }
    const uint8_t* Row(int y) const { return data_.get() + static_cast<size_t>(y) * rowBytes_; }
    uint16_t* RowW(int y) { return reinterpret_cast<uint16_t*>(Row(y)); }
    const uint16_t* RowW(int y) const { return reinterpret_cast<const uint16_t*>(Row(y)); }
    float* RowF(int y) { return reinterpret_cast<float*>(Row(y)); }
    const float* RowF(int y) const { return reinterpret_cast<const float*>(Row(y)); }

    bool HasChannel(int channel) const;
    float* AuxPlane(int channel);  // width * height floats, or null
    const float* AuxPlane(int channel) const;
    const std::vector<int>& AuxChannels() const { return spec_.aux; }

    // Sub-pixel reads at 16.16 fixed point, bilinear, pixel centres on whole
    // numbers. Integer images give 0..65535, float images unclipped floats.
    void SamplePixel(int32_t x, int32_t y, Edge edge, uint32_t out[4]) const;
    void SamplePixel(int32_t x, int32_t y, Edge edge, float out[4]) const;
    void SamplePixelB(int32_t x, int32_t y, float out[4]) const { SamplePixel(x, y, EdgeBlack, out); }
    void SamplePixelW(int32_t x, int32_t y, float out[4]) const { SamplePixel(x, y, EdgeWrap, out); }
    void SamplePixelD(int32_t x, int32_t y, float out[4]) const { SamplePixel(x, y, EdgeDuplicate, out); }

    // Many sub-pixel reads at once: `xy` holds n pairs of 16.16 coordinates.
    // Same results as SamplePixel, one call per row instead of per pixel.
    void SamplePixels(const int32_t* xy, int n, Edge edge, uint32_t* out) const;
    void SamplePixels(const int32_t* xy, int n, Edge edge, float* out) const;

    // Mean over the quadrilateral given as four 16.16 corner pairs (x0 y0 .. x3 y3),
    // taken over its bounding box, at least one pixel wide and high.
    void SampleArea(const int32_t quad[8], Edge edge, uint32_t out[4]) const;
    void SampleArea(const int32_t quad[8], Edge edge, float out[4]) const;
    void UseSAT();  // build the summed-area table; call before jobs start
    bool HasSAT() const { return !sat_.empty(); }

    void CSConvert(ColorSpace from, ColorSpace to);

    Image* CopyOfImage() const;
    Image* ResizeOfImage(int width, int height) const;
    Image* BlurOfImage(const BlurSpec& spec) const;
    Image* TransformOf(const TransformSpec& spec) const;

    std::mutex& Lock() const { return lock_; }

private:
    explicit Image(const ImageSpec& spec);
    ~Image() = default;
    // Integral of the colour channels over [0,x] x [0,y] in pixel-edge units.
    void Integral(double x, double y, double out[4]) const;
    void AreaMean(double x0, double y0, double x1, double y1, Edge edge, double out[4]) const;

    // Zeroed pixel memory; large buffers are mapped on huge pages so that
    // warps reading across many rows do not thrash the address translation.
    struct Release {
        size_t bytes;
        void operator()(uint8_t* p) const;
    };
    using Pixels = std::unique_ptr<uint8_t[], Release>;
    static Pixels Allocate(size_t bytes);

    ImageSpec spec_;
    size_t rowBytes_ = 0;
    Pixels data_;
    std::vector<std::unique_ptr<float[]>> auxData_;
    std::vector<double> sat_;  // (width+1) * (height+1) * 4 running sums
    mutable std::atomic<int> uses_{1};
    mutable std::mutex lock_;
};

}  // namespace host
