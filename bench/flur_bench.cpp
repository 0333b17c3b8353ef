// The ring filters and the fill over a UHD float plate:
//   Flur/length:L, Microwaves/length:L   one job, so measured against the
//       single-thread memcpy floor (`x_floor`), and beside a gathering radial
//       blur of 32 taps over the same reach, built from OpenCV's bilinear remap
//       on one thread (`x_gather` = Flur's time over the gather's)
//   GrowColor/threads:N   a frame 90% transparent (one opaque band), at its
//       defaults, against the memcpy floor at the same thread count
#include <cstring>
#include <map>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include "support.h"

using namespace zvbench;

namespace {

// Zoom-blur by gathering: 32 bilinear reads along the ray towards the centre,
// spanning `length` of the way there, averaged. The maps are made beforehand.
struct Gather {
    Gather(const KImage& plate, float length)
        : source(plate.height, plate.width, CV_32FC4, plate.RowF(0), plate.RowBytes())
    {
        const float cx = 0.5f * float(plate.width - 1), cy = 0.5f * float(plate.height - 1);
        for (int i = 0; i < 32; ++i) {
            const float s = 1.0f - length * float(i) / 32.0f;
            cv::Mat mx(plate.height, plate.width, CV_32FC1), my(plate.height, plate.width, CV_32FC1);
            for (int y = 0; y < plate.height; ++y)
                for (int x = 0; x < plate.width; ++x) {
                    mx.at<float>(y, x) = cx + (float(x) - cx) * s;
                    my.at<float>(y, x) = cy + (float(y) - cy) * s;
                }
            cv::Mat m1, m2;
            cv::convertMaps(mx, my, m1, m2, CV_16SC2);
            maps.push_back({m1, m2});
        }
    }
    void Run()
    {
        sum.create(source.size(), CV_32FC4);
        sum.setTo(cv::Scalar::all(0));
        for (auto& [m1, m2] : maps) {
            cv::remap(source, tap, m1, m2, cv::INTER_LINEAR, cv::BORDER_REPLICATE);
            cv::add(sum, tap, sum);
        }
        sum.convertTo(sum, CV_32FC4, 1.0 / 32.0);
    }
    cv::Mat source, tap, sum;
    std::vector<std::pair<cv::Mat, cv::Mat>> maps;
};

// The gather's best time for a length, measured once per run.
double GatherTime(const KImage& plate, float length)
{
    static std::map<float, double> known;
    if (auto it = known.find(length); it != known.end()) return it->second;
    cv::setNumThreads(1);
    Gather g(plate, length);
    return known[length] = Best(3, [&] { g.Run(); });
}

KImage* Picture()
{
    static std::unique_ptr<KImage> plate(Plate(true));
    return plate.get();
}

void BM_Ring(benchmark::State& state, const char* className)
{
    Threads one(1);
    KImage* plate = Picture();
    std::unique_ptr<KImage> target(plate->CreateLike());
    Tool tool(className);
    const float length = float(state.range(0)) / 10.0f;
    tool.Set("Leng"_id, length);
    const KRenderSettings s{.depth = 2};
    KImage* out = target.get();
    Measure(state, *plate, *target, [&] { RunProcess(*tool.effect, plate, out, s); });
    const double gather = GatherTime(*plate, length);
    state.counters["gather_ms"] = gather * 1e3;
    state.counters["x_gather"] = state.counters["best_ms"] / (gather * 1e3);
}

void BM_GrowColor(benchmark::State& state)
{
    Threads threads(int(state.range(0)));
    std::unique_ptr<KImage> frame(KImage::Create(3840, 2160, true));
    // Transparent pixels written as such: untouched pages would all read one zero
    // page and make the floor's copy cheaper than any real frame's.
    for (int32_t y = 0; y < frame->height; ++y) std::memset(frame->RowW(y), 0, frame->RowBytes());
    for (int32_t y = 1000; y < 1216; ++y)  // a tenth of the rows opaque
        for (int32_t x = 0; x < frame->width; ++x)
            frame->SetPixel(x, y, KPixelF{x / 3840.0f, 0.5f, y / 2160.0f, 1.0f});
    std::unique_ptr<KImage> target(frame->CreateLike());
    Tool tool("ZV_GrowColor");
    const KRenderSettings s{.depth = 2};
    KImage* out = target.get();
    Measure(state, *frame, *target, [&] { RunProcess(*tool.effect, frame.get(), out, s); });
}

}  // namespace

BENCHMARK_CAPTURE(BM_Ring, Flur, "ZV_Flur")->ArgName("length10")->Arg(1)->Arg(10)
    ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
BENCHMARK_CAPTURE(BM_Ring, Microwaves, "ZV_Microwaves")->ArgName("length10")->Arg(5)
    ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
BENCHMARK(BM_GrowColor)->ArgName("threads")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
