// The render road: parameter transfer, the process by family, outputs, and
// the answers to control changes.
#include "bridge/tool.h"
#include "bridge/value_kinds.h"
#include <cstring>
#include "host/image.h"
#include "raster/image.h"

namespace {

double NumberOf(const host::Parameter* v)
{
    if (auto* n = dynamic_cast<const host::Number*>(v)) return n->value;
    return 0.0;
}

int32_t Round(double v) { return static_cast<int32_t>(v + 0.5); }

// Integers round half away from zero, through single precision.
int32_t RoundInteger(double v)
{
    float f = static_cast<float>(v);
    return f < 0.0f ? static_cast<int32_t>(f - 0.5f) : static_cast<int32_t>(f + 0.5f);
}

}  // namespace

KTool::~KTool()
{
    process.reset();  // its Stop reads the images Cleanup frees
    if (effect) Cleanup();
}

KInput* KTool::FindInput(uint32_t id) const
{
    for (KInput* k = inputs.First(); k; k = k->Next())
        if (k->id == id && k->hostInput) return k;
    return nullptr;
}

void KTool::OnStartRender()
{
    auto* image = dynamic_cast<KEffectImage*>(effect);
    if (image && effect->CountOutputs(kValueImage) > 0) image->SetTrailImage(nullptr);
}

void KTool::PreCalcProcess(host::Request& request)
{
    if (!shapeTool) return;
    // Shape tools need no upstream values to tell what they will make.
    for (KInput* k = inputs.First(); k; k = k->Next())
        if (k->parameter->valueKind == kValueShape) request.SetInputData(k->hostInput, nullptr, 0);
}

std::vector<KTool::FramesWanted> KTool::FramesWantedAt(float time)
{
    std::vector<FramesWanted> wanted;
    const int32_t n = effect->GetFrameTimes(0, time, nullptr);
    if (n <= 1 || !imageInput) return wanted;
    std::vector<float> times(n);
    effect->GetFrameTimes(0, time, times.data());
    // The effect's list pads with 1e10 for a slot it wants no frame in.
    FramesWanted image{imageInput, {}};
    for (float t : times)
        image.times.push_back(t == 1e10f ? std::nullopt : std::optional<double>(t));
    wanted.push_back(std::move(image));
    return wanted;
}

void KTool::CheckRequest(host::Request& request)
{
    // The early pass: only tools with a late input ask for other frames.
    if (!multiFrame || request.Priority() != -1 || !effect) return;
    ReadParameters(request, false);
    ConvertPoints(false);
    for (const FramesWanted& w : FramesWantedAt(static_cast<float>(request.Time())))
        for (int32_t slot = 0; slot < static_cast<int32_t>(w.times.size()); ++slot) {
            if (w.times[slot]) request.SetInputTime(w.input, *w.times[slot] + 0.0001, slot);
            else request.SetInputData(w.input, nullptr, slot);
        }
}

void KTool::ReadParameters(host::Request& request, bool all)
{
    for (KInput* k = inputs.First(); k; k = k->Next()) {
        KParameter* p = k->parameter;
        if (!all && (p->flags & kFlagLate)) continue;
        if (!k->hostInput || p->valueKind == kValueNone) continue;
        host::Value value = request.GetInputData(k->hostInput, 0);
        const host::Parameter* v = value.get();
        const double d = NumberOf(v);
        if (!KIsConvertedKind(p->valueKind)) {
            // Registration made sure an entry carries every such kind.
            KFindValueKind(p->valueKind)->read(v, p->field);
            continue;
        }
        switch (p->valueKind) {
        case kValueStandard: {
            auto* field = static_cast<int32_t*>(p->field);
            if (p->standardKind == kStdRGB || p->standardKind == kStdRGBA) {
                int32_t mask = 0;
                if (redInput && settings.red) mask |= 1;
                if (greenInput && settings.green) mask |= 2;
                if (blueInput && settings.blue) mask |= 4;
                if (p->standardKind == kStdRGBA && alphaInput && settings.alpha) mask |= 8;
                *field = mask;
            } else if (p->standardKind == kStdSuperSample) {
                *field = settings.superSampling;
            } else {
                *field = static_cast<int32_t>(d + 1.1920928955078125e-07);
            }
            break;
        }
        case kValueBoolean:
            *static_cast<bool*>(p->field) = d > 0.5;
            break;
        case kValueColor: {
            auto* c = static_cast<KColor*>(p->field);
            float* parts[4] = {&c->r, &c->g, &c->b, &c->a};
            if (k->subIndex >= 0 && k->subIndex < 4) *parts[k->subIndex] = static_cast<float>(d);
            break;
        }
        case kValueInteger:
            *static_cast<int32_t*>(p->field) = RoundInteger(d);
            break;
        case kValueFloat: {
            float f = static_cast<float>(d);
            if (p->controlKind == kControlAngle) {
                // The host turns the other way: angles arrive negated.
                f = -f;
                if (p->angleUnit == 1) f = f * 0.017453292f;
            }
            *static_cast<float*>(p->field) = f;
            break;
        }
        case kValuePoint:
            if (auto* pt = dynamic_cast<const host::Point*>(v)) {
                auto* field = static_cast<KPoint2*>(p->field);
                field->x = static_cast<float>(pt->x);
                field->y = static_cast<float>(pt->y);
            }
            break;
        case kValueRange: {
            auto* r = static_cast<KRange2*>(p->field);
            (k->subIndex == 0 ? r->low : r->high) = static_cast<float>(d);
            break;
        }
        case kValueText:
            if (auto* t = dynamic_cast<const host::Text*>(v))
                *static_cast<std::string*>(p->field) = t->value;
            break;
        case kValueXYZ: {
            auto* x = static_cast<KXYZ*>(p->field);
            float* parts[3] = {&x->x, &x->y, &x->z};
            if (k->subIndex >= 0 && k->subIndex < 3) *parts[k->subIndex] = static_cast<float>(d);
            break;
        }
        case kValueTransform: {
            auto* t = static_cast<KTransformValue*>(p->field);
            const float f = static_cast<float>(d);
            auto radians = [&] { return static_cast<float>(d * 0.017453292519943295); };
            switch (k->subIndex) {
            case 0: t->translateX = f; break;
            case 1: t->translateY = f; break;
            case 2: t->translateZ = f; break;
            case 3: {
                const int32_t order = Round(d);
                t->rotationOrder = order >= 0 && order <= 4 ? order : 5;
                break;
            }
            case 4: t->rotateX = radians(); break;
            case 5: t->rotateY = radians(); break;
            case 6: t->rotateZ = radians(); break;
            case 7: t->scaleLock = d > 0.5; break;
            case 8: t->scaleX = f; break;
            case 9: t->scaleY = f; break;
            case 10: t->scaleZ = f; break;
            case 11: t->type = d >= 0.5 ? 1 : 0; break;  // exactly 0.5 counts here
            case 12:
                if (auto* pt = dynamic_cast<const host::Point*>(v)) {
                    t->positionX = static_cast<float>(pt->x);
                    t->positionY = static_cast<float>(pt->y);
                }
                break;
            case 13: t->aspectType = Round(d); break;
            case 14: t->aspect = f; break;
            default: break;
            }
            break;
        }
        default:
            break;
        }
    }
}

void KTool::ConvertPoints(bool all)
{
    KImage* image = sourceImage ? sourceImage : targetImage;
    if (!image) return;
    const bool targetOnly = !sourceImage;
    const float a = image->PictureAspect();
    for (KInput* k = inputs.First(); k; k = k->Next()) {
        KParameter* p = k->parameter;
        if (p->valueKind != kValuePoint || (!all && (p->flags & kFlagLate))) continue;
        auto* pt = static_cast<KPoint2*>(p->field);
        switch (p->pointUnit) {
        case 1:
            pt->y = (1.0f / a) * pt->y;
            break;
        case 2:
            pt->x = pt->x * static_cast<float>(image->width);
            pt->y = pt->y * static_cast<float>(image->height);
            break;
        case 3:
            if (targetOnly) break;  // kept: a source's points stay unshifted
            pt->x = pt->x - 0.5f;
            pt->y = pt->y - 0.5f;
            break;
        case 4:
            if (targetOnly) break;
            pt->x = pt->x - 0.5f;
            pt->y = (pt->y - 0.5f) / a;
            break;
        default:
            break;
        }
    }
}

void KTool::PrepareRender(host::Operator* o, host::Request& request, float proxy, bool inter,
                          int32_t field, float xa, float ya)
{
    auto* imageEffect = dynamic_cast<KEffectImage*>(effect);
    if (imageInput) {
        delete sourceImage;
        sourceImage = KWrapImage(request.GetInputData(imageInput, 0).get());
        const int32_t frames = effect->GetFrameTimes(0, static_cast<float>(request.Time()), nullptr);
        if (frames > 1 && imageEffect && static_cast<int32_t>(imageEffect->frames.size()) >= frames)
            for (int32_t i = 0; i < frames; ++i)
                imageEffect->frames[i].reset(
                    KWrapImage(request.GetInputData(imageInput, i).get()));
        settings.depth = sourceImage && sourceImage->IsFloat() ? 2 : 1;
    }
    settings.time = static_cast<float>(request.Time());
    settings.quick = request.Flags() & host::kRequestQuick;

    auto number = [&](host::Input* in) { return NumberOf(request.GetInputData(in, 0).get()); };
    if (colorSpaceInput) settings.colorSpace = Round(number(colorSpaceInput));
    if (redInput) settings.red = number(redInput) > 0.5;
    if (greenInput) settings.green = number(greenInput) > 0.5;
    if (blueInput) settings.blue = number(blueInput) > 0.5;
    if (alphaInput) settings.alpha = number(alphaInput) > 0.5;
    if (preDivideInput) settings.preDivide = number(preDivideInput) > 0.5;
    if (edgesInput) settings.edges = Round(number(edgesInput));
    if (settings.quick) settings.filter = 0;
    else if (filterInput) settings.filter = Round(number(filterInput));
    if (settings.quick) {
        settings.superSampling = 1;
    } else if (superSampleInput) {
        int32_t n = Round(number(superSampleInput)) + 1;
        settings.superSampling = n == 6 ? 8 : n == 7 ? 16 : n;
    }
    if (filterSizeInput) settings.filterSize = static_cast<float>(number(filterSizeInput));
    if (underSampleInput) settings.underSample = Round(number(underSampleInput));
    if (trailsInput) settings.trails = number(trailsInput) > 0.5;
    if (fadeInput) settings.trailFade = static_cast<float>(number(fadeInput));
    if (multiThreadInput) settings.multiThread = number(multiThreadInput) > 0.5;
    delete warpMask;
    warpMask = warpMaskInput
                   ? KWrapImage(request.GetInputData(warpMaskInput, 0).get())
                   : nullptr;
    settings.warpMask = warpMask;
    settings.prepared = true;
    effect->settings = settings;

    ReadParameters(request, true);

    delete targetImage;
    targetImage = nullptr;
    sourceIsTarget = false;
    if (!imageInput && widthInput && heightInput) {
        int32_t w = std::max(static_cast<int32_t>(number(widthInput)), 1);
        int32_t h = std::max(static_cast<int32_t>(number(heightInput)), 2);
        const int32_t fullW = w, fullH = h;
        const int32_t p = static_cast<int32_t>(proxy);
        if (proxy != 1.0f && p > 0) {
            w = std::max(w / p, 1);
            h = std::max(h / p, 1);
        }
        float imageYAspect = ya;
        int32_t half = h;
        if (inter) {
            half = h / 2;
            imageYAspect *= 2.0f;
        }
        auto* s = dynamic_cast<host::SourceOperator*>(o);
        host::ImageSpec spec;
        spec.width = w;
        spec.height = std::max(half, 1);
        spec.depth = s && s->floatDepth ? host::DepthFloat32 : host::DepthInt16;
        spec.xAspect = xa;
        spec.yAspect = imageYAspect;
        if (proxy != 1.0f) {
            spec.fullWidth = fullW;
            spec.fullHeight = fullH;
        }
        if (inter) {
            spec.field = field;
            if (field == 1) spec.yOffset = 1.0 / (2.0 * (fullH / 2));
        }
        targetImage = KImage::Wrap(host::Image::New(spec), true);
        settings.depth = effect->settings.depth = targetImage->IsFloat() ? 2 : 1;
        sourceImage = targetImage;
        sourceIsTarget = true;
    } else if (imageInput && sourceImage) {
        if (effect->HasFeature(kFeatureOutputSize)) {
            int32_t w = sourceImage->width, h = sourceImage->height;
            float oxa = sourceImage->xAspect, oya = sourceImage->yAspect;
            const float p = sourceImage->ProxyScale();
            effect->GetOutputSize(static_cast<int32_t>(p), w, h, oxa, oya);
            targetImage = sourceImage->CreateLike(std::max(w, 1), std::max(h, 1), oxa, oya);
            if (p != 1.0f)
                targetImage->HostImage()->SetFullSize(static_cast<int32_t>(w * p),
                                                      static_cast<int32_t>(h * p));
        } else if (effect->HasFeature(kFeatureVectors)) {
            targetImage = sourceImage->CreateVectorLike();
        } else {
            targetImage = sourceImage->CreateLike();
        }
    }
    ConvertPoints(true);
}

void KTool::Process(host::Operator* o, host::Request& request, bool cleanUp)
{
    if (!effect) return;
    PrepareRender(o, request, proxyScale, interlaced, fieldNumber, xAspect, yAspect);

    auto* imageEffect = dynamic_cast<KEffectImage*>(effect);
    const int32_t imageOutputs = effect->CountOutputs(kValueImage);
    if (imageEffect && imageOutputs > 0 &&
        (targetImage || effect->HasFeature(kFeatureOptionalInput))) {
        KImage* merged = nullptr;
        KImage* input = sourceImage;
        if (settings.trails && imageEffect->GetTrailImage() && sourceImage) {
            merged = imageEffect->GetTrailImage()->Clone();
            merged->Fade(settings.trailFade);
            if (merged->width != sourceImage->width || merged->height != sourceImage->height)
                KImage::ReplaceIn(&merged, merged->Resize(sourceImage->width, sourceImage->height));
            merged->MergeOver(*sourceImage);
            input = merged;
        }
        KImage* before = targetImage;
        if (targetImage) {
            if (std::unique_ptr<KProcessImage> made = KCreateProcess(effect, input, &targetImage, settings))
                process = std::move(made);
        }
        if (process) {
            if (!settings.multiThread) {
                process->Run();
            } else {
                for (passCounter = 0; passCounter < process->PassCount(); ++passCounter) {
                    process->BeginPass(passCounter);
                    o->DoMultiProcess(request, process->JobCount(passCounter));
                    process->EndPass(passCounter);
                }
            }
            process.reset();
        }
        // The post blur may have replaced the target a source was made into.
        if (sourceIsTarget && targetImage != before) sourceImage = targetImage;
        delete merged;
        imageEffect->SetTrailImage(settings.trails && targetImage ? targetImage->Clone() : nullptr);
        if (outputMain)
            request.SetOutputData(outputMain,
                                  targetImage ? host::MakeImage(targetImage->HostImage()) : nullptr);
    }

    effect->FinishRender();
    for (KOutput* out = effect->outputs(); out; out = out->Next()) {
        auto* hostOutput = static_cast<host::Output*>(out->hostOutput);
        if (!hostOutput || !out->field) continue;
        request.SetOutputData(hostOutput, KFindValueKind(out->valueKind)->write(out->field));
    }
    if (cleanUp) Cleanup();
}

void KTool::DoJob(int32_t job)
{
    if (process) process->DoJob(job, passCounter);
}

void KTool::Cleanup()
{
    if (targetImage == sourceImage) {
        delete targetImage;  // a source's own picture
    } else {
        delete targetImage;
        if (sourceImage) sourceImage->Release();
        delete sourceImage;
    }
    targetImage = sourceImage = nullptr;
    sourceIsTarget = false;
    delete warpMask;
    warpMask = nullptr;
    settings.warpMask = nullptr;
    if (effect) effect->settings.warpMask = nullptr;
    for (KInput* k = inputs.First(); k; k = k->Next()) {
        KParameter* p = k->parameter;
        if (k->subIndex != 0 || !p->field) continue;
        if (const KValueKind* kind = KFindValueKind(p->valueKind); kind && kind->release)
            kind->release(p->field);
    }
}

void KTool::ApplyMessage(const KMessage& m, double time)
{
    KInput* k = FindInput(m.target);
    if (!k) return;
    KParameter* p = k->parameter;
    switch (m.kind) {
    case kMessageVisible: {
        const bool show = m.value.intValue > 0;
        auto apply = [&](host::Input* in) {
            op->SetVisible(in, show);
            if (p->flags & kFlagPreview) op->SetPreviewVisible(in, show);
        };
        // One control on screen may be several host inputs here: its group
        // shows and hides together.
        if (p->controlKind == kControlXYZ || p->controlKind == kControlColor ||
            p->controlKind == kControlRange) {
            for (KInput* j = inputs.First(); j; j = j->Next())
                if (j->parameter == p) apply(j->hostInput);
        } else {
            apply(k->hostInput);
        }
        break;
    }
    case kMessageLabel:
        op->SetLabel(k->hostInput, m.value.text);
        break;
    case kMessageValue:
        if (p->valueKind == kValueInteger || p->valueKind == kValueFloat)
            op->SetInputValue(k->hostInput, host::MakeNumber(m.value.floatValue), time);
        else if (p->valueKind == kValuePoint)
            op->SetInputValue(k->hostInput, host::MakePoint(m.value.pointX, m.value.pointY), time);
        else if (p->valueKind == kValueText)
            op->SetInputValue(k->hostInput, host::MakeText(m.value.text), time);
        break;
    default:
        break;
    }
}

void KTool::NotifyChanged(host::Input* input, const host::Parameter* value, double time)
{
    if (!value || !effect) return;
    const double v = NumberOf(value);
    if (input == colorSpaceInput) {
        static const char* labels[8][3] = {
            {"Red", "Green", "Blue"}, {"H", "L", "S"}, {"Y", "U", "V"}, {"Y", "I", "Q"},
            {"C", "M", "Y"},          {"H", "S", "V"}, {"X", "Y", "Z"}, {"L", "A", "B"}};
        const int32_t space = Round(v);
        if (space >= 0 && space <= 7 && redInput && greenInput && blueInput) {
            op->SetLabel(redInput, labels[space][0]);
            op->SetLabel(greenInput, labels[space][1]);
            op->SetLabel(blueInput, labels[space][2]);
        }
    } else if (input == trailsInput) {
        const bool show = v > 0.5;
        if (fadeInput) op->SetVisible(fadeInput, show);
        if (resetInput) op->SetVisible(resetInput, show);
    } else if (input == resetInput) {
        auto* image = dynamic_cast<KEffectImage*>(effect);
        if (static_cast<int32_t>(v + 0.1) > 0 && image && effect->CountOutputs(kValueImage) > 0)
            image->SetTrailImage(nullptr);
    }
    for (KInput* k = inputs.First(); k; k = k->Next()) {
        if (k->hostInput != input || !(k->parameter->flags & kFlagNotify)) continue;
        KMessageValue mv;
        if (k->parameter->valueKind == kValueImage) {
            mv.image = KWrapImage(value);
        } else {
            mv.floatValue = static_cast<float>(v);
            mv.intValue = static_cast<int32_t>(mv.floatValue + 0.5f);
            if (auto* pt = dynamic_cast<const host::Point*>(value)) {
                mv.pointX = static_cast<float>(pt->x);
                mv.pointY = static_cast<float>(pt->y);
            } else if (auto* t = dynamic_cast<const host::Text*>(value)) {
                mv.text = t->value;
            }
        }
        const KMessageList list = effect->OnChange(k->parameter->id, mv);
        for (KMessage* m = list.First(); m; m = static_cast<KMessage*>(m->next)) ApplyMessage(*m, time);
    }
}
