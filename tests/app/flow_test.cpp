// The flow engine on a tool of the test's own: chains longer than any call
// stack, each tool evaluated once per frame, results freed once read.
#include "support.h"

using zvtest::NumberOf;

namespace {

// Out = A + B + 1; counts its runs and keeps sight of its last result.
struct Sum : host::Operator {
    Sum()
    {
        host::InputAttrs number;
        number.control = host::Control::Slider;
        a = AddInput("A", "A", number);
        b = AddInput("B", "B", number);
        out = AddOutput("Out", "Out", host::DataType::Number, 1);
    }
    void Process(host::Request& request) override
    {
        auto value = [&](host::Input* in) {
            auto* n = dynamic_cast<const host::Number*>(request.GetInputData(in).get());
            return n ? n->value : 0.0;
        };
        host::Value made = host::MakeNumber(value(a) + value(b) + 1.0);
        last = made;
        ++runs;
        request.SetOutputData(out, made);
    }
    host::Input *a, *b;
    host::Output* out;
    int runs = 0;
    std::weak_ptr<const host::Parameter> last;
};

// Known to the flows, not to the registry.
const host::Registration& SumTool()
{
    static const host::Registration reg = [] {
        host::Registration r;
        r.creator = [] { return static_cast<host::Operator*>(new Sum); };
        r.className = r.name = "Test_Sum";
        return r;
    }();
    return reg;
}

Sum& Op(host::Flow::Node& n) { return static_cast<Sum&>(*n.op); }

TEST(Flow, AChainLongerThanTheCallStackEvaluates)
{
    host::Flow flow;
    host::Flow::Node* last = &flow.Add("n0", SumTool());
    const int length = 50000;
    for (int i = 1; i < length; ++i) {
        host::Flow::Node& n = flow.Add("n" + std::to_string(i), SumTool());
        flow.Connect(n, Op(n).a, *last, Op(*last).out);
        last = &n;
    }
    EXPECT_EQ(flow.FindCycle(), "");
    flow.BeginFrame();
    EXPECT_EQ(NumberOf(flow.Evaluate(*last, Op(*last).out, 1.0)), double(length));
}

TEST(Flow, AResultReadTwiceIsMadeOnceAndFreedOnceRead)
{
    host::Flow flow;
    host::Flow::Node& c = flow.Add("c", SumTool());
    host::Flow::Node& r1 = flow.Add("r1", SumTool());
    host::Flow::Node& r2 = flow.Add("r2", SumTool());
    host::Flow::Node& f = flow.Add("f", SumTool());
    flow.SetValue(c, Op(c).a, host::MakeNumber(1.0));
    flow.SetValue(c, Op(c).b, host::MakeNumber(2.0));
    flow.Connect(r1, Op(r1).a, c, Op(c).out);
    flow.Connect(r2, Op(r2).a, c, Op(c).out);
    flow.SetValue(r2, Op(r2).b, host::MakeNumber(10.0));
    flow.Connect(f, Op(f).a, r1, Op(r1).out);
    flow.Connect(f, Op(f).b, r2, Op(r2).out);
    flow.BeginFrame();
    EXPECT_EQ(NumberOf(flow.Evaluate(f, Op(f).out, 1.0)), 21.0);  // (4 + 1) + (4 + 11) + 1
    EXPECT_EQ(Op(c).runs, 1);
    EXPECT_TRUE(Op(c).last.expired() && Op(r1).last.expired());
    // What was asked for stays for the frame.
    EXPECT_EQ(NumberOf(flow.Evaluate(f, Op(f).out, 1.0)), 21.0);
    EXPECT_EQ(Op(f).runs, 1);
}

}  // namespace
