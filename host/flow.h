// A flow: named tool instances whose inputs hold constants, keyframes or
// connections to other tools' outputs, evaluated at a time as a compositing
// host would: CheckRequest (the early pass), PreCalcProcess, Process.
#pragma once
#include <map>
#include <memory>
#include <string>
#include <vector>
#include "host/operator.h"
#include "host/registry.h"

namespace host {

class Flow {
public:
    struct Node {
        std::string name;
        const Registration* registration = nullptr;
        std::unique_ptr<Operator> op;
    };
    struct Connection {
        Node* from = nullptr;
        const Output* output = nullptr;
    };

    Node& Add(const std::string& name, const Registration& registration);
    Node* Find(const std::string& name) const;
    const std::vector<std::unique_ptr<Node>>& Nodes() const { return nodes_; }

    // Setting a value notifies the operator, so controls show, hide and relabel.
    void SetValue(Node& node, Input* input, Value value, double time = 0.0);
    void SetKeys(Node& node, Input* input, const std::map<double, double>& keys);
    void SetPointKeys(Node& node, Input* input,
                      const std::map<double, std::pair<double, double>>& keys);
    // Keys of a custom class's values, blended by the class between keys.
    void SetValueKeys(Node& node, Input* input, const std::map<double, Value>& keys);
    void Connect(Node& to, Input* input, Node& from, const Output* output);
    const Connection* ConnectionOf(const Input* input) const;

    // The name of a tool on a cycle, or empty when the flow has none.
    std::string FindCycle() const;

    // Starts a render run: operators forget what earlier runs left them.
    void StartRender();
    // Starts one render: each tool and time is evaluated once in it. A result
    // at the render's own time is kept until every connection that reads it
    // has (then freed, so a long chain holds few images at once); one asked
    // at another time (a time tool's neighbours) goes to the frame cache,
    // where the next frames find it.
    void BeginFrame();
    Value Evaluate(Node& node, const Output* output, double time);

    uint32_t requestFlags = 0;
    // What the frame cache may hold; the least recently used go first. Results
    // the render in progress still needs stay even beyond it.
    uint64_t cacheBudget = uint64_t(2048) << 20;
    uint64_t CachedBytes() const { return cachedBytes_; }
    // Runs of tools since the flow was made: what the cache saved shows here.
    uint64_t Runs() const { return runs_; }

private:
    using Key = std::pair<const Node*, double>;
    using Outputs = std::map<const Output*, Value>;
    struct Task;
    const Outputs& Run(Node& node, double time);
    template <class F> void ForEachWanted(const Task& task, F f) const;
    Value Fetch(const Input* input, double time) const;

    std::vector<std::unique_ptr<Node>> nodes_;
    std::map<const Input*, Connection> connections_;
    std::map<const Node*, int> readers_;  // connections that read each tool
    std::map<Key, Outputs> cache_;
    std::map<Key, int> unread_;  // readers still to come of a cached result
    struct Kept {
        uint64_t bytes = 0;
        uint64_t used = 0;  // tick of the last use
    };
    std::map<Key, Kept> kept_;  // results in the frame cache
    void Touch(const Key& key);
    void Trim(uint64_t pinnedSince);
    void Forget();  // an edit makes every cached result stale
    uint64_t tick_ = 0;
    uint64_t cachedBytes_ = 0;
    uint64_t runs_ = 0;
};

}  // namespace host
