// Shapes travel between tools in a host value of the plug-in's own class. A
// tool reads its own deep copy and hands over a deep copy of its result, so
// no shape is shared between tools. Files: .svg both ways.
#include <iostream>
#include <memory>
#include "bridge/value_kinds.h"
#include "host/errors.h"
#include "host/imageio.h"
#include "host/limits.h"
#include "raster/image.h"
#include "shape/raster.h"
#include "shape/shape.h"
#include "shape/svg.h"

namespace {

constexpr const char* kTypeId = "TorvenMarsh.ZV_ShapeParameter";

class KShapeParameter : public host::Parameter {
public:
    explicit KShapeParameter(std::unique_ptr<ShapeListVector> v) : lists(std::move(v)) {}
    host::DataType Type() const override { return host::DataType::Custom; }
    std::string TypeId() const override { return kTypeId; }
    std::string ToText() const override
    {
        if (!lists) return "no shape";
        auto plural = [](int32_t n, const char* word) {
            return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
        };
        return plural(lists->Count(), "list") + ", " + plural(lists->ShapeCount(), "shape") + ", " +
               plural(lists->NodeCount(), "node");
    }
    std::unique_ptr<ShapeListVector> lists;
};

// With nothing connected the tool gets an empty vector, never null.
void Read(const host::Parameter* value, void* field)
{
    auto* shape = dynamic_cast<const KShapeParameter*>(value);
    KSetField(field, shape && shape->lists ? shape->lists->Clone().release() : new ShapeListVector);
}

host::Value Write(const void* field)
{
    const ShapeListVector* v = *static_cast<ShapeListVector* const*>(field);
    return std::make_shared<KShapeParameter>(v ? v->Clone() : std::make_unique<ShapeListVector>());
}

// The shapes drawn as sRender draws them, each list's fill and pen in order,
// on a clear picture of the size asked for, else the shapes' own, else 1920 x 1080.
void WriteRendered(const ShapeListVector& v, const std::string& path, int32_t w, int32_t h,
                   const host::WriteOptions& options)
{
    if (auto it = options.find("size"); it != options.end() && !it->second.empty()) {
        const std::string& s = it->second;
        const size_t x = s.find('x');
        char* end = nullptr;
        const long long pw = x == std::string::npos ? 0 : std::strtoll(s.c_str(), &end, 10);
        const bool widthOk = x != std::string::npos && end == s.c_str() + x;
        const long long ph = widthOk ? std::strtoll(s.c_str() + x + 1, &end, 10) : 0;
        if (!widthOk || *end != '\0' || x + 1 == s.size()) throw host::BadInput("--size takes WIDTHxHEIGHT, got '" + s + "'");
        host::CheckImageSize(pw, ph, "--size " + s);
        w = static_cast<int32_t>(pw), h = static_cast<int32_t>(ph);
    }
    std::unique_ptr<KImage> picture(KImage::Create(w, h, false));
    const Matrix4f middle = Matrix4f::Translation(0.5f, 0.5f / picture->PictureAspect(), 0.0f);
    std::vector<KPaintStep> steps;
    for (const auto& list : v.lists) {
        std::unique_ptr<KShapeList> placed = list->Clone();
        placed->ApplyMatrix(middle);
        KRenderList(*placed, *picture, {}, steps);
    }
    for (const KPaintStep& step : steps) KPaint(*picture, *step.raster, step.paint, 1);
    host::WriteImage(*picture->HostImage(), path, host::FileDepth::Auto);
}

void WriteFile(const host::Parameter& value, const std::string& path, const std::string& extension,
               const host::WriteOptions& options)
{
    static const ShapeListVector none;
    const auto* shape = dynamic_cast<const KShapeParameter*>(&value);
    const ShapeListVector& v = shape && shape->lists ? *shape->lists : none;
    const int32_t w = v.frameWidth > 0 ? v.frameWidth : 1920, h = v.frameHeight > 0 ? v.frameHeight : 1080;
    if (extension != ".svg") return WriteRendered(v, path, w, h, options);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) throw host::BadInput("cannot write " + path);
    const std::string text = KWriteSvg(v, w, h);
    const bool ok = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if ((std::fclose(file) != 0) || !ok) throw host::BadInput("cannot write " + path);
}

host::Value ReadFile(const std::string& path)
{
    host::CheckReadableFile(path, host::kMaxFlowFileBytes, "SVG file");
    KSvgRead read;
    try {
        read = KReadSvgFile(path);
    } catch (const KSvgError& e) {
        throw host::BadInput("SVG file " + path + ": " + e.what());
    }
    if (!read.unsupported.empty()) {
        std::string list;
        for (const std::string& u : read.unsupported) list += (list.empty() ? "" : ", ") + u;
        std::cerr << "warning: " << path << ": left out " << list << "\n";
    }
    read.shapes->frameWidth = read.width;
    read.shapes->frameHeight = read.height;
    return std::make_shared<KShapeParameter>(std::move(read.shapes));
}

KValueKind ShapeKind()
{
    KValueKind shape;
    shape.valueKind = kValueShape;
    shape.dataType = host::DataType::Custom;
    shape.typeId = kTypeId;
    shape.outputId = "Output";
    shape.read = Read;
    shape.write = Write;
    shape.release = KReleaseField<ShapeListVector>;
    shape.name = "Shape";
    shape.extensions = {".svg", ".exr", ".png", ".tif", ".tiff", ".jpg", ".jpeg", ".dpx"};
    shape.options = {"size"};
    shape.readExtensions = {".svg"};
    shape.writeFile = WriteFile;
    shape.readFile = ReadFile;
    return shape;
}

}  // namespace

ZV_VALUE_KIND(ShapeKind);
