// Parameter and output declarations: what each one stores, and the defaults it
// writes into the bound field before any render.
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "framework/parameter.h"

namespace {

std::vector<std::string> Items(const KParameter& p)
{
    std::vector<std::string> v;
    for (KListItem* i = p.items.head; i; i = i->next) v.push_back(static_cast<KName*>(i)->text);
    return v;
}

void ExpectKinds(const KParameter* p, int32_t value, int32_t control)
{
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->valueKind, value) << p->name;
    EXPECT_EQ(p->controlKind, control) << p->name;
}

}  // namespace

TEST(FrameworkParameterId, BigEndianCharacterCodes)
{
    static_assert("Cent"_id == 0x43656E74u);
    EXPECT_EQ("Cent"_id, 0x43656E74u);
    EXPECT_EQ("Angl"_id, 0x416E676Cu);
    EXPECT_EQ("PnCR"_id - "PnCG"_id, 11u);
}

TEST(FrameworkParameter, LayoutDeclarationsHaveNoField)
{
    KParameterList list;
    KParameter* page = list.AddPage("Controls");
    KParameter* nest = list.BeginNest("Advanced", "Advn"_id, kFlagHidden);
    KParameter* end = list.EndNest();
    KParameter* label = list.AddLabel("Note", "Note"_id, 0);
    KParameter* button = list.AddButton("Reset", "Rset"_id, kFlagNotify);
    ExpectKinds(page, kValueNone, kControlPage);
    ExpectKinds(nest, kValueNone, kControlBeginNest);
    ExpectKinds(end, kValueNone, kControlEndNest);
    ExpectKinds(label, kValueNone, kControlLabel);
    ExpectKinds(button, kValueNone, kControlButton);
    EXPECT_EQ(page->name, "Controls");
    EXPECT_EQ(page->id, 0u);
    EXPECT_EQ(nest->id, "Advn"_id);
    EXPECT_EQ(nest->flags, uint32_t(kFlagHidden));
    EXPECT_EQ(end->name, "");
    EXPECT_EQ(end->id, 0u);
    EXPECT_EQ(button->flags, uint32_t(kFlagNotify));
    for (KParameter* p = list.First(); p; p = p->Next()) {
        EXPECT_EQ(p->field, nullptr);
        EXPECT_EQ(p->group, -1);
    }
    EXPECT_EQ(list.count, 5);
    EXPECT_EQ(list.groupCounter, 10);
}

TEST(FrameworkParameter, NumbersWriteDefaultsAndFloatLimits)
{
    KParameterList list;
    float angle = -1.0f, fslider = -1.0f, fscrew = -1.0f;
    int32_t islider = -1, iscrew = -1;
    bool check = false;

    KParameter* a = list.AddAngle(&angle, 45.0f, "Angle", "Angl"_id, kFlagPreview, 1);
    ExpectKinds(a, kValueFloat, kControlAngle);
    EXPECT_EQ(angle, 45.0f);
    EXPECT_EQ(a->defaultValue, 45.0f);
    EXPECT_EQ(a->angleUnit, 1);
    EXPECT_EQ(a->field, &angle);
    EXPECT_EQ(a->flags, uint32_t(kFlagPreview));

    KParameter* c = list.AddCheckbox(&check, true, "Invert", "Invt"_id, 0, 2);
    ExpectKinds(c, kValueBoolean, kControlCheckbox);
    EXPECT_TRUE(check);
    EXPECT_EQ(c->defaultValue, 1.0f);
    EXPECT_EQ(c->checkWidth, 2.0f);
    bool off = true;
    EXPECT_EQ(list.AddCheckbox(&off, false, "Off", "Off "_id, 0, 1)->defaultValue, 0.0f);
    EXPECT_FALSE(off);

    // Limits arrive as doubles and are kept as floats.
    KParameter* fs = list.AddSlider(&fslider, 0.3f, "Size", "Size"_id, kFlagHardMin, -0.1, 1e10);
    ExpectKinds(fs, kValueFloat, kControlSlider);
    EXPECT_EQ(fslider, 0.3f);
    EXPECT_EQ(fs->defaultValue, 0.3f);
    EXPECT_EQ(fs->minimum, -0.1f);
    EXPECT_EQ(fs->maximum, 1e10f);

    KParameter* is = list.AddSlider(&islider, 7, "Count", "Cnt "_id, 0, -3, 16777217);
    ExpectKinds(is, kValueInteger, kControlSlider);
    EXPECT_EQ(islider, 7);
    EXPECT_EQ(is->defaultValue, 7.0f);
    EXPECT_EQ(is->minimum, -3.0f);
    EXPECT_EQ(is->maximum, 16777216.0f);  // nearest float

    KParameter* fw = list.AddScrew(&fscrew, 2.5f, "Gain", "Gain"_id, 0, 0.0, 10.0);
    ExpectKinds(fw, kValueFloat, kControlScrew);
    EXPECT_EQ(fscrew, 2.5f);
    EXPECT_EQ(fw->maximum, 10.0f);

    KParameter* iw = list.AddScrew(&iscrew, -4, "Steps", "Step"_id, 0, -10, 10);
    ExpectKinds(iw, kValueInteger, kControlScrew);
    EXPECT_EQ(iscrew, -4);
    EXPECT_EQ(iw->defaultValue, -4.0f);
    EXPECT_EQ(iw->minimum, -10.0f);

    for (KParameter* p = list.First(); p; p = p->Next()) EXPECT_EQ(p->group, -1) << p->name;
}

TEST(FrameworkParameter, SeedIsAnIntegerSliderFromZero)
{
    KParameterList list;
    int32_t seed = 99;
    KParameter* p = list.AddSeed(&seed, "Seed", "Seed"_id, kFlagNotify);
    ExpectKinds(p, kValueInteger, kControlSlider);
    EXPECT_EQ(seed, 0);
    EXPECT_EQ(p->defaultValue, 0.0f);
    EXPECT_EQ(p->minimum, 0.0f);
    EXPECT_EQ(p->maximum, 32768.0f);
    EXPECT_EQ(p->flags, uint32_t(kFlagNotify));
    EXPECT_EQ(p->name, "Seed");
}

TEST(FrameworkParameter, ItemListsEndAtTheExactMarker)
{
    KParameterList list;
    int32_t mode = -1, combo = -1, empty = -1, channel = -1;

    KParameter* m = list.AddMultiButton(&mode, 1, "Mode", "Mode"_id, 0,
                                        {"Linear", "Smooth", "[end]"});
    ExpectKinds(m, kValueInteger, kControlMultiButton);
    EXPECT_EQ(mode, 1);
    EXPECT_EQ(m->defaultValue, 1.0f);
    EXPECT_EQ(Items(*m), (std::vector<std::string>{"Linear", "Smooth"}));
    EXPECT_EQ(m->ItemCount(), 2);
    EXPECT_EQ(m->Item(0), "Linear");
    EXPECT_EQ(m->Item(1), "Smooth");
    EXPECT_EQ(m->Item(2), "");

    // Only the exact text ends the list; what follows it is never read.
    KParameter* c = list.AddCombo(&combo, 2, "Type", "Type"_id, 0,
                                  {"A", "[end]x", "[END]", "[end", "", "[end]", "Never"});
    ExpectKinds(c, kValueInteger, kControlCombo);
    EXPECT_EQ(combo, 2);
    EXPECT_EQ(Items(*c), (std::vector<std::string>{"A", "[end]x", "[END]", "[end", ""}));

    KParameter* e = list.AddCombo(&empty, 0, "Empty", "Empt"_id, 0, {"[end]"});
    EXPECT_EQ(e->ItemCount(), 0);
    EXPECT_EQ(e->items.head, nullptr);
    EXPECT_EQ(empty, 0);

    KParameter* ch = list.AddChannelSelect(&channel, 3, "Channel", "Chan"_id, kFlagNotify);
    ExpectKinds(ch, kValueInteger, kControlMultiButton);
    EXPECT_EQ(channel, 3);
    EXPECT_EQ(Items(*ch),
              (std::vector<std::string>{"Red", "Green", "Blue", "Alpha", "Lumin."}));
    EXPECT_EQ(ch->flags, uint32_t(kFlagNotify));
}

TEST(FrameworkParameter, GroupedControlsCountFromEleven)
{
    KParameterList list;
    KColor color1, color2;
    KXYZ xyz;
    KRange2 range;
    KCurveTable* curve = reinterpret_cast<KCurveTable*>(0x1);
    KTransformValue transform;
    float between = 0.0f;

    EXPECT_EQ(list.AddColor(&color1, {1, 0, 0, 1}, "Color", "ColR"_id, 0)->group, 11);
    EXPECT_EQ(list.AddColor(&color2, {0, 1, 0, 1}, "Other", "OthR"_id, 0)->group, 12);
    EXPECT_EQ(list.AddSlider(&between, 0.0f, "Between", "Btwn"_id, 0, 0.0, 1.0)->group, -1);
    EXPECT_EQ(list.AddCurve(&curve, "Curve", "Curv"_id, 0, {})->group, 13);
    EXPECT_EQ(list.AddXYZ(&xyz, {}, "Pos", "Posi"_id, 0)->group, 14);
    EXPECT_EQ(list.AddRange(&range, 0.1f, 0.9f, "Low", "High", "RLow"_id, "RHig"_id, 0, 0.0,
                            1.0)->group,
              15);
    EXPECT_EQ(list.AddTransform(&transform, {}, "Xf", "Xfrm"_id, 0, 0)->group, 16);
    EXPECT_EQ(list.groupCounter, 16);
}

TEST(FrameworkParameter, ColorComponentsAndIds)
{
    KParameterList list;
    KColor field{9, 9, 9, 9};
    KParameter* p = list.AddColor(&field, {0.1f, 0.2f, 0.3f, 0.4f}, "Pen Color", "PnCR"_id,
                                  kFlagNotify);
    ExpectKinds(p, kValueColor, kControlColor);
    EXPECT_EQ(p->id, "PnCR"_id);
    EXPECT_EQ(p->id2, "PnCG"_id);
    EXPECT_EQ(p->id3, "PnCB"_id);
    EXPECT_EQ(p->id4, "PnCA"_id);
    EXPECT_EQ(field.r, 0.1f);
    EXPECT_EQ(field.g, 0.2f);
    EXPECT_EQ(field.b, 0.3f);
    EXPECT_EQ(field.a, 0.4f);
    EXPECT_EQ(p->defaultColor.r, 0.1f);
    EXPECT_EQ(p->defaultColor.g, 0.2f);
    EXPECT_EQ(p->defaultColor.b, 0.3f);
    EXPECT_EQ(p->defaultColor.a, 0.4f);
}

TEST(FrameworkParameter, PointXyzRangeAndTransformDefaults)
{
    KParameterList list;
    KPoint2 point{9, 9};
    KXYZ xyz{9, 9, 9};
    KRange2 range{9, 9};

    KParameter* pt = list.AddPoint(&point, {0.25f, 0.75f}, "Center", "Cent"_id, kFlagPreview, 2);
    ExpectKinds(pt, kValuePoint, kControlPoint);
    EXPECT_EQ(point.x, 0.25f);
    EXPECT_EQ(point.y, 0.75f);
    EXPECT_EQ(pt->defaultPoint.x, 0.25f);
    EXPECT_EQ(pt->defaultPoint.y, 0.75f);
    EXPECT_EQ(pt->pointUnit, 2);
    EXPECT_EQ(pt->group, -1);

    KParameter* x = list.AddXYZ(&xyz, {1.0f, -2.0f, 3.0f}, "Offset", "Offs"_id, 0);
    ExpectKinds(x, kValueXYZ, kControlXYZ);
    EXPECT_EQ(xyz.x, 1.0f);
    EXPECT_EQ(xyz.y, -2.0f);
    EXPECT_EQ(xyz.z, 3.0f);
    EXPECT_EQ(x->defaultXYZ.z, 3.0f);

    KParameter* r = list.AddRange(&range, 0.2f, 0.8f, "Low", "High", "Lo  "_id, "Hi  "_id,
                                  0, -1.0, 2.0);
    ExpectKinds(r, kValueRange, kControlRange);
    EXPECT_EQ(range.low, 0.2f);
    EXPECT_EQ(range.high, 0.8f);
    EXPECT_EQ(r->defaultRange.low, 0.2f);
    EXPECT_EQ(r->defaultRange.high, 0.8f);
    EXPECT_EQ(r->name, "Low");
    EXPECT_EQ(Items(*r), std::vector<std::string>{"High"});
    EXPECT_EQ(r->id, "Lo  "_id);
    EXPECT_EQ(r->id2, "Hi  "_id);
    EXPECT_EQ(r->minimum, -1.0f);
    EXPECT_EQ(r->maximum, 2.0f);

    // Until a range sets it, the default range is 0 to 1.
    KParameter* other = list.AddPage("Page");
    EXPECT_EQ(other->defaultRange.low, 0.0f);
    EXPECT_EQ(other->defaultRange.high, 1.0f);

    KTransformValue def;
    def.type = 1;
    def.positionX = 0.1f;
    def.positionY = 0.2f;
    def.aspect = 1.5f;
    def.aspectType = 2;
    def.scaleLock = false;
    def.translateX = 1.0f;
    def.translateY = 2.0f;
    def.translateZ = 3.0f;
    def.rotateX = 4.0f;
    def.rotateY = 5.0f;
    def.rotateZ = 6.0f;
    def.scaleX = 7.0f;
    def.scaleY = 8.0f;
    def.scaleZ = 9.0f;
    def.rotationOrder = 5;
    KTransformValue field;
    KParameter* t = list.AddTransform(&field, def, "Transform", "Xfrm"_id, 0, 3);
    ExpectKinds(t, kValueTransform, kControlTransform);
    EXPECT_EQ(t->transformMode, 3);
    for (const KTransformValue* v : {&field, &t->defaultTransform}) {
        EXPECT_EQ(v->type, 1u);
        EXPECT_EQ(v->positionX, 0.1f);
        EXPECT_EQ(v->positionY, 0.2f);
        EXPECT_EQ(v->aspect, 1.5f);
        EXPECT_EQ(v->aspectType, 2);
        EXPECT_FALSE(v->scaleLock);
        EXPECT_EQ(v->translateX, 1.0f);
        EXPECT_EQ(v->translateY, 2.0f);
        EXPECT_EQ(v->translateZ, 3.0f);
        EXPECT_EQ(v->rotateX, 4.0f);
        EXPECT_EQ(v->rotateY, 5.0f);
        EXPECT_EQ(v->rotateZ, 6.0f);
        EXPECT_EQ(v->scaleX, 7.0f);
        EXPECT_EQ(v->scaleY, 8.0f);
        EXPECT_EQ(v->scaleZ, 9.0f);
        EXPECT_EQ(v->rotationOrder, 5);
    }
}

TEST(FrameworkParameter, CurveAndInputsStartNull)
{
    KParameterList list;
    KCurveTable* curve = reinterpret_cast<KCurveTable*>(0x10);
    KImage* image = reinterpret_cast<KImage*>(0x10);
    KImage* mask = reinterpret_cast<KImage*>(0x10);
    KDataTable* data = reinterpret_cast<KDataTable*>(0x10);
    KShapeList* shape = reinterpret_cast<KShapeList*>(0x10);
    KRegion3D* region = reinterpret_cast<KRegion3D*>(0x10);

    KParameter* c = list.AddCurve(&curve, "Curve", "Curv"_id, 0, {0.5f, 0.25f, 1.0f, 1.0f});
    ExpectKinds(c, kValueCurve, kControlCurve);
    EXPECT_EQ(curve, nullptr);
    EXPECT_EQ(c->defaultColor.g, 0.25f);

    ExpectKinds(list.AddImageInput(&image, "Input", 1, kFlagMain), kValueImage,
                kControlImageInput);
    ExpectKinds(list.AddMaskInput(&mask, "Mask", "Mask"_id, 0), kValueImage, kControlMaskInput);
    ExpectKinds(list.AddDataInput(&data, "Data", 2, kFlagMain), kValueData, kControlDataInput);
    ExpectKinds(list.AddShapeInput(&shape, "Shape", 3, kFlagMain), kValueShape,
                kControlShapeInput);
    ExpectKinds(list.AddRegion3DInput(&region, "Region", "Regn"_id, 0), kValueRegion3D,
                kControlRegion3DInput);
    EXPECT_EQ(image, nullptr);
    EXPECT_EQ(mask, nullptr);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(shape, nullptr);
    EXPECT_EQ(region, nullptr);

    KParameter* in = list.Find(1);
    ASSERT_NE(in, nullptr);
    EXPECT_EQ(in->name, "Input");
    EXPECT_EQ(in->field, &image);
    EXPECT_EQ(in->flags, uint32_t(kFlagMain));
    EXPECT_EQ(list.Find("Regn"_id)->field, &region);
    EXPECT_EQ(list.Find("None"_id), nullptr);
}

TEST(FrameworkParameter, FileAndTextEdit)
{
    KParameterList list;
    std::string file = "old", noFilter = "old", text = "old";

    KParameter* f = list.AddFile(&file, "in.cvs", "File", "File"_id, 0,
                                 "Data file (*.cvs)|*.cvs");
    ExpectKinds(f, kValueText, kControlFile);
    EXPECT_EQ(file, "in.cvs");
    EXPECT_EQ(f->defaultText, "in.cvs");
    EXPECT_EQ(Items(*f), std::vector<std::string>{"Data file (*.cvs)|*.cvs"});

    KParameter* g = list.AddFile(&noFilter, "", "File 2", "Fil2"_id, 0, nullptr);
    EXPECT_EQ(noFilter, "");
    EXPECT_EQ(g->ItemCount(), 0);

    KParameter* t = list.AddTextEdit(&text, "hello\nworld", "Text", "Text"_id,
                                     kFlagTextVariantA, 3);
    ExpectKinds(t, kValueText, kControlTextEdit);
    EXPECT_EQ(text, "hello\nworld");
    EXPECT_EQ(t->defaultText, "hello\nworld");
    EXPECT_EQ(t->group, 3);  // lines, not a group number
    EXPECT_EQ(list.groupCounter, 10);
}

TEST(FrameworkParameter, StandardInputHasNoLabelOrId)
{
    KParameterList list;
    int32_t edges = -1;
    KParameter* p = list.AddStandard(&edges, 2, kStdEdges, kFlagNotify);
    ExpectKinds(p, kValueStandard, kControlStandard);
    EXPECT_EQ(edges, 2);
    EXPECT_EQ(p->defaultValue, 2.0f);
    EXPECT_EQ(p->standardKind, int32_t(kStdEdges));
    EXPECT_EQ(p->name, "");
    EXPECT_EQ(p->id, 0u);
    EXPECT_EQ(p->flags, uint32_t(kFlagNotify));
    EXPECT_EQ(p->field, &edges);
}

TEST(FrameworkParameter, DeclarationOrderIsDisplayOrder)
{
    KParameterList list;
    float a = 0, b = 0;
    int32_t c = 0;
    list.AddPage("Controls");
    list.AddSlider(&a, 0.0f, "A", "AAAA"_id, 0, 0.0, 1.0);
    list.AddAngle(&b, 0.0f, "B", "BBBB"_id, 0, 0);
    list.AddSeed(&c, "C", "CCCC"_id, 0);
    std::vector<std::string> names;
    for (KParameter* p = list.First(); p; p = p->Next()) names.push_back(p->name);
    EXPECT_EQ(names, (std::vector<std::string>{"Controls", "A", "B", "C"}));
    EXPECT_EQ(list.count, 4);
}

TEST(FrameworkOutput, EachKindStoresItsRecord)
{
    KOutputList outputs;
    KImage* image = nullptr;
    KDataTable* data = nullptr;
    float number = 0.0f;
    KRegion3D* region = nullptr;
    KShapeList* shape = nullptr;
    std::string text;

    struct Want { KOutput* o; int32_t kind; void* field; const char* name; uint32_t id; };
    const Want wants[] = {
        {outputs.AddImageOutput(&image, "Output", 1, kFlagMain), kValueImage, &image, "Output", 1},
        {outputs.AddDataOutput(&data, "Data", "DOut"_id, 0), kValueData, &data, "Data",
         "DOut"_id},
        {outputs.AddNumberOutput(&number, "Number", "NOut"_id, 0), kValueFloat, &number,
         "Number", "NOut"_id},
        {outputs.AddRegion3DOutput(&region, "Region", "ROut"_id, 0), kValueRegion3D, &region,
         "Region", "ROut"_id},
        {outputs.AddShapeOutput(&shape, "Shape", "SOut"_id, 0), kValueShape, &shape, "Shape",
         "SOut"_id},
        {outputs.AddTextOutput(&text, "Text", "TOut"_id, 0), kValueText, &text, "Text",
         "TOut"_id},
    };
    EXPECT_EQ(outputs.count, 6);
    KOutput* walk = outputs.First();
    for (const Want& w : wants) {
        EXPECT_EQ(walk, w.o);
        EXPECT_EQ(w.o->valueKind, w.kind) << w.name;
        EXPECT_EQ(w.o->field, w.field) << w.name;
        EXPECT_EQ(w.o->name, w.name);
        EXPECT_EQ(w.o->id, w.id) << w.name;
        EXPECT_EQ(w.o->hostOutput, nullptr);
        walk = walk->Next();
    }
    EXPECT_EQ(wants[0].o->flags, uint32_t(kFlagMain));
}
