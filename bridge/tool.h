// KTool: the bridge between one host operator and its effect. It turns the
// effect's declarations into host inputs, carries a request's values into the
// bound fields, runs the process of the effect's family and hands results back.
#pragma once
#include <cstdint>
#include <optional>
#include <vector>
#include <string>
#include "framework/effect.h"
#include "framework/process.h"
#include "host/operator.h"

class KImage;

// Ties one host input to one declared parameter; a parameter with several
// host inputs (colour, range, XYZ, transform) has one per sub-index.
class KInput : public KListItem {
public:
    uint32_t id = 0;
    host::Input* hostInput = nullptr;
    KParameter* parameter = nullptr;
    int32_t subIndex = 0;
    KInput* Next() const { return static_cast<KInput*>(next); }
};

class KInputList : public KList {
public:
    KInput* First() const { return static_cast<KInput*>(head); }
};

// The host input id of a label: its letters, digits and underscores, up to the
// first "(" unless the whole label is asked for.
std::string KHostId(const std::string& label, bool whole = false);
// A four-character code as text, trailing blanks dropped; empty when it is not
// printable (codes that are plain numbers).
std::string KCodeText(uint32_t code);

class KTool {
public:
    KTool() = default;
    KTool(const KTool&) = delete;
    KTool& operator=(const KTool&) = delete;
    virtual ~KTool();

    // Input construction: walks the effect's declarations, then the standard inputs.
    void Build(host::Operator* op, KEffect* effect);

    virtual void OnStartRender();
    virtual void PreCalcProcess(host::Request& request);
    virtual void CheckRequest(host::Request& request);
    virtual void ReadParameters(host::Request& request, bool all);
    virtual void ConvertPoints(bool all);
    virtual void PrepareRender(host::Operator* op, host::Request& request, float proxy,
                               bool interlaced, int32_t fieldNumber, float xAspect, float yAspect);
    virtual void Cleanup();
    virtual void Process(host::Operator* op, host::Request& request, bool cleanUp);
    virtual void NotifyChanged(host::Input* input, const host::Parameter* value, double time);

    // The frames a render at `time` asks of its inputs: per input, one time for
    // each slot, or none for a slot that is to stay without a frame. The
    // early pass (CheckRequest) states them to the host.
    struct FramesWanted {
        host::Input* input;
        std::vector<std::optional<double>> times;
    };
    std::vector<FramesWanted> FramesWantedAt(float time);

    // The multi-process entry: one job of the current pass.
    void DoJob(int32_t job);

    host::Operator* op = nullptr;
    // Standard inputs, when present.
    host::Input* imageInput = nullptr;
    host::Input* widthInput = nullptr;
    host::Input* heightInput = nullptr;
    host::Input* colorSpaceInput = nullptr;
    host::Input* redInput = nullptr;
    host::Input* greenInput = nullptr;
    host::Input* blueInput = nullptr;
    host::Input* alphaInput = nullptr;
    host::Input* underSampleInput = nullptr;
    host::Input* filterInput = nullptr;
    host::Input* superSampleInput = nullptr;
    host::Input* filterSizeInput = nullptr;
    host::Input* edgesInput = nullptr;
    host::Input* preDivideInput = nullptr;
    host::Input* trailsInput = nullptr;
    host::Input* fadeInput = nullptr;
    host::Input* resetInput = nullptr;
    host::Input* multiThreadInput = nullptr;
    host::Input* warpMaskInput = nullptr;
    host::Input* lastPoint = nullptr;
    host::Input* lastCombo = nullptr;
    int32_t rectangleCounter = 0;
    KInputList inputs;
    host::Output* outputMain = nullptr;
    int32_t outputCounter = 1;
    KImage* sourceImage = nullptr;
    KImage* targetImage = nullptr;
    KEffect* effect = nullptr;
    bool multiFrame = false;
    bool shapeTool = false;
    KRenderSettings settings;
    std::unique_ptr<KProcessImage> process;
    int32_t passCounter = 0;
    bool interlaced = false;
    int32_t fieldNumber = 0;
    float proxyScale = 1.0f;
    float xAspect = 1.0f, yAspect = 1.0f;

private:
    KInput* Tie(host::Input* input, KParameter* p, uint32_t id, int32_t subIndex);
    KInput* FindInput(uint32_t id) const;
    friend struct KControlBuild;
    host::Input* AddStandardInput(int32_t number, float defaultValue);
    void BuildParameter(KParameter* p);
    void BuildTransform(KParameter* p);
    void BuildStandardInputs();
    void BuildOutputs();
    host::Input* AddInput(const std::string& label, const host::InputAttrs& attrs,
                          const std::string& alias = {});
    void ApplyMessage(const KMessage& m, double time);
    bool standardPage = false;
    bool sourceIsTarget = false;
    KImage* warpMask = nullptr;
};
