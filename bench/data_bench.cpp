// dMath and dSort over a table of 1,000,000 items, a Vector3 "position" and a
// Float "value", both filled by the integer hash that bench/numpy_data.py
// repeats, so that NumPy works on the very same arrays:
//   DataMath   result = (position.x + 0.5) * 2 + (value - 0.25) * 3
//   DataSort   "All Follow Key" by value, ascending; both channels gathered
// Each figure is the tool's whole compute (the new table included) beside a
// floor measured in the same run, a memcpy of the table's bytes. `check` is
// the sum of the result, or of the sorted values times their place, which
// the NumPy script prints too.
#include <cstring>
#include <memory>
#include "data/effect_data.h"
#include "support.h"

using namespace zvbench;

namespace {

constexpr int32_t kItems = 1'000'000;

// Float in [0, 1) from item i's component c: 24 bits of a 32-bit hash.
float Hashed(uint32_t i, uint32_t c)
{
    uint32_t h = (i * 4u + c) * 2654435761u;
    h ^= h >> 15;
    h *= 2246822519u;
    h ^= h >> 13;
    return float(h >> 8) * (1.0f / 16777216.0f);
}

std::unique_ptr<KDataTable> Table()
{
    auto t = std::make_unique<KDataTable>();
    auto p = KDataChannel::Create("position", kDataVector3, kItems);
    auto v = KDataChannel::Create("value", kDataFloat, kItems);
    for (int32_t i = 0; i < kItems; ++i) {
        for (uint32_t c = 0; c < 3; ++c) p->floats[size_t(i) * 3 + c] = Hashed(uint32_t(i), c);
        v->floats[size_t(i)] = Hashed(uint32_t(i), 3);
    }
    t->Add(std::move(p));
    t->Add(std::move(v));
    return t;
}

struct DataTool {
    explicit DataTool(const char* className) : op(host::Registry::Get().FindClass(className)->creator())
    {
        if (auto* t = dynamic_cast<ZV_ThreadedOperator*>(op.get())) effect = dynamic_cast<KEffectData*>(t->Effect());
        if (auto* s = dynamic_cast<ZV_SourceOperator*>(op.get())) effect = dynamic_cast<KEffectData*>(s->Effect());
    }
    template <class T> void Set(uint32_t id, T v) { *static_cast<T*>(effect->inputList.Find(id)->field) = v; }
    std::unique_ptr<host::Operator> op;
    KEffectData* effect = nullptr;
};

// Best of the iterations of the tool's compute on `table`, beside the best
// copy of the table's bytes; `check` from the last result.
void Run(benchmark::State& state, DataTool& tool, KDataTable& table, double (*check)(const KDataTable&))
{
    const std::vector<float>& p = table.Channel(0)->floats;
    const std::vector<float>& v = table.Channel(1)->floats;
    std::vector<float> pc(p.size()), vc(v.size());
    auto copy = [&] {
        std::memcpy(pc.data(), p.data(), p.size() * 4);
        std::memcpy(vc.data(), v.data(), v.size() * 4);
        benchmark::DoNotOptimize(pc.data());
    };
    tool.Set(1u, &table);  // the input "Data"

    double best = 1e30, floor = Best(3, copy);
    std::unique_ptr<KDataTable> out;
    for (auto _ : state) {
        out.reset();
        best = std::min(best, Seconds([&] { out = tool.effect->Compute(); }));
        state.PauseTiming();
        floor = std::min(floor, Seconds(copy));
        state.ResumeTiming();
    }
    tool.Set(1u, static_cast<KDataTable*>(nullptr));
    state.counters["best_ms"] = best * 1e3;
    state.counters["floor_ms"] = floor * 1e3;
    state.counters["x_floor"] = best / floor;
    state.counters["check"] = check(*out);
}

void BM_DataMath(benchmark::State& state)
{
    auto table = Table();
    DataTool tool("ZV_DataMath");
    tool.Set("CNa1"_id, std::string("position"));
    tool.Set("V1Ad"_id, 0.5f);
    tool.Set("V1Mu"_id, 2.0f);
    tool.Set("CNa2"_id, std::string("value"));
    tool.Set("V2Ad"_id, -0.25f);
    tool.Set("V2Mu"_id, 3.0f);
    Run(state, tool, *table, [](const KDataTable& t) {
        double sum = 0.0;
        for (float x : t.FindAny("result", kDataFloat)->floats) sum += x;
        return sum;
    });
}

void BM_DataSort(benchmark::State& state)
{
    auto table = Table();
    DataTool tool("ZV_DataSort");
    tool.Set("Type"_id, 1);
    tool.Set("CNK1"_id, std::string("value"));
    Run(state, tool, *table, [](const KDataTable& t) {
        double sum = 0.0;
        const std::vector<float>& v = t.FindAny("value", kDataFloat)->floats;
        const std::vector<float>& p = t.FindAny("position", kDataVector3)->floats;
        for (size_t i = 0; i < v.size(); ++i) sum += double(v[i]) * double(i) + p[i * 3];
        return sum;
    });
}

}  // namespace

BENCHMARK(BM_DataMath)->Name("DataMath/1M")->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
BENCHMARK(BM_DataSort)->Name("DataSort/1M")->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
