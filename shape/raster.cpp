#include "shape/raster.h"
#include <algorithm>
#include <cmath>
#include "raster/image.h"
#include "shape/geometry.h"

KPolygonRaster::KPolygonRaster(const KImage& image, int32_t sample)
    : KPolygonRaster(image.width, image.height, image.PixelAspect(), sample)
{
}

KPolygonRaster::KPolygonRaster(int32_t w, int32_t h, float aspect, int32_t sample)
    : width(w), height(h), sampleX(std::max(sample, 1)), sampleY(std::max(sample, 1)), pixelAspect(aspect)
{
    sampleArea = sampleX * sampleY;
}

namespace {

struct Active {
    const KScanEdge* e;
    double slope;  // dx/dy
    double xa, xb, xm;
};

// Adds to `cover` (partial pixels) and `run` (from a pixel on, whole) the part
// of a strip of height h that lies right of the edge from xa (top) to xb.
void RightOf(double xa, double xb, float h, float* cover, float* run, int32_t width)
{
    const double x0 = std::min(xa, xb), x1 = std::max(xa, xb);
    const double f1 = std::floor(x1);
    if (f1 < 0.0) {
        run[0] += h;
        return;
    }
    const int32_t p0 = static_cast<int32_t>(std::max(std::floor(x0), 0.0));
    const int32_t p1 = static_cast<int32_t>(std::min(f1, double(width - 1)));
    const double span = x1 - x0;
    for (int32_t p = p0; p <= p1; ++p) {
        double f;
        if (span < 1e-9) {
            f = std::clamp(p + 1 - x0, 0.0, 1.0);
        } else {
            const double ta = std::clamp((p - x0) / span, 0.0, 1.0), tb = std::clamp((p + 1 - x0) / span, 0.0, 1.0);
            const double ma = std::max(x0, double(p)), mb = std::min(x1, double(p + 1));
            f = ta + (tb - ta) * (p + 1 - (ma + mb) * 0.5);
        }
        cover[p] += static_cast<float>(h * f);
    }
    if (f1 + 1.0 < width) run[static_cast<int32_t>(f1) + 1] += h;
}

}  // namespace

void KPolygonRaster::Raster(const KShape& shape, int32_t winding, const bool* cancel)
{
    if (winding >= 0) nonZero = winding == 1;
    mask.clear();
    rowLow = rowHigh = 0;
    if (width < 1 || height < 1) return;
    std::vector<KScanEdge> edges = KToScanEdges(shape, double(width), double(width) * pixelAspect, 0.0, 0.0,
                                                std::max(width, height));
    if (edges.empty()) return;
    std::sort(edges.begin(), edges.end(), [](const KScanEdge& a, const KScanEdge& b) { return a.y0 < b.y0; });
    double top = edges[0].y1;
    std::vector<double> ys;
    ys.reserve(edges.size() * 2);
    for (const KScanEdge& e : edges) {
        top = std::max(top, e.y1);
        ys.push_back(e.y0);
        ys.push_back(e.y1);
    }
    std::sort(ys.begin(), ys.end());
    rowLow = static_cast<int32_t>(std::clamp(std::floor(edges[0].y0), 0.0, double(height)));
    rowHigh = static_cast<int32_t>(std::clamp(std::floor(top) + 1.0, 0.0, double(height)));
    if (rowHigh <= rowLow) return;
    mask.assign(size_t(rowHigh - rowLow) * width, 0);

    std::vector<float> cover(width + 1), run(width + 1);
    std::vector<Active> active;
    std::vector<double> cuts;
    size_t nextEdge = 0, nextY = 0;
    const bool hard = sampleX == 1 && sampleY == 1;
    for (int32_t row = rowLow; row < rowHigh; ++row) {
        if (cancel && *cancel) break;
        // Strip boundaries: the samples of the row, and every vertex inside it.
        cuts.clear();
        if (hard) {
            cuts = {row + 0.5, row + 0.5};
        } else {
            for (int32_t k = 0; k <= sampleY; ++k) cuts.push_back(row + double(k) / sampleY);
            while (nextY < ys.size() && ys[nextY] <= row) ++nextY;
            for (size_t i = nextY; i < ys.size() && ys[i] < row + 1; ++i) cuts.push_back(ys[i]);
            std::sort(cuts.begin(), cuts.end());
        }
        bool touched = false;
        for (size_t c = 0; c + 1 < cuts.size(); ++c) {
            const double ya = cuts[c], yb = cuts[c + 1], ym = hard ? ya : (ya + yb) * 0.5;
            if (!hard && yb - ya <= 0.0) continue;
            while (nextEdge < edges.size() && edges[nextEdge].y0 <= ym) {
                const KScanEdge& e = edges[nextEdge++];
                active.push_back({&e, (e.x1 - e.x0) / (e.y1 - e.y0), 0, 0, 0});
            }
            active.erase(std::remove_if(active.begin(), active.end(), [&](const Active& a) { return a.e->y1 <= ym; }),
                         active.end());
            if (active.empty()) continue;
            for (Active& a : active) {
                a.xa = a.e->x0 + (ya - a.e->y0) * a.slope;
                a.xb = a.e->x0 + (yb - a.e->y0) * a.slope;
                a.xm = a.e->x0 + (ym - a.e->y0) * a.slope;
            }
            // Nearly sorted from the strip before: insertion.
            for (size_t i = 1; i < active.size(); ++i)
                for (size_t j = i; j > 0 && active[j].xm < active[j - 1].xm; --j) std::swap(active[j], active[j - 1]);
            int32_t count[3] = {0, 0, 0};
            bool inside = false;
            const Active* opened = nullptr;
            const float h = static_cast<float>(hard ? 1.0 : yb - ya);
            for (const Active& a : active) {
                count[a.e->attribute] += a.e->direction;
                const bool now = nonZero ? ((count[0] != 0 || count[2] != 0) && count[1] == 0)
                                         : (((count[0] & 1) || count[2] != 0) && count[1] == 0);
                if (now == inside) continue;
                inside = now;
                if (now) {
                    opened = &a;
                    continue;
                }
                touched = true;
                if (hard) {
                    // Pixels whose centres lie inside.
                    const int32_t x0 = static_cast<int32_t>(std::clamp(std::ceil(opened->xm - 0.5), 0.0, double(width)));
                    const int32_t x1 = static_cast<int32_t>(std::clamp(std::ceil(a.xm - 0.5), 0.0, double(width)));
                    if (x1 > x0) {
                        run[x0] += 1.0f;
                        run[x1] -= 1.0f;
                    }
                    continue;
                }
                RightOf(opened->xa, opened->xb, h, cover.data(), run.data(), width);
                RightOf(a.xa, a.xb, -h, cover.data(), run.data(), width);
            }
        }
        if (!touched) continue;
        uint8_t* out = &mask[size_t(row - rowLow) * width];
        float sum = 0.0f;
        for (int32_t x = 0; x < width; ++x) {
            sum += run[x];
            const float v = std::clamp(sum + cover[x], 0.0f, 1.0f);
            out[x] = static_cast<uint8_t>(v * 255.0f + 0.5f);
            cover[x] = run[x] = 0.0f;
        }
        run[width] = 0.0f;
    }
}

// ---------------------------------------------------------------------------

namespace {

inline uint32_t Scale16(uint32_t x)
{
    const uint32_t u = x + 0x8000;
    return (u + (u >> 16)) >> 16;
}

}  // namespace

void KPaintRow(KImage& image, int32_t y, const KPolygonRaster& raster, const KShapePaint& paint, int32_t merge)
{
    if (y < raster.rowLow || y >= raster.rowHigh || raster.width != image.width) return;
    const uint8_t* m = raster.Row(y);
    const int32_t w = image.width;
    const KColor c = paint.color;
    const bool outside = c.r < 0 || c.g < 0 || c.b < 0 || c.a < 0 || c.r > 1 || c.g > 1 || c.b > 1 || c.a > 1;
    if (image.IsFloat() || outside) {
        if (!image.IsFloat()) {
            // Colours beyond 0..1 go through floats and are clamped back.
            uint16_t* row = image.RowW(y);
            for (int32_t x = 0; x < w; ++x) {
                if (!m[x]) continue;
                const float k = m[x] * (1.0f / 255.0f) * paint.opacity;
                const float col[4] = {c.r, c.g, c.b, c.a};
                const float keep = merge == 1 ? 1.0f - c.a * k : (merge == 0 ? 0.0f : 1.0f);
                for (int i = 0; i < 4; ++i) {
                    const float t = row[4 * x + i] * (1.0f / 65535.0f);
                    const float v = std::clamp(t * keep + col[i] * k, 0.0f, 1.0f);
                    row[4 * x + i] = static_cast<uint16_t>(v * 65535.0f + 0.5f);
                }
            }
            return;
        }
        float* row = image.RowF(y);
        const float col[4] = {c.r, c.g, c.b, c.a};
        for (int32_t x = 0; x < w; ++x) {
            if (!m[x]) continue;
            const float k = m[x] * (1.0f / 255.0f) * paint.opacity;
            const float keep = merge == 0 ? 0.0f : 1.0f - c.a * k;
            for (int i = 0; i < 4; ++i) row[4 * x + i] = row[4 * x + i] * keep + col[i] * k;
        }
        return;
    }
    uint16_t* row = image.RowW(y);
    const uint32_t o = static_cast<uint32_t>(std::clamp(paint.opacity, 0.0f, 1.0f) * 65535.0f);
    for (int32_t x = 0; x < w; ++x) {
        if (!m[x]) continue;
        const uint32_t k = Scale16(uint32_t(m[x]) * 257u * o);
        const uint32_t a = Scale16(paint.color16[3] * k);
        for (int i = 0; i < 4; ++i) {
            const uint32_t src = Scale16(paint.color16[i] * k);
            const uint32_t v = merge == 0 ? src : Scale16(row[4 * x + i] * (65535u - a)) + src;
            row[4 * x + i] = static_cast<uint16_t>(std::min(v, 65535u));
        }
    }
}

void KPaint(KImage& image, const KPolygonRaster& raster, const KShapePaint& paint, int32_t merge)
{
    if (raster.width < 2 || raster.height < 2) return;
    for (int32_t y = 0; y < image.height; ++y) KPaintRow(image, y, raster, paint, merge);
}

void KRenderList(const KShapeList& list, const KImage& image, const KRenderListSettings& settings,
                 std::vector<KPaintStep>& steps)
{
    if (image.width < 2 || image.height < 2) return;
    for (const KShape* s = list.First(); s; s = NextShape(s)) {
        KShapeStyle style = list.styles[0];
        if (s->hasFill) style.fill.color = s->fillColor;
        if (s->hasPen) style.pen.color = s->penColor;
        KShapePaint fill = style.paints[0], pen = style.paints[1];
        fill.color = style.fill.color;
        pen.color = style.pen.color;
        fill.DeriveColor16();
        pen.DeriveColor16();
        auto visible = [](const KShapePaint& p) {
            return p.enabled && p.opacity > 0.0f && (p.color.r || p.color.g || p.color.b || p.color.a);
        };
        if (visible(fill) && (s->IsClosed() || settings.forceFill)) {
            auto raster = std::make_unique<KPolygonRaster>(image, settings.sample);
            raster->nonZero = style.fill.rule != 1;
            raster->Raster(*s, settings.winding);
            if (!raster->Empty()) steps.push_back({std::move(raster), fill});
        }
        if (visible(pen)) {
            KShapePen p = style.pen;
            p.thickness *= 0.01f;
            p.dash.precision = 16;
            std::unique_ptr<KShape> stroke(KStroke(*s, p));
            auto raster = std::make_unique<KPolygonRaster>(image, settings.sample);
            raster->nonZero = p.rule != 1;
            raster->Raster(*stroke, -1);
            if (!raster->Empty()) steps.push_back({std::move(raster), pen});
        }
    }
}
