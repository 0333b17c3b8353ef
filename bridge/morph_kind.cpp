// Curve pairs travel to the Morph in a host value of the plug-in's own class.
// They are written out as JSON in a flow or on a command line: a list of
// curves, each a list of [x1, y1, x2, y2] points (or {"points", "spline"}),
// or {"svg": [first, second]}, two SVG files whose paths pair up in order.
// Keys between two setups of the same curves blend them point for point.
#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <nlohmann/json.hpp>
#include "bridge/value_kinds.h"
#include "host/errors.h"
#include "host/limits.h"
#include "shape/svg.h"
#include "tools/image/warp_data.h"

namespace {

using host::BadInput;
using json = nlohmann::json;

constexpr const char* kTypeId = "TorvenMarsh.ZV_MorphParameter";

class KMorphParameter : public host::Parameter {
public:
    explicit KMorphParameter(MW_WarpData d) : data(std::move(d)) {}
    host::DataType Type() const override { return host::DataType::Custom; }
    std::string TypeId() const override { return kTypeId; }
    std::string ToText() const override
    {
        const size_t n = data.curves.size();
        const int32_t points = data.PointCount();
        return std::to_string(n) + (n == 1 ? " curve, " : " curves, ") + std::to_string(points) +
               (points == 1 ? " point pair" : " point pairs");
    }
    MW_WarpData data;
};

// With nothing set the tool gets no curves, never null.
void Read(const host::Parameter* value, void* field)
{
    auto* morph = dynamic_cast<const KMorphParameter*>(value);
    KSetField(field, morph ? new MW_WarpData(morph->data) : new MW_WarpData);
}

float Coordinate(const json& v, const std::string& where)
{
    const float most = 1e6f;
    if (!v.is_number() || !(std::fabs(v.get<double>()) <= most))
        throw BadInput(where + " is [x1, y1, x2, y2], four numbers of at most 1e6 in size, got " + v.dump());
    return static_cast<float>(v.get<double>());
}

WarpCurve CurveOf(const json& c, const std::string& where)
{
    WarpCurve curve;
    const json* points = &c;
    if (c.is_object()) {
        for (auto& [key, _] : c.items())
            if (key != "points" && key != "spline")
                throw BadInput(where + ": unknown key \"" + key + "\" (a curve has \"points\" and \"spline\")");
        if (!c.contains("points")) throw BadInput(where + " has no \"points\"");
        points = &c["points"];
        if (c.contains("spline")) {
            if (!c["spline"].is_boolean()) throw BadInput(where + ": \"spline\" is true or false");
            curve.spline = c["spline"].get<bool>();
        }
    }
    if (!points->is_array() || points->empty())
        throw BadInput(where + " is a list of [x1, y1, x2, y2] points, got " + (points->is_array() ? "none" : points->dump()));
    int32_t i = 0;
    for (const json& p : *points) {
        const std::string at = where + ", point " + std::to_string(++i);
        if (!p.is_array() || p.size() != 4)
            throw BadInput(at + " is [x1, y1, x2, y2], four numbers, got " + p.dump());
        curve.points.push_back({Coordinate(p[0], at), Coordinate(p[1], at), Coordinate(p[2], at), Coordinate(p[3], at)});
    }
    return curve;
}

// The anchors of each sub-path, 0 to 1 across and up the file's picture; a
// closed sub-path comes back to its start. A curved sub-path is a spline.
struct Traced {
    std::vector<Vector2f> points;
    bool curved = false;
};
std::vector<Traced> TraceSvg(const std::string& path)
{
    host::CheckReadableFile(path, host::kMaxFlowFileBytes, "SVG file");
    KSvgRead read;
    try {
        read = KReadSvgFile(path);
    } catch (const KSvgError& e) {
        throw BadInput("SVG file " + path + ": " + e.what());
    }
    const float w = static_cast<float>(read.width), h = static_cast<float>(read.height);
    std::vector<Traced> out;
    for (int32_t l = 0; l < read.shapes->Count(); ++l)
        for (KShape* s = read.shapes->At(l)->First(); s; s = NextShape(s)) {
            int32_t cubic = 0;
            for (const KShapeNode& n : s->Nodes()) {
                if (n.type == kNodeMove || out.empty()) out.emplace_back();
                Traced& t = out.back();
                if (n.type == kNodeConic) t.curved = true;
                if (n.type == kNodeCubic) t.curved = true;
                cubic = n.type == kNodeCubic ? cubic + 1 : 0;
                const bool anchor = n.type == kNodeMove || n.type == kNodeLine || (n.type == kNodeCubic && cubic % 3 == 0);
                if (anchor) t.points.push_back({n.x + 0.5f, 0.5f + n.y * w / h});
                if (n.closed && t.points.size() > 1 &&
                    (t.points.front().x != t.points.back().x || t.points.front().y != t.points.back().y))
                    t.points.push_back(t.points.front());
            }
        }
    return out;
}

MW_WarpData FromSvg(const json& spec, const std::string& folder)
{
    const json& files = spec["svg"];
    if (!files.is_array() || files.size() != 2 || !files[0].is_string() || !files[1].is_string())
        throw BadInput("\"svg\" names two SVG files, [first, second]");
    std::optional<bool> spline;
    for (auto& [key, _] : spec.items())
        if (key != "svg" && key != "spline")
            throw BadInput("unknown key \"" + key + "\" beside \"svg\" (\"spline\" may stand there)");
    if (spec.contains("spline")) {
        if (!spec["spline"].is_boolean()) throw BadInput("\"spline\" is true or false");
        spline = spec["spline"].get<bool>();
    }
    auto resolved = [&](const json& f) {
        const std::filesystem::path p = f.get<std::string>();
        return p.is_absolute() || folder.empty() ? p.string() : (std::filesystem::path(folder) / p).lexically_normal().string();
    };
    const std::string firstPath = resolved(files[0]), secondPath = resolved(files[1]);
    const std::vector<Traced> first = TraceSvg(firstPath), second = TraceSvg(secondPath);
    if (first.empty()) throw BadInput(firstPath + " has no path to morph by");
    if (first.size() != second.size())
        throw BadInput(firstPath + " has " + std::to_string(first.size()) + (first.size() == 1 ? " path" : " paths") +
                       " and " + secondPath + " " + std::to_string(second.size()) + "; they pair up in order");
    MW_WarpData data;
    for (size_t i = 0; i < first.size(); ++i) {
        const Traced &a = first[i], &b = second[i];
        if (a.points.size() != b.points.size())
            throw BadInput("path " + std::to_string(i + 1) + " has " + std::to_string(a.points.size()) +
                           " points in " + firstPath + " and " + std::to_string(b.points.size()) + " in " + secondPath);
        WarpCurve c;
        c.spline = spline.value_or(a.curved || b.curved);
        for (size_t j = 0; j < a.points.size(); ++j)
            c.points.push_back({a.points[j].x, a.points[j].y, b.points[j].x, b.points[j].y});
        data.curves.push_back(std::move(c));
    }
    return data;
}

host::Value Parse(const std::string& text, const std::string& folder)
{
    json spec;
    try {
        spec = json::parse(text);
    } catch (const json::exception&) {
        throw BadInput("not valid JSON: " + text.substr(0, 60));
    }
    if (spec.is_object() && spec.contains("svg")) return std::make_shared<KMorphParameter>(FromSvg(spec, folder));
    const json* curves = &spec;
    if (spec.is_object()) {
        for (auto& [key, _] : spec.items())
            if (key != "curves")
                throw BadInput("unknown key \"" + key + "\" (give \"curves\" or \"svg\")");
        if (!spec.contains("curves")) throw BadInput("give \"curves\" or \"svg\"");
        curves = &spec["curves"];
    }
    if (!curves->is_array())
        throw BadInput("a list of curves, each a list of [x1, y1, x2, y2] points, was expected, got " + curves->dump());
    MW_WarpData data;
    int32_t i = 0;
    for (const json& c : *curves) data.curves.push_back(CurveOf(c, "curve " + std::to_string(++i)));
    return std::make_shared<KMorphParameter>(std::move(data));
}

host::Value Interpolate(const host::Parameter& a, const host::Parameter& b, double f)
{
    auto* from = dynamic_cast<const KMorphParameter*>(&a);
    auto* to = dynamic_cast<const KMorphParameter*>(&b);
    if (!from || !to) return std::make_shared<KMorphParameter>(from ? from->data : MW_WarpData{});
    MW_WarpData out;
    if (!from->data.Blend(to->data, static_cast<float>(f), out))
        throw BadInput("their curves differ in number, points or spline (" + from->ToText() + " and " + to->ToText() + ")");
    return std::make_shared<KMorphParameter>(std::move(out));
}

KValueKind MorphKind()
{
    KValueKind morph;
    morph.valueKind = kValueMorph;
    morph.dataType = host::DataType::Custom;
    morph.typeId = kTypeId;
    morph.read = Read;
    morph.release = KReleaseField<MW_WarpData>;
    morph.name = "Morph";
    morph.parse = Parse;
    morph.interpolate = Interpolate;
    return morph;
}

}  // namespace

ZV_VALUE_KIND(MorphKind);
