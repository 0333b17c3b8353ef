#include "tools/image/motion_tracker.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include "raster/image.h"

namespace {
constexpr int32_t kFullRGB = 196605;  // three channels of 65535
}

KMotionTracker::KMotionTracker(const KImage& image)
    : width(image.width), height(image.height), pictureAspect(image.PictureAspect()),
      pixelAspect(image.PixelAspect()), image(&image), codes(Codes(image))
{
}

std::vector<uint16_t> KMotionTracker::Codes(const KImage& image)
{
    std::vector<uint16_t> out(size_t(image.width) * image.height * 3);
    for (int32_t y = 0; y < image.height; ++y)
        for (int32_t x = 0; x < image.width; ++x) {
            uint16_t* o = &out[(size_t(y) * image.width + x) * 3];
            if (image.IsFloat()) {
                const float* p = image.RowF(y) + 4 * x;
                for (int c = 0; c < 3; ++c) o[c] = static_cast<uint16_t>(KFloatToInt(p[c]));
            } else {
                const uint16_t* p = image.RowW(y) + 4 * x;
                for (int c = 0; c < 3; ++c) o[c] = p[c];
            }
        }
    return out;
}

void KMotionTracker::FindCandidates()
{
    candidates.clear();
    const int32_t W = width, H = height;
    if (W < kBlock || H < kBlock) return;
    // The Sobel edge strength of each pixel, in codes, summed over red, green and blue.
    std::vector<int32_t> edge(size_t(W) * H, 0);
    const std::unique_ptr<KImage> sobel(image->SobelEdges());
    KImage::RunJobs(H, [&](int32_t y) {
        for (int32_t x = 0; x < W; ++x) {
            int32_t sum = 0;
            for (int c = 0; c < 3; ++c)
                sum += static_cast<int32_t>(sobel->IsFloat() ? KFloatToInt(sobel->RowF(y)[4 * x + c])
                                                             : sobel->RowW(y)[4 * x + c]);
            edge[size_t(y) * W + x] = sum;
        }
    });
    const int64_t T = static_cast<int64_t>(5.0 * edgeThreshold * (5.0 * 196605.0));
    auto margin = [&](int32_t n, int32_t& lo, int32_t& hi) {
        lo = std::clamp(static_cast<int32_t>(n * borderFraction), 0, n - 1);
        hi = std::clamp(static_cast<int32_t>(n - n * borderFraction), 0, n - 1);
    };
    int32_t x0, x1, y0, y1;
    margin(W, x0, x1);
    margin(H, y0, y1);
    // Each window's sum rolls: column sums of five rows, then five columns.
    std::vector<int64_t> column(W, 0);
    for (int32_t y = y0; y < y1 - kBlock; ++y) {
        for (int32_t x = 0; x < W; ++x) {
            if (y == y0) {
                column[x] = 0;
                for (int32_t k = 0; k < kBlock; ++k) column[x] += edge[size_t(y + k) * W + x];
            } else {
                column[x] += edge[size_t(y + kBlock - 1) * W + x] - edge[size_t(y - 1) * W + x];
            }
        }
        int64_t window = 0;
        for (int32_t k = 0; k < kBlock && x0 + k < W; ++k) window += column[x0 + k];
        for (int32_t x = x0; x < x1 - kBlock; ++x) {
            if (x > x0) window += column[x + kBlock - 1] - column[x - 1];
            if (window > T) candidates.push_back({x, y, static_cast<int32_t>(window)});
        }
    }
}

void KMotionTracker::SelectCandidates()
{
    // Strongest first; equal sums keep their scan order, so a run is repeatable.
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const KTrackCandidate& a, const KTrackCandidate& b) { return a.sum > b.sum; });
    const int32_t W = width, H = height;
    const int32_t dx = std::max(static_cast<int32_t>(W * separationFraction), 1);
    const int32_t dy = std::max(static_cast<int32_t>(W * separationFraction * pixelAspect), 1);
    std::vector<uint8_t> taken(size_t(W) * H, 0);
    size_t kept = 0;
    for (const KTrackCandidate& c : candidates) {
        if (taken[size_t(c.y) * W + c.x]) continue;
        candidates[kept++] = c;
        for (int32_t y = std::max(c.y - dy, 0); y < std::min(kBlock + c.y + dy, H); ++y)
            for (int32_t x = std::max(c.x - dx, 0); x < std::min(kBlock + c.x + dx, W); ++x)
                taken[size_t(y) * W + x] = 1;
    }
    candidates.resize(kept);
}

void KMotionTracker::Search(const std::vector<uint16_t>& frame, int32_t x, int32_t y, int32_t& dx,
                            int32_t& dy, int32_t& score) const
{
    const int32_t W = width, H = height;
    int32_t best = kBlock * kBlock * 196608 + 1;
    int32_t bx = x, by = y;
    for (int32_t sy = std::max(y - searchRadiusY, 0); sy < std::min(y + searchRadiusY, H - kBlock); ++sy)
        for (int32_t sx = std::max(x - searchRadiusX, 0); sx < std::min(x + searchRadiusX, W - kBlock); ++sx) {
            int32_t s = 0;
            for (int32_t j = 0; j < kBlock && s < best; ++j) {
                const uint16_t* a = &codes[(size_t(y + j) * W + x) * 3];
                const uint16_t* b = &frame[(size_t(sy + j) * W + sx) * 3];
                for (int32_t i = 0; i < 3 * kBlock; ++i) s += std::abs(int32_t(a[i]) - int32_t(b[i]));
            }
            if (s < best) {
                best = s;
                bx = sx;
                by = sy;
            }
        }
    dx = bx - x;
    dy = by - y;
    score = best;
}

void KMotionTracker::Track(const KImage* previous, const KImage* next)
{
    points.clear();
    auto usable = [&](const KImage* f) { return f && f->width == width && f->height == height; };
    const std::vector<uint16_t> before = usable(previous) ? Codes(*previous) : std::vector<uint16_t>();
    const std::vector<uint16_t> after = usable(next) ? Codes(*next) : std::vector<uint16_t>();
    searchRadiusX = static_cast<int32_t>(width * searchX);
    searchRadiusY = static_cast<int32_t>(height * searchY);
    int32_t n = static_cast<int32_t>(static_cast<float>(candidates.size()) * percentage);
    const int32_t limit = static_cast<int32_t>(double(kBlock * kBlock * kFullRGB) * double(1.0f - matchLevel));
    for (int32_t i = 0; i < n; ++i) {
        const KTrackCandidate& c = candidates[i];
        KTrackedPoint p;
        p.x = c.x;
        p.y = c.y;
        if (!before.empty()) Search(before, c.x, c.y, p.previousX, p.previousY, p.previousScore);
        if (!after.empty()) Search(after, c.x, c.y, p.nextX, p.nextY, p.nextScore);
        if (!before.empty() && !after.empty()) {
            p.motionX = (p.nextX - p.previousX) / 2;
            p.motionY = (p.nextY - p.previousY) / 2;
        } else if (!after.empty()) {
            p.motionX = p.nextX;
            p.motionY = p.nextY;
        } else {
            p.motionX = -p.previousX;
            p.motionY = -p.previousY;
        }
        // A poor match drops the point, and shortens the walk by one as well.
        if (p.previousScore >= limit || p.nextScore >= limit) {
            --n;
            continue;
        }
        points.push_back(p);
    }
    PrepareWeights();
}

void KMotionTracker::MotionAt(int32_t x, int32_t y, float& mx, float& my) const
{
    float sumX = 0.0f, sumY = 0.0f, total = 0.0f;
    for (const KTrackedPoint& p : points) {
        // Distances from the block's centre.
        const int32_t ddx = p.x + kBlock / 2 - x, ddy = p.y + kBlock / 2 - y;
        const int32_t d2 = ddx * ddx + ddy * ddy;
        if (d2 == 0) {
            mx = static_cast<float>(p.motionX);
            my = static_cast<float>(p.motionY);
            return;
        }
        const float w = d2 < static_cast<int32_t>(weights.size()) ? weights[d2] : Weight(d2);
        total += w;
        sumX += w * static_cast<float>(p.motionX);
        sumY += w * static_cast<float>(p.motionY);
    }
    if (total > 1.1920929e-07f) {
        sumX /= total;
        sumY /= total;
    }
    mx = sumX;
    my = sumY;
}

float KMotionTracker::Weight(int32_t d2) const
{
    return std::pow(1.0f / (std::sqrt(static_cast<float>(d2)) / static_cast<float>(width)), radiusPower);
}

void KMotionTracker::PrepareWeights()
{
    // Every squared distance within the picture, worked out once: a render
    // asks for as many as pixels times points.
    weights.clear();
    if (points.empty()) return;
    const int64_t w = width + kBlock, h = height + kBlock;
    weights.resize(static_cast<size_t>(w * w + h * h + 1));
    const int32_t chunks = 64;
    const size_t per = (weights.size() + chunks - 1) / chunks;
    KImage::RunJobs(chunks, [&](int32_t job) {
        for (size_t d2 = job * per; d2 < std::min(weights.size(), (job + 1) * per); ++d2)
            weights[d2] = Weight(static_cast<int32_t>(d2));
    });
}
