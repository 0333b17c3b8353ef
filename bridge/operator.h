// The host operator classes: thin forwarders that own a tool's effect and its
// KTool. Tools register with ZV_TOOL (framework/registration.h); the bridge
// makes one of these for each.
#pragma once
#include <memory>
#include <string>
#include "bridge/tool.h"
#include "host/operator.h"
#include "host/registry.h"

template <class Base> class ZV_Operator : public Base {
public:
    explicit ZV_Operator(std::unique_ptr<KEffect> made) : effect(std::move(made))
    {
        tool.Build(this, effect.get());
    }
    ~ZV_Operator() override
    {
        tool.Cleanup();
        tool.effect = nullptr;
    }

    void CheckRequest(host::Request& request) override
    {
        Base::CheckRequest(request);
        tool.CheckRequest(request);
    }
    void OnStartRender() override
    {
        tool.OnStartRender();
        Base::OnStartRender();
    }
    void NotifyChanged(host::Input* input, const host::Parameter* value, double time) override
    {
        tool.NotifyChanged(input, value, time);
        Base::NotifyChanged(input, value, time);
    }
    void PreCalcProcess(host::Request& request) override
    {
        if constexpr (std::is_base_of_v<host::SourceOperator, Base>) Base::PreCalcProcess(request);
        else tool.PreCalcProcess(request);
    }
    void Process(host::Request& request) override
    {
        if constexpr (std::is_base_of_v<host::SourceOperator, Base>) {
            tool.interlaced = this->interlaced;
            tool.fieldNumber = this->fieldNumber;
            tool.proxyScale = static_cast<float>(this->proxyScale);
            tool.xAspect = static_cast<float>(this->xAspect);
            tool.yAspect = static_cast<float>(this->yAspect);
        }
        tool.Process(this, request, true);
    }
    void MultiProcess(int job) override { tool.DoJob(job); }

    KEffect* Effect() const { return effect.get(); }
    KTool& Tool() { return tool; }

private:
    // Declared first so that the effect outlives the tool's cleanup.
    std::unique_ptr<KEffect> effect;
    KTool tool;
};

using ZV_ThreadedOperator = ZV_Operator<host::ThreadedOperator>;
using ZV_SourceOperator = ZV_Operator<host::SourceOperator>;
