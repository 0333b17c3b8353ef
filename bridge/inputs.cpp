// Input construction: each declaration becomes host inputs, then the standard
// inputs of the effect's family are added on the page "Zelvarine Controls".
#include <cctype>
#include <map>
#include <utility>
#include "bridge/tool.h"
#include "bridge/value_kinds.h"
#include "host/operator.h"

using host::Control;
using host::DataType;
using host::InputAttrs;

std::string KHostId(const std::string& label, bool whole)
{
    std::string id;
    for (char c : label) {
        if (c == '(' && !whole) break;
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '_') id += c;
    }
    return id;
}

std::string KCodeText(uint32_t code)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>((code >> shift) & 0xFF);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
    for (char c : text)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != ' ') return {};
    return text;
}

namespace {

std::vector<std::string> Items(const KParameter* p)
{
    std::vector<std::string> items;
    for (int32_t i = 0; i < p->ItemCount(); ++i) items.push_back(p->Item(i));
    return items;
}

// Limits of a slider or screw: hard where the flags say so, else soft ends.
void Limits(InputAttrs& a, const KParameter* p)
{
    if (p->flags & kFlagHardMin) a.hardMin = p->minimum;
    else a.softMin = p->minimum;
    if (p->flags & kFlagHardMax) a.hardMax = p->maximum;
    else a.softMax = p->maximum;
    if (p->valueKind == kValueInteger) {
        // Integer limits travel as truncated doubles.
        if (a.hardMin) a.hardMin = static_cast<double>(static_cast<int32_t>(*a.hardMin));
        if (a.softMin) a.softMin = static_cast<double>(static_cast<int32_t>(*a.softMin));
        if (a.hardMax) a.hardMax = static_cast<double>(static_cast<int32_t>(*a.hardMax));
        if (a.softMax) a.softMax = static_cast<double>(static_cast<int32_t>(*a.softMax));
    }
}

// The treatment every declared input gets from its flags.
void Common(InputAttrs& a, uint32_t flags)
{
    if (flags & kFlagNotify) a.notify = a.notifyEach = true;
    if (flags & kFlagHidden) a.visible = false;
    if (flags & kFlagNotExternal) a.external = false;
    if (flags & kFlagLate) {
        a.priority = -1;
        a.required = false;
    }
}

bool Has(uint32_t flags, uint32_t bits) { return (flags & bits) == bits; }

}  // namespace

host::Input* KTool::AddInput(const std::string& label, const InputAttrs& attrs,
                             const std::string& alias)
{
    // A name a user can predict: the label's; when another control has it,
    // the whole label, parentheses and all, then the page it stands on, then
    // the control's own code say which one this is.
    const std::string base = KHostId(label).empty() ? "Input" : KHostId(label);
    std::string id;
    for (const std::string& candidate :
         {base, KHostId(label, true), base + KHostId(op->CurrentPage()), base + alias})
        if (!candidate.empty() && !op->FindInput(candidate)) {
            id = candidate;
            break;
        }
    for (int n = 2; id.empty(); ++n)
        if (!op->FindInput(base + std::to_string(n))) id = base + std::to_string(n);
    host::Input* in = op->AddInput(label, id, attrs);
    in->alias = alias;
    return in;
}

KInput* KTool::Tie(host::Input* input, KParameter* p, uint32_t id, int32_t subIndex)
{
    if (input && subIndex == 0 && input->alias.empty()) input->alias = KCodeText(id);
    auto* k = new KInput;
    k->id = id;
    k->hostInput = input;
    k->parameter = p;
    k->subIndex = subIndex;
    inputs.Append(k);
    return k;
}

void KTool::Build(host::Operator* o, KEffect* e)
{
    op = o;
    effect = e;
    if (auto* source = dynamic_cast<host::SourceOperator*>(op)) {
        widthInput = source->widthInput;
        heightInput = source->heightInput;
    }
    for (KParameter* p = effect->inputs(); p; p = p->Next()) BuildParameter(p);
    BuildStandardInputs();
}

void KTool::BuildParameter(KParameter* p)
{
    InputAttrs a;
    Common(a, p->flags);
    const uint32_t f = p->flags;
    if (f & kFlagLate) multiFrame = true;
    const bool preview = f & kFlagPreview;
    auto one = [&](Control control, DataType type = DataType::Number) {
        a.control = control;
        a.dataType = type;
        host::Input* in = AddInput(p->name, a, KCodeText(p->id));
        Tie(in, p, p->id, 0);
        return in;
    };
    switch (p->controlKind) {
    case kControlPage:
        op->AddControlPage(p->name);
        return;
    case kControlBeginNest: {
        host::Input* head = op->BeginControlNest(p->name, KHostId(p->name));
        head->attrs.visible = a.visible;
        Tie(head, p, p->id, 0);
        return;
    }
    case kControlEndNest:
        op->EndControlNest();
        return;
    case kControlStandard:
        return;  // tied after the walk, with the standard inputs
    case kControlAngle:
        a.defaultNumber = p->defaultValue;
        a.hardMin = 0.0;
        a.hardMax = 360.0;
        a.hardReason = "angles run from 0 to 360 degrees";
        a.sensitivity = 3601;
        a.controlParam = 451;
        if (preview) {
            a.preview = host::Preview::Angle;
            if ((f & kFlagPreviewAngle) && lastPoint) a.previewLink = lastPoint;
        }
        one(Control::Screw);
        return;
    case kControlButton:
        one(Control::Button);
        return;
    case kControlMultiButton:
    case kControlCombo:
        a.defaultNumber = static_cast<double>(static_cast<int32_t>(p->defaultValue));
        a.softMin = 0.0;
        a.items = Items(p);
        a.softMax = static_cast<double>(p->ItemCount() - 1);
        if (p->controlKind == kControlMultiButton) {
            a.radio = true;
            lastCombo = one(Control::MultiButton);
        } else {
            one(Control::Combo);
        }
        return;
    case kControlCheckbox:
        a.softMin = 0.0;
        a.softMax = 1.0;
        a.defaultNumber = p->defaultValue > 0.5f ? 1.0 : 0.0;
        if (p->checkWidth > 1.0f) a.checkWidth = 1.0 / p->checkWidth;
        one(Control::Checkbox);
        return;
    case kControlCurve:
        a.group = p->group;
        a.member = 0;
        a.variantA = true;
        a.softMin = a.hardMin = 0.0;
        a.softMax = a.hardMax = 255.0;
        one(Control::Spline, DataType::LookUpTable);
        return;
    case kControlColor: {
        static const char* names[4] = {"Red", "Green", "Blue", "Alpha"};
        const uint32_t ids[4] = {p->id, p->id2, p->id3, p->id4};
        a.control = Control::Color;
        a.group = p->group;
        a.softMin = 0.0;
        a.softMax = 1.0;
        const float def[4] = {p->defaultColor.r, p->defaultColor.g, p->defaultColor.b,
                              p->defaultColor.a};
        for (int32_t i = 0; i < 4; ++i) {
            if (i == 3 && p->id4 == 0) break;
            a.member = i;
            a.defaultNumber = def[i];
            host::Input* in = AddInput(p->name + names[i], a);
            if (i == 0) in->label = p->name;
            Tie(in, p, ids[i], i);
        }
        return;
    }
    case kControlDataInput:
    case kControlImageInput:
    case kControlRegion3DInput:
    case kControlShapeInput: {
        a.required = false;
        a.priority = -1;
        if (f & kFlagMain) a.linkNumber = static_cast<int>(p->id);
        if (p->controlKind == kControlImageInput) {
            a.dataType = DataType::Image;
            if (preview) a.control = Control::Image;
        } else {
            // The class that carries the kind; registration made sure there is one.
            const KValueKind* kind = KFindValueKind(p->valueKind);
            a.dataType = kind ? kind->dataType : DataType::Custom;
            if (kind) a.typeId = kind->typeId;
            if (preview) a.control = Control::Label;
        }
        Tie(AddInput(p->name, a, KCodeText(p->id)), p, p->id, 0);
        return;
    }
    case kControlFile:
        a.defaultText = p->defaultText;
        one(Control::File, DataType::Text);
        return;
    case kControlLabel:
        a.external = false;
        one(Control::Label);
        return;
    case kControlMaskInput:
        a.priority = -1000;
        a.required = false;
        a.dataType = DataType::Mask;
        Tie(AddInput(p->name, a, KCodeText(p->id)), p, p->id, 0);
        return;
    case kControlPoint: {
        a.defaultPoint = std::make_pair(double(p->defaultPoint.x), double(p->defaultPoint.y));
        if (preview) {
            if ((f & kFlagPreviewLinkedPoint) && lastPoint) {
                a.preview = host::Preview::Point;
                a.previewLink = lastPoint;
            } else {
                a.preview = host::Preview::Crosshair;
            }
        }
        lastPoint = one(Control::Offset, DataType::Point);
        return;
    }
    case kControlRange: {
        a.control = Control::Range;
        a.group = p->group;
        a.softMin = p->minimum;
        a.softMax = p->maximum;
        a.member = 0;
        a.defaultNumber = p->defaultRange.low;
        Tie(AddInput(p->name, a, KCodeText(p->id)), p, p->id, 0);
        a.member = 1;
        a.defaultNumber = p->defaultRange.high;
        Tie(AddInput(p->Item(0), a), p, p->id2, 1);
        return;
    }
    case kControlSlider:
    case kControlScrew: {
        a.defaultNumber = p->defaultValue;
        Limits(a, p);
        a.integer = p->valueKind == kValueInteger;
        if (Has(f, kFlagPreviewEllipse | kFlagPreview) && lastPoint) {
            a.preview = host::Preview::Ellipse;
            a.previewLink = lastPoint;
        }
        bool height = false;
        if (p->controlKind == kControlScrew) {
            if (Has(f, kFlagPreviewRectWidth | kFlagPreview) ||
                Has(f, kFlagPreviewRectHeight | kFlagPreview)) {
                height = Has(f, kFlagPreviewRectHeight | kFlagPreview);
                a.preview = host::Preview::Rectangle;
                a.previewGroup = rectangleCounter;
                a.previewMember = height ? 1 : 0;
                a.previewLink = lastPoint;
            }
        }
        one(p->controlKind == kControlSlider ? Control::Slider : Control::Screw);
        if (height) ++rectangleCounter;
        return;
    }
    case kControlTextEdit:
        a.controlParam = p->group;
        a.defaultText = p->defaultText;
        a.variantA = f & kFlagTextVariantA;
        a.variantB = f & kFlagTextVariantB;
        one(Control::TextEdit, DataType::Text);
        return;
    case kControlTransform:
        BuildTransform(p);
        return;
    case kControlXYZ: {
        static const char* axes[3] = {" X", " Y", " Z"};
        const float def[3] = {p->defaultXYZ.x, p->defaultXYZ.y, p->defaultXYZ.z};
        a.control = Control::Screw;
        a.hardMin = -10.0;
        a.hardMax = 10.0;
        for (int32_t i = 0; i < 3; ++i) {
            a.defaultNumber = def[i];
            if (preview) {
                a.preview = host::Preview::Generic;
                a.previewGroup = p->group;
                a.previewMember = 2 + i;
                a.notify = true;
            }
            a.group = p->group;
            a.member = i;
            Tie(AddInput(p->name + axes[i], a), p, p->id, i);
        }
        return;
    }
    default:
        return;
    }
}

void KTool::BuildTransform(KParameter* p)
{
    const int32_t mode = p->transformMode;
    const KTransformValue& d = p->defaultTransform;
    const bool position = mode == 0 || mode == 1 || mode == 2;
    const bool rotation = mode == 0 || mode == 1 || mode == 2 || mode == 4;
    const bool scale = mode == 0 || mode == 1 || mode == 3;
    const bool preview = p->flags & kFlagPreview;
    InputAttrs base;
    Common(base, p->flags);
    base.group = p->group;
    auto add = [&](const char* suffix, InputAttrs a, int32_t sub, int32_t previewMember) {
        if (preview) {
            a.preview = host::Preview::Generic;
            a.previewGroup = p->group;
            a.previewMember = previewMember;
        }
        Tie(AddInput(p->name + suffix, a), p, p->id, sub);
    };
    if (position) {
        InputAttrs a = base;
        a.control = Control::Screw;
        a.hardMin = -10.0;
        a.hardMax = 10.0;
        const float def[3] = {d.translateX, d.translateY, d.translateZ};
        static const char* names[3] = {" Position X", " Position Y", " Position Z"};
        for (int32_t i = 0; i < 3; ++i) {
            a.defaultNumber = def[i];
            add(names[i], a, i, 2 + i);
        }
    }
    if (rotation) {
        InputAttrs order = base;
        order.control = Control::MultiButton;
        order.items = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"};
        order.softMin = 0.0;
        order.softMax = 5.0;
        order.defaultNumber = d.rotationOrder;
        add(" Rotation Order", order, 3, 15);
        InputAttrs a = base;
        a.control = Control::Screw;
        a.hardMin = -180.0;
        a.hardMax = 180.0;
        a.controlParam = 450;
        a.notify = true;
        const float def[3] = {d.rotateX, d.rotateY, d.rotateZ};
        static const char* names[3] = {" Rotation X", " Rotation Y", " Rotation Z"};
        for (int32_t i = 0; i < 3; ++i) {
            a.sensitivity = i == 2 ? 360 : 3601;
            a.defaultNumber = def[i] / 0.017453292519943295;  // shown in degrees
            add(names[i], a, 4 + i, 5 + i);
        }
    }
    if (scale) {
        InputAttrs lock = base;
        lock.control = Control::Checkbox;
        lock.softMin = 0.0;
        lock.softMax = 1.0;
        lock.defaultNumber = 1.0;
        add(" Scale Lock", lock, 7, 8);
        InputAttrs a = base;
        a.control = Control::Slider;
        a.softMin = 0.0;
        a.softMax = 5.0;
        const float def[3] = {d.scaleX, d.scaleY, d.scaleZ};
        static const char* names[3] = {" Scale X", " Scale Y", " Scale Z"};
        for (int32_t i = 0; i < 3; ++i) {
            a.defaultNumber = def[i];
            add(names[i], a, 8 + i, 9 + i);
        }
    }
    if (mode == 0 || mode == 1) {
        InputAttrs type = base;
        type.control = Control::Checkbox;
        type.defaultNumber = d.type;
        add(" Type", type, 11, -1);
        InputAttrs pos = base;
        pos.control = Control::Offset;
        pos.dataType = DataType::Point;
        pos.defaultPoint = std::make_pair(double(d.positionX), double(d.positionY));
        add(" Position", pos, 12, -1);
        InputAttrs aspectType = base;
        aspectType.control = Control::MultiButton;
        aspectType.defaultNumber = d.aspectType;
        add(" Aspect Type", aspectType, 13, -1);
        InputAttrs aspect = base;
        aspect.control = Control::Slider;
        aspect.defaultNumber = d.aspect;
        add(" Aspect", aspect, 14, -1);
    }
}

host::Input* KTool::AddStandardInput(int32_t number, float value)
{
    if (!standardPage) {
        op->AddControlPage("Zelvarine Controls");
        standardPage = true;
    }
    InputAttrs a;
    auto checkbox = [&](const char* label, const char* id, double def, double width) {
        InputAttrs c;
        c.control = Control::Checkbox;
        c.softMin = 0.0;
        c.softMax = 1.0;
        c.defaultNumber = def;
        c.checkWidth = width;
        return AddInput(label, c, id);
    };
    auto buttons = [&](const char* label, const char* id, std::vector<std::string> items) {
        a.control = Control::MultiButton;
        a.radio = true;
        a.softMin = 0.0;
        a.softMax = static_cast<double>(items.size() - 1);
        a.items = std::move(items);
        a.defaultNumber = value;
        return AddInput(label, a, id);
    };
    switch (number) {
    case kStdImage: {
        const int32_t frames = effect->GetFrameTimes(0, 0.0f, nullptr);
        a.dataType = DataType::Image;
        a.linkNumber = 1;
        a.priority = -1;
        if (effect->HasFeature(kFeatureOptionalInput)) a.required = false;
        if (frames > 1) a.slots = frames;
        return imageInput = op->AddInput(frames > 1 ? "Input" : "Image",
                                         frames > 1 ? "Input" : "Image", a);
    }
    case kStdColorSpace:
        return colorSpaceInput =
                   buttons("Color space", "KCoS", {"RGB", "HLS", "YUV", "YIQ", "CMY", "HSV", "XYZ", "LAB"});
    case kStdRGB:
    case kStdRGBA: {
        const double width = number == kStdRGB ? 1.0 / 3.0 : 1.0 / 4.0;
        redInput = checkbox("Red", "KCCR", value, width);
        greenInput = checkbox("Green", "KCCG", value, width);
        blueInput = checkbox("Blue", "KCCB", value, width);
        if (number == kStdRGBA) alphaInput = checkbox("Alpha", "KCCA", value, width);
        return redInput;
    }
    case kStdUnderSample:
        a.control = Control::Slider;
        a.integer = true;
        a.softMin = 1.0;
        a.hardMax = 16.0;
        a.defaultNumber = value;
        return underSampleInput = AddInput("Under-sample resolution", a, "KUnd");
    case kStdSuperSample:
        return superSampleInput =
                   buttons("Super-sampling", "KSup", {"1x1", "2x2", "3x3", "4x4", "5x5", "8x8", "16x16"});
    case kStdFilterSize:
        a.control = Control::Slider;
        a.softMin = 0.1;
        a.softMax = 5.0;
        a.defaultNumber = value;
        return filterSizeInput = AddInput("Super-sampling filter size", a, "KSuS");
    case kStdSubPixel:
        return filterInput = checkbox("Sub-pixel sampling", "KFil", value, 0.0);
    case kStdFiltering:
        return filterInput = buttons("Filtering", "KFil", {"None", "Pixel", "Area"});
    case kStdEdges:
        return edgesInput = buttons("Edges", "KEdg", {"Black", "Wrap", "Duplicate"});
    case kStdPreDivide:
        return preDivideInput = checkbox("Pre-Divide / Post-Multiply", "PDPM", value, 0.0);
    case kStdTrails: {
        InputAttrs t;
        t.control = Control::Checkbox;
        t.softMin = 0.0;
        t.softMax = 1.0;
        t.defaultNumber = value;
        t.notify = t.notifyEach = true;
        trailsInput = AddInput("Trails (Experimental)", t, "KTra");
        InputAttrs fade;
        fade.control = Control::Slider;
        fade.softMin = 0.0;
        fade.softMax = 1.0;
        fade.defaultNumber = 0.95;
        fade.visible = value > 0.5f;
        fadeInput = AddInput("Fade", fade, "KTrF");
        InputAttrs reset;
        reset.control = Control::Button;
        reset.visible = value > 0.5f;
        resetInput = AddInput("Reset", reset, "KTrR");
        return trailsInput;
    }
    case kStdMultiThread:
        return multiThreadInput = checkbox("Do multi-threading", "ZVMT", value, 0.0);
    case kStdWarpMask:
        a.dataType = DataType::Mask;
        a.priority = -1000;
        a.required = false;
        return warpMaskInput = AddInput("Warp Mask", a, "KMaW");
    default:
        return nullptr;
    }
}

namespace {
// Where each standard input's pointer lives, to know whether it exists.
host::Input* Existing(const KTool& t, int32_t number)
{
    switch (number) {
    case kStdImage: return t.imageInput;
    case kStdColorSpace: return t.colorSpaceInput;
    case kStdRGB: case kStdRGBA: return t.redInput;
    case kStdUnderSample: return t.underSampleInput;
    case kStdSuperSample: return t.superSampleInput;
    case kStdFilterSize: return t.filterSizeInput;
    case kStdSubPixel: case kStdFiltering: return t.filterInput;
    case kStdEdges: return t.edgesInput;
    case kStdPreDivide: return t.preDivideInput;
    case kStdTrails: return t.trailsInput;
    case kStdMultiThread: return t.multiThreadInput;
    case kStdWarpMask: return t.warpMaskInput;
    default: return nullptr;
    }
}

// The user's words for a standard input, as `info` names them.
const char* StandardName(int32_t number)
{
    switch (number) {
    case kStdColorSpace: return "colour space";
    case kStdRGB: return "RGB switches";
    case kStdRGBA: return "RGBA switches";
    case kStdUnderSample: return "under-sampling";
    case kStdSuperSample: return "super-sampling";
    case kStdFilterSize: return "super-sampling filter size";
    case kStdSubPixel: return "sub-pixel sampling";
    case kStdFiltering: return "filtering";
    case kStdEdges: return "edges";
    case kStdPreDivide: return "pre-divide / post-multiply";
    case kStdTrails: return "trails";
    case kStdMultiThread: return "multi-threading";
    case kStdWarpMask: return "warp mask";
    default: return nullptr;
    }
}

// Built-in defaults, used where the effect keeps them.
float BuiltIn(int32_t number)
{
    switch (number) {
    case kStdRGB: case kStdRGBA: case kStdUnderSample: case kStdSubPixel: case kStdFiltering:
    case kStdMultiThread:
        return 1.0f;
    case kStdFilterSize:
        return 1.0f;
    default:
        return 0.0f;
    }
}
}  // namespace

void KTool::BuildStandardInputs()
{
    const bool source = effect->HasFeature(kFeatureSource);
    const bool ownSize = effect->HasFeature(kFeatureOutputSize);
    const bool imageOutputs = effect->CountOutputs(kValueImage) > 0;
    bool declared = false;
    for (KParameter* p = effect->inputs(); p; p = p->Next()) declared |= p->controlKind == kControlStandard;
    // A tool that makes no image and asks for none of them has no use for the
    // inputs the rules give every tool: they are made, and marked unused.
    const bool unused = !imageOutputs && !declared;
    const size_t first = op->Inputs().size();
    std::string names;
    auto fromEffect = [&](int32_t number) {
        float v = effect->GetStandardDefault(number);
        return v == kKeepStandardDefault ? BuiltIn(number) : v;
    };
    auto add = [&](int32_t number, float value) {
        if (const char* name = StandardName(number)) names += (names.empty() ? "" : ", ") + std::string(name);
        return AddStandardInput(number, value);
    };
    auto once = [&](int32_t number, float value) {
        if (!Existing(*this, number)) add(number, value);
    };
    if (!ownSize) once(kStdRGBA, BuiltIn(kStdRGBA));
    switch (effect->GetFamily()) {
    case kFamilyColor:
        once(kStdSuperSample, fromEffect(kStdSuperSample));
        once(kStdFilterSize, fromEffect(kStdFilterSize));
        if (!source) once(kStdPreDivide, fromEffect(kStdPreDivide));
        break;
    case kFamilyPosition:
        once(kStdSuperSample, fromEffect(kStdSuperSample));
        if (!source) once(kStdPreDivide, fromEffect(kStdPreDivide));
        break;
    case kFamilyWarp:
        effect->GetStandardDefault(kStdUnderSample);  // asked, and the answer ignored
        once(kStdUnderSample, BuiltIn(kStdUnderSample));
        once(kStdFiltering, fromEffect(kStdFiltering));
        once(kStdEdges, fromEffect(kStdEdges));
        once(kStdWarpMask, BuiltIn(kStdWarpMask));
        break;
    default:
        break;
    }
    if (!source && !ownSize) once(kStdTrails, BuiltIn(kStdTrails));
    once(kStdMultiThread, BuiltIn(kStdMultiThread));

    for (KParameter* p = effect->inputs(); p; p = p->Next()) {
        if (p->controlKind != kControlStandard) continue;
        host::Input* in = Existing(*this, p->standardKind);
        if (!in) in = add(p->standardKind, p->defaultValue);
        else if (p->standardKind == kStdMultiThread)
            op->SetInputValue(in, host::MakeNumber(p->defaultValue), -1e9);
        if (in) Tie(in, p, p->id, 0);
    }

    if (unused) {
        for (size_t i = first; i < op->Inputs().size(); ++i) {
            op->Inputs()[i]->attrs.applies = false;
            op->SetVisible(op->Inputs()[i].get(), false);
        }
    } else if (!names.empty()) {
        op->summary = "Standard controls: " + names;
    }
    if (imageOutputs) {
        if (source) {
            if (auto* s = dynamic_cast<host::SourceOperator*>(op)) outputMain = s->output;
            ++outputCounter;
        } else {
            once(kStdImage, 0.0f);
            outputMain = op->AddOutput("Output", "Output", DataType::Image, outputCounter++);
        }
    }
    bool mainImage = imageOutputs;
    for (KOutput* o = effect->outputs(); o; o = o->Next()) {
        // The first image output is the one made above.
        if (o->valueKind == kValueImage && std::exchange(mainImage, false)) continue;
        const KValueKind* kind = KFindValueKind(o->valueKind);
        if (!kind) continue;
        const std::string name = kind->outputId.empty() ? KHostId(o->name) : kind->outputId;
        std::string id = name;
        for (int n = 2; op->FindOutput(id); ++n) id = name + std::to_string(n);
        o->hostOutput = op->AddOutput(name, id, kind->dataType, outputCounter++, kind->typeId);
    }
    if (effect->GetFamily() == kFamilyShape) shapeTool = true;

    // A code that two controls share, or that is another control's name, would
    // reach the wrong one: such codes are no alias.
    std::map<std::string, int> uses;
    for (auto& in : op->Inputs()) {
        ++uses[in->id];
        if (!in->alias.empty() && in->alias != in->id) ++uses[in->alias];
    }
    for (auto& in : op->Inputs())
        if (in->alias == in->id || uses[in->alias] > 1) in->alias.clear();
}
