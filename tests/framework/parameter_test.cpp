// Parameter declarations: the defaults they write into the bound field before
// any render, limits kept as floats, item lists up to their exact marker,
// group numbers and compound ids.
#include <tuple>
#include "framework/parameter.h"
#include "support.h"

namespace {

std::vector<std::string> Items(const KParameter& p)
{
    std::vector<std::string> v;
    for (KListItem* i = p.items.head; i; i = i->next) v.push_back(static_cast<KName*>(i)->text);
    return v;
}

// A number field's value as a float, whatever its kind.
float FieldValue(const KParameter& p)
{
    switch (p.valueKind) {
    case kValueFloat: return *static_cast<float*>(p.field);
    case kValueBoolean: return *static_cast<bool*>(p.field) ? 1.0f : 0.0f;
    default: return static_cast<float>(*static_cast<int32_t*>(p.field));
    }
}

TEST(FrameworkParameter, NumbersWriteTheirDefaultAndKeepFloatLimits)
{
    static_assert("Cent"_id == 0x43656E74u);  // big-endian character codes
    KParameterList list;
    float angle = -1, fslider = -1, fscrew = -1;
    int32_t islider = -1, seed = 99, mode = -1, edges = -1;
    bool on = false;
    const float none = NAN;  // limits not stated
    const struct { KParameter* p; int32_t value, control; float def, lo, hi; } rows[] = {
        {list.AddAngle(&angle, 45.0f, "Angle", "Angl"_id, kFlagPreview, 1), kValueFloat, kControlAngle, 45, none, none},
        {list.AddCheckbox(&on, true, "On", "On  "_id, 0, 2), kValueBoolean, kControlCheckbox, 1, none, none},
        // Limits arrive as doubles and are kept as floats.
        {list.AddSlider(&fslider, 0.3f, "Size", "Size"_id, kFlagHardMin, -0.1, 1e10), kValueFloat, kControlSlider,
         0.3f, -0.1f, 1e10f},
        {list.AddSlider(&islider, 7, "Count", "Cnt "_id, 0, -3, 16777217), kValueInteger, kControlSlider, 7, -3,
         16777216.0f},
        {list.AddScrew(&fscrew, 2.5f, "Gain", "Gain"_id, 0, 0.0, 10.0), kValueFloat, kControlScrew, 2.5f, 0, 10},
        // A seed is an integer slider from 0, whatever its field held.
        {list.AddSeed(&seed, "Seed", "Seed"_id, kFlagNotify), kValueInteger, kControlSlider, 0, 0, 32768},
        {list.AddMultiButton(&mode, 1, "Mode", "Mode"_id, 0, {"Linear", "[end]"}), kValueInteger,
         kControlMultiButton, 1, none, none},
        {list.AddStandard(&edges, 2, kStdEdges, kFlagNotify), kValueStandard, kControlStandard, 2, none, none},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.p->name);
        EXPECT_EQ(std::make_tuple(r.p->valueKind, r.p->controlKind, r.p->defaultValue, FieldValue(*r.p), r.p->group),
                  std::make_tuple(r.value, r.control, r.def, r.def, -1));
        if (!std::isnan(r.lo)) {
            EXPECT_EQ(std::make_pair(r.p->minimum, r.p->maximum), std::make_pair(r.lo, r.hi));
        }
    }
    EXPECT_EQ(rows[0].p->angleUnit, 1);
    EXPECT_EQ(rows[1].p->checkWidth, 2.0f);
    // A standard input has no label or id, only its kind.
    EXPECT_EQ(rows[7].p->standardKind, int32_t(kStdEdges));
    EXPECT_EQ(rows[7].p->name + std::to_string(rows[7].p->id), "0");
    // Layout declarations bind no field and take no group.
    for (KParameter* p : {list.AddPage("Controls"), list.BeginNest("Advanced", "Advn"_id, kFlagHidden), list.EndNest(),
                          list.AddLabel("Note", "Note"_id, 0), list.AddButton("Reset", "Rset"_id, kFlagNotify)}) {
        EXPECT_EQ(p->valueKind, kValueNone) << p->name;
        EXPECT_EQ(p->field, nullptr) << p->name;
    }
    EXPECT_EQ(list.groupCounter, 10);
    std::vector<std::string> names;  // declaration order is display order
    for (KParameter* p = list.First(); p; p = p->Next()) names.push_back(p->name);
    EXPECT_EQ(names, (std::vector<std::string>{"Angle", "On", "Size", "Count", "Gain", "Seed", "Mode", "", "Controls",
                                               "Advanced", "", "Note", "Reset"}));
}

TEST(FrameworkParameter, ItemListsEndAtTheExactMarker)
{
    KParameterList list;
    int32_t mode = -1, combo = -1, empty = -1, channel = -1;
    KParameter* m = list.AddMultiButton(&mode, 1, "Mode", "Mode"_id, 0, {"Linear", "Smooth", "[end]"});
    EXPECT_EQ(Items(*m), (std::vector<std::string>{"Linear", "Smooth"}));
    EXPECT_EQ(std::make_tuple(m->ItemCount(), m->Item(1), m->Item(2)), std::make_tuple(2, "Smooth", ""));
    // Only the exact text ends the list; what follows it is never read.
    KParameter* c = list.AddCombo(&combo, 2, "Type", "Type"_id, 0, {"A", "[end]x", "[END]", "[end", "", "[end]", "Never"});
    EXPECT_EQ(std::make_pair(c->controlKind, combo), std::make_pair(int32_t(kControlCombo), 2));
    EXPECT_EQ(Items(*c), (std::vector<std::string>{"A", "[end]x", "[END]", "[end", ""}));
    EXPECT_EQ(list.AddCombo(&empty, 0, "Empty", "Empt"_id, 0, {"[end]"})->items.head, nullptr);
    KParameter* ch = list.AddChannelSelect(&channel, 3, "Channel", "Chan"_id, kFlagNotify);
    EXPECT_EQ(std::make_pair(ch->controlKind, channel), std::make_pair(int32_t(kControlMultiButton), 3));
    EXPECT_EQ(Items(*ch), (std::vector<std::string>{"Red", "Green", "Blue", "Alpha", "Lumin."}));
}

TEST(FrameworkParameter, GroupedControlsCountFromElevenAndTextLinesAreNotGroups)
{
    KParameterList list;
    KColor color1, color2;
    KXYZ xyz;
    KRange2 range;
    KCurveTable* curve = reinterpret_cast<KCurveTable*>(0x1);
    KTransformValue transform;
    float between = 0.0f;
    std::string text;
    EXPECT_EQ(list.AddColor(&color1, {1, 0, 0, 1}, "Color", "ColR"_id, 0)->group, 11);
    EXPECT_EQ(list.AddColor(&color2, {0, 1, 0, 1}, "Other", "OthR"_id, 0)->group, 12);
    EXPECT_EQ(list.AddSlider(&between, 0.0f, "Between", "Btwn"_id, 0, 0.0, 1.0)->group, -1);
    EXPECT_EQ(list.AddCurve(&curve, "Curve", "Curv"_id, 0, {})->group, 13);
    EXPECT_EQ(list.AddXYZ(&xyz, {}, "Pos", "Posi"_id, 0)->group, 14);
    EXPECT_EQ(list.AddRange(&range, 0.1f, 0.9f, "Low", "High", "RLow"_id, "RHig"_id, 0, 0.0, 1.0)->group, 15);
    EXPECT_EQ(list.AddTransform(&transform, {}, "Xf", "Xfrm"_id, 0, 0)->group, 16);
    EXPECT_EQ(list.AddTextEdit(&text, "", "Text", "Text"_id, 0, 3)->group, 3);  // lines
    EXPECT_EQ(list.groupCounter, 16);
}

TEST(FrameworkParameter, CompoundValuesWriteTheirDefaultsAndIds)
{
    KParameterList list;
    KColor color{9, 9, 9, 9};
    KPoint2 point{9, 9};
    KXYZ xyz{9, 9, 9};
    KRange2 range{9, 9};
    // A colour's further ids count down by 11 per channel.
    KParameter* c = list.AddColor(&color, {0.1f, 0.2f, 0.3f, 0.4f}, "Pen Color", "PnCR"_id, kFlagNotify);
    EXPECT_EQ(std::vector<uint32_t>({c->id, c->id2, c->id3, c->id4}),
              std::vector<uint32_t>({"PnCR"_id, "PnCG"_id, "PnCB"_id, "PnCA"_id}));
    EXPECT_EQ(std::vector<float>({color.r, color.a, c->defaultColor.g}), std::vector<float>({0.1f, 0.4f, 0.2f}));
    KParameter* pt = list.AddPoint(&point, {0.25f, 0.75f}, "Center", "Cent"_id, kFlagPreview, 2);
    EXPECT_EQ(std::vector<float>({point.x, point.y, pt->defaultPoint.y}), std::vector<float>({0.25f, 0.75f, 0.75f}));
    KParameter* x = list.AddXYZ(&xyz, {1.0f, -2.0f, 3.0f}, "Offset", "Offs"_id, 0);
    EXPECT_EQ(std::vector<float>({xyz.x, xyz.y, xyz.z, x->defaultXYZ.z}), std::vector<float>({1, -2, 3, 3}));
    // A range's second label is its one item; until a range sets it, the default range is 0 to 1.
    KParameter* r = list.AddRange(&range, 0.2f, 0.8f, "Low", "High", "Lo  "_id, "Hi  "_id, 0, -1.0, 2.0);
    EXPECT_EQ(std::vector<float>({range.low, range.high, r->defaultRange.high, r->minimum, r->maximum}),
              std::vector<float>({0.2f, 0.8f, 0.8f, -1.0f, 2.0f}));
    EXPECT_EQ(Items(*r), std::vector<std::string>{"High"});
    EXPECT_EQ(r->id2, "Hi  "_id);
}

TEST(FrameworkParameter, InputsStartNullFilesAndTextsTheirDefault)
{
    KParameterList list;
    KImage* image = reinterpret_cast<KImage*>(0x10);
    KCurveTable* curve = reinterpret_cast<KCurveTable*>(0x10);
    EXPECT_EQ(*static_cast<void**>(list.AddImageInput(&image, "Input", 1, kFlagMain)->field), nullptr);
    EXPECT_EQ(*static_cast<void**>(list.AddCurve(&curve, "Curve", "Curv"_id, 0, {})->field), nullptr);
    EXPECT_EQ(list.Find(1)->field, &image);
    EXPECT_EQ(list.Find("None"_id), nullptr);
    std::string file = "old", noFilter = "old", text = "old";
    KParameter* f = list.AddFile(&file, "in.cvs", "File", "File"_id, 0, "Data file (*.cvs)|*.cvs");
    EXPECT_EQ(file + "|" + f->defaultText, "in.cvs|in.cvs");
    EXPECT_EQ(Items(*f), std::vector<std::string>{"Data file (*.cvs)|*.cvs"});  // the filter is its one item
    EXPECT_EQ(list.AddFile(&noFilter, "", "File 2", "Fil2"_id, 0, nullptr)->ItemCount(), 0);
    KParameter* t = list.AddTextEdit(&text, "hello\nworld", "Text", "Text"_id, kFlagTextVariantA, 3);
    EXPECT_EQ(text + "|" + t->defaultText, "hello\nworld|hello\nworld");
}

}  // namespace
