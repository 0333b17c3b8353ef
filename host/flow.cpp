#include "host/flow.h"
#include <functional>

namespace host {

Flow::Node& Flow::Add(const std::string& name, const Registration& registration)
{
    auto node = std::make_unique<Node>();
    node->name = name;
    node->registration = &registration;
    node->op.reset(CreateOperator(registration));
    nodes_.push_back(std::move(node));
    return *nodes_.back();
}

Flow::Node* Flow::Find(const std::string& name) const
{
    for (auto& n : nodes_)
        if (n->name == name) return n.get();
    return nullptr;
}

void Flow::SetValue(Node& node, Input* input, Value value, double time)
{
    node.op->SetInputValue(input, std::move(value), time);
}

void Flow::SetKeys(Node& node, Input* input, const std::map<double, double>& keys)
{
    input->keys.numbers = keys;
    input->keys.points.clear();
    if (!keys.empty()) node.op->NotifyChanged(input, input->ValueAt(keys.begin()->first).get(),
                                              keys.begin()->first);
}

void Flow::SetPointKeys(Node& node, Input* input,
                        const std::map<double, std::pair<double, double>>& keys)
{
    input->keys.points = keys;
    input->keys.numbers.clear();
    if (!keys.empty()) node.op->NotifyChanged(input, input->ValueAt(keys.begin()->first).get(),
                                              keys.begin()->first);
}

void Flow::Connect(Node& to, Input* input, Node& from, const Output* output)
{
    connections_[input] = {&from, output};
}

const Flow::Connection* Flow::ConnectionOf(const Input* input) const
{
    auto it = connections_.find(input);
    return it == connections_.end() ? nullptr : &it->second;
}

std::string Flow::FindCycle() const
{
    // Depth-first over "takes input from" edges; a grey node met again is on a cycle.
    std::map<const Node*, int> state;
    std::function<const Node*(const Node*)> visit = [&](const Node* n) -> const Node* {
        state[n] = 1;
        for (auto& in : n->op->Inputs()) {
            const Connection* c = ConnectionOf(in.get());
            if (!c) continue;
            if (state[c->from] == 1) return c->from;
            if (state[c->from] == 0)
                if (const Node* hit = visit(c->from)) return hit;
        }
        state[n] = 2;
        return nullptr;
    };
    for (auto& n : nodes_)
        if (state[n.get()] == 0)
            if (const Node* hit = visit(n.get())) return hit->name;
    return {};
}

void Flow::StartRender()
{
    cache_.clear();
    for (auto& n : nodes_) n->op->OnStartRender();
}

void Flow::BeginFrame() { cache_.clear(); }

namespace {
bool Heavy(DataType t) { return t == DataType::Image || t == DataType::Mask || t == DataType::Custom; }
}  // namespace

Value Flow::InputValue(const Input* input, double time, bool images)
{
    if (const Connection* c = ConnectionOf(input)) {
        if (Heavy(c->output->dataType) && !images) return nullptr;
        return Evaluate(*c->from, c->output, time);
    }
    return input->ValueAt(time);
}

Value Flow::Evaluate(Node& node, const Output* output, double time)
{
    const Outputs& outs = Run(node, time);
    auto it = outs.find(output);
    return it == outs.end() ? nullptr : it->second;
}

const Flow::Outputs& Flow::Run(Node& node, double time)
{
    const auto key = std::make_pair(static_cast<const Node*>(&node), time);
    if (auto it = cache_.find(key); it != cache_.end()) return it->second;
    static const Outputs none;
    if (running_.count(key)) return none;  // a cycle: validated flows never get here
    running_.insert(key);
    // A tool that throws (a bad file, say) leaves the flow usable for the next frame.
    struct Done {
        std::set<std::pair<const Node*, double>>& running;
        std::pair<const Node*, double> key;
        ~Done() { running.erase(key); }
    } done{running_, key};
    Operator& op = *node.op;
    op.SetCurrentTime(time);
    // Keyed inputs that ask to be told of changes hear of the value at this time.
    for (auto& in : op.Inputs())
        if (in->HasKeys() && in->attrs.notify) op.NotifyChanged(in.get(), in->ValueAt(time).get(), time);

    // The early pass sees values but no images, and may ask for other times.
    Request early(time, requestFlags, -1);
    for (auto& in : op.Inputs()) {
        const Connection* c = ConnectionOf(in.get());
        if (c && Heavy(c->output->dataType)) continue;  // left unstated: not fetched yet
        early.SetInputData(in.get(), InputValue(in.get(), time, false), 0);
    }
    op.CheckRequest(early);

    Request request(time, requestFlags, 0);
    for (auto& in : op.Inputs()) {
        const Input* input = in.get();
        for (int slot = 0; slot < std::max(input->attrs.slots, 1); ++slot) {
            const std::optional<double> at = early.InputTime(input, slot);
            if (!at && early.IsStated(input, slot) && !early.GetInputData(input, slot) &&
                Heavy(input->attrs.dataType)) {
                request.SetInputData(input, nullptr, slot);  // a slot the tool does not want
                continue;
            }
            if (slot > 0 && !at) continue;
            request.SetInputData(input, InputValue(input, at ? *at : time, true), slot);
        }
    }
    op.PreCalcProcess(request);
    op.Process(request);

    Outputs outs;
    for (auto& out : op.Outputs()) outs[out.get()] = request.GetOutputData(out.get());
    return cache_[key] = std::move(outs);
}

}  // namespace host
