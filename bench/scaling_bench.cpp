// Thread scaling of every registered image tool, against what this machine's
// two cores can give at all. The ceiling is measured beside each tool, in the
// same iterations: one copy of a compute loop alone, then two copies at once
// on two threads. Shared or hyper-threaded cores, or another busy process,
// give well under 2, and a tool cannot beat that.
//   Scaling/<tool>    the tool through a flow on a 1920x1080 float plate at
//                     1 and 2 threads: `speedup` = t1 / t2; `ceiling` the two
//                     copies' throughput over one's; `of_ceiling` the ratio
// Warps run with "Filtering" Pixel, so that they are bound by arithmetic and
// not by memory.
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include "host/flow.h"
#include "host/registry.h"
#include "support.h"

using namespace zvbench;

namespace {

// A dependent chain of float arithmetic that stays in registers: no memory
// traffic, so two copies compete only for the cores themselves.
float ComputeLoop(float seed)
{
    float a = seed, b = 1.0f - seed;
    for (int i = 0; i < 4'000'000; ++i) {
        a = a * 0.99999f + b * 1e-5f;
        b = b * 0.99998f + a * 2e-5f;
    }
    return a + b;
}

// The best times of one copy of the loop alone and of two at once.
struct LoopTimes {
    double one = 1e30, two = 1e30;
    void Measure()
    {
        std::atomic<float> sink{0.0f};
        one = std::min(one, Seconds([&] { sink = sink + ComputeLoop(0.25f); }));
        two = std::min(two, Seconds([&] {
            std::thread other([&] { sink = sink + ComputeLoop(0.5f); });
            sink = sink + ComputeLoop(0.25f);
            other.join();
        }));
    }
    double Ceiling() const { return 2.0 * one / two; }
};

// One tool in a flow over a float plate (or at the plate's size, for a generator).
struct FlowTool {
    explicit FlowTool(const host::Registration& r, KImage& plate)
    {
        node = &flow.Add("tool", r);
        host::Operator& op = *node->op;
        if (host::Input* image = op.FindInput("Image"))
            flow.SetValue(*node, image, host::MakeImage(plate.HostImage()));
        else if (host::Input* input = op.FindInput("Input"))
            flow.SetValue(*node, input, host::MakeImage(plate.HostImage()));
        if (host::Input* w = op.FindInput("Width")) flow.SetValue(*node, w, host::MakeNumber(plate.width));
        if (host::Input* h = op.FindInput("Height")) flow.SetValue(*node, h, host::MakeNumber(plate.height));
        if (host::Input* filter = op.FindInput("KFil"); filter && !filter->attrs.items.empty())
            flow.SetValue(*node, filter, host::MakeNumber(1));
    }
    void Render()
    {
        flow.BeginFrame();
        host::Value out = flow.Evaluate(*node, node->op->MainOutput(), 1.0);
        benchmark::DoNotOptimize(out.get());
    }

    host::Flow flow;
    host::Flow::Node* node = nullptr;
};

void BM_Scaling(benchmark::State& state, const host::Registration* r)
{
    std::unique_ptr<KImage> plate(KImage::Create(1920, 1080, true));
    for (int32_t y = 0; y < plate->height; ++y)
        for (int32_t x = 0; x < plate->width; ++x)
            plate->SetPixel(x, y, KPixelF{x / 1920.0f, y / 1080.0f, 0.5f, 1.0f});
    FlowTool tool(*r, *plate);
    double t1 = 1e30, t2 = 1e30;
    LoopTimes loop;
    for (auto _ : state) {
        {
            Threads one(1);
            t1 = std::min(t1, Seconds([&] { tool.Render(); }));
        }
        {
            Threads two(2);
            t2 = std::min(t2, Seconds([&] { tool.Render(); }));
        }
        loop.Measure();
    }
    const double speedup = t1 / t2;
    state.counters["ms_1t"] = t1 * 1e3;
    state.counters["ms_2t"] = t2 * 1e3;
    state.counters["speedup"] = speedup;
    state.counters["ceiling"] = loop.Ceiling();
    state.counters["of_ceiling"] = speedup / loop.Ceiling();
}

// Every image tool of the catalogue: those with an image as their main output.
const bool registered = [] {
    for (const host::Registration& r : host::Registry::Get().All()) {
        if (r.hostTool) continue;
        std::unique_ptr<host::Operator> op(r.creator());
        const host::Output* out = op ? op->MainOutput() : nullptr;
        if (!out || out->dataType != host::DataType::Image) continue;
        benchmark::RegisterBenchmark(("Scaling/" + r.name).c_str(), BM_Scaling, &r)
            ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
    }
    return true;
}();

}  // namespace
