#include "bridge/value_kinds.h"
#include <cstring>
#include <utility>
#include <vector>
#include "framework/parameter.h"
#include "host/image.h"
#include "raster/image.h"

namespace {

// Images: the field holds a wrapper of the host image, which it does not own;
// an image leaving a tool takes a use of the host image.
void ReadImage(const host::Parameter* v, void* field)
{
    auto** image = static_cast<KImage**>(field);
    delete *image;
    *image = KWrapImage(v);
}
host::Value WriteImage(const void* field)
{
    const KImage* image = *static_cast<KImage* const*>(field);
    return image ? host::MakeImage(image->HostImage()) : nullptr;
}
void ReleaseImage(void* field)
{
    auto** image = static_cast<KImage**>(field);
    delete *image;
    *image = nullptr;
}

// Curves arrive as a table of 65536 16-bit entries over x from 0 to 1.
void ReleaseCurve(void* field)
{
    auto** curve = static_cast<KCurveTable**>(field);
    if (!*curve) return;
    delete[] (*curve)->entries;
    delete *curve;
    *curve = nullptr;
}
void ReadCurve(const host::Parameter* v, void* field)
{
    ReleaseCurve(field);
    auto** curve = static_cast<KCurveTable**>(field);
    *curve = new KCurveTable;
    if (auto* lut = dynamic_cast<const host::LookUpTable*>(v)) {
        std::vector<uint16_t> table = lut->Table(65536, 0.0, 1.0);
        (*curve)->entries = new uint16_t[65536];
        std::memcpy((*curve)->entries, table.data(), 131072);
        (*curve)->count = 65536;
        (*curve)->scale = 65536.0f;
    }
}

host::Value WriteNumber(const void* field)
{
    return host::MakeNumber(static_cast<double>(*static_cast<const float*>(field)));
}
host::Value WriteText(const void* field) { return host::MakeText(*static_cast<const std::string*>(field)); }
host::Value WritePoint(const void* field)
{
    const auto* p = static_cast<const KPoint2*>(field);
    return host::MakePoint(p->x, p->y);
}

// A kind the host carries in a value of its own.
KValueKind HostKind(int32_t valueKind, host::DataType type, decltype(KValueKind::read) read,
                    decltype(KValueKind::write) write, decltype(KValueKind::release) release)
{
    KValueKind k;
    k.valueKind = valueKind;
    k.dataType = type;
    k.read = read;
    k.write = write;
    k.release = release;
    return k;
}

std::vector<KValueKind>& Kinds()
{
    using host::DataType;
    static std::vector<KValueKind> kinds = {
        HostKind(kValueImage, DataType::Image, ReadImage, WriteImage, ReleaseImage),
        HostKind(kValueCurve, DataType::LookUpTable, ReadCurve, nullptr, ReleaseCurve),
        HostKind(kValueFloat, DataType::Number, nullptr, WriteNumber, nullptr),
        HostKind(kValuePoint, DataType::Point, nullptr, WritePoint, nullptr),
        HostKind(kValueText, DataType::Text, nullptr, WriteText, nullptr),
    };
    return kinds;
}

const char* KindName(int32_t kind)
{
    switch (kind) {
    case kValueData: return "data table";
    case kValueShape: return "shape";
    case kValueRegion3D: return "region";
    case kValueMorph: return "morph setup";
    case kValueImage: return "image";
    case kValueCurve: return "curve";
    case kValueFloat: return "number";
    case kValuePoint: return "point";
    case kValueText: return "text";
    default: return "value";
    }
}

}  // namespace

KImage* KWrapImage(const host::Parameter* value)
{
    auto* i = dynamic_cast<const host::ImageValue*>(value);
    return KImage::Wrap(i ? i->image : nullptr, false);
}

const KValueKind* KFindValueKind(int32_t valueKind)
{
    for (const KValueKind& k : Kinds())
        if (k.valueKind == valueKind) return &k;
    return nullptr;
}

bool KAddValueKind(KValueKind kind)
{
    if (!kind.typeId.empty()) {
        host::ParameterClass c;
        c.typeId = kind.typeId;
        c.name = kind.name;
        c.extensions = kind.extensions;
        c.options = kind.options;
        c.readExtensions = kind.readExtensions;
        if (kind.writeFile) c.write = kind.writeFile;
        if (kind.readFile) c.read = kind.readFile;
        if (kind.parse) c.parse = kind.parse;
        if (kind.interpolate) c.interpolate = kind.interpolate;
        host::RegisterParameterClass(c);
    }
    for (KValueKind& k : Kinds())
        if (k.valueKind == kind.valueKind) {
            k = std::move(kind);
            return true;
        }
    Kinds().push_back(std::move(kind));
    return true;
}

bool KIsConvertedKind(int32_t valueKind)
{
    switch (valueKind) {
    case kValueNone: case kValueStandard: case kValueBoolean: case kValueColor:
    case kValueInteger: case kValueFloat: case kValuePoint: case kValueRange:
    case kValueText: case kValueXYZ: case kValueTransform:
        return true;
    default:
        return false;
    }
}

std::string KValueKindProblem(KEffect& effect)
{
    for (KParameter* p = effect.inputs(); p; p = p->Next()) {
        if (KIsConvertedKind(p->valueKind)) continue;
        const KValueKind* k = KFindValueKind(p->valueKind);
        if (!k || !k->read)
            return "input \"" + p->name + "\" takes a " + KindName(p->valueKind) +
                   ", which no value kind carries into a tool yet";
    }
    bool mainImage = true;
    for (KOutput* o = effect.outputs(); o; o = o->Next()) {
        // The first image output is the process's target, handed over by the render itself.
        if (o->valueKind == kValueImage && std::exchange(mainImage, false)) continue;
        const KValueKind* k = KFindValueKind(o->valueKind);
        if (!k || !k->write || !o->field)
            return "output \"" + o->name + "\" gives a " + KindName(o->valueKind) +
                   ", which no value kind carries out of a tool yet";
    }
    return {};
}
