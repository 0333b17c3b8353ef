// Operators as the host sees them: typed input and output records, requests
// of values, and the base classes a plug-in derives its tools from.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include "host/value.h"

namespace host {

enum class Control {
    None, Slider, Screw, Checkbox, Button, MultiButton, Combo, Color, Range, Offset, File,
    TextEdit, Label, Image, Spline,
};
const char* ControlName(Control control);

enum class Preview { None, Crosshair, Point, Angle, Ellipse, Rectangle, Generic };

class Input;
class Operator;
struct Registration;

// Everything a user interface or `zelvarine info` needs to show an input.
struct InputAttrs {
    DataType dataType = DataType::Number;
    std::string typeId;  // custom parameter class
    Control control = Control::None;
    std::optional<double> defaultNumber;
    std::optional<std::pair<double, double>> defaultPoint;
    std::optional<std::string> defaultText;
    std::optional<double> softMin, softMax, hardMin, hardMax;
    // Why a value from outside beyond the hard limits is refused, when more
    // than the limits themselves needs saying.
    std::string hardReason;
    std::vector<std::string> items;
    bool radio = false;
    bool integer = false;
    int group = -1, member = -1;
    Preview preview = Preview::None;
    int previewGroup = -1, previewMember = -1;
    Input* previewLink = nullptr;
    bool visible = true;
    bool previewVisible = true;
    bool notify = false;
    bool notifyEach = false;
    int slots = 1;
    int linkNumber = 0;  // main link number of an image or data input
    int priority = 0;
    bool required = true;
    bool external = true;
    double checkWidth = 0.0;
    int sensitivity = 0;
    int controlParam = 0;
    bool variantA = false, variantB = false;
    bool nest = false;  // the head of a collapsing nest, not a value
    bool applies = true;  // false: made by a rule for all tools, of no use to this one
    bool anyValue = false;  // takes a value of any kind, not only `dataType`
};

// Where an input's value comes from.
struct Keyframes {
    std::map<double, double> numbers;  // time -> value, linear between keys
    std::map<double, std::pair<double, double>> points;
    std::map<double, Value> values;  // a custom class's, blended by the class
};

// A value from outside (command line, flow file) held to what `input` declares:
// a number finite in single precision, whole where the input is integer, one
// of its items for a list, 0 or 1 for a checkbox, and within the hard limits,
// clamped or refused as the input says. Other values pass as they are.
// BadInput begins with `what`.
Value Conform(const Input& input, Value value, const std::string& what);
double ConformNumber(const Input& input, double value, const std::string& what);

class Input {
public:
    std::string id;    // made from the label
    std::string alias; // the plug-in's own short code, accepted in place of the id; may be empty
    std::string name;  // the label as declared
    std::string label; // the label shown now
    std::string page;
    InputAttrs attrs;
    Operator* owner = nullptr;
    int index = 0;

    // Value sources: a constant, keyframes, or a connection (set by the flow).
    Value constant;
    Keyframes keys;
    bool HasKeys() const { return !keys.numbers.empty() || !keys.points.empty() || !keys.values.empty(); }
    Value ValueAt(double time) const;  // constant, keyed, or the default; null for none
    Value Default() const;
};

struct Output {
    std::string id;
    std::string name;
    DataType dataType = DataType::Image;
    std::string typeId;
    int linkNumber = 0;
    Operator* owner = nullptr;
};

// One render call: the time, flags and priority, the values of the inputs per
// slot, the times wanted for slots, and the outputs handed over.
class Request {
public:
    Request(double time, uint32_t flags = 0, int priority = 0)
        : time_(time), flags_(flags), priority_(priority) {}
    double Time() const { return time_; }
    uint32_t Flags() const { return flags_; }
    int Priority() const { return priority_; }

    Value GetInputData(const Input* input, int slot = 0) const;
    // States a value ahead of evaluation; a null value means none.
    void SetInputData(const Input* input, Value value, int slot = 0);
    bool IsStated(const Input* input, int slot) const;
    void SetInputTime(const Input* input, double time, int slot = 0);
    std::optional<double> InputTime(const Input* input, int slot) const;
    void SetOutputData(const Output* output, Value value);
    Value GetOutputData(const Output* output) const;

private:
    struct Slot {
        Value value;
        bool stated = false;
        std::optional<double> time;
    };
    Slot& At(const Input* input, int slot);
    const Slot* Find(const Input* input, int slot) const;
    double time_;
    uint32_t flags_;
    int priority_;
    std::map<std::pair<const Input*, int>, Slot> slots_;
    std::map<const Output*, Value> outputs_;
};

constexpr uint32_t kRequestQuick = 0x1;

class Operator {
public:
    Operator() = default;
    Operator(const Operator&) = delete;
    Operator& operator=(const Operator&) = delete;
    virtual ~Operator() = default;

    // Construction: pages, nests, inputs and outputs in display order.
    void AddControlPage(const std::string& name);
    Input* BeginControlNest(const std::string& name, const std::string& id);
    void EndControlNest();
    Input* AddInput(const std::string& name, const std::string& id, const InputAttrs& attrs);
    Output* AddOutput(const std::string& name, const std::string& id, DataType type,
                      int linkNumber, const std::string& typeId = {});

    const std::vector<std::unique_ptr<Input>>& Inputs() const { return inputs_; }
    const std::vector<std::unique_ptr<Output>>& Outputs() const { return outputs_; }
    // By id, or by alias when no id matches.
    Input* FindInput(const std::string& id) const;
    Output* FindOutput(const std::string& id) const;
    Output* MainOutput() const;  // the output of link 1, or the first
    const std::vector<std::string>& Pages() const { return pages_; }
    const std::string& CurrentPage() const { return page_; }

    // What the plug-in changes on its controls.
    void SetVisible(Input* input, bool visible) { input->attrs.visible = visible; }
    void SetPreviewVisible(Input* input, bool visible) { input->attrs.previewVisible = visible; }
    void SetLabel(Input* input, const std::string& label) { input->label = label; }
    // Sets a value as a user would: a key at `time` when the input is keyed.
    // Notifies the operator when the value changed.
    void SetInputValue(Input* input, Value value, double time);

    // The host's calls, in the order a render makes them.
    virtual void OnStartRender() {}
    virtual void CheckRequest(Request& request) {}
    virtual void PreCalcProcess(Request& request) {}
    virtual void Process(Request& request) = 0;
    virtual void NotifyChanged(Input* input, const Parameter* value, double time) {}
    // One job of the current pass, run by DoMultiProcess.
    virtual void MultiProcess(int job) {}

    double CurrentTime() const { return currentTime_; }
    void SetCurrentTime(double t) { currentTime_ = t; }
    const Registration* registration = nullptr;
    std::string summary;  // a line a front end shows under the tool's name

    // Runs MultiProcess for each job on the pool; returns when all are done.
    void DoMultiProcess(Request& request, int jobs);

private:
    std::vector<std::unique_ptr<Input>> inputs_;
    std::vector<std::unique_ptr<Output>> outputs_;
    std::vector<std::string> pages_;
    std::string page_;
    std::vector<std::string> nests_;
    double currentTime_ = 0.0;
    int notifyDepth_ = 0;
};

class ThreadedOperator : public Operator {};

// Creates a registered tool as a host does: the operator, then one change
// notice per notifying input with its starting value, so that its controls
// show and hide as they will once values change.
Operator* CreateOperator(const Registration& registration);

// An operator that makes an image from nothing: it has "Width" and "Height"
// inputs and the geometry of the picture it is asked for.
class SourceOperator : public ThreadedOperator {
public:
    SourceOperator();
    // A made image is at least 2 rows high, so Height refuses less from
    // outside rather than hand over another size.
    Input* widthInput = nullptr;
    Input* heightInput = nullptr;
    Output* output = nullptr;
    bool floatDepth = false;  // the depth of the image made
    bool interlaced = false;
    int fieldNumber = 0;
    double proxyScale = 1.0;
    double xAspect = 1.0, yAspect = 1.0;
};

// The 3D bases; geometry travels with the 3D tools.
class Operator3D : public ThreadedOperator {};
class SceneGeometryOperator3D : public Operator3D {};

}  // namespace host
