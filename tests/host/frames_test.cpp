// Frames on request: the times a tool asks for and the frames that arrive from
// a sequence (none for 1e10, none outside the files on disk), the frame cache
// that spares a sequence render from making a frame twice, and its budget.
#include <filesystem>
#include "host/imageio.h"
#include "support.h"

using namespace zvtest;

namespace {

// Asks for t, t + 1, t - 1, no frame, t + 5; notes what each slot brought:
// the red code of its first pixel, or -1 for none.
struct KEffectWitness : KEffectThreads {
    KEffectWitness() { AllocFrames(5); }
    int32_t GetFrameTimes(int32_t, float t, float* times) override
    {
        if (times) {
            const float wanted[5] = {t, t + 1.0f, t - 1.0f, 1e10f, t + 5.0f};
            std::copy_n(wanted, 5, times);
        }
        return 5;
    }
    void ProcessJob(int32_t, int32_t, KImage* source, KImage* target) override
    {
        seen.clear();
        for (auto& f : frames) seen.push_back(f ? int32_t(At<KPixel>(*f, 0, 0).r) : -1);
        target->CopyFrom(*source);
    }
    std::vector<int32_t> seen;
};

// Frames 3 to 6 of a sequence, each a 2 x 2 plate whose red code is 1000 times its number.
struct Sequence {
    TempDir dir;
    std::string pattern = (dir.path / "shot.####.exr").string();
    Sequence()
    {
        for (int frame = 3; frame <= 6; ++frame) {
            HostImg img = Make(2, 2, true, [&](int, int, int c) { return c == 0 ? frame * 1000 / 65535.0 : 1.0; });
            host::WriteImage(*img, host::FramePath(pattern, frame), host::FileDepth::Float);
        }
    }
};

struct WitnessFlow {
    explicit WitnessFlow(const std::string& pattern) : flow(Local<KEffectWitness>("Witness"))
    {
        loader = &flow.flow.Add("plate", Registered("Loader"));
        flow.flow.SetValue(*loader, In(*loader, "File"), host::MakeText(pattern));
        flow.flow.Connect(flow.node, flow.In("Input"), *loader, loader->op->MainOutput());
    }
    std::vector<int32_t> SeenAt(double t)
    {
        flow.Render(t);
        return static_cast<KEffectWitness*>(EffectOf(flow.node.op.get()))->seen;
    }
    ToolFlow flow;
    host::Flow::Node* loader;
};

TEST(FramesOnRequest, SlotsBringTheAskedFramesAndNoneWhereThereIsNone)
{
    Sequence seq;
    EXPECT_EQ(host::SequenceRange(seq.pattern), std::make_pair(3, 6));
    WitnessFlow w(seq.pattern);
    // At 4: frames 4, 5 and 3 arrive (asked just past each whole time); the
    // 1e10 slot and frame 9, past the last file, come empty.
    EXPECT_EQ(w.SeenAt(4.0), (std::vector<int32_t>{4000, 5000, 3000, -1, -1}));
    // At 3 the frame before the first file is none, like 8.
    EXPECT_EQ(w.SeenAt(3.0), (std::vector<int32_t>{3000, 4000, -1, -1, -1}));
    // A time between two frames reads the earlier one.
    EXPECT_EQ(w.SeenAt(3.5), (std::vector<int32_t>{3000, 4000, -1, -1, -1}));
}

TEST(FramesOnRequest, ASequenceRenderMakesEachFrameOnceWithinItsBudget)
{
    Sequence seq;
    auto runs = [&](uint64_t budget) {
        WitnessFlow w(seq.pattern);
        w.flow.flow.cacheBudget = budget;
        w.flow.flow.StartRender();
        const uint64_t before = w.flow.flow.Runs();
        for (double t : {4.0, 5.0, 6.0}) w.SeenAt(t);
        return w.flow.flow.Runs() - before;
    };
    // The witness three times; the Loader at 4, 5, 3, 9, then only 6, 10, then 7, 11.
    EXPECT_EQ(runs(uint64_t(2048) << 20), 3u + 8u);
    // With no room every neighbour is made again on each frame.
    EXPECT_EQ(runs(0), 3u + 12u);
    // Room for three 2 x 2 float frames (or empty results) keeps the last
    // three read: of 4, 5, 3, 9 those after 4, so that 5 is found again.
    EXPECT_EQ(runs(3 * 2 * 2 * 16), 3u + 4u + 3u + 3u);

    // An edit makes what was kept stale: the next render asks again.
    WitnessFlow w(seq.pattern);
    w.SeenAt(4.0);
    const uint64_t before = w.flow.flow.Runs();
    w.flow.flow.SetValue(*w.loader, In(*w.loader, "File"), host::MakeText(seq.pattern));
    w.SeenAt(4.0);
    EXPECT_EQ(w.flow.flow.Runs() - before, 5u);
}

// Vectors and normals go out under their common names and come back bit for
// bit; a plain file reads with no planes.
TEST(FramesOnRequest, ExtraPlanesRoundTripThroughEXR)
{
    TempDir dir;
    const std::vector<int> planes = {host::ChanVectorX, host::ChanVectorY, host::ChanNormalX, host::ChanNormalY,
                                     host::ChanNormalZ, host::ChanZ};
    HostImg img = Make(5, 3, true, [](int x, int y, int c) { return 0.1 * x - 0.37 * y + 0.013 * c; }, planes);
    for (size_t p = 0; p < planes.size(); ++p)
        for (int i = 0; i < 15; ++i) img->AuxPlane(planes[p])[i] = float(i) * 1.25f - float(p) * 3.1f + 1e-3f * i;
    const std::string file = (dir.path / "pass.exr").string();
    host::WriteImage(*img, file, host::FileDepth::Float);
    HostImg back(host::ReadImage(file));
    ASSERT_TRUE(back->IsFloat());
    std::vector<int> got = back->AuxChannels(), want = planes;
    std::sort(got.begin(), got.end());
    std::sort(want.begin(), want.end());
    EXPECT_EQ(got, want);
    EXPECT_EQ(Differ(*Img(KImage::Wrap(img.get(), false)), *Img(KImage::Wrap(back.get(), false))), "");
    for (int c : planes)
        EXPECT_EQ(std::memcmp(back->AuxPlane(c), img->AuxPlane(c), 15 * sizeof(float)), 0) << c;

    HostImg plain = Make(2, 2, true, [](int, int, int) { return 0.5; });
    host::WriteImage(*plain, file, host::FileDepth::Half);
    EXPECT_TRUE(HostImg(host::ReadImage(file))->AuxChannels().empty());

    // The names each plane takes, and some it answers to.
    const std::pair<const char*, int> names[] = {
        {"vel.x", host::ChanVectorX}, {"motion.y", host::ChanVectorY}, {"N.x", host::ChanNormalX},
        {"n.Z", host::ChanNormalZ},   {"Z", host::ChanZ},              {"uv.u", host::ChanU},
        {"R", -1},                    {"vel.z", -1}};
    for (auto [name, channel] : names) EXPECT_EQ(host::AuxChannelOf(name), channel) << name;
    EXPECT_EQ(host::AuxNameOf(host::ChanVectorY), "vel.y");
    EXPECT_EQ(host::AuxNameOf(host::ChanNormalZ), "N.z");
}

}  // namespace
