// Regions travel between tools in a host value of the plug-in's own class.
// A region's tree never changes once made, so a value, the copy a tool reads
// and the tree a tool builds on it all share the same nodes.
//
// Written to a file, a region is looked at through a plane: an image file gets
// the slice, a .csv or .json file the table dFrom Region Create makes of the
// slice's pixel centres.
#include <charconv>
#include <cmath>
#include <memory>
#include <string>
#include "bridge/value_kinds.h"
#include "data/data_from_region_create.h"
#include "host/errors.h"
#include "host/imageio.h"
#include "host/limits.h"
#include "raster/image.h"
#include "region/region.h"

namespace {

class KRegion3DParameter : public host::Parameter {
public:
    explicit KRegion3DParameter(KRegion3D r) : region(std::move(r)) {}
    host::DataType Type() const override { return host::DataType::Custom; }
    std::string TypeId() const override { return "TorvenMarsh.ZV_Region3DParameter"; }
    std::string ToText() const override { return region.Describe(); }
    KRegion3D region;
};

// Nothing connected leaves the field null: a tool tells "no region" from an empty one.
void Read(const host::Parameter* value, void* field)
{
    auto* r = dynamic_cast<const KRegion3DParameter*>(value);
    KSetField(field, r ? new KRegion3D(r->region) : nullptr);
}

host::Value Write(const void* field)
{
    const KRegion3D* region = *static_cast<KRegion3D* const*>(field);
    return std::make_shared<KRegion3DParameter>(region ? *region : KRegion3D());
}

bool ParseNumber(const std::string& text, float& out)
{
    const char* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, out);
    return ec == std::errc() && ptr == end && std::isfinite(out);
}

// The plane: "z=0.3", "x=-1" or "y=0"; z = 0 when not given.
void PlaneOf(const host::WriteOptions& options, int32_t& axis, float& offset)
{
    axis = 2;
    offset = 0.0f;
    auto it = options.find("slice");
    if (it == options.end() || it->second.empty()) return;
    const std::string& s = it->second;
    const size_t eq = s.find('=');
    static const std::string axes = "xyz";
    if (eq != 1 || axes.find(s[0]) == std::string::npos || !ParseNumber(s.substr(2), offset))
        throw host::BadInput("--slice takes x=, y= or z= and a number, got '" + s + "'");
    axis = static_cast<int32_t>(axes.find(s[0]));
}

// The slice's size: "WIDTHxHEIGHT", or the default of the file kind.
void SizeOf(const host::WriteOptions& options, int32_t& width, int32_t& height)
{
    auto it = options.find("size");
    if (it == options.end() || it->second.empty()) return;
    const std::string& s = it->second;
    const size_t x = s.find('x');
    int64_t w = 0, h = 0;
    auto whole = [](const std::string& t, int64_t& v) {
        auto [ptr, ec] = std::from_chars(t.data(), t.data() + t.size(), v);
        return !t.empty() && ec == std::errc() && ptr == t.data() + t.size();
    };
    if (x == std::string::npos || !whole(s.substr(0, x), w) || !whole(s.substr(x + 1), h))
        throw host::BadInput("--size takes WIDTHxHEIGHT, got '" + s + "'");
    host::CheckImageSize(w, h, "--size " + s);
    width = static_cast<int32_t>(w);
    height = static_cast<int32_t>(h);
}

void WriteFile(const host::Parameter& value, const std::string& path, const std::string& extension,
               const host::WriteOptions& options)
{
    const auto* parameter = dynamic_cast<const KRegion3DParameter*>(&value);
    const KRegion3D region = parameter ? parameter->region : KRegion3D();
    int32_t axis = 2;
    float offset = 0.0f;
    PlaneOf(options, axis, offset);
    const bool table = extension == ".csv" || extension == ".json";
    // A table has a row per point: its default grid is a coarse one.
    int32_t width = table ? 32 : 1920, height = table ? 18 : 1080;
    SizeOf(options, width, height);
    if (!table) {
        std::unique_ptr<KImage> slice(KRegionSlice(region, axis, offset, width, height));
        host::WriteImage(*slice->HostImage(), path, host::FileDepth::Auto);
        return;
    }
    KDataTable points;
    auto position = KDataChannel::Create("position", kDataVector3, width * height);
    float* p = position->floats.data();
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x, p += 3) {
            const Vector3f v = KRegionSlicePoint(axis, offset, width, height, x, y);
            p[0] = v.x;
            p[1] = v.y;
            p[2] = v.z;
        }
    points.Add(std::move(position));
    KRegionSampling how;
    KDataTable* sampled = KSampleRegion(&points, &region, how).release();
    const host::Value out = KFindValueKind(kValueData)->write(&sampled);
    delete sampled;
    host::FindParameterClass(out->TypeId())->write(*out, path, extension, options);
}

KValueKind RegionKind()
{
    KValueKind region;
    region.valueKind = kValueRegion3D;
    region.dataType = host::DataType::Custom;
    region.typeId = "TorvenMarsh.ZV_Region3DParameter";
    region.outputId = "Output";
    region.read = Read;
    region.write = Write;
    region.release = KReleaseField<KRegion3D>;
    region.name = "Region";
    region.extensions = {".exr", ".png", ".tif", ".tiff", ".jpg", ".jpeg", ".dpx", ".csv", ".json"};
    region.writeFile = WriteFile;
    region.options = {"slice", "size"};
    return region;
}

}  // namespace

ZV_VALUE_KIND(RegionKind);
