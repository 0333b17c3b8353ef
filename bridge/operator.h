// The host operator classes: thin forwarders that own a tool's effect and its
// KTool. A tool's source file registers its class with one line:
//
//   ZV_TOOL(KEffectInvert, ZV_Invert, "Invert", "Zelvarine\\Image Color", "Inv", "");
//
// and a source tool (one that makes its image from nothing) with ZV_SOURCE_TOOL.
#pragma once
#include <string>
#include "bridge/tool.h"
#include "host/operator.h"
#include "host/registry.h"

template <class Base> class ZV_Operator : public Base {
public:
    explicit ZV_Operator(KEffect* made) : effect(made) { tool.Build(this, effect); }
    ~ZV_Operator() override
    {
        tool.Cleanup();
        tool.effect = nullptr;
        delete effect;
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

    KEffect* Effect() const { return effect; }
    KTool& Tool() { return tool; }

private:
    KTool tool;
    KEffect* effect;
};

using ZV_ThreadedOperator = ZV_Operator<host::ThreadedOperator>;
using ZV_SourceOperator = ZV_Operator<host::SourceOperator>;

// Registers an operator class with the host's registry; returns true.
template <class Operator>
bool KRegisterTool(const char* className, const char* base, const char* name,
                   const char* category, const char* shortName, const char* help)
{
    host::Registration r;
    r.creator = [] { return static_cast<host::Operator*>(new Operator); };
    r.baseClass = base;
    r.className = className;
    r.name = name;
    r.category = category;
    r.shortName = shortName;
    r.help = help;
    host::Registry::Get().Register(std::move(r));
    return true;
}

#define ZV_DEFINE_TOOL(Effect, ClassName, Base, Name, Category, Short, Help)                  \
    class ClassName : public Base {                                                           \
    public:                                                                                   \
        ClassName() : Base(new Effect) {}                                                     \
    };                                                                                        \
    [[maybe_unused]] static const bool ClassName##Registered =                                \
        KRegisterTool<ClassName>(#ClassName, #Base, Name, Category, Short, Help)

#define ZV_TOOL(Effect, ClassName, Name, Category, Short, Help) \
    ZV_DEFINE_TOOL(Effect, ClassName, ZV_ThreadedOperator, Name, Category, Short, Help)
#define ZV_SOURCE_TOOL(Effect, ClassName, Name, Category, Short, Help) \
    ZV_DEFINE_TOOL(Effect, ClassName, ZV_SourceOperator, Name, Category, Short, Help)
