// The standard inputs: the controls every tool of a family gets on the page
// "Zelvarine Controls", after its own declarations.
#include <utility>
#include "bridge/tool.h"
#include "host/operator.h"

using host::Control;
using host::DataType;
using host::InputAttrs;

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
        imageInput = op->AddInput(frames > 1 ? "Input" : "Image", frames > 1 ? "Input" : "Image", a);
        if (frames > 1) {
            // A tool that asks for other frames has the early pass whatever it declares;
            // command lines may still call its input Image.
            multiFrame = true;
            imageInput->alias = "Image";
        }
        return imageInput;
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
}
