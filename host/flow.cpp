#include "host/flow.h"
#include <algorithm>
#include <optional>
#include <set>
#include "host/image.h"
#include "host/limits.h"

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
    Forget();
    node.op->SetInputValue(input, std::move(value), time);
}

void Flow::SetKeys(Node& node, Input* input, const std::map<double, double>& keys)
{
    Forget();
    input->keys.numbers = keys;
    input->keys.points.clear();
    input->keys.values.clear();
    if (!keys.empty()) node.op->NotifyChanged(input, input->ValueAt(keys.begin()->first).get(),
                                              keys.begin()->first);
}

void Flow::SetPointKeys(Node& node, Input* input,
                        const std::map<double, std::pair<double, double>>& keys)
{
    Forget();
    input->keys.points = keys;
    input->keys.numbers.clear();
    input->keys.values.clear();
    if (!keys.empty()) node.op->NotifyChanged(input, input->ValueAt(keys.begin()->first).get(),
                                              keys.begin()->first);
}

void Flow::SetValueKeys(Node& node, Input* input, const std::map<double, Value>& keys)
{
    input->keys.values = keys;
    input->keys.numbers.clear();
    input->keys.points.clear();
    if (!keys.empty()) node.op->NotifyChanged(input, input->ValueAt(keys.begin()->first).get(),
                                              keys.begin()->first);
}

void Flow::Connect(Node& to, Input* input, Node& from, const Output* output)
{
    Forget();
    if (const Connection* before = ConnectionOf(input)) --readers_[before->from];
    connections_[input] = {&from, output};
    ++readers_[&from];
}

const Flow::Connection* Flow::ConnectionOf(const Input* input) const
{
    auto it = connections_.find(input);
    return it == connections_.end() ? nullptr : &it->second;
}

std::string Flow::FindCycle() const
{
    // Depth-first over "takes input from" edges, on a stack of its own so that
    // a chain of any length fits; a node met again while on the stack is on a cycle.
    std::map<const Node*, int> state;  // 1 on the stack, 2 done
    for (auto& start : nodes_) {
        if (state[start.get()]) continue;
        state[start.get()] = 1;
        std::vector<std::pair<const Node*, size_t>> stack{{start.get(), 0}};
        while (!stack.empty()) {
            const Node* n = stack.back().first;
            const size_t next = stack.back().second++;
            if (next == n->op->Inputs().size()) {
                state[n] = 2;
                stack.pop_back();
                continue;
            }
            const Connection* c = ConnectionOf(n->op->Inputs()[next].get());
            if (!c) continue;
            int& s = state[c->from];
            if (s == 1) return c->from->name;
            if (s == 0) {
                s = 1;
                stack.push_back({c->from, 0});
            }
        }
    }
    return {};
}

void Flow::StartRender()
{
    Forget();
    for (auto& n : nodes_) n->op->OnStartRender();
}

void Flow::BeginFrame()
{
    for (auto it = cache_.begin(); it != cache_.end();)
        it = kept_.count(it->first) ? std::next(it) : cache_.erase(it);
    unread_.clear();
}

void Flow::Forget()
{
    cache_.clear();
    unread_.clear();
    kept_.clear();
    cachedBytes_ = 0;
}

void Flow::Touch(const Key& key)
{
    if (auto it = kept_.find(key); it != kept_.end()) it->second.used = ++tick_;
}

// Drops the least recently used results until the cache fits its budget,
// sparing those used since `pinnedSince`: the render in progress reads them.
void Flow::Trim(uint64_t pinnedSince)
{
    while (cachedBytes_ > cacheBudget) {
        auto oldest = kept_.end();
        for (auto it = kept_.begin(); it != kept_.end(); ++it)
            if (it->second.used <= pinnedSince && (oldest == kept_.end() || it->second.used < oldest->second.used))
                oldest = it;
        if (oldest == kept_.end()) return;
        cachedBytes_ -= oldest->second.bytes;
        cache_.erase(oldest->first);
        kept_.erase(oldest);
    }
}

namespace {
bool Heavy(DataType t) { return t == DataType::Image || t == DataType::Mask || t == DataType::Custom; }

// What a result holds in memory: its pixels and planes; other values count little.
uint64_t BytesOf(const Value& v)
{
    auto* image = dynamic_cast<const ImageValue*>(v.get());
    if (!image || !image->image) return 64;
    const Image& i = *image->image;
    const uint64_t pixels = uint64_t(i.Width()) * uint64_t(i.Height());
    return pixels * (i.PixelBytes() + 4 * i.AuxChannels().size());
}
}  // namespace

// A tool on the evaluation stack: it first waits for the values its early pass
// sees, then, once that pass has run, for what the pass asked for.
struct Flow::Task {
    Node* node;
    double time;
    std::unique_ptr<Request> early;
};

// Calls f(input, slot, time) for each value a pass states. The early pass sees
// values but no images, and leaves connected images unstated (not fetched yet);
// the main pass takes each slot at the time the early pass asked for, and a
// slot the tool does not want (null time) as nothing.
template <class F> void Flow::ForEachWanted(const Task& task, F f) const
{
    const Operator& op = *task.node->op;
    if (!task.early) {
        for (auto& in : op.Inputs()) {
            const Connection* c = ConnectionOf(in.get());
            if (!c || !Heavy(c->output->dataType)) f(in.get(), 0, std::optional<double>(task.time));
        }
        return;
    }
    const Request& early = *task.early;
    for (auto& in : op.Inputs()) {
        const Input* input = in.get();
        for (int slot = 0; slot < std::max(input->attrs.slots, 1); ++slot) {
            const std::optional<double> at = early.InputTime(input, slot);
            if (!at && early.IsStated(input, slot) && !early.GetInputData(input, slot) &&
                Heavy(input->attrs.dataType))
                f(input, slot, std::optional<double>());
            else if (slot == 0 || at)
                f(input, slot, std::optional<double>(at ? *at : task.time));
        }
    }
}

// A constant or keyed value, or the cached result of a connection (none while
// its tool is still waiting: a cycle, which validated flows never have).
Value Flow::Fetch(const Input* input, double time) const
{
    const Connection* c = ConnectionOf(input);
    if (!c) return input->ValueAt(time);
    auto it = cache_.find({c->from, time});
    if (it == cache_.end()) return nullptr;
    auto out = it->second.find(c->output);
    return out == it->second.end() ? nullptr : out->second;
}

Value Flow::Evaluate(Node& node, const Output* output, double time)
{
    const Outputs& outs = Run(node, time);
    auto it = outs.find(output);
    return it == outs.end() ? nullptr : it->second;
}

// Upstream tools are evaluated on a stack of the flow's own rather than by
// recursion, so a chain of any length fits. The tool on top runs once every
// upstream result it needs is cached; else the first one missing goes on top.
const Flow::Outputs& Flow::Run(Node& node, double time)
{
    const Key root{&node, time};
    const uint64_t pinnedSince = tick_;
    Touch(root);
    std::vector<Task> stack;
    std::set<Key> waiting;
    auto push = [&](Node* n, double t) {
        stack.push_back({n, t, nullptr});
        waiting.insert({n, t});
    };
    if (!cache_.count(root)) push(&node, time);
    while (!stack.empty()) {
        Task& task = stack.back();
        const Key key{task.node, task.time};
        std::optional<Key> missing;
        ForEachWanted(task, [&](const Input* in, int, std::optional<double> at) {
            const Connection* c = ConnectionOf(in);
            if (missing || !at || !c) return;
            const Key from{c->from, *at};
            if (cache_.count(from)) Touch(from);  // needed: spared while the rest is made
            else if (!waiting.count(from)) missing = from;
        });
        if (missing) {
            push(const_cast<Node*>(missing->first), missing->second);
            continue;
        }
        Operator& op = *task.node->op;
        if (!task.early) {
            op.SetCurrentTime(task.time);
            // Keyed inputs that ask to be told of changes hear of the value at this time.
            for (auto& in : op.Inputs())
                if (in->HasKeys() && in->attrs.notify) op.NotifyChanged(in.get(), in->ValueAt(task.time).get(), task.time);
            auto early = std::make_unique<Request>(task.time, requestFlags, -1);
            ForEachWanted(task, [&](const Input* in, int slot, std::optional<double> at) {
                early->SetInputData(in, Fetch(in, *at), slot);
            });
            op.CheckRequest(*early);
            task.early = std::move(early);
            continue;
        }
        Request request(task.time, requestFlags, 0);
        std::vector<Key> read;
        ForEachWanted(task, [&](const Input* in, int slot, std::optional<double> at) {
            request.SetInputData(in, at ? Fetch(in, *at) : nullptr, slot);
            if (const Connection* c = ConnectionOf(in); c && at) read.push_back({c->from, *at});
        });
        for (const Key& k : read) {
            Touch(k);
            auto left = unread_.find(k);
            if (left != unread_.end() && --left->second <= 0) {
                cache_.erase(k);
                unread_.erase(left);
            }
        }
        // A tool reads the file its shown File input names by itself and cannot
        // tell what went wrong: the host vouches for the file first.
        if (!task.node->registration->hostTool)
            for (auto& in : op.Inputs()) {
                auto* file = dynamic_cast<const Text*>(request.GetInputData(in.get()).get());
                if (in->attrs.control == Control::File && in->attrs.visible && file && !file->value.empty())
                    CheckReadableFile(file->value, kMaxTextFileBytes, "file",
                                      "input " + in->id + " of tool " + task.node->name);
            }
        // The early look at what a tool will make has a request of its own,
        // as in a compositing host: what it states does not reach the render.
        Request preCalc = request;
        op.PreCalcProcess(preCalc);
        op.Process(request);
        ++runs_;
        Outputs outs;
        uint64_t bytes = 0;
        for (auto& out : op.Outputs()) {
            outs[out.get()] = request.GetOutputData(out.get());
            bytes += BytesOf(outs[out.get()]);
        }
        cache_[key] = std::move(outs);
        if (key.second != time) {
            kept_[key] = {bytes, ++tick_};
            cachedBytes_ += bytes;
            Trim(pinnedSince);
        } else if (key != root) {
            unread_[key] = readers_[key.first];
        }
        waiting.erase(key);
        stack.pop_back();
    }
    Trim(tick_);  // what this render pinned past the budget
    return cache_[root];
}

}  // namespace host
