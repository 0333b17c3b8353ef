// Whole-image operations that make a new image: resize, blur and affine
// transform. Work runs in blocks of rows or strips of columns on the pool;
// scratch is per block. A pixel's four channels travel as one vector.
#include "host/image.h"
#include "host/threads.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>
#include <vector>

namespace host {

namespace {

typedef float V4 __attribute__((vector_size(16)));
typedef double D2 __attribute__((vector_size(16)));
typedef int32_t I4 __attribute__((vector_size(16)));
typedef uint16_t W4 __attribute__((vector_size(8)));

inline V4 Get(const float* p)
{
    V4 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline V4 Get(const uint16_t* p)
{
    W4 w;
    std::memcpy(&w, p, sizeof w);
    return __builtin_convertvector(w, V4);
}

inline void Put(float* p, V4 v) { std::memcpy(p, &v, sizeof v); }

// Rounded to nearest and clipped; truncation rounds once the value is not negative.
inline void Put(uint16_t* p, V4 v)
{
    const V4 zero = {0.0f, 0.0f, 0.0f, 0.0f}, top = {65535.0f, 65535.0f, 65535.0f, 65535.0f};
    v += 0.5f;
    v = v < zero ? zero : v;
    v = v > top ? top : v;
    const W4 w = __builtin_convertvector(__builtin_convertvector(v, I4), W4);
    std::memcpy(p, &w, sizeof w);
}

// A pixel in doubles, for running sums that must not drift along a 4K line.
struct Wide {
    D2 lo, hi;
    Wide() : lo{0.0, 0.0}, hi{0.0, 0.0} {}
    Wide(D2 l, D2 h) : lo(l), hi(h) {}
    explicit Wide(V4 v) : lo{v[0], v[1]}, hi{v[2], v[3]} {}
    Wide operator+(const Wide& o) const { return {lo + o.lo, hi + o.hi}; }
    Wide operator-(const Wide& o) const { return {lo - o.lo, hi - o.hi}; }
    Wide operator*(double f) const { return {lo * f, hi * f}; }
    Wide& operator+=(const Wide& o) { lo += o.lo; hi += o.hi; return *this; }
    V4 Narrow() const { return V4{float(lo[0]), float(lo[1]), float(hi[0]), float(hi[1])}; }
};

// Runs fn(begin, end) over consecutive blocks of 0..count on the pool.
template <typename Fn>
void ForBlocks(int count, int block, Fn&& fn)
{
    const int jobs = (count + block - 1) / block;
    DoMultiProcess(jobs, [&](int j) { fn(j * block, std::min(count, (j + 1) * block)); });
}

constexpr int kRowBlock = 16;

template <typename T>
T* PixelRow(T* base, size_t width, int y)
{
    return base + size_t(y) * width * 4;
}

// ---- Resize -----------------------------------------------------------------

// For each output index, `count` source indices and weights; unused taps weigh 0.
struct Filter {
    int count = 1;
    std::vector<int> index;
    std::vector<float> weight;
};

// Enlarging interpolates between the two nearest pixel centres; reducing
// averages the source area that each output pixel covers.
Filter ResizeFilter(int src, int dst)
{
    Filter f;
    const double scale = static_cast<double>(src) / dst;
    if (dst >= src) {
        f.count = 2;
        f.index.resize(size_t(dst) * 2);
        f.weight.resize(size_t(dst) * 2);
        for (int i = 0; i < dst; ++i) {
            const double s = (i + 0.5) * scale - 0.5;
            const double i0 = std::floor(s);
            f.index[2 * i] = std::clamp(static_cast<int>(i0), 0, src - 1);
            f.index[2 * i + 1] = std::clamp(static_cast<int>(i0) + 1, 0, src - 1);
            f.weight[2 * i] = static_cast<float>(1.0 - (s - i0));
            f.weight[2 * i + 1] = static_cast<float>(s - i0);
        }
        return f;
    }
    auto span = [&](int i, int& j0, int& j1) {
        j0 = static_cast<int>(std::floor(i * scale));
        j1 = std::min(static_cast<int>(std::ceil((i + 1) * scale)), src);
    };
    for (int i = 0; i < dst; ++i) {
        int j0, j1;
        span(i, j0, j1);
        f.count = std::max(f.count, j1 - j0);
    }
    f.index.assign(size_t(dst) * f.count, 0);
    f.weight.assign(size_t(dst) * f.count, 0.0f);
    for (int i = 0; i < dst; ++i) {
        int j0, j1;
        span(i, j0, j1);
        const double lo = i * scale, hi = (i + 1) * scale;
        for (int j = j0; j < j1; ++j) {
            const double cover = std::min(hi, j + 1.0) - std::max(lo, static_cast<double>(j));
            f.index[size_t(i) * f.count + (j - j0)] = j;
            f.weight[size_t(i) * f.count + (j - j0)] = static_cast<float>(cover / scale);
        }
    }
    return f;
}

// Resizes interleaved four-channel rows. Each block of output rows filters
// across only the source rows that it reads, then down, so no image-sized
// buffer is needed; neighbouring blocks repeat at most a row or two.
template <typename T>
void ResizePixels(const T* src, int sw, int sh, T* dst, int dw, int dh)
{
    const Filter fx = ResizeFilter(sw, dw), fy = ResizeFilter(sh, dh);
    auto across = [&](const T* in, V4* out) {
        const int* idx = fx.index.data();
        const float* wt = fx.weight.data();
        for (int i = 0; i < dw; ++i, idx += fx.count, wt += fx.count) {
            V4 acc = Get(in + size_t(idx[0]) * 4) * wt[0];
            for (int t = 1; t < fx.count; ++t) acc += Get(in + size_t(idx[t]) * 4) * wt[t];
            out[i] = acc;
        }
    };
    ForBlocks(dh, 2 * kRowBlock, [&](int y0, int y1) {
        // Source rows in use ascend with the output row; unused taps weigh 0.
        int lo = sh, hi = 0;
        for (int y = y0; y < y1; ++y)
            for (int t = 0; t < fy.count; ++t)
                if (fy.weight[size_t(y) * fy.count + t] != 0.0f || t == 0) {
                    lo = std::min(lo, fy.index[size_t(y) * fy.count + t]);
                    hi = std::max(hi, fy.index[size_t(y) * fy.count + t]);
                }
        std::vector<V4> rows(size_t(hi - lo + 1) * dw), acc(dw);
        for (int sy = lo; sy <= hi; ++sy) across(PixelRow(src, sw, sy), rows.data() + size_t(sy - lo) * dw);
        for (int y = y0; y < y1; ++y) {
            const int* idx = fy.index.data() + size_t(y) * fy.count;
            const float* wt = fy.weight.data() + size_t(y) * fy.count;
            const V4* first = rows.data() + size_t(idx[0] - lo) * dw;
            for (int i = 0; i < dw; ++i) acc[i] = first[i] * wt[0];
            for (int t = 1; t < fy.count; ++t) {
                if (wt[t] == 0.0f) continue;
                const V4* row = rows.data() + size_t(idx[t] - lo) * dw;
                for (int i = 0; i < dw; ++i) acc[i] += row[i] * wt[t];
            }
            T* out = PixelRow(dst, dw, y);
            for (int i = 0; i < dw; ++i) Put(out + size_t(i) * 4, acc[i]);
        }
    });
}

// The same for one float plane.
void ResizePlane(const float* src, int sw, int sh, float* dst, int dw, int dh)
{
    const Filter fx = ResizeFilter(sw, dw), fy = ResizeFilter(sh, dh);
    std::unique_ptr<float[]> mid(new float[size_t(dw) * sh]);
    ForBlocks(sh, kRowBlock, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            const float* in = src + size_t(y) * sw;
            float* out = mid.get() + size_t(y) * dw;
            for (int i = 0; i < dw; ++i) {
                float acc = 0.0f;
                for (int t = 0; t < fx.count; ++t)
                    acc += in[fx.index[size_t(i) * fx.count + t]] * fx.weight[size_t(i) * fx.count + t];
                out[i] = acc;
            }
        }
    });
    ForBlocks(dh, kRowBlock, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            float* out = dst + size_t(y) * dw;
            std::fill(out, out + dw, 0.0f);
            for (int t = 0; t < fy.count; ++t) {
                const float w = fy.weight[size_t(y) * fy.count + t];
                const float* row = mid.get() + size_t(fy.index[size_t(y) * fy.count + t]) * dw;
                for (int i = 0; i < dw; ++i) out[i] += row[i] * w;
            }
        }
    });
}

// ---- Blur -------------------------------------------------------------------

// Calls add(index, times) for the indices of [lo, hi) clamped into 0..n-1.
template <typename Add>
void ClampedRange(int64_t lo, int64_t hi, int64_t n, Add&& add)
{
    if (hi <= lo) return;
    if (const int64_t left = std::min<int64_t>(hi, 0) - lo; left > 0) add(0, left);
    for (int64_t i = std::max<int64_t>(lo, 0); i < std::min(hi, n); ++i) add(i, 1);
    if (const int64_t right = hi - std::max(lo, n); right > 0) add(n - 1, right);
}

// A box of `width` pixels centred on pixel i covers [i + 0.5 - width/2,
// i + 0.5 + width/2] in edge units: whole pixels from a running sum, the
// two partly covered ones by their fractions, which are the same for all i.
struct Box {
    int64_t first, last;   // partly covered pixels for output 0
    double fFirst, fLast;  // fraction of `first` outside the box, of `last` inside
    double scale;
    explicit Box(double width)
    {
        const double a = 0.5 - 0.5 * width, b = 0.5 + 0.5 * width;
        first = static_cast<int64_t>(std::floor(a));
        last = static_cast<int64_t>(std::floor(b));
        fFirst = a - first;
        fLast = b - last;
        scale = 1.0 / width;
    }
    // Output i from the running sum s over [first + i, last + i) and the end pixels.
    V4 At(const Wide& s, V4 a, V4 b) const { return ((s - Wide(a) * fFirst + Wide(b) * fLast) * scale).Narrow(); }
};

void BoxLine(const V4* in, V4* out, int n, const Box& box)
{
    Wide s;
    ClampedRange(box.first, box.last, n, [&](int64_t i, int64_t times) { s += Wide(in[i]) * double(times); });
    int64_t ia = box.first, ib = box.last;
    for (int i = 0; i < n; ++i, ++ia, ++ib) {
        const V4 a = in[std::clamp<int64_t>(ia, 0, n - 1)], b = in[std::clamp<int64_t>(ib, 0, n - 1)];
        out[i] = box.At(s, a, b);
        s += Wide(b) - Wide(a);
    }
}

// Sampled Gaussian with sigma = width / 3, cut at 3 sigma, normalised;
// entry t weighs the pixels t away on either side.
std::vector<float> GaussKernel(double width)
{
    const double sigma = width / 3.0;
    const int radius = std::max(1, static_cast<int>(std::ceil(3.0 * sigma)));
    std::vector<double> k(radius + 1);
    double sum = 0.0;
    for (int t = 0; t <= radius; ++t) {
        k[t] = std::exp(-0.5 * t * t / (sigma * sigma));
        sum += t ? 2.0 * k[t] : k[t];
    }
    std::vector<float> out(radius + 1);
    for (int t = 0; t <= radius; ++t) out[t] = static_cast<float>(k[t] / sum);
    return out;
}

// `p` points at the line's first pixel, with `radius` edge pixels repeated
// before and after it.
void GaussLine(const V4* p, V4* out, int n, const std::vector<float>& k)
{
    const int radius = static_cast<int>(k.size()) - 1;
    int i = 0;
    // Four outputs at once: independent sums hide the adds' latency.
    for (; i + 4 <= n; i += 4) {
        V4 a0 = p[i] * k[0], a1 = p[i + 1] * k[0], a2 = p[i + 2] * k[0], a3 = p[i + 3] * k[0];
        for (int t = 1; t <= radius; ++t) {
            const V4* l = p + i - t;
            const V4* r = p + i + t;
            const float kt = k[t];
            a0 += (l[0] + r[0]) * kt;
            a1 += (l[1] + r[1]) * kt;
            a2 += (l[2] + r[2]) * kt;
            a3 += (l[3] + r[3]) * kt;
        }
        out[i] = a0;
        out[i + 1] = a1;
        out[i + 2] = a2;
        out[i + 3] = a3;
    }
    for (; i < n; ++i) {
        V4 acc = p[i] * k[0];
        for (int t = 1; t <= radius; ++t) acc += (p[i - t] + p[i + t]) * k[t];
        out[i] = acc;
    }
}

// The same down a strip of n pixels: rows[t] is the strip's row t away
// above (t < 0) or below, for t in -radius..radius. Taps go four at a time
// over the whole strip, each row read in order.
void GaussStrip(const V4* const* rows, V4* out, int n, const std::vector<float>& k)
{
    const int radius = static_cast<int>(k.size()) - 1;
    for (int i = 0; i < n; ++i) out[i] = rows[0][i] * k[0];
    int t = 1;
    for (; t + 3 <= radius; t += 4) {
        const V4 *u0 = rows[-t], *u1 = rows[-t - 1], *u2 = rows[-t - 2], *u3 = rows[-t - 3];
        const V4 *d0 = rows[t], *d1 = rows[t + 1], *d2 = rows[t + 2], *d3 = rows[t + 3];
        const float k0 = k[t], k1 = k[t + 1], k2 = k[t + 2], k3 = k[t + 3];
        for (int i = 0; i < n; ++i)
            out[i] += ((u0[i] + d0[i]) * k0 + (u1[i] + d1[i]) * k1) + ((u2[i] + d2[i]) * k2 + (u3[i] + d3[i]) * k3);
    }
    for (; t <= radius; ++t) {
        const V4 *u = rows[-t], *d = rows[t];
        for (int i = 0; i < n; ++i) out[i] += (u[i] + d[i]) * k[t];
    }
}

// A pass's result blended with its input per channel: unselected channels
// take a weight of 0 and so keep the input exactly.
struct Mix {
    V4 keep, take;
    Mix(const bool selected[4], double blend)
    {
        for (int c = 0; c < 4; ++c) {
            take[c] = selected[c] ? static_cast<float>(blend) : 0.0f;
            keep[c] = 1.0f - take[c];
        }
    }
    V4 operator()(V4 in, V4 blurred) const { return in * keep + blurred * take; }
};

template <typename T>
void BlurPixels(const T* src, T* dst, int w, int h, const BlurSpec& spec)
{
    const double wx = std::max(0.0, spec.xSize * 720.0), wy = std::max(0.0, spec.ySize * 720.0);
    const bool selected[4] = {spec.red, spec.green, spec.blue, spec.alpha};  // memory order
    const Mix mixX(selected, spec.xBlend), mixY(selected, spec.yBlend);
    const bool gauss = spec.filter == BlurGaussian;
    const std::vector<float> kx = gauss && wx > 0.0 ? GaussKernel(wx) : std::vector<float>(1, 1.0f);
    const std::vector<float> ky = gauss && wy > 0.0 ? GaussKernel(wy) : std::vector<float>(1, 1.0f);

    // Across, into a float copy of the image.
    std::unique_ptr<V4[]> mid(new V4[size_t(w) * h]);
    ForBlocks(h, kRowBlock, [&](int y0, int y1) {
        const int pad = static_cast<int>(kx.size()) - 1;
        std::vector<V4> line(size_t(w) + 2 * pad), blurred(w);
        V4* body = line.data() + pad;
        const Box box(wx > 0.0 ? wx : 1.0);
        for (int y = y0; y < y1; ++y) {
            const T* in = PixelRow(src, w, y);
            V4* out = mid.get() + size_t(y) * w;
            for (int i = 0; i < w; ++i) body[i] = Get(in + size_t(i) * 4);
            if (wx <= 0.0) {
                std::copy(body, body + w, out);
                continue;
            }
            if (gauss) {
                std::fill(line.begin(), line.begin() + pad, body[0]);
                std::fill(line.end() - pad, line.end(), body[w - 1]);
                GaussLine(body, blurred.data(), w, kx);
            } else {
                BoxLine(body, blurred.data(), w, box);
            }
            for (int i = 0; i < w; ++i) out[i] = mixX(body[i], blurred[i]);
        }
    });

    // Down, in strips of columns: a strip's rows stay in cache for every tap
    // (Gaussian) and for the whole slide of the running sum (box).
    auto midRow = [&](int64_t y) { return mid.get() + std::clamp<int64_t>(y, 0, h - 1) * w; };
    const int strip = gauss ? 64 : 256;
    ForBlocks(w, strip, [&](int x0, int x1) {
        const int n = x1 - x0;
        std::vector<V4> acc(n);
        std::vector<Wide> sum(n);
        const Box box(wy > 0.0 ? wy : 1.0);
        if (wy > 0.0 && !gauss) {
            ClampedRange(box.first, box.last, h, [&](int64_t y, int64_t times) {
                const V4* row = midRow(y) + x0;
                for (int i = 0; i < n; ++i) sum[i] += Wide(row[i]) * double(times);
            });
        }
        const int radius = static_cast<int>(ky.size()) - 1;
        std::vector<const V4*> taps(gauss ? 2 * radius + 1 : 0);
        for (int y = 0; y < h; ++y) {
            const V4* centre = midRow(y) + x0;
            T* out = PixelRow(dst, w, y) + size_t(x0) * 4;
            if (wy <= 0.0) {
                for (int i = 0; i < n; ++i) Put(out + size_t(i) * 4, centre[i]);
                continue;
            }
            if (gauss) {
                for (int t = -radius; t <= radius; ++t) taps[t + radius] = midRow(int64_t(y) + t) + x0;
                GaussStrip(taps.data() + radius, acc.data(), n, ky);
            } else {
                const V4* a = midRow(box.first + y) + x0;
                const V4* b = midRow(box.last + y) + x0;
                for (int i = 0; i < n; ++i) {
                    acc[i] = box.At(sum[i], a[i], b[i]);
                    sum[i] += Wide(b[i]) - Wide(a[i]);
                }
            }
            for (int i = 0; i < n; ++i) Put(out + size_t(i) * 4, mixY(centre[i], acc[i]));
        }
    });
}

// ---- Transform ----------------------------------------------------------------

// To 16.16, rounded to nearest. Coordinates beyond 16384 pixels (and NaN)
// are held there so that the value stays in range.
inline int32_t Fixed(double v)
{
    double f = v * 65536.0 + 0.5;
    if (!(f > -1073741824.0)) f = -1073741824.0;
    if (f > 1073741824.0) f = 1073741824.0;
    const int32_t i = static_cast<int32_t>(f);
    return i > f ? i - 1 : i;
}

inline double NonZero(double s) { return std::fabs(s) >= 1e-7 ? s : (s < 0.0 ? -1e-7 : 1e-7); }

}  // namespace

Image* Image::ResizeOfImage(int width, int height) const
{
    if ((width <= 0 || width == Width()) && (height <= 0 || height == Height())) return CopyOfImage();
    Image* out = NewLike(*this, width, height);
    const int sw = Width(), sh = Height(), dw = out->Width(), dh = out->Height();
    if (sw <= 0 || sh <= 0 || dw <= 0 || dh <= 0) return out;
    if (IsFloat()) ResizePixels(RowF(0), sw, sh, out->RowF(0), dw, dh);
    else ResizePixels(RowW(0), sw, sh, out->RowW(0), dw, dh);
    for (size_t i = 0; i < auxData_.size(); ++i)
        ResizePlane(auxData_[i].get(), sw, sh, out->auxData_[i].get(), dw, dh);
    return out;
}

Image* Image::BlurOfImage(const BlurSpec& spec) const
{
    const bool any = spec.red || spec.green || spec.blue || spec.alpha;
    const int w = Width(), h = Height();
    if (w <= 0 || h <= 0 || !any || !(spec.xSize > 0.0 || spec.ySize > 0.0)) return CopyOfImage();
    Image* out = NewLike(*this);
    const size_t plane = size_t(w) * h;
    for (size_t i = 0; i < auxData_.size(); ++i)
        std::memcpy(out->auxData_[i].get(), auxData_[i].get(), plane * sizeof(float));
    if (IsFloat()) BlurPixels(RowF(0), out->RowF(0), w, h, spec);
    else BlurPixels(RowW(0), out->RowW(0), w, h, spec);
    return out;
}

// Coordinates are in units of the picture width, so that pixels stay square
// under rotation: pixel centre x lies at (x + 0.5) / width, and y at
// (y + 0.5) / (width * pixelAspect), which spans 0..1/pictureAspect. Centre
// and pivot arrive as fractions of width and height and are taken into these
// units. Rows run upward, so a positive angle turns the picture
// counter-clockwise as it is viewed.
Image* Image::TransformOf(const TransformSpec& spec) const
{
    Image* out = NewLike(*this);
    const int w = Width(), h = Height();
    const size_t plane = size_t(w) * h;
    for (size_t i = 0; i < auxData_.size(); ++i)
        std::memcpy(out->auxData_[i].get(), auxData_[i].get(), plane * sizeof(float));
    if (w <= 0 || h <= 0) return out;

    double aspect = XAspect() / YAspect();
    if (!(aspect > 0.0) || !std::isfinite(aspect)) aspect = 1.0;
    const double unitX = w, unitY = w * aspect;  // pixels per unit on each axis
    const double cx = spec.centerX, cy = spec.centerY * h / unitY;
    const double px = spec.pivotX, py = spec.pivotY * h / unitY;
    const double sx = NonZero(spec.sizeX), sy = NonZero(spec.sizeY);
    const double a = spec.angle * std::numbers::pi / 180.0;
    const double cs = std::cos(a), sn = std::sin(a);
    const Edge edge = spec.edges == EdgeWrap || spec.edges == EdgeDuplicate ? Edge(spec.edges) : EdgeBlack;

    // Output pixel to source pixel: back from the centre, un-rotate, un-scale,
    // out from the pivot. Affine, so a start and two steps describe it.
    auto source = [&](double x, double y, double& ox, double& oy) {
        const double dx = (x + 0.5) / unitX - cx, dy = (y + 0.5) / unitY - cy;
        ox = (px + (cs * dx + sn * dy) / sx) * unitX - 0.5;
        oy = (py + (-sn * dx + cs * dy) / sy) * unitY - 0.5;
    };
    double ox, oy, xx, xy, yx, yy;
    source(0.0, 0.0, ox, oy);
    source(1.0, 0.0, xx, xy);
    source(0.0, 1.0, yx, yy);
    xx -= ox; xy -= oy; yx -= ox; yy -= oy;

    // Tiles keep a rotated walk through the source within cache.
    constexpr int kTile = 64;
    const int tilesX = (w + kTile - 1) / kTile;
    const bool isFloat = IsFloat();
    ForBlocks(h, kRowBlock, [&](int y0, int y1) {
        for (int t = 0; t < tilesX; ++t) {
            const int x0 = t * kTile, x1 = std::min(w, x0 + kTile);
            for (int y = y0; y < y1; ++y) {
                const double rx = ox + y * yx, ry = oy + y * yy;
                if (isFloat) {
                    float* o = out->RowF(y);
                    for (int x = x0; x < x1; ++x)
                        SamplePixel(Fixed(rx + x * xx), Fixed(ry + x * xy), edge, o + size_t(x) * 4);
                } else {
                    uint16_t* o = out->RowW(y);
                    uint32_t p[4];
                    for (int x = x0; x < x1; ++x) {
                        SamplePixel(Fixed(rx + x * xx), Fixed(ry + x * xy), edge, p);
                        for (int c = 0; c < 4; ++c) o[size_t(x) * 4 + c] = static_cast<uint16_t>(p[c]);
                    }
                }
            }
        }
    });
    return out;
}

}  // namespace host
