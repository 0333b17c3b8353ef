#include "framework/parameter.h"
#include <cstring>

const std::string& KParameter::Item(int32_t i) const
{
    static const std::string none;
    KListItem* it = items.head;
    for (; it && i > 0; --i) it = it->next;
    return it ? static_cast<KName*>(it)->text : none;
}

KParameter* KParameterList::Find(uint32_t id) const
{
    for (KParameter* p = First(); p; p = p->Next())
        if (p->id == id) return p;
    return nullptr;
}

KParameter* KParameterList::Declare(int32_t valueKind, int32_t controlKind, void* field,
                                    const char* label, uint32_t id, uint32_t flags)
{
    auto* p = new KParameter;
    p->name = label ? label : "";
    p->id = id;
    p->valueKind = valueKind;
    p->controlKind = controlKind;
    p->field = field;
    p->flags = flags;
    Append(p);
    return p;
}

KParameter* KParameterList::DeclareItems(int32_t controlKind, int32_t* field, int32_t def,
                                         const char* label, uint32_t id, uint32_t flags,
                                         KItems items)
{
    KParameter* p = Declare(kValueInteger, controlKind, field, label, id, flags);
    p->defaultValue = static_cast<float>(def);
    *field = def;
    for (const char* text : items) {
        // Only the exact text ends the list; unlike a six-byte compare, strcmp
        // never reads past an item shorter than the marker.
        if (std::strcmp(text, "[end]") == 0) break;
        p->items.Append(new KName(text));
    }
    return p;
}

KParameter* KParameterList::DeclareNumber(int32_t controlKind, float* field, float def,
                                          const char* label, uint32_t id, uint32_t flags,
                                          double minimum, double maximum)
{
    KParameter* p = Declare(kValueFloat, controlKind, field, label, id, flags);
    p->defaultValue = def;
    p->minimum = static_cast<float>(minimum);
    p->maximum = static_cast<float>(maximum);
    *field = def;
    return p;
}

KParameter* KParameterList::DeclareNumber(int32_t controlKind, int32_t* field, int32_t def,
                                          const char* label, uint32_t id, uint32_t flags,
                                          int32_t minimum, int32_t maximum)
{
    KParameter* p = Declare(kValueInteger, controlKind, field, label, id, flags);
    p->defaultValue = static_cast<float>(def);
    p->minimum = static_cast<float>(minimum);
    p->maximum = static_cast<float>(maximum);
    *field = def;
    return p;
}

KParameter* KParameterList::AddPage(const char* label)
{
    return Declare(kValueNone, kControlPage, nullptr, label, 0, 0);
}

KParameter* KParameterList::BeginNest(const char* label, uint32_t id, uint32_t flags)
{
    return Declare(kValueNone, kControlBeginNest, nullptr, label, id, flags);
}

KParameter* KParameterList::EndNest()
{
    return Declare(kValueNone, kControlEndNest, nullptr, nullptr, 0, 0);
}

KParameter* KParameterList::AddLabel(const char* label, uint32_t id, uint32_t flags)
{
    return Declare(kValueNone, kControlLabel, nullptr, label, id, flags);
}

KParameter* KParameterList::AddButton(const char* label, uint32_t id, uint32_t flags)
{
    return Declare(kValueNone, kControlButton, nullptr, label, id, flags);
}

KParameter* KParameterList::AddAngle(float* field, float def, const char* label, uint32_t id,
                                     uint32_t flags, int32_t unit)
{
    KParameter* p = Declare(kValueFloat, kControlAngle, field, label, id, flags);
    p->defaultValue = def;
    p->angleUnit = unit;
    *field = def;
    return p;
}

KParameter* KParameterList::AddCheckbox(bool* field, bool def, const char* label, uint32_t id,
                                        uint32_t flags, int32_t width)
{
    KParameter* p = Declare(kValueBoolean, kControlCheckbox, field, label, id, flags);
    p->defaultValue = def ? 1.0f : 0.0f;
    p->checkWidth = static_cast<float>(width);
    *field = def;
    return p;
}

KParameter* KParameterList::AddMultiButton(int32_t* field, int32_t def, const char* label,
                                           uint32_t id, uint32_t flags, KItems items)
{
    return DeclareItems(kControlMultiButton, field, def, label, id, flags, items);
}

KParameter* KParameterList::AddCombo(int32_t* field, int32_t def, const char* label, uint32_t id,
                                     uint32_t flags, KItems items)
{
    return DeclareItems(kControlCombo, field, def, label, id, flags, items);
}

KParameter* KParameterList::AddChannelSelect(int32_t* field, int32_t def, const char* label,
                                             uint32_t id, uint32_t flags)
{
    return AddMultiButton(field, def, label, id, flags,
                          {"Red", "Green", "Blue", "Alpha", "Lumin.", "[end]"});
}

KParameter* KParameterList::AddSlider(float* field, float def, const char* label, uint32_t id,
                                      uint32_t flags, double minimum, double maximum)
{
    return DeclareNumber(kControlSlider, field, def, label, id, flags, minimum, maximum);
}

KParameter* KParameterList::AddSlider(int32_t* field, int32_t def, const char* label,
                                      uint32_t id, uint32_t flags, int32_t minimum,
                                      int32_t maximum)
{
    return DeclareNumber(kControlSlider, field, def, label, id, flags, minimum, maximum);
}

KParameter* KParameterList::AddSeed(int32_t* field, const char* label, uint32_t id,
                                    uint32_t flags)
{
    return DeclareNumber(kControlSlider, field, 0, label, id, flags, 0, 32768);
}

KParameter* KParameterList::AddScrew(float* field, float def, const char* label, uint32_t id,
                                     uint32_t flags, double minimum, double maximum)
{
    return DeclareNumber(kControlScrew, field, def, label, id, flags, minimum, maximum);
}

KParameter* KParameterList::AddScrew(int32_t* field, int32_t def, const char* label,
                                     uint32_t id, uint32_t flags, int32_t minimum,
                                     int32_t maximum)
{
    return DeclareNumber(kControlScrew, field, def, label, id, flags, minimum, maximum);
}

KParameter* KParameterList::AddColor(KColor* field, KColor def, const char* label, uint32_t id,
                                     uint32_t flags)
{
    KParameter* p = Declare(kValueColor, kControlColor, field, label, id, flags);
    // Component ids follow from the red one: ...R, ...G, ...B, ...A.
    p->id2 = id - 11;
    p->id3 = id - 16;
    p->id4 = id - 17;
    p->defaultColor.r = def.r;
    p->defaultColor.g = def.g;
    p->defaultColor.b = def.b;
    p->defaultColor.a = def.a;
    field->r = def.r;
    field->g = def.g;
    field->b = def.b;
    field->a = def.a;
    p->group = NextGroup();
    return p;
}

KParameter* KParameterList::AddXYZ(KXYZ* field, KXYZ def, const char* label, uint32_t id,
                                   uint32_t flags)
{
    KParameter* p = Declare(kValueXYZ, kControlXYZ, field, label, id, flags);
    p->defaultXYZ = def;
    *field = def;
    p->group = NextGroup();
    return p;
}

KParameter* KParameterList::AddPoint(KPoint2* field, KPoint2 def, const char* label, uint32_t id,
                                     uint32_t flags, int32_t unit)
{
    KParameter* p = Declare(kValuePoint, kControlPoint, field, label, id, flags);
    p->defaultPoint = def;
    p->pointUnit = unit;
    *field = def;
    return p;
}

KParameter* KParameterList::AddRange(KRange2* field, float low, float high, const char* label,
                                     const char* label2, uint32_t id, uint32_t id2,
                                     uint32_t flags, double minimum, double maximum)
{
    KParameter* p = Declare(kValueRange, kControlRange, field, label, id, flags);
    p->id2 = id2;
    p->defaultRange = {low, high};
    p->minimum = static_cast<float>(minimum);
    p->maximum = static_cast<float>(maximum);
    p->items.Append(new KName(label2 ? label2 : ""));
    *field = {low, high};
    p->group = NextGroup();
    return p;
}

KParameter* KParameterList::AddCurve(KCurveTable** field, const char* label, uint32_t id,
                                     uint32_t flags, KColor color)
{
    KParameter* p = Declare(kValueCurve, kControlCurve, field, label, id, flags);
    *field = nullptr;
    p->defaultColor = color;
    p->group = NextGroup();
    return p;
}

KParameter* KParameterList::AddFile(std::string* field, const char* def, const char* label,
                                    uint32_t id, uint32_t flags, const char* filter)
{
    KParameter* p = Declare(kValueText, kControlFile, field, label, id, flags);
    p->defaultText = def ? def : "";
    *field = p->defaultText;
    if (filter) p->items.Append(new KName(filter));
    return p;
}

KParameter* KParameterList::AddTextEdit(std::string* field, const char* def, const char* label,
                                        uint32_t id, uint32_t flags, int32_t lines)
{
    KParameter* p = Declare(kValueText, kControlTextEdit, field, label, id, flags);
    p->defaultText = def ? def : "";
    *field = p->defaultText;
    p->group = lines;
    return p;
}

KParameter* KParameterList::AddImageInput(KImage** field, const char* label, uint32_t id,
                                          uint32_t flags)
{
    *field = nullptr;
    return Declare(kValueImage, kControlImageInput, field, label, id, flags);
}

KParameter* KParameterList::AddMaskInput(KImage** field, const char* label, uint32_t id,
                                         uint32_t flags)
{
    *field = nullptr;
    return Declare(kValueImage, kControlMaskInput, field, label, id, flags);
}

KParameter* KParameterList::AddDataInput(KDataTable** field, const char* label, uint32_t id,
                                         uint32_t flags)
{
    *field = nullptr;
    return Declare(kValueData, kControlDataInput, field, label, id, flags);
}

KParameter* KParameterList::AddShapeInput(ShapeListVector** field, const char* label, uint32_t id,
                                          uint32_t flags)
{
    *field = nullptr;
    return Declare(kValueShape, kControlShapeInput, field, label, id, flags);
}

KParameter* KParameterList::AddRegion3DInput(KRegion3D** field, const char* label, uint32_t id,
                                             uint32_t flags)
{
    *field = nullptr;
    return Declare(kValueRegion3D, kControlRegion3DInput, field, label, id, flags);
}

KParameter* KParameterList::AddMorphInput(MW_WarpData** field, const char* label, uint32_t id,
                                          uint32_t flags)
{
    *field = nullptr;
    return Declare(kValueMorph, kControlMorphInput, field, label, id, flags);
}

KParameter* KParameterList::AddTransform(KTransformValue* field, const KTransformValue& def,
                                         const char* label, uint32_t id, uint32_t flags,
                                         int32_t mode)
{
    KParameter* p = Declare(kValueTransform, kControlTransform, field, label, id, flags);
    p->defaultTransform = def;
    p->transformMode = mode;
    *field = def;
    p->group = NextGroup();
    return p;
}

KParameter* KParameterList::AddStandard(int32_t* field, int32_t def, int32_t standardKind,
                                        uint32_t flags)
{
    KParameter* p = Declare(kValueStandard, kControlStandard, field, "", 0, flags);
    p->defaultValue = static_cast<float>(def);
    p->standardKind = standardKind;
    *field = def;
    return p;
}

KOutput* KOutputList::Declare(int32_t valueKind, void* field, const char* label, uint32_t id,
                              uint32_t flags)
{
    auto* o = new KOutput;
    o->name = label ? label : "";
    o->id = id;
    o->valueKind = valueKind;
    o->field = field;
    o->flags = flags;
    Append(o);
    return o;
}

KOutput* KOutputList::AddImageOutput(KImage** field, const char* label, uint32_t id,
                                     uint32_t flags)
{
    return Declare(kValueImage, field, label, id, flags);
}

KOutput* KOutputList::AddDataOutput(KDataTable** field, const char* label, uint32_t id,
                                    uint32_t flags)
{
    return Declare(kValueData, field, label, id, flags);
}

KOutput* KOutputList::AddNumberOutput(float* field, const char* label, uint32_t id,
                                      uint32_t flags)
{
    return Declare(kValueFloat, field, label, id, flags);
}

KOutput* KOutputList::AddPointOutput(KPoint2* field, const char* label, uint32_t id,
                                     uint32_t flags)
{
    return Declare(kValuePoint, field, label, id, flags);
}

KOutput* KOutputList::AddRegion3DOutput(KRegion3D** field, const char* label, uint32_t id,
                                        uint32_t flags)
{
    return Declare(kValueRegion3D, field, label, id, flags);
}

KOutput* KOutputList::AddShapeOutput(ShapeListVector** field, const char* label, uint32_t id,
                                     uint32_t flags)
{
    return Declare(kValueShape, field, label, id, flags);
}

KOutput* KOutputList::AddTextOutput(std::string* field, const char* label, uint32_t id,
                                    uint32_t flags)
{
    return Declare(kValueText, field, label, id, flags);
}
