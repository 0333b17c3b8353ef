// Declared controls into host inputs: one builder per control kind, found in
// the table at the end. A builder starts from the treatment every declared
// input gets from its flags.
#include <utility>
#include "bridge/tool.h"
#include "bridge/value_kinds.h"
#include "host/operator.h"

using host::Control;
using host::DataType;
using host::InputAttrs;

// One declaration being built: the tool, the declaration and its attributes.
struct KControlBuild {
    KTool& tool;
    KParameter* p;
    InputAttrs a;
    uint32_t f = p->flags;
    bool preview = (p->flags & kFlagPreview) != 0;

    // An input of the whole declaration, tied at sub-index 0.
    host::Input* One(Control control, DataType type = DataType::Number)
    {
        a.control = control;
        a.dataType = type;
        return Add(p->name, p->id, 0);
    }
    // An input of the declaration at a sub-index, under its own label.
    host::Input* Add(const std::string& label, uint32_t id, int32_t sub)
    {
        host::Input* in = tool.AddInput(label, a, sub == 0 ? KCodeText(id) : std::string());
        tool.Tie(in, p, id, sub);
        return in;
    }
    void Tie(host::Input* in) { tool.Tie(in, p, p->id, 0); }
    void Transform() { tool.BuildTransform(p); }
};

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

void Page(KControlBuild& b) { b.tool.op->AddControlPage(b.p->name); }

void BeginNest(KControlBuild& b)
{
    // A group's head is no value: its name leaves the label's to the control inside.
    host::Input* head = b.tool.op->BeginControlNest(b.p->name, KHostId(b.p->name) + "Group");
    head->attrs.visible = b.a.visible;
    b.Tie(head);
}

void EndNest(KControlBuild& b) { b.tool.op->EndControlNest(); }

void Angle(KControlBuild& b)
{
    b.a.defaultNumber = b.p->defaultValue;
    b.a.hardMin = 0.0;
    b.a.hardMax = 360.0;
    b.a.hardReason = "angles run from 0 to 360 degrees";
    b.a.sensitivity = 3601;
    b.a.controlParam = 451;
    if (b.preview) {
        b.a.preview = host::Preview::Angle;
        if ((b.f & kFlagPreviewAngle) && b.tool.lastPoint) b.a.previewLink = b.tool.lastPoint;
    }
    b.One(Control::Screw);
}

void Button(KControlBuild& b) { b.One(Control::Button); }

void List(KControlBuild& b)
{
    b.a.defaultNumber = static_cast<double>(static_cast<int32_t>(b.p->defaultValue));
    b.a.softMin = 0.0;
    b.a.items = Items(b.p);
    b.a.softMax = static_cast<double>(b.p->ItemCount() - 1);
    if (b.p->controlKind == kControlMultiButton) {
        b.a.radio = true;
        b.tool.lastCombo = b.One(Control::MultiButton);
    } else {
        b.One(Control::Combo);
    }
}

void Checkbox(KControlBuild& b)
{
    b.a.softMin = 0.0;
    b.a.softMax = 1.0;
    b.a.defaultNumber = b.p->defaultValue > 0.5f ? 1.0 : 0.0;
    if (b.p->checkWidth > 1.0f) b.a.checkWidth = 1.0 / b.p->checkWidth;
    b.One(Control::Checkbox);
}

void Curve(KControlBuild& b)
{
    b.a.group = b.p->group;
    b.a.member = 0;
    b.a.variantA = true;
    b.a.softMin = b.a.hardMin = 0.0;
    b.a.softMax = b.a.hardMax = 255.0;
    b.One(Control::Spline, DataType::LookUpTable);
}

void Color(KControlBuild& b)
{
    static const char* names[4] = {"Red", "Green", "Blue", "Alpha"};
    const KParameter& p = *b.p;
    const uint32_t ids[4] = {p.id, p.id2, p.id3, p.id4};
    const float def[4] = {p.defaultColor.r, p.defaultColor.g, p.defaultColor.b, p.defaultColor.a};
    b.a.control = Control::Color;
    b.a.group = p.group;
    b.a.softMin = 0.0;
    b.a.softMax = 1.0;
    for (int32_t i = 0; i < 4; ++i) {
        if (i == 3 && p.id4 == 0) break;
        b.a.member = i;
        b.a.defaultNumber = def[i];
        host::Input* in = b.Add(p.name + names[i], ids[i], i);
        if (i == 0) in->label = p.name;
    }
}

// Image, data, region, shape and morph inputs: a value from another tool or a flow.
void Carried(KControlBuild& b)
{
    b.a.required = false;
    b.a.priority = -1;
    if (b.f & kFlagMain) b.a.linkNumber = static_cast<int>(b.p->id);
    if (b.p->controlKind == kControlImageInput) {
        b.a.dataType = DataType::Image;
        if (b.preview) b.a.control = Control::Image;
    } else {
        // The class that carries the kind; registration made sure there is one.
        const KValueKind* kind = KFindValueKind(b.p->valueKind);
        b.a.dataType = kind ? kind->dataType : DataType::Custom;
        if (kind) b.a.typeId = kind->typeId;
        if (b.preview) b.a.control = Control::Label;
    }
    b.Add(b.p->name, b.p->id, 0);
}

void File(KControlBuild& b)
{
    b.a.defaultText = b.p->defaultText;
    b.One(Control::File, DataType::Text);
}

void Label(KControlBuild& b)
{
    b.a.external = false;
    b.One(Control::Label);
}

void Mask(KControlBuild& b)
{
    b.a.priority = -1000;
    b.a.required = false;
    b.a.dataType = DataType::Mask;
    b.Add(b.p->name, b.p->id, 0);
}

void Point(KControlBuild& b)
{
    b.a.defaultPoint = std::make_pair(double(b.p->defaultPoint.x), double(b.p->defaultPoint.y));
    if (b.preview) {
        if ((b.f & kFlagPreviewLinkedPoint) && b.tool.lastPoint) {
            b.a.preview = host::Preview::Point;
            b.a.previewLink = b.tool.lastPoint;
        } else {
            b.a.preview = host::Preview::Crosshair;
        }
    }
    b.tool.lastPoint = b.One(Control::Offset, DataType::Point);
}

void Range(KControlBuild& b)
{
    b.a.control = Control::Range;
    b.a.group = b.p->group;
    b.a.softMin = b.p->minimum;
    b.a.softMax = b.p->maximum;
    b.a.member = 0;
    b.a.defaultNumber = b.p->defaultRange.low;
    b.Add(b.p->name, b.p->id, 0);
    b.a.member = 1;
    b.a.defaultNumber = b.p->defaultRange.high;
    b.Add(b.p->Item(0), b.p->id2, 1);
}

void Slider(KControlBuild& b)
{
    b.a.defaultNumber = b.p->defaultValue;
    Limits(b.a, b.p);
    b.a.integer = b.p->valueKind == kValueInteger;
    if (Has(b.f, kFlagPreviewEllipse | kFlagPreview) && b.tool.lastPoint) {
        b.a.preview = host::Preview::Ellipse;
        b.a.previewLink = b.tool.lastPoint;
    }
    bool height = false;
    if (b.p->controlKind == kControlScrew &&
        (Has(b.f, kFlagPreviewRectWidth | kFlagPreview) || Has(b.f, kFlagPreviewRectHeight | kFlagPreview))) {
        height = Has(b.f, kFlagPreviewRectHeight | kFlagPreview);
        b.a.preview = host::Preview::Rectangle;
        b.a.previewGroup = b.tool.rectangleCounter;
        b.a.previewMember = height ? 1 : 0;
        b.a.previewLink = b.tool.lastPoint;
    }
    b.One(b.p->controlKind == kControlSlider ? Control::Slider : Control::Screw);
    if (height) ++b.tool.rectangleCounter;
}

void TextEdit(KControlBuild& b)
{
    b.a.controlParam = b.p->group;
    b.a.defaultText = b.p->defaultText;
    b.a.variantA = b.f & kFlagTextVariantA;
    b.a.variantB = b.f & kFlagTextVariantB;
    b.One(Control::TextEdit, DataType::Text);
}

void XYZ(KControlBuild& b)
{
    static const char* axes[3] = {" X", " Y", " Z"};
    const float def[3] = {b.p->defaultXYZ.x, b.p->defaultXYZ.y, b.p->defaultXYZ.z};
    b.a.control = Control::Screw;
    b.a.hardMin = -10.0;
    b.a.hardMax = 10.0;
    for (int32_t i = 0; i < 3; ++i) {
        b.a.defaultNumber = def[i];
        if (b.preview) {
            b.a.preview = host::Preview::Generic;
            b.a.previewGroup = b.p->group;
            b.a.previewMember = 2 + i;
            b.a.notify = true;
        }
        b.a.group = b.p->group;
        b.a.member = i;
        b.Add(b.p->name + axes[i], b.p->id, i);
    }
}

void Transform(KControlBuild& b) { b.Transform(); }

// Standard inputs are tied after the walk, with the family's own.
void Standard(KControlBuild&) {}

struct ControlRow {
    int32_t kind;
    void (*build)(KControlBuild&);
};
constexpr ControlRow kControls[] = {
    {kControlPage, Page},           {kControlBeginNest, BeginNest},
    {kControlEndNest, EndNest},     {kControlStandard, Standard},
    {kControlAngle, Angle},         {kControlButton, Button},
    {kControlMultiButton, List},    {kControlCombo, List},
    {kControlCheckbox, Checkbox},   {kControlCurve, Curve},
    {kControlColor, Color},         {kControlImageInput, Carried},
    {kControlDataInput, Carried},   {kControlRegion3DInput, Carried},
    {kControlShapeInput, Carried},  {kControlFile, File},
    {kControlLabel, Label},         {kControlMaskInput, Mask},
    {kControlPoint, Point},         {kControlRange, Range},
    {kControlSlider, Slider},       {kControlScrew, Slider},
    {kControlTextEdit, TextEdit},   {kControlTransform, Transform},
    {kControlXYZ, XYZ},             {kControlMorphInput, Carried},
};

}  // namespace

void KTool::BuildParameter(KParameter* p)
{
    if (p->flags & kFlagLate) multiFrame = true;
    KControlBuild b{*this, p, {}};
    Common(b.a, p->flags);
    for (const ControlRow& row : kControls)
        if (row.kind == p->controlKind) return row.build(b);
}

void KTool::BuildTransform(KParameter* p)
{
    const int32_t mode = p->transformMode;
    const KTransformValue& d = p->defaultTransform;
    // Mode 5, the placement in space of the 3D tools, is 0 without the picture's position and aspect.
    const bool position = mode == 0 || mode == 1 || mode == 2 || mode == 5;
    const bool rotation = mode == 0 || mode == 1 || mode == 2 || mode == 4 || mode == 5;
    const bool scale = mode == 0 || mode == 1 || mode == 3 || mode == 5;
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

