// Parameter declarations: an effect declares its controls on its own fields.
// Declaring writes the default into the field; the bridge overwrites it per render.
#pragma once
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include "framework/list.h"
#include "framework/message.h"

class KImage;
class KDataTable;
class KRegion3D;
class ShapeListVector;
class MW_WarpData;

// Four-character ids as big-endian integers: "Cent"_id == 0x43656E74.
constexpr uint32_t operator""_id(const char* s, size_t n)
{
    uint32_t v = 0;
    for (size_t i = 0; i < n; ++i) v = (v << 8) | static_cast<uint8_t>(s[i]);
    return v;
}

enum ValueKind : int32_t {
    kValueNone = 0, kValueStandard = 1, kValueBoolean = 2, kValueColor = 3, kValueData = 4,
    kValueImage = 5, kValueInteger = 6, kValueFloat = 7, kValueCurve = 8, kValuePoint = 9,
    kValueRange = 10, kValueRegion3D = 11, kValueShape = 12, kValueText = 13,
    kValueTransform = 15, kValueXYZ = 16,
    kValueMorph = 18,  // curve pairs of a morph, a kind of the plug-in's own
};

enum ControlKind : int32_t {
    kControlStandard = 1, kControlPage = 2, kControlBeginNest = 3, kControlEndNest = 4,
    kControlAngle = 5, kControlButton = 6, kControlMultiButton = 7, kControlCheckbox = 8,
    kControlCurve = 9, kControlColor = 10, kControlDataInput = 11, kControlFile = 12,
    kControlImageInput = 13, kControlLabel = 15, kControlCombo = 16, kControlMaskInput = 17,
    kControlPoint = 18, kControlRange = 19, kControlRegion3DInput = 20, kControlSlider = 21,
    kControlScrew = 22, kControlShapeInput = 23, kControlTextEdit = 24, kControlTransform = 25,
    kControlXYZ = 26, kControlMorphInput = 27,
};

enum StandardInput : int32_t {
    kStdImage = 0, kStdColorSpace = 1, kStdRGB = 2, kStdRGBA = 3, kStdUnderSample = 4,
    kStdSuperSample = 5, kStdFilterSize = 6, kStdSubPixel = 7, kStdFiltering = 8,
    kStdEdges = 9, kStdPreDivide = 10, kStdTrails = 11, kStdMultiThread = 12, kStdWarpMask = 13,
};

enum ParameterFlags : uint32_t {
    kFlagNotify = 0x1, kFlagHidden = 0x2, kFlagPreview = 0x4, kFlagMain = 0x8,
    kFlagNotExternal = 0x10, kFlagLate = 0x20, kFlagTextVariantA = 0x40,
    kFlagTextVariantB = 0x80, kFlagHardMin = 0x400, kFlagHardMax = 0x800,
    kFlagPreviewEllipse = 0x100000, kFlagPreviewRectWidth = 0x200000,
    kFlagPreviewRectHeight = 0x400000, kFlagPreviewLinkedPoint = 0x800000,
    kFlagPreviewAngle = 0x1000000,
};

struct KTransformValue {
    uint32_t type = 0;
    float positionX = 0.5f, positionY = 0.5f;
    float aspect = 1.0f;
    int32_t aspectType = 0;
    bool scaleLock = true;
    float translateX = 0.0f, translateY = 0.0f, translateZ = 0.0f;
    float rotateX = 0.0f, rotateY = 0.0f, rotateZ = 0.0f;
    float scaleX = 1.0f, scaleY = 1.0f, scaleZ = 1.0f;
    int32_t rotationOrder = 0;
};
static_assert(sizeof(KTransformValue) == 64);

// A look-up curve as the bridge fills it: 65536 16-bit entries over x from 0 to 1.
struct KCurveTable {
    int32_t count = 0;
    float scale = 0.0f;
    uint16_t* entries = nullptr;
};

struct KPoint2 { float x = 0.0f, y = 0.0f; };
struct KRange2 { float low = 0.0f, high = 1.0f; };
struct KXYZ { float x = 0.0f, y = 0.0f, z = 0.0f; };

class KParameter : public KListItem {
public:
    std::string name;
    uint32_t id = 0;
    uint32_t id2 = 0, id3 = 0, id4 = 0;
    int32_t group = -1;  // lines, for a text edit
    KNameList items;     // second label of a range, filter of a file
    float checkWidth = 0.0f;
    int32_t transformMode = 0;
    int32_t valueKind = kValueNone;
    int32_t controlKind = 0;
    void* field = nullptr;
    float defaultValue = 0.0f;
    float minimum = 0.0f, maximum = 0.0f;
    KColor defaultColor;
    KRange2 defaultRange{0.0f, 1.0f};
    KPoint2 defaultPoint;
    KXYZ defaultXYZ;
    std::string defaultText;
    KTransformValue defaultTransform;
    int32_t angleUnit = 0;
    int32_t pointUnit = 0;
    int32_t standardKind = 0;
    uint32_t flags = 0;

    KParameter* Next() const { return static_cast<KParameter*>(next); }
    // Item texts in order; the first item is value 0.
    int32_t ItemCount() const { return items.count; }
    const std::string& Item(int32_t i) const;
};

// Item list of a multi-button or combo, read up to the exact text "[end]".
using KItems = std::initializer_list<const char*>;

class KParameterList : public KList {
public:
    int32_t groupCounter = 10;

    KParameter* First() const { return static_cast<KParameter*>(head); }
    KParameter* Find(uint32_t id) const;

    KParameter* AddPage(const char* label);
    KParameter* BeginNest(const char* label, uint32_t id, uint32_t flags);
    KParameter* EndNest();
    KParameter* AddLabel(const char* label, uint32_t id, uint32_t flags);
    KParameter* AddButton(const char* label, uint32_t id, uint32_t flags);
    KParameter* AddAngle(float* field, float def, const char* label, uint32_t id, uint32_t flags,
                         int32_t unit);
    KParameter* AddCheckbox(bool* field, bool def, const char* label, uint32_t id, uint32_t flags,
                            int32_t width);
    KParameter* AddMultiButton(int32_t* field, int32_t def, const char* label, uint32_t id,
                               uint32_t flags, KItems items);
    KParameter* AddCombo(int32_t* field, int32_t def, const char* label, uint32_t id,
                         uint32_t flags, KItems items);
    KParameter* AddChannelSelect(int32_t* field, int32_t def, const char* label, uint32_t id,
                                 uint32_t flags);
    KParameter* AddSlider(float* field, float def, const char* label, uint32_t id, uint32_t flags,
                          double minimum, double maximum);
    KParameter* AddSlider(int32_t* field, int32_t def, const char* label, uint32_t id,
                          uint32_t flags, int32_t minimum, int32_t maximum);
    KParameter* AddSeed(int32_t* field, const char* label, uint32_t id, uint32_t flags);
    KParameter* AddScrew(float* field, float def, const char* label, uint32_t id, uint32_t flags,
                         double minimum, double maximum);
    KParameter* AddScrew(int32_t* field, int32_t def, const char* label, uint32_t id,
                         uint32_t flags, int32_t minimum, int32_t maximum);
    KParameter* AddColor(KColor* field, KColor def, const char* label, uint32_t id,
                         uint32_t flags);
    KParameter* AddXYZ(KXYZ* field, KXYZ def, const char* label, uint32_t id, uint32_t flags);
    KParameter* AddPoint(KPoint2* field, KPoint2 def, const char* label, uint32_t id,
                         uint32_t flags, int32_t unit);
    KParameter* AddRange(KRange2* field, float low, float high, const char* label,
                         const char* label2, uint32_t id, uint32_t id2, uint32_t flags,
                         double minimum, double maximum);
    KParameter* AddCurve(KCurveTable** field, const char* label, uint32_t id, uint32_t flags,
                         KColor color);
    KParameter* AddFile(std::string* field, const char* def, const char* label, uint32_t id,
                        uint32_t flags, const char* filter);
    KParameter* AddTextEdit(std::string* field, const char* def, const char* label, uint32_t id,
                            uint32_t flags, int32_t lines);
    KParameter* AddImageInput(KImage** field, const char* label, uint32_t id, uint32_t flags);
    KParameter* AddMaskInput(KImage** field, const char* label, uint32_t id, uint32_t flags);
    KParameter* AddDataInput(KDataTable** field, const char* label, uint32_t id, uint32_t flags);
    KParameter* AddShapeInput(ShapeListVector** field, const char* label, uint32_t id, uint32_t flags);
    KParameter* AddRegion3DInput(KRegion3D** field, const char* label, uint32_t id,
                                 uint32_t flags);
    KParameter* AddMorphInput(MW_WarpData** field, const char* label, uint32_t id, uint32_t flags);
    KParameter* AddTransform(KTransformValue* field, const KTransformValue& def,
                             const char* label, uint32_t id, uint32_t flags, int32_t mode);
    KParameter* AddStandard(int32_t* field, int32_t def, int32_t standardKind, uint32_t flags);

private:
    KParameter* Declare(int32_t valueKind, int32_t controlKind, void* field, const char* label,
                        uint32_t id, uint32_t flags);
    KParameter* DeclareItems(int32_t controlKind, int32_t* field, int32_t def, const char* label,
                             uint32_t id, uint32_t flags, KItems items);
    KParameter* DeclareNumber(int32_t controlKind, float* field, float def, const char* label,
                              uint32_t id, uint32_t flags, double minimum, double maximum);
    KParameter* DeclareNumber(int32_t controlKind, int32_t* field, int32_t def,
                              const char* label, uint32_t id, uint32_t flags, int32_t minimum,
                              int32_t maximum);
    int32_t NextGroup() { return ++groupCounter; }
};

class KOutput : public KListItem {
public:
    std::string name;
    uint32_t id = 0;
    int32_t valueKind = kValueNone;
    void* field = nullptr;
    uint32_t flags = 0;
    void* hostOutput = nullptr;

    KOutput* Next() const { return static_cast<KOutput*>(next); }
};

class KOutputList : public KList {
public:
    KOutput* First() const { return static_cast<KOutput*>(head); }
    KOutput* AddImageOutput(KImage** field, const char* label, uint32_t id, uint32_t flags);
    KOutput* AddDataOutput(KDataTable** field, const char* label, uint32_t id, uint32_t flags);
    KOutput* AddNumberOutput(float* field, const char* label, uint32_t id, uint32_t flags);
    KOutput* AddPointOutput(KPoint2* field, const char* label, uint32_t id, uint32_t flags);
    KOutput* AddRegion3DOutput(KRegion3D** field, const char* label, uint32_t id,
                               uint32_t flags);
    KOutput* AddShapeOutput(ShapeListVector** field, const char* label, uint32_t id, uint32_t flags);
    KOutput* AddTextOutput(std::string* field, const char* label, uint32_t id, uint32_t flags);

private:
    KOutput* Declare(int32_t valueKind, void* field, const char* label, uint32_t id,
                     uint32_t flags);
};
